#include "Torv/IO/MemoryMappedFile.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Torv/GenericException.h"
#include "Torv/ScopeGuard.h"
#include "Torv/SystemError.h"

namespace Torv::IO
{
namespace
{

constexpr std::uint8_t noByte = 0;

/// A view that ends its mapping with itself.
class FileView : public MappedView
{
public:
    FileView(void* address, std::int64_t viewSize, std::int64_t viewOffset)
        : MappedView(static_cast<const std::uint8_t*>(address), viewSize, viewOffset), m_address(address)
    {
    }

    ~FileView() override { ::munmap(m_address, static_cast<std::size_t>(size)); }

private:
    void* m_address;
};

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
    if (offset < 0)
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

    const auto byteCount = static_cast<std::size_t>(size);
    void* const address = ::mmap(nullptr, byteCount, PROT_READ, MAP_SHARED, m_descriptor, offset);
    if (address == MAP_FAILED)
        throwCannotMap(m_path, errno);
    ScopeGuard unmapping([address, byteCount] { ::munmap(address, byteCount); });
    m_view = std::make_shared<const FileView>(address, size, offset);
    unmapping.disarm();
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
    return ::sysconf(_SC_PAGESIZE);
}

} // namespace Torv::IO
