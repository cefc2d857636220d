#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "Torv/IO/IStream.h"

namespace Torv::IO
{

/// A stream in memory. Writes go to the position and overwrite or lengthen what is there.
class TORV_EXPORT StringStream : public IStream
{
public:
    StringStream();
    /// Holds a copy of the text; the position is at its start.
    explicit StringStream(std::string text);
    ~StringStream() override;

    std::uint32_t read(void* buffer, std::uint32_t size) override;
    void write(const void* data, std::uint32_t size) override;
    std::int64_t seek(std::int64_t offset, int origin) override;
    unsigned capabilities() const override;

    const std::string& str() const { return m_text; }

private:
    std::string m_text;
    std::size_t m_position = 0;
};

} // namespace Torv::IO
