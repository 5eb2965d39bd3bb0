/* Prints a generated dictionary through the library's JSON dumper, so that
 * it can be compared with the one the run-time entry builds from the same
 * schema. Built with the generated source and linked with the library:
 * cc -DGET_DICTIONARY={db}_get_dictionary dictjson.c {db}.c -lzylcomp */
#include <stdio.h>

#include "zyl.h"
#include "zylcomp.h"

zyl_dictionary_h GET_DICTIONARY(void);

int main(void) { return zyl_dict_write_json(GET_DICTIONARY(), stdout) == 0 ? 0 : 1; }
