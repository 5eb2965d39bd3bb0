// Class declarations: the implicit system members, the body loop with its
// index prefixes, and the size of the updated_bitmap field.
#include "host/zylcomp/analyzer.h"

#include "frontend/parser.h"
#include "frontend/preprocessor.h"

namespace {

// One IoT layout of user-class fields and indexes. Fields whose names hold
// no "@" are the open ones.
struct IotIndex {
    char const* name;
    IndexType type;
    bool unique;
    char const* keys[4];
};

struct IotLayout {
    char const* fields[5];
    IotIndex indexes[2];
};

// Chosen by the schema's iot level and the class's table kind.
IotLayout const kServerUp = {
    {"iot_object_id@", "agent_id", "iot_db_id@", "iot_timestamp@"},
    {{"iot_idx_id@", IT_HASH, true, {"agent_id", "iot_db_id@", "iot_object_id@"}}}};
IotLayout const kServerDown = {
    {"iot_timestamp@", "agent_id", "iot_object_id@"},
    {{"iot_idx_ts@", IT_TREE, false, {"agent_id", "iot_timestamp@"}}}};
IotLayout const kRouter = {
    {"src_agent_id", "dst_agent_id", "iot_object_id@", "iot_db_id@", "iot_timestamp@"},
    {{"iot_idx_id@", IT_HASH, true, {"src_agent_id", "iot_db_id@", "iot_object_id@"}},
     {"iot_idx_ts@", IT_TREE, false, {"src_agent_id", "iot_db_id@", "dst_agent_id", "iot_timestamp@"}}}};
IotLayout const kDeviceUp = {
    {"iot_object_id@", "iot_timestamp@"},
    {{"iot_idx_ts@", IT_TREE, false, {"iot_timestamp@"}}}};
IotLayout const kDeviceDown = {
    {"iot_src_id@", "iot_db_id@", "iot_object_id@", "iot_timestamp@"},
    {{"iot_idx_id@", IT_HASH, true, {"iot_src_id@", "iot_db_id@", "iot_object_id@"}}}};

bool isOpenIotField(char const* name) {
    for (; *name; name++)
        if (*name == '@')
            return false;
    return true;
}

}  // namespace

void Analyzer::addIotFields(Class& c) {
    bool up = c.m_iotType == IOT_UPTABLE;
    IotLayout const* layout = &kRouter;
    if (m_schema.m_iotLevel == 1)
        layout = up ? &kServerUp : &kServerDown;
    else if (m_schema.m_iotLevel == 65535)
        layout = up ? &kDeviceUp : &kDeviceDown;

    for (char const* name : layout->fields)
        if (name)
            c.addSysField(name, "unsigned<8>", !isOpenIotField(name), nullptr);
    for (IotIndex const& ix : layout->indexes) {
        if (ix.name == nullptr)
            continue;
        SysIndex index(ix.name, ix.type, ix.unique);
        for (char const* key : ix.keys)
            if (key)
                index.addField(key);
        c.addIndex(std::move(index));
    }
}

// The "autoid" member and its hash index. Under keepFieldOrder the field
// goes to the front, behind "auto_oid@" when there is one; the positions of
// the fields it passes are left as they were.
void Analyzer::addAutoid(Class& c) {
    Field f;
    f.m_name = "autoid";
    f.m_typeName = "$autoid";
    f.m_position = static_cast<int>(c.v_field.size());
    f.m_containerStruct = &c;
    if (m_keepFieldOrder)
        c.v_field.insert_moved(m_schema.m_autoOid != 0 ? 1 : 0, std::move(f));
    else
        c.v_field.push_back_moved(std::move(f));

    Index index;
    index.m_name = "autoid";
    index.m_unique = true;
    index.m_type = IT_HASH;
    index.ecount = c.m_autoidEstimate;
    index.v_fieldName.push_back("autoid");
    index.v_desc.push_back(false);
    index.v_nocase.push_back(false);
    index.v_collation.push_back(mstring());
    c.addIndex(std::move(index));
}

// Sizes the updated_bitmap field from the number of fields n: one bit per
// field, but stored as a boolean array unless a few wider words, one more
// than asked for, are clearly smaller. False when the class has nothing
// but the bitmap.
bool Analyzer::fitUpdatedBitmap(Class& c) {
    Field* bitmap = nullptr;
    for (unsigned i = 0; i < c.v_field.size() && bitmap == nullptr; i++)
        if (c.v_field[i].m_isBitmap)
            bitmap = &c.v_field[i];
    if (bitmap == nullptr)
        return true;

    unsigned n = c.v_field.size();
    unsigned w = 1;
    if (n <= 255) {
        if (n == 1) {
            error("Only updated_bitmap field declared for class, please declare other class fields.");
            return false;
        }
    } else {
        w = n < 32768 ? 2 : 4;
    }
    unsigned a = static_cast<unsigned>(bitmap->m_arraySize);
    if (a == 0 || a > n) {
        a = n;
        bitmap->m_arraySize = static_cast<int>(n);
    }
    if ((a + 1) * w < (n + 7) / 8) {
        bitmap->m_arraySize = static_cast<int>(a + 1);
        bitmap->m_typeName = w == 1 ? "unsigned<1>" : w == 2 ? "unsigned<2>" : "unsigned<4>";
    }
    return true;
}

// class_decl -> {prefix} "class" name "{" {member} "}" ";"
void Analyzer::do_class(bool compact, mplacement placement, bool local, bool distributed, atomicity atom,
                        TableIotType iotType) {
    // Held here until the class enters the set; dropping it releases it.
    HIComparable hold(new Class(compact));
    Class* c = static_cast<Class*>(hold.get());
    c->m_isClass = true;
    c->m_persistent = placement == PLACEMENT_TRANSIENT    ? false
                      : placement == PLACEMENT_PERSISTENT ? true
                                                          : m_persistentDefault;
    c->m_atomic = atom == ATOMICITY_ATOMIC ? true : atom == ATOMICITY_NONATOMIC ? false : m_atomicDefault;
    c->m_local = local;
    c->m_distributed = distributed;
    c->m_iotType = iotType;

    // System members come first, in this order.
    if (m_schema.m_autoOid != 0)
        c->addSysField("auto_oid@", "$auto_oid", false, nullptr);
    if (distributed) {
        SysIndex index("timestamp_idx@", IT_TREE, false);
        c->addSysField("timestamp@", "unsigned<8>", true, nullptr);
        index.addField("timestamp@");
        c->addIndex(std::move(index));
    }
    if (iotType != IOT_NONE)
        addIotFields(*c);

    mstring name = m_parser->getName();
    checkIsNotReserved(name);
    c->m_place = here();
    // A refused name ends the statement before its body is read.
    if (m_schema.findType(name) || m_schema.findEnum(name)) {
        error1("type #1 already defined", name);
        return;
    }
    if (m_schema.findClass(name)) {
        error1("class #1 already defined", name);
        return;
    }
    // An empty entry hides every class.
    if (m_hiddenClasses) {
        for (unsigned i = 0; i < m_hiddenClasses->size(); i++) {
            mstring const& hidden = (*m_hiddenClasses)[i];
            if (hidden.empty() || hidden == name) {
                c->m_noApi = true;
                break;
            }
        }
    }
    match("{");
    // The name block moves over as the reader cut it, exactly fitted.
    c->m_name = std::move(name);
    if (distributed && m_schema.m_autoOid == 0) {
        error1("Class #1 declared as distributed, but auto_oid undeclared", c->m_name);
        return;
    }

    // Index prefixes collect until the next index declaration.
    bool unique = false, nonunique = false, voluntary = false, userdef = false, thick = false;
    bool inclusive = false, prefixSeen = false;
    auto indexDone = [&]() { unique = nonunique = voluntary = userdef = thick = inclusive = prefixSeen = false; };

    beginBody(*c);
    // Each member's first word is looked at where it stands: a field
    // statement reads it again as its type name.
    for (;;) {
        Parser::Token tok = m_parser->peek();
        if (tok.is("}")) {
            m_parser->skip();
            break;
        }
        if (tok.is("userdef")) {
            m_parser->skip();
            prefixSeen = userdef = true;
            if (thick)
                error("'thick' contradicts with 'userdef' keyword.");
            continue;
        }
        if (tok.is("voluntary")) {
            m_parser->skip();
            prefixSeen = voluntary = true;
            continue;
        }
        if (tok.is("unique")) {
            m_parser->skip();
            if (nonunique)
                error("'nonunique' keyword was already defined.");
            prefixSeen = unique = true;
            continue;
        }
        if (tok.is("nonunique")) {
            m_parser->skip();
            if (unique)
                error("'unique' keyword was already defined.");
            prefixSeen = nonunique = true;
            continue;
        }
        if (tok.is("thick")) {
            m_parser->skip();
            if (unique)
                error("'thick' contradicts with 'unique' keyword.");
            if (userdef)
                error("'thick' contradicts with 'userdef' keyword.");
            prefixSeen = thick = true;
            continue;
        }
        if (tok.is("inclusive")) {
            m_parser->skip();
            // Deliberately not a prefix of its own: "inclusive" before a
            // field is no error, and it stays set for the next index.
            inclusive = true;
            continue;
        }
        if (tok.is("tree") || tok.is("kdtree") || tok.is("rtree")) {
            IndexType kind = tok.is("tree") ? IT_TREE : tok.is("kdtree") ? IT_KDTREE : IT_RTREE;
            m_parser->skip();
            do_index_declaration(*c, kind, unique, voluntary, userdef, thick, inclusive);
            indexDone();
            continue;
        }
        if (tok.is("trigram")) {
            m_parser->skip();
            // Always thick and inclusive; the prefixes are ignored.
            do_index_declaration(*c, IT_TRIGRAM, false, false, false, true, true);
            indexDone();
            continue;
        }
        if (tok.is("patricia")) {
            m_parser->skip();
            if (c->m_persistent)
                error("Patricia index available only for transient classes.");
            do_index_declaration(*c, IT_PATRICIA, unique, voluntary, userdef, thick, inclusive);
            indexDone();
            continue;
        }
        if (tok.is("hash")) {
            m_parser->skip();
            if (voluntary)
                error("Hash indeces can not be voluntary");
            if (c->m_persistent)
                warning("Tree declaration expected");
            // Unique unless said otherwise, where trees are the reverse.
            do_index_declaration(*c, IT_HASH, !nonunique, voluntary, userdef, thick, inclusive);
            indexDone();
            continue;
        }
        if (prefixSeen)
            error("Invalid syntax");

        if (tok.is("list") || tok.is("sequences")) {
            bool const sequences = tok.is("sequences");
            m_parser->skip();
            match(";");
            if (c->m_hasList)
                error("list already declared");
            c->m_hasList = true;
            c->m_listSequences = sequences;
            Index list;
            list.m_name = "list_index_";
            list.m_unique = true;
            c->addIndex(std::move(list));
        } else if (tok.is("oid") || tok.is("OID")) {
            bool const upper = tok.is("OID");
            m_parser->skip();
            if (upper)
                warning("OID is deprecated, use oid instead");
            if (c->m_hasOid)
                error("oid already declared");
            c->m_hasOid = true;
            match(";");
        } else if (tok.is("autoid")) {
            m_parser->skip();
            if (c->m_hasAutoid)
                error("autoid already declared");
            c->m_hasAutoid = true;
            match("[");
            c->m_autoidEstimate = static_cast<int>(m_parser->getNum());
            match("]");
            if (c->m_autoidEstimate < 1)
                error("estimated count value is not valid for the autoid");
            match(";");
            addAutoid(*c);
        } else if (tok.is("history")) {
            m_parser->skip();
            // Read and dropped: m_hasHistory stays false, so no history
            // index is ever built.
            warning("History is not currently supported");
            match("[");
            m_parser->getNum();
            match("]");
            match(";");
        } else if (tok.is("event")) {
            m_parser->skip();
            do_event(*c);
        } else if (tok.is("TTL_count") || tok.is("TTL_clock_time")) {
            // The statement reads its first word itself.
            do_ttl(*c);
        } else {
            // So does a field statement.
            bool const atEnd = tok.empty();
            do_field(c);
            if (atEnd)
                return;  // end of input, already reported
        }
    }

    add_indicators(c);
    match(";");
    if (!fitUpdatedBitmap(*c))
        return;
    fitFieldVector(*c);
    m_schema.m_classes->add(hold);
}
