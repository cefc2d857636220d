#include "JobParser/languages/PrescribeParser.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "JobParser/JobParserException.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/languages/PjlParser.h"
#include "tests/support/OpenJob.h"
#include "tests/support/SparseFile.h"

#include "Torv/Text.h"

namespace JobParser::Prescribe
{
namespace
{

using namespace std::string_view_literals;

struct Reading {
    explicit Reading(std::string_view bytes) : job(bytes), pjl(job.parent), parser(pjl) {}

    OpenJob job;
    Pjl::Parser pjl;
    Parser parser;
};

JobInfo read(std::string_view commands)
{
    Reading reading("!R! " + std::string(commands) + "EXIT;");
    reading.parser.parse();
    EXPECT_TRUE(reading.job.file.atEnd()) << commands;
    EXPECT_EQ(reading.job.job.chunks.size(), 1U) << commands;
    return reading.parser.jobInfo;
}

std::string counts(const JobInfo& info)
{
    if (info.flags(JobInfo::FlagPageCount) == 0)
        return "unknown";
    return std::to_string(info.monoCount) + "/" + std::to_string(info.grayCount) + "/" +
           std::to_string(info.colorCount);
}

/// What a block fails with and where the file stands then.
std::string failure(std::string_view bytes)
{
    Reading reading(bytes);
    try {
        reading.parser.parse();
    } catch (const JobParserException& error) {
        EXPECT_TRUE(reading.job.job.chunks.empty());
        return std::to_string(reading.job.file.m_offset) + " " + error.what();
    }
    return "none";
}

std::string chunksInWords(const std::vector<std::shared_ptr<IChunk>>& chunks)
{
    std::string words;
    for (const auto& chunk : chunks) {
        const auto& block = dynamic_cast<const ChunkPrescribe&>(*chunk);
        words += std::to_string(block.ofs) + "+" + std::to_string(block.size()) + " ";
    }
    return words;
}

bool guessByRule(std::string_view bytes)
{
    if (bytes.size() < 8 || !bytes.starts_with("!R!"))
        return false;
    for (std::size_t place = 3; place <= 99 && place < bytes.size(); ++place) {
        if (Torv::toUpper(std::string(bytes.substr(place, 5))) == "EXIT;")
            return true;
    }
    return false;
}

/// Compares all guesses over a text, one after another, as one parser makes them.
void compareGuesses(std::string_view bytes)
{
    Reading reading(bytes);
    std::int64_t noBlockBefore = 0;
    for (std::int64_t at = 0; at <= static_cast<std::int64_t>(bytes.size()); ++at) {
        reading.job.file.setPos(at);
        const bool expected = guessByRule(bytes.substr(static_cast<std::size_t>(at)));
        ASSERT_TRUE(!expected || at >= noBlockBefore) << at << testing::PrintToString(bytes);
        ASSERT_EQ(reading.parser.guessPrescribe(), expected) << at << testing::PrintToString(bytes);
        ASSERT_EQ(reading.job.file.m_offset, at);
        noBlockBefore = std::max(noBlockBefore, reading.parser.noBlockBefore());
        ASSERT_GE(reading.parser.noBlockBefore(), at);
    }
}

TEST(PrescribeParser, KnowsNothingAtFirst)
{
    const Reading reading("!R!"sv);

    EXPECT_EQ(reading.parser.jobInfo.m_flags, 0U);
    EXPECT_EQ(reading.parser.noBlockBefore(), 0);
}

struct Guess {
    std::string bytes;
    bool isBlock;
};

TEST(PrescribeParser, GuessesABlockByItsEndWithinAHundredBytes)
{
    const std::array<Guess, 17> rows{{
        {"", false},
        {"!", false},
        {"!R!EXIT", false},
        {"!R!EXIT;", true},
        {"!R!eXiT;", true},
        {"!r!EXIT;", false},
        {"!R EXIT;", false},
        {" !R!EXIT;", false},
        {"!R!EXIT:", false},
        {"!R! RES; EXIT;", true},
        {"!R!EXITEXIT;", true},
        {"!R!EEXIT;", true},
        {"!R!" + std::string(96, 'x') + "EXIT;", true},
        {"!R!" + std::string(96, 'x') + "EXIT", false},
        {"!R!" + std::string(97, 'x') + "EXIT;", false},
        {"!R!" + std::string(98, 'x') + "EXIT;", false},
        {"!R!" + std::string(200000, 'x') + "EXIT;", false},
    }};

    for (const Guess& row : rows) {
        Reading reading(row.bytes);
        EXPECT_EQ(reading.parser.guessPrescribe(), row.isBlock) << row.bytes.substr(0, 120);
        EXPECT_EQ(reading.job.file.m_offset, 0);
        EXPECT_TRUE(reading.job.job.chunks.empty());
    }
}

TEST(PrescribeParser, GuessesAsTheByteRuleDoesForAllTextsOfFragments)
{
    constexpr std::array<std::string_view, 8> letters{"!R!", "!", "R", "EXIT;", "E", "xIt;", "T;", "x"};
    std::vector<std::string> texts{""};
    for (std::size_t begin = 0, length = 0; length <= 4; ++length) {
        const std::size_t end = texts.size();
        for (std::size_t index = begin; index < end; ++index) {
            if (texts[index].find("!R!") != std::string::npos)
                compareGuesses(texts[index]);
            if (HasFatalFailure())
                return;
            for (const std::string_view letter : letters)
                texts.push_back(texts[index] + std::string(letter));
        }
        begin = end;
    }
    EXPECT_EQ(texts.size(), 37449U);
}

TEST(PrescribeParser, GuessesAsTheByteRuleDoesForRandomTexts)
{
    constexpr std::array<std::string_view, 9> letters{"!R!", "!",  "R", "EXIT;",  "exit",
                                                      ";",   "T;", "E", "xxxxxxx"};
    std::mt19937 random(5);
    for (int repeat = 0; repeat < 60; ++repeat) {
        const std::size_t gap = 1U << static_cast<unsigned>(repeat % 12);
        std::string text;
        while (text.size() < 3000) {
            const std::size_t letter = random() % letters.size();
            // Ends that stand far from each other, so that guesses succeed and fail at all distances.
            if (letter == 3 && random() % gap != 0)
                continue;
            text += letters[letter];
        }
        compareGuesses(text);
        if (HasFatalFailure())
            return;
    }
}

TEST(PrescribeParser, GuessesTheSameAtAnyOrderOfPlaces)
{
    std::string text;
    std::mt19937 random(6);
    while (text.size() < 200000)
        text += random() % 400 == 0 ? "EXIT;" : random() % 50 == 0 ? "!R!" : "T;x";
    Reading reading(text);

    for (int repeat = 0; repeat < 20000; ++repeat) {
        const std::size_t at = text.find("!R!", random() % text.size());
        if (at == std::string::npos)
            continue;
        reading.job.file.setPos(static_cast<std::int64_t>(at));
        ASSERT_EQ(reading.parser.guessPrescribe(), guessByRule(std::string_view(text).substr(at))) << at;
    }
}

TEST(PrescribeParser, GuessesAcrossTheEndOfAView)
{
    constexpr std::int64_t viewEnd = 4194304;
    SparseFile bytes;
    bytes.resize(viewEnd + 70000);
    for (const std::int64_t distance : {3, 99, 100}) {
        for (std::int64_t end = viewEnd - 6; end <= viewEnd + 1; ++end) {
            bytes.writeAt(end - distance, "!R!");
            bytes.writeAt(end, "EXIT;");
            Reading reading(""sv);
            reading.job.file.open(bytes.path());
            reading.job.file.setPos(end - distance);

            EXPECT_EQ(reading.parser.guessPrescribe(), distance <= 99) << end;
            EXPECT_EQ(reading.job.file.m_offset, end - distance);
            bytes.writeAt(end - distance, std::string(static_cast<std::size_t>(distance) + 5, '\0'));
        }
    }
}

TEST(PrescribeParser, TellsHowFarAFailedGuessLooked)
{
    Reading atEnd("!R!" + std::string(1000, 'x'));
    Reading long_("!R!" + std::string(1000000, 'x') + "EXIT;");
    Reading near("!R!" + std::string(500, 'x') + "EXIT;");

    for (Reading* reading : {&atEnd, &long_, &near})
        EXPECT_FALSE(reading->parser.guessPrescribe());

    EXPECT_GE(atEnd.parser.noBlockBefore(), 1003);
    EXPECT_GT(long_.parser.noBlockBefore(), 60000);
    EXPECT_LT(long_.parser.noBlockBefore(), 1000000);
    EXPECT_EQ(near.parser.noBlockBefore(), 503 - 99);
}

TEST(PrescribeParser, FindsABlockWhoseEndStandsWhereAFailedGuessLookedNoFurther)
{
    constexpr std::size_t lookAhead = 65536;
    for (std::size_t end = lookAhead - 8; end <= lookAhead + 12; ++end) {
        std::string text = "!R!" + std::string(end - 3, 'x') + "EXIT;";
        text.replace(end - 99, 3, "!R!");
        Reading reading(text);
        EXPECT_FALSE(reading.parser.guessPrescribe()) << end;
        reading.job.file.setPos(static_cast<std::int64_t>(end) - 99);

        EXPECT_TRUE(reading.parser.guessPrescribe()) << end;
        EXPECT_LE(reading.parser.noBlockBefore(), reading.job.file.m_offset) << end;
    }
}

TEST(PrescribeParser, MakesOneChunkOfABlock)
{
    Reading reading("!R! RES; EXIT;"sv);

    reading.parser.parse();

    EXPECT_EQ(chunksInWords(reading.job.job.chunks), "0+14 ");
    EXPECT_EQ(reading.parser.jobInfo.originalBrand, Zem::Printer::OriginalBrand::KxDriver);
    EXPECT_EQ(reading.parser.jobInfo.m_flags, 8192U);
}

TEST(PrescribeParser, LeavesTheFileBehindABlock)
{
    Reading reading("ab!R!exit;!R! COPY 2; ExIt;cd"sv);
    reading.job.file.setPos(2);

    reading.parser.parse();
    EXPECT_EQ(reading.job.file.m_offset, 10);
    reading.parser.parse();

    EXPECT_EQ(reading.job.file.m_offset, 27);
    EXPECT_EQ(chunksInWords(reading.job.job.chunks), "2+8 10+17 ");
}

TEST(PrescribeParser, EndsABlockWithTheFileAtTheEndOfACommand)
{
    for (const std::string_view bytes : {"!R!"sv, "!R! COPY 2;"sv, ""sv}) {
        Reading reading(bytes);
        reading.parser.parse();
        EXPECT_EQ(chunksInWords(reading.job.job.chunks), "0+" + std::to_string(bytes.size()) + " ");
        EXPECT_EQ(reading.parser.jobInfo.m_flags & 8192U, 8192U);
    }
}

TEST(PrescribeParser, FailsAtTheEndOfTheFileWithinACommand)
{
    const std::string block = "!R! \r\nAB 1,\"x\" y , 'z';EXIT;";

    for (std::size_t size = 3; size < block.size(); ++size) {
        const bool isBoundary = size == 3 || size == 23;
        EXPECT_EQ(failure(block.substr(0, size)),
                  isBoundary ? "none" : std::to_string(size) + " GetPrescribeToken(): Unexpected EOF");
    }
    EXPECT_EQ(failure("!R! "), "4 GetPrescribeToken(): Unexpected EOF");
}

TEST(PrescribeParser, RefusesCommandsBeyondTheLimits)
{
    std::string most = "!R!A 1";
    for (int index = 1; index < 128; ++index)
        most += ",1";
    const std::string longest = "!R!A " + std::string(10239, 'x');

    EXPECT_EQ(failure("!R! ABCDE;"), "9 JobParser: Prescribe cmd name too long");
    EXPECT_EQ(failure("!R! ABCD;EXIT;"), "none");
    EXPECT_EQ(failure(most + ";EXIT;"), "none");
    EXPECT_EQ(failure(most + ",1;EXIT;"),
              std::to_string(most.size() + 1) + " JobParser: Prescribe cmd has too many parameters");
    EXPECT_EQ(failure(most + ",\"1\";EXIT;"),
              std::to_string(most.size() + 2) + " JobParser: Prescribe cmd has too many parameters");
    EXPECT_EQ(failure(longest + ";EXIT;"), "none");
    EXPECT_EQ(failure(longest + "x;EXIT;"), "10246 JobParser: Prescribe cmd too long");
    EXPECT_EQ(failure(longest + "xx;EXIT;"), "10246 JobParser: Prescribe cmd too long");
    EXPECT_EQ(failure("!R!A '" + std::string(10240, 'x') + "';EXIT;"),
              "10247 JobParser: Prescribe cmd too long");
}

TEST(PrescribeParser, KeepsWhatABlockSaidBeforeItFailed)
{
    Reading reading("!R! COPY 3; ABCDE;"sv);

    EXPECT_THROW(reading.parser.parse(), JobParserException);

    EXPECT_EQ(reading.parser.jobInfo.copies, 3);
    EXPECT_EQ(reading.parser.jobInfo.m_flags, 4U);
    EXPECT_TRUE(reading.job.job.chunks.empty());
}

TEST(PrescribeParser, ReadsParametersHoweverTheyAreWritten)
{
    for (const char* command : {"COPY 7;", "copy 7;", "CoPy7;", "COPY \r\n 7;", "COPY\"7\";", "COPY '7';",
                                "COPY \"7\" ignored;", "COPY 7,;", "COPY 7,8;", "COPY 7, \"8;,\";",
                                " \r\nCOPY 7;", "COPY 7\r\n;", "COPY \"7\",8;", "COPY '7\"';"}) {
        EXPECT_EQ(read(command).copies, 7) << command;
    }
}

TEST(PrescribeParser, TellsParametersApart)
{
    EXPECT_EQ(counts(read("CMNT Color=6,Mono=4,;")), "4/0/6") << "a comma opens no parameter";
    EXPECT_EQ(counts(read("CMNT Color=6, \r\n;")), "unknown");
    EXPECT_EQ(counts(read("CMNT Color=6,,Mono=4;")), "unknown") << "between two commas stands an empty one";
    EXPECT_EQ(counts(read("CMNT \"Color=6\" x ,\r\n'Mono=4' y;")), "4/0/6");
    EXPECT_EQ(counts(read("CMNT Color=6 ,Mono=4 ;")), "4/0/6");
    EXPECT_EQ(counts(read("CMNT Color=6\"',Mono=4;")), "4/0/6") << "quotes inside are text";
    EXPECT_EQ(counts(read("CMNT \"Color=6,;'\",'Mono=4\",;';")), "4/0/6");
    EXPECT_EQ(counts(read("CMNT\"Color=6\"\"Mono=4\";")), "unknown") << "a quote behind a quote is ignored";
}

TEST(PrescribeParser, ReadsNumbersOf32Bits)
{
    EXPECT_EQ(read("COPY 4294967303;").copies, 7);
    EXPECT_EQ(read("COPY 7.9;").copies, 7);
    EXPECT_EQ(read("COPY \"\";").copies, 1);
    EXPECT_EQ(read("COPY +7;").copies, 7);
    EXPECT_EQ(static_cast<int>(read("DUPX 99999999999999999999;").duplex), -1);
    EXPECT_EQ(counts(read("CMNT Color=-2147483648,Mono=4294967295;")), "-1/0/-2147483648");
}

TEST(PrescribeParser, TakesABlankForAnEndOfTheNameOnly)
{
    EXPECT_EQ(read("COPY\t7;").copies, 7) << "white space of a number";
    EXPECT_EQ(read(";;;COPY 4;").copies, 4);
    EXPECT_EQ(read("1;COPY 4;").copies, 4);
    EXPECT_EQ(read("\tCOPY 4;").m_flags, 8192U) << "not skipped before a name";
    EXPECT_EQ(read("COP 4;").m_flags, 8192U);
    EXPECT_EQ(read("EXI 1;").m_flags, 8192U);
}

TEST(PrescribeParser, DoesNothingForCommandsWithoutParameters)
{
    for (const char* command :
         {"CMNT;", "COPY;", "DUPX;", "SPSZ;", "UNIT C;", "RES;", "FSET 1p12v0s0b4099T;"})
        EXPECT_EQ(read(command).m_flags, 8192U) << command;
}

struct Number {
    const char* command;
    int value;
};

TEST(PrescribeParser, OverwritesCopies)
{
    for (const Number& row : {Number{"COPY 3;", 3},
                              {"COPY 9;COPY 2;", 2},
                              {"COPY 0;", 1},
                              {"COPY -5;", 1},
                              {"COPY 20000;", 10000},
                              {"COPY x;", 1},
                              {"COPY ,;", 1}}) {
        EXPECT_EQ(read(row.command).copies, row.value) << row.command;
        EXPECT_EQ(read(row.command).m_flags, 8196U) << row.command;
    }
}

TEST(PrescribeParser, ReadsDuplexAsItIs)
{
    for (const Number& row : {Number{"DUPX 0;", 0},
                              {"DUPX 1;", 1},
                              {"DUPX 2;", 2},
                              {"DUPX 7;", 7},
                              {"DUPX -1;", -1},
                              {"DUPX 1;DUPX 0;", 0}}) {
        EXPECT_EQ(static_cast<int>(read(row.command).duplex), row.value) << row.command;
        EXPECT_EQ(read(row.command).m_flags, 8208U) << row.command;
    }
}

TEST(PrescribeParser, ReadsThePaperByItsCode)
{
    constexpr std::array<std::pair<int, Paper>, 8> papers{{{6, PaperLetter},
                                                           {7, PaperLegal},
                                                           {8, PaperA4},
                                                           {10, PaperA3},
                                                           {11, PaperB4},
                                                           {12, PaperLedger},
                                                           {13, PaperA5},
                                                           {18, PaperB5}}};

    for (int code = -2; code <= 300; ++code) {
        Paper expected = PaperOther;
        for (const auto& [known, paper] : papers)
            expected = known == code ? paper : expected;
        const JobInfo info = read("SPSZ " + std::to_string(code) + ";");
        EXPECT_EQ(info.paper, expected) << code;
        EXPECT_EQ(info.m_flags, 8200U);
    }
}

TEST(PrescribeParser, ReadsThePaperOfTheDriver)
{
    EXPECT_EQ(read("CMNT \"PaperSize=A4\";").paper, PaperA4);
    EXPECT_EQ(read("CMNT \"PaperSize=a4\";").paper, PaperA4);
    EXPECT_EQ(read("CMNT \"PaperSize=2100x2970\";").paper, PaperA4);
    EXPECT_EQ(read("CMNT \"PaperSize=nonsense\";").paper, PaperOther);
    EXPECT_EQ(read("CMNT \"PaperSize=nonsense\";").m_flags, 8200U);
    EXPECT_EQ(read("CMNT \"PaperSize=\";").m_flags, 8192U);
    EXPECT_EQ(read("CMNT \"papersize=A4\";").m_flags, 8192U);
}

std::string countsWithCopies(int copies, std::string_view commands)
{
    Reading reading("!R! " + std::string(commands) + "EXIT;");
    reading.pjl.jobInfo.copies = copies;
    reading.parser.parse();
    return counts(reading.parser.jobInfo);
}

TEST(PrescribeParser, TakesTheSummaryOfTheDriverForOneCopy)
{
    EXPECT_EQ(countsWithCopies(2, "CMNT \"Color=6\",\"Mono=4\"; "), "2/0/3");
    EXPECT_EQ(countsWithCopies(4, "CMNT \"Color=6\",\"Mono=3\"; "), "0/0/1");
    EXPECT_EQ(counts(read("CMNT \"Color=6\",\"Mono=4\"; ")), "4/0/6");
    EXPECT_EQ(counts(read("CMNT Color=6,Mono=4;")), "4/0/6");
    EXPECT_EQ(counts(read("CMNT Color=x,Mono=;")), "0/0/0");
    EXPECT_EQ(counts(read("CMNT Color=6;")), "unknown");
    EXPECT_EQ(counts(read("CMNT Color=6,Mono=4,x;")), "unknown");
    EXPECT_EQ(counts(read("CMNT Mono=4,Color=6;")), "unknown");
    EXPECT_EQ(counts(read("CMNT Color=6,Color=4;")), "unknown");
    EXPECT_EQ(counts(read("CMNT color=6,mono=4;")), "unknown");
}

TEST(PrescribeParser, FailsForASummaryOfZeroCopies)
{
    Reading reading("!R! CMNT Color=6,Mono=4;EXIT;"sv);
    reading.pjl.jobInfo.copies = 0;

    try {
        reading.parser.parse();
        ADD_FAILURE();
    } catch (const JobParserException& error) {
        EXPECT_STREQ(error.what(), "KX Driver: cannot set the page count, because PJL copy count is zero");
    }
    EXPECT_EQ(reading.job.file.m_offset, 24);
}

TEST(PrescribeParser, CountsThePagesOfTheDriverUntilItSumsThemUp)
{
    EXPECT_EQ(counts(read("CMNT Page=0;")), "1/0/0");
    EXPECT_EQ(counts(read("CMNT \"Page=1\";CMNT 'Page=1';CMNT Page=;CMNT Page=01;CMNT Page=2;")), "3/0/2");
    EXPECT_EQ(counts(read("CMNT Page=12;CMNT Page=1x;CMNT \"Page= 1\";")), "1/0/2")
        << "its first byte decides";
    EXPECT_EQ(counts(read("CMNT page=1;")), "unknown");
    EXPECT_EQ(counts(read("CMNT \"Page=1\";CMNT Color=6,Mono=4;CMNT \"Page=1\";CMNT Page=0;")), "4/0/6");
    EXPECT_EQ(counts(read("CMNT Color=6,Mono=4;CMNT Color=1,Mono=1;")), "1/0/1");
    EXPECT_EQ(counts(read("CMNT Color=6;CMNT Page=1;")), "0/0/1") << "a summary that is none stops nothing";
}

TEST(PrescribeParser, AddsUpTheBlocksOfAJob)
{
    Reading reading("!R!CMNT Page=0;EXIT;!R!CMNT Page=1;COPY 3;EXIT;!R!CMNT Color=6,Mono=4;EXIT;"
                    "!R!CMNT Page=0;EXIT;"sv);

    reading.parser.parse();
    reading.parser.parse();
    EXPECT_EQ(counts(reading.parser.jobInfo), "1/0/1");
    reading.parser.parse();
    reading.parser.parse();

    EXPECT_EQ(counts(reading.parser.jobInfo), "4/0/6");
    EXPECT_EQ(reading.parser.jobInfo.copies, 3);
    EXPECT_TRUE(reading.job.file.atEnd());
}

TEST(PrescribeParser, EndsAParameterAtAZeroByte)
{
    EXPECT_EQ(counts(read("CMNT \"Page=1\0x\";"sv)), "0/0/1");
    EXPECT_EQ(counts(read("CMNT \"Page=\0001\";"sv)), "1/0/0");
}

TEST(PrescribeParser, ReadsABlockInAString)
{
    Reading reading("0123456789"sv);
    reading.job.file.setPos(7);

    const auto chunks = reading.parser.getChunks("!R! COPY 5; EXIT; COPY 6;");

    EXPECT_EQ(chunksInWords(chunks), "0+7 ");
    EXPECT_EQ(reading.parser.jobInfo.copies, 5);
    EXPECT_EQ(reading.job.file.m_offset, 7);
    EXPECT_TRUE(reading.job.job.chunks.empty());
    EXPECT_EQ(chunksInWords(reading.parser.getChunks("!R! COPY 8;")), "0+7 ");
    EXPECT_EQ(reading.parser.jobInfo.copies, 8);
    EXPECT_EQ(chunksInWords(reading.parser.getChunks("")), "0+7 ");
    EXPECT_THROW(reading.parser.getChunks("!R! COPY 8"), JobParserException);
    EXPECT_THROW(reading.parser.getChunks("!R! ABCDE;"), JobParserException);
}

} // namespace
} // namespace JobParser::Prescribe
