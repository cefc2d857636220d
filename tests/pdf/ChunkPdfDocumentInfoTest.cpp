#include "pdf/ChunkPdfDocumentInfo.h"

#include <gtest/gtest.h>

#include "JobParser/JobParserException.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"
#include "tests/pdf/PdfSupport.h"
#include "tests/support/OpenJob.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/LogString.h"
#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace std::string_literals;

ChunkPdfDocumentInfo parsed(const std::string& info)
{
    Torv::Json::Object dto;
    dto.add("info", info);
    UnserializationContext context;
    return {context, Torv::Json::parse(dto.str())};
}

std::string infoOf(const ChunkPdfDocumentInfo& chunk)
{
    SerializationContext context;
    return Torv::Json::parse(chunk.toJson(context))["info"].toString();
}

std::string reloaded(const std::string& info)
{
    return infoOf(parsed(info));
}

ChunkPdfDocumentInfo summaryOf(const Pdf::PdfBytes& pdf)
{
    Pdf::MemorySource source(pdf.str());
    return ChunkPdfDocumentInfo(Pdf::Parser::Parser(source).parse(true));
}

const std::string summary = "1 0 obj\n<</Pages 2 0 R/Type/Catalog>>\nendobj\n"
                            "3 0 obj\n<</Parent 2 0 R/Resources<</XObject<<>>>>/Type/Page>>\nendobj\n"
                            "5 0 obj\n<</Parent 2 0 R/Resources<</XObject<<>>>>/Type/Page>>\nendobj\n"
                            "trailer<</Prev 234/Root 1 0 R/Size 6>>startxref0\n";

TEST(ChunkPdfDocumentInfo, KeepsTheSummaryAsPdfText)
{
    Pdf::PdfBytes pdf;
    pdf.object(1, "<</Type/Catalog/Pages 2 0 R>>").object(2, "<</Type/Pages/Kids[5 0 R 3 0 R]>>");
    pdf.object(3, "<</Type/Page/Parent 2 0 R>>").object(5, "<</Type/Page/Parent 2 0 R>>");
    pdf.raw("%" + std::string(234 - 2 - pdf.size(), 'x') + "\n").end("<</Root 1 0 R/Size 6>>");

    EXPECT_EQ(infoOf(summaryOf(pdf)), summary);
}

TEST(ChunkPdfDocumentInfo, IsTheSameWhenItIsReadBack)
{
    EXPECT_EQ(reloaded(summary), summary);
    for (const char* page :
         {"[ 1 2 0 R/A#20B(c\\)(d))<00> true false null<</E[]>>]", "(\xC3\xFC\x01)", " -0.5", "<>\n<41>"}) {
        const std::string info = "1 0 obj\n<</Type/Catalog>>\nendobj\n3 0 obj\n<</A"s + page +
                                 "/Type/Page>>\nendobj\ntrailer<<>>startxref0\n";
        EXPECT_EQ(reloaded(reloaded(info)), reloaded(info)) << page;
    }
    EXPECT_EQ(
        reloaded(
            "1 0 obj\n<</Type/Catalog>>\nendobj\n7 0 obj\n[ 1]\nendobj\ntrailer<</A#20B 1>>startxref0\n"),
        "1 0 obj\n<</Type/Catalog>>\nendobj\n7 0 obj\n[ 1]\nendobj\ntrailer<</A#20B 1>>startxref0\n");
}

TEST(ChunkPdfDocumentInfo, IsTheSameWithGenerationsInAnyOrder)
{
    const std::string info = "1 0 obj\n<</Type/Catalog>>\nendobj\n6 1 obj\n<</Type/Page>>\nendobj\n"
                             "2 3 obj\n<</Type/Page>>\nendobj\n4 0 obj\n<</Type/Page>>\nendobj\n"
                             "9 1 obj\n[]\nendobj\n3 0 obj\n[]\nendobj\ntrailer<<>>startxref0\n";

    EXPECT_EQ(reloaded(info), info);
}

TEST(ChunkPdfDocumentInfo, IsReadBackWithoutASizeLimit)
{
    std::string info = "1 0 obj\n<</Type/Catalog>>\nendobj\n";
    for (int number = 2; number < 5000; ++number)
        info += std::to_string(number) + " 0 obj\n<</MediaBox[ 0 0 595 842]/Type/Page>>\nendobj\n";
    info += "trailer<<>>startxref0\n";

    EXPECT_TRUE(reloaded(info) == info);
}

TEST(ChunkPdfDocumentInfo, HoldsTheTrailerOfACrossReferenceStreamWhole)
{
    Pdf::PdfBytes pdf = Pdf::onePage();
    const std::string offset = std::to_string(pdf.size());
    pdf.stream(4, "<</Type/XRef/Root 1 0 R/Size 5/W[1 2 1]/Length 4>>", "abcd")
        .raw("startxref\n" + offset + "\n");

    const std::string info = infoOf(summaryOf(pdf));

    EXPECT_EQ(info.substr(info.find("trailer")),
              "trailer<</Length 4/Prev " + offset + "/Root 1 0 R/Size 5/Type/XRef/W[ 1 2 1]>>startxref0\n");
}

TEST(ChunkPdfDocumentInfo, CannotBeWrittenWithTwoNumbersThatAreNoReference)
{
    const ChunkPdfDocumentInfo chunk =
        summaryOf(Pdf::onePage("/Key 1 2 /Next 3").end("<</Root 1 0 R/Size 4>>"));
    SerializationContext context;

    try {
        chunk.toJson(context);
        FAIL();
    } catch (const JobParserException& error) {
        EXPECT_STREQ(error.what(), "FalseRef not allowed in real objects");
    }
}

TEST(ChunkPdfDocumentInfo, CannotBeWrittenWithoutACatalog)
{
    const ChunkPdfDocumentInfo chunk = parsed("trailer<<>>startxref0\n");
    SerializationContext context;

    EXPECT_THROW(chunk.toJson(context), JobParserException);
}

/// What becomes of a megabyte of resources that so many pages have in common, once for each of them.
std::string failureOfSharedResources(unsigned pages, char filling)
{
    Pdf::PdfBytes pdf;
    std::string kids;
    for (unsigned number = 10; number < 10 + pages; ++number) {
        pdf.object(number, "<</Type/Page/Parent 2 0 R>>");
        kids += std::to_string(number) + " 0 R ";
    }
    pdf.object(1, "<</Type/Catalog/Pages 2 0 R>>");
    pdf.object(2, "<</Type/Pages/Kids[" + kids + "]/Resources<</Font(" + std::string(1048576, filling) +
                      ")>>>>");
    const ChunkPdfDocumentInfo chunk = summaryOf(pdf.end("<</Root 1 0 R/Size 4>>"));
    SerializationContext context;
    try {
        chunk.toJson(context);
        return "";
    } catch (const JobParserException& error) {
        return error.what();
    }
}

TEST(ChunkPdfDocumentInfo, DoesNotGrowWithoutLimit)
{
    EXPECT_EQ(failureOfSharedResources(1000, 'x'), "The summary of the PDF is too long");
    EXPECT_EQ(failureOfSharedResources(100, '\x01'), "The summary of the PDF is too long")
        << "each byte takes six characters of JSON";
    EXPECT_EQ(failureOfSharedResources(100, 'x'), "");
}

TEST(ChunkPdfDocumentInfo, RejectsDataThatMakeNoSenseWhenTheyAreRead)
{
    UnserializationContext context;
    const auto read = [&](const char* dto) { ChunkPdfDocumentInfo(context, Torv::Json::parse(dto)); };

    EXPECT_THROW(read("{}"), Torv::VariantInvalidOperationException);
    EXPECT_THROW(read(R"({"info":1})"), Torv::VariantInvalidOperationException);
    EXPECT_THROW(read(R"({"info":""})"), Pdf::Parser::ISource::EofException);
    EXPECT_THROW(read(R"({"info":"junk"})"), Pdf::Parser::PdfParserException);
    EXPECT_THROW(read(R"({"info":"trailer<<>>trailer"})"), Pdf::Parser::PdfParserException);
    EXPECT_THROW(read(R"({"info":"startxref0\n"})"), Pdf::Parser::PdfParserException);
    EXPECT_THROW(read(R"({"info":"1 0 obj[R]"})"), std::bad_variant_access);
}

TEST(ChunkPdfDocumentInfo, SavesNothing)
{
    OpenJob job("");
    Torv::IO::StringStream stream;
    const ChunkPdfDocumentInfo chunk = parsed(summary);

    chunk.save(job.file, stream);

    EXPECT_EQ(stream.str(), "");
    EXPECT_EQ(chunk.size(), 0);
}

TEST(ChunkPdfDocumentInfo, DumpsALine)
{
    ChunkPdfDocumentInfo chunk = parsed(summary);
    Torv::Log::LogString log;

    chunk.dump(log);

    EXPECT_EQ(log.getAndClear(), "PdfChunkDocumentInfo\n");
}

} // namespace
} // namespace JobParser
