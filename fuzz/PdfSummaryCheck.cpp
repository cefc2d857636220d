#include "PdfSummaryCheck.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <variant>
#include <vector>

#include "JobParser/Job.h"
#include "pdf/ChunkPdfDocumentInfo.h"
#include "pdf/DocumentInfo.h"

namespace Fuzz
{
namespace
{

bool isPlainName(std::string_view name)
{
    return name.find('#') == name.npos;
}

bool isWithoutNul(std::string_view text)
{
    return text.find('\0') == text.npos;
}

bool isReloadableScalar(const Pdf::Value& value)
{
    constexpr double firstNumberTooGreat = 4294967296;

    if (const auto* number = std::get_if<double>(&value))
        return std::abs(*number) < firstNumberTooGreat;
    if (const auto* name = std::get_if<Pdf::Name>(&value))
        return isPlainName(name->text);
    if (const auto* string = std::get_if<Pdf::ByteString>(&value))
        return isWithoutNul(*string);
    if (const auto* hexString = std::get_if<Pdf::HexString>(&value))
        return isWithoutNul(hexString->text);
    return !std::holds_alternative<Pdf::FalseReference>(value);
}

bool isReloadableValue(const Pdf::Value& root)
{
    std::vector<const Pdf::Value*> values{&root};
    while (!values.empty()) {
        const Pdf::Value& value = *values.back();
        values.pop_back();
        if (const auto* array = std::get_if<Pdf::Array>(&value)) {
            for (const auto& item : array->items())
                values.push_back(&item);
        } else if (const auto* dictionary = std::get_if<Pdf::Dictionary>(&value)) {
            for (const auto& entry : dictionary->entries()) {
                if (!isPlainName(entry.key))
                    return false;
                values.push_back(&entry.value);
            }
        } else if (!isReloadableScalar(value)) {
            return false;
        }
    }
    return true;
}

bool isReloadableObject(const std::pair<const Pdf::Reference, Pdf::Object>& entry)
{
    const std::uint32_t generation = entry.first.generation;
    return (generation == 0 || generation % 2 != 0) && isReloadableValue(entry.second.value);
}

} // namespace

bool isReloadable(const Pdf::Parser::DocumentInfo& summary)
{
    return std::holds_alternative<Pdf::Dictionary>(summary.catalog.value) &&
           std::holds_alternative<Pdf::Dictionary>(summary.trailer) &&
           isReloadableValue(summary.catalog.value) && isReloadableValue(summary.trailer) &&
           std::ranges::all_of(summary.pages, isReloadableObject) &&
           std::ranges::all_of(summary.embeddable, isReloadableObject);
}

bool hasReloadableSummaries(const JobParser::Job& job)
{
    return std::ranges::all_of(job.chunks, [](const auto& chunk) {
        const auto* const summary = dynamic_cast<const JobParser::ChunkPdfDocumentInfo*>(chunk.get());
        return summary == nullptr || isReloadable(*summary->documentInfo);
    });
}

} // namespace Fuzz
