#include "pdf/LambdaSource.h"

namespace Pdf::Parser
{

std::uint8_t LambdaSource::next()
{
    return m_next();
}

void LambdaSource::skip(unsigned long long count)
{
    m_skip(count);
}

} // namespace Pdf::Parser
