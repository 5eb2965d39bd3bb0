/* Test stand-in for the database runtime's zylwrap.h: the calls that
 * generated function bodies make. Declarations only. */
#ifndef ZYL_TEST_RUNTIME_ZYLWRAP_H
#define ZYL_TEST_RUNTIME_ZYLWRAP_H

#include "zyl.h"

/* Objects as XML and JSON. */
ZYL_RET zyl_w_xml_get_object(zyl_objhandle_h h, void* stream_handle, zyl_stream_write o_stream, uint2 class_code);
ZYL_RET zyl_w_xml_put_object(zyl_objhandle_h h, const char* xml, uint2 class_code);
ZYL_RET zyl_w_xml_create_object(zyl_trans_h t, const char* xml, zyl_objhandle_h h, uint2 class_code);
ZYL_RET zyl_w_xml_schema(zyl_trans_h t, void* stream_handle, zyl_stream_write o_stream, uint2 class_code);
ZYL_RET zyl_w_json_get_object(zyl_objhandle_h h, void* stream_handle, zyl_stream_write o_stream, uint2 class_code);

/* Objects of a class. */
ZYL_RET zyl_w_new_obj_noid(zyl_trans_h t, zyl_size_t init_size, uint2 class_code, zyl_objhandle_h h);
ZYL_RET zyl_w_new_obj_noid_ev(zyl_trans_h t, zyl_size_t init_size, uint2 class_code, zyl_objhandle_h h,
                              uint4 event_id);
ZYL_RET zyl_w_new_obj_oid(zyl_trans_h t, zyl_size_t init_size, uint2 class_code, const void* id, zyl_size_t id_size,
                          zyl_objhandle_h h);
ZYL_RET zyl_w_new_obj_oid_ev(zyl_trans_h t, zyl_size_t init_size, uint2 class_code, const void* id,
                             zyl_size_t id_size, zyl_objhandle_h h, uint4 event_id);
ZYL_RET zyl_w_obj_delete(zyl_objhandle_h h);
ZYL_RET zyl_w_obj_delete_ev(zyl_objhandle_h h, uint4 event_id);
ZYL_RET zyl_w_obj_delete_all(zyl_trans_h t, uint2 class_code);
ZYL_RET zyl_w_obj_delete_all_ev(zyl_trans_h t, uint2 class_code, uint4 event_id);
ZYL_RET zyl_w_obj_checkpoint(zyl_objhandle_h h);
ZYL_RET zyl_w_obj_checkpoint_ev(zyl_objhandle_h h, uint4 event_id);
ZYL_RET zyl_w_compact(zyl_objhandle_h h, uint2 class_code, uint2 n_fields, uint4* pages_released);
ZYL_RET zyl_w_obj_from_cursor(zyl_trans_h t, zyl_cursor_h c, uint2 class_code, zyl_objhandle_h h);
ZYL_RET zyl_w_list_cursor(zyl_trans_h t, uint2 class_code, zyl_cursor_h c);
ZYL_RET zyl_w_normalize_handle(zyl_objhandle_h h);
ZYL_RET zyl_w_version_prev(zyl_objhandle_h h, zyl_objhandle_h res, uint2 index_code);
ZYL_RET zyl_w_version_next(zyl_objhandle_h h, zyl_objhandle_h res, uint2 index_code);

/* Object identifiers. */
ZYL_RET zyl_w_find_byoid(zyl_trans_h t, const void* id, zyl_objhandle_h h, uint2 class_code);
ZYL_RET zyl_w_oid_get(zyl_objhandle_h h, void* id, uint2 id_size);
ZYL_RET zyl_w_obj_del_byoid(zyl_trans_h t, const void* oid);
ZYL_RET zyl_w_classcode_byoid(zyl_trans_h t, const void* oid, uint2* class_code);

/* Scalar fields, by size. A "2" call takes the offsets of both formats (large first). */
#define ZYL_TEST_SCALAR_CALLS(p, T) \
    ZYL_RET zyl_w_##p##_get(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, void* result); \
    ZYL_RET zyl_w_##p##_get2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, void* result); \
    ZYL_RET zyl_w_##p##_put(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, uint1 indexed, T value); \
    ZYL_RET zyl_w_##p##_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint1 indexed, \
                             T value); \
    ZYL_RET zyl_w_##p##_put_ev(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, uint1 indexed, T value, \
                               uint4 event_id); \
    ZYL_RET zyl_w_##p##_put_ev2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                uint1 indexed, T value, uint4 event_id);
ZYL_TEST_SCALAR_CALLS(b1, uint1) ZYL_TEST_SCALAR_CALLS(b2, uint2) ZYL_TEST_SCALAR_CALLS(b4, uint4)
ZYL_TEST_SCALAR_CALLS(b8, uint8) ZYL_TEST_SCALAR_CALLS(bit, uint1)

/* Numeric fields as text. */
#define ZYL_TEST_NUMERIC_CALLS(p, T) \
    ZYL_RET zyl_w_numeric_##p##_to_string(T value, int precision, char* buf, int buf_size); \
    ZYL_RET zyl_w_numeric_##p##_from_string(T* value, int precision, char const* buf);
ZYL_TEST_NUMERIC_CALLS(b1, int1) ZYL_TEST_NUMERIC_CALLS(b2, int2) ZYL_TEST_NUMERIC_CALLS(b4, int4)
ZYL_TEST_NUMERIC_CALLS(b8, zyl_int8)

/* Characters (C char, nchar_t); the last size is the field's. */
#define ZYL_TEST_CHARS_CALLS(p, C) \
    ZYL_RET zyl_w_##p##_get(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, C* dest, uint2 dest_size, uint2 size); \
    ZYL_RET zyl_w_##p##_get2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, C* dest, \
                             uint2 dest_size, uint2 size); \
    ZYL_RET zyl_w_##p##_put(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, const C* src, uint2 len, uint2 size, \
                            uint1 indexed); \
    ZYL_RET zyl_w_##p##_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, const C* src, \
                             uint2 len, uint2 size, uint1 indexed); \
    ZYL_RET zyl_w_##p##_put_ev(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, const C* src, uint2 len, \
                               uint2 size, uint1 indexed, uint4 event_id); \
    ZYL_RET zyl_w_##p##_put_ev2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                const C* src, uint2 len, uint2 size, uint1 indexed, uint4 event_id);
ZYL_TEST_CHARS_CALLS(chars, char) ZYL_TEST_CHARS_CALLS(nchars, nchar_t)

/* Strings. */
#define ZYL_TEST_STRING_CALLS(p, C) \
    ZYL_RET zyl_w_##p##_get2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, C* dest, \
                             uint2 dest_size, uint2* len); \
    ZYL_RET zyl_w_##p##_len2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2* len); \
    ZYL_RET zyl_w_##p##_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, const C* src, \
                             uint2 len, uint1 indexed); \
    ZYL_RET zyl_w_##p##_put_ev2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                const C* src, uint2 len, uint1 indexed, uint4 event_id);
ZYL_TEST_STRING_CALLS(string, char) ZYL_TEST_STRING_CALLS(nstring, nchar_t)

/* Nested structs, direct structs, blobs. */
ZYL_RET zyl_w_struct_get2(zyl_objhandle_h h, zyl_objhandle_h s, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno);
ZYL_RET zyl_w_struct_put2(zyl_objhandle_h h, zyl_objhandle_h s, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno,
                          uint1 indexed);
ZYL_RET zyl_w_direct_struct_get_ptr(zyl_objhandle_h h, void** dest, zyl_size_t size);
ZYL_RET zyl_w_blob_get2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint4 start_offset,
                        char* dest, uint4 dest_size, uint4* len);
ZYL_RET zyl_w_blob_len2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint4* len);
ZYL_RET zyl_w_blob_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, const char* src,
                        uint4 nbytes);
ZYL_RET zyl_w_blob_append2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, const char* src,
                           uint4 nbytes);

/* Vectors (v_) and arrays (va_), element by element, by family of the
 * element. The simple family takes the element's size; a value to put
 * arrives as the widest integer. */
#define ZYL_TEST_ELEMENT_CALLS(p) \
    ZYL_RET zyl_w_##p##_simple_e_get2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                      uint2 index, uint2 size, void* result); \
    ZYL_RET zyl_w_##p##_simple_e_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                      uint2 index, uint2 size, uint8 value, uint1 indexed); \
    ZYL_RET zyl_w_##p##_simple_e_getrange2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                           uint2 start, uint2 num, uint2 size, void* dest); \
    ZYL_RET zyl_w_##p##_simple_e_putrange2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                           uint2 start, uint2 num, uint2 size, const void* src, uint1 indexed); \
    ZYL_RET zyl_w_##p##_bit_e_get2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                   uint2 index, uint1* result); \
    ZYL_RET zyl_w_##p##_bit_e_getrange2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                        uint2 start, uint2 num, uint1* dest); \
    ZYL_RET zyl_w_##p##_chars_e_get2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                     uint2 index, char* dest, uint2 dest_size, uint2 size); \
    ZYL_RET zyl_w_##p##_chars_e_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                     uint2 index, const char* src, uint2 len, uint2 size, uint1 indexed); \
    ZYL_RET zyl_w_##p##_nchars_e_get2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                      uint2 index, nchar_t* dest, uint2 dest_size, uint2 size); \
    ZYL_RET zyl_w_##p##_nchars_e_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                      uint2 index, const nchar_t* src, uint2 len, uint2 size, uint1 indexed); \
    ZYL_RET zyl_w_##p##_string_e_get2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                      uint2 index, char* dest, uint2 dest_size, uint2* len); \
    ZYL_RET zyl_w_##p##_string_e_get_len2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                          uint2 index, uint2* len); \
    ZYL_RET zyl_w_##p##_string_e_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                      uint2 index, const char* src, uint2 len, uint1 indexed); \
    ZYL_RET zyl_w_##p##_nstring_e_get2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                       uint2 index, nchar_t* dest, uint2 dest_size, uint2* len); \
    ZYL_RET zyl_w_##p##_nstring_e_get_len2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                           uint2 index, uint2* len); \
    ZYL_RET zyl_w_##p##_nstring_e_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, \
                                       uint2 index, const nchar_t* src, uint2 len, uint1 indexed); \
    ZYL_RET zyl_w_##p##_struct_e_get2(zyl_objhandle_h h, zyl_objhandle_h s, uint2 index, zyl_offs_t offs_u, \
                                      zyl_offs_t offs_c, uint2 fldno); \
    ZYL_RET zyl_w_##p##_struct_e_put2(zyl_objhandle_h h, zyl_objhandle_h s, uint2 index, zyl_offs_t offs_u, \
                                      zyl_offs_t offs_c, uint2 fldno, uint1 indexed);
ZYL_TEST_ELEMENT_CALLS(v) ZYL_TEST_ELEMENT_CALLS(va)

/* Bits are put with the "2" for vectors only. */
ZYL_RET zyl_w_v_bit_e_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 index,
                           uint1 value, uint1 indexed);
ZYL_RET zyl_w_v_bit_e_putrange2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 start,
                                uint2 num, const uint1* src, uint1 indexed);
ZYL_RET zyl_w_va_bit_e_put(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 index,
                           uint1 value, uint1 indexed);
ZYL_RET zyl_w_va_bit_e_putrange(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 start,
                                uint2 num, const uint1* src, uint1 indexed);

/* A vector's length, and the calls that only vectors have. */
ZYL_RET zyl_w_vector_size_get2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2* size);
ZYL_RET zyl_w_v_simple_size_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 n,
                                 uint2 size);
ZYL_RET zyl_w_v_bit_size_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 n);
ZYL_RET zyl_w_v_chars_size_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 n,
                                uint2 size);
ZYL_RET zyl_w_v_nchars_size_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 n,
                                 uint2 size);
ZYL_RET zyl_w_v_string_size_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 n);
ZYL_RET zyl_w_v_nstring_size_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 n);
ZYL_RET zyl_w_v_struct_size_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 n);
ZYL_RET zyl_w_v_string_e_erase2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 index,
                                uint1 indexed);
ZYL_RET zyl_w_v_nstring_e_erase2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 index,
                                 uint1 indexed);
ZYL_RET zyl_w_v_struct_e_erase2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint2 index,
                                uint1 indexed);

/* Optional structs; writing one creates it as struct number struct_no. */
ZYL_RET zyl_w_optional_get2(zyl_objhandle_h h, zyl_objhandle_h s, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno);
ZYL_RET zyl_w_optional_put2(zyl_objhandle_h h, zyl_objhandle_h s, uint2 struct_no, zyl_offs_t offs_u,
                            zyl_offs_t offs_c, uint2 fldno, uint1 indexed);
ZYL_RET zyl_w_optional_erase2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, uint1 indexed);

/* Points and rectangles, all coordinates at once, by coordinate size. */
#define ZYL_TEST_SPATIAL_CALLS(k) \
    ZYL_RET zyl_w_##k##_get(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, void* dest); \
    ZYL_RET zyl_w_##k##_get2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, void* dest); \
    ZYL_RET zyl_w_##k##_put(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, const void* src, uint1 indexed); \
    ZYL_RET zyl_w_##k##_put2(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno, const void* src, \
                             uint1 indexed);
ZYL_TEST_SPATIAL_CALLS(point_b1) ZYL_TEST_SPATIAL_CALLS(point_b2) ZYL_TEST_SPATIAL_CALLS(point_b4)
ZYL_TEST_SPATIAL_CALLS(point_b8) ZYL_TEST_SPATIAL_CALLS(rect_b1) ZYL_TEST_SPATIAL_CALLS(rect_b2)
ZYL_TEST_SPATIAL_CALLS(rect_b4) ZYL_TEST_SPATIAL_CALLS(rect_b8)

/* Columns of a class declared with "sequences", by C type. */
#define ZYL_TEST_COLUMN_CALL(T) \
    ZYL_RET zyl_w_seq_sequence_##T(zyl_trans_t t, uint2 class_code, zyl_offs_t offs, zyl_seq_iterator_h seq);
ZYL_TEST_COLUMN_CALL(uint1) ZYL_TEST_COLUMN_CALL(uint2) ZYL_TEST_COLUMN_CALL(uint4) ZYL_TEST_COLUMN_CALL(uint8)
ZYL_TEST_COLUMN_CALL(int1) ZYL_TEST_COLUMN_CALL(int2) ZYL_TEST_COLUMN_CALL(int4) ZYL_TEST_COLUMN_CALL(zyl_int8)
ZYL_TEST_COLUMN_CALL(float) ZYL_TEST_COLUMN_CALL(double) ZYL_TEST_COLUMN_CALL(zyl_date)
ZYL_TEST_COLUMN_CALL(zyl_time) ZYL_TEST_COLUMN_CALL(zyl_datetime) ZYL_TEST_COLUMN_CALL(autoid_t)
ZYL_RET zyl_w_seq_sequence_char(zyl_trans_t t, uint2 class_code, zyl_offs_t offs, zyl_seq_iterator_h seq, uint2 size);

/* Indexes. */
ZYL_RET zyl_w_voluntary_create(zyl_trans_h t, uint2 index_code);
ZYL_RET zyl_w_voluntary_drop(zyl_trans_h t, uint2 index_code);
ZYL_RET zyl_w_index_cursor(zyl_trans_h t, uint2 index_code, zyl_cursor_h c);
ZYL_RET zyl_w_tree_find(zyl_trans_h t, zyl_cursor_h c, ZYL_OPCODE op, zyl_external_field_h keys);
ZYL_RET zyl_w_tree_find_any(zyl_trans_h t, zyl_cursor_h c, int n_keywords, zyl_search_kwd_t* keywords);
ZYL_RET zyl_w_tree_find_all(zyl_trans_h t, zyl_cursor_h c, int n_keywords, zyl_search_kwd_t* keywords);
ZYL_RET zyl_w_tree_find_scalar(zyl_trans_h t, uint2 index_code, zyl_external_field_h keys, zyl_objhandle_h h);
ZYL_RET zyl_w_tree_find_vect(zyl_trans_h t, uint2 index_code, zyl_external_field_h keys, zyl_objhandle_h h,
                             uint2* index);
ZYL_RET zyl_w_kdtree_find(zyl_trans_h t, zyl_cursor_h c, ZYL_Hf* range_start, ZYL_Hf* range_end);
ZYL_RET zyl_w_hash_find(zyl_trans_h t, zyl_cursor_h c, zyl_external_field_h keys);
ZYL_RET zyl_w_hash_find_scalar(zyl_trans_h t, uint2 index_code, zyl_external_field_h keys, zyl_objhandle_h h);
ZYL_RET zyl_w_hash_find_vect(zyl_trans_h t, uint2 index_code, zyl_external_field_h keys, zyl_objhandle_h h,
                             uint2* index);
ZYL_RET zyl_w_cursor_compare(zyl_trans_h t, zyl_cursor_h c, zyl_external_field_h keys, int* result);
ZYL_RET zyl_w_cursor_locate(zyl_trans_h t, uint2 index_code, zyl_objhandle_h h, zyl_cursor_h c);
ZYL_RET zyl_w_cursor_get_index(zyl_cursor_h c, uint2* index);

#endif
