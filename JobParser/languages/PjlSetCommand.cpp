#include <array>

#include "JobParser/languages/PjlParser.h"
#include "JobParser/model/OriginalBrand.h"
#include "JobParser/paper/PaperSizeManager.h"

#include "Torv/Number.h"
#include "Torv/Regex.h"
#include "Torv/Text.h"

namespace JobParser::Pjl
{
namespace
{

using Zem::Printer::OriginalBrand;

/// A value of a variable, in any case, and what it stands for.
template <typename T> struct Word {
    std::string_view text;
    T meaning;
};

template <typename T, std::size_t count>
T meaningOf(std::string_view text, const std::array<Word<T>, count>& words, T fallback)
{
    for (const Word<T>& word : words) {
        if (Torv::iequals(text, word.text))
            return word.meaning;
    }
    return fallback;
}

constexpr std::array stapleWords{
    Word<Staple>{"OFF", Staple::None},
    Word<Staple>{"LEFTTOP", Staple::LeftTop},
    Word<Staple>{"LEFTTOPSLANTPORT", Staple::LeftTop},
    Word<Staple>{"RIGHTTOP", Staple::RightTop},
    Word<Staple>{"BOOKLET", Staple::Two},
};

constexpr std::array stapleOptionWords{
    Word<Staple>{"DEFAULT", Staple::DeviceDefault},
    Word<Staple>{"ONE", Staple::LeftTop},
    Word<Staple>{"ONEOPPOSED", Staple::RightTop},
    Word<Staple>{"TWO", Staple::Two},
};

constexpr std::array sharpStapleOptionWords{Word<Staple>{"NONE", Staple::None}};

constexpr std::array punchWords{Word<Punch>{"OFF", Punch::None}};

constexpr std::array kPunchOptionWords{Word<Punch>{"MAIN", Punch::DriverDefault}};

constexpr std::array processingTypeWords{
    Word<ProcessingType>{"\"STAPLING\"", ProcessingType::Stapling},
    Word<ProcessingType>{"\"PUNCH\"", ProcessingType::Punch},
    Word<ProcessingType>{"\"BOOKLET_MAKER\"", ProcessingType::BookletMaker},
};

} // namespace

/// A variable of SET, in any case, and who takes its value.
struct Parser::SetVariable {
    std::string_view name;
    void (Parser::*take)(const std::string& value);
};

void Parser::parseSetCmd()
{
    static constexpr std::array variables{
        SetVariable{"COPIES", &Parser::setCopies},
        SetVariable{"QTY", &Parser::setCopies},
        SetVariable{"DUPLEX", &Parser::setDuplex},
        SetVariable{"BINDING", &Parser::setBinding},
        SetVariable{"PAPER", &Parser::setPaper},
        SetVariable{"LPARM:PDF KMULTIPAGE", &Parser::setPagesPerSheet},
        SetVariable{"KFEEDEDGE", &Parser::setFeedEdge},
        SetVariable{"FINISH", &Parser::setFinish},
        SetVariable{"PROCESSINGTYPE", &Parser::setProcessingType},
        SetVariable{"STAPLE", &Parser::setStaple},
        SetVariable{"PUNCHHOLE", &Parser::setPunchHole},
        SetVariable{"PUNCH", &Parser::setPunch},
        SetVariable{"STAPLEOPTION", &Parser::setStapleOption},
        SetVariable{"KPUNCHOPTION", &Parser::setKPunchOption},
        SetVariable{"OKIPUNCH", &Parser::setOkiPunch},
        SetVariable{"PROCESSINGOPTION", &Parser::setProcessingOption},
        SetVariable{"KCOLORMODE", &Parser::setKColorMode},
        SetVariable{"ECOPRINT", &Parser::setEcoPrint},
        SetVariable{"DATAMODE", &Parser::setGrayscaleMode},
        SetVariable{"RENDERMODE", &Parser::setGrayscaleMode},
        SetVariable{"PLANESINUSE", &Parser::setPlanesInUse},
        SetVariable{"ECONOMODE", &Parser::setEconoMode},
        SetVariable{"HOSTPRINTERNAME", &Parser::setHostPrinterName},
        SetVariable{"DRIVERNAME", &Parser::setDriverName},
    };
    std::string name;
    std::string value;
    if (!currentCmd.parseParamEqValue(name, value))
        return;
    for (const SetVariable& variable : variables) {
        if (Torv::iequals(name, variable.name)) {
            (this->*variable.take)(value);
            return;
        }
    }
}

void Parser::parseXCPT()
{
    static const Torv::Regex copies(R"re(^\s*<copies[^>]*>([^<]*)</copies>)re");
    static const Torv::Regex sides(R"re(^\s*<sides[^>]*>([^<]*)</sides>)re");
    if (const auto number = copies.find(currentCmd.param, 1)) {
        jobInfo.setCopiesMax(Torv::stoi(std::string(*number)));
        return;
    }
    const auto word = sides.find(currentCmd.param, 1);
    if (word == "two-sided-short-edge")
        jobInfo.setDuplex(Duplex::ShortEdge);
    else if (word == "two-sided-long-edge")
        jobInfo.setDuplex(Duplex::LongEdge);
    else if (word == "one-sided")
        jobInfo.setDuplex(Duplex::OneSided);
}

void Parser::setCopies(const std::string& value)
{
    int copies = 0;
    if (Torv::tryParseInt(value, copies))
        jobInfo.setCopiesMax(copies);
}

void Parser::setDuplex(const std::string& value)
{
    duplexOn = Torv::iequals(value, "ON");
}

void Parser::setBinding(const std::string& value)
{
    if (value == "LONGEDGE")
        binding = Duplex::LongEdge;
    else if (value == "SHORTEDGE")
        binding = Duplex::ShortEdge;
}

void Parser::setPaper(const std::string& value)
{
    jobInfo.setPaper(paperList.paperById(value, true));
}

void Parser::setPagesPerSheet(const std::string& value)
{
    if (Torv::iequals(value, "TWO"))
        jobInfo.setPagesPerSheet(2);
    else if (Torv::iequals(value, "FOUR"))
        jobInfo.setPagesPerSheet(4);
}

void Parser::setFeedEdge(const std::string& value)
{
    jobInfo.setOriginalBrand(OriginalBrand::KxDriver);
    if (Torv::iequals(value, "SHORTEDGE"))
        jobInfo.kfeedShortEdge = true;
    else if (Torv::iequals(value, "LONGEDGE"))
        jobInfo.kfeedShortEdge = false;
}

void Parser::setFinish(const std::string& value)
{
    // These words name no place, so they displace none that is known.
    if (Torv::iequals(value, "STAPLE")) {
        jobInfo.setStapling(Staple::DeviceDefault, false);
    } else if (Torv::iequals(value, "KPUNCH")) {
        jobInfo.setOriginalBrand(OriginalBrand::KxDriver);
        jobInfo.setPunching(Punch::UnknownKind, false);
    } else if (Torv::iequals(value, "KPNCHANDSTPL")) {
        jobInfo.setOriginalBrand(OriginalBrand::KxDriver);
        jobInfo.setStapling(Staple::UnknownPosition, false);
        jobInfo.setPunching(Punch::UnknownKind, false);
    } else if (Torv::iequals(value, "NONE")) {
        jobInfo.setStapling(Staple::None, true);
        jobInfo.setPunching(Punch::None, true);
    }
}

void Parser::setProcessingType(const std::string& value)
{
    processingType = meaningOf(value, processingTypeWords, ProcessingType::None);
    if (processingType == ProcessingType::Stapling)
        jobInfo.setStapling(Staple::None, true);
    else if (processingType == ProcessingType::Punch)
        jobInfo.setPunching(Punch::None, true);
}

void Parser::setStaple(const std::string& value)
{
    jobInfo.setStapling(meaningOf(value, stapleWords, Staple::UnknownPosition), true);
}

void Parser::setPunchHole(const std::string&)
{
    jobInfo.setPunching(Punch::UnknownKind, true);
}

void Parser::setPunch(const std::string& value)
{
    jobInfo.setPunching(meaningOf(value, punchWords, Punch::UnknownKind), true);
}

void Parser::setStapleOption(const std::string& value)
{
    if (jobInfo.originalBrand == OriginalBrand::Sharp)
        jobInfo.setStapling(meaningOf(value, sharpStapleOptionWords, Staple::UnknownPosition), true);
    else
        jobInfo.setStapling(meaningOf(value, stapleOptionWords, Staple::UnknownPosition), true);
}

void Parser::setKPunchOption(const std::string& value)
{
    jobInfo.setOriginalBrand(OriginalBrand::KxDriver);
    jobInfo.setPunching(meaningOf(value, kPunchOptionWords, Punch::UnknownKind), true);
}

void Parser::setOkiPunch(const std::string&)
{
    jobInfo.setOriginalBrand(OriginalBrand::Oki);
}

void Parser::setProcessingOption(const std::string& value)
{
    switch (processingType) {
    case ProcessingType::None: return;
    case ProcessingType::Stapling: parseHpStapling(unQuote(value, '"')); break;
    case ProcessingType::Punch: parseHpPunching(unQuote(value, '"')); break;
    case ProcessingType::BookletMaker: jobInfo.setStapling(Staple::UnknownPosition, true); break;
    }
    processingType = ProcessingType::None;
}

void Parser::setKColorMode(const std::string& value)
{
    jobInfo.setOriginalBrand(OriginalBrand::KxDriver);
    jobInfo.setForceMono(value == "MONO");
}

void Parser::setEcoPrint(const std::string& value)
{
    jobInfo.setEcoMode(!Torv::iequals(value, "OFF"));
}

void Parser::setGrayscaleMode(const std::string& value)
{
    jobInfo.setOriginalBrand(OriginalBrand::Ricoh);
    jobInfo.setForceMono(value == "GRAYSCALE");
}

void Parser::setPlanesInUse(const std::string& value)
{
    jobInfo.setForceMono(value != "3");
}

void Parser::setEconoMode(const std::string& value)
{
    jobInfo.setEcoMode(Torv::iequals(value, "ON"));
}

void Parser::setHostPrinterName(const std::string& value)
{
    if (Torv::istartsWith(value, "\"RICOH"))
        jobInfo.setOriginalBrand(OriginalBrand::Ricoh);
}

void Parser::setDriverName(const std::string& value)
{
    if (Torv::istartsWith(value, "\"SHARP"))
        jobInfo.setOriginalBrand(OriginalBrand::Sharp);
}

} // namespace JobParser::Pjl
