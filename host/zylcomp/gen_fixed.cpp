// Fixed and direct structure access. So far the C type of a direct struct,
// which the field API and the dictionary name; the fixed-part types and
// their copy functions come later.
#include "foundation/ut.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"

// The stored image of a direct struct is this C type, laid out by the C
// compiler; the dictionary's sizes and offsets refer to it by name.
void GenOutput::direct_struct_output(Struct& s, mstring const& suffix) {
    *m_h << "typedef struct \n{\n";
    for (unsigned i = 0; i < s.v_field.size(); i++) {
        Field const& f = s.v_field[static_cast<int>(i)];
        Struct const& t = *f.m_struct;
        mstring const size = UT::n2s(t.m_layout.compact.m_size.m_num);
        mstring dim = f.m_isArray ? mstring("[") + UT::n2s(f.m_arraySize) + "]" : mstring();
        switch (t.m_category) {
        case TC_SCALAR:
            *m_h << "\t" << t.m_cType << " " << f.m_name << dim << ";\n";
            break;
        case TC_CHARS:
        case TC_BINARY:
            *m_h << "\tchar " << f.m_name << dim << "[" << size << "];\n";
            break;
        case TC_NCHARS:
            *m_h << "\tnchar_t " << f.m_name << dim << "[" << size << " / sizeof(nchar_t)];\n";
            break;
        case TC_DIRECT:
            *m_h << "\t" << t.m_name << "_d " << f.m_name << dim << ";\n";
            break;
        default:
            // The finishing checks refuse these; the C compiler would too.
            *m_h << "#error Direct struct field has bad type " << f.m_typeName << "\n";
            break;
        }
    }
    *m_h << "} " << s.m_name << "_d" << suffix << ";\n\n";
}
