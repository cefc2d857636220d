#include "pdf/PdfParserException.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace Pdf::Parser
{
namespace
{

TEST(PdfParserException, IsAMalformedJob)
{
    EXPECT_TRUE((std::is_base_of_v<JobParser::JobParserException, PdfParserException>));
    EXPECT_STREQ(PdfParserException("message").what(), "message");
}

} // namespace
} // namespace Pdf::Parser
