#include "JobParser/model/UnexpectedEndOfFileException.h"

namespace JobParser
{

UnexpectedEndOfFileException::UnexpectedEndOfFileException() : JobParserException("Unexpected end of file") {}

UnexpectedEndOfFileException::~UnexpectedEndOfFileException() = default;

} // namespace JobParser
