#pragma once

#include <exception>
#include <string>

#include "Torv/Export.h"

namespace Torv
{

/// Root of all exceptions of the system: a message, kept as it stands, and a number.
class TORV_EXPORT GenericException : public std::exception
{
public:
    explicit GenericException(std::string message, int code = 0);
    ~GenericException() override;

    const char* what() const noexcept override;
    int code() const noexcept;

private:
    std::string m_message;
    int m_code;
};

} // namespace Torv
