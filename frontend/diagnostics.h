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

// The declaration a report is about, where the compiler knows it: checks
// made once the whole text is read report, in the classic form, at the end
// of the text, while the other forms point here, at the declaration's line
// and at its name on that line. The texts belong to the schema model, which
// outlives every report; a null file is no place.
struct DiagDeclaration {
    char const* kind = "";  // "class", "struct", "enum", "field", "index", "event"
    char const* name = "";
    char const* file = nullptr;
    int line = 0;
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

    // The declaration the pass at work is about, or null; set and restored
    // by DeclFocus. The caller keeps it alive while it is set.
    void setDeclaration(DiagDeclaration const* d) { m_declaration = d; }
    DiagDeclaration const* declaration() const { return m_declaration; }

private:
    DiagDeclaration const* m_declaration = nullptr;
};

// Makes a declaration the reporter's for as long as it lives, then gives
// back the one before.
class DeclFocus {
public:
    DeclFocus(IErrReporter* reporter, DiagDeclaration const& d)
        : m_reporter(reporter), m_declaration(d), m_before(reporter->declaration()) {
        reporter->setDeclaration(&m_declaration);
    }
    ~DeclFocus() { m_reporter->setDeclaration(m_before); }
    DeclFocus(DeclFocus const&) = delete;
    DeclFocus& operator=(DeclFocus const&) = delete;

private:
    IErrReporter* m_reporter;
    DiagDeclaration m_declaration;
    DiagDeclaration const* m_before;
};

// How ErrReporter prints: the compiler's own form ("File s.zyl;  line 4:
// error: ..."), the form of gcc and clang ("s.zyl:4:3: error: ..." with the
// source line and a caret), or one JSON object per line for tools.
enum class DiagnosticsFormat { Classic, Gnu, Json };

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
    void setFormat(DiagnosticsFormat format) { m_format = format; }

private:
    [[noreturn]] void processError(mstring const& message, mstring const& file, int line, int pos);
    void printPrefix(mstring const& file, int line, int pos) const;
    // One report in the Gnu or Json form; `line` -1 when there is none.
    void printOther(char const* severity, mstring const& message, mstring const& file, int line, int pos) const;

    int m_errors = 0;
    int m_warnings = 0;
    IFinalCallback* m_finalCallback = nullptr;
    mstring m_defaultFile;
    DiagnosticsFormat m_format = DiagnosticsFormat::Classic;
};
