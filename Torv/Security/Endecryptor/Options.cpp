#include "Torv/Security/Endecryptor/Options.h"

#include <array>

#include "Torv/Encoding.h"
#include "Torv/Json/Object.h"
#include "Torv/Text.h"
#include "Torv/Variant.h"

namespace Torv::Security::Endecryptor
{
namespace
{

struct NamedAlgorithm {
    std::string_view name;
    Algorithm algorithm;
};

constexpr std::array<NamedAlgorithm, 4> namedAlgorithms{{
    {"aes-128-cbc", Algorithm::Aes128Cbc},
    {"aes-256-cbc", Algorithm::Aes256Cbc},
    {"aes-128-ctr", Algorithm::Aes128Ctr},
    {"aes-256-ctr", Algorithm::Aes256Ctr},
}};

} // namespace

std::optional<Algorithm> algorithmByName(std::string_view name)
{
    for (const NamedAlgorithm& row : namedAlgorithms) {
        if (Torv::iequals(row.name, name))
            return row.algorithm;
    }
    return std::nullopt;
}

std::string Options::toJson() const
{
    Json::Object object;
    object.add("algorithm", algorithm);
    object.add("key", Encoding::base64Encode(key));
    object.add("iv", Encoding::base64Encode(iv));
    return object.take();
}

Options Options::fromJson(const Variant& object)
{
    return {static_cast<Algorithm>(object["algorithm"].toInt()),
            Encoding::base64Decode(object["key"].toString()),
            Encoding::base64Decode(object["iv"].toString())};
}

} // namespace Torv::Security::Endecryptor
