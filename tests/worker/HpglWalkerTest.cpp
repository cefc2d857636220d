#include "worker/HpglWalker.h"

#include <gtest/gtest.h>

#include "tests/worker/WalkerSupport.h"
#include "worker/PagePrinter.h"

namespace JobParser::Worker
{
namespace
{

struct Drawn {
    bool isTouched;
    PageClass pageClass;
    std::int64_t position;
};

Drawn draw(std::string_view text, const PclPalette& palette = PclPalette::ofPens(8))
{
    OpenBody open(text);
    PagePrinter printer;
    HpglWalker walker(*open.reader, printer, 0);
    walker.setPalette(palette);
    walker.walk(open.reader->size());
    const bool isTouched = printer.isTouched();
    printer.eject();
    for (const PageClass pageClass : {PageClass::Color, PageClass::Gray, PageClass::Mono}) {
        if (printer.facts().count(pageClass) != 0)
            return {isTouched, pageClass, open.reader->position()};
    }
    return {isTouched, PageClass::Blank, open.reader->position()};
}

struct Row {
    const char* name;
    std::string_view text;
    PageClass pageClass;
};

class HpglDrawing : public testing::TestWithParam<Row>
{
};

TEST_P(HpglDrawing, IsOfItsClass)
{
    EXPECT_EQ(draw(GetParam().text).pageClass, GetParam().pageClass);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, HpglDrawing,
    testing::Values(Row{"PenDown", "SP1;PU0,0;PD9,9;", PageClass::Mono},
                    Row{"PenUp", "SP1;PU0,0;PU9,9;", PageClass::Blank},
                    Row{"MoveWithPenDown", "SP2;PD;PA9,9;", PageClass::Color},
                    Row{"MoveWithPenUp", "SP2;PU;PA9,9;", PageClass::Blank},
                    Row{"NoPen", "SP0;PD9,9;", PageClass::Blank},
                    Row{"PenBeyondThePalette", "SP9;PD9,9;", PageClass::Color},
                    Row{"Circle", "SP4;CI100;", PageClass::Color},
                    Row{"EdgeOfARectangle", "SP1;EA9,9;", PageClass::Mono},
                    Row{"Rectangle", "SP1;RA9,9;", PageClass::Mono},
                    Row{"ShadedRectangle", "SP1;FT10,40;RA9,9;", PageClass::Gray},
                    Row{"ShadedWithNothing", "SP1;FT10,0;RA9,9;", PageClass::Blank},
                    Row{"SolidAgain", "SP1;FT10,40;FT;RA9,9;", PageClass::Mono},
                    Row{"Label", "SP1;LBtext\x03;", PageClass::Mono},
                    Row{"LabelOfBlanks", "SP1;LB  \x03;", PageClass::Blank},
                    Row{"LabelWithItsOwnEnd", "SP0;DT*;LBPD9,9;*;", PageClass::Blank},
                    Row{"OutlineOfAPolygon", "SP1;PM0;PD9,9;PM2;", PageClass::Blank},
                    Row{"EdgeOfAPolygon", "SP1;PM0;PD9,9;PM2;EP;", PageClass::Mono},
                    Row{"NoPolygon", "SP1;FP;", PageClass::Blank},
                    Row{"PolylineDrawn", "SP1;PE\xC0\xC0;", PageClass::Mono},
                    Row{"PolylineLifted", "SP1;PE<\xC0\xC0;", PageClass::Blank},
                    Row{"PolylineLiftedOnce", "SP1;PE<\xC0\xC0\xC0\xC0;", PageClass::Mono},
                    Row{"PolylineOfSevenBits", "SP1;PE7``;", PageClass::Mono},
                    Row{"PolylineWithItsPen", "SP1;PE:\xC3\xC0\xC0;", PageClass::Color},
                    Row{"Comment", "SP1;CO\"PD9,9;\";", PageClass::Blank},
                    Row{"PenColorOfTheJob", "SP1;PC1,0,200,0;PD9,9;", PageClass::Color},
                    Row{"PenColorOfEqualParts", "SP1;PC2,90,90,90;SP2;PD9,9;", PageClass::Gray},
                    Row{"NumberOfPens", "NP2;SP2;PD9,9;", PageClass::Mono},
                    Row{"SmallLetters", "sp2;pd9,9;", PageClass::Color}),
    [](const auto& row) { return row.param.name; });

TEST(HpglWalker, StopsAtAnEscapeCharacter)
{
    EXPECT_EQ(draw("SP1;PD\x1B%0A").position, 6);
}

TEST(HpglWalker, TouchesThePageWithWhite)
{
    EXPECT_TRUE(draw("SP0;PD9,9;").isTouched);
    EXPECT_FALSE(draw("SP1;PU9,9;").isTouched);
}

TEST(HpglWalker, SurvivesACutAtEveryByte)
{
    const std::string text = "IN;SP1;DT*;LBabc*PE:\xC3<=\xC0\xC0;CO\"x\";PC1,2,3,4;FT10,5;PM0;PM2;FP;SM*;";

    for (std::size_t size = 0; size <= text.size(); ++size)
        EXPECT_EQ(draw(text.substr(0, size)).position, static_cast<std::int64_t>(size));
}

} // namespace
} // namespace JobParser::Worker
