#include "worker/PclAnalyzer.h"

#include <algorithm>
#include <cmath>

#include "worker/BodyReader.h"
#include "worker/PclPaper.h"

namespace JobParser::Worker
{
namespace
{

constexpr int escape = 0x1B;
constexpr int formFeed = 12;
constexpr int lineFeedByte = 10;
constexpr int noBreakSpace = 0xA0;

constexpr std::int64_t unitsPerInch = 7200;
constexpr std::int64_t halfInch = unitsPerInch / 2;
constexpr std::int64_t unitsPerDecipoint = 10;
constexpr std::int64_t defaultHeight = 11 * unitsPerInch;
constexpr double furthest = 1e9;

// Calls of calls of macros, and bytes of macros that are walked again, as far as a job may ask for them.
constexpr int deepestCall = 3;
constexpr std::int64_t mostReplayed = std::int64_t{64} << 20;
constexpr std::size_t mostMacros = 32768;
constexpr std::size_t mostSavedPalettes = 32;
constexpr std::int64_t longestPayload = std::int64_t{1} << 20;

// The largest number that a sequence can mean.
int asInt(double value)
{
    return static_cast<int>(std::clamp(value, -furthest, furthest));
}

constexpr int key(char op, char group, char param)
{
    return (op << 16) | (group << 8) | param;
}

template <typename Command> int keyOf(const Command& command)
{
    return key(command.op, command.group, command.param);
}

bool isParameterByte(int byte)
{
    return byte >= '!' && byte <= '/';
}

bool isInk(int byte)
{
    return byte > ' ' && byte != 127 && byte != noBreakSpace;
}

} // namespace

PclAnalyzer::PclAnalyzer(BodyReader& reader, int tolerance)
    : m_reader(reader), m_tolerance(tolerance), m_raster(tolerance), m_hpgl(reader, m_printer, tolerance)
{
    reset();
}

JobFacts PclAnalyzer::analyze()
{
    walk(m_reader.size(), 0);
    // A universal exit prints what is on the page.
    m_printer.ejectIfTouched();
    return m_printer.facts();
}

void PclAnalyzer::reset()
{
    m_state = State();
    m_raster = PclRaster(m_tolerance);
    m_hpgl.reset();
    m_printer.setOverlay(PageClass::Blank);
    m_printer.setSize({});
    deleteTemporaryMacros();
    beginPage();
}

void PclAnalyzer::walk(std::int64_t end, int depth)
{
    m_end = end;
    while (m_reader.position() < end && !m_reader.atEnd()) {
        const int byte = m_reader.get();
        if (byte == escape)
            takeEscape(end, depth);
        else if (!m_isDefining)
            takeControl(byte);
    }
}

void PclAnalyzer::takeControl(int byte)
{
    if (byte == formFeed)
        turnPage(true);
    else if (byte == lineFeedByte)
        lineFeed(m_state.lineHeight);
    else if (isInk(byte))
        m_printer.mark(textInk());
}

void PclAnalyzer::takeEscape(std::int64_t end, int depth)
{
    const std::int64_t start = m_reader.position() - 1;
    const int op = m_reader.get();
    if (isParameterByte(op)) {
        takeSequence(static_cast<char>(op), start, end, depth);
        return;
    }
    if (m_isDefining)
        return;
    if (op == 'E') {
        m_printer.ejectIfTouched();
        reset();
    } else if (op == '=') {
        lineFeed(m_state.lineHeight / 2);
    }
}

// A sequence is one command or several, whose common beginning is written once: small letters go on.
void PclAnalyzer::takeSequence(char op, std::int64_t start, std::int64_t end, int depth)
{
    Command command;
    command.op = op;
    int byte = m_reader.peek();
    if (byte >= 0x60 && byte <= 0x7E) {
        command.group = static_cast<char>(byte);
        m_reader.get();
    }
    for (bool goesOn = true; goesOn && m_reader.position() < end;) {
        if (!readValue(command, byte))
            return;
        goesOn = byte >= 0x60;
        command.param = static_cast<char>(goesOn ? byte - 0x20 : byte);
        takeCommand(command, start, depth);
    }
}

// Reads the number and the byte behind it, which ends the command. False if no byte of a command is there:
// then it stays.
bool PclAnalyzer::readValue(Command& command, int& byte)
{
    constexpr int mostDigits = 40;
    double value = 0;
    double place = 1;
    bool isNegative = false;
    bool isFraction = false;
    command.isRelative = false;
    for (int i = 0; i < mostDigits; ++i) {
        byte = m_reader.peek();
        if (byte == '+' || byte == '-') {
            isNegative = byte == '-';
            command.isRelative = true;
        } else if (byte == '.') {
            isFraction = true;
        } else if (byte >= '0' && byte <= '9') {
            place = isFraction ? place / 10 : place;
            value = isFraction ? value + (byte - '0') * place : std::min(value * 10 + (byte - '0'), furthest);
        } else if (byte != ' ') {
            break;
        }
        m_reader.get();
    }
    command.value = isNegative ? -value : value;
    if (byte < 0x40 || byte > 0x7E)
        return false;
    m_reader.get();
    return true;
}

std::int64_t PclAnalyzer::payloadOf(const Command& command) const
{
    // What ends in W carries data, whatever it is; two others do, too.
    const bool hasPayload = (command.param == 'W' && command.op != '%') ||
                            keyOf(command) == key('*', 'b', 'V') || keyOf(command) == key('&', 'p', 'X');
    return hasPayload ? std::max(asInt(command.value), 0) : 0;
}

void PclAnalyzer::takeCommand(const Command& command, std::int64_t sequenceStart, int depth)
{
    const std::int64_t payload = payloadOf(command);
    if (keyOf(command) == key('&', 'f', 'X') || keyOf(command) == key('&', 'f', 'Y'))
        return takeMacro(command, sequenceStart, depth);
    if (m_isDefining) {
        m_reader.skip(payload);
        return;
    }
    const bool isRasterData = keyOf(command) == key('*', 'b', 'W') || keyOf(command) == key('*', 'b', 'V');
    if (isRasterData)
        return takeRasterData(command, payload);
    if (payload > 0)
        return takePayload(command, payload);
    switch (key(command.op, command.group, 0)) {
    case key('&', 'l', 0): return takePage(command);
    case key('&', 'a', 0):
    case key('*', 'p', 0): return takeCursor(command);
    case key('*', 'v', 0): return takeColor(command);
    case key('*', 'r', 0):
    case key('*', 'b', 0): return takeRaster(command);
    case key('*', 'c', 0): return takeRule(command);
    case key('&', 'u', 0):
        if (command.param == 'D' && command.value >= 1)
            m_state.unitsPerInch = std::clamp(asInt(command.value), 96, 7200);
        break;
    case key('%', 0, 0):
        if (command.param == 'B')
            m_hpgl.walk(m_end);
        break;
    default: break;
    }
}

void PclAnalyzer::takePayload(const Command& command, std::int64_t size)
{
    const std::int64_t taken = std::min(size, longestPayload);
    switch (keyOf(command)) {
    case key('&', 'p', 'X'): takeCharacters(m_reader.take(taken)); break;
    case key('*', 'v', 'W'): configurePalette(m_reader.take(taken)); break;
    case key('*', 'g', 'W'): m_raster.configureInks(m_reader.take(taken)); break;
    default: m_reader.skip(taken); break;
    }
    m_reader.skip(size - taken);
}

void PclAnalyzer::takeCharacters(std::span<const std::uint8_t> bytes)
{
    if (std::ranges::any_of(bytes, [](std::uint8_t byte) { return isInk(byte); }))
        m_printer.mark(textInk());
}

void PclAnalyzer::configurePalette(std::span<const std::uint8_t> data)
{
    if (!m_raster.configure(data))
        return;
    m_state.palette = m_raster.defaultPalette();
    // The colour of text is the one that shows on paper.
    m_state.foreground = m_state.palette.size() - 1;
    if (m_raster.space() == PclPalette::Space::Rgb)
        m_state.foreground = 0;
    m_hpgl.setPalette(m_state.palette);
}

void PclAnalyzer::takeRasterData(const Command& command, std::int64_t size)
{
    const std::int64_t taken = std::min(size, longestPayload);
    // Once a page shows all that the picture can show, its rows tell nothing more.
    if (!m_printer.matters(m_raster.greatest(m_state.palette)))
        m_reader.skip(taken);
    else if (command.param == 'V')
        m_raster.takePlane(m_reader.take(taken));
    else
        m_raster.takeRow(m_reader.take(taken), m_state.palette, m_printer);
    m_reader.skip(size - taken);
}

void PclAnalyzer::takePage(const Command& command)
{
    const int value = asInt(command.value);
    switch (command.param) {
    case 'A': changePage(m_state.pageCode, value); break;
    case 'O':
        if (value >= 0 && value <= 3)
            changePage(m_state.orientation, value);
        break;
    case 'H':
    case 'S': turnPage(false); break;
    case 'X': m_printer.setCopies(value); break;
    default: takeLines(command); break;
    }
}

void PclAnalyzer::changePage(int& setting, int value)
{
    // A new page begins even if the size stays, as long as something is on this one.
    m_printer.ejectIfTouched();
    setting = value;
    m_state.topMargin = halfInch;
    m_state.textLength = 0;
    updateSize();
    beginPage();
}

void PclAnalyzer::takeLines(const Command& command)
{
    const int value = asInt(command.value);
    switch (command.param) {
    case 'L': m_state.skipsPerforation = value != 0; break;
    case 'C':
        m_state.lineHeight = static_cast<std::int64_t>(std::clamp(command.value, 0.0, 1e5) * 150);
        break;
    case 'D':
        if (value > 0)
            m_state.lineHeight = unitsPerInch / value;
        break;
    case 'E':
        m_state.topMargin = std::int64_t{std::max(value, 0)} * m_state.lineHeight;
        m_state.textLength = 0;
        beginPage();
        break;
    case 'F': m_state.textLength = std::int64_t{std::max(value, 0)} * m_state.lineHeight; break;
    default: break;
    }
}

void PclAnalyzer::takeCursor(const Command& command)
{
    if (command.op == '&' && command.param == 'G')
        return turnPage(false);
    if (command.op == '*' && command.param == 'P')
        return takePaletteControl(command);
    double distance = 0;
    if (command.op == '&' && command.param == 'R')
        distance = command.value * static_cast<double>(m_state.lineHeight);
    else if (command.op == '&' && command.param == 'V')
        distance = command.value * unitsPerDecipoint;
    else if (command.op == '*' && command.param == 'Y')
        distance = command.value * unitsPerInch / m_state.unitsPerInch;
    else
        return;
    const std::int64_t from = command.isRelative ? m_state.y : m_state.topMargin;
    const auto moved = from + static_cast<std::int64_t>(std::clamp(distance, -furthest, furthest));
    m_state.y = std::clamp<std::int64_t>(moved, 0, pageHeight());
}

void PclAnalyzer::takePaletteControl(const Command& command)
{
    const int value = asInt(command.value);
    if (value == 0 && m_state.paletteStack.size() < mostSavedPalettes) {
        m_state.paletteStack.push_back(m_state.palette);
    } else if (value == 1 && !m_state.paletteStack.empty()) {
        m_state.palette = m_state.paletteStack.back();
        m_state.paletteStack.pop_back();
    }
}

void PclAnalyzer::takeColor(const Command& command)
{
    const double white = m_raster.space() == PclPalette::Space::Lab ? 1 : 255;
    switch (command.param) {
    case 'A': m_components[0] = command.value / white; break;
    case 'B': m_components[1] = command.value / white; break;
    case 'C': m_components[2] = command.value / white; break;
    case 'I':
        if (command.value >= 0)
            m_state.palette.set(static_cast<std::size_t>(asInt(command.value)),
                                colorOf(m_raster.space(), m_components));
        m_components = {};
        m_hpgl.setPalette(m_state.palette);
        break;
    case 'S': m_state.foreground = static_cast<std::size_t>(std::max(asInt(command.value), 0)); break;
    case 'T': m_state.pattern = asInt(command.value); break;
    default: break;
    }
}

void PclAnalyzer::takeRaster(const Command& command)
{
    const int value = asInt(command.value);
    if (command.group == 'b') {
        if (command.param == 'M')
            m_raster.setMode(value);
        else if (command.param == 'Y')
            m_raster.clearRows();
        return;
    }
    switch (command.param) {
    case 'U':
        m_raster.setPlanes(value);
        m_state.palette = m_raster.defaultPalette();
        m_state.foreground = m_raster.space() == PclPalette::Space::Rgb && m_state.palette.size() > 2
                                 ? 0
                                 : m_state.palette.size() - 1;
        m_hpgl.setPalette(m_state.palette);
        break;
    case 'S': m_raster.setWidth(value); break;
    case 'A':
    case 'B': m_raster.clearRows(); break;
    case 'C':
        m_raster.clearRows();
        m_raster.setMode(0);
        break;
    default: break;
    }
}

void PclAnalyzer::takeRule(const Command& command)
{
    const int value = asInt(command.value);
    switch (command.param) {
    case 'A':
    case 'H': m_state.ruleWidth = value; break;
    case 'B':
    case 'V': m_state.ruleHeight = value; break;
    case 'G': m_state.patternId = value; break;
    case 'P':
        if (m_state.ruleWidth > 0 && m_state.ruleHeight > 0) {
            const bool isWhite = value == 1 || (value == 2 && m_state.patternId <= 0);
            const bool isShaded = value == 2 && m_state.patternId < 100;
            const PageClass solid = isWhite ? PageClass::Blank : ink();
            m_printer.mark(isShaded && solid == PageClass::Mono ? PageClass::Gray : solid);
        }
        break;
    default: break;
    }
}

void PclAnalyzer::takeMacro(const Command& command, std::int64_t sequenceStart, int depth)
{
    const int value = asInt(command.value);
    if (m_isDefining) {
        if (command.param == 'X' && value == static_cast<int>(Operation::End))
            endDefinition(sequenceStart);
    } else if (command.param == 'Y') {
        m_macroId = value;
    } else {
        controlMacro(static_cast<Operation>(value), depth);
    }
}

void PclAnalyzer::endDefinition(std::int64_t sequenceStart)
{
    m_isDefining = false;
    if (m_macros.size() < mostMacros)
        m_macros[m_macroId] = {m_definitionStart, sequenceStart, false};
}

void PclAnalyzer::controlMacro(Operation operation, int depth)
{
    const auto found = m_macros.find(m_macroId);
    const Macro macro = found == m_macros.end() ? Macro() : found->second;
    switch (operation) {
    case Operation::Begin:
        m_isDefining = depth == 0;
        m_definitionStart = m_reader.position();
        break;
    case Operation::End: break;
    case Operation::Execute: replay(macro, depth); break;
    case Operation::Call: call(macro, depth); break;
    case Operation::Overlay: overlay(macro, depth); break;
    case Operation::NoOverlay: m_printer.setOverlay(PageClass::Blank); break;
    case Operation::DeleteAll: m_macros.clear(); break;
    case Operation::DeleteTemporary: deleteTemporaryMacros(); break;
    case Operation::Delete: m_macros.erase(m_macroId); break;
    case Operation::MakeTemporary:
    case Operation::MakePermanent:
        if (found != m_macros.end())
            found->second.isPermanent = operation == Operation::MakePermanent;
        break;
    }
}

void PclAnalyzer::deleteTemporaryMacros()
{
    std::erase_if(m_macros, [](const auto& entry) { return !entry.second.isPermanent; });
}

void PclAnalyzer::call(const Macro& macro, int depth)
{
    const State saved = m_state;
    replay(macro, depth);
    m_state = saved;
    updateSize();
}

// What the macro paints comes out on each page that follows.
void PclAnalyzer::overlay(const Macro& macro, int depth)
{
    const State saved = m_state;
    const PagePrinter page = m_printer.beginScratch();
    replay(macro, depth);
    const PageClass painted = m_printer.endScratch(page);
    m_state = saved;
    m_printer.setOverlay(painted);
}

void PclAnalyzer::replay(const Macro& macro, int depth)
{
    const std::int64_t size = macro.end - macro.start;
    if (size <= 0 || depth >= deepestCall || m_replayed + size > mostReplayed)
        return;
    m_replayed += size;
    const std::int64_t position = m_reader.position();
    const std::int64_t end = m_end;
    m_reader.seek(macro.start);
    walk(macro.end, depth + 1);
    m_end = end;
    m_reader.seek(position);
}

void PclAnalyzer::turnPage(bool always)
{
    if (always)
        m_printer.eject();
    else
        m_printer.ejectIfTouched();
    beginPage();
}

void PclAnalyzer::beginPage()
{
    m_state.y = m_state.topMargin + m_state.lineHeight * 3 / 4;
}

// Lines that do not fit on the page begin the next one.
void PclAnalyzer::lineFeed(std::int64_t distance)
{
    const std::int64_t height = pageHeight();
    const std::int64_t text =
        m_state.textLength > 0 ? m_state.topMargin + m_state.textLength : height - halfInch;
    const std::int64_t bottom = m_state.skipsPerforation ? std::min(text, height) : height;
    m_state.y += distance;
    if (m_state.y > bottom)
        turnPage(true);
}

std::int64_t PclAnalyzer::pageHeight() const
{
    const PageSize size = turned(pclPaper(m_state.pageCode), m_state.orientation);
    return size.height == 0 ? defaultHeight : size.height * unitsPerInch / 254;
}

void PclAnalyzer::updateSize()
{
    m_printer.setSize(turned(pclPaper(m_state.pageCode), m_state.orientation));
}

PageClass PclAnalyzer::ink() const
{
    return m_state.palette.classOf(m_state.foreground, m_tolerance);
}

PageClass PclAnalyzer::textInk() const
{
    constexpr int whitePattern = 1;
    constexpr int shading = 2;
    if (m_state.pattern == whitePattern)
        return PageClass::Blank;
    const PageClass solid = ink();
    const bool isShaded = m_state.pattern == shading && m_state.patternId > 0 && m_state.patternId < 100;
    return isShaded && solid == PageClass::Mono ? PageClass::Gray : solid;
}

} // namespace JobParser::Worker
