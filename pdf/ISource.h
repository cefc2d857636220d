#pragma once

#include <cstdint>
#include <span>

#include "JobParser/Export.h"
#include "pdf/PdfParserException.h"

namespace Pdf::Parser
{

/// The bytes that a parser reads, strictly forwards. A source outlives its parser.
class JOBPARSER_EXPORT ISource
{
public:
    class EofException;

    /// The next byte. Throws EofException at the end of the data.
    virtual std::uint8_t next() = 0;
    /// Moves forward without handing the bytes out. Throws EofException if the source knows that there are
    /// not so many.
    virtual void skip(unsigned long long count) = 0;

    /// Some of the bytes that next() would hand out now, or none. Whoever reads them here accounts for them
    /// by a skip(). Valid until then, or until the next next().
    std::span<const std::uint8_t> window() const { return m_window; }

protected:
    ISource() = default;
    ISource(const ISource&) = default;
    ISource& operator=(const ISource&) = default;
    // Sources stand where they are used; nobody owns one by its interface.
    ~ISource() = default;

    std::span<const std::uint8_t> m_window;
};

/// The end of a source, where more was to come. Its message is empty.
class JOBPARSER_EXPORT ISource::EofException : public PdfParserException
{
public:
    EofException();
    ~EofException() override;
};

} // namespace Pdf::Parser
