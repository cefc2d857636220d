#include "Torv/Async/ProcessPool/Arguments.h"

namespace Torv::Async::ProcessPool
{
namespace
{

enum class State { Between, Word, Quoted, Escaped };

class Splitter
{
public:
    std::vector<std::string> split(std::string_view text)
    {
        State state = State::Between;
        for (const char byte : text)
            state = accept(state, byte);
        if (state != State::Between)
            endWord();
        return std::move(m_words);
    }

private:
    State accept(State state, char byte)
    {
        switch (state) {
        case State::Between: return byte == ' ' ? State::Between : inWord(byte);
        case State::Word: return byte == ' ' ? endWord() : inWord(byte);
        case State::Quoted:
            if (byte == '"')
                return State::Word;
            return byte == '\\' ? State::Escaped : take(byte, State::Quoted);
        case State::Escaped: return take(byte, State::Quoted);
        }
        return state;
    }

    State inWord(char byte) { return byte == '"' ? State::Quoted : take(byte, State::Word); }

    State take(char byte, State next)
    {
        m_word += byte;
        return next;
    }

    State endWord()
    {
        m_words.push_back(std::move(m_word));
        m_word.clear();
        return State::Between;
    }

    std::vector<std::string> m_words;
    std::string m_word;
};

} // namespace

std::vector<std::string> splitArguments(std::string_view text)
{
    return Splitter().split(text);
}

} // namespace Torv::Async::ProcessPool
