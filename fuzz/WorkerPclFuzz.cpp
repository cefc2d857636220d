// Any bytes are a PCL 5 body and a PCL XL body that the worker walks.

#include <string>

#include "FuzzSupport.h"
#include "JobParser/JobFile.h"
#include "worker/BodyReader.h"
#include "worker/PclAnalyzer.h"
#include "worker/PclXlAnalyzer.h"

namespace
{

using namespace JobParser;

void checkFacts(const Worker::JobFacts& facts, std::size_t size)
{
    // Macros may put out a page with each call of a byte or two.
    Fuzz::require(facts.pageCount() >= 0 && facts.copies() >= 1, "a job has no fewer pages than none");
    Fuzz::require(size > 0 || facts.pageCount() == 0, "an empty body has no pages");
}

template <typename Analyzer> void analyze(const std::string& bytes)
{
    const Fuzz::MemoryFile memoryFile(bytes);
    JobFile file;
    file.open(memoryFile.path());
    Worker::Body body;
    if (!bytes.empty())
        body.ranges = {{0, static_cast<std::int64_t>(bytes.size())}};
    Worker::BodyReader reader(file, body);
    constexpr int tolerance = 0;
    Fuzz::survives([&] { checkFacts(Analyzer(reader, tolerance).analyze(), bytes.size()); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    const std::string body(Fuzz::asText({data, size}));
    analyze<Worker::PclAnalyzer>(body);
    analyze<Worker::PclXlAnalyzer>(body);
    analyze<Worker::PclXlAnalyzer>(") HP-PCL XL;2;0\n" + body);
    return 0;
}
