// Three functions, each in the forms that machines have. What is literal stands in a suite of the function's
// name; what holds for all of them, against the rule written out a byte at a time, in BytePairsForms.

#include "Torv/BytePairs.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <ostream>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "Torv/BytePairsKernels.h"

using Torv::BytePair;
using Torv::NibbleSet;
namespace Kernels = Torv::BytePairsKernels;

namespace
{

using Bytes = std::vector<std::uint8_t>;
using Span = std::span<const std::uint8_t>;

/// The byte behind a place; none at the end, where a byte that may begin something counts.
using Next = std::optional<std::uint8_t>;

bool isOrEnds(Next next, std::uint8_t wanted)
{
    return !next || *next == wanted;
}

bool isIn(const Bytes& set, std::uint8_t byte)
{
    return std::find(set.begin(), set.end(), byte) != set.end();
}

/// What findPair looks for.
struct WantedPairs {
    std::array<BytePair, 2> pairs;

    bool isHit(std::uint8_t byte, Next next) const
    {
        return (byte == pairs[0].first && isOrEnds(next, pairs[0].second)) ||
               (byte == pairs[1].first && isOrEnds(next, pairs[1].second));
    }
    Bytes bytes() const { return {pairs[0].first, pairs[0].second, pairs[1].first, pairs[1].second}; }
    std::vector<BytePair> hits() const { return {pairs[0], pairs[1]}; }
};

/// What findByteOrPair looks for.
struct WantedByteOrPair {
    std::array<std::uint8_t, 2> singles;
    BytePair pair;

    bool isHit(std::uint8_t byte, Next next) const
    {
        return byte == singles[0] || byte == singles[1] ||
               (byte == pair.first && isOrEnds(next, pair.second));
    }
    Bytes bytes() const { return {singles[0], singles[1], pair.first, pair.second}; }
    std::vector<BytePair> hits() const { return {{singles[0], 'y'}, {singles[1], 'y'}, pair}; }
};

/// What findPairOfSets looks for: the sets, and as the rule knows them.
struct WantedSets {
    NibbleSet firsts;
    NibbleSet seconds;
    Bytes firstBytes;
    Bytes secondBytes;

    bool isHit(std::uint8_t byte, Next next) const
    {
        return isIn(firstBytes, byte) && (!next || isIn(secondBytes, *next));
    }
    Bytes bytes() const
    {
        Bytes both = firstBytes;
        both.insert(both.end(), secondBytes.begin(), secondBytes.end());
        return both;
    }
    std::vector<BytePair> hits() const
    {
        std::vector<BytePair> pairs;
        for (const std::uint8_t first : firstBytes)
            for (const std::uint8_t second : secondBytes)
                pairs.push_back({first, second});
        return pairs;
    }
};

// The first of each is what the literal tests look for.
const WantedPairs wantedPairs[] = {
    {{{{0x1B, '%'}, {'!', 'R'}}}},    {{{{0x1B, '%'}, {0x1B, 'E'}}}}, // one first byte
    {{{{0x1B, '%'}, {'!', '%'}}}},                                    // one second byte
    {{{{0x1B, '!'}, {'!', 0x1B}}}},                                   // each the other way round
    {{{{0x1B, 0x1B}, {'!', '!'}}}},                                   // doubled bytes
    {{{{0x00, 0xFF}, {0xFF, 0x80}}}}, {{{{'!', 'R'}, {'!', 'R'}}}},
};

const WantedByteOrPair wantedBytesOrPairs[] = {
    {{0x1B, 0x0C}, {'!', 'R'}},   {{0x1B, 0x0C}, {0x1B, 0x1B}}, // a pair that says nothing new
    {{0x1B, 0x1B}, {'!', '!'}},                                 // one single byte, a doubled one
    {{0x0C, 'R'}, {'!', 'R'}},                                  // a single byte that ends the pair
    {{0x00, 0xFF}, {0x80, 0x00}},
};

const WantedSets wantedSets[] = {
    {{'\n', '\r'}, {'%', 0x1B, 1, 4}, {'\n', '\r'}, {'%', 0x1B, 1, 4}},
    {{'a'}, {'a'}, {'a'}, {'a'}},
    {{0}, {0x7F, 0}, {0}, {0x7F, 0}},
    {{0x10, 0x7E}, {0x11, 0x12, 0x13}, {0x10, 0x7E}, {0x11, 0x12, 0x13}},
};

/// A function that has been told what to look for.
struct Search {
    std::function<std::size_t(Span)> find;
    std::function<bool(std::uint8_t, Next)> isHit;
    Bytes alphabet;             ///< The bytes that matter, and one that does not.
    std::vector<BytePair> hits; ///< Of which each is found.

    std::size_t findByRule(Span bytes) const
    {
        for (std::size_t at = 0; at < bytes.size(); ++at) {
            if (isHit(bytes[at], at + 1 < bytes.size() ? Next(bytes[at + 1]) : Next()))
                return at;
        }
        return bytes.size();
    }
};

/// A form of one of the functions, and what it is asked for.
struct Form {
    std::string name;
    bool runsHere;
    std::vector<Search> searches;
};

std::ostream& operator<<(std::ostream& stream, const Form& form)
{
    return stream << form.name;
}

template <typename Find, typename Wanted, std::size_t count>
Form formOf(const char* name, Find find, const Wanted (&wanted)[count], bool runsHere = true)
{
    Form form{name, runsHere, {}};
    for (const Wanted& one : wanted) {
        Bytes alphabet = one.bytes();
        alphabet.push_back('x');
        std::sort(alphabet.begin(), alphabet.end());
        alphabet.erase(std::unique(alphabet.begin(), alphabet.end()), alphabet.end());
        form.searches.push_back({[find, &one](Span bytes) { return find(bytes, one); },
                                 [&one](std::uint8_t byte, Next next) { return one.isHit(byte, next); },
                                 alphabet, one.hits()});
    }
    return form;
}

template <std::size_t find(Span, const std::array<BytePair, 2>&)>
Form pairForm(const char* name, bool runsHere = true)
{
    const auto call = [](Span bytes, const WantedPairs& wanted) { return find(bytes, wanted.pairs); };
    return formOf(name, call, wantedPairs, runsHere);
}

template <std::size_t find(Span, const std::array<std::uint8_t, 2>&, BytePair)>
Form byteOrPairForm(const char* name, bool runsHere = true)
{
    const auto call = [](Span bytes, const WantedByteOrPair& wanted) {
        return find(bytes, wanted.singles, wanted.pair);
    };
    return formOf(name, call, wantedBytesOrPairs, runsHere);
}

template <std::size_t find(Span, const NibbleSet&, const NibbleSet&)>
Form setsForm(const char* name, bool runsHere = true)
{
    const auto call = [](Span bytes, const WantedSets& wanted) {
        return find(bytes, wanted.firsts, wanted.seconds);
    };
    return formOf(name, call, wantedSets, runsHere);
}

std::vector<Form> pairForms()
{
    std::vector<Form> forms{pairForm<Torv::findPair>("FindPairChosen"),
                            pairForm<Kernels::findPairPortable>("FindPairPortable")};
#if defined(__x86_64__)
    forms.push_back(pairForm<Kernels::findPairSse2>("FindPairSse2"));
    forms.push_back(pairForm<Kernels::findPairAvx2>("FindPairAvx2", Kernels::hasAvx2()));
#endif
    return forms;
}

std::vector<Form> byteOrPairForms()
{
    std::vector<Form> forms{byteOrPairForm<Torv::findByteOrPair>("FindByteOrPairChosen"),
                            byteOrPairForm<Kernels::findByteOrPairPortable>("FindByteOrPairPortable")};
#if defined(__x86_64__)
    forms.push_back(byteOrPairForm<Kernels::findByteOrPairSse2>("FindByteOrPairSse2"));
    forms.push_back(byteOrPairForm<Kernels::findByteOrPairAvx2>("FindByteOrPairAvx2", Kernels::hasAvx2()));
#endif
    return forms;
}

std::vector<Form> setsForms()
{
    std::vector<Form> forms{setsForm<Torv::findPairOfSets>("FindPairOfSetsChosen"),
                            setsForm<Kernels::findPairOfSetsPortable>("FindPairOfSetsPortable")};
#if defined(__x86_64__)
    forms.push_back(setsForm<Kernels::findPairOfSetsSse2>("FindPairOfSetsSse2"));
    forms.push_back(setsForm<Kernels::findPairOfSetsAvx2>("FindPairOfSetsAvx2", Kernels::hasAvx2()));
#endif
    return forms;
}

std::vector<Form> allForms()
{
    std::vector<Form> forms = pairForms();
    for (const auto& others : {byteOrPairForms(), setsForms()})
        forms.insert(forms.end(), others.begin(), others.end());
    return forms;
}

std::string formName(const testing::TestParamInfo<Form>& info)
{
    return info.param.name;
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

class BytePairsForms : public testing::TestWithParam<Form>
{
protected:
    void SetUp() override
    {
        if (!GetParam().runsHere)
            GTEST_SKIP() << "not on this machine";
    }

    static const std::vector<Search>& searches() { return GetParam().searches; }
    static const Search& usual() { return searches().front(); }

    static std::size_t find(const std::string& text) { return usual().find(Bytes(text.begin(), text.end())); }
};

class FindPair : public BytePairsForms
{
};

class FindByteOrPair : public BytePairsForms
{
};

class FindPairOfSets : public BytePairsForms
{
};

} // namespace

INSTANTIATE_TEST_SUITE_P(BytePairs, BytePairsForms, testing::ValuesIn(allForms()), formName);
INSTANTIATE_TEST_SUITE_P(BytePairs, FindPair, testing::ValuesIn(pairForms()), formName);
INSTANTIATE_TEST_SUITE_P(BytePairs, FindByteOrPair, testing::ValuesIn(byteOrPairForms()), formName);
INSTANTIATE_TEST_SUITE_P(BytePairs, FindPairOfSets, testing::ValuesIn(setsForms()), formName);

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

TEST_P(FindPair, FindsAPlantedPairAmongHalvesOfPairs)
{
    // "%R!%R!...": each byte belongs to a pair, none are a pair, and the end counts if it is a '!'.
    constexpr std::uint8_t halves[] = {'%', 'R', '!'};
    for (std::size_t size = 0; size <= 400; ++size) {
        Bytes clean(size);
        for (std::size_t index = 0; index < size; ++index)
            clean[index] = halves[index % 3];
        ASSERT_EQ(usual().find(clean), size % 3 == 0 && size > 0 ? size - 1 : size);
        for (std::size_t place = 0; place + 1 < size; ++place) {
            Bytes bytes = clean;
            bytes[place] = 0x1B;
            bytes[place + 1] = '%';
            ASSERT_EQ(usual().find(bytes), place) << size;
        }
    }
}

TEST_P(FindByteOrPair, GivesTheFirstPlaceOfAByteOrThePair)
{
    EXPECT_EQ(find("ab\x1B."), 2U);
    EXPECT_EQ(find("a\f\x1B"), 1U);
    EXPECT_EQ(find("abc!R\f"), 3U);
    EXPECT_EQ(find("!x!!R"), 3U);
    EXPECT_EQ(find("R!x\f"), 3U);
}

TEST_P(FindByteOrPair, CountsAFirstByteOfThePairAtTheEnd)
{
    EXPECT_EQ(find("ab!"), 2U);
    EXPECT_EQ(find("\x1B"), 0U);
    EXPECT_EQ(find("abR"), 3U);
}

TEST_P(FindByteOrPair, GivesTheSizeIfThereIsNothing)
{
    EXPECT_EQ(find(""), 0U);
    EXPECT_EQ(find(std::string(1000, '!') + "x"), 1001U);
}

TEST_P(FindPairOfSets, GivesTheFirstPlaceOfAnyPair)
{
    EXPECT_EQ(find("ab\n%"), 2U);
    EXPECT_EQ(find("a\r\x1B\n%"), 1U);
    EXPECT_EQ(find("\n\n\r\x01"), 2U);
    EXPECT_EQ(find("%\n\x04"), 1U);
    EXPECT_EQ(find("\na\r%"), 2U);
}

TEST_P(FindPairOfSets, CountsAFirstByteAtTheEnd)
{
    EXPECT_EQ(find("ab\n"), 2U);
    EXPECT_EQ(find("\r"), 0U);
    EXPECT_EQ(find("ab%"), 3U);
}

TEST_P(FindPairOfSets, GivesTheSizeIfThereIsNothing)
{
    EXPECT_EQ(find(""), 0U);
    EXPECT_EQ(find("%\n\x1Ax"), 4U);
    EXPECT_EQ(find("\n\xA5\n\x9B\n\x81\r\x84x"), 9U) << "bytes that end like those of the set";
    EXPECT_EQ(find("\x8A%\x8D%x"), 5U);
    EXPECT_EQ(find(std::string(1000, '%')), 1000U);
}

TEST(NibbleSet, ContainsItsBytesAndNoOther)
{
    for (const WantedSets& wanted : wantedSets) {
        for (int byte = 0; byte < 256; ++byte) {
            EXPECT_EQ(wanted.seconds.contains(static_cast<std::uint8_t>(byte)),
                      isIn(wanted.secondBytes, static_cast<std::uint8_t>(byte)))
                << byte;
        }
    }
}

TEST_P(BytePairsForms, TakeAnEmptySpanWithoutMemory)
{
    EXPECT_EQ(usual().find(Span()), 0U);
}

TEST_P(BytePairsForms, FollowTheRuleForAllShortTexts)
{
    constexpr std::size_t mostTexts = 20000;
    for (const Search& search : searches()) {
        std::size_t texts = 1;
        for (std::size_t size = 0; texts <= mostTexts; ++size, texts *= search.alphabet.size()) {
            forEachText(search.alphabet, size, [&](const Bytes& text) {
                ASSERT_EQ(search.find(text), search.findByRule(text)) << testing::PrintToString(text);
            });
        }
    }
}

TEST_P(BytePairsForms, FollowTheRuleForAllTextsOfThreeOverTheSeamsOfRounds)
{
    constexpr std::size_t seams[] = {0,  13, 14, 15,  29,  30,  31,  32,  61,  62,
                                     63, 93, 94, 125, 126, 127, 128, 157, 158, 196};
    Bytes bytes(200, 'x');
    for (const Search& search : searches()) {
        for (const std::size_t seam : seams) {
            forEachText(search.alphabet, 3, [&](const Bytes& text) {
                std::fill(bytes.begin(), bytes.end(), 'x');
                std::copy(text.begin(), text.end(), bytes.data() + seam);
                ASSERT_EQ(search.find(bytes), search.findByRule(bytes))
                    << seam << testing::PrintToString(text);
            });
        }
    }
}

TEST_P(BytePairsForms, FindWhatIsPlantedAtEveryPlaceOfEveryLength)
{
    const std::vector<BytePair>& hits = usual().hits;
    for (std::size_t size = 1; size <= 400; ++size) {
        for (std::size_t place = 0; place < size; ++place) {
            const BytePair& hit = hits[(size + place) % hits.size()];
            Bytes bytes(size, 'x');
            bytes[place] = hit.first;
            if (place + 1 < size)
                bytes[place + 1] = hit.second;
            ASSERT_EQ(usual().find(bytes), place) << size;
        }
    }
}

TEST_P(BytePairsForms, FindTheSameWhateverTheAddressOfTheBytes)
{
    const BytePair hit = usual().hits.back();
    Bytes memory(64 + 300, 'x');
    for (std::size_t start = 0; start < 64; ++start) {
        for (std::size_t place = 0; place < 299; ++place) {
            memory[start + place] = hit.first;
            memory[start + place + 1] = hit.second;
            ASSERT_EQ(usual().find(Span(memory.data() + start, 300)), place) << start;
            memory[start + place] = 'x';
            memory[start + place + 1] = 'x';
        }
    }
}

TEST_P(BytePairsForms, FindTheFirstOfTwoInARound)
{
    const BytePair hit = usual().hits.front();
    for (std::size_t first = 300; first < 600; ++first) {
        for (std::size_t second = first + 2; second < first + 130; ++second) {
            Bytes bytes(800, 'x');
            bytes[first] = bytes[second] = hit.first;
            bytes[first + 1] = bytes[second + 1] = hit.second;
            ASSERT_EQ(usual().find(bytes), first) << second;
        }
    }
}

TEST_P(BytePairsForms, FindWhatStandsBehindManyRounds)
{
    // Long enough for the rounds that look ahead, and cut at every place around their end.
    const BytePair hit = usual().hits.front();
    Bytes bytes(10000, 'x');
    for (std::size_t size = 4000; size < 4700; ++size) {
        ASSERT_EQ(usual().find(Span(bytes.data(), size)), size);
        bytes[size - 2] = hit.first;
        bytes[size - 1] = hit.second;
        ASSERT_EQ(usual().find(Span(bytes.data(), size)), size - 2);
        ASSERT_EQ(usual().find(Span(bytes.data(), size - 1)), size - 2);
        ASSERT_EQ(usual().find(bytes), size - 2);
        bytes[size - 2] = 'x';
        bytes[size - 1] = 'x';
    }
}

TEST_P(BytePairsForms, FollowTheRuleForRandomBytes)
{
    std::mt19937 random(20);
    for (std::size_t repeat = 0; repeat < 100; ++repeat) {
        const Search& search = searches()[repeat % searches().size()];
        Bytes bytes(20000);
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
        for (Span rest(bytes); !rest.empty();) {
            const std::size_t found = search.find(rest);
            ASSERT_EQ(found, search.findByRule(rest));
            rest = rest.subspan(std::min(found + 1, rest.size()));
        }
    }
}

TEST_P(BytePairsForms, ReadNothingOutsideTheBytes)
{
    const GuardedMemory memory;
    std::memset(memory.begin(), 'x', static_cast<std::size_t>(memory.end() - memory.begin()));

    for (std::size_t size = 0; size <= 400; ++size) {
        EXPECT_EQ(usual().find(Span(memory.end() - size, size)), size);
        EXPECT_EQ(usual().find(Span(memory.begin(), size)), size);
    }
    memory.end()[-1] = usual().hits.back().first;
    for (std::size_t size = 1; size <= 400; ++size)
        EXPECT_EQ(usual().find(Span(memory.end() - size, size)), size - 1);
}
