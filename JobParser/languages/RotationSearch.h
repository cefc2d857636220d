#pragma once

#include <cstdint>

namespace JobParser
{
class ChunkRawData;
class JobFile;
} // namespace JobParser

namespace JobParser::PostScript
{

/// How a driver turns all pages.
enum class Rotation { None, HalfTurn, MinusQuarterTurn };

/// Looks in a raw stretch of a job file, of any length, for the operators with which drivers turn the pages:
/// a half turn where `(?:^|\s)180\s+(?:neg\s+)?rotate\s` matches, otherwise a quarter turn back where ` -90
/// rotate` stands. The file stands anywhere afterwards. Throws UnexpectedEndOfFileException for a stretch
/// that is longer than the file.
Rotation findRotation(JobFile& file, const ChunkRawData& raw);

} // namespace JobParser::PostScript
