#include "Torv/Async/ProcessPool/ProcessPool.h"

#include <pthread.h>
#include <utility>

#include "Torv/Async/ProcessPool/Running.h"
#include "Torv/GenericException.h"

namespace Torv::Async::ProcessPool
{
namespace
{

// How often this process is a fork of another: cheaper to ask than the number of the process.
std::atomic<int> forkDepth{0};

void countForks()
{
    [[maybe_unused]] static const int registered =
        ::pthread_atfork(nullptr, nullptr, [] { forkDepth.fetch_add(1, std::memory_order_relaxed); });
}

} // namespace

ProcessPool::ProcessPool() = default;

ProcessPool::~ProcessPool()
{
    stop(m_stopWait);
}

void ProcessPool::start(const Options& options)
{
    stop(options.stopWait);
    countForks();
    auto started = std::make_shared<Running>(options);
    const std::lock_guard lock(m_mutex);
    m_running.swap(started); // If another start came in between, its pool ends behind the lock.
    m_forkDepth = forkDepth.load();
    m_stopWait = options.stopWait;
}

std::string ProcessPool::request(const std::string& text)
{
    if (text.find('\n') != std::string::npos)
        throw GenericException("A request to a worker process is one line");
    if (isForked())
        throw GenericException("The worker processes belong to the process that forked this one");
    const std::shared_ptr<Running> pool = running();
    if (pool == nullptr)
        throw GenericException("The worker processes are not started");
    return pool->request(text + '\n');
}

void ProcessPool::stop(std::int64_t seconds)
{
    if (isForked()) {
        forget();
        return;
    }
    const std::shared_ptr<Running> pool = running();
    if (pool == nullptr)
        return;
    pool->stop(seconds);
    const std::lock_guard lock(m_mutex);
    if (m_running == pool)
        m_running.reset();
}

std::shared_ptr<ProcessPool::Running> ProcessPool::running() const
{
    const std::lock_guard lock(m_mutex);
    return m_running;
}

/// The processes and the thread are the parent's, and a mutex may be held by a thread that is not here. So
/// nothing of it is touched any more.
void ProcessPool::forget()
{
    static_cast<void>(new std::shared_ptr<Running>(std::move(m_running)));
    m_forkDepth = forkDepth.load();
}

bool ProcessPool::isForked() const
{
    return m_forkDepth >= 0 && m_forkDepth != forkDepth.load(std::memory_order_relaxed);
}

} // namespace Torv::Async::ProcessPool
