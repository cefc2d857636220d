#include "JobParser/IChunk.h"

namespace JobParser
{

IChunk::~IChunk() = default;

} // namespace JobParser
