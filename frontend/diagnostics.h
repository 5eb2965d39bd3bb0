// Diagnostics: every report of the compiler passes through IErrReporter.
//
// Code reports a short key with up to four parameters; translateError turns
// the key into the user's text through the replaceable ZYL_MESSAGES table.
// The first error ends the compile: ErrReporter ends the process, and
// ErrReporterMem (the run-time entry's) throws CompilerError.
#pragma once

#include "foundation/mstring.h"

// Pairs "key=message", ended by a null pointer. Writable, so that an
// embedding program can replace messages.
extern "C" char const* ZYL_MESSAGES[];

enum CompilerErrorType { CompilerWarning = 0, CompilerErrorKind = 1 };

class IFinalCallback {
public:
    virtual ~IFinalCallback() = default;
    virtual void execute() = 0;
};

class IOnDbNameFound {
public:
    virtual void dbnameFound(mstring const& name) = 0;
    virtual ~IOnDbNameFound() = default;
};

class IErrReporter {
public:
    virtual ~IErrReporter() = default;
    virtual void setFinalCallback(IFinalCallback* cb) = 0;
    virtual void err(mstring const& msg) = 0;
    virtual void err1(mstring const& msg, mstring const& p1, mstring const& file, int line, int pos) = 0;
    virtual void err2(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& file, int line,
                      int pos) = 0;
    virtual void err3(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3,
                      mstring const& file, int line, int pos) = 0;
    virtual void err4(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3,
                      mstring const& p4, mstring const& file, int line, int pos) = 0;
    virtual void err(mstring const& msg, mstring const& file, int line, int pos) = 0;
    virtual void warning(mstring const& msg) = 0;
    virtual void warning1(mstring const& msg, mstring const& p1) = 0;
    virtual void warning(mstring const& msg, mstring const& file, int line, int pos) = 0;
    virtual bool wasError() const = 0;
    virtual void setDefaultFilename(mstring const& name) = 0;

    // Internal faults, exhausted memory and unopenable outputs: prints
    // "error: ..." or "internal error: ..." and ends the process, leaving
    // every output file where it is.
    [[noreturn]] static void panic(mstring const& msg, bool userError);

    // The run-time entry must not end its host process: while it runs it
    // installs, on its own thread, a handler that turns every panic but
    // exhausted memory into an exception. A handler must not return.
    // Gives back the one replaced, so that the caller can restore it.
    using PanicHandler = void (*)(void* context, mstring const& msg, bool userError);
    struct PanicHook {
        PanicHandler handler;
        void* context;
    };
    static PanicHook setPanicHook(PanicHook hook);
};

mstring translateError(mstring const& key, mstring const& p1, mstring const& p2, mstring const& p3,
                       mstring const& p4);

// The batch reporter: prints to standard error and ends the process at the
// first error.
class ErrReporter : public IErrReporter {
public:
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

    int errorCount() const { return m_errors; }
    int warningCount() const { return m_warnings; }

private:
    [[noreturn]] void processError(mstring const& message, mstring const& file, int line, int pos);
    void printPrefix(mstring const& file, int line, int pos) const;

    int m_errors = 0;
    int m_warnings = 0;
    IFinalCallback* m_finalCallback = nullptr;
    mstring m_defaultFile;
};
