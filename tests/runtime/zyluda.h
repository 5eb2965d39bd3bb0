/* Test stand-in for the database runtime's zyluda.h; empty until generated
 * text needs something from it. */
#ifndef ZYL_TEST_RUNTIME_ZYLUDA_H
#define ZYL_TEST_RUNTIME_ZYLUDA_H

#endif
