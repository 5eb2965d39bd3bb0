// Where each class, struct, field and index of a compiled schema was
// declared: what a tool that reports on a dictionary needs to point at the
// schema text, which the dictionary records themselves do not keep.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "zylcomp.h"

struct DeclPlaces {
    // `file` is a place in `files`, -1 for what the compiler made itself.
    struct Place {
        int file = -1;
        int line = 0;
    };
    // A class or a struct: its own place, its fields' in v_field order
    // (the dictionary's order_no) and, for a class, its indexes' in the
    // order of its index records.
    struct Holder {
        Place self;
        std::vector<Place> fields;
        std::vector<Place> indexes;
    };

    // The place of a holder, of field `n` or of index `n`; null when
    // unknown or made by the compiler.
    Place const* holder(std::string const& name) const;
    Place const* field(std::string const& holder, int n) const;
    Place const* index(std::string const& holder, int n) const;

    std::vector<std::string> files;  // as the preprocessor named them; the schema text is "<membuf>"
    std::unordered_map<std::string, Holder> holders;  // by class or struct name
};

// zyl_db_load_dictionary that also fills `places` (when not null) from the
// model before the dictionary is built of it.
int loadDictionaryWithPlaces(const char* schema, const zyl_dict_load_params_t* params, zyl_dictionary_t** dict,
                             zyl_dict_error_callback_t callback, void* context, DeclPlaces* places);
