#include "JobParser/languages/PjlParser.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "JobParser/JobParserException.h"
#include "JobParser/model/ChunkUel.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "tests/support/OpenJob.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Log/LogString.h"

using JobParser::Duplex;
using JobParser::JobInfo;
using JobParser::JobParserException;
using JobParser::Pdl;
using JobParser::Staple;
using Zem::Printer::OriginalBrand;

namespace
{

/// The lines that the chunks of a job dump.
std::string chunksOf(const JobParser::Job& job)
{
    Torv::Log::LogString log;
    for (const auto& chunk : job.chunks)
        chunk->dump(log);
    return log.getAndClear();
}

struct ParsedJob : OpenJob {
    explicit ParsedJob(const JobBytes& bytes) : OpenJob(bytes), parser(parent), pdl(parser.parse()) {}

    JobParser::Pjl::Parser parser;
    Pdl pdl;
};

struct EndRow {
    const char* name;
    JobBytes bytes;
    Pdl pdl;
    std::int64_t position;
    const char* chunks;
};

class PjlBlock : public testing::TestWithParam<EndRow>
{
};

struct EnterRow {
    const char* name;
    const char* line;
    Pdl pdl;
};

class PjlEnter : public testing::TestWithParam<EnterRow>
{
};

struct SignatureRow {
    const char* name;
    const char* comment;
    OriginalBrand brand;
};

class PjlComment : public testing::TestWithParam<SignatureRow>
{
};

struct InfoRow {
    const char* name;
    const char* comment;
    bool duplexOn;
    int copies; ///< 0 if none are known.
};

class PjlInfoComment : public testing::TestWithParam<InfoRow>
{
};

template <typename Row> std::string nameOf(const testing::TestParamInfo<Row>& info)
{
    return info.param.name;
}

} // namespace

TEST(PjlParser, StartsWithoutAnyFacts)
{
    OpenJob job("");
    const JobParser::Pjl::Parser parser(job.parent);

    EXPECT_EQ(parser.processingType, JobParser::Pjl::ProcessingType::None);
    EXPECT_EQ(parser.currentCmd.cmd, "");
    EXPECT_EQ(parser.currentCmd.param, "");
    EXPECT_EQ(parser.duplexOn, std::optional(false));
    EXPECT_EQ(parser.binding, Duplex::OneSided);
    EXPECT_EQ(parser.jobInfo.flags(JobInfo::AllFlags), 0);
    EXPECT_FALSE(parser.jobInfo.pjl);
    EXPECT_FALSE(parser.stapleRotation.has_value());
    EXPECT_FALSE(parser.punchRotation.has_value());
    EXPECT_EQ(&parser.job, &job.job);
    EXPECT_EQ(&parser.file, &job.file);
    EXPECT_EQ(&parser.paperList, &job.papers);
}

TEST_P(PjlBlock, EndsWhereSomethingElseBegins)
{
    const ParsedJob job(GetParam().bytes);

    EXPECT_EQ(job.pdl, GetParam().pdl);
    EXPECT_EQ(job.file.m_offset, GetParam().position);
    EXPECT_EQ(chunksOf(job.job), GetParam().chunks);
    EXPECT_TRUE(job.parser.jobInfo.pjl);
}

INSTANTIATE_TEST_SUITE_P(
    , PjlBlock,
    testing::Values(
        EndRow{"AtEnterLanguage", JobBytes().pjl("SET COPIES=2").pjl("ENTER LANGUAGE=PCL").esc("E"),
               Pdl::Pcl5, 44, "@PJL SET COPIES=2\n@PJL ENTER LANGUAGE=PCL\n"},
        EndRow{"AtAnEscapeSequence", JobBytes().pjl("SET COPIES=2").esc("E"), Pdl::Pcl5, 19,
               "@PJL SET COPIES=2\n@PJL ENTER LANGUAGE=PCL\n"},
        EndRow{"AtAUel", JobBytes().pjl("EOJ").uel().raw("%!PS"), Pdl::Unknown, 19, "@PJL EOJ\nUEL\n"},
        EndRow{"AtAUelThatEndsTheJob", JobBytes().pjl("EOJ").uel(), Pdl::Unknown, 19, "@PJL EOJ\nUEL\n"},
        EndRow{"AtTheEndOfTheJob", JobBytes().pjl("EOJ"), Pdl::Unknown, 10, "@PJL EOJ\nUEL\n"},
        EndRow{"AtOnceInAnEmptyJob", JobBytes(), Pdl::Unknown, 0, "UEL\n"},
        EndRow{"AtPrescribe", JobBytes().pjl("A").raw("!R! EXIT;"), Pdl::Prescribe, 8, "@PJL A\n"},
        EndRow{"AtPrescribeInLowerCase", JobBytes().pjl("A").raw("!r! EXIT;"), Pdl::Prescribe, 8, "@PJL A\n"},
        EndRow{"NotAtAUelWithPjl",
               JobBytes().pjl("A").uel().pjl("B").uel().pjl("ENTER LANGUAGE=XPS").raw("PK"), Pdl::Xps, 59,
               "@PJL A\nUEL\n@PJL B\nUEL\n@PJL ENTER LANGUAGE=XPS\n"},
        EndRow{"NotAtABareLine", JobBytes().pjl().pjl("A").uel(), Pdl::Unknown, 23, "@PJL\n@PJL A\nUEL\n"},
        EndRow{"NotAtALineWithoutItsEnd", JobBytes().raw("@PJL COMMENT A ").pjl("SET QTY=2").uel(),
               Pdl::Unknown, 40, "@PJL COMMENT A\n@PJL SET QTY=2\nUEL\n"},
        EndRow{"NotAtOtherText", JobBytes().pjl("A").raw("junk\r\n\x01").pjl("B").uel(), Pdl::Unknown, 32,
               "@PJL A\n@PJL B\nUEL\n"}),
    nameOf<EndRow>);

TEST_P(PjlEnter, TellsTheLanguage)
{
    const ParsedJob job(JobBytes().pjl(GetParam().line).pjl("SET COPIES=2"));

    EXPECT_EQ(job.pdl, GetParam().pdl);
    EXPECT_EQ(job.parser.jobInfo.pdl, GetParam().pdl);
    EXPECT_NE(job.parser.jobInfo.flags(JobInfo::FlagPdl), 0);
    EXPECT_EQ(job.job.chunks.size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(, PjlEnter,
                         testing::Values(EnterRow{"Pcl", "ENTER LANGUAGE=PCL", Pdl::Pcl5},
                                         EnterRow{"PostScript", "ENTER LANGUAGE=POSTSCRIPT", Pdl::PostScript},
                                         EnterRow{"PclXl", "ENTER LANGUAGE=PCLXL", Pdl::PclXl},
                                         EnterRow{"Pdf", "ENTER LANGUAGE=PDF", Pdl::Pdf},
                                         EnterRow{"LowerCase", "enter language=postscript", Pdl::PostScript},
                                         EnterRow{"BlanksAround", "ENTER LANGUAGE \t= \tPCL \t", Pdl::Pcl5},
                                         EnterRow{"AnyName", "ENTER PERSONALITY=PCL", Pdl::Pcl5},
                                         EnterRow{"SecondEqualSign", "ENTER LANGUAGE==PCL", Pdl::Unknown},
                                         EnterRow{"UnknownLanguage", "ENTER LANGUAGE=KLINGON", Pdl::Unknown},
                                         EnterRow{"EmptyLanguage", "ENTER LANGUAGE=", Pdl::Unknown},
                                         EnterRow{"NoEqualSign", "ENTER PCL", Pdl::Unknown},
                                         EnterRow{"NoParameter", "ENTER", Pdl::Unknown}),
                         nameOf<EnterRow>);

TEST(PjlParser, ForgetsTheLanguageAtAnEnterWithoutOne)
{
    OpenJob job(JobBytes().pjl("ENTER LANGUAGE=PCL").pjl("ENTER"));
    JobParser::Pjl::Parser parser(job.parent);

    EXPECT_EQ(parser.parse(), Pdl::Pcl5);
    EXPECT_EQ(parser.parse(), Pdl::Unknown);
    EXPECT_EQ(parser.jobInfo.pdl, Pdl::Unknown);
}

TEST_P(PjlComment, TellsTheBrand)
{
    const ParsedJob job(JobBytes().pjl(GetParam().comment));

    EXPECT_EQ(job.parser.jobInfo.originalBrand, GetParam().brand);
    EXPECT_EQ(job.parser.jobInfo.flags(JobInfo::FlagOriginalBrand) != 0,
              GetParam().brand != OriginalBrand::None);
}

INSTANTIATE_TEST_SUITE_P(
    , PjlComment,
    testing::Values(
        SignatureRow{"Lexmark", "COMMENT Lexmark Universal", OriginalBrand::Lexmark},
        SignatureRow{"LexmarkAlone", "comment Lexmark", OriginalBrand::Lexmark},
        SignatureRow{"Toshiba", "COMMENT TOSHIBA e-STUDIO", OriginalBrand::Toshiba},
        SignatureRow{"Samsung", "COMMENT \"DriverName=Samsung Universal\"", OriginalBrand::Samsung},
        SignatureRow{"HpUniversal", "COMMENT \"HP Universal Printing\"", OriginalBrand::Hp},
        SignatureRow{"HpUni", "COMMENT \"HP UNI x\"", OriginalBrand::Hp},
        SignatureRow{"EqualSignBeforeTheSignature", "COMMENT=Lexmark", OriginalBrand::Lexmark},
        SignatureRow{"LexmarkInCapitals", "COMMENT LEXMARK", OriginalBrand::None},
        SignatureRow{"LexmarkInQuotationMarks", "COMMENT \"Lexmark\"", OriginalBrand::None},
        SignatureRow{"LexmarkNotAtTheStart", "COMMENT a Lexmark", OriginalBrand::None},
        SignatureRow{"ToshibaInLowerCase", "COMMENT Toshiba", OriginalBrand::None},
        SignatureRow{"SamsungWithoutItsQuotationMark", "COMMENT DriverName=Samsung", OriginalBrand::None},
        SignatureRow{"SamsungInCapitals", "COMMENT \"DriverName=SAMSUNG", OriginalBrand::None},
        SignatureRow{"HpUniversalWithoutItsBlank", "COMMENT \"HP Universal\"", OriginalBrand::None},
        SignatureRow{"HpUniversalWithoutItsQuotationMark", "COMMENT HP Universal x", OriginalBrand::None},
        SignatureRow{"HpUniWithoutItsBlank", "COMMENT \"HP UNI\"", OriginalBrand::None},
        SignatureRow{"Info", "COMMENT \"INFO:Lexmark\"", OriginalBrand::None},
        SignatureRow{"Empty", "COMMENT", OriginalBrand::None},
        SignatureRow{"OtherCommand", "REMARK Lexmark", OriginalBrand::None}),
    nameOf<SignatureRow>);

TEST(PjlParser, KeepsTheBrandReadLast)
{
    const ParsedJob commentLast(JobBytes().pjl("SET KCOLORMODE=MONO").pjl("COMMENT Lexmark"));
    const ParsedJob setLast(JobBytes().pjl("COMMENT Lexmark").pjl("SET KCOLORMODE=MONO"));

    EXPECT_EQ(commentLast.parser.jobInfo.originalBrand, OriginalBrand::Lexmark);
    EXPECT_EQ(setLast.parser.jobInfo.originalBrand, OriginalBrand::KxDriver);
}

TEST_P(PjlInfoComment, TellsDuplexAndCopies)
{
    const ParsedJob job(JobBytes().pjl(GetParam().comment));

    EXPECT_EQ(job.parser.duplexOn, std::optional(GetParam().duplexOn));
    EXPECT_EQ(job.parser.jobInfo.flags(JobInfo::FlagCopies) != 0, GetParam().copies != 0);
    if (GetParam().copies != 0) {
        EXPECT_EQ(job.parser.jobInfo.copies, GetParam().copies);
    }
    EXPECT_EQ(job.parser.jobInfo.flags(JobInfo::FlagDuplex | JobInfo::FlagOriginalBrand), 0);
}

INSTANTIATE_TEST_SUITE_P(
    , PjlInfoComment,
    testing::Values(InfoRow{"Both", "COMMENT \"INFO:DUPLEX ON;QTY 3\"", true, 3},
                    InfoRow{"Blanks", "COMMENT \"INFO: \tDUPLEX ON ; QTY  3 ;\"", true, 3},
                    InfoRow{"DuplexOff", "COMMENT \"INFO:DUPLEX OFF\"", false, 0},
                    InfoRow{"DuplexBeginsWithOn", "COMMENT \"INFO:DUPLEX ONCE\"", true, 0},
                    InfoRow{"DuplexInLowerCase", "COMMENT \"INFO:duplex ON;DUPLEX on\"", false, 0},
                    InfoRow{"DuplexWithTwoBlanks", "COMMENT \"INFO:DUPLEX  ON\"", false, 0},
                    InfoRow{"DuplexWithoutAValue", "COMMENT \"INFO:DUPLEX ;X\"", false, 0},
                    InfoRow{"LaterDuplexWins", "COMMENT \"INFO:DUPLEX ON;DUPLEX OFF\"", false, 0},
                    InfoRow{"LaterQuantityWins", "COMMENT \"INFO:QTY 5;QTY 3;\"", false, 3},
                    InfoRow{"QuantityInLowerCase", "COMMENT \"INFO:qty 5\"", false, 0},
                    InfoRow{"QuantityWithoutABlank", "COMMENT \"INFO:QTY5;QTY\"", false, 0},
                    InfoRow{"QuantityIsClamped", "COMMENT \"INFO:QTY 20000\"", false, 10000},
                    InfoRow{"QuantityBelowOne", "COMMENT \"INFO:QTY -2\"", false, 1},
                    InfoRow{"OtherItems", "COMMENT \"INFO:;;A B;X DUPLEX ON;\"", false, 0},
                    InfoRow{"Nothing", "COMMENT \"INFO:", false, 0},
                    InfoRow{"NoQuotationMark", "COMMENT INFO:DUPLEX ON;QTY 3", false, 0},
                    InfoRow{"LowerCase", "COMMENT \"info:DUPLEX ON;QTY 3\"", false, 0}),
    nameOf<InfoRow>);

TEST(PjlParser, TakesTheQuantityOfACommentOverGreaterCopies)
{
    const ParsedJob job(JobBytes().pjl("SET COPIES=9").pjl("COMMENT \"INFO:QTY 3;\"").pjl("SET QTY=2"));

    EXPECT_EQ(job.parser.jobInfo.copies, 3);
}

TEST(PjlParser, PassesOnThatAQuantityIsNoNumber)
{
    OpenJob job(JobBytes().pjl("COMMENT \"INFO:QTY x\""));
    JobParser::Pjl::Parser parser(job.parent);

    EXPECT_THROW(parser.parse(), std::invalid_argument);
    EXPECT_EQ(chunksOf(job.job), "@PJL COMMENT \"INFO:QTY x\"\n");
}

TEST(PjlParser, PassesOnThatAQuantityIsTooLarge)
{
    OpenJob job(JobBytes().pjl("COMMENT \"INFO:QTY 99999999999\""));
    JobParser::Pjl::Parser parser(job.parent);

    EXPECT_THROW(parser.parse(), std::out_of_range);
}

TEST(PjlParser, SetsTheDuplexOnlyFromDuplexAndBindingTogether)
{
    const struct {
        JobBytes bytes;
        int known;
        Duplex duplex;
    } rows[] = {
        {JobBytes().pjl("SET DUPLEX=ON").pjl("SET BINDING=LONGEDGE"), 16, Duplex::LongEdge},
        {JobBytes().pjl("SET BINDING=SHORTEDGE").pjl("SET DUPLEX=ON"), 16, Duplex::ShortEdge},
        {JobBytes().pjl("SET DUPLEX=ON"), 0, Duplex::OneSided},
        {JobBytes().pjl("SET BINDING=LONGEDGE"), 0, Duplex::OneSided},
        {JobBytes().pjl("SET BINDING=LONGEDGE").pjl("SET DUPLEX=ON").pjl("SET DUPLEX=OFF"), 0,
         Duplex::OneSided},
        {JobBytes().pjl("SET BINDING=LONGEDGE").pjl("COMMENT \"INFO:DUPLEX ON\""), 16, Duplex::LongEdge},
        {JobBytes().pjl("SET BINDING=LONGEDGE").pjl("SET DUPLEX=ON").pjl("COMMENT \"INFO:DUPLEX OFF\""), 0,
         Duplex::OneSided},
        {JobBytes().pjl("SET DUPLEX=ON").pjl("SET BINDING=SHORTEDGE").pjl("XCPT <sides>one-sided</sides>"),
         16, Duplex::ShortEdge},
        {JobBytes()
             .pjl("SET DUPLEX=OFF")
             .pjl("SET BINDING=SHORTEDGE")
             .pjl("XCPT <sides>two-sided-long-edge</sides>"),
         16, Duplex::LongEdge},
    };
    for (const auto& row : rows) {
        const ParsedJob job(row.bytes);

        EXPECT_EQ(job.parser.jobInfo.flags(JobInfo::FlagDuplex), row.known) << row.bytes.str();
        EXPECT_EQ(job.parser.jobInfo.duplex, row.duplex) << row.bytes.str();
    }
}

TEST(PjlParser, CarriesDuplexAndBindingOverToTheNextBlock)
{
    OpenJob job(JobBytes().pjl("SET DUPLEX=ON").uel().raw("x").pjl("SET BINDING=LONGEDGE"));
    JobParser::Pjl::Parser parser(job.parent);

    parser.parse();
    EXPECT_EQ(parser.jobInfo.flags(JobInfo::FlagDuplex), 0);

    parser.parse();
    EXPECT_EQ(parser.jobInfo.duplex, Duplex::LongEdge);
}

TEST(PjlParser, SetsNoDuplexInABlockThatFails)
{
    OpenJob job(JobBytes().pjl("SET DUPLEX=ON").pjl("SET BINDING=LONGEDGE").raw("@PJx"));
    JobParser::Pjl::Parser parser(job.parent);

    EXPECT_THROW(parser.parse(), JobParserException);
    EXPECT_EQ(parser.jobInfo.flags(JobInfo::FlagDuplex), 0);
    EXPECT_TRUE(parser.jobInfo.pjl);
    EXPECT_EQ(chunksOf(job.job), "@PJL SET DUPLEX=ON\n@PJL SET BINDING=LONGEDGE\n");
}

TEST(PjlParser, TakesEachXcptLineForATicket)
{
    const ParsedJob copies(JobBytes().pjl("XCPT <copies syntax=\"integer\">4</copies>"));
    const ParsedJob anything(JobBytes().pjl("xcpt"));

    EXPECT_EQ(copies.parser.jobInfo.copies, 4);
    EXPECT_EQ(copies.parser.jobInfo.originalBrand, OriginalBrand::XcptTicket);
    EXPECT_EQ(anything.parser.jobInfo.originalBrand, OriginalBrand::XcptTicket);
    EXPECT_EQ(anything.parser.jobInfo.flags(JobInfo::AllFlags), 8192);
}

TEST(PjlParser, MakesAChunkOfItsOwnForEachLine)
{
    const ParsedJob job(JobBytes().pjl("A 1").pjl("B 2").uel());

    ASSERT_EQ(job.job.chunks.size(), 3U);
    EXPECT_NE(dynamic_cast<const JobParser::ChunkPjlCmd*>(job.job.chunks[0].get()), nullptr);
    EXPECT_NE(dynamic_cast<const JobParser::ChunkPjlCmd*>(job.job.chunks[1].get()), nullptr);
    EXPECT_NE(dynamic_cast<const JobParser::ChunkUel*>(job.job.chunks[2].get()), nullptr);
    EXPECT_EQ(chunksOf(job.job), "@PJL A 1\n@PJL B 2\nUEL\n");
}

TEST(PjlParser, WritesItsLinesBack)
{
    const std::string bytes = JobBytes().pjl("JOB NAME=\"a b\"").pjl().pjl("SET COPIES=2").uel().str();
    OpenJob job(bytes);
    JobParser::Pjl::Parser(job.parent).parse();
    Torv::IO::StringStream stream;

    job.job.save(job.file, stream);

    EXPECT_EQ(stream.str(), bytes);
    EXPECT_NO_THROW(job.job.checkChunkSizes(job.file));
}

TEST(PjlParser, EndsAJobThatIsCutAnywhereInAResultOrAnException)
{
    const std::string bytes = JobBytes()
                                  .pjl("SET COPIES=2")
                                  .raw("\n\njunk")
                                  .pjl("COMMENT \"INFO:DUPLEX ON;QTY 3\"")
                                  .pjl("COMMENT 5@6 @PJL SET PROCESSINGTYPE=\"PUNCH\"")
                                  .pjl("SET PROCESSINGOPTION=\"LEFT_2PT\"")
                                  .uel()
                                  .pjl()
                                  .pjl("XCPT <copies>4</copies>")
                                  .pjl("ENTER LANGUAGE=PCL")
                                  .str();
    int announced = 0;
    int ended = 0;
    int failed = 0;
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        OpenJob job(std::string_view(bytes).substr(0, size));
        JobParser::Pjl::Parser parser(job.parent);
        try {
            (parser.parse() == Pdl::Pcl5 ? announced : ended)++;
        } catch (const JobParserException&) {
            ++failed;
        }
    }

    // Eight pieces of a UEL look like PCL, and the whole job says so.
    EXPECT_EQ(announced, 9);
    EXPECT_EQ(ended, 13);
    EXPECT_EQ(failed, 199);
}
