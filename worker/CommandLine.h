#pragma once

#include <span>
#include <string>
#include <variant>

#include "worker/Service.h"

namespace JobParser::Worker
{

/// A command line that is answered with a text: help, or what is wrong with it.
struct Answer {
    std::string text; ///< Whole lines.
    bool isError;     ///< The command line is wrong.
};

/// Reads the arguments of the program, without its name: options of limits, and `e OPTIONSJSON`.
std::variant<ServiceOptions, Answer> readCommandLine(std::span<char* const> arguments);

} // namespace JobParser::Worker
