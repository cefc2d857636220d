#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "JobParser/model/Pdl.h"

namespace JobParser
{
class JobFile;
namespace Global
{
class Parser;
}
} // namespace JobParser

namespace JobParser::Worker
{

/// A stretch of a job file.
struct Range {
    std::int64_t offset = 0;
    std::int64_t size = 0; ///< At least 1.
};

/// What a page description language has to say in a job, without PJL, UELs and PRESCRIBE blocks.
struct Body {
    Pdl pdl = Pdl::Unknown;
    std::vector<Range> ranges; ///< In order; what stands between them is not of the language.
};

/// Finds the bodies of a job by the library's own readers of PJL and PRESCRIBE.
///
/// The language of a body is the one that its first bytes show, else the one that PJL told, else the one that
/// the caller expects.
class BodyFinder
{
public:
    /// `file` is open and outlives the finder. `expected` is the language of the job as far as it is known.
    BodyFinder(JobFile& file, Pdl expected) : m_file(file), m_expected(expected) {}

    /// The bodies in their order. Throws JobParserException if the envelope is malformed.
    std::vector<Body> find();

    /// How many copies the envelope asks for; valid after find.
    std::int32_t copies() const { return m_copies; }

private:
    void walk(Global::Parser& parser);
    Pdl languageHere(Global::Parser& parser) const;
    void takeStretch(Global::Parser& parser);
    void skipToEvent(Global::Parser& parser);
    bool isBlockHere(Global::Parser& parser) const;
    void endBody();
    bool isFiller(const Range& range) const;

    JobFile& m_file;
    Pdl m_expected;
    Pdl m_told = Pdl::Unknown;
    Body m_body;
    std::vector<Body> m_bodies;
    std::int32_t m_copies = 1;
};

} // namespace JobParser::Worker
