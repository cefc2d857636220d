#include "JobParser/ChunkPlaces.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "JobParser/Job.h"
#include "JobParser/Library.h"
#include "JobParser/Parser.h"
#include "JobParser/languages/ChunkPclEsc.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/model/ChunkFormFeed.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/ChunkText.h"
#include "JobParser/model/ChunkUel.h"
#include "JobParser/pclxl/JobChunkPclXLOperator.h"
#include "JobParser/pclxl/JobChunkPclXLRaw.h"
#include "JobParser/xps/ChunkXps.h"
#include "tests/support/OpenJob.h"

#include "Torv/Log/LogNull.h"

namespace JobParser
{
namespace
{

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();

struct Place {
    std::int64_t offset;
    std::int64_t size;
    bool isExact;

    bool operator==(const Place&) const = default;
};

void PrintTo(const Place& place, std::ostream* stream)
{
    *stream << place.offset << "+" << place.size << (place.isExact ? "" : "?");
}

Job jobOf(const std::vector<std::shared_ptr<IChunk>>& chunks)
{
    Job job;
    job.appendChunks(chunks);
    return job;
}

std::vector<Place> places(const Job& job, std::int64_t fileSize)
{
    std::vector<Place> found;
    for (const ChunkPlace& place : chunkPlaces(job, fileSize))
        found.push_back({place.range.offset, place.range.size, place.isExact});
    return found;
}

/// A chunk class of a host.
class HostChunk : public ChunkRawData
{
public:
    using ChunkRawData::ChunkRawData;
};

TEST(FileRange, IsThatOfTheChunksThatAreKeptByOffset)
{
    const auto rangeOf = [](const IChunk& chunk) {
        const auto range = fileRange(chunk);
        return range ? std::vector{range->offset, range->size} : std::vector<std::int64_t>{};
    };

    EXPECT_EQ(rangeOf(ChunkRawData(3, 4)), (std::vector<std::int64_t>{3, 4}));
    EXPECT_EQ(rangeOf(ChunkPrescribe(5, 6)), (std::vector<std::int64_t>{5, 6}));
    EXPECT_EQ(rangeOf(ChunkXps(7, 8)), (std::vector<std::int64_t>{7, 8}));
    EXPECT_EQ(rangeOf(JobChunkPclXLRaw(9, 11)), (std::vector<std::int64_t>{9, 3}));
    EXPECT_EQ(rangeOf(JobChunkPclXLOperator(tag_t{0x43}, 12, 20)), (std::vector<std::int64_t>{12, 9}));
    EXPECT_EQ(rangeOf(ChunkUel()), std::vector<std::int64_t>{});
    EXPECT_EQ(rangeOf(ChunkText("x")), std::vector<std::int64_t>{});
    EXPECT_EQ(rangeOf(ChunkPjlCmd("SET", "A=1")), std::vector<std::int64_t>{});
    EXPECT_EQ(rangeOf(ChunkPclEsc()), std::vector<std::int64_t>{});
    EXPECT_EQ(rangeOf(HostChunk(3, 4)), std::vector<std::int64_t>{});
}

TEST(ChunkPlaces, FollowEachOtherWhereAllSizesAddUp)
{
    const Job job = jobOf({std::make_shared<ChunkUel>(), std::make_shared<ChunkFormFeed>(),
                           std::make_shared<ChunkRawData>(10, 5), std::make_shared<ChunkUel>()});

    EXPECT_EQ(places(job, 24),
              (std::vector<Place>{{0, 9, true}, {9, 1, true}, {10, 5, true}, {15, 9, true}}));
}

TEST(ChunkPlaces, ShareAGapBySizeWhereItIsLongerOrShorter)
{
    const Job job = jobOf({std::make_shared<ChunkText>("ab"), std::make_shared<ChunkText>("cd"),
                           std::make_shared<ChunkRawData>(10, 5), std::make_shared<ChunkText>("efgh"),
                           std::make_shared<ChunkText>("ij")});

    EXPECT_EQ(
        places(job, 18),
        (std::vector<Place>{{0, 5, false}, {5, 5, false}, {10, 5, true}, {15, 2, false}, {17, 1, false}}));
}

TEST(ChunkPlaces, GiveTheWholeFileToOneRawStretch)
{
    EXPECT_EQ(places(jobOf({std::make_shared<ChunkRawData>(0, 7)}), 7), (std::vector<Place>{{0, 7, true}}));
}

TEST(ChunkPlaces, AreNoneForAnEmptyJob)
{
    EXPECT_EQ(places(Job(), 0), std::vector<Place>{});
    EXPECT_EQ(places(Job(), 7), std::vector<Place>{});
}

TEST(ChunkPlaces, AreOfNoSizeForAChunkThatIsNull)
{
    EXPECT_EQ(places(jobOf({nullptr, std::make_shared<ChunkRawData>(0, 7), nullptr}), 7),
              (std::vector<Place>{{0, 0, true}, {0, 7, true}, {7, 0, true}}));
}

TEST(ChunkPlaces, StayWithinTheFileWhateverMetadataSays)
{
    const Job job = jobOf({
        std::make_shared<ChunkRawData>(-5, 3),
        std::make_shared<ChunkRawData>(2, most),
        std::make_shared<ChunkRawData>(most, most),
        std::make_shared<ChunkRawData>(most, 0),
        std::make_shared<ChunkXps>(std::numeric_limits<std::int64_t>::min(), most),
        std::make_shared<JobChunkPclXLRaw>(std::numeric_limits<std::int64_t>::min(), most),
        std::make_shared<JobChunkPclXLRaw>(most, std::numeric_limits<std::int64_t>::min()),
        std::make_shared<ChunkRawData>(8, 2),
        std::make_shared<ChunkRawData>(1, 1),
        std::make_shared<ChunkUel>(),
    });

    for (const std::int64_t fileSize : {std::int64_t{0}, std::int64_t{1}, std::int64_t{10}, most}) {
        SCOPED_TRACE(fileSize);
        for (const Place& place : places(job, fileSize)) {
            EXPECT_GE(place.offset, 0);
            EXPECT_GE(place.size, 0);
            EXPECT_LE(place.offset, fileSize);
            EXPECT_LE(place.size, fileSize - place.offset);
        }
    }
}

TEST(ChunkPlaces, OfAParsedJobAreThoseOfItsBytes)
{
    Library::init({});
    OpenJob open(JobBytes()
                     .uel()
                     .pjl("SET COPIES=2")
                     .pjl("ENTER LANGUAGE=PCL")
                     .raw("\x1B"
                          "E")
                     .raw("text")
                     .uel());
    Parser parser(std::make_shared<Torv::Log::LogNull>(), paperList, false);

    const auto result = parser.parse(open.file, {Pdl::Detect, true, true});

    EXPECT_EQ(places(*result->job, open.file.fileSize), (std::vector<Place>{{0, 9, true},
                                                                            {9, 19, true},
                                                                            {28, 25, true},
                                                                            {53, 2, true},
                                                                            {55, 0, true},
                                                                            {55, 4, true},
                                                                            {59, 9, true}}));
}

} // namespace
} // namespace JobParser
