#include "tools/StandardErrorLog.h"

#include <exception>
#include <unistd.h>

#include "Torv/IO/FileStream.h"

namespace JobParser::Tool
{
namespace
{

/// Job data must neither break lines nor reach the terminal's escape sequences.
std::string asLine(std::string_view text)
{
    std::string line(text);
    for (char& byte : line)
        if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F)
            byte = '?';
    return line + '\n';
}

/// There is nobody left to tell if standard error takes nothing.
void printRaw(const std::string& lines)
{
    try {
        Torv::IO::FileStream stream(STDERR_FILENO, "standard error");
        stream.write(lines.data(), static_cast<std::uint32_t>(lines.size()));
        stream.flush();
    } catch (const std::exception&) {
    }
}

} // namespace

void printError(std::string_view text)
{
    printRaw(asLine(text));
}

bool StandardErrorLog::isEnabled(int level) const
{
    return level <= m_level || (level == Torv::Log::LevelError && m_hidden == Hidden::Kept);
}

void StandardErrorLog::write(int level, const std::string& message, const std::string&, bool, const char*,
                             int)
{
    if (level == Torv::Log::LevelError) {
        const std::lock_guard lock(m_mutex);
        m_lastError = message;
    }
    if (level <= m_level) {
        printError(message);
    } else if (level == Torv::Log::LevelError && m_hidden == Hidden::Kept) {
        const std::lock_guard lock(m_mutex);
        m_heldBack += asLine(message);
    }
}

void StandardErrorLog::showHeldBackErrors()
{
    const std::lock_guard lock(m_mutex);
    printRaw(m_heldBack);
    m_heldBack.clear();
}

} // namespace JobParser::Tool
