#include "pdf/ObjectSorting.h"

#include <gtest/gtest.h>

#include "pdf/Lexer.h"
#include "pdf/ValueTape.h"
#include "tests/pdf/PdfSupport.h"

namespace Pdf::Parser
{
namespace
{

// Whatever is kept may be kept; of what is dropped nearly nothing is built.
TEST(ObjectSorting, NeverHoldsForDroppedWhatIsKept)
{
    const std::vector<std::string> values{"1 0 R", "1", "null", "/A", "(a)", ""};
    const std::vector<std::string> keys{"Type", "Font", "A", "XObject"};
    std::vector<std::string> texts{"5 ", "[] ", "1 0 R ", "/Page ", "<<>> ", "null ", "x "};
    for (const char* type : {"Page", "Pages", "Catalog", "XRef", "Font", "ObjStm", ""})
        texts.push_back(std::string("<</Type/") + type + "/A 1>> ");
    for (const auto& first : keys) {
        for (const auto& second : keys) {
            for (const auto& value : values) {
                if (value.empty())
                    continue;
                for (const auto& other : values)
                    texts.push_back("<</" + first + " " + value + "/" + second + " " + other + ">> ");
            }
        }
    }

    std::string manyKeys = "<</A 1 0 R";
    for (int count = 0; count < 20; ++count)
        manyKeys += "/A 1";
    texts.push_back(manyKeys + ">> ");

    for (const std::string& text : texts) {
        MemorySource source(text);
        Lexer lexer(source);
        lexer.next();
        ValueTape tape;
        lexer.readValue(tape);

        const bool isKept = destinationOf(tape.build()) != Destination::Dropped;

        EXPECT_TRUE(factsOf(tape).mayBeKept || !isKept) << text;
    }
}

TEST(ObjectSorting, KnowsMostOfWhatIsDroppedBeforeItIsBuilt)
{
    for (const char* text : {"<</Type/Font>> ", "<</Length 5>> ", "<</A 1 0 R/B 1>> ", "5 ", "null "}) {
        MemorySource source(text);
        Lexer lexer(source);
        lexer.next();
        ValueTape tape;
        lexer.readValue(tape);

        EXPECT_FALSE(factsOf(tape).mayBeKept) << text;
    }
}

} // namespace
} // namespace Pdf::Parser
