// The dictionary type code of a field, as far as the finishing checks need
// it: collations, trigram keys and one-bit booleans are told apart by it
// before any dictionary exists.
#pragma once

class Field;

// Type codes the finishing checks compare with.
enum FieldTypeCode {
    FTC_CHARS = 7,     // char<n>
    FTC_STRING = 8,
    FTC_NCHARS = 19,   // nchar<n>
    FTC_NSTRING = 20,
    FTC_WCHARS = 21,   // wide character codes: no type of this version has them
    FTC_WSTRING = 22,
    FTC_BIT = 23,      // boolean, one bit per element
    FTC_STRUCT = 50,
    FTC_BLOB = 51,
};

// The code of `f`'s resolved type. A struct or blob is an internal fault
// unless `allowStruct` is set, as is a type no code exists for.
int fieldTypeCode(Field const& f, bool allowStruct);
