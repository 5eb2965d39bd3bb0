#include "support/dict_json.h"

#include <algorithm>
#include <regex>
#include <set>
#include <sstream>

#include "zyldict.h"

std::vector<std::string> jsonLines(std::string const& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string l; std::getline(in, l);)
        out.push_back(l);
    return out;
}

namespace {

// Within v_all_struct: applies `edit` to the field lines of each struct,
// with the struct's header line.
template <class Edit>
void eachStruct(std::vector<std::string>& json, Edit edit) {
    auto begin = std::find(json.begin(), json.end(), "  \"v_all_struct\": [");
    for (auto head = begin; head != json.end() && *head != "  ],"; ++head) {
        if (head->compare(0, 13, "    {\"name\": ") != 0)
            continue;
        auto end = head + 1;
        while (end != json.end() && end->compare(0, 6, "      ") == 0)
            ++end;
        std::vector<std::string> fields(head + 1, end);
        edit(*head, fields);
        std::copy(fields.begin(), fields.end(), head + 1);
    }
}

}  // namespace

// The differences between the two forms that are allowed, all of them:
// 1. sizeof_zyl_offs_t and sizeof_zyl_size_t, which the C form takes from
//    the options and the C compiler, and the memory form fixes at 8;
// 2. class and index names, which the C form of inline functions omits;
// 3. the alignment of a direct struct's members, which the C form leaves
//    to the C compiler and records as 1;
// 4. the field order of a struct that holds a direct struct, which the
//    memory form keeps as declared and the C form sorts by name, and so
//    the places its indicators name.
void acceptDifferences(std::vector<std::string>& c, std::vector<std::string>& mem) {
    for (char const* names : {"  \"str_class_names\": null,", "  \"str_index_names\": null,"})
        if (std::find(c.begin(), c.end(), names) != c.end())
            std::replace_if(
                mem.begin(), mem.end(), [names](std::string const& l) { return l.compare(0, 20, names, 20) == 0; },
                names);
    std::regex const flags("\"flags\": (\\d+),"), align("\"(c|u)_align\": \\d+"), member("\"struct_num\": (\\d+),"),
        name("\"name\": \"([^\"]+)\""), indicator("\"indicator\": (\\d+),");
    for (std::vector<std::string>* json : {&c, &mem}) {
        json->erase(std::remove_if(json->begin(), json->end(),
                                   [](std::string const& l) { return l.compare(0, 14, "  \"sizeof_zyl_") == 0; }),
                    json->end());
        std::set<int> direct;
        int number = 0;
        eachStruct(*json, [&](std::string const& head, std::vector<std::string>& fields) {
            std::smatch m;
            bool const isDirect = std::regex_search(head, m, flags) && (std::stoi(m[1]) & ZYL_STRUCT_DIRECT) != 0;
            if (isDirect) {
                direct.insert(number);
                for (std::string& f : fields)
                    f = std::regex_replace(f, align, "\"$1_align\": -");
            }
            number++;
            bool holder = false;
            for (std::string const& f : fields)
                holder = holder || (std::regex_search(f, m, member) && direct.count(std::stoi(m[1])) > 0);
            if (holder) {
                // An indicator is the place of a field in the list, so
                // it names that field instead.
                std::vector<std::string> names;
                for (std::string const& f : fields)
                    names.push_back(std::regex_search(f, m, name) ? m[1].str() : "");
                for (std::string& f : fields) {
                    if (std::regex_search(f, m, indicator) && std::stoul(m[1]) < names.size())
                        f = m.prefix().str() + "\"indicator\": \"" + names[std::stoul(m[1])] + "\"," + m.suffix().str();
                    if (f.back() == ',')
                        f.pop_back();
                }
                std::sort(fields.begin(), fields.end());
            }
        });
    }
}

std::string joined(std::vector<std::string> const& v) {
    std::string s;
    for (std::string const& l : v)
        s += l + "\n";
    return s;
}

