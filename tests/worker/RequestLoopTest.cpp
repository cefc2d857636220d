#include "worker/RequestLoop.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

#include "worker/Descriptor.h"
#include "worker/Service.h"

namespace JobParser::Worker
{
namespace
{

/// What comes out for what goes in, which has to fit into a pipe.
std::string answered(std::string_view text)
{
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    if (::pipe(in.data()) != 0 || ::pipe(out.data()) != 0)
        return "no pipes";
    const Descriptor input(in[0]);
    const Descriptor replies(out[0]);
    Descriptor output(out[1]);
    {
        const Descriptor requests(in[1]);
        writeAll(requests.get(), text);
    }
    {
        // Its child has the output open, too, as long as it waits for another request.
        Service service{ServiceOptions()};
        answerRequests(service, input.get(), output.get());
    }
    output.close();
    std::string answer(65536, '\0');
    answer.resize(static_cast<std::size_t>(::read(replies.get(), answer.data(), answer.size())));
    return answer;
}

TEST(RequestLoop, AnswersALineWithALine)
{
    const std::string answer = answered("one\n\ntwo\r\n");

    EXPECT_EQ(std::count(answer.begin(), answer.end(), '\n'), 2);
    EXPECT_TRUE(answer.ends_with('\n'));
}

TEST(RequestLoop, StopsAtTheCommand)
{
    EXPECT_EQ(answered("{\"command\":\"exit\"}\nmore\n"), "");
}

TEST(RequestLoop, StopsIfNobodyTakesTheAnswers)
{
    std::signal(SIGPIPE, SIG_IGN);
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    ASSERT_EQ(::pipe(in.data()), 0);
    ASSERT_EQ(::pipe(out.data()), 0);
    const Descriptor input(in[0]);
    const Descriptor requests(in[1]);
    const Descriptor output(out[1]);
    ::close(out[0]);
    writeAll(requests.get(), "one\ntwo\n");
    Service service{ServiceOptions()};

    // The input stays open: only the failed answer ends the loop.
    answerRequests(service, input.get(), output.get());

    SUCCEED();
}

} // namespace
} // namespace JobParser::Worker
