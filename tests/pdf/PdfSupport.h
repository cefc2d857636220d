#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>
#include <vector>
#include <zlib.h>

#include "pdf/DocumentInfo.h"
#include "pdf/ISource.h"
#include "pdf/Parser.h"

#include "Torv/GenericException.h"

namespace Pdf
{

/// Hands out bytes in memory through windows of at most `windowSize` bytes; of 0, byte by byte alone.
class MemorySource final : public Parser::ISource
{
public:
    explicit MemorySource(std::string_view sourceBytes,
                          std::size_t sourceWindow = std::numeric_limits<std::size_t>::max())
        : bytes(sourceBytes), windowSize(sourceWindow)
    {
    }

    std::uint8_t next() override
    {
        if (position >= bytes.size())
            throw EofException();
        ++position;
        showWindow();
        return static_cast<std::uint8_t>(bytes[position - 1]);
    }

    void skip(unsigned long long count) override
    {
        if (count > bytes.size() - position)
            throw EofException();
        position += static_cast<std::size_t>(count);
        showWindow();
    }

    const std::string bytes;
    const std::size_t windowSize;
    std::size_t position = 0; ///< Bytes that were read or skipped.

private:
    void showWindow()
    {
        const std::size_t size = std::min(windowSize, bytes.size() - position);
        m_window = {reinterpret_cast<const std::uint8_t*>(bytes.data()) + position, size};
    }
};

/// A parser on bytes, with the first of them read.
struct OpenText {
    explicit OpenText(std::string_view text, std::size_t windowSize = std::numeric_limits<std::size_t>::max())
        : source(text, windowSize), parser(source)
    {
        parser.next();
    }

    MemorySource source;
    Parser::Parser parser;
};

/// Builds a PDF, and knows where its objects begin.
class PdfBytes
{
public:
    PdfBytes() { raw("%PDF-1.7\n"); }

    PdfBytes& raw(std::string_view text)
    {
        m_bytes += text;
        return *this;
    }
    PdfBytes& object(unsigned number, std::string_view value)
    {
        return raw(std::to_string(number) + " 0 obj\n").raw(value).raw("\nendobj\n");
    }
    PdfBytes& stream(unsigned number, std::string_view dictionary, std::string_view data)
    {
        const std::string head(dictionary);
        return object(number, head + "\nstream\n" + std::string(data) + "\nendstream");
    }
    /// A stream of deflated data; the entries go into its dictionary, beside Filter and Length.
    PdfBytes& deflated(unsigned number, std::string_view entries, std::string_view data)
    {
        const std::string packed = deflate(data);
        return stream(number,
                      "<<" + std::string(entries) + "/Filter/FlateDecode/Length " +
                          std::to_string(packed.size()) + ">>",
                      packed);
    }
    /// A cross-reference table without entries, a trailer, and the way to it.
    PdfBytes& end(std::string_view trailer)
    {
        const std::string offset = std::to_string(m_bytes.size());
        return raw("xref\n0 0\ntrailer\n").raw(trailer).raw("\nstartxref\n" + offset + "\n%%EOF\n");
    }

    const std::string& str() const { return m_bytes; }
    std::size_t size() const { return m_bytes.size(); }

    static std::string deflate(std::string_view data)
    {
        std::string packed(compressBound(data.size()), '\0');
        uLongf size = packed.size();
        compress2(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(data.data()),
                  data.size(), 9);
        packed.resize(size);
        return packed;
    }

private:
    std::string m_bytes;
};

/// A document of one page, 3 0, below the node 2 0 and the catalog 1 0.
inline PdfBytes onePage(std::string_view pageEntries = "", std::string_view nodeEntries = "")
{
    PdfBytes pdf;
    pdf.object(1, "<</Type/Catalog/Pages 2 0 R>>");
    pdf.object(2, "<</Type/Pages/Kids[3 0 R]/Count 1" + std::string(nodeEntries) + ">>");
    pdf.object(3, "<</Type/Page/Parent 2 0 R" + std::string(pageEntries) + ">>");
    return pdf;
}

/// The texts of all pages, one after the other.
inline std::string pagesOf(const Parser::DocumentInfo& info)
{
    std::string text;
    for (const auto& [reference, page] : info.pages)
        text += page.serialize();
    return text;
}

/// What reading a file comes to: the pages and the trailer, or what was thrown, and where the source stood.
inline std::string outcomeOf(std::string_view bytes,
                             std::size_t windowSize = std::numeric_limits<std::size_t>::max())
{
    MemorySource source(bytes, windowSize);
    Parser::Parser parser(source);
    std::string outcome;
    try {
        const auto info = parser.parse(true);
        outcome = pagesOf(*info) + info->trailer.serialize();
    } catch (const Torv::GenericException& error) {
        outcome = std::string("threw: ") + error.what();
    } catch (const std::bad_variant_access&) {
        outcome = "threw: bad variant access";
    }
    return outcome + " @" + std::to_string(source.position) + ' ' + std::to_string(parser.position());
}

/// The message with which parsing fails; empty if it does not.
inline std::string failureOf(std::string_view bytes)
{
    MemorySource source(bytes);
    try {
        Parser::Parser(source).parse(true);
        return {};
    } catch (const Parser::PdfParserException& error) {
        return error.what();
    }
}

/// The object with this number, whose pages are the summary of the bytes.
inline std::string pageOf(const PdfBytes& pdf)
{
    MemorySource source(pdf.str());
    return pagesOf(*Parser::Parser(source).parse(true));
}

} // namespace Pdf
