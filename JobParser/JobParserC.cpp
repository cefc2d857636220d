#include "JobParser/JobParserC.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <pthread.h>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "JobParser/ChunkPlaces.h"
#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"
#include "JobParser/Library.h"
#include "JobParser/Parser.h"
#include "JobParser/model/Reflection.h"
#include "JobParser/model/RewriteStep.h"

#include "Torv/Assert.h"
#include "Torv/Data/IniFile.h"
#include "Torv/FileSystem/Path.h"
#include "Torv/GenericException.h"
#include "Torv/IO/OutputFile.h"
#include "Torv/IO/OutputSignals.h"
#include "Torv/Log/ILog.h"
#include "Torv/Security/Endecryptor/Decryptor.h"
#include "Torv/Security/Endecryptor/Options.h"
#include "Torv/VersionedStruct.h"

struct JobParserJob {
    JobParser::JobFile file;
    std::shared_ptr<JobParser::Job> job;
    bool parsed = true;
    std::string cause;
};

namespace JobParser
{
namespace
{

// The sizes that the structs ever had. One that grows gets a row more, and keeps the others.
constexpr std::array setUpOptionsSizes{sizeof(JobParserSetUpOptions)};
constexpr std::array parseOptionsSizes{sizeof(JobParserParseOptions)};
constexpr std::array chunkSizes{sizeof(JobParserChunk)};
constexpr std::array stepSizes{sizeof(JobParserStep)};

constexpr std::uint32_t knownParseFlags =
    JOBPARSER_PARSE_NO_COLLECT | JOBPARSER_PARSE_REFUSE_RESTRICTED | JOBPARSER_PARSE_NO_WORKER;

constexpr std::array statusTexts{
    "done",      "invalid argument", "cannot read",   "cannot write",
    "malformed", "assertion failed", "out of memory", "the library is set up already",
    "failed",
};

/// A failure whose status is known where it happens.
class CallFailure : public Torv::GenericException
{
public:
    CallFailure(JobParserStatus theStatus, const std::string& message)
        : Torv::GenericException(message), status(theStatus)
    {
    }

    JobParserStatus status;
};

class AssertionFailure : public CallFailure
{
public:
    using CallFailure::CallFailure;
};

void throwFailedAssertion(const char* expression, const char* file, const char* function)
{
    throw AssertionFailure(JOBPARSER_ASSERTION_FAILED, "Assertion failed: " + std::string(expression) +
                                                           " | file=" + file + " | function=" + function);
}

void require(bool condition, const char* message)
{
    if (!condition)
        throw CallFailure(JOBPARSER_INVALID_ARGUMENT, message);
}

/// A cancelled thread is unwound by something like an exception, which must not pass here either.
class NoCancellation
{
public:
    NoCancellation() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_former); }
    ~NoCancellation() { pthread_setcancelstate(m_former, nullptr); }
    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;

private:
    int m_former = 0;
};

/// Null if memory is too short.
char* copyOf(std::string_view text) noexcept
{
    auto* const copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy != nullptr) {
        std::memcpy(copy, text.data(), text.size());
        copy[text.size()] = '\0';
    }
    return copy;
}

JobParserStatus report(char** error, JobParserStatus status, const char* message) noexcept
{
    if (error != nullptr)
        *error = copyOf(message);
    return status;
}

/// What converts numbers names itself and nothing more.
JobParserStatus reportNumber(char** error, const std::exception& failure) noexcept
{
    if (error != nullptr) {
        try {
            *error = copyOf("A number of the job cannot be read | error=" + std::string(failure.what()));
        } catch (const std::bad_alloc&) {
            *error = nullptr;
        }
    }
    return JOBPARSER_MALFORMED;
}

/// What reads a PDF throws without a word where the file ends.
JobParserStatus reportMalformed(char** error, const JobParserException& failure) noexcept
{
    const bool isSilent = *failure.what() == '\0';
    return report(error, JOBPARSER_MALFORMED, isSilent ? "The job ends too early" : failure.what());
}

/// Does the work of one call, and turns whatever leaves it into a status.
template <typename Work> JobParserStatus guarded(char** error, Work work) noexcept
{
    if (error != nullptr)
        *error = nullptr;
    const NoCancellation noCancellation;
    const Torv::ScopedAssertionHandler handler(throwFailedAssertion);
    try {
        work();
        return JOBPARSER_OK;
    } catch (const CallFailure& failure) {
        return report(error, failure.status, failure.what());
    } catch (const JobParserException& failure) {
        return reportMalformed(error, failure);
    } catch (const std::invalid_argument& failure) {
        return reportNumber(error, failure);
    } catch (const std::out_of_range& failure) {
        return reportNumber(error, failure);
    } catch (const std::bad_alloc& failure) {
        return report(error, JOBPARSER_OUT_OF_MEMORY, failure.what());
    } catch (const std::exception& failure) {
        return report(error, JOBPARSER_FAILED, failure.what());
    } catch (...) {
        return report(error, JOBPARSER_FAILED, "An exception of no known class");
    }
}

/// Gives what the foundation throws a status: it reports files by one class.
template <typename Work> auto withStatus(JobParserStatus status, Work work)
{
    try {
        return work();
    } catch (const CallFailure&) {
        throw;
    } catch (const JobParserException&) {
        throw;
    } catch (const Torv::GenericException& failure) {
        throw CallFailure(status, failure.what());
    }
}

void giveText(const std::string& text, char** result, std::size_t* size)
{
    *result = copyOf(text);
    if (*result == nullptr)
        throw std::bad_alloc();
    if (size != nullptr)
        *size = text.size();
}

/// Keeps why a job was not understood.
class CauseLog : public Torv::Log::ILog
{
public:
    bool isEnabled(int level) const override { return level == Torv::Log::LevelError; }
    void write(int level, const std::string& message, const std::string&, bool, const char*, int) override
    {
        if (isEnabled(level))
            m_cause = message;
    }

    const std::string& cause() const { return m_cause; }

private:
    std::string m_cause;
};

std::string textOr(const char* text, const std::string& fallback)
{
    return text != nullptr ? text : fallback;
}

std::string ownFolder()
{
    const std::string path = Torv::FileSystem::Path::stdExePath();
    return path.substr(0, path.rfind('/') + 1);
}

Library::Options workersOf(const JobParserSetUpOptions& options)
{
    Library::Options workers;
    workers.directory = options.directory != nullptr ? options.directory : ownFolder();
    workers.executable = textOr(options.executable, "ZemJobProcessor");
    workers.arguments = textOr(options.arguments, "");
    workers.processCount = options.processCount == 0 ? 2 : std::max(options.processCount, 0);
    workers.poolLimit = options.poolLimit == 0 ? 500 : options.poolLimit;
    workers.poolDeadline =
        options.poolDeadline == 0 ? 300000 : std::max<std::int64_t>(options.poolDeadline, 0);
    workers.grayscaleTolerance = options.grayscaleTolerance;
    return workers;
}

using Encryption = Torv::Security::Endecryptor::Options;

std::optional<Encryption> encryptionOf(const JobParserSetUpOptions& options)
{
    using namespace Torv::Security::Endecryptor;
    if (options.decryptAlgorithm == nullptr)
        return std::nullopt;
    const std::optional<Algorithm> algorithm = algorithmByName(options.decryptAlgorithm);
    require(algorithm.has_value(), "There is no cipher of this name");
    require(options.decryptKey != nullptr, "decryptKey is null");
    require(options.decryptIv != nullptr, "decryptIv is null");
    const auto bytes = [](const void* data, std::size_t size) {
        return std::string(static_cast<const char*>(data), size);
    };
    Encryption encryption{*algorithm, bytes(options.decryptKey, options.decryptKeySize),
                          bytes(options.decryptIv, options.decryptIvSize)};
    // Tells at once whether key and vector fit.
    withStatus(JOBPARSER_INVALID_ARGUMENT, [&] { const Decryptor decryptor(encryption); });
    return encryption;
}

void loadConfig(const JobParserSetUpOptions& options)
{
    const std::string path = textOr(options.config, ownFolder() + "ParserConfig/config.ini");
    Torv::Data::IniFile ini;
    if (ini.open(path))
        paperList.loadConfig(ini);
    else if (options.config != nullptr)
        throw CallFailure(JOBPARSER_CANNOT_READ, "Cannot read the configuration | path=" + path);
}

/// The set-up of the process, done once.
class SetUp
{
public:
    static SetUp& instance()
    {
        static SetUp setUp;
        return setUp;
    }

    void run(const JobParserSetUpOptions& options)
    {
        const std::lock_guard lock(m_mutex);
        if (m_done)
            throw CallFailure(JOBPARSER_ALREADY_SET_UP, statusTexts[JOBPARSER_ALREADY_SET_UP]);
        doIt(options);
    }

    /// Opens a job as it was set up.
    void open(JobFile& file, const char* path)
    {
        using Torv::Security::Endecryptor::Decryptor;
        if (m_encryption)
            file.openEncrypted(path, std::make_unique<Decryptor>(*m_encryption));
        else
            file.open(path);
    }

    void ensure()
    {
        if (m_done)
            return;
        const std::lock_guard lock(m_mutex);
        if (!m_done)
            doIt({});
    }

private:
    void doIt(const JobParserSetUpOptions& options)
    {
        // What can be refused comes first, so that the call may be repeated.
        std::optional<Encryption> encryption = encryptionOf(options);
        loadConfig(options);
        Library::Options workers = workersOf(options);
        workers.decryptor = encryption;
        Library::init(workers);
        m_encryption = std::move(encryption);
        m_done = true;
    }

    std::mutex m_mutex;
    std::atomic<bool> m_done = false;
    std::optional<Encryption> m_encryption; ///< Does not change once it is done.
};

Pdl languageOf(std::int32_t language)
{
    if (language == JOBPARSER_LANGUAGE_DETECT)
        return Pdl::Detect;
    if (language == JOBPARSER_LANGUAGE_NONE)
        return Pdl::Unknown;
    require(language >= JOBPARSER_LANGUAGE_PCL5 && language <= JOBPARSER_LANGUAGE_URF,
            "There is no language of this number");
    return static_cast<Pdl>(language);
}

JobParserParseOptions takeOptions(const JobParserParseOptions* given)
{
    JobParserParseOptions options{};
    if (given == nullptr)
        return options;
    require(Torv::takeVersioned(given, parseOptionsSizes, options), "The options have a size of no version");
    require((options.flags & ~knownParseFlags) == 0, "The options have unknown flags");
    return options;
}

std::unique_ptr<JobParserJob> openJob(const char* path)
{
    auto opened = std::make_unique<JobParserJob>();
    withStatus(JOBPARSER_CANNOT_READ, [&] { SetUp::instance().open(opened->file, path); });
    return opened;
}

void parse(JobParserJob& opened, const JobParserParseOptions& options)
{
    const auto has = [&](std::uint32_t flag) { return (options.flags & flag) != 0; };
    const Parser::ParseOptions parseOptions{languageOf(options.language), !has(JOBPARSER_PARSE_NO_COLLECT),
                                            !has(JOBPARSER_PARSE_REFUSE_RESTRICTED)};
    const auto log = std::make_shared<CauseLog>();
    Parser parser(log, paperList, !has(JOBPARSER_PARSE_NO_WORKER));
    const std::shared_ptr<JobParserResult> result = parser.parse(opened.file, parseOptions);
    opened.job = result->job;
    opened.parsed = result->parsed;
    if (!opened.parsed)
        opened.cause = log->cause();
}

/// The members that an older caller does not know are left out.
void giveChunk(const IChunk* chunk, std::size_t chunkSize, unsigned char* place)
{
    JobParserChunk given{"", -1, -1, 0};
    if (chunk != nullptr) {
        given.className = Reflection::chunkClass(*chunk).c_str();
        given.size = chunk->size();
        if (const std::optional<FileRange> range = fileRange(*chunk)) {
            given.offset = range->offset;
            given.fileSize = range->size;
        }
    }
    std::memcpy(place, &given, chunkSize);
}

bool isOneOf(std::size_t size, std::span<const std::size_t> sizes)
{
    return std::find(sizes.begin(), sizes.end(), size) != sizes.end();
}

RewriteStep takeStep(const unsigned char* place, std::size_t stepSize)
{
    JobParserStep given{};
    std::memcpy(&given, place, stepSize);
    const std::optional<RewriteStep::Kind> kind = RewriteStep::kindOf(given.kind);
    require(kind.has_value(), "There is no step of this number");
    RewriteStep step{*kind, {}, {}};
    const int texts = RewriteStep::textsOf(*kind);
    require(texts < 1 || given.first != nullptr, "A step lacks its first text");
    require(texts < 2 || given.second != nullptr, "A step lacks its second text");
    if (texts > 0)
        step.first = given.first;
    if (texts > 1)
        step.second = given.second;
    require(step.makesSense(), "A job cannot be wrapped in this language");
    return step;
}

std::vector<RewriteStep> takeSteps(const JobParserStep* steps, std::size_t count, std::size_t stepSize)
{
    require(isOneOf(stepSize, stepSizes), "The steps have a size of no version");
    require(steps != nullptr || count == 0, "steps is null");
    std::vector<RewriteStep> taken;
    const auto* const first = reinterpret_cast<const unsigned char*>(steps);
    for (std::size_t index = 0; index < count; ++index)
        taken.push_back(takeStep(first + index * stepSize, stepSize));
    return taken;
}

void applySteps(JobParserJob& job, const std::vector<RewriteStep>& steps)
{
    for (const RewriteStep& step : steps)
        step.applyTo(*job.job);
}

void save(JobParserJob& job, const char* path)
{
    const Torv::IO::OutputSignals signals;
    withStatus(JOBPARSER_CANNOT_WRITE, [&] {
        Torv::IO::OutputFile output(path);
        job.job->save(job.file, output.stream());
        output.commit();
    });
}

} // namespace
} // namespace JobParser

using namespace JobParser;

const char* jobParserVersion(void)
{
    return JOBPARSER_VERSION;
}

const char* jobParserStatusText(JobParserStatus status)
{
    const bool isKnown = status >= 0 && status < static_cast<JobParserStatus>(statusTexts.size());
    return isKnown ? statusTexts[static_cast<std::size_t>(status)] : "unknown status";
}

void jobParserFreeText(char* text)
{
    std::free(text);
}

void jobParserFreeJob(JobParserJob* job)
{
    guarded(nullptr, [&] { delete job; });
}

JobParserStatus jobParserSetUp(const JobParserSetUpOptions* options, char** error)
{
    return guarded(error, [&] {
        JobParserSetUpOptions taken{};
        if (options != nullptr)
            require(Torv::takeVersioned(options, setUpOptionsSizes, taken),
                    "The options have a size of no version");
        require(taken.reserved == 0, "The options have unknown members");
        SetUp::instance().run(taken);
    });
}

JobParserStatus jobParserParse(const char* path, const JobParserParseOptions* options, JobParserJob** job,
                               char** error)
{
    if (job != nullptr)
        *job = nullptr;
    return guarded(error, [&] {
        require(job != nullptr, "job is null");
        require(path != nullptr, "path is null");
        const JobParserParseOptions taken = takeOptions(options);
        SetUp::instance().ensure();
        std::unique_ptr<JobParserJob> opened = openJob(path);
        parse(*opened, taken);
        *job = opened.release();
    });
}

JobParserStatus jobParserLoad(const char* path, const char* metadataPath, JobParserJob** job, char** error)
{
    if (job != nullptr)
        *job = nullptr;
    return guarded(error, [&] {
        require(job != nullptr, "job is null");
        require(path != nullptr, "path is null");
        require(metadataPath != nullptr, "metadataPath is null");
        SetUp::instance().ensure();
        std::unique_ptr<JobParserJob> opened = openJob(path);
        opened->job = withStatus(JOBPARSER_CANNOT_READ, [&] { return std::make_shared<Job>(metadataPath); });
        *job = opened.release();
    });
}

JobParserStatus jobParserParsed(const JobParserJob* job, int32_t* parsed, char** cause, char** error)
{
    if (cause != nullptr)
        *cause = nullptr;
    return guarded(error, [&] {
        require(job != nullptr, "job is null");
        require(parsed != nullptr, "parsed is null");
        if (cause != nullptr && !job->parsed)
            giveText(job->cause, cause, nullptr);
        *parsed = job->parsed ? 1 : 0;
    });
}

JobParserStatus jobParserRecord(const JobParserJob* job, int32_t withFonts, char** text, size_t* size,
                                char** error)
{
    if (text != nullptr)
        *text = nullptr;
    return guarded(error, [&] {
        require(job != nullptr, "job is null");
        require(text != nullptr, "text is null");
        const JobInfo& info = job->job->jobInfo;
        giveText(withFonts != 0 ? info.toJsonFull() : info.toJson(), text, size);
    });
}

JobParserStatus jobParserMetadata(const JobParserJob* job, char** text, size_t* size, char** error)
{
    if (text != nullptr)
        *text = nullptr;
    return guarded(error, [&] {
        require(job != nullptr, "job is null");
        require(text != nullptr, "text is null");
        giveText(job->job->toJson(), text, size);
    });
}

JobParserStatus jobParserChunkCount(const JobParserJob* job, size_t* count, char** error)
{
    return guarded(error, [&] {
        require(job != nullptr, "job is null");
        require(count != nullptr, "count is null");
        *count = job->job->chunks.size();
    });
}

JobParserStatus jobParserChunks(const JobParserJob* job, size_t first, size_t count, JobParserChunk* chunks,
                                size_t chunkSize, char** error)
{
    return guarded(error, [&] {
        require(job != nullptr, "job is null");
        require(isOneOf(chunkSize, chunkSizes), "The chunks have a size of no version");
        require(chunks != nullptr || count == 0, "chunks is null");
        const auto& list = job->job->chunks;
        require(first <= list.size() && count <= list.size() - first, "There are not so many chunks");
        auto* const place = reinterpret_cast<unsigned char*>(chunks);
        for (std::size_t index = 0; index < count; ++index)
            giveChunk(list[first + index].get(), chunkSize, place + index * chunkSize);
    });
}

JobParserStatus jobParserSave(JobParserJob* job, const char* path, char** error)
{
    return guarded(error, [&] {
        require(job != nullptr, "job is null");
        require(path != nullptr, "path is null");
        save(*job, path);
    });
}

JobParserStatus jobParserChange(JobParserJob* job, const JobParserStep* steps, size_t count, size_t stepSize,
                                char** error)
{
    return guarded(error, [&] {
        require(job != nullptr, "job is null");
        applySteps(*job, takeSteps(steps, count, stepSize));
    });
}

JobParserStatus jobParserRewrite(JobParserJob* job, const JobParserStep* steps, size_t count, size_t stepSize,
                                 const char* path, char** error)
{
    return guarded(error, [&] {
        require(job != nullptr, "job is null");
        require(path != nullptr, "path is null");
        applySteps(*job, takeSteps(steps, count, stepSize));
        save(*job, path);
    });
}
