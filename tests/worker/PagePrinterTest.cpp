#include "worker/PagePrinter.h"

#include <gtest/gtest.h>

#include "tests/worker/WalkerSupport.h"

namespace JobParser::Worker
{
namespace
{

TEST(PagePrinter, GivesAPageTheGreatestClassOfItsMarks)
{
    PagePrinter printer;
    printer.mark(PageClass::Gray);
    printer.mark(PageClass::Mono);

    printer.eject();
    printer.eject();

    EXPECT_EQ(pagesOf(printer.facts()), (Pages{1, 0, 1, 0}));
}

TEST(PagePrinter, PutsOutATouchedPageOnly)
{
    PagePrinter printer;
    printer.ejectIfTouched();
    printer.mark(PageClass::Blank);

    printer.ejectIfTouched();

    EXPECT_EQ(pagesOf(printer.facts()), (Pages{1, 0, 0, 0}));
    EXPECT_FALSE(printer.isTouched());
}

TEST(PagePrinter, KnowsWhatWouldTellAnythingNew)
{
    PagePrinter printer;
    EXPECT_TRUE(printer.matters(PageClass::Blank));

    printer.mark(PageClass::Mono);

    EXPECT_FALSE(printer.matters(PageClass::Mono));
    EXPECT_TRUE(printer.matters(PageClass::Gray));
}

TEST(PagePrinter, SetsAPageAside)
{
    PagePrinter printer;
    printer.mark(PageClass::Gray);

    const PagePrinter saved = printer.beginScratch();
    printer.mark(PageClass::Color);
    printer.eject();
    printer.mark(PageClass::Mono);

    EXPECT_EQ(printer.endScratch(saved), PageClass::Mono);
    printer.eject();
    EXPECT_EQ(pagesOf(printer.facts()), (Pages{0, 0, 1, 0}));
}

} // namespace
} // namespace JobParser::Worker
