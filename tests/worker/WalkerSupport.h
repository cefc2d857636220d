#pragma once

#include <string_view>

#include "JobParser/JobFile.h"
#include "tests/support/OpenJob.h"
#include "worker/BodyReader.h"
#include "worker/JobFacts.h"

namespace JobParser::Worker
{

/// A body that is a whole file.
class OpenBody
{
    TemporaryFile m_file;

public:
    explicit OpenBody(std::string_view bytes) : m_file(bytes)
    {
        file.open(m_file.path());
        body.pdl = Pdl::Unknown;
        if (!bytes.empty())
            body.ranges = {{0, static_cast<std::int64_t>(bytes.size())}};
        reader = std::make_unique<BodyReader>(file, body);
    }

    JobFile file;
    Body body;
    std::unique_ptr<BodyReader> reader;
};

/// Counts of pages, to be compared at once.
struct Pages {
    std::int64_t blank = 0;
    std::int64_t mono = 0;
    std::int64_t gray = 0;
    std::int64_t color = 0;

    bool operator==(const Pages&) const = default;
};

inline Pages pagesOf(const JobFacts& facts)
{
    return {facts.count(PageClass::Blank), facts.count(PageClass::Mono), facts.count(PageClass::Gray),
            facts.count(PageClass::Color)};
}

inline void PrintTo(const Pages& pages, std::ostream* stream)
{
    *stream << pages.blank << " blank, " << pages.mono << " mono, " << pages.gray << " gray, " << pages.color
            << " color";
}

} // namespace JobParser::Worker
