#include "JobParser/paper/PaperUtils.h"

#include "Torv/Format.h"

namespace JobParser
{

void PaperUtils::init()
{
    tables();
}

std::string PaperUtils::formatPaper(Paper paper)
{
    const auto& texts = tables().m_paper2text;
    const auto row = texts.find(paper);
    return row != texts.end() ? row->second : Torv::format("%d?", static_cast<int>(paper));
}

std::tuple<std::uint32_t, std::uint32_t> PaperUtils::getPaperSizes(Paper paper)
{
    const auto& sizes = tables().m_paperSizes;
    const auto row = sizes.find(paper);
    return row != sizes.end() ? row->second : std::tuple<std::uint32_t, std::uint32_t>(0, 0);
}

const PaperUtils::Tables& PaperUtils::tables()
{
    static const Tables tables{
        {
            {PaperA4, "A4"},
            {PaperA3, "A3"},
            {PaperOther, "PaperOther"},
            {PaperA5, "A5"},
            {PaperB4, "B4"},
            {PaperB5, "B5"},
            {PaperFolio, "Folio"},
            {PaperLedger, "Ledger"},
            {PaperLegal, "Legal"},
            {PaperLetter, "Letter"},
            {PaperStatement, "Statement"},
        },
        {
            {PaperA4, {210, 297}},
            {PaperA3, {297, 420}},
            {PaperOther, {0, 0}},
            {PaperA5, {148, 210}},
            {PaperB4, {250, 353}},
            {PaperB5, {176, 250}},
            // Folio is weighed by the area of Letter, so that neither outdoes the other.
            {PaperFolio, {216, 279}},
            {PaperLedger, {279, 432}},
            {PaperLegal, {216, 356}},
            {PaperLetter, {216, 279}},
            {PaperStatement, {140, 216}},
        },
    };
    return tables;
}

} // namespace JobParser
