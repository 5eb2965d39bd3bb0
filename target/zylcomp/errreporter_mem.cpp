#include "target/zylcomp/errreporter_mem.h"

#include "target/zylcomp/ledger.h"

void ErrReporterMem::ProcessError(CompilerErrorType type, mstring const& message, mstring const& file, int line,
                                  int pos) {
    if (m_report) {
        // What the report function allocates is its own, refused call or not.
        LedgerPause pause;
        m_report(type, message.c_str(), file.c_str(), line, pos, m_userWord);
    }
    // Warnings run the final callback too.
    if (m_finalCallback)
        m_finalCallback->execute();
    if (type != CompilerErrorKind)
        return;
    m_errors++;
    throw CompilerError(CompilerErrorKind, message, file, line, pos);
}

void ErrReporterMem::err(mstring const& msg) {
    ProcessError(CompilerErrorKind, translateError(msg, "", "", "", ""), m_defaultFile, 0, 0);
}

void ErrReporterMem::err1(mstring const& msg, mstring const& p1, mstring const& file, int line, int pos) {
    ProcessError(CompilerErrorKind, translateError(msg, p1, "", "", ""), file, line, pos);
}

void ErrReporterMem::err2(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& file,
                          int line, int pos) {
    ProcessError(CompilerErrorKind, translateError(msg, p1, p2, "", ""), file, line, pos);
}

void ErrReporterMem::err3(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3,
                          mstring const& file, int line, int pos) {
    ProcessError(CompilerErrorKind, translateError(msg, p1, p2, p3, ""), file, line, pos);
}

void ErrReporterMem::err4(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3,
                          mstring const& p4, mstring const& file, int line, int pos) {
    ProcessError(CompilerErrorKind, translateError(msg, p1, p2, p3, p4), file, line, pos);
}

void ErrReporterMem::err(mstring const& msg, mstring const& file, int line, int pos) {
    ProcessError(CompilerErrorKind, translateError(msg, "", "", "", ""), file, line, pos);
}

void ErrReporterMem::warning(mstring const& msg) {
    ProcessError(CompilerWarning, translateError(msg, "", "", "", ""), m_defaultFile, 0, 0);
}

void ErrReporterMem::warning1(mstring const& msg, mstring const& p1) {
    ProcessError(CompilerWarning, translateError(msg, p1, "", "", ""), m_defaultFile, 0, 0);
}

void ErrReporterMem::warning(mstring const& msg, mstring const& file, int line, int pos) {
    ProcessError(CompilerWarning, translateError(msg, "", "", "", ""), file, line, pos);
}

void ErrReporterMem::fault(mstring const& msg) { ProcessError(CompilerErrorKind, msg, m_defaultFile, 0, 0); }
