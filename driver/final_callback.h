// What a failed compile does before it ends: close the generator's streams,
// remove the temporaries of its outputs, and remove every file this
// database's compile can write, so that nothing half-written (or stale from
// an earlier compile) is left behind.
#pragma once

#include "foundation/mstring.h"
#include "foundation/mvector.h"
#include "frontend/diagnostics.h"

class GenOutput;

class FinalCallback : public IFinalCallback, public IOnDbNameFound {
public:
    explicit FinalCallback(mstring const& outputDir) : m_outputDir(outputDir) {}

    void execute() override;
    void dbnameFound(mstring const& name) override;
    // The part of execute() that leaves every existing output alone: the
    // streams closed and the temporaries removed.
    void discard();
    void setGenerator(GenOutput* gen) { m_gen = gen; }
    mvector<mstring> const& files() const { return m_files; }

private:
    mvector<mstring> m_files;
    GenOutput* m_gen = nullptr;
    mstring m_outputDir;
};
