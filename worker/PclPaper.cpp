#include "worker/PclPaper.h"

#include <algorithm>
#include <array>
#include <span>

#include "Torv/Text.h"

namespace JobParser::Worker
{
namespace
{

constexpr PageSize letter{2159, 2794};
constexpr PageSize legal{2159, 3556};
constexpr PageSize executive{1842, 2667};
constexpr PageSize ledger{2794, 4318};
constexpr PageSize statement{1397, 2159};
constexpr PageSize folio{2159, 3302};
constexpr PageSize a3{2970, 4200};
constexpr PageSize a4{2100, 2970};
constexpr PageSize a5{1480, 2100};
constexpr PageSize a6{1050, 1480};
constexpr PageSize jisB4{2570, 3640};
constexpr PageSize jisB5{1820, 2570};
constexpr PageSize isoB5{1760, 2500};
constexpr PageSize monarch{984, 1905};
constexpr PageSize com10{1048, 2413};
constexpr PageSize dl{1100, 2200};
constexpr PageSize c5{1620, 2290};
constexpr PageSize postcard{1000, 1480};
constexpr PageSize doublePostcard{1480, 2000};
constexpr PageSize jis8k{2700, 3900};
constexpr PageSize jis16k{1950, 2700};

struct Sheet {
    int number;
    PageSize size;
};

constexpr std::array<Sheet, 25> pclSheets{{
    {1, executive}, {2, letter},      {3, legal},     {4, folio},
    {6, ledger},    {12, jisB5},      {13, a5},       {15, statement},
    {24, a6},       {25, a5},         {26, a4},       {27, a3},
    {45, jisB5},    {46, jisB4},      {71, postcard}, {72, doublePostcard},
    {80, monarch},  {81, com10},      {90, dl},       {91, c5},
    {100, isoB5},   {139, statement}, {17, jis16k},   {19, jis8k},
    {10, folio},
}};

constexpr std::array<Sheet, 32> pclXlSheets{{
    {0, letter},
    {1, legal},
    {2, a4},
    {3, executive},
    {4, ledger},
    {5, a3},
    {6, com10},
    {7, monarch},
    {8, c5},
    {9, dl},
    {10, jisB4},
    {11, jisB5},
    {12, isoB5},
    {13, isoB5},
    {14, postcard},
    {15, doublePostcard},
    {16, a5},
    {17, a6},
    {18, {1280, 1820}},
    {19, jis8k},
    {20, jis16k},
    {22, statement},
    {23, folio},
    {25, folio},
    {31, {2500, 3530}},
    {106, letter},
    {107, legal},
    {108, a4},
    {109, jisB5},
    {110, a3},
    {111, jisB4},
    {112, ledger},
}};

struct NamedSheet {
    std::string_view name;
    PageSize size;
};

constexpr std::array<NamedSheet, 30> namedSheets{{
    {"LETTER", letter},
    {"ELETTERPAPER", letter},
    {"LETTER 8.5X11", letter},
    {"LEGAL", legal},
    {"ELEGALPAPER", legal},
    {"LEGAL 8.5X14", legal},
    {"A4", a4},
    {"EA4PAPER", a4},
    {"LEDGER", ledger},
    {"ELEDGERPAPER", ledger},
    {"LEDGER (11 X 17)", ledger},
    {"TABLOID 11X17", ledger},
    {"A3", a3},
    {"EA3PAPER", a3},
    {"JISB4", jisB4},
    {"JIS B4", jisB4},
    {"B4", jisB4},
    {"EJB4PAPER", jisB4},
    {"JIS B5", jisB5},
    {"B5", jisB5},
    {"EJB5PAPER", jisB5},
    {"EB5ENVELOPE", isoB5},
    {"ISO B5", isoB5},
    {"A5", a5},
    {"EA5PAPER", a5},
    {"A6", a6},
    {"EA6PAPER", a6},
    {"STATEMENT", statement},
    {"FOLIO", folio},
    {"EXECUTIVE", executive},
}};

PageSize find(std::span<const Sheet> sheets, int number)
{
    const auto found = std::ranges::find(sheets, number, &Sheet::number);
    return found == sheets.end() ? PageSize() : found->size;
}

} // namespace

PageSize pclPaper(int code)
{
    return find(pclSheets, code);
}

PageSize pclXlPaper(int number)
{
    return find(pclXlSheets, number);
}

PageSize pclXlPaper(std::string_view name)
{
    for (const NamedSheet& sheet : namedSheets) {
        if (Torv::iequals(std::string(sheet.name), std::string(name)))
            return sheet.size;
    }
    return {};
}

PageSize turned(PageSize sheet, int orientation)
{
    return orientation % 2 == 0 ? sheet : PageSize{sheet.height, sheet.width};
}

} // namespace JobParser::Worker
