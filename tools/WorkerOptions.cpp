#include "tools/WorkerOptions.h"

#include <charconv>
#include <vector>

#include "Torv/GenericException.h"
#include "Torv/Security/Endecryptor/Decryptor.h"
#include "Torv/Text.h"

namespace JobParser::Tool
{
namespace
{

std::optional<std::string> fromHex(std::string_view text)
{
    constexpr int base = 16;
    std::string bytes;
    for (; text.size() >= 2; text.remove_prefix(2)) {
        std::uint8_t byte = 0;
        const char* const end = text.data() + 2;
        if (std::from_chars(text.data(), end, byte, base).ptr != end)
            return std::nullopt;
        bytes += static_cast<char>(byte);
    }
    return text.empty() ? std::optional(bytes) : std::nullopt;
}

} // namespace

std::optional<Torv::Security::Endecryptor::Options> readDecryption(std::string_view text)
{
    namespace Endecryptor = Torv::Security::Endecryptor;
    const std::vector<std::string> parts = Torv::explode(text, ":", 3, false);
    if (parts.size() != 3)
        return std::nullopt;
    const auto algorithm = Endecryptor::algorithmByName(parts[0]);
    const auto key = fromHex(parts[1]);
    const auto iv = fromHex(parts[2]);
    if (!algorithm || !key || !iv)
        return std::nullopt;
    const Endecryptor::Options options{*algorithm, *key, *iv};
    try {
        const Endecryptor::Decryptor tested(options);
    } catch (const Torv::GenericException&) {
        return std::nullopt;
    }
    return options;
}

} // namespace JobParser::Tool
