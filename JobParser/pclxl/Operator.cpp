#include "JobParser/pclxl/Operator.h"

#include <string>
#include <string_view>

#include "JobParser/paper/PclXlUtils.h"
#include "JobParser/pclxl/JobChunkPclXLAttribute.h"
#include "JobParser/pclxl/PclXLParser.h"

namespace JobParser
{
namespace
{

using Value = JobChunkPclXLAttributeValue;

constexpr std::string_view blockStart = "!R!";
constexpr std::string_view blockEnd = "EXIT;";
constexpr std::string_view lexmarkMark = "Lexmark Enhanced";
// What an open PRESCRIBE block may hold and still grow. It is dropped when more comes.
constexpr std::size_t maxOpenBlock = 0xFFFFF;

// What the number 17 stands for in jobs of Lexmark's enhanced driver.
constexpr auto lexmarkFolio = EMediaSize{17};
constexpr auto folio = EMediaSize{25};

} // namespace

template <tag_t tag, typename Payload>
Operator<tag, Payload>::Operator(PclXLParser& owner, std::int64_t start, std::int64_t end)
    : chunk(std::make_shared<JobChunkPclXLOperator>(tag, start, end)), parser(&owner)
{
}

template <> Value Operator<tag_t::BeginPage, None>::parseAttribute(attribute_t attribute, std::int64_t start)
{
    if (attribute == attribute_t::SimplexPageMode)
        parser->m_duplex = Duplex::OneSided;
    if (attribute != attribute_t::MediaSize && attribute != attribute_t::Orientation &&
        attribute != attribute_t::DuplexPageMode)
        return none;
    Value value = parser->parseValue<Value>(start);
    if (attribute == attribute_t::Orientation) {
        parser->m_orientation = static_cast<Orientation>(value.firstByte());
    } else if (attribute == attribute_t::DuplexPageMode) {
        parser->m_duplex = value.firstByte() != 0 ? Duplex::LongEdge : Duplex::ShortEdge;
    } else {
        const EMediaSize media = PclXlUtils::getMediaSize(value);
        const bool isFolio = parser->m_lexmarkEnhanced && media == lexmarkFolio && !isArray(value.data_type);
        parser->m_mediaSizes.insert(isFolio ? folio : media);
    }
    return value;
}

template <>
Value Operator<tag_t::EndPage, PageCopies>::parseAttribute(attribute_t attribute, std::int64_t start)
{
    if (attribute != attribute_t::PageCopies)
        return none;
    Value value = parser->parseValue<Value>(start);
    payload.copies = value.toVariant().toInt();
    return value;
}

template <>
Value Operator<tag_t::BeginFontHeader, None>::parseAttribute(attribute_t attribute, std::int64_t start)
{
    if (attribute == attribute_t::FontName)
        parser->m_fonts.insert(parser->parseValue<std::string>(start));
    return none;
}

// A comment may hold PRESCRIBE blocks, several in one or one in several, or the mark of a driver.
template <> Value Operator<tag_t::Comment, Comment>::parseAttribute(attribute_t attribute, std::int64_t start)
{
    if (attribute != attribute_t::CommentData)
        return none;
    const std::string whole = parser->parseValue<Value>(start).ValueAsString();
    std::string& open = parser->m_commentText;
    for (std::string_view text = whole; !text.empty();) {
        if (open.empty()) {
            const std::size_t begin = text.find(blockStart);
            if (begin == std::string_view::npos) {
                if (text.find(lexmarkMark) == std::string_view::npos)
                    return none;
                parser->m_swapBinding = true;
                parser->m_lexmarkEnhanced = true;
                payload.keep = true;
                return parser->parseValue<Value>(start);
            }
            text.remove_prefix(begin);
        }
        const std::size_t end = text.find(blockEnd);
        if (end == std::string_view::npos) {
            if (open.size() > maxOpenBlock)
                open.clear();
            else
                open += text;
            return none;
        }
        parser->m_callback(open + std::string(text.substr(0, end + blockEnd.size())));
        open.clear();
        text.remove_prefix(end + blockEnd.size());
    }
    return none;
}

template <tag_t tag, typename Payload>
void Operator<tag, Payload>::addAttribute(attribute_t attribute, std::int64_t start, std::int64_t end)
{
    Value value;
    if constexpr (tag == tag_t::BeginSession) {
        if (attribute == attribute_t::ErrorReport)
            value = parser->parseValue<Value>(start);
    } else {
        value = parseAttribute(attribute, start);
    }
    auto added = value.data.empty()
                     ? std::make_shared<JobChunkPclXLAttribute>(attribute, JobChunkPclXLRaw(start, end))
                     : std::make_shared<JobChunkPclXLAttribute>(attribute, value);
    chunk->attributes.push_back(std::move(added));
}

template class Operator<tag_t::BeginSession, None>;
template class Operator<tag_t::BeginPage, None>;
template class Operator<tag_t::EndPage, PageCopies>;
template class Operator<tag_t::Comment, Comment>;
template class Operator<tag_t::BeginFontHeader, None>;

} // namespace JobParser
