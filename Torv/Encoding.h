#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Torv::Encoding
{

/// RFC 4648 base 64 with padding, in one line.
std::string base64Encode(std::string_view bytes);

/// The bytes of a base 64 text. White space is skipped; decoding ends at the padding or at the first byte
/// that is not of the alphabet, with the whole bytes read so far.
std::string base64Decode(std::string_view text);

/// Two lower-case hexadecimal digits for each byte.
std::string hexEncode(std::span<const std::uint8_t> bytes);

/// Makes bytes of any kind valid UTF-8, losslessly: a byte that belongs to no well-formed UTF-8 sequence
/// becomes the character U+EF00 + byte, and so does each byte of a genuine character U+EF80 to U+EFFF.
/// Appends to `out`.
void appendAsUtf8(std::string& out, std::string_view bytes);

/// Undoes appendAsUtf8. `text` is valid UTF-8.
std::string bytesFromUtf8(std::string_view text);

/// Whether all of the text is well-formed UTF-8.
bool isUtf8(std::string_view text);

} // namespace Torv::Encoding
