#include "pdf/PageTree.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

#include "pdf/PdfParserException.h"
#include "tests/pdf/PdfSupport.h"

namespace Pdf::Parser
{
namespace
{

Value node(std::string_view kids)
{
    OpenText open("<</Kids[" + std::string(kids) + "]>>");
    return open.parser.parseValue<Value>();
}

PageTree::Pages pagesOf(std::initializer_list<unsigned> numbers)
{
    PageTree::Pages pages;
    for (const unsigned number : numbers)
        pages[{number, 0}].reference = {number, 0};
    return pages;
}

PageTree::Pages walked(const PageTree::Nodes& nodes, PageTree::Pages pages)
{
    return PageTree(nodes, pages).walkPageTree({1, 0});
}

// Numbers of the pages, and of the objects that stand under them.
std::string numbers(const PageTree::Pages& pages)
{
    std::string text;
    for (const auto& [reference, object] : pages) {
        text += std::to_string(reference.number) + ' ';
        EXPECT_EQ(object.reference, reference);
    }
    return text;
}

TEST(PageTree, TakesThePagesBelowANode)
{
    PageTree::Nodes nodes;
    nodes[{1, 0}] = node("5 0 R 2 0 R 3 0 R");
    nodes[{2, 0}] = node("6 0 R");
    nodes[{3, 0}] = node("");

    EXPECT_EQ(numbers(walked(nodes, pagesOf({5, 6, 7}))), "5 6 ");
}

TEST(PageTree, TakesPagesInWhateverOrderTheyStand)
{
    struct Row {
        const char* kids;
        const char* taken;
    };
    for (const Row& row : {Row{"3 0 R 4 0 R 5 0 R 6 0 R", "3 4 5 6 "},
                           Row{"6 0 R 5 0 R 4 0 R 3 0 R", "3 4 5 6 "}, Row{"3 0 R 4 0 R 6 0 R", "3 4 6 "},
                           Row{"4 0 R 5 0 R", "4 5 "}, Row{"3 0 R 5 0 R 4 0 R", "3 4 5 "}, Row{"", ""}}) {
        PageTree::Nodes nodes;
        nodes[{1, 0}] = node(row.kids);

        EXPECT_EQ(numbers(walked(nodes, pagesOf({3, 4, 5, 6}))), row.taken) << row.kids;
    }
}

TEST(PageTree, MissesAPageThatWasTakenBefore)
{
    for (const char* kids : {"3 0 R 3 0 R", "3 0 R 4 0 R 3 0 R", "4 0 R 3 0 R 4 0 R", "3 0 R 9 0 R"}) {
        PageTree::Nodes nodes;
        nodes[{1, 0}] = node(kids);

        EXPECT_THROW(walked(nodes, pagesOf({3, 4})), PdfParserException) << kids;
    }
}

TEST(PageTree, PrefersAPageToANodeOfTheSameNumber)
{
    PageTree::Nodes nodes;
    nodes[{1, 0}] = node("2 0 R");
    nodes[{2, 0}] = node("9 0 R");

    EXPECT_EQ(numbers(walked(nodes, pagesOf({2}))), "2 ");
    EXPECT_EQ(numbers(walked(nodes, pagesOf({1, 2}))), "2 ");
}

TEST(PageTree, TakesAPageOnceAndThenTheNodeOfItsNumber)
{
    PageTree::Nodes nodes;
    nodes[{1, 0}] = node("2 0 R 2 0 R");
    nodes[{2, 0}] = node("9 0 R");

    EXPECT_EQ(numbers(walked(nodes, pagesOf({2, 9}))), "2 9 ");
}

TEST(PageTree, DoesNotFindAPageWithAGeneration)
{
    PageTree::Nodes nodes;
    nodes[{1, 0}] = node("3 0 R 4 1 R");
    PageTree::Pages pages = pagesOf({3});
    pages[{4, 1}].reference = {4, 1};

    EXPECT_THROW(PageTree(nodes, pages).walkPageTree({1, 0}), PdfParserException);
}

TEST(PageTree, PassesANodeWithoutPagesAnyNumberOfTimes)
{
    PageTree::Nodes nodes;
    nodes[{1, 0}] = node("2 0 R 2 0 R 2 0 R");
    nodes[{2, 0}] = node("");

    EXPECT_EQ(numbers(walked(nodes, {})), "");
}

TEST(PageTree, MissesThePagesBelowANodeThatComesAgain)
{
    PageTree::Nodes nodes;
    nodes[{1, 0}] = node("2 0 R 2 0 R");
    nodes[{2, 0}] = node("3 0 R");
    nodes[{3, 0}] = node("5 0 R");

    EXPECT_THROW(walked(nodes, pagesOf({5})), PdfParserException);
}

} // namespace
} // namespace Pdf::Parser
