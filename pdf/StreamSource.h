#pragma once

#include <vector>

#include "JobParser/Export.h"
#include "pdf/ISource.h"

namespace Torv::IO
{
class IStream;
}

namespace Pdf::Parser
{

/// Reads a stream from its position on. Where the stream can seek, its position is always behind the last
/// byte that was read or skipped.
class JOBPARSER_EXPORT StreamSource final : public ISource
{
public:
    explicit StreamSource(Torv::IO::IStream& theStream) : stream(theStream) {}

    /// Throws EofException if the stream reads nothing, and what the stream throws.
    std::uint8_t next() override;
    /// Seeks forward; a place behind the end is found out by the next next(). Throws what the stream throws.
    void skip(unsigned long long count) override;

    Torv::IO::IStream& stream;

private:
    void lookAhead();

    std::vector<std::uint8_t> m_buffer;
};

} // namespace Pdf::Parser
