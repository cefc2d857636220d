#pragma once

#include <cstdint>

#include "Torv/Export.h"

namespace Torv::IO
{

/// A stream of bytes. What a stream cannot do (see capabilities) throws GenericException.
class TORV_EXPORT IStream
{
public:
    enum Capability : unsigned { CanRead = 1, CanWrite = 2, CanSeek = 4 };
    enum Origin : int { FromStart = 0, FromCurrent = 1 };

    virtual ~IStream();

    /// Reads up to `size` bytes. Gives how many came; 0 only at the end (or for a size of 0).
    virtual std::uint32_t read(void* buffer, std::uint32_t size) = 0;
    /// Writes all of the bytes or throws.
    virtual void write(const void* data, std::uint32_t size) = 0;
    /// Moves the position and gives the new one. A place before the start throws; one behind the end is
    /// allowed, and a read there gives 0.
    virtual std::int64_t seek(std::int64_t offset, int origin) = 0;
    /// The Capability flags that hold for this stream.
    virtual unsigned capabilities() const = 0;
};

} // namespace Torv::IO
