#include "JobParser/JobParserException.h"

namespace JobParser
{

JobParserException::~JobParserException() = default;

} // namespace JobParser
