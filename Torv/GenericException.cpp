#include "Torv/GenericException.h"

#include <utility>

namespace Torv
{

GenericException::GenericException(std::string message, int code)
    : m_message(std::move(message)), m_code(code)
{
}

GenericException::~GenericException() = default;

const char* GenericException::what() const noexcept
{
    return m_message.c_str();
}

int GenericException::code() const noexcept
{
    return m_code;
}

} // namespace Torv
