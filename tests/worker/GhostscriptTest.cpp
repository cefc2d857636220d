#include "worker/Ghostscript.h"

#include <gtest/gtest.h>

#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/FileText.h"
#include "tests/worker/InChild.h"
#include "tests/worker/PdfBytes.h"
#include "tests/worker/WalkerSupport.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

std::string analyze(const std::string& job, int tolerance = 0)
{
    return inChild([&] {
        OpenBody open(job);
        Ghostscript ghostscript;
        return ghostscript.analyze(*open.reader, tolerance).toJson();
    });
}

std::string counts(int blank, int mono, int gray, int color)
{
    return "{\"errorCode\":0,\"errorMessage\":\"\",\"blankCount\":" + std::to_string(blank) +
           ",\"monoCount\":" + std::to_string(mono) + ",\"grayCount\":" + std::to_string(gray) +
           ",\"colorCount\":" + std::to_string(color) + ",\"copies\":1,\"pageWidth\":0,\"pageHeight\":0}";
}

TEST(Ghostscript, LooksAtThePixelsOfPages)
{
    EXPECT_EQ(analyze("%!PS\nshowpage\n"), counts(1, 0, 0, 0));
    EXPECT_EQ(analyze("%!PS\n0 0 9 9 rectfill showpage\n"), counts(0, 1, 0, 0));
    EXPECT_EQ(analyze("%!PS\n.5 setgray 0 0 9 9 rectfill showpage\n"), counts(0, 0, 1, 0));
    EXPECT_EQ(analyze("%!PS\n0 0 0 1 setcmykcolor 0 0 9 9 rectfill showpage\n"), counts(0, 1, 0, 0));
    EXPECT_EQ(analyze("%!PS\n1 0 0 setrgbcolor 0 0 9 9 rectfill showpage\n"), counts(0, 0, 0, 1));
    // What is covered does not show.
    EXPECT_EQ(analyze("%!PS\n1 0 0 setrgbcolor 0 0 9 9 rectfill 0 setgray 0 0 9 9 rectfill showpage\n"),
              counts(0, 1, 0, 0));
}

TEST(Ghostscript, TakesWhatDiffersWithinTheToleranceForGray)
{
    const std::string job = "%!PS\n.4 .4 .42 setrgbcolor 0 0 9 9 rectfill showpage\n";

    EXPECT_EQ(analyze(job, 4), counts(0, 0, 0, 1));
    EXPECT_EQ(analyze(job, 5), counts(0, 0, 1, 0));
}

TEST(Ghostscript, TellsTheSizeThatTheJobChoosesOrItsHeaderSays)
{
    const std::string chosen = analyze("%!PS\n<</PageSize [842 595]>> setpagedevice showpage\n");
    const std::string said =
        analyze("%!PS-Adobe-3.0\n%%DocumentMedia: Plain 595 842 75 white ()\nshowpage\n");

    EXPECT_NE(chosen.find("\"pageWidth\":2970,\"pageHeight\":2099"), std::string::npos) << chosen;
    EXPECT_NE(said.find("\"pageWidth\":2099,\"pageHeight\":2970"), std::string::npos) << said;
}

TEST(Ghostscript, TellsWhyAJobFailed)
{
    try {
        analyze("%!PS\nnobody showpage\n");
        ADD_FAILURE();
    } catch (const WorkerException& error) {
        EXPECT_EQ(error.code(), static_cast<int>(ErrorCode::BadDocument));
        EXPECT_NE(std::string(error.what()).find("undefined in nobody"), std::string::npos) << error.what();
    }
}

TEST(Ghostscript, WritesOtherFormats)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string path = directory.path("out.pdf");

    inChild([&] {
        OpenBody open("%!PS\nshowpage\n");
        Ghostscript().convert(*open.reader, {"-sDEVICE=pdfwrite"}, path);
        return std::string();
    });

    EXPECT_TRUE(fileText(path).starts_with("%PDF-"));
}

TEST(Ghostscript, WritesToAPathWithAPerCentSign)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string in = directory.file("in.pdf", pdfOf({"0 0 9 9 re f"}));
    const std::string out = directory.path("a%d.ps");

    inChild([&] {
        Ghostscript().convertFile(in, {"-sDEVICE=ps2write"}, out);
        return std::string();
    });

    EXPECT_TRUE(fileText(out).starts_with("%!PS"));
}

TEST(Ghostscript, FailsToConvertWhatIsNoDocument)
{
    const Torv::Test::TemporaryDirectory directory;

    EXPECT_THROW(inChild([&] {
                     Ghostscript().convertFile(directory.path("none"), {"-sDEVICE=pdfwrite"},
                                               directory.path("out.pdf"));
                     return std::string();
                 }),
                 WorkerException);
}

} // namespace
} // namespace JobParser::Worker
