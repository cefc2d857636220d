#include "JobParser/Library.h"

#include <array>
#include <gtest/gtest.h>

#include "JobParser/IChunk.h"
#include "JobParser/model/Reflection.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"

#include "Torv/Json/Json.h"

namespace JobParser
{
namespace
{

struct ChunkClass {
    const char* tag;
    const char* dto;
};

TEST(Library, RegistersTheChunkClassesByTheTagsOfStoredFiles)
{
    constexpr auto classes = std::to_array<ChunkClass>({
        {"UelE", "{}"},
        {"FormFeedE", "{}"},
        {"FirstPageStartE", "{}"},
        {"RawDataE", R"({"offset":1,"size":2})"},
        {"PclEscE", R"({"opGroupParam":2777687,"binOffset":1,"binSize":2,"value":"2"})"},
        {"TextE", R"({"text":"a"})"},
        {"XpsE", R"({"offset":1,"size":2})"},
        {"PjlCmdE", R"({"cmd":"SET","param":"COPIES=2"})"},
        {"PjlCmdBase64StringE", R"({"cmd":"SET","param":"YQ=="})"},
        {"PrescribeE", R"({"ofs":1,"size":2})"},
        {"PsCommentE", R"({"comment":"%%EOF\n"})"},
        {"PclXLRawE", R"({"start":1,"end":2})"},
        {"PclXLAttributeValueE", R"({"value":[1],"data_type":192})"},
        {"PclXLAttributeE", R"({"attribute":37,"chunk":{"class":"UelE","id":3,"dto":{}}})"},
        {"PclXLOperatorE", R"({"operator":67,"start":1,"end":2,"attributes":[]})"},
        {"PclXLWatermarkE", R"({"size":1,"chunks":[]})"},
        {"PclXLEmbeddedDataE", R"({"data":null})"},
        {"PclXLRawWithDataE", R"({"rawData":"00ff"})"},
        {"PdfDocumentInfoE",
         R"({"info":"1 0 obj\n<</Type/Catalog>>\nendobj\ntrailer<</Root 1 0 R>>startxref0\n"})"},
        {"PdfE", R"({"pdf":"%PDF"})"},
    });

    Library::init({});

    for (const ChunkClass& row : classes) {
        UnserializationContext reading;
        SerializationContext writing;
        const std::string text =
            std::string(R"({"class":")") + row.tag + R"(","id":2,"dto":)" + row.dto + "}";
        const auto chunk = reading.unserializeChunk(Torv::Json::parse(text));
        ASSERT_NE(chunk, nullptr) << row.tag;
        EXPECT_EQ(Reflection::chunkClass(*chunk), row.tag);
        EXPECT_EQ(writing.serializeChunk(chunk), text);
    }
}

TEST(Library, DoesNothingAtLaterCalls)
{
    Library::init({});

    EXPECT_NO_THROW(Library::init({}));
}

} // namespace
} // namespace JobParser
