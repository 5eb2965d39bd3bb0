// The top of the grammar: statements, class prefixes, declare, struct, enum,
// calculator and iot.
//
// Every report of the analyzer goes through the preprocessor with position
// 0 (file and line only), and the first error ends the compile: code after
// an error call never relies on having returned.
#include "host/zylcomp/analyzer.h"

#include "foundation/ut.h"
#include "frontend/parser.h"
#include "frontend/preprocessor.h"

bool findClassTypes(Schema& schema, int mask, bool persistent) {
    bool found = false;
    ISet::Pos* pos = schema.m_classes->first();
    for (; pos->valid() && !found; pos->next()) {
        Class const* c = static_cast<Class const*>(pos->get().get());
        bool kind = ((mask & 0x800) && c->m_distributed) || ((mask & 0x80) && c->m_iotType == IOT_UPTABLE) ||
                    ((mask & 0x8000) && c->m_iotType == IOT_DOWNTABLE);
        found = kind && c->m_persistent == persistent;
    }
    delete pos;
    return found;
}

// schema -> {statement}
// statement -> {prefix} "class" ... | "declare" ... | "struct" ... | ["packed"] "direct" "struct" ...
//            | "enum" ... | "calculator" ... | "iot" ...
void Analyzer::analyze() {
    bool compact = m_compactDefault;
    mplacement placement = PLACEMENT_DEFAULT;
    atomicity atom = ATOMICITY_DEFAULT;
    TableIotType iotType = IOT_NONE;
    bool local = false;
    bool distributed = false;
    bool prefixSeen = false;

    // The statement words are only compared: they are looked at where they
    // stand.
    for (Parser::Token tok = m_parser->next(); !tok.empty(); tok = m_parser->next()) {
        // Class prefixes. "compact", "local" and "distributed" may repeat;
        // there is no word that undoes "compact".
        if (tok.is("local")) {
            if (distributed)
                error("'local' contradicts with 'distributed' keyword.");
            local = prefixSeen = true;
            continue;
        }
        if (tok.is("distributed") || tok.is("distrib")) {
            if (local)
                error("'local' contradicts with 'distributed' keyword.");
            distributed = prefixSeen = true;
            continue;
        }
        if (tok.is("uptable") || tok.is("downtable")) {
            bool up = tok.is("uptable");
            if (!(m_schema.m_schemaOptions & Schema::OPT_IOT))
                error(up ? "'uptable' can be declared only for IoT schema"
                         : "'downtable' can be declared only for IoT schema");
            if (iotType == (up ? IOT_DOWNTABLE : IOT_UPTABLE))
                error(up ? "'uptable' contradicts with 'downtable' keyword."
                         : "'downtable' contradicts with 'uptable' keyword.");
            iotType = up ? IOT_UPTABLE : IOT_DOWNTABLE;
            prefixSeen = true;
            continue;
        }
        if (tok.is("compact")) {
            compact = prefixSeen = true;
            continue;
        }
        if (tok.is("persistent") || tok.is("transient")) {
            if (placement != PLACEMENT_DEFAULT)
                error("expected 'class' keyword");
            placement = tok.is("persistent") ? PLACEMENT_PERSISTENT : PLACEMENT_TRANSIENT;
            prefixSeen = true;
            continue;
        }
        if (tok.is("atomic") || tok.is("nonatomic")) {
            if (atom != ATOMICITY_DEFAULT)
                error("expected 'class' keyword");
            atom = tok.is("atomic") ? ATOMICITY_ATOMIC : ATOMICITY_NONATOMIC;
            prefixSeen = true;
            continue;
        }
        if (tok.is("class")) {
            do_class(compact, placement, local, distributed, atom, iotType);
            compact = m_compactDefault;
            placement = PLACEMENT_DEFAULT;
            atom = ATOMICITY_DEFAULT;
            iotType = IOT_NONE;
            local = distributed = prefixSeen = false;
            continue;
        }
        if (prefixSeen)
            error("Invalid syntax");

        if (tok.is("declare")) {
            do_declare();
        } else if (tok.is("struct")) {
            do_struct();
        } else if (tok.is("packed")) {
            if (!m_parser->next().is("direct"))
                error("expected 'direct' keyword");
            if (!m_parser->next().is("struct"))
                error("expected 'struct' keyword");
            do_direct_struct(true);
        } else if (tok.is("direct")) {
            if (!m_parser->next().is("struct"))
                error("expected 'struct' keyword");
            do_direct_struct(false);
        } else if (tok.is("enum")) {
            do_enum();
        } else if (tok.is("calculator")) {
            do_calculator();
        } else if (tok.is("iot")) {
            do_iot();
        } else {
            error1("unexpected token #1", tok.str());
        }
    }
    copyOidStruct();
}

// The oid type may be declared anywhere in the text; only now can "ref"
// become its copy.
void Analyzer::copyOidStruct() {
    if (m_schema.m_idType.empty())
        return;
    Struct* oidType = m_schema.findType(m_schema.m_idType);
    if (oidType == nullptr) {
        error1("oid struct #1 was not defined", m_schema.m_idType);
        return;
    }
    Struct* ref = m_schema.findType("ref");
    if (ref == nullptr)
        return;
    *ref = *oidType;
    if (ref->m_isDirect)
        m_directTypes++;
    ref->m_name = "ref";
    ref->m_category = TC_OID_REF;
}

// declare -> "declare" ( "database" name | ("oid"|"OID") type "[" n "]"
//                      | ("auto_oid"|"AUTO_OID"|"HA") "[" n "]" ) ";"
void Analyzer::do_declare() {
    mstring what = m_parser->get();
    if (what == "database") {
        if (!m_schema.m_dbName.empty())
            error("database already declared");
        m_schema.m_dbName = m_parser->getName();
        match(";");
        // From here a failed compile removes this database's output files.
        if (m_onDbName)
            m_onDbName->dbnameFound(m_schema.m_dbName);
    } else if (what == "oid" || what == "OID") {
        if (what == "OID")
            warning("OID is deprecated, use oid instead");
        if (m_schema.m_oidDeclared)
            error("oid already declared");
        int precision;
        m_schema.m_idType = getTypeName(precision);
        match("[");
        unsigned estimate = m_parser->getNum();
        match("]");
        if (estimate == 0)
            error("oid estimated count value is not valid");
        m_schema.m_oidEstimate = static_cast<int>(estimate);
        match(";");
        // A placeholder until the end of the text, when it becomes a copy
        // of the oid type.
        Struct* ref = new Struct();
        ref->m_name = "ref";
        ref->m_category = TC_OID_REF;
        m_schema.m_types->add(HIComparable(ref));
        m_schema.m_oidDeclared = true;
    } else if (what == "HA" || what == "auto_oid" || what == "AUTO_OID") {
        // Both keys say "HA"; the message table turns them into auto_oid.
        if (m_schema.m_autoOid != 0)
            error("duplicate HA [estimation]");
        match("[");
        unsigned estimate = m_parser->getNum();
        match("]");
        if (estimate == 0)
            error("HA estimated count value is not valid");
        m_schema.m_autoOid = static_cast<int>(estimate);
        match(";");
    } else {
        error("invalid declare statement");
    }
}

// struct_decl -> "struct" name "{" {field} "}" ";"
void Analyzer::do_struct() {
    mstring name = m_parser->getName();
    checkIsNotReserved(name);
    match("{");
    HIComparable hold(new Struct());
    Struct* s = static_cast<Struct*>(hold.get());
    if (m_schema.findType(name)) {
        error1("type #1 already defined", name);
        return;
    }
    // The generated header would declare the name twice.
    if (m_schema.findClass(name)) {
        error1("class #1 already defined", name);
        return;
    }
    s->m_place = here();
    s->m_name = std::move(name);
    // The name enters the type set only after the body, so a struct cannot
    // name itself as a field type here.
    beginBody(*s);
    // A field statement reads its first word again as its type name.
    for (Parser::Token tok = m_parser->peek(); !tok.is("}"); tok = m_parser->peek()) {
        bool const atEnd = tok.empty();
        do_field(s);
        if (atEnd)
            return;  // end of input, already reported
    }
    m_parser->skip();
    add_indicators(s);
    match(";");
    fitFieldVector(*s);
    m_schema.m_types->add(hold);
}

// enum_decl -> "enum" name "{" elem {"," elem} "}" ";"     elem -> name ["=" signed]
void Analyzer::do_enum() {
    mstring name = m_parser->getName();
    checkIsNotReserved(name);
    if (m_schema.findType(name) || m_schema.findEnum(name))
        error1("type #1 already defined", name);
    else if (m_schema.findClass(name))
        error1("class #1 already defined", name);  // the header would declare the name twice
    HIComparable hold(new Enum(name));
    Enum* e = static_cast<Enum*>(hold.get());
    e->m_place = here();
    match("{");

    // The implicit value counts positions and ignores explicit values:
    // in { A = 10, B } B is 1. Deliberate; do not make it continue from 10.
    int count = 0;
    long minValue = 0;
    long maxValue = 0;
    for (mstring tok = ","; tok == ",";) {
        Enum::Elem elem;
        elem.m_name = m_parser->getName();
        // Element names are one name space for the whole schema.
        if (m_schema.m_enumValueNames.find(elem.m_name))
            error1("duplicate #1 in enum", elem.m_name);
        m_schema.m_enumValueNames.insert(elem.m_name);
        tok = m_parser->get();
        if (tok == "=") {
            elem.m_value = m_parser->getSigned();
            tok = m_parser->get();
        } else {
            elem.m_value = count;
        }
        if (tok != "}" && tok != ",") {
            error1("unexpected token #1", tok);
            return;
        }
        if (count == 0 || elem.m_value < minValue)
            minValue = elem.m_value;
        if (count == 0 || elem.m_value > maxValue)
            maxValue = elem.m_value;
        e->v_elem.push_back(elem);
        count++;
    }
    match(";");

    // Signed 16-bit limits even where the values would fit unsigned ones:
    // 40000 takes 4 bytes.
    int size = 2;
    if (m_keepFieldOrder || minValue < -32768 || maxValue > 32767)
        size = 4;
    else if (minValue >= 0 && maxValue < 256)
        size = 1;
    e->m_intType = enum_int_type(size);
    m_schema.m_enums->add(hold);
    m_schema.m_types->add(HIComparable(new Struct(name, TC_SCALAR, size, size, size, size, name)));
    // Whichever type holds the name now keeps it for good: it is the one a
    // field of this type will find.
    if (Struct* t = m_schema.findType(name))
        t->m_isEnum = true;
}

// calculator -> "calculator" "{" [entry {"," entry}] "}" ";"     entry -> class "<" n ">"
void Analyzer::do_calculator() {
    // The message carries its own line end.
    if (m_schema.m_hasCalculator)
        error("Each schema may have only one calculator.\n");
    match("{");
    mstring tok = m_parser->get();
    // An empty list declares nothing and reads no ";": a ";" behind it is
    // then an unexpected token of the top level.
    if (tok == "}")
        return;
    m_parser->takeBack(tok);

    mvector<CalculatorEntry> entries;
    for (;;) {
        CalculatorEntry entry;
        entry.m_className = m_parser->getName();
        // The message keeps its misspelling: it is the text users see.
        if (m_schema.findClass(entry.m_className) == nullptr)
            error1("class #1 doesn't exiests", entry.m_className);
        if (m_schema.m_calculatorClassNames.find(entry.m_className))
            error1("duplicate class #1 in calculator", entry.m_className);
        match("<");
        entry.m_count = m_parser->getNum();
        match(">");
        entries.push_back(entry);
        m_schema.m_calculatorClassNames.insert(entry.m_className);

        tok = m_parser->get();
        if (tok == "}") {
            match(";");
            m_schema.v_calculator = entries;
            m_schema.m_hasCalculator = true;
            return;
        }
        if (tok != ",") {
            error1("unexpected token #1", tok);
            return;
        }
    }
}

// iot -> "iot" ( "server" | "device" [agent] | "router" "<" level ">" [agent] ) ";"
void Analyzer::do_iot() {
    // Set before the kind is looked at: "uptable" and "downtable" become
    // legal from this statement on, and only below it.
    m_schema.m_schemaOptions |= Schema::OPT_IOT;
    mstring kind = m_parser->get();
    if (kind == "server") {
        m_schema.m_iotLevel = 1;
        match(";");
        m_schema.m_agentId = "1";
        return;
    }
    if (kind == "device") {
        m_schema.m_iotLevel = 65535;
    } else if (kind == "router") {
        match("<");
        unsigned level = m_parser->getNum();
        match(">");
        if (level < 2 || level > 65534)
            error2("Router level must be in interval #1 - #2", "2", "65534");
        m_schema.m_iotLevel = static_cast<std::uint16_t>(level);
    } else {
        error("expected 'server', 'device' or 'router' keyword");
        return;
    }
    mstring agent = m_parser->get();
    if (agent == ";")
        return;
    unsigned long long id;
    if (!UT::CVT::s2u8(agent.c_str(), &id))
        error("expected agent ID");
    m_schema.m_agentId = agent;
    match(";");
}
