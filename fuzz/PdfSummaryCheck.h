#pragma once

namespace JobParser
{
class Job;
} // namespace JobParser

namespace Pdf::Parser
{
class DocumentInfo;
} // namespace Pdf::Parser

namespace Fuzz
{

/// Whether the summary of a PDF can be written and has to come back from its text as it was.
///
/// It cannot be written without a catalog, or with two numbers that are no reference where one value belongs.
/// What PDF text does not carry back is: a name with a number sign, which is written as it is and read as an
/// escape; a NUL, which ends a string and the object around it; a number beyond 32 bits, which is cut down
/// where another number follows, and has no exact decimals; and the order of objects with even generations,
/// some of which are not less than each other.
bool isReloadable(const Pdf::Parser::DocumentInfo& summary);

/// Whether this holds for each summary of a PDF in the job.
bool hasReloadableSummaries(const JobParser::Job& job);

} // namespace Fuzz
