// Any bytes are the inside of a PRESCRIBE block, once with an end and once without.

#include <string>

#include "FuzzSupport.h"
#include "JobCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    const std::string body(Fuzz::asText({data, size}));
    // Without a UEL no PJL is written anew.
    if (body.find("\x1B%-12345X") != std::string::npos)
        return 0;
    Fuzz::parseAndCheck("!R!" + body, Fuzz::SavedForm::ByteForByte);
    Fuzz::parseAndCheck("ab!R!" + body + ";EXIT;cd", Fuzz::SavedForm::ByteForByte);
    return 0;
}
