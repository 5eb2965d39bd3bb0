/* Test stand-in for the database runtime's sequence header, which {db}.h
 * includes when a class holds sequences. Declarations only. */
#ifndef ZYL_TEST_RUNTIME_ZYLSEQ_H
#define ZYL_TEST_RUNTIME_ZYLSEQ_H

#include "zyl.h"

/* The largest character element a sequence holds. */
#define ZYL_SEQ_MAX_CHAR_SIZE 32

typedef uint4 zyl_seq_no_t;
typedef uint4 zyl_bitmap_word_t;
#define ZYL_SEQ_INFINITY ((zyl_seq_no_t)-1)
typedef enum { ZYL_SEQ_BOUNDARY_INCLUSIVE, ZYL_SEQ_BOUNDARY_EXCLUSIVE, ZYL_SEQ_BOUNDARY_OPEN } zyl_seq_boundary_kind_t;
typedef enum { ZYL_SEQ_NO_ORDER, ZYL_SEQ_ASC_ORDER, ZYL_SEQ_DESC_ORDER } zyl_seq_order_t;

ZYL_RET zyl_w_seq_count(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_no_t* count);

/* The calls of one element type T, named by suffix s. Search and join
 * exist for ordered sequences only and take the order. */
#define ZYL_TEST_SEQUENCE_CALLS(s, T) \
    ZYL_RET zyl_w_seq_first_##s(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, T* val); \
    ZYL_RET zyl_w_seq_last_##s(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, T* val); \
    ZYL_RET zyl_w_seq_append_##s(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, T const* vals, \
                                 zyl_size_t n_items, zyl_bitmap_word_t const* null_bitmap); \
    ZYL_RET zyl_w_seq_insert_##s(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_no_t pos, \
                                 T const* vals, zyl_size_t n_items, zyl_bitmap_word_t const* null_bitmap); \
    ZYL_RET zyl_w_seq_delete_##s(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_no_t from, \
                                 zyl_seq_no_t till); \
    ZYL_RET zyl_w_seq_search_##s(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_iterator_h it, \
                                 T low, zyl_seq_boundary_kind_t low_boundary, T high, \
                                 zyl_seq_boundary_kind_t high_boundary, zyl_seq_order_t order); \
    ZYL_RET zyl_w_seq_join_##s(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_iterator_h result, \
                               zyl_seq_iterator_h join_with, zyl_seq_order_t order); \
    ZYL_RET zyl_w_seq_map_##s(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_iterator_h dst, \
                              zyl_seq_iterator_h map); \
    ZYL_RET zyl_w_seq_subseq_##s(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_iterator_h it, \
                                 zyl_seq_no_t from, zyl_seq_no_t till); \
    ZYL_RET zyl_w_seq_from_cursor_##s(zyl_trans_h t, zyl_seq_iterator_h it, zyl_cursor_h c, uint2 class_code, \
                                      zyl_offs_t offs_u, zyl_offs_t offs_c); \
    ZYL_RET zyl_w_seq_project_##s(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_iterator_h dst, \
                                  zyl_seq_iterator_h src); \
    ZYL_RET zyl_w_seq_store_##s(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_iterator_h src);
ZYL_TEST_SEQUENCE_CALLS(uint1, uint1) ZYL_TEST_SEQUENCE_CALLS(uint2, uint2) ZYL_TEST_SEQUENCE_CALLS(uint4, uint4)
ZYL_TEST_SEQUENCE_CALLS(uint8, uint8) ZYL_TEST_SEQUENCE_CALLS(int1, int1) ZYL_TEST_SEQUENCE_CALLS(int2, int2)
ZYL_TEST_SEQUENCE_CALLS(int4, int4) ZYL_TEST_SEQUENCE_CALLS(int8, zyl_int8) ZYL_TEST_SEQUENCE_CALLS(float, float)
ZYL_TEST_SEQUENCE_CALLS(double, double) ZYL_TEST_SEQUENCE_CALLS(datetime, zyl_datetime)

/* Characters, binary data and structs of up to ZYL_SEQ_MAX_CHAR_SIZE bytes:
 * elements by address, their size last. */
ZYL_RET zyl_w_seq_first_char(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, void* val, uint2 size);
ZYL_RET zyl_w_seq_last_char(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, void* val, uint2 size);
ZYL_RET zyl_w_seq_append_char(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, const void* vals,
                              zyl_size_t n_items, zyl_bitmap_word_t const* null_bitmap, uint2 size);
ZYL_RET zyl_w_seq_insert_char(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_no_t pos,
                              const void* vals, zyl_size_t n_items, zyl_bitmap_word_t const* null_bitmap, uint2 size);
ZYL_RET zyl_w_seq_delete_char(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_no_t from,
                              zyl_seq_no_t till, uint2 size);
ZYL_RET zyl_w_seq_search_char(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_iterator_h it,
                              const void* low, zyl_seq_boundary_kind_t low_boundary, const void* high,
                              zyl_seq_boundary_kind_t high_boundary, uint2 size, zyl_seq_order_t order);
ZYL_RET zyl_w_seq_join_char(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_iterator_h result,
                            zyl_seq_iterator_h join_with, uint2 size, zyl_seq_order_t order);
ZYL_RET zyl_w_seq_map_char(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_iterator_h dst,
                           zyl_seq_iterator_h map, uint2 size);
ZYL_RET zyl_w_seq_subseq_char(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_iterator_h it,
                              zyl_seq_no_t from, zyl_seq_no_t till, uint2 size);
ZYL_RET zyl_w_seq_from_cursor_char(zyl_trans_h t, zyl_seq_iterator_h it, zyl_cursor_h c, uint2 class_code,
                                   zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 size);
ZYL_RET zyl_w_seq_project_char(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_iterator_h dst,
                               zyl_seq_iterator_h src, uint2 size);
ZYL_RET zyl_w_seq_store_char(zyl_objhandle_h h, zyl_offs_t offs_u, zyl_offs_t offs_c, zyl_seq_iterator_h src,
                             uint2 size);

#endif
