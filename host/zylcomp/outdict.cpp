// The dictionary in the generated C source: {db}_get_dictionary fills one
// static zyl_dictionary_t on its first call and returns it. Also the class,
// index and event records, which the in-memory dictionary shares.
//
// Two forms: by default every table is a static const array with an
// initialiser; with dynamic tables (for C compilers that cannot initialise
// with the symbolic sizes of direct structs) every table is filled by
// assignments at run time.
#include <memory>

#include "foundation/sets.h"
#include "foundation/ut.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"
#include "host/zylcomp/strdict.h"
#include "zyldict.h"

namespace {

mstring txt(FSize const& v) { return static_cast<mstring const&>(v); }

template <class T, class Visit>
void forEach(ISet* set, Visit visit) {
    std::unique_ptr<ISet::Pos> pos(set->first());
    for (; pos->valid(); pos->next())
        visit(*static_cast<T*>(pos->get().get()));
}

// The placement of `f` in the format of class `c`.
FldLayout const& placed(Class const& c, Field const& f) {
    return c.m_compact ? *f.m_compactLayout : *f.m_largeLayout;
}

// The first field of `c` whose type has `category`, or null.
Field const* fieldOfCategory(Class const& c, TypeCategory category) {
    for (unsigned i = 0; i < c.v_field.size(); i++)
        if (c.v_field[i].m_struct != nullptr && c.v_field[i].m_struct->m_category == category)
            return &c.v_field[i];
    return nullptr;
}

// The implicit autoid index: the hash index "autoid" on the $autoid member.
bool isAutoidIndex(Class const& c, Index const& index) {
    if (!c.m_hasAutoid || index.m_name != "autoid" || index.v_segment.size() != 1)
        return false;
    Index::Segment const& s = index.v_segment[0];
    return s.v_fldEl.size() == 1 && s.v_fldEl[0].m_field->m_struct->m_category == TC_AUTOID;
}

bool isHistoryIndex(Class const& c, Index const& index) {
    return c.m_hasHistory && index.m_name == "history_index@";
}

int implNo(IndexType type, bool persistent, bool inclusive) {
    switch (type) {
    case IT_TREE:
        return persistent ? ZYL_INDEX_IMPL_DISK_TREE : inclusive ? ZYL_INDEX_IMPL_INCLUSIVE_TREE : ZYL_INDEX_IMPL_TREE;
    case IT_HASH:
        // A persistent class keeps its hash indexes as trees.
        return persistent ? ZYL_INDEX_IMPL_DISK_TREE : ZYL_INDEX_IMPL_HASH;
    case IT_KDTREE:
        return persistent ? ZYL_INDEX_IMPL_DISK_KDTREE : ZYL_INDEX_IMPL_KDTREE;
    case IT_RTREE:
        return persistent ? ZYL_INDEX_IMPL_DISK_RTREE : ZYL_INDEX_IMPL_RTREE;
    case IT_PATRICIA:
        return persistent ? ZYL_INDEX_IMPL_DISK_PATRICIA : ZYL_INDEX_IMPL_PATRICIA;
    case IT_TRIGRAM:
        return persistent ? ZYL_INDEX_IMPL_DISK_TRIGRAM : ZYL_INDEX_IMPL_TRIGRAM;
    case IT_LIST:
        return ZYL_INDEX_IMPL_LIST;
    default:
        return ZYL_INDEX_IMPL_NONE;
    }
}

}  // namespace

// ---------------------------------------------------------------------------
// Class, index and event records

int GetClassFlags(Class const& c) {
    int flags = 0;
    if (c.m_hasList)
        flags |= ZYL_CLASS_HAS_LIST;
    if (c.m_hasOid)
        flags |= ZYL_CLASS_HAS_OID;
    if (c.m_hasBlobs)
        flags |= ZYL_CLASS_HAS_BLOBS;
    if (c.m_compact)
        flags |= ZYL_CLASS_COMPACT;
    if (!c.m_isDynamic)
        flags |= ZYL_CLASS_FIXED_SIZE;
    if (c.m_persistent)
        flags |= ZYL_CLASS_PERSISTENT;
    if (c.m_hasAutoid)
        flags |= ZYL_CLASS_HAS_AUTOID;
    if (c.m_iotType == IOT_UPTABLE)
        flags |= ZYL_CLASS_UPTABLE;
    if (c.v_event.size() > 0)
        flags |= ZYL_CLASS_HAS_EVENTS;
    if (c.m_hasSequences)
        flags |= ZYL_CLASS_HAS_SEQUENCES;
    if (c.m_local)
        flags |= ZYL_CLASS_LOCAL;
    if (c.m_distributed)
        flags |= ZYL_CLASS_DISTRIBUTED;
    if (c.m_isSystem)
        flags |= ZYL_CLASS_SYSTEM;
    if (!c.m_atomic)
        flags |= ZYL_CLASS_NONATOMIC;
    if (c.m_iotType == IOT_DOWNTABLE)
        flags |= ZYL_CLASS_DOWNTABLE;
    return flags;
}

DictClassEntry dictClassEntry(Schema const& schema, Class const& c, int firstIndex, int firstEvent) {
    Layout const& compact = c.m_layout.compact;
    Layout const& large = c.m_layout.large;
    DictClassEntry e;
    // An object of fixed size has the same size in both formats.
    if (!c.m_isDynamic) {
        if (compact.m_size != large.m_size)
            dictPanic("internal 10023");
        e.m_fixedSize = compact.m_size;
    }
    int const nIndexes = static_cast<int>(c.v_index.size());
    if (nIndexes > 0) {
        e.m_firstIndex = firstIndex;
        e.m_lastIndex = firstIndex + nIndexes - 1;
    }
    int const nEvents = static_cast<int>(c.v_event.size());
    if (nEvents > 0) {
        e.m_firstEvent = firstEvent;
        e.m_lastEvent = firstEvent + nEvents - 1;
    }
    for (int i = 0; i < nIndexes; i++) {
        Index const& index = c.v_index[i];
        if (index.m_implicitList && e.m_listIndex == 0xFFFF)
            e.m_listIndex = firstIndex + i;
        if (isAutoidIndex(c, index) && e.m_autoidIndex == 0xFFFF)
            e.m_autoidIndex = firstIndex + i;
        if (isHistoryIndex(c, index) && e.m_historyIndex == 0xFFFF)
            e.m_historyIndex = firstIndex + i;
    }
    if (c.m_hasHistory && e.m_historyIndex == 0xFFFF)
        dictPanic("history index not found");
    e.m_flags = GetClassFlags(c);

    if (schema.m_autoOid != 0) {
        Field const* f = fieldOfCategory(c, TC_AUTO_OID);
        if (f == nullptr)
            dictPanic("auto_oid field not found");
        e.m_autoOidOffset = placed(c, *f).m_offset;
    }
    if (Field const* f = fieldOfCategory(c, TC_AUTOID))
        e.m_autoidOffset = placed(c, *f).m_offset;
    else if (c.m_hasAutoid)
        dictPanic("autoid field not found");
    if (Field const* f = fieldOfCategory(c, TC_VERSION))
        e.m_historyOffset = placed(c, *f).m_offset;
    else if (c.m_hasHistory)
        dictPanic("history field not found");

    if (c.m_dictNo < 0)
        dictPanic("internal 10307");
    e.m_structNo = c.m_dictNo;
    e.m_initSize = c.m_compact ? compact.m_size : large.m_size;
    return e;
}

DictEventEntry dictEventEntry(Class const& c, Event const& ev) {
    DictEventEntry e;
    e.m_classCode = c.m_code;
    switch (ev.m_kind) {
    case EV_NEW:
        e.m_flags = ZYL_EVENT_NEW;
        break;
    case EV_UPDATE:
        e.m_flags = ZYL_EVENT_FIELD_UPDATE;
        break;
    case EV_DELETE:
        e.m_flags = ZYL_EVENT_DELETE;
        break;
    case EV_DELETE_ALL:
        e.m_flags = ZYL_EVENT_DELETE_ALL;
        break;
    case EV_CHECKPOINT:
        e.m_flags = ZYL_EVENT_CHECKPOINT;
        break;
    case EV_CLASS_UPDATE:
        e.m_flags = ZYL_EVENT_CLASS_UPDATE;
        break;
    default:
        dictPanic("internal 10027");
    }
    if (ev.m_field != nullptr) {
        DictType const d = dictType(*ev.m_field, true);  // the field's dict_info
        e.m_offset = placed(c, *ev.m_field).m_offset;
        e.m_size = d.size();
        e.m_type = d.m_typeCode;
        e.m_fldNo = ev.m_field->m_position;
    }
    return e;
}

DictIndexEntry dictIndexEntry(Class const& c, Index const& index, bool withPaths) {
    DictIndexEntry e;
    e.m_classCode = c.m_code;
    e.m_implNo = implNo(index.m_type, c.m_persistent, index.m_inclusive);
    e.m_estimate = index.ecount;
    e.m_userdefId = index.m_userdefNo & 0xFFFF;

    bool nullable = false;
    bool point = false;
    bool crossed = false;
    // Sized once and filled in place: the keys are read once and dropped.
    e.v_key.resize(index.v_segment.size());
    for (unsigned k = 0; k < index.v_segment.size(); k++) {
        Index::Segment const& s = index.v_segment[k];
        Field const& f = *s.v_fldEl[static_cast<int>(s.v_fldEl.size()) - 1].m_field;
        Index::FieldLayout const fl = index.getFieldLayout(s, &c);
        bool const overVector = fl.m_vectOffset.is_str() || fl.m_vectOffset.m_num != -1;
        if (overVector && crossed)
            dictPanic("index(" + index.m_name +
                      ") : An index on a vector of structs may only include one field of the structure.");
        crossed = crossed || overVector;

        DictType const d = dictType(f, false);  // the segment's dict_info
        DictKeyEntry& key = e.v_key[static_cast<int>(k)];
        key.m_offset = fl.m_offset;
        key.m_vectOffset = fl.m_vectOffset;
        key.m_indicatorOffset = -1;
        if (f.m_isNullable) {
            // The indicator sits beside its field: same distance in the key's frame.
            Field const* indicator = nullptr;
            Struct const& holder = *f.m_containerStruct;
            for (unsigned j = 0; j < holder.v_field.size() && indicator == nullptr; j++)
                if (holder.v_field[j].m_isIndicator && holder.v_field[j].m_position == f.m_indicator)
                    indicator = &holder.v_field[j];
            if (indicator == nullptr)
                dictPanic("internal");
            FSize const& io = placed(c, *indicator).m_offset;
            FSize const& fo = placed(c, f).m_offset;
            if (io.is_str() || fo.is_str() || fl.m_offset.is_str())
                key.m_indicatorOffset =
                    FSize(0, "(" + txt(fl.m_offset) + ")+(" + txt(io) + ")-(" + txt(fo) + ")");
            else
                key.m_indicatorOffset = fl.m_offset.m_num + io.m_num - fo.m_num;
        }
        key.m_size = d.size();
        key.m_type = d.m_typeCode;
        if (s.m_desc)
            key.m_flags |= ZYL_KEY_DESC;
        if ((d.m_typeCode >= ZYL_FT_DOUBLE && d.m_typeCode <= ZYL_FT_AUTOID) || d.m_typeCode == ZYL_FT_DATETIME)
            key.m_flags |= ZYL_KEY_WIDE;
        if (s.m_nocase)
            key.m_flags |= ZYL_KEY_NOCASE;
        if (f.m_isNullable)
            key.m_flags |= ZYL_KEY_NULLABLE;
        key.m_fldNo = f.m_position;
        key.m_collation = s.m_collationNo < 0 ? 0xFFFF : s.m_collationNo;
        if (withPaths)
            for (unsigned i = 0; i < s.v_fldEl.size(); i++)
                key.m_path += (i > 0 ? "." : "") + s.v_fldEl[i].m_name;
        nullable = nullable || f.m_isNullable;
        point = point || f.m_isPoint;
    }

    bool vector = false;
    bool array = false;
    int elemCategory = 0;
    e.m_vectOffset = -1;
    if (index.m_vbased >= 0) {
        Index::Segment const& s = index.v_segment[index.m_vbased];
        if (!s.m_isVector && !s.m_isArray)
            dictPanic("internal");
        vector = s.m_isVector;
        array = !vector;
        elemCategory = s.m_elemCategory;
        e.m_vectOffset = index.getFieldLayout(s, &c).m_vectOffset;
    }
    std::uint32_t flags = 0;
    bool const boolean = index.m_hasBoolean;
    if (vector && boolean)
        flags |= ZYL_INDEX_BOOL_VECTOR;
    if (array && boolean)
        flags |= ZYL_INDEX_BOOL_ARRAY;
    if (index.m_unique)
        flags |= ZYL_INDEX_UNIQUE;
    if (vector && !boolean)
        flags |= elemCategory == TC_STRUCT ? ZYL_INDEX_STRUCT_VECTOR : ZYL_INDEX_SCALAR_VECTOR;
    if (c.m_persistent)
        flags |= ZYL_INDEX_PERSISTENT;
    if (index.m_voluntary)
        flags |= ZYL_INDEX_VOLUNTARY;
    if (array && !boolean)
        flags |= elemCategory == TC_STRUCT || elemCategory == TC_DIRECT ? ZYL_INDEX_STRUCT_ARRAY
                                                                         : ZYL_INDEX_SCALAR_ARRAY;
    // The autoid mark is tested first, then the history mark.
    if (isAutoidIndex(c, index))
        flags |= ZYL_INDEX_AUTOID;
    else if (isHistoryIndex(c, index))
        flags |= ZYL_INDEX_HISTORY;
    else if (index.m_implicitList)
        flags |= ZYL_INDEX_LIST;
    else
        flags |= ZYL_INDEX_ORDINARY;
    if (nullable)
        flags |= ZYL_INDEX_NULLABLE;
    if (index.m_thick)
        flags |= ZYL_INDEX_THICK;
    if (point)
        flags |= ZYL_INDEX_POINT;
    if (index.m_type == IT_TRIGRAM)
        flags |= ZYL_INDEX_TRIGRAM | ZYL_INDEX_THICK;
    e.m_flags = flags;
    return e;
}

// ---------------------------------------------------------------------------
// The C text

namespace {

// One scalar member of the record: "    dict.{member} = {value};", the
// members in one column.
mstring member(char const* name, mstring const& value) {
    return "    dict." + UT::adjust(name, 25) + " = " + value + ";\n";
}

mstring member(char const* name, long long value) { return member(name, UT::n2s(value)); }

// What the record counts over the classes, in set order.
struct Totals {
    int classes = 0, lists = 0, autoids = 0, histories = 0, maxIndexes = 0, indexes = 0, events = 0, keys = 0;
};

Totals count(Schema const& schema) {
    Totals t;
    forEach<Class>(schema.m_classes, [&t](Class& c) {
        t.classes++;
        t.lists += c.m_hasList ? 1 : 0;
        t.autoids += c.m_hasAutoid ? 1 : 0;
        t.histories += c.m_hasHistory ? 1 : 0;
        int const n = static_cast<int>(c.v_index.size());
        t.maxIndexes = n > t.maxIndexes ? n : t.maxIndexes;
        t.indexes += n;
        t.events += static_cast<int>(c.v_event.size());
        for (int i = 0; i < n; i++)
            t.keys += static_cast<int>(c.v_index[i].v_segment.size());
    });
    return t;
}

// Names by class code and by index number, in columns of the given widths.
void writeNames(IOutStream& out, Schema const& schema, int classWidth, int indexWidth) {
    out << "    {\n      static const char * const v_class_names[] = \n      {\n        0, \n";
    int code = 1;
    forEach<Class>(schema.m_classes, [&](Class& c) {
        if (c.m_code != code)
            dictPanic("class codes order");
        out << "        " << UT::adjust("\"" + c.m_name + "\",", classWidth) << " /* [" << c.m_code << "] */\n";
        code++;
    });
    out << "        0\n      };\n\n      dict.str_class_names = v_class_names;\n    }\n\n";

    out << "    {\n      static const char * const v_index_names[] = \n      {\n";
    int number = 0;
    forEach<Class>(schema.m_classes, [&](Class& c) {
        for (unsigned i = 0; i < c.v_index.size(); i++, number++) {
            Index const& index = c.v_index[i];
            if (index.m_code != number)
                dictPanic("index code");
            out << "        " << UT::adjust("\"" + c.m_name + "." + index.m_name + "\",", indexWidth) << " /* ["
                << number << "] */\n";
        }
    });
    out << "        0\n      };\n\n      dict.str_index_names = v_index_names;\n    }\n\n";
}

// Classes by code; entry 0 stays empty.
void writeClasses(IOutStream& out, Schema const& schema, bool dynamic, mstring const& structs, int nClasses) {
    if (dynamic) {
        out << "    {\n      static  zyl_dict_class_info_t class_inf[" << nClasses + 1 << "];\n";
        if (nClasses > 0)
            out << "      zyl_dict_class_info_t * x = & class_inf[1]; \n";
    } else {
        out << "    {\n      static  const zyl_dict_class_info_t class_inf[" << nClasses + 1
            << "] = { \n        { 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0 }";
    }
    int firstIndex = 0, firstEvent = 0;
    bool const autoOids = schema.m_autoOid != 0;
    forEach<Class>(schema.m_classes, [&](Class& c) {
        DictClassEntry const e = dictClassEntry(schema, c, firstIndex, firstEvent);
        firstIndex += static_cast<int>(c.v_index.size());
        firstEvent += static_cast<int>(c.v_event.size());
        mstring const autoOidOffset = autoOids ? txt(e.m_autoOidOffset) : mstring("0");
        if (dynamic)
            out << "      x->first_index_num = " << e.m_firstIndex << "; x->last_index_num = " << e.m_lastIndex
                << "; x->list_index_num = " << e.m_listIndex << "; x->autoid_index_num = " << e.m_autoidIndex
                << "; x->fixedsize = " << txt(e.m_fixedSize) << "; x->autoid_offset = " << txt(e.m_autoidOffset)
                << "; x->history_index_num = " << e.m_historyIndex << "; x->history_length = " << e.m_historyLength
                << "; x->history_offset = " << txt(e.m_historyOffset) << "; x->first_event_num = " << e.m_firstEvent
                << "; x->last_event_num = " << e.m_lastEvent << "; x->flags = " << e.m_flags
                << "; x->struct_ptr = " << structs << "+" << e.m_structNo << ";x->init_size = " << txt(e.m_initSize)
                << ";x->auto_oid_offset = " << autoOidOffset << "; x++; /* " << c.m_name << " */\n";
        else
            out << ",\n        { " << e.m_firstIndex << ", " << e.m_lastIndex << ", " << e.m_listIndex << ", "
                << e.m_autoidIndex << ", " << txt(e.m_fixedSize) << ", " << txt(e.m_autoidOffset) << ", "
                << e.m_historyIndex << ", " << e.m_historyLength << ", " << txt(e.m_historyOffset) << ", "
                << e.m_firstEvent << ", " << e.m_lastEvent << ", " << e.m_flags << ", " << structs << "+"
                << e.m_structNo << ", " << txt(e.m_initSize) << ", " << autoOidOffset << " } /* " << c.m_name
                << " */ ";
    });
    if (!dynamic)
        out << "\n      };\n";
    out << "      dict.v_class_info = class_inf;\n    }\n\n";
}

// Events, class by class: their places are their numbers.
void writeEvents(IOutStream& out, Schema const& schema, bool dynamic, int nEvents) {
    if (nEvents == 0) {
        out << "    dict.v_desc_events = (zyl_dict_event_t *)0;\n    \n";
        return;
    }
    if (dynamic)
        out << "    { static zyl_dict_event_t zyl_v_evdsc[" << nEvents
            << "];\n      zyl_dict_event_t * x = & zyl_v_evdsc[0];\n";
    else
        out << "    { static const zyl_dict_event_t zyl_v_evdsc[" << nEvents << "] = { ";
    int written = 0;
    forEach<Class>(schema.m_classes, [&](Class& c) {
        for (unsigned i = 0; i < c.v_event.size(); i++, written++) {
            DictEventEntry const e = dictEventEntry(c, c.v_event[i]);
            if (dynamic)
                out << "      x->class_code = " << e.m_classCode << "; \n      x->flags = " << e.m_flags
                    << "; \n      x->field_offset = " << txt(e.m_offset) << "; \n      x->field_size = "
                    << txt(e.m_size) << "; \n      x->field_type = " << e.m_type << "; \n     x->fld_no = "
                    << e.m_fldNo << "; \n      x++;\n\n";
            else
                out << (written > 0 ? "," : "") << "\n        { " << e.m_classCode << ", " << e.m_flags << ", "
                    << txt(e.m_offset) << ", " << txt(e.m_size) << ", " << e.m_type << ", " << e.m_fldNo << " } /* "
                    << c.m_name << "." << c.v_event[i].m_name << " */";
        }
    });
    if (!dynamic)
        out << "\n      };\n";
    out << "      dict.v_desc_events = & zyl_v_evdsc[0];\n    }\n\n";
}

// Indexes in the order of their codes, each with its keys.
void writeIndexes(IOutStream& out, Schema const& schema, bool dynamic, int nIndexes, int nKeys) {
    if (nIndexes == 0) {
        out << "    dict.v_desc_indexes = (zyl_dict_index_t *)0;\n    \n";
        return;
    }
    // Not mstrings: both tables grow by a piece per index and key, and an
    // mstring would scan and copy all of it again for every piece.
    TableText keys;
    TableText indexes;
    int number = 0;
    int firstKey = 0;
    forEach<Class>(schema.m_classes, [&](Class& c) {
        for (unsigned i = 0; i < c.v_index.size(); i++, number++) {
            Index const& index = c.v_index[i];
            DictIndexEntry const e = dictIndexEntry(c, index, true);
            keys << "      /* " << c.m_name << "." << index.m_name << " [" << number << "] */\n";
            for (unsigned k = 0; k < e.v_key.size(); k++) {
                DictKeyEntry const& key = e.v_key[k];
                if (dynamic)
                    keys << "      z->field_offset = " << key.m_offset
                         << "; z->vect_field_offset = " << key.m_vectOffset
                         << "; z->indicator_offset = " << key.m_indicatorOffset << "; z->field_size = " << key.m_size
                         << "; z->field_type = " << key.m_type << "; z->fld_flags  = " << key.m_flags
                         << "; z->fld_no     = " << key.m_fldNo << "; z->collation_id = " << key.m_collation
                         << "; z++; /* " << key.m_path << " */\n";
                else
                    keys << "        { " << key.m_offset << ", " << key.m_vectOffset << ", " << key.m_indicatorOffset
                         << ", " << key.m_size << ", " << key.m_type << ", " << key.m_flags << ", " << key.m_fldNo
                         << ", " << key.m_collation << " }, /* " << key.m_path << " */\n";
            }
            int const nFields = static_cast<int>(e.v_key.size());
            // Filled by statements, an index follows its keys; in initialisers
            // keys and indexes are two tables.
            if (dynamic)
                keys << "      w->class_code = " << e.m_classCode << "; w->impl_no = " << e.m_implNo
                     << "; w->numof_fields = " << nFields << "; w->vect_field_offset = " << e.m_vectOffset
                     << "; w->flags = " << static_cast<long long>(e.m_flags) << "; w->fields = & v_all_index_fields["
                     << firstKey << "]; w->numof_keys_estimate = " << e.m_estimate << "; w->userdef_id = "
                     << e.m_userdefId << "; w++; \n";
            else
                indexes << "        { " << e.m_classCode << ", " << e.m_implNo << ", " << nFields << ", "
                        << e.m_vectOffset << ", " << static_cast<long long>(e.m_flags) << ", & v_all_index_fields["
                        << firstKey << "], " << e.m_estimate << ", " << e.m_userdefId << " }, /* " << c.m_name << "."
                        << index.m_name << " */\n";
            firstKey += nFields;
        }
    });
    if (dynamic) {
        // Lists have no keys; without keys the key cursor would stand unused.
        out << "    {\n      static zyl_dict_index_field_t v_all_index_fields[ " << nKeys
            << "];\n      static zyl_dict_index_t v_all_indexes_info[ " << nIndexes << "];\n";
        if (nKeys > 0)
            out << "      zyl_dict_index_field_t * z = & v_all_index_fields[0];\n";
        out << "      zyl_dict_index_t       * w = & v_all_indexes_info[0];\n" << keys.c_str();
    } else {
        out << "    {\n";
        if (nKeys > 0)
            out << "      static const zyl_dict_index_field_t v_all_index_fields[ " << nKeys << "] = {\n"
                << keys.c_str();
        else
            out << "      static const zyl_dict_index_field_t v_all_index_fields[1] = { {0,0,0,0,0} /*empty*/ ";
        out << "      }; \n\n      static const zyl_dict_index_t v_all_indexes_info[ " << nIndexes << "] = {\n"
            << indexes.c_str() << "      };\n";
    }
    out << "      dict.v_desc_indexes = v_all_indexes_info;\n    }\n\n";
}

// Collations, in set order.
void writeCollations(IOutStream& out, Schema const& schema, bool dynamic) {
    int const n = static_cast<int>(schema.m_collations->size());
    if (n == 0) {
        out << "    dict.v_desc_colls = (zyl_dict_collation_t *)0;\n    \n";
        return;
    }
    if (dynamic)
        out << "    {\n      static zyl_dict_collation_t zyl_v_colls[" << n
            << "];\n      zyl_dict_collation_t * x = & zyl_v_colls[0];\n";
    else
        out << "    {\n      static const zyl_dict_collation_t zyl_v_colls[" << n << "] = { ";
    int written = 0;
    forEach<Collation>(schema.m_collations, [&](Collation& coll) {
        if (dynamic)
            out << "      x->name = \"" << coll.m_name << "\"; \n      x->type = " << coll.m_fieldKind
                << "; \n      x++;\n\n";
        else
            out << (written++ > 0 ? "," : "") << "\n        {\"" << coll.m_name << "\", " << coll.m_fieldKind << " }";
    });
    if (!dynamic)
        out << "\n      };\n";
    out << "      dict.v_desc_colls = & zyl_v_colls[0];\n    }\n\n";
}

}  // namespace

// The dictionary goes to {db}.c in every mode: the header declares the
// function, and inline mode leaves the source file nothing else to hold.
void GenOutput::outputDictionary() {
    IOutStream& out = *m_c;
    Schema& schema = *m_schema;
    mstring const& db = schema.m_dbName;
    bool const dynamic = m_dictFlagB;

    head2(m_c, "dictionary");
    out << "static zyl_dictionary_t  dict; \nzyl_dictionary_h " << (m_dllSpec ? "ZYL_DLL_SPEC " : "") << db
        << "_get_dictionary(void)\n{ \n  static int dictionary_ready = 0; \n\n  if( ! dictionary_ready ) \n  {\n\n";

    ClassDictCreator creator(m_schema, dynamic, m_err, db);
    creator.printAll(out, !m_dictFlagA);
    mstring const structs = creator.getPtrToStructInfoVector();
    out << "\n    dictionary_ready = 1;\n\n";

    Totals const t = count(schema);
    // Only out-of-line code asks for names.
    if (m_outOfLine)
        writeNames(out, schema, m_structNameWidth + 3, m_structNameWidth + m_funcNameWidth2 + 4);
    else
        out << "    dict.str_class_names = 0;\n    dict.str_index_names = 0;\n";
    writeClasses(out, schema, dynamic, structs, t.classes);
    writeEvents(out, schema, dynamic, t.events);
    out << "    dict.v_all_struct = " << structs << ";\n";
    writeIndexes(out, schema, dynamic, t.indexes, t.keys);
    writeCollations(out, schema, dynamic);

    bool const oid = schema.m_oidDeclared;
    out << member("version_major", ZYL_DICT_VERSION_MAJOR) << member("version_minor", ZYL_DICT_VERSION_MINOR)
        << member("version_build", ZYL_DICT_VERSION_BUILD) << member("magic_number", ZYL_DICT_MAGIC_NUMBER)
        << member("oid_is_supported", oid ? 1 : 0) << member("auto_oid_supported", schema.m_autoOid != 0 ? 1 : 0)
        << member("flags", schema.m_schemaOptions | (m_dictFlagA ? ZYL_SCHEMA_KEEP_FIELD_ORDER : 0))
        << member("n_class_codes", t.classes) << member("n_list_indexes", t.lists)
        << member("n_autoid_indexes", t.autoids) << member("n_history_indexes", t.histories)
        << member("n_userdef_indexes", schema.m_userdefCount) << member("n_desc_indexes", t.indexes)
        << member("n_desc_events", t.events) << member("n_desc_colls", schema.m_collations->size())
        << member("n_structs", creator.structCount()) << member("num_oid_estimation", schema.m_oidEstimate)
        << member("num_HA_estimation", schema.m_autoOid) << member("max_numof_indexes_per_obj", t.maxIndexes)
        << member("exact_OID_sizeof", oid ? "sizeof(" + db + "_oid)" : mstring("0"))
        << member("layout_OID_size", schema.m_oidSize) << member("sizeof_zyl_offs_t[0]", m_jobFlag2 ? 8 : 4)
        << "    dict.sizeof_zyl_offs_t[1]      = sizeof(zyl_offs_t);\n"
        << member("sizeof_zyl_size_t[0]", m_jobNum1)
        << "    dict.sizeof_zyl_size_t[1]      = sizeof(zyl_size_t);\n";

    // Initial values, read through an index into these tables. An empty
    // table is still pointed at, with a count of 0: a table nothing refers
    // to would not compile warning-free.
    out << member("init_i_data.ptr", "init_i_values")
        << member("init_i_data_n", static_cast<long long>(creator.intValues().size()))
        << member("init_d_data.ptr", "init_d_values")
        << member("init_d_data_n", static_cast<long long>(creator.realValues().size()));

    out << "  }\n\n  return &dict; \n}\n\n";
}
