#include "worker/Service.h"

#include "worker/Converter.h"
#include "worker/OutputFolder.h"
#include "worker/ServiceProcess.h"
#include "worker/WorkerException.h"

#include "Torv/Json/Object.h"
#include "Torv/Number.h"

namespace JobParser::Worker
{
namespace
{

// Stands in no line of a request.
constexpr char separator = '\n';

std::string errorReply(const Torv::GenericException& error, bool isConversion)
{
    Torv::Json::Object reply;
    if (isConversion)
        reply.add("success", false);
    reply.add("errorCode", error.code() != 0 ? error.code() : static_cast<int>(ErrorCode::Failed));
    reply.add("errorMessage", error.what());
    return reply.take();
}

} // namespace

Service::Service(const ServiceOptions& options)
    : m_options(options),
      m_sandbox(options.limits, [this](const std::string& message) { return work(message); })
{
}

Service::~Service() = default;

void Service::warmUp()
{
    m_ghostscript.start();
    m_isWarm = true;
}

std::optional<std::string> Service::answer(const std::string& text)
{
    try {
        const Request request = readRequest(text);
        if (std::holds_alternative<ExitRequest>(request))
            return std::nullopt;
        if (const auto* const conversion = std::get_if<ConvertRequest>(&request))
            return convert(*conversion, text);
        return parse(std::get<ParseRequest>(request), text);
    } catch (const Torv::GenericException& error) {
        return errorReply(error, asksForConversion(text));
    } catch (const std::exception& error) {
        return errorReply(WorkerException(ErrorCode::Failed, error.what()), asksForConversion(text));
    }
}

std::string Service::parse(const ParseRequest& request, const std::string& text)
{
    if (request.pdl == Pdl::PostScript && !m_isWarm) {
        if (m_postScript == nullptr)
            m_postScript = std::make_unique<ServiceProcess>(m_options);
        return m_postScript->ask(text);
    }
    return m_sandbox.run(text);
}

std::string Service::convert(const ConvertRequest& request, const std::string& text)
{
    const std::string beside = request.outPath.substr(0, request.outPath.rfind('/') + 1);
    if (m_tidied != beside) {
        removeRemains(request.outPath);
        m_tidied = beside;
    }
    // The child is killed without a chance to tidy up, so that this process makes and removes its files.
    const OutputFolder folder(request.outPath);
    const std::string count = m_sandbox.run(text + separator + folder.path());
    folder.publish(request.outPath, Torv::atoi(count));
    Torv::Json::Object reply;
    reply.add("success", true);
    return reply.take();
}

// What the child does: the text of a request, and for conversions the folder to write to behind it.
std::string Service::work(const std::string& message)
{
    const std::size_t end = message.find(separator);
    const Request request = readRequest(message.substr(0, end));
    if (const auto* parsing = std::get_if<ParseRequest>(&request))
        return JobAnalyzer(m_fitz.get(), m_ghostscript).analyze(*parsing, m_options.encryption).toJson();
    const std::string folder = message.substr(end + 1);
    const auto& conversion = std::get<ConvertRequest>(request);
    return std::to_string(Converter(m_fitz.get(), folder).convert(conversion, m_options.encryption));
}

void Service::prepare()
{
    try {
        m_sandbox.prepare();
    } catch (const WorkerException&) {
        // The request that comes next tries again, and has somebody to tell.
    }
}

} // namespace JobParser::Worker
