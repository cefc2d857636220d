#include <array>
#include <gtest/gtest.h>
#include <string>
#include <utility>

#include "JobParser/languages/PostScriptParser.h"
#include "tests/JobParser/languages/PostScriptReading.h"

namespace JobParser::PostScript
{
namespace
{

using namespace std::string_view_literals;

struct FeatureRow {
    const char* text;
    int duplex;
    int stapling;
    int punching;
    int kind;
};

constexpr int unknown = -1;

TEST(PostScriptParser, ReadsFeatures)
{
    constexpr std::array<FeatureRow, 50> rows{{
        {"*Duplex None\n", 0, unknown, unknown, 0},
        {"*DUPLEX NONE\n", 0, unknown, unknown, 0},
        {"*Duplex Nonesense\n", 0, unknown, unknown, 0},
        {"*Duplex DuplexNoTumble\r\n", 1, unknown, unknown, 0},
        {"*Duplex DuplexTumble\r\n", 2, unknown, unknown, 0},
        {"*Duplex xDUPLEXNOTUMBLEx\n", 1, unknown, unknown, 0},
        {"*Duplex \n", 2, unknown, unknown, 0},
        {"*Duplex\n", unknown, unknown, unknown, 0},
        {"*Duplex  None\n", 2, unknown, unknown, 0},
        {"*EFDuplex False\n", 0, unknown, unknown, 0},
        {"*EFDuplex None\n", 2, unknown, unknown, 0},
        {"*EFDuplex DuplexNoTumble\n", 1, unknown, unknown, 0},
        {"*efduplex duplextumble\n", 2, unknown, unknown, 0},
        {"Duplex ShortEdge\n", 2, unknown, unknown, 0},
        {"duplex SHORTEDGE\n", 2, unknown, unknown, 0},
        {"Duplex LongEdge\n", 1, unknown, unknown, 0},
        {"Duplex None\n", 1, unknown, unknown, 0},
        {"Duplex\n", unknown, unknown, unknown, 0},
        {"*PageSize A4\n", unknown, unknown, unknown, 1},
        {"*pagesize A4\n", unknown, unknown, unknown, 1},
        {"PageSize A4\n", unknown, unknown, unknown, 0},
        {"*Staple 1\n", unknown, unknown, unknown, 2},
        {"*staple None\n", unknown, unknown, unknown, 2},
        {"*Staple\n", unknown, unknown, unknown, 0},
        {"*Punch None\n", unknown, unknown, 0, 3},
        {"*PUNCH main none\n", unknown, unknown, 0, 3},
        {"*punch MAIN\n", unknown, unknown, 101, 3},
        {"*Punch xMainx\n", unknown, unknown, 101, 3},
        {"*Punch 2\n", unknown, unknown, 100, 3},
        {"*Punch\n", unknown, unknown, unknown, 0},
        {"*StapleLocation LEFT_1PT\n", unknown, unknown, unknown, 4},
        {"*staplelocation LEFT_1PT\n", unknown, unknown, unknown, 0},
        {"*STAPLELOCATION LEFT_1PT\n", unknown, unknown, unknown, 0},
        {"*StapleLocation\n", unknown, unknown, unknown, 0},
        {"*Punching 2HOLE\n", unknown, unknown, unknown, 5},
        {"*punching 2HOLE\n", unknown, unknown, unknown, 0},
        {"*Punching\n", unknown, unknown, unknown, 0},
        {"Staple Off\n", unknown, 0, unknown, 0},
        {"staple xOFFx\n", unknown, 0, unknown, 0},
        {"Staple On\n", unknown, 100, unknown, 0},
        {"STAPLE \n", unknown, 100, unknown, 0},
        {"Staple\n", unknown, unknown, unknown, 0},
        {"Punch Off\n", unknown, unknown, 0, 0},
        {"punch xOFFx\n", unknown, unknown, 0, 0},
        {"Punch On\n", unknown, unknown, 100, 0},
        {"Punch\n", unknown, unknown, unknown, 0},
        {" *Duplex None\n", unknown, unknown, unknown, 0},
        {"x\n", unknown, unknown, unknown, 0},
        {"\n", unknown, unknown, unknown, 0},
        {"", unknown, unknown, unknown, 0},
    }};

    for (const FeatureRow& row : rows) {
        for (const char* start : {"%%BeginFeature: ", "%%BEGINFEATURE: ", "%%beginfeature: "}) {
            Reading reading("");
            reading.parser.comment = start + std::string(row.text);
            reading.parser.parseComment(reading.info);

            const JobInfo& info = reading.info;
            const auto known = [&](JobInfo::Flag group, int value) {
                return info.flags(static_cast<int>(group)) == 0 ? unknown : value;
            };
            EXPECT_EQ(known(JobInfo::FlagDuplex, static_cast<int>(info.duplex)), row.duplex) << row.text;
            EXPECT_EQ(known(JobInfo::FlagStapling, static_cast<int>(info.stapling)), row.stapling)
                << row.text;
            EXPECT_EQ(known(JobInfo::FlagPunching, static_cast<int>(info.punching)), row.punching)
                << row.text;
            EXPECT_EQ(reading.parser.featureKind, row.kind) << row.text;
        }
    }
}

TEST(PostScriptParser, ReplacesWhatWasKnownOfFinishing)
{
    struct Row {
        const char* text;
        Staple stapling;
        Punch punching;
    };
    constexpr std::array<Row, 7> rows{{
        {"Staple Off\n", Staple::None, Punch::FourHoles},
        {"Staple On\n", Staple::UnknownPosition, Punch::FourHoles},
        {"Punch Off\n", Staple::Two, Punch::None},
        {"Punch On\n", Staple::Two, Punch::UnknownKind},
        {"*Punch None\n", Staple::Two, Punch::None},
        {"*Punch Main\n", Staple::Two, Punch::DriverDefault},
        {"*Punch 2\n", Staple::Two, Punch::UnknownKind},
    }};

    for (const Row& row : rows) {
        Reading reading("");
        reading.info.setStapling(Staple::Two, true);
        reading.info.setPunching(Punch::FourHoles, true);
        reading.parser.comment = "%%BeginFeature: " + std::string(row.text);

        reading.parser.parseComment(reading.info);

        EXPECT_EQ(reading.info.stapling, row.stapling) << row.text;
        EXPECT_EQ(reading.info.punching, row.punching) << row.text;
    }
}

TEST(PostScriptParser, ReadsNothingFromOtherComments)
{
    for (const char* comment :
         {"%%Duplex None\n", "%%BeginFeature *Duplex None\n", "%%BeginFeature:*Duplex None\n",
          "%%BeginFeatures: *Duplex None\n", "%BeginFeature: *Duplex None\n"}) {
        Reading reading("");
        reading.parser.comment = comment;
        reading.parser.parseComment(reading.info);
        EXPECT_EQ(reading.info.m_flags, 0U) << comment;
        EXPECT_EQ(reading.parser.featureKind, 0) << comment;
    }
}

int stapleOf(const std::string& body)
{
    const JobInfo info = facts("%%BeginFeature: *Staple 1\n" + body + "%%EndFeature\n");
    return info.flags(JobInfo::FlagStapling) == 0 ? unknown : static_cast<int>(info.stapling);
}

TEST(PostScriptParser, TakesTheStapleOfABody)
{
    EXPECT_EQ(stapleOf("<< /Staple 3 /StaplePosition 1 >> setpagedevice\n"), 2);
    EXPECT_EQ(stapleOf("<< /Staple 3 /StaplePosition 2 >> setpagedevice\n"), 1);
    EXPECT_EQ(stapleOf("<< /Staple 3 /StaplePosition 3 >> setpagedevice\n"), 3);
    EXPECT_EQ(stapleOf("<< /Staple 3 >> setpagedevice\n"), 0);
    EXPECT_EQ(stapleOf("<< /Staple 0 /StaplePosition 1 >> setpagedevice\n"), 0);
    EXPECT_EQ(stapleOf("<< /StaplePosition 1 >> setpagedevice\n"), 0);
    EXPECT_EQ(stapleOf("x\n"), 0);
    EXPECT_EQ(stapleOf("<< /StaplePosition 2 >> \n a\r\n << /Staple 3 >>\n"), 1);
    EXPECT_EQ(stapleOf("/StaplePosition 1 x /Staple 3 \n"), 0) << "the blank at the end is trimmed";
}

TEST(PostScriptParser, ReplacesAStapleByThatOfABody)
{
    for (const auto& [body, staple] :
         {std::pair{"/Staple 3 /StaplePosition 1 x", Staple::RightTop},
          std::pair{"/Staple 0 x", Staple::None}, std::pair{"x", Staple::None}}) {
        Reading reading("");
        reading.info.setStapling(Staple::Two, true);
        reading.parser.featureText = body;

        reading.parser.parseStapleFeatureDefinition(reading.info);

        EXPECT_EQ(reading.info.stapling, staple) << body;
    }
}

TEST(PostScriptParser, TakesNothingOfBodiesThatAreOnlyCollected)
{
    constexpr std::string_view body = "/Staple 3 /StaplePosition 1 /MediaProcessingOption (LEFT_2PT)";
    for (const int kind : {0, 1, 3, 6}) {
        Reading reading("");
        reading.parser.featureKind = kind;
        reading.parser.featureText = body;

        reading.parser.parseFeatureDefinition(reading.info);

        EXPECT_EQ(reading.info.m_flags, 0U) << kind;
        EXPECT_EQ(reading.pjl.jobInfo.m_flags, 0U) << kind;
    }
}

TEST(PostScriptParser, TakesNothingOfABodyThatIsBlank)
{
    EXPECT_EQ(stapleOf(""), unknown);
    EXPECT_EQ(stapleOf("\n\r\n"), unknown);
    EXPECT_EQ(stapleOf("  \n\t\n"), unknown);
    EXPECT_EQ(stapleOf("%%a\n%%b\n"), unknown) << "comments belong to no body";
}

/// What is collected of lines behind `%%BeginFeature:`.
std::string collected(const std::string& lines)
{
    Reading reading("%%BeginFeature: *Staple 1\n" + lines);
    reading.parse();
    return reading.parser.featureText;
}

TEST(PostScriptParser, CollectsTheLinesOfABody)
{
    EXPECT_EQ(collected("ab\ncd\r\n"), "ab\ncd\r");
    EXPECT_EQ(collected("ab\n\n\ncd\n"), "ab\ncd\n");
    EXPECT_EQ(collected("ab\n%%cd\nef\n"), "ab\nef\n");
    EXPECT_EQ(collected("%a\n"), "a\n") << "without the first byte of a comment with one percent sign";
    EXPECT_EQ(collected("%\na\n"), "a\n");
    EXPECT_EQ(collected("%%ab\tcd\n"), "\tcd\n") << "from the byte on that breaks a comment";
    EXPECT_EQ(collected("%%" + std::string(253, 'x') + "yz\n"), "yz\n");
    EXPECT_EQ(collected("\x1B%-1\n"), "\x1B%-1\n");
    EXPECT_EQ(collected("\x04"
                        "a\n\x01Mb\n"),
              "a\nb\n");
    EXPECT_EQ(collected(std::string("a\0b\n", 4)), std::string("a\0b\n", 4));
}

TEST(PostScriptParser, CollectsNothingOutsideAFeature)
{
    Reading reading("ab\n%%BeginFeature: *Duplex None\ncd\n"sv);

    reading.parse();
    reading.parser.toFeature('x');

    EXPECT_EQ(reading.parser.featureText, "");
}

TEST(PostScriptParser, CollectsSingleCharacters)
{
    Reading reading("");
    reading.parser.featureKind = 1;

    reading.parser.toFeature('a');
    reading.parser.toFeature('\xFF');

    EXPECT_EQ(reading.parser.featureText, "a\xFF");
}

TEST(PostScriptParser, EndsAFeatureAtItsComment)
{
    for (const char* end : {"%%EndFeature\n", "%%ENDFEATURE", "%%endfeature", "%%EndFeatures: x\n"}) {
        Reading reading("");
        reading.parser.featureKind = 2;
        reading.parser.featureText = "  /Staple 3 /StaplePosition 1 x  ";
        reading.parser.comment = end;

        reading.parser.parseComment(reading.info);

        EXPECT_EQ(reading.info.stapling, Staple::RightTop) << end;
        EXPECT_EQ(reading.parser.featureKind, 0);
        EXPECT_EQ(reading.parser.featureText, "");
    }
}

TEST(PostScriptParser, KeepsTheKindOfAFeatureThatAnotherOneFollows)
{
    EXPECT_EQ(
        facts("%%BeginFeature: *Staple 1\n/Staple 3 \n%%BeginFeature: *Duplex None\n/StaplePosition 1 x\n"
              "%%EndFeature\n")
            .stapling,
        Staple::RightTop);
    EXPECT_EQ(facts("%%BeginFeature: *PageSize A4\n/Staple 3 x\n%%BeginFeature: *Staple 1\n"
                    "/StaplePosition 1 x\n%%EndFeature\n")
                  .stapling,
              Staple::RightTop);
    EXPECT_EQ(facts("%%BeginFeature: *Staple 1\n/Staple 3 /StaplePosition 1 x\n%%BeginFeature: *PageSize A4\n"
                    "%%EndFeature\n")
                  .flags(JobInfo::FlagStapling),
              0);
}

TEST(PostScriptParser, KeepsAFeatureOpenFromBodyToBody)
{
    Reading reading("%%BeginFeature: *Staple 1\n/Staple 3 \n\x1B%-12345X/StaplePosition 1 x\n"
                    "%%EndFeature\n"sv);

    reading.parse();
    reading.job.file.advancePos(static_cast<std::int64_t>(exitLanguage.size()));
    reading.parse();

    EXPECT_EQ(reading.info.stapling, Staple::RightTop);
    EXPECT_EQ(reading.parser.featureKind, 0);
}

TEST(PostScriptParser, TakesTheStaplingOfHpIntoTheRecordOfPjl)
{
    Reading reading("%%BeginFeature: *StapleLocation LEFT_1PT\n<</MediaProcessingOption (LEFT_2PT)>>\n"
                    "%%EndFeature\n"sv);

    reading.parse();

    EXPECT_EQ(reading.pjl.jobInfo.stapling, Staple::Two);
    EXPECT_EQ(reading.pjl.stapleRotation, 0);
    EXPECT_EQ(reading.pjl.jobInfo.originalBrand, Zem::Printer::OriginalBrand::Hp);
    EXPECT_EQ(reading.info.flags(JobInfo::FlagStapling), 0);
}

TEST(PostScriptParser, TakesThePunchingOfHpIntoTheRecordOfPjl)
{
    Reading reading(
        "%%BeginFeature: *Punching 2HOLE\n<</MediaProcessingOption (LEFT_2PT)>>\n%%EndFeature\n"sv);

    reading.parse();

    EXPECT_EQ(reading.pjl.jobInfo.punching, Punch::TwoHoles);
    EXPECT_EQ(reading.pjl.punchRotation, 0);
    EXPECT_EQ(reading.pjl.jobInfo.originalBrand, Zem::Printer::OriginalBrand::Hp);
    EXPECT_EQ(reading.info.flags(JobInfo::FlagPunching), 0);
}

TEST(PostScriptParser, TakesABodyOfHpWithoutAnOptionForAnUnknownWord)
{
    Reading stapled("%%BeginFeature: *StapleLocation x\ny\n%%EndFeature\n"sv);
    Reading punched("%%BeginFeature: *Punching x\ny\n%%EndFeature\n"sv);

    stapled.parse();
    punched.parse();

    EXPECT_EQ(stapled.pjl.jobInfo.stapling, Staple::UnknownPosition);
    EXPECT_EQ(punched.pjl.jobInfo.punching, Punch::UnknownKind);
}

TEST(PostScriptParser, BoundsTheBodyOfAFeatureThatIsNeverClosed)
{
    std::string body = "/Staple 3 x\n";
    for (int line = 0; line < 200000; ++line)
        body += "0 0 moveto (text) show\n";
    Reading reading("%%BeginFeature: *Staple 1\n" + body + std::string(3000000, ' ') +
                    "/StaplePosition 2 x\n");

    reading.parse();

    EXPECT_LT(reading.parser.featureText.size(), 100000U);
    reading.parser.comment = "%%EndFeature\n";
    reading.parser.parseComment(reading.info);
    EXPECT_EQ(reading.info.stapling, Staple::LeftTop);
}

} // namespace
} // namespace JobParser::PostScript
