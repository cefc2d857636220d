#include "JobParser/Job.h"

#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>
#include <vector>

#include "JobParser/model/ChunkFirstPageStart.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/ChunkText.h"
#include "JobParser/model/ChunkUel.h"
#include "JobParser/model/Finishing.h"
#include "tests/support/OpenJob.h"

#include "Torv/GenericException.h"
#include "Torv/IO/StringStream.h"
#include "Torv/Log/ILog.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;

std::shared_ptr<IChunk> text(const char* bytes)
{
    return std::make_shared<ChunkText>(bytes);
}

/// What the job writes, as one text.
std::string saved(const Job& job)
{
    JobFile noFile;
    Torv::IO::StringStream stream;
    job.save(noFile, stream);
    return stream.str();
}

/// A job of three texts that was not changed since.
Job threeTexts()
{
    Job job;
    job.appendChunk(text("a"));
    job.appendChunk(text("b"));
    job.appendChunk(text("c"));
    job.modified = false;
    return job;
}

class ChunkOfWrongSize : public ChunkText
{
public:
    using ChunkText::ChunkText;
    std::int64_t size() const override { return 7; }
};

class ChunkThatFails : public ChunkUel
{
public:
    void save(JobFile&, Torv::IO::IStream&) const override { throw std::runtime_error("disk full"); }
};

class ChunkOfAnySize : public ChunkUel
{
public:
    explicit ChunkOfAnySize(std::int64_t bytes) : m_bytes(bytes) {}
    std::int64_t size() const override { return m_bytes; }

private:
    std::int64_t m_bytes;
};

class RecordingLog : public Torv::Log::ILog
{
public:
    bool isEnabled(int) const override { return true; }
    void write(int level, const std::string& message, const std::string& details, bool flag,
               const char* sourceFile, int line) override
    {
        lines.push_back(std::to_string(level) + "|" + message + "|" + details + "|" + (flag ? "!" : "") +
                        "|" + sourceFile + "|" + std::to_string(line));
    }

    std::vector<std::string> lines;
};

TEST(Job, IsEmptyAtFirst)
{
    const Job job;

    EXPECT_TRUE(job.chunks.empty());
    EXPECT_FALSE(job.modified);
    EXPECT_EQ(job.size(), 0);
    EXPECT_EQ(job.jobInfo.flags(65535), 0);
}

TEST(Job, AppendsAChunk)
{
    Job job = threeTexts();

    job.appendChunk(text("d"));

    EXPECT_TRUE(job.modified);
    EXPECT_EQ(saved(job), "abcd");
}

TEST(Job, AppendsChunksInOrder)
{
    Job job = threeTexts();

    job.appendChunks({text("d"), text("e")});

    EXPECT_TRUE(job.modified);
    EXPECT_EQ(saved(job), "abcde");
}

TEST(Job, AppendsItsOwnChunksOnceMore)
{
    Job job = threeTexts();
    job.chunks.shrink_to_fit();

    job.appendChunks(job.chunks);

    EXPECT_EQ(saved(job), "abcabc");
}

TEST(Job, IsModifiedEvenIfNoChunkWasAppended)
{
    Job job = threeTexts();

    job.appendChunks({});

    EXPECT_TRUE(job.modified);
    EXPECT_EQ(saved(job), "abc");
}

TEST(Job, InsertsAChunkBeforeAnIndex)
{
    Job job = threeTexts();

    job.insertChunkAt(0, text("0"));
    EXPECT_TRUE(job.modified);
    EXPECT_EQ(saved(job), "0abc");
    job.insertChunkAt(2, text("2"));
    job.insertChunkAt(5, text("5"));
    EXPECT_EQ(saved(job), "0a2bc5");
}

TEST(Job, ReplacesAChunk)
{
    Job job = threeTexts();

    job.replaceChunk(1, text("x"));

    EXPECT_TRUE(job.modified);
    EXPECT_EQ(saved(job), "axc");
}

TEST(Job, RemovesAChunk)
{
    Job job = threeTexts();

    job.removeChunkAt(1);

    EXPECT_TRUE(job.modified);
    EXPECT_EQ(saved(job), "ac");
}

TEST(Job, RemovesAllChunks)
{
    Job job = threeTexts();

    job.removeAllChunks();

    EXPECT_TRUE(job.modified);
    EXPECT_TRUE(job.chunks.empty());
}

TEST(Job, IsModifiedEvenIfThereWasNoChunkToRemove)
{
    Job job;

    job.removeAllChunks();

    EXPECT_TRUE(job.modified);
}

TEST(Job, SavesTheSameTwice)
{
    Job job;
    job.appendChunk(std::make_shared<ChunkUel>());
    EXPECT_TRUE(job.modified);

    EXPECT_EQ(saved(job), "\x1B%-12345X");
    EXPECT_FALSE(job.modified);
    EXPECT_EQ(saved(job), "\x1B%-12345X");
    EXPECT_FALSE(job.modified);
    EXPECT_EQ(job.size(), 9);
}

TEST(Job, SavesNothingIfItIsEmpty)
{
    Job job;
    job.removeAllChunks();

    EXPECT_EQ(saved(job), "");
    EXPECT_FALSE(job.modified);
}

TEST(Job, SavesRangesOfItsFileBetweenTexts)
{
    OpenJob opened("0123456789"sv);
    opened.job.appendChunk(std::make_shared<ChunkRawData>(7, 3));
    opened.job.appendChunk(text("-"));
    opened.job.appendChunk(std::make_shared<ChunkRawData>(0, 2));
    Torv::IO::StringStream stream;

    opened.job.save(opened.file, stream);

    EXPECT_EQ(stream.str(), "789-01");
    EXPECT_EQ(opened.job.size(), 6);
}

TEST(Job, StaysModifiedIfSavingFails)
{
    Job job;
    job.appendChunk(text("a"));
    job.appendChunk(std::make_shared<ChunkThatFails>());

    EXPECT_THROW(saved(job), std::runtime_error);
    EXPECT_TRUE(job.modified);
    job.modified = false;
    EXPECT_THROW(saved(job), std::runtime_error);
    EXPECT_FALSE(job.modified);
}

TEST(Job, CountsNoBytesForTheStartOfTheFirstPage)
{
    Job job = threeTexts();

    job.insertChunkAt(1, std::make_shared<ChunkFirstPageStart>());

    EXPECT_EQ(job.size(), 3);
    EXPECT_EQ(saved(job), "abc");
}

TEST(Job, WritesAChunkThatStandsTwiceTwice)
{
    Job job;
    const auto chunk = text("ab");
    job.appendChunks({chunk, chunk});

    EXPECT_EQ(saved(job), "abab");
    EXPECT_EQ(job.size(), 4);
}

TEST(Job, PassesOverNullChunks)
{
    Job job = threeTexts();
    job.insertChunkAt(1, nullptr);
    RecordingLog log;
    JobFile noFile;

    EXPECT_EQ(saved(job), "abc");
    EXPECT_EQ(job.size(), 3);
    job.dump(log);
    EXPECT_EQ(log.lines.size(), 4U);
    EXPECT_NO_THROW(job.checkChunkSizes(noFile));
}

TEST(Job, LetsTheSumOfSizesWrap)
{
    Job job;
    const auto most = std::make_shared<ChunkOfAnySize>(std::numeric_limits<std::int64_t>::max());
    job.appendChunks({most, most});
    EXPECT_EQ(job.size(), -2);
    job.appendChunk(most);
    EXPECT_EQ(job.size(), 9223372036854775805);
}

TEST(Job, DumpsItsChunksWithoutASourcePlace)
{
    Job job;
    job.appendChunk(std::make_shared<ChunkUel>());
    job.appendChunk(std::make_shared<ChunkFirstPageStart>());
    job.appendChunk(std::make_shared<ChunkRawData>(9, 1000));
    RecordingLog log;

    job.dump(log);

    EXPECT_EQ(log.lines, (std::vector<std::string>{"0|Job parser: Dumping 3 chunks||||0", "0|UEL||||0",
                                                   "0|First page start||||0", "0|Raw (1000 bytes)||||0"}));
}

TEST(Job, DumpsThatItIsEmpty)
{
    RecordingLog log;

    Job().dump(log);

    EXPECT_EQ(log.lines, (std::vector<std::string>{"0|Job parser: Dumping 0 chunks||||0"}));
}

TEST(Job, IsUnmodifiedWhenAllChunkSizesAgree)
{
    OpenJob opened("0123456789"sv);
    opened.job.appendChunk(std::make_shared<ChunkRawData>(0, 10));
    opened.job.appendChunk(std::make_shared<ChunkUel>());
    opened.job.appendChunk(std::make_shared<ChunkFirstPageStart>());

    opened.job.checkChunkSizes(opened.file);

    EXPECT_FALSE(opened.job.modified);
    Job empty;
    empty.removeAllChunks();
    empty.checkChunkSizes(opened.file);
    EXPECT_FALSE(empty.modified);
}

TEST(Job, NamesTheChunkWhoseSizeIsWrong)
{
    Job job;
    job.appendChunk(text("a"));
    job.appendChunk(std::make_shared<ChunkOfWrongSize>("xy"));
    JobFile noFile;

    try {
        job.checkChunkSizes(noFile);
        FAIL() << "not noticed";
    } catch (const Torv::GenericException& error) {
        EXPECT_STREQ(error.what(), R"(Chunk '{"text":"xy"}' size 7 != written size 2)");
    }
    EXPECT_TRUE(job.modified);
}

} // namespace
} // namespace JobParser
