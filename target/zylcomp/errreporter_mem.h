// The run-time entry's reporter: hands every report to the caller's
// function and turns an error into a CompilerError, so that the host
// process lives on.
#pragma once

#include "frontend/diagnostics.h"
#include "zylcomp.h"

class CompilerError {
public:
    CompilerError(CompilerErrorType type, mstring const& msg, mstring const& file, int line, int pos)
        : m_type(type), m_msg(msg), m_file(file), m_line(line), m_pos(pos) {}

    CompilerErrorType m_type;
    mstring m_msg;
    mstring m_file;
    int m_line;
    int m_pos;
};

class ErrReporterMem : public IErrReporter {
public:
    ErrReporterMem(zyl_dict_error_callback_t report, void* userWord) : m_report(report), m_userWord(userWord) {}

    void setFinalCallback(IFinalCallback* cb) override { m_finalCallback = cb; }
    void err(mstring const& msg) override;
    void err1(mstring const& msg, mstring const& p1, mstring const& file, int line, int pos) override;
    void err2(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& file, int line,
              int pos) override;
    void err3(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3, mstring const& file,
              int line, int pos) override;
    void err4(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3, mstring const& p4,
              mstring const& file, int line, int pos) override;
    void err(mstring const& msg, mstring const& file, int line, int pos) override;
    void warning(mstring const& msg) override;
    void warning1(mstring const& msg, mstring const& p1) override;
    void warning(mstring const& msg, mstring const& file, int line, int pos) override;
    bool wasError() const override { return m_errors > 0; }
    void setDefaultFilename(mstring const& name) override { m_defaultFile = name; }

    // An internal fault met during the call (a panic, or an exception of
    // the model): handed on like an error without a place, its text taken
    // as it is, and thrown as a CompilerError like any error.
    void fault(mstring const& msg);

private:
    void ProcessError(CompilerErrorType type, mstring const& message, mstring const& file, int line, int pos);

    zyl_dict_error_callback_t m_report;
    void* m_userWord;
    int m_errors = 0;
    IFinalCallback* m_finalCallback = nullptr;
    mstring m_defaultFile;
};
