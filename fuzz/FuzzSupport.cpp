#include "FuzzSupport.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>
#include <variant>

#include "JobParser/Library.h"

#include "Torv/Assert.h"
#include "Torv/GenericException.h"

namespace Fuzz
{
namespace
{

void throwAssertion(const char* expression, const char* file, const char* function)
{
    throw Torv::GenericException(std::string("Assertion failed: ") + expression + ", " + file + ", " +
                                 function);
}

[[noreturn]] void fail(const char* message, const char* details)
{
    std::fprintf(stderr, "Broken promise: %s%s\n", message, details);
    std::abort();
}

// Containers and strings throw the same classes for an index that is none, which is never meant.
void requireOfNumber(const std::logic_error& error)
{
    if (!std::string_view(error.what()).starts_with("sto"))
        fail("an exception that is not of a number: ", error.what());
}

} // namespace

void setUp()
{
    static const bool done = [] {
        Torv::setAssertionHandler(throwAssertion);
        JobParser::Library::init({});
        return true;
    }();
    require(done, "the library is set up");
}

void require(bool condition, const char* message)
{
    if (!condition)
        fail(message, "");
}

bool survives(const std::function<void()>& code)
{
    try {
        code();
        return true;
    } catch (const Torv::GenericException&) {
        return false;
    } catch (const std::invalid_argument& error) {
        requireOfNumber(error);
        return false;
    } catch (const std::out_of_range& error) {
        requireOfNumber(error);
        return false;
    } catch (const std::bad_variant_access&) {
        return false;
    } catch (const std::exception& error) {
        fail("an exception that no host expects: ", error.what());
    } catch (...) {
        fail("an exception of an unknown kind", "");
    }
}

std::string_view asText(Bytes bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

MemoryFile::MemoryFile(std::string_view content) : m_descriptor(::memfd_create("job", MFD_CLOEXEC))
{
    require(m_descriptor >= 0, "a memory file can be made");
    while (!content.empty()) {
        const ssize_t written = ::write(m_descriptor, content.data(), content.size());
        require(written > 0, "a memory file can be written");
        content.remove_prefix(static_cast<std::size_t>(written));
    }
}

MemoryFile::~MemoryFile()
{
    ::close(m_descriptor);
}

std::string MemoryFile::path() const
{
    return "/proc/self/fd/" + std::to_string(m_descriptor);
}

} // namespace Fuzz
