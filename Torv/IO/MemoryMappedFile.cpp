#include "Torv/IO/MemoryMappedFile.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <memory>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

#include "Torv/GenericException.h"
#include "Torv/IO/MappingGroup.h"
#include "Torv/ScopeGuard.h"
#include "Torv/SystemError.h"

namespace Torv::IO
{

/// A stretch of a file that is in memory, whole.
struct MemoryMappedFile::Stretch {
    virtual ~Stretch() = default;
    Stretch(const Stretch&) = delete;
    Stretch& operator=(const Stretch&) = delete;

    bool contains(std::int64_t start, std::int64_t count) const
    {
        return start >= offset && start + count <= offset + size;
    }

    std::int64_t offset;
    std::int64_t size;
    const std::uint8_t* data = nullptr; ///< Null if the system refused it; errno then tells why.

protected:
    Stretch(std::int64_t theOffset, std::int64_t theSize) : offset(theOffset), size(theSize) {}
};

/// Ends its mapping with itself.
struct MemoryMappedFile::MappedStretch : Stretch {
    MappedStretch(int descriptor, std::int64_t theOffset, std::int64_t theSize)
        : Stretch(theOffset, theSize),
          address(::mmap(nullptr, static_cast<std::size_t>(size), PROT_READ, MAP_SHARED, descriptor, offset))
    {
        if (address != MAP_FAILED)
            data = static_cast<const std::uint8_t*>(address);
    }
    ~MappedStretch() override
    {
        if (data != nullptr)
            ::munmap(address, static_cast<std::size_t>(size));
    }

    void* const address;
};

/// Ends its mapping when the group does.
struct MemoryMappedFile::GroupedStretch : Stretch {
    GroupedStretch(std::shared_ptr<const std::uint8_t> theMapping, std::int64_t theOffset,
                   std::int64_t theSize)
        : Stretch(theOffset, theSize), mapping(std::move(theMapping))
    {
        data = mapping.get();
    }

    const std::shared_ptr<const std::uint8_t> mapping;
};

/// Holds what it read, which is less than was asked for where the file ends.
struct MemoryMappedFile::ReadStretch : Stretch {
    ReadStretch(int descriptor, std::int64_t theOffset, std::int64_t theSize)
        : Stretch(theOffset, theSize),
          bytes(std::make_unique_for_overwrite<std::uint8_t[]>(static_cast<std::size_t>(theSize)))
    {
        std::int64_t count = 0;
        while (count < size) {
            const ssize_t got = ::pread(descriptor, bytes.get() + count,
                                        static_cast<std::size_t>(size - count), offset + count);
            if (got < 0 && errno == EINTR)
                continue;
            if (got < 0)
                return;
            if (got == 0)
                break;
            count += got;
        }
        size = count;
        data = bytes.get();
    }

    std::unique_ptr<std::uint8_t[]> bytes;
};

/// A view that holds the stretch that it is a part of.
class MemoryMappedFile::FileView : public MappedView
{
public:
    FileView(std::shared_ptr<const Stretch> stretch, std::int64_t viewOffset, std::int64_t viewSize)
        : MappedView(stretch->data + (viewOffset - stretch->offset), viewSize, viewOffset),
          m_stretch(std::move(stretch))
    {
    }

private:
    std::shared_ptr<const Stretch> m_stretch;
};

namespace
{

constexpr std::uint8_t noByte = 0;
constexpr std::int64_t kibibyte = 1024;
// To map takes some calls and faults: longer than to read what is no larger.
constexpr std::int64_t leastMapped = 64 * kibibyte;

bool processHasThreads()
{
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded == 0;
#else
    return true;
#endif
}

// The end of a mapping interrupts every processor that runs a thread of the process, which takes longer than
// to read what is small.
std::int64_t mostRead(MemoryMappedFile::Access access)
{
    switch (access) {
    case MemoryMappedFile::Access::Mapped: return 0;
    case MemoryMappedFile::Access::Read: return 1024 * kibibyte;
    case MemoryMappedFile::Access::Automatic: break;
    }
    return processHasThreads() ? 1024 * kibibyte : leastMapped;
}

[[noreturn]] void throwCannotOpen(const std::string& path, const std::string& reason)
{
    throw GenericException("Cannot open file | path=" + path + " | error=" + reason);
}

[[noreturn]] void throwCannotMap(const std::string& path, int error)
{
    throw GenericException("Cannot map file | path=" + path + " | error=" + systemError(error));
}

void checkRegular(int descriptor, const std::string& path)
{
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0)
        throwCannotOpen(path, systemError(errno));
    if (S_ISDIR(status.st_mode))
        throwCannotOpen(path, systemError(EISDIR));
    if (!S_ISREG(status.st_mode))
        throwCannotOpen(path, "Not a regular file");
}

int openRegularFile(const std::string& path)
{
    // Without O_NONBLOCK a FIFO would hold the process until somebody writes to it.
    constexpr int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    int descriptor = -1;
    do
        descriptor = ::open(path.c_str(), flags);
    while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0)
        throwCannotOpen(path, systemError(errno));

    ScopeGuard closing([descriptor] { ::close(descriptor); });
    checkRegular(descriptor, path);
    closing.disarm();
    return descriptor;
}

} // namespace

MappedView::MappedView(const std::uint8_t* viewData, std::int64_t viewSize, std::int64_t viewOffset)
    : data(viewData != nullptr ? viewData : &noByte), size(viewSize), offset(viewOffset)
{
}

MappedView::~MappedView() = default;

MemoryMappedFile::MemoryMappedFile(const std::string& path, Access access)
    : m_path(path), m_access(access), m_descriptor(openRegularFile(m_path))
{
}

MemoryMappedFile::MemoryMappedFile(const std::string& path, std::shared_ptr<MappingGroup> group)
    : MemoryMappedFile(path)
{
    m_group = std::move(group);
}

MemoryMappedFile::~MemoryMappedFile()
{
    ::close(m_descriptor);
}

std::shared_ptr<const MappedView> MemoryMappedFile::map(std::int64_t offset, std::uint32_t length)
{
    if (offset < 0 || offset % alignment() != 0)
        throwCannotMap(m_path, EINVAL);
    struct stat status = {};
    if (::fstat(m_descriptor, &status) != 0)
        throwCannotMap(m_path, errno);

    const std::int64_t available = std::max<std::int64_t>(status.st_size - offset, 0);
    const std::int64_t size = std::min<std::int64_t>(length, available);
    if (size == 0) {
        m_view = std::make_shared<const MappedView>(nullptr, 0, offset);
        return m_view;
    }

    // A reader that gets to the end of the file asks for its last bytes once more.
    std::shared_ptr<const Stretch> stretch = m_stretch.lock();
    if (stretch == nullptr || !stretch->contains(offset, size)) {
        stretch = take(offset, size);
        if (stretch->data == nullptr)
            throwCannotMap(m_path, errno);
        m_stretch = stretch;
    }
    const std::int64_t delivered = std::min(size, stretch->offset + stretch->size - offset);
    m_view = std::make_shared<const FileView>(std::move(stretch), offset, delivered);
    return m_view;
}

std::shared_ptr<const MemoryMappedFile::Stretch> MemoryMappedFile::take(std::int64_t offset,
                                                                        std::int64_t size) const
{
    if (m_group != nullptr && size > leastMapped) {
        if (auto mapping = m_group->map(m_descriptor, offset, size))
            return std::make_shared<const GroupedStretch>(std::move(mapping), offset, size);
    }
    if (size <= mostRead(m_access))
        return std::make_shared<const ReadStretch>(m_descriptor, offset, size);
    return std::make_shared<const MappedStretch>(m_descriptor, offset, size);
}

void MemoryMappedFile::unmap()
{
    m_view.reset();
}

bool MemoryMappedFile::isMapped() const
{
    return m_view != nullptr;
}

std::int64_t MemoryMappedFile::alignment()
{
    static const std::int64_t pageSize = ::sysconf(_SC_PAGESIZE);

    return pageSize;
}

} // namespace Torv::IO
