#include "pdf/StreamDecompressionException.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace Pdf::Parser
{
namespace
{

TEST(StreamDecompressionException, TellsCodeAndMessage)
{
    EXPECT_STREQ(StreamDecompressionException(-3, "invalid block type").what(),
                 "Decompressing stream error | code=-3 | message=invalid block type");
    EXPECT_TRUE((std::is_base_of_v<PdfParserException, StreamDecompressionException>));
}

} // namespace
} // namespace Pdf::Parser
