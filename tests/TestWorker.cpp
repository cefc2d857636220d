// A worker for tests. Its command line says what it does at its start and for each request:
//
//     TestWorker [ACTION...] [each ACTION...] [exit ACTION...]
//
// In texts %XX is the byte of that number. Where no action follows `each`, it answers with `answer`.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace
{

using Words = std::vector<std::string>;

struct Script {
    Words start;
    Words each;
    Words exit;
};

const std::string exitRequest = R"({"command":"exit"})";
int requestCount = 0;
Words commandLine;

void print(std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = write(STDOUT_FILENO, text.data(), text.size());
        if (count < 0)
            _exit(99);
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

std::string decoded(const std::string& text)
{
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            bytes += text[at];
            continue;
        }
        bytes += static_cast<char>(std::strtol(text.substr(at + 1, 2).c_str(), nullptr, 16));
        at += 2;
    }
    return bytes;
}

/// A text of plain characters, quotation marks and backslashes as JSON.
std::string quoted(const std::string& text)
{
    std::string json = "\"";
    for (const char byte : text) {
        if (byte == '"' || byte == '\\')
            json += '\\';
        json += byte;
    }
    return json + '"';
}

void printCommandLine()
{
    std::string text = R"({"arguments":[)";
    for (std::size_t at = 1; at < commandLine.size(); ++at)
        text += (at > 1 ? "," : "") + quoted(commandLine[at]);
    print(text + "]}\n");
}

void printAnswer(const std::string& request)
{
    print(R"({"request":)" + request + R"(,"pid":)" + std::to_string(getpid()) + R"(,"number":)" +
          std::to_string(requestCount) + "}\n");
}

void flood(std::size_t size)
{
    const std::string block(1 << 16, 'x');
    for (; size > block.size(); size -= block.size())
        print(block);
    print(std::string_view(block).substr(0, size));
}

void append(const std::string& path, const std::string& line)
{
    if (std::FILE* const file = std::fopen(path.c_str(), "a")) {
        std::fputs((line + "\n").c_str(), file);
        std::fclose(file);
    }
}

void printDescriptors()
{
    std::string text;
    for (int number = 0; number < 1024; ++number) {
        if (dup2(number, number) == number)
            text += (text.empty() ? "" : ",") + std::to_string(number);
    }
    print(R"({"descriptors":[)" + text + "]}\n");
}

void printSignals()
{
    struct sigaction pipe = {};
    sigaction(SIGPIPE, nullptr, &pipe);
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    print(std::string(R"({"pipe":)") + (pipe.sa_handler == SIG_DFL ? R"("default")" : R"("changed")") +
          R"(,"blocked":)" + (sigismember(&blocked, SIGTERM) == 1 ? "true" : "false") + "}\n");
}

[[noreturn]] void hang()
{
    for (;;)
        pause();
}

void closeOutput()
{
    close(STDOUT_FILENO);
}

struct Action {
    const char* name;
    bool takesText;
    void (*run)(const std::string& text, const std::string& request);
};

constexpr Action actions[] = {
    {"answer", false, [](const std::string&, const std::string& request) { printAnswer(request); }},
    {"print", true, [](const std::string& text, const std::string&) { print(decoded(text)); }},
    {"arguments", false, [](const std::string&, const std::string&) { printCommandLine(); }},
    {"descriptors", false, [](const std::string&, const std::string&) { printDescriptors(); }},
    {"signals", false, [](const std::string&, const std::string&) { printSignals(); }},
    {"flood", true, [](const std::string& text, const std::string&) { flood(std::stoul(text)); }},
    {"complain", true, [](const std::string& text, const std::string&) { std::fputs(text.c_str(), stderr); }},
    {"log", true, [](const std::string& text, const std::string& request) { append(text, request); }},
    {"logpid", true,
     [](const std::string& text, const std::string&) { append(text, std::to_string(getpid())); }},
    {"sleep", true,
     [](const std::string& text, const std::string&) {
         usleep(static_cast<useconds_t>(std::stoul(text)) * 1000);
     }},
    {"hang", false, [](const std::string&, const std::string&) { hang(); }},
    {"crash", false, [](const std::string&, const std::string&) { std::abort(); }},
    {"crashif", true,
     [](const std::string& text, const std::string& request) {
         if (request.find(text) != std::string::npos)
             std::abort();
     }},
    {"hangif", true,
     [](const std::string& text, const std::string& request) {
         if (request.find(text) != std::string::npos)
             hang();
     }},
    {"leave", true, [](const std::string& text, const std::string&) { _exit(std::stoi(text)); }},
    {"close", false, [](const std::string&, const std::string&) { closeOutput(); }},
    {"changegroup", false,
     [](const std::string&, const std::string&) {
         if (setpgid(0, getpgid(getppid())) != 0)
             _exit(98);
     }},
    {"fork", false,
     [](const std::string&, const std::string&) {
         if (fork() == 0)
             hang();
     }},
};

void run(const Words& words, const std::string& request)
{
    for (std::size_t at = 0; at < words.size(); ++at) {
        for (const Action& action : actions) {
            if (words[at] != action.name)
                continue;
            action.run(action.takesText ? words[++at] : std::string(), request);
            break;
        }
    }
}

Script readScript()
{
    Script script;
    Words* part = &script.start;
    for (std::size_t at = 1; at < commandLine.size() && commandLine[at] != "e"; ++at) {
        if (commandLine[at] == "each")
            part = &script.each;
        else if (commandLine[at] == "exit")
            part = &script.exit;
        else
            part->push_back(commandLine[at]);
    }
    if (script.each.empty())
        script.each = {"answer"};
    return script;
}

bool readLine(std::string& line)
{
    line.clear();
    for (int byte = 0; (byte = std::getchar()) != EOF;) {
        if (byte == '\n')
            return true;
        line += static_cast<char>(byte);
    }
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    commandLine.assign(argv, argv + argc);
    const Script script = readScript();
    run(script.start, "");
    for (std::string line; readLine(line);) {
        if (line == exitRequest || line == "stop") {
            run(script.exit, line);
            return 0;
        }
        ++requestCount;
        run(script.each, line);
    }
    return 0;
}
