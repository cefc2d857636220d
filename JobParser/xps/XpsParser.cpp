#include "JobParser/xps/XpsParser.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <minizip/unzip.h>
#include <optional>
#include <span>
#include <string_view>

#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"

#include "Torv/Text.h"

namespace JobParser
{
namespace
{

constexpr std::string_view ticketName = "Metadata/Job_PT.xml";
constexpr std::size_t nameRoom = 256;
// An entry's record in the directory: what stands in front of the name.
constexpr std::size_t recordSize = 46;
constexpr std::size_t nameLengthPlace = 28;
constexpr std::size_t extraLengthPlace = 30;

constexpr std::size_t blockSize = 1024;
constexpr std::int64_t maxTicketSize = 0x100000;
// Of all tickets together. Entries may share their data, so that a package of 1 MiB could name thousands of
// tickets of 1 MiB, or thousands of times 1 MiB that inflates to nothing.
constexpr std::int64_t maxTicketsSize = 256 * maxTicketSize;

constexpr const char* tooLarge = "Print ticket data are too large.";

// How far before the end of a package its directory may be looked for.
constexpr std::int64_t directorySearch = 0x10000;

struct PackageCloser {
    void operator()(void* package) const { unzClose(package); }
};
using Package = std::unique_ptr<void, PackageCloser>;

// The name need not end with the part's: one that goes on behind it counts as well.
bool isTicket(std::string_view name)
{
    return Torv::iequals(name.substr(0, ticketName.size()), ticketName);
}

std::size_t twoBytes(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return bytes[at] | (static_cast<std::size_t>(bytes[at + 1]) << 8);
}

// How many bytes the record of an entry and its name take, if they can be told to be those of another part.
std::optional<std::int64_t> otherPartSize(std::span<const std::uint8_t> record)
{
    if (record.size() < recordSize || twoBytes(record, extraLengthPlace) != 0)
        return std::nullopt;
    const std::size_t length = twoBytes(record, nameLengthPlace);
    if (length >= nameRoom || length > record.size() - recordSize)
        return std::nullopt;
    const auto name = record.subspan(recordSize, length);
    if (isTicket({reinterpret_cast<const char*>(name.data()), name.size()}))
        return std::nullopt;
    return static_cast<std::int64_t>(recordSize + length);
}

unsigned long copyBytes(JobFile& file, std::uint8_t* to, unsigned long wanted)
{
    unsigned long copied = 0;
    while (copied < wanted && !file.atEnd()) {
        const auto bytes = file.window();
        const std::size_t count = std::min<std::size_t>(bytes.size(), wanted - copied);
        std::memcpy(to + copied, bytes.data(), count);
        file.advancePos(static_cast<std::int64_t>(count));
        copied += count;
    }
    return copied;
}

// minizip counts without a sign, so that a way back wraps.
bool moveTo(JobFile& file, std::uint64_t offset, int origin)
{
    const auto size = static_cast<std::uint64_t>(file.m_realDataSize);
    std::uint64_t target = offset;
    switch (origin) {
    case ZLIB_FILEFUNC_SEEK_SET: break;
    case ZLIB_FILEFUNC_SEEK_CUR: target += static_cast<std::uint64_t>(file.m_offset); break;
    case ZLIB_FILEFUNC_SEEK_END: target += size - 1; break;
    default: return false;
    }
    const auto place = static_cast<std::int64_t>(target);
    if (place < 0 || place >= file.m_realDataSize)
        return false;
    // The directory is looked for backwards from the end in small steps, each of which would map anew.
    if (origin == ZLIB_FILEFUNC_SEEK_END)
        file.setPos(std::max<std::int64_t>(place - directorySearch, 0));
    // A file that shrank shows it when it is mapped.
    if (place >= file.m_realDataSize)
        return false;
    file.setPos(place);
    return true;
}

} // namespace

JobInfo XpsParser::parse()
{
    jobInfo = JobInfo();
    m_failure = nullptr;
    m_ticketBytes = 0;
    m_packedBytes = 0;
    m_record = 0;
    {
        zlib_filefunc64_def callbacks = setupFileCallbacks();
        const Package package(unzOpen2_64("", &callbacks));
        if (package != nullptr)
            readTickets(package.get());
    }
    rethrowFailure();
    return jobInfo;
}

zlib_filefunc64_def XpsParser::setupFileCallbacks()
{
    zlib_filefunc64_def callbacks{};
    callbacks.zopen64_file = &XpsParser::openFile;
    callbacks.zread_file = &XpsParser::readFile;
    callbacks.zwrite_file = [](void*, void*, const void*, unsigned long) { return 0UL; };
    callbacks.ztell64_file = [](void*, void* stream) {
        return static_cast<ZPOS64_T>(static_cast<const JobFile*>(stream)->m_offset);
    };
    callbacks.zseek64_file = &XpsParser::seekFile;
    callbacks.zclose_file = [](void*, void*) { return 0; };
    callbacks.zerror_file = [](void*, void*) { return 0; };
    callbacks.opaque = this;
    return callbacks;
}

// C code between here and parse knows no exceptions.
template <typename Result, typename Code>
Result XpsParser::guarded(void* opaque, Result onFailure, Code code) noexcept
{
    try {
        return code();
    } catch (...) {
        auto& failure = static_cast<XpsParser*>(opaque)->m_failure;
        if (failure == nullptr)
            failure = std::current_exception();
        return onFailure;
    }
}

void* XpsParser::openFile(void* opaque, const void*, int)
{
    return &static_cast<XpsParser*>(opaque)->file;
}

unsigned long XpsParser::readFile(void* opaque, void* stream, void* to, unsigned long wanted)
{
    JobFile& jobFile = *static_cast<JobFile*>(stream);
    auto* const bytes = static_cast<std::uint8_t*>(to);
    // The directory is read byte by byte. Nothing throws as long as nothing is mapped anew.
    if (const auto mapped = jobFile.window(); wanted == 1 && mapped.size() > 1) [[likely]] {
        *bytes = mapped.front();
        ++jobFile.m_offset;
        return 1;
    }
    return guarded(opaque, 0UL, [&] { return copyBytes(jobFile, bytes, wanted); });
}

long XpsParser::seekFile(void* opaque, void* stream, unsigned long long offset, int origin)
{
    return guarded(opaque, 1L, [&] {
        JobFile& jobFile = *static_cast<JobFile*>(stream);
        if (!moveTo(jobFile, offset, origin))
            return 1L;
        if (origin == ZLIB_FILEFUNC_SEEK_SET)
            static_cast<XpsParser*>(opaque)->m_record = jobFile.m_offset;
        return 0L;
    });
}

void XpsParser::readTickets(void* package)
{
    unz_global_info64 global{};
    if (unzGetGlobalInfo64(package, &global) != UNZ_OK)
        return;
    for (ZPOS64_T entry = 0; entry < global.number_entry; ++entry) {
        // How far minizip got with the first record, nobody knows.
        if ((entry == 0 || !passOtherPart()) && !readPart(package))
            return;
        if (unzGoToNextFile(package) != UNZ_OK)
            return;
    }
}

bool XpsParser::readPart(void* package)
{
    unz_file_info64 info{};
    std::array<char, nameRoom> name{};
    if (unzGetCurrentFileInfo64(package, &info, name.data(), name.size(), nullptr, 0, nullptr, 0) != UNZ_OK)
        return false;
    // A name that fills its room has no terminator.
    if (isTicket({name.data(), std::min<std::size_t>(info.size_filename, name.size())}))
        jobInfo.combineWith(parseProperties(readTicket(package, info.compressed_size)), JobInfo::AllFlags);
    return true;
}

// minizip reads the record of each entry twice and byte by byte: once to go there, once to give its name.
// Where a record is plain and tells the name of another part the second time is spared, and the file put
// where it would have ended.
bool XpsParser::passOtherPart()
{
    // A file that shrank, or that cannot be mapped any more, is left to minizip.
    if (m_record >= file.m_realDataSize)
        return false;
    const std::int64_t position = file.m_offset;
    file.setPos(m_record);
    const auto length = otherPartSize(file.window());
    file.setPos(std::min(length ? m_record + *length : position, file.m_realDataSize));
    return length.has_value();
}

// The entry stays open until the next one or the package's end: its checksum is nobody's business.
std::string XpsParser::readTicket(void* package, std::uint64_t packedSize)
{
    std::string ticket;
    if (unzOpenCurrentFile(package) != UNZ_OK)
        fail("Unable to select file");
    countPackedBytes(packedSize);
    std::array<char, blockSize> block;
    for (;;) {
        const int count = unzReadCurrentFile(package, block.data(), block.size());
        if (count == 0)
            return ticket;
        if (count < 0)
            fail("Unable to decompress part of the XPS file");
        ticket.append(block.data(), static_cast<std::size_t>(count));
        m_ticketBytes += count;
        if (static_cast<std::int64_t>(ticket.size()) > maxTicketSize || m_ticketBytes > maxTicketsSize)
            fail(tooLarge);
    }
}

// No package whose tickets have data of their own has more of it than its size.
void XpsParser::countPackedBytes(std::uint64_t count)
{
    const auto packageSize = static_cast<std::uint64_t>(file.m_realDataSize);
    m_packedBytes += std::min(count, packageSize);
    if (m_packedBytes > std::max(packageSize, static_cast<std::uint64_t>(maxTicketsSize)))
        fail(tooLarge);
}

// What the file threw is the cause of what minizip complains of.
void XpsParser::fail(const char* message) const
{
    rethrowFailure();
    throw JobParserException(message);
}

void XpsParser::rethrowFailure() const
{
    if (m_failure != nullptr)
        std::rethrow_exception(m_failure);
}

} // namespace JobParser
