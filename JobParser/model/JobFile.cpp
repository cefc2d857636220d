#include "JobParser/JobFile.h"

#include "JobParser/JobParserException.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"

#include "Torv/Assert.h"
#include "Torv/FileSystem/File.h"
#include "Torv/IO/IStream.h"
#include "Torv/IO/MemoryMappedFile.h"
#include "Torv/ScopeGuard.h"
#include "Torv/Security/Endecryptor/EncryptedMemoryMappedFile.h"

namespace JobParser
{
namespace
{

constexpr std::int64_t maxViewSize = 4194304;
// What a view holds before the position, so that returning bytes over a view boundary rarely maps again.
constexpr std::int64_t viewLead = 1024;

std::int64_t viewAlignment()
{
    static const std::int64_t alignment = Torv::IO::MemoryMappedFile::alignment();
    return alignment;
}

} // namespace

JobFile::JobFile() = default;
JobFile::~JobFile() = default;

void JobFile::open(const std::string& newPath)
{
    open(newPath, nullptr);
}

void JobFile::open(const std::string& newPath, std::shared_ptr<Torv::IO::MappingGroup> group)
{
    takeMapper(std::make_unique<Torv::IO::MemoryMappedFile>(newPath, std::move(group)), newPath);
    mapView();
}

void JobFile::openEncrypted(const std::string& newPath,
                            std::unique_ptr<Torv::Security::Endecryptor::Decryptor> decryptor)
{
    using Torv::Security::Endecryptor::EncryptedMemoryMappedFile;
    takeMapper(std::make_unique<EncryptedMemoryMappedFile>(newPath, std::move(decryptor)), newPath);
    // How long the data is shows at its end alone, and parsers ask before they get there.
    m_offset = fileSize;
    mapView();
    setPos(0);
}

void JobFile::takeMapper(std::unique_ptr<Torv::IO::MemoryMappedFile> newMapper, const std::string& newPath)
{
    close();
    view.reset();
    mapper = std::move(newMapper);
    path = newPath;
    fileSize = Torv::FileSystem::File::fileSize(path);
    m_realDataSize = fileSize;
    m_offset = 0;
}

void JobFile::close()
{
    if (mapper && mapper->isMapped())
        mapper->unmap();
    m_realDataSize = 0;
    fileSize = 0;
    m_offset = 0;
    viewSize = 0;
    viewStart = 0;
    viewEnd = 0;
    data = nullptr;
}

void JobFile::returnChar(std::int64_t count)
{
    // A handler may throw, and then the position must still be where data are.
    if (count > m_offset) [[unlikely]]
        Torv::assertFailed("m_offset >= 0", "JobFile", __func__);
    m_offset -= count;
    if (m_offset < viewStart)
        mapView();
}

bool JobFile::advancePos(std::int64_t count)
{
    TORV_ASSERT(count > 0, "JobFile");
    if (count > m_realDataSize - m_offset)
        return false;
    m_offset += count;
    if (m_offset >= viewEnd)
        mapView();
    return true;
}

void JobFile::setPos(std::int64_t ofs)
{
    TORV_ASSERT(ofs >= 0 && ofs <= m_realDataSize, "JobFile");
    m_offset = ofs;
    if (ofs < viewStart || ofs >= viewEnd)
        mapView();
}

void JobFile::copyToFile(Torv::IO::IStream& stream, std::int64_t offset, std::int64_t size)
{
    TORV_ASSERT(isOpen(), "JobFile");
    if (size < 0)
        throw JobParserException("Negative size of a range");
    for (std::int64_t ofs = offset, left = size; left > 0;) {
        TORV_ASSERT(ofs >= 0 && ofs <= m_realDataSize, "JobFile");
        m_offset = ofs;
        if (ofs < viewStart || ofs >= viewEnd)
            mapView();
        const auto bytes = window();
        const std::int64_t count = std::min(left, static_cast<std::int64_t>(bytes.size()));
        if (count == 0)
            throwEndOfFile();
        stream.write(bytes.data(), static_cast<std::uint32_t>(count));
        ofs += count;
        left -= count;
    }
}

void JobFile::mapView()
{
    TORV_ASSERT(mapper != nullptr, "JobFile");
    if (mapper->isMapped())
        mapper->unmap();
    // If the system refuses the view there is none for the position, so that the reader must end as closed.
    Torv::ScopeGuard closing([this] { close(); });
    std::int64_t start = m_offset - viewLead;
    start -= start % viewAlignment();
    const std::int64_t wanted = std::min(fileSize - start, maxViewSize);
    view = mapper->map(start, static_cast<std::uint32_t>(wanted));
    closing.disarm();
    const std::int64_t delivered = view->offset + view->size;
    if (start + wanted > delivered)
        m_realDataSize = delivered;
    data = view->data;
    viewStart = view->offset;
    viewSize = view->size;
    viewEnd = viewStart + viewSize;
}

void JobFile::throwEndOfFile()
{
    throw UnexpectedEndOfFileException();
}

} // namespace JobParser
