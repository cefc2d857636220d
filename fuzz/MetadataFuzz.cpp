// Any text is the metadata of a small job, as it may have been stored by a stranger.

#include "FuzzSupport.h"
#include "MetadataCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    Fuzz::readMetadataAndCheck(Fuzz::asText({data, size}), "\x1B%-12345X@PJL SET COPIES=2\r\n\x1B%-12345X");
    return 0;
}
