#include "support/dict_memory.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <set>

#include "zylcomp.h"

namespace {

// Start of each live block and its size in bytes. Built on first use, so
// that an allocation during static initialisation finds it.
std::map<char const*, std::size_t>& blocks() {
    static std::map<char const*, std::size_t>* b = new std::map<char const*, std::size_t>();
    return *b;
}

std::size_t handedOut = 0;
// The runtime's allocators may be called from several threads at once.
std::mutex recording;

void* record(void* p, std::size_t size) {
    if (p != nullptr) {
        std::lock_guard<std::mutex> hold(recording);
        blocks()[static_cast<char const*>(p)] = size;
        handedOut++;
    }
    return p;
}

// The walk over a dictionary: which blocks it reaches (strings and tables
// apart), and the first pointer that lies outside every block.
struct Walk {
    // `count` elements of `size` bytes at `p`.
    void table(void const* p, std::size_t count, std::size_t size, char const* what) {
        if (p == nullptr) {
            if (count != 0)
                fail(std::string(what) + " is null with entries");
            return;
        }
        char const* start = reach(static_cast<char const*>(p), count * size, what);
        if (start != nullptr)
            tables.insert(start);
    }
    // A string is a block of its own, which one pointer alone reaches.
    void text(char const* s, char const* what) {
        if (s == nullptr) {
            fail(std::string(what) + " is null");
            return;
        }
        if (blocks().count(s) == 0) {
            fail(std::string(what) + " is no block of its own");
            return;
        }
        if (!texts.insert(s).second)
            fail(std::string(what) + " is reached twice");
        // The block must hold the text with its NUL before strlen reads it.
        if (reach(s, 1, what) != nullptr)
            reach(s, std::strlen(s) + 1, what);
    }
    void fail(std::string const& e) {
        if (error.empty())
            error = e;
    }
    // The start of the block that holds `bytes` bytes at `p`, or null.
    char const* reach(char const* p, std::size_t bytes, char const* what) {
        auto it = blocks().upper_bound(p);
        if (it != blocks().begin()) {
            --it;
            char const* start = it->first;
            if (p >= start && p + bytes <= start + it->second) {
                reached.insert(start);
                return start;
            }
        }
        fail(std::string(what) + " lies outside the dictionary's blocks");
        return nullptr;
    }

    std::set<char const*> reached, texts, tables;
    std::string error;
};

}  // namespace

extern "C" void* zyl_sys_malloc(size_t size) { return record(std::malloc(size), size); }

extern "C" void* zyl_sys_calloc(size_t count, size_t size) {
    return record(std::calloc(count, size), count * size);
}

namespace dictmem {

std::size_t allocations() { return handedOut; }
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
    auto it = blocks().find(static_cast<char const*>(p));
    if (it == blocks().end())
        return false;
    blocks().erase(it);
    std::free(p);
    return true;
}

namespace {

std::size_t freed = 0, notLive = 0;

void deallocate(void* p) { ++(release(p) ? freed : notLive); }

}  // namespace

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
    if (d->str_class_names != nullptr)
        for (unsigned i = 1; i <= d->n_class_codes; i++)
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
    if (!w.error.empty())
        return w.error;
    for (auto const& b : blocks()) {
        if (w.reached.count(b.first) == 0)
            return "a block of " + std::to_string(b.second) + " bytes that the dictionary does not reach";
        if (w.texts.count(b.first) != 0 && w.tables.count(b.first) != 0)
            return "a string in a block that a table pointer reaches too";
    }
    return "";
}

}  // namespace dictmem
