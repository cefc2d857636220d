#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "JobParser/model/Pdl.h"

namespace JobParser::Worker
{

/// Asks what a job is.
struct ParseRequest {
    Pdl pdl = Pdl::Unknown;              ///< The language of the job, as far as the host knows.
    std::string jobPath;                 ///< The job file.
    std::int32_t grayscaleTolerance = 0; ///< 0 to 255; see classOfRgb.
};

/// What a job may be converted to. The numbers are sent by hosts.
enum class ConversionFormat : std::int32_t { Pdf = 0, Png = 1, Jpeg = 2, Tiff = 3, Text = 4, PostScript = 5 };

/// Asks for a job in another format.
struct ConvertRequest {
    std::string jobPath;
    std::string outPath; ///< Of pictures, a number is put in front of its suffix.
    ConversionFormat format = ConversionFormat::Pdf;
    std::uint32_t pageCount = 0; ///< How many pages from the first on; 0 for all.
    bool forceMono = false;      ///< In shades of gray.
    // The box in pixels that pictures are fitted into; 0 for no limit.
    std::uint32_t boxWidth = 0;
    std::uint32_t boxHeight = 0;
    std::uint32_t dpi = 0; ///< Of pictures; 0 for the usual.
};

/// Asks the worker to end.
struct ExitRequest {
};

using Request = std::variant<ParseRequest, ConvertRequest, ExitRequest>;

/// Reads a request. Throws WorkerException for text that is none.
Request readRequest(const std::string& text);

/// Whether a text asks for a conversion, whatever else is wrong with it.
bool asksForConversion(const std::string& text);

} // namespace JobParser::Worker
