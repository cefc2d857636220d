#pragma once

#include <gtest/gtest.h>
#include <string>

#include "JobParser/paper/PaperSizeManager.h"
#include "tests/support/OpenJob.h"

#include "Torv/Data/IniFile.h"

namespace JobParser
{

/// A configuration file that lasts as long as the test.
class ConfigFile
{
public:
    explicit ConfigFile(const std::string& text) : m_file(text) {}

    void openWith(Torv::Data::IniFile& ini) const { ASSERT_TRUE(ini.open(m_file.path())); }

private:
    TemporaryFile m_file;
};

inline void configure(PaperSizeManager& papers, const std::string& text)
{
    const ConfigFile file(text);
    Torv::Data::IniFile ini;
    file.openWith(ini);
    papers.loadConfig(ini);
}

inline void setTolerance(PaperSizeManager& papers, const std::string& millimetres)
{
    configure(papers, "[JobParser]\npaperSizeTolerance = " + millimetres + "\n");
}

struct NameRow {
    const char* name;
    Paper paper;
};

/// What a new manager knows.
inline constexpr NameRow defaultNames[] = {
    {"A5", PaperA5},
    {"A4", PaperA4},
    {"A3", PaperA3},
    {"B4", PaperB4},
    {"B5", PaperB5},
    {"FOLIO", PaperFolio},
    {"LEDGER", PaperLedger},
    {"LEGAL", PaperLegal},
    {"LETTER", PaperLetter},
    {"STATEMENT", PaperStatement},
    {"PAPEROTHER", PaperOther},
    {"JISB4", PaperB4},
    {"JISB5", PaperB5},
    {"B5 (JIS)", PaperB5},
    {"B5 (ISO)", PaperB5},
    {"EA4PAPER", PaperA4},
    {"ELETTERPAPER", PaperLetter},
    {"LEDGER (11 X 17)", PaperLedger},
    {"EA3PAPER", PaperA3},
    {"EJDOUBLEPOSTCARD", PaperA5},
    {"EJB4PAPER", PaperB4},
    {"EJB5PAPER", PaperB5},
    {"ELEGALPAPER", PaperLegal},
    {"JIS8K", PaperStatement},
    {"EA5PAPER", PaperA5},
    {"ELEDGERPAPER", PaperLedger},
    {"EB5ENVELOPE", PaperB5},
    {"UNKNOWN PAPER SIZE (2000)", PaperA5},
    {"UNKNOWN PAPER SIZE (46)", PaperB4},
    {"UNKNOWN PAPER SIZE (15)", PaperStatement},
};

} // namespace JobParser
