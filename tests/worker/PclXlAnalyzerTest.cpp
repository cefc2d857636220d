#include "worker/PclXlAnalyzer.h"

#include <gtest/gtest.h>

#include "tests/worker/PclXlBytes.h"
#include "tests/worker/WalkerSupport.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

using namespace std::string_view_literals;

JobFacts analyze(const std::string& bytes, int tolerance = 0)
{
    OpenBody open(bytes);
    return PclXlAnalyzer(*open.reader, tolerance).analyze();
}

Pages pages(const PclXlBytes& job, int tolerance = 0)
{
    return pagesOf(analyze(job.str(), tolerance));
}

/// A page with one picture; depth 0 is a bit, 2 a byte a component.
PclXlBytes picture(int space, int depth, int mapping, int width, int rows, int compression,
                   std::string_view data)
{
    return PclXlBytes()
        .beginPage()
        .byte(3, space)
        .op(0x6A)
        .byte(98, depth)
        .byte(100, mapping)
        .uint16(108, width)
        .uint16(107, rows)
        .op(0xB0)
        .uint16(109, 0)
        .uint16(99, rows)
        .byte(101, compression)
        .op(0xB1)
        .data(data)
        .op(0xB2)
        .endPage();
}

TEST(PclXlAnalyzer, CountsPagesByTheirEnds)
{
    const PclXlBytes job = PclXlBytes()
                               .beginPage()
                               .rectangle()
                               .endPage()
                               .beginPage()
                               .endPage()
                               .beginPage()
                               .rectangle()
                               .endPage();

    EXPECT_EQ(pages(job), (Pages{1, 2, 0, 0}));
}

TEST(PclXlAnalyzer, CountsAPageThatIsCutOff)
{
    EXPECT_EQ(pages(PclXlBytes().beginPage().rectangle()), (Pages{0, 1, 0, 0}));
}

TEST(PclXlAnalyzer, FindsBrushesThatAreUsed)
{
    EXPECT_EQ(pages(PclXlBytes().beginPage().noPen().grayBrush(128).rectangle().endPage()),
              (Pages{0, 0, 1, 0}));
    EXPECT_EQ(pages(PclXlBytes().beginPage().noPen().grayBrush(255).rectangle().endPage()),
              (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(PclXlBytes().beginPage().noPen().rgbBrush("\xFF\x00\x00"sv).rectangle().endPage()),
              (Pages{0, 0, 0, 1}));
    EXPECT_EQ(pages(PclXlBytes().beginPage().noPen().rgbBrush("\xFF\x00\x00"sv).endPage()),
              (Pages{1, 0, 0, 0}));
}

TEST(PclXlAnalyzer, TakesWhatDiffersWithinTheToleranceForGray)
{
    const PclXlBytes job = PclXlBytes().beginPage().noPen().rgbBrush("\x4C\x4D\x4C"sv).rectangle().endPage();

    EXPECT_EQ(pages(job, 0), (Pages{0, 0, 0, 1}));
    EXPECT_EQ(pages(job, 1), (Pages{0, 0, 1, 0}));
}

TEST(PclXlAnalyzer, BringsBackTheBrushOfASavedState)
{
    const PclXlBytes job =
        PclXlBytes().beginPage().noPen().op(0x61).rgbBrush("\xFF\x00\x00"sv).op(0x60).rectangle().endPage();

    EXPECT_EQ(pages(job), (Pages{0, 1, 0, 0}));
}

TEST(PclXlAnalyzer, PaintsNoPathThatIsEmptyAndNoTextOfBlanks)
{
    EXPECT_EQ(pages(PclXlBytes().beginPage().op(0x85).op(0x86).endPage()), (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(PclXlBytes().beginPage().op(0x85).op(0x9B).op(0x86).endPage()), (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(PclXlBytes().beginPage().bytes(171, "  ").op(0xA8).endPage()), (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(PclXlBytes().beginPage().bytes(171, " a").op(0xA8).endPage()), (Pages{0, 1, 0, 0}));
}

TEST(PclXlAnalyzer, TellsSizeOrientationAndCopies)
{
    const PclXlBytes job = PclXlBytes().beginPage(1).rectangle().uint16(49, 4).endPage();
    const JobFacts facts = analyze(job.str());

    EXPECT_EQ(facts.size().width, 2970);
    EXPECT_EQ(facts.size().height, 2100);
    EXPECT_EQ(facts.copies(), 4);
}

TEST(PclXlAnalyzer, TurnsThePageForTheLandscapeOrientationsOnly)
{
    const auto widthOf = [](int orientation) {
        return analyze(PclXlBytes().beginPage(orientation).endPage().str()).size().width;
    };

    EXPECT_EQ(widthOf(0), 2100);
    EXPECT_EQ(widthOf(1), 2970);
    EXPECT_EQ(widthOf(2), 2100);
    EXPECT_EQ(widthOf(3), 2970);
    // The printer's own, and what is no orientation.
    EXPECT_EQ(widthOf(4), 2100);
    EXPECT_EQ(widthOf(7), 2100);
}

TEST(PclXlAnalyzer, ReadsSizesByNameAndByMeasure)
{
    const JobFacts named = analyze(PclXlBytes().bytes(37, "letter").op(0x43).endPage().str());
    const JobFacts measured = analyze(PclXlBytes().byte(48, 1).xy(47, 100, 200).op(0x43).endPage().str());
    const JobFacts inches = analyze(PclXlBytes().byte(48, 0).xy(47, 5, 7).op(0x43).endPage().str());

    EXPECT_EQ(named.size().width, 2159);
    EXPECT_EQ(named.size().height, 2794);
    EXPECT_EQ(measured.size().width, 1000);
    EXPECT_EQ(measured.size().height, 2000);
    EXPECT_EQ(inches.size().width, 1270);
    EXPECT_EQ(inches.size().height, 1778);
}

TEST(PclXlAnalyzer, ReadsPlainPictures)
{
    const auto red = "\xFF\x00\x00\x00"sv;
    const auto white = "\xFF\xFF\xFF\x00"sv;

    EXPECT_EQ(pages(picture(2, 2, 0, 1, 1, 0, red)), (Pages{0, 0, 0, 1}));
    EXPECT_EQ(pages(picture(2, 2, 0, 1, 1, 0, white)), (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(picture(1, 2, 0, 3, 1, 0, "\xFF\x00\xFF\x80"sv)), (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(picture(1, 2, 0, 4, 1, 0, "\xFF\x00\xFF\x80"sv)), (Pages{0, 0, 1, 0}));
    EXPECT_EQ(pages(picture(1, 0, 0, 3, 1, 0, "\xE0\xFF\xFF\xFF"sv)), (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(picture(1, 0, 0, 4, 1, 0, "\xE0\xFF\xFF\xFF"sv)), (Pages{0, 1, 0, 0}));
}

TEST(PclXlAnalyzer, ReadsRunLengthPictures)
{
    // Two rows of four bytes in one run, of which three make up a pixel.
    EXPECT_EQ(pages(picture(2, 2, 0, 1, 2, 1, "\xF9\xFF"sv)), (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(picture(2, 2, 0, 1, 2, 1, "\xFD\xFF\x03\xFF\x00\x00\x00"sv)), (Pages{0, 0, 0, 1}));
}

TEST(PclXlAnalyzer, ReadsDeltaRowPictures)
{
    // The first row is made of three white bytes, the second one changes one of them.
    const auto same = "\x04\x00\x40\xFF\xFF\xFF\x00\x00"sv;
    const auto changed = "\x04\x00\x40\xFF\xFF\xFF\x02\x00\x01\x00"sv;

    EXPECT_EQ(pages(picture(2, 2, 0, 1, 2, 3, same)), (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(picture(2, 2, 0, 1, 2, 3, changed)), (Pages{0, 0, 0, 1}));
}

TEST(PclXlAnalyzer, ReadsPalettes)
{
    const auto job = [](std::string_view pixels) {
        return PclXlBytes()
            .beginPage()
            .byte(3, 2)
            .bytes(6, "\xFF\xFF\xFF\xFF\x00\x00"sv)
            .op(0x6A)
            .byte(98, 0)
            .byte(100, 1)
            .uint16(108, 2)
            .uint16(107, 1)
            .op(0xB0)
            .uint16(99, 1)
            .byte(101, 0)
            .op(0xB1)
            .data(pixels)
            .op(0xB2)
            .endPage();
    };

    EXPECT_EQ(pages(job("\x00\x00\x00\x00"sv)), (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(job("\x40\x00\x00\x00"sv)), (Pages{0, 0, 0, 1}));
    EXPECT_EQ(pages(job("\x20\x00\x00\x00"sv)), (Pages{1, 0, 0, 0}));
}

TEST(PclXlAnalyzer, TakesThePatternOfABrush)
{
    const auto job = [](std::string_view pixels) {
        return PclXlBytes()
            .beginPage()
            .byte(3, 2)
            .op(0x6A)
            .byte(98, 2)
            .byte(100, 0)
            .uint16(108, 1)
            .uint16(107, 1)
            .uint16(105, 9)
            .op(0xB3)
            .uint16(99, 1)
            .byte(101, 0)
            .op(0xB4)
            .data(pixels)
            .op(0xB5)
            .noPen()
            .uint16(8, 9)
            .op(0x63)
            .rectangle()
            .endPage();
    };

    EXPECT_EQ(pages(job("\x00\xFF\x00\x00"sv)), (Pages{0, 0, 0, 1}));
    EXPECT_EQ(pages(job("\x00\x00\x00\x00"sv)), (Pages{0, 1, 0, 0}));
}

/// A stream of the name is defined, in two parts.
PclXlBytes defining(std::string_view name, const std::string& stream)
{
    const std::size_t half = stream.size() / 2;
    return PclXlBytes()
        .bytes(139, name)
        .op(0x5B)
        .op(0x5C)
        .data(stream.substr(0, half))
        .op(0x5C)
        .data(stream.substr(half))
        .op(0x5D);
}

TEST(PclXlAnalyzer, PaintsAStreamWhereItIsExecuted)
{
    const std::string red = PclXlBytes().noPen().rgbBrush("\xFF\x00\x00"sv).rectangle().str();
    const PclXlBytes unused = defining("logo", red).beginPage().rectangle().endPage();
    const PclXlBytes used = defining("logo", red)
                                .beginPage()
                                .bytes(139, "logo")
                                .op(0x5E)
                                .endPage()
                                .beginPage()
                                .rectangle()
                                .endPage();
    const PclXlBytes removed =
        defining("logo", red).bytes(139, "logo").op(0x5F).beginPage().bytes(139, "logo").op(0x5E).endPage();

    EXPECT_EQ(pages(unused), (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(used), (Pages{0, 1, 0, 1}));
    EXPECT_EQ(pages(removed), (Pages{1, 0, 0, 0}));
}

TEST(PclXlAnalyzer, GoesOnBehindAStreamThatMakesNoSense)
{
    for (const std::string& stream :
         {std::string("neither"), std::string(") HP-PCL XL;2;0\n\x01"), std::string()}) {
        const PclXlBytes job =
            defining("x", stream).beginPage().bytes(139, "x").op(0x5E).rectangle().endPage();

        EXPECT_EQ(pages(job), (Pages{0, 1, 0, 0}));
    }
}

TEST(PclXlAnalyzer, EndsStreamsThatExecuteThemselves)
{
    std::string calls = ") HP-PCL XL;2;0\n";
    for (int i = 0; i < 2000; ++i)
        calls += "\xC8\xC0\x01x\xF8\x8B\x5E";
    const PclXlBytes job = defining("x", calls).beginPage().bytes(139, "x").op(0x5E).rectangle().endPage();

    EXPECT_EQ(pages(job), (Pages{0, 1, 0, 0}));
}

TEST(PclXlAnalyzer, StepsOverDataOfOtherOperators)
{
    const PclXlBytes job = PclXlBytes().op(0x50).data("\x43\x44\x43\x44").beginPage().rectangle().endPage();

    EXPECT_EQ(pages(job), (Pages{0, 1, 0, 0}));
}

TEST(PclXlAnalyzer, RejectsWhatHasNoHeader)
{
    EXPECT_THROW(analyze("neither"), WorkerException);
    EXPECT_THROW(analyze(") HP-PCL XL without an end of line"), WorkerException);
}

TEST(PclXlAnalyzer, ReadsNumbersInTheOtherByteOrder)
{
    const std::string job = "( HP-PCL XL;2;0\n"
                            "\xC0\x02\xF8\x25\x43"
                            "\xC1" +
                            std::string("\x00\x05", 2) + "\xF8\x31\x44";

    EXPECT_EQ(analyze(job).copies(), 5);
}

TEST(PclXlAnalyzer, SurvivesACutAtEveryByte)
{
    const std::string job = picture(2, 2, 0, 1, 2, 3, "\x04\x00\x40\xFF\xFF\xFF\x02\x00\x01\x00"sv).str();

    for (std::size_t size = job.find('\n') + 1; size <= job.size(); ++size)
        EXPECT_LE(analyze(job.substr(0, size)).pageCount(), 1);
}

} // namespace
} // namespace JobParser::Worker
