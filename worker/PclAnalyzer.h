#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "worker/HpglWalker.h"
#include "worker/JobFacts.h"
#include "worker/PagePrinter.h"
#include "worker/PclPalette.h"
#include "worker/PclRaster.h"

namespace JobParser::Worker
{

class BodyReader;

/// Walks a PCL 5 body and learns what its pages are: text, rules, pictures, HP-GL/2 and macros by what they
/// paint, pages by all that ends one.
///
/// Nothing is laid out but for the lines that fill a page; what is painted beside the paper counts too.
class PclAnalyzer
{
public:
    /// For the tolerance see classOfRgb. The reader outlives the analyzer.
    PclAnalyzer(BodyReader& reader, int tolerance);

    /// Walks the body from the position of the reader to its end.
    JobFacts analyze();

private:
    /// What a macro that is called leaves as it was. Distances down the page are 7200 to the inch.
    struct State {
        PclPalette palette;
        std::vector<PclPalette> paletteStack;
        std::size_t foreground = 1;
        int pageCode = 0;    ///< 0 if the job chose no size.
        int orientation = 0; ///< 0 to 3 quarter turns.
        int pattern = 0;     ///< Of text: 1 is white.
        int patternId = 0;
        int ruleWidth = 0;
        int ruleHeight = 0;
        std::int64_t lineHeight = 1200;
        std::int64_t topMargin = 3600;
        std::int64_t textLength = 0; ///< 0 for all but half an inch.
        std::int64_t y = 0;
        bool skipsPerforation = true;
        std::int32_t unitsPerInch = 300;
    };

    /// What a macro holds, as offsets of the body. Resets leave permanent ones.
    struct Macro {
        std::int64_t start = 0;
        std::int64_t end = 0;
        bool isPermanent = false;
    };

    /// One sequence with its number, such as `ESC & l 26 A`.
    struct Command {
        char op = 0;
        char group = 0;
        char param = 0; ///< In capitals.
        double value = 0;
        bool isRelative = false;
    };

    /// What `ESC & f # X` asks for. The numbers stand in jobs.
    enum class Operation : int {
        Begin = 0,
        End = 1,
        Execute = 2,
        Call = 3,
        Overlay = 4,
        NoOverlay = 5,
        DeleteAll = 6,
        DeleteTemporary = 7,
        Delete = 8,
        MakeTemporary = 9,
        MakePermanent = 10
    };

    void walk(std::int64_t end, int depth);
    void takeControl(int byte);
    void takeEscape(std::int64_t end, int depth);
    void takeSequence(char op, std::int64_t start, std::int64_t end, int depth);
    bool readValue(Command& command, int& byte);
    void takeCommand(const Command& command, std::int64_t sequenceStart, int depth);
    std::int64_t payloadOf(const Command& command) const;
    void takePayload(const Command& command, std::int64_t size);
    void takePage(const Command& command);
    void changePage(int& setting, int value);
    void takeLines(const Command& command);
    void takeCursor(const Command& command);
    void takeColor(const Command& command);
    void takeRaster(const Command& command);
    void takeRule(const Command& command);
    void takeMacro(const Command& command, std::int64_t sequenceStart, int depth);
    void endDefinition(std::int64_t sequenceStart);
    void controlMacro(Operation operation, int depth);
    void deleteTemporaryMacros();
    void call(const Macro& macro, int depth);
    void overlay(const Macro& macro, int depth);
    void takePaletteControl(const Command& command);
    void takeRasterData(const Command& command, std::int64_t size);
    void takeCharacters(std::span<const std::uint8_t> bytes);
    void configurePalette(std::span<const std::uint8_t> data);
    void replay(const Macro& macro, int depth);
    void reset();
    void turnPage(bool always);
    void lineFeed(std::int64_t distance);
    void beginPage();
    void updateSize();
    std::int64_t pageHeight() const;
    PageClass ink() const;
    PageClass textInk() const;

    BodyReader& m_reader;
    int m_tolerance;
    PagePrinter m_printer;
    State m_state;
    PclRaster m_raster;
    HpglWalker m_hpgl;
    std::array<double, 3> m_components{};
    std::map<int, Macro> m_macros;
    int m_macroId = 0;
    std::int64_t m_end = 0; ///< Of the body or of the macro that is walked.
    bool m_isDefining = false;
    std::int64_t m_definitionStart = 0;
    std::int64_t m_replayed = 0; ///< Bytes of macros walked again.
};

} // namespace JobParser::Worker
