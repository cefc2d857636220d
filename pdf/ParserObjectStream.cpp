// Objects that stand in a stream: a table of their numbers and places, then the objects themselves.

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

#include "pdf/Lexer.h"
#include "pdf/Numbers.h"
#include "pdf/ObjectSorting.h"
#include "pdf/ObjectStream.h"
#include "pdf/Parser.h"
#include "pdf/UnsupportedObjectStreamCompressionException.h"
#include "pdf/ValueTape.h"

namespace Pdf::Parser
{
namespace
{

struct Place {
    std::uint32_t offset;
    std::uint32_t number;
};

std::optional<std::uint64_t> compressedSize(const Value& length)
{
    const auto* number = std::get_if<double>(&length);
    if (number == nullptr || !std::isfinite(*number) || *number < 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(toSigned64(*number));
}

std::uint32_t readEntry(Lexer& lexer)
{
    if (!lexer.ws())
        throw ISource::EofException();
    return lexer.readInteger();
}

// In the order in which the objects lie in the stream, so that one pass meets them all. Of two at one place
// the later one in the table counts.
std::vector<Place> readTable(Lexer& lexer, std::int32_t count)
{
    std::vector<Place> table;
    for (std::int32_t index = 0; index < count; ++index) {
        const std::uint32_t number = readEntry(lexer);
        table.push_back({readEntry(lexer), number});
    }
    std::ranges::stable_sort(table, {}, &Place::offset);
    const auto isReplaced = [](const Place& a, const Place& b) { return a.offset == b.offset; };
    std::ranges::reverse(table);
    table.erase(std::unique(table.begin(), table.end(), isReplaced), table.end());
    std::ranges::reverse(table);
    return table;
}

} // namespace

void Parser::readObjectStream(Object& object)
{
    if (Name(object.value["Filter"]) != "FlateDecode")
        throw UnsupportedObjectStreamCompressionException(std::string(Name(object.value["Filter"]).text));
    ObjectStream stream(*m_lexer, compressedSize(object.value["Length"]), m_inflated);
    Lexer lexer(stream.source());
    lexer.next();
    const auto first = toUnsigned32(std::get<double>(object.value["First"]));
    const auto table = readTable(lexer, toSigned32(std::get<double>(object.value["N"])));

    constexpr std::int32_t noLimit = std::numeric_limits<std::int32_t>::max();
    ValueTape tape;
    for (std::size_t index = 0; index < table.size(); ++index) {
        lexer.sync();
        stream.source().skip(table[index].offset + first - static_cast<std::uint32_t>(stream.servedBytes()));
        const bool isLast = index + 1 == table.size();
        stream.setLimit(isLast ? noLimit : static_cast<std::int32_t>(table[index + 1].offset + first));
        lexer.next();
        lexer.ws();
        lexer.readValue(tape);
        const Reference reference{table[index].number, 0};
        const ObjectFacts facts = factsOf(tape);
        if (isDeferred(facts, reference, lexer, tape))
            keepText(reference.number, lexer.usualValue());
        else
            keep(0, {reference, facts.mayBeKept ? tape.build() : Value(), {}});
    }
}

} // namespace Pdf::Parser
