#include "tools/Scan.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <mutex>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "JobParser/Job.h"
#include "JobParser/paper/PaperSizeManager.h"
#include "tools/FileFinder.h"
#include "tools/Heap.h"
#include "tools/ProgressBar.h"
#include "tools/Session.h"
#include "tools/StandardErrorLog.h"
#include "tools/StandardStreams.h"

#include "Torv/GenericException.h"
#include "Torv/IO/FileStream.h"
#include "Torv/IO/MappingGroup.h"
#include "Torv/Json/Object.h"

namespace JobParser::Tool
{
namespace
{

/// What is known of one file.
struct Result {
    std::string line;
    std::string error; ///< The line for standard error; empty if nothing is wrong.
    std::int64_t bytes = 0;
    bool isReady = false;
};

/// What there is to do, for the progress; nothing is kept of it, so that folders of any size may be scanned.
Progress countFiles(const std::vector<std::string>& paths)
{
    Progress total;
    FileFinder finder(paths);
    while (const auto found = finder.next()) {
        struct stat status = {};
        ++total.files;
        if (::stat(found->path.c_str(), &status) == 0 && S_ISREG(status.st_mode))
            total.bytes += status.st_size;
    }
    return total;
}

int threadCountOf(const Options& options)
{
    if (options.jobs > 0)
        return options.jobs;
    return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

/// Goes through the files on several threads, and prints what it finds in the order of the files.
class Scanner
{
public:
    explicit Scanner(const Options& options);

    ExitStatus run();

private:
    using Clock = std::chrono::steady_clock;
    using Lock = std::unique_lock<std::mutex>;

    /// What one thread reads with.
    struct Reader {
        JobFile file;
        std::shared_ptr<Torv::IO::MappingGroup> group;
    };

    void work();
    void workThrough(Reader& reader);
    void findFiles(Lock& lock);
    bool mayFind() const;
    bool mayGoOn() const;
    Result resultOf(const FileFinder::Found& found, Reader& reader);
    void deliver(Result result, std::size_t number);
    void print(const Result& result);
    void refresh();
    void keepFresh();
    void endTicker(std::thread& ticker);
    void fail(std::exception_ptr failure);

    // Who is ahead of a file that takes long waits, so that results do not pile up.
    static constexpr std::size_t mostAhead = 1024;
    // Several threads have files found ahead, so that none waits while a folder is read. One thread would
    // only be late with its first line.
    static constexpr std::size_t fewFiles = 32;
    static constexpr std::size_t enoughFiles = 64;
    static constexpr std::chrono::milliseconds flushInterval{100};

    const Options& m_options;
    const int m_threadCount;
    const Torv::IO::MappingGroup m_mappings; // Of which each thread has a peer.
    PaperSizeManager m_papers;
    Parser m_parser;
    bool m_showsProgress;

    FileFinder m_finder; ///< Belongs to who has set m_isFinding.

    std::mutex m_mutex; ///< Guards what follows.
    std::condition_variable m_changed;
    std::condition_variable m_ended;
    bool m_isFinding = false;
    bool m_hasAllFiles = false;            ///< The finder has no more.
    std::deque<FileFinder::Found> m_files; ///< That nobody has taken up.
    std::vector<Result> m_results; ///< Of the files from m_printed on; the place is the number of the file.
    std::size_t m_found = 0;       ///< Files that were taken up.
    std::size_t m_printed = 0;
    Progress m_done;
    ProgressBar m_bar;
    Torv::IO::FileStream m_output;
    Clock::time_point m_flushed = Clock::now();
    bool m_hasFailed = false; ///< A file failed.
    bool m_isOver = false;    ///< All files are printed.
    std::exception_ptr m_failure;
};

Scanner::Scanner(const Options& options)
    : m_options(options), m_threadCount(threadCountOf(options)),
      m_parser(std::make_shared<StandardErrorLog>(options.logLevel.value_or(-1),
                                                  StandardErrorLog::Hidden::Dropped),
               m_papers, options.worker.isUsed),
      m_showsProgress(options.showsProgress && ::isatty(STDERR_FILENO) == 1), m_finder(options.files),
      m_results(mostAhead), m_bar(m_showsProgress, m_showsProgress ? countFiles(options.files) : Progress()),
      m_output(STDOUT_FILENO, "standard output")
{
    configure(m_papers, options);
}

ExitStatus Scanner::run()
{
    std::thread ticker;
    std::vector<std::thread> threads;
    if (m_threadCount > 1)
        keepHeapForThreads();
    try {
        // A worker may take minutes over one job.
        if (m_showsProgress || m_options.worker.isUsed)
            ticker = std::thread([this] { keepFresh(); });
        for (int thread = 1; thread < m_threadCount; ++thread)
            threads.emplace_back([this] { work(); });
    } catch (const std::exception&) {
        // The system gives no more threads, or no memory for them; those that there are do it all.
    }
    work();
    for (std::thread& thread : threads)
        thread.join();
    endTicker(ticker);
    if (m_failure)
        std::rethrow_exception(m_failure);
    m_output.flush();
    return m_hasFailed ? StatusFailed : StatusDone;
}

void Scanner::work()
{
    try {
        Reader reader;
        // Alone, a thread interrupts nobody.
        if (m_threadCount > 1)
            reader.group = m_mappings.makePeer();
        workThrough(reader);
    } catch (...) {
        fail(std::current_exception());
    }
}

void Scanner::workThrough(Reader& reader)
{
    for (;;) {
        Lock lock(m_mutex);
        findFiles(lock);
        m_changed.wait(lock, [this] { return mayGoOn() || mayFind(); });
        if (m_failure || (m_files.empty() && m_hasAllFiles))
            return;
        if (!mayGoOn())
            continue;
        const FileFinder::Found found = std::move(m_files.front());
        m_files.pop_front();
        const std::size_t number = m_found++;
        lock.unlock();
        deliver(resultOf(found, reader), number);
    }
}

/// Does nothing if somebody else is at it.
void Scanner::findFiles(Lock& lock)
{
    const bool isAlone = m_threadCount == 1;
    if (m_isFinding || m_files.size() >= (isAlone ? 1 : fewFiles))
        return;
    m_isFinding = true;
    while (!m_hasAllFiles && !m_failure && m_files.size() < (isAlone ? 1 : enoughFiles)) {
        lock.unlock();
        auto found = m_finder.next();
        lock.lock();
        if (found)
            m_files.push_back(std::move(*found));
        else
            m_hasAllFiles = true;
        m_changed.notify_all();
    }
    m_isFinding = false;
    m_changed.notify_all();
}

/// Those who found files before may be busy with one each.
bool Scanner::mayFind() const
{
    return m_files.empty() && !m_isFinding && !m_hasAllFiles;
}

/// With a file, or because there is none.
bool Scanner::mayGoOn() const
{
    if (m_files.empty())
        return m_hasAllFiles || m_failure;
    return m_found < m_printed + mostAhead || m_failure;
}

Result Scanner::resultOf(const FileFinder::Found& found, Reader& reader)
{
    Result result;
    Torv::Json::Object line;
    line.add("path", found.path);
    try {
        if (!found.error.empty())
            throw Torv::GenericException(found.error);
        openJob(reader.file, found.path, m_options, reader.group);
        result.bytes = reader.file.fileSize;
        line.addJson("info", m_parser.parse(reader.file, parseOptionsOf(m_options))->job->jobInfo.toJson());
    } catch (const std::exception& error) {
        const std::string message = messageOf(error);
        line.add("error", message);
        result.error = "jobparser: " + found.path + ": " + message;
    }
    result.line = line.take() + '\n';
    result.isReady = true;
    return result;
}

void Scanner::deliver(Result result, std::size_t number)
{
    const Lock lock(m_mutex);
    m_results[number % mostAhead] = std::move(result);
    while (m_results[m_printed % mostAhead].isReady) {
        print(m_results[m_printed % mostAhead]);
        m_results[m_printed % mostAhead] = Result();
        ++m_printed;
        m_changed.notify_all();
    }
    refresh();
}

/// What has been printed goes out, and the bar moves.
void Scanner::refresh()
{
    if (Clock::now() >= m_flushed + flushInterval) {
        m_bar.clear(); // Both may go to one terminal.
        m_output.flush();
        m_flushed = Clock::now();
    }
    m_bar.show(m_done);
}

/// Refreshes while all threads are busy with one job each.
void Scanner::keepFresh()
{
    try {
        Lock lock(m_mutex);
        do
            refresh();
        while (!m_ended.wait_for(lock, flushInterval, [this] { return m_isOver; }));
    } catch (...) {
        fail(std::current_exception());
    }
}

void Scanner::endTicker(std::thread& ticker)
{
    if (!ticker.joinable())
        return;
    {
        const Lock lock(m_mutex);
        m_isOver = true;
    }
    m_ended.notify_one();
    ticker.join();
}

void Scanner::print(const Result& result)
{
    writeText(m_output, result.line);
    ++m_done.files;
    m_done.bytes += result.bytes;
    if (result.error.empty())
        return;
    m_hasFailed = true;
    m_bar.clear();
    printError(result.error);
}

void Scanner::fail(std::exception_ptr failure)
{
    const Lock lock(m_mutex);
    if (!m_failure)
        m_failure = std::move(failure);
    m_changed.notify_all();
}

} // namespace

ExitStatus runScan(const Options& options)
{
    initLibrary(options, Workers::Started);
    return Scanner(options).run();
}

} // namespace JobParser::Tool
