#pragma once

#include <concepts>
#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Torv/Export.h"

namespace Torv::Json
{

class Array;

/// A JSON object that grows as text, key by key, without blanks. A key added twice stands twice.
class TORV_EXPORT Object
{
public:
    Object()
    {
        m_text.reserve(usualLength);
        m_text = "{}";
    }

    template <std::integral T> void add(std::string_view key, T value)
    {
        if constexpr (std::is_same_v<T, bool>)
            addJson(key, value ? "true" : "false");
        else if constexpr (std::is_signed_v<T>)
            addSigned(key, value);
        else
            addUnsigned(key, value);
    }
    template <typename T>
    requires std::is_enum_v<T>
    void add(std::string_view key, T value) { add(key, static_cast<std::underlying_type_t<T>>(value)); }
    void add(std::string_view key, std::nullptr_t) { addJson(key, "null"); }
    void add(std::string_view key, std::string_view value);
    void add(std::string_view key, const char* value) { add(key, std::string_view(value)); }
    void add(std::string_view key, const std::string& value) { add(key, std::string_view(value)); }
    void add(std::string_view key, const Object& value) { addJson(key, value.str()); }
    void add(std::string_view key, const Array& value);
    void add(std::string_view key, const std::set<std::string>& values);

    /// Adds a value that is JSON text already.
    void addJson(std::string_view key, std::string_view json);

    /// The text so far, which is a whole object at any time.
    const std::string& str() const { return m_text; }
    /// Hands the text over; the object is not to be used afterwards.
    std::string take() { return std::move(m_text); }

private:
    // What most objects stay under, so that their text is not moved while it grows.
    static constexpr std::size_t usualLength = 90;

    void addKey(std::string_view key);
    void addSigned(std::string_view key, long long value);
    void addUnsigned(std::string_view key, unsigned long long value);

    std::string m_text;
};

} // namespace Torv::Json
