// Any bytes are a job in which the worker looks for bodies, whatever language the host expects.

#include <string>

#include "FuzzSupport.h"
#include "JobParser/JobFile.h"
#include "worker/BodyFinder.h"

namespace
{

using namespace JobParser;

void checkBodies(const std::vector<Worker::Body>& bodies, std::int64_t fileSize)
{
    std::int64_t end = 0;
    for (const Worker::Body& body : bodies) {
        Fuzz::require(!body.ranges.empty(), "a body has bytes");
        for (const Worker::Range& range : body.ranges) {
            Fuzz::require(range.size > 0 && range.offset >= end, "ranges follow each other");
            end = range.offset + range.size;
        }
    }
    Fuzz::require(end <= fileSize, "bodies stand in the file");
}

void find(const std::string& path, std::int64_t size, Pdl expected)
{
    JobFile file;
    file.open(path);
    Worker::BodyFinder finder(file, expected);
    Fuzz::survives([&] {
        checkBodies(finder.find(), size);
        Fuzz::require(finder.copies() >= 1, "a job has a copy");
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    const Fuzz::MemoryFile file(Fuzz::asText({data, size}));
    for (const Pdl expected : {Pdl::Unknown, Pdl::Pcl5, Pdl::PostScript, Pdl::Pdf})
        find(file.path(), static_cast<std::int64_t>(size), expected);
    return 0;
}
