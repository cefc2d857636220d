#include <exception>
#include <string>
#include <unistd.h>
#include <variant>

#include "tools/CommandLine.h"
#include "tools/StandardErrorLog.h"
#include "tools/StandardStreams.h"
#include "tools/Subcommands.h"

#include "Torv/Assert.h"
#include "Torv/GenericException.h"
#include "Torv/IO/FileStream.h"

namespace JobParser::Tool
{
namespace
{

/// A metadata file may say anything about a job, so that what the library asserts is only a failed job here.
void throwFailedAssertion(const char* expression, const char* file, const char* function)
{
    throw Torv::GenericException("Assertion failed: " + std::string(expression) + " | file=" + file +
                                 " | function=" + function);
}

ExitStatus reply(const Answer& answer)
{
    Torv::IO::FileStream stream(answer.isError ? STDERR_FILENO : STDOUT_FILENO, "standard output");
    writeText(stream, answer.text);
    stream.flush();
    return answer.isError ? StatusWrongCommandLine : StatusDone;
}

ExitStatus runTool(int argc, char** argv)
{
    const std::variant<Options, Answer> command = readCommandLine(argc, argv);
    if (const auto* const answer = std::get_if<Answer>(&command))
        return reply(*answer);
    return run(std::get<Options>(command));
}

} // namespace
} // namespace JobParser::Tool

int main(int argc, char** argv)
{
    using namespace JobParser::Tool;
    secureStandardStreams();
    Torv::setAssertionHandler(throwFailedAssertion);
    try {
        return runTool(argc, argv);
    } catch (const std::exception& error) {
        printError("jobparser: " + std::string(error.what()));
        return StatusFailed;
    }
}
