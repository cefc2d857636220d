// Any text is the list of chunks in the metadata of a PCL XL job.

#include <string>

#include "FuzzSupport.h"
#include "MetadataCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    const std::string chunks(Fuzz::asText({data, size}));
    Fuzz::readMetadataAndCheck("{\"jobInfo\":{},\"chunks\":[" + chunks + "]}",
                               ") HP-PCL XL;2;0\n\xC0\x02\xF8\x25"
                               "CDB");
    return 0;
}
