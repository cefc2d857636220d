#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "JobParser/model/Finishing.h"
#include "JobParser/paper/EMediaSize.h"
#include "JobParser/pclxl/PclXLAttributes.h"
#include "JobParser/pclxl/PclXLTags.h"

namespace JobParser
{

class IChunk;
class JobChunkPclXLAttributeValue;
class JobChunkPclXLOperator;
class JobFile;

/// Walks a PCL XL stream in the little-endian binding, from behind its header line to its EndSession.
///
/// Attributes stand in front of their operator, so that everything is stepped over by its size, and the list
/// of attributes is read a second time for the few operators that matter (Operator). These become chunks; all
/// that lies between them stays a range of the file.
///
/// Serves one stream. Belongs to the thread that parses the job. The file outlives the parser.
class PclXLParser
{
public:
    using Chunks = std::vector<std::shared_ptr<IChunk>>;
    /// Gets the text of a PRESCRIBE block that stood in comments, from `!R!` to `EXIT;`.
    using PrescribeCallback = std::function<void(const std::string&)>;

    /// The stream begins at the position of the file.
    PclXLParser(JobFile& file, PrescribeCallback callback);

    /// Reads the stream and leaves the file behind its EndSession. Throws Torv::GenericException for a
    /// malformed stream, UnexpectedEndOfFileException for one without an end, what a value that does not
    /// convert throws, and what the callback does. Asserts that embedded data are not empty and that a tag is
    /// one that may begin a value.
    void parse();

    /// Reads one thing from a position, to which the file returns on every way out; or, if `pos` is negative,
    /// from the position of the file, which stays behind it. T says what:
    ///
    /// - void: everything up to EndSession.
    /// - an Operator: the list of attributes up to the next operator.
    /// - JobChunkPclXLAttributeValue: the next value.
    /// - std::string: the bytes of the next value or embedded data.
    template <typename T> T parseValue(std::int64_t pos);

    /// Reads as many bytes. Throws UnexpectedEndOfFileException if the file has less.
    template <typename Bytes> Bytes readBytes(std::uint64_t count);

    /// Appends a chunk of what lies between the last chunk and `end`, which 0 sets to the position of the
    /// file. False if that is nothing.
    bool fillInRawChunk(std::int64_t end);

    /// Appends an operator, and before it what lies between it and the last chunk.
    void addOperatorChunk(std::shared_ptr<JobChunkPclXLOperator> op);

    // What parse found. Orientation and duplex are those of the last page that says so.
    Chunks m_chunks;                   ///< Without a gap from the start of the stream to its end.
    std::set<EMediaSize> m_mediaSizes; ///< Of all pages.
    bool m_swapBinding = false;        ///< The driver exchanges the two duplex values.
    std::uint32_t m_pageCount = 0;     ///< The sum of the copies of all pages.
    std::uint32_t m_copies = 1;        ///< Of each page; 1 if pages differ.
    Orientation m_orientation = Orientation::Portrait;
    std::set<std::string> m_fonts;
    Duplex m_duplex = Duplex::OneSided;
    bool m_lexmarkEnhanced = false; ///< Set by a comment: media from there on are of that driver.

private:
    template <tag_t tag, typename Payload> friend class Operator;

    enum class StepKind { Operator, EndSession, EmbeddedData, Value };
    /// What was stepped over.
    struct Step {
        StepKind kind;
        tag_t tag;
        std::int64_t valueEnd = 0; ///< Of a value: the position behind it.
        attribute_t attribute{};   ///< Of a value: whose it is.
    };

    Step step();
    attribute_t readAttributeId();
    std::int64_t readNumber(int bytes);
    std::int64_t readValueSize(tag_t tag, tag_t& lengthType);
    tag_t findData();
    std::int64_t skipPlain(std::int64_t operatorStart);
    void takeOperator(tag_t tag, std::int64_t operatorStart);
    void countPage(std::uint32_t copies);

    PrescribeCallback m_callback;
    JobFile& m_file;
    std::int64_t m_rawStart;   ///< Behind the last chunk.
    std::string m_commentText; ///< A PRESCRIBE block whose end has not come yet.
};

template <> void PclXLParser::parseValue<void>(std::int64_t pos);
template <>
JobChunkPclXLAttributeValue PclXLParser::parseValue<JobChunkPclXLAttributeValue>(std::int64_t pos);
template <> std::string PclXLParser::parseValue<std::string>(std::int64_t pos);

} // namespace JobParser
