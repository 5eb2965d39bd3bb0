/* Test stand-in for the database runtime's sequence header, which {db}.h
 * includes when a class holds sequences. Declarations only. */
#ifndef ZYL_TEST_RUNTIME_ZYLSEQ_H
#define ZYL_TEST_RUNTIME_ZYLSEQ_H

#include "zyl.h"

/* The largest character element a sequence holds. */
#define ZYL_SEQ_MAX_CHAR_SIZE 32

#endif
