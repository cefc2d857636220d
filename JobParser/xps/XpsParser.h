#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "JobParser/JobInfo.h"

struct zlib_filefunc64_def_s; // minizip's table of callbacks, zlib_filefunc64_def

namespace JobParser
{

class JobFile;

/// A print ticket does not speak of what was looked for.
class PatternNotFound : public std::exception
{
};

/// The one group of the first match of an ECMAScript pattern, ignoring case: as text, or as a number.
///
/// Throws PatternNotFound if there is no match or the pattern has another number of groups than one, and
/// boost::bad_lexical_cast if an int is asked for and the group is anything but a plain integer. The pattern
/// is one that Torv::Regex takes, and is compiled at each call.
template <typename T> T parseRegExp(const std::string& text, const std::string& pattern);
template <> int parseRegExp<int>(const std::string& text, const std::string& pattern);
template <> std::string parseRegExp<std::string>(const std::string& text, const std::string& pattern);

/// Learns what the print ticket of an XPS package says: copies, page counts, duplex and paper.
///
/// The package is read through minizip, with the job file as its file, and only the part
/// "Metadata/Job_PT.xml" is inflated. Belongs to the thread that parses the job.
class XpsParser
{
public:
    /// The file outlives the parser.
    explicit XpsParser(JobFile& theFile) : file(theFile) {}
    XpsParser(const XpsParser&) = delete;
    XpsParser& operator=(const XpsParser&) = delete;

    /// Walks the package, wherever the file stands, and gives what its tickets say. The record stays empty if
    /// the file is no package or holds no ticket. Leaves the file where the last read of minizip ended.
    ///
    /// Throws JobParserException for a ticket that cannot be opened, that cannot be inflated or that is
    /// larger than 1 MiB, for tickets larger than 256 MiB together, and what the file throws. The package is
    /// closed then, too.
    JobInfo parse();

    /// The callbacks by which minizip reads the file, with this object as their opaque value. They throw
    /// nothing: what the file threw is kept, and parse throws it.
    zlib_filefunc64_def_s setupFileCallbacks();

    /// What one ticket says. What it is silent about stays unknown.
    JobInfo parseProperties(const std::string& ticket);

    void parseCopies(const std::string& ticket, JobInfo& info);
    /// The totals of the ticket include the copies, the counts of a record do not: `info` knows the copies.
    void parsePageCounts(const std::string& ticket, JobInfo& info);
    void parseDuplex(const std::string& ticket, JobInfo& info);
    /// Any paper that is named is set, one without a class as PaperOther.
    void parseMediaSize(const std::string& ticket, JobInfo& info);

    JobFile& file;
    JobInfo jobInfo; ///< What parse learned.

private:
    template <typename Result, typename Code>
    static Result guarded(void* opaque, Result onFailure, Code code) noexcept;
    static void* openFile(void* opaque, const void* path, int mode);
    static unsigned long readFile(void* opaque, void* stream, void* to, unsigned long wanted);
    static long seekFile(void* opaque, void* stream, unsigned long long offset, int origin);

    void readTickets(void* package);
    bool readPart(void* package);
    bool passOtherPart();
    std::string readTicket(void* package, std::uint64_t packedSize);
    void countPackedBytes(std::uint64_t count);
    [[noreturn]] void fail(const char* message) const;
    void rethrowFailure() const;

    std::int64_t m_record = 0;       // Where minizip went last, counted from the start.
    std::exception_ptr m_failure;    // The first exception of a callback.
    std::int64_t m_ticketBytes = 0;  // Inflated so far, of all tickets.
    std::uint64_t m_packedBytes = 0; // What these take in the file.
};

} // namespace JobParser
