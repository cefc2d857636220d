#include "Torv/Security/Endecryptor/Decryptor.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "Torv/Format.h"
#include "Torv/GenericException.h"
#include "Torv/Security/Endecryptor/OpenSsl.h"

namespace Torv::Security::Endecryptor
{
namespace
{

using Block = std::array<std::uint8_t, Decryptor::blockSize>;

// OpenSSL counts in int.
constexpr std::size_t maxUpdate = std::size_t{1} << 30;

/// 0 for a number that is no algorithm.
std::size_t keySize(Algorithm algorithm)
{
    switch (algorithm) {
    case Algorithm::Aes128Cbc: return 16;
    case Algorithm::Aes256Cbc: return 32;
    case Algorithm::Aes128Ctr: return 16;
    case Algorithm::Aes256Ctr: return 32;
    }
    return 0;
}

const EVP_CIPHER* cipherOf(Algorithm algorithm)
{
    switch (algorithm) {
    case Algorithm::Aes128Cbc: return openSsl().aes128Cbc();
    case Algorithm::Aes256Cbc: return openSsl().aes256Cbc();
    case Algorithm::Aes128Ctr: return openSsl().aes128Ctr();
    case Algorithm::Aes256Ctr: return openSsl().aes256Ctr();
    }
    return nullptr;
}

void checkSize(const char* what, std::size_t size, std::size_t wanted)
{
    if (size != wanted)
        throw GenericException(
            format("The %s has the wrong length | bytes=%zu | wanted=%zu", what, size, wanted));
}

const std::uint8_t* bytesOf(const std::string& text)
{
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

Block toBlock(std::span<const std::uint8_t> bytes)
{
    Block block{};
    std::copy_n(bytes.begin(), block.size(), block.begin());
    return block;
}

/// The counter is one number of 16 bytes, the first byte the highest, and wraps.
Block counterAt(Block counter, std::uint64_t blocks)
{
    for (std::size_t at = counter.size(); at-- > 0 && blocks != 0;) {
        const std::uint64_t sum = counter[at] + (blocks & 0xFF);
        counter[at] = static_cast<std::uint8_t>(sum);
        blocks = (blocks >> 8) + (sum >> 8);
    }
    return counter;
}

/// One run of OpenSSL over a stretch.
class Run
{
public:
    Run(Algorithm algorithm, const std::uint8_t* key, const Block& vector, bool cutPadding)
        : m_context(openSsl().newContext(), openSsl().freeContext)
    {
        require(m_context != nullptr);
        require(openSsl().decryptInit(m_context.get(), cipherOf(algorithm), nullptr, key, vector.data()) ==
                1);
        require(openSsl().setPadding(m_context.get(), cutPadding ? 1 : 0) == 1);
    }

    std::size_t decrypt(std::span<const std::uint8_t> bytes, std::uint8_t* out)
    {
        std::size_t written = 0;
        for (int count = 0; !bytes.empty(); written += static_cast<std::size_t>(count)) {
            const auto part = bytes.first(std::min(bytes.size(), maxUpdate));
            require(openSsl().decryptUpdate(m_context.get(), out + written, &count, part.data(),
                                            static_cast<int>(part.size())) == 1);
            bytes = bytes.subspan(part.size());
        }
        int count = 0;
        if (openSsl().decryptFinal(m_context.get(), out + written, &count) != 1) {
            openSsl().clearErrors();
            throw GenericException("The padding is wrong: another key, or no file of this cipher");
        }
        return written + static_cast<std::size_t>(count);
    }

private:
    static void require(bool done)
    {
        if (done)
            return;
        // The list of errors belongs to the thread, which may be one on which the host uses OpenSSL too.
        openSsl().clearErrors();
        throw GenericException("The cipher library refuses to decrypt");
    }

    std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> m_context;
};

} // namespace

Decryptor::Decryptor(Options options) : m_options(std::move(options))
{
    const std::size_t wanted = keySize(m_options.algorithm);
    if (wanted == 0)
        throw GenericException(format("Unknown cipher | algorithm=%d", m_options.algorithm));
    checkSize("key", m_options.key.size(), wanted);
    checkSize("initialisation vector", m_options.iv.size(), blockSize);
}

Decryptor::~Decryptor() = default;

bool Decryptor::isPadded() const
{
    return m_options.algorithm == Algorithm::Aes128Cbc || m_options.algorithm == Algorithm::Aes256Cbc;
}

std::size_t Decryptor::decrypt(const Stretch& stretch, std::uint8_t* out) const
{
    if (isPadded() && stretch.bytes.size() % blockSize != 0)
        throw GenericException("The size is no multiple of the cipher's blocks of 16 bytes");
    Block vector = toBlock({bytesOf(m_options.iv), blockSize});
    if (!isPadded())
        vector = counterAt(vector, static_cast<std::uint64_t>(stretch.offset) / blockSize);
    else if (stretch.precedent.size() == blockSize)
        vector = toBlock(stretch.precedent);
    Run run(m_options.algorithm, bytesOf(m_options.key), vector, isPadded() && stretch.isLast);
    return run.decrypt(stretch.bytes, out);
}

} // namespace Torv::Security::Endecryptor
