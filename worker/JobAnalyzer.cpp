#include "worker/JobAnalyzer.h"

#include <memory>

#include "JobParser/JobFile.h"
#include "worker/BodyReader.h"
#include "worker/DocumentAnalyzer.h"
#include "worker/PclAnalyzer.h"
#include "worker/PclXlAnalyzer.h"
#include "worker/Request.h"
#include "worker/WorkerException.h"

#include "Torv/Security/Endecryptor/Decryptor.h"

namespace JobParser::Worker
{
namespace
{

bool isRead(Pdl pdl)
{
    return pdl == Pdl::Pcl5 || pdl == Pdl::PostScript || pdl == Pdl::PclXl || pdl == Pdl::Pdf ||
           pdl == Pdl::Xps;
}

} // namespace

void openJob(JobFile& file, const std::string& path, const Encryption& encryption)
{
    using Torv::Security::Endecryptor::Decryptor;
    try {
        if (encryption)
            file.openEncrypted(path, std::make_unique<Decryptor>(*encryption));
        else
            file.open(path);
    } catch (const Torv::GenericException& error) {
        throw WorkerException(ErrorCode::NoFile, error.what());
    }
}

JobFacts JobAnalyzer::analyze(const ParseRequest& request, const Encryption& encryption)
{
    JobFile file;
    openJob(file, request.jobPath, encryption);
    BodyFinder finder(file, request.pdl);
    JobFacts facts;
    bool isFound = false;
    for (const Body& body : finder.find()) {
        if (!isRead(body.pdl))
            continue;
        BodyReader reader(file, body);
        facts.add(analyzeBody(reader, body.pdl, request.grayscaleTolerance));
        isFound = true;
    }
    if (!isFound)
        throw WorkerException(ErrorCode::NoBody, "The file has no body in a language that is read here");
    facts.setCopies(finder.copies());
    return facts;
}

JobFacts JobAnalyzer::analyzeBody(BodyReader& reader, Pdl pdl, int tolerance)
{
    switch (pdl) {
    case Pdl::Pcl5: return PclAnalyzer(reader, tolerance).analyze();
    case Pdl::PclXl: return PclXlAnalyzer(reader, tolerance).analyze();
    case Pdl::PostScript: return m_ghostscript.analyze(reader, tolerance);
    case Pdl::Pdf:
    case Pdl::Xps: return DocumentAnalyzer(m_context, tolerance).analyze(reader, pdl);
    case Pdl::Detect:
    case Pdl::Unknown:
    case Pdl::EscP:
    case Pdl::Prescribe:
    case Pdl::Jpeg:
    case Pdl::Urf: break;
    }
    throw WorkerException(ErrorCode::NoBody, "There is nobody to read this language");
}

} // namespace JobParser::Worker
