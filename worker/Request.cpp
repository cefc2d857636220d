#include "worker/Request.h"

#include <algorithm>
#include <limits>

#include "worker/WorkerException.h"

#include "Torv/Json/Json.h"
#include "Torv/Variant.h"

namespace JobParser::Worker
{
namespace
{

constexpr std::int32_t greatestTolerance = 255;

std::uint32_t unsignedNumber(const Torv::Variant& value)
{
    const long long number = value.toInt64();
    if (number < 0 || number > std::numeric_limits<std::uint32_t>::max())
        throw WorkerException(ErrorCode::BadRequest, "A number is out of range");
    return static_cast<std::uint32_t>(number);
}

std::uint32_t optionalNumber(const Torv::Variant& params, const char* key)
{
    Torv::Variant value;
    return params.contains(key, value) && !value.isNull() ? unsignedNumber(value) : 0;
}

ParseRequest readParse(const Torv::Variant& object)
{
    ParseRequest request;
    request.pdl = static_cast<Pdl>(object["pdl"].toInt());
    request.jobPath = object["jobPath"].toString();
    Torv::Variant tolerance;
    if (object.contains("grayscaleTolerance", tolerance) && !tolerance.isNull())
        request.grayscaleTolerance = std::clamp(tolerance.toInt(), 0, greatestTolerance);
    return request;
}

ConversionFormat readFormat(const Torv::Variant& value)
{
    const int number = value.toInt();
    if (number < static_cast<int>(ConversionFormat::Pdf) ||
        number > static_cast<int>(ConversionFormat::PostScript))
        throw WorkerException(ErrorCode::BadRequest,
                              "There is no such conversion format: " + std::to_string(number));
    return static_cast<ConversionFormat>(number);
}

ConvertRequest readConvert(const Torv::Variant& params)
{
    ConvertRequest request;
    request.jobPath = params["jobPath"].toString();
    request.outPath = params["outPath"].toString();
    request.format = readFormat(params["conversionFormat"]);
    request.pageCount = optionalNumber(params, "pageCount");
    Torv::Variant forceMono;
    if (params.contains("forceMono", forceMono) && !forceMono.isNull())
        request.forceMono = forceMono.toBool();
    request.boxWidth = optionalNumber(params, "imgBoundingBoxWidth");
    request.boxHeight = optionalNumber(params, "imgBoundingBoxHeight");
    request.dpi = optionalNumber(params, "imgDpi");
    return request;
}

Request readObject(const Torv::Variant& object)
{
    const std::string command = object["command"].toString();
    if (command == "parse")
        return readParse(object);
    if (command == "convert")
        return readConvert(object["params"]);
    if (command == "exit")
        return ExitRequest();
    throw WorkerException(ErrorCode::BadRequest, "There is no such command: " + command);
}

} // namespace

Request readRequest(const std::string& text)
{
    try {
        return readObject(Torv::Json::parse(text));
    } catch (const WorkerException&) {
        throw;
    } catch (const Torv::GenericException& error) {
        throw WorkerException(ErrorCode::BadRequest, error.what());
    }
}

bool asksForConversion(const std::string& text)
{
    try {
        return Torv::Json::parse(text)["command"].toString() == "convert";
    } catch (const Torv::GenericException&) {
        return false;
    }
}

} // namespace JobParser::Worker
