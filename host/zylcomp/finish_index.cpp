// Index finishing: collation numbers, the implicit list, index codes and
// user-defined numbers, the limits of the special index kinds, and the
// resolution of every key part into a segment with its checks.
//
// Index codes run through all classes in set order, one per index, the
// implicit list included; the first code is 0.
#include <cstring>
#include <utility>

#include "frontend/parser.h"
#include "frontend/preprocessor.h"
#include "host/zylcomp/analyzer.h"
#include "host/zylcomp/strdict.h"
#include "zyldict.h"

namespace {

bool isStructType(Struct const* t) { return t->m_category == TC_STRUCT || t->m_category == TC_DIRECT; }

bool startsWith(mstring const& s, char const* prefix) {
    for (int i = 0; prefix[i]; i++)
        if (s.c_str()[i] != prefix[i])
            return false;
    return true;
}

// The collation kind a key's type code allows: 7 for char and string keys,
// 19 for their national forms, 21 for the wide ones; 0 for any other.
int collationKind(int code) {
    switch (code) {
    case ZYL_FT_CHARS:
    case ZYL_FT_STRING:
        return 7;
    case ZYL_FT_NCHARS:
    case ZYL_FT_NSTRING:
        return 19;
    case ZYL_FT_WCHARS:
    case ZYL_FT_WSTRING:
        return 21;
    default:
        return 0;
    }
}

}  // namespace

void Analyzer::finishIndices() {
    int collationNo = 0;
    forEachIn<Collation>(m_schema.m_collations, [&collationNo](Collation& coll) {
        coll.m_number = collationNo++;
        return true;
    });
    m_schema.m_collationCount = collationNo;

    int code = 0;
    int userdef = -1;
    bool stopped = false;
    forEachIn<Class>(m_schema.m_classes, [&](Class& c) {
        addImplicitList(c);
        for (unsigned i = 0; i < c.v_index.size(); i++) {
            Index& idx = c.v_index[i];
            DeclFocus const at = focus("index", idx.m_name, idx.m_place);
            idx.m_code = code;
            // Fewer fields than bits in a word of the target's size.
            if (idx.m_type == IT_KDTREE && c.v_field.size() >= 8u * static_cast<unsigned>(m_sizeofSize))
                error2("It is too many fields in class \"#1\" for kd-tree index \"#2\".", c.m_name, idx.m_name);
            if (idx.m_type == IT_RTREE && idx.v_fieldName.size() != 1)
                error2("[#1.#2] R-Tree can be defined only for single field.", c.m_name, idx.m_name);
            if (idx.m_type == IT_TRIGRAM && idx.v_fieldName.size() != 1)
                error2("[#1.#2] Trigram index can be defined only for single field.", c.m_name, idx.m_name);
            // An ordered sequence has a {class}_{field}_search of its own, and
            // every index but a unique hash one has {class}_{index}_search.
            Field const* same = c.findField(idx.m_name);
            if (same != nullptr && same->m_isSequence && same->m_seqOrder != "ZYL_SEQ_NO_ORDER" &&
                !(idx.m_type == IT_HASH && idx.m_unique)) {
                errorAt(idx.m_place,
                        "index #1 of class #2 is named like ordered sequence field #1: both would define #2_#1_search",
                        idx.m_name, c.m_name);
                stopped = true;
                return false;
            }
            if (idx.m_userdef) {
                idx.m_userdefNo = ++userdef;
                c.m_hasUserdef = true;
            } else {
                idx.m_userdefNo = -1;
            }
            int nameLen = static_cast<int>(idx.m_name.length());
            if (nameLen > c.m_maxIndexNameLen)
                c.m_maxIndexNameLen = nameLen;

            // "*": every field of the class, system fields and indicators
            // included, in their order, ascending and without collation.
            if (idx.v_fieldName.size() == 1 && idx.v_fieldName[0] == "*") {
                unsigned n = c.v_field.size();
                idx.v_fieldName.resize(n);
                idx.v_desc.resize(n);
                idx.v_nocase.resize(n);
                idx.v_collation.resize(n);
                for (unsigned k = 0; k < n; k++) {
                    idx.v_fieldName[k] = c.v_field[k].m_name;
                    idx.v_desc[k] = false;
                    idx.v_nocase[k] = false;
                    idx.v_collation[k] = mstring();
                }
            }

            for (unsigned k = 0; k < idx.v_fieldName.size(); k++) {
                if (!idx.v_collation[k].empty())
                    c.m_hasCollate = true;
                Index::Segment s = constructIndexSegment(idx.m_name, idx.v_desc[k], idx.v_nocase[k], idx.m_unique, c,
                                                         idx.v_fieldName[k], idx.v_collation[k]);
                if (failed() || !checkSegment(c, idx, s, static_cast<int>(k))) {
                    stopped = true;
                    return false;
                }
                idx.m_hasBoolean = idx.m_hasBoolean || s.m_isBoolean;
                idx.v_segment.push_back_moved(std::move(s));
            }
            code++;
        }
        return true;
    });
    if (!stopped)
        m_schema.m_userdefCount = userdef + 1;
}

// The implicit list: a class of fixed size without oid or autoid gets one
// when it has no index, or when it is persistent and its indexes are
// voluntary (besides vector-based ones, which cannot be known yet: m_vbased
// is set further on, so in effect all must be voluntary).
void Analyzer::addImplicitList(Class& c) {
    if (c.m_hasList || c.m_isDynamic || c.m_hasOid || c.m_hasAutoid)
        return;
    if (c.v_index.size() > 0) {
        if (!c.m_persistent)
            return;
        bool voluntary = false;
        for (unsigned i = 0; i < c.v_index.size(); i++) {
            if (c.v_index[i].m_voluntary)
                voluntary = true;
            else if (c.v_index[i].m_vbased < 0)
                return;
        }
        if (!voluntary)
            return;
    }
    Index list;
    list.m_name = "list_index_";
    list.m_unique = true;
    list.m_implicitList = true;
    list.m_type = m_keepFieldOrder ? IT_TREE : IT_LIST;
    c.m_hasList = true;
    c.addIndex(std::move(list));
}

// Resolves one key part, a dotted path from the class down, into its
// segment. After an error the part built so far is returned.
Index::Segment Analyzer::constructIndexSegment(mstring const& indexName, bool desc, bool nocase, bool unique,
                                               Class& c, mstring const& fieldPath, mstring const& collation) {
    Index::Segment seg;
    seg.m_desc = desc;
    seg.m_nocase = nocase;
    Struct* in = &c;
    Field* f = nullptr;
    int repeated = 0;  // vector and array steps
    // The path is cut step by step; each step's text moves into the path
    // of the segment, the messages read it there.
    char const* p = fieldPath.c_str();
    for (unsigned i = 0;; i++) {
        char const* dot = std::strchr(p, '.');
        mstring text;
        text.setExact(p, dot != nullptr ? static_cast<unsigned long>(dot - p) : std::strlen(p));
        f = in->findField(text);
        if (f == nullptr) {
            error4("field #1 is not defined in struct #2 and referenced from index #3, #4", text, in->m_name,
                   indexName, fieldPath);
            return seg;
        }
        if (f->m_struct->m_category == TC_SEQUENCE) {
            error3("sequence field #1 used in index #2, #3", text, indexName, fieldPath);
            return seg;
        }
        Index::FldEl el;
        el.m_name = std::move(text);
        el.m_struct = in;
        el.m_field = f;
        seg.v_fldEl.push_back_moved(std::move(el));
        mstring const& step = seg.v_fldEl[static_cast<int>(seg.v_fldEl.size()) - 1].m_name;
        if (f->m_isOptional) {
            error3("optional field #1 used in index #2, #3", step, indexName, fieldPath);
            return seg;
        }
        if (f->m_isVector || f->m_isArray) {
            if (f->m_isVector)
                seg.m_isVector = true;
            else
                seg.m_isArray = true;
            seg.m_elemCategory = f->m_struct->m_category;
            seg.m_elemPos = static_cast<int>(i);
            repeated++;
        }
        if (f->m_typeName == "boolean")
            seg.m_isBoolean = true;
        if (startsWith(f->m_typeName, "binary<"))
            seg.m_isBinary = true;
        f->m_isIndexed = true;
        f->m_isUniqueIndexed = f->m_isUniqueIndexed || unique;
        if (dot == nullptr)
            break;
        if (!isStructType(f->m_struct)) {
            error3("not final element #1 of index #2, #3 is not a struct", step, indexName, fieldPath);
            return seg;
        }
        in = f->m_struct;
        p = dot + 1;
    }
    if (isStructType(f->m_struct)) {
        mstring const& last = seg.v_fldEl[static_cast<int>(seg.v_fldEl.size()) - 1].m_name;
        error3("final element #1 of index #2, #3 is struct", last, indexName, fieldPath);
        return seg;
    }
    // A blob key is refused by checkSegment; it has no type a collation could take.
    if (!collation.empty() && f->m_struct->m_category != TC_BLOB) {
        Collation* coll = m_schema.findCollation(collation);
        if (coll == nullptr) {
            error1("collation #1 not defined", collation);
            return seg;
        }
        int kind = collationKind(dictType(*f, false).m_typeCode);
        if (kind == 0)
            error1("Wrong field type for collate #1", collation);
        // The first key that uses a collation fixes the kind of text it compares.
        if (coll->m_fieldKind == 0)
            coll->m_fieldKind = kind;
        else if (coll->m_fieldKind != kind)
            error1("Incompatible field types for collation #1", collation);
        seg.m_collationNo = coll->m_number;
    }
    if (repeated > 1)
        error2("index #1, #2 has more then 1 vector or array element", indexName, fieldPath);
    return seg;
}

// The limits a segment of each index kind must keep. Sets m_vbased when
// the segment runs over a vector or array. False when the pass must end.
bool Analyzer::checkSegment(Class const& c, Index& idx, Index::Segment const& s, int k) {
    Field const* first = s.v_fldEl[0].m_field;
    Field const* last = s.v_fldEl[static_cast<int>(s.v_fldEl.size()) - 1].m_field;
    // The dictionary has no key type for a blob.
    if (last->m_struct->m_category == TC_BLOB) {
        errorAt(idx.m_place, "index #1 of class #2: blob field #3 cannot be a key", idx.m_name, c.m_name,
                idx.v_fieldName[k]);
        return false;
    }
    mstring bitStep;  // a step that is a one-bit boolean
    for (unsigned i = 0; i < s.v_fldEl.size() && bitStep.empty(); i++)
        if (dictType(*s.v_fldEl[i].m_field, true).m_typeCode == ZYL_FT_BOOLEAN)
            bitStep = s.v_fldEl[i].m_name;

    switch (idx.m_type) {
    case IT_RTREE:
        if (s.v_fldEl.size() != 1)
            error2("[#1.#2] R-Tree can be defined only for single field.", c.m_name, idx.m_name);
        // A rectangle holds two corners, so its array size is even anyway.
        if (!s.m_isArray || (!first->m_isPoint && first->m_arraySize % 2 != 0))
            error2("[#1.#2] R-Tree can be defined only for array of rectangles or array of scalars with even length.",
                   c.m_name, idx.m_name);
        break;
    case IT_TRIGRAM: {
        // Deliberately the R-Tree text: it is the message users get for a
        // trigram on a nested field.
        if (s.v_fldEl.size() != 1)
            error2("[#1.#2] R-Tree can be defined only for single field.", c.m_name, idx.m_name);
        int code = dictType(*last, false).m_typeCode;
        if (s.m_isArray ||
            !(code == ZYL_FT_CHARS || code == ZYL_FT_STRING || (code >= ZYL_FT_NCHARS && code <= ZYL_FT_WSTRING)))
            error2("[#1.#2] Trigram index can be defined only for character or string types.", c.m_name,
                   idx.m_name);
        break;
    }
    case IT_PATRICIA:
        // A patricia key may be a vector of anything, or an array; a bit
        // field only in one of those.
        if (s.m_isVector) {
            idx.m_vbased = k;
            return true;
        }
        if (!s.m_isArray && !bitStep.empty()) {
            error1("field #1: no index allowed on this type of field, only array/vectors of boolean indexes allowed",
                   bitStep);
            return false;
        }
        break;
    default:
        if (!bitStep.empty()) {
            error1("field #1: only patricia index allowed on this type of field", bitStep);
            return false;
        }
        break;
    }
    if (s.m_isVector || s.m_isArray) {
        if (idx.m_type == IT_KDTREE)
            error2("[#1.#2] A vector or array can not be element of KD-Tree index.", c.m_name, idx.m_name);
        // A key entry records the offset of one vector or array only.
        if (idx.m_vbased >= 0 && idx.m_vbased != k) {
            errorAt(idx.m_place, "index #1 of class #2: keys #3 and #4 both lie in a vector or array, only one key may",
                    idx.m_name, c.m_name, idx.v_fieldName[idx.m_vbased], idx.v_fieldName[k]);
            return false;
        }
        idx.m_vbased = k;
    }
    return true;
}
