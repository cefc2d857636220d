#pragma once

#include <set>

#include "JobParser/Export.h"
#include "JobParser/paper/EMediaSize.h"
#include "JobParser/paper/Paper.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

class JobChunkPclXLAttributeValue;
class PaperSizeManager;

/// Reads papers out of PCL XL values.
class JOBPARSER_EXPORT PclXlUtils
{
public:
    PclXlUtils() = delete;

    /// The medium of a MEDIASIZE value: of an array the one that its text names, in any case, and otherwise
    /// its first byte. A name that is not known gives unknownMedia, a value without bytes 0. Throws
    /// Torv::GenericException for an array that is no text.
    static EMediaSize getMediaSize(const JobChunkPclXLAttributeValue& value);

    /// The paper that a medium is counted under.
    static Paper convertPclXlPaper(EMediaSize media);

    /// The paper of a name or size text, or of the number of a medium, of which the low byte counts. Any
    /// other value gives PaperOther. Throws Torv::VariantInvalidOperationException for a number above 2^63
    /// - 1.
    static Paper paperFromPcl6PaperSize(const Torv::Variant& size, const PaperSizeManager& manager);

    /// The paper of the greatest area; of equal areas that of the lower number. PaperOther if there is none.
    static Paper getLargestPaper(const std::set<EMediaSize>& media, const PaperSizeManager& manager);
};

} // namespace JobParser
