#include "JobParser/pclxl/JobChunkPclXLAttribute.h"

#include <gtest/gtest.h>

#include "JobParser/JobParserException.h"
#include "JobParser/Library.h"
#include "JobParser/pclxl/JobChunkPclXLAttributeValue.h"
#include "JobParser/pclxl/JobChunkPclXLRaw.h"
#include "tests/support/ChunkForms.h"
#include "tests/support/OpenJob.h"

#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace ChunkForms;
using namespace std::string_view_literals;

class JobChunkPclXLAttributeTest : public testing::Test
{
protected:
    void SetUp() override { Library::init({}); }
};

TEST_F(JobChunkPclXLAttributeTest, WritesAValueAndItsIdentifierInOneByte)
{
    const JobChunkPclXLAttribute chunk(attribute_t::MediaSize,
                                       JobChunkPclXLAttributeValue(tag_t::Ubyte, {2}));

    EXPECT_EQ(saved(chunk), "\xC0\x02\xF8\x25");
    EXPECT_EQ(chunk.size(), 4);
}

TEST_F(JobChunkPclXLAttributeTest, WritesARangeAndItsIdentifier)
{
    OpenJob job("0123456789"sv);
    const JobChunkPclXLAttribute chunk(attribute_t::Orientation, JobChunkPclXLRaw(3, 5));

    EXPECT_EQ(saved(chunk, job.file), "345\xF8\x28");
    EXPECT_EQ(chunk.size(), 5);
}

TEST_F(JobChunkPclXLAttributeTest, KeepsACopyOfItsValue)
{
    JobChunkPclXLAttributeValue value(tag_t::Ubyte, {2});
    const JobChunkPclXLAttribute chunk(attribute_t::MediaSize, value);

    value.data[0] = 3;

    EXPECT_EQ(saved(chunk), "\xC0\x02\xF8\x25");
}

TEST_F(JobChunkPclXLAttributeTest, DumpsItsNameAlone)
{
    JobChunkPclXLAttribute chunk(attribute_t::MediaSize, JobChunkPclXLRaw(3, 5));
    JobChunkPclXLAttribute nameless(attribute_t{1}, JobChunkPclXLRaw(3, 5));

    EXPECT_EQ(dumped(chunk), "     Attr: MEDIASIZE\n");
    EXPECT_EQ(dumped(nameless), "     Attr: \n");
}

TEST_F(JobChunkPclXLAttributeTest, ComesBackFromItsData)
{
    const std::string dto =
        R"({"attribute":37,"chunk":{"class":"PclXLAttributeValueE","id":2,"dto":{"value":[2],"data_type":192}}})";

    EXPECT_EQ(
        json(JobChunkPclXLAttribute(attribute_t::MediaSize, JobChunkPclXLAttributeValue(tag_t::Ubyte, {2}))),
        dto);
    EXPECT_EQ(json(*made<JobChunkPclXLAttribute>(dto)), dto);
}

TEST_F(JobChunkPclXLAttributeTest, RefusesDataWithoutAValue)
{
    try {
        made<JobChunkPclXLAttribute>(R"({"attribute":37,"chunk":null})");
        FAIL();
    } catch (const JobParserException& error) {
        EXPECT_STREQ(error.what(), "Attribute without a value in metadata");
    }
    for (const char* dto :
         {"{}", R"({"attribute":37})", R"({"chunk":null})", R"({"attribute":"37","chunk":2})"})
        EXPECT_THROW(made<JobChunkPclXLAttribute>(dto), Torv::VariantInvalidOperationException) << dto;
    EXPECT_THROW(made<JobChunkPclXLAttribute>(R"({"attribute":37,"chunk":9})"), JobParserException);
}

} // namespace
} // namespace JobParser
