/* Test stand-in for the database runtime's C header, so that generated
 * files can be compiled in the tests. It declares only what generated text
 * names so far; later work adds what its sections need. Declarations only:
 * nothing here has a body. */
#ifndef ZYL_TEST_RUNTIME_ZYL_H
#define ZYL_TEST_RUNTIME_ZYL_H

#include <stddef.h>

typedef size_t zyl_size_t;
typedef struct zyl_dictionary_t_* zyl_dictionary_h;
typedef struct zyl_calculator_t_* zyl_calculator_h;
typedef struct ZYL_Hf_ { void* obj; } ZYL_Hf;

void zyl_assign_handle(ZYL_Hf* dest, const ZYL_Hf* src);

/* What the access interface of a class names: results, handles, events. */
typedef unsigned char uint1;
typedef unsigned short uint2;
typedef unsigned int uint4;
typedef int ZYL_RET;
#define ZYL_S_OK 0
typedef struct zyl_trans_t_* zyl_trans_h;
typedef struct zyl_cursor_t_* zyl_cursor_h;
typedef ZYL_Hf* zyl_objhandle_h;
typedef int zyl_dict_type_t;
typedef int ZYL_EVENT_TYPE;
typedef enum { ZYL_BEFORE_UPDATE, ZYL_AFTER_UPDATE } ZYL_HANDLING_ORDER;
typedef ZYL_RET (*zyl_generic_ev_handler)(void);

ZYL_RET zyl_set_class_allocation_block_size(zyl_trans_h t, uint2 class_code, zyl_size_t block_size);
ZYL_RET zyl_set_class_caching_priority(zyl_trans_h t, uint2 class_code, int priority);
ZYL_RET zyl_ev_h_register(zyl_trans_h t, zyl_generic_ev_handler handler, uint2 event_id, void* param,
                          uint2 before_update);
ZYL_RET zyl_ev_h_unregister(zyl_trans_h t, zyl_generic_ev_handler handler, uint2 event_id);

#endif
