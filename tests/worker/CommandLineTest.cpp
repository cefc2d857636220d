#include "worker/CommandLine.h"

#include <gtest/gtest.h>
#include <vector>

#include "Torv/Json/Json.h"

namespace JobParser::Worker
{
namespace
{

std::variant<ServiceOptions, Answer> read(std::vector<std::string> arguments)
{
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    return readCommandLine(pointers);
}

// Sixteen bytes each, in base 64.
const std::string encryption =
    R"({"algorithm":1,"key":"AAECAwQFBgcICQoLDA0ODw==","iv":"AAECAwQFBgcICQoLDA0ODw=="})";

TEST(CommandLine, HasDefaults)
{
    const auto options = std::get<ServiceOptions>(read({}));

    EXPECT_EQ(options.limits.processor, std::chrono::seconds(120));
    EXPECT_EQ(options.limits.wall, std::chrono::seconds(240));
    EXPECT_EQ(options.limits.memory, std::int64_t{2} << 30);
    EXPECT_FALSE(options.encryption.has_value());
}

TEST(CommandLine, TakesLimits)
{
    const auto options = std::get<ServiceOptions>(read({"--seconds", "3", "--wall", "5", "--memory", "100"}));

    EXPECT_EQ(options.limits.processor, std::chrono::seconds(3));
    EXPECT_EQ(options.limits.wall, std::chrono::seconds(5));
    EXPECT_EQ(options.limits.memory, std::int64_t{100} << 20);
}

TEST(CommandLine, TakesTheEncryptionWithItsQuotationMarksOrWithout)
{
    for (const std::string& text : {encryption, Torv::Json::_encodeString(encryption)}) {
        const auto options = std::get<ServiceOptions>(read({"e", text}));

        ASSERT_TRUE(options.encryption.has_value());
        EXPECT_EQ(options.encryption->algorithm, Torv::Security::Endecryptor::Algorithm::Aes128Cbc);
        EXPECT_EQ(options.encryption->key.size(), 16U);
    }
}

TEST(CommandLine, AnswersWhatIsWrong)
{
    for (const auto& arguments : std::vector<std::vector<std::string>>{{"e"},
                                                                       {"e", "{"},
                                                                       {"e", R"({"algorithm":1})"},
                                                                       {"--seconds", "x"},
                                                                       {"--seconds", "0"},
                                                                       {"--seconds", "-1"},
                                                                       {"--nothing", "1"},
                                                                       {"word"}}) {
        const auto answer = read(arguments);
        ASSERT_TRUE(std::holds_alternative<Answer>(answer)) << arguments.front();
        EXPECT_TRUE(std::get<Answer>(answer).isError);
    }
}

TEST(CommandLine, ShowsHelp)
{
    EXPECT_FALSE(std::get<Answer>(read({"--help"})).isError);
}

} // namespace
} // namespace JobParser::Worker
