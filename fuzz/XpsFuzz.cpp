// Any bytes are an XPS package, and the text of a print ticket.

#include <regex>
#include <string>

#include "FuzzSupport.h"
#include "JobCheck.h"
#include "JobParser/JobFile.h"
#include "JobParser/xps/XpsParser.h"

namespace
{

// Short enough for the standard patterns, which recurse.
constexpr std::size_t comparedSize = 300;

void checkPackage(std::string package)
{
    // Without a UEL no PJL is written anew.
    if (package.size() < 4 || package.find("\x1B%-12345X") != std::string::npos)
        return;
    package.replace(0, 4, "PK\x03\x04");
    Fuzz::parseAndCheck(package, Fuzz::SavedForm::ByteForByte);
}

bool isFoundByTheStandard(const std::string& ticket, const std::string& pattern)
{
    return std::regex_search(ticket, std::regex(pattern, std::regex::ECMAScript | std::regex::icase));
}

void checkTicket(const std::string& ticket)
{
    JobParser::JobFile none;
    const JobParser::JobInfo info = JobParser::XpsParser(none).parseProperties(ticket);
    Fuzz::require(info.copies >= 1 && info.copies <= 10000, "copies are within their limits");
    if (ticket.size() > comparedSize)
        return;
    const std::string mediaSize =
        "name=\"psk:PageMediaSize\">[^<>]*<psf:option[^<>]*name=\"psk:([^\"]*)\"[^<>]*";
    Fuzz::require((info.flags(JobParser::JobInfo::FlagPaper) != 0) == isFoundByTheStandard(ticket, mediaSize),
                  "a paper is found where the standard pattern finds one");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    const std::string bytes(Fuzz::asText({data, size}));
    checkPackage(bytes);
    checkTicket(bytes);
    return 0;
}
