#pragma once

#include <chrono>
#include <cstdint>

namespace JobParser::Tool
{

/// How far a scan is.
struct Progress {
    std::int64_t files = 0;
    std::int64_t bytes = 0;
};

/// A line on a terminal that shows how far a scan is, how fast, and how long it will take.
class ProgressBar
{
public:
    using Clock = std::chrono::steady_clock;

    /// Nothing is shown if `isShown` is false. `total` is what there is to do; more may come of it.
    ProgressBar(bool isShown, const Progress& total);
    /// Takes the line away.
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Shows what is done so far, unless that was just shown.
    void show(const Progress& done);

    /// Takes the line away, so that something else can be printed; show brings it back.
    void clear();

private:
    const bool m_isShown;
    const Progress m_total;
    const Clock::time_point m_start = Clock::now();
    Clock::time_point m_next = m_start;
    bool m_isOnScreen = false;
};

} // namespace JobParser::Tool
