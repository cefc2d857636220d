#pragma once

#include <cstdint>
#include <string>

namespace Torv::IO
{
class IStream;
}

namespace JobParser
{
class Job;
}

namespace JobParser::Tool
{

/// What a page tells beside the job.
struct ShownFile {
    std::string name;
    std::int64_t size;
    std::string cause; ///< Why the job was not understood; empty if it was.
};

/// Writes one page of HTML that shows the job and needs nothing else: its record in words, the file as a bar,
/// its chunks as a list.
///
/// What the job says stands in the page as data. No text of it can become markup, and a policy in the page
/// lets no script run but the page's own. Throws what the stream and the chunks' dump throw.
void writeShowPage(const Job& job, const ShownFile& file, Torv::IO::IStream& stream);

} // namespace JobParser::Tool
