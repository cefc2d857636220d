#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "JobParser/JobFile.h"
#include "tests/support/EncryptedFile.h"

#include "Torv/IO/StringStream.h"

namespace JobParser
{

inline constexpr std::int64_t oneView = 4194304; ///< Bytes.

/// Bytes that differ from place to place, also from one page to the next.
inline std::string variedBytes(std::int64_t size)
{
    return numberedBytes(static_cast<std::size_t>(size));
}

/// What is mapped from the position on.
inline std::string textFrom(const JobFile& file)
{
    const auto bytes = file.window();
    return {bytes.begin(), bytes.end()};
}

inline std::string copied(JobFile& file, std::int64_t offset, std::int64_t size)
{
    Torv::IO::StringStream stream;
    file.copyToFile(stream, offset, size);
    return stream.str();
}

} // namespace JobParser
