// The schema preprocessor: turns schema files into clean, expanded lines.
//
// It removes comments, obeys #ifdef/#ifndef/#else/#endif/#define/#undef/
// #include, expands macros, and owns the position (file, line) that every
// diagnostic of the grammar reports.
#pragma once

#include <cstdio>

#include "foundation/mstring.h"
#include "foundation/mvector.h"
#include "foundation/sets.h"
#include "foundation/ut.h"
#include "frontend/diagnostics.h"

class PreProcessor {
public:
    struct Cond {
        mstring m_word;
        bool m_active = false;
    };
    // Declared for the record and never filled.
    struct InpInfo {
        mstring m_name;
        int m_line = 0;
    };
    class Macros : public IComparable {
    public:
        Macros() = default;
        Macros(mstring const& name, mstring const& value) : m_name(name), m_value(value) {}
        bool less(IComparable const* other) const override {
            return m_name < static_cast<Macros const*>(other)->m_name;
        }
        mstring m_name;
        mstring m_value;
    };

    PreProcessor(FILE* f, mstring const& fileName, IErrReporter* reporter, mstring const& includeDir,
                 mstring const& tempDir);
    ~PreProcessor();
    PreProcessor(PreProcessor const&) = delete;
    PreProcessor& operator=(PreProcessor const&) = delete;

    // The next line. Empty with isEnd() set means the end of input; empty
    // alone is a blank or skipped line.
    mstring readLine();
    mstring processLine(char const* text);
    mstring expand(mstring const& name, int depth);
    Macros* findDef(mstring const& name);
    void removeDef(mstring const& name);
    void setLast();

    void error(mstring const& msg, int pos);
    void error1(mstring const& msg, mstring const& p1, int pos);
    void error2(mstring const& msg, mstring const& p1, mstring const& p2, int pos);
    void error3(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3, int pos);
    void error4(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3, mstring const& p4,
                int pos);
    void warning(mstring const& msg, int pos);

    bool isEnd() const { return m_end; }
    mstring const& fileName() const { return m_fileName; }
    int lineNo() const { return m_line; }
    IErrReporter* reporter() const { return m_reporter; }
    // Every #include file opened so far, as the path it was opened by, in
    // the order of opening; a file included twice stands here twice.
    mvector<mstring> const& includedFiles() const { return v_included; }

private:
    // One directive line; every directive gives an empty line.
    void directive(mstring const& word, mstring const& arg);
    void include(mstring const& arg);

    IErrReporter* m_reporter;
    ISet* m_macros;
    mvector<Cond> v_conds;
    mvector<InpInfo> v_inpInfo;
    FILE* m_file;
    mstring m_fileName;
    int m_line = 0;
    mvector<FILE*> v_files;
    mvector<mstring> v_fileNames;
    mvector<int> v_lines;
    mstring m_includeDir;
    bool m_end = false;
    bool m_inComment = false;
    mstring m_tempDir;
    Cond* m_last = nullptr;
    bool active = true;
    mvector<mstring> v_included;
    // The line buffer, made once rather than for every line.
    UT::Buf m_lineBuf;
};
