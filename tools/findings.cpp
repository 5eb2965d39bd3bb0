#include "findings.h"

namespace {

std::string quoted(std::string const& s) {
    std::string out = "\"";
    for (unsigned char c : s) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20) {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\u%04x", c);
            out += buf;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

}  // namespace

void printFindings(std::vector<Finding> const& findings, bool json, FILE* out) {
    for (Finding const& f : findings) {
        char const* severity = f.breaking ? "breaking" : "compatible";
        if (!json) {
            // The prefix of the compiler's own diagnostics; without a line
            // the file alone, as for an error that has no place.
            if (f.line > 0)
                std::fprintf(out, "File %s;  line %d: %s: %s\n", f.file.c_str(), f.line, severity, f.message.c_str());
            else
                std::fprintf(out, "File %s; %s: %s\n", f.file.c_str(), severity, f.message.c_str());
            continue;
        }
        std::string line = "{\"severity\":" + quoted(severity) + ",\"message\":" + quoted(f.message) +
                           ",\"file\":" + quoted(f.file) + ",\"line\":" + std::to_string(f.line) + ",\"column\":0";
        // The shape of the compiler's JSON diagnostics, column unknown here.
        if (f.line > 0)
            line += ",\"declaration\":{\"kind\":" + quoted(f.subject) + ",\"name\":" + quoted(f.declaration) +
                    ",\"file\":" + quoted(f.file) + ",\"line\":" + std::to_string(f.line) + ",\"column\":0}";
        else
            line += ",\"declaration\":null";
        line += "}\n";
        std::fputs(line.c_str(), out);
    }
}
