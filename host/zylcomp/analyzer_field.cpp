// Field declarations of structs and classes, type names, initial values
// and the indicator fields of nullable fields.
#include "host/zylcomp/analyzer.h"

#include <cstring>

#include "frontend/parser.h"
#include "frontend/preprocessor.h"

namespace {

// Spare places for the fields still to come in a body; see fitFieldVector.
void roomForOneMore(mvector<Field>& v) {
    std::uint32_t const n = v.size();
    if (n == v.capacity() && n >= 2) {
        v.resize(2 * n);
        v.resize(n);  // shrinking keeps the block and its places
    }
}

}  // namespace

void Analyzer::beginBody(Struct& s) {
    // A new body: the table may not take it for the struct it followed.
    m_namesOf = nullptr;
    mvector<Field> block = std::move(m_spareFields);
    // Shrinking keeps the places; what is left in them was moved out.
    block.resize(0);
    std::uint32_t const n = s.v_field.size();
    for (std::uint32_t i = 0; i < n; i++)
        block.push_back_moved(std::move(s.v_field[static_cast<int>(i)]));
    s.v_field = std::move(block);
}

void Analyzer::fitFieldVector(Struct& s) {
    std::uint32_t const n = s.v_field.size();
    if (s.v_field.capacity() == n)
        return;
    mvector<Field> exact;
    exact.resize(n);
    for (std::uint32_t i = 0; i < n; i++)
        exact[static_cast<int>(i)] = std::move(s.v_field[static_cast<int>(i)]);
    // The emptied places serve the next body.
    m_spareFields = std::move(s.v_field);
    s.v_field = std::move(exact);
}

void Analyzer::rebuildFieldNames(Struct const& s) {
    std::uint32_t const n = s.v_field.size();
    std::uint32_t const have = m_nameSlots.size();
    std::uint32_t want = have < 64 ? 64 : have;
    // At most half the slots are taken, with room for the next field.
    while (want < 2 * (n + 1))
        want *= 2;
    if (want != have) {
        m_nameSlots = mvector<NameSlot>();
        m_nameSlots.resize(want);
        m_nameStamp = 0;
    }
    if (++m_nameStamp == 0) {
        // The stamps went round: free every slot by hand once.
        for (std::uint32_t i = 0; i < want; i++)
            m_nameSlots[static_cast<int>(i)].stamp = 0;
        m_nameStamp = 1;
    }
    m_namesOf = &s;
    m_namesCount = 0;
    m_freeSlot = -1;
    for (std::uint32_t i = 0; i < n; i++)
        enterFieldName(s, i);
}

void Analyzer::enterFieldName(Struct const& s, std::uint32_t place) {
    if (2 * (m_namesCount + 1) > m_nameSlots.size()) {
        rebuildFieldNames(s);  // enters every field up to `place`, the last one
        return;
    }
    char const* name = s.v_field[static_cast<int>(place)].m_name.c_str();
    std::uint32_t const hash = ISet::nameHash(name);
    std::uint32_t const mask = m_nameSlots.size() - 1;
    std::uint32_t i = hash & mask;
    for (;; i = (i + 1) & mask) {
        NameSlot const& slot = m_nameSlots[static_cast<int>(i)];
        if (slot.stamp != m_nameStamp)
            break;
        // A second field of the same name: the first one answers for both.
        if (slot.hash == hash && std::strcmp(s.v_field[static_cast<int>(slot.place)].m_name.c_str(), name) == 0) {
            m_namesCount++;
            return;
        }
    }
    m_nameSlots[static_cast<int>(i)] = NameSlot{m_nameStamp, hash, place};
    m_namesCount++;
}

bool Analyzer::fieldNameTaken(Struct* s, mstring const& name) { return fieldNamed(s, name) >= 0; }

int Analyzer::fieldNamed(Struct* s, mstring const& name) {
    if (m_namesOf != s || m_namesCount != s->v_field.size())
        rebuildFieldNames(*s);
    char const* key = name.c_str();
    std::uint32_t const hash = ISet::nameHash(key);
    std::uint32_t const mask = m_nameSlots.size() - 1;
    for (std::uint32_t i = hash & mask;; i = (i + 1) & mask) {
        NameSlot const& slot = m_nameSlots[static_cast<int>(i)];
        if (slot.stamp != m_nameStamp) {
            m_freeSlot = static_cast<int>(i);
            m_freeHash = hash;
            return -1;
        }
        if (slot.hash == hash && std::strcmp(s->v_field[static_cast<int>(slot.place)].m_name.c_str(), key) == 0)
            return static_cast<int>(slot.place);
    }
}

void Analyzer::fieldNameAdded(Struct* s) {
    int const free = m_freeSlot;
    m_freeSlot = -1;
    if (m_namesOf != s || m_namesCount + 1 != s->v_field.size())
        return;  // the next look-up builds the table again
    // The name just looked up and not found: its free slot is still free.
    if (free >= 0 && 2 * (m_namesCount + 1) <= m_nameSlots.size()) {
        m_nameSlots[free] = NameSlot{m_nameStamp, m_freeHash, m_namesCount};
        m_namesCount++;
        return;
    }
    enterFieldName(*s, m_namesCount);
}

// The optional "<C>" behind ref and autoid_t names the class referred to.
void Analyzer::readRefClass(Field& f) {
    if (f.m_typeName != "autoid_t" && f.m_typeName != "ref")
        return;
    if (m_parser->peek().is("<")) {
        m_parser->skip();
        f.m_refClassName = m_parser->get();
        match(">");
    }
}

void Analyzer::markDirect(Field& f, Struct* s) {
    Struct* type = m_directTypes > 0 ? m_schema.findType(f.m_typeName) : nullptr;
    f.m_isDirect = type != nullptr && type->m_isDirect;
    if (f.m_isDirect)
        s->m_hasDirect = true;
    f.m_containerStruct = s;
}

// init -> value | "{" value {"," value} "}"
// The values are kept as text; their form is checked where they are used.
void Analyzer::readInitValues(Field& f) {
    if (f.m_isOptional)
        error("optional: can't init");
    if (f.m_isVector)
        error("vector: can't init");
    if (!f.m_isArray) {
        mstring tok = m_parser->get();
        if (tok == "{")
            error("scalar init with {");
        f.v_init.push_back_moved(std::move(tok));
        return;
    }

    match("{");
    int left = f.m_arraySize;
    for (;;) {
        mstring value = m_parser->get();
        // A list closed before its first value.
        if (value == "}" && f.v_init.size() == 0) {
            error("array not initialized");
            return;
        }
        f.v_init.push_back_moved(std::move(value));
        if (--left == 0) {
            match("}");
            return;
        }
        Parser::Token tok = m_parser->next();
        if (tok.is("}")) {
            // A short list: the rest of the array is zero.
            for (; left > 0; left--)
                f.v_init.push_back("0");
            return;
        }
        if (!tok.is(",")) {
            error("expected ,");
            if (tok.empty())
                return;
        }
    }
}

// field -> ["nullable"] form ["=" init] {"," name ["=" init]} ";"
// form -> "optional" type name | "sequence" "<" type [order] ">" name | "vector" "<" type ">" [ref_class] name
//       | ("rect"|"rectangle"|"point") "<" type ">" name "[" dim "]" | type [ref_class] name ["[" [size] "]"]
void Analyzer::do_field(Struct* s) {
    Field f;
    f.m_fieldNo = m_fieldCounter++;
    f.m_position = static_cast<int>(s->v_field.size());
    f.m_place = here();
    int precision = -1;
    mstring name;

    // The first words are looked at where they stand; a plain field reads
    // its first word again as its type name.
    Parser::Token tok = m_parser->peek();
    if (tok.is("nullable")) {
        f.m_isNullable = true;
        m_parser->skip();
        tok = m_parser->peek();
    }

    if (tok.is("optional")) {
        m_parser->skip();
        f.m_isOptional = true;
        f.m_typeName = getTypeName(precision);
        f.m_precision = precision;
        name = m_parser->getName();
        checkIsNotReserved(name);
    } else if (tok.is("sequence")) {
        m_parser->skip();
        if (!s->m_isClass)
            error("Sequence cannot be element of a struct");
        match("<");
        m_usesSequences = true;
        f.m_typeName = "sequence";
        f.m_elemTypeName = getTypeName(precision);
        // A whole-number numeric (precision 0) is a plain integer here.
        if (precision > 0)
            error("Sequence element can not be of numeric type");
        f.m_isSequence = true;
        f.m_seqOrder = "ZYL_SEQ_NO_ORDER";
        tok = m_parser->next();
        if (tok.is("asc") || tok.is("ascending")) {
            f.m_seqOrder = "ZYL_SEQ_ASC_ORDER";
            tok = m_parser->next();
        } else if (tok.is("desc") || tok.is("descending")) {
            f.m_seqOrder = "ZYL_SEQ_DESC_ORDER";
            tok = m_parser->next();
        }
        if (!tok.is(">"))
            error("sequence specification error");
        name = m_parser->getName();
        checkIsNotReserved(name);
    } else if (tok.is("vector")) {
        m_parser->skip();
        match("<");
        f.m_isVector = true;
        f.m_typeName = getTypeName(precision);
        f.m_precision = precision;
        match(">");
        readRefClass(f);
        name = m_parser->getName();
        checkIsNotReserved(name);
    } else if (tok.is("rectangle") || tok.is("rect") || tok.is("point")) {
        bool rect = !tok.is("point");
        m_parser->skip();
        match("<");
        f.m_typeName = getTypeName(precision);
        f.m_precision = precision;
        match(">");
        f.m_isRect = rect;
        f.m_isPoint = !rect;
        name = m_parser->getName();
        checkIsNotReserved(name);
        if (!m_parser->next().is("["))
            error(rect ? "rectangle dimension must be specified" : "point dimension must be specified");
        f.m_isArray = true;
        unsigned dim = m_parser->getNum();
        if (dim < 2 || dim > (rect ? 16u : 8u))
            error("dimension size limits");
        match("]");
        // A rectangle holds two corners.
        f.m_arraySize = static_cast<int>(rect ? 2 * dim : dim);
    } else {
        f.m_typeName = getTypeName(precision);
        f.m_precision = precision;
        readRefClass(f);
        name = m_parser->getName();
        checkIsNotReserved(name);
        if (name == "updated_bitmap") {
            f.m_isBitmap = true;
            if (f.m_typeName != "boolean")
                error("updated_bitmap - could be only of type boolean.");
        }
        if (m_parser->peek().is("[")) {
            m_parser->skip();
            f.m_isArray = true;
            // The bitmap may leave its size out ("[]"): the class sizes it.
            int size = static_cast<int>(m_parser->getNumEx(f.m_isBitmap));
            if ((size < 1 || size > 65535) && !(f.m_isBitmap && size <= 0))
                error("array size limits");
            // Only a class counts the fields the bitmap takes its size from.
            if (f.m_isBitmap && size <= 0 && !s->m_isClass)
                error("updated_bitmap without an array size can be declared only in a class");
            f.m_arraySize = size;
            match("]");
        } else {
            if (f.m_isBitmap)
                error("updated_bitmap - could be only of type bool and should be declared as array field.");
        }
    }
    markDirect(f, s);
    if (!f.m_refClassName.empty())
        s->m_hasRefNames = true;

    // Every name of the statement is a copy of the same field: type,
    // dimension, flags, number and position are shared. The record moves
    // into the struct; a further name starts again from what was stored,
    // without the initial values of the name before.
    for (;;) {
        if (fieldNameTaken(s, name)) {
            error1("field #1 already defined", name);
            return;
        }
        f.m_name = std::move(name);
        roomForOneMore(s->v_field);
        s->v_field.push_back_moved(std::move(f));
        fieldNameAdded(s);
        Field& stored = s->v_field[static_cast<int>(s->v_field.size()) - 1];
        tok = m_parser->next();
        if (tok.is("=")) {
            readInitValues(stored);
            tok = m_parser->next();
        }
        if (tok.is(";"))
            return;
        if (!tok.is(",")) {
            error("expected , or ;");
            return;
        }
        f = stored;
        f.v_init = mvector<mstring>();
        name = m_parser->getName();
        checkIsNotReserved(name);
        // A further name would be a bitmap without a size the class gives.
        if (f.m_isBitmap && f.m_arraySize <= 0) {
            error1("field #1 has no array size: only updated_bitmap may leave it out", name);
            return;
        }
    }
}

// type -> ("numeric"|"decimal") "<" width ["," precision] ">"
//       | ("signed"|"unsigned"|"char"|"binary"|"nchar") "<" n ">" | name
mstring Analyzer::getTypeName(int& precision) {
    // Only a name that is none of the words below becomes a string: those
    // are identifiers that getName would pass without a word, so they are
    // looked at where they stand and dropped.
    enum { NUMERIC, DECIMAL, SIGNED, UNSIGNED, CHAR, BINARY, NCHAR, KINDS };
    static char const* const kSized[KINDS] = {"numeric", "decimal", "signed", "unsigned", "char", "binary", "nchar"};
    precision = -1;
    int kind = 0;
    Parser::Token first = m_parser->peek();
    while (kind < KINDS && !first.is(kSized[kind]))
        kind++;
    if (kind == KINDS)
        return m_parser->getName();  // a struct, enum or base type name; resolved later
    m_parser->skip();
    char const* word = kSized[kind];

    if (kind == NUMERIC || kind == DECIMAL) {
        match("<");
        unsigned width = m_parser->getNum();
        precision = 0;
        if (m_parser->peek().is(",")) {
            m_parser->skip();
            precision = static_cast<int>(m_parser->getNum());
        }
        if (width > 19)
            error("decimal width not be larger than 19");
        if (precision > static_cast<int>(width))
            error("precision should be smaller than width");
        match(">");
        return width < 3 ? "signed<1>" : width < 5 ? "signed<2>" : width < 10 ? "signed<4>" : "signed<8>";
    }

    bool isChar = kind == CHAR, isBinary = kind == BINARY, isNchar = kind == NCHAR;

    match("<");
    unsigned n = m_parser->getNum();
    match(">");
    if (!isChar && !isBinary && !isNchar && n != 1 && n != 2 && n != 4 && n != 8)
        error("numerical size must be 1,2,4 or 8");
    // "word<n>" written straight into one buffer: the word is one of the
    // last five kinds and n has at most ten digits.
    char text[32];
    std::size_t len = std::strlen(word);
    std::memcpy(text, word, len);
    text[len++] = '<';
    char digits[12];
    int nd = 0;
    for (unsigned rest = n;; rest /= 10) {
        digits[nd++] = static_cast<char>('0' + rest % 10);
        if (rest < 10)
            break;
    }
    while (nd > 0)
        text[len++] = digits[--nd];
    text[len++] = '>';
    text[len] = '\0';
    mstring type(text);

    // Fixed-size character and byte types come into being on first use.
    if ((isChar || isBinary || isNchar) && m_schema.findType(type) == nullptr) {
        int size = static_cast<int>(isNchar ? 2 * n : n);
        int align = isNchar ? 2 : 1;
        TypeCategory category = isChar ? TC_CHARS : isBinary ? TC_BINARY : TC_NCHARS;
        m_schema.m_types->add(HIComparable(new Struct(type, category, size, size, align, align, "")));
    }
    return type;
}

// Each nullable field gets a boolean "{name}_indicator" behind the fields
// of the body; it holds "1" when the field has an initial value.
void Analyzer::add_indicators(Struct* s) {
    unsigned n = s->v_field.size();
    for (unsigned i = 0; i < n; i++) {
        if (!s->v_field[static_cast<int>(i)].m_isNullable)
            continue;
        Field indicator;
        // Both texts are kept as they are: exactly fitted blocks.
        mstring const name = s->v_field[static_cast<int>(i)].m_name + "_indicator";
        // The indicator's access functions would be generated twice.
        int const taken = fieldNamed(s, name);
        if (taken >= 0) {
            errorAt(s->v_field[taken].m_place, "field #1 is named like the indicator of nullable field #2", name,
                    s->v_field[static_cast<int>(i)].m_name);
            return;
        }
        indicator.m_name.setExact(name.c_str(), name.length());
        indicator.m_place = s->v_field[static_cast<int>(i)].m_place;
        indicator.m_typeName = mstring("boolean");
        indicator.m_isIndicator = true;
        indicator.m_containerStruct = s;
        indicator.m_position = static_cast<int>(s->v_field.size());
        indicator.m_fieldNo = m_fieldCounter++;
        if (s->v_field[static_cast<int>(i)].v_init.size() > 0)
            indicator.v_init.push_back("1");
        s->v_field[static_cast<int>(i)].m_indicator = indicator.m_position;
        roomForOneMore(s->v_field);
        s->v_field.push_back_moved(std::move(indicator));
        fieldNameAdded(s);
    }
}
