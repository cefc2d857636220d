#include "Torv/BytePairs.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "Torv/BytePairsKernels.h"

using Torv::BytePair;

namespace
{

using Bytes = std::vector<std::uint8_t>;
using Pairs = std::array<BytePair, 2>;
using Find = std::size_t (*)(std::span<const std::uint8_t>, const Pairs&);

bool always()
{
    return true;
}

struct Kernel {
    const char* name;
    Find find;
    bool (*runsHere)();
};

constexpr Kernel kernels[] = {
    {"Chosen", Torv::findPair, always},
    {"Portable", Torv::BytePairsKernels::findPairPortable, always},
#if defined(__x86_64__)
    {"Sse2", Torv::BytePairsKernels::findPairSse2, always},
    {"Avx2", Torv::BytePairsKernels::findPairAvx2, Torv::BytePairsKernels::hasAvx2},
#endif
};

/// The rule itself, a byte at a time.
std::size_t findByRule(std::span<const std::uint8_t> bytes, const Pairs& pairs)
{
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        for (const BytePair& pair : pairs) {
            if (bytes[index] != pair.first)
                continue;
            if (index + 1 == bytes.size() || bytes[index + 1] == pair.second)
                return index;
        }
    }
    return bytes.size();
}

constexpr Pairs uelAndComment = {{{0x1B, '%'}, {'!', 'R'}}};

constexpr Pairs pairSets[] = {
    uelAndComment,
    {{{0x1B, '%'}, {0x1B, 'E'}}}, // one first byte
    {{{0x1B, '%'}, {'!', '%'}}},  // one second byte
    {{{0x1B, '!'}, {'!', 0x1B}}}, // each the other way round
    {{{0x1B, 0x1B}, {'!', '!'}}}, // doubled bytes
    {{{0x00, 0xFF}, {0xFF, 0x80}}},
    {{{'!', 'R'}, {'!', 'R'}}},
};

/// The bytes of the pairs and one that belongs to none.
Bytes alphabetOf(const Pairs& pairs)
{
    Bytes alphabet = {pairs[0].first, pairs[0].second, pairs[1].first, pairs[1].second, 'x'};
    std::sort(alphabet.begin(), alphabet.end());
    alphabet.erase(std::unique(alphabet.begin(), alphabet.end()), alphabet.end());
    return alphabet;
}

/// Gives each text of `size` bytes of the alphabet.
void forEachText(const Bytes& alphabet, std::size_t size, const std::function<void(const Bytes&)>& use)
{
    std::size_t count = 1;
    for (std::size_t index = 0; index < size; ++index)
        count *= alphabet.size();
    for (std::size_t number = 0; number < count; ++number) {
        Bytes text;
        for (std::size_t rest = number; text.size() < size; rest /= alphabet.size())
            text.push_back(alphabet[rest % alphabet.size()]);
        use(text);
    }
}

/// Memory that ends, and begins, at a page that nobody may touch.
class GuardedMemory
{
public:
    GuardedMemory()
        : m_page(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))),
          m_address(::mmap(nullptr, 3 * m_page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))
    {
        if (m_address == MAP_FAILED || ::mprotect(begin(), m_page, PROT_READ | PROT_WRITE) != 0)
            throw std::runtime_error("no guarded memory");
    }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
    ~GuardedMemory() { ::munmap(m_address, 3 * m_page); }

    std::uint8_t* begin() const { return static_cast<std::uint8_t*>(m_address) + m_page; }
    std::uint8_t* end() const { return begin() + m_page; }

private:
    std::size_t m_page;
    void* m_address;
};

class FindPair : public testing::TestWithParam<Kernel>
{
protected:
    void SetUp() override
    {
        if (!GetParam().runsHere())
            GTEST_SKIP() << "not on this machine";
    }

    static std::size_t find(std::span<const std::uint8_t> bytes, const Pairs& pairs)
    {
        return GetParam().find(bytes, pairs);
    }

    static std::size_t find(const std::string& text)
    {
        const Bytes bytes(text.begin(), text.end());
        return find(bytes, uelAndComment);
    }
};

std::string kernelName(const testing::TestParamInfo<Kernel>& info)
{
    return info.param.name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(BytePairs, FindPair, testing::ValuesIn(kernels), kernelName);

TEST_P(FindPair, GivesTheFirstPlaceOfEitherPair)
{
    EXPECT_EQ(find("ab\x1B%c"), 2U);
    EXPECT_EQ(find("ab!Rc"), 2U);
    EXPECT_EQ(find("!R\x1B%"), 0U);
    EXPECT_EQ(find("x\x1B%!R"), 1U);
}

TEST_P(FindPair, PassesASingleByteOfAPairAndAMixOfTwo)
{
    EXPECT_EQ(find("\x1B"
                   "E!x%R."),
              7U);
    EXPECT_EQ(find("\x1BR!%."), 5U);
    EXPECT_EQ(find("%\x1Bx"), 3U);
    EXPECT_EQ(find("\x1B\x1B%"), 1U);
}

TEST_P(FindPair, CountsAFirstByteAtTheEnd)
{
    EXPECT_EQ(find("\x1B"), 0U);
    EXPECT_EQ(find("ab!"), 2U);
    EXPECT_EQ(find("ab%"), 3U);
    EXPECT_EQ(find("abR"), 3U);
}

TEST_P(FindPair, GivesTheSizeIfThereIsNothing)
{
    EXPECT_EQ(find(""), 0U);
    EXPECT_EQ(find("a"), 1U);
    EXPECT_EQ(find(std::string(1000, 'a')), 1000U);
}

TEST_P(FindPair, TakesAnEmptySpanWithoutMemory)
{
    EXPECT_EQ(find(std::span<const std::uint8_t>(), uelAndComment), 0U);
}

TEST_P(FindPair, FollowsTheRuleForAllShortTexts)
{
    for (const Pairs& pairs : pairSets) {
        for (std::size_t size = 0; size <= 6; ++size) {
            forEachText(alphabetOf(pairs), size, [&](const Bytes& text) {
                ASSERT_EQ(find(text, pairs), findByRule(text, pairs)) << testing::PrintToString(text);
            });
        }
    }
}

TEST_P(FindPair, FollowsTheRuleForAllTextsOfFourOverTheSeamsOfRounds)
{
    constexpr std::size_t seams[] = {0, 13, 14, 15, 29, 30, 31, 32, 61, 62, 63, 125, 126, 127, 128, 196};
    Bytes bytes(200, 'x');
    for (const Pairs& pairs : pairSets) {
        for (const std::size_t seam : seams) {
            forEachText(alphabetOf(pairs), 4, [&](const Bytes& text) {
                std::fill(bytes.begin(), bytes.end(), 'x');
                std::copy(text.begin(), text.end(), bytes.data() + seam);
                ASSERT_EQ(find(bytes, pairs), findByRule(bytes, pairs))
                    << seam << testing::PrintToString(text);
            });
        }
    }
}

TEST_P(FindPair, FindsAPlantedPairAtEveryPlaceOfEveryLength)
{
    for (std::size_t size = 1; size <= 400; ++size) {
        for (std::size_t place = 0; place < size; ++place) {
            const BytePair& pair = uelAndComment[(size + place) % 2];
            Bytes bytes(size, 'x');
            bytes[place] = pair.first;
            if (place + 1 < size)
                bytes[place + 1] = pair.second;
            ASSERT_EQ(find(bytes, uelAndComment), place) << size;
        }
    }
}

TEST_P(FindPair, FindsAPlantedPairAmongHalvesOfPairs)
{
    // "%R!%R!...": each byte belongs to a pair, none are a pair, and the end counts if it is a '!'.
    constexpr std::uint8_t halves[] = {'%', 'R', '!'};
    for (std::size_t size = 0; size <= 400; ++size) {
        Bytes clean(size);
        for (std::size_t index = 0; index < size; ++index)
            clean[index] = halves[index % 3];
        ASSERT_EQ(find(clean, uelAndComment), size % 3 == 0 && size > 0 ? size - 1 : size);
        for (std::size_t place = 0; place + 1 < size; ++place) {
            Bytes bytes = clean;
            bytes[place] = 0x1B;
            bytes[place + 1] = '%';
            ASSERT_EQ(find(bytes, uelAndComment), place) << size;
        }
    }
}

TEST_P(FindPair, FindsTheSameWhateverTheAddressOfTheBytes)
{
    Bytes memory(64 + 300, 'x');
    for (std::size_t start = 0; start < 64; ++start) {
        for (std::size_t place = 0; place < 299; ++place) {
            memory[start + place] = '!';
            memory[start + place + 1] = 'R';
            ASSERT_EQ(find(std::span(memory.data() + start, 300), uelAndComment), place) << start;
            memory[start + place] = 'x';
            memory[start + place + 1] = 'x';
        }
    }
}

TEST_P(FindPair, FindsAPairAfterManyRounds)
{
    // Long enough for the rounds that look ahead, and cut at every place around their end.
    Bytes bytes(10000, 'x');
    for (std::size_t size = 4000; size < 4700; ++size) {
        ASSERT_EQ(find(std::span(bytes.data(), size), uelAndComment), size);
        bytes[size - 2] = 0x1B;
        bytes[size - 1] = '%';
        ASSERT_EQ(find(std::span(bytes.data(), size), uelAndComment), size - 2);
        ASSERT_EQ(find(std::span(bytes.data(), size - 1), uelAndComment), size - 2);
        ASSERT_EQ(find(bytes, uelAndComment), size - 2);
        bytes[size - 2] = 'x';
        bytes[size - 1] = 'x';
    }
}

TEST_P(FindPair, FollowsTheRuleForRandomBytes)
{
    std::mt19937 random(20);
    for (int repeat = 0; repeat < 300; ++repeat) {
        const Pairs& pairs = pairSets[static_cast<std::size_t>(repeat) % std::size(pairSets)];
        Bytes bytes(20000);
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
        for (std::span<const std::uint8_t> rest(bytes); !rest.empty();) {
            const std::size_t found = find(rest, pairs);
            ASSERT_EQ(found, findByRule(rest, pairs));
            rest = rest.subspan(std::min(found + 1, rest.size()));
        }
    }
}

TEST_P(FindPair, ReadsNothingOutsideTheBytes)
{
    const GuardedMemory memory;
    std::memset(memory.begin(), 'x', static_cast<std::size_t>(memory.end() - memory.begin()));

    for (std::size_t size = 0; size <= 400; ++size) {
        EXPECT_EQ(find(std::span(memory.end() - size, size), uelAndComment), size);
        EXPECT_EQ(find(std::span(memory.begin(), size), uelAndComment), size);
    }
    memory.end()[-1] = '!';
    for (std::size_t size = 1; size <= 400; ++size)
        EXPECT_EQ(find(std::span(memory.end() - size, size), uelAndComment), size - 1);
}

namespace
{

using Singles = std::array<std::uint8_t, 2>;
using FindByteOrPair = std::size_t (*)(std::span<const std::uint8_t>, const Singles&, BytePair);

struct ByteOrPairKernel {
    const char* name;
    FindByteOrPair find;
    bool (*runsHere)();
};

constexpr ByteOrPairKernel byteOrPairKernels[] = {
    {"Chosen", Torv::findByteOrPair, always},
    {"Portable", Torv::BytePairsKernels::findByteOrPairPortable, always},
#if defined(__x86_64__)
    {"Sse2", Torv::BytePairsKernels::findByteOrPairSse2, always},
    {"Avx2", Torv::BytePairsKernels::findByteOrPairAvx2, Torv::BytePairsKernels::hasAvx2},
#endif
};

struct Wanted {
    Singles singles;
    BytePair pair;
};

constexpr Wanted escapeFormFeedAndComment = {{0x1B, 0x0C}, {'!', 'R'}};

constexpr Wanted wantedSets[] = {
    escapeFormFeedAndComment,     {{0x1B, 0x0C}, {0x1B, 0x1B}}, // a pair that says nothing new
    {{0x1B, 0x1B}, {'!', '!'}},                                 // one single byte, a doubled one
    {{0x0C, 'R'}, {'!', 'R'}},                                  // a single byte that ends the pair
    {{0x00, 0xFF}, {0x80, 0x00}},
};

/// The rule itself, a byte at a time.
std::size_t findByRule(std::span<const std::uint8_t> bytes, const Wanted& wanted)
{
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        const bool isSingle = bytes[index] == wanted.singles[0] || bytes[index] == wanted.singles[1];
        const bool isLast = index + 1 == bytes.size();
        if (isSingle ||
            (bytes[index] == wanted.pair.first && (isLast || bytes[index + 1] == wanted.pair.second)))
            return index;
    }
    return bytes.size();
}

class FindByteOrPairTest : public testing::TestWithParam<ByteOrPairKernel>
{
protected:
    void SetUp() override
    {
        if (!GetParam().runsHere())
            GTEST_SKIP() << "not on this machine";
    }

    static std::size_t find(std::span<const std::uint8_t> bytes, const Wanted& wanted)
    {
        return GetParam().find(bytes, wanted.singles, wanted.pair);
    }

    static std::size_t find(const std::string& text)
    {
        return find(Bytes(text.begin(), text.end()), escapeFormFeedAndComment);
    }
};

std::string byteOrPairKernelName(const testing::TestParamInfo<ByteOrPairKernel>& info)
{
    return info.param.name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(BytePairs, FindByteOrPairTest, testing::ValuesIn(byteOrPairKernels),
                         byteOrPairKernelName);

TEST_P(FindByteOrPairTest, GivesTheFirstPlaceOfAByteOrThePair)
{
    EXPECT_EQ(find("ab\x1B."), 2U);
    EXPECT_EQ(find("a\f\x1B"), 1U);
    EXPECT_EQ(find("abc!R\f"), 3U);
    EXPECT_EQ(find("!x!!R"), 3U);
    EXPECT_EQ(find("R!x\f"), 3U);
}

TEST_P(FindByteOrPairTest, CountsAFirstByteOfThePairAtTheEnd)
{
    EXPECT_EQ(find("ab!"), 2U);
    EXPECT_EQ(find("\x1B"), 0U);
    EXPECT_EQ(find("abR"), 3U);
}

TEST_P(FindByteOrPairTest, GivesTheSizeIfThereIsNothing)
{
    EXPECT_EQ(find(""), 0U);
    EXPECT_EQ(find(std::string(1000, '!') + "x"), 1001U);
    EXPECT_EQ(find(std::span<const std::uint8_t>(), escapeFormFeedAndComment), 0U);
}

TEST_P(FindByteOrPairTest, FollowsTheRuleForAllShortTextsAlsoOverTheSeamsOfRounds)
{
    constexpr std::size_t seams[] = {0, 13, 14, 15, 29, 30, 31, 32, 61, 62, 63, 125, 126, 127, 128, 196};
    for (const Wanted& wanted : wantedSets) {
        const Bytes alphabet =
            alphabetOf({{{wanted.singles[0], wanted.singles[1]}, {wanted.pair.first, wanted.pair.second}}});
        for (std::size_t size = 0; size <= 5; ++size) {
            forEachText(alphabet, size, [&](const Bytes& text) {
                ASSERT_EQ(find(text, wanted), findByRule(text, wanted)) << testing::PrintToString(text);
            });
        }
        Bytes bytes(200, 'x');
        for (const std::size_t seam : seams) {
            forEachText(alphabet, 4, [&](const Bytes& text) {
                std::fill(bytes.begin(), bytes.end(), 'x');
                std::copy(text.begin(), text.end(), bytes.data() + seam);
                ASSERT_EQ(find(bytes, wanted), findByRule(bytes, wanted))
                    << seam << testing::PrintToString(text);
            });
        }
    }
}

TEST_P(FindByteOrPairTest, FindsAPlantedPlaceAtEveryPlaceOfEveryLength)
{
    constexpr BytePair planted[] = {{0x1B, 'y'}, {'\f', 'y'}, {'!', 'R'}};
    for (std::size_t size = 1; size <= 400; ++size) {
        for (std::size_t place = 0; place < size; ++place) {
            const BytePair& pair = planted[(size + place) % std::size(planted)];
            Bytes bytes(size, 'x');
            bytes[place] = pair.first;
            if (place + 1 < size)
                bytes[place + 1] = pair.second;
            ASSERT_EQ(find(bytes, escapeFormFeedAndComment), place) << size;
        }
    }
}

TEST_P(FindByteOrPairTest, FollowsTheRuleForRandomBytesAndManyRounds)
{
    std::mt19937 random(21);
    for (int repeat = 0; repeat < 100; ++repeat) {
        const Wanted& wanted = wantedSets[static_cast<std::size_t>(repeat) % std::size(wantedSets)];
        Bytes bytes(20000);
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
        for (std::span<const std::uint8_t> rest(bytes); !rest.empty();) {
            const std::size_t found = find(rest, wanted);
            ASSERT_EQ(found, findByRule(rest, wanted));
            rest = rest.subspan(std::min(found + 1, rest.size()));
        }
    }
    Bytes bytes(10000, 'x');
    for (std::size_t size = 4000; size < 4700; ++size) {
        ASSERT_EQ(find(std::span(bytes.data(), size), escapeFormFeedAndComment), size);
        bytes[size - 1] = '\f';
        ASSERT_EQ(find(bytes, escapeFormFeedAndComment), size - 1);
        bytes[size - 1] = 'x';
    }
}

TEST_P(FindByteOrPairTest, ReadsNothingOutsideTheBytes)
{
    const GuardedMemory memory;
    std::memset(memory.begin(), 'x', static_cast<std::size_t>(memory.end() - memory.begin()));

    for (std::size_t size = 0; size <= 400; ++size) {
        EXPECT_EQ(find(std::span(memory.end() - size, size), escapeFormFeedAndComment), size);
        EXPECT_EQ(find(std::span(memory.begin(), size), escapeFormFeedAndComment), size);
    }
    memory.end()[-1] = '!';
    for (std::size_t size = 1; size <= 400; ++size)
        EXPECT_EQ(find(std::span(memory.end() - size, size), escapeFormFeedAndComment), size - 1);
}

namespace
{

using Torv::NibbleSet;
using FindPairOfSets = std::size_t (*)(std::span<const std::uint8_t>, const NibbleSet&, const NibbleSet&);

struct PairOfSetsKernel {
    const char* name;
    FindPairOfSets find;
    bool (*runsHere)();
};

constexpr PairOfSetsKernel pairOfSetsKernels[] = {
    {"Chosen", Torv::findPairOfSets, always},
    {"Portable", Torv::BytePairsKernels::findPairOfSetsPortable, always},
#if defined(__x86_64__)
    {"Sse2", Torv::BytePairsKernels::findPairOfSetsSse2, always},
    {"Avx2", Torv::BytePairsKernels::findPairOfSetsAvx2, Torv::BytePairsKernels::hasAvx2},
#endif
};

/// The sets twice, for the searches and as the rule knows them.
struct WantedSets {
    NibbleSet firsts;
    NibbleSet seconds;
    Bytes firstBytes;
    Bytes secondBytes;
};

const WantedSets lineStarts{{'\n', '\r'}, {'%', 0x1B, 1, 4}, {'\n', '\r'}, {'%', 0x1B, 1, 4}};

const WantedSets setsOfBytes[] = {
    lineStarts,
    {{'a'}, {'a'}, {'a'}, {'a'}},
    {{0}, {0x7F, 0}, {0}, {0x7F, 0}},
    {{0x10, 0x7E}, {0x11, 0x12, 0x13}, {0x10, 0x7E}, {0x11, 0x12, 0x13}},
};

bool isIn(const Bytes& set, std::uint8_t byte)
{
    return std::find(set.begin(), set.end(), byte) != set.end();
}

/// The rule itself, a byte at a time.
std::size_t findByRule(std::span<const std::uint8_t> bytes, const WantedSets& wanted)
{
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (isIn(wanted.firstBytes, bytes[index]) &&
            (index + 1 == bytes.size() || isIn(wanted.secondBytes, bytes[index + 1])))
            return index;
    }
    return bytes.size();
}

class FindPairOfSetsTest : public testing::TestWithParam<PairOfSetsKernel>
{
protected:
    void SetUp() override
    {
        if (!GetParam().runsHere())
            GTEST_SKIP() << "not on this machine";
    }

    static std::size_t find(std::span<const std::uint8_t> bytes, const WantedSets& wanted)
    {
        return GetParam().find(bytes, wanted.firsts, wanted.seconds);
    }

    static std::size_t find(const std::string& text)
    {
        return find(Bytes(text.begin(), text.end()), lineStarts);
    }
};

std::string pairOfSetsKernelName(const testing::TestParamInfo<PairOfSetsKernel>& info)
{
    return info.param.name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(BytePairs, FindPairOfSetsTest, testing::ValuesIn(pairOfSetsKernels),
                         pairOfSetsKernelName);

TEST(NibbleSet, ContainsItsBytesAndNoOther)
{
    for (const WantedSets& wanted : setsOfBytes) {
        for (int byte = 0; byte < 256; ++byte) {
            EXPECT_EQ(wanted.seconds.contains(static_cast<std::uint8_t>(byte)),
                      isIn(wanted.secondBytes, static_cast<std::uint8_t>(byte)))
                << byte;
        }
    }
}

TEST_P(FindPairOfSetsTest, GivesTheFirstPlaceOfAnyPair)
{
    EXPECT_EQ(find("ab\n%"), 2U);
    EXPECT_EQ(find("a\r\x1B\n%"), 1U);
    EXPECT_EQ(find("\n\n\r\x01"), 2U);
    EXPECT_EQ(find("%\n\x04"), 1U);
    EXPECT_EQ(find("\na\r%"), 2U);
}

TEST_P(FindPairOfSetsTest, CountsAFirstByteAtTheEnd)
{
    EXPECT_EQ(find("ab\n"), 2U);
    EXPECT_EQ(find("\r"), 0U);
    EXPECT_EQ(find("ab%"), 3U);
}

TEST_P(FindPairOfSetsTest, GivesTheSizeIfThereIsNothing)
{
    EXPECT_EQ(find(""), 0U);
    EXPECT_EQ(find("%\n\x1Ax"), 4U);
    EXPECT_EQ(find("\n\xA5\n\x9B\n\x81\r\x84x"), 9U) << "bytes that end like those of the set";
    EXPECT_EQ(find("\x8A%\x8D%x"), 5U);
    EXPECT_EQ(find(std::string(1000, '%')), 1000U);
    EXPECT_EQ(find(std::span<const std::uint8_t>(), lineStarts), 0U);
}

TEST_P(FindPairOfSetsTest, FollowsTheRuleForAllShortTextsAlsoOverTheSeamsOfRounds)
{
    constexpr std::size_t seams[] = {0, 13, 14, 15, 29, 30, 31, 32, 61, 62, 63, 125, 126, 127, 128, 196};
    for (const WantedSets& wanted : setsOfBytes) {
        Bytes alphabet = {'x'};
        alphabet.insert(alphabet.end(), wanted.firstBytes.begin(), wanted.firstBytes.end());
        alphabet.insert(alphabet.end(), wanted.secondBytes.begin(), wanted.secondBytes.end());
        for (std::size_t size = 0; size <= 5; ++size) {
            forEachText(alphabet, size, [&](const Bytes& text) {
                ASSERT_EQ(find(text, wanted), findByRule(text, wanted)) << testing::PrintToString(text);
            });
        }
        Bytes bytes(200, 'x');
        for (const std::size_t seam : seams) {
            forEachText(alphabet, 3, [&](const Bytes& text) {
                std::fill(bytes.begin(), bytes.end(), 'x');
                std::copy(text.begin(), text.end(), bytes.data() + seam);
                ASSERT_EQ(find(bytes, wanted), findByRule(bytes, wanted))
                    << seam << testing::PrintToString(text);
            });
        }
    }
}

TEST_P(FindPairOfSetsTest, FindsAPlantedPairAtEveryPlaceOfEveryLength)
{
    for (std::size_t size = 1; size <= 400; ++size) {
        for (std::size_t place = 0; place < size; ++place) {
            Bytes bytes(size, 'x');
            bytes[place] = lineStarts.firstBytes[(size + place) % 2];
            if (place + 1 < size)
                bytes[place + 1] = lineStarts.secondBytes[(size + place) % 4];
            ASSERT_EQ(find(bytes, lineStarts), place) << size;
        }
    }
}

TEST_P(FindPairOfSetsTest, FollowsTheRuleForRandomBytesAndManyRounds)
{
    std::mt19937 random(22);
    for (int repeat = 0; repeat < 100; ++repeat) {
        const WantedSets& wanted = setsOfBytes[static_cast<std::size_t>(repeat) % std::size(setsOfBytes)];
        Bytes bytes(20000);
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
        for (std::span<const std::uint8_t> rest(bytes); !rest.empty();) {
            const std::size_t found = find(rest, wanted);
            ASSERT_EQ(found, findByRule(rest, wanted));
            rest = rest.subspan(std::min(found + 1, rest.size()));
        }
    }
    Bytes bytes(10000, 'x');
    for (std::size_t size = 4000; size < 4700; ++size) {
        ASSERT_EQ(find(std::span(bytes.data(), size), lineStarts), size);
        bytes[size - 1] = '\n';
        bytes[size] = '%';
        ASSERT_EQ(find(bytes, lineStarts), size - 1);
        bytes[size - 1] = 'x';
        bytes[size] = 'x';
    }
}

TEST_P(FindPairOfSetsTest, ReadsNothingOutsideTheBytes)
{
    const GuardedMemory memory;
    std::memset(memory.begin(), 'x', static_cast<std::size_t>(memory.end() - memory.begin()));

    for (std::size_t size = 0; size <= 400; ++size) {
        EXPECT_EQ(find(std::span(memory.end() - size, size), lineStarts), size);
        EXPECT_EQ(find(std::span(memory.begin(), size), lineStarts), size);
    }
    memory.end()[-1] = '\n';
    for (std::size_t size = 1; size <= 400; ++size)
        EXPECT_EQ(find(std::span(memory.end() - size, size), lineStarts), size - 1);
}
