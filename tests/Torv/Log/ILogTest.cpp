#include "Torv/Log/ILog.h"

#include <gtest/gtest.h>
#include <memory>

namespace
{

class CountedLog : public Torv::Log::ILog
{
public:
    explicit CountedLog(int& ended) : m_ended(ended) {}
    ~CountedLog() override { ++m_ended; }

    bool isEnabled(int) const override { return true; }
    void write(int, const std::string&, const std::string&, bool, const char*, int) override {}

private:
    int& m_ended;
};

} // namespace

TEST(ILog, EndsTheWholeLogThroughTheInterface)
{
    int ended = 0;
    std::unique_ptr<Torv::Log::ILog> log = std::make_unique<CountedLog>(ended);

    log.reset();

    EXPECT_EQ(ended, 1);
}

TEST(ILog, NumbersItsLevelsAsHostsKnowThem)
{
    EXPECT_EQ(Torv::Log::LevelDump, 0);
    EXPECT_EQ(Torv::Log::LevelError, 1);
    EXPECT_EQ(Torv::Log::LevelWarning, 3);
    EXPECT_EQ(Torv::Log::LevelDebug, 4);
}
