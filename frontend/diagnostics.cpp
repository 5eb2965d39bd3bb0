#include "frontend/diagnostics.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

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

void ErrReporter::processError(mstring const& message, mstring const& file, int line, int pos) {
    m_errors++;
    std::fflush(stdout);
    printPrefix(file, line, pos);
    std::fprintf(stderr, "error: %s\n\n", message.c_str());
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
    printPrefix(file, line, pos);
    std::fprintf(stderr, "warning: %s\n\n", translateError(msg, "", "", "", "").c_str());
    std::fflush(stderr);
}

void ErrReporter::warning(mstring const& msg) { warning(msg, "", -1, 0); }

// Deliberately unlike the other warnings: no prefix and a single new line.
void ErrReporter::warning1(mstring const& msg, mstring const& p1) {
    m_warnings++;
    std::fflush(stdout);
    std::fprintf(stderr, "warning: %s\n", translateError(msg, p1, "", "", "").c_str());
    std::fflush(stderr);
}
