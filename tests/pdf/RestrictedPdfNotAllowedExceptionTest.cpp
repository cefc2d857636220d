#include "pdf/RestrictedPdfNotAllowedException.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace Pdf::Parser
{
namespace
{

TEST(RestrictedPdfNotAllowedException, TellsWhy)
{
    EXPECT_STREQ(RestrictedPdfNotAllowedException().what(),
                 "Restricted PDF is not allowed (Encrypt present)");
    EXPECT_TRUE((std::is_base_of_v<PdfParserException, RestrictedPdfNotAllowedException>));
}

} // namespace
} // namespace Pdf::Parser
