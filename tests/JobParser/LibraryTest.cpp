#include "JobParser/Library.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <thread>
#include <vector>

#include "JobParser/ExtJobProcessor.h"
#include "JobParser/IChunk.h"
#include "JobParser/model/Reflection.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"
#include "tests/support/NoAddressSpace.h"
#include "tests/support/ScriptedWorker.h"

#include "Torv/GenericException.h"
#include "Torv/Json/Json.h"
#include "Torv/Json/Object.h"
#include "Torv/Variant.h"

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

TEST(Library, RegistersTheChunkClassesOnce)
{
    Library::init({});

    EXPECT_NO_THROW(Library::init({}));
}

Library::Options oneWorker(const std::string& directory, const std::string& arguments)
{
    Library::Options options;
    options.directory = directory;
    options.executable = "TestWorker";
    options.arguments = arguments;
    options.processCount = 1;
    return options;
}

std::string workerFolder()
{
    return std::filesystem::path(testWorkerPath).parent_path().string();
}

std::string commandLineOf(const Library::Options& options)
{
    Library::init(options);
    return Library::extJobProcessor().run(Torv::Json::Object()).toJson();
}

TEST(Library, RunsTheWorkerOfAFolderWithItsCommandLine)
{
    EXPECT_EQ(commandLineOf(oneWorker(workerFolder(), R"(each arguments "a b")")),
              R"({"arguments":["each","arguments","a b"]})");
    EXPECT_EQ(commandLineOf(oneWorker(workerFolder() + "/", "each arguments")),
              R"({"arguments":["each","arguments"]})");
    Library::init({});
}

TEST(Library, RunsAWorkerByItsWholePathWhateverTheFolder)
{
    Library::Options options = oneWorker("/nowhere", "each arguments");
    options.executable = testWorkerPath;

    EXPECT_EQ(commandLineOf(options), R"({"arguments":["each","arguments"]})");
    Library::init({});
}

TEST(Library, TellsTheWorkerHowJobsAreEncrypted)
{
    Library::Options options = oneWorker(workerFolder(), "each arguments");
    options.decryptor = {Torv::Security::Endecryptor::Algorithm::Aes256Ctr, std::string("\x00\x01\xFF", 3),
                         R"(a"b\c)"};

    EXPECT_EQ(
        commandLineOf(options),
        R"({"arguments":["each","arguments","e","{\"algorithm\":4,\"key\":\"AAH/\",\"iv\":\"YSJiXGM=\"}"]})");

    options.arguments = "";
    Library::init(options);
    EXPECT_EQ(Library::extJobProcessor().run(Torv::Json::Object())["request"].toJson(), "{}");
    Library::init({});
}

TEST(Library, ForwardsTheOptionsOfThePool)
{
    Library::Options options = oneWorker(workerFolder(), "");
    options.processCount = 2;
    options.poolLimit = 2;
    Library::init(options);

    std::vector<int> numbers;
    for (int request = 0; request < 3; ++request)
        numbers.push_back(Library::extJobProcessor().run(Torv::Json::Object())["number"].toInt());

    EXPECT_EQ(numbers, (std::vector<int>{1, 2, 1}));
    options.arguments = "each hang";
    options.poolDeadline = 50;
    Library::init(options);
    EXPECT_THROW(Library::extJobProcessor().run(Torv::Json::Object()), Torv::GenericException);
    Library::init({});
}

TEST(Library, EndsTheFormerWorkersByTheirExitRequest)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string told = directory.path("told");
    Library::init(oneWorker(workerFolder(), "exit log " + told));
    Library::extJobProcessor().run(Torv::Json::Object());

    Library::init({});

    std::ifstream file(told);
    std::string line;
    std::getline(file, line);
    EXPECT_EQ(line, R"({"command":"exit"})");
    EXPECT_FALSE(hasChildren());
}

TEST(Library, StartsWithoutItsWorker)
{
    EXPECT_NO_THROW(Library::init(oneWorker("/nowhere", "")));

    EXPECT_THROW(Library::extJobProcessor().run(Torv::Json::Object()), Torv::GenericException);
    Library::init({});
}

// Sanitizers need descriptors of their own.
#if !defined(NEEDS_SHADOW_MEMORY)
/// Leaves with 0 if the library can be set up after that failed.
[[noreturn]] void initialiseAfterAFailure()
{
    rlimit descriptors{};
    ::getrlimit(RLIMIT_NOFILE, &descriptors);
    const rlimit none{0, descriptors.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    try {
        Library::init(oneWorker(workerFolder(), ""));
        std::_Exit(1);
    } catch (const Torv::GenericException&) {
        ::setrlimit(RLIMIT_NOFILE, &descriptors);
    }
    Library::init(oneWorker(workerFolder(), ""));
    const bool isUsable = Library::extJobProcessor().run(Torv::Json::Object())["number"].toInt() == 1;
    Library::init({});
    std::_Exit(isUsable ? 0 : 2);
}

TEST(LibraryDeathTest, MayBeInitialisedAfterThatFailed)
{
    // In a process of its own, where nothing was set up before.
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    EXPECT_EXIT(initialiseAfterAFailure(), testing::ExitedWithCode(0), "");
}
#endif

TEST(Library, KeepsTheFormerWorkersForThoseWhoHoldThem)
{
    Library::init(oneWorker(workerFolder(), ""));
    const std::shared_ptr<ExtJobProcessor> held = Library::currentExtJobProcessor();

    Library::init({});

    EXPECT_NE(Library::currentExtJobProcessor(), held);
    EXPECT_EQ(held->run(Torv::Json::Object())["number"].toInt(), 1);
}

TEST(LibraryThreads, InitialiseSideBySide)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread)
        threads.emplace_back([] {
            Library::init(oneWorker(workerFolder(), ""));
            Library::extJobProcessor();
        });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(Library::extJobProcessor().run(Torv::Json::Object())["number"].toInt(), 1);
    Library::init({});
    EXPECT_FALSE(hasChildren());
}

} // namespace
} // namespace JobParser
