#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "pdf/ValueTape.h"

namespace Pdf::Parser
{

/// Reads values that lie whole in one stretch of memory and are written as nearly all are.
///
/// It moves a pointer where Lexer takes a byte at a time from a source that may end anywhere, and it knows no
/// failures: what is in any way unusual it gives up, and Lexer reads that from its start.
class ValueScanner
{
public:
    /// Reads the value at `begin` onto the tape, whose texts then stand in the stretch itself. Gives the byte
    /// behind the value, which is within the stretch. Null if the value is given up; the tape then holds
    /// anything.
    const std::uint8_t* scan(const std::uint8_t* begin, const std::uint8_t* end, ValueTape& tape);

private:
    class Cursor;

    /// A container that is not closed yet, or that there is none around the value.
    struct Frame {
        enum class Kind : std::uint8_t { None, Array, Dictionary };

        Kind kind = Kind::None;
        std::size_t open = 0;
        std::uint64_t count = 0;
    };

    void openContainer(Frame::Kind kind, Frame& frame, ValueTape& tape);
    void closeContainer(Frame& frame, ValueTape& tape);

    std::vector<Frame> m_outer; // Around the one in hand.
};

} // namespace Pdf::Parser
