#pragma once

#include <functional>
#include <utility>

#include "JobParser/Export.h"
#include "pdf/ISource.h"

namespace Pdf::Parser
{

/// Reads what two functions hand out and skip, under the rules of ISource.
class JOBPARSER_EXPORT LambdaSource final : public ISource
{
public:
    LambdaSource(std::function<std::uint8_t()> nextFunction,
                 std::function<void(unsigned long long)> skipFunction)
        : m_next(std::move(nextFunction)), m_skip(std::move(skipFunction))
    {
    }

    std::uint8_t next() override;
    void skip(unsigned long long count) override;

    /// What window() gives from now on. The functions may call it.
    void setWindow(std::span<const std::uint8_t> bytes) { m_window = bytes; }

private:
    std::function<std::uint8_t()> m_next;
    std::function<void(unsigned long long)> m_skip;
};

} // namespace Pdf::Parser
