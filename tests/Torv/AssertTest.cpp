#include "Torv/Assert.h"

#include <csignal>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <thread>

namespace
{

[[noreturn]] void throwTexts(const char* expression, const char* file, const char* function)
{
    throw std::runtime_error(std::string(expression) + "|" + file + "|" + function);
}

[[noreturn]] void throwNumber(const char*, const char*, const char*)
{
    throw 1;
}

void comeBack(const char*, const char*, const char*) {}

/// Brings the former handler back when the test ends.
class Handler
{
public:
    explicit Handler(Torv::AssertionHandler handler) : m_former(Torv::setAssertionHandler(handler)) {}
    Handler(const Handler&) = delete;
    Handler& operator=(const Handler&) = delete;
    ~Handler() { Torv::setAssertionHandler(m_former); }

private:
    Torv::AssertionHandler m_former;
};

void checkPositive(int number)
{
    TORV_ASSERT(number > 0, "Numbers");
}

} // namespace

TEST(Assert, LetsATrueConditionPass)
{
    const Handler handler(throwTexts);

    EXPECT_NO_THROW(checkPositive(1));
}

TEST(Assert, EvaluatesItsConditionOnce)
{
    int count = 0;

    TORV_ASSERT(++count > 0, "Numbers");

    EXPECT_EQ(count, 1);
}

TEST(Assert, GivesExpressionFileAndFunctionToTheHandlerAndLetsItThrow)
{
    const Handler handler(throwTexts);
    std::string texts;

    try {
        checkPositive(0);
    } catch (const std::runtime_error& thrown) {
        texts = thrown.what();
    }

    EXPECT_EQ(texts, "number > 0|Numbers|checkPositive");
}

TEST(Assert, GivesTheFormerHandlerWhenANewOneIsInstalled)
{
    const Handler handler(throwTexts);

    EXPECT_EQ(Torv::setAssertionHandler(comeBack), throwTexts);
    EXPECT_EQ(Torv::setAssertionHandler(throwTexts), comeBack);
}

TEST(ScopedAssertionHandler, ComesBeforeTheHandlerOfTheProcess)
{
    const Handler handler(comeBack);
    const Torv::ScopedAssertionHandler scoped(throwTexts);

    EXPECT_THROW(checkPositive(0), std::runtime_error);
}

TEST(ScopedAssertionHandler, GivesTheFormerOneBackWhenItEnds)
{
    const Torv::ScopedAssertionHandler outer(throwTexts);
    {
        const Torv::ScopedAssertionHandler inner(throwNumber);
        EXPECT_THROW(checkPositive(0), int);
    }

    EXPECT_THROW(checkPositive(0), std::runtime_error);
}

TEST(ScopedAssertionHandler, LeavesItsThreadToTheProcessWhereItIsNull)
{
    const Handler handler(throwTexts);
    const Torv::ScopedAssertionHandler outer(throwNumber);
    const Torv::ScopedAssertionHandler inner(nullptr);

    EXPECT_THROW(checkPositive(0), std::runtime_error);
}

TEST(ScopedAssertionHandler, LeavesOtherThreadsAlone)
{
    const Handler handler(throwTexts);
    const Torv::ScopedAssertionHandler scoped(throwNumber);
    bool toldTheProcess = false;

    std::thread([&] {
        try {
            checkPositive(0);
        } catch (const std::runtime_error&) {
            toldTheProcess = true;
        }
    }).join();

    EXPECT_TRUE(toldTheProcess);
}

TEST(AssertDeathTest, AbortsBehindAScopedHandlerThatEnded)
{
    {
        const Torv::ScopedAssertionHandler scoped(throwTexts);
    }

    EXPECT_EXIT(checkPositive(0), testing::KilledBySignal(SIGABRT), "Assertion failed: number > 0");
}

TEST(AssertDeathTest, AbortsIfAScopedHandlerReturns)
{
    const Torv::ScopedAssertionHandler scoped(comeBack);

    EXPECT_EXIT(checkPositive(0), testing::KilledBySignal(SIGABRT), "^$");
}

TEST(AssertDeathTest, PrintsTheThreeTextsAndAbortsByDefault)
{
    EXPECT_EXIT(checkPositive(0), testing::KilledBySignal(SIGABRT),
                "^Assertion failed: number > 0, file Numbers, function checkPositive\n$");
}

TEST(AssertDeathTest, ReturnsToTheDefaultForANullHandler)
{
    const Handler handler(throwTexts);
    Torv::setAssertionHandler(nullptr);

    EXPECT_EXIT(checkPositive(0), testing::KilledBySignal(SIGABRT), "Assertion failed: number > 0");
}

TEST(AssertDeathTest, AbortsIfTheHandlerReturns)
{
    const Handler handler(comeBack);

    EXPECT_EXIT(checkPositive(0), testing::KilledBySignal(SIGABRT), "^$");
}
