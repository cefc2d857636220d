#include "Torv/Async/ProcessPool/Arguments.h"

#include <array>
#include <gtest/gtest.h>

namespace Torv::Async::ProcessPool
{
namespace
{

using Words = std::vector<std::string>;

struct Row {
    const char* text;
    Words words;
};

TEST(Arguments, AreSplitAtBlanksOutsideQuotes)
{
    const std::array<Row, 16> rows{{
        {"", {}},
        {"   ", {}},
        {"a", {"a"}},
        {"a b", {"a", "b"}},
        {"  a   b  ", {"a", "b"}},
        {"a\tb", {"a\tb"}},
        {R"("a b")", {"a b"}},
        {R"("a b" c)", {"a b", "c"}},
        {R"(-x"a b"y)", {"-xa by"}},
        {R"("")", {""}},
        {R"(a "" b)", {"a", "", "b"}},
        {R"("a\"b\\c\d")", {R"(a"b\cd)"}},
        {R"(a\ b\"c d")", {R"(a\)", R"(b\c d)"}},
        {R"('a b')", {"'a", "b'"}},
        {R"("a b)", {"a b"}},
        {R"("a\)", {"a"}},
    }};

    for (const Row& row : rows)
        EXPECT_EQ(splitArguments(row.text), row.words) << row.text;
}

TEST(Arguments, GiveAJsonStringBackAsItsText)
{
    EXPECT_EQ(splitArguments(R"(-q e "{\"algorithm\":1,\"key\":\"AA==\",\"iv\":\"a b\"}")"),
              (Words{"-q", "e", R"({"algorithm":1,"key":"AA==","iv":"a b"})"}));
}

} // namespace
} // namespace Torv::Async::ProcessPool
