#include "driver/final_callback.h"

#include <unistd.h>

#include "host/zylcomp/genoutput.h"

void FinalCallback::dbnameFound(mstring const& name) {
    if (name.empty())
        return;
    m_files = GenOutput::listAllOutputs(name, m_outputDir);
}

void FinalCallback::discard() {
    if (m_gen) {
        m_gen->close();
        m_gen->closeBindings();
        m_gen->outputFiles().discard();
    }
}

void FinalCallback::execute() {
    discard();
    for (unsigned i = 0; i < m_files.size(); i++)
        ::unlink(m_files[i].c_str());
    // The C#, Java and other files the list cannot know by name.
    if (m_gen)
        for (unsigned i = 0; i < m_gen->createdFiles().size(); i++)
            ::unlink(m_gen->createdFiles()[i].c_str());
}
