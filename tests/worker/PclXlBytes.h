#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace JobParser::Worker
{

/// Builds a PCL XL stream, as in PclXlBytes().byte(37, 2).op(0x43).
class PclXlBytes
{
public:
    PclXlBytes() : m_bytes(") HP-PCL XL;2;0;test\n") {}

    PclXlBytes& op(int code) { return raw(code); }
    PclXlBytes& byte(int attribute, int value) { return raw(0xC0).raw(value).id(attribute); }
    PclXlBytes& uint16(int attribute, int value) { return raw(0xC1).number(value, 2).id(attribute); }
    PclXlBytes& bytes(int attribute, std::string_view values)
    {
        return raw(0xC8).raw(0xC0).raw(static_cast<int>(values.size())).text(values).id(attribute);
    }
    PclXlBytes& xy(int attribute, int x, int y) { return raw(0xD1).number(x, 2).number(y, 2).id(attribute); }
    PclXlBytes& data(std::string_view values)
    {
        return raw(0xFA).number(static_cast<int>(values.size()), 4).text(values);
    }

    /// A page of A4 begins, with gray 0 as its brush.
    PclXlBytes& beginPage(int orientation = 0) { return byte(40, orientation).byte(37, 2).op(0x43); }
    PclXlBytes& endPage() { return op(0x44); }
    PclXlBytes& rgbBrush(std::string_view color) { return byte(3, 2).op(0x6A).bytes(11, color).op(0x63); }
    PclXlBytes& grayBrush(int level) { return byte(9, level).op(0x63); }
    PclXlBytes& noPen() { return byte(5, 0).op(0x79); }
    PclXlBytes& rectangle() { return op(0xA0); }

    PclXlBytes& text(std::string_view text)
    {
        m_bytes += text;
        return *this;
    }

    const std::string& str() const { return m_bytes; }

private:
    PclXlBytes& raw(int byte)
    {
        m_bytes += static_cast<char>(byte);
        return *this;
    }
    PclXlBytes& id(int attribute) { return raw(0xF8).raw(attribute); }
    PclXlBytes& number(int value, int size)
    {
        for (int i = 0; i < size; ++i)
            raw((value >> (8 * i)) & 0xFF);
        return *this;
    }

    std::string m_bytes;
};

} // namespace JobParser::Worker
