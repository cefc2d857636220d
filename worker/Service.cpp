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

Service::Service(const ServiceOptions& options) : m_options(options) {}

Service::~Service() = default;

void Service::warmUp()
{
    m_ghostscript.start();
    m_isWarm = true;
}

std::optional<std::string> Service::answer(const std::string& text)
{
    bool isConversion = false;
    try {
        const Request request = readRequest(text);
        if (std::holds_alternative<ExitRequest>(request))
            return std::nullopt;
        isConversion = std::holds_alternative<ConvertRequest>(request);
        if (isConversion)
            return convert(std::get<ConvertRequest>(request));
        return parse(std::get<ParseRequest>(request), text);
    } catch (const Torv::GenericException& error) {
        return errorReply(error, isConversion);
    } catch (const std::exception& error) {
        return errorReply(WorkerException(ErrorCode::Failed, error.what()), isConversion);
    }
}

std::string Service::parse(const ParseRequest& request, const std::string& text)
{
    if (request.pdl == Pdl::PostScript && !m_isWarm) {
        if (m_postScript == nullptr)
            m_postScript = std::make_unique<ServiceProcess>(m_options);
        return m_postScript->ask(text);
    }
    return Sandbox(m_options.limits).run([&] {
        return JobAnalyzer(m_fitz.get(), m_ghostscript).analyze(request, m_options.encryption).toJson();
    });
}

std::string Service::convert(const ConvertRequest& request)
{
    // The child is killed without a chance to tidy up, so that this process makes and removes its files.
    OutputFolder folder(request.outPath);
    const std::string count = Sandbox(m_options.limits).run([&] {
        return std::to_string(Converter(m_fitz.get(), folder.path()).convert(request, m_options.encryption));
    });
    folder.publish(request.outPath, Torv::atoi(count));
    Torv::Json::Object reply;
    reply.add("success", true);
    return reply.take();
}

} // namespace JobParser::Worker
