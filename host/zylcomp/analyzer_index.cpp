// Index declarations of a class body, from the "<" on. Key parts are kept
// as text here; they are resolved into segments once every field exists.
#include "host/zylcomp/analyzer.h"

#include "frontend/parser.h"
#include "frontend/preprocessor.h"

// index_decl -> {index_prefix} kind "<" keys ">" name ["[" estimate "]"] ";"
// The estimate is there for hash indexes only, and mandatory for them.
void Analyzer::do_index_declaration(Class& c, IndexType kind, bool unique, bool voluntary, bool userdef,
                                    bool thick, bool inclusive) {
    Index idx;
    idx.m_place = here();
    match("<");
    idx.m_type = kind;
    idx.m_unique = unique;
    idx.m_voluntary = voluntary;
    idx.m_userdef = userdef;
    idx.m_thick = thick;
    idx.m_inclusive = inclusive;
    do_indexFields(idx, c);

    idx.m_name = m_parser->getName();
    checkIsNotReserved(idx.m_name);
    if (c.indexNames.find(idx.m_name))
        error1("index #1 already defined", idx.m_name);
    c.indexNames.insert(idx.m_name);
    if (kind == IT_HASH) {
        match("[");
        idx.ecount = static_cast<int>(m_parser->getNum());
        match("]");
        if (idx.ecount < 1)
            error1("estimated count value is not valid for the hash index #1", idx.m_name);
    }
    match(";");
    c.v_index.push_back_moved(std::move(idx));
}

// keys -> "*" | key {"," key}
// key -> name {"." name} {order | case} ["collate" name]
// Trees take any number of order and case words (the last order wins),
// hashes one case word, other kinds none; only trees and hashes collate.
void Analyzer::do_indexFields(Index& idx, Class& c) {
    IndexType const kind = idx.m_type;
    // Key parts are read as names; the other words are only compared.
    if (m_parser->peek().is("*")) {
        m_parser->skip();
        // Every field of the class, expanded once all fields are known.
        idx.v_fieldName.push_back("*");
        if (!m_parser->next().is(">"))
            error("'>' expected");
        return;
    }

    for (;;) {
        mstring path = m_parser->getName();
        // The implicit autoid member may be indexed although its name is
        // reserved.
        if (path != "autoid")
            checkIsNotReserved(path);
        Parser::Token tok = m_parser->next();
        while (tok.is(".")) {
            if (kind == IT_KDTREE || kind == IT_RTREE)
                error("Fields of inner structs are not allowed as an element of R-Tree or KD-Tree indeces");
            mstring step = m_parser->getName();
            checkIsNotReserved(step);
            path += ".";
            path += step;
            tok = m_parser->next();
        }
        idx.v_fieldName.push_back_moved(std::move(path));

        bool desc = false;
        bool nocase = false;
        if (kind == IT_TREE) {
            for (;; tok = m_parser->next()) {
                if (tok.is("ascending") || tok.is("asc"))
                    desc = false;
                else if (tok.is("descending") || tok.is("desc"))
                    desc = true;
                else if (tok.is("ignore_case") || tok.is("case_insensitive"))
                    nocase = true;
                else
                    break;
            }
        } else if (kind == IT_HASH && (tok.is("ignore_case") || tok.is("case_insensitive"))) {
            nocase = true;
            tok = m_parser->next();
        }
        idx.v_desc.push_back(desc);
        idx.v_nocase.push_back(nocase);

        mstring collation;
        if ((kind == IT_TREE || kind == IT_HASH) && tok.is("collate")) {
            if (idx.m_userdef)
                error("unexpected \"collate\" for user-defined index");
            collation = m_parser->getName();
            checkIsNotReserved(collation);
            Collation* coll = m_schema.findCollation(collation);
            if (coll == nullptr) {
                coll = new Collation(collation);
                m_schema.m_collations->add(HIComparable(coll));
            }
            if (!c.m_noApi)
                coll->m_onlyNoApi = false;
            if (kind != IT_TREE)
                coll->m_onlyTree = false;
            tok = m_parser->next();
        }
        idx.v_collation.push_back_moved(std::move(collation));

        if (kind == IT_RTREE && !tok.is(">"))
            error("rtree index specification error");
        if (tok.is(">"))
            return;
        if (!tok.is(",")) {
            error1("unexpected token #1", tok.str());
            return;
        }
        if (kind == IT_PATRICIA)
            error("patricia index specification error");
    }
}
