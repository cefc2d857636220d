#pragma once

#include <functional>
#include <utility>

#include "Torv/Assert.h"

namespace Torv
{

/// Runs a function when the scope ends, on every way out, unless it was disarmed. The function must not
/// throw: that is a failed assertion.
class ScopeGuard
{
public:
    explicit ScopeGuard(std::function<void()> function) : m_function(std::move(function)) {}
    ScopeGuard(const ScopeGuard&) = delete;
    ScopeGuard& operator=(const ScopeGuard&) = delete;
    ~ScopeGuard();

    void disarm() { m_armed = false; }

private:
    std::function<void()> m_function;
    bool m_armed = true;
};

} // namespace Torv
