/* Test stand-in for the database runtime's C header, so that generated
 * files can be compiled in the tests. It declares only what generated text
 * names so far; later work adds what its sections need. */
#ifndef ZYL_TEST_RUNTIME_ZYL_H
#define ZYL_TEST_RUNTIME_ZYL_H

#include <stddef.h>

typedef size_t zyl_size_t;
typedef struct zyl_dictionary_t_* zyl_dictionary_h;
typedef struct zyl_calculator_t_* zyl_calculator_h;
typedef struct ZYL_Hf_ { void* obj; } ZYL_Hf;

void zyl_assign_handle(ZYL_Hf* dest, const ZYL_Hf* src);

#endif
