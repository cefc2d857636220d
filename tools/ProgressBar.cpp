#include "tools/ProgressBar.h"

#include <algorithm>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

#include "Torv/Format.h"

namespace JobParser::Tool
{
namespace
{

constexpr std::chrono::milliseconds interval{100};
constexpr int usualColumns = 80;
constexpr int leastBarWidth = 10;
constexpr double bytesPerMegabyte = 1e6;

int columnsOfTerminal()
{
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usualColumns;
}

/// A terminal that takes nothing is no reason to stop.
void print(const std::string& text)
{
    [[maybe_unused]] const ssize_t ignored = ::write(STDERR_FILENO, text.data(), text.size());
}

/// How much is done, from 0 to 1. Files count where there are no bytes.
double shareOf(const Progress& done, const Progress& total)
{
    const auto part = [](std::int64_t some, std::int64_t all) {
        return all > 0 ? std::clamp(static_cast<double>(some) / static_cast<double>(all), 0.0, 1.0) : 0.0;
    };
    return total.bytes > 0 ? part(done.bytes, total.bytes) : part(done.files, total.files);
}

std::string timeLeft(double share, double seconds)
{
    constexpr double knownShare = 0.001;
    constexpr std::int64_t minute = 60;
    if (share < knownShare)
        return "-:-- left";
    const auto left = static_cast<std::int64_t>(seconds / share - seconds + 0.5);
    if (left < minute * minute)
        return Torv::format("%d:%02d left", static_cast<int>(left / minute), static_cast<int>(left % minute));
    return Torv::format("%d h %02d left", static_cast<int>(left / (minute * minute)),
                        static_cast<int>(left / minute % minute));
}

/// The line after `seconds` of work.
std::string lineOf(const Progress& done, const Progress& total, double seconds, int columns)
{
    const double share = shareOf(done, total);
    const double rate = seconds > 0 ? static_cast<double>(done.bytes) / bytesPerMegabyte / seconds : 0;
    const std::string text = Torv::format(" %3d%%  %I64d/%I64d files  %.1f MB/s  ",
                                          static_cast<int>(share * 100), done.files, total.files, rate) +
                             timeLeft(share, seconds);
    const int width = columns - static_cast<int>(text.size()) - 3; // The brackets, and the last column.
    if (width < leastBarWidth)
        return text.substr(1, static_cast<std::size_t>(std::max(columns - 1, 0)));
    const auto filled = static_cast<std::size_t>(share * width);
    return "[" + std::string(filled, '#') + std::string(static_cast<std::size_t>(width) - filled, '-') + "]" +
           text;
}

} // namespace

ProgressBar::ProgressBar(bool isShown, const Progress& total) : m_isShown(isShown), m_total(total) {}

ProgressBar::~ProgressBar()
{
    clear();
}

void ProgressBar::show(const Progress& done)
{
    if (!m_isShown)
        return;
    const auto now = Clock::now();
    if (now < m_next && m_isOnScreen)
        return;
    m_next = now + interval;
    m_isOnScreen = true;
    const double seconds = std::chrono::duration<double>(now - m_start).count();
    print("\r" + lineOf(done, m_total, seconds, columnsOfTerminal()) + "\x1B[K");
}

void ProgressBar::clear()
{
    if (m_isOnScreen)
        print("\r\x1B[K");
    m_isOnScreen = false;
}

} // namespace JobParser::Tool
