#pragma once

#include <cstdint>

/// The numbers of PCL XL that are read here.
namespace JobParser::Worker::PclXl
{

enum Operator : std::uint8_t {
    EndSession = 0x42,
    BeginPage = 0x43,
    EndPage = 0x44,
    BeginChar = 0x52,
    EndChar = 0x54,
    BeginStream = 0x5B,
    ReadStream = 0x5C,
    EndStream = 0x5D,
    ExecStream = 0x5E,
    RemoveStream = 0x5F,
    PopGS = 0x60,
    PushGS = 0x61,
    SetBrushSource = 0x63,
    SetColorSpace = 0x6A,
    SetPenSource = 0x79,
    NewPath = 0x85,
    PaintPath = 0x86,
    ArcPath = 0x91,
    BezierPath = 0x93,
    BezierRelPath = 0x95,
    Chord = 0x96,
    ChordPath = 0x97,
    Ellipse = 0x98,
    EllipsePath = 0x99,
    LinePath = 0x9B,
    LineRelPath = 0x9D,
    Pie = 0x9E,
    PiePath = 0x9F,
    Rectangle = 0xA0,
    RectanglePath = 0xA1,
    RoundRectangle = 0xA2,
    RoundRectanglePath = 0xA3,
    Text = 0xA8,
    TextPath = 0xA9,
    BeginImage = 0xB0,
    ReadImage = 0xB1,
    EndImage = 0xB2,
    BeginRastPattern = 0xB3,
    ReadRastPattern = 0xB4,
    EndRastPattern = 0xB5,
    BeginScan = 0xB6,
    EndScan = 0xB8,
    ScanLineRel = 0xB9,
};

enum Attribute : std::uint8_t {
    PaletteDepth = 2,
    ColorSpace = 3,
    NullBrush = 4,
    NullPen = 5,
    PaletteData = 6,
    PatternSelectId = 8,
    GrayLevel = 9,
    RgbColor = 11,
    PrimaryArray = 14,
    PrimaryDepth = 15,
    MediaSize = 37,
    Orientation = 40,
    CustomMediaSize = 47,
    CustomMediaSizeUnits = 48,
    PageCopies = 49,
    ColorDepth = 98,
    BlockHeight = 99,
    ColorMapping = 100,
    CompressMode = 101,
    PatternDefineId = 105,
    SourceHeight = 107,
    SourceWidth = 108,
    PadBytesMultiple = 110,
    StreamName = 139,
    TextData = 171,
};

enum Tag : std::uint8_t {
    FirstOperator = 0x41,
    LastOperator = 0xBF,
    FirstValue = 0xC0,
    LastValue = 0xEF,
    AttributeId8 = 0xF8,
    AttributeId16 = 0xF9,
    EmbeddedData = 0xFA,
    EmbeddedDataByte = 0xFB,
};

enum ColorSpaces : int { Gray = 1, Rgb = 2, Srgb = 6 };
enum Compression : int { NoCompression = 0, RunLength = 1, Jpeg = 2, DeltaRow = 3 };
enum Mapping : int { DirectPixel = 0, IndexedPixel = 1 };

} // namespace JobParser::Worker::PclXl
