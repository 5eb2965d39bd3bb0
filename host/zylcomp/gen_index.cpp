// The index API: for each index of a class, the C functions that open a
// cursor on it, search it, compare and locate keys, "{class}_{index}_{op}",
// and a nested C++ class "{index}" in the class's wrapper whose static
// members forward to them.
//
// A key is passed as one parameter per key part (two for characters and
// strings: the text and its length), named after the part's field path.
// The functions fill an array of key descriptors from them, one per part,
// and hand it to the runtime. Since key parameters bear field names, the
// fixed parameters of the transaction and the cursor take names no key
// parameter has (StrParams); the C++ members always use t_, c_ and op_.
#include <cstring>

#include "foundation/ut.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"

// One function of an index: the C function, and its static member in the
// nested C++ class unless `member` is null.
struct IndexRow {
    bool when;
    char const* op;
    char const* params;
    char const* body;  // "\n}\n\n" follows unless the body closes itself
    bool closed;
    char const* member;
    char const* forward;
    // The name the member's inline definition bears when it is not the
    // member's own (the system's text defines search_any as search_all).
    char const* definedAs = nullptr;
};

namespace {

char const* const kStaticMember = "    static ZYL_RET ";

char const* kindComment(IndexType type) {
    switch (type) {
    case IT_TREE:
        return " // b-tree index";
    case IT_HASH:
        return " // hash index";
    case IT_KDTREE:
        return " // kd-tree index";
    case IT_RTREE:
        return " // R-tree index";
    case IT_PATRICIA:
        return " // patricia tree index";
    case IT_TRIGRAM:
        return " // Trigram index";
    default:
        return " // L2-List";
    }
}

// The key array of the search functions: `n` descriptors, filled by `fill`.
mstring keyArray(int n, mstring const& fill) {
    return mstring("{ zyl_external_field_t a_[") + UT::n2s(n) + "];\n  zyl_external_field_h pa_ = a_;\n" + fill;
}

// `list` without the ", " that opens it.
mstring unopened(mstring const& list) {
    char const* p = list.c_str();
    return p[0] == ',' && p[1] == ' ' ? mstring(p + 2) : list;
}

}  // namespace

void GenOutput::writeIndexRow(IndexRow const& row, mstring const& ix, mstring const& scope, int width, Subst& v) {
    // The texts are filled into the buffers the field rows use too.
    std::string& head = m_rowHead;
    std::string& body = m_rowBody;
    std::string& member = m_rowMember;
    std::string& forward = m_rowForward;
    head.clear();
    appendHead(head, {ix.c_str(), row.op}, width);
    v.fillTo(head, row.params);
    body.clear();
    v.fillTo(body, row.body);
    if (!row.closed)
        body += "\n}\n\n";
    writeCFunction(head, body);
    if (row.member == nullptr)
        return;
    member.clear();
    v.fillTo(member, row.member);
    forward.clear();
    v.fillTo(forward, row.forward);
    if (row.definedAs == nullptr) {
        writeCppMember(kStaticMember, scope, member, forward);
        return;
    }
    // Deliberately kept: the definition collides with the real one of that
    // name, and C++ refuses the wrapper.
    *m_hpp << kStaticMember;
    m_hpp->write(member);
    *m_hpp << ";\n";
    *m_hppInline << "inline  ZYL_RET " << scope << "::" << row.definedAs;
    size_t const params = member.find('(');
    if (params != std::string::npos)
        m_hppInline->write(member.data() + params, member.size() - params);
    *m_hppInline << "\n";
    m_hppInline->write(forward);
    *m_hppInline << "\n}\n\n";
}

void GenOutput::outputIndex(Class& c, Index& idx) {
    IndexType const type = idx.m_type;
    // An index without key parts (a list declared in the class body) is
    // walked like the implicit list; it has nothing to search by.
    bool const list = type == IT_LIST || idx.v_segment.size() == 0;
    bool const tree = type == IT_TREE && !list;
    bool const patricia = type == IT_PATRICIA;
    bool const userdef = idx.m_userdef;
    bool const vectorKey = idx.m_vbased >= 0;
    int const nKeys = static_cast<int>(idx.v_segment.size());

    // The key texts of the tree-like kinds and of hash indexes.
    StrParams sp;
    bool const keyed = !list && type != IT_KDTREE && type != IT_RTREE;
    if (keyed) {
        for (int k = 0; k < nKeys; k++) {
            Index::Segment const& seg = idx.v_segment[k];
            mstring in;
            mstring out;
            mstring args;
            mstring fill;
            seg.paramStrings(k, m_schema, sp.v_names, in, out, args, fill);
            // The field path itself is a name too: a key field "t" must
            // not meet a transaction "t".
            mstring path;
            for (unsigned i = 0; i < seg.v_fldEl.size(); i++)
                path += mstring(i > 0 ? "_" : "") + seg.v_fldEl[static_cast<int>(i)].m_name;
            sp.v_names.push_back(path);
            sp.m_formal += ", " + in;
            sp.m_actual += ", " + args;
            sp.m_fill += "  " + fill + (k + 1 < nKeys ? "pa_++; " : "") + "\n";
            sp.m_count++;
        }
    }
    sp.setup();

    // A patricia key is matched to a number of bits; a bit-string key
    // brings that count along already.
    mstring bits;
    mstring bitsArg;
    if (patricia && !userdef) {
        if (!idx.m_hasBoolean) {
            bits = ", uint2 number_of_bits ";
            bitsArg = ",number_of_bits ";
        }
        sp.m_fill += "  pa_->bit_len = number_of_bits; ";
    }

    mstring const ix = c.m_name + "_" + idx.m_name;
    Subst v;
    v.set("db", m_schema->m_dbName).set("ns", alone(m_schema->m_dbName))
        .setType("class", c.m_name)
        .set("index", idx.m_name)
        .set("ix", ix)
        .set("code", UT::n2s(idx.m_code))
        .set("t", sp.m_trans)
        .set("c", sp.m_cursor)
        .set("F", sp.m_formal)
        .set("A", sp.m_actual)
        .set("F1", unopened(sp.m_formal))
        .set("A1", unopened(sp.m_actual))
        .set("bits", bits)
        .set("bitsArg", bitsArg)
        .set("a", keyArray(nKeys, sp.m_fill))
        .set("ap", keyArray(nKeys + 1, sp.m_fill));  // pattern functions end the array with an empty key

    // A thick tree over one string key can be searched by keywords.
    bool keywords = false;
    if (tree && !userdef && nKeys == 1 && idx.m_thick) {
        int const category = idx.v_segment[0].v_fldEl[static_cast<int>(idx.v_segment[0].v_fldEl.size()) - 1]
                                 .m_field->m_struct->m_category;
        keywords = category == TC_STRING || category == TC_NSTRING;
    }
    // An R-tree is searched by one rectangle of its field's scalar type.
    if (type == IT_RTREE) {
        Field const& f = *idx.v_segment[0].v_fldEl[0].m_field;
        v.set("ctype", cTypeOf(*f.m_struct)).set("rect", f.m_name + "_key_0");
    }

    mstring const scope = hppClass(c.m_name) + "::" + alone(idx.m_name);
    *m_hpp << "\n  class " << alone(idx.m_name) << kindComment(list ? IT_LIST : type) << "\n  { public: \n";

    if (type == IT_HASH) {
        // Hash indexes have a shorter group, the same for user-defined ones.
        IndexRow const rows[] = {
            {true, "_index_cursor", " ( zyl_trans_h t, /*OUT*/ zyl_cursor_h c )",
             "{ return zyl_w_index_cursor( t, {code}, c );", false, "cursor( zyl_trans_h t, /*OUT*/ zyl_cursor_h c )",
             "{ return {ns}::{ix}_index_cursor(t, c); "},
            {true, "_compare", " ( zyl_trans_h {t}, zyl_cursor_h {c}{F}, /*OUT*/ int *result_ )",
             "{a}  return zyl_w_cursor_compare( {t}, {c}, a_, result_);", false,
             "compare( zyl_trans_h t_, zyl_cursor_h c_{F}, /*OUT*/ int & result_ )",
             "{ return {ns}::{ix}_compare(t_, c_{A}, &result_); "},
            {!idx.m_unique, "_search", " ( zyl_trans_h {t}, /*INOUT*/ zyl_cursor_h {c}{F} )",
             "{a}return zyl_w_hash_find({t},{c},a_);", false, "search( zyl_trans_h t_, /*INOUT*/ zyl_cursor_h c_{F} )",
             "{ return {ns}::{ix}_search(t_, c_{A}); "},
            {idx.m_unique && !vectorKey, "_find", " ( zyl_trans_h {t}{F}, /*OUT*/ {class} *handle_)",
             "{a}  return zyl_w_hash_find_scalar({t}, {code}, a_, (zyl_objhandle_h)handle_);", false,
             "find( zyl_trans_h t_{F}, /*OUT*/ {class} & handle_)",
             "{ ZYL_RET ret_ = {ns}::{ix}_find(t_{A}, &handle_); handle_.set_valid(ret_==ZYL_S_OK); return ret_; "},
            {idx.m_unique && vectorKey, "_find",
             " ( zyl_trans_h {t}{F}, /*OUT*/ {class} *handle_, /*OUT*/ uint2 *index_)",
             "{a}  return zyl_w_hash_find_vect({t}, {code}, a_, (zyl_objhandle_h)handle_, index_);", false,
             "find( zyl_trans_h t_{F}, /*OUT*/ {class} & handle_, /*OUT*/ uint2 & index_)",
             "{ ZYL_RET ret_ = {ns}::{ix}_find(t_{A}, &handle_, &index_); handle_.set_valid(ret_==ZYL_S_OK); "
             "return ret_; "},
        };
        for (IndexRow const& row : rows) {
            if (row.when)
                writeIndexRow(row, ix, scope, c.m_outputWidth, v);
        }
        *m_hpp << "  }; // " << idx.m_name << "\n";
        return;
    }

    // A user-defined index compares by the user's functions; it has no
    // pattern, locate or match functions.
    bool const plain = !userdef;
    IndexRow const rows[] = {
        {plain && idx.m_voluntary, "_create", " ( zyl_trans_h t)", "{ return zyl_w_voluntary_create(t, {code} ); ",
         false, "create( zyl_trans_h t )", "{ return {ns}::{ix}_create(t); "},
        {plain && idx.m_voluntary, "_drop", " ( zyl_trans_h t)", "{ return zyl_w_voluntary_drop(t, {code} ); ", false,
         "drop( zyl_trans_h t )", "{ return {ns}::{ix}_drop(t); "},
        {true, "_index_cursor", " ( zyl_trans_h t, /*OUT*/ zyl_cursor_h c )",
         "{ return zyl_w_index_cursor( t, {code}, c );", false, "cursor( zyl_trans_h t, /*OUT*/ zyl_cursor_h c )",
         "{ return {ns}::{ix}_index_cursor(t, c); "},
        {tree || patricia || type == IT_TRIGRAM, "_search",
         " ( zyl_trans_h {t}, /*INOUT*/ zyl_cursor_h {c}, ZYL_OPCODE op_{F}{bits} )",
         "{a}\n  return zyl_w_tree_find({t},{c},op_,a_);", false,
         "search( zyl_trans_h t_, /*INOUT*/ zyl_cursor_h c_, ZYL_OPCODE op_{F}{bits} )",
         "{ return {ns}::{ix}_search(t_, c_, op_{A}{bitsArg}); "},
        {type == IT_KDTREE, "_search",
         " ( zyl_trans_h {t}, /*INOUT*/ zyl_cursor_h {c}, /*IN*/ {class} * range_start, /*IN*/ {class} * range_end )",
         "{ \n  return zyl_w_kdtree_find({t},{c}, (ZYL_Hf*) range_start, (ZYL_Hf*) range_end );", false,
         "search( zyl_trans_h t_, /*INOUT*/ zyl_cursor_h c_, /*IN*/ {class} * range_start, /*IN*/ {class} * "
         "range_end )",
         "{ return {ns}::{ix}_search(t_, c_, range_start, range_end); "},
        {type == IT_RTREE, "_search",
         " ( zyl_trans_h t_, /*IN*/ ZYL_OPCODE op_ , /*INOUT*/ zyl_cursor_h c_, const {ctype}* {rect} )",
         "{ zyl_external_field_t a_ [1];\n  zyl_external_field_h pa_ = a_;\n  pa_->field_type = 0; \n"
         "  pa_->v.ptr_size = sizeof({rect}); \n  pa_->ptr = (const char*){rect}; \n"
         "  return zyl_w_tree_find(t_, c_, op_, a_); ",
         false, "search( zyl_trans_h t_, /*IN*/ ZYL_OPCODE op_ , /*INOUT*/ zyl_cursor_h c_, const {ctype}* {rect} )",
         "{ return {ns}::{ix}_search(t_, op_, c_, {rect}); "},
        {keywords, "_search_any",
         " ( zyl_trans_h {t}, /*INOUT*/ zyl_cursor_h {c}, int n_keywords, zyl_search_kwd_t* keywords)",
         "{ return zyl_w_tree_find_any({t},{c},n_keywords,keywords); }\n\n", true,
         "search_any( zyl_trans_h t_, /*INOUT*/ zyl_cursor_h c_, int n_keywords, zyl_search_kwd_t* keywords)",
         "{ return {ns}::{ix}_search_any(t_, c_, n_keywords, keywords); ", "search_all"},
        {keywords, "_search_all",
         " ( zyl_trans_h {t}, /*INOUT*/ zyl_cursor_h {c}, int n_keywords, zyl_search_kwd_t* keywords)",
         "{ return zyl_w_tree_find_all({t},{c},n_keywords,keywords); }\n\n", true,
         "search_all( zyl_trans_h t_, /*INOUT*/ zyl_cursor_h c_, int n_keywords, zyl_search_kwd_t* keywords)",
         "{ return {ns}::{ix}_search_all(t_, c_, n_keywords, keywords); "},
        {tree || patricia, "_compare", " ( zyl_trans_h {t}, zyl_cursor_h {c}{F}{bits}, /*OUT*/ int *result_ )",
         "{a}  return zyl_w_cursor_compare( {t}, {c}, a_, result_);", false,
         "compare( zyl_trans_h t_, zyl_cursor_h c_{F}{bits}, /*OUT*/ int & result_ )",
         "{ return {ns}::{ix}_compare(t_, c_{A}{bitsArg}, &result_); "},
        {tree && plain, "_pattern_size", " ({F1}, /*OUT*/ uint4 *size_)",
         "{ap}  (pa_+1)->field_type=0;\n   return zyl_pattern_size( a_,size_);", false,
         "pattern_size({F1}, /*OUT*/ uint4 *size_)", "{ return {ns}::{ix}_pattern_size({A1}, size_); "},
        {tree && plain, "_pattern_search",
         " ( zyl_trans_h {t}, zyl_cursor_h {c}, /*INOUT*/ void *allocated_pattern, zyl_size_t memsize {F} )",
         "{ap}  (pa_+1)->field_type=0;\n  return zyl_pattern_search({t}, {c}, allocated_pattern, memsize, a_);",
         false, "pattern_search( zyl_trans_h t_, zyl_cursor_h c_, /*INOUT*/ void *allocated_pattern, "
                "zyl_size_t memsize {F} )",
         "{ return {ns}::{ix}_pattern_search(t_, c_, allocated_pattern, memsize{A}); "},
        {tree && plain, "_pattern_next", " ( zyl_trans_h {t}, zyl_cursor_h {c}, /*INOUT*/ void *allocated_pattern )",
         "{ return zyl_pattern_next({t}, {c} , allocated_pattern,  0);", false,
         "pattern_next( zyl_trans_h t_, zyl_cursor_h c_, /*INOUT*/ void *allocated_pattern )",
         "{ return {ns}::{ix}_pattern_next(t_, c_, allocated_pattern); "},
        {plain && !vectorKey, "_locate", " ( zyl_trans_h t, /*OUT*/ zyl_cursor_h c, {class} * handle)",
         "{ return zyl_w_cursor_locate( t, {code}, (zyl_objhandle_h)handle, c);", false,
         "locate( zyl_trans_h t, /*OUT*/ zyl_cursor_h c, {class} * handle)",
         "{ return {ns}::{ix}_locate(t, c, handle); "},
        {plain && vectorKey && (tree || patricia), "_get_index", " ( zyl_cursor_h c, /*OUT*/ uint2 * index )",
         "{ return zyl_w_cursor_get_index( c, index); ", false, "get_index( zyl_cursor_h c, /*OUT*/ uint2 & result )",
         "{ return {ns}::{ix}_get_index(c, &result); "},
        {idx.m_unique && (tree || patricia) && !vectorKey, "_find",
         " ( zyl_trans_h {t}{F}{bits}, /*OUT*/ {class} *handle_)",
         "{a}  return zyl_w_tree_find_scalar({t}, {code}, a_, (zyl_objhandle_h)handle_);", false,
         "find( zyl_trans_h t_{F}{bits}, /*OUT*/ {class} & handle_)",
         "{ ZYL_RET ret_ = {ns}::{ix}_find(t_{A}{bitsArg}, &handle_); handle_.set_valid(ret_==ZYL_S_OK); "
         "return ret_; "},
        {idx.m_unique && (tree || patricia) && vectorKey, "_find",
         " ( zyl_trans_h {t}{F}{bits}, /*OUT*/ {class} *handle_, /*OUT*/ uint2 *index_)",
         "{a}  return zyl_w_tree_find_vect({t}, {code}, a_, (zyl_objhandle_h)handle_, index_);", false,
         "find( zyl_trans_h t_{F}{bits}, /*OUT*/ {class} & handle_, /*OUT*/ uint2 & index_)",
         "{ ZYL_RET ret_ = {ns}::{ix}_find(t_{A}{bitsArg}, &handle_, &index_); handle_.set_valid(ret_==ZYL_S_OK); "
         "return ret_; "},
        {patricia && plain, "_next_match", " ( zyl_trans_h {t}, zyl_cursor_h {c}{F}{bits} )",
         "{a}\n  return zyl_w_tree_find( {t}, {c}, ZYL_NEXT_MATCH, a_);", false,
         "next_match( zyl_trans_h t_, zyl_cursor_h c_{F}{bits} )",
         "{ return {ns}::{ix}_next_match(t_, c_{A}{bitsArg}); "},
        {patricia && plain, "_prefix_match", " ( zyl_trans_h {t}, zyl_cursor_h {c}{F}{bits} )",
         "{a}\n  return zyl_w_tree_find( {t}, {c}, ZYL_PREF, a_);", false,
         "prefix_match( zyl_trans_h t_, zyl_cursor_h c_{F}{bits} )",
         "{ return {ns}::{ix}_prefix_match(t_, c_{A}{bitsArg}); "},
        {patricia && plain, "_longest_match", " ( zyl_trans_h {t}, zyl_cursor_h {c}{F}{bits} )",
         "{a}\n  return zyl_w_tree_find( {t}, {c}, ZYL_BEST, a_);", false,
         "longest_match( zyl_trans_h t_, zyl_cursor_h c_{F}{bits} )",
         "{ return {ns}::{ix}_longest_match(t_, c_{A}{bitsArg}); "},
        {patricia && plain, "_exact_match", " ( zyl_trans_h {t}, zyl_cursor_h {c}{F}{bits} )",
         "{a}\n  return zyl_w_tree_find( {t}, {c}, ZYL_EX, a_);", false,
         "exact_match( zyl_trans_h t_, zyl_cursor_h c_{F}{bits} )",
         "{ return {ns}::{ix}_exact_match(t_, c_{A}{bitsArg}); "},
    };
    for (IndexRow const& row : rows) {
        if (row.when)
            writeIndexRow(row, ix, scope, c.m_outputWidth, v);
    }
    *m_hpp << "  }; // " << idx.m_name << "\n";
}
