#include "worker/Request.h"

#include <gtest/gtest.h>

#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

TEST(Request, ReadsARequestToParse)
{
    const Request request =
        readRequest(R"({"command":"parse","pdl":6,"jobPath":"/spool/a b","grayscaleTolerance":7})");

    const auto& parsing = std::get<ParseRequest>(request);
    EXPECT_EQ(parsing.pdl, Pdl::Pdf);
    EXPECT_EQ(parsing.jobPath, "/spool/a b");
    EXPECT_EQ(parsing.grayscaleTolerance, 7);
}

TEST(Request, KeepsTheToleranceWithinAByte)
{
    const auto tolerance = [](const std::string& text) {
        return std::get<ParseRequest>(readRequest(R"({"command":"parse","pdl":6,"jobPath":"a")" + text + "}"))
            .grayscaleTolerance;
    };

    EXPECT_EQ(tolerance(R"(,"grayscaleTolerance":-1)"), 0);
    EXPECT_EQ(tolerance(R"(,"grayscaleTolerance":999)"), 255);
    EXPECT_EQ(tolerance(R"(,"grayscaleTolerance":null)"), 0);
    EXPECT_EQ(tolerance(""), 0);
}

TEST(Request, ReadsARequestToConvert)
{
    const Request request = readRequest(
        R"({"command":"convert","params":{"jobPath":"in","outPath":"out","conversionFormat":3,"pageCount":4,)"
        R"("forceMono":true,"imgBoundingBoxWidth":5,"imgBoundingBoxHeight":6,"imgDpi":7}})");

    const auto& conversion = std::get<ConvertRequest>(request);
    EXPECT_EQ(conversion.jobPath, "in");
    EXPECT_EQ(conversion.outPath, "out");
    EXPECT_EQ(conversion.format, ConversionFormat::Tiff);
    EXPECT_EQ(conversion.pageCount, 4U);
    EXPECT_TRUE(conversion.forceMono);
    EXPECT_EQ(conversion.boxWidth, 5U);
    EXPECT_EQ(conversion.boxHeight, 6U);
    EXPECT_EQ(conversion.dpi, 7U);
}

TEST(Request, ReadsARequestToEnd)
{
    EXPECT_TRUE(std::holds_alternative<ExitRequest>(readRequest(R"({"command":"exit"})")));
}

class MalformedRequest : public testing::TestWithParam<const char*>
{
};

TEST_P(MalformedRequest, IsRejected)
{
    try {
        readRequest(GetParam());
        FAIL() << "was taken";
    } catch (const WorkerException& error) {
        EXPECT_EQ(error.code(), static_cast<int>(ErrorCode::BadRequest));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, MalformedRequest,
    testing::Values("", "{", "[]", "{}", R"({"command":7})", R"({"command":"print"})",
                    R"({"command":"parse","pdl":6})", R"({"command":"parse","pdl":"6","jobPath":"a"})",
                    R"({"command":"convert"})",
                    R"({"command":"convert","params":{"jobPath":"a","outPath":"b","conversionFormat":6}})",
                    R"({"command":"convert","params":{"jobPath":"a","outPath":"b","conversionFormat":-1}})",
                    R"({"command":"convert","params":{"jobPath":"a","outPath":"b","conversionFormat":0,)"
                    R"("pageCount":-1}})"));

} // namespace
} // namespace JobParser::Worker
