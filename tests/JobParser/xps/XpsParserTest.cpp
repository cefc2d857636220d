#include "JobParser/xps/XpsParser.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

#include "JobParser/JobParserException.h"
#include "tests/JobParser/xps/XpsSupport.h"
#include "tests/support/NoAddressSpace.h"
#include "tests/support/OpenJob.h"
#include "tests/support/SparseFile.h"
#include "tests/support/ZipBytes.h"

#include "Torv/GenericException.h"

namespace JobParser
{
namespace
{

using namespace std::string_literals;

/// A ticket that has a size of its own.
std::string ticketOfSize(std::size_t size, const std::string& number)
{
    const std::string ticket = copies(number);
    return ticket + std::string(size - ticket.size(), ' ');
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

#if !defined(NEEDS_SHADOW_MEMORY)
/// Leaves with 0 if the refusal of a view goes through minizip as it is.
[[noreturn]] void parseWithoutMemory(const std::string& path)
{
    JobFile file;
    file.open(path);
    XpsParser parser(file);
    refuseAddresses();
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

} // namespace
} // namespace JobParser
