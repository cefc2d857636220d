#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "JobParser/pclxl/PclXLParser.h"
#include "tests/JobParser/pclxl/PclXlWalk.h"
#include "tests/support/PclXlBytes.h"
#include "tests/support/SparseFile.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;

/// What the rules make of a stream, a byte at a time; data of values are not looked at.
class ByteRules
{
public:
    explicit ByteRules(std::string_view bytes) : m_bytes(bytes) {}

    std::string walk()
    {
        std::size_t operatorStart = 0;
        for (;;) {
            const int tag = next();
            if (m_failure.empty() && tag == 0x42) {
                flush(m_at);
                return m_words;
            }
            if (m_failure.empty() && tag >= 0x41 && tag < 0xC0) {
                if (tag == 0x41 || tag == 0x43 || tag == 0x44)
                    take(tag, operatorStart);
                operatorStart = m_at;
            } else if (m_failure.empty()) {
                stepOver(tag);
            }
            if (!m_failure.empty())
                return m_failure;
        }
    }

private:
    int next()
    {
        if (m_at >= m_bytes.size()) {
            fail(endOfFile);
            return 0;
        }
        return static_cast<std::uint8_t>(m_bytes[m_at++]);
    }

    std::int64_t number(int bytes)
    {
        std::int64_t value = 0;
        for (int index = 0; index < bytes; ++index)
            value += std::int64_t{next()} << (8 * index);
        return value;
    }

    void fail(const std::string& message)
    {
        if (m_failure.empty())
            m_failure = message;
    }

    void advance(std::int64_t count)
    {
        if (!m_failure.empty())
            return;
        if (count <= 0)
            fail(assertion);
        else if (count <= static_cast<std::int64_t>(m_bytes.size() - m_at))
            m_at += static_cast<std::size_t>(count);
    }

    void stepOver(int tag)
    {
        constexpr std::array<int, 8> sizes{1, 2, 4, 2, 4, 4, -1, -1};
        if (tag == 0xFA || tag == 0xFB) {
            advance(number(tag == 0xFA ? 4 : 1));
            return;
        }
        std::int64_t size = -1;
        if (tag >= 0xC0 && tag < 0xF8)
            size = std::int64_t{sizes[static_cast<std::size_t>(tag % 8)]} << (tag / 16 % 4);
        if (tag == 0xFF || size < -1) {
            fail("Invalid control byte %02X / " + std::to_string(tag));
            return;
        }
        if (tag / 8 % 2 == 1)
            size *= length();
        if (size != 0)
            advance(size);
        const int id = next();
        if (id != 0xF8 && id != 0xF9)
            fail("Attribute expected instead %02X" + (id == 0 ? std::string() : " / " + std::to_string(id)));
        number(id == 0xF9 ? 2 : 1);
    }

    std::int64_t length()
    {
        const int type = next();
        if (type >= 0xC0 && type <= 0xC2)
            return number(type == 0xC0 ? 1 : type == 0xC1 ? 2 : 4);
        constexpr auto digits = "0123456789ABCDEF"sv;
        fail(std::string("Invalid array length type ") + digits[static_cast<std::size_t>(type / 16)] +
             digits[static_cast<std::size_t>(type % 16)]);
        return 0;
    }

    void flush(std::size_t end)
    {
        if (end > m_rawStart)
            add("raw", m_rawStart, end - 1);
        m_rawStart = end;
    }

    void take(int tag, std::size_t start)
    {
        flush(start);
        add(std::string(1, static_cast<char>(tag)), start, m_at - 1);
        m_rawStart = m_at;
    }

    void add(const std::string& word, std::size_t start, std::size_t end)
    {
        m_words += m_words.empty() ? "" : ", ";
        m_words += word + " " + std::to_string(start) + "-" + std::to_string(end);
    }

    std::string_view m_bytes;
    std::size_t m_at = 0;
    std::size_t m_rawStart = 0;
    std::string m_words;
    std::string m_failure;
};

/// An item of a stream: now and then one that is malformed or reaches far.
PclXlBytes randomItem(std::mt19937& random)
{
    constexpr std::array tags{0xC0, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xD0, 0xD1, 0xD2, 0xD3, 0xD5,
                              0xE0, 0xE1, 0xE2, 0xE3, 0xF1, 0xF2, 0xC0, 0xD3, 0xC1, 0xD1};
    const auto below = [&](unsigned limit) { return static_cast<int>(random() % limit); };
    // Taken for a tag, each byte of the data ends the stream or the value.
    const char filling = below(2) == 0 ? 'B' : '\xF8';
    const auto data = [&](std::int64_t size) { return std::string(static_cast<std::size_t>(size), filling); };
    const int tag = tags[random() % tags.size()];
    const int base = baseDataSize[static_cast<std::size_t>(tag)];
    PclXlBytes bytes;
    switch (below(40)) {
    case 0: return bytes.op(0x41 + 2 * below(2));
    case 1: return bytes.op(0x44);
    case 2: return bytes.embedded(data(below(64) != 0 ? 1 + below(300) : 0));
    case 3: return bytes.shortEmbedded(data(below(64) != 0 ? 1 + below(255) : 0));
    case 4: return bytes.op(tag).raw(data(base)).wideId(below(256), 2);
    case 5: return below(8) != 0 ? bytes.op(0x50) : bytes.op(below(256));
    case 6: return below(8) != 0 ? bytes.op(0x50) : bytes.array(tag | 8, below(100000), 4);
    case 7: {
        const int count = below(20);
        const int lengthBytes = 1 << below(3);
        return bytes.array(tag | 8, count, lengthBytes).raw(data(std::int64_t{base} * count)).id(2);
    }
    case 8:
    case 9:
    case 10:
    case 11: {
        const int count = below(256);
        return bytes.array(0xC8, count, 1).raw(data(count)).id(textData);
    }
    case 12:
    case 13:
    case 14:
    case 15: return bytes.op(0x48 + below(7));
    case 16:
    case 17:
    case 18: return bytes.op(0x50 + below(0x70));
    default: return bytes.value(tag, data(base), 2);
    }
}

std::string randomStream(std::mt19937& random, std::size_t size)
{
    PclXlBytes bytes;
    while (bytes.str().size() < size)
        bytes.raw(randomItem(random).str());
    return bytes.op(0x42).str();
}

TEST(PclXLParser, WalksInBulkAsTheRulesDoByteByByte)
{
    std::mt19937 random(1);

    for (int round = 0; round < 3000; ++round) {
        const std::string bytes = randomStream(random, random() % 1500);
        EXPECT_EQ(walked(bytes), ByteRules(bytes).walk()) << round;
    }
}

TEST(PclXLParser, WalksAnyBytesAsTheRulesDo)
{
    std::mt19937 random(2);

    for (int round = 0; round < 3000; ++round) {
        std::string bytes = randomStream(random, 400);
        bytes[random() % bytes.size()] = static_cast<char>(random());
        bytes.resize(random() % bytes.size());
        EXPECT_EQ(walked(bytes), ByteRules(bytes).walk()) << round;
    }
}

TEST(PclXLParser, WalksAcrossViewsWhereverTheyEnd)
{
    // The first view ends within each of these bytes once.
    const std::string tail = PclXlBytes()
                                 .text("some text", textData)
                                 .op(0xA8)
                                 .value(0xD3, "abcd", 76)
                                 .op(0x6B)
                                 .embedded(std::string(200, 'x'))
                                 .ubyte(2, 9)
                                 .op(0x43)
                                 .op(0x42)
                                 .str();
    SparseFile sparse;

    for (std::int64_t before = 0; before <= std::ssize(tail); ++before) {
        const std::int64_t start = viewSize - before;
        const std::string begin = PclXlBytes().op(0xFA).number(start - 5, 4).str();
        sparse.resize(start);
        sparse.writeAt(0, begin);
        sparse.writeAt(start, tail);
        JobFile file;
        file.open(sparse.path());

        const std::int64_t last = start + std::ssize(tail) - 1;
        // The operator 0x6B stands 22 bytes into the tail.
        const std::string page = std::to_string(start + 23) + "-" + std::to_string(last - 1);
        EXPECT_EQ(walked(file), "raw 0-" + std::to_string(start + 22) + ", C " + page + ", raw " +
                                    std::to_string(last) + "-" + std::to_string(last))
            << before;
        sparse.resize(0);
    }
}

TEST(PclXLParser, StepsOverDataOfGigabytesWithoutReadingThem)
{
    constexpr std::int64_t length = 0xFFFFFFFF;
    SparseFile sparse(PclXlBytes().op(0xB0).op(0xFA).number(length, 4).str());
    sparse.resize(6 + length);
    sparse.writeAt(6 + length, "CB");
    JobFile file;
    file.open(sparse.path());

    EXPECT_EQ(walked(file), "raw 0-0, C 1-4294967301, raw 4294967302-4294967302");
}

} // namespace
} // namespace JobParser
