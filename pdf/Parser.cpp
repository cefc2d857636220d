#include "pdf/Parser.h"

#include <type_traits>
#include <utility>

#include "pdf/DocumentInfo.h"
#include "pdf/Lexer.h"
#include "pdf/Numbers.h"
#include "pdf/ObjectKeeper.h"
#include "pdf/ObjectSorting.h"
#include "pdf/ValueScanner.h"
#include "pdf/ValueTape.h"

#include "Torv/Ascii.h"

namespace Pdf::Parser
{
namespace
{

// An entry that a stream lacks stands in its dictionary as None, by which that is no table of references.
void addKey(Value& value, std::string_view key)
{
    if (std::holds_alternative<None>(value))
        value = Dictionary();
    auto& dictionary = std::get<Dictionary>(value);
    if (dictionary.find(key) == nullptr)
        dictionary.set(key, Value());
}

// Of the text that a ValueScanner has read before.
Value valueOf(const std::string& text)
{
    const auto* const begin = reinterpret_cast<const std::uint8_t*>(text.c_str());
    ValueTape tape;
    ValueScanner().scan(begin, begin + text.size() + 1, tape);
    return tape.build();
}

} // namespace

Parser::Parser(ISource& theSource)
    : source(theSource), m_lexer(std::make_unique<Lexer>(theSource)), m_tape(std::make_unique<ValueTape>()),
      m_keeper(std::make_unique<ObjectKeeper>())
{
}

Parser::~Parser() = default;

// Whoever calls from outside finds the source behind what was read, whatever comes of it.
template <typename Work> auto Parser::synced(Work work)
{
    try {
        if constexpr (std::is_void_v<decltype(work())>) {
            work();
            m_lexer->sync();
        } else {
            auto result = work();
            m_lexer->sync();
            return result;
        }
    } catch (...) {
        m_keeper->clear();
        m_lexer->sync();
        throw;
    }
}

std::uint8_t Parser::next()
{
    return synced([this] { return m_lexer->next(); });
}

void Parser::skip(unsigned long long count)
{
    synced([this, count] { m_lexer->skip(count); });
}

bool Parser::ws()
{
    return synced([this] { return m_lexer->ws(); });
}

bool Parser::isMatch(std::string_view bytes)
{
    return synced([this, bytes] { return m_lexer->isMatch(bytes); });
}

void Parser::match(std::string_view bytes)
{
    synced([this, bytes] { m_lexer->match(bytes); });
}

PdfParserException Parser::expected(std::string_view what) const
{
    return m_lexer->expected(what);
}

void Parser::_find_noBactraking(std::string_view bytes)
{
    synced([this, bytes] { m_lexer->findNoBacktracking(bytes); });
}

Value Parser::matchNumber(bool allowReference)
{
    return synced([this, allowReference] {
        m_tape->clear();
        m_tape->add(m_lexer->readNumber(allowReference));
        m_tape->finish();
        return m_tape->build();
    });
}

std::uint8_t Parser::current() const
{
    return m_lexer->current;
}

std::uint64_t Parser::position() const
{
    return m_lexer->position();
}

template <> void Parser::parseValue<void>()
{
    synced([this] { readFile(); });
    m_keeper->finish();
}

template <> unsigned int Parser::parseValue<unsigned int>()
{
    return synced([this] { return m_lexer->readInteger(); });
}

template <> Name Parser::parseValue<Name>()
{
    return synced([this] {
        std::string bytes;
        m_lexer->readName(bytes);
        return Name{bytes};
    });
}

template <> Reference Parser::parseValue<Reference>()
{
    return synced([this] { return m_lexer->readReference(); });
}

template <> Value Parser::parseValue<Value>()
{
    return synced([this] { return readValue(); });
}

template <> Object Parser::parseValue<Object>()
{
    auto object = synced([this] { return readObject(Purpose::Everything); });
    m_keeper->finish();
    return object;
}

void Parser::parseObjectStream(Object& object)
{
    synced([this, &object] { readObjectStream(object); });
    m_keeper->finish();
}

Value Parser::readValue()
{
    m_lexer->readValue(*m_tape);
    return m_tape->build();
}

void Parser::readFile()
{
    std::int64_t sectionOffset = 0;
    m_lexer->next();
    for (;;) {
        m_lexer->ws();
        switch (m_lexer->current) {
        case 's':
            if (!readStartxref())
                return;
            break;
        case 't': readTrailer(std::exchange(sectionOffset, 0)); break;
        case 'x':
            sectionOffset = static_cast<std::int64_t>(m_lexer->position());
            stepOverCrossReferences();
            break;
        default: {
            // Behind the end of a PDF whatever is no object belongs to somebody else.
            if (!Torv::Ascii::isDigit(m_lexer->current) && startxref != 0)
                return;
            const auto offset = static_cast<std::int64_t>(m_lexer->position());
            Object object = readObject(Purpose::Summary);
            if (m_valueText.empty())
                keep(offset, std::move(object));
            else
                keepText(object.reference.number, m_valueText);
            break;
        }
        }
    }
}

bool Parser::readStartxref()
{
    m_lexer->match("startxref");
    m_lexer->ws();
    startxref = m_lexer->readInteger();
    return m_lexer->ws();
}

void Parser::readTrailer(std::int64_t offset)
{
    m_lexer->match("trailer");
    m_lexer->ws();
    trailers[offset] = readValue();
}

// An entry has 20 bytes; with the count of those in a subsection, its last one is read again as white space.
void Parser::stepOverCrossReferences()
{
    constexpr std::uint64_t entrySize = 20;

    m_lexer->match("xref");
    for (;;) {
        m_lexer->ws();
        if (!Torv::Ascii::isDigit(m_lexer->current))
            return;
        m_lexer->readInteger();
        m_lexer->ws();
        const std::uint64_t count = m_lexer->readInteger();
        if (count == 0)
            continue;
        m_lexer->pass(count * entrySize - 1);
        m_lexer->next();
    }
}

Object Parser::readObject(Purpose purpose)
{
    Object object;
    object.reference = m_lexer->readReference();
    m_lexer->ws();
    m_lexer->match("obj");
    m_lexer->ws();
    m_lexer->readValue(*m_tape);
    const ObjectFacts facts = factsOf(*m_tape);
    const StreamHead head = streamHead(facts);
    if (head.length)
        m_lexer->expectSkip(toUnsigned32(*head.length));
    const bool isWanted = purpose == Purpose::Everything || facts.mayBeKept;
    m_valueText.clear();
    if (purpose == Purpose::Summary && isDeferred(facts, object.reference, *m_lexer, *m_tape))
        m_valueText = m_lexer->usualValue();
    else if (isWanted || head.holdsObjects)
        object.value = m_tape->build();
    m_lexer->ws();
    if (m_lexer->current == 's') {
        if (!m_valueText.empty())
            object.value = valueOf(std::exchange(m_valueText, {}));
        readStream(object, head, isWanted);
    }
    m_lexer->ws();
    m_lexer->match("endobj");
    return object;
}

// Whether the object will go where most are never looked at, and its text takes no more room than its tree.
bool Parser::isDeferred(const ObjectFacts& facts, const Reference& reference, const Lexer& lexer,
                        const ValueTape& tape) const
{
    return m_isFile && facts.isEmbeddable && reference.generation == 0 && !lexer.usualValue().empty() &&
           lexer.usualValue().size() <= tape.size() * sizeof(DictionaryEntry);
}

// What a stream depends on, taken while the value is still there to be looked at.
Parser::StreamHead Parser::streamHead(const ObjectFacts& facts) const
{
    StreamHead head;
    const Token::Kind kind = (*m_tape)[0].kind;
    head.mayHaveStream = kind == Token::Kind::OpenDictionary || kind == Token::Kind::None;
    head.holdsObjects = facts.type != nullptr && facts.type->kind == Token::Kind::Name &&
                        m_tape->text(*facts.type) == "ObjStm";
    if (facts.length != nullptr && facts.length->kind == Token::Kind::Number)
        head.length = facts.length->real;
    return head;
}

void Parser::readStream(Object& object, const StreamHead& head, bool isWanted)
{
    m_lexer->match("stream");
    skipLineEnd();
    if (!head.mayHaveStream)
        throw std::bad_variant_access();
    if (head.holdsObjects) {
        readObjectStream(object);
        m_lexer->ws();
        m_lexer->match("endstream");
        return;
    }
    if (!head.length || !passStreamByLength(*head.length))
        m_lexer->findEndOfStream();
    if (isWanted) {
        addKey(object.value, "Type");
        addKey(object.value, "Length");
    }
}

// Whether the stream ends where its length says. If not, what the length covers went by all the same.
bool Parser::passStreamByLength(double length)
{
    m_lexer->skip(toUnsigned32(length));
    m_lexer->ws();
    if (m_lexer->current != 'e')
        return false;
    m_lexer->match("endstream");
    return true;
}

// Data that follow at once are no failure.
void Parser::skipLineEnd()
{
    if (m_lexer->current == '\r')
        m_lexer->next();
    else if (m_lexer->current != '\n')
        return;
    if (m_lexer->current == '\n')
        m_lexer->next();
}

} // namespace Pdf::Parser
