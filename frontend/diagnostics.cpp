#include "frontend/diagnostics.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "foundation/mvector.h"
#include "foundation/ut.h"

namespace {

// Each thread's own: a compile on one thread must never throw its panics
// into another's.
thread_local IErrReporter::PanicHook t_panicHook = {nullptr, nullptr};

}  // namespace

IErrReporter::PanicHook IErrReporter::setPanicHook(PanicHook hook) {
    PanicHook previous = t_panicHook;
    t_panicHook = hook;
    return previous;
}

void IErrReporter::panic(mstring const& msg, bool userError) {
    // Out of memory there is no safe way to go on, whoever asked.
    PanicHook const hook = t_panicHook;
    if (hook.handler != nullptr && std::strncmp(msg.c_str(), "insufficient memory", 19) != 0)
        hook.handler(hook.context, msg, userError);
    std::fflush(stdout);
    std::fprintf(stderr, "%s: %s\n", userError ? "error" : "internal error", msg.c_str());
    std::exit(-1);
}

mstring translateError(mstring const& key, mstring const& p1, mstring const& p2, mstring const& p3,
                       mstring const& p4) {
    // Empty parameters drop out, so later ones move down a number.
    mvector<mstring> params;
    for (mstring const* p : {&p1, &p2, &p3, &p4})
        if (!p->empty())
            params.push_back(*p);

    mstring message;
    for (char const* const* e = ZYL_MESSAGES; *e != nullptr; e++) {
        mvector<mstring> pieces = UT::splitName(mstring(*e), '=');
        if (pieces.size() != 2)
            continue;
        if (std::strcmp(UT::trim(pieces[0]).c_str(), key.c_str()) == 0) {
            message = UT::trim(pieces[1]);
            break;
        }
    }
    if (message.empty())
        message = key;
    if (params.size() == 0)
        return message;

    mstring out;
    char const* s = message.c_str();
    for (int i = 0; s[i] != '\0'; i++) {
        if (s[i] == '#' && s[i + 1] >= '0' && s[i + 1] <= '9') {
            unsigned n = static_cast<unsigned>(s[i + 1] - '0');
            if (n >= 1 && n <= params.size())
                out += params[static_cast<int>(n) - 1];
            i++;
        } else {
            out += s[i];
        }
    }
    return out;
}

void ErrReporter::printPrefix(mstring const& file, int line, int pos) const {
    if (!file.empty())
        std::fprintf(stderr, "File %s; ", file.c_str());
    else if (!m_defaultFile.empty())
        std::fprintf(stderr, "File %s; ", m_defaultFile.c_str());
    if (line >= 0) {
        std::fprintf(stderr, " line %d", line);
        if (pos >= 1)
            std::fprintf(stderr, ", position %d: ", pos + 1);
        else
            std::fprintf(stderr, ": ");
    }
}

namespace {

// Line `line` (from 1) of `path`, without its end; false when the file or
// the line cannot be read.
bool sourceLine(mstring const& path, int line, std::string& text) {
    std::ifstream in(path.c_str(), std::ios::binary);
    for (int n = 1; in && std::getline(in, text); n++)
        if (n == line) {
            if (!text.empty() && text.back() == '\r')
                text.pop_back();
            return true;
        }
    return false;
}

// The column (from 1) of `name` standing as a whole word in `line`, 0 when
// it is not there (a macro made it, or it is on a line of its own).
int wordColumn(std::string const& line, char const* name) {
    size_t const n = std::strlen(name);
    auto identChar = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
    for (size_t at = n == 0 ? std::string::npos : line.find(name); at != std::string::npos;
         at = line.find(name, at + 1)) {
        if ((at == 0 || !identChar(line[at - 1])) && (at + n == line.size() || !identChar(line[at + n])))
            return static_cast<int>(at) + 1;
    }
    return 0;
}

std::string jsonString(char const* s) {
    std::string out = "\"";
    for (; *s != '\0'; s++) {
        unsigned char const c = static_cast<unsigned char>(*s);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += *s;
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c < 0x20) {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\u%04x", c);
            out += buf;
        } else {
            out += *s;
        }
    }
    return out + "\"";
}

}  // namespace

void ErrReporter::printOther(char const* severity, mstring const& message, mstring const& reportedFile, int line,
                             int pos) const {
    // A declaration the pass names is the place; else the reader's place,
    // whose position the classic form prints as pos + 1.
    mstring file = reportedFile.empty() ? m_defaultFile : reportedFile;
    int column = line >= 0 && pos >= 1 ? pos + 1 : 0;
    DiagDeclaration const* decl = declaration();
    std::string source;
    bool const haveSource = decl != nullptr && decl->file != nullptr
                                ? sourceLine(decl->file, decl->line, source)
                                : line > 0 && sourceLine(file.empty() ? m_defaultFile : file, line, source);
    if (decl != nullptr && decl->file != nullptr) {
        file = decl->file;
        line = decl->line;
        column = haveSource ? wordColumn(source, decl->name) : 0;
    }
    // A message may end in a new line of its own; the forms add theirs.
    std::string text = message.c_str();
    while (!text.empty() && text.back() == '\n')
        text.pop_back();

    if (m_format == DiagnosticsFormat::Json) {
        std::string out = "{\"severity\":\"" + std::string(severity) + "\",\"message\":" + jsonString(text.c_str()) +
                          ",\"file\":" + jsonString(file.c_str()) + ",\"line\":" + std::to_string(line < 0 ? 0 : line) +
                          ",\"column\":" + std::to_string(column) + ",\"declaration\":";
        if (decl == nullptr) {
            out += "null";
        } else {
            out += "{\"kind\":" + jsonString(decl->kind) + ",\"name\":" + jsonString(decl->name) +
                   ",\"file\":" + jsonString(decl->file != nullptr ? decl->file : "") + ",\"line\":" + std::to_string(decl->line) +
                   ",\"column\":" + std::to_string(decl->file != nullptr ? column : 0) + "}";
        }
        std::fprintf(stderr, "%s}\n", out.c_str());
        return;
    }
    std::string head = file.empty() ? std::string("zylcomp") : std::string(file.c_str());
    if (line >= 0 && !file.empty()) {
        head += ":" + std::to_string(line);
        if (column > 0)
            head += ":" + std::to_string(column);
    }
    std::fprintf(stderr, "%s: %s: %s\n", head.c_str(), severity, text.c_str());
    if (!haveSource)
        return;
    std::fprintf(stderr, "%s\n", source.c_str());
    // The caret keeps the line's tabs, so that it stands under the column
    // wherever the tab stops are; a column past the line has none.
    if (column < 1 || static_cast<size_t>(column) > source.size() + 1)
        return;
    std::string caret;
    for (size_t i = 0; i + 1 < static_cast<size_t>(column); i++)
        caret += source[i] == '\t' ? '\t' : ' ';
    std::fprintf(stderr, "%s^\n", caret.c_str());
}

void ErrReporter::processError(mstring const& message, mstring const& file, int line, int pos) {
    m_errors++;
    std::fflush(stdout);
    if (m_format == DiagnosticsFormat::Classic) {
        printPrefix(file, line, pos);
        std::fprintf(stderr, "error: %s\n\n", message.c_str());
    } else {
        printOther("error", message, file, line, pos);
    }
    std::fflush(stderr);
    if (m_finalCallback)
        m_finalCallback->execute();
    UT::finishComp(false);
    std::exit(-1);
}

void ErrReporter::err(mstring const& msg) {
    processError(translateError(msg, "", "", "", ""), "", -1, 0);
}

void ErrReporter::err1(mstring const& msg, mstring const& p1, mstring const& file, int line, int pos) {
    processError(translateError(msg, p1, "", "", ""), file, line, pos);
}

void ErrReporter::err2(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& file, int line,
                       int pos) {
    processError(translateError(msg, p1, p2, "", ""), file, line, pos);
}

void ErrReporter::err3(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3,
                       mstring const& file, int line, int pos) {
    processError(translateError(msg, p1, p2, p3, ""), file, line, pos);
}

void ErrReporter::err4(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3,
                       mstring const& p4, mstring const& file, int line, int pos) {
    processError(translateError(msg, p1, p2, p3, p4), file, line, pos);
}

void ErrReporter::err(mstring const& msg, mstring const& file, int line, int pos) {
    processError(translateError(msg, "", "", "", ""), file, line, pos);
}

void ErrReporter::warning(mstring const& msg, mstring const& file, int line, int pos) {
    m_warnings++;
    std::fflush(stdout);
    if (m_format == DiagnosticsFormat::Classic) {
        printPrefix(file, line, pos);
        std::fprintf(stderr, "warning: %s\n\n", translateError(msg, "", "", "", "").c_str());
    } else {
        printOther("warning", translateError(msg, "", "", "", ""), file, line, pos);
    }
    std::fflush(stderr);
}

void ErrReporter::warning(mstring const& msg) { warning(msg, "", -1, 0); }

// Deliberately unlike the other warnings: no prefix and a single new line.
void ErrReporter::warning1(mstring const& msg, mstring const& p1) {
    m_warnings++;
    std::fflush(stdout);
    if (m_format == DiagnosticsFormat::Classic)
        std::fprintf(stderr, "warning: %s\n", translateError(msg, p1, "", "", "").c_str());
    else
        printOther("warning", translateError(msg, p1, "", "", ""), "", -1, 0);
    std::fflush(stderr);
}
