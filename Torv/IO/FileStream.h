#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "Torv/Export.h"
#include "Torv/IO/IStream.h"

namespace Torv::IO
{

/// Writes to an open descriptor: a file, a pipe, standard output. It can neither read nor seek.
///
/// Small writes are collected, up to 64 KiB. A failed write is final: what was lost leaves no hole that later
/// writes could close, so all of them fail with the same reason.
class TORV_EXPORT FileStream : public IStream
{
public:
    /// The descriptor stays the caller's, who closes it after the stream has ended. `name` stands in the
    /// messages of exceptions, mostly the path.
    FileStream(int descriptor, std::string name);
    /// Writes out what is collected, as far as that goes. Whoever wants to hear of failures calls flush().
    ~FileStream() override;
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    /// Always throws GenericException.
    std::uint32_t read(void* buffer, std::uint32_t size) override;
    /// Throws GenericException with the name and the system's reason.
    void write(const void* data, std::uint32_t size) override;
    /// Always throws GenericException.
    std::int64_t seek(std::int64_t offset, int origin) override;
    unsigned capabilities() const override;

    /// Hands what is collected to the system. Throws as write() does.
    void flush();

private:
    void writeThrough(const char* data, std::size_t size) noexcept;
    void throwIfFailed() const;

    int m_descriptor;
    std::string m_name;
    std::string m_buffer;
    int m_error = 0;
};

} // namespace Torv::IO
