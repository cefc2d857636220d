#include "Torv/Async/ProcessPool/Descriptor.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include "Torv/GenericException.h"
#include "Torv/SystemError.h"

namespace Torv::Async::ProcessPool
{
namespace
{

[[noreturn]] void throwNoPipe()
{
    throw GenericException("Cannot create a pipe | error=" + systemError(errno));
}

// A host may have closed its standard streams, so that a new pipe takes their numbers; a process could not be
// given it then.
Descriptor awayFromStandardStreams(Descriptor descriptor)
{
    if (descriptor.number() > STDERR_FILENO)
        return descriptor;
    Descriptor moved(::fcntl(descriptor.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (moved.number() < 0)
        throwNoPipe();
    return moved;
}

} // namespace

Descriptor::Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    std::swap(m_number, other.m_number);
    return *this;
}

void Descriptor::close()
{
    if (m_number >= 0)
        ::close(std::exchange(m_number, -1));
}

Pipe makePipe()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throwNoPipe();
    Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    return {awayFromStandardStreams(std::move(reading)), awayFromStandardStreams(std::move(writing))};
}

void makeNonBlocking(const Descriptor& descriptor)
{
    ::fcntl(descriptor.number(), F_SETFL, ::fcntl(descriptor.number(), F_GETFL) | O_NONBLOCK);
}

} // namespace Torv::Async::ProcessPool
