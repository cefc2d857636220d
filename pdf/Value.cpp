#include "pdf/Value.h"

#include "pdf/Writer.h"

namespace Pdf
{

constinit const Value nothing;

Value& Value::operator[](std::string_view key)
{
    if (std::holds_alternative<None>(*this))
        emplace<Dictionary>();
    return std::get<Dictionary>(*this)[key];
}

const Value& Value::operator[](std::string_view key) const
{
    const Value* value = std::get<Dictionary>(*this).find(key);
    return value != nullptr ? *value : nothing;
}

Value::operator Name() const
{
    const auto* name = std::get_if<Name>(this);
    return name != nullptr ? *name : Name();
}

std::string Value::serialize() const
{
    std::string result;
    Writer(result).write(*this);
    return result;
}

} // namespace Pdf
