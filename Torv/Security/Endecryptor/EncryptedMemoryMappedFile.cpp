#include "Torv/Security/Endecryptor/EncryptedMemoryMappedFile.h"

#include <algorithm>
#include <span>
#include <utility>

#include "Torv/FileSystem/File.h"
#include "Torv/GenericException.h"
#include "Torv/ScopeGuard.h"

namespace Torv::Security::Endecryptor
{
namespace
{

constexpr std::int64_t blockSize = Decryptor::blockSize;

std::span<const std::uint8_t> bytesOf(const IO::MappedView& view)
{
    return {view.data, static_cast<std::size_t>(view.size)};
}

} // namespace

/// A view that owns its bytes.
class EncryptedMemoryMappedFile::DecryptedView : public IO::MappedView
{
public:
    DecryptedView(std::unique_ptr<const std::uint8_t[]> bytes, std::size_t count, std::int64_t viewOffset)
        : MappedView(bytes.get(), static_cast<std::int64_t>(count), viewOffset), m_bytes(std::move(bytes))
    {
    }

private:
    std::unique_ptr<const std::uint8_t[]> m_bytes;
};

EncryptedMemoryMappedFile::EncryptedMemoryMappedFile(const std::string& path,
                                                     std::unique_ptr<Decryptor> decryptor)
    : MemoryMappedFile(path), m_path(path), m_decryptor(std::move(decryptor)),
      m_size(FileSystem::File::fileSize(path))
{
    if (m_decryptor == nullptr)
        fail("There is no decryptor");
    if (m_decryptor->isPadded() && (m_size == 0 || m_size % blockSize != 0))
        fail("The size is no multiple of the cipher's blocks of 16 bytes");
}

EncryptedMemoryMappedFile::~EncryptedMemoryMappedFile() = default;

std::shared_ptr<const IO::MappedView> EncryptedMemoryMappedFile::map(std::int64_t offset,
                                                                     std::uint32_t length)
{
    const ScopeGuard unmapping([this] { MemoryMappedFile::unmap(); });
    const std::int64_t size = std::clamp<std::int64_t>(m_size - offset, 0, length);
    const auto encrypted = MemoryMappedFile::map(offset, static_cast<std::uint32_t>(size));
    if (encrypted->size != size)
        fail("The file became shorter");
    try {
        m_view = decrypt(*encrypted);
    } catch (const GenericException& error) {
        fail(error.what());
    }
    return m_view;
}

std::shared_ptr<const IO::MappedView> EncryptedMemoryMappedFile::decrypt(const IO::MappedView& encrypted)
{
    Decryptor::Stretch stretch{encrypted.offset, bytesOf(encrypted), {}, false};
    if (stretch.bytes.empty())
        return std::make_shared<const IO::MappedView>(nullptr, 0, encrypted.offset);
    stretch.isLast = encrypted.offset + encrypted.size == m_size;
    std::shared_ptr<const IO::MappedView> before;
    if (m_decryptor->isPadded() && encrypted.offset > 0) {
        before =
            MemoryMappedFile::map(encrypted.offset - alignment(), static_cast<std::uint32_t>(alignment()));
        if (before->size != alignment())
            throw GenericException("The file became shorter");
        stretch.precedent = bytesOf(*before).last(Decryptor::blockSize);
    }
    auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(stretch.bytes.size());
    const std::size_t count = m_decryptor->decrypt(stretch, bytes.get());
    return std::make_shared<const DecryptedView>(std::move(bytes), count, encrypted.offset);
}

void EncryptedMemoryMappedFile::unmap()
{
    m_view.reset();
}

bool EncryptedMemoryMappedFile::isMapped() const
{
    return m_view != nullptr;
}

void EncryptedMemoryMappedFile::fail(const std::string& reason) const
{
    throw GenericException("Cannot decrypt file | path=" + m_path + " | error=" + reason);
}

} // namespace Torv::Security::Endecryptor
