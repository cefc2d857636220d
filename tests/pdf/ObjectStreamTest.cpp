// Object streams: what they hold, where reading stops, and what is wrong with them.

#include "pdf/ObjectStream.h"

#include <array>
#include <gtest/gtest.h>

#include "pdf/Lexer.h"
#include "pdf/StreamDecompressionException.h"
#include "pdf/UnsupportedObjectStreamCompressionException.h"
#include "tests/pdf/PdfSupport.h"

namespace Pdf
{
namespace
{

using namespace std::string_literals;

constexpr std::array<std::size_t, 3> windowSizes{0, 3, 1000000};

/// What a stream's objects are, by the order of their numbers; or what was thrown, and where.
std::string embeddedBy(const PdfBytes& pdf, std::size_t windowSize)
{
    MemorySource source(pdf.str() + "startxref 1 ", windowSize);
    Parser::Parser parser(source);
    try {
        parser.parseValue<void>();
    } catch (const Torv::GenericException& error) {
        return "threw: "s + error.what();
    } catch (const std::bad_variant_access&) {
        return "threw: bad variant access";
    }
    if (parser.document == nullptr)
        return "";
    std::string text;
    for (const auto& [reference, object] : parser.document->embeddable)
        text += std::to_string(reference.number) + object.value.serialize() + ' ';
    return text + std::to_string(parser.maxObjectNumber);
}

std::string embeddedBy(const PdfBytes& pdf)
{
    const std::string text = embeddedBy(pdf, windowSizes[0]);
    for (const std::size_t windowSize : windowSizes)
        EXPECT_EQ(embeddedBy(pdf, windowSize), text);
    return text;
}

PdfBytes objects(unsigned count, unsigned first, std::string_view data)
{
    const std::string entries = "/Type/ObjStm/N " + std::to_string(count) + "/First " + std::to_string(first);
    return PdfBytes().deflated(1, entries, data);
}

TEST(ObjectStreams, GiveTheirObjects)
{
    EXPECT_EQ(embeddedBy(objects(3, 16, "11 0 12 4 13 10 [1] 5 0 R [2]")), "11[ 1] 12 5 0 R 13[ 2] 13");
}

TEST(ObjectStreams, GiveObjectsInTheOrderOfTheirPlaces)
{
    EXPECT_EQ(embeddedBy(objects(3, 15, "12 8 12 4 12 0 [1] [2] [3] ")), "12[ 3] 12");
    EXPECT_EQ(embeddedBy(objects(2, 10, "12 4 11 0 [1] [2] ")), "11[ 1] 12[ 2] 12");
}

TEST(ObjectStreams, TakeTheLaterOfTwoNumbersForOnePlace)
{
    EXPECT_EQ(embeddedBy(objects(2, 10, "12 0 11 0 [1]")), "11[ 1] 11");

    std::string table;
    for (int number = 149; number >= 100; --number)
        table += std::to_string(number) + (number % 2 == 0 ? " 0 " : " 4 ");
    const auto size = static_cast<unsigned>(table.size());
    EXPECT_EQ(embeddedBy(objects(50, size, table + "[1] [2] ")), "100[ 1] 101[ 2] 101");
}

TEST(ObjectStreams, EndAnObjectWhereTheNextBegins)
{
    EXPECT_EQ(embeddedBy(objects(4, 21, "11 0 12 3 13 8 14 10 [1]5 0 R[]<<>>")),
              "11[ 1] 12 5 0 R 13[] 14<<>> 14");
    // `] ` is the second object: the first one stops short of it.
    EXPECT_EQ(embeddedBy(objects(2, 10, "11 0 12 2 [1]")), "threw: Array closing ']' expected at 0xb!");
}

TEST(ObjectStreams, ReadAnObjectThatEndsWithTheData)
{
    EXPECT_EQ(embeddedBy(objects(1, 5, "11 0 [1]")), "11[ 1] 11");
    EXPECT_EQ(embeddedBy(objects(1, 5, "11 0 <<>>")), "11<<>> 11");
    EXPECT_EQ(embeddedBy(objects(1, 5, "11 0 5 0 R")), "11 5 0 R 11");
}

TEST(ObjectStreams, GiveNothingForANameThatFillsItsPlace)
{
    const PdfBytes pdf = objects(1, 5, "11 0 /Name");
    EXPECT_EQ(embeddedBy(pdf), "11");
}

TEST(ObjectStreams, SkipWhatLiesBetweenTableAndObjects)
{
    EXPECT_EQ(embeddedBy(objects(1, 5000, "11 7 " + std::string(5002, 'x') + "[1]")), "11[ 1] 11");
}

TEST(ObjectStreams, ReadObjectsLongerThanTheirBuffer)
{
    std::string array = "[";
    for (int number = 0; number < 3000; ++number)
        array += " 1";

    EXPECT_EQ(embeddedBy(objects(1, 5, "11 0 " + array + "]")), "11" + array + "] 11");
}

TEST(ObjectStreams, HoldNothingForACountOfZero)
{
    EXPECT_EQ(embeddedBy(objects(0, 0, "anything")), "1");
    EXPECT_EQ(embeddedBy(PdfBytes().deflated(1, "/Type/ObjStm/N -1/First 0", "x")), "1");
    EXPECT_EQ(embeddedBy(objects(0, 0, "")), "threw: ");
}

TEST(ObjectStreams, AreNotFollowedWithinEachOther)
{
    EXPECT_EQ(embeddedBy(objects(1, 5, "11 0 <</Type/ObjStm/N 1>>stream\nabc\nendstream")), "11");
}

TEST(ObjectStreams, MustBeDeflatedAndNothingElse)
{
    struct FilterRow {
        const char* filter;
        const char* message;
    };

    for (const auto& [filter, message] : {
             FilterRow{"", "threw: Unsupported object stream compression | compression= "},
             FilterRow{"/Filter[/FlateDecode]",
                       "threw: Unsupported object stream compression | compression= "},
             FilterRow{"/Filter/LZWDecode",
                       "threw: Unsupported object stream compression | compression=LZWDecode "},
             FilterRow{"/Filter 5 0 R", "threw: Unsupported object stream compression | compression= "},
         }) {
        const std::string dictionary = "<</Type/ObjStm/N 0/First 0/Length 3"s + filter + ">>";
        EXPECT_EQ(embeddedBy(PdfBytes().stream(1, dictionary, "abc")), message);
    }
}

TEST(ObjectStreams, NeedTheCountAndThePlaceOfTheFirst)
{
    for (const char* entries : {"/Type/ObjStm/N 1", "/Type/ObjStm/First 1", "/Type/ObjStm/N(1)/First 5",
                                "/Type/ObjStm/N 1/First 5 0 R"})
        EXPECT_EQ(embeddedBy(PdfBytes().deflated(1, entries, "11 0 [1]")), "threw: bad variant access")
            << entries;
}

TEST(ObjectStreams, NeedWholeNumbersInTheirTable)
{
    EXPECT_EQ(embeddedBy(objects(1, 5, "11 x [1]")), "threw: Integer expected at 0x3!");
    EXPECT_EQ(embeddedBy(objects(2, 5, "11 0 [1]")), "threw: Integer expected at 0x5!");
    EXPECT_EQ(embeddedBy(objects(2, 5, "11 0 12 3")), "threw: ");
    EXPECT_EQ(embeddedBy(objects(2, 5, "11")), "threw: ");
    for (const char* table : {"11 ", "11 0 ", "11 0 12\n", "11 0 %1"})
        EXPECT_EQ(embeddedBy(objects(2, 5, table)), "threw: ") << table;
}

TEST(ObjectStreams, TellOffsetsByWhatWasReadOfThem)
{
    EXPECT_EQ(embeddedBy(objects(1, 5, "11 0 [1 x]")), "threw: Array closing ']' expected at 0x8!");
    EXPECT_EQ(embeddedBy(objects(1, 9, "11 0 ....[1 x]")), "threw: Array closing ']' expected at 0x8!");
}

TEST(ObjectStreams, EndBeforeAnObjectBeyondTheirData)
{
    EXPECT_EQ(embeddedBy(objects(1, 5, "11 9 [1]")), "threw: ");
    EXPECT_EQ(embeddedBy(objects(1, 8, "11 0 [1]")), "threw: ");
    // The first object would lie in the table, so that the count of bytes to it wraps over.
    EXPECT_EQ(embeddedBy(objects(1, 1, "11 0 [1]")), "threw: ");
}

TEST(ObjectStreams, TellWhatIsWrongWithTheirCompression)
{
    const std::string dictionary = "<</Type/ObjStm/N 1/First 5/Filter/FlateDecode/Length ";

    EXPECT_EQ(embeddedBy(PdfBytes().stream(1, dictionary + "6>>", "abcdef")),
              "threw: Decompressing stream error | code=-3 | message=incorrect header check");
    EXPECT_EQ(embeddedBy(PdfBytes().stream(1, dictionary + "0>>", "abcdef")),
              "threw: Decompressing stream error | code=-5 | message=");
}

TEST(ObjectStreams, ThrowTheirOwnExceptions)
{
    MemorySource wrongData("1 0 obj<</Type/ObjStm/Filter/FlateDecode/Length 3>>stream\nabc\n");
    MemorySource wrongFilter("1 0 obj<</Type/ObjStm/Length 3>>stream\nabc");

    EXPECT_THROW(Parser::Parser(wrongData).parseValue<void>(), Parser::StreamDecompressionException);
    EXPECT_THROW(Parser::Parser(wrongFilter).parseValue<void>(),
                 Parser::UnsupportedObjectStreamCompressionException);
}

PdfBytes withLength(std::string_view length, const std::string& data)
{
    const std::string dictionary =
        "<</Type/ObjStm/N 1/First 5/Filter/FlateDecode/Length " + std::string(length) + ">>";
    return PdfBytes().stream(1, dictionary, data);
}

TEST(ObjectStreams, AreNotRepairedWhereTheirLengthIsWrong)
{
    const std::string data = PdfBytes::deflate("11 0 [1] ");
    const std::string size = std::to_string(data.size());

    EXPECT_EQ(embeddedBy(withLength(size, data)), "11[ 1] 11");
    EXPECT_EQ(embeddedBy(withLength(std::to_string(data.size() - 2), data)).substr(0, 26),
              "threw: endstream expected ");
    EXPECT_EQ(embeddedBy(withLength(std::to_string(data.size() + 3), data)).substr(0, 26),
              "threw: endstream expected ");
    EXPECT_EQ(embeddedBy(withLength("1000000", data)), "threw: ");
}

// The inflater asks for more than the length gives, and gets it, with the first bytes once more.
TEST(ObjectStreams, AreFedFromTheirStartAgainIfTheirLengthIsFarTooShort)
{
    const std::string data = PdfBytes::deflate("11 0 [1]");

    EXPECT_EQ(embeddedBy(withLength("1", data)),
              "threw: Decompressing stream error | code=-3 | message=incorrect header check");
}

// Pieces that are all alike, so that from their start again they go on as well: each is a stored block that
// reaches up to the next piece's third byte, of a comment in the table.
TEST(ObjectStreams, AreFedFromTheirStartAgainNoMoreThanAFewTimes)
{
    constexpr std::size_t pieceSize = 64;
    const std::string start = "\x78\x9C\0\x3B\0\xC4\xFF"s;
    const auto piece = [&](std::string text) {
        text.resize(pieceSize - start.size(), 'x');
        return start + text;
    };
    std::string data = piece("11 %");
    for (int count = 1; count < 1000; ++count)
        data += piece("");

    EXPECT_EQ(embeddedBy(withLength("64", data)), "threw: Decompressing stream error | code=-5 | message=");
    EXPECT_EQ(embeddedBy(withLength("64", data.substr(0, 10 * pieceSize))), "threw: ");
}

std::string looseArray(std::size_t size)
{
    return "11 0 [" + std::string(size, ' ') + "1]";
}

TEST(ObjectStreams, OfAFileInflateToALimitedMultipleOfIt)
{
    constexpr std::size_t mebibyte = 1024 * 1024;
    constexpr const char* tooMuch = "threw: The object streams of the PDF inflate to too much";
    const std::string large = looseArray(5 * mebibyte);
    PdfBytes two = objects(1, 5, large);
    two.deflated(2, "/Type/ObjStm/N 1/First 5", large);
    PdfBytes twoInALargeFile = PdfBytes().stream(3, "<<>>", std::string(mebibyte / 4, ' '));
    twoInALargeFile.raw(two.str());

    EXPECT_EQ(embeddedBy(objects(1, 5, looseArray(9 * mebibyte))), tooMuch);
    EXPECT_EQ(embeddedBy(two), tooMuch);
    EXPECT_EQ(embeddedBy(twoInALargeFile), "11[ 1] 11");
    EXPECT_EQ(embeddedBy(objects(1, 5, large)), "11[ 1] 11");
}

TEST(ObjectStreams, WithoutALengthAreFedLineByLine)
{
    std::string data = PdfBytes::deflate("11 0 [1]");
    ASSERT_EQ(data.find('\n'), std::string::npos);

    EXPECT_EQ(embeddedBy(withLength("5 0 R", data)), "11[ 1] 11");
    for (const char* length : {"-1", "(x)", "null"})
        EXPECT_EQ(embeddedBy(withLength(length, data)), "11[ 1] 11") << length;
}

// Stored data, so that line feeds stand where they are put.
std::string stored(const std::string& data)
{
    std::string packed(compressBound(data.size()), '\0');
    uLongf size = packed.size();
    compress2(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(data.data()),
              data.size(), 0);
    packed.resize(size);
    return packed;
}

TEST(ObjectStreams, EndWithTheFileAlsoBehindAValueThatWasCutOffThere)
{
    const std::string cut = "11 0 12 20 " + std::string(69, ' ') + "<</A 5 0 R/BCD";
    const std::string data = stored(cut + "EF 6 0 R>> [2] ");
    const std::string size = std::to_string(7 + cut.size());
    const std::string head = "<</Type/ObjStm/N 2/First 80/Filter/FlateDecode/Length ";

    EXPECT_EQ(embeddedBy(PdfBytes().stream(1, head + size + ">>", data)), "threw: ");
    EXPECT_EQ(embeddedBy(PdfBytes().raw("1 0 obj" + head + "5 0 R>>stream\n" + data.substr(0, 95))),
              "threw: ");
}

// A value that ends with the inflated data asks for what follows, and the stream reads to the end of the
// file.
TEST(ObjectStreams, LeaveTheLastByteOfTheFileWhereTheyReadToItsEnd)
{
    const std::string text = "11 0" + std::string(76, ' ') + "[1]";
    const std::string head = "<</Type/ObjStm/N 1/First 80/Filter/FlateDecode/Length 90>>";

    EXPECT_EQ(embeddedBy(PdfBytes().raw("1 0 obj" + head + "stream\n" + stored(text).substr(0, 90) +
                                        "endstream endobj ")),
              "threw: endstream expected at 0xc7!");
}

TEST(ObjectStreams, WithoutALengthStopAtTheLineEndBehindTheLastObject)
{
    EXPECT_EQ(embeddedBy(withLength("5 0 R", stored("11 0\n[1]"))), "11[ 1] 11");
    EXPECT_EQ(embeddedBy(withLength("5 0 R", stored("11 0 [1] \nxx"))).substr(0, 26),
              "threw: endstream expected ");
    EXPECT_EQ(embeddedBy(withLength("5 0 R", stored("11 0 [1] \n"))).substr(0, 26),
              "threw: endstream expected ");
}

TEST(ObjectStreams, BelongToThePagesLikeAnyOtherObject)
{
    PdfBytes pdf;
    pdf.deflated(9, "/Type/ObjStm/N 3/First 14",
                 "1 0 2 29 3 59 <</Type/Catalog/Pages 2 0 R>><</Type/Pages/Kids[3 0 R]>>   <</Type/Page>>");
    pdf.end("<</Root 1 0 R/Size 3>>");

    EXPECT_EQ(failureOf(pdf.str()), "");
    EXPECT_EQ(pageOf(pdf), "3 0 obj\n<</Resources<</XObject<<>>>>/Type/Page>>\nendobj\n");
}

TEST(ObjectStream, HandsOutWhatWasInflatedUpToItsLimit)
{
    const std::string data = PdfBytes::deflate("abcdefgh");
    MemorySource file(data + "\n");
    Parser::Lexer lexer(file);
    lexer.next();
    std::uint64_t inflated = 0;
    Parser::ObjectStream stream(lexer, data.size(), inflated);

    EXPECT_EQ(stream.source().next(), 'a');
    stream.source().skip(2);
    EXPECT_EQ(stream.servedBytes(), 3U);
    stream.setLimit(4);
    EXPECT_EQ(stream.source().window().size(), 1U);
    EXPECT_EQ(stream.source().next(), 'd');
    EXPECT_THROW(stream.source().next(), Parser::ISource::EofException);
    stream.source().skip(1);
    EXPECT_THROW(stream.source().next(), Parser::ISource::EofException);
    stream.setLimit(-1);
    EXPECT_THROW(stream.source().next(), Parser::ISource::EofException);
    stream.setLimit(100);
    EXPECT_EQ(stream.source().next(), 'f');
    stream.source().skip(2);
    EXPECT_THROW(stream.source().skip(1), Parser::ISource::EofException);
    EXPECT_EQ(lexer.current, '\n');
    EXPECT_EQ(inflated, 8U);
}

TEST(ObjectStream, NeedsAllOfItsBytesInTheFile)
{
    MemorySource file("abc");
    Parser::Lexer lexer(file);
    lexer.next();

    std::uint64_t inflated = 0;
    EXPECT_THROW(Parser::ObjectStream(lexer, 3, inflated), Parser::ISource::EofException);
}

} // namespace
} // namespace Pdf
