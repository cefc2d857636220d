// Any bytes are a file that claims to be encrypted.

#include <array>
#include <memory>

#include "FuzzSupport.h"
#include "JobParser/JobFile.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Security/Endecryptor/Decryptor.h"

namespace
{

using namespace Torv::Security::Endecryptor;

struct Cipher {
    Algorithm algorithm;
    std::size_t keySize;
    bool pads;
};

constexpr std::array<Cipher, 4> ciphers{{
    {Algorithm::Aes128Cbc, 16, true},
    {Algorithm::Aes256Cbc, 32, true},
    {Algorithm::Aes128Ctr, 16, false},
    {Algorithm::Aes256Ctr, 32, false},
}};

void readAll(JobParser::JobFile& file, const Cipher& cipher)
{
    const std::int64_t padding = file.fileSize - file.m_realDataSize;
    Fuzz::require(cipher.pads ? padding >= 1 && padding <= 16 : padding == 0, "only padding is cut off");
    Torv::IO::StringStream stream;
    file.copyToFile(stream, 0, file.m_realDataSize);
    Fuzz::require(static_cast<std::int64_t>(stream.str().size()) == file.m_realDataSize,
                  "all of it can be read");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    const Fuzz::MemoryFile memoryFile(Fuzz::asText({data, size}));
    for (const Cipher& cipher : ciphers) {
        JobParser::JobFile file;
        const Options options{cipher.algorithm, std::string(cipher.keySize, 'k'), std::string(16, 'v')};
        const bool isOpen = Fuzz::survives(
            [&] { file.openEncrypted(memoryFile.path(), std::make_unique<Decryptor>(options)); });
        Fuzz::require(isOpen || cipher.pads, "any file may be one of a cipher without padding");
        if (isOpen)
            readAll(file, cipher);
    }
    return 0;
}
