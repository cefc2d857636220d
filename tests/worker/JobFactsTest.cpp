#include "worker/JobFacts.h"

#include <gtest/gtest.h>

namespace JobParser::Worker
{
namespace
{

TEST(JobFacts, AnswersWithEveryKeyInItsOrder)
{
    JobFacts facts;
    facts.addPage(PageClass::Blank, {2100, 2970});
    facts.addPage(PageClass::Mono, {2100, 2970});
    facts.addPage(PageClass::Gray, {2970, 4200});
    facts.addPage(PageClass::Color, {2100, 2970});
    facts.addPage(PageClass::Color, {2100, 2970});
    facts.setCopies(3);

    EXPECT_EQ(facts.toJson(),
              R"({"errorCode":0,"errorMessage":"","blankCount":1,"monoCount":1,"grayCount":1,)"
              R"("colorCount":2,"copies":3,"pageWidth":2970,"pageHeight":4200})");
    EXPECT_EQ(facts.pageCount(), 5);
}

TEST(JobFacts, KeepsTheFirstOfPagesOfTheSameSize)
{
    JobFacts facts;
    facts.addPage(PageClass::Mono, {2970, 2100});
    facts.addPage(PageClass::Mono, {2100, 2970});

    EXPECT_EQ(facts.size().width, 2970);
}

TEST(JobFacts, TakesASuggestedSizeOnlyWithoutAnotherOne)
{
    JobFacts facts;
    facts.suggestSize({2100, 2970});
    facts.suggestSize({2970, 4200});

    EXPECT_EQ(facts.size().width, 2100);
}

TEST(JobFacts, AddsUpBodies)
{
    JobFacts facts;
    facts.addPage(PageClass::Mono, {2100, 2970});
    facts.setCopies(2);
    JobFacts other;
    other.addPage(PageClass::Color, {2970, 4200});

    facts.add(other);

    EXPECT_EQ(facts.count(PageClass::Mono), 1);
    EXPECT_EQ(facts.count(PageClass::Color), 1);
    EXPECT_EQ(facts.copies(), 2);
    EXPECT_EQ(facts.size().width, 2970);
}

TEST(JobFacts, CountsAtLeastOneCopy)
{
    JobFacts facts;
    facts.setCopies(-4);

    EXPECT_EQ(facts.copies(), 1);
}

TEST(JobFacts, TurnsPointsIntoTenthsOfAMillimetre)
{
    EXPECT_EQ(pageSizeOfPoints(595.28, 841.89).width, 2100);
    EXPECT_EQ(pageSizeOfPoints(595.28, 841.89).height, 2970);
    EXPECT_EQ(pageSizeOfPoints(1e30, 842).width, 0);
    EXPECT_EQ(pageSizeOfPoints(-5, 842).height, 0);
    EXPECT_EQ(pageSizeOfPoints(0, 0).height, 0);
}

} // namespace
} // namespace JobParser::Worker
