// The job file as minizip sees it.

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <minizip/ioapi.h>
#include <string>
#include <string_view>

#include "JobParser/xps/XpsParser.h"
#include "tests/support/OpenJob.h"
#include "tests/support/SparseFile.h"

namespace JobParser
{
namespace
{

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

TEST(XpsParserCallbacks, OpenTheJobFileWhateverThePath)
{
    Callbacks callbacks("abc");

    EXPECT_EQ(callbacks.table.opaque, &callbacks.parser);
    EXPECT_EQ(callbacks.stream, &callbacks.job.file);
    EXPECT_EQ(callbacks.table.zopen64_file(callbacks.table.opaque, nullptr, 0), &callbacks.job.file);
}

TEST(XpsParserCallbacks, ReadUpToTheEnd)
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

TEST(XpsParserCallbacks, ReadTheLastByteAlone)
{
    Callbacks callbacks("ab");
    callbacks.read(1);

    EXPECT_EQ(callbacks.read(1), "b");
    EXPECT_TRUE(callbacks.job.file.atEnd());
}

TEST(XpsParserCallbacks, ReadOverSeveralViews)
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

TEST(XpsParserCallbacks, WriteNothingAndFindNoErrors)
{
    Callbacks callbacks("abc");

    EXPECT_EQ(callbacks.table.zwrite_file(callbacks.table.opaque, callbacks.stream, "xyz", 3), 0U);
    EXPECT_EQ(callbacks.table.zerror_file(callbacks.table.opaque, callbacks.stream), 0);
    EXPECT_EQ(callbacks.table.zclose_file(callbacks.table.opaque, callbacks.stream), 0);
    EXPECT_TRUE(callbacks.job.file.isOpen());
}

TEST(XpsParserCallbacks, TellThePosition)
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

TEST(XpsParserCallbacks, SeekWithinTheDataWhoseEndIsTheLastByte)
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

TEST(XpsParserCallbacks, SeekNowhereInAnEmptyFile)
{
    Callbacks callbacks("");

    EXPECT_EQ(callbacks.seek(0, ZLIB_FILEFUNC_SEEK_SET), 1);
    EXPECT_EQ(callbacks.seek(0, ZLIB_FILEFUNC_SEEK_CUR), 1);
    EXPECT_EQ(callbacks.seek(0, ZLIB_FILEFUNC_SEEK_END), 1);
    EXPECT_EQ(callbacks.seek(1, ZLIB_FILEFUNC_SEEK_END), 1);
}

TEST(XpsParserCallbacks, TakeTheEndOfAFileThatShrankForItsEnd)
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

} // namespace
} // namespace JobParser
