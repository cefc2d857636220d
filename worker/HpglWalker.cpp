#include "worker/HpglWalker.h"

#include <algorithm>
#include <array>
#include <vector>

#include "worker/BodyReader.h"
#include "worker/PagePrinter.h"

#include "Torv/Ascii.h"
#include "Torv/Number.h"

namespace JobParser::Worker
{
namespace
{

constexpr int escape = 0x1B;
constexpr int endOfText = 3;
// Parameters beyond this are points of long lines, of which one tells as much as all.
constexpr std::size_t longestParameters = 256;
constexpr int mostPens = 256;

/// What an instruction paints, beside those that have a rule of their own.
enum class Paint { Nothing, Line, LineIfPenDown, Area, Polygon, PolygonArea };

struct Instruction {
    char first;
    char second;
    Paint paint;
};

constexpr std::array<Instruction, 21> instructions{{
    {'P', 'D', Paint::Line},          {'P', 'A', Paint::LineIfPenDown}, {'P', 'R', Paint::LineIfPenDown},
    {'A', 'A', Paint::LineIfPenDown}, {'A', 'R', Paint::LineIfPenDown}, {'A', 'T', Paint::LineIfPenDown},
    {'R', 'T', Paint::LineIfPenDown}, {'B', 'Z', Paint::LineIfPenDown}, {'B', 'R', Paint::LineIfPenDown},
    {'C', 'I', Paint::Line},          {'E', 'A', Paint::Line},          {'E', 'R', Paint::Line},
    {'E', 'W', Paint::Line},          {'E', 'P', Paint::Polygon},       {'F', 'P', Paint::PolygonArea},
    {'R', 'A', Paint::Area},          {'R', 'R', Paint::Area},          {'W', 'G', Paint::Area},
    {'R', 'Q', Paint::Area},          {'S', 'B', Paint::Nothing},       {'P', 'U', Paint::Nothing},
}};

Paint paintOf(char first, char second)
{
    for (const Instruction& row : instructions) {
        if (row.first == first && row.second == second)
            return row.paint;
    }
    return Paint::Nothing;
}

// All but the coordinates of a relative move of nowhere.
bool hasNumber(const std::string& parameters)
{
    return std::ranges::any_of(parameters,
                               [](char c) { return Torv::Ascii::isDigit(static_cast<std::uint8_t>(c)); });
}

std::vector<int> numbersOf(const std::string& parameters)
{
    std::vector<int> numbers;
    std::size_t start = 0;
    while (start < parameters.size()) {
        std::size_t end = parameters.find(',', start);
        if (end == std::string::npos)
            end = parameters.size();
        numbers.push_back(Torv::atoi(std::string_view(parameters).substr(start, end - start)));
        start = end + 1;
    }
    return numbers;
}

// Digits of encoded numbers; the last one of a number is above the others.
struct DigitCode {
    int base;
    int firstLast; ///< The byte of the digit 0 as the last one.
};
constexpr int firstDigit = 63;
constexpr DigitCode eightBitDigits{64, 191};
constexpr DigitCode sevenBitDigits{32, 95};

bool isParameterByte(int byte)
{
    return (byte >= '0' && byte <= '9') || byte == '+' || byte == '-' || byte == '.' || byte == ',' ||
           byte == ' ' || (byte >= 9 && byte <= 13);
}

} // namespace

void HpglWalker::reset()
{
    m_pens = {};
    m_pen = 1;
    m_isPenDown = false;
    m_isInPolygon = false;
    m_hasPolygon = false;
    m_labelEnd = endOfText;
    m_shade = 100;
}

int HpglWalker::get()
{
    return m_reader.position() < m_end ? m_reader.get() : -1;
}

void HpglWalker::walk(std::int64_t end)
{
    m_end = end;
    while (m_reader.position() < m_end && m_reader.peek() != escape) {
        const int first = get();
        if (first < 0)
            return;
        if (!Torv::Ascii::isLetter(static_cast<std::uint8_t>(first)) || m_reader.position() >= m_end)
            continue;
        const int second = m_reader.peek();
        if (second < 0 || !Torv::Ascii::isLetter(static_cast<std::uint8_t>(second)))
            continue;
        get();
        take(static_cast<char>(Torv::Ascii::toUpper(static_cast<std::uint8_t>(first))),
             static_cast<char>(Torv::Ascii::toUpper(static_cast<std::uint8_t>(second))));
    }
}

std::string HpglWalker::readParameters()
{
    std::string parameters;
    while (m_reader.position() < m_end && isParameterByte(m_reader.peek())) {
        const int byte = get();
        if (parameters.size() < longestParameters)
            parameters += static_cast<char>(byte);
    }
    return parameters;
}

void HpglWalker::take(char first, char second)
{
    const auto is = [&](std::string_view name) { return name[0] == first && name[1] == second; };
    if (is("LB"))
        return takeLabel();
    if (is("PE"))
        return takePolyline();
    if (is("CO"))
        return takeComment();
    if (is("DT")) {
        const int byte = get();
        m_labelEnd = byte < 0 || byte == ';' ? endOfText : byte;
        return;
    }
    if (is("SM")) {
        if (m_reader.peek() != ';')
            get();
        return;
    }
    const std::string parameters = readParameters();
    if (is("IN") || is("DF")) {
        m_isInPolygon = false;
        m_hasPolygon = false;
        m_labelEnd = endOfText;
        m_shade = 100;
        m_isPenDown = m_isPenDown && is("DF");
    } else if (is("SP")) {
        selectPen(parameters);
    } else if (is("PC")) {
        setPenColor(parameters);
    } else if (is("NP")) {
        m_pens =
            PclPalette::ofPens(static_cast<std::size_t>(std::clamp(Torv::atoi(parameters), 2, mostPens)));
    } else if (is("FT")) {
        setFill(parameters);
    } else if (is("PM")) {
        takePolygonMode(parameters);
    } else if (is("PU")) {
        m_isPenDown = false;
    }
    if (is("PD"))
        m_isPenDown = true;
    switch (paintOf(first, second)) {
    case Paint::Nothing: break;
    case Paint::Line: draw(); break;
    case Paint::LineIfPenDown:
        if (m_isPenDown && hasNumber(parameters))
            draw();
        break;
    case Paint::Area: fill(); break;
    case Paint::Polygon:
        if (m_hasPolygon)
            draw();
        break;
    case Paint::PolygonArea:
        if (m_hasPolygon)
            fill();
        break;
    }
}

void HpglWalker::takeLabel()
{
    bool isInk = false;
    for (int byte = get(); byte >= 0 && byte != m_labelEnd; byte = get())
        isInk = isInk || byte > ' ';
    if (isInk)
        draw();
}

// Numbers have bytes of an own code, of which the last one is known; two make a point. `<` lifts the pen for
// the next point, `:` selects a pen, `=` and `>` say how points are meant, `7` how many bits a byte has.
void HpglWalker::takePolyline()
{
    bool isLifted = false;
    int numbers = 0;
    bool isSevenBit = false;
    for (int byte = get(); byte >= 0 && byte != ';'; byte = get()) {
        const DigitCode& code = isSevenBit ? sevenBitDigits : eightBitDigits;
        if (byte == '<') {
            isLifted = true;
        } else if (byte == '7') {
            isSevenBit = true;
        } else if (byte == ':') {
            selectPen(std::to_string(readEncodedNumber(isSevenBit)));
        } else if (byte == '>') {
            readEncodedNumber(isSevenBit);
        } else if (byte >= code.firstLast && ++numbers % 2 == 0) {
            if (!isLifted)
                draw();
            isLifted = false;
        }
    }
}

// The number at the position, whose lowest bit is its sign, as if it were positive.
int HpglWalker::readEncodedNumber(bool isSevenBit)
{
    constexpr int greatest = 1 << 20;
    const DigitCode& code = isSevenBit ? sevenBitDigits : eightBitDigits;
    int number = 0;
    int weight = 1;
    for (bool goesOn = true; goesOn && m_reader.peek() >= firstDigit;) {
        const int byte = get();
        goesOn = byte >= firstDigit && byte < code.firstLast;
        const int digit = std::clamp(byte - (goesOn ? firstDigit : code.firstLast), 0, code.base - 1);
        number = std::min(number + digit * weight, greatest);
        weight = std::min(weight * code.base, greatest / code.base);
    }
    return number / 2;
}

void HpglWalker::takeComment()
{
    if (m_reader.peek() == '"') {
        get();
        skipTo('"');
    } else {
        skipTo(';');
    }
}

void HpglWalker::skipTo(int terminator)
{
    for (int byte = get(); byte >= 0 && byte != terminator;)
        byte = get();
}

void HpglWalker::selectPen(const std::string& parameters)
{
    const int pen = std::max(Torv::atoi(parameters), 0);
    const auto number = static_cast<std::size_t>(pen);
    const std::size_t count = m_pens.size();
    // Pens beyond the palette use its colours anew, without white.
    m_pen = number < count || count < 2 ? number : (number - 1) % (count - 1) + 1;
}

void HpglWalker::setPenColor(const std::string& parameters)
{
    const std::vector<int> numbers = numbersOf(parameters);
    if (numbers.empty() || numbers[0] < 0)
        return;
    const auto pen = static_cast<std::size_t>(numbers[0]);
    const auto channel = [&](std::size_t i) {
        return static_cast<std::uint8_t>(std::clamp(numbers[i], 0, 255));
    };
    if (numbers.size() >= 4)
        m_pens.set(pen, {channel(1), channel(2), channel(3)});
    else
        m_pens.set(pen, PclPalette::ofPens(m_pens.size()).color(pen));
}

void HpglWalker::setFill(const std::string& parameters)
{
    constexpr int shading = 10;
    const std::vector<int> numbers = numbersOf(parameters);
    const bool isShaded = numbers.size() >= 2 && numbers[0] == shading;
    m_shade = isShaded ? std::clamp(numbers[1], 0, 100) : 100;
}

void HpglWalker::takePolygonMode(const std::string& parameters)
{
    const int mode = Torv::atoi(parameters);
    m_isInPolygon = mode < 2;
    m_hasPolygon = m_hasPolygon || mode == 2;
    if (mode == 0)
        m_hasPolygon = true;
}

void HpglWalker::draw()
{
    // Within a polygon the pen only tells its outline. Pen 0 is no pen.
    if (!m_isInPolygon)
        m_printer.mark(m_pen == 0 ? PageClass::Blank : m_pens.classOf(m_pen, m_tolerance));
}

void HpglWalker::fill()
{
    if (m_isInPolygon || m_shade == 0)
        return;
    const PageClass pageClass = m_pen == 0 ? PageClass::Blank : m_pens.classOf(m_pen, m_tolerance);
    m_printer.mark(pageClass == PageClass::Mono && m_shade < 100 ? PageClass::Gray : pageClass);
}

} // namespace JobParser::Worker
