#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "worker/BodyFinder.h"
#include "worker/PagePrinter.h"
#include "worker/PclXlImage.h"

namespace JobParser::Worker
{

class BodyReader;

/// Walks PCL XL bodies and learns what their pages are: by their operators, and by the brushes, pens and
/// pictures that they use.
class PclXlAnalyzer
{
public:
    /// For the tolerance see classOfRgb. The reader outlives the analyzer.
    PclXlAnalyzer(BodyReader& reader, int tolerance) : m_reader(&reader), m_tolerance(tolerance) {}

    /// Walks the body from the position of the reader. Throws WorkerException if it is no PCL XL.
    JobFacts analyze();

private:
    /// What is saved and restored by the job.
    struct Graphics {
        PclXlColorSpace space;
        PageClass brush = PageClass::Mono;
        PageClass pen = PageClass::Mono;
    };

    bool readHeader();
    bool step();
    bool takeAttribute(std::uint8_t tag);
    std::int64_t readSize(int bytes);
    void takeEmbeddedData(std::int64_t size);
    void takeOperator(std::uint8_t code);
    void takePageOperator(std::uint8_t code);
    void takeStateOperator(std::uint8_t code);
    void takeStreamOperator(std::uint8_t code);
    void executeStream(const std::string& name);
    void walkStream(BodyReader& reader);
    void takePaintOperator(std::uint8_t code);
    void takePictureOperator(std::uint8_t code);
    void beginPage();
    PageSize sheet() const;
    int orientation() const;
    void endPage();
    void setColorSpace();
    PageClass sourceClass(std::uint8_t nullAttribute) const;
    PageClass classOfPattern(int id) const;
    void paint(bool isFilled, bool isStroked);
    bool hasTextInk() const;
    const PclXlValue* find(std::uint8_t attribute) const;

    BodyReader* m_reader; ///< Of the body, or of the stream that is executed.
    int m_tolerance;
    bool m_isBigEndian = false;
    PagePrinter m_printer;
    PclXlAttributes m_attributes;
    PclXlValue m_value;
    bool m_hasValue = false;
    Graphics m_graphics;
    std::vector<Graphics> m_saved;
    bool m_isInPage = false;
    bool m_isInChar = false;
    bool m_hasPath = false;
    std::optional<PclXlImage> m_picture;
    bool m_isPattern = false;
    int m_patternId = 0;
    std::map<int, PageClass> m_patterns;
    PclXlAttributes m_blockAttributes; ///< Of the operator whose data comes next.
    bool m_awaitsBlock = false;
    std::map<std::string, std::vector<Range>> m_streams; ///< What the job defined, as places in the file.
    std::string m_streamName;
    bool m_awaitsStream = false;
    int m_depth = 0;             ///< Of streams that are executed.
    std::int64_t m_executed = 0; ///< Bytes of them.
};

} // namespace JobParser::Worker
