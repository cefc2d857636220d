#pragma once

#include <cstdint>

namespace JobParser
{

/// The papers that a job is counted under. The numbers are stored and serialised; the gaps stay free.
enum Paper : std::int32_t {
    PaperUnknown = 0,
    PaperA4 = 5,
    PaperA3 = 6,
    PaperOther = 7, ///< A paper that is known to be none of the others.
    PaperA5 = 14,
    PaperB4 = 15,
    PaperB5 = 16,
    PaperFolio = 17,
    PaperLedger = 18,
    PaperLegal = 19,
    PaperLetter = 20,
    PaperStatement = 21,
};

} // namespace JobParser
