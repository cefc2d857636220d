// Any bytes are a PCL XL stream, bare and behind PJL; failed assertions throw.

#include <string>

#include "FuzzSupport.h"
#include "JobCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    const std::string body(Fuzz::asText({data, size}));
    Fuzz::parseAndCheck(") HP-PCL XL;2;0\n" + body, Fuzz::SavedForm::Rewritten);
    // Far enough from the end of the file to be walked in bulk, and the search for the header on other bytes.
    Fuzz::parseAndCheck("\x1B%-12345X@PJL ENTER LANGUAGE=PCLXL\r\n" + body + ") HP-PCL XL;3;0\n" + body +
                            std::string(200, 'B') + "\x1B%-12345X",
                        Fuzz::SavedForm::Rewritten);
    return 0;
}
