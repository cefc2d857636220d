#pragma once

#include <cstdint>
#include <memory>

#include "JobParser/pclxl/JobChunkPclXLAttributeValue.h"
#include "JobParser/pclxl/JobChunkPclXLOperator.h"
#include "JobParser/pclxl/PclXLAttributes.h"
#include "JobParser/pclxl/PclXLTags.h"

namespace JobParser
{

class PclXLParser;

/// What is learned of an operator besides what the parser collects.
struct None {
};
struct PageCopies {
    std::int32_t copies = 1;
};
struct Comment {
    bool keep = false; ///< Its text matters, so that it becomes a chunk.
};

/// Gathers the attributes of one operator into its chunk, and looks at those that say something of the job.
///
/// Lives while the operator is read; the chunk lives on. The instances: BeginSession, BeginPage and
/// BeginFontHeader with None, EndPage with PageCopies, Comment with Comment.
template <tag_t tag, typename Payload> class Operator
{
public:
    /// The range of the chunk.
    Operator(PclXLParser& owner, std::int64_t start, std::int64_t end);

    /// Appends the attribute whose value stands in the range, from the first to the last byte without the
    /// identifier. Throws what reading the value does.
    void addAttribute(attribute_t attribute, std::int64_t start, std::int64_t end);

    /// Looks at the value from `start` on. Gives it if the chunk is to hold it, and a value without bytes
    /// otherwise. BeginSession has none.
    JobChunkPclXLAttributeValue parseAttribute(attribute_t attribute, std::int64_t start);

    [[no_unique_address]] Payload payload;
    std::shared_ptr<JobChunkPclXLOperator> chunk;
    PclXLParser* parser;
};

} // namespace JobParser
