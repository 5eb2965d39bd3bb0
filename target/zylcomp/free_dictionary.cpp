// zyl_dict_free: gives every block of a dictionary that
// zyl_db_load_dictionary built back to the caller's deallocator.
//
// The blocks are the record itself, one block for each table and one for
// each string (see gendict.cpp). Records point into three tables rather
// than at their start: a class's struct_ptr into v_all_struct, a
// structure's fields into the one field table, an index's fields into the
// one key table. The field and key tables are found as the lowest of those
// pointers, since the first structure and the first index begin them, and
// the field names are walked over the field table as a whole: two records
// of one structure would share their fields. Nothing is allocated here.
#include <cstdlib>

#include "zylcomp.h"

namespace {

using Deallocate = void (*)(void* block);

void give(Deallocate deallocate, void const* block) {
    if (block != nullptr)
        deallocate(const_cast<void*>(block));
}

void giveNames(Deallocate deallocate, char const* const* names, std::size_t first, std::size_t end) {
    if (names == nullptr)
        return;
    for (std::size_t i = first; i < end; i++)
        give(deallocate, names[i]);
}

void giveStructures(Deallocate deallocate, zyl_dictionary_t const& d) {
    zyl_dict_struct_t const* structs = d.v_all_struct;
    if (structs == nullptr)
        return;
    zyl_dict_field_t const* table = nullptr;
    zyl_dict_field_t const* end = nullptr;
    for (unsigned i = 0; i < d.n_structs; i++) {
        zyl_dict_struct_t const& s = structs[i];
        give(deallocate, s.name);
        if (s.fields == nullptr)
            continue;
        if (table == nullptr || s.fields < table)
            table = s.fields;
        if (end == nullptr || s.fields + s.n_fields > end)
            end = s.fields + s.n_fields;
    }
    for (zyl_dict_field_t const* f = table; f != end; f++)
        give(deallocate, f->name);
    give(deallocate, table);
    give(deallocate, structs);
}

void giveIndexes(Deallocate deallocate, zyl_dictionary_t const& d) {
    giveNames(deallocate, d.str_index_names, 0, d.n_desc_indexes);
    give(deallocate, d.str_index_names);
    zyl_dict_index_t const* indexes = d.v_desc_indexes;
    if (indexes == nullptr)
        return;
    zyl_dict_index_field_t const* keys = nullptr;
    for (unsigned i = 0; i < d.n_desc_indexes; i++)
        if (indexes[i].fields != nullptr && (keys == nullptr || indexes[i].fields < keys))
            keys = indexes[i].fields;
    give(deallocate, keys);
    give(deallocate, indexes);
}

}  // namespace

extern "C" void zyl_dict_free(zyl_dictionary_t* dict, void (*deallocate)(void* block)) {
    if (dict == nullptr)
        return;
    if (deallocate == nullptr)
        deallocate = std::free;
    zyl_dictionary_t const& d = *dict;
    // Slot 0 of the class names is null.
    giveNames(deallocate, d.str_class_names, 1, d.n_class_codes + 1u);
    give(deallocate, d.str_class_names);
    give(deallocate, d.v_class_info);
    giveIndexes(deallocate, d);
    give(deallocate, d.v_desc_events);
    giveStructures(deallocate, d);
    if (d.v_desc_colls != nullptr) {
        for (unsigned i = 0; i < d.n_desc_colls; i++)
            give(deallocate, d.v_desc_colls[i].name);
        give(deallocate, d.v_desc_colls);
    }
    give(deallocate, d.init_i_data.ptr);
    give(deallocate, d.init_d_data.ptr);
    deallocate(dict);
}
