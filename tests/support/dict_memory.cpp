#include "support/dict_memory.h"

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <mutex>
#include <set>

#include "zylcomp.h"

namespace {

// Start and size of each live block. Built on first use, for an allocation
// during static initialisation.
std::map<char const*, std::size_t>& blocks() {
    static auto* b = new std::map<char const*, std::size_t>();
    return *b;
}

std::size_t freed = 0, notLive = 0;
std::mutex recording;  // the runtime's allocators may be called from several threads at once

void* record(void* p, std::size_t size) {
    std::lock_guard<std::mutex> hold(recording);
    if (p != nullptr)
        blocks()[static_cast<char const*>(p)] = size;
    return p;
}

void deallocate(void* p) { ++(dictmem::release(p) ? freed : notLive); }

// The walk over a dictionary: the blocks it reaches, strings and tables
// apart, and the first error.
struct Walk {
    std::set<char const*> reached, texts, tables;
    std::string error;

    void fail(std::string const& e) { error = error.empty() ? e : error; }
    // The start of the block that holds `bytes` bytes at `p`, or null.
    char const* reach(char const* p, std::size_t bytes, char const* what) {
        auto const after = blocks().upper_bound(p);
        if (after != blocks().begin() && p + bytes <= std::prev(after)->first + std::prev(after)->second)
            return *reached.insert(std::prev(after)->first).first;
        fail(std::string(what) + " lies outside the dictionary's blocks");
        return nullptr;
    }
    // `count` elements of `size` bytes at `p`.
    void table(void const* p, std::size_t count, std::size_t size, char const* what) {
        if (char const* start = p ? reach(static_cast<char const*>(p), count * size, what) : nullptr)
            tables.insert(start);
        else if (p == nullptr && count != 0)
            fail(std::string(what) + " is null with entries");
    }
    // A string is a block of its own, which one pointer alone reaches.
    void text(char const* s, char const* what) {
        if (s == nullptr || blocks().count(s) == 0)
            return fail(std::string(what) + (s ? " is no block of its own" : " is null"));
        if (!texts.insert(s).second)
            fail(std::string(what) + " is reached twice");
        // The block must hold the text with its NUL before strlen reads it.
        if (reach(s, 1, what) != nullptr)
            reach(s, std::strlen(s) + 1, what);
    }
};

}  // namespace

extern "C" void* zyl_sys_malloc(size_t size) { return record(std::malloc(size), size); }
extern "C" void* zyl_sys_calloc(size_t count, size_t size) { return record(std::calloc(count, size), count * size); }

namespace dictmem {

std::size_t live() { return blocks().size(); }

void releaseAll() {
    for (auto const& b : blocks())
        std::free(const_cast<char*>(b.first));
    blocks().clear();
}

void forgetAll() { blocks().clear(); }

void forgetAndFree(void* p) {
    if (!release(p))
        std::free(p);
}

bool release(void* p) {
    std::lock_guard<std::mutex> hold(recording);
    if (blocks().erase(static_cast<char const*>(p)) == 0)
        return false;
    std::free(p);
    return true;
}

std::size_t freeDictionary(zyl_dictionary_t* dict, std::size_t* wrong) {
    freed = notLive = 0;
    zyl_dict_free(dict, deallocate);
    *wrong += notLive;
    return freed;
}

std::string checkOwnedBy(zyl_dictionary_t const* d) {
    if (d == nullptr)
        return "no dictionary";
    Walk w;
    w.table(d, 1, sizeof *d, "the dictionary record");
    w.table(d->str_class_names, d->n_class_codes + 1u, sizeof(char const*), "str_class_names");
    w.table(d->v_class_info, d->n_class_codes + 1u, sizeof(zyl_dict_class_info_t), "v_class_info");
    for (unsigned i = 1; d->str_class_names != nullptr && i <= d->n_class_codes; i++)
        w.text(d->str_class_names[i], "a class name");
    w.table(d->str_index_names, d->n_desc_indexes, sizeof(char const*), "str_index_names");
    w.table(d->v_desc_indexes, d->n_desc_indexes, sizeof(zyl_dict_index_t), "v_desc_indexes");
    for (unsigned i = 0; i < d->n_desc_indexes; i++) {
        if (d->str_index_names != nullptr)
            w.text(d->str_index_names[i], "an index name");
        if (d->v_desc_indexes != nullptr)
            w.table(d->v_desc_indexes[i].fields, d->v_desc_indexes[i].numof_fields, sizeof(zyl_dict_index_field_t),
                    "the keys of an index");
    }
    w.table(d->v_desc_events, d->n_desc_events, sizeof(zyl_dict_event_t), "v_desc_events");
    w.table(d->v_all_struct, d->n_structs, sizeof(zyl_dict_struct_t), "v_all_struct");
    for (unsigned i = 0; d->v_all_struct != nullptr && i < d->n_structs; i++) {
        zyl_dict_struct_t const& s = d->v_all_struct[i];
        w.text(s.name, "a structure name");
        w.table(s.fields, s.n_fields, sizeof(zyl_dict_field_t), "the fields of a structure");
        for (unsigned k = 0; s.fields != nullptr && k < s.n_fields; k++)
            w.text(s.fields[k].name, "a field name");
    }
    w.table(d->v_desc_colls, d->n_desc_colls, sizeof(zyl_dict_collation_t), "v_desc_colls");
    for (unsigned i = 0; d->v_desc_colls != nullptr && i < d->n_desc_colls; i++)
        w.text(d->v_desc_colls[i].name, "a collation name");
    w.table(d->init_i_data.ptr, d->init_i_data_n, sizeof(std::int32_t), "init_i_data");
    w.table(d->init_d_data.ptr, d->init_d_data_n, sizeof(double), "init_d_data");
    for (auto const& b : blocks())
        if (w.error.empty() && w.reached.count(b.first) == 0)
            w.fail("a block of " + std::to_string(b.second) + " bytes that the dictionary does not reach");
        else if (w.error.empty() && w.texts.count(b.first) != 0 && w.tables.count(b.first) != 0)
            w.fail("a string in a block that a table pointer reaches too");
    return w.error;
}

}  // namespace dictmem
