#include "Torv/Number.h"

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <stdexcept>

#include "Torv/Ascii.h"
#include "Torv/CLocale.h"

namespace Torv
{
namespace
{

/// Clears errno for one conversion and brings the caller's value back.
class ErrnoScope
{
public:
    ErrnoScope() : m_saved(errno) { errno = 0; }
    ~ErrnoScope() { errno = m_saved; }
    ErrnoScope(const ErrnoScope&) = delete;
    ErrnoScope& operator=(const ErrnoScope&) = delete;

private:
    int m_saved;
};

template <typename T, typename Function>
T convert(const char* name, const std::string& text, Function function)
{
    const locale_t locale = cLocale();
    const ErrnoScope scope;
    char* end = nullptr;
    const T value = function(text.c_str(), &end, locale);
    if (end == text.c_str())
        throw std::invalid_argument(name);
    if (errno == ERANGE)
        throw std::out_of_range(name);
    return value;
}

} // namespace

int stoi(const std::string& text)
{
    const auto value = convert<long>("stoi", text, [](const char* begin, char** end, locale_t locale) {
        constexpr int decimal = 10;
        return strtol_l(begin, end, decimal, locale);
    });
    if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
        throw std::out_of_range("stoi");
    return static_cast<int>(value);
}

float stof(const std::string& text)
{
    return convert<float>("stof", text, strtof_l);
}

double stod(const std::string& text)
{
    return convert<double>("stod", text, strtod_l);
}

int atoi(std::string_view text)
{
    while (!text.empty() && Ascii::isSpace(static_cast<std::uint8_t>(text.front())))
        text.remove_prefix(1);
    const bool isNegative = text.starts_with('-');
    // The sign of a negative number belongs to it; a plus does not.
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-'))
            return 0;
    }
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range)
        value =
            isNegative ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
    return static_cast<int>(static_cast<std::uint32_t>(value));
}

} // namespace Torv
