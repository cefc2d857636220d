#include "Torv/Format.h"

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "Torv/CLocale.h"
#include "Torv/GenericException.h"

namespace Torv::Detail
{
namespace
{

constexpr std::string_view formatSize = "I64";
constexpr std::string_view printfSize = "ll";
constexpr std::string_view flagsWidthAndPrecision = "-+ #'0123456789.*";

/// Puts the calling thread into the C locale.
class CLocaleScope
{
public:
    CLocaleScope() : m_former(uselocale(cLocale())) {}
    ~CLocaleScope() { uselocale(m_former); }
    CLocaleScope(const CLocaleScope&) = delete;
    CLocaleScope& operator=(const CLocaleScope&) = delete;

private:
    locale_t m_former;
};

/// Only a conversion may change: what follows `%%` is text.
std::string withPrintfSizes(std::string_view fmt)
{
    std::string result;
    while (!fmt.empty()) {
        const std::size_t percent = fmt.find('%');
        const std::size_t size = percent == fmt.npos
                                     ? fmt.npos //
                                     : fmt.find_first_not_of(flagsWidthAndPrecision, percent + 1);
        result += fmt.substr(0, size);
        if (size == fmt.npos)
            break;
        fmt.remove_prefix(size);
        if (fmt.starts_with(formatSize)) {
            result += printfSize;
            fmt.remove_prefix(formatSize.size());
        } else {
            result += fmt.front();
            fmt.remove_prefix(1);
        }
    }
    return result;
}

} // namespace

std::string formatArguments(const char* fmt, ...)
{
    const bool hasOwnSizes = std::strstr(fmt, formatSize.data()) != nullptr;
    const std::string rewritten = hasOwnSizes ? withPrintfSizes(fmt) : std::string();
    const char* const printfFormat = hasOwnSizes ? rewritten.c_str() : fmt;
    const CLocaleScope locale;

    std::array<char, 512> buffer;
    std::va_list arguments;
    va_start(arguments, fmt);
    const int printed = std::vsnprintf(buffer.data(), buffer.size(), printfFormat, arguments);
    va_end(arguments);
    if (printed < 0)
        throw GenericException("format(): The text cannot be formatted");
    const auto size = static_cast<std::size_t>(printed);
    if (size < buffer.size())
        return std::string(buffer.data(), size);

    std::string result(size, '\0');
    va_start(arguments, fmt);
    // The NUL that ends the text goes where the string has its own.
    std::vsnprintf(result.data(), size + 1, printfFormat, arguments);
    va_end(arguments);
    return result;
}

} // namespace Torv::Detail
