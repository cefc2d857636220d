#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "Torv/Export.h"
#include "Torv/Number.h"

namespace Torv
{

/// A regular expression over bytes that takes time linear in the subject and a bounded stack, whatever the
/// subject holds. Compiled when it is built; safe to use from several threads afterwards.
///
/// The syntax is what ECMAScript and RE2 have in common. `\s` means the bytes 9 to 13 and blank, `.` any byte
/// but line feed and carriage return, and `^` and `$` the ends of the subject. The constructor throws
/// GenericException for a pattern that does not compile, and for `\S` within brackets and `\Q`.
/// Alternatives that begin with the same byte from 80 on are not found.
class Regex
{
public:
    /// Ignoring the case concerns the letters of ASCII, and those of Latin-1 if the pattern itself holds
    /// bytes from C0 on.
    enum class Case { Exact, Ignored };

    explicit Regex(std::string_view pattern, Case letterCase = Case::Exact);
    ~Regex();
    Regex(const Regex&) = delete;
    Regex& operator=(const Regex&) = delete;

    /// A group of the leftmost match: absent if nothing matches, or if the group does not exist or took no
    /// part. Group 0 is the whole match. The view is into the subject.
    std::optional<std::string_view> find(std::string_view subject, int group) const;

    /// How many groups the pattern has, group 0 not counted.
    int groupCount() const;

    bool matches(std::string_view subject) const { return find(subject, 0).has_value(); }

    /// Searches with a pattern that is compiled once, at first use. Gives the group as text
    /// (std::string or std::string_view) or as an int by stoi; the fallback if there is no match,
    /// no such group, or the number does not convert. `pattern` is a constexpr text with static storage.
    template <const auto& pattern, typename T>
    static T search(std::string_view subject, T fallback, int group);

private:
    struct Compiled;
    std::unique_ptr<const Compiled> m_compiled;
};

template <const auto& pattern, typename T> T Regex::search(std::string_view subject, T fallback, int group)
{
    static const Regex compiled{std::string_view(pattern)};
    const auto found = compiled.find(subject, group);
    if (!found)
        return fallback;
    if constexpr (std::is_same_v<T, int>) {
        try {
            return Torv::stoi(std::string(*found));
        } catch (const std::exception&) {
            return fallback;
        }
    } else {
        return T(*found);
    }
}

} // namespace Torv
