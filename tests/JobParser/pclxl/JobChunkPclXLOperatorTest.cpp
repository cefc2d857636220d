#include "JobParser/pclxl/JobChunkPclXLOperator.h"

#include <gtest/gtest.h>

#include "JobParser/JobParserException.h"
#include "JobParser/Library.h"
#include "JobParser/pclxl/JobChunkPclXLAttribute.h"
#include "JobParser/pclxl/JobChunkPclXLAttributeValue.h"
#include "tests/support/ChunkForms.h"
#include "tests/support/OpenJob.h"

#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace ChunkForms;
using namespace std::string_view_literals;

class JobChunkPclXLOperatorTest : public testing::Test
{
protected:
    void SetUp() override { Library::init({}); }

    static JobChunkPclXLOperator beginPage()
    {
        JobChunkPclXLOperator chunk(tag_t::BeginPage, 0, 99);
        chunk.attributes.push_back(std::make_shared<JobChunkPclXLAttribute>(
            attribute_t::MediaSize, JobChunkPclXLAttributeValue(tag_t::Ubyte, {2})));
        chunk.attributes.push_back(
            std::make_shared<JobChunkPclXLAttribute>(attribute_t::Orientation, JobChunkPclXLRaw(3, 4)));
        return chunk;
    }
};

TEST_F(JobChunkPclXLOperatorTest, WritesItsAttributesAndItsByteWhateverItsRange)
{
    OpenJob job("0123456789"sv);

    EXPECT_EQ(saved(beginPage(), job.file), "\xC0\x02\xF8\x25"
                                            "34\xF8\x28"
                                            "C");
    EXPECT_EQ(beginPage().size(), 9);
}

TEST_F(JobChunkPclXLOperatorTest, WritesItsByteAloneWithoutAttributes)
{
    const JobChunkPclXLOperator chunk(tag_t::EndPage, 5, 50);

    EXPECT_EQ(saved(chunk), "D");
    EXPECT_EQ(chunk.size(), 1);
}

TEST_F(JobChunkPclXLOperatorTest, DumpsTheNamesOfTheTwoOperatorsOfAPage)
{
    JobChunkPclXLOperator begin = beginPage();
    JobChunkPclXLOperator end(tag_t::EndPage, 0, 0);
    JobChunkPclXLOperator session(tag_t::BeginSession, 0, 0);
    JobChunkPclXLOperator comment(tag_t::Comment, 0, 0);

    EXPECT_EQ(dumped(begin), "PCL XL operator ( BeginPage )\n     Attr: MEDIASIZE\n     Attr: ORIENTATION\n");
    EXPECT_EQ(dumped(end), "PCL XL operator ( EndPage )\n");
    EXPECT_EQ(dumped(session), "PCL XL operator \n");
    EXPECT_EQ(dumped(comment), "PCL XL operator \n");
}

TEST_F(JobChunkPclXLOperatorTest, ComesBackFromItsData)
{
    const std::string dto =
        R"({"operator":67,"start":0,"end":99,"attributes":[)"
        R"({"class":"PclXLAttributeE","id":2,"dto":{"attribute":37,"chunk":)"
        R"({"class":"PclXLAttributeValueE","id":3,"dto":{"value":[2],"data_type":192}}}},)"
        R"({"class":"PclXLAttributeE","id":4,"dto":{"attribute":40,"chunk":)"
        R"({"class":"PclXLRawE","id":5,"dto":{"start":3,"end":4}}}}]})";
    const std::string bare = R"({"operator":68,"start":9,"end":0,"attributes":[]})";

    EXPECT_EQ(json(beginPage()), dto);
    EXPECT_EQ(json(*made<JobChunkPclXLOperator>(dto)), dto);
    EXPECT_EQ(json(*made<JobChunkPclXLOperator>(bare)), bare) << "its range may be anything";
}

TEST_F(JobChunkPclXLOperatorTest, RefusesAnythingButAttributes)
{
    for (const char* element : {"null", R"({"class":"PclXLRawE","id":2,"dto":{"start":3,"end":4}})",
                                R"({"class":"UelE","id":2,"dto":{}})"}) {
        try {
            made<JobChunkPclXLOperator>(std::string(R"({"operator":67,"start":0,"end":9,"attributes":[)") +
                                        element + "]}");
            FAIL() << element;
        } catch (const JobParserException& error) {
            EXPECT_STREQ(error.what(), "Invalid chunk class. CJobChunkPclXLAttribute expected.");
        }
    }
}

TEST_F(JobChunkPclXLOperatorTest, RefusesDataWithoutItsKeys)
{
    for (const char* dto :
         {"{}", R"({"start":0,"end":9,"attributes":[]})", R"({"operator":67,"end":9,"attributes":[]})",
          R"({"operator":67,"start":0,"attributes":[]})", R"({"operator":67,"start":0,"end":9})",
          R"({"operator":67,"start":0,"end":9,"attributes":{}})",
          R"({"operator":67,"start":0,"end":9,"attributes":null})"})
        EXPECT_THROW(made<JobChunkPclXLOperator>(dto), Torv::VariantInvalidOperationException) << dto;
}

} // namespace
} // namespace JobParser
