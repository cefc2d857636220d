#include "worker/ServiceProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <optional>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "worker/ParentDeath.h"
#include "worker/Service.h"
#include "worker/WorkerException.h"

#include "Torv/SystemError.h"

namespace JobParser::Worker
{
namespace
{

// Texts go over the socket with their length in front.
bool sendText(int socket, const std::string& text)
{
    const auto size = static_cast<std::uint32_t>(text.size());
    std::array<char, sizeof(size)> head{};
    std::memcpy(head.data(), &size, sizeof(size));
    return writeAll(socket, {head.data(), head.size()}) && writeAll(socket, text);
}

std::optional<std::string> receiveText(int socket)
{
    std::uint32_t size = 0;
    std::array<char, sizeof(size)> head{};
    if (!readAll(socket, head.data(), head.size()))
        return std::nullopt;
    std::memcpy(&size, head.data(), sizeof(size));
    std::string text(size, '\0');
    if (!readAll(socket, text.data(), text.size()))
        return std::nullopt;
    return text;
}

} // namespace

ServiceProcess::~ServiceProcess()
{
    stop();
}

std::string ServiceProcess::ask(const std::string& request)
{
    if (!m_socket.isOpen())
        start();
    if (sendText(m_socket.get(), request)) {
        if (std::optional<std::string> reply = receiveText(m_socket.get()))
            return *std::move(reply);
    }
    stop();
    throw WorkerException(ErrorCode::Failed, "The process of Ghostscript went away");
}

void ServiceProcess::start()
{
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw WorkerException(ErrorCode::Failed, Torv::systemError(errno));
    m_socket = Descriptor(ends[0]);
    Descriptor other(ends[1]);
    const pid_t self = ::getpid();
    m_process = ::fork();
    if (m_process < 0) {
        m_socket.close();
        throw WorkerException(ErrorCode::Failed, Torv::systemError(errno));
    }
    if (m_process == 0) {
        m_socket.close();
        endWithParent(self);
        serve(other.get());
    }
}

void ServiceProcess::stop()
{
    m_socket.close();
    if (m_process > 0) {
        ::kill(m_process, SIGKILL);
        while (::waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    m_process = -1;
}

void ServiceProcess::serve(int socket) const
{
    try {
        Service service(m_options);
        service.warmUp();
        while (const std::optional<std::string> request = receiveText(socket)) {
            if (!sendText(socket, service.answer(*request).value_or("")))
                break;
            service.prepare();
        }
    } catch (const std::exception&) {
        // The asking side sees that the socket is closed.
    }
    ::_exit(0);
}

} // namespace JobParser::Worker
