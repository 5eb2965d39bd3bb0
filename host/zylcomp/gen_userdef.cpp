// User-defined indexes, collations and the calculator.
//
// An index declared userdef compares (and, for a hash index, hashes) by
// functions the user writes; so does a collation. {db}.c gets a table of
// pointers to them for the runtime, {db}.h their prototypes, and the
// skeleton files {db}_udf.c and {db}_coll.c a body to fill in for each.
// The frame writes a skeleton file only when none exists: one a person has
// edited stays, and this compile's skeletons go to its ".new" sibling.
//
// Indexes and collations that only classes without an API use keep their
// place in the tables, with null entries, so that the numbers the
// dictionary gives them still index the tables.
#include <memory>

#include "foundation/sets.h"
#include "foundation/ut.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"
#include "zyldict.h"

namespace {

template <class T, class Visit>
void forEach(ISet* set, Visit visit) {
    std::unique_ptr<ISet::Pos> pos(set->first());
    for (; pos->valid(); pos->next())
        visit(*static_cast<T*>(pos->get().get()));
}

// One function a table entry points at. `when` false, or a table without
// an API behind it, leaves the entry null and writes no function.
struct Slot {
    bool when;
    char const* entry;  // the table line up to the pointer
    char const* ret;
    char const* suffix;
    char const* params;
    char const* comment;
};

}  // namespace

// The calculator estimates the database's size from the number of objects
// the schema's calculator statement gives each class.
void GenOutput::outputCalculator() {
    Schema const& schema = *m_schema;
    *m_c << "zyl_calculator_h " << schema.m_dbName << "_get_calculator(void)\n{\n";
    if (schema.m_hasCalculator) {
        *m_c << "  static zyl_calculator_t calc;\n  static zyl_calc_class_t calc_classes[] = {\n";
        for (unsigned i = 0; i < schema.v_calculator.size(); i++) {
            CalculatorEntry const& e = schema.v_calculator[static_cast<int>(i)];
            // The statement holds the class name as written.
            mstring const name = nameWithPrefix(e.m_className);
            *m_c << "    { \"" << name << "\", " << e.m_count << ", " << name << "_code },\n";
        }
        *m_c << "  };\n\n  calc.classes = calc_classes;\n  calc.nclasses = " << schema.v_calculator.size()
             << ";\n  return &calc;\n";
    } else {
        *m_c << "  return (zyl_calculator_h)NULLPTR;\n";
    }
    *m_c << "}\n\n";
}

void GenOutput::writeSkeleton(IOutStream* file, mstring const& head, char const* comment) {
    // The prototype goes to {db}.h, the body with the prototype to the skeleton.
    DupStream both(m_h, file, false);
    writeCFunction(head, mstring("{\n") + comment + "\n\n  return 0;\n}\n\n", &both, m_h, file);
}

void GenOutput::outputUserdef() {
    bool live = false;
    forEach<Class>(m_schema->m_classes, [&live](Class& c) { live = live || (c.m_hasUserdef && !c.m_noApi); });
    if (!live)
        return;
    mstring const& db = m_schema->m_dbName;
    *m_h << "zyl_userdef_funcs_h " << db << "_get_udfs(void);\n";
    *m_c << "zyl_userdef_funcs_h " << db << "_get_udfs(void) {\n  static zyl_userdef_funcs_t  fptrs["
         << m_schema->m_userdefCount << "];\n  static int fptrs_ready = 0;\n\n  if (! fptrs_ready)\n  {\n";

    forEach<Class>(m_schema->m_classes, [this](Class& c) {
        for (unsigned i = 0; i < c.v_index.size(); i++) {
            Index const& idx = c.v_index[static_cast<int>(i)];
            if (!idx.m_userdef)
                continue;
            bool const hash = idx.m_type == IT_HASH;
            Subst v;
            v.set("k", UT::n2s(idx.m_userdefNo)).setType("class", c.m_name).set("index", idx.m_name);
            // Each function gets the element's place too, for keys inside a vector.
            Slot const slots[] = {
                {true, "    fptrs[{k}].fcomp.vb      = (zyl_compare_userdef_vb_f)        ", "int", "_compare_obj",
                 " ( {class} * obj1, uint2 index1, {class} * obj2, uint2 index2 )",
                 "/* object-to-object user-defined compare function */"},
                {true, "    fptrs[{k}].fcomp_ext.vb  = (zyl_compare_extkey_userdef_vb_f) ", "int", "_compare_ext",
                 " ( {class} * obj, uint2 index, zyl_external_field_h keys )",
                 "/* object-to-key user-defined compare function */"},
                {hash, "    fptrs[{k}].fhash.vb      = (zyl_hash_userdef_vb_f)           ", "uint4", "_hash_obj",
                 " ( {class} * obj, uint2 index )", "/* user-defined object hash function */"},
                {hash, "    fptrs[{k}].fhash_ext.u   = (zyl_hash_extkey_userdef_f)       ", "uint4", "_hash_ext",
                 " ( zyl_external_field_h keys )", "/* user-defined key hash function */"},
            };
            *m_c << v.fill("    fptrs[{k}].p.flags       = 0;\n");
            if (!c.m_noApi)
                *m_udf << v.fill("/*\n\n* API for the user-defined index \"{index}\"\n\n*/\n\n");
            for (Slot const& slot : slots) {
                mstring name = c.m_name + "_" + idx.m_name + slot.suffix;
                bool const written = slot.when && !c.m_noApi;
                if (written)
                    writeSkeleton(m_udf, mstring(slot.ret) + " " + name + v.fill(slot.params), slot.comment);
                *m_c << v.fill(slot.entry) << (written ? name : mstring("0")) << ";\n";
            }
        }
    });
    *m_c << "    fptrs_ready = 1;\n  };\n  return fptrs;\n}\n\n\n";
}

void GenOutput::outputCollation() {
    bool live = false;
    forEach<Class>(m_schema->m_classes, [&live](Class& c) { live = live || (c.m_hasCollate && !c.m_noApi); });
    if (!live)
        return;
    mstring const& db = m_schema->m_dbName;
    *m_h << "zyl_collation_funcs_h " << db << "_get_collations(void);\n";
    *m_c << "zyl_collation_funcs_h " << db << "_get_collations(void) {\n  static zyl_collation_funcs_t  fptrs["
         << m_schema->m_collationCount << "];\n  static int fptrs_ready = 0;\n\n  if (! fptrs_ready)\n  {\n";

    forEach<Collation>(m_schema->m_collations, [this](Collation& coll) {
        bool const live = !coll.m_onlyNoApi;
        Subst v;
        // The kind is the type code of the keys' characters.
        v.set("k", UT::n2s(coll.m_number))
            .set("coll", coll.m_name)
            .set("ch", coll.m_fieldKind == ZYL_FT_NCHARS ? "nchar_t" : "char");
        Slot const slots[] = {
            {true, "    fptrs[{k}].comp = (zyl_compare_collation_f) ", "int", "_collation_compare",
             " ( const {ch} * str1, uint2 len1, const {ch} * str2, uint2 len2 )", "/* collation compare function */"},
            // Only a hash index needs to hash by the collation.
            {!coll.m_onlyTree, "    fptrs[{k}].hash = (zyl_hash_collation_f)    ", "uint4", "_collation_hash",
             " ( const {ch} * str, uint2 len )", "/* user-defined object hash function */"},
        };
        if (live)
            *m_coll << v.fill("/*\n* API for the user-defined collation \"{coll}\"\n*/\n\n");
        for (Slot const& slot : slots) {
            mstring name = coll.m_name + slot.suffix;
            bool const written = slot.when && live;
            if (written)
                writeSkeleton(m_coll, mstring(slot.ret) + " " + name + v.fill(slot.params), slot.comment);
            *m_c << v.fill(slot.entry) << (written ? name : mstring("0")) << ";\n";
        }
    });
    *m_c << "    fptrs_ready = 1;\n  };\n  return fptrs;\n}\n\n\n";
}
