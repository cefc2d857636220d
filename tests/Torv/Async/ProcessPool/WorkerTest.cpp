#include "Torv/Async/ProcessPool/Worker.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/Children.h"

#include "Torv/GenericException.h"

namespace Torv::Async::ProcessPool
{
namespace
{

using Words = std::vector<std::string>;

Deadline inMilliseconds(int count)
{
    return Clock::now() + std::chrono::milliseconds(count);
}

/// What a worker of this command line answers to the request `1`.
std::string answerOf(const Words& words)
{
    Worker worker(testWorkerPath, words);
    return worker.ask("1\n", inMilliseconds(20000)).value_or("it was not asked");
}

std::string failureOf(Worker& worker, const std::string& request, const Deadline& deadline)
{
    try {
        return "answered: " + worker.ask(request, deadline).value_or("it was not asked");
    } catch (const GenericException& error) {
        return error.what();
    }
}

std::string failureOf(const Words& words)
{
    Worker worker(testWorkerPath, words);
    return failureOf(worker, "1\n", inMilliseconds(20000));
}

TEST(Worker, AnswersOneRequestAfterTheOther)
{
    Worker worker(testWorkerPath, {"each", "print", "{\"a\":1}%0A"});

    for (int request = 0; request < 100; ++request)
        EXPECT_EQ(worker.ask("{}\n", std::nullopt), "{\"a\":1}\n");
}

TEST(Worker, GivesAllThatIsPrintedUpToTheFirstLineWithABrace)
{
    EXPECT_EQ(answerOf({"each", "print", "hello%0A %7Bno%7D%0A%0A%7B%22a%22:1%7D%0A"}),
              "hello\n {no}\n\n{\"a\":1}\n");
    EXPECT_EQ(answerOf({"print", "ready%0A", "each", "print", "{}%0A"}), "ready\n{}\n");
    EXPECT_EQ(answerOf({"each", "print", "{", "sleep", "20", "print", "}%0A"}), "{}\n");
}

TEST(Worker, KeepsWhatIsPrintedBehindAnAnswerForTheNext)
{
    Worker worker(testWorkerPath, {"each", "print", "{}%0Abye%0A"});

    EXPECT_EQ(worker.ask("1\n", std::nullopt), "{}\n");
    EXPECT_EQ(worker.ask("1\n", std::nullopt), "bye\n{}\n");
}

TEST(Worker, TakesNoAnswerToTheRequestBeforeThatCameBehindOtherLines)
{
    for (const std::string extra : {"bye%0A{\"b\":2}%0A", "bye%0A{half", "{\"b\":2}%0A", "{half"}) {
        Worker worker(testWorkerPath, {"each", "print", "{\"a\":1}%0A" + extra});

        EXPECT_EQ(worker.ask("1\n", std::nullopt), "{\"a\":1}\n") << extra;
        EXPECT_EQ(worker.ask("2\n", std::nullopt), std::nullopt) << extra;
    }
}

TEST(Worker, KnowsWhetherItsAnswerWasItsLast)
{
    Worker staying(testWorkerPath, {});
    Worker leaving(testWorkerPath, {"each", "print", "last words", "leave", "0"});

    staying.ask("1\n", std::nullopt);
    leaving.ask("1\n", std::nullopt);

    EXPECT_FALSE(staying.isOver());
    EXPECT_TRUE(leaving.isOver());
}

TEST(Worker, AnswersByTheEndOfItsOutputIfItEndsInOrder)
{
    EXPECT_EQ(answerOf({"each", "print", "no brace", "leave", "0"}), "no brace");
    EXPECT_EQ(answerOf({"each", "print", "{\"a\":1}", "leave", "0"}), "{\"a\":1}");
    EXPECT_EQ(answerOf({"each", "leave", "0"}), "");
    EXPECT_EQ(answerOf({"each", "print", "closed", "close", "hang"}), "closed");
}

TEST(Worker, FailsARequestThatItDiesOf)
{
    EXPECT_EQ(failureOf({"each", "crash"}), "The worker process died | signal=6");
    EXPECT_EQ(failureOf({"each", "print", "{\"half", "leave", "7"}), "The worker process died | status=7");
}

TEST(Worker, FailsARequestThatItDiesOfWhileAnotherHoldsItsOutput)
{
    EXPECT_EQ(failureOf({"each", "fork", "crash"}), "The worker process died | signal=6");
}

TEST(Worker, IsNotAskedAgainOnceItHasEndedWhileAnotherHoldsItsOutput)
{
    Worker worker(testWorkerPath, {"each", "print", "hello%0A", "fork", "leave", "0"});
    ASSERT_EQ(worker.ask("1\n", inMilliseconds(20000)), "hello\n");

    EXPECT_EQ(worker.ask("1\n", inMilliseconds(20000)), std::nullopt);
}

TEST(Worker, AnswersEvenIfItDiesOfItAfterwards)
{
    EXPECT_EQ(answerOf({"each", "print", "{}%0A", "crash"}), "{}\n");
}

TEST(Worker, IsKilledAtTheDeadline)
{
    Worker worker(testWorkerPath, {"each", "hang"});
    const auto start = Clock::now();

    EXPECT_EQ(failureOf(worker, "1\n", inMilliseconds(50)), "The worker process did not answer in time");

    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(50));
    EXPECT_TRUE(eventually([&] { return worker.ending() == " | signal=9"; }));
}

TEST(Worker, GivesAnswersOfSixteenMebibytesAndNoMore)
{
    EXPECT_EQ(answerOf({"each", "print", "{", "flood", "16777214", "print", "%0A"}).size(), 16777216U);
    EXPECT_EQ(answerOf({"each", "print", "{", "flood", "16777214", "print", "%0Abye%0A"}).size(), 16777216U);
    EXPECT_EQ(failureOf({"each", "print", "{", "flood", "16777215", "print", "%0A"}),
              "The worker process answered too much | limit=16777216");
    EXPECT_EQ(failureOf({"each", "flood", "100000000"}),
              "The worker process answered too much | limit=16777216");
}

TEST(Worker, TakesRequestsLargerThanAPipeFromOneThatTalksMeanwhile)
{
    Worker worker(testWorkerPath,
                  {"print", "x", "flood", "1000000", "print", "%0A", "each", "print", "{}%0A"});
    const std::string request = std::string(1000000, '1') + "\n";

    EXPECT_EQ(worker.ask(request, inMilliseconds(20000)).value_or("").size(), 1000005U);
    EXPECT_EQ(worker.ask(request, inMilliseconds(20000)), "{}\n");
}

TEST(Worker, MayAnswerBeforeItHasReadAll)
{
    Worker worker(testWorkerPath, {"print", "{}%0A", "hang"});
    // It has talked out of turn by the time that it is asked, or it has not yet.
    const auto answer = worker.ask(std::string(1000000, '1') + "\n", inMilliseconds(20000));

    EXPECT_TRUE(!answer || *answer == "{}\n");
}

TEST(Worker, IsNotAskedIfItHasEnded)
{
    Worker worker(testWorkerPath, {"leave", "0"});
    ASSERT_TRUE(eventually([&] { return !worker.ending().empty(); }));

    EXPECT_EQ(worker.ask("1\n", std::nullopt), std::nullopt);
}

TEST(Worker, WasNotAskedIfItEndsWithoutReadingTheRequest)
{
    for (const char* status : {"0", "3"}) {
        Worker worker(testWorkerPath, {"sleep", "100", "leave", status});

        EXPECT_EQ(worker.ask("1\n", std::nullopt), std::nullopt);
    }
}

TEST(Worker, WasNotAskedIfItEndsWithoutReadingARequestLargerThanAPipe)
{
    Worker worker(testWorkerPath, {"sleep", "100", "leave", "0"});

    EXPECT_EQ(worker.ask(std::string(1000000, '1') + "\n", inMilliseconds(20000)), std::nullopt);
}

TEST(Worker, IsNotAskedIfItHasAnsweredWithoutARequest)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string done = directory.path("done");
    for (const char* text : {"{}%0A", "hello%0A{}%0A", "{half an answer"}) {
        Worker worker(testWorkerPath, {"print", text, "logpid", done});
        ASSERT_TRUE(eventually([&] { return std::filesystem::exists(done); }));
        std::filesystem::remove(done);

        EXPECT_EQ(worker.ask("1\n", std::nullopt), std::nullopt) << text;
    }
}

TEST(Worker, EndsByItsStopCommand)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string told = directory.path("told");
    Worker worker(testWorkerPath, {"exit", "log", told});

    worker.dismiss("stop\n");

    EXPECT_TRUE(eventually([&] { return worker.ending() == " | status=0"; }));
    EXPECT_TRUE(std::filesystem::exists(told));
}

TEST(Worker, EndsByTheEndOfItsInput)
{
    Worker worker(testWorkerPath, {});

    worker.dismiss("");

    EXPECT_TRUE(eventually([&] { return worker.ending() == " | status=0"; }));
}

TEST(Worker, MayBeDismissedWhenItIsDead)
{
    Worker worker(testWorkerPath, {"leave", "3"});
    ASSERT_TRUE(eventually([&] { return worker.ending() == " | status=3"; }));

    EXPECT_NO_THROW(worker.dismiss("stop\n"));
}

} // namespace
} // namespace Torv::Async::ProcessPool
