#include "JobParser/xps/XpsParser.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <minizip/unzip.h>
#include <random>
#include <string>
#include <string_view>
#include <sys/resource.h>

#include "JobParser/JobParserException.h"
#include "JobParser/Parser.h"
#include "JobParser/model/GlobalParser.h"
#include "JobParser/xps/ChunkXps.h"
#include "tests/support/OpenJob.h"
#include "tests/support/SparseFile.h"
#include "tests/support/ZipBytes.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Log/LogNull.h"

namespace JobParser
{
namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr const char* ticketName = "Metadata/Job_PT.xml";
constexpr std::size_t mebibyte = 0x100000;

std::string copies(const std::string& number)
{
    return TicketText().copies(number).str();
}

/// A ticket that has a size of its own.
std::string ticketOfSize(std::size_t size, const std::string& number)
{
    const std::string ticket = copies(number);
    return ticket + std::string(size - ticket.size(), ' ');
}

ZipPart ticketPart(const std::string& content)
{
    ZipPart part;
    part.name = ticketName;
    part.content = content;
    return part;
}

JobInfo read(const std::string& bytes)
{
    OpenJob job(bytes);
    return XpsParser(job.file).parse();
}

/// What a package fails with.
std::string failure(const std::string& bytes)
{
    try {
        read(bytes);
    } catch (const JobParserException& error) {
        return error.what();
    }
    return "none";
}

/// Bytes that inflate to themselves.
std::string deflated(const std::string& bytes)
{
    return "\x01"s + ZipBytes::number(bytes.size(), 2) + ZipBytes::number(~bytes.size(), 2) + bytes;
}

std::shared_ptr<JobParserResult> parse(OpenJob& job)
{
    return Parser(std::make_shared<Torv::Log::LogNull>(), job.papers, false)
        .parse(job.file, {Pdl::Detect, true, true});
}

std::string saved(const Job& job, JobFile& file)
{
    Torv::IO::StringStream stream;
    job.save(file, stream);
    return stream.str();
}

TEST(XpsParser, ReadsTheTicketOfAPackage)
{
    const JobInfo info = read(ZipBytes()
                                  .part("[Content_Types].xml", "<Types/>")
                                  .part(ticketName, TicketText().copies("2").mediaSize("psk:ISOA4").str())
                                  .part("Documents/1/Pages/1.fpage", "<FixedPage/>")
                                  .str());

    EXPECT_EQ(info.toJson(),
              R"({"version":1,"pjl":false,"pdl":8,"paper":5,"monoCount":null,"grayCount":null,)"
              R"("colorCount":null,"duplex":null,"copies":2,"forceMono":null,"stapling":null,)"
              R"("punching":null,"orientation":null,"ecoMode":null,"ecoMode":null,)"
              R"("pagesPerSheet":null,"originalBrand":null})");
}

TEST(XpsParser, InflatesTheTicket)
{
    ZipPart part = ticketPart(deflated(copies("3")));
    part.method = 8;
    part.size = copies("3").size();

    EXPECT_EQ(read(ZipBytes().part(part).str()).copies, 3);
}

TEST(XpsParser, KnowsNothingOfAPackageWithoutATicket)
{
    const JobInfo info =
        read(ZipBytes().part("a.xml", "<a/>").part("Metadata/Page_PT.xml", copies("2")).str());

    EXPECT_EQ(info.flags(JobInfo::AllFlags), 0);
}

TEST(XpsParser, KnowsNothingOfAPackageWithoutParts)
{
    EXPECT_EQ(read(ZipBytes().str()).flags(JobInfo::AllFlags), 0);
}

TEST(XpsParser, KnowsNothingOfWhatIsNoPackage)
{
    for (const std::string& bytes :
         {""s, "P"s, "PK\x03\x04"s, "PK\x05\x06"s, std::string(100, 'x'), std::string(70000, '\0'),
          std::string(200000, 'P'), "PK\x05\x06"s + std::string(18, '\xFF'),
          "PK\x06\x07"s + std::string(16, '\xFF')})
        EXPECT_EQ(read(bytes).flags(JobInfo::AllFlags), 0) << bytes.size();
}

TEST(XpsParser, TakesAnyNameThatBeginsAsThatOfTheTicket)
{
    for (const std::string& name :
         {"Metadata/Job_PT.xml"s, "metadata/job_pt.xml"s, "METADATA/JOB_PT.XML"s, "Metadata/Job_PT.xml.bak"s,
          "Metadata/Job_PT.xml\0"s, "Metadata/Job_PT.xml/[0].piece"s, ticketName + std::string(236, 'x'),
          ticketName + std::string(237, 'x'), ticketName + std::string(281, 'x'),
          ticketName + std::string(60000, 'x')}) {
        EXPECT_EQ(read(ZipBytes().part(name, copies("2")).str()).copies, 2) << name;
        EXPECT_EQ(read(ZipBytes().part("first", "").part(name, copies("2")).str()).copies, 2) << name;
    }
}

TEST(XpsParser, TakesNoOtherName)
{
    for (const std::string& name :
         {""s, "M"s, "Metadata/Job_PT.xm"s, "Metadata/Job_PT,xml"s, "/Metadata/Job_PT.xml"s,
          "Metadata\\Job_PT.xml"s, " Metadata/Job_PT.xml"s, "Metadata/Job_PT.xm\0"s, std::string(300, 'x'),
          std::string(256, 'x'), std::string(255, 'x')}) {
        EXPECT_EQ(read(ZipBytes().part(name, copies("2")).str()).flags(JobInfo::AllFlags), 0) << name;
        EXPECT_EQ(read(ZipBytes().part("first", "").part(name, copies("2")).part("last", "").str())
                      .flags(JobInfo::AllFlags),
                  0)
            << name;
    }
}

TEST(XpsParser, WalksOverExtraFieldsAndComments)
{
    ZipBytes zip;
    for (const char* name : {"a", "b", ticketName, "c"}) {
        ZipPart part = ticketPart(copies("2"));
        part.name = name;
        part.extra = "\x55\x54\x05\x00\x01\x02\x03\x04\x05"s;
        part.comment = "a comment";
        zip.part(part);
    }

    EXPECT_EQ(read(zip.str()).copies, 2);
    EXPECT_EQ(read(zip.str("a comment of the package")).copies, 2);
    EXPECT_EQ(read(zip.str(std::string(65000, 'c'))).copies, 2);
    EXPECT_EQ(read("a loader in front" + zip.str()).copies, 2);
}

TEST(XpsParser, MergesAllTickets)
{
    const JobInfo info =
        read(ZipBytes()
                 .part(ticketName, TicketText().copies("5").mediaSize("psk:ISOA4").str())
                 .part("other", "")
                 .part("metadata/job_pt.xml2", TicketText().copies("2").mediaSize("psk:ISOA3").str())
                 .str());

    EXPECT_EQ(info.copies, 5);
    EXPECT_EQ(info.paper, PaperA3);
}

TEST(XpsParser, StartsAnewAtEachParse)
{
    OpenJob job(ZipBytes().part(ticketName, copies("2")).str());
    XpsParser parser(job.file);
    parser.jobInfo.setPaper(PaperA4);

    EXPECT_EQ(parser.parse().flags(JobInfo::FlagPaper), 0);
    EXPECT_EQ(parser.parse().copies, 2);
    EXPECT_EQ(parser.jobInfo.copies, 2);
}

TEST(XpsParser, ReadsThePackageFromAnyPosition)
{
    OpenJob job(ZipBytes().part(ticketName, copies("2")).str());
    job.file.setPos(job.file.m_realDataSize);

    EXPECT_EQ(XpsParser(job.file).parse().copies, 2);
}

TEST(XpsParser, TakesATicketOfExactlyOneMebibyte)
{
    EXPECT_EQ(read(ZipBytes().part(ticketName, ticketOfSize(mebibyte, "2")).str()).copies, 2);
}

TEST(XpsParser, RefusesATicketOfOneByteMore)
{
    EXPECT_EQ(failure(ZipBytes().part(ticketName, ticketOfSize(mebibyte + 1, "2")).str()),
              "Print ticket data are too large.");
    EXPECT_EQ(failure(ZipBytes().part(ticketName, std::string(3 * mebibyte, ' ')).str()),
              "Print ticket data are too large.");
}

TEST(XpsParser, LimitsEachTicketForItself)
{
    EXPECT_EQ(read(ZipBytes()
                       .part(ticketName, ticketOfSize(mebibyte, "2"))
                       .part(ticketName, ticketOfSize(mebibyte, "3"))
                       .part(ticketName, ticketOfSize(mebibyte, "1"))
                       .str())
                  .copies,
              3);
}

std::string ticketsOfTheSameMebibyte(int count)
{
    ZipPart part = ticketPart(ticketOfSize(mebibyte, "2"));
    part.crc = 0;
    ZipBytes zip;
    zip.part(part);
    part.localOffset = 0;
    for (int number = 1; number < count; ++number)
        zip.part(part);
    return zip.str();
}

TEST(XpsParser, RefusesAPackageThatNamesTheSameTicketWithoutEnd)
{
    EXPECT_EQ(read(ticketsOfTheSameMebibyte(256)).copies, 2);
    EXPECT_EQ(failure(ticketsOfTheSameMebibyte(257)), "Print ticket data are too large.");
}

/// A package of `count` tickets with the same data, which inflate to nothing.
ZipBytes idleTickets(const std::string& data, std::size_t packedSize, int count)
{
    ZipPart part = ticketPart(data);
    part.method = 8;
    part.size = 1000;
    part.packedSize = packedSize;
    part.crc = 0;
    ZipBytes zip;
    zip.part(part);
    part.localOffset = 0;
    for (int number = 1; number < count; ++number)
        zip.part(part);
    return zip;
}

TEST(XpsParser, RefusesAPackageThatNamesDataWithoutEndThatInflateToNothing)
{
    std::string data;
    while (data.size() < mebibyte - 5)
        data += "\x00\x00\x00\xFF\xFF"s;
    data.replace(data.size() - 5, 1, "\x01");

    EXPECT_EQ(read(idleTickets(data, data.size(), 256).str()).flags(JobInfo::AllFlags), JobInfo::FlagPdl);
    EXPECT_EQ(failure(idleTickets(data, data.size(), 257).str()), "Print ticket data are too large.");
}

TEST(XpsParser, TakesTicketsThatFitIntoThePackage)
{
    constexpr std::int64_t packageSize = 400 * static_cast<std::int64_t>(mebibyte);
    // minizip reads ahead.
    const std::string nothing = "\x03"s + std::string(70000, '\0');
    SparseFile sparse;
    for (const int count : {2, 3}) {
        sparse.resize(packageSize);
        sparse.writeAt(packageSize, idleTickets(nothing, 190 * mebibyte, count).str());
        JobFile file;
        file.open(sparse.path());
        XpsParser parser(file);

        // Each parse counts anew.
        for (int repeat = 0; repeat < 2; ++repeat) {
            if (count == 2)
                EXPECT_EQ(parser.parse().flags(JobInfo::AllFlags), JobInfo::FlagPdl);
            else
                EXPECT_THROW(parser.parse(), JobParserException);
        }
    }
}

TEST(XpsParser, MindsNoWrongChecksum)
{
    ZipPart part = ticketPart(copies("2"));
    part.crc = 0x12345678;

    EXPECT_EQ(read(ZipBytes().part(part).part(part).part("last", "").str()).copies, 2);
}

TEST(XpsParser, RefusesATicketOfAnUnknownMethod)
{
    for (const int method : {1, 9, 14, 93, 99, 65535}) {
        ZipPart part = ticketPart(copies("2"));
        part.method = static_cast<std::uint16_t>(method);
        EXPECT_EQ(failure(ZipBytes().part(part).str()), "Unable to select file") << method;
    }
}

TEST(XpsParser, MindsNoUnknownMethodOfAnotherPart)
{
    ZipPart other = ticketPart("x");
    other.name = "other";
    other.method = 99;

    EXPECT_EQ(read(ZipBytes().part(other).part(ticketName, copies("2")).str()).copies, 2);
}

TEST(XpsParser, RefusesATicketThatIsNotWhereTheDirectoryPutsIt)
{
    for (const std::uint32_t offset : {1U, 1000000U, 0x7FFFFFFFU, 0xFFFFFFFEU}) {
        ZipPart part = ticketPart(copies("2"));
        part.localOffset = offset;
        EXPECT_EQ(failure(ZipBytes().part("a", "abc").part(part).str()), "Unable to select file") << offset;
    }
}

TEST(XpsParser, RefusesATicketThatDoesNotInflate)
{
    for (const std::string& content :
         {""s, "\x07"s, "\xFF\xFF\xFF"s, "\x01\x05\x00\x00\x00hello"s, deflated("hello").substr(0, 7)}) {
        ZipPart part = ticketPart(content);
        part.method = 8;
        part.size = 5;
        EXPECT_EQ(failure(ZipBytes().part(part).str()), "Unable to decompress part of the XPS file")
            << content.size();
    }
}

TEST(XpsParser, RefusesATicketThatRunsBeyondTheEndOfTheFile)
{
    ZipBytes zip;
    ZipPart part = ticketPart(std::string(5000, ' '));
    zip.part(part);
    std::string bytes = zip.str();
    const std::string size = ZipBytes::number(5000, 4);
    const std::string more = ZipBytes::number(500000, 4);
    for (std::size_t place = bytes.find(size); place != std::string::npos; place = bytes.find(size))
        bytes.replace(place, size.size(), more);

    EXPECT_EQ(failure(bytes), "Unable to decompress part of the XPS file");
}

TEST(XpsParser, LearnsNothingFromAnEncryptedTicket)
{
    ZipPart part = ticketPart("\x91\x12\xFE\x00\x7F\x33\x04\x85\x66\x07\x18 encrypted");
    part.flags = 1;

    const JobInfo info = read(ZipBytes().part(part).str());

    EXPECT_EQ(info.flags(JobInfo::AllFlags), JobInfo::FlagPdl);
}

TEST(XpsParser, RefusesAnEncryptedTicketThatNoLongerInflates)
{
    ZipPart part = ticketPart("\x91\x12\xFE\x01\x7F\x33\x04\x85\x66\x07\x18 encrypted");
    part.flags = 1;
    part.method = 8;
    part.size = 1000;

    EXPECT_EQ(failure(ZipBytes().part(part).str()), "Unable to decompress part of the XPS file");
}

// minizip gives its bytes as they stand.
TEST(XpsParser, LearnsNothingFromATicketInBzip2)
{
    ZipPart part = ticketPart("BZh91AY&SY\x1A\x2B\x3C\x4D and so on");
    part.method = 12;
    part.size = 1000;

    const JobInfo info =
        read(ZipBytes().part(part).part(ticketName, TicketText().mediaSize("psk:ISOA4").str()).str());

    EXPECT_EQ(info.flags(JobInfo::AllFlags), JobInfo::FlagPdl | JobInfo::FlagPaper);
}

TEST(XpsParser, KnowsNothingIfTheDirectoryIsOutside)
{
    const ZipBytes zip = ZipBytes().part(ticketName, copies("2"));

    for (const std::size_t offset :
         {zip.directoryOffset() + 1, std::size_t{0x7FFFFFFF}, std::size_t{0xFFFFFFFE}})
        EXPECT_EQ(read(zip.withDirectoryAt(offset)).flags(JobInfo::AllFlags), 0) << offset;
}

TEST(XpsParser, KnowsWhatStandsBeforeABrokenRecord)
{
    std::string bytes =
        ZipBytes().part(ticketName, copies("2")).part("a", "").part(ticketName, copies("9")).str();
    bytes.replace(bytes.rfind("PK\x01\x02"), 4, "PK\x01\x03");

    EXPECT_EQ(read(bytes).copies, 2);
}

TEST(XpsParser, StopsBehindTheLastRecord)
{
    OpenJob job(ZipBytes().part("a.xml", "<a/>").part("b.xml", "<b/>").str("comment"));

    XpsParser(job.file).parse();

    EXPECT_EQ(job.file.m_offset, job.file.m_realDataSize - 22 - 7);
}

// A whole package of several parts, with all that makes a walk differ.
std::string manyFacedPackage()
{
    ZipPart extra = ticketPart("abc");
    extra.name = "with extra";
    extra.extra = "\x01\x00\x04\x00\x01\x02\x03\x04"s;
    ZipPart commented = ticketPart("abc");
    commented.name = "with comment";
    commented.comment = "comment";
    ZipPart squeezed = ticketPart(deflated(copies("3")));
    squeezed.method = 8;
    squeezed.size = copies("3").size();
    return ZipBytes()
        .part("[Content_Types].xml", "<Types/>")
        .part(extra)
        .part(commented)
        .part("metadata/job_pt.xml", TicketText().copies("2").str())
        .part("", "nameless")
        .part(squeezed)
        .part(std::string(300, 'n'), "")
        .part("last", "last")
        .str();
}

TEST(XpsParser, SurvivesAPackageThatIsCutAnywhere)
{
    const std::string whole = manyFacedPackage();

    for (std::size_t size = 0; size < whole.size(); ++size) {
        OpenJob job(whole.substr(0, size));
        const auto result = parse(job);
        EXPECT_EQ(saved(*result->job, job.file), whole.substr(0, size));
        // What is missing reads as zeros, as which the last three bytes stand there.
        EXPECT_EQ(result->job->jobInfo.copies, size + 3 >= whole.size() ? 3 : 1) << size;
    }
}

/// How the walk over a package ended.
struct Walk {
    bool sawTicket;
    std::string end; ///< The position, or why it failed.

    bool operator==(const Walk&) const = default;
};

bool isTicketName(const std::string& name)
{
    std::string start = name.substr(0, 19);
    std::transform(start.begin(), start.end(), start.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
    });
    return start == "metadata/job_pt.xml";
}

std::string failureOfReading(unzFile package)
{
    if (unzOpenCurrentFile(package) != UNZ_OK)
        return "Unable to select file";
    std::array<char, 1024> block{};
    int count = 0;
    while ((count = unzReadCurrentFile(package, block.data(), block.size())) > 0) {
    }
    return count < 0 ? "Unable to decompress part of the XPS file" : "";
}

// What minizip itself makes of a package, if each name is asked of it.
Walk plainWalk(JobFile& file)
{
    XpsParser parser(file);
    zlib_filefunc64_def callbacks = parser.setupFileCallbacks();
    const std::unique_ptr<void, int (*)(unzFile)> package(unzOpen2_64("", &callbacks), unzClose);
    bool sawTicket = false;
    unz_global_info64 global{};
    if (package != nullptr)
        unzGetGlobalInfo64(package.get(), &global);
    for (ZPOS64_T entry = 0; entry < global.number_entry; ++entry) {
        unz_file_info64 info{};
        std::string name(256, '\0');
        if (unzGetCurrentFileInfo64(package.get(), &info, name.data(), 256, nullptr, 0, nullptr, 0) != UNZ_OK)
            break;
        name.resize(std::min<std::size_t>(info.size_filename, 256));
        if (isTicketName(name)) {
            sawTicket = true;
            if (const std::string failed = failureOfReading(package.get()); !failed.empty())
                return {true, failed};
        }
        if (unzGoToNextFile(package.get()) != UNZ_OK)
            break;
    }
    return {sawTicket, std::to_string(file.m_offset)};
}

// The same of XpsParser, which spares some of the questions.
Walk ourWalk(JobFile& file)
{
    try {
        const JobInfo info = XpsParser(file).parse();
        return {info.flags(JobInfo::FlagPdl) != 0, std::to_string(file.m_offset)};
    } catch (const JobParserException& error) {
        return {true, error.what()};
    }
}

std::ostream& operator<<(std::ostream& stream, const Walk& walk)
{
    return stream << (walk.sawTicket ? "a ticket, " : "no ticket, ") << walk.end;
}

void expectTheSameWalk(const std::string& bytes)
{
    OpenJob theirs(bytes);
    OpenJob ours(bytes);
    EXPECT_EQ(ourWalk(ours.file), plainWalk(theirs.file));
    EXPECT_EQ(ours.file.m_offset, theirs.file.m_offset);
}

TEST(XpsParser, WalksAsIfEveryNameWereAsked)
{
    const std::string whole = manyFacedPackage();
    std::mt19937 random(3);

    expectTheSameWalk(whole);
    for (std::size_t place = 0; place < whole.size(); ++place) {
        std::string broken = whole;
        broken[place] = static_cast<char>(random() % 4 == 0 ? 255 : random());
        expectTheSameWalk(broken);
        expectTheSameWalk(whole.substr(0, place));
        expectTheSameWalk(whole.substr(place));
    }
}

TEST(XpsParser, WalksAsIfEveryNameWereAskedWhereRecordsStraddleViews)
{
    const std::string tail = manyFacedPackage();
    for (const std::int64_t shift : {0, 1, 30, 46, 300, 700, 900, 1100}) {
        const std::string bytes = std::string(static_cast<std::size_t>(4194304 - 1400 + shift), 'f') + tail;
        expectTheSameWalk(bytes);
    }
}

TEST(XpsParser, FindsTheTicketInAPackageOfManyViews)
{
    const std::string package = ZipBytes().part("a", "").part(ticketName, copies("4")).part("b", "").str();
    SparseFile sparse;
    sparse.resize(5000000000);
    sparse.writeAt(5000000000, package);
    JobFile file;
    file.open(sparse.path());

    EXPECT_EQ(XpsParser(file).parse().copies, 4);
}

struct Callbacks {
    explicit Callbacks(std::string_view bytes)
        : job(bytes), parser(job.file), table(parser.setupFileCallbacks())
    {
        stream = table.zopen64_file(table.opaque, "ignored", 7);
    }

    long seek(std::int64_t offset, int origin)
    {
        return table.zseek64_file(table.opaque, stream, static_cast<ZPOS64_T>(offset), origin);
    }
    std::string read(unsigned long count)
    {
        std::string bytes(count, '?');
        bytes.resize(table.zread_file(table.opaque, stream, bytes.data(), count));
        return bytes;
    }

    OpenJob job;
    XpsParser parser;
    zlib_filefunc64_def table;
    void* stream;
};

TEST(XpsCallbacks, OpenTheJobFileWhateverThePath)
{
    Callbacks callbacks("abc");

    EXPECT_EQ(callbacks.table.opaque, &callbacks.parser);
    EXPECT_EQ(callbacks.stream, &callbacks.job.file);
    EXPECT_EQ(callbacks.table.zopen64_file(callbacks.table.opaque, nullptr, 0), &callbacks.job.file);
}

TEST(XpsCallbacks, ReadUpToTheEnd)
{
    Callbacks callbacks("abcdef");

    EXPECT_EQ(callbacks.read(0), "");
    EXPECT_EQ(callbacks.read(1), "a");
    EXPECT_EQ(callbacks.read(2), "bc");
    EXPECT_EQ(callbacks.job.file.m_offset, 3);
    EXPECT_EQ(callbacks.read(9), "def");
    EXPECT_EQ(callbacks.read(9), "");
    EXPECT_EQ(callbacks.read(1), "");
    EXPECT_EQ(callbacks.job.file.m_offset, 6);
}

TEST(XpsCallbacks, ReadTheLastByteAlone)
{
    Callbacks callbacks("ab");
    callbacks.read(1);

    EXPECT_EQ(callbacks.read(1), "b");
    EXPECT_TRUE(callbacks.job.file.atEnd());
}

TEST(XpsCallbacks, ReadOverSeveralViews)
{
    std::string bytes(9000000, '\0');
    for (std::size_t at = 0; at < bytes.size(); ++at)
        bytes[at] = static_cast<char>(at * 7 / 3);
    Callbacks callbacks(bytes);

    EXPECT_TRUE(callbacks.read(1) == bytes.substr(0, 1));
    EXPECT_TRUE(callbacks.read(8999000) == bytes.substr(1, 8999000));
    EXPECT_TRUE(callbacks.read(5000) == bytes.substr(8999001));
    callbacks.seek(4194300, ZLIB_FILEFUNC_SEEK_SET);
    for (std::size_t at = 4194300; at < 4194310; ++at)
        EXPECT_EQ(callbacks.read(1), bytes.substr(at, 1));
}

TEST(XpsCallbacks, WriteNothingAndFindNoErrors)
{
    Callbacks callbacks("abc");

    EXPECT_EQ(callbacks.table.zwrite_file(callbacks.table.opaque, callbacks.stream, "xyz", 3), 0U);
    EXPECT_EQ(callbacks.table.zerror_file(callbacks.table.opaque, callbacks.stream), 0);
    EXPECT_EQ(callbacks.table.zclose_file(callbacks.table.opaque, callbacks.stream), 0);
    EXPECT_TRUE(callbacks.job.file.isOpen());
}

TEST(XpsCallbacks, TellThePosition)
{
    Callbacks callbacks("abcdef");
    callbacks.read(4);

    EXPECT_EQ(callbacks.table.ztell64_file(callbacks.table.opaque, callbacks.stream), 4U);
}

struct SeekRow {
    std::int64_t offset;
    int origin;
    long result;
    std::int64_t position;
};

TEST(XpsCallbacks, SeekWithinTheDataWhoseEndIsTheLastByte)
{
    // Of six bytes, from the third on.
    constexpr std::array<SeekRow, 22> rows{{
        {0, ZLIB_FILEFUNC_SEEK_SET, 0, 0},
        {5, ZLIB_FILEFUNC_SEEK_SET, 0, 5},
        {6, ZLIB_FILEFUNC_SEEK_SET, 1, 2},
        {-1, ZLIB_FILEFUNC_SEEK_SET, 1, 2},
        {INT64_MAX, ZLIB_FILEFUNC_SEEK_SET, 1, 2},
        {INT64_MIN, ZLIB_FILEFUNC_SEEK_SET, 1, 2},
        {0, ZLIB_FILEFUNC_SEEK_CUR, 0, 2},
        {3, ZLIB_FILEFUNC_SEEK_CUR, 0, 5},
        {4, ZLIB_FILEFUNC_SEEK_CUR, 1, 2},
        {-2, ZLIB_FILEFUNC_SEEK_CUR, 0, 0},
        {-3, ZLIB_FILEFUNC_SEEK_CUR, 1, 2},
        {INT64_MAX, ZLIB_FILEFUNC_SEEK_CUR, 1, 2},
        {INT64_MIN, ZLIB_FILEFUNC_SEEK_CUR, 1, 2},
        {0, ZLIB_FILEFUNC_SEEK_END, 0, 5},
        {1, ZLIB_FILEFUNC_SEEK_END, 1, 2},
        {-5, ZLIB_FILEFUNC_SEEK_END, 0, 0},
        {-6, ZLIB_FILEFUNC_SEEK_END, 1, 2},
        {INT64_MAX, ZLIB_FILEFUNC_SEEK_END, 1, 2},
        {INT64_MIN, ZLIB_FILEFUNC_SEEK_END, 1, 2},
        {0, 3, 1, 2},
        {0, -1, 1, 2},
        {1, 99, 1, 2},
    }};

    for (const auto& [offset, origin, result, position] : rows) {
        Callbacks callbacks("abcdef");
        callbacks.read(2);
        EXPECT_EQ(callbacks.seek(offset, origin), result) << offset << ' ' << origin;
        EXPECT_EQ(callbacks.job.file.m_offset, position) << offset << ' ' << origin;
    }
}

TEST(XpsCallbacks, SeekNowhereInAnEmptyFile)
{
    Callbacks callbacks("");

    EXPECT_EQ(callbacks.seek(0, ZLIB_FILEFUNC_SEEK_SET), 1);
    EXPECT_EQ(callbacks.seek(0, ZLIB_FILEFUNC_SEEK_CUR), 1);
    EXPECT_EQ(callbacks.seek(0, ZLIB_FILEFUNC_SEEK_END), 1);
    EXPECT_EQ(callbacks.seek(1, ZLIB_FILEFUNC_SEEK_END), 1);
}

TEST(XpsCallbacks, TakeTheEndOfAFileThatShrankForItsEnd)
{
    SparseFile sparse;
    sparse.resize(20000000);
    JobFile file;
    file.open(sparse.path());
    sparse.resize(5000);
    XpsParser parser(file);
    const zlib_filefunc64_def table = parser.setupFileCallbacks();

    EXPECT_EQ(table.zseek64_file(table.opaque, &file, 0, ZLIB_FILEFUNC_SEEK_END), 1);
    EXPECT_EQ(parser.parse().flags(JobInfo::AllFlags), 0);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define NEEDS_SHADOW_MEMORY
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define NEEDS_SHADOW_MEMORY
#endif
#endif

#if !defined(NEEDS_SHADOW_MEMORY)
/// Leaves with 0 if the refusal of a view goes through minizip as it is.
[[noreturn]] void parseWithoutMemory(const std::string& path)
{
    JobFile file;
    file.open(path);
    XpsParser parser(file);
    const rlimit nothing{0, 0};
    setrlimit(RLIMIT_AS, &nothing);
    try {
        parser.parse();
    } catch (const JobParserException&) {
        std::_Exit(1);
    } catch (const Torv::GenericException&) {
        std::_Exit(0);
    } catch (...) {
        std::_Exit(2);
    }
    std::_Exit(3);
}

TEST(XpsParserDeathTest, PassesOnThatTheSystemRefusesAView)
{
    SparseFile sparse;
    sparse.resize(20000000);

    EXPECT_EXIT(parseWithoutMemory(sparse.path()), testing::ExitedWithCode(0), "");
}
#endif

TEST(XpsMode, ReplacesTheRecordAndKeepsThePackageAsOneChunk)
{
    OpenJob job(ZipBytes().part("a", "").part("b", "").str());
    Global::Parser parser(job.job, job.file, job.papers);
    parser.pdlJobInfo.setCopies(7);
    parser.pdlJobInfo.addFonts({"Courier"});

    parser.xpsMode();

    EXPECT_EQ(parser.pdlJobInfo.flags(JobInfo::AllFlags), 0);
    EXPECT_TRUE(parser.pdlJobInfo.fonts.empty());
    ASSERT_EQ(job.job.chunks.size(), 1U);
    const auto& chunk = dynamic_cast<const ChunkXps&>(*job.job.chunks[0]);
    EXPECT_EQ(chunk.offset, 0);
    EXPECT_EQ(chunk.size(), job.file.m_offset);
    EXPECT_EQ(chunk.size(), job.file.m_realDataSize - 22);
}

TEST(XpsMode, LeavesRecordAndJobUntouchedIfThePackageFails)
{
    OpenJob job(ZipBytes().part(ticketName, std::string(mebibyte + 1, ' ')).str());
    Global::Parser parser(job.job, job.file, job.papers);
    parser.pdlJobInfo.setCopies(7);
    parser.pdlJobInfo.addFonts({"Courier"});

    EXPECT_THROW(parser.xpsMode(), JobParserException);

    EXPECT_EQ(parser.pdlJobInfo.copies, 7);
    EXPECT_EQ(parser.pdlJobInfo.fonts.size(), 1U);
    EXPECT_TRUE(job.job.chunks.empty());
}

TEST(XpsJob, TellsItsTicketAndSavesByteForByte)
{
    const std::string bytes =
        ZipBytes()
            .part("a", "")
            .part(ticketName, TicketText().copies("2").duplex("psk:TwoSidedLongEdge").str())
            .part("b", "")
            .str("comment");
    OpenJob job(bytes);

    const auto result = parse(job);

    EXPECT_TRUE(result->parsed);
    EXPECT_EQ(result->job->jobInfo.pdl, Pdl::Xps);
    EXPECT_EQ(result->job->jobInfo.copies, 2);
    EXPECT_EQ(result->job->jobInfo.duplex, Duplex::LongEdge);
    EXPECT_EQ(result->job->chunks.size(), 2U); // The raw loop has what stands behind the last record.
    EXPECT_NO_THROW(result->job->checkChunkSizes(job.file));
    EXPECT_EQ(saved(*result->job, job.file), bytes);
}

TEST(XpsJob, IsWalkedByTheRawLoopBehindItsTicket)
{
    const std::string bytes =
        ZipBytes().part(ticketName, copies("2")).str("\x1B%-12345X@PJL SET COPIES=5\r\n\x1B%-12345X");
    OpenJob job(bytes);

    const auto result = parse(job);

    EXPECT_TRUE(result->parsed);
    EXPECT_EQ(result->job->jobInfo.copies, 5);
    EXPECT_TRUE(result->job->jobInfo.pjl);
    EXPECT_EQ(saved(*result->job, job.file), bytes);
}

TEST(XpsJob, OfAZipThatIsNoXpsIsAPackageWithoutFacts)
{
    OpenJob job("PK\x03\x04 and nothing that a package needs"s);

    const auto result = parse(job);

    EXPECT_TRUE(result->parsed);
    EXPECT_EQ(result->job->jobInfo.flags(JobInfo::AllFlags), JobInfo::FlagPdl | JobInfo::FlagCopies);
    EXPECT_EQ(result->job->jobInfo.pdl, Pdl::Xps);
    EXPECT_EQ(saved(*result->job, job.file), "PK\x03\x04 and nothing that a package needs");
}

TEST(XpsJob, WithATicketThatFailsIsOneRawStretch)
{
    ZipPart part = ticketPart(copies("2"));
    part.method = 99;
    const std::string bytes = ZipBytes().part("a", "").part(part).str();
    OpenJob job(bytes);

    const auto result = parse(job);

    EXPECT_FALSE(result->parsed);
    EXPECT_EQ(result->job->jobInfo.flags(JobInfo::AllFlags), 0);
    EXPECT_EQ(saved(*result->job, job.file), bytes);
}

TEST(XpsJob, BehindPjlStaysRawData)
{
    const std::string package = ZipBytes().part(ticketName, copies("2")).str();
    OpenJob job(JobBytes().uel().pjl("ENTER LANGUAGE=XPS").raw(package).uel());

    const auto result = parse(job);

    EXPECT_EQ(result->job->jobInfo.pdl, Pdl::Xps);
    EXPECT_EQ(result->job->jobInfo.copies, 1);
}

} // namespace
} // namespace JobParser
