#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "JobParser/Export.h"

namespace Torv::IO
{
class IStream;
class MappingGroup;
class MemoryMappedFile;
struct MappedView;
} // namespace Torv::IO

namespace Torv::Security::Endecryptor
{
class Decryptor;
}

namespace JobParser
{

/// Reads a job file byte by byte, or a view at a time, from any position.
///
/// At most 4 MiB of the file are mapped at a time, so that jobs may be far larger than memory. While the
/// position is before the end, the byte there is always mapped: whatever moves the position maps again where
/// that is needed.
///
/// Belongs to one thread. Neither copied nor moved: parsers and chunks refer to it.
class JOBPARSER_EXPORT JobFile
{
public:
    JobFile();
    ~JobFile();
    JobFile(const JobFile&) = delete;
    JobFile& operator=(const JobFile&) = delete;

    /// Opens a file and puts the position at 0. May be called again, for another file. Throws
    /// Torv::GenericException, with the path and the system's reason, if the file cannot be opened or is no
    /// regular file.
    void open(const std::string& path);

    /// The same for a thread that opens many small files one after another while others do so too: mappings
    /// end many at a time, with those of other jobs of the group. The group may be null.
    void open(const std::string& path, std::shared_ptr<Torv::IO::MappingGroup> group);

    /// Opens an encrypted file; all that is read is decrypted. m_realDataSize then is the number of decrypted
    /// bytes, less than fileSize where the cipher pads. Throws Torv::GenericException, as open does, and if
    /// the file is not of this cipher or the key is wrong, as far as that shows.
    void openEncrypted(const std::string& path,
                       std::unique_ptr<Torv::Security::Endecryptor::Decryptor> decryptor);

    /// Unmaps the file. The path stays known.
    void close();

    bool isOpen() const { return data != nullptr; }
    bool atEnd() const { return m_offset >= m_realDataSize; }

    /// The byte at the position, which moves behind it. Throws UnexpectedEndOfFileException at the end.
    std::uint8_t getChar();

    /// The byte at the position, which stays. Throws UnexpectedEndOfFileException at the end.
    std::uint8_t peekChar() const;

    /// Moves the position back by `count` bytes. Asserts that it stays at 0 or above.
    void returnChar(std::int64_t count);

    /// Moves the position forward by `count` bytes, of which there must be at least 1 (asserted). False, with
    /// nothing moved, if that is beyond the end of the data.
    bool advancePos(std::int64_t count);

    /// Moves the position to an offset from 0 to m_realDataSize (asserted).
    void setPos(std::int64_t ofs);

    /// The mapped bytes from the position on. Empty only at the end of the data; otherwise there may be more
    /// data behind them, which is mapped when the position gets there. Valid until the position moves.
    std::span<const std::uint8_t> window() const;

    /// Writes `size` bytes from `offset` to the stream. The position is anywhere afterwards.
    ///
    /// Asserts that the file is open and that the offset lies within the data. Throws
    /// UnexpectedEndOfFileException if the range runs past the end, JobParserException for a negative size,
    /// and what the stream throws.
    void copyToFile(Torv::IO::IStream& stream, std::int64_t offset, std::int64_t size);

    std::string path; ///< As given to open.

private:
    std::unique_ptr<Torv::IO::MemoryMappedFile> mapper;
    std::shared_ptr<const Torv::IO::MappedView> view;

public:
    std::int64_t m_realDataSize = 0; ///< Readable bytes; less than fileSize if the file delivers less.
    std::int64_t fileSize = 0;       ///< Bytes, as the file system reported them.
    std::int64_t m_offset = 0;       ///< The position.

private:
    void takeMapper(std::unique_ptr<Torv::IO::MemoryMappedFile> newMapper, const std::string& newPath);
    void mapView();
    [[noreturn]] static void throwEndOfFile();

    std::int64_t viewSize = 0;
    std::int64_t viewStart = 0;
    std::int64_t viewEnd = 0;
    const std::uint8_t* data = nullptr;
};

inline std::uint8_t JobFile::getChar()
{
    if (m_offset >= m_realDataSize) [[unlikely]]
        throwEndOfFile();
    const std::uint8_t byte = data[m_offset - viewStart];
    if (++m_offset == viewEnd) [[unlikely]]
        mapView();
    return byte;
}

inline std::uint8_t JobFile::peekChar() const
{
    if (m_offset >= m_realDataSize) [[unlikely]]
        throwEndOfFile();
    return data[m_offset - viewStart];
}

inline std::span<const std::uint8_t> JobFile::window() const
{
    // The position may even be behind the end, if the file shrank.
    if (atEnd())
        return {};
    const std::int64_t end = std::min(viewEnd, m_realDataSize);
    return {data + (m_offset - viewStart), static_cast<std::size_t>(end - m_offset)};
}

} // namespace JobParser
