// The changes --compare finds, and how they are printed.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

struct Finding {
    bool breaking = false;
    std::string code;     // kind of change, such as "field-type"
    std::string subject;  // "schema", "collation", "class", "field", "index" or "event"
    std::string className;
    std::string item;     // field path, index or collation name, event
    std::string message;
    bool inOld = false;   // the declaration stands in the old schema only
    std::string holder;   // class or struct that declares the field
    int declNo = -1;
    // Where the declaration stands; line 0 when the dictionary alone
    // speaks of it (the schema's settings, collations).
    std::string file;
    int line = 0;
    std::string declaration;  // "Item", "Item.qty", "Item.byQty"
};

// Classic lines, `File {file};  line {line}: breaking: {message}`, or with
// `json` one JSON object a line.
void printFindings(std::vector<Finding> const& findings, bool json, FILE* out);
