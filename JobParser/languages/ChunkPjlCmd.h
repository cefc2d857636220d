#pragma once

#include <string>

#include "JobParser/Export.h"
#include "JobParser/IChunk.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

class UnserializationContext;

/// One PJL command line, as in `@PJL SET COPIES=2`.
///
/// Refers to no bytes of the file: save writes the line anew from the two strings, which makes PJL editable.
/// What stood between command and parameter, and how the line ended, is not kept.
class JOBPARSER_EXPORT ChunkPjlCmd : public IChunk
{
public:
    ChunkPjlCmd(const std::string& command, const std::string& parameter) : cmd(command), param(parameter) {}
    /// Reads "cmd" and "param". Throws Torv::VariantInvalidOperationException if one is missing or no string.
    ChunkPjlCmd(UnserializationContext& context, const Torv::Variant& dto);

    /// Writes the line with a CR LF. The parameter of an empty command is left out.
    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    /// A line that is no UTF-8, or that the log does not take, is logged by its command alone.
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    std::int64_t size() const override;

    /// Gives a `NAME=VALUE` of the parameter, whose name is compared in any case, a new value, and leaves all
    /// else as it is; appends it, behind a blank, if there is none. The value is written as given: quotation
    /// marks are the caller's.
    void setParam(const std::string& name, const std::string& value);

    /// Splits the parameter at its first `=`, or at its first blank if it has no `=`, and trims both sides.
    /// False, with both empty, if it has neither.
    bool parseParamEqValue(std::string& name, std::string& value) const;

    /// Searches the parameter with an ECMAScript pattern. On a match `out` becomes the text of group 1, empty
    /// if the group took no part; otherwise `out` stays, and the result is false.
    ///
    /// A parameter of more than 4096 bytes, four times what a line of a job can hold, never matches. Throws
    /// std::regex_error for a pattern that does not compile. Takes linear time and little stack, but for
    /// patterns with look-aheads, back references, empty brackets, `\x`, `\0` or bytes from 80 on, which take
    /// what std::regex takes: up to a kilobyte of stack for each byte.
    bool parseParamRegEx(const char* pattern, std::string& out) const;

    std::string cmd;   ///< The command word, case as it stood; empty for a bare `@PJL`.
    std::string param; ///< The rest of the line, trimmed.
};

} // namespace JobParser
