#include "worker/RequestLoop.h"

#include <array>
#include <cerrno>
#include <optional>
#include <string>
#include <unistd.h>

#include "worker/Descriptor.h"
#include "worker/Service.h"

namespace JobParser::Worker
{
namespace
{

// Two paths and some numbers; what is longer is no request.
constexpr std::size_t longestLine = std::size_t{1} << 20;

/// Reads lines of a limited length.
class LineReader
{
public:
    explicit LineReader(int input) : m_input(input) {}

    /// The next line without its end; the last one may lack it. Of a line that is too long the beginning.
    std::optional<std::string> next()
    {
        std::string line;
        bool isAnything = false;
        while (true) {
            if (m_at == m_size && !fill())
                return isAnything ? std::optional(line) : std::nullopt;
            const char character = m_buffer[m_at++];
            isAnything = true;
            if (character == '\n')
                return line;
            if (line.size() < longestLine)
                line += character;
        }
    }

private:
    bool fill()
    {
        ssize_t count = 0;
        do
            count = ::read(m_input, m_buffer.data(), m_buffer.size());
        while (count < 0 && errno == EINTR);
        m_at = 0;
        m_size = count > 0 ? static_cast<std::size_t>(count) : 0;
        return m_size > 0;
    }

    int m_input;
    std::array<char, 4096> m_buffer{};
    std::size_t m_at = 0;
    std::size_t m_size = 0;
};

bool isEmpty(const std::string& line)
{
    return line.find_first_not_of(" \t\r") == std::string::npos;
}

} // namespace

void answerRequests(Service& service, int input, int output)
{
    LineReader reader(input);
    service.prepare();
    while (const std::optional<std::string> line = reader.next()) {
        if (isEmpty(*line))
            continue;
        const std::optional<std::string> reply = service.answer(*line);
        if (!reply || !writeAll(output, *reply + '\n'))
            return;
        service.prepare();
    }
}

} // namespace JobParser::Worker
