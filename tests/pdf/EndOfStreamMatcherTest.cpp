#include "pdf/EndOfStreamMatcher.h"

#include <gtest/gtest.h>

#include "tests/pdf/PdfSupport.h"

namespace Pdf::Parser
{
namespace
{

struct Row {
    const char* text;
    int end; ///< Of the white space behind the word; -1 for none.
};

constexpr std::initializer_list<Row> rows{
    {"endstream ", 9},
    {"endstream%", 9},
    {"xendstream\n", 10},
    {"endstream", -1},
    {"endstreamx", -1},
    // The second to the seventh letter: what breaks the match there is not tried again.
    {"eendstream ", -1},
    {"eeendstream ", 11},
    {"enendstream ", -1},
    {"eneendstream ", 12},
    {"endendstream ", -1},
    {"endsendstream ", -1},
    {"endstendstream ", -1},
    // Behind `endstre` an `n` is the second letter of a new word, whose others are tried again.
    {"endstrendendstream ", 18},
    {"endstrendstream ", 15},
    {"endstrendstrendstream ", 21},
    {"endstrenendstream ", 17},
    {"endstreendstream ", 16},
    {"endstreaendstream ", 17},
    {"endstreamendstream ", 18},
    {"endstreamxendstream ", 19},
};

TEST(EndOfStreamMatcher, GoesBackNowhere)
{
    for (const auto& [text, end] : rows) {
        EndOfStreamMatcher matcher;
        int found = -1;

        for (int index = 0; text[index] != '\0' && found < 0; ++index) {
            if (matcher.accept(static_cast<std::uint8_t>(text[index])))
                found = index;
        }

        EXPECT_EQ(found, end) << text;
    }
}

} // namespace
} // namespace Pdf::Parser
