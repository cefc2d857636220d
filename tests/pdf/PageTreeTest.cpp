#include "pdf/PageTree.h"

#include <gtest/gtest.h>

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

TEST(PageTree, TakesThePagesBelowANode)
{
    PageTree::Nodes nodes;
    nodes[{1, 0}] = node("5 0 R 2 0 R 3 0 R");
    nodes[{2, 0}] = node("6 0 R");
    nodes[{3, 0}] = node("");
    PageTree::Pages pages;
    for (const unsigned number : {5U, 6U, 7U})
        pages[{number, 0}].reference = {number, 0};

    const PageTree::Pages reachable = PageTree(nodes, pages).walkPageTree({1, 0});

    EXPECT_EQ(reachable.size(), 2U);
    EXPECT_EQ(reachable.count({5, 0}), 1U);
    EXPECT_EQ(reachable.count({6, 0}), 1U);
    EXPECT_EQ(pages.size(), 1U);
    EXPECT_EQ(pages.begin()->first, (Reference{7, 0}));
}

TEST(PageTree, PrefersAPageToANodeOfTheSameNumber)
{
    PageTree::Nodes nodes;
    nodes[{1, 0}] = node("2 0 R");
    nodes[{2, 0}] = node("9 0 R");
    PageTree::Pages pages;
    pages[{2, 0}].reference = {2, 0};

    EXPECT_EQ(PageTree(nodes, pages).walkPageTree({1, 0}).size(), 1U);
}

TEST(PageTree, PassesANodeWithoutPagesAnyNumberOfTimes)
{
    PageTree::Nodes nodes;
    nodes[{1, 0}] = node("2 0 R 2 0 R 2 0 R");
    nodes[{2, 0}] = node("");
    PageTree::Pages pages;

    EXPECT_TRUE(PageTree(nodes, pages).walkPageTree({1, 0}).empty());
}

} // namespace
} // namespace Pdf::Parser
