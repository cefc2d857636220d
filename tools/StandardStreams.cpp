#include "tools/StandardStreams.h"

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <unistd.h>

namespace JobParser::Tool
{

void secureStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest free number is this one. Opened for reading, it refuses output as a closed one does.
        if (::fcntl(descriptor, F_GETFD) < 0 && ::open("/dev/null", O_RDONLY) < 0)
            return;
    }
}

void writeText(Torv::IO::IStream& stream, std::string_view text)
{
    constexpr std::size_t maxWrite = std::size_t{1} << 30;
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), maxWrite)))
        stream.write(text.data(), static_cast<std::uint32_t>(std::min(text.size(), maxWrite)));
}

} // namespace JobParser::Tool
