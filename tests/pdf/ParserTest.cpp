// Objects and files, with what goes wrong in them.

#include "pdf/Parser.h"

#include <array>
#include <gtest/gtest.h>

#include "tests/pdf/PdfSupport.h"

namespace Pdf
{
namespace
{

using namespace std::string_literals;

constexpr std::array<std::size_t, 4> windowSizes{0, 1, 5, 1000000};

std::string readObject(std::string_view text, std::size_t windowSize)
{
    OpenText open(text, windowSize);
    try {
        const Object object = open.parser.parseValue<Object>();
        const std::uint8_t current = open.parser.current();
        return object.serialize() + "| " + std::string(1, static_cast<char>(current)) + ' ' +
               std::to_string(open.parser.position());
    } catch (const Torv::GenericException& error) {
        return "threw: "s + error.what() + " | " + std::to_string(open.parser.position());
    } catch (const std::bad_variant_access&) {
        return "threw: bad variant access";
    }
}

struct ObjectRow {
    const char* name;
    std::string text;
    const char* outcome;
};

class ReadingAnObject : public testing::TestWithParam<ObjectRow>
{
};

TEST_P(ReadingAnObject, GivesTheObjectWithoutItsStream)
{
    for (const std::size_t windowSize : windowSizes)
        EXPECT_EQ(readObject(GetParam().text, windowSize), GetParam().outcome) << "window of " << windowSize;
}

const char* nameOf(const testing::TestParamInfo<ObjectRow>& row)
{
    return row.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Plain, ReadingAnObject,
    testing::Values(ObjectRow{"Dictionary", "3 0 obj\n<</A 1>>\nendobj\n",
                              "3 0 obj\n<</A 1>>\nendobj\n| \n 23"},
                    ObjectRow{"WithoutWhiteSpace", "3 1 obj[1]endobj ", "3 1 obj\n[ 1]\nendobj\n| \x20 16"},
                    ObjectRow{"Comments", "3%\n0%\nobj%\n[]%\nendobj ", "3 0 obj\n[]\nendobj\n| \x20 21"},
                    ObjectRow{"NoNumber", "x 0 obj", "threw: Integer expected at 0x0! | 0"},
                    ObjectRow{"NoGeneration", "3 x obj", "threw: Integer expected at 0x2! | 2"},
                    ObjectRow{"NoObj", "3 0 oxj", "threw: obj expected at 0x5! | 5"},
                    ObjectRow{"NoEndobj", "3 0 obj 1 endxbj", "threw: endobj expected at 0xd! | 13"},
                    ObjectRow{"NoStream", "3 0 obj<<>>strxam", "threw: stream expected at 0xe! | 14"},
                    ObjectRow{"CutBehindObj", "3 0 obj", "threw:  | 6"},
                    ObjectRow{"CutInEndobj", "3 0 obj 1 endo", "threw:  | 13"},
                    ObjectRow{"CutBehindEndobj", "3 0 obj 1 endobj", "threw:  | 15"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Streams, ReadingAnObject,
    testing::Values(
        ObjectRow{"DirectLength", "3 0 obj<</Length 3>>stream\nabcendstream endobj ",
                  "3 0 obj\n<</Length 3>>\nendobj\n| \x20 46"},
        ObjectRow{"CarriageReturnAndLineFeed", "3 0 obj<</Length 3>>stream\r\nabc\r\nendstream\nendobj ",
                  "3 0 obj\n<</Length 3>>\nendobj\n| \x20 49"},
        ObjectRow{"CarriageReturnAlone", "3 0 obj<</Length 3>>stream\rabc endstream endobj ",
                  "3 0 obj\n<</Length 3>>\nendobj\n| \x20 47"},
        ObjectRow{"NoLineEnd", "3 0 obj<</Length 3>>streamabcendstream endobj ",
                  "3 0 obj\n<</Length 3>>\nendobj\n| \x20 45"},
        ObjectRow{"Empty", "3 0 obj<</Length 0>>stream\nendstream endobj ",
                  "3 0 obj\n<</Length 0>>\nendobj\n| \x20 43"},
        ObjectRow{"FractionalLength", "3 0 obj<</Length 3.9>>stream\nabcendstream endobj ",
                  "3 0 obj\n<</Length 3.9>>\nendobj\n| \x20 48"},
        ObjectRow{"LengthOfTheLow32Bits", "3 0 obj<</Length 4294967299>>stream\nabcendstream endobj ",
                  "3 0 obj\n<</Length 4294967299>>\nendobj\n| \x20 55"},
        ObjectRow{"NegativeLength", "3 0 obj<</Length -3>>stream\nabcendstream endobj ", "threw:  | 28"},
        ObjectRow{"NegativeLengthOfNoLow32Bits", "3 0 obj<</Length -4294967296>>stream\nendstream endobj ",
                  "3 0 obj\n<</Length -4294967296>>\nendobj\n| \x20 53"},
        ObjectRow{"IndirectLength", "3 0 obj<</Length 4 0 R>>stream\nabc\nendstream\nendobj ",
                  "3 0 obj\n<</Length 4 0 R>>\nendobj\n| \x20 51"},
        ObjectRow{"NoLength", "3 0 obj<</A 1>>stream\nabc\nendstream\nendobj ",
                  "3 0 obj\n<</A 1>>\nendobj\n| \x20 42"},
        ObjectRow{"NoDictionaryAtAll", "3 0 obj stream\nabc\nendstream\nendobj ",
                  "3 0 obj\n<<>>\nendobj\n| \x20 35"},
        ObjectRow{"LengthTooShort", "3 0 obj<</Length 2>>stream\nabcdefg\nendstream\nendobj ",
                  "3 0 obj\n<</Length 2>>\nendobj\n| \x20 51"},
        ObjectRow{"CommentInTheData", "3 0 obj<</Length 2>>stream\nab%cd\nendstream endobj ",
                  "3 0 obj\n<</Length 2>>\nendobj\n| \x20 49"},
        ObjectRow{"LengthToTheEOfEndobj", "3 0 obj<</Length 10>>stream\n\nendstream\nendobj ",
                  "threw: endstream expected at 0x2a! | 42"},
        ObjectRow{"WordInTheData", "3 0 obj<</Length 4 0 R>>stream\nab endstream cd\nendstream\nendobj ",
                  "threw: endobj expected at 0x2c! | 44"},
        ObjectRow{"StreamOfANumber", "3 0 obj 5 stream\nabc\nendstream\nendobj ",
                  "threw: bad variant access"},
        ObjectRow{"StreamOfAnArray", "3 0 obj[]stream\nabc\nendstream\nendobj ", "threw: bad variant access"},
        ObjectRow{"CutInTheData", "3 0 obj<</Length 30>>stream\nabc", "threw:  | 28"},
        ObjectRow{"CutBeforeTheWord", "3 0 obj<</Length 4 0 R>>stream\nabc", "threw:  | 33"},
        ObjectRow{"CutBehindTheWord", "3 0 obj<</Length 3>>stream\nabcendstream", "threw:  | 38"}),
    nameOf);

// Everything between is lost without a word.
TEST(ParsingObjects, GoesOnBehindTheNextEndOfStreamIfALengthIsTooLarge)
{
    const std::string text = "3 0 obj<</Length 50>>stream\nabc\nendstream endobj 4 0 obj[]endobj "
                             "5 0 obj<<>>stream\nendstream endobj\n";
    for (const std::size_t windowSize : windowSizes)
        EXPECT_EQ(readObject(text, windowSize), "3 0 obj\n<</Length 50>>\nendobj\n| \n 99");
}

TEST(ParsingObjects, LeavesNoneUnderWhatItLooksUpInStreams)
{
    OpenText open("3 0 obj<<>>stream\nendstream endobj ");

    const Object object = open.parser.parseValue<Object>();

    const auto entries = std::get<Dictionary>(object.value).entries();
    EXPECT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].key, "Length");
    EXPECT_EQ(entries[0].value.index(), 0U);
    EXPECT_EQ(entries[1].key, "Type");
    EXPECT_EQ(entries[1].value.index(), 0U);
}

TEST(ParsingObjects, LooksUpNothingWhereThereIsNoStream)
{
    OpenText open("3 0 obj<<>>endobj ");

    EXPECT_TRUE(std::get<Dictionary>(open.parser.parseValue<Object>().value).entries().empty());
}

struct SortingRow {
    const char* value;
    const char* place;
};

// Where an object went: "nowhere" counts its number all the same.
std::string placeOf(const Parser::Parser& parser)
{
    const Parser::DocumentInfo& info = *parser.document;
    std::string place;
    if (!info.pages.empty())
        place += "pages ";
    if (!info.embeddable.empty())
        place += "embeddable ";
    if (!parser.pageNodes.empty())
        place += "nodes ";
    if (info.catalog.reference.number != 0)
        place += "catalog ";
    if (!parser.trailers.empty())
        place += "trailer at " + std::to_string(parser.trailers.begin()->first) + ' ';
    return place + std::to_string(parser.maxObjectNumber);
}

constexpr SortingRow sortingRows[] = {
    {"<</Type/Pages>>", "nodes 7"},
    {"<</Type/Page>>", "pages 7"},
    {"<</Type/Catalog>>", "catalog 7"},
    {"<</Type/XRef>>", "trailer at 9 7"},
    {"<</Type/Font>>", "7"},
    {"<</Type/page/Font 1 0 R>>", "7"},
    {"5 0 R", "embeddable 7"},
    {"[]", "embeddable 7"},
    {"[1 2]", "embeddable 7"},
    {"5", "7"},
    {"(Page)", "7"},
    {"null", "7"},
    {"/Page", "7"},
    {"<<>>", "embeddable 7"},
    {"<</A 1 0 R/B 2 0 R>>", "embeddable 7"},
    {"<</A 1 0 R/B 2>>", "7"},
    {"<</A 1 0 R/A 2>>", "embeddable 7"},
    {"<</A 1 0 R/B >>", "7"},
    {"<</ProcSet[/PDF]>>", "embeddable 7"},
    {"<</XObject 1>>", "embeddable 7"},
    {"<</Font 1>>", "embeddable 7"},
    {"<</ExtGState 1>>", "embeddable 7"},
    {"<</ColorSpace 1>>", "embeddable 7"},
    {"<</Pattern 1>>", "embeddable 7"},
    {"<</Shading 1>>", "embeddable 7"},
    {"<</Properties 1>>", "7"},
    {"<</Font /Font2>>", "embeddable 7"},
    {"<</Font >>", "7"},
    {"<</Type 1/Font 1>>", "embeddable 7"},
    {"<</Type(Page)/Font 1>>", "embeddable 7"},
    {"<</Type/ /Font 1>>", "embeddable 7"},
    {"<</Type 1 0 R>>", "embeddable 7"},
    {"<</Type/Page/Type/Font>>", "pages 7"},
};

TEST(SortingObjects, GoesByTheirTypeAndShape)
{
    for (const auto& [value, place] : sortingRows) {
        OpenText open("7 0 obj "s + value + " endobj ");
        const Object object = open.parser.parseValue<Object>();

        open.parser.processObject(9, object);

        EXPECT_EQ(placeOf(open.parser), place) << value;
    }
}

TEST(SortingObjects, IsTheSameInAFile)
{
    for (const auto& [value, place] : sortingRows) {
        MemorySource source("\n       \n7 0 obj "s + value + " endobj\nstartxref 1 z");
        Parser::Parser file(source);

        file.parseValue<void>();

        EXPECT_EQ(placeOf(file), place) << value;
    }
}

TEST(SortingObjects, DropsStreamsThatOnlyReferToOthers)
{
    for (const auto& [dictionary, place] : {
             SortingRow{"<</A 1 0 R>>", "7"},
             SortingRow{"<</Length 1 0 R>>", "7"},
             SortingRow{"<</Length 1 0 R/Type 2 0 R>>", "embeddable 7"},
             SortingRow{"<<>>", "7"},
             SortingRow{"<</Font 1>>", "embeddable 7"},
             SortingRow{"<</Type/Page>>", "pages 7"},
         }) {
        MemorySource source("7 0 obj "s + dictionary + "stream\nendstream endobj\nstartxref 1 z");
        Parser::Parser file(source);

        file.parseValue<void>();

        EXPECT_EQ(placeOf(file), place) << dictionary;
    }
}

TEST(SortingObjects, KeepsTheLastOfEachNumber)
{
    MemorySource source(
        "7 0 obj<</Type/Page/A 1>>endobj 7 0 obj<</Type/Page/A 2>>endobj "
        "8 0 obj<</Type/Catalog/A 1>>endobj 9 0 obj<</Type/Catalog/A 2>>endobj\nstartxref 1 z");
    Parser::Parser file(source);

    file.parseValue<void>();

    EXPECT_EQ(pagesOf(*file.document), "7 0 obj\n<</A 2/Type/Page>>\nendobj\n");
    EXPECT_EQ(file.document->catalog.serialize(), "9 0 obj\n<</A 2/Type/Catalog>>\nendobj\n");
}

struct FileRow {
    const char* name;
    std::string text;
    const char* outcome; ///< startxref, trailers, current byte and position; or what was thrown.
};

std::string readFile(std::string_view text, std::size_t windowSize)
{
    MemorySource source(text, windowSize);
    Parser::Parser parser(source);
    try {
        parser.parseValue<void>();
    } catch (const Torv::GenericException& error) {
        return "threw: "s + error.what() + " | " + std::to_string(parser.position());
    }
    std::string outcome = std::to_string(parser.startxref);
    for (const auto& [offset, trailer] : parser.trailers)
        outcome += " | " + std::to_string(offset) + ": " + trailer.serialize();
    EXPECT_EQ(source.position, parser.position() + 1);
    return outcome + " | " + static_cast<char>(parser.current()) + ' ' + std::to_string(parser.position());
}

class ReadingAFile : public testing::TestWithParam<FileRow>
{
};

TEST_P(ReadingAFile, StopsWhereThePdfEnds)
{
    for (const std::size_t windowSize : windowSizes)
        EXPECT_EQ(readFile(GetParam().text, windowSize), GetParam().outcome) << "window of " << windowSize;
}

const char* nameOfFile(const testing::TestParamInfo<FileRow>& row)
{
    return row.param.name;
}

const std::string entry = "0000000000 65535 f \n";

INSTANTIATE_TEST_SUITE_P(
    Sections, ReadingAFile,
    testing::Values(
        FileRow{"Startxref", "startxref\n5\n%%EOF\n", "5 | \n 17"},
        FileRow{"LaterStartxref", "startxref 5 startxref 0 startxref 7 \n", "7 | \n 36"},
        FileRow{"ObjectBehindStartxref", "startxref 5 1 0 obj 1 endobj startxref 6 ", "6 | \x20 40"},
        FileRow{"OtherDataBehindStartxref", "startxref 5\n%%EOF\n\x1B%-12345X", "5 | \x1B 18"},
        FileRow{"OtherDataBehindStartxrefOfZero", "startxref 0\nX", "threw: Integer expected at 0xc! | 12"},
        FileRow{"Trailer", "trailer<</A 1>>startxref 5 ", "5 | 0: <</A 1>> | \x20 26"},
        FileRow{"LastTrailerOfAPlace", "trailer<</A 1>>trailer<</A 2>>startxref 5 ",
                "5 | 0: <</A 2>> | \x20 41"},
        FileRow{"TrailerOfASection", " xref\n0 0\ntrailer<</A 1>>trailer<</A 2>>startxref 1 ",
                "1 | 0: <</A 2>> | 1: <</A 1>> | \x20 51"},
        FileRow{"CrossReferences", "xref\n0 2\n" + entry + entry + "trailer<<>>startxref 5 ",
                "5 | 0: <<>> | \x20 71"},
        FileRow{"Subsections", "xref\n0 1\n" + entry + "3 2\n" + entry + entry + "trailer<<>>startxref 5 ",
                "5 | 0: <<>> | \x20 95"},
        FileRow{"SubsectionOfNothing", "xref 0 0 3 1\n" + entry + "trailer<<>>startxref 5 ",
                "5 | 0: <<>> | \x20 55"},
        FileRow{"CarriageReturnsAndLineFeeds", "xref\r\n0 1\r\n0000000000 65535 f\r\ntrailer<<>>startxref 5 ",
                "5 | 0: <<>> | \x20 53"},
        FileRow{"EntriesAreNotRead", "xref 0 1 endobj)(<<[[stream %\ntrailer<<>>startxref 5 ",
                "5 | 0: <<>> | \x20 52"},
        FileRow{"EntryOfNineteenBytes", "xref\n0 1\n0000000000 65535 f\ntrailer<<>>startxref 5 ",
                "5 | 0: <<>> | \x20 50"},
        FileRow{"EntriesOfNineteenBytes", "xref\n0 2\n0000000000 65535 f\n0000000000 65535 f\ntrailer<<>>",
                "threw: Integer expected at 0x30! | 48"},
        FileRow{"SubsectionBeyondTheEnd", "xref\n0 4294967295\ntrailer<<>>", "threw:  | 17"},
        FileRow{"NotStartxref", "startXref", "threw: startxref expected at 0x5! | 5"},
        FileRow{"NotTrailer", "trailler", "threw: trailer expected at 0x5! | 5"},
        FileRow{"NotXref", "xrxf", "threw: xref expected at 0x2! | 2"},
        FileRow{"NumberMissing", "startxref X", "threw: Integer expected at 0xa! | 10"},
        FileRow{"CountMissing", "xref\n0 X", "threw: Integer expected at 0x7! | 7"},
        FileRow{"Junk", "%PDF-1.4\njunk", "threw: Integer expected at 0x9! | 9"},
        FileRow{"Empty", "", "threw:  | 18446744073709551615"},
        FileRow{"CutInTheNumber", "startxref 5", "threw:  | 10"},
        FileRow{"CutBetweenObjects", "1 0 obj 1 endobj\n", "threw: Integer expected at 0x10! | 16"},
        FileRow{"CutBehindEndobj", "1 0 obj 1 endobj", "threw:  | 15"},
        FileRow{"CutBehindATrailer", "trailer<<>>", "threw: Integer expected at 0xa! | 10"}),
    nameOfFile);

TEST(ReadingFiles, FilesATrailerOfAStreamUnderTheOffsetOfItsObject)
{
    MemorySource source("%x\n8 0 obj<</Type/XRef/Length 3>>stream\nabc\nendstream endobj startxref 3 ");
    Parser::Parser parser(source);

    parser.parseValue<void>();

    EXPECT_EQ(parser.trailers.at(3).serialize(), "<</Length 3/Type/XRef>>");
}

} // namespace
} // namespace Pdf
