/* Test stand-in for the database runtime's zyluda.h: the tables of the
 * functions a user writes for user-defined indexes and collations.
 * Declarations only. */
#ifndef ZYL_TEST_RUNTIME_ZYLUDA_H
#define ZYL_TEST_RUNTIME_ZYLUDA_H

#include "zyl.h"

/* A user-defined index: objects are compared with each other and with a
 * search key; a hash index hashes both. "vb" forms get the place of the
 * element when the key stands in a vector. */
typedef int (*zyl_compare_userdef_vb_f)(zyl_objhandle_h obj1, uint2 index1, zyl_objhandle_h obj2, uint2 index2);
typedef int (*zyl_compare_extkey_userdef_vb_f)(zyl_objhandle_h obj, uint2 index, zyl_external_field_h keys);
typedef uint4 (*zyl_hash_userdef_vb_f)(zyl_objhandle_h obj, uint2 index);
typedef uint4 (*zyl_hash_extkey_userdef_f)(zyl_external_field_h keys);
typedef struct zyl_userdef_funcs_t_ {
    struct { uint4 flags; } p;
    struct { zyl_compare_userdef_vb_f vb; } fcomp;
    struct { zyl_compare_extkey_userdef_vb_f vb; } fcomp_ext;
    struct { zyl_hash_userdef_vb_f vb; } fhash;
    struct { zyl_hash_extkey_userdef_f u; } fhash_ext;
} zyl_userdef_funcs_t, *zyl_userdef_funcs_h;

/* A collation compares (and for a hash index hashes) the characters of a key. */
typedef int (*zyl_compare_collation_f)(const void* str1, uint2 len1, const void* str2, uint2 len2);
typedef uint4 (*zyl_hash_collation_f)(const void* str, uint2 len);
typedef struct zyl_collation_funcs_t_ {
    zyl_compare_collation_f comp;
    zyl_hash_collation_f hash;
} zyl_collation_funcs_t, *zyl_collation_funcs_h;

#endif
