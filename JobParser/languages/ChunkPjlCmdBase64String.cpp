#include "JobParser/languages/ChunkPjlCmdBase64String.h"

#include "Torv/Encoding.h"
#include "Torv/Json/Object.h"
#include "Torv/Variant.h"

namespace JobParser
{

ChunkPjlCmdBase64String::ChunkPjlCmdBase64String(UnserializationContext&, const Torv::Variant& dto)
    : ChunkPjlCmd(dto["cmd"].toString(), Torv::Encoding::base64Decode(dto["param"].toString()))
{
}

std::string ChunkPjlCmdBase64String::toJson(SerializationContext&) const
{
    Torv::Json::Object json;
    json.add("cmd", cmd);
    json.add("param", Torv::Encoding::base64Encode(param));
    return json.take();
}

} // namespace JobParser
