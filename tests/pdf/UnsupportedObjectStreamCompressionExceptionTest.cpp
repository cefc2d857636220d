#include "pdf/UnsupportedObjectStreamCompressionException.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace Pdf::Parser
{
namespace
{

TEST(UnsupportedObjectStreamCompressionException, TellsTheCompression)
{
    EXPECT_STREQ(UnsupportedObjectStreamCompressionException("LZWDecode").what(),
                 "Unsupported object stream compression | compression=LZWDecode ");
    EXPECT_TRUE((std::is_base_of_v<PdfParserException, UnsupportedObjectStreamCompressionException>));
}

} // namespace
} // namespace Pdf::Parser
