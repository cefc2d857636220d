#include "pdf/ValueTape.h"

#include <algorithm>
#include <span>
#include <utility>

#include "pdf/Containers.h"

namespace Pdf::Parser
{
namespace
{

// What is kept for the next value; a giant one is not to weigh on the rest of the file.
constexpr std::size_t mostTokensKept = 65536;
constexpr std::size_t mostBytesKept = 1024 * 1024;

template <typename Container> void clearOrFree(Container& container, std::size_t mostKept)
{
    if (container.capacity() > mostKept)
        Container().swap(container);
    else
        container.clear();
}

} // namespace

void ValueTape::clear()
{
    clearOrFree(m_tokens, mostTokensKept);
    clearOrFree(m_bytes, mostBytesKept);
}

void ValueTape::addText(Token::Kind kind, std::size_t start)
{
    Token token;
    token.kind = kind;
    token.at = start;
    token.size = m_bytes.size() - start;
    m_tokens.push_back(token);
}

void ValueTape::close(std::size_t open)
{
    m_tokens[open].at = m_tokens.size();
    m_tokens.push_back({Token::Kind::Close, 0, 0, {}});
}

std::string_view ValueTape::text(const Token& token) const
{
    return std::string_view(m_bytes).substr(token.at, token.size);
}

std::size_t ValueTape::behind(std::size_t index) const
{
    const Token& token = m_tokens[index];
    const bool isContainer =
        token.kind == Token::Kind::OpenArray || token.kind == Token::Kind::OpenDictionary;
    return (isContainer ? token.at : index) + 1;
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
    m_values.clear();
    m_keys.clear();
    for (const Token& token : m_tokens) {
        if (token.kind == Token::Kind::Close)
            finishContainer();
        else if (token.kind == Token::Kind::Key)
            m_keys.push_back({text(token), m_values.size()});
        else if (token.kind == Token::Kind::OpenArray || token.kind == Token::Kind::OpenDictionary)
            m_frames.push_back({token.kind == Token::Kind::OpenArray, m_values.size(), m_keys.size()});
        else
            addScalar(token);
    }
    Value result = std::move(m_values.back());
    clearOrFree(m_values, mostTokensKept);
    clearOrFree(m_keys, mostTokensKept);
    clearOrFree(m_frames, mostTokensKept);
    return result;
}

void ValueTape::finishContainer()
{
    const Frame frame = m_frames.back();
    m_frames.pop_back();
    Value container;
    if (frame.isArray)
        container = takeArray(frame.firstValue);
    else
        container = takeDictionary(frame.firstKey);
    m_values.resize(frame.firstValue);
    m_keys.resize(frame.firstKey);
    m_values.push_back(std::move(container));
}

Array ValueTape::takeArray(std::size_t first)
{
    const auto items = std::span(m_values).subspan(first);
    if (items.empty())
        return {};
    ContainerNode* const node = Containers::make(ContainerNode::Kind::Array, items.size());
    for (Value& item : items)
        Containers::append(node, std::move(item));
    return Containers::array(node);
}

// In order, and without equal keys: the first of them counts.
Dictionary ValueTape::takeDictionary(std::size_t first)
{
    const auto keys = std::span(m_keys).subspan(first);
    if (keys.empty())
        return {};
    const auto isLess = [](const KeyedValue& a, const KeyedValue& b) {
        const int order = a.key.compare(b.key);
        return order != 0 ? order < 0 : a.value < b.value;
    };
    std::sort(keys.begin(), keys.end(), isLess);

    ContainerNode* const node = Containers::make(ContainerNode::Kind::Dictionary, keys.size());
    Dictionary dictionary = Containers::dictionary(node);
    std::string_view last = keys.front().key;
    for (const KeyedValue& keyed : keys) {
        if (node->size == 0 || keyed.key != last)
            Containers::append(node, keyed.key, std::move(m_values[keyed.value]));
        last = keyed.key;
    }
    return dictionary;
}

void ValueTape::addScalar(const Token& token)
{
    switch (token.kind) {
    case Token::Kind::Null: m_values.emplace_back(Null()); return;
    case Token::Kind::True: m_values.emplace_back(true); return;
    case Token::Kind::False: m_values.emplace_back(false); return;
    case Token::Kind::Number: m_values.emplace_back(token.real); return;
    case Token::Kind::Reference:
        m_values.emplace_back(Reference{token.number, static_cast<std::uint32_t>(token.at)});
        return;
    case Token::Kind::FalseReference: m_values.emplace_back(FalseReference(token.number, token.real)); return;
    case Token::Kind::Name: m_values.emplace_back(Name{text(token)}); return;
    case Token::Kind::String: m_values.emplace_back(ByteString(text(token))); return;
    case Token::Kind::HexString: m_values.emplace_back(HexString{text(token)}); return;
    case Token::Kind::None:
    case Token::Kind::Key:
    case Token::Kind::OpenArray:
    case Token::Kind::OpenDictionary:
    case Token::Kind::Close: m_values.emplace_back(); return;
    }
}

} // namespace Pdf::Parser
