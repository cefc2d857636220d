#pragma once

#include <cstddef>
#include <string>

#include "JobParser/JobInfo.h"
#include "JobParser/xps/XpsParser.h"
#include "tests/support/OpenJob.h"
#include "tests/support/ZipBytes.h"

namespace JobParser
{

constexpr const char* ticketName = "Metadata/Job_PT.xml";
constexpr std::size_t mebibyte = 0x100000;

/// A ticket that tells the copies alone.
inline std::string copies(const std::string& number)
{
    return TicketText().copies(number).str();
}

inline ZipPart ticketPart(const std::string& content)
{
    ZipPart part;
    part.name = ticketName;
    part.content = content;
    return part;
}

inline JobInfo read(const std::string& bytes)
{
    OpenJob job(bytes);
    return XpsParser(job.file).parse();
}

/// Bytes that inflate to themselves.
inline std::string deflated(const std::string& bytes)
{
    return std::string("\x01") + ZipBytes::number(bytes.size(), 2) + ZipBytes::number(~bytes.size(), 2) +
           bytes;
}

} // namespace JobParser
