#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "worker/PclPalette.h"

namespace JobParser::Worker
{

class BodyReader;
class PagePrinter;

/// Walks the HP-GL/2 parts of a PCL 5 job: what is drawn, and with which pens.
class HpglWalker
{
public:
    HpglWalker(BodyReader& reader, PagePrinter& printer, int tolerance)
        : m_reader(reader), m_printer(printer), m_tolerance(tolerance)
    {
    }

    /// Forgets pens and modes, as a reset of the printer does.
    void reset();

    /// Pens have the colours of this palette until the job sets them otherwise.
    void setPalette(const PclPalette& palette) { m_pens = palette; }

    /// Walks from the position up to the next escape character or the offset `end`.
    void walk(std::int64_t end);

private:
    enum class Paint;
    struct Instruction;

    static const Instruction* find(std::string_view name);
    int get();
    std::string readParameters();
    void take(const std::array<char, 2>& name);
    void paint(Paint paint, const std::string& parameters);
    void initialize(const std::string& parameters);
    void setDefaults(const std::string& parameters);
    void lowerPen(const std::string& parameters);
    void liftPen(const std::string& parameters);
    void takeLabel();
    void takeLabelEnd();
    void takeSymbol();
    void takePolyline();
    int readEncodedNumber(bool isSevenBit);
    void takeComment();
    void skipTo(int terminator);
    void selectPen(const std::string& parameters);
    void setPenColor(const std::string& parameters);
    void setPenCount(const std::string& parameters);
    void setFill(const std::string& parameters);
    void takePolygonMode(const std::string& parameters);
    void draw();
    void fill();

    BodyReader& m_reader;
    PagePrinter& m_printer;
    int m_tolerance;
    std::int64_t m_end = 0;
    PclPalette m_pens;
    std::size_t m_pen = 1;
    bool m_isPenDown = false;
    bool m_isInPolygon = false;
    bool m_hasPolygon = false;
    int m_labelEnd = 3;
    int m_shade = 100; ///< Per cent of fills.
};

} // namespace JobParser::Worker
