/* zyldict.h: the dictionary records, the binary interface between the schema
 * compiler and the database runtime.
 *
 * A dictionary is a tree of plain records that tells the runtime every
 * class, index, event, collation, structure and field of a schema. The
 * generated C source fills these records by member name, and the run-time
 * entry of the compiler builds the same records in memory, so this header
 * is shared by the compiler, the runtime and generated code. It must stay
 * valid C99 and C++.
 *
 * The widths and offsets below are part of the interface; on a 64-bit
 * target the checks at the end hold them in place.
 */
#ifndef ZYLDICT_H
#define ZYLDICT_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Version of the record format. */
#define ZYL_DICT_VERSION_MAJOR 8
#define ZYL_DICT_VERSION_MINOR 1
#define ZYL_DICT_VERSION_BUILD 1800
#define ZYL_DICT_MAGIC_NUMBER 9

/* "None" in a 16-bit index or event number, or in a 16-bit reference. */
#define ZYL_DICT_NONE16 0xFFFFu

/* ------------------------------------------------------------------------
 * Type codes of fields, index keys and event fields.
 */
#define ZYL_FT_UINT1 1 /* also an enum of one byte */
#define ZYL_FT_UINT2 2
#define ZYL_FT_UINT4 3
#define ZYL_FT_INT1 4
#define ZYL_FT_INT2 5 /* also an enum of two bytes */
#define ZYL_FT_INT4 6 /* also an enum of four bytes */
#define ZYL_FT_CHARS 7 /* char<n> */
#define ZYL_FT_STRING 8
#define ZYL_FT_OID_REF 9
#define ZYL_FT_FLOAT 10
#define ZYL_FT_DOUBLE 11
#define ZYL_FT_UINT8 12
#define ZYL_FT_INT8 13 /* also autoid_t */
#define ZYL_FT_AUTOID 14
#define ZYL_FT_VERSION 15
#define ZYL_FT_DATE 16
#define ZYL_FT_TIME 17
#define ZYL_FT_AUTO_OID 18
#define ZYL_FT_NCHARS 19 /* nchar<n> */
#define ZYL_FT_NSTRING 20
#define ZYL_FT_WCHARS 21 /* wide characters: no type of this version produces them */
#define ZYL_FT_WSTRING 22
#define ZYL_FT_BOOLEAN 23 /* one bit; arrays of it are bit arrays */
#define ZYL_FT_DATETIME 24
#define ZYL_FT_BINARY 25 /* binary<n> */
#define ZYL_FT_VARBINARY 26
#define ZYL_FT_SEQ_UINT1 30
#define ZYL_FT_SEQ_UINT2 31
#define ZYL_FT_SEQ_UINT4 32 /* also of date and time */
#define ZYL_FT_SEQ_UINT8 33
#define ZYL_FT_SEQ_INT1 34
#define ZYL_FT_SEQ_INT2 35
#define ZYL_FT_SEQ_INT4 36
#define ZYL_FT_SEQ_INT8 37
#define ZYL_FT_SEQ_FLOAT 38
#define ZYL_FT_SEQ_DOUBLE 39
#define ZYL_FT_SEQ_CHARS 40 /* of char<n>, binary<n> or a structure */
#define ZYL_FT_SEQ_DATETIME 41
#define ZYL_FT_STRUCT 50
#define ZYL_FT_BLOB 51

/* ------------------------------------------------------------------------
 * Flags.
 */

/* zyl_dictionary_t.flags: the schema's compile options. */
#define ZYL_SCHEMA_WIDE_OFFSETS 0x1
#define ZYL_SCHEMA_KEEP_FIELD_ORDER 0x2

/* zyl_dict_class_info_t.flags */
#define ZYL_CLASS_HAS_LIST 0x1
#define ZYL_CLASS_HAS_OID 0x2
#define ZYL_CLASS_HAS_BLOBS 0x4
#define ZYL_CLASS_COMPACT 0x8
#define ZYL_CLASS_FIXED_SIZE 0x10
#define ZYL_CLASS_PERSISTENT 0x20
#define ZYL_CLASS_HAS_AUTOID 0x40
#define ZYL_CLASS_UPTABLE 0x80
#define ZYL_CLASS_HAS_EVENTS 0x100
#define ZYL_CLASS_HAS_SEQUENCES 0x200
#define ZYL_CLASS_LOCAL 0x400
#define ZYL_CLASS_DISTRIBUTED 0x800
#define ZYL_CLASS_SYSTEM 0x1000
#define ZYL_CLASS_NONATOMIC 0x2000
#define ZYL_CLASS_DOWNTABLE 0x8000

/* zyl_dict_index_t.impl_no: the implementation of an index. */
#define ZYL_INDEX_IMPL_NONE 0
#define ZYL_INDEX_IMPL_TREE 1
#define ZYL_INDEX_IMPL_DISK_TREE 2 /* trees and hash indexes of persistent classes */
#define ZYL_INDEX_IMPL_HASH 3
#define ZYL_INDEX_IMPL_KDTREE 4
#define ZYL_INDEX_IMPL_DISK_KDTREE 5
#define ZYL_INDEX_IMPL_RTREE 6
#define ZYL_INDEX_IMPL_DISK_RTREE 7
#define ZYL_INDEX_IMPL_PATRICIA 8
#define ZYL_INDEX_IMPL_DISK_PATRICIA 9
#define ZYL_INDEX_IMPL_LIST 10
#define ZYL_INDEX_IMPL_INCLUSIVE_TREE 13
#define ZYL_INDEX_IMPL_TRIGRAM 14
#define ZYL_INDEX_IMPL_DISK_TRIGRAM 15

/* zyl_dict_index_t.flags */
#define ZYL_INDEX_BOOL_VECTOR 0x1
#define ZYL_INDEX_BOOL_ARRAY 0x2
#define ZYL_INDEX_UNIQUE 0x4
#define ZYL_INDEX_STRUCT_VECTOR 0x8
#define ZYL_INDEX_SCALAR_VECTOR 0x10
#define ZYL_INDEX_PERSISTENT 0x20
#define ZYL_INDEX_VOLUNTARY 0x40
#define ZYL_INDEX_STRUCT_ARRAY 0x80
#define ZYL_INDEX_SCALAR_ARRAY 0x100
#define ZYL_INDEX_LIST 0x400
#define ZYL_INDEX_ORDINARY 0x800
#define ZYL_INDEX_AUTOID 0x1000
#define ZYL_INDEX_HISTORY 0x2000
#define ZYL_INDEX_NULLABLE 0x10000
#define ZYL_INDEX_THICK 0x20000
#define ZYL_INDEX_POINT 0x80000
#define ZYL_INDEX_TRIGRAM 0x100000

/* zyl_dict_index_field_t.fld_flags */
#define ZYL_KEY_DESC 0x1
#define ZYL_KEY_WIDE 0x2 /* an 8-byte value: type code 11 to 14 or 24 */
#define ZYL_KEY_NOCASE 0x4
#define ZYL_KEY_NULLABLE 0x8

/* zyl_dict_event_t.flags */
#define ZYL_EVENT_NEW 0x1
#define ZYL_EVENT_FIELD_UPDATE 0x2
#define ZYL_EVENT_DELETE 0x4
#define ZYL_EVENT_DELETE_ALL 0x8
#define ZYL_EVENT_CHECKPOINT 0x10
#define ZYL_EVENT_CLASS_UPDATE 0x20

/* zyl_dict_struct_t.flags */
#define ZYL_STRUCT_DYNAMIC 0x1
#define ZYL_STRUCT_HAS_BLOBS 0x2
#define ZYL_STRUCT_HAS_INIT 0x4
#define ZYL_STRUCT_DIRECT 0x8
#define ZYL_STRUCT_PACKED 0x10
#define ZYL_STRUCT_HAS_SEQUENCES 0x20

/* zyl_dict_field_t.flags */
#define ZYL_FIELD_VECTOR 0x1
#define ZYL_FIELD_ARRAY 0x2
#define ZYL_FIELD_OPTIONAL 0x4
#define ZYL_FIELD_INDEXED 0x8
#define ZYL_FIELD_HIDDEN 0x10
#define ZYL_FIELD_NULLABLE 0x20
#define ZYL_FIELD_INDICATOR 0x40
#define ZYL_FIELD_NUMERIC 0x80 /* precision holds the digits behind the point */

/* zyl_dict_field_t.seq_order */
#define ZYL_DICT_SEQ_NONE 0
#define ZYL_DICT_SEQ_ASC 1
#define ZYL_DICT_SEQ_DESC 2

/* ------------------------------------------------------------------------
 * The records. Index numbers are places in v_desc_indexes, event numbers
 * places in v_desc_events; 0xFFFF in a 16-bit number means none.
 */

/* Placement of a field in the compact (c_) and the large (u_) object format. */
typedef struct zyl_dict_field_layout_t {
    uint16_t c_size;
    uint16_t c_align;
    uint16_t c_offset;
    uint32_t u_size;
    uint32_t u_align;
    uint32_t u_offset;
} zyl_dict_field_layout_t;

typedef struct zyl_dict_field_t {
    const char* name;
    zyl_dict_field_layout_t layout;
    uint8_t field_el_type; /* type code */
    uint8_t flags;         /* ZYL_FIELD_... */
    uint16_t array_size;
    int32_t struct_num;    /* the field's structure in v_all_struct, or -1 */
    uint32_t field_size;
    uint16_t refto_class;  /* class code of ref<C> or autoid_t<C>, or 0xFFFF */
    uint32_t init_index;   /* 1 + place in the initial values, 0 for none */
    uint16_t order_no;     /* declared place in the structure */
    uint16_t no;
    uint16_t event_id;     /* the field's update event, or 0xFFFF */
    uint16_t indicator;    /* place of a nullable field's indicator in this table, or 0xFFFF */
    uint8_t precision;
    uint8_t seq_order;     /* ZYL_DICT_SEQ_... */
    uint8_t seq_elem_size;
} zyl_dict_field_t;

typedef struct zyl_dict_struct_t {
    const char* name;
    uint16_t flags; /* ZYL_STRUCT_... */
    uint16_t n_fields;
    const zyl_dict_field_t* fields;
    uint16_t c_size;
    uint16_t c_align;
    uint32_t u_size;
    uint32_t u_align;
} zyl_dict_struct_t;

typedef struct zyl_dict_class_info_t {
    uint16_t first_index_num; /* 0xFFFF, with last 0xFFFE, for a class without indexes */
    uint16_t last_index_num;
    uint16_t list_index_num;
    uint16_t autoid_index_num;
    uint32_t fixedsize; /* object size of a class of fixed size, else 0 */
    uint16_t autoid_offset;
    uint16_t history_index_num;
    uint16_t history_length;
    uint16_t history_offset;
    uint16_t first_event_num; /* 0xFFFF, with last 0xFFFE, for a class without events */
    uint16_t last_event_num;
    uint16_t flags; /* ZYL_CLASS_... */
    const zyl_dict_struct_t* struct_ptr;
    uint64_t init_size;
    uint16_t auto_oid_offset;
} zyl_dict_class_info_t;

typedef struct zyl_dict_index_field_t {
    uint32_t field_offset;      /* inside the object, or inside the vector element */
    uint32_t vect_field_offset; /* of the vector or array, or 0xFFFFFFFF */
    uint32_t indicator_offset;  /* of a nullable key's indicator, or 0xFFFFFFFF */
    uint32_t field_size;
    uint8_t field_type;         /* type code */
    uint8_t fld_flags;          /* ZYL_KEY_... */
    uint16_t fld_no;
    uint16_t collation_id;      /* or 0xFFFF */
} zyl_dict_index_field_t;

typedef struct zyl_dict_index_t {
    uint16_t class_code;
    uint16_t impl_no; /* ZYL_INDEX_IMPL_... */
    uint16_t numof_fields;
    uint32_t vect_field_offset;
    uint32_t flags;   /* ZYL_INDEX_... */
    const zyl_dict_index_field_t* fields;
    int64_t numof_keys_estimate;
    uint16_t userdef_id;
} zyl_dict_index_t;

typedef struct zyl_dict_event_t {
    uint16_t class_code;
    uint16_t flags; /* ZYL_EVENT_... */
    uint32_t field_offset;
    uint32_t field_size;
    uint8_t field_type;
    uint16_t fld_no;
} zyl_dict_event_t;

typedef struct zyl_dict_collation_t {
    const char* name;
    uint32_t type; /* type code of the characters it compares */
} zyl_dict_collation_t;

typedef struct zyl_dictionary_t {
    const char* const* str_class_names; /* by class code; slot 0 is null */
    const char* const* str_index_names; /* "{class}.{index}" in v_desc_indexes order */
    uint16_t version_major;
    uint16_t version_minor;
    uint16_t version_build;
    uint16_t magic_number;
    uint32_t flags; /* ZYL_SCHEMA_... */
    uint16_t oid_is_supported;
    uint16_t auto_oid_supported;
    uint16_t n_class_codes;
    uint16_t n_list_indexes;
    uint16_t n_autoid_indexes;
    uint16_t n_history_indexes;
    uint16_t n_userdef_indexes;
    uint16_t max_numof_indexes_per_obj;
    uint16_t n_structs;
    uint32_t num_oid_estimation;
    uint32_t num_HA_estimation;
    uint16_t n_desc_indexes;
    uint16_t n_desc_events;
    uint16_t n_desc_colls;
    uint16_t exact_OID_sizeof;
    uint16_t layout_OID_size;
    const zyl_dict_class_info_t* v_class_info; /* n_class_codes + 1 entries, by class code */
    const zyl_dict_index_t* v_desc_indexes;
    const zyl_dict_event_t* v_desc_events;
    const zyl_dict_struct_t* v_all_struct;
    const zyl_dict_collation_t* v_desc_colls;
    uint8_t sizeof_zyl_offs_t[2]; /* [0] at compile time, [1] at run time */
    uint8_t sizeof_zyl_size_t[2];
    struct {
        const int32_t* ptr;
    } init_i_data; /* integer initial values */
    uint32_t init_i_data_n;
    struct {
        const double* ptr;
    } init_d_data; /* real initial values */
    uint32_t init_d_data_n;
} zyl_dictionary_t;

typedef zyl_dictionary_t* zyl_dictionary_h;

/* ------------------------------------------------------------------------
 * The layout is the interface: hold it in place on 64-bit targets.
 */
#if defined(__cplusplus) && __cplusplus >= 201103L
#define ZYL_DICT_CHECK(cond, what) static_assert(cond, what)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define ZYL_DICT_CHECK(cond, what) _Static_assert(cond, what)
#else
#define ZYL_DICT_CHECK_JOIN2(a, b) a##b
#define ZYL_DICT_CHECK_JOIN(a, b) ZYL_DICT_CHECK_JOIN2(a, b)
#define ZYL_DICT_CHECK(cond, what) \
    typedef char ZYL_DICT_CHECK_JOIN(zyl_dict_check_, __LINE__)[(cond) ? 1 : -1]
#endif

#if UINTPTR_MAX == 0xFFFFFFFFFFFFFFFFu
ZYL_DICT_CHECK(sizeof(zyl_dictionary_t) == 152, "zyl_dictionary_t is 152 bytes");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, version_major) == 16, "version_major at 16");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, flags) == 24, "flags at 24");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, n_class_codes) == 32, "n_class_codes at 32");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, n_structs) == 44, "n_structs at 44");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, num_oid_estimation) == 48, "num_oid_estimation at 48");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, n_desc_indexes) == 56, "n_desc_indexes at 56");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, layout_OID_size) == 64, "layout_OID_size at 64");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, v_class_info) == 72, "v_class_info at 72");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, v_desc_colls) == 104, "v_desc_colls at 104");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, sizeof_zyl_offs_t) == 112, "sizeof_zyl_offs_t at 112");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, sizeof_zyl_size_t) == 114, "sizeof_zyl_size_t at 114");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, init_i_data) == 120, "init_i_data at 120");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, init_i_data_n) == 128, "init_i_data_n at 128");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, init_d_data) == 136, "init_d_data at 136");
ZYL_DICT_CHECK(offsetof(zyl_dictionary_t, init_d_data_n) == 144, "init_d_data_n at 144");

ZYL_DICT_CHECK(sizeof(zyl_dict_class_info_t) == 56, "zyl_dict_class_info_t is 56 bytes");
ZYL_DICT_CHECK(offsetof(zyl_dict_class_info_t, fixedsize) == 8, "fixedsize at 8");
ZYL_DICT_CHECK(offsetof(zyl_dict_class_info_t, flags) == 24, "class flags at 24");
ZYL_DICT_CHECK(offsetof(zyl_dict_class_info_t, struct_ptr) == 32, "struct_ptr at 32");
ZYL_DICT_CHECK(offsetof(zyl_dict_class_info_t, init_size) == 40, "init_size at 40");
ZYL_DICT_CHECK(offsetof(zyl_dict_class_info_t, auto_oid_offset) == 48, "auto_oid_offset at 48");

ZYL_DICT_CHECK(sizeof(zyl_dict_index_t) == 40, "zyl_dict_index_t is 40 bytes");
ZYL_DICT_CHECK(offsetof(zyl_dict_index_t, vect_field_offset) == 8, "vect_field_offset at 8");
ZYL_DICT_CHECK(offsetof(zyl_dict_index_t, fields) == 16, "index fields at 16");
ZYL_DICT_CHECK(offsetof(zyl_dict_index_t, numof_keys_estimate) == 24, "numof_keys_estimate at 24");
ZYL_DICT_CHECK(offsetof(zyl_dict_index_t, userdef_id) == 32, "userdef_id at 32");

ZYL_DICT_CHECK(sizeof(zyl_dict_index_field_t) == 24, "zyl_dict_index_field_t is 24 bytes");
ZYL_DICT_CHECK(offsetof(zyl_dict_index_field_t, field_type) == 16, "field_type at 16");
ZYL_DICT_CHECK(offsetof(zyl_dict_index_field_t, fld_no) == 18, "fld_no at 18");
ZYL_DICT_CHECK(offsetof(zyl_dict_index_field_t, collation_id) == 20, "collation_id at 20");

ZYL_DICT_CHECK(sizeof(zyl_dict_event_t) == 16, "zyl_dict_event_t is 16 bytes");
ZYL_DICT_CHECK(offsetof(zyl_dict_event_t, field_type) == 12, "event field_type at 12");
ZYL_DICT_CHECK(offsetof(zyl_dict_event_t, fld_no) == 14, "event fld_no at 14");

ZYL_DICT_CHECK(sizeof(zyl_dict_collation_t) == 16, "zyl_dict_collation_t is 16 bytes");
ZYL_DICT_CHECK(offsetof(zyl_dict_collation_t, type) == 8, "collation type at 8");

ZYL_DICT_CHECK(sizeof(zyl_dict_struct_t) == 40, "zyl_dict_struct_t is 40 bytes");
ZYL_DICT_CHECK(offsetof(zyl_dict_struct_t, n_fields) == 10, "n_fields at 10");
ZYL_DICT_CHECK(offsetof(zyl_dict_struct_t, fields) == 16, "struct fields at 16");
ZYL_DICT_CHECK(offsetof(zyl_dict_struct_t, c_size) == 24, "c_size at 24");
ZYL_DICT_CHECK(offsetof(zyl_dict_struct_t, u_size) == 28, "u_size at 28");
ZYL_DICT_CHECK(offsetof(zyl_dict_struct_t, u_align) == 32, "u_align at 32");

ZYL_DICT_CHECK(sizeof(zyl_dict_field_t) == 64, "zyl_dict_field_t is 64 bytes");
ZYL_DICT_CHECK(offsetof(zyl_dict_field_t, layout) == 8, "layout at 8");
ZYL_DICT_CHECK(offsetof(zyl_dict_field_t, layout.c_offset) == 12, "layout.c_offset at 12");
ZYL_DICT_CHECK(offsetof(zyl_dict_field_t, layout.u_size) == 16, "layout.u_size at 16");
ZYL_DICT_CHECK(offsetof(zyl_dict_field_t, layout.u_offset) == 24, "layout.u_offset at 24");
ZYL_DICT_CHECK(offsetof(zyl_dict_field_t, field_el_type) == 28, "field_el_type at 28");
ZYL_DICT_CHECK(offsetof(zyl_dict_field_t, struct_num) == 32, "struct_num at 32");
ZYL_DICT_CHECK(offsetof(zyl_dict_field_t, refto_class) == 40, "refto_class at 40");
ZYL_DICT_CHECK(offsetof(zyl_dict_field_t, init_index) == 44, "init_index at 44");
ZYL_DICT_CHECK(offsetof(zyl_dict_field_t, order_no) == 48, "order_no at 48");
ZYL_DICT_CHECK(offsetof(zyl_dict_field_t, indicator) == 54, "indicator at 54");
ZYL_DICT_CHECK(offsetof(zyl_dict_field_t, precision) == 56, "precision at 56");
ZYL_DICT_CHECK(offsetof(zyl_dict_field_t, seq_elem_size) == 58, "seq_elem_size at 58");
#endif

#ifdef __cplusplus
}
#endif

#endif
