#include "pdf/PageAttributes.h"

#include <gtest/gtest.h>

#include "tests/pdf/PdfSupport.h"

namespace Pdf
{
namespace
{

std::string page(std::string_view pageEntries, std::string_view nodeEntries, std::string_view objects = "")
{
    return pageOf(onePage(pageEntries, nodeEntries).raw(objects).end("<</Root 1 0 R/Size 4>>"));
}

std::string textOf(std::string_view entries)
{
    return "3 0 obj\n<<" + std::string(entries) + "/Type/Page>>\nendobj\n";
}

TEST(PageAttributes, InheritFourKeysAlone)
{
    EXPECT_EQ(
        page("", "/MediaBox[0 0 1 2]/CropBox[0 0 3 4]/Rotate 90/Resources<</A 1>>/UserUnit 2"),
        textOf("/CropBox[ 0 0 3 4]/MediaBox[ 0 0 1 2]/Parent 2 0 R/Resources<</A 1/XObject<<>>>>/Rotate 90"));
}

TEST(PageAttributes, PreferWhatThePageHas)
{
    EXPECT_EQ(page("/Rotate 0/Resources<</B 1>>", "/Rotate 90/Resources<</A 1>>"),
              textOf("/Parent 2 0 R/Resources<</B 1/XObject<<>>>>/Rotate 0"));
}

TEST(PageAttributes, CountAKeyWithoutAValueAsThere)
{
    EXPECT_EQ(page("/Rotate ", "/Rotate 90"), textOf("/Parent 2 0 R/Resources<</XObject<<>>>>"));
}

TEST(PageAttributes, AreInheritedFromTheNearestNode)
{
    PdfBytes pdf;
    pdf.object(1, "<</Type/Catalog/Pages 2 0 R>>");
    pdf.object(2, "<</Type/Pages/Kids[4 0 R]/Rotate 90/MediaBox[0 0 9 9]>>");
    pdf.object(4, "<</Type/Pages/Kids[3 0 R]/Rotate 180/Parent 2 0 R>>");
    pdf.object(3, "<</Type/Page/Parent 4 0 R>>").end("<</Root 1 0 R/Size 5>>");

    EXPECT_EQ(pageOf(pdf), textOf("/MediaBox[ 0 0 9 9]/Parent 4 0 R/Resources<</XObject<<>>>>/Rotate 180"));
}

TEST(PageAttributes, MayBeReferencesWhichStay)
{
    EXPECT_EQ(page("", "/MediaBox 8 0 R/Rotate 9 0 R", "8 0 obj[0 0 1 1]endobj 9 0 obj 90 endobj "),
              textOf("/MediaBox 8 0 R/Parent 2 0 R/Resources<</XObject<<>>>>/Rotate 9 0 R"));
}

TEST(PageAttributes, MakeResourcesAndTheirXObjectsDirect)
{
    EXPECT_EQ(
        page("/Resources 8 0 R", "", "8 0 obj<</Font 7 0 R/XObject 9 0 R>>endobj 9 0 obj<</X 6 0 R>>endobj "),
        textOf("/Parent 2 0 R/Resources<</Font 7 0 R/XObject<</X 6 0 R>>>>"));
    EXPECT_EQ(page("", "/Resources 8 0 R", "8 0 obj 9 0 R endobj 9 0 obj<</Font<<>>>>endobj "),
              textOf("/Parent 2 0 R/Resources<</Font<<>>/XObject<<>>>>"));
}

TEST(PageAttributes, MakeEmptyResourcesOfWhatLeadsNowhere)
{
    EXPECT_EQ(page("/Resources 8 0 R", ""), textOf("/Parent 2 0 R/Resources<</XObject<<>>>>"));
    EXPECT_EQ(page("/Resources 8 0 R", "", "8 0 obj<</Properties 1>>endobj "),
              textOf("/Parent 2 0 R/Resources<</XObject<<>>>>"));
    EXPECT_EQ(page("/Resources<</XObject 8 0 R>>", ""), textOf("/Parent 2 0 R/Resources<</XObject<<>>>>"));
}

TEST(PageAttributes, LeaveResourcesThatAreNoDictionary)
{
    EXPECT_EQ(page("/Resources 5", ""), textOf("/Parent 2 0 R/Resources 5"));
    EXPECT_EQ(page("/Resources 8 0 R", "", "8 0 obj[1]endobj "), textOf("/Parent 2 0 R/Resources[ 1]"));
    EXPECT_EQ(page("/Resources<</XObject 8 0 R>>", "", "8 0 obj[1]endobj "),
              textOf("/Parent 2 0 R/Resources<</XObject[ 1]>>"));
}

TEST(PageAttributes, MakeAnArrayOfContentsDirect)
{
    EXPECT_EQ(page("/Contents 8 0 R", "", "8 0 obj[5 0 R 6 0 R]endobj "),
              textOf("/Contents[ 5 0 R 6 0 R]/Parent 2 0 R/Resources<</XObject<<>>>>"));
    EXPECT_EQ(page("/Contents 8 0 R", "", "8 0 obj<</Length 1>>stream\nx\nendstream endobj "),
              textOf("/Contents 8 0 R/Parent 2 0 R/Resources<</XObject<<>>>>"));
}

std::string failure(const PdfBytes& pdf)
{
    return failureOf(PdfBytes(pdf).end("<</Root 1 0 R/Size 4>>").str());
}

TEST(PageAttributes, RejectLoops)
{
    EXPECT_EQ(failure(onePage("", "/Parent 2 0 R")), "Page parents loop");
    EXPECT_EQ(failure(onePage("", "/Parent 4 0 R").object(4, "<</Type/Pages/Parent 2 0 R>>")),
              "Page parents loop");
    EXPECT_EQ(failure(onePage("/Resources 4 0 R").object(4, "4 0 R")), "Resource references loop");
    EXPECT_EQ(failure(onePage("/Contents 4 0 R").object(4, "5 0 R").object(5, "4 0 R")),
              "Resource references loop");
    EXPECT_EQ(failure(onePage("/Resources<</XObject 4 0 R>>").object(4, "4 0 R")),
              "Resource references loop");
}

// What is found before the loop closes is no loop.
TEST(PageAttributes, LookNoFurtherThanTheyHaveTo)
{
    EXPECT_EQ(failure(onePage("", "/Parent 2 0 R/Resources<<>>/MediaBox[]/CropBox[]/Rotate 0")), "");
}

// Nodes in a row, each with a page, and large resources at their head. With a copy for each page, or a walk
// of all nodes for each, this would take hours and all of the memory.
TEST(PageAttributes, AreSharedBetweenPages)
{
    constexpr unsigned count = 20000;
    const auto reference = [](unsigned number) { return std::to_string(number) + " 0 R "; };
    std::string resources = "/Resources<<";
    for (unsigned number = 0; number < count; ++number)
        resources += "/K" + std::to_string(number) + " 9 0 R";
    PdfBytes pdf;
    pdf.object(1, "<</Type/Catalog/Pages 2 0 R>>");
    pdf.object(2, "<</Type/Pages/Kids[3 0 R]" + resources + ">>>>");
    for (unsigned number = 3; number < count; ++number) {
        const std::string kids = reference(number + 1) + reference(number + count);
        pdf.object(number, "<</Type/Pages/Parent " + reference(number - 1) + "/Kids[" + kids + "]>>");
        pdf.object(number + count, "<</Type/Page/Parent " + reference(number) + ">>");
    }
    pdf.object(count, "<</Type/Pages/Kids[]>>");
    MemorySource source(pdf.end("<</Root 1 0 R/Size 4>>").str());

    const auto info = Parser::Parser(source).parse(true);

    EXPECT_EQ(info->pages.size(), count - 3);
    for (const auto& [number, page] : info->pages)
        EXPECT_EQ(std::get<Dictionary>(page.value["Resources"]).entries().size(), count + 1);
}

} // namespace
} // namespace Pdf
