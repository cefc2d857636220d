#include "Torv/Async/ProcessPool/Process.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Torv/Format.h"
#include "Torv/GenericException.h"
#include "Torv/SystemError.h"

extern char** environ;

namespace Torv::Async::ProcessPool
{
namespace
{

// Milliseconds from a kill to the end of a process. One that hangs in the system may take for ever.
constexpr int endingTime = 1000;

[[noreturn]] void throwCannotStart(const std::string& executable, int error)
{
    throw GenericException("Cannot start the worker process | path=" + executable +
                           " | error=" + systemError(error));
}

/// What the new process does before it becomes the program.
class Preparation
{
public:
    Preparation(const Descriptor& input, const Descriptor& output)
    {
        require(posix_spawn_file_actions_init(&m_actions));
        require(posix_spawnattr_init(&m_attributes));
        require(posix_spawn_file_actions_adddup2(&m_actions, input.number(), STDIN_FILENO));
        require(posix_spawn_file_actions_adddup2(&m_actions, output.number(), STDOUT_FILENO));
        require(posix_spawn_file_actions_addopen(&m_actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0));
        require(posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1));

        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        require(posix_spawnattr_setsigmask(&m_attributes, &none));
        require(posix_spawnattr_setsigdefault(&m_attributes, &all));
        require(posix_spawnattr_setpgroup(&m_attributes, 0));
        require(posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF |
                                                            POSIX_SPAWN_SETPGROUP));
    }
    ~Preparation()
    {
        posix_spawn_file_actions_destroy(&m_actions);
        posix_spawnattr_destroy(&m_attributes);
    }
    Preparation(const Preparation&) = delete;
    Preparation& operator=(const Preparation&) = delete;

    const posix_spawn_file_actions_t* actions() const { return &m_actions; }
    const posix_spawnattr_t* attributes() const { return &m_attributes; }

private:
    static void require(int error)
    {
        if (error != 0)
            throw GenericException("Cannot prepare a worker process | error=" + systemError(error));
    }

    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
};

std::vector<char*> pointersTo(std::vector<std::string>& words)
{
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

// posix_spawn, since a host with threads cannot fork safely.
pid_t spawn(const std::string& executable, const std::vector<std::string>& arguments,
            const Preparation& preparation)
{
    std::vector<std::string> words{executable};
    words.insert(words.end(), arguments.begin(), arguments.end());
    pid_t pid = -1;
    const int error = posix_spawn(&pid, executable.c_str(), preparation.actions(), preparation.attributes(),
                                  pointersTo(words).data(), environ);
    if (error != 0)
        throwCannotStart(executable, error);
    return pid;
}

// By number: some versions of the C library declare the function in a way that C++ cannot link.
int openWatch(pid_t pid)
{
    return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
}

} // namespace

Process::Process(const std::string& executable, const std::vector<std::string>& arguments)
{
    Pipe input = makePipe();
    Pipe output = makePipe();
    makeNonBlocking(input.writing);
    makeNonBlocking(output.reading);
    m_pid = spawn(executable, arguments, Preparation(input.reading, output.writing));
    m_watch = Descriptor(openWatch(m_pid));
    if (m_watch.number() < 0) {
        const int error = errno;
        ::kill(-m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
        throwCannotStart(executable, error);
    }
    m_input = std::move(input.writing);
    m_inputReader = std::move(input.reading);
    m_output = std::move(output.reading);
}

Process::~Process()
{
    kill();
    pollfd polled{m_watch.number(), POLLIN, 0};
    ::poll(&polled, 1, endingTime);
    siginfo_t info{};
    ::waitid(P_PIDFD, static_cast<id_t>(m_watch.number()), &info, WEXITED | WNOHANG);
}

void Process::kill() const
{
    siginfo_t info{};
    // As long as it is our child, dead or alive, no other process or group has its number.
    const int waited =
        ::waitid(P_PIDFD, static_cast<id_t>(m_watch.number()), &info, WEXITED | WNOHANG | WNOWAIT);
    if (waited != 0)
        return;
    ::kill(-m_pid, SIGKILL);
    ::kill(m_pid, SIGKILL); // It may have gone to another group.
}

std::string Process::ending() const
{
    int code = 0;
    int status = 0;
    if (!peekEnding(code, status))
        return {};
    return format(code == CLD_EXITED ? " | status=%d" : " | signal=%d", status);
}

bool Process::hasSucceeded() const
{
    int code = 0;
    int status = 0;
    return peekEnding(code, status) && code == CLD_EXITED && status == 0;
}

// False too if the host has waited for our child in our place; then nobody knows.
bool Process::peekEnding(int& code, int& status) const
{
    siginfo_t info{};
    const int waited =
        ::waitid(P_PIDFD, static_cast<id_t>(m_watch.number()), &info, WEXITED | WNOHANG | WNOWAIT);
    code = info.si_code;
    status = info.si_status;
    return waited == 0 && info.si_pid != 0;
}

} // namespace Torv::Async::ProcessPool
