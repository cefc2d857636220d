#include "Torv/ScopeGuard.h"

#include <csignal>
#include <gtest/gtest.h>
#include <stdexcept>

TEST(ScopeGuard, RunsItsFunctionOnceWhenTheScopeEnds)
{
    int count = 0;

    {
        const Torv::ScopeGuard guard([&count] { ++count; });
        EXPECT_EQ(count, 0);
    }

    EXPECT_EQ(count, 1);
}

TEST(ScopeGuard, RunsItsFunctionWhenAnExceptionLeavesTheScope)
{
    int count = 0;
    const auto fail = [&count] {
        const Torv::ScopeGuard guard([&count] { ++count; });
        throw std::runtime_error("left");
    };

    EXPECT_THROW(fail(), std::runtime_error);
    EXPECT_EQ(count, 1);
}

TEST(ScopeGuard, DoesNothingOnceItIsDisarmed)
{
    int count = 0;

    {
        Torv::ScopeGuard guard([&count] { ++count; });
        guard.disarm();
    }

    EXPECT_EQ(count, 0);
}

TEST(ScopeGuardDeathTest, TakesAFunctionThatThrowsForAFailedAssertion)
{
    const auto run = [] { const Torv::ScopeGuard guard([] { throw std::runtime_error("thrown"); }); };

    EXPECT_EXIT(
        run(), testing::KilledBySignal(SIGABRT),
        "Assertion failed: ScopeGuard function does not throw, file ScopeGuard, function ~ScopeGuard");
}

TEST(ScopeGuardDeathTest, EndsTheProcessEvenIfTheAssertionHandlerThrows)
{
    const auto run = [] {
        Torv::setAssertionHandler(
            [](const char*, const char*, const char*) { throw std::runtime_error("no"); });
        const Torv::ScopeGuard guard([] { throw std::runtime_error("thrown"); });
    };

    EXPECT_EXIT(run(), testing::KilledBySignal(SIGABRT), "");
}
