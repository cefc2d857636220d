#include "worker/PclAnalyzer.h"

#include <gtest/gtest.h>

#include "tests/support/JobBytes.h"
#include "tests/worker/WalkerSupport.h"

namespace JobParser::Worker
{
namespace
{

constexpr int noTolerance = 0;

JobFacts analyze(const std::string& bytes, int tolerance = noTolerance)
{
    OpenBody open(bytes);
    return PclAnalyzer(*open.reader, tolerance).analyze();
}

JobFacts analyze(const JobBytes& job, int tolerance = noTolerance)
{
    return analyze(job.str(), tolerance);
}

Pages pages(const JobBytes& job, int tolerance = noTolerance)
{
    return pagesOf(analyze(job, tolerance));
}

/// `ESC * b # W` with its payload.
std::string row(std::string_view payload)
{
    return "\x1B*b" + std::to_string(payload.size()) + "W" + std::string(payload);
}

std::string plane(std::string_view payload)
{
    return "\x1B*b" + std::to_string(payload.size()) + "V" + std::string(payload);
}

TEST(PclAnalyzer, CountsFormFeeds)
{
    EXPECT_EQ(pages(JobBytes().esc("E").raw("one\ftwo\f").esc("E")), (Pages{0, 2, 0, 0}));
}

TEST(PclAnalyzer, CountsALastPageThatOnlyAResetEnds)
{
    EXPECT_EQ(pages(JobBytes().esc("E").raw("one\ftwo").esc("E")), (Pages{0, 2, 0, 0}));
}

TEST(PclAnalyzer, CountsALastPageThatOnlyTheEndOfTheBodyEnds)
{
    EXPECT_EQ(pages(JobBytes().esc("E").raw("one\ftwo")), (Pages{0, 2, 0, 0}));
}

TEST(PclAnalyzer, CountsAFormFeedOnAnEmptyPageAsBlank)
{
    EXPECT_EQ(pages(JobBytes().esc("E").raw("one\f\f").esc("E")), (Pages{1, 1, 0, 0}));
}

TEST(PclAnalyzer, CountsNoPageForBlanksAndLineEnds)
{
    EXPECT_EQ(pages(JobBytes().esc("E").raw("  \r\n\t\xA0").esc("E")), (Pages{0, 0, 0, 0}));
}

TEST(PclAnalyzer, BeginsAPageForTheOtherSideOfTheSheet)
{
    const JobBytes job = JobBytes().raw("front").esc("&a2G").raw("back").esc("&a1G").raw("front").esc("E");

    EXPECT_EQ(pages(job), (Pages{0, 3, 0, 0}));
}

TEST(PclAnalyzer, BeginsAPageForANewSizeOrOrientationIfThisOneIsMarked)
{
    const JobBytes job =
        JobBytes().esc("&l26A").esc("&l0O").raw("a").esc("&l27A").raw("b").esc("&l1O").raw("c");

    EXPECT_EQ(pages(job), (Pages{0, 3, 0, 0}));
}

TEST(PclAnalyzer, TellsTheLargestPageAsItLies)
{
    const JobFacts facts = analyze(JobBytes().esc("&l26a0O").raw("a\f").esc("&l27a1O").raw("b\f"));

    EXPECT_EQ(facts.size().width, 4200);
    EXPECT_EQ(facts.size().height, 2970);
}

TEST(PclAnalyzer, DoesNotKnowTheSizeOfAJobThatChoosesNone)
{
    const JobFacts facts = analyze(JobBytes().raw("text\f"));

    EXPECT_EQ(facts.size().width, 0);
    EXPECT_EQ(facts.size().height, 0);
}

TEST(PclAnalyzer, FindsCopiesInTheStream)
{
    EXPECT_EQ(analyze(JobBytes().esc("&l3x26A").raw("a\f")).copies(), 3);
    EXPECT_EQ(analyze(JobBytes().raw("a\f")).copies(), 1);
}

TEST(PclAnalyzer, FillsPagesWithLines)
{
    std::string lines;
    for (int i = 0; i < 100; ++i)
        lines += "line\r\n";

    EXPECT_EQ(pages(JobBytes().esc("E").esc("&l26A").raw(lines).esc("E")), (Pages{0, 2, 0, 0}));
}

TEST(PclAnalyzer, FillsPagesByTheHeightOfTheLinesChosen)
{
    std::string lines;
    for (int i = 0; i < 100; ++i)
        lines += "line\r\n";

    EXPECT_EQ(pages(JobBytes().esc("E").esc("&l26A").esc("&l12D").raw(lines).esc("E")), (Pages{0, 1, 0, 0}));
}

TEST(PclAnalyzer, StepsOverPayloadsOfAnySequence)
{
    const JobBytes job = JobBytes().esc(")s3W\f\f\f").esc("*l3W\f\f\f").raw("a");

    EXPECT_EQ(pages(job), (Pages{0, 1, 0, 0}));
}

TEST(PclAnalyzer, StepsOverAPayloadBehindASmallLetter)
{
    EXPECT_EQ(pages(JobBytes().esc("*b3w\f\f\f3W\f\f\f")), (Pages{0, 1, 0, 0}));
}

TEST(PclAnalyzer, FindsInkInTransparentPrintData)
{
    EXPECT_EQ(pages(JobBytes().esc("&p2X\f\x1B")), (Pages{0, 0, 0, 0}));
    EXPECT_EQ(pages(JobBytes().esc("&p2X\fA")), (Pages{0, 1, 0, 0}));
}

TEST(PclAnalyzer, TakesARuleForAMark)
{
    EXPECT_EQ(pages(JobBytes().esc("*c10a10b0P").esc("E")), (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(JobBytes().esc("*c10a10b50g2P").esc("E")), (Pages{0, 0, 1, 0}));
    EXPECT_EQ(pages(JobBytes().esc("*c10a10b1P").esc("E")), (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(JobBytes().esc("*c0P").esc("E")), (Pages{0, 0, 0, 0}));
}

TEST(PclAnalyzer, TakesTextInWhiteForNoInk)
{
    EXPECT_EQ(pages(JobBytes().esc("*v1T").raw("white").esc("E")), (Pages{1, 0, 0, 0}));
}

TEST(PclAnalyzer, TakesTheForegroundOfTheSimplePalette)
{
    EXPECT_EQ(pages(JobBytes().esc("*r3U").esc("*v1S").raw("red\f")), (Pages{0, 0, 0, 1}));
    EXPECT_EQ(pages(JobBytes().esc("*r3U").esc("*v0S").raw("black\f")), (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(JobBytes().esc("*r3U").esc("*v7S").raw("white\f")), (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(JobBytes().esc("*r-3U").esc("*v7S").raw("black\f")), (Pages{0, 1, 0, 0}));
}

TEST(PclAnalyzer, DoesNotCountAPaletteThatIsNotUsed)
{
    EXPECT_EQ(pages(JobBytes().esc("*r3U").raw("black\f")), (Pages{0, 1, 0, 0}));
}

TEST(PclAnalyzer, TakesColorsThatTheJobDefines)
{
    const std::string configured("\x1B*v6W\x00\x01\x08\x08\x08\x08", 12);
    const std::string green = "\x1B*v0a200b0c5I\x1B*v5S";
    const std::string gray = "\x1B*v100a100b103c5I\x1B*v5S";

    EXPECT_EQ(pages(JobBytes().raw(configured).raw(green).raw("x\f")), (Pages{0, 0, 0, 1}));
    EXPECT_EQ(pages(JobBytes().raw(configured).raw(gray).raw("x\f")), (Pages{0, 0, 0, 1}));
    EXPECT_EQ(pages(JobBytes().raw(configured).raw(gray).raw("x\f"), 3), (Pages{0, 0, 1, 0}));
}

TEST(PclAnalyzer, BringsBackASavedPalette)
{
    const JobBytes job = JobBytes().esc("*p0P").esc("*r3U").esc("*p1P").esc("*v1S").raw("black\f");

    EXPECT_EQ(pages(job), (Pages{0, 1, 0, 0}));
}

TEST(PclAnalyzer, LooksIntoRowsOfPictures)
{
    EXPECT_EQ(pages(JobBytes().esc("*r1A").raw(row("\x80")).esc("*rC").raw("\f")), (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(JobBytes().esc("*r1A").raw(row(std::string(4, '\0'))).esc("*rC").raw("\f")),
              (Pages{1, 0, 0, 0}));
}

TEST(PclAnalyzer, FindsColorInPlanesThatDiffer)
{
    const std::string same = plane("\xF0") + plane("\xF0") + row("\xF0");
    const std::string different = plane("\xF0") + plane("\xF0") + row("\xE0");

    EXPECT_EQ(pages(JobBytes().esc("*r-3U").esc("*r1A").raw(same).raw("\f")), (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(JobBytes().esc("*r-3U").esc("*r1A").raw(different).raw("\f")), (Pages{0, 0, 0, 1}));
}

TEST(PclAnalyzer, CoversColoredInksWithBlack)
{
    const std::string covered = plane("\xFF") + plane("\x0F") + plane("") + row("");
    const std::string beside = plane("\xF0") + plane("\x0F") + plane("") + row("");

    EXPECT_EQ(pages(JobBytes().esc("*r-4U").esc("*r1A").raw(covered).raw("\f")), (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(JobBytes().esc("*r-4U").esc("*r1A").raw(beside).raw("\f")), (Pages{0, 0, 0, 1}));
}

TEST(PclAnalyzer, KeepsTheSeedOfEachPlane)
{
    // The second row changes nothing in any plane, and the third one a single plane.
    const std::string first = plane("\x01\x02") + plane("\x01\x02") + row("\x01\x02");
    const std::string same = plane("") + plane("") + row("");
    const std::string changed = plane("") + plane(std::string("\x00\x55", 2)) + row("");
    const std::string delta = "\x1B*r-3U\x1B*r1A\x1B*b0M" + first + "\x1B*b3M" + same;

    EXPECT_EQ(pages(JobBytes().raw(delta).raw("\f")), (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(JobBytes().raw(delta).raw(changed).raw("\f")), (Pages{0, 0, 0, 1}));
}

TEST(PclAnalyzer, EmptiesTheSeedWhereRowsAreSkipped)
{
    const std::string first = plane("\x01") + plane("\x01") + row("\x01");
    const std::string changed = plane("") + plane("") + row(std::string("\x00\x01", 2));
    const std::string start = "\x1B*r-3U\x1B*r1A" + first + "\x1B*b3M";

    EXPECT_EQ(pages(JobBytes().raw(start).raw(changed).raw("\f")), (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(JobBytes().raw(start).esc("*b1Y").raw(changed).raw("\f")), (Pages{0, 0, 0, 1}));
}

TEST(PclAnalyzer, ReadsAdaptiveRows)
{
    const std::string empty("\x04\x00\x05", 3);
    const std::string runLength("\x01\x00\x02\x03\xFF", 5);

    EXPECT_EQ(pages(JobBytes().esc("*b5M").raw(row(empty)).raw("\f")), (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(JobBytes().esc("*b5M").raw(row(empty + runLength)).raw("\f")), (Pages{0, 1, 0, 0}));
}

TEST(PclAnalyzer, ReadsDirectPixels)
{
    const std::string configured("\x1B*v6W\x00\x03\x08\x08\x08\x08", 12);
    const std::string red("\xFF\x00\x00", 3);
    const std::string gray("\x80\x80\x80", 3);
    const std::string white("\xFF\xFF\xFF", 3);

    EXPECT_EQ(pages(JobBytes().raw(configured).raw(row(white)).raw("\f")), (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(JobBytes().raw(configured).raw(row(gray)).raw("\f")), (Pages{0, 0, 1, 0}));
    EXPECT_EQ(pages(JobBytes().raw(configured).raw(row(gray + red)).raw("\f")), (Pages{0, 0, 0, 1}));
}

TEST(PclAnalyzer, DoesNotLookBeyondTheWidthOfThePicture)
{
    const std::string outside = plane("\x80") + plane("\x80") + row("\x81");

    EXPECT_EQ(pages(JobBytes().esc("*r-3U").esc("*r7S").esc("*r1A").raw(outside).raw("\f")),
              (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(JobBytes().esc("*r-3U").esc("*r8S").esc("*r1A").raw(outside).raw("\f")),
              (Pages{0, 0, 0, 1}));
}

TEST(PclAnalyzer, ReadsInksOfSeveralLevels)
{
    // Black and three colours with two levels each.
    std::string inks("\x02\x04", 2);
    for (int i = 0; i < 4; ++i)
        inks += std::string("\x01\x2C\x01\x2C\x00\x02", 6);
    const std::string configured = "\x1B*g26W" + inks;

    EXPECT_EQ(
        pages(JobBytes().raw(configured).raw(plane("\x01") + plane("") + plane("") + row("")).raw("\f")),
        (Pages{0, 1, 0, 0}));
    EXPECT_EQ(
        pages(JobBytes().raw(configured).raw(plane("") + plane("\x01") + plane("") + row("")).raw("\f")),
        (Pages{0, 0, 0, 1}));
}

TEST(PclAnalyzer, PaintsNothingByDefiningAMacro)
{
    const JobBytes defined = JobBytes().esc("&f7Y").esc("&f0X").raw("text\f").esc("&f1X");

    EXPECT_EQ(pages(defined), (Pages{0, 0, 0, 0}));
    EXPECT_EQ(pages(JobBytes(defined).esc("&f2X")), (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(JobBytes(defined).esc("&f3X").esc("&f3X")), (Pages{0, 2, 0, 0}));
    EXPECT_EQ(pages(JobBytes(defined).esc("&f8y2X")), (Pages{0, 0, 0, 0}));
}

TEST(PclAnalyzer, BringsBackTheStateBehindACalledMacro)
{
    const JobBytes defined = JobBytes().esc("*r3U").esc("&f0X").esc("*v1S").esc("&f1X");

    EXPECT_EQ(pages(JobBytes(defined).esc("&f3X").raw("black\f")), (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(JobBytes(defined).esc("&f2X").raw("red\f")), (Pages{0, 0, 0, 1}));
}

TEST(PclAnalyzer, PutsAnOverlayOnEachPage)
{
    const JobBytes defined =
        JobBytes().esc("*r3U").esc("&f0X").esc("*v1S").raw("red").esc("&f1X").esc("&f4X").raw("a\fb\f");

    EXPECT_EQ(pages(JobBytes(defined).esc("&f5X").raw("c\f")), (Pages{0, 1, 0, 2}));
}

TEST(PclAnalyzer, ForgetsMacrosThatTheJobDeletes)
{
    const JobBytes defined =
        JobBytes().esc("&f7y0X").raw("x").esc("&f1X").esc("&f8y0X").raw("y").esc("&f1x10X");
    const auto markedBy = [&](const char* change, const char* call) {
        return pages(JobBytes(defined).esc(change).esc(call).raw("\f")) == Pages{0, 1, 0, 0};
    };

    EXPECT_TRUE(markedBy("&f9Y", "&f7y2X"));
    // All of them.
    EXPECT_FALSE(markedBy("&f6X", "&f7y2X"));
    EXPECT_FALSE(markedBy("&f6X", "&f8y2X"));
    // Those that are not permanent, as the second one was made.
    EXPECT_FALSE(markedBy("&f7X", "&f7y2X"));
    EXPECT_TRUE(markedBy("&f7X", "&f8y2X"));
    EXPECT_FALSE(markedBy("&f8y9x7X", "&f8y2X"));
    // One of them.
    EXPECT_FALSE(markedBy("&f7y8X", "&f7y2X"));
    EXPECT_TRUE(markedBy("&f7y8X", "&f8y2X"));
    // A reset.
    EXPECT_FALSE(markedBy("E", "&f7y2X"));
    EXPECT_TRUE(markedBy("E", "&f8y2X"));
}

TEST(PclAnalyzer, ForgetsTheModeOfRowsAtTheEndOfAPicture)
{
    // Run lengths make eight white dots of these two bytes; as they stand they hold a black one.
    const JobBytes picture = JobBytes().esc("*r1A").esc("*b1M").raw(row(std::string("\x80\x00", 2)));

    EXPECT_EQ(pages(JobBytes(picture).esc("*rB").raw(row(std::string("\x80\x00", 2))).raw("\f")),
              (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(JobBytes(picture).esc("*rC").raw(row(std::string("\x80\x00", 2))).raw("\f")),
              (Pages{0, 1, 0, 0}));
}

TEST(PclAnalyzer, EndsMacrosThatCallEachOther)
{
    const JobBytes job = JobBytes().esc("&f1y0X").raw("a").esc("&f1y2X").esc("&f1y1X").esc("&f2X").esc("E");

    EXPECT_EQ(pages(job), (Pages{0, 1, 0, 0}));
}

TEST(PclAnalyzer, EndsMacrosThatAreCalledWithoutEnd)
{
    std::string calls = "\x1B&f0X";
    for (int i = 0; i < 40000; ++i)
        calls += "\x1B&f1y3X";
    const std::string other = "\x1B&f1Y\x1B&f0X" + std::string(40000, 'x') + "\x1B&f1X";

    EXPECT_EQ(pages(JobBytes().raw(other).raw("\x1B&f2Y").raw(calls).esc("&f1X").esc("&f2y2X").raw("\f")),
              (Pages{0, 1, 0, 0}));
}

TEST(PclAnalyzer, FindsPensOfHpgl)
{
    EXPECT_EQ(pages(JobBytes().esc("%0B").raw("IN;SP1;PU0,0;PD100,100;").esc("%0A").raw("\f")),
              (Pages{0, 1, 0, 0}));
    EXPECT_EQ(pages(JobBytes().esc("%0B").raw("IN;SP1;PU0,0;PA100,100;").esc("%0A").raw("\f")),
              (Pages{1, 0, 0, 0}));
    EXPECT_EQ(pages(JobBytes().esc("*r3U").esc("%0B").raw("IN;SP1;PD1,1;").esc("%0A").raw("\f")),
              (Pages{0, 0, 0, 1}));
}

TEST(PclAnalyzer, SurvivesACutAtEveryByte)
{
    const std::string job = JobBytes()
                                .esc("E")
                                .esc("&l26a3X")
                                .esc("*r-3U")
                                .raw(plane("\x01") + plane("\x01") + row("\x01"))
                                .esc("%0B")
                                .raw("IN;SP1;PE<=abc;LBtext\x03")
                                .esc("%0A")
                                .esc("&f0X")
                                .raw("x")
                                .esc("&f1x2X")
                                .str();

    for (std::size_t size = 0; size <= job.size(); ++size)
        EXPECT_LE(analyze(job.substr(0, size)).pageCount(), 1);
}

} // namespace
} // namespace JobParser::Worker
