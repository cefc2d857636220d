#include "pdf/ValueTape.h"

#include <algorithm>
#include <new>
#include <span>
#include <utility>

#include "pdf/Containers.h"

namespace Pdf::Parser
{
namespace
{

// What is kept for the next value; a giant one is not to weigh on the rest of the file.
constexpr std::size_t mostTokensKept = 65536;
constexpr std::size_t firstTokens = 256;
constexpr std::size_t mostBytesKept = 1024 * 1024;
// Pages and resources are given a key or two when they are completed.
constexpr std::size_t spareEntries = 1;

template <typename Container> void clearOrFree(Container& container, std::size_t mostKept)
{
    if (container.capacity() > mostKept)
        Container().swap(container);
    else
        container.clear();
}

} // namespace

ValueTape::KeyedValue::KeyedValue(std::string_view theKey, std::size_t theValue)
    : start(0), key(theKey), value(theValue)
{
    const std::size_t size = std::min(key.size(), sizeof start);
    for (std::size_t index = 0; index < size; ++index)
        start = start << 8 | static_cast<unsigned char>(key[index]);
    // Without this a short key would need a shift by all bits.
    if (size != 0)
        start <<= 8 * (sizeof start - size);
}

int ValueTape::KeyedValue::compareKey(const KeyedValue& other) const
{
    if (start != other.start)
        return start < other.start ? -1 : 1;
    return key.compare(other.key);
}

void ValueTape::clear()
{
    if (m_tokens.size() > mostTokensKept)
        std::vector<Token>().swap(m_tokens);
    m_size = 0;
    clearOrFree(m_bytes, mostBytesKept);
    m_texts = nullptr;
}

void ValueTape::grow()
{
    m_tokens.resize(std::max(firstTokens, m_tokens.size() * 2));
}

void ValueTape::useTextsIn(const std::uint8_t* memory)
{
    clear();
    m_texts = reinterpret_cast<const char*>(memory);
}

void ValueTape::finish()
{
    m_texts = m_bytes.data();
}

const Token* ValueTape::find(std::string_view key) const
{
    for (std::size_t index = 1; m_tokens[index].kind == Token::Kind::Key; index = behind(index + 1)) {
        if (text(m_tokens[index]) == key)
            return &m_tokens[index + 1];
    }
    return nullptr;
}

Value ValueTape::build()
{
    m_frames.clear();
    m_keys.clear();
    Value result = valueAt(0);
    while (!m_frames.empty()) {
        Frame& frame = m_frames.back();
        if (frame.next == frame.end) {
            m_keys.erase(m_keys.begin() + static_cast<std::ptrdiff_t>(frame.firstKey), m_keys.end());
            m_frames.pop_back();
            continue;
        }
        // An inner container moves the frames and the keys.
        ContainerNode* const node = frame.node;
        if (frame.isArray) {
            const std::size_t index = std::exchange(frame.next, behind(frame.next));
            new (node->values() + node->size) Value(valueAt(index));
        } else {
            const KeyedValue keyed = m_keys[frame.next++];
            new (node->entries() + node->size) DictionaryEntry{nameOf(keyed.key), valueAt(keyed.value)};
        }
        ++node->size;
    }
    freeWhatIsLarge();
    return result;
}

void ValueTape::freeWhatIsLarge()
{
    clearOrFree(m_frames, mostTokensKept);
    clearOrFree(m_keys, mostTokensKept);
}

Value ValueTape::valueAt(std::size_t index)
{
    if (isContainer(m_tokens[index]))
        return startContainer(index);
    return scalar(m_tokens[index]);
}

// The container stands in its place at once, and is filled afterwards.
Value ValueTape::startContainer(std::size_t index)
{
    const Token& token = m_tokens[index];
    const auto closing = static_cast<std::size_t>(token.at);
    const bool isArray = token.kind == Token::Kind::OpenArray;
    if (token.size == 0)
        return isArray ? Value(Array()) : Value(Dictionary());
    const std::size_t firstKey = m_keys.size();
    if (isArray) {
        ContainerNode* const node =
            Containers::make(ContainerNode::Kind::Array, static_cast<std::size_t>(token.size));
        Value array = Containers::array(node);
        // Most arrays hold nothing that has to be filled in its turn.
        std::size_t next = index + 1;
        for (; next != closing && !isContainer(m_tokens[next]); ++next, ++node->size)
            new (node->values() + node->size) Value(scalar(m_tokens[next]));
        if (next != closing)
            m_frames.push_back({node, true, next, closing, firstKey});
        return array;
    }
    sortKeys(index);
    ContainerNode* const node =
        Containers::make(ContainerNode::Kind::Dictionary, m_keys.size() - firstKey + spareEntries);
    Value dictionary = Containers::dictionary(node);
    m_frames.push_back({node, false, firstKey, m_keys.size(), firstKey});
    return dictionary;
}

// Puts the keys of a dictionary behind those that wait, in order and without equal ones: the first counts.
void ValueTape::sortKeys(std::size_t open)
{
    const std::size_t first = m_keys.size();
    bool isSorted = true;
    for (std::size_t index = open + 1; m_tokens[index].kind == Token::Kind::Key; index = behind(index + 1)) {
        const std::string_view key = text(m_tokens[index]);
        m_keys.emplace_back(key, index + 1);
        isSorted = isSorted &&
                   (m_keys.size() == first + 1 || m_keys[m_keys.size() - 2].compareKey(m_keys.back()) < 0);
    }
    if (isSorted)
        return;
    const auto keys = std::span(m_keys).subspan(first);
    std::sort(keys.begin(), keys.end(), [](const KeyedValue& a, const KeyedValue& b) {
        const int order = a.compareKey(b);
        return order != 0 ? order < 0 : a.value < b.value;
    });
    const auto isSame = [](const KeyedValue& a, const KeyedValue& b) { return a.compareKey(b) == 0; };
    const auto repeated = std::unique(keys.begin(), keys.end(), isSame);
    m_keys.erase(m_keys.end() - (keys.end() - repeated), m_keys.end());
}

// The names of a document are few; those that do not stand in a value itself are shared.
ByteString ValueTape::nameOf(std::string_view text)
{
    constexpr std::size_t mostInValues = 7;
    if (text.size() <= mostInValues)
        return text;
    const auto mixed =
        static_cast<unsigned char>(text.front()) + 5U * static_cast<unsigned char>(text.back());
    ByteString& known = m_names[(mixed + text.size()) % m_names.size()];
    if (known != text)
        known = text;
    return known;
}

Value ValueTape::scalar(const Token& token)
{
    switch (token.kind) {
    case Token::Kind::Null: return Null();
    case Token::Kind::True: return true;
    case Token::Kind::False: return false;
    case Token::Kind::Number: return token.real;
    case Token::Kind::Reference: return Reference{token.number, static_cast<std::uint32_t>(token.at)};
    case Token::Kind::FalseReference: return FalseReference(token.number, token.real);
    case Token::Kind::Name: return Name{nameOf(text(token))};
    case Token::Kind::String: return ByteString(text(token));
    case Token::Kind::HexString: return HexString{text(token)};
    case Token::Kind::None:
    case Token::Kind::Key:
    case Token::Kind::OpenArray:
    case Token::Kind::OpenDictionary:
    case Token::Kind::Close: break;
    }
    return {};
}

} // namespace Pdf::Parser
