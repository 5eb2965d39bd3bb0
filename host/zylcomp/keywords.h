// Names of the schema that are keywords of the languages the generator
// writes.
#pragma once

#include "foundation/mstring.h"

// A schema name as it stands alone in generated C, C++, Java or C#: a
// member, a parameter, a local. A keyword of any of the four languages gets
// a trailing underscore, the same in all of them, so that one schema gives
// the same names everywhere; any other name is returned as it is. Names
// built from it (A_int_get) are valid as they are and keep their form.
mstring alone(mstring const& name);
