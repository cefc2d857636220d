#include "pdf/ObjectSorting.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <variant>

#include "pdf/ValueTape.h"

namespace Pdf::Parser
{
namespace
{

struct TypeRow {
    std::string_view type;
    Destination destination;
};

constexpr std::array<TypeRow, 4> types{{
    {"Page", Destination::Pages},
    {"Pages", Destination::PageNodes},
    {"Catalog", Destination::Catalog},
    {"XRef", Destination::Trailers},
}};

// One of these makes a dictionary without a type one of resources.
constexpr std::array<std::string_view, 7> resourceKeys{"ProcSet",    "XObject", "Font",   "ExtGState",
                                                       "ColorSpace", "Pattern", "Shading"};

// Few keys begin so.
constexpr std::array<bool, 256> startsOfResourceKeys()
{
    std::array<bool, 256> table{};
    for (const std::string_view key : resourceKeys)
        table[static_cast<unsigned char>(key.front())] = true;
    return table;
}

constexpr std::array<bool, 256> startsResourceKey = startsOfResourceKeys();

Destination destinationOfType(std::string_view type)
{
    const auto row = std::ranges::find(types, type, &TypeRow::type);
    return row != types.end() ? row->destination : Destination::Dropped;
}

bool isResourceKey(std::string_view key)
{
    return !key.empty() && startsResourceKey[static_cast<unsigned char>(key.front())] &&
           std::ranges::find(resourceKeys, key) != resourceKeys.end();
}

// A comparison of a size that the compiler knows takes no call.
template <std::size_t size> bool isKey(std::string_view key, const char (&wanted)[size])
{
    return key.size() == size - 1 && std::memcmp(key.data(), wanted, size - 1) == 0;
}

bool isResource(const DictionaryEntry& entry)
{
    return isResourceKey(entry.key) && !std::holds_alternative<None>(entry.value);
}

bool isReference(const DictionaryEntry& entry)
{
    return std::holds_alternative<Reference>(entry.value);
}

/// Finds out whether all values of a dictionary on a tape are references.
///
/// Another value does not count under a key that stood before. To ask for that takes as long as the
/// dictionary is, so that after a few such keys nobody asks any more.
class ReferencesAlone
{
public:
    void take(const ValueTape& tape, std::string_view key, const Token& value)
    {
        if (!m_mayBeAll || !isKnown() || value.kind == Token::Kind::Reference)
            return;
        m_mayBeAll = tape.find(key) != &value;
        ++m_repeatedKeys;
    }

    bool mayBeAll() const { return m_mayBeAll; }
    bool isKnown() const { return !m_mayBeAll || m_repeatedKeys < mostRepeatedKeys; }

private:
    static constexpr int mostRepeatedKeys = 8;

    bool m_mayBeAll = true;
    int m_repeatedKeys = 0;
};

} // namespace

Destination destinationOf(const Value& value)
{
    if (std::holds_alternative<Reference>(value) || std::holds_alternative<Array>(value))
        return Destination::Embeddable;
    const auto* dictionary = std::get_if<Dictionary>(&value);
    if (dictionary == nullptr)
        return Destination::Dropped;
    const Name type(value["Type"]);
    if (!type.text.empty())
        return destinationOfType(type.text);
    const auto entries = dictionary->entries();
    // Of references alone, as a table of fonts is; an empty one may be such a table too.
    const bool isKept = std::ranges::any_of(entries, isResource) || std::ranges::all_of(entries, isReference);
    return isKept ? Destination::Embeddable : Destination::Dropped;
}

// The first of equal keys counts.
ObjectFacts factsOf(const ValueTape& tape)
{
    ObjectFacts facts;
    if (!tape.isDictionary()) {
        facts.mayBeKept = tape[0].kind == Token::Kind::Reference || tape[0].kind == Token::Kind::OpenArray;
        facts.isEmbeddable = facts.mayBeKept;
        return facts;
    }
    bool hasResourceKey = false;
    ReferencesAlone references;
    for (std::size_t index = 1; tape[index].kind == Token::Kind::Key; index = tape.behind(index + 1)) {
        const std::string_view key = tape.text(tape[index]);
        const Token* const value = &tape[index + 1];
        if (facts.type == nullptr && isKey(key, "Type"))
            facts.type = value;
        else if (facts.length == nullptr && isKey(key, "Length"))
            facts.length = value;
        hasResourceKey = hasResourceKey || isResourceKey(key);
        references.take(tape, key, *value);
    }
    if (facts.type != nullptr && facts.type->kind == Token::Kind::Name && facts.type->size != 0)
        facts.mayBeKept = destinationOfType(tape.text(*facts.type)) != Destination::Dropped;
    else {
        facts.mayBeKept = hasResourceKey || references.mayBeAll();
        facts.isEmbeddable = facts.mayBeKept && references.isKnown();
    }
    return facts;
}

} // namespace Pdf::Parser
