#pragma once

#include <cstdint>

namespace Zem::Printer
{

/// The printer brand that a job was made for. The numbers are stored in records.
enum class OriginalBrand : std::int32_t {
    None = 0,
    KxDriver = 1,
    Hp = 2,
    Ricoh = 3,
    Toshiba = 4,
    Sharp = 5,
    Samsung = 6,
    XcptTicket = 7, ///< The issuer of XCPT tickets.
    Oki = 9,
    Lexmark = 10,
};

} // namespace Zem::Printer
