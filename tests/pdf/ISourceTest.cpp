#include "pdf/ISource.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace Pdf::Parser
{
namespace
{

TEST(ISource, EndsInAnExceptionWithoutAMessage)
{
    EXPECT_STREQ(ISource::EofException().what(), "");
    EXPECT_TRUE((std::is_base_of_v<PdfParserException, ISource::EofException>));
}

} // namespace
} // namespace Pdf::Parser
