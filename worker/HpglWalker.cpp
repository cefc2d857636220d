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

/// What an instruction paints once its parameters are read.
enum class HpglWalker::Paint { Nothing, Line, LineIfPenDown, Area, Polygon, PolygonArea };

struct HpglWalker::Instruction {
    std::string_view name;
    Paint paint = Paint::Nothing;
    void (HpglWalker::*set)(const std::string& parameters) = nullptr;
    void (HpglWalker::*takeText)() = nullptr; ///< Of what is followed by something else than numbers.
};

const HpglWalker::Instruction* HpglWalker::find(std::string_view name)
{
    using H = HpglWalker;
    static constexpr std::array<Instruction, 32> instructions{{
        {"PD", Paint::Line, &H::lowerPen},
        {"PU", Paint::Nothing, &H::liftPen},
        {"PA", Paint::LineIfPenDown},
        {"PR", Paint::LineIfPenDown},
        {"AA", Paint::LineIfPenDown},
        {"AR", Paint::LineIfPenDown},
        {"AT", Paint::LineIfPenDown},
        {"RT", Paint::LineIfPenDown},
        {"BZ", Paint::LineIfPenDown},
        {"BR", Paint::LineIfPenDown},
        {"CI", Paint::Line},
        {"EA", Paint::Line},
        {"ER", Paint::Line},
        {"EW", Paint::Line},
        {"RA", Paint::Area},
        {"RR", Paint::Area},
        {"WG", Paint::Area},
        {"RQ", Paint::Area},
        {"EP", Paint::Polygon},
        {"FP", Paint::PolygonArea},
        {"PM", Paint::Nothing, &H::takePolygonMode},
        {"SP", Paint::Nothing, &H::selectPen},
        {"PC", Paint::Nothing, &H::setPenColor},
        {"NP", Paint::Nothing, &H::setPenCount},
        {"FT", Paint::Nothing, &H::setFill},
        {"IN", Paint::Nothing, &H::initialize},
        {"DF", Paint::Nothing, &H::setDefaults},
        {"LB", Paint::Nothing, nullptr, &H::takeLabel},
        {"PE", Paint::Nothing, nullptr, &H::takePolyline},
        {"CO", Paint::Nothing, nullptr, &H::takeComment},
        {"DT", Paint::Nothing, nullptr, &H::takeLabelEnd},
        {"SM", Paint::Nothing, nullptr, &H::takeSymbol},
    }};
    const auto found = std::ranges::find(instructions, name, &Instruction::name);
    return found == instructions.end() ? nullptr : found;
}

void HpglWalker::reset()
{
    m_pens = {};
    m_pen = 1;
    initialize({});
}

void HpglWalker::initialize(const std::string& parameters)
{
    setDefaults(parameters);
    m_isPenDown = false;
}

void HpglWalker::setDefaults(const std::string&)
{
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
        take({static_cast<char>(Torv::Ascii::toUpper(static_cast<std::uint8_t>(first))),
              static_cast<char>(Torv::Ascii::toUpper(static_cast<std::uint8_t>(second)))});
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

void HpglWalker::take(const std::array<char, 2>& name)
{
    const Instruction* instruction = find({name.data(), name.size()});
    if (instruction != nullptr && instruction->takeText != nullptr) {
        (this->*instruction->takeText)();
        return;
    }
    const std::string parameters = readParameters();
    if (instruction == nullptr)
        return;
    if (instruction->set != nullptr)
        (this->*instruction->set)(parameters);
    paint(instruction->paint, parameters);
}

void HpglWalker::paint(Paint paint, const std::string& parameters)
{
    switch (paint) {
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

void HpglWalker::lowerPen(const std::string&)
{
    m_isPenDown = true;
}

void HpglWalker::liftPen(const std::string&)
{
    m_isPenDown = false;
}

void HpglWalker::takeLabel()
{
    bool isInk = false;
    for (int byte = get(); byte >= 0 && byte != m_labelEnd; byte = get())
        isInk = isInk || byte > ' ';
    if (isInk)
        draw();
}

void HpglWalker::takeLabelEnd()
{
    const int byte = get();
    m_labelEnd = byte < 0 || byte == ';' ? endOfText : byte;
}

// One character that is drawn at each point, whatever it is.
void HpglWalker::takeSymbol()
{
    if (m_reader.peek() != ';')
        get();
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

void HpglWalker::setPenCount(const std::string& parameters)
{
    m_pens = PclPalette::ofPens(static_cast<std::size_t>(std::clamp(Torv::atoi(parameters), 2, mostPens)));
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
