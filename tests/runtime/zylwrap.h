/* Test stand-in for the database runtime's zylwrap.h; empty until generated
 * text needs something from it. */
#ifndef ZYL_TEST_RUNTIME_ZYLWRAP_H
#define ZYL_TEST_RUNTIME_ZYLWRAP_H

#endif
