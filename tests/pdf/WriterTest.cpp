#include "pdf/Writer.h"

#include <gtest/gtest.h>

#include "JobParser/JobParserException.h"
#include "pdf/Object.h"

namespace Pdf
{
namespace
{

TEST(Writer, AppendsOneAfterTheOther)
{
    std::string text = "x";
    Writer writer(text);

    writer.write(Value(1.0));
    writer.write(Object{{2, 0}, Name{"A"}, {}});
    writer.writeName("B C");
    writer.writeReference({3, 4});

    EXPECT_EQ(text, "x 12 0 obj\n/A\nendobj\n/B#20C 3 4 R");
}

TEST(Writer, WritesAgainAfterAFailure)
{
    std::string text;
    Writer writer(text);

    EXPECT_THROW(writer.write(Value(Array({Value(FalseReference(1, 2))}))), JobParser::JobParserException);
    text.clear();
    writer.write(Value(Array({Value(1.0)})));

    EXPECT_EQ(text, "[ 1]");
}

} // namespace
} // namespace Pdf
