#include "pdf/TrailerNotFoundException.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace Pdf::Parser
{
namespace
{

TEST(TrailerNotFoundException, TellsTheOffset)
{
    EXPECT_STREQ(TrailerNotFoundException(1234).what(), "Document trailer not found | startxref=1234");
    EXPECT_TRUE((std::is_base_of_v<PdfParserException, TrailerNotFoundException>));
}

} // namespace
} // namespace Pdf::Parser
