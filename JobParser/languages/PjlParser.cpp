#include "JobParser/languages/PjlParser.h"

#include <array>
#include <memory>

#include "JobParser/Job.h"
#include "JobParser/model/ChunkUel.h"
#include "JobParser/model/OriginalBrand.h"

#include "Torv/Number.h"
#include "Torv/Text.h"

namespace JobParser::Pjl
{
namespace
{

using Zem::Printer::OriginalBrand;

constexpr std::string_view infoPrefix = "\"INFO:";
constexpr std::string_view infoDuplex = "DUPLEX ";
constexpr std::string_view infoQuantity = "QTY ";
constexpr std::size_t maxInfoItems = 10000000;

/// How the comments of a driver begin, in the order in which they are tried.
struct Signature {
    std::string_view prefix;
    OriginalBrand brand;
};

constexpr std::array signatures{
    Signature{"Lexmark", OriginalBrand::Lexmark},
    Signature{"TOSHIBA", OriginalBrand::Toshiba},
    Signature{"\"DriverName=Samsung", OriginalBrand::Samsung},
    Signature{"\"HP Universal ", OriginalBrand::Hp},
    Signature{"\"HP UNI ", OriginalBrand::Hp},
};

} // namespace

Parser::Parser(const BaseParser& parent) : BaseParser(parent), currentCmd({}, {})
{
    jobInfo.reset(JobInfo::AllFlags);
}

Pdl Parser::parse()
{
    jobInfo.setPjl(true);
    const Pdl next = loop();
    // Either of the two alone says nothing: drivers send a binding with one-sided jobs, too.
    if (duplexOn.value_or(false) && binding != Duplex::OneSided)
        jobInfo.setDuplex(binding);
    return next;
}

Pdl Parser::loop()
{
    for (;;) {
        switch (getPjlToken()) {
        case PjlToken::UelPjl: job.appendChunk(std::make_shared<ChunkUel>()); continue;
        case PjlToken::Uel:
        case PjlToken::EndOfFile: job.appendChunk(std::make_shared<ChunkUel>()); return Pdl::Unknown;
        case PjlToken::Prescribe: return Pdl::Prescribe;
        case PjlToken::Command: break;
        }
        job.appendChunk(std::make_shared<ChunkPjlCmd>(currentCmd.cmd, currentCmd.param));
        if (Torv::iequals(currentCmd.cmd, "ENTER"))
            return enterLanguage();
        if (Torv::iequals(currentCmd.cmd, "SET")) {
            parseSetCmd();
        } else if (Torv::iequals(currentCmd.cmd, "COMMENT")) {
            parseComment();
        } else if (Torv::iequals(currentCmd.cmd, "XCPT")) {
            jobInfo.setOriginalBrand(OriginalBrand::XcptTicket);
            parseXCPT();
        }
    }
}

Pdl Parser::enterLanguage()
{
    const std::string_view param = currentCmd.param;
    const std::size_t equalSign = param.find('=');
    if (equalSign == std::string_view::npos)
        jobInfo.setPdl(Pdl::Unknown);
    else
        jobInfo.setPdl(PdlUtils::fromPjlEnterLang(std::string(Torv::trim(param.substr(equalSign + 1)))));
    return jobInfo.pdl;
}

void Parser::parseComment()
{
    const std::string_view param = currentCmd.param;
    if (param.starts_with(infoPrefix)) {
        parseInfoComment(param.substr(infoPrefix.size()));
        return;
    }
    for (const Signature& signature : signatures) {
        if (param.starts_with(signature.prefix)) {
            jobInfo.setOriginalBrand(signature.brand);
            return;
        }
    }
}

void Parser::parseInfoComment(std::string_view list)
{
    for (const std::string& piece : Torv::explode(list, ";", maxInfoItems, false)) {
        const std::string_view item = Torv::trim(piece);
        if (item.starts_with(infoDuplex))
            duplexOn = item.substr(infoDuplex.size()).starts_with("ON");
        else if (item.starts_with(infoQuantity))
            jobInfo.setCopies(Torv::stoi(std::string(item.substr(infoQuantity.size()))));
    }
}

} // namespace JobParser::Pjl
