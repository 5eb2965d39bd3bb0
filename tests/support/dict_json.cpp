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
        // Each struct of v_all_struct: a header line, then a line for each field.
        for (auto head = std::find(json->begin(), json->end(), "  \"v_all_struct\": [");
             head != json->end() && *head != "  ],"; ++head) {
            if (head->compare(0, 13, "    {\"name\": ") != 0)
                continue;
            auto const first = head + 1;
            auto last = first;
            while (last != json->end() && last->compare(0, 6, "      ") == 0)
                ++last;
            std::smatch m;
            if (std::regex_search(*head, m, flags) && (std::stoi(m[1]) & ZYL_STRUCT_DIRECT) != 0) {
                direct.insert(number);
                for (auto f = first; f != last; ++f)
                    *f = std::regex_replace(*f, align, "\"$1_align\": -");
            }
            number++;
            if (std::none_of(first, last, [&](std::string const& f) {
                    return std::regex_search(f, m, member) && direct.count(std::stoi(m[1])) > 0;
                }))
                continue;
            // An indicator is the place of a field in the list, so it names
            // that field instead.
            std::vector<std::string> names;
            for (auto f = first; f != last; ++f)
                names.push_back(std::regex_search(*f, m, name) ? m[1].str() : "");
            for (auto f = first; f != last; ++f) {
                if (std::regex_search(*f, m, indicator) && std::stoul(m[1]) < names.size())
                    *f = m.prefix().str() + "\"indicator\": \"" + names[std::stoul(m[1])] + "\"," + m.suffix().str();
                if (f->back() == ',')
                    f->pop_back();
            }
            std::sort(first, last);
        }
    }
}

std::string joined(std::vector<std::string> const& v) {
    std::string s;
    for (std::string const& l : v)
        s += l + "\n";
    return s;
}

