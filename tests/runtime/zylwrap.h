/* Test stand-in for the database runtime's zylwrap.h: the calls that
 * generated function bodies make. Declarations only. */
#ifndef ZYL_TEST_RUNTIME_ZYLWRAP_H
#define ZYL_TEST_RUNTIME_ZYLWRAP_H

#include "zyl.h"

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

#endif
