#include "JobParser/languages/PrescribeCmd.h"

#include "JobParser/JobParserException.h"

#include "Torv/Assert.h"
#include "Torv/Number.h"

namespace JobParser::Prescribe
{
namespace
{

constexpr std::uint32_t fourthLetter = 0xFF;
constexpr int firstLetterShift = 24;
constexpr int bitsOfLetter = 8;

} // namespace

void PrescribeCmd::clear()
{
    name = 0;
    m_paramCount = 0;
    dataLength = 0;
}

void PrescribeCmd::addCmdChar(unsigned char letter)
{
    if ((name & fourthLetter) != 0)
        throw JobParserException("JobParser: Prescribe cmd name too long");
    int shift = firstLetterShift;
    while ((name >> shift & 0xFF) != 0)
        shift -= bitsOfLetter;
    name |= static_cast<std::uint32_t>(letter) << shift;
}

void PrescribeCmd::startParam()
{
    if (m_paramCount == maxParams)
        throw JobParserException("JobParser: Prescribe cmd has too many parameters");
    params[m_paramCount++] = data.data() + dataLength;
}

void PrescribeCmd::addData(unsigned char byte)
{
    append(static_cast<char>(byte));
}

void PrescribeCmd::finishParam()
{
    append('\0');
}

void PrescribeCmd::append(char byte)
{
    if (dataLength == maxDataLength)
        throw JobParserException("JobParser: Prescribe cmd too long");
    data[dataLength++] = byte;
}

int PrescribeCmd::getParamInt(int idx) const
{
    return Torv::atoi(getParamString(idx));
}

const char* PrescribeCmd::getParamString(int idx) const
{
    // Hosts that handle assertions know this one by its text, in which nothing is converted.
    if (idx < 0 || static_cast<std::uint32_t>(idx) >= m_paramCount) [[unlikely]]
        Torv::assertFailed("idx >= 0 && idx < m_paramCount", "Parser", __func__);
    return params[static_cast<std::size_t>(idx)];
}

} // namespace JobParser::Prescribe
