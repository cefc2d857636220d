#include "JobParser/languages/MatrixSearch.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <optional>

#include "JobParser/JobFile.h"
#include "JobParser/model/ChunkRawData.h"

#include "Torv/BytePairs.h"
#include "Torv/Number.h"

namespace JobParser::PostScript
{
namespace
{

constexpr std::size_t matrixNumbers = 6;
// Of a longer number only so many bytes count.
constexpr std::size_t longestNumber = 65536;
// What lies nearer to zero is taken for it.
constexpr double smallest = 0.001;

constexpr std::array<std::uint8_t, 2> brackets{'[', ']'};

std::string_view asText(std::span<const std::uint8_t> bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool isSeparator(std::uint8_t byte)
{
    return byte == ' ' || byte == '\r' || byte == '\n' || byte == '\t';
}

std::int64_t longest(const std::vector<std::string>& words)
{
    std::size_t size = 0;
    for (const std::string& word : words)
        size = std::max(size, word.size());
    return static_cast<std::int64_t>(size);
}

std::int8_t signOf(double value)
{
    if (value > smallest)
        return 1;
    return value < -smallest ? -1 : 0;
}

/// The words from the position of the file up to an offset, one more than a matrix has at most.
std::vector<std::string> wordsBefore(JobFile& file, std::int64_t end)
{
    std::vector<std::string> words;
    bool isInside = false;
    while (file.m_offset < end && words.size() <= matrixNumbers) {
        const std::uint8_t byte = file.getChar();
        const bool wasInside = isInside;
        isInside = !isSeparator(byte);
        if (isInside && !wasInside)
            words.emplace_back();
        if (isInside && words.back().size() < longestNumber)
            words.back() += static_cast<char>(byte);
    }
    return words;
}

std::optional<OrientationMatrix> matrixOf(const std::vector<std::string>& words)
{
    if (words.size() != matrixNumbers)
        return std::nullopt;
    std::array<std::int8_t, matrixNumbers> signs{};
    for (std::size_t index = 0; index < matrixNumbers; ++index)
        signs[index] = signOf(Torv::stod(words[index]));
    return OrientationMatrix{signs[0], signs[1], signs[2], signs[3]};
}

} // namespace

MatrixSearch::MatrixSearch(JobFile& file, std::int64_t start, const MatrixFrame& frame)
    : m_file(&file), m_frame(&frame), m_longestBefore(longest(frame.before)),
      m_longestAfter(longest(frame.after)),
      m_anythingFitsAhead(frame.before.empty() || std::ranges::find(frame.before, "") != frame.before.end()),
      m_position(start)
{
}

void MatrixSearch::run(std::int64_t size, Overdraft overdraft, const MatrixFunction& function)
{
    m_size = size;
    if (left() <= 0)
        return;
    m_file->setPos(m_position);
    while (m_place == Place::Inside || seekOpening(overdraft)) {
        const Bracket bracket = seekBracket();
        if (bracket == Bracket::None)
            return;
        m_place = Place::Outside;
        if (bracket == Bracket::Closing && !takeArray(function))
            return;
    }
}

// At most so many of the bytes that are mapped from the position on, and at least one.
std::span<const std::uint8_t> MatrixSearch::bytesAhead(std::int64_t most) const
{
    m_file->peekChar();
    const auto window = m_file->window();
    return window.first(static_cast<std::size_t>(std::min(static_cast<std::int64_t>(window.size()), most)));
}

// Stops behind a `[` that the words of the frame stand ahead of, or where the stretch ends.
bool MatrixSearch::seekOpening(Overdraft overdraft)
{
    const std::int64_t charge = m_longestBefore == 0 ? 0 : 2 + 2 * m_longestBefore;
    while (left() > 0) {
        const auto bytes = bytesAhead(left());
        const void* const found = std::memchr(bytes.data(), '[', bytes.size());
        if (found == nullptr) {
            advance(static_cast<std::int64_t>(bytes.size()));
            continue;
        }
        const std::int64_t distance = static_cast<const std::uint8_t*>(found) - bytes.data();
        if (overdraft == Overdraft::Refused && charge > left() - distance - 1) {
            advance(distance);
            return false;
        }
        advance(distance + 1);
        m_charged += charge;
        if (!m_anythingFitsAhead && !isFramedAhead())
            continue;
        m_textStart = m_position;
        m_place = Place::Inside;
        return true;
    }
    return false;
}

// Whether one of the words stands ahead of the `[` just passed.
bool MatrixSearch::isFramedAhead() const
{
    const std::string text = textAheadOf(m_position - 1);
    m_file->setPos(m_position);
    return std::ranges::any_of(m_frame->before, [&](const auto& word) { return text.ends_with(word); });
}

// Where less stands ahead of the `[` than the longest word, that is all there is.
std::string MatrixSearch::textAheadOf(std::int64_t opening) const
{
    std::string text;
    m_file->setPos(std::max<std::int64_t>(0, opening - m_longestBefore));
    while (m_file->m_offset < opening)
        text += static_cast<char>(m_file->getChar());
    return text;
}

// Stops at the bracket, or where the stretch ends. After an overdraft it has no end any more.
MatrixSearch::Bracket MatrixSearch::seekBracket()
{
    for (;;) {
        const auto bytes = bytesAhead(left() >= 0 ? left() + 1 : std::numeric_limits<std::int64_t>::max());
        const std::size_t size = Torv::findByteOrPair(bytes, brackets, {'[', '['});
        if (left() >= 0 && static_cast<std::int64_t>(size) > left()) {
            advance(left());
            return Bracket::None;
        }
        const bool isFound = size != bytes.size();
        const bool isOpening = isFound && bytes[size] == '[';
        advance(static_cast<std::int64_t>(size));
        if (isFound)
            return isOpening ? Bracket::Opening : Bracket::Closing;
    }
}

// Reads the array that ends at the position. Whether the search goes on.
bool MatrixSearch::takeArray(const MatrixFunction& function)
{
    const std::int64_t closing = m_position++;
    m_file->getChar();
    m_charged += m_longestAfter;
    if (!isFramed()) {
        m_file->setPos(m_position);
        return true;
    }
    m_file->setPos(m_textStart);
    const auto matrix = matrixOf(wordsBefore(*m_file, closing));
    const bool goesOn = !matrix || function(*matrix);
    m_file->setPos(m_position);
    return goesOn;
}

// Whether a word stands behind the `]` just passed, and the one at its index ahead of the `[`.
bool MatrixSearch::isFramed()
{
    if (m_frame->after.empty())
        return true;
    std::string read;
    std::string_view behind = asText(m_file->window());
    if (static_cast<std::int64_t>(behind.size()) < m_longestAfter) {
        while (static_cast<std::int64_t>(read.size()) < m_longestAfter)
            read += static_cast<char>(m_file->getChar());
        m_file->setPos(m_position);
        behind = read;
    }
    const auto fitsBehind = [&](const std::string& word) { return behind.starts_with(word); };
    if (std::ranges::none_of(m_frame->after, fitsBehind))
        return false;
    // To look ahead moves the position, and with it the view.
    const std::string kept(behind.substr(0, static_cast<std::size_t>(m_longestAfter)));
    behind = kept;
    const std::string ahead = textAheadOf(m_textStart - 1);
    const std::size_t count = std::min(m_frame->before.size(), m_frame->after.size());
    for (std::size_t index = 0; index < count; ++index) {
        if (ahead.ends_with(m_frame->before[index]) && fitsBehind(m_frame->after[index]))
            return true;
    }
    return false;
}

void MatrixSearch::advance(std::int64_t count)
{
    if (count != 0)
        m_file->advancePos(count);
    m_position += count;
    m_charged += count;
}

void searchOrientations(JobFile& file, ChunkRawData& raw, std::function<bool(OrientationMatrix)> fn,
                        const std::vector<std::string>& before, const std::vector<std::string>& after)
{
    const MatrixFrame frame{before, after};
    MatrixSearch(file, raw.offset, frame).run(raw.size(), MatrixSearch::Overdraft::Granted, fn);
}

} // namespace JobParser::PostScript
