// The dictionary built in memory: MemoryGenDict runs the layout pass with
// numbers only and turns the dictionary's values into records;
// MemoryClassDictCreator does the same for the structure and field tables.
// The values come from the functions the C-source form prints (strdict.h),
// so both forms agree by construction; what differs is said where it is.
#include "target/zylcomp/gendict.h"

#include <cstring>
#include <memory>
#include <string>

#include "foundation/sets.h"
#include "host/zylcomp/schema.h"
#include "zylcomp.h"

// By type code: one-byte codes 1 and 4; two-byte 2, 5 and 15; four-byte 3,
// 6, 9, 10, 16 and 17; eight-byte 11 to 14 and 18. The others (characters,
// booleans, strings) keep their type's alignment.
std::uint32_t const direct_field_alignment[51] = {
    0, 1, 2, 4, 1, 2, 4, 0, 0, 4, 4, 8, 8, 8, 8, 2, 4, 4, 8, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
};

std::int32_t memNumber(FSize const& v, char const* what) {
    if (v.is_str())
        IErrReporter::panic(what, false);
    return v.m_num;
}

void* memTable(std::size_t count, std::size_t size) {
    void* p = zyl_sys_calloc(count, size);
    if (p == nullptr && count * size != 0)
        IErrReporter::panic("insufficient memory", true);
    return p;
}

char const* memString(mstring const& s) { return memString(s.c_str()); }

char const* memString(char const* s) {
    std::size_t const n = std::strlen(s) + 1;
    char* p = static_cast<char*>(zyl_sys_malloc(n));
    if (p == nullptr)
        IErrReporter::panic("insufficient memory", true);
    std::memcpy(p, s, n);
    return p;
}

namespace {

template <class T>
T* table(std::size_t count) {
    return static_cast<T*>(memTable(count, sizeof(T)));
}

template <class T, class Visit>
void forEach(ISet* set, Visit visit) {
    std::unique_ptr<ISet::Pos> pos(set->first());
    for (; pos->valid(); pos->next())
        visit(*static_cast<T*>(pos->get().get()));
}

std::uint16_t u16(int v) { return static_cast<std::uint16_t>(v); }
std::uint16_t u16(FSize const& v, char const* what) { return static_cast<std::uint16_t>(memNumber(v, what)); }
std::uint32_t u32(FSize const& v, char const* what) { return static_cast<std::uint32_t>(memNumber(v, what)); }

// sizeof the {db}_oid type that the generated header declares, as a C
// compiler for a 64-bit target lays it out: members in declared order on
// their natural alignment, the whole rounded up to the largest. (The
// layout pass packs the oid tighter, which is layout_OID_size.)
int oidSizeof(Struct const& oid) {
    int offset = 0;
    int maxAlign = 1;
    for (unsigned i = 0; i < oid.v_field.size(); i++) {
        Field const& f = oid.v_field[i];
        int const sz = f.m_struct->m_layout.large.m_size.m_num;
        int size = sz;
        int align = 1;
        switch (f.m_struct->m_category) {
        case TC_SCALAR:
            align = sz;
            size = f.m_isArray ? wrap32(std::int64_t{sz} * f.m_arraySize) : sz;
            break;
        case TC_NCHARS:
            align = 2;
            size = sz / 2 * 2;
            break;
        default:  // characters and binary; the layout pass refused the rest
            break;
        }
        offset = wrap32((std::int64_t{offset} + align - 1) / align * align + size);
        maxAlign = align > maxAlign ? align : maxAlign;
    }
    return wrap32((std::int64_t{offset} + maxAlign - 1) / maxAlign * maxAlign);
}

}  // namespace

// ---------------------------------------------------------------------------
// MemoryGenDict: the frame and the layout steps

MemoryGenDict::MemoryGenDict(Schema& schema, bool outOfLine, bool dictFlagA, bool genXmlSchema, bool genCpp,
                             bool genCs, bool genJava, bool cppProperties, IErrReporter* err,
                             mstring const& outputDir, mstring const& csNamespace, mstring const& javaPackage,
                             bool dictFlagB, bool genXml, bool genJson, bool jobFlag1, bool jobFlag2, int jobNum1,
                             int jobNum2, bool usePrefix, bool classCodeOrigin, bool dllSpec)
    : GenOutput(schema, outOfLine, dictFlagA, genXmlSchema, genCpp, genCs, genJava, cppProperties, err, outputDir,
                csNamespace, javaPackage, dictFlagB, genXml, genJson, jobFlag1, jobFlag2, jobNum1, jobNum2,
                usePrefix, classCodeOrigin, dllSpec),
      m_memOutputDir(outputDir) {}

void MemoryGenDict::createStreams(bool, bool) {
    for (IOutStream** s : {&m_h, &m_c, &m_proto, &m_body, &m_protoEnd, &m_xml, &m_hpp, &m_cs, &m_java, &m_udf,
                           &m_coll, &m_hppInline}) {
        delete *s;
        *s = IOutStream::createNullStream();
    }
}

bool MemoryGenDict::layout(Struct& s, int startOffset, Class* owner) {
    return GenOutput::layout(s, startOffset, owner);
}

FSize MemoryGenDict::getArraySize(FSize& elem, int n) {
    return FSize(wrap32(std::int64_t{memNumber(elem, "!ret.is_str()")} * n));
}

// The walk of GenOutput::layout(Layout&, ...) with numbers only. Members of
// a direct struct take the alignment the C compiler would give them, and
// the struct's size is rounded up as the C compiler rounds it.
void MemoryGenDict::layout(Layout& l, int startOffset, Struct* s) {
    FSize offs(startOffset);
    int maxAlign = 1;
    Struct const* direct = nullptr;
    FldLayout const* lastDirectHolder = nullptr;

    for (unsigned i = 0; i < l.v_fld.size(); i++) {
        FldLayout& fld = l.v_fld[i];
        Struct const* c = fld.m_field != nullptr ? fld.m_field->m_containerStruct : nullptr;
        if (c != nullptr && c->m_isDirect) {
            direct = c;
            if (!c->m_packed) {
                int const d = dictType(*fld.m_field, false).m_typeCode;
                if (d >= 0 && d < 51 && direct_field_alignment[d] != 0)
                    fld.m_align = static_cast<int>(direct_field_alignment[d]);
            }
        }
        if (fld.m_align.m_num > maxAlign)
            maxAlign = fld.m_align.m_num;
        // A numeric offset rounds in place, as alignInt would round it.
        if (offs.is_str())
            offs = alignInt(offs, fld.m_align);
        else
            roundUp(offs.m_num, fld.m_align.m_num);
        memNumber(offs, "! offs.is_str()");
        fld.m_offset = offs;
        // Numbers add in place; only a text (which ends this walk as a
        // fault) needs the general sum.
        if (fld.m_size.is_str())
            offs += fld.m_size;
        else
            offs.m_num = wrap32(std::int64_t{offs.m_num} + fld.m_size.m_num);
        if (c != nullptr && c->m_hasDirect)
            lastDirectHolder = &fld;

        // Nothing marks a field as a direct struct held by value here (see
        // update_layout_strings), so this step of the C-source walk stays
        // unused; were it reached, it would stay numeric.
        if (fld.m_typeIsDirect) {
            if (i == 0) {
                fld.m_offset = 0;
            } else {
                FldLayout const& prev = l.v_fld[i - 1];
                fld.m_offset = wrap32(std::int64_t{memNumber(prev.m_offset, "!fld_prev.m_offset.is_str()")} +
                                      memNumber(prev.m_size, "!fld_prev.m_size.is_str()"));
            }
        }
    }

    l.m_size = offs;
    if (direct != nullptr) {
        l.m_align = 1;
        if (lastDirectHolder == nullptr) {
            FSize const& own = direct->m_layout.compact.m_size;
            l.m_size = s != nullptr && s->m_packed ? own : alignInt(own, maxAlign);
        }
    } else {
        l.m_align = maxAlign;
    }
    if (lastDirectHolder != nullptr)
        l.m_size = wrap32(std::int64_t{memNumber(lastDirectHolder->m_size, "!lfld->m_size.is_str()")} +
                          memNumber(lastDirectHolder->m_offset, "!lfld->m_offset.is_str()"));
    memNumber(l.m_size, "!l.m_size.is_str()");
}

int MemoryGenDict::GetClassFlags(Class* c) { return ::GetClassFlags(*c); }

// ---------------------------------------------------------------------------
// MemoryGenDict: the records

zyl_dictionary_t* MemoryGenDict::generate() {
    zyl_dictionary_t* dict = table<zyl_dictionary_t>(1);
    Schema& schema = *m_schema;
    // Placed all at once, a large schema's placements have long left the
    // cache when the records are made of them, and they all stay in memory
    // until the end. Placed one class at a time, each class's placements
    // are read at once and their memory serves the next class.
    layoutTypes();
    bool const streamed = classesStreamable();
    if (streamed) {
        numberClasses();
        forEach<Class>(schema.m_classes, [this](Class& c) { registerOwners(c); });
    } else {
        layoutClasses();
    }
    calculateFormating();

    MemoryClassDictCreator creator(m_schema, m_err, schema.m_dbName);
    bool const sortFields = !m_dictFlagA;
    creator.begin(dict);

    int nClasses = 0, lists = 0, autoids = 0, histories = 0, maxIndexes = 0;
    forEach<Class>(schema.m_classes, [&](Class& c) {
        nClasses++;
        lists += c.m_hasList ? 1 : 0;
        autoids += c.m_hasAutoid ? 1 : 0;
        histories += c.m_hasHistory ? 1 : 0;
        int const n = static_cast<int>(c.v_index.size());
        maxIndexes = n > maxIndexes ? n : maxIndexes;
    });
    // The classes are the last structures, in class order.
    unsigned const nStructs = static_cast<unsigned>(creator.structCount());
    unsigned const firstClass = streamed ? nStructs - static_cast<unsigned>(nClasses) : nStructs;
    for (unsigned n = 0; n < firstClass; n++)
        creator.entry(dict, n, sortFields);

    dict->version_major = ZYL_DICT_VERSION_MAJOR;
    dict->version_minor = ZYL_DICT_VERSION_MINOR;
    dict->version_build = ZYL_DICT_VERSION_BUILD;
    dict->magic_number = ZYL_DICT_MAGIC_NUMBER;
    dict->flags = static_cast<std::uint32_t>(schema.m_schemaOptions | (m_dictFlagA ? ZYL_SCHEMA_KEEP_FIELD_ORDER : 0));
    dict->oid_is_supported = schema.m_oidDeclared ? 1 : 0;
    dict->auto_oid_supported = schema.m_autoOid != 0 ? 1 : 0;

    unsigned nIndexes = 0, nEvents = 0, nKeys = 0;
    forEach<Class>(schema.m_classes, [&](Class& c) {
        nIndexes += c.v_index.size();
        nEvents += c.v_event.size();
        for (unsigned i = 0; i < c.v_index.size(); i++)
            nKeys += c.v_index[i].v_segment.size();
    });

    Cursor at;
    at.classes = table<zyl_dict_class_info_t>(nClasses + 1);
    at.classNames = table<char const*>(nClasses + 1);
    dict->v_class_info = at.classes;
    dict->str_class_names = at.classNames;
    dict->n_class_codes = u16(nClasses);
    dict->n_list_indexes = u16(lists);
    dict->n_autoid_indexes = u16(autoids);
    dict->n_history_indexes = u16(histories);
    dict->n_userdef_indexes = u16(schema.m_userdefCount);
    dict->n_desc_indexes = u16(static_cast<int>(nIndexes));
    dict->n_desc_events = u16(static_cast<int>(nEvents));
    dict->n_desc_colls = u16(static_cast<int>(schema.m_collations->size()));
    if (nEvents > 0) {
        at.events = table<zyl_dict_event_t>(nEvents);
        dict->v_desc_events = at.events;
    }
    if (nIndexes > 0) {
        at.indexes = table<zyl_dict_index_t>(nIndexes);
        at.keys = table<zyl_dict_index_field_t>(nKeys);
        at.indexNames = table<char const*>(nIndexes);
        dict->v_desc_indexes = at.indexes;
        dict->str_index_names = at.indexNames;
    }

    // Either way every stage sees the classes in class order, and the
    // records land where they did: only the interleaving differs.
    unsigned n = firstClass;
    forEach<Class>(schema.m_classes, [&](Class& c) {
        if (streamed) {
            if (creator.usedClass(n) != &c)
                IErrReporter::panic("class records out of order", false);
            layout(c, classStart(c), &c);
            creator.entry(dict, n++, sortFields);
        }
        classRecord(dict, c, at);
        if (streamed) {
            eventRecords(c, at);
            indexRecords(c, at);
            releaseClass(c);
        }
    });
    if (!streamed) {
        forEach<Class>(schema.m_classes, [&](Class& c) { eventRecords(c, at); });
        forEach<Class>(schema.m_classes, [&](Class& c) { indexRecords(c, at); });
    }

    dict->num_oid_estimation = static_cast<std::uint32_t>(schema.m_oidEstimate);
    dict->num_HA_estimation = static_cast<std::uint32_t>(schema.m_autoOid);
    dict->max_numof_indexes_per_obj = u16(maxIndexes);
    bool const oid = schema.m_oidDeclared && schema.m_oidStruct != nullptr;
    dict->exact_OID_sizeof = u16(oid ? oidSizeof(*schema.m_oidStruct) : 0);
    dict->layout_OID_size = u16(schema.m_oidSize);

    if (schema.m_collations->size() > 0)
        generate_collations(dict);

    // Compile time and run time are one here, on a target of 8-byte offsets
    // and sizes.
    dict->sizeof_zyl_offs_t[0] = dict->sizeof_zyl_offs_t[1] = 8;
    dict->sizeof_zyl_size_t[0] = dict->sizeof_zyl_size_t[1] = 8;
    return dict;
}

// A class's placement can only fail on a reference while the oid has no
// size; an index record only on a key over a vector or an array, or on a
// key of a type that has no key form. Where none of these can happen,
// nothing but a field record can report an error once the structs are
// placed, and field records keep their order.
bool MemoryGenDict::classesStreamable() {
    Schema const& schema = *m_schema;
    if (schema.m_oidSize == 0 && schema.findType("ref") != nullptr)
        return false;
    bool plain = true;
    forEach<Class>(schema.m_classes, [&plain](Class& c) {
        for (unsigned i = 0; i < c.v_index.size() && plain; i++) {
            Index const& index = c.v_index[i];
            if (index.m_vbased >= 0)
                plain = false;
            for (unsigned k = 0; k < index.v_segment.size() && plain; k++) {
                Index::Segment const& s = index.v_segment[k];
                for (unsigned j = 0; j < s.v_fldEl.size() && plain; j++) {
                    Field const* f = s.v_fldEl[j].m_field;
                    if (f == nullptr || f->m_struct == nullptr || f->m_isVector || f->m_isArray)
                        plain = false;
                    else if (j + 1 == s.v_fldEl.size() &&
                             (f->m_struct->m_category == TC_STRUCT || f->m_struct->m_category == TC_BLOB))
                        plain = false;
                }
            }
        }
    });
    return plain;
}

void MemoryGenDict::classRecord(zyl_dictionary_t* dict, Class& c, Cursor& at) {
    DictClassEntry const e = dictClassEntry(*m_schema, c, at.firstIndex, at.firstEvent);
    at.firstIndex += static_cast<int>(c.v_index.size());
    at.firstEvent += static_cast<int>(c.v_event.size());
    zyl_dict_class_info_t& x = at.classes[at.code];
    x.first_index_num = u16(e.m_firstIndex);
    x.last_index_num = u16(e.m_lastIndex);
    x.list_index_num = u16(e.m_listIndex);
    x.autoid_index_num = u16(e.m_autoidIndex);
    x.fixedsize = u32(e.m_fixedSize, "!fixedsize.is_str()");
    x.autoid_offset = u16(e.m_autoidOffset, "!autoid_offset.is_str()");
    x.history_index_num = u16(e.m_historyIndex);
    x.history_length = u16(e.m_historyLength);
    x.history_offset = u16(e.m_historyOffset, "!history_offset.is_str()");
    x.first_event_num = u16(e.m_firstEvent);
    x.last_event_num = u16(e.m_lastEvent);
    x.flags = u16(e.m_flags);
    at.classNames[at.code] = memString(c.m_name);
    x.struct_ptr = &dict->v_all_struct[e.m_structNo];
    x.init_size = static_cast<std::uint64_t>(memNumber(e.m_initSize, "!init_size.is_str()"));
    x.auto_oid_offset = u16(e.m_autoOidOffset, "!auto_oid_offset.is_str()");
    at.code++;
}

void MemoryGenDict::eventRecords(Class& c, Cursor& at) {
    for (unsigned i = 0; i < c.v_event.size(); i++, at.events++) {
        DictEventEntry const e = dictEventEntry(c, c.v_event[i]);
        at.events->class_code = u16(e.m_classCode);
        at.events->flags = u16(e.m_flags);
        at.events->field_offset = u32(e.m_offset, "!field_offset.is_str()");
        at.events->field_size = u32(e.m_size, "!field_size.is_str()");
        at.events->field_type = static_cast<std::uint8_t>(e.m_type);
        at.events->fld_no = u16(e.m_fldNo);
    }
}

void MemoryGenDict::indexRecords(Class& c, Cursor& at) {
    for (unsigned i = 0; i < c.v_index.size(); i++, at.indexes++, at.indexNames++) {
        Index const& index = c.v_index[i];
        DictIndexEntry const e = dictIndexEntry(c, index, false);
        m_indexName.assign(c.m_name.c_str());
        m_indexName += '.';
        m_indexName += index.m_name.c_str();
        *at.indexNames = memString(m_indexName.c_str());
        zyl_dict_index_t& w = *at.indexes;
        w.class_code = u16(e.m_classCode);
        w.impl_no = u16(e.m_implNo);
        w.numof_fields = u16(static_cast<int>(e.v_key.size()));
        w.vect_field_offset = u32(e.m_vectOffset, "!vect_field_offset.is_str()");
        w.flags = e.m_flags;
        w.fields = at.keys;
        w.numof_keys_estimate = e.m_estimate;
        w.userdef_id = u16(e.m_userdefId);
        for (unsigned k = 0; k < e.v_key.size(); k++, at.keys++) {
            DictKeyEntry const& key = e.v_key[k];
            at.keys->field_offset = u32(key.m_offset, "!field_offset.is_str()");
            at.keys->vect_field_offset = u32(key.m_vectOffset, "!vect_field_offset.is_str()");
            at.keys->indicator_offset = u32(key.m_indicatorOffset, "!indicator_offset.is_str()");
            at.keys->field_size = u32(key.m_size, "!field_size.is_str()");
            at.keys->field_type = static_cast<std::uint8_t>(key.m_type);
            at.keys->fld_flags = static_cast<std::uint8_t>(key.m_flags);
            at.keys->fld_no = u16(key.m_fldNo);
            at.keys->collation_id = u16(key.m_collation);
        }
    }
}

void MemoryGenDict::releaseClass(Class& c) {
    c.m_layout.compact.v_fld = mvector<FldLayout>();
    c.m_layout.large.v_fld = mvector<FldLayout>();
    c.v_field = mvector<Field>();
    c.v_index = mvector<Index>();
    c.v_event = mvector<Event>();
}

void MemoryGenDict::generate_collations(zyl_dictionary_t* dict) {
    zyl_dict_collation_t* colls = table<zyl_dict_collation_t>(m_schema->m_collations->size());
    dict->v_desc_colls = colls;
    forEach<Collation>(m_schema->m_collations, [&colls](Collation& coll) {
        colls->name = memString(coll.m_name);
        colls->type = static_cast<std::uint32_t>(coll.m_fieldKind);
        colls++;
    });
}

// ---------------------------------------------------------------------------
// MemoryClassDictCreator

MemoryClassDictCreator::MemoryClassDictCreator(Schema* schema, IErrReporter* err, mstring const& dbName)
    : ClassDictCreator(schema, false, err, dbName) {}

void MemoryClassDictCreator::create(zyl_dictionary_t* dict, bool sortFields) {
    begin(dict);
    for (unsigned n = 0; n < v_used.size(); n++)
        entry(dict, n, sortFields);
}

void MemoryClassDictCreator::begin(zyl_dictionary_t* dict) {
    unsigned const nStructs = v_used.size();
    m_structs = table<zyl_dict_struct_t>(nStructs);
    dict->v_all_struct = m_structs;
    // Without structures nothing would point to a field table.
    if (nStructs > 0)
        m_fields = table<zyl_dict_field_t>(static_cast<unsigned>(m_nFields));
    dict->n_structs = u16(static_cast<int>(nStructs));
}

void MemoryClassDictCreator::entry(zyl_dictionary_t* dict, unsigned n, bool sortFields) {
    zyl_dict_field_t* const fields = m_fields;
    Struct const& s = *v_used[static_cast<int>(n)];
    // The C compiler decides where a direct struct's neighbours go, so
    // a struct holding one keeps its declared order here, whereas the
    // C-source form sorts it like any other.
    mvector<FieldRef> const list = fieldList(s, sortFields && !s.m_hasDirect);
    zyl_dict_struct_t& r = m_structs[n];
    r.name = memString(s.m_name);
    r.flags = u16(GetStructFlags(s));
    r.n_fields = u16(static_cast<int>(s.v_field.size()));
    r.fields = fields + v_firstField[s.m_dictNo];
    r.c_size = u16(s.m_layout.compact.m_size, "!c_size.is_str()");
    r.c_align = u16(s.m_layout.compact.m_align, "!c_align.is_str()");
    r.u_size = u32(s.m_layout.large.m_size, "!u_size.is_str()");
    r.u_align = u32(s.m_layout.large.m_align, "!u_align.is_str()");

    zyl_dict_field_t* x = fields + v_firstField[s.m_dictNo];
    for (unsigned i = 0; i < list.size(); i++, x++) {
        Field const& f = *list[i].m_field;
        if (f.m_struct->m_category == TC_SEQUENCE && f.m_elemStruct != nullptr &&
            f.m_elemStruct->m_category == TC_STRUCT)
            m_err->err("python wraper does not support sequence of structs");
        DictFieldEntry const e = fieldEntry(static_cast<int>(n), list, static_cast<int>(i));
        x->name = memString(e.m_name);
        FldLayout const& c = *e.m_compact;
        FldLayout const& u = *e.m_large;
        x->layout.c_size = u16(c.m_size, "!c_size.is_str()");
        x->layout.c_align = u16(c.m_align, "!c_align.is_str()");
        x->layout.c_offset = u16(c.m_offset, "!c_offset.is_str()");
        x->layout.u_size = u32(u.m_size, "!u_size.is_str()");
        x->layout.u_align = u32(u.m_align, "!u_align.is_str()");
        x->layout.u_offset = u32(u.m_offset, "!u_offset.is_str()");
        x->field_el_type = static_cast<std::uint8_t>(e.m_type);
        x->flags = static_cast<std::uint8_t>(e.m_flags);
        x->array_size = u16(e.m_arraySize);
        x->struct_num = e.m_structNum;
        x->field_size = u32(e.m_fieldSize, "!field_size.is_str()");
        x->refto_class = u16(e.m_reftoClass);
        x->init_index = e.m_initIndex;
        x->order_no = u16(e.m_orderNo);
        x->no = u16(e.m_no);
        x->event_id = u16(e.m_eventId);
        x->indicator = u16(e.m_indicator);
        x->precision = static_cast<std::uint8_t>(e.m_precision);
        x->seq_order = static_cast<std::uint8_t>(e.m_seqOrder);
        x->seq_elem_size = static_cast<std::uint8_t>(memNumber(e.m_seqElemSize, "!seq_elem_size.is_str()"));
    }

    // The initial values are complete after the last structure: only then
    // are they copied, so that no earlier copy is left where nothing
    // points to it.
    if (n + 1 != v_used.size())
        return;
    std::int32_t* ints = table<std::int32_t>(v_initI.size());
    double* reals = table<double>(v_initD.size());
    for (unsigned k = 0; k < v_initI.size(); k++)
        ints[k] = v_initI[k];
    for (unsigned k = 0; k < v_initD.size(); k++)
        reals[k] = v_initD[k];
    dict->init_i_data.ptr = ints;
    dict->init_i_data_n = v_initI.size();
    dict->init_d_data.ptr = reals;
    dict->init_d_data_n = v_initD.size();
}
