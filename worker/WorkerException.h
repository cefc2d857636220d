#pragma once

#include <string>

#include "Torv/GenericException.h"

namespace JobParser::Worker
{

/// Why a request got no answer. The numbers are told to the host.
enum class ErrorCode : int {
    BadRequest = 1,  ///< The request is no JSON, or not as it should be.
    NoFile = 2,      ///< The job file cannot be read, or the output cannot be written.
    NoBody = 3,      ///< The file holds no body in a language that is read here.
    BadDocument = 4, ///< The job is malformed.
    Limit = 5,       ///< The request took more time or memory than it may.
    Missing = 6,     ///< A program that is needed is not installed.
    Failed = 7,      ///< Something went wrong inside.
};

/// A request that failed. The message is for people.
class WorkerException : public Torv::GenericException
{
public:
    WorkerException(ErrorCode errorCode, std::string message)
        : Torv::GenericException(std::move(message), static_cast<int>(errorCode))
    {
    }
};

} // namespace JobParser::Worker
