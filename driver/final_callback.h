// What a failed compile does before it ends: close the generator's streams,
// remove the temporaries of its outputs, and remove every file this
// database's compile can write, so that nothing half-written (or stale from
// an earlier compile) is left behind.
#pragma once

#include "foundation/mstring.h"
#include "foundation/mvector.h"
#include "frontend/diagnostics.h"

class GenOutput;
class Parser;

class FinalCallback : public IFinalCallback, public IOnDbNameFound {
public:
    explicit FinalCallback(mstring const& outputDir) : m_outputDir(outputDir) {}

    void execute() override;
    void dbnameFound(mstring const& name) override;
    // The part of execute() that leaves every existing output alone: the
    // streams closed, the temporaries and the dependency file removed.
    void discard();
    void setGenerator(GenOutput* gen) { m_gen = gen; }
    // A dependency file of an earlier compile must not outlive a failed
    // one, but the schema, a file it includes or an output is never
    // removed in its name. The parser tells the includes read so far.
    void setDepFile(mstring const& depFile, mstring const& schema) {
        m_depFile = depFile;
        m_schema = schema;
    }
    void setParser(Parser* parser) { m_parser = parser; }
    mvector<mstring> const& files() const { return m_files; }

private:
    bool depFileIsInputOrOutput();

    mvector<mstring> m_files;
    GenOutput* m_gen = nullptr;
    mstring m_outputDir;
    mstring m_depFile;
    mstring m_schema;
    Parser* m_parser = nullptr;
};
