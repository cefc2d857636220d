#include <csignal>
#include <exception>
#include <fcntl.h>
#include <span>
#include <string>
#include <unistd.h>

#include "worker/CommandLine.h"
#include "worker/Descriptor.h"
#include "worker/RequestLoop.h"
#include "worker/Service.h"

namespace
{

/// Keeps the two ends of the conversation for itself, so that no engine reads requests or prints into
/// answers.
int takeOver(int descriptor, int flags)
{
    const int own = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int nothing = ::open("/dev/null", flags | O_CLOEXEC);
    if (nothing >= 0)
        ::dup2(nothing, descriptor);
    if (nothing > STDERR_FILENO)
        ::close(nothing);
    return own;
}

} // namespace

int main(int argc, char** argv)
{
    using namespace JobParser::Worker;

    std::signal(SIGPIPE, SIG_IGN);
    const auto options =
        readCommandLine(std::span<char* const>(argv, static_cast<std::size_t>(argc)).subspan(1));
    if (const auto* answer = std::get_if<Answer>(&options)) {
        writeAll(answer->isError ? STDERR_FILENO : STDOUT_FILENO, answer->text);
        return answer->isError ? 2 : 0;
    }
    try {
        const int input = takeOver(STDIN_FILENO, O_RDONLY);
        const int output = takeOver(STDOUT_FILENO, O_WRONLY);
        Service service(std::get<ServiceOptions>(options));
        answerRequests(service, input, output);
    } catch (const std::exception& error) {
        writeAll(STDERR_FILENO, std::string("ZemJobProcessor: ") + error.what() + '\n');
        return 1;
    }
    return 0;
}
