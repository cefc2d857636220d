#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "JobParser/JobParserException.h"
#include "JobParser/languages/PostScriptParser.h"
#include "JobParser/model/ChunkRawData.h"
#include "tests/JobParser/languages/PostScriptReading.h"
#include "tests/support/SparseFile.h"

namespace JobParser::PostScript
{
namespace
{

/// The body read a byte at a time, without features: the kinds of tokens, and then the chunks.
class ByteRule
{
public:
    explicit ByteRule(std::string_view bytes) : m_bytes(bytes) {}

    std::string chunks()
    {
        std::size_t start = 0;
        for (;;) {
            const std::size_t token = m_at;
            const int kind = next();
            if (kind == failed)
                return m_words + "failure";
            if (kind == 1 || kind == 2) {
                flush(start, token);
                return m_words;
            }
            if (kind == 0) {
                flush(start, token);
                m_words += m_comment + ", ";
                start = m_at;
            }
        }
    }

private:
    static constexpr int failed = -1;

    bool ended() const { return m_at == m_bytes.size(); }
    static bool isEnd(char byte) { return byte == '\r' || byte == '\n'; }

    void flush(std::size_t start, std::size_t end)
    {
        if (start != end)
            m_words += "Raw " + std::to_string(start) + "+" + std::to_string(end - start) + ", ";
    }

    int next()
    {
        if (ended())
            return 2;
        if (m_bytes.substr(m_at).starts_with(exitLanguage))
            return 1;
        const char byte = m_bytes[m_at++];
        if (byte == 1) {
            if (!ended() && m_bytes[m_at] == 'M')
                ++m_at;
            return 5;
        }
        if (byte == 4)
            return 5;
        if (isEnd(byte))
            return lineEnd();
        return byte == '%' ? percent() : skip();
    }

    int lineEnd()
    {
        while (!ended() && isEnd(m_bytes[m_at]))
            ++m_at;
        return 4;
    }

    int skip()
    {
        while (!ended()) {
            if (isEnd(m_bytes[m_at++]))
                return lineEnd();
        }
        return failed;
    }

    int percent()
    {
        m_comment = "%";
        if (ended())
            return failed;
        const char byte = m_bytes[m_at++];
        if (isEnd(byte))
            return lineEnd();
        if (byte != '%')
            return skip();
        m_comment += '%';
        return comment();
    }

    int comment()
    {
        while (!ended()) {
            const char byte = m_bytes[m_at++];
            if (isEnd(byte)) {
                m_comment += byte;
                return commentEnd();
            }
            if (static_cast<unsigned char>(byte) < 32 || m_comment.size() > 254)
                return skip();
            m_comment += byte;
        }
        return failed;
    }

    int commentEnd()
    {
        while (!ended() && isEnd(m_bytes[m_at])) {
            const char byte = m_bytes[m_at++];
            if (m_comment.size() > 256)
                return lineEnd();
            m_comment += byte;
        }
        return 0;
    }

    std::string_view m_bytes;
    std::size_t m_at = 0;
    std::string m_comment;
    std::string m_words;
};

/// In the form of ByteRule; the body may lie anywhere in a larger file.
std::string chunksOrFailure(Reading& reading)
{
    std::string end;
    try {
        reading.parse();
    } catch (const JobParserException&) {
        end = "failure";
    }
    const std::string words = reading.chunks();
    return words + (words.empty() ? "" : ", ") + end;
}

TEST(PostScriptParser, FollowsTheByteRulesForAllShortBodies)
{
    const std::string alphabet = "%\n\x1B\x01\x04M";
    std::size_t count = 1;
    for (std::size_t size = 0; size <= 5; ++size, count *= alphabet.size()) {
        for (std::size_t number = 0; number < count; ++number) {
            std::string body;
            for (std::size_t rest = number; body.size() < size; rest /= alphabet.size())
                body += alphabet[rest % alphabet.size()];
            Reading reading(body);
            ASSERT_EQ(chunksOrFailure(reading), ByteRule(body).chunks()) << testing::PrintToString(body);
        }
    }
}

TEST(PostScriptParser, FollowsTheByteRulesForRandomBodies)
{
    const std::array<std::string, 14> pieces{
        "%",
        "%%",
        "\n",
        "\r\n",
        "\x1B",
        std::string(exitLanguage),
        "\x01",
        "\x04",
        "M",
        "text ",
        "\t",
        std::string(60, 'x'),
        std::string(250, 'y'),
        std::string(90, '\n'),
    };
    std::mt19937 random(5);
    for (int repeat = 0; repeat < 5000; ++repeat) {
        std::string body;
        for (std::size_t size = random() % 30; size > 0; --size)
            body += pieces[random() % pieces.size()];
        Reading reading(body);
        ASSERT_EQ(chunksOrFailure(reading), ByteRule(body).chunks()) << testing::PrintToString(body);
    }
}

TEST(PostScriptParser, FollowsTheByteRulesOverTheBordersOfViews)
{
    constexpr std::int64_t viewSize = 4194304;
    const std::string text = "a\n%%b\r\n\n%c\n\x04\x01M%%" + std::string(253, 'd') + "\r\n%%e\tf\n%%g\n";
    const auto length = static_cast<std::int64_t>(text.size());
    Reading reading(std::string(static_cast<std::size_t>(viewSize + 600), 'x'));
    SparseFile sparse(std::string(static_cast<std::size_t>(viewSize - 400), 'x'));
    for (std::int64_t shift = -length - 2; shift <= 2; ++shift) {
        sparse.resize(viewSize + shift);
        sparse.writeAt(viewSize - 400, std::string(static_cast<std::size_t>(400 + shift), 'x') + text);
        reading.job.file.open(sparse.path());
        reading.job.file.setPos(viewSize - 410);
        reading.job.job.chunks.clear();
        const std::string whole = std::string(static_cast<std::size_t>(410 + shift), 'x') + text;

        reading.parse();

        std::string expected;
        std::string found;
        Job moved;
        for (const auto& chunk : reading.job.job.chunks) {
            if (const auto* raw = dynamic_cast<const ChunkRawData*>(chunk.get()))
                moved.appendChunk(
                    std::make_shared<ChunkRawData>(raw->offset - (viewSize - 410), raw->m_size));
            else
                moved.appendChunk(chunk);
        }
        EXPECT_EQ(inWords(moved) + ", ", ByteRule(whole).chunks()) << shift;
    }
}

} // namespace
} // namespace JobParser::PostScript
