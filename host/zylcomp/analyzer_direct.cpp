// Direct structures: structs whose in-memory image is the stored image.
// Their grammar is a restricted struct body; what it cannot refuse (dynamic
// types, nested structs) is refused once all types are known.
#include "host/zylcomp/analyzer.h"

#include "frontend/parser.h"
#include "frontend/preprocessor.h"

// direct_struct -> ["packed"] "direct" "struct" name "{" {direct_field} "}" ";"
void Analyzer::do_direct_struct(bool packed) {
    mstring name = m_parser->getName();
    checkIsNotReserved(name);
    match("{");
    HIComparable hold(new Struct());
    Struct* s = static_cast<Struct*>(hold.get());
    s->m_category = TC_DIRECT;
    s->m_packed = packed;
    if (m_schema.findType(name)) {
        error1("type #1 already defined", name);
        return;
    }
    // The generated header would declare the name twice.
    if (m_schema.findClass(name)) {
        error1("class #1 already defined", name);
        return;
    }
    // Unlike classes, a direct struct gets no access code unless the job
    // names other classes to hide, and then only when it is not named.
    bool noApi = m_hiddenClasses == nullptr || m_hiddenClasses->size() == 0;
    for (unsigned i = 0; !noApi && i < m_hiddenClasses->size(); i++)
        noApi = (*m_hiddenClasses)[i].empty() || (*m_hiddenClasses)[i] == name;
    s->m_noApi = noApi;
    s->m_name = name;
    s->m_isDirect = true;

    // A field statement reads its first word again as its type name.
    for (Parser::Token tok = m_parser->peek(); !tok.is("}"); tok = m_parser->peek()) {
        bool const atEnd = tok.empty();
        do_direct_field(s);
        if (atEnd)
            return;  // end of input, already reported
    }
    m_parser->skip();
    match(";");
    if (m_schema.m_types->add(hold))
        m_directTypes++;
}

// direct_field -> type name ["[" size "]"] {"," name} ";"
// No initial values, no field number: m_fieldNo and m_position stay 0.
void Analyzer::do_direct_field(Struct* s) {
    Field f;
    mstring name;
    Parser::Token tok = m_parser->peek();
    if (tok.is("rect")) {
        m_parser->skip();
        error("Rect field is not allowed in direct structure");
    } else if (tok.is("optional")) {
        m_parser->skip();
        error("Optional field is not allowed in direct structure");
    } else if (tok.is("nullable")) {
        m_parser->skip();
        error("Nullable field is not allowed in direct structure");
    } else if (tok.is("vector")) {
        m_parser->skip();
        error("Vector is not allowed in direct structure");
    } else {
        // "rectangle" is not refused here: it is an unknown type name. The
        // type reader reads the word again.
        int precision;
        f.m_typeName = getTypeName(precision);
        f.m_precision = precision;
        name = m_parser->getName();
        checkIsNotReserved(name);
        if (m_parser->peek().is("[")) {
            m_parser->skip();
            f.m_isArray = true;
            unsigned size = m_parser->getNum();
            if (size < 1 || size > 65535)
                error("array size limits");
            f.m_arraySize = static_cast<int>(size);
            match("]");
        }
    }
    markDirect(f, s);

    // Later names share the first one's type and dimension: the record moves
    // into the struct, and a further name starts again from what was stored.
    for (;;) {
        if (s->findField(name)) {
            error1("field #1 already defined", name);
            return;
        }
        f.m_name = std::move(name);
        s->v_field.push_back_moved(std::move(f));
        tok = m_parser->next();
        if (tok.is(";"))
            return;
        if (!tok.is(",")) {
            error("expected , or ;");
            return;
        }
        f = s->v_field[static_cast<int>(s->v_field.size()) - 1];
        name = m_parser->getName();
        checkIsNotReserved(name);
    }
}
