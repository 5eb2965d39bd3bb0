/* The C types of the direct structs of direct.zyl, as the generated header
 * will declare them once direct struct output exists: D unpacked, P packed
 * to one byte in its stored form. */
#include "zyl.h"

typedef struct { int1 a; zyl_int8 b; char c[3]; int2 d; } D_d;
typedef struct { int1 a; int4 b; } P_d;
#pragma pack(push, 1)
typedef struct { int1 a; int4 b; } P_d_aligned_to_1;
#pragma pack(pop)
