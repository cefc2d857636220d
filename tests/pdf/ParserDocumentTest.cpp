// Whole documents: what the summary holds, and which documents have none.

#include <gtest/gtest.h>

#include "pdf/Parser.h"
#include "pdf/TrailerNotFoundException.h"
#include "tests/pdf/PdfSupport.h"

namespace Pdf
{
namespace
{

using namespace std::string_literals;

std::string trailerOf(const PdfBytes& pdf)
{
    MemorySource source(pdf.str());
    return Parser::Parser(source).parse(true)->trailer.serialize();
}

const std::string onePageText = "3 0 obj\n<</Parent 2 0 R/Resources<</XObject<<>>>>/Type/Page>>\nendobj\n";

TEST(ParsingDocuments, FindsThePagesOfTheTree)
{
    EXPECT_EQ(pageOf(onePage().end("<</Root 1 0 R/Size 4>>")), onePageText);
}

TEST(ParsingDocuments, KeepsCatalogAndTrailerAndForgetsTheRest)
{
    const PdfBytes pdf = onePage()
                             .object(4, "[1]")
                             .object(5, "[%\n2]")
                             .object(9, "<<>>")
                             .end("<</Root 1 0 R/Size 10/ID[<00>]>>");
    MemorySource source(pdf.str());
    Parser::Parser parser(source);

    const auto info = parser.parse(true);

    EXPECT_EQ(parser.document, info);
    EXPECT_EQ(info->catalog.serialize(), "1 0 obj\n<</Pages 2 0 R/Type/Catalog>>\nendobj\n");
    EXPECT_EQ(info->trailer.serialize(),
              "<</ID[<00>]/Prev " + std::to_string(parser.startxref) + "/Root 1 0 R/Size 10>>");
    EXPECT_TRUE(info->embeddable.empty());
    EXPECT_EQ(parser.maxObjectNumber, 9U);
}

TEST(ParsingDocuments, MakesTheTrailerThatOfASectionBehindTheFile)
{
    struct SizeRow {
        const char* trailer;
        const char* size;
    };

    for (const auto& [trailer, size] : {
             SizeRow{"<</Root 1 0 R/Size 4/Prev 7>>", "/Size 4>>"},
             SizeRow{"<</Root 1 0 R/Size 3>>", "/Size 4>>"},
             SizeRow{"<</Root 1 0 R/Size 0>>", "/Size 4>>"},
             SizeRow{"<</Root 1 0 R/Size 9.5>>", "/Size 9.5>>"},
             SizeRow{"<</Root 1 0 R/Size 4294967296>>", "/Size 4>>"},
             SizeRow{"<</Root 1 0 R/Size -1>>", "/Size -1>>"},
         }) {
        const PdfBytes pdf = onePage();
        EXPECT_EQ(trailerOf(PdfBytes(pdf).end(trailer)),
                  "<</Prev " + std::to_string(pdf.size()) + "/Root 1 0 R" + size);
    }
}

TEST(ParsingDocuments, CountsTheGreatestObjectNumberThereIs)
{
    EXPECT_NE(trailerOf(onePage().object(4294967295, "null").end("<</Root 1 0 R/Size 4>>"))
                  .find("/Size 4294967296>>"),
              std::string::npos);
}

TEST(ParsingDocuments, TakesTheLastDefinitionOfAPageAndOfItsTree)
{
    PdfBytes pdf;
    pdf.object(1, "<</Type/Catalog/Pages 2 0 R>>");
    pdf.object(2, "<</Type/Pages/Kids[3 0 R 4 0 R]>>");
    pdf.object(3, "<</Type/Page/A 1>>").object(4, "<</Type/Page/A 2>>").end("<</Root 1 0 R/Size 5>>");
    pdf.object(2, "<</Type/Pages/Kids[3 0 R]>>");
    pdf.object(3, "<</Type/Page/A 3>>").end("<</Root 1 0 R/Size 5>>");

    EXPECT_EQ(pageOf(pdf), "3 0 obj\n<</A 3/Resources<</XObject<<>>>>/Type/Page>>\nendobj\n");
}

// A stream has entries that its dictionary lacks, so that it is no table of references.
TEST(ParsingDocuments, EmbedsNoStreamOfReferencesAlone)
{
    const auto embedded = [](std::string_view object) {
        PdfBytes pdf = onePage("/Resources 5 0 R");
        pdf.object(5, object).end("<</Root 1 0 R/Size 6>>");
        return pageOf(pdf);
    };
    constexpr const char* nothing =
        "3 0 obj\n<</Parent 2 0 R/Resources<</XObject<<>>>>/Type/Page>>\nendobj\n";
    constexpr const char* resources =
        "3 0 obj\n<</Parent 2 0 R/Resources<</Font 7 0 R/XObject<<>>>>/Type/Page>>\nendobj\n";

    EXPECT_EQ(embedded("<</F 7 0 R>>\nstream\nabc\nendstream"), nothing);
    EXPECT_EQ(embedded("<</Font 7 0 R>>\nstream\nabc\nendstream"), resources);
    EXPECT_EQ(embedded("<</Font 7 0 R>>"), resources);
}

TEST(ParsingDocuments, KeepsAnObjectBesideOneOfItsNumberWithAGeneration)
{
    PdfBytes pdf = onePage("/Resources 5 0 R");
    pdf.object(5, "<</Font 7 0 R>>").raw("5 1 obj[1]endobj ").end("<</Root 1 0 R/Size 6>>");

    EXPECT_EQ(pageOf(pdf),
              "3 0 obj\n<</Parent 2 0 R/Resources<</Font 7 0 R/XObject<<>>>>/Type/Page>>\nendobj\n");
}

// The first section stands at the start, points nowhere, and is the one that the last startxref names.
TEST(ParsingDocuments, ReadsALinearizedFile)
{
    PdfBytes pdf;
    const std::string offset = std::to_string(pdf.size());
    pdf.raw("xref\n0 0\ntrailer\n<</Root 1 0 R/Size 4/Prev 99>>\nstartxref\n0\n%%EOF\n");
    pdf.object(1, "<</Type/Catalog/Pages 2 0 R>>").object(2, "<</Type/Pages/Kids[3 0 R]>>");
    pdf.object(3, "<</Type/Page>>");
    pdf.raw("xref\n0 0\ntrailer\n<</Size 4>>\nstartxref\n" + offset + "\n%%EOF\n");

    EXPECT_EQ(trailerOf(pdf), "<</Prev " + offset + "/Root 1 0 R/Size 4>>");
}

TEST(ParsingDocuments, FindsTheTrailerInACrossReferenceStream)
{
    PdfBytes pdf = onePage();
    const std::string offset = std::to_string(pdf.size());
    pdf.stream(4, "<</Type/XRef/Root 1 0 R/Size 5/W[1 2 1]/Length 4>>", "abcd")
        .raw("startxref\n" + offset + "\n");

    EXPECT_EQ(trailerOf(pdf), "<</Length 4/Prev " + offset + "/Root 1 0 R/Size 5/Type/XRef/W[ 1 2 1]>>");
}

TEST(ParsingDocuments, FallsBackToTheLastCatalogWithoutARoot)
{
    EXPECT_EQ(pageOf(onePage().end("<</Size 4>>")), onePageText);
}

TEST(ParsingDocuments, TakesARootThatStandsInTheTrailer)
{
    EXPECT_EQ(pageOf(onePage().end("<</Size 4/Root<</Pages 2 0 R>>>>")), onePageText);
}

struct FailureRow {
    const char* name;
    PdfBytes pdf;
    std::string message;
};

class MalformedDocument : public testing::TestWithParam<FailureRow>
{
};

TEST_P(MalformedDocument, IsRejected)
{
    EXPECT_EQ(failureOf(GetParam().pdf.str()), GetParam().message);
}

PdfBytes withKids(std::string_view kids)
{
    return PdfBytes()
        .object(1, "<</Type/Catalog/Pages 2 0 R>>")
        .object(2, "<</Type/Pages/Kids[" + std::string(kids) + "]>>")
        .object(3, "<</Type/Page/Parent 2 0 R>>")
        .object(4, "<</Type/Pages/Kids[2 0 R]>>")
        .object(5, "<</Type/Pages/Kids[3 0 R]>>")
        .object(6, "<</Type/Font>>")
        .raw("7 1 obj<</Type/Page>>endobj\n")
        .end("<</Root 1 0 R/Size 8>>");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, MalformedDocument,
    testing::Values(
        FailureRow{"NoStartxref", onePage().raw("trailer<</Root 1 0 R/Size 4>>startxref 0 "),
                   "No startxref found in the document"},
        FailureRow{"NoTrailerThere", onePage().raw("trailer<</Root 1 0 R/Size 4>>startxref 5 "),
                   "Document trailer not found | startxref=5"},
        FailureRow{"NoTrailerAtAGreatOffset", onePage().raw("startxref 4294967295 "),
                   "Document trailer not found | startxref=-1"},
        FailureRow{"RootIsNotTheCatalog", onePage().end("<</Root 2 0 R/Size 4>>"),
                   "Trailer root is not catalog"},
        FailureRow{"NoCatalog", PdfBytes().end("<</Root 1 0 R/Size 4>>"), "Trailer root is not catalog"},
        FailureRow{"NoTree",
                   PdfBytes().object(1, "<</Type/Catalog/Pages 2 0 R>>").end("<</Root 1 0 R/Size 4>>"),
                   "Catalog pages not found in tree"},
        FailureRow{"KidIsNothing", withKids("9 0 R"), "Missing page"},
        FailureRow{"KidIsAFont", withKids("6 0 R"), "Missing page"},
        FailureRow{"KidTwice", withKids("3 0 R 3 0 R"), "Missing page"},
        FailureRow{"KidOfTwoNodes", withKids("3 0 R 5 0 R"), "Missing page"},
        FailureRow{"NodeTwice", withKids("5 0 R 5 0 R"), "Missing page"},
        FailureRow{"PageWithAGeneration", withKids("7 1 R"), "Missing page"},
        FailureRow{"TreeThatLoops", withKids("4 0 R"), "Page tree loops"},
        FailureRow{"NodeThatIsItsOwnKid", withKids("2 0 R"), "Page tree loops"},
        FailureRow{"TreeThatLoopsBehindAPage", withKids("3 0 R 4 0 R"), "Page tree loops"}),
    [](const auto& row) { return row.param.name; });

TEST(ParsingDocuments, ThrowsItsOwnExceptionForAMissingTrailer)
{
    MemorySource source("startxref 5 ");

    EXPECT_THROW(Parser::Parser(source).parse(true), Parser::TrailerNotFoundException);
}

struct VariantRow {
    const char* name;
    PdfBytes pdf;
};

class WrongKindOfValue : public testing::TestWithParam<VariantRow>
{
};

TEST_P(WrongKindOfValue, IsRejectedAsAWrongVariantAccess)
{
    MemorySource source(GetParam().pdf.str());

    EXPECT_THROW(Parser::Parser(source).parse(true), std::bad_variant_access);
}

PdfBytes document(std::string_view catalog, std::string_view node, std::string_view page)
{
    return PdfBytes()
        .object(1, "<</Type/Catalog" + std::string(catalog) + ">>")
        .object(2, "<</Type/Pages" + std::string(node) + ">>")
        .object(3, "<</Type/Page" + std::string(page) + ">>")
        .end("<</Root 1 0 R/Size 4>>");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WrongKindOfValue,
    testing::Values(VariantRow{"NoSize", onePage().end("<</Root 1 0 R>>")},
                    VariantRow{"SizeIsAReference", onePage().end("<</Root 1 0 R/Size 4 0 R>>")},
                    VariantRow{"TrailerIsANumber", onePage().end("5")},
                    VariantRow{"TrailerIsNothing", onePage().end("")},
                    VariantRow{"RootIsAName", onePage().end("<</Root/A/Size 4>>")},
                    VariantRow{"NoCatalogAtAll", PdfBytes().end("<</Size 4>>")},
                    VariantRow{"NoPages", document("", "/Kids[3 0 R]", "")},
                    VariantRow{"PagesAreDirect", document("/Pages<<>>", "/Kids[3 0 R]", "")},
                    VariantRow{"NoKids", document("/Pages 2 0 R", "", "")},
                    VariantRow{"KidsAreAReference", document("/Pages 2 0 R", "/Kids 4 0 R", "")},
                    VariantRow{"KidIsANumber", document("/Pages 2 0 R", "/Kids[3]", "")},
                    VariantRow{"ParentIsDirect", document("/Pages 2 0 R", "/Kids[3 0 R]", "/Parent<<>>")},
                    VariantRow{"ParentIsMissing", document("/Pages 2 0 R", "/Kids[3 0 R]", "/Parent >>%")},
                    VariantRow{"ParentIsUnknown", document("/Pages 2 0 R", "/Kids[3 0 R]", "/Parent 9 0 R")}),
    [](const auto& row) { return row.param.name; });

// A generation hides the object itself, and no other.
TEST(ParsingDocuments, FindsPagesBehindObjectsWithGenerations)
{
    PdfBytes pdf;
    pdf.raw("5 65535 obj<</Type/Page>>endobj ").object(1, "<</Type/Catalog/Pages 2 0 R>>");
    pdf.object(2, "<</Type/Pages/Kids[3 0 R 4 0 R 5 0 R]>>").object(4, "<</Type/Page>>");
    pdf.object(3, "<</Type/Page/Contents 7 0 R/Resources 8 0 R>>").object(5, "<</Type/Page>>");
    pdf.raw("9 2 obj[]endobj ").object(8, "<</Font 1 0 R>>").object(7, "[6 0 R]");

    EXPECT_EQ(pageOf(pdf.end("<</Root 1 0 R/Size 4>>")),
              "3 0 obj\n<</Contents[ 6 0 R]/Resources<</Font 1 0 R/XObject<<>>>>/Type/Page>>\nendobj\n"
              "4 0 obj\n<</Resources<</XObject<<>>>>/Type/Page>>\nendobj\n"
              "5 0 obj\n<</Resources<</XObject<<>>>>/Type/Page>>\nendobj\n");
}

TEST(ParsingDocuments, ReadsASummaryWithoutChangingIt)
{
    const std::string text =
        "1 0 obj\n<</Pages 2 0 R/Type/Catalog>>\nendobj\n3 0 obj\n<</Type/Page>>\nendobj\n"
        "4 0 obj\n[]\nendobj\ntrailer<</Root 1 0 R>>startxref0\n";
    MemorySource source(text);

    const auto info = Parser::Parser(source).parse(false);

    EXPECT_EQ(info->catalog.serialize(), "1 0 obj\n<</Pages 2 0 R/Type/Catalog>>\nendobj\n");
    EXPECT_EQ(pagesOf(*info), "3 0 obj\n<</Type/Page>>\nendobj\n");
    EXPECT_EQ(info->trailer.serialize(), "<</Root 1 0 R>>");
    EXPECT_EQ(info->embeddable.size(), 1U);
}

std::string failureOfSummary(std::string_view text)
{
    MemorySource source(text);
    try {
        Parser::Parser(source).parse(false);
        return {};
    } catch (const Parser::PdfParserException& error) {
        return error.what();
    }
}

TEST(ParsingDocuments, WantsOneTrailerInASummaryThatPointsToNone)
{
    EXPECT_EQ(failureOfSummary("trailer<<>>startxref0\n"), "");
    EXPECT_EQ(failureOfSummary("startxref0\n"), "No startxref found in the document");
    EXPECT_EQ(failureOfSummary(" xref 0 0 trailer<<>>trailer<<>>startxref0\n"),
              "No startxref found in the document");
    EXPECT_EQ(failureOfSummary("trailer<<>>startxref7\n"), "Document trailer not found | startxref=7");
    EXPECT_EQ(failureOfSummary(" xref 0 0 trailer<</A 1>>startxref1\n"), "");
}

PdfBytes documentOfEverything()
{
    PdfBytes pdf =
        onePage("/Resources 5 0 R/Contents 6 0 R/MediaBox[0 0 595 842]/A(b)/C<00>/D true", "/Rotate 90");
    pdf.object(5, "<</Font<</F1 9 0 R>>/XObject 7 0 R>>").object(6, "[8 0 R]").object(7, "<</X 8 0 R>>");
    pdf.stream(8, "<</Length 10 0 R>>", "q endxstream Q").object(10, "14");
    pdf.deflated(11, "/Type/ObjStm/N 2/First 8", "12 0 13 3 [1]<</Type/Font>>");
    pdf.stream(14, "<</Length 3/Type/Metadata>>", "abc");
    return pdf.end("<</Root 1 0 R/Size 15/ID[<00><11>]>>");
}

TEST(ParsingDocuments, ComesToAnOutcomeWhereverAFileIsCut)
{
    const std::string whole = documentOfEverything().str();
    ASSERT_EQ(failureOf(whole), "");

    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::string part = whole.substr(0, size);
        const std::string outcome = outcomeOf(part);

        for (const std::size_t windowSize : {0U, 1U, 3U, 16U})
            EXPECT_EQ(outcomeOf(part, windowSize), outcome) << size << " bytes, window of " << windowSize;
    }
}

TEST(ParsingDocuments, ComesToTheSameOutcomeThroughAnyWindow)
{
    const std::string whole = documentOfEverything().str();

    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (const char byte : {'\0', ' ', '%', '(', '<', '>', '[', '1', 'R', 'e'}) {
            std::string changed = whole;
            changed[place] = byte;

            EXPECT_EQ(outcomeOf(changed, 2), outcomeOf(changed)) << place << ' ' << byte;
        }
    }
}

TEST(ParsingDocuments, WalksTreesOfAnyDepth)
{
    constexpr unsigned depth = 200000;
    PdfBytes pdf;
    pdf.object(1, "<</Type/Catalog/Pages 2 0 R>>");
    pdf.object(2, "<</Type/Pages/Kids[3 0 R]>>");
    for (unsigned level = 3; level < depth; ++level)
        pdf.object(level, "<</Type/Pages/Parent " + std::to_string(level - 1) + " 0 R/Kids[" +
                              std::to_string(level + 1) + " 0 R]>>");
    pdf.object(depth, "<</Type/Page/Parent " + std::to_string(depth - 1) + " 0 R>>");

    EXPECT_EQ(failureOf(pdf.end("<</Root 1 0 R/Size 1>>").str()), "");
}

// Each level names the next one twice, and there is no page at the end.
TEST(ParsingDocuments, WalksANodeOnceThoughManyPathsLeadThere)
{
    PdfBytes pdf;
    pdf.object(1, "<</Type/Catalog/Pages 2 0 R>>");
    for (unsigned level = 2; level < 100; ++level) {
        const std::string next = std::to_string(level + 1) + " 0 R ";
        pdf.object(level, "<</Type/Pages/Kids[" + next + next + "]>>");
    }
    pdf.object(100, "<</Type/Pages/Kids[]>>");

    EXPECT_EQ(pageOf(pdf.end("<</Root 1 0 R/Size 1>>")), "");
}

} // namespace
} // namespace Pdf
