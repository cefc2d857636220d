#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// A part of a package, with all that may be odd about it.
struct ZipPart {
    std::string name;
    std::string content;                   ///< As it stands in the file.
    std::uint16_t method = 0;              ///< Stored. 8 is deflated.
    std::uint16_t flags = 0;               ///< 1 is encrypted.
    std::optional<std::size_t> size;       ///< Inflated, where that differs from the content's.
    std::optional<std::size_t> packedSize; ///< As it is claimed, where that differs from the content's.
    std::optional<std::uint32_t> crc;      ///< Instead of the right one.
    std::optional<std::uint32_t>
        localOffset;     ///< Instead of the right one; then the part has no data of its own.
    std::string extra;   ///< In the directory.
    std::string comment; ///< In the directory.
};

/// Builds the bytes of a ZIP package, as in ZipBytes().part("a.xml", "<a/>").str().
class ZipBytes
{
public:
    ZipBytes& part(const ZipPart& part)
    {
        const std::size_t offset = part.localOffset.value_or(static_cast<std::uint32_t>(m_data.size()));
        const std::string facts =
            number(part.method, 2) + number(0, 4) + number(part.crc ? *part.crc : crc(part.content), 4) +
            number(part.packedSize.value_or(part.content.size()), 4) +
            number(part.size.value_or(part.content.size()), 4) + number(part.name.size(), 2);
        if (!part.localOffset)
            m_data += "PK\x03\x04" + number(20, 2) + number(part.flags, 2) + facts + number(0, 2) +
                      part.name + part.content;
        m_directory += "PK\x01\x02" + number(20, 2) + number(20, 2) + number(part.flags, 2) + facts +
                       number(part.extra.size(), 2) + number(part.comment.size(), 2) + number(0, 8) +
                       number(offset, 4) + part.name + part.extra + part.comment;
        ++m_count;
        return *this;
    }

    ZipBytes& part(std::string_view name, std::string_view content)
    {
        ZipPart plain;
        plain.name = name;
        plain.content = content;
        return part(plain);
    }

    /// Where the directory begins.
    std::size_t directoryOffset() const { return m_data.size(); }

    std::string str(std::string_view comment = {}) const { return withDirectoryAt(m_data.size(), comment); }

    std::string withDirectoryAt(std::size_t offset, std::string_view comment = {}) const
    {
        return m_data + m_directory + "PK\x05\x06" + number(0, 4) + number(m_count, 2) + number(m_count, 2) +
               number(m_directory.size(), 4) + number(offset, 4) + number(comment.size(), 2) +
               std::string(comment);
    }

    static std::string number(std::size_t value, int bytes)
    {
        std::string text;
        for (; bytes > 0; --bytes, value >>= 8)
            text += static_cast<char>(value & 0xFF);
        return text;
    }

private:
    static std::uint32_t crc(std::string_view bytes)
    {
        std::uint32_t sum = 0xFFFFFFFF;
        for (const char byte : bytes) {
            sum ^= static_cast<std::uint8_t>(byte);
            for (int bit = 0; bit < 8; ++bit)
                sum = (sum & 1) != 0 ? (sum >> 1) ^ 0xEDB88320 : sum >> 1;
        }
        return ~sum;
    }

    std::string m_data;
    std::string m_directory;
    std::size_t m_count = 0;
};

/// A print ticket of single elements, as in TicketText().copies("2").mediaSize("psk:ISOA4").
class TicketText
{
public:
    TicketText& parameter(std::string_view name, std::string_view value)
    {
        return raw("<psf:ParameterInit name=\"" + std::string(name) +
                   "\"><psf:Value xsi:type=\"xsd:integer\">" + std::string(value) +
                   "</psf:Value></psf:ParameterInit>");
    }
    TicketText& feature(std::string_view name, std::string_view option)
    {
        return raw("<psf:Feature name=\"" + std::string(name) + "\"><psf:Option name=\"" +
                   std::string(option) + "\"/></psf:Feature>");
    }
    TicketText& copies(std::string_view value) { return parameter("psk:JobCopiesAllDocuments", value); }
    TicketText& colorPages(std::string_view value) { return parameter("ns0000:JobTotalColorPages", value); }
    TicketText& monoPages(std::string_view value)
    {
        return parameter("ns0000:JobTotalMonochromePages", value);
    }
    TicketText& duplex(std::string_view option)
    {
        return feature("psk:JobDuplexAllDocumentsContiguously", option);
    }
    TicketText& mediaSize(std::string_view option) { return feature("psk:PageMediaSize", option); }
    TicketText& raw(std::string_view text)
    {
        m_text += text;
        return *this;
    }

    std::string str() const
    {
        return "<?xml version=\"1.0\"?><psf:PrintTicket>" + m_text + "</psf:PrintTicket>";
    }

private:
    std::string m_text;
};
