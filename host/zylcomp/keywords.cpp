#include "host/zylcomp/keywords.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

// The keywords of C, C++, Java and C# together, sorted for a binary search.
char const* const kHostKeywords[] = {
    "_Alignas", "_Alignof", "_Atomic", "_Bool", "_Complex", "_Generic", "_Imaginary", "_Noreturn",
    "_Static_assert", "_Thread_local", "abstract", "alignas", "alignof", "and", "and_eq", "as", "asm",
    "assert", "auto", "base", "bitand", "bitor", "bool", "boolean", "break", "byte", "case", "catch", "char",
    "char16_t", "char32_t", "checked", "class", "compl", "const", "const_cast", "constexpr", "continue",
    "decimal", "decltype", "default", "delegate", "delete", "do", "double", "dynamic_cast", "else", "enum",
    "event", "explicit", "export", "extends", "extern", "false", "final", "finally", "fixed", "float", "for",
    "foreach", "friend", "goto", "if", "implements", "implicit", "import", "in", "inline", "instanceof",
    "int", "interface", "internal", "is", "lock", "long", "mutable", "namespace", "native", "new", "noexcept",
    "not", "not_eq", "null", "nullptr", "object", "operator", "or", "or_eq", "out", "override", "package",
    "params", "private", "protected", "public", "readonly", "ref", "register", "reinterpret_cast", "restrict",
    "return", "sbyte", "sealed", "short", "signed", "sizeof", "stackalloc", "static", "static_assert",
    "static_cast", "strictfp", "string", "struct", "super", "switch", "synchronized", "template", "this",
    "thread_local", "throw", "throws", "transient", "true", "try", "typedef", "typeid", "typename", "typeof",
    "uint", "ulong", "unchecked", "union", "unsafe", "unsigned", "ushort", "using", "virtual", "void",
    "volatile", "wchar_t", "while", "xor", "xor_eq",
};

}  // namespace

mstring alone(mstring const& name) {
    char const* n = name.c_str();
    bool keyword = std::binary_search(std::begin(kHostKeywords), std::end(kHostKeywords), n,
                                      [](char const* a, char const* b) { return std::strcmp(a, b) < 0; });
    return keyword ? name + "_" : name;
}

