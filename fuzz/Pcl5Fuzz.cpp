// Any bytes are a PCL 5 body, bare and behind PJL.

#include <string>

#include "FuzzSupport.h"
#include "JobCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    const std::string body(Fuzz::asText({data, size}));
    Fuzz::parseAndCheck("\x1B"
                        "E" +
                            body,
                        Fuzz::SavedForm::Rewritten);
    Fuzz::parseAndCheck("\x1B%-12345X@PJL ENTER LANGUAGE=PCL\r\n" + body + "\x1B%-12345X",
                        Fuzz::SavedForm::Rewritten);
    return 0;
}
