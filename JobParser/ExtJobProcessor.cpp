#include "JobParser/ExtJobProcessor.h"

#include "Torv/Format.h"
#include "Torv/GenericException.h"
#include "Torv/Json/Json.h"
#include "Torv/Json/Object.h"
#include "Torv/Variant.h"

namespace JobParser
{
namespace
{

constexpr std::int64_t stopSeconds = 5;

/// Drops the lines that stand before the first one that begins with `{`. If there is none, the last line
/// stays.
void dropLeadingLines(std::string& reply)
{
    std::size_t start = 0;
    while (start < reply.size() && reply[start] != '{') {
        const std::size_t lineEnd = reply.find('\n', start);
        if (lineEnd == std::string::npos)
            break;
        start = lineEnd + 1;
    }
    reply.erase(0, start);
}

Torv::Json::Object jsonOf(const ConvertParams& params)
{
    Torv::Json::Object json;
    json.add("jobPath", params.jobPath);
    json.add("outPath", params.outPath);
    json.add("conversionFormat", params.conversionFormat);
    json.add("pageCount", params.pageCount);
    json.add("forceMono", params.forceMono);
    json.add("imgBoundingBoxWidth", params.imgBoundingBoxWidth);
    json.add("imgBoundingBoxHeight", params.imgBoundingBoxHeight);
    json.add("imgDpi", params.imgDpi);
    return json;
}

} // namespace

ExtJobProcessor::ExtJobProcessor(const Options& options) : m_options(options)
{
    m_pool.start(m_options);
}

ExtJobProcessor::~ExtJobProcessor()
{
    stop();
}

Torv::Variant ExtJobProcessor::parse(const std::string& jobPath, Pdl pdl)
{
    Torv::Json::Object request;
    request.add("command", "parse");
    request.add("pdl", pdl);
    request.add("jobPath", jobPath);
    request.add("grayscaleTolerance", m_options.grayscaleTolerance);
    return run(request);
}

void ExtJobProcessor::convert(const ConvertParams& params)
{
    Torv::Json::Object request;
    request.add("command", "convert");
    request.add("params", jsonOf(params));
    const Torv::Variant reply = run(request);
    if (!reply["success"].toBool())
        throw Torv::GenericException(Torv::format(
            "Error while executing the external Job Processor | error=%s", reply.toJson().c_str()));
}

void ExtJobProcessor::stop()
{
    m_pool.stop(stopSeconds);
}

Torv::Variant ExtJobProcessor::run(const Torv::Json::Object& request)
{
    std::string reply = m_pool.request(request.str());
    dropLeadingLines(reply);
    return Torv::Json::parse(std::move(reply));
}

} // namespace JobParser
