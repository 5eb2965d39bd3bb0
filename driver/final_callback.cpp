#include "driver/final_callback.h"

#include <unistd.h>

#include "foundation/outfile.h"
#include "frontend/parser.h"
#include "host/zylcomp/genoutput.h"

void FinalCallback::dbnameFound(mstring const& name) {
    if (name.empty())
        return;
    m_files = GenOutput::listAllOutputs(name, m_outputDir);
}

bool FinalCallback::depFileIsInputOrOutput() {
    if (OutFile::sameFile(m_depFile, m_schema))
        return true;
    if (m_parser) {
        mvector<mstring> const& included = m_parser->pp().includedFiles();
        for (unsigned i = 0; i < included.size(); i++)
            if (OutFile::sameFile(m_depFile, included[i]))
                return true;
    }
    for (unsigned i = 0; i < m_files.size(); i++)
        if (OutFile::sameFile(m_depFile, m_files[i]))
            return true;
    if (m_gen)
        for (unsigned i = 0; i < m_gen->createdFiles().size(); i++)
            if (OutFile::sameFile(m_depFile, m_gen->createdFiles()[i]))
                return true;
    return false;
}

void FinalCallback::discard() {
    if (m_gen) {
        m_gen->close();
        m_gen->closeBindings();
        m_gen->outputFiles().discard();
    }
    if (!m_depFile.empty() && !depFileIsInputOrOutput())
        ::unlink(m_depFile.c_str());
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
