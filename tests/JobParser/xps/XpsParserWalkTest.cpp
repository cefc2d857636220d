// The way over a package from its directory to its last record.

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <minizip/unzip.h>
#include <ostream>
#include <random>
#include <string>

#include "JobParser/JobParserException.h"
#include "JobParser/xps/XpsParser.h"
#include "tests/JobParser/xps/XpsSupport.h"
#include "tests/support/OpenJob.h"
#include "tests/support/SparseFile.h"
#include "tests/support/WholeJobs.h"
#include "tests/support/ZipBytes.h"

namespace JobParser
{
namespace
{

using namespace std::string_literals;

TEST(XpsParserWalk, WalksOverExtraFieldsAndComments)
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

TEST(XpsParserWalk, MindsNoUnknownMethodOfAnotherPart)
{
    ZipPart other = ticketPart("x");
    other.name = "other";
    other.method = 99;

    EXPECT_EQ(read(ZipBytes().part(other).part(ticketName, copies("2")).str()).copies, 2);
}

TEST(XpsParserWalk, KnowsNothingIfTheDirectoryIsOutside)
{
    const ZipBytes zip = ZipBytes().part(ticketName, copies("2"));

    for (const std::size_t offset :
         {zip.directoryOffset() + 1, std::size_t{0x7FFFFFFF}, std::size_t{0xFFFFFFFE}})
        EXPECT_EQ(read(zip.withDirectoryAt(offset)).flags(JobInfo::AllFlags), 0) << offset;
}

TEST(XpsParserWalk, KnowsWhatStandsBeforeABrokenRecord)
{
    std::string bytes =
        ZipBytes().part(ticketName, copies("2")).part("a", "").part(ticketName, copies("9")).str();
    bytes.replace(bytes.rfind("PK\x01\x02"), 4, "PK\x01\x03");

    EXPECT_EQ(read(bytes).copies, 2);
}

TEST(XpsParserWalk, StopsBehindTheLastRecord)
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

TEST(XpsParserWalk, KeepsEveryByteOfAPackageThatIsCutAnywhere)
{
    const std::string whole = manyFacedPackage();

    for (std::size_t size = 0; size < whole.size(); ++size) {
        OpenJob job(whole.substr(0, size));
        const auto result = WholeJobs::parse(job);
        EXPECT_EQ(WholeJobs::saved(*result->job, job.file), whole.substr(0, size));
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

TEST(XpsParserWalk, WalksAsIfEveryNameWereAsked)
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

TEST(XpsParserWalk, WalksAsIfEveryNameWereAskedWhereRecordsStraddleViews)
{
    const std::string tail = manyFacedPackage();
    for (const std::int64_t shift : {0, 1, 30, 46, 300, 700, 900, 1100}) {
        const std::string bytes = std::string(static_cast<std::size_t>(4194304 - 1400 + shift), 'f') + tail;
        expectTheSameWalk(bytes);
    }
}

TEST(XpsParserWalk, FindsTheTicketInAPackageOfManyViews)
{
    const std::string package = ZipBytes().part("a", "").part(ticketName, copies("4")).part("b", "").str();
    SparseFile sparse;
    sparse.resize(5000000000);
    sparse.writeAt(5000000000, package);
    JobFile file;
    file.open(sparse.path());

    EXPECT_EQ(XpsParser(file).parse().copies, 4);
}

} // namespace
} // namespace JobParser
