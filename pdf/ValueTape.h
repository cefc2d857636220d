#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "pdf/Value.h"

namespace Pdf
{
struct ContainerNode;
}

namespace Pdf::Parser
{

/// What a value is made of: a scalar, a key of a dictionary, or one end of a container.
struct Token {
    enum class Kind : std::uint8_t {
        None,
        Null,
        True,
        False,
        Number,
        Reference,
        FalseReference,
        Name,
        String,
        HexString,
        Key,
        OpenArray,
        OpenDictionary,
        Close
    };

    Kind kind = Kind::None;
    std::uint32_t number = 0; ///< Of references.
    std::uint64_t at = 0; ///< Where texts begin, the generation of a Reference, the Close of an opening one.
    union {
        double real = 0;    ///< Of numbers, and the generation of a FalseReference.
        std::uint64_t size; ///< Of texts, in bytes; of containers, in values.
    };
};

/// A value as the row of its tokens, as they were read.
///
/// Nearly all objects of a PDF are dropped as soon as they have been read. Their tokens go into the room of
/// those before them; a tree is built only of what is kept.
class ValueTape
{
public:
    /// Makes the tape empty. Texts go into bytes().
    void clear();
    /// Makes the tape empty. Texts stand in memory of somebody else, and are valid as long as that is.
    void useTextsIn(const std::uint8_t* memory);

    void add(const Token& token)
    {
        if (m_size == m_tokens.size()) [[unlikely]]
            grow();
        m_tokens[m_size++] = token;
    }
    void addNumber(double number);
    void addReference(const Reference& reference);
    void addText(Token::Kind kind, std::size_t at, std::size_t size);
    /// Opens a container and gives the index of its token.
    std::size_t open(Token::Kind kind);
    /// Closes the container that was opened at an index, with as many values in it.
    void close(std::size_t open, std::uint64_t count);
    void removeLast(std::size_t count) { m_size -= count; }

    std::size_t size() const { return m_size; }
    const Token& operator[](std::size_t index) const { return m_tokens[index]; }
    std::string_view text(const Token& token) const
    {
        return {m_texts + token.at, static_cast<std::size_t>(token.size)};
    }
    std::string& bytes() { return m_bytes; }
    /// To be called when all texts are in bytes().
    void finish();

    /// The index behind the value whose first token stands at `index`.
    std::size_t behind(std::size_t index) const;

    bool isDictionary() const { return m_tokens[0].kind == Token::Kind::OpenDictionary; }
    /// The first token of the value that the dictionary has under a key, null if there is no such key.
    const Token* find(std::string_view key) const;

    /// The value as a tree.
    Value build();

private:
    struct KeyedValue {
        KeyedValue(std::string_view theKey, std::size_t theValue);
        /// Below 0 if this key comes before the other, above 0 if behind it.
        int compareKey(const KeyedValue& other) const;

        std::uint64_t start; // The first bytes of the key as a number, which orders most keys.
        std::string_view key;
        std::size_t value;
    };

    /// A container that is being filled, and what of it comes next: a token, or a place among the keys.
    struct Frame {
        ContainerNode* node;
        bool isArray;
        std::size_t next;
        std::size_t end;
        std::size_t firstKey;
    };

    static bool isContainer(const Token& token);
    Value startContainer(std::size_t index);
    void sortKeys(std::size_t open);
    Value valueAt(std::size_t index);
    Value scalar(const Token& token);
    ByteString nameOf(std::string_view text);
    void freeWhatIsLarge();

    void grow();

    std::vector<Token> m_tokens; // More than there are.
    std::size_t m_size = 0;
    std::string m_bytes;
    const char* m_texts = nullptr;
    std::vector<Frame> m_frames;
    std::vector<KeyedValue> m_keys;
    std::array<ByteString, 64> m_names;
};

inline void ValueTape::addNumber(double number)
{
    add({Token::Kind::Number, 0, 0, {number}});
}

inline void ValueTape::addReference(const Reference& reference)
{
    add({Token::Kind::Reference, reference.number, reference.generation, {}});
}

inline void ValueTape::addText(Token::Kind kind, std::size_t at, std::size_t size)
{
    Token token;
    token.kind = kind;
    token.at = at;
    token.size = size;
    add(token);
}

inline std::size_t ValueTape::open(Token::Kind kind)
{
    add({kind, 0, 0, {}});
    return m_size - 1;
}

inline void ValueTape::close(std::size_t open, std::uint64_t count)
{
    m_tokens[open].at = m_size;
    m_tokens[open].size = count;
    add({Token::Kind::Close, 0, 0, {}});
}

inline bool ValueTape::isContainer(const Token& token)
{
    return token.kind == Token::Kind::OpenArray || token.kind == Token::Kind::OpenDictionary;
}

inline std::size_t ValueTape::behind(std::size_t index) const
{
    const Token& token = m_tokens[index];
    return (isContainer(token) ? static_cast<std::size_t>(token.at) : index) + 1;
}

} // namespace Pdf::Parser
