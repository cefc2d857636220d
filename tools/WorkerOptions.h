#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Torv/Security/Endecryptor/Options.h"

namespace JobParser::Tool
{

/// How worker processes are run.
struct WorkerOptions {
    bool isUsed = true;
    std::optional<std::string> path; ///< The executable, instead of the one beside the tool.
    std::string arguments;           ///< Its command line.
    std::int32_t processCount = 2;
    std::int64_t deadline = 300000; ///< Milliseconds that a request may take; 0 for no limit.
    std::int32_t tolerance = 0;     ///< As Library::Options::grayscaleTolerance.
};

/// Reads `ALGORITHM:KEYHEX:IVHEX`, as in `aes-128-cbc:00112233...:0011...`. Nothing if the text is something
/// else, or the key or the vector has not the length that the algorithm wants.
std::optional<Torv::Security::Endecryptor::Options> readDecryption(std::string_view text);

} // namespace JobParser::Tool
