/* Runs the fixed-part functions of tests/schemas/api/fixed.zyl against a
 * stand-in runtime: the field functions that {s}_fixed_get and _fixed_put
 * chain call the definitions below. Each call prints " get {n}" or
 * " put {n}={value}" for field number {n}, so a test sees which fields were
 * read, in what order, and what was written. Built with the generated
 * source, the unused access functions dropped by the linker:
 *   cc -std=c99 -ffunction-sections -Wl,--gc-sections fixedcheck.c fx.c
 * Usage: fixedcheck get {null_indicator} {failing_field} | fixedcheck put */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "fx.h"
#include "zylwrap.h"

/* An indicator of this field number reads 0 (null); a read of the other
 * field number fails with code 9. A read of field {n} answers 100 + {n}. */
static unsigned null_indicator;
static unsigned failing_field;

static ZYL_RET got(uint2 fldno) {
    printf(" get %u", fldno);
    return fldno == failing_field ? 9 : ZYL_S_OK;
}

#define SCALAR(BYTES, T)                                                                                         \
    ZYL_RET zyl_w_b##BYTES##_get(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, void* result) {                \
        T v = (T)(100 + fldno);                                                                                  \
        memcpy(result, &v, sizeof v);                                                                            \
        return got(fldno);                                                                                       \
    }                                                                                                            \
    ZYL_RET zyl_w_b##BYTES##_put(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, uint1 ix, uint##BYTES value) { \
        printf(" put %u=%d", fldno, (int)(T)value);                                                              \
        return ZYL_S_OK;                                                                                         \
    }
SCALAR(2, int2)
SCALAR(4, int4)

ZYL_RET zyl_w_bit_get(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, void* result) {
    *(uint1*)result = fldno != null_indicator;
    return got(fldno);
}
ZYL_RET zyl_w_bit_put(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, uint1 ix, uint1 value) {
    printf(" put %u=%u", fldno, value);
    return ZYL_S_OK;
}
ZYL_RET zyl_w_chars_get(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, char* dest, uint2 dest_size, uint2 size) {
    memset(dest, 'a' + fldno % 26, dest_size);
    return got(fldno);
}
ZYL_RET zyl_w_chars_put(zyl_objhandle_h h, zyl_offs_t offs, uint2 fldno, const char* src, uint2 len, uint2 size,
                        uint1 ix) {
    printf(" put %u=%.*s", fldno, (int)len, src);
    return ZYL_S_OK;
}
ZYL_RET zyl_w_struct_get2(zyl_objhandle_h h, zyl_objhandle_h s, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno) {
    return got(fldno);
}
ZYL_RET zyl_w_struct_put2(zyl_objhandle_h h, zyl_objhandle_h s, zyl_offs_t offs_u, zyl_offs_t offs_c, uint2 fldno,
                          uint1 ix) {
    printf(" put %u", fldno);
    return ZYL_S_OK;
}

int main(int argc, char** argv) {
    Item item;
    Item_fixed f;
    if (argc == 4 && strcmp(argv[1], "get") == 0) {
        null_indicator = (unsigned)atoi(argv[2]);
        failing_field = (unsigned)atoi(argv[3]);
        memset(&f, 0, sizeof f);
        printf("\nrc=%d", Item_fixed_get(&item, &f));
        printf(" a=%d r={%d %d %u} b=%d c=%.3s d=%d b_indicator=%u\n", f.a, f.r.low, f.r.high, f.r.low_indicator,
               f.b, f.c, f.d, f.b_indicator);
        return 0;
    }
    if (argc == 2 && strcmp(argv[1], "put") == 0) {
        Item_fixed const src = {-1, {-2, -3, 0}, -4, {'x', 'y', 'z'}, -5, 1};
        printf("\nrc=%d\n", Item_fixed_put(&item, &src));
        return 0;
    }
    return 2;
}
