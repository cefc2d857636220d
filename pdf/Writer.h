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

struct Object;

/// Appends PDF text to a string. Serves any number of values; nesting costs memory, not call stack.
class Writer
{
public:
    explicit Writer(std::string& text) : m_text(text) {}

    /// Throws as Value::serialize and leaves the string with a part of the value.
    void write(const Value& value);
    /// Throws as Object::serialize.
    void write(const Object& object);

    void writeName(std::string_view name);
    void writeReference(const Reference& reference);

private:
    /// A container that is being written, and what of it comes next.
    struct Frame {
        bool isArray;
        const Value* item;
        const Value* lastItem;
        const DictionaryEntry* entry;
        const DictionaryEntry* lastEntry;
    };

    char* roomFor(std::size_t size);
    void taken(const char* end) { m_buffered = static_cast<std::size_t>(end - m_buffer.data()); }
    void put(char character);
    void put(std::string_view text);
    void putValue(const Value& value);
    void putName(std::string_view name);
    void putReference(const Reference& reference);
    void putNumber(double number);
    void putInteger(std::uint64_t number);
    void putScalar(const Value& value);
    void flush();
    void begin(const Value& value);
    void beginItem(const Value& item);
    void beginEntry(const DictionaryEntry& entry);

    std::string& m_text;
    std::vector<Frame> m_frames;
    // Most of the text comes in pieces of a few characters, which are gathered here.
    std::array<char, 1024> m_buffer;
    std::size_t m_buffered = 0;
};

} // namespace Pdf
