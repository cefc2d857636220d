#include "JobParser/pclxl/PclXLParser.h"

#include <algorithm>
#include <array>
#include <span>

#include "JobParser/JobFile.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "JobParser/pclxl/JobChunkPclXLRaw.h"
#include "JobParser/pclxl/Operator.h"

#include "Torv/Format.h"
#include "Torv/GenericException.h"
#include "Torv/ScopeGuard.h"

namespace JobParser
{
namespace
{

using Value = JobChunkPclXLAttributeValue;

// The byte travels as the number of the exception; the placeholder in the text stays as it is.
[[noreturn]] void throwWithByte(const char* message, tag_t byte)
{
    throw Torv::GenericException(message, static_cast<int>(byte));
}

[[noreturn]] void throwPrematureEnd()
{
    throw Torv::GenericException("Premature end of PCLXL document");
}

void refuseInvalid(tag_t tag)
{
    if (baseSizeOf(tag) < -1)
        throwWithByte("Invalid control byte %02X", tag);
}

constexpr bool isEmbeddedData(tag_t tag)
{
    return tag == tag_t::EmbeddedData || tag == tag_t::EmbeddedDataByte;
}

constexpr int lengthBytesOf(tag_t embeddedData)
{
    return embeddedData == tag_t::EmbeddedData ? 4 : 1;
}

constexpr std::array<bool, 256> makePlainOperators()
{
    std::array<bool, 256> plain{};
    std::fill(plain.begin() + 0x41, plain.begin() + 0xC0, true);
    for (const tag_t tag : {tag_t::BeginSession, tag_t::EndSession, tag_t::BeginPage, tag_t::EndPage,
                            tag_t::Comment, tag_t::BeginFontHeader})
        plain[static_cast<std::size_t>(tag)] = false;
    return plain;
}

/// The operators that mean nothing here.
constexpr std::array<bool, 256> plainOperators = makePlainOperators();

constexpr auto idTag = static_cast<std::uint8_t>(tag_t::AttributeId);
constexpr auto wideIdTag = static_cast<std::uint8_t>(tag_t::AttributeIdWide);

/// More bytes than a tag, the length of an array, the longest value with a size of its own, an identifier and
/// an operator have together.
constexpr std::ptrdiff_t plainMargin = 128;

/// Passes a value of `size` bytes, its tag included, and the identifier behind it. False, with nothing
/// passed, if there is no identifier.
inline bool passValue(const std::uint8_t*& at, std::ptrdiff_t size)
{
    const std::uint8_t* const id = at + size;
    if (*id == idTag) [[likely]] {
        at = id + 2;
        return true;
    }
    if (*id != wideIdTag)
        return false;
    at = id + 3;
    return true;
}

std::int64_t numberAt(const std::uint8_t* at, int bytes)
{
    std::int64_t number = 0;
    for (int index = 0; index < bytes; ++index)
        number |= std::int64_t{at[index]} << (8 * index);
    return number;
}

/// Passes what is not among the common tags. False if `at` is at something that is not plain, or that is not
/// known to end before `last`.
bool passRare(const std::uint8_t*& at, const std::uint8_t* last)
{
    const auto tag = static_cast<tag_t>(*at);
    if (isEmbeddedData(tag)) {
        const int lengthBytes = lengthBytesOf(tag);
        const std::int64_t length = numberAt(at + 1, lengthBytes);
        if (length == 0 || length >= last - at - 1 - lengthBytes)
            return false;
        at += 1 + lengthBytes + length;
        return true;
    }
    const std::int64_t elementSize = baseSizeOf(tag);
    if (elementSize <= 0)
        return false;
    if (!isArray(tag))
        return passValue(at, 1 + static_cast<std::ptrdiff_t>(elementSize));
    const auto lengthType = static_cast<tag_t>(at[1]);
    if (!isLengthType(lengthType))
        return false;
    const int lengthBytes = baseSizeOf(lengthType);
    const std::int64_t size = elementSize * numberAt(at + 2, lengthBytes);
    return size < last - at - 2 - lengthBytes &&
           passValue(at, 2 + lengthBytes + static_cast<std::ptrdiff_t>(size));
}

struct Passed {
    std::int64_t bytes = 0;
    std::int64_t toOperator = 0; ///< The part of them up to behind the last operator; 0 if there was none.
};

/// Passes values with their identifiers, embedded data, and operators that mean nothing, as far as they
/// surely lie in the stretch; stops at the tag of anything else.
///
/// This is nearly all of a stream. Each common type has a branch with its own constant size: a branch that is
/// foreseen lets the next tag be loaded at once, where a size out of a table has to be waited for.
Passed passPlain(std::span<const std::uint8_t> bytes)
{
    if (std::ssize(bytes) <= plainMargin)
        return {};
    const std::uint8_t* at = bytes.data();
    const std::uint8_t* behindOperator = at;
    const std::uint8_t* const last = at + (std::ssize(bytes) - plainMargin);
    bool plain = true;
    while (plain && at < last) {
        const std::uint8_t tag = *at;
        if (tag == 0xC8 && at[1] == 0xC0) { // a text of up to 255 characters
            plain = at[2] < last - at && passValue(at, 3 + std::ptrdiff_t{at[2]});
        } else if (tag == 0xD1 || tag == 0xD3) { // a point
            plain = passValue(at, 5);
        } else if (tag == 0xC0) { // a byte
            plain = passValue(at, 2);
        } else if (tag == 0xC1 || tag == 0xC3) { // a number of 16 bits
            plain = passValue(at, 3);
        } else if (tag == 0xE1 || tag == 0xE3) { // a box
            plain = passValue(at, 9);
        } else if (plainOperators[tag]) {
            behindOperator = ++at;
        } else {
            plain = passRare(at, last);
        }
        // Most operators stand behind one value or two.
        if (plain && plainOperators[*at])
            behindOperator = ++at;
    }
    return {at - bytes.data(), behindOperator - bytes.data()};
}

} // namespace

PclXLParser::PclXLParser(JobFile& file, PrescribeCallback callback)
    : m_callback(std::move(callback)), m_file(file), m_rawStart(file.m_offset)
{
}

void PclXLParser::parse()
{
    parseValue<void>(-1);
}

// Steps over one item, byte by byte: for what is rare, what is read a second time, and the ends of views.
PclXLParser::Step PclXLParser::step()
{
    const auto tag = static_cast<tag_t>(m_file.getChar());
    if (tag == tag_t::EndSession)
        return {StepKind::EndSession, tag};
    if (baseSizeOf(tag) == 0)
        return {StepKind::Operator, tag};
    if (isEmbeddedData(tag)) {
        m_file.advancePos(readNumber(lengthBytesOf(tag)));
        return {StepKind::EmbeddedData, tag};
    }
    refuseInvalid(tag);
    tag_t lengthType{};
    const std::int64_t size = readValueSize(tag, lengthType);
    // A value that ends behind the file is not stepped over: its bytes are then taken for the identifier.
    if (size != 0)
        m_file.advancePos(size);
    const std::int64_t valueEnd = m_file.m_offset;
    return {StepKind::Value, tag, valueEnd, readAttributeId()};
}

std::int64_t PclXLParser::readNumber(int bytes)
{
    std::int64_t number = 0;
    for (int index = 0; index < bytes; ++index)
        number |= std::int64_t{m_file.getChar()} << (8 * index);
    return number;
}

// Bytes of the value behind its tag and, for an array, the length, which is read.
std::int64_t PclXLParser::readValueSize(tag_t tag, tag_t& lengthType)
{
    lengthType = noLengthType;
    const std::int64_t elementSize = baseSizeOf(tag);
    if (!isArray(tag))
        return elementSize;
    lengthType = static_cast<tag_t>(m_file.getChar());
    if (!isLengthType(lengthType))
        throw Torv::GenericException(Torv::format("Invalid array length type %02X", lengthType));
    return elementSize * readNumber(baseSizeOf(lengthType));
}

attribute_t PclXLParser::readAttributeId()
{
    const auto tag = static_cast<tag_t>(m_file.getChar());
    // Of an identifier of two bytes the second one counts.
    if (tag == tag_t::AttributeIdWide)
        m_file.getChar();
    else if (tag != tag_t::AttributeId)
        throwWithByte("Attribute expected instead %02X", tag);
    return static_cast<attribute_t>(m_file.getChar());
}

template <> void PclXLParser::parseValue<void>(std::int64_t pos)
{
    Torv::ScopeGuard back([this, from = m_file.m_offset] { m_file.setPos(from); });
    if (pos < 0)
        back.disarm();
    else
        m_file.setPos(pos);
    for (std::int64_t operatorStart = m_file.m_offset;;) {
        operatorStart = skipPlain(operatorStart);
        const Step found = step();
        if (found.kind == StepKind::EndSession)
            break;
        if (found.kind != StepKind::Operator)
            continue;
        takeOperator(found.tag, operatorStart);
        operatorStart = m_file.m_offset;
    }
    fillInRawChunk(0);
}

// Gives the start of the operator that the position is in.
std::int64_t PclXLParser::skipPlain(std::int64_t operatorStart)
{
    const Passed passed = passPlain(m_file.window());
    if (passed.toOperator != 0)
        operatorStart = m_file.m_offset + passed.toOperator;
    if (passed.bytes != 0)
        m_file.advancePos(passed.bytes);
    return operatorStart;
}

void PclXLParser::takeOperator(tag_t tag, std::int64_t operatorStart)
{
    if (tag == tag_t::BeginSession) {
        addOperatorChunk(parseValue<Operator<tag_t::BeginSession, None>>(operatorStart).chunk);
    } else if (tag == tag_t::BeginPage) {
        addOperatorChunk(parseValue<Operator<tag_t::BeginPage, None>>(operatorStart).chunk);
    } else if (tag == tag_t::EndPage) {
        const auto endPage = parseValue<Operator<tag_t::EndPage, PageCopies>>(operatorStart);
        countPage(static_cast<std::uint32_t>(endPage.payload.copies));
        addOperatorChunk(endPage.chunk);
    } else if (tag == tag_t::Comment) {
        const auto comment = parseValue<Operator<tag_t::Comment, Comment>>(operatorStart);
        if (comment.payload.keep)
            addOperatorChunk(comment.chunk);
    } else if (tag == tag_t::BeginFontHeader) {
        parseValue<Operator<tag_t::BeginFontHeader, None>>(operatorStart);
    }
}

void PclXLParser::countPage(std::uint32_t copies)
{
    if (m_pageCount == 0)
        m_copies = copies;
    else if (m_copies != copies)
        m_copies = 1;
    m_pageCount += copies;
}

// T is one of the operators. Called when its byte has just been read.
template <typename T> T PclXLParser::parseValue(std::int64_t pos)
{
    const std::int64_t behind = m_file.m_offset;
    T op(*this, pos, behind - 1);
    Torv::ScopeGuard back([this, behind] { m_file.setPos(behind); });
    if (pos < 0)
        back.disarm();
    else
        m_file.setPos(pos);
    for (std::int64_t valueStart = m_file.m_offset;; valueStart = m_file.m_offset) {
        const Step found = step();
        if (found.kind == StepKind::EndSession)
            throwPrematureEnd();
        if (found.kind == StepKind::Operator)
            return op;
        if (found.kind == StepKind::Value)
            op.addAttribute(found.attribute, valueStart, found.valueEnd - 1);
    }
}

template Operator<tag_t::BeginSession, None> PclXLParser::parseValue(std::int64_t);
template Operator<tag_t::BeginPage, None> PclXLParser::parseValue(std::int64_t);
template Operator<tag_t::EndPage, PageCopies> PclXLParser::parseValue(std::int64_t);
template Operator<tag_t::Comment, Comment> PclXLParser::parseValue(std::int64_t);
template Operator<tag_t::BeginFontHeader, None> PclXLParser::parseValue(std::int64_t);

template <> Value PclXLParser::parseValue<Value>(std::int64_t pos)
{
    Torv::ScopeGuard back([this, from = m_file.m_offset] { m_file.setPos(from); });
    if (pos < 0)
        back.disarm();
    else
        m_file.setPos(pos);
    tag_t tag = findData();
    while (isEmbeddedData(tag)) {
        m_file.advancePos(readNumber(lengthBytesOf(tag)));
        tag = findData();
    }
    refuseInvalid(tag);
    tag_t lengthType{};
    const std::int64_t size = readValueSize(tag, lengthType);
    return {tag, readBytes<std::vector<std::uint8_t>>(static_cast<std::uint64_t>(size)), lengthType};
}

template <> std::string PclXLParser::parseValue<std::string>(std::int64_t pos)
{
    Torv::ScopeGuard back([this, from = m_file.m_offset] { m_file.setPos(from); });
    if (pos < 0)
        back.disarm();
    else
        m_file.setPos(pos);
    const tag_t tag = findData();
    tag_t lengthType{};
    std::int64_t size = 0;
    if (isEmbeddedData(tag)) {
        size = readNumber(lengthBytesOf(tag));
    } else {
        refuseInvalid(tag);
        size = readValueSize(tag, lengthType);
    }
    return readBytes<std::string>(static_cast<std::uint64_t>(size));
}

// The next tag that is no operator.
tag_t PclXLParser::findData()
{
    for (;;) {
        const auto tag = static_cast<tag_t>(m_file.getChar());
        if (tag == tag_t::EndSession)
            throwPrematureEnd();
        if (baseSizeOf(tag) != 0)
            return tag;
    }
}

template <typename Bytes> Bytes PclXLParser::readBytes(std::uint64_t count)
{
    const auto left =
        static_cast<std::uint64_t>(std::max<std::int64_t>(m_file.m_realDataSize - m_file.m_offset, 0));
    // A length may say anything, so that no more is reserved than there can be.
    Bytes bytes;
    bytes.reserve(static_cast<std::size_t>(std::min(count, left)));
    while (count != 0) {
        const auto part = m_file.window();
        if (part.empty())
            throw UnexpectedEndOfFileException();
        const std::uint64_t size = std::min<std::uint64_t>(count, part.size());
        bytes.insert(bytes.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(size));
        m_file.advancePos(static_cast<std::int64_t>(size));
        count -= size;
    }
    return bytes;
}

template std::vector<std::uint8_t> PclXLParser::readBytes(std::uint64_t);
template std::string PclXLParser::readBytes(std::uint64_t);

bool PclXLParser::fillInRawChunk(std::int64_t end)
{
    if (end == 0)
        end = m_file.m_offset;
    if (end <= m_rawStart)
        return false;
    m_chunks.push_back(std::make_shared<JobChunkPclXLRaw>(m_rawStart, end - 1));
    m_rawStart = end;
    return true;
}

void PclXLParser::addOperatorChunk(std::shared_ptr<JobChunkPclXLOperator> op)
{
    fillInRawChunk(op->start);
    m_rawStart = op->end + 1;
    m_chunks.push_back(std::move(op));
}

} // namespace JobParser
