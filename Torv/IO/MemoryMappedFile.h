#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Torv/Export.h"

namespace Torv::IO
{

class MappingGroup;

/// A stretch of a file in memory. It stays readable as long as somebody holds it.
struct TORV_EXPORT MappedView {
    MappedView(const std::uint8_t* data, std::int64_t size, std::int64_t offset);
    virtual ~MappedView();
    MappedView(const MappedView&) = delete;
    MappedView& operator=(const MappedView&) = delete;

    const std::uint8_t* const data; ///< Never null, not even for a view of 0 bytes.
    const std::int64_t size;        ///< Bytes.
    const std::int64_t offset;      ///< Where in the file the first byte stands.
};

/// Maps stretches of a regular file for reading, one at a time.
///
/// A file that is cut short while it is mapped takes the process down when the missing bytes are touched
/// (SIGBUS): spool files must not be truncated while they are parsed.
class TORV_EXPORT MemoryMappedFile
{
public:
    /// How views come into memory. Small ones may be read instead of mapped: of up to 1 MiB, and where it is
    /// automatic of up to 64 KiB, as long as the process has no threads.
    enum class Access { Automatic, Mapped, Read };

    /// Opens the file without blocking. Throws GenericException, with the path and the system's reason, if
    /// it cannot be opened or is no regular file.
    explicit MemoryMappedFile(const std::string& path, Access access = Access::Automatic);

    /// The same, with mappings of more than 64 KiB in a group where it takes them.
    MemoryMappedFile(const std::string& path, std::shared_ptr<MappingGroup> group);
    virtual ~MemoryMappedFile();
    MemoryMappedFile(const MemoryMappedFile&) = delete;
    MemoryMappedFile& operator=(const MemoryMappedFile&) = delete;

    /// Maps `length` bytes from `offset`, a multiple of alignment(). The view may hold fewer bytes than asked
    /// for: then the readable data ends there. Throws GenericException if the system refuses.
    virtual std::shared_ptr<const MappedView> map(std::int64_t offset, std::uint32_t length);
    /// Lets go of the view given last; it ends when its other holders let go too.
    virtual void unmap();
    virtual bool isMapped() const;

    /// What view offsets must be multiples of, in bytes.
    static std::int64_t alignment();

private:
    struct Stretch;
    struct MappedStretch;
    struct GroupedStretch;
    struct ReadStretch;
    class FileView;

    std::shared_ptr<const Stretch> take(std::int64_t offset, std::int64_t size) const;

    std::string m_path;
    Access m_access;
    std::shared_ptr<MappingGroup> m_group; // May be null.
    int m_descriptor;
    std::weak_ptr<const Stretch> m_stretch; // The last one, as long as a view needs it.
    std::shared_ptr<const MappedView> m_view;
};

} // namespace Torv::IO
