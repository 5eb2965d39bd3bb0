#include "host/zylcomp/analyzer.h"

#include "frontend/parser.h"
#include "frontend/preprocessor.h"

Analyzer::Analyzer(Parser* parser, bool keepFieldOrder, bool wideOffsets, bool compactDefault,
                   bool sqlReservedWords, bool persistentDefault, bool transientUnused, bool atomicDefault,
                   int sizeofSize, int spareSize, mvector<mstring>* hiddenClasses, IOnDbNameFound* onDbName)
    : m_parser(parser),
      m_sqlReservedWords(sqlReservedWords),
      m_compactDefault(compactDefault),
      m_onDbName(onDbName),
      m_persistentDefault(persistentDefault),
      m_transientUnused(transientUnused),
      m_atomicDefault(atomicDefault),
      m_wideOffsets(wideOffsets),
      m_sizeofSize(sizeofSize),
      m_spareSize(spareSize),
      m_defaultAlign8(wideOffsets || keepFieldOrder),
      m_keepFieldOrder(keepFieldOrder),
      m_hiddenClasses(hiddenClasses) {
    if (wideOffsets)
        m_schema.m_schemaOptions |= Schema::OPT_WIDE_OFFSETS;
    if (keepFieldOrder)
        m_schema.m_schemaOptions |= Schema::OPT_KEEP_FIELD_ORDER;
}

void Analyzer::error(char const* key) { m_parser->pp().error(key, 0); }

void Analyzer::error1(char const* key, mstring const& p1) { m_parser->pp().error1(key, p1, 0); }

void Analyzer::error2(char const* key, mstring const& p1, mstring const& p2) {
    m_parser->pp().error2(key, p1, p2, 0);
}

void Analyzer::error3(char const* key, mstring const& p1, mstring const& p2, mstring const& p3) {
    m_parser->pp().error3(key, p1, p2, p3, 0);
}

void Analyzer::error4(char const* key, mstring const& p1, mstring const& p2, mstring const& p3,
                      mstring const& p4) {
    m_parser->pp().error4(key, p1, p2, p3, p4, 0);
}

bool Analyzer::match(char const* token) { return m_parser->match(token); }

bool Analyzer::failed() const { return m_parser->pp().reporter()->wasError(); }

void Analyzer::warning(char const* key) { m_parser->pp().warning(key, 0); }

DeclPlace Analyzer::here() {
    PreProcessor const& pp = m_parser->pp();
    DeclPlace at;
    at.m_line = pp.lineNo();
    mvector<mstring>& files = m_schema.v_placeFile;
    // Mostly the file of the place before; an include brings a few more.
    for (int i = static_cast<int>(files.size()) - 1; i >= 0; i--)
        if (files[i] == pp.fileName()) {
            at.m_file = i;
            return at;
        }
    files.push_back(pp.fileName());
    at.m_file = static_cast<int>(files.size()) - 1;
    return at;
}

void Analyzer::errorAt(DeclPlace const& at, char const* key, mstring const& p1, mstring const& p2,
                       mstring const& p3, mstring const& p4) {
    PreProcessor& pp = m_parser->pp();
    if (at.m_file < 0) {
        pp.error4(key, p1, p2, p3, p4, 0);
        return;
    }
    pp.reporter()->err4(key, p1, p2, p3, p4, m_schema.v_placeFile[at.m_file], at.m_line, 0);
}

IErrReporter* Analyzer::reporter() { return m_parser->pp().reporter(); }
