#include "support/parsed.h"

ParsedFile::ParsedFile(std::string const& dir, std::string const& name, std::string const& tempDir)
    : file(std::fopen((dir + "/" + name).c_str(), "r")),
      reporter(nullptr, nullptr),
      parser(new Parser(file, name.c_str(), &reporter, dir.c_str(), tempDir.c_str())) {}

ParsedFile::~ParsedFile() {
    parser.reset();
    if (file)
        std::fclose(file);
}

std::string ParsedFile::tokens() {
    std::string s;
    for (mstring t = parser->get(); !t.empty(); t = parser->get())
        s += (s.empty() ? "" : " ") + std::string(t.c_str());
    return s;
}

std::unique_ptr<Analyzer> newAnalyzer(Parser* parser, mvector<mstring>* hidden, bool keepFieldOrder,
                                      bool wideOffsets, bool sqlReservedWords) {
    std::unique_ptr<Analyzer> a(new Analyzer(parser, keepFieldOrder, wideOffsets, false, sqlReservedWords, false,
                                             false, true, 8, 0, hidden, nullptr));
    a->initBaseTypes();
    return a;
}

ParsedText::ParsedText(std::string const& text, std::string const& name) {
    dir.write(name, text);
    in.reset(new ParsedFile(dir.path(), name));
}

AnalyzedText::AnalyzedText(std::string const& text, bool keepFieldOrder, bool grammarOnly, char const* db)
    : ParsedText("declare database " + std::string(db) + ";\n" + text) {
    analyzer = newAnalyzer(in->parser.get(), &hidden, keepFieldOrder);
    try {
        analyzer->analyze();
        if (!grammarOnly)
            analyzer->doChecks();
    } catch (CompilerError const& e) {
        error = e.m_msg.c_str();
    }
}
