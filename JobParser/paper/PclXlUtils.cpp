#include "JobParser/paper/PclXlUtils.h"

#include <algorithm>
#include <array>

#include "JobParser/paper/PaperSizeManager.h"
#include "JobParser/paper/PaperUtils.h"
#include "JobParser/pclxl/JobChunkPclXLAttributeValue.h"

#include "Torv/Text.h"
#include "Torv/Variant.h"

namespace JobParser
{
namespace
{

struct MediaPaper {
    std::uint8_t media;
    Paper paper;
};

// What stands twice in the published numbers has its sibling above 100. The double postcard (15) counts as A5
// and JIS 8K (19) as Statement, as their names do elsewhere.
constexpr std::array<MediaPaper, 26> mediaPapers{{
    {0, PaperLetter},     {106, PaperLetter},    {1, PaperLegal},       {107, PaperLegal},
    {2, PaperA4},         {108, PaperA4},        {4, PaperLedger},      {112, PaperLedger},
    {5, PaperA3},         {110, PaperA3},        {10, PaperB4},         {111, PaperB4},
    {11, PaperB5},        {12, PaperB5},         {13, PaperB5},         {109, PaperB5},
    {15, PaperA5},        {16, PaperA5},         {113, PaperA5},        {19, PaperStatement},
    {22, PaperStatement}, {150, PaperStatement}, {234, PaperStatement}, {25, PaperFolio},
    {151, PaperFolio},    {226, PaperFolio},
}};

} // namespace

EMediaSize PclXlUtils::getMediaSize(const JobChunkPclXLAttributeValue& value)
{
    if (!isArray(value.data_type))
        return static_cast<EMediaSize>(value.firstByte());
    const auto found = mediaSizes().find(Torv::toUpper(value.ValueAsString()));
    return found == mediaSizes().end() ? unknownMedia : found->second;
}

Paper PclXlUtils::convertPclXlPaper(EMediaSize media)
{
    const auto found = std::ranges::find(mediaPapers, static_cast<std::uint8_t>(media), &MediaPaper::media);
    return found == mediaPapers.end() ? PaperOther : found->paper;
}

Paper PclXlUtils::paperFromPcl6PaperSize(const Torv::Variant& size, const PaperSizeManager& manager)
{
    if (size.isString())
        return manager.paperById(size.toString(), true);
    if (size.isInteger())
        return convertPclXlPaper(static_cast<EMediaSize>(static_cast<std::uint8_t>(size.toInt64())));
    return PaperOther;
}

Paper PclXlUtils::getLargestPaper(const std::set<EMediaSize>& media, const PaperSizeManager&)
{
    Paper best = PaperOther;
    std::uint32_t largest = 0;
    for (const EMediaSize each : media) {
        const Paper paper = convertPclXlPaper(each);
        const auto [width, height] = PaperUtils::getPaperSizes(paper);
        if (width * height <= largest)
            continue;
        best = paper;
        largest = width * height;
    }
    return best;
}

} // namespace JobParser
