#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "Torv/Export.h"

namespace Torv::Json
{

/// A JSON array that grows as text, without blanks.
class TORV_EXPORT Array
{
public:
    Array() : m_text("[]") {}

    /// Adds a value that is JSON text already.
    void addJson(std::string_view json);
    /// Adds a string of any bytes.
    void add(std::string_view value);

    /// The text so far, which is a whole array at any time.
    const std::string& str() const { return m_text; }
    /// Hands the text over; the array is not to be used afterwards.
    std::string take() { return std::move(m_text); }

private:
    void openForElement();

    std::string m_text;
};

} // namespace Torv::Json
