#include "pdf/Object.h"

#include <gtest/gtest.h>

#include "JobParser/JobParserException.h"

namespace Pdf
{
namespace
{

using namespace std::string_literals;

TEST(Object, IsEmptyFromTheStart)
{
    const Object object;

    EXPECT_EQ(object.reference, (Reference{0, 0}));
    EXPECT_EQ(object.value.index(), 0U);
    EXPECT_EQ(object.stream, "");
}

TEST(Object, IsWrittenWithoutAStream)
{
    Object object{{3, 1}, {}, {}};
    object.value["Length"] = Name{"Any"};

    EXPECT_EQ(object.serialize(), "3 1 obj\n<</Length/Any>>\nendobj\n");
}

TEST(Object, IsWrittenWithTheStreamThatWasSet)
{
    Object object;

    object.setStream("abc");

    EXPECT_EQ(object.serialize(), "0 0 obj\n<</Length 3>>\nstream\nabc\nendstream\nendobj\n");
}

TEST(Object, CountsWhatIsAppendedToItsStream)
{
    Object object;
    object.value["Length"] = Reference{7, 0};

    object.append2Stream("ab");
    object.append2Stream("\0c"s);

    EXPECT_EQ(object.stream, "ab\0c"s);
    EXPECT_EQ(object.serialize(), "0 0 obj\n<</Length 4>>\nstream\nab\0c\nendstream\nendobj\n"s);
}

TEST(Object, ReplacesTheStreamThatWasSetBefore)
{
    Object object;
    object.setStream("abc");

    object.setStream("x");

    EXPECT_EQ(object.serialize(), "0 0 obj\n<</Length 1>>\nstream\nx\nendstream\nendobj\n");
}

TEST(Object, RejectsALengthThatIsNotThatOfItsStream)
{
    Object object;
    object.setStream("abc");
    object.value["Length"] = 4.0;

    try {
        object.serialize();
        FAIL();
    } catch (const JobParser::JobParserException& error) {
        EXPECT_STREQ(error.what(), "Inconsistent stream length");
    }
}

TEST(Object, TakesALengthByItsWholePart)
{
    Object object;
    object.setStream("abc");
    object.value["Length"] = 3.9;

    EXPECT_EQ(object.serialize(), "0 0 obj\n<</Length 3.9>>\nstream\nabc\nendstream\nendobj\n");
}

TEST(Object, RejectsAStreamWithoutALengthThatIsANumber)
{
    Object object;
    object.setStream("abc");
    object.value["Length"] = Reference{1, 0};
    EXPECT_THROW(object.serialize(), std::bad_variant_access);

    object.value = Dictionary();
    EXPECT_THROW(object.serialize(), std::bad_variant_access);

    object.value = Array();
    EXPECT_THROW(object.serialize(), std::bad_variant_access);
    EXPECT_THROW(object.setStream("a"), std::bad_variant_access);
    EXPECT_THROW(object.append2Stream("a"), std::bad_variant_access);
}

TEST(Object, CannotBeWrittenWithoutAValue)
{
    EXPECT_THROW(Object().serialize(), JobParser::JobParserException);
}

TEST(Object, EndsItsValueAtANul)
{
    Object object{{1, 0}, HexString{"4\0 5"s}, {}};

    EXPECT_EQ(object.serialize(), "1 0 obj\n<4\nendobj\n");
}

TEST(Object, IsCopied)
{
    Object object;
    object.setStream("abc");

    const Object copy = object;
    object.append2Stream("d");

    EXPECT_EQ(copy.serialize(), "0 0 obj\n<</Length 3>>\nstream\nabc\nendstream\nendobj\n");
}

} // namespace
} // namespace Pdf
