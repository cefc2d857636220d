#include "Torv/IO/MemoryMappedFile.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "Torv/GenericException.h"
#include "Torv/ScopeGuard.h"
#include "Torv/SystemError.h"

namespace Torv::IO
{

/// What the system was asked to map. Ends with itself.
struct MemoryMappedFile::FileMapping {
    FileMapping(int descriptor, std::int64_t mappedOffset, std::int64_t mappedSize)
        : offset(mappedOffset), size(mappedSize),
          address(::mmap(nullptr, static_cast<std::size_t>(size), PROT_READ, MAP_SHARED, descriptor, offset))
    {
    }
    ~FileMapping()
    {
        if (isMapped())
            ::munmap(address, static_cast<std::size_t>(size));
    }
    FileMapping(const FileMapping&) = delete;
    FileMapping& operator=(const FileMapping&) = delete;

    bool isMapped() const { return address != MAP_FAILED; }
    const std::uint8_t* data() const { return static_cast<const std::uint8_t*>(address); }
    bool contains(std::int64_t start, std::int64_t count) const
    {
        return start >= offset && start + count <= offset + size;
    }

    const std::int64_t offset;
    const std::int64_t size;
    void* const address;
};

/// A view that holds its mapping.
class MemoryMappedFile::FileView : public MappedView
{
public:
    FileView(std::shared_ptr<const FileMapping> mapping, std::int64_t viewOffset, std::int64_t viewSize)
        : MappedView(mapping->data() + (viewOffset - mapping->offset), viewSize, viewOffset),
          m_mapping(std::move(mapping))
    {
    }

private:
    std::shared_ptr<const FileMapping> m_mapping;
};

namespace
{

constexpr std::uint8_t noByte = 0;

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

MemoryMappedFile::MemoryMappedFile(const std::string& path)
    : m_path(path), m_descriptor(openRegularFile(m_path))
{
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
    std::shared_ptr<const FileMapping> mapping = m_mapping.lock();
    if (mapping == nullptr || !mapping->contains(offset, size)) {
        mapping = std::make_shared<const FileMapping>(m_descriptor, offset, size);
        if (!mapping->isMapped())
            throwCannotMap(m_path, errno);
        m_mapping = mapping;
    }
    m_view = std::make_shared<const FileView>(std::move(mapping), offset, size);
    return m_view;
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
