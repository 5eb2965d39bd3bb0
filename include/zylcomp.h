/* zylcomp: the public C interface of the schema compiler library. */
#ifndef ZYLCOMP_H
#define ZYLCOMP_H

#include <stddef.h>
#include <stdio.h>

#include "zyldict.h"

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

/* The switches of a compile from memory. Each int is a flag, true when not
   0, except spareSize. A null text means "." for the two directories and
   nothing for the other two. The output switches are accepted and change
   nothing, since this entry writes no files. */
typedef struct zyl_dict_load_params_t {
    int compiledFunctions;
    int keepFieldOrder;  /* declared field order; 8-byte scalars aligned to 8 */
    int xmlSchema;
    int cppWrappers;
    int csharpOutput;
    int javaOutput;
    int cppRuntimeHeader;
    const char* outputDir;
    const char* csharpNamespace;
    const char* javaPackage;
    int dynamicDictTables;
    int xmlAccess;
    int jsonAccess;
    int sqlReservedWords; /* SQL's reserved words are refused as names too */
    int wideOffsets;      /* 8-byte offsets; 8-byte scalars aligned to 8 */
    int spareSize;
    int prefixNames;      /* names take "{db}_" in front */
    const char* includeDir; /* where #include looks */
    int compactDefault;   /* classes are compact unless they say otherwise */
    int persistentDefault;
    int transientUnused;
    int hideAllClasses;
    int atomicDefault;    /* 0 makes classes nonatomic unless they say otherwise */
} zyl_dict_load_params_t;

/* Return codes of zyl_db_load_dictionary. */
#define ZYL_DICT_LOAD_OK 0
#define ZYL_DICT_LOAD_NO_TEMP_FILE 71
#define ZYL_DICT_LOAD_REFUSED 1005

/* Compiles the schema text `schema` into a dictionary in memory.
   On 0, *dict is the new dictionary and *dictSize its record size; dbName
   receives the database name with its NUL when it fits with room to spare
   (*dbNameSize must be larger than that), and *dbNameSize the bytes written,
   or 0. Every report goes to `callback` (which may be null) with `context`.
   Returns 71 when no temporary file could be made and 1005 when the schema
   was refused or the compiler met an internal fault: then nothing is stored
   in *dict. No exception leaves this function and it never ends the
   process, except when memory is exhausted. It writes no files. All memory
   of the dictionary comes from zyl_sys_malloc and zyl_sys_calloc and belongs
   to the caller, who releases it with zyl_dict_free. A refused call frees
   what it had allocated when the library's own allocators are in use; with
   a runtime's own allocators the blocks of a refused call stay allocated,
   nothing pointing to them, as the runtime's to account for.

   Threads: any number of threads may call this function at the same time,
   each with its own arguments. Calls share no state: each has its own
   string pool, temporary file, reporter and counters, and gives exactly
   what it gives alone. `callback` runs on the calling thread, inside the
   call, and may itself load another dictionary. What calls do share, the
   caller keeps safe: zyl_sys_malloc and zyl_sys_calloc must be callable
   from several threads at once (the defaults are), and ZYL_MESSAGES may be
   changed only while no call runs. */
int zyl_db_load_dictionary(const char* schema, const zyl_dict_load_params_t* params, zyl_dictionary_t** dict,
                           size_t* dictSize, char* dbName, size_t* dbNameSize, zyl_dict_error_callback_t callback,
                           void* context);

/* The allocators of all dictionary memory. The database runtime defines
   them; this library has defaults (malloc and a zero-filling calloc) that
   a runtime loaded beside it replaces. */
void* zyl_sys_malloc(size_t size);
void* zyl_sys_calloc(size_t count, size_t size);

/* Releases a dictionary that zyl_db_load_dictionary built: every block of
   it, the record, each table and each string, goes to `deallocate` exactly
   once, and no other pointer does; a null pointer is never passed. The
   deallocator must release what zyl_sys_malloc and zyl_sys_calloc hand
   out, so a host that supplies those supplies its counterpart; a null
   `deallocate` means free, which matches the library's own defaults. A
   null `dict` does nothing. Only for a dictionary of that call, freed once
   and not changed since: a dictionary compiled from a generated {db}.c is
   static and must not be passed here. */
void zyl_dict_free(zyl_dictionary_t* dict, void (*deallocate)(void* block));

/* Writes `dict` to `out` as one JSON object keyed by the member names of
   zyl_dictionary_t, with every table in place of its pointer. Returns 0, or
   -1 when writing failed. */
int zyl_dict_write_json(const zyl_dictionary_t* dict, FILE* out);

/* Kinds of a difference between two dictionaries. */
#define ZYL_CHANGE_COMPATIBLE 0 /* the old data and old peers read as they are */
#define ZYL_CHANGE_BREAKING 1   /* old data or old peers can no longer be read as they are */

/* One difference between an old dictionary and a new one. Texts are never
   null; an absent one is the empty string. */
typedef struct zyl_dict_change_t {
    int kind;               /* ZYL_CHANGE_... */
    const char* code;       /* short name of the kind of change, such as "field-type" */
    const char* subject;    /* "schema", "collation", "class", "field", "index" or "event" */
    const char* class_name; /* the class concerned, or "" */
    const char* item;       /* field path ("addr.city"), index or collation name, or "" */
    const char* message;    /* one line of text, without a line end */
    int in_old;             /* 1 when the item stands only in the old dictionary (a removal) */
    /* Where the item is declared, in the dictionary that in_old names: the
       structure that declares the field (the class itself, or the struct of
       a nested field), "" for other subjects; and the field's declared
       place in that structure (order_no) or the index's place among its
       class's indexes, else -1. */
    const char* holder;
    int decl_no;
} zyl_dict_change_t;

typedef void (*zyl_dict_change_callback_t)(const zyl_dict_change_t* change, void* context);

/* Compares the dictionary `old_dict`, which described the data as it is,
   with `new_dict`, and hands every difference to `callback` (which may be
   null) with `context`, in a fixed order: the schema's own settings, the
   collations, then the classes in the new dictionary's class order, and
   the classes that are gone last. Classes are matched by name, fields by
   path, indexes by name within their class. Returns the number of breaking
   changes, or -1 when a dictionary is null or of another format. Reads
   only the records, so any two dictionaries of this format can be
   compared; it allocates nothing that outlives the call. */
int zyl_dict_compare(const zyl_dictionary_t* old_dict, const zyl_dictionary_t* new_dict,
                     zyl_dict_change_callback_t callback, void* context);

#ifdef __cplusplus
}
#endif

/* The parameter record is shared with the runtime: hold it in place. */
#if UINTPTR_MAX == 0xFFFFFFFFFFFFFFFFu
ZYL_DICT_CHECK(offsetof(zyl_dict_load_params_t, cppRuntimeHeader) == 24, "cppRuntimeHeader at 24");
ZYL_DICT_CHECK(offsetof(zyl_dict_load_params_t, outputDir) == 32, "outputDir at 32");
ZYL_DICT_CHECK(offsetof(zyl_dict_load_params_t, csharpNamespace) == 40, "csharpNamespace at 40");
ZYL_DICT_CHECK(offsetof(zyl_dict_load_params_t, javaPackage) == 48, "javaPackage at 48");
ZYL_DICT_CHECK(offsetof(zyl_dict_load_params_t, dynamicDictTables) == 56, "dynamicDictTables at 56");
ZYL_DICT_CHECK(offsetof(zyl_dict_load_params_t, wideOffsets) == 72, "wideOffsets at 72");
ZYL_DICT_CHECK(offsetof(zyl_dict_load_params_t, prefixNames) == 80, "prefixNames at 80");
ZYL_DICT_CHECK(offsetof(zyl_dict_load_params_t, includeDir) == 88, "includeDir at 88");
ZYL_DICT_CHECK(offsetof(zyl_dict_load_params_t, compactDefault) == 96, "compactDefault at 96");
ZYL_DICT_CHECK(offsetof(zyl_dict_load_params_t, hideAllClasses) == 108, "hideAllClasses at 108");
ZYL_DICT_CHECK(offsetof(zyl_dict_load_params_t, atomicDefault) == 112, "atomicDefault at 112");
#endif

#endif
