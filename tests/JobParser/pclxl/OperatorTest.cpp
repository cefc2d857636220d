#include "JobParser/pclxl/Operator.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "JobParser/pclxl/JobChunkPclXLAttribute.h"
#include "JobParser/pclxl/PclXLParser.h"
#include "tests/support/OpenJob.h"
#include "tests/support/PclXlBytes.h"

#include "Torv/GenericException.h"
#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;

constexpr int beginSession = 65;
constexpr int endSession = 66;
constexpr int beginPage = 67;
constexpr int endPage = 68;
constexpr int comment = 71;
constexpr int beginFontHeader = 79;

constexpr int mediaSize = 37;
constexpr int orientation = 40;
constexpr int customMediaSize = 47;
constexpr int pageCopies = 49;
constexpr int simplexPageMode = 52;
constexpr int duplexPageMode = 53;
constexpr int commentData = 129;
constexpr int errorReport = 143;
constexpr int fontName = 168;

/// A stream, read to its end.
class Stream
{
public:
    explicit Stream(PclXlBytes bytes)
        : m_job(bytes.op(endSession).str()),
          parser(m_job.file, [this](const std::string& block) { blocks.push_back(block); })
    {
        parser.parse();
    }

    std::vector<int> media() const
    {
        std::vector<int> numbers;
        for (const EMediaSize each : parser.m_mediaSizes)
            numbers.push_back(static_cast<int>(each));
        return numbers;
    }

    /// The operators that became chunks, each with its attributes in brackets: `v` for a value, `r` for a
    /// range.
    std::string operators() const
    {
        std::string words;
        for (const auto& each : parser.m_chunks) {
            const auto* op = dynamic_cast<const JobChunkPclXLOperator*>(each.get());
            if (op == nullptr)
                continue;
            words += std::to_string(static_cast<int>(op->m_operator)) + "[";
            for (const auto& attribute : op->attributes) {
                const bool isRange = dynamic_cast<JobChunkPclXLRaw*>(attribute->chunk.get()) != nullptr;
                words += (isRange ? "r" : "v") + std::to_string(static_cast<int>(attribute->attribute));
            }
            words += "]";
        }
        return words;
    }

private:
    OpenJob m_job;

public:
    std::vector<std::string> blocks;
    PclXLParser parser;
};

PclXlBytes wide(PclXlBytes bytes, std::string_view text, int attribute)
{
    bytes.array(0xC9, static_cast<std::int64_t>(text.size()), 2);
    for (const char character : text)
        bytes.op(character).op(0);
    return bytes.id(attribute);
}

PclXlBytes commentOf(std::string_view text)
{
    return PclXlBytes().text(text, commentData, 4).op(comment);
}

PclXlBytes comments(const std::vector<std::string_view>& texts)
{
    PclXlBytes bytes;
    for (const std::string_view text : texts)
        bytes.raw(commentOf(text).str());
    return bytes;
}

// --- BeginSession

TEST(Operator, KeepsOneValueOfASession)
{
    const Stream stream(
        PclXlBytes().ubyte(0, 134).ubyte(2, errorReport).ubyte(2, mediaSize).op(beginSession));

    EXPECT_EQ(stream.operators(), "65[r134v143r37]");
    EXPECT_TRUE(stream.media().empty()) << "it is no page";
}

// --- BeginPage

TEST(Operator, CollectsTheMediaOfAllPages)
{
    const Stream stream(PclXlBytes()
                            .ubyte(5, mediaSize)
                            .op(beginPage)
                            .text("a4", mediaSize)
                            .op(beginPage)
                            .raw(wide({}, "Letter", mediaSize).str())
                            .op(beginPage)
                            .ubyte(5, mediaSize)
                            .op(beginPage));

    EXPECT_EQ(stream.media(), (std::vector<int>{0, 2, 5}));
    EXPECT_EQ(stream.operators(), "67[v37]67[v37]67[v37]67[v37]");
}

TEST(Operator, TakesAMediumOfAWideTypeFromItsFirstByte)
{
    EXPECT_EQ(Stream(PclXlBytes().uint16(0x105, mediaSize).op(beginPage)).media(), (std::vector<int>{5}));
}

TEST(Operator, CollectsUnknownNamesOfMediaUnderOneNumber)
{
    const Stream stream(PclXlBytes().text("nothing", mediaSize).text("12x17.3", mediaSize).op(beginPage));

    EXPECT_EQ(stream.media(), (std::vector<int>{231}));
}

TEST(Operator, KeepsAValueWithoutBytesAsARange)
{
    const Stream stream(PclXlBytes()
                            .text("", mediaSize)
                            .array(0xC8, 0, 1)
                            .id(orientation)
                            .array(0xC8, 0, 1)
                            .id(duplexPageMode)
                            .op(beginPage));

    EXPECT_EQ(stream.operators(), "67[r37r40r53]");
    EXPECT_EQ(stream.media(), (std::vector<int>{231}));
    EXPECT_EQ(stream.parser.m_orientation, Orientation::Portrait) << "no byte counts as 0";
    EXPECT_EQ(stream.parser.m_duplex, Duplex::ShortEdge) << "no byte counts as 0";
}

TEST(Operator, LeavesOtherAttributesOfAPageUnread)
{
    const Stream stream(PclXlBytes()
                            .value(0xD1, "abcd", customMediaSize)
                            .ubyte(1, 38)
                            .text("Plain", 39)
                            .ubyte(1, 54)
                            .op(beginPage));

    EXPECT_EQ(stream.operators(), "67[r47r38r39r54]");
    EXPECT_TRUE(stream.media().empty());
    EXPECT_EQ(stream.parser.m_duplex, Duplex::OneSided);
}

TEST(Operator, TakesTheOrientationOfTheLastPageThatTellsIt)
{
    const Stream stream(
        PclXlBytes().ubyte(0, orientation).op(beginPage).ubyte(3, orientation).op(beginPage).op(beginPage));
    const Stream strange(PclXlBytes().ubyte(200, orientation).op(beginPage));

    EXPECT_EQ(stream.parser.m_orientation, Orientation::ReverseLandscape);
    EXPECT_EQ(static_cast<int>(strange.parser.m_orientation), 200) << "kept as it is";
}

Duplex duplexOf(PclXlBytes bytes)
{
    return Stream(std::move(bytes)).parser.m_duplex;
}

TEST(Operator, TakesTheDuplexModeOfTheLastAttributeThatTellsIt)
{
    EXPECT_EQ(duplexOf(PclXlBytes().ubyte(0, duplexPageMode).op(beginPage)), Duplex::ShortEdge);
    EXPECT_EQ(duplexOf(PclXlBytes().ubyte(1, duplexPageMode).op(beginPage)), Duplex::LongEdge);
    EXPECT_EQ(duplexOf(PclXlBytes().ubyte(7, duplexPageMode).op(beginPage)), Duplex::LongEdge);
    EXPECT_EQ(duplexOf(PclXlBytes().ubyte(1, duplexPageMode).ubyte(9, simplexPageMode).op(beginPage)),
              Duplex::OneSided);
    EXPECT_EQ(duplexOf(PclXlBytes().ubyte(0, simplexPageMode).ubyte(1, duplexPageMode).op(beginPage)),
              Duplex::LongEdge);
    EXPECT_EQ(
        duplexOf(PclXlBytes().ubyte(1, duplexPageMode).op(beginPage).ubyte(0, simplexPageMode).op(beginPage)),
        Duplex::OneSided);
    EXPECT_EQ(duplexOf(PclXlBytes().ubyte(1, duplexPageMode).op(beginPage).op(beginPage)), Duplex::LongEdge);
    EXPECT_EQ(
        Stream(PclXlBytes().ubyte(1, simplexPageMode).ubyte(1, duplexPageMode).op(beginPage)).operators(),
        "67[r52v53]");
}

TEST(Operator, RefusesANameOfAMediumThatIsNoText)
{
    try {
        Stream(PclXlBytes().array(0xCA, 1, 1).raw("abcd").id(mediaSize).op(beginPage));
        FAIL();
    } catch (const Torv::GenericException& error) {
        EXPECT_STREQ(error.what(), "The value of attribute is not a string!");
    }
}

// --- EndPage

std::uint32_t copiesOf(PclXlBytes bytes)
{
    return Stream(std::move(bytes.op(endPage))).parser.m_copies;
}

TEST(Operator, ReadsTheCopiesOfAPage)
{
    EXPECT_EQ(copiesOf(PclXlBytes().uint16(3, pageCopies)), 3U);
    EXPECT_EQ(copiesOf(PclXlBytes().ubyte(200, pageCopies)), 200U);
    EXPECT_EQ(copiesOf(PclXlBytes().value(0xC2, "\x01\0\x01\0"sv, pageCopies)), 65537U);
    EXPECT_EQ(copiesOf(PclXlBytes().value(0xC3, "\xFF\xFF", pageCopies)), 4294967295U);
    EXPECT_EQ(copiesOf(PclXlBytes().value(0xC5, "\0\0\x20\x40"sv, pageCopies)), 2U);
    EXPECT_EQ(copiesOf(PclXlBytes()), 1U);
    EXPECT_EQ(copiesOf(PclXlBytes().uint16(3, pageCopies).uint16(4, pageCopies)), 4U);
    EXPECT_EQ(Stream(PclXlBytes().uint16(3, pageCopies).ubyte(1, mediaSize).op(endPage)).operators(),
              "68[v49r37]");
}

TEST(Operator, RefusesCopiesThatAreNoNumber)
{
    for (const auto& bytes :
         {PclXlBytes().value(0xD1, "\x01\0\x01\0"sv, pageCopies), PclXlBytes().text("ab", pageCopies),
          PclXlBytes().text("", pageCopies), PclXlBytes().value(0xD0, "ab", pageCopies),
          PclXlBytes().value(0xC2, "\xFF\xFF\xFF\xFF", pageCopies),
          PclXlBytes().value(0xC5, "\0\0\xC0\x7F"sv, pageCopies)})
        EXPECT_THROW(copiesOf(bytes), Torv::VariantInvalidOperationException);
}

// --- All of them

// Where much follows, most of the stream goes by in bulk.
TEST(Operator, IsReadInTheMiddleOfAStreamAsAtItsEnd)
{
    const PclXlBytes bytes = PclXlBytes()
                                 .ubyte(2, 137)
                                 .op(beginSession)
                                 .ubyte(2, mediaSize)
                                 .op(beginPage)
                                 .text("Courier", fontName)
                                 .op(beginFontHeader)
                                 .text("!R! EXIT;", commentData)
                                 .op(comment)
                                 .uint16(3, pageCopies)
                                 .op(endPage);
    const Stream atEnd(bytes);
    const Stream inMiddle(PclXlBytes(bytes).raw(std::string(300, '\x50')));

    for (const Stream* stream : {&atEnd, &inMiddle}) {
        EXPECT_EQ(stream->parser.m_fonts, std::set<std::string>{"Courier"});
        EXPECT_EQ(stream->parser.m_pageCount, 3U);
        EXPECT_EQ(stream->parser.m_mediaSizes.size(), 1U);
        EXPECT_EQ(stream->blocks, std::vector<std::string>{"!R! EXIT;"});
    }
    EXPECT_EQ(inMiddle.operators(), atEnd.operators());
}

// --- BeginFontHeader

TEST(Operator, CollectsTheNamesOfFontsWithoutKeepingTheOperator)
{
    const Stream stream(PclXlBytes()
                            .text("Courier", fontName)
                            .ubyte(0, 169)
                            .op(beginFontHeader)
                            .text("Arial", fontName)
                            .op(beginFontHeader)
                            .text("Courier", fontName)
                            .op(beginFontHeader));

    EXPECT_EQ(stream.parser.m_fonts, (std::set<std::string>{"Arial", "Courier"}));
    EXPECT_EQ(stream.operators(), "");
}

TEST(Operator, TakesTheBytesOfAFontNameAsTheyAre)
{
    const Stream stream(PclXlBytes()
                            .raw(wide({}, "ab", fontName).str())
                            .op(beginFontHeader)
                            .value(0xC2, "1234", fontName)
                            .op(beginFontHeader)
                            .text("", fontName)
                            .op(beginFontHeader));

    EXPECT_EQ(stream.parser.m_fonts, (std::set<std::string>{"", "1234", std::string("a\0b\0", 4)}));
}

// --- Comment

TEST(Operator, GivesAPrescribeBlockOfACommentWithoutKeepingTheOperator)
{
    const Stream stream(commentOf("before !R! COPY 2; EXIT; behind"));

    EXPECT_EQ(stream.blocks, (std::vector<std::string>{"!R! COPY 2; EXIT;"}));
    EXPECT_EQ(stream.operators(), "");
    EXPECT_FALSE(stream.parser.m_lexmarkEnhanced);
}

TEST(Operator, JoinsABlockThatStandsInSeveralComments)
{
    EXPECT_EQ(Stream(comments({"x!R! A;", "B;", " EXIT; x"})).blocks,
              (std::vector<std::string>{"!R! A;B; EXIT;"}));
    EXPECT_EQ(Stream(comments({"!R! A;", "x EX", "IT; EXIT;"})).blocks,
              (std::vector<std::string>{"!R! A;x EXIT; EXIT;"}))
        << "an end that is cut is found in no comment";
    EXPECT_EQ(Stream(comments({"!R! A;", "", "!R! EXIT;"})).blocks,
              (std::vector<std::string>{"!R! A;!R! EXIT;"}));
}

TEST(Operator, GivesEachBlockOfAComment)
{
    EXPECT_EQ(Stream(commentOf("!R!1EXIT;x!R!2EXIT;")).blocks,
              (std::vector<std::string>{"!R!1EXIT;", "!R!2EXIT;"}));
    EXPECT_EQ(Stream(comments({"!R!1EXIT;ab", "cd", "!R!2EXIT;!R!3", "EXIT;"})).blocks,
              (std::vector<std::string>{"!R!1EXIT;", "!R!2EXIT;", "!R!3EXIT;"}))
        << "what stands between blocks is of neither";
}

TEST(Operator, FindsBlocksInTextOfWideCharacters)
{
    EXPECT_EQ(Stream(wide({}, "a!R! EXIT;", commentData).op(comment)).blocks,
              (std::vector<std::string>{"!R! EXIT;"}));
}

TEST(Operator, ComparesTheEndsOfABlockExactly)
{
    EXPECT_TRUE(Stream(comments({"!r! EXIT;", "! R! EXIT;", "!R", "!"})).blocks.empty());
    EXPECT_EQ(Stream(comments({"!R! exit; EXIT;"})).blocks, (std::vector<std::string>{"!R! exit; EXIT;"}));
}

TEST(Operator, DropsABlockThatGrowsWithoutEnd)
{
    const std::string much(0xFFFFF, 'x');

    const Stream justEnough(comments({"!R!" + much.substr(3), "y", "zEXIT;"}));
    const Stream tooMuch(comments({"!R!" + much.substr(2), "y", "zEXIT;", "!R!EXIT;"}));

    EXPECT_EQ(justEnough.blocks.size(), 1U);
    EXPECT_EQ(justEnough.blocks.at(0).size(), 0xFFFFFU + 1 + 6);
    EXPECT_EQ(tooMuch.blocks, (std::vector<std::string>{"!R!EXIT;"}));
}

TEST(Operator, EndsALongBlockWhateverItsSize)
{
    const std::string much(0x200000, 'x');

    EXPECT_EQ(Stream(comments({"!R!" + much, "EXIT;"})).blocks,
              (std::vector<std::string>{"!R!" + much + "EXIT;"}));
}

TEST(Operator, KeepsACommentWithTheMarkOfLexmarksDriver)
{
    const Stream stream(commentOf("x Lexmark Enhanced y"));

    EXPECT_EQ(stream.operators(), "71[v129]");
    EXPECT_TRUE(stream.parser.m_lexmarkEnhanced);
    EXPECT_TRUE(stream.parser.m_swapBinding);
}

TEST(Operator, ComparesTheMarkExactly)
{
    for (const char* text : {"lexmark Enhanced", "Lexmark Enhance", "Lexmark  Enhanced!", ""}) {
        const Stream stream(commentOf(text));
        EXPECT_EQ(stream.operators(), "") << text;
        EXPECT_FALSE(stream.parser.m_lexmarkEnhanced || stream.parser.m_swapBinding) << text;
    }
}

TEST(Operator, FindsTheMarkBehindABlockButNotInFrontOfOne)
{
    EXPECT_EQ(Stream(commentOf("!R!EXIT;Lexmark Enhanced")).operators(), "71[v129]");
    EXPECT_EQ(Stream(commentOf("Lexmark Enhanced!R!EXIT;")).operators(), "");
    EXPECT_EQ(Stream(comments({"!R!", "Lexmark Enhanced"})).operators(), "") << "it is part of a block";
}

TEST(Operator, ReadsTheMediumOfLexmarksFolioBehindTheMarkOnly)
{
    EXPECT_EQ(Stream(PclXlBytes().ubyte(17, mediaSize).op(beginPage)).media(), (std::vector<int>{17}));
    EXPECT_EQ(Stream(commentOf("Lexmark Enhanced").ubyte(17, mediaSize).op(beginPage)).media(),
              (std::vector<int>{25}));
    EXPECT_EQ(Stream(commentOf("Lexmark Enhanced").ubyte(16, mediaSize).op(beginPage)).media(),
              (std::vector<int>{16}));
    EXPECT_EQ(Stream(commentOf("Lexmark Enhanced").text("A6", mediaSize).op(beginPage)).media(),
              (std::vector<int>{17}))
        << "by its name it is what it is";
    EXPECT_EQ(Stream(PclXlBytes()
                         .ubyte(17, mediaSize)
                         .op(beginPage)
                         .raw(commentOf("Lexmark Enhanced").str())
                         .ubyte(17, mediaSize)
                         .op(beginPage))
                  .media(),
              (std::vector<int>{17, 25}));
}

TEST(Operator, LooksAtNoOtherAttributeOfAComment)
{
    const Stream stream(PclXlBytes().text("!R!EXIT;Lexmark Enhanced", fontName).op(comment));

    EXPECT_TRUE(stream.blocks.empty());
    EXPECT_EQ(stream.operators(), "");
}

TEST(Operator, RefusesACommentThatIsNoText)
{
    for (const auto& bytes : {PclXlBytes().ubyte('!', commentData), PclXlBytes().uint16(1, commentData),
                              PclXlBytes().array(0xCA, 0, 1).id(commentData)}) {
        try {
            Stream{PclXlBytes(bytes).op(comment)};
            FAIL();
        } catch (const Torv::GenericException& error) {
            EXPECT_STREQ(error.what(), "The value of attribute is not a string!");
        }
    }
}

TEST(Operator, ReadsManyBlocksOfACommentInOnePass)
{
    std::string text;
    for (int number = 0; number < 200000; ++number)
        text += "!R!EXIT;";

    EXPECT_EQ(Stream(commentOf(text)).blocks.size(), 200000U);
}

// --- The object itself

TEST(Operator, AppendsAttributesToItsChunk)
{
    OpenJob job(PclXlBytes().uint16(7, pageCopies).str());
    PclXLParser parser(job.file, [](const std::string&) {});
    Operator<tag_t::EndPage, PageCopies> op(parser, 0, 5);

    EXPECT_EQ(op.payload.copies, 1);
    op.addAttribute(attribute_t::PageCopies, 0, 2);
    op.addAttribute(attribute_t::MediaSize, 0, 2);

    EXPECT_EQ(op.payload.copies, 7);
    ASSERT_EQ(op.chunk->attributes.size(), 2U);
    EXPECT_EQ(op.chunk->attributes[0]->size(), 5);
    const auto* range = dynamic_cast<JobChunkPclXLRaw*>(op.chunk->attributes[1]->chunk.get());
    ASSERT_NE(range, nullptr);
    EXPECT_EQ(range->start, 0);
    EXPECT_EQ(range->end, 2);
    EXPECT_EQ(op.chunk->m_operator, tag_t::EndPage);
    EXPECT_EQ(op.parser, &parser);
    EXPECT_EQ(job.file.m_offset, 0) << "the file is back";
}

} // namespace
} // namespace JobParser
