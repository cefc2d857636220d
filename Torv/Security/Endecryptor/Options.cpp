#include "Torv/Security/Endecryptor/Options.h"

#include "Torv/Encoding.h"
#include "Torv/Json/Object.h"

namespace Torv::Security::Endecryptor
{

std::string Options::toJson() const
{
    Json::Object object;
    object.add("algorithm", algorithm);
    object.add("key", Encoding::base64Encode(key));
    object.add("iv", Encoding::base64Encode(iv));
    return object.take();
}

} // namespace Torv::Security::Endecryptor
