#include "tests/corpus/PjlRewriting.h"

namespace Corpus
{
namespace
{

constexpr std::string_view keyword = "@PJL";
constexpr std::string_view blockStart = "\x1B%-12345X@PJL";
constexpr std::string_view whiteSpace = " \t\r\n\v\f";

std::string_view trimmed(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(whiteSpace);
    if (begin == std::string_view::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(whiteSpace) - begin + 1);
}

std::string rewrittenLine(std::string_view command)
{
    std::string line(keyword);
    const std::size_t wordSize = command.find_first_of(" =");
    if (!command.empty())
        line.append(" ").append(command.substr(0, wordSize));
    if (wordSize != std::string_view::npos)
        line.append(" ").append(trimmed(command.substr(wordSize + 1)));
    return line + "\r\n";
}

} // namespace

std::string withPjlRewritten(std::string_view job)
{
    std::string out;
    for (std::size_t block; (block = job.find(blockStart)) != std::string_view::npos;) {
        const std::size_t firstLine = block + blockStart.size() - keyword.size();
        out.append(job.substr(0, firstLine));
        job.remove_prefix(firstLine);
        bool entered = false;
        while (!entered && job.starts_with(keyword)) {
            const std::size_t lineSize = job.find('\n') + 1;
            const std::string_view command = trimmed(job.substr(keyword.size(), lineSize - keyword.size()));
            out += rewrittenLine(command);
            job.remove_prefix(lineSize);
            entered = command.starts_with("ENTER");
        }
    }
    return out.append(job);
}

} // namespace Corpus
