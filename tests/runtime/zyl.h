/* Test stand-in for the database runtime's C header, so that generated
 * files can be compiled in the tests. It declares only what generated text
 * names so far; later work adds what its sections need. The dictionary
 * records are the real ones, so that generated tables are checked against
 * the declarations the runtime shares. Declarations only: no function here
 * has a body. */
#ifndef ZYL_TEST_RUNTIME_ZYL_H
#define ZYL_TEST_RUNTIME_ZYL_H

#include <stddef.h>
#include <stdint.h>

#include "../../include/zyldict.h"

typedef int8_t int1; typedef int16_t int2; typedef int32_t int4; typedef int64_t zyl_int8;
typedef uint8_t uint1; typedef uint16_t uint2; typedef uint32_t uint4; typedef uint64_t uint8;

typedef size_t zyl_size_t;
typedef uint32_t zyl_offs_t;
typedef struct zyl_calculator_t_* zyl_calculator_h;
/* The calculator's table: each class with its number of objects. */
typedef struct zyl_calc_class_t_ { const char* name; uint4 count; uint2 class_code; } zyl_calc_class_t;
typedef struct zyl_calculator_t_ { zyl_calc_class_t* classes; int nclasses; } zyl_calculator_t;
#define NULLPTR ((void*)0)
typedef struct ZYL_Hf_ { void* obj; } ZYL_Hf;

void zyl_assign_handle(ZYL_Hf* dest, const ZYL_Hf* src);

/* Sizes that only the C compiler knows: those of direct structures. */
#define alignsz(size, align) ((((size) + (align) - 1) / (align)) * (align))
#define structsz(name) sizeof(name)
#define fieldsz(s, f) sizeof(((s*)0)->f)
#define fieldoffs(s, f) offsetof(s, f)

/* What the access interface of a class names: results, handles, events. */
typedef int ZYL_RET;
typedef uint2 nchar_t;
#define ZYL_S_OK 0
typedef struct zyl_trans_t_* zyl_trans_h;
typedef struct zyl_cursor_t_* zyl_cursor_h;
typedef ZYL_Hf* zyl_objhandle_h;
typedef int zyl_dict_type_t;
typedef int ZYL_EVENT_TYPE;
typedef enum { ZYL_BEFORE_UPDATE, ZYL_AFTER_UPDATE } ZYL_HANDLING_ORDER;
typedef ZYL_RET (*zyl_generic_ev_handler)(void);

typedef zyl_trans_h zyl_trans_t; /* the column functions of a "sequences" class spell it so */

/* Results the access functions pass on. */
#define ZYL_S_NOTFOUND 1
#define ZYL_S_CURSOR_END 2
#define ZYL_S_NULL_VALUE 3

/* Date and time values, and the autoid. */
typedef uint4 zyl_date;
typedef uint4 zyl_time;
typedef uint8 zyl_datetime;
typedef zyl_int8 autoid_t;

/* Searching: comparison codes, one key part, keyword lists. */
typedef enum {
    ZYL_EQ, ZYL_GT, ZYL_GE, ZYL_LT, ZYL_LE, ZYL_NEXT_MATCH, ZYL_PREF, ZYL_BEST, ZYL_EX
} ZYL_OPCODE;
typedef struct zyl_external_field_t_ {
    int field_type;
    union {
        uint1 u1; uint2 u2; uint4 u4; uint8 u8;
        int1 i1; int2 i2; int4 i4; zyl_int8 i8;
        float flt; double dbl;
        uint4 ptr_size;
    } v;
    const char* ptr;
    uint2 bit_len;
} zyl_external_field_t, *zyl_external_field_h;
typedef struct zyl_search_kwd_t_ { const char* word; uint2 len; } zyl_search_kwd_t;

/* XML and JSON access write through the caller's function. */
typedef int (*zyl_stream_write)(void* stream_handle, const void* from, unsigned nbytes);

/* Columns of a class declared with "sequences". */
typedef struct zyl_seq_iterator_t_* zyl_seq_iterator_h;

/* The name of the field numbered fldno of an object's class. */
ZYL_RET zyl_get_fieldname_by_fldno(zyl_objhandle_h h, uint2 fldno, char* dest, uint2 dest_size, uint2* len);

ZYL_RET zyl_cursor_next(zyl_trans_h t, zyl_cursor_h c);
ZYL_RET zyl_cursor_close(zyl_cursor_h c);
void zyl_memmove(void* dest, const void* src, zyl_size_t nbt);
ZYL_RET zyl_pattern_size(zyl_external_field_h keys, uint4* size);
ZYL_RET zyl_pattern_search(zyl_trans_h t, zyl_cursor_h c, void* pattern, zyl_size_t memsize, zyl_external_field_h keys);
ZYL_RET zyl_pattern_next(zyl_trans_h t, zyl_cursor_h c, void* pattern, int reserved);

ZYL_RET zyl_set_class_allocation_block_size(zyl_trans_h t, uint2 class_code, zyl_size_t block_size);
ZYL_RET zyl_set_class_caching_priority(zyl_trans_h t, uint2 class_code, int priority);
ZYL_RET zyl_ev_h_register(zyl_trans_h t, zyl_generic_ev_handler handler, uint2 event_id, void* param,
                          uint2 before_update);
ZYL_RET zyl_ev_h_unregister(zyl_trans_h t, zyl_generic_ev_handler handler, uint2 event_id);

#endif
