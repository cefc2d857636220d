#include "pdf/Value.h"

#include <gtest/gtest.h>

#include "JobParser/JobParserException.h"

namespace Pdf
{
namespace
{

using namespace std::string_literals;

struct Row {
    std::size_t index;
    Value value;
    const char* text;
};

TEST(Value, WritesEachOfItsAlternatives)
{
    Value array = Array({Value(1.0), Value(Name{"A"})});
    Value dictionary;
    dictionary["B"] = Name{"C"};
    dictionary["A"] = 3.0;

    for (const Row& row : {
             Row{1, Null(), " null"},
             Row{2, Name{"A B#C"}, "/A#20B#C"},
             Row{3, Reference{12, 3}, " 12 3 R"},
             Row{4, 612.0, " 612"},
             Row{5, ByteString("a\\)b"), "(a\\)b)"},
             Row{6, HexString{"48 65"}, "<48 65>"},
             Row{7, true, " true"},
             Row{7, false, " false"},
             Row{8, array, "[ 1/A]"},
             Row{8, Array(), "[]"},
             Row{9, dictionary, "<</A 3/B/C>>"},
             Row{9, Dictionary(), "<<>>"},
         }) {
        EXPECT_EQ(row.value.index(), row.index) << row.text;
        EXPECT_EQ(row.value.serialize(), row.text);
    }
}

TEST(Value, IsNoneFromTheStart)
{
    const Value value;

    EXPECT_EQ(value.index(), 0U);
    EXPECT_EQ(nothing.index(), 0U);
}

std::string failure(const Value& value)
{
    try {
        return value.serialize();
    } catch (const JobParser::JobParserException& error) {
        return "threw: "s + error.what();
    }
}

TEST(Value, CannotBeWrittenAsNoneOrWithAFalseReferenceAnywhere)
{
    Value dictionary;
    dictionary["A"] = FalseReference(1, 2);

    EXPECT_EQ(failure(Value()), "threw: None not allowed in real objects");
    EXPECT_EQ(failure(FalseReference(1, 2)), "threw: FalseRef not allowed in real objects");
    EXPECT_EQ(failure(dictionary), "threw: FalseRef not allowed in real objects");
    EXPECT_EQ(failure(Array({Value(1.0), dictionary})), "threw: FalseRef not allowed in real objects");
    EXPECT_EQ(Value(FalseReference(1, 2)).index(), 10U);
}

TEST(Value, LeavesOutWhatIsNone)
{
    Value dictionary;
    dictionary["A"];
    dictionary["B"];

    EXPECT_EQ(dictionary.serialize(), "<<>>");
    EXPECT_EQ(Value(Array({Value(), Value()})).serialize(), "[]");
    EXPECT_EQ(Value(Array({Value(), Value(1.0), Value()})).serialize(), "[ 1]");
}

TEST(Value, WritesNumbersWithAtMostSixDecimals)
{
    struct NumberRow {
        double number;
        const char* text;
    };

    for (const auto& [number, text] : {
             NumberRow{0, " 0"},
             NumberRow{-0.0, " -0"},
             NumberRow{100, " 100"},
             NumberRow{612, " 612"},
             NumberRow{12.5, " 12.5"},
             NumberRow{-0.5, " -0.5"},
             NumberRow{1000000, " 1000000"},
             NumberRow{0.0000001, " 0"},
             NumberRow{-0.0000001, " -0"},
             NumberRow{1.23456789, " 1.234568"},
             NumberRow{595.276, " 595.276"},
             NumberRow{9007199254740993.0, " 9007199254740992"},
             NumberRow{1e20, " 100000000000000000000"},
             NumberRow{-12345678.000001, " -12345678.000001"},
         })
        EXPECT_EQ(Value(number).serialize(), text);
}

TEST(Value, EndsAStringAtItsFirstNul)
{
    EXPECT_EQ(Value(ByteString("ab\0cd"s)).serialize(), "(ab)");
}

TEST(Value, SetsTheElementsOfAnArrayApartByTheirBlanksAlone)
{
    EXPECT_EQ(Value(Array({Value(0.0), Value(0.0), Value(612.0), Value(792.0)})).serialize(),
              "[ 0 0 612 792]");
    EXPECT_EQ(Value(Array({Value(Name{"A"}), Value(ByteString("b")), Value(HexString{"0"})})).serialize(),
              "[/A(b)<0>]");
}

TEST(Value, BecomesADictionaryByALookupOfAnEntry)
{
    Value value;

    Value& entry = value["Type"];

    EXPECT_EQ(entry.index(), 0U);
    EXPECT_EQ(value.index(), 9U);
    EXPECT_EQ(std::get<Dictionary>(value).entries().size(), 1U);
    EXPECT_EQ(std::get<Dictionary>(value).entries().front().key, "Type");
    EXPECT_EQ(value.serialize(), "<<>>");
}

TEST(Value, ChangesNothingByAConstantLookup)
{
    Value value;
    value["A"] = 1.0;
    const Value& constant = value;

    EXPECT_EQ(constant["A"].serialize(), " 1");
    EXPECT_EQ(&constant["B"], &nothing);
    EXPECT_EQ(std::get<Dictionary>(value).entries().size(), 1U);
}

TEST(Value, RejectsLookupsInWhatIsNoDictionary)
{
    const Value none;
    Value number = 1.0;
    Value array = Array();

    EXPECT_THROW(none["A"], std::bad_variant_access);
    EXPECT_THROW(static_cast<const Value&>(number)["A"], std::bad_variant_access);
    EXPECT_THROW(number["A"], std::bad_variant_access);
    EXPECT_THROW(array["A"], std::bad_variant_access);
}

TEST(Value, GivesItsNameOrAnEmptyOne)
{
    EXPECT_EQ(Name(Value(Name{"Page"})), "Page");
    EXPECT_EQ(Name(Value()), "");
    EXPECT_EQ(Name(Value(1.0)), "");
    EXPECT_EQ(Name(Value(ByteString("Page"))), "");
}

TEST(Value, CanBeReplacedByAPartOfItself)
{
    Value copied;
    copied["A"]["B"] = 7.0;
    Value moved = copied;

    copied = copied["A"]["B"];
    moved = std::move(moved["A"]);

    EXPECT_EQ(copied.serialize(), " 7");
    EXPECT_EQ(moved.serialize(), "<</B 7>>");
}

TEST(Value, IsIndependentOfItsCopies)
{
    Value original;
    original["A"]["B"] = 1.0;
    Value& inner = original["A"]["B"];
    Value copy = original;

    inner = 2.0;
    copy["A"]["C"] = 3.0;

    EXPECT_EQ(original.serialize(), "<</A<</B 2>>>>");
    EXPECT_EQ(copy.serialize(), "<</A<</B 1/C 3>>>>");
}

Value nestedArrays(std::size_t depth)
{
    Value value;
    for (std::size_t level = 0; level < depth; ++level) {
        std::vector<Value> items;
        items.push_back(std::move(value));
        value = Array(std::move(items));
    }
    return value;
}

TEST(Value, IsCopiedWrittenAndDestroyedAMillionLevelsDeep)
{
    constexpr std::size_t depth = 1000000;

    Value value = nestedArrays(depth);
    Value copy = value;
    value = Value();

    EXPECT_EQ(copy.serialize(), std::string(depth, '[') + std::string(depth, ']'));
}

// Each level was given out to be changed, so that none of them is shared with the copy.
TEST(Value, IsCopiedLevelByLevelWhereItMayBeChanged)
{
    constexpr std::size_t depth = 1000000;
    Value value;
    Value* innermost = &value;
    for (std::size_t level = 0; level < depth; ++level)
        innermost = &(*innermost)["A"];

    const Value copy = value;
    *innermost = 5.0;

    EXPECT_EQ(value.serialize().size(), depth * 6 + 2);
    EXPECT_EQ(copy.serialize().size(), (depth - 1) * 6 + 4);
}

} // namespace
} // namespace Pdf
