/* Test stand-in for the runtime's sequence header, which the generated
 * header includes when the schema has sequences. Generated text names
 * nothing of it yet; later work adds what the sequence functions need. */
#ifndef ZYL_TEST_RUNTIME_ZYLSEQ_H
#define ZYL_TEST_RUNTIME_ZYLSEQ_H

#include "zyl.h"

#endif
