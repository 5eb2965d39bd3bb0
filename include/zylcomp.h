/* zylcomp: the public C interface of the schema compiler library. */
#ifndef ZYLCOMP_H
#define ZYLCOMP_H

#ifdef __cplusplus
extern "C" {
#endif

/* How a report reaches the caller of the run-time entry: the kind (0 a
   warning, 1 an error), the message, the file name, the line, the column,
   and the caller's own context pointer. Texts are never null. */
typedef void (*zyl_dict_error_callback_t)(int type, const char* message, const char* file, int line, int pos,
                                          void* context);

/* Replaceable message table: "key=message" pairs ended by a null pointer. */
extern const char* ZYL_MESSAGES[];

/* The path separator put between a directory and a file name. */
extern const char* OS_SEP;

#ifdef __cplusplus
}
#endif

#endif
