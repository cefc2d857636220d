#include "JobParser/paper/EMediaSize.h"

#include <gtest/gtest.h>
#include <map>
#include <set>

namespace JobParser
{
namespace
{

TEST(EMediaSize, HasTheNamesThatDriversWrite)
{
    const std::map<std::string, int> names{
        {"LETTER", 0},
        {"ELETTERPAPER", 0},
        {"LETTER 8.5X11", 0},
        {"LEGAL", 1},
        {"ELEGALPAPER", 1},
        {"LEGAL 8.5X14", 1},
        {"A4", 2},
        {"EA4PAPER", 2},
        {"LEDGER", 4},
        {"ELEDGERPAPER", 4},
        {"LEDGER (11 X 17)", 4},
        {"TABLOID 11X17", 4},
        {"A3", 5},
        {"EA3PAPER", 5},
        {"JISB4", 10},
        {"JIS B4", 10},
        {"B4", 10},
        {"EJB4PAPER", 10},
        {"B4 (JIS)", 10},
        {"JIS B5", 11},
        {"B5", 11},
        {"EJB5PAPER", 11},
        {"B5 (JIS)", 11},
        {"EB5ENVELOPE", 12},
        {"B5 (ISO)", 13},
        {"ISO B5", 13},
        {"A5", 16},
        {"EA5PAPER", 16},
        {"A6", 17},
        {"EA6PAPER", 17},
        {"B6", 18},
        {"JIS8K", 19},
        {"JIS16K", 20},
        {"STATEMENT 5.5X8.5", 22},
        {"STATEMENT", 22},
        {"LEGAL 8.5X13", 23},
        {"QUARTO", 24},
        {"FOLIO", 25},
        {"8.5X13", 25},
        {"FOOLSCAP", 26},
        {"B4 (ISO)", 31},
        {"ISO B4", 31},
        {"305X440", 33},
        {"RA4", 34},
        {"SRA4", 35},
        {"228X305", 36},
        {"RA3", 37},
        {"305X457", 38},
        {"SRA3", 39},
        {"9X12", 40},
        {"TABLOID EXTRA", 41},
        {"US GOV 8X10.5", 42},
        {"LETTER GOV 8.5X10", 43},
        {"LEGAL GOV 8.5X12", 44},
        {"12x17.3", 45},
        {"LETTER 8.25X10", 46},
        {"12x19.2", 47},
        {"305X488", 48},
        {"A4 TAB", 51},
        {"LETTER TAB", 52},
        {"12.6X19.2", 53},
    };
    std::map<std::string, int> present;

    for (const auto& [name, media] : mediaSizes())
        present.emplace(name, static_cast<int>(media));

    EXPECT_EQ(present, names);
    EXPECT_EQ(names.size(), 61U);
    EXPECT_FALSE(mediaSizes().contains("JISB5"));
}

TEST(EMediaSize, IsOrderedByItsNumberWithoutASign)
{
    const std::set<EMediaSize> media{EMediaSize{255}, EMediaSize{2}, EMediaSize{128}, EMediaSize{127}};

    std::vector<int> order;
    for (const EMediaSize each : media)
        order.push_back(static_cast<int>(each));

    EXPECT_EQ(order, (std::vector<int>{2, 127, 128, 255}));
    EXPECT_EQ(static_cast<int>(unknownMedia), 231);
    EXPECT_EQ(sizeof(EMediaSize), 1U);
}

} // namespace
} // namespace JobParser
