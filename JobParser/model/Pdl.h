#pragma once

#include <cstdint>
#include <string>

#include "JobParser/Export.h"

namespace JobParser
{

/// The page description languages. The numbers are stored in records and sent to worker processes.
enum class Pdl : std::int32_t {
    Detect = -1, ///< Not a language: asks Parser::parse to find out.
    Unknown = 0,
    Pcl5 = 1,
    PostScript = 2,
    EscP = 3,
    Prescribe = 4,
    PclXl = 5,
    Pdf = 6,
    Jpeg = 7,
    Xps = 8,
    Urf = 9,
};

/// Names of the languages.
namespace PdlUtils
{

/// The language of a word behind `ENTER LANGUAGE=`, in any case; Unknown for any other word.
JOBPARSER_EXPORT Pdl fromPjlEnterLang(const std::string& word);
/// The language of a MIME type, in any case; Unknown for any other.
JOBPARSER_EXPORT Pdl fromMime(const std::string& mime);
/// The word for `ENTER LANGUAGE=`. Empty for Unknown and for numbers that are no language.
JOBPARSER_EXPORT const std::string& toPjlEnterLang(Pdl pdl);
/// The name to show to people. Empty for Unknown and for numbers that are no language.
JOBPARSER_EXPORT const std::string& displayName(Pdl pdl);
/// The language of a file extension, without its dot, in any case. Only "pdf" is known.
JOBPARSER_EXPORT Pdl fromExtension(const std::string& extension);
/// Whether files with this extension, without its dot and in any case, are print jobs.
JOBPARSER_EXPORT bool isPdlExtension(const std::string& extension);

} // namespace PdlUtils

} // namespace JobParser
