#include "Torv/Number.h"

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <stdexcept>

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

} // namespace Torv
