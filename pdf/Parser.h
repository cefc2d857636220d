#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "JobParser/Export.h"
#include "pdf/ISource.h"
#include "pdf/Object.h"
#include "pdf/PdfParserException.h"
#include "pdf/ReferenceMap.h"
#include "pdf/Value.h"

namespace Pdf::Parser
{

class DocumentInfo;
class Lexer;
class ObjectKeeper;
class ValueTape;
struct ObjectFacts;

/// Makes the summary of a PDF in one pass from its first byte to its last, without ever going back.
///
/// Objects are read in the order of the file, and the last definition of each counts. Cross-reference tables
/// are stepped over; the offset behind the last `startxref` only chooses among the trailers that went by.
/// Streams are skipped, but for those that hold objects.
///
/// The functions that read begin with the first byte of the thing in current() and leave the byte behind it
/// there; the source then stands behind that. Serves one parse, on one thread.
class JOBPARSER_EXPORT Parser
{
public:
    explicit Parser(ISource& theSource);
    ~Parser();
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    /// Reads the whole source. With `walkPages` it is a file: the pages in the tree are completed by what
    /// they inherit, all others are dropped, and the trailer becomes that of a section behind the file.
    /// Without, it is the text of such a summary, of which nothing is changed.
    ///
    /// Throws PdfParserException and what is derived from it for what is malformed, and
    /// std::bad_variant_access where a value is of another kind than it has to be.
    std::shared_ptr<DocumentInfo> parse(bool walkPages);

    /// Reads one thing: `void`, all objects up to the end; `unsigned int`; Name, from behind its solidus;
    /// Reference, without its `R`; Value; Object. Throws as parse() does.
    template <typename T> T parseValue();

    /// Sorts an object, which began at `offset`, by its type. Objects out of a stream have the offset 0.
    void processObject(const unsigned long long& offset, const Object& object);

    /// Reads the objects in a stream, of which the first byte is current(), and processes each.
    void parseObjectStream(Object& object);

    /// Reads one byte. Throws ISource::EofException at the end of the source.
    std::uint8_t next();
    /// Goes `count` bytes forward.
    void skip(unsigned long long count);
    /// Goes to the next byte that is neither white space nor in a comment. False if the source ended.
    bool ws();
    /// Whether the bytes from current() on are these. What is equal goes by, even if something else follows.
    bool isMatch(std::string_view bytes);
    /// Throws expected(bytes) unless isMatch(bytes).
    void match(std::string_view bytes);
    /// What to throw if something is not here: "... expected at 0x...!".
    PdfParserException expected(std::string_view what) const;
    /// Goes behind the next occurrence of the bytes. A byte that breaks one is not tried as a first byte.
    void _find_noBactraking(std::string_view bytes);
    /// A number; with `allowReference` also a Reference, or a FalseReference for two numbers that are none.
    /// None if there is no number.
    Value matchNumber(bool allowReference);

    std::uint8_t current() const;
    /// Of current() in the source; all bits set before the first byte.
    std::uint64_t position() const;

    std::shared_ptr<DocumentInfo> document; ///< What is read goes here; made by parse().
    ISource& source;

    ReferenceMap<Value> pageNodes;          ///< The inner nodes of the tree of pages.
    std::map<std::int64_t, Value> trailers; ///< By the offsets of their sections.
    std::uint32_t startxref = 0;            ///< The last one.
    std::uint32_t maxObjectNumber = 0;

private:
    enum class Purpose { Everything, Summary };

    struct StreamHead {
        bool mayHaveStream = false;
        bool holdsObjects = false;
        std::optional<double> length;
    };

    template <typename Work> auto synced(Work work);

    void readFile();
    bool readStartxref();
    void readTrailer(std::int64_t offset);
    void stepOverCrossReferences();
    Value readValue();
    Object readObject(Purpose purpose);
    StreamHead streamHead(const ObjectFacts& facts) const;
    void readStream(Object& object, const StreamHead& head, bool isWanted);
    void skipLineEnd();
    bool passStreamByLength(double length);
    void readObjectStream(Object& object);

    bool isDeferred(const ObjectFacts& facts, const Reference& reference, const Lexer& lexer,
                    const ValueTape& tape) const;
    void keep(std::int64_t offset, Object&& object);
    void keepText(std::uint32_t number, std::string_view text);
    void chooseTrailer(bool walkPages);
    void prepareTrailerForUpdate();
    Reference findPageTree() const;
    void completePages();

    std::unique_ptr<Lexer> m_lexer;
    std::unique_ptr<ValueTape> m_tape;
    std::unique_ptr<ObjectKeeper> m_keeper;
    bool m_isFile = false;        // That is read as a whole, so that nobody sees what may be embedded.
    std::string m_valueText;      // Of the last object, if it is not built yet.
    std::uint64_t m_inflated = 0; // Bytes that object streams have inflated to.
};

template <> JOBPARSER_EXPORT void Parser::parseValue<void>();
template <> JOBPARSER_EXPORT unsigned int Parser::parseValue<unsigned int>();
template <> JOBPARSER_EXPORT Name Parser::parseValue<Name>();
template <> JOBPARSER_EXPORT Reference Parser::parseValue<Reference>();
template <> JOBPARSER_EXPORT Value Parser::parseValue<Value>();
template <> JOBPARSER_EXPORT Object Parser::parseValue<Object>();

} // namespace Pdf::Parser
