#pragma once

#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "tests/support/OpenJob.h"
#include "tests/support/WholeJobs.h"

namespace JobParser
{

constexpr std::string_view jpegStart = "\xFF\xD8\xFF\xE0";

/// The JSON of a record in which all is null that does not stand here.
struct Record {
    bool pjl = false;
    const char* pdl = "0";
    const char* paper = "null";
    const char* counts = R"("monoCount":null,"grayCount":null,"colorCount":null)";
    const char* duplex = "null";
    const char* copies = "1";
    const char* forceMono = "null";
    const char* stapling = "null";
    const char* punching = "null";
    const char* ecoMode = "null";
    const char* pagesPerSheet = "null";
    const char* originalBrand = "null";
    const char* last = "";

    std::string json() const
    {
        return std::string(R"({"version":1,"pjl":)") + (pjl ? "true" : "false") + R"(,"pdl":)" + pdl +
               R"(,"paper":)" + paper + "," + counts + R"(,"duplex":)" + duplex + R"(,"copies":)" + copies +
               R"(,"forceMono":)" + forceMono + R"(,"stapling":)" + stapling + R"(,"punching":)" + punching +
               R"(,"orientation":null,"ecoMode":)" + ecoMode + R"(,"ecoMode":)" + ecoMode +
               R"(,"pagesPerSheet":)" + pagesPerSheet + R"(,"originalBrand":)" + originalBrand + last + "}";
    }
};

constexpr const char* oneColourPage = R"("monoCount":0,"grayCount":0,"colorCount":1)";

/// The JSON of the record of a job that parses.
inline std::string recordOf(std::string_view bytes,
                            const Parser::ParseOptions& options = WholeJobs::detectAll)
{
    OpenJob job(bytes);
    const auto result = WholeJobs::parse(job, options);
    EXPECT_TRUE(result->parsed);
    return result->job->jobInfo.toJson();
}

} // namespace JobParser
