#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Torv/Export.h"
#include "Torv/IO/MemoryMappedFile.h"
#include "Torv/Security/Endecryptor/Decryptor.h"

namespace Torv::Security::Endecryptor
{

/// Gives the decrypted stretches of an encrypted file, each in memory of its own.
///
/// Where the cipher pads, the data is shorter than the file: a view that reaches the end of the file ends
/// before the padding.
class TORV_EXPORT EncryptedMemoryMappedFile : public IO::MemoryMappedFile
{
public:
    /// Opens the file. Throws GenericException, with the path and the reason, if it cannot be opened, or
    /// cannot be of this cipher because of its size.
    EncryptedMemoryMappedFile(const std::string& path, std::unique_ptr<Decryptor> decryptor);
    ~EncryptedMemoryMappedFile() override;

    /// Decrypts `length` bytes from `offset`, a multiple of alignment(). Throws GenericException, with the
    /// path and the reason, if the key is wrong, the file is not what it was when it was opened, or the
    /// system refuses.
    std::shared_ptr<const IO::MappedView> map(std::int64_t offset, std::uint32_t length) override;
    void unmap() override;
    bool isMapped() const override;

private:
    class DecryptedView;

    std::shared_ptr<const IO::MappedView> decrypt(const IO::MappedView& encrypted);
    [[noreturn]] void fail(const std::string& reason) const;

    std::string m_path;
    std::unique_ptr<Decryptor> m_decryptor;
    std::int64_t m_size; ///< Of the encrypted file, when it was opened.
    std::shared_ptr<const IO::MappedView> m_view;
};

} // namespace Torv::Security::Endecryptor
