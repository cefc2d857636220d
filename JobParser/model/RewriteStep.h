#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace JobParser
{

class Job;

/// One change to a job, as command lines and foreign languages ask for it.
struct RewriteStep {
    /// The operations of Job that change it. The numbers are those of the C interface.
    enum class Kind : std::int32_t {
        Wrap = 1, ///< Language, as in ENTER LANGUAGE, and name.
        JobName,  ///< Name.
        JobParam, ///< Name and value.
        Set,      ///< Name and value, as in the next three.
        SetQuoted,
        Add,
        AddQuoted,
        Unset,      ///< Name and value.
        UnsetFirst, ///< Prefix.
        UnsetAll,   ///< Prefix.
        Finishing,  ///< Type and option.
        PjlCode,    ///< Text.
        StripPjl,
        StripPrescribe,
    };

    Kind kind = Kind::StripPjl;
    std::string first;  ///< A name, a prefix or a text; empty if the kind takes none.
    std::string second; ///< What goes with it.

    /// The kind of a number; nothing if there is none.
    static std::optional<Kind> kindOf(std::int32_t number);

    /// How many texts go with the kind: 0 to 2.
    static int textsOf(Kind kind);

    /// Whether the texts make sense: a job can only be wrapped in a language that PJL has a name for.
    bool makesSense() const;

    void applyTo(Job& job) const;
};

} // namespace JobParser
