#include "worker/PclXlAnalyzer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "worker/BodyReader.h"
#include "worker/PclPaper.h"
#include "worker/PclXlFormat.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

using namespace PclXl;

constexpr int littleEndianBinding = ')';
constexpr int bigEndianBinding = '(';
constexpr int longestHeader = 1024;
constexpr std::size_t deepestState = 1024;
constexpr std::size_t mostPatterns = 4096;
constexpr std::size_t mostAttributes = 64;
// Streams that execute streams, and bytes of streams that are executed, as far as a job may ask for them.
constexpr int deepestStream = 3;
constexpr std::int64_t mostExecuted = std::int64_t{64} << 20;
constexpr std::size_t mostStreams = 4096;
// A block of a picture is looked at in memory; none of a driver is nearly as large.
constexpr std::int64_t longestBlock = std::int64_t{64} << 20;

bool isWhiteSpace(std::uint8_t tag)
{
    return tag == 0 || (tag >= 9 && tag <= 13) || tag == 32;
}

bool isPaintOperator(std::uint8_t code)
{
    return code >= NewPath && code <= TextPath;
}

} // namespace

JobFacts PclXlAnalyzer::analyze()
{
    if (!readHeader())
        throw WorkerException(ErrorCode::BadDocument, "The PCL XL stream has no header");
    while (!m_reader->atEnd() && step()) {
    }
    // A job that is cut off prints what it has.
    if (m_isInPage)
        endPage();
    return m_printer.facts();
}

// False if there is none.
bool PclXlAnalyzer::readHeader()
{
    int byte = m_reader->get();
    while (byte >= 0 && byte != littleEndianBinding && byte != bigEndianBinding)
        byte = m_reader->get();
    m_isBigEndian = byte == bigEndianBinding;
    int length = 0;
    while (byte >= 0 && byte != '\n' && length < longestHeader) {
        byte = m_reader->get();
        ++length;
    }
    return byte == '\n';
}

// Takes one tag with what belongs to it. False if that makes no sense: then nothing that follows does.
bool PclXlAnalyzer::step()
{
    const auto tag = static_cast<std::uint8_t>(m_reader->get());
    if (isWhiteSpace(tag))
        return true;
    if (tag >= FirstOperator && tag <= LastOperator) {
        takeOperator(tag);
        m_attributes.clear();
        return tag != EndSession || !m_reader->atEnd();
    }
    if (tag >= FirstValue && tag <= LastValue) {
        m_hasValue = m_value.read(*m_reader, tag, m_isBigEndian);
        return m_hasValue;
    }
    switch (tag) {
    case AttributeId8:
    case AttributeId16: return takeAttribute(tag);
    case EmbeddedData: takeEmbeddedData(readSize(4)); return true;
    case EmbeddedDataByte: takeEmbeddedData(readSize(1)); return true;
    case littleEndianBinding:
    case bigEndianBinding:
        // Another stream begins, as where jobs are put together.
        m_reader->seek(m_reader->position() - 1);
        return readHeader();
    default: return false;
    }
}

// The name of the value that was read; only the low byte of it has a meaning. False if it is cut off.
bool PclXlAnalyzer::takeAttribute(std::uint8_t tag)
{
    int id = m_reader->get();
    if (tag == AttributeId16) {
        const int second = m_reader->get();
        id = m_isBigEndian || second < 0 ? second : id;
    }
    if (id < 0)
        return false;
    if (m_hasValue && m_attributes.size() < mostAttributes)
        m_attributes[static_cast<std::uint8_t>(id)] = m_value;
    m_hasValue = false;
    return true;
}

std::int64_t PclXlAnalyzer::readSize(int bytes)
{
    std::int64_t size = 0;
    for (int i = 0; i < bytes; ++i) {
        const std::int64_t byte = std::max(m_reader->get(), 0);
        size = m_isBigEndian ? (size << 8) | byte : size | (byte << (8 * i));
    }
    return size;
}

void PclXlAnalyzer::takeEmbeddedData(std::int64_t size)
{
    if (std::exchange(m_awaitsStream, false)) {
        auto& stream = m_streams[m_streamName];
        const auto places = m_reader->placesOf({m_reader->position(), size});
        stream.insert(stream.end(), places.begin(), places.end());
        m_reader->skip(size);
        return;
    }
    const bool isBlock = m_awaitsBlock && m_picture.has_value() && size <= longestBlock;
    m_awaitsBlock = false;
    if (!isBlock) {
        m_reader->skip(size);
        return;
    }
    const bool tellsMore = m_isPattern || m_printer.matters(m_picture->greatest());
    if (!tellsMore) {
        m_reader->skip(size);
        return;
    }
    m_picture->takeBlock(m_blockAttributes, m_reader->take(size), m_picture->greatest());
}

const PclXlValue* PclXlAnalyzer::find(std::uint8_t attribute) const
{
    const auto found = m_attributes.find(attribute);
    return found == m_attributes.end() ? nullptr : &found->second;
}

void PclXlAnalyzer::takeOperator(std::uint8_t code)
{
    takePageOperator(code);
    takeStateOperator(code);
    takeStreamOperator(code);
    if (isPaintOperator(code))
        takePaintOperator(code);
    else
        takePictureOperator(code);
}

void PclXlAnalyzer::takePageOperator(std::uint8_t code)
{
    switch (code) {
    case BeginPage: beginPage(); break;
    case EndPage: endPage(); break;
    case BeginChar: m_isInChar = true; break;
    case EndChar: m_isInChar = false; break;
    default: break;
    }
}

void PclXlAnalyzer::beginPage()
{
    if (m_isInPage)
        endPage();
    m_isInPage = true;
    m_graphics = {};
    m_saved.clear();
    m_hasPath = false;
    m_printer.setSize(turned(sheet(), orientation()));
}

PageSize PclXlAnalyzer::sheet() const
{
    const PclXlValue* custom = find(CustomMediaSize);
    if (custom == nullptr) {
        const PclXlValue* media = find(MediaSize);
        if (media == nullptr)
            return {};
        return media->isArray() ? pclXlPaper(media->text()) : pclXlPaper(media->integer());
    }
    constexpr double unitTenths[] = {254, 10, 1}; // Inches, millimetres, tenths of one.
    constexpr double pointsPerTenth = 72.0 / 254;
    const PclXlValue* units = find(CustomMediaSizeUnits);
    const double scale =
        unitTenths[units == nullptr ? 0 : std::clamp(units->integer(), 0, 2)] * pointsPerTenth;
    return pageSizeOfPoints(custom->number(0) * scale, custom->number(1) * scale);
}

// Quarter turns; what is none of them leaves the page to the printer, whose own is upright.
int PclXlAnalyzer::orientation() const
{
    const PclXlValue* value = find(Orientation);
    const int turns = value == nullptr ? 0 : value->integer();
    return turns >= 0 && turns <= 3 ? turns : 0;
}

void PclXlAnalyzer::endPage()
{
    if (const PclXlValue* copies = find(PageCopies))
        m_printer.setCopies(copies->integer());
    m_isInPage = false;
    m_printer.eject();
}

void PclXlAnalyzer::takeStateOperator(std::uint8_t code)
{
    switch (code) {
    case PushGS:
        if (m_saved.size() < deepestState)
            m_saved.push_back(m_graphics);
        break;
    case PopGS:
        if (!m_saved.empty()) {
            m_graphics = m_saved.back();
            m_saved.pop_back();
        }
        break;
    case SetColorSpace: setColorSpace(); break;
    case SetBrushSource: m_graphics.brush = sourceClass(NullBrush); break;
    case SetPenSource: m_graphics.pen = sourceClass(NullPen); break;
    default: break;
    }
}

// Streams are forms that a job keeps by a name. They are whole streams themselves, with a header.
void PclXlAnalyzer::takeStreamOperator(std::uint8_t code)
{
    const PclXlValue* value = find(StreamName);
    const std::string name(value == nullptr ? std::string_view() : value->text());
    switch (code) {
    case BeginStream:
        m_streamName = name;
        m_streams.erase(name);
        break;
    case ReadStream:
        // What executed streams define would stand in places of theirs.
        m_awaitsStream = m_depth == 0 && m_streams.size() < mostStreams;
        break;
    case ExecStream: executeStream(name); break;
    case RemoveStream: m_streams.erase(name); break;
    default: break;
    }
}

void PclXlAnalyzer::executeStream(const std::string& name)
{
    const auto found = m_streams.find(name);
    if (found == m_streams.end() || m_depth >= deepestStream)
        return;
    const Body body{Pdl::PclXl, found->second};
    std::int64_t size = 0;
    for (const Range& range : body.ranges)
        size += range.size;
    if (size > mostExecuted - m_executed)
        return;
    m_executed += size;
    BodyReader reader(m_reader->file(), body);
    walkStream(reader);
    // The view of the file was moved.
    m_reader->seek(m_reader->position());
}

void PclXlAnalyzer::walkStream(BodyReader& reader)
{
    BodyReader* const outer = std::exchange(m_reader, &reader);
    const bool isBigEndian = m_isBigEndian;
    ++m_depth;
    m_attributes.clear();
    if (readHeader()) {
        while (!reader.atEnd() && step()) {
        }
    }
    --m_depth;
    m_isBigEndian = isBigEndian;
    m_reader = outer;
}

void PclXlAnalyzer::setColorSpace()
{
    if (const PclXlValue* space = find(ColorSpace))
        m_graphics.space.space = space->integer();
    m_graphics.space.palette.clear();
    if (const PclXlValue* palette = find(PaletteData)) {
        for (std::size_t i = 0; i < palette->count(); ++i)
            m_graphics.space.palette.push_back(static_cast<std::uint8_t>(palette->integer(i)));
    }
}

PageClass PclXlAnalyzer::sourceClass(std::uint8_t nullAttribute) const
{
    if (find(nullAttribute) != nullptr)
        return PageClass::Blank;
    const auto byte = [](double part) {
        return static_cast<int>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
    };
    if (const PclXlValue* pattern = find(PatternSelectId))
        return classOfPattern(pattern->integer());
    const PclXlValue* color = find(RgbColor);
    if (color == nullptr)
        color = find(PrimaryArray);
    if (color != nullptr && color->count() >= 3)
        return classOfRgb(byte(color->part(0)), byte(color->part(1)), byte(color->part(2)), m_tolerance);
    const PclXlValue* gray = color != nullptr ? color : find(GrayLevel);
    const int level = gray == nullptr ? 0 : byte(gray->part(0));
    return classOfRgb(level, level, level, m_tolerance);
}

PageClass PclXlAnalyzer::classOfPattern(int id) const
{
    const auto found = m_patterns.find(id);
    return found == m_patterns.end() ? PageClass::Mono : found->second;
}

void PclXlAnalyzer::paint(bool isFilled, bool isStroked)
{
    if (!m_isInPage || m_isInChar)
        return;
    if (isFilled)
        m_printer.mark(m_graphics.brush);
    if (isStroked)
        m_printer.mark(m_graphics.pen);
}

void PclXlAnalyzer::takePaintOperator(std::uint8_t code)
{
    switch (code) {
    case NewPath: m_hasPath = false; break;
    case PaintPath:
        if (m_hasPath)
            paint(true, true);
        break;
    case Chord:
    case Ellipse:
    case Pie:
    case Rectangle:
    case RoundRectangle: paint(true, true); break;
    case Text:
        if (hasTextInk())
            paint(true, false);
        break;
    case ArcPath:
    case BezierPath:
    case BezierRelPath:
    case ChordPath:
    case EllipsePath:
    case LinePath:
    case LineRelPath:
    case PiePath:
    case RectanglePath:
    case RoundRectanglePath:
    case TextPath: m_hasPath = true; break;
    default: break;
    }
}

bool PclXlAnalyzer::hasTextInk() const
{
    const PclXlValue* text = find(TextData);
    if (text == nullptr)
        return false;
    for (std::size_t i = 0; i < text->count(); ++i) {
        if (text->integer(i) != ' ')
            return true;
    }
    return false;
}

void PclXlAnalyzer::takePictureOperator(std::uint8_t code)
{
    switch (code) {
    case BeginImage:
    case BeginRastPattern:
        m_isPattern = code == BeginRastPattern;
        if (const PclXlValue* id = find(PatternDefineId))
            m_patternId = id->integer();
        m_picture.emplace(m_attributes, m_graphics.space, m_tolerance);
        break;
    case ReadImage:
    case ReadRastPattern:
        m_blockAttributes = m_attributes;
        m_awaitsBlock = true;
        break;
    case EndImage:
        if (m_picture && m_isInPage && !m_isInChar)
            m_printer.mark(m_picture->pageClass());
        m_picture.reset();
        break;
    case EndRastPattern:
        if (m_picture && m_patterns.size() < mostPatterns)
            m_patterns[m_patternId] = m_picture->pageClass();
        m_picture.reset();
        break;
    case ScanLineRel: paint(true, false); break;
    default: break;
    }
}

} // namespace JobParser::Worker
