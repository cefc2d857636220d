#include "Torv/Assert.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>

namespace Torv
{
namespace
{

/// Null stands for the default.
constinit std::atomic<AssertionHandler> installedHandler = nullptr;

/// Null stands for that of the process.
constinit thread_local AssertionHandler threadHandler = nullptr;

iovec piece(const char* text)
{
    // writev only reads, but its record is shared with readv.
    return {const_cast<char*>(text), std::strlen(text)};
}

/// Neither allocates nor takes the lock of a stream: the process may be in any state here.
void print(const char* expression, const char* file, const char* function)
{
    const std::array pieces = {piece("Assertion failed: "), piece(expression), piece(", file "), piece(file),
                               piece(", function "),        piece(function),   piece("\n")};
    [[maybe_unused]] const ssize_t written =
        ::writev(STDERR_FILENO, pieces.data(), static_cast<int>(pieces.size()));
}

} // namespace

AssertionHandler setAssertionHandler(AssertionHandler handler) noexcept
{
    return installedHandler.exchange(handler);
}

ScopedAssertionHandler::ScopedAssertionHandler(AssertionHandler handler) noexcept
    : m_former(std::exchange(threadHandler, handler))
{
}

ScopedAssertionHandler::~ScopedAssertionHandler()
{
    threadHandler = m_former;
}

void assertFailed(const char* expression, const char* file, const char* function)
{
    const AssertionHandler handler = threadHandler != nullptr ? threadHandler : installedHandler.load();
    if (handler != nullptr)
        handler(expression, file, function);
    else
        print(expression, file, function);
    std::abort();
}

} // namespace Torv
