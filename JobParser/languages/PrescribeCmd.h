#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace JobParser::Prescribe
{

/// One PRESCRIBE command: a name of up to four letters and its parameters, as in `CMNT "Color=6","Mono=4";`.
///
/// Of fixed size, so that reading a command allocates nothing. Not copied: the parameters are places in it.
class PrescribeCmd
{
public:
    PrescribeCmd() = default;
    PrescribeCmd(const PrescribeCmd&) = delete;
    PrescribeCmd& operator=(const PrescribeCmd&) = delete;

    /// Makes it a command without name and parameters.
    void clear();

    // The operations that build a command throw JobParserException where its size does not suffice.

    /// Appends a letter, in its upper-case form, to the name. At most four.
    void addCmdChar(unsigned char letter);
    /// Begins the next parameter. At most 128.
    void startParam();
    /// Appends a byte to the parameter begun last. All parameters have room for 10240 bytes together, with a
    /// closing zero byte each.
    void addData(unsigned char byte);
    /// Ends the parameter begun last.
    void finishParam();

    /// The number at the start of a parameter; 0 if there is none. Asserts that the parameter is there.
    int getParamInt(int idx) const;
    /// The text of a parameter, as long as the command stays as it is. Asserts that the parameter is there.
    const char* getParamString(int idx) const;

    std::uint32_t name = 0;         ///< The letters, the first in the highest byte: `COPY` is 0x434F5059.
    std::uint32_t m_paramCount = 0; ///< 0 to 128.

private:
    static constexpr std::size_t maxDataLength = 10240;
    static constexpr std::size_t maxParams = 128;

    void append(char byte);

    std::array<char, maxDataLength> data{};
    std::array<const char*, maxParams> params{}; // into data
    std::uint32_t dataLength = 0;
};

} // namespace JobParser::Prescribe
