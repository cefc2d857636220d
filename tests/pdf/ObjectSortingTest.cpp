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

    for (const char* start :
         {"<</A 1 0 R", "<</A 1 0 R/Font 1", "<</Font 1/A 1 0 R", "<</A 1 0 R/Type/Page"}) {
        std::string manyKeys = start;
        for (int count = 0; count < 20; ++count, manyKeys += "/A 1") {
            texts.push_back(manyKeys + ">> ");
            texts.push_back(manyKeys + "/B 1>> ");
            texts.push_back(manyKeys + "/XObject 1>> ");
        }
    }

    for (const std::string& text : texts) {
        MemorySource source(text);
        Lexer lexer(source);
        lexer.next();
        ValueTape tape;
        lexer.readValue(tape);

        const Destination destination = destinationOf(tape.build());
        const ObjectFacts facts = factsOf(tape);

        EXPECT_TRUE(facts.mayBeKept || destination == Destination::Dropped) << text;
        if (!lexer.usualValue().empty()) {
            EXPECT_TRUE(!facts.isEmbeddable || destination == Destination::Embeddable) << text;
        }
    }
}

// Asking each of the keys whether it stood before would take hours.
TEST(ObjectSorting, DoesNotAskForeverWhetherAKeyStoodBefore)
{
    constexpr int count = 500000;
    std::string text = "<<";
    for (int key = 0; key < count; ++key)
        text += "/K" + std::to_string(key) + " 1 0 R";
    for (int repeat = 0; repeat < count; ++repeat)
        text += "/K499999 1";
    MemorySource source(text + ">> ");
    Lexer lexer(source);
    lexer.next();
    ValueTape tape;
    lexer.readValue(tape);

    const ObjectFacts facts = factsOf(tape);

    EXPECT_TRUE(facts.mayBeKept);
    EXPECT_FALSE(facts.isEmbeddable) << "nobody knows without building it";
    EXPECT_EQ(destinationOf(tape.build()), Destination::Embeddable);
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
