#include "pdf/ValueTape.h"

#include <gtest/gtest.h>

#include "pdf/Lexer.h"
#include "tests/pdf/PdfSupport.h"

namespace Pdf::Parser
{
namespace
{

ValueTape tapeOf(const std::string& text)
{
    MemorySource source(text + " ");
    Lexer lexer(source);
    lexer.next();
    ValueTape tape;
    lexer.readValue(tape);
    return tape;
}

TEST(ValueTape, BuildsTheValueThatWasRead)
{
    const std::string text = "<</A[ 1 2 0 R/B(c)<0> true false null[]<<>>]/D<</E<</F 1>>>>>>";
    ValueTape tape = tapeOf(text);

    EXPECT_EQ(tape.build().serialize(), text);
    EXPECT_EQ(tape.build().serialize(), text);
}

TEST(ValueTape, FindsTheFirstValueOfAKey)
{
    const ValueTape tape = tapeOf("<</A[1[2]]/B<</C 3>>/C 4/C 5>>");

    EXPECT_TRUE(tape.isDictionary());
    ASSERT_NE(tape.find("C"), nullptr);
    EXPECT_EQ(tape.find("C")->real, 4);
    EXPECT_EQ(tape.find("D"), nullptr);
    EXPECT_EQ(tapeOf("<<>>").find("A"), nullptr);
}

TEST(ValueTape, ServesOneValueAfterTheOther)
{
    ValueTape tape = tapeOf("[(" + std::string(3000000, 'x') + ")]");
    EXPECT_EQ(tape.build().serialize().size(), 3000004U);

    tape.clear();
    tape.add({});

    EXPECT_EQ(tape.build().index(), 0U);
}

} // namespace
} // namespace Pdf::Parser
