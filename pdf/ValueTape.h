#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "pdf/Value.h"

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
        std::uint64_t size; ///< Of texts, in bytes.
    };
};

/// A value as the row of its tokens, as they were read.
///
/// Nearly all objects of a PDF are dropped as soon as they have been read. Their tokens go into the room of
/// those before them; a tree is built only of what is kept.
class ValueTape
{
public:
    void clear();

    void add(const Token& token) { m_tokens.push_back(token); }
    /// Adds a token with a text, which is what was appended to bytes() from `start` on.
    void addText(Token::Kind kind, std::size_t start);
    /// Closes the container that was opened by the token at `open`.
    void close(std::size_t open);
    void removeLast(std::size_t count) { m_tokens.resize(m_tokens.size() - count); }

    std::size_t size() const { return m_tokens.size(); }
    const Token& operator[](std::size_t index) const { return m_tokens[index]; }
    std::string_view text(const Token& token) const;
    std::string& bytes() { return m_bytes; }

    /// The index behind the value whose first token stands at `index`.
    std::size_t behind(std::size_t index) const;

    bool isDictionary() const { return m_tokens.front().kind == Token::Kind::OpenDictionary; }
    /// The first token of the value that the dictionary has under a key, null if there is no such key.
    const Token* find(std::string_view key) const;

    /// The value as a tree.
    Value build();

private:
    /// A container that is not complete while a tree is built, and what belongs to it.
    struct Frame {
        bool isArray;
        std::size_t firstValue;
        std::size_t firstKey;
    };
    struct KeyedValue {
        std::string_view key;
        std::size_t value;
    };

    void finishContainer();
    Array takeArray(std::size_t first);
    Dictionary takeDictionary(std::size_t first);
    void addScalar(const Token& token);

    std::vector<Token> m_tokens;
    std::string m_bytes;
    std::vector<Frame> m_frames;
    std::vector<Value> m_values;
    std::vector<KeyedValue> m_keys;
};

} // namespace Pdf::Parser
