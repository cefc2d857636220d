#include "worker/CommandLine.h"

#include <charconv>
#include <string_view>

#include "Torv/GenericException.h"
#include "Torv/Json/Json.h"
#include "Torv/Security/Endecryptor/Decryptor.h"
#include "Torv/Variant.h"

namespace JobParser::Worker
{
namespace
{

constexpr std::string_view helpText =
    R"(ZemJobProcessor: answers requests about print jobs, one line of JSON each.

Usage: ZemJobProcessor [OPTION...] [e OPTIONSJSON]

  e OPTIONSJSON     how job files are encrypted: {"algorithm":N,"key":"BASE64","iv":"BASE64"}
  --seconds N       processor time that a request may take; default: 120
  --wall N          seconds altogether that a request may take; default: 240
  --memory MIB      memory that a request may take; 0 for no limit; default: 2048

Requests come on standard input, answers go to standard output. {"command":"exit"} or the end of the
input ends the program.
)";

constexpr int bytesPerMebibyteShift = 20;

bool readNumber(std::string_view text, std::int64_t greatest, std::int64_t& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= 0 && number <= greatest;
}

bool takeLimit(std::string_view name, std::string_view text, Limits& limits)
{
    constexpr std::int64_t longest = 1000000;
    std::int64_t number = 0;
    if (!readNumber(text, longest, number))
        return false;
    if (name == "--seconds" && number > 0)
        limits.processor = std::chrono::seconds(number);
    else if (name == "--wall" && number > 0)
        limits.wall = std::chrono::seconds(number);
    else if (name == "--memory")
        limits.memory = number << bytesPerMebibyteShift;
    else
        return false;
    return true;
}

Answer wrong(const std::string& message)
{
    return {"ZemJobProcessor: " + message + "\n", true};
}

// The text is an object, or a string that holds one if nobody took the quotation marks off on the way.
Torv::Security::Endecryptor::Options readEncryption(const std::string& text)
{
    Torv::Variant value = Torv::Json::parse(text);
    if (value.isString())
        value = Torv::Json::parse(value.toString());
    auto options = Torv::Security::Endecryptor::Options::fromJson(value);
    // Tells at once whether key and vector fit.
    const Torv::Security::Endecryptor::Decryptor decryptor(options);
    return options;
}

} // namespace

std::variant<ServiceOptions, Answer> readCommandLine(std::span<char* const> arguments)
{
    ServiceOptions options;
    for (std::size_t i = 0; i < arguments.size(); i += 2) {
        const std::string_view name = arguments[i];
        if (name == "--help")
            return Answer{std::string(helpText), false};
        if (i + 1 == arguments.size())
            return wrong("Something is missing behind " + std::string(name));
        const std::string text = arguments[i + 1];
        if (name == "e") {
            try {
                options.encryption = readEncryption(text);
            } catch (const Torv::GenericException& error) {
                return wrong(error.what());
            }
        } else if (!takeLimit(name, text, options.limits)) {
            return wrong("There is no such option: " + std::string(name) + ' ' + text);
        }
    }
    return options;
}

} // namespace JobParser::Worker
