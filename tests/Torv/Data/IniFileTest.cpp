#include "Torv/Data/IniFile.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string>
#include <vector>

#include "tests/Torv/CommaLocale.h"

namespace Torv::Data
{
namespace
{

using Items = std::vector<std::string>;

class IniFileTest : public testing::Test
{
protected:
    IniFileTest()
    {
        std::string pattern = testing::TempDir() + "IniFileXXXXXX";
        m_folder = mkdtemp(pattern.data());
    }
    ~IniFileTest() override { std::filesystem::remove_all(m_folder); }

    bool open(const std::string& text)
    {
        const std::string path = m_folder + "/config.ini";
        std::ofstream(path, std::ios::binary).write(text.data(), static_cast<std::streamsize>(text.size()));
        const bool opened = m_ini.open(path);
        m_ini.setSection("JobParser");
        return opened;
    }

    Items list(const std::string& value)
    {
        EXPECT_TRUE(open("[JobParser]\nlist=" + value + "\n"));
        return m_ini.valueStringArray("list");
    }

    std::string m_folder;
    IniFile m_ini;
};

TEST_F(IniFileTest, HasOnlyDefaultsBeforeItIsOpened)
{
    m_ini.setSection("JobParser");

    EXPECT_EQ(m_ini.valueFloat("tolerance", 1.5F), 1.5F);
    EXPECT_TRUE(m_ini.valueStringArray("list").empty());
}

TEST_F(IniFileTest, ReadsNumbers)
{
    ASSERT_TRUE(open("[JobParser]\na = 2.5\nb=-3\nc = 4 mm\nd= .5\ne=1,5\n"));

    EXPECT_EQ(m_ini.valueFloat("a", 9), 2.5F);
    EXPECT_EQ(m_ini.valueFloat("b", 9), -3.0F);
    EXPECT_EQ(m_ini.valueFloat("c", 9), 4.0F);
    EXPECT_EQ(m_ini.valueFloat("d", 9), 0.5F);
    EXPECT_EQ(m_ini.valueFloat("e", 9), 1.0F);
}

TEST_F(IniFileTest, GivesTheDefaultForWhatIsNoNumber)
{
    ASSERT_TRUE(open("[JobParser]\na = x\nb =\nc = 1e99\n"));

    EXPECT_EQ(m_ini.valueFloat("a", 9), 9.0F);
    EXPECT_EQ(m_ini.valueFloat("b", 9), 9.0F);
    EXPECT_EQ(m_ini.valueFloat("c", 9), 9.0F);
    EXPECT_EQ(m_ini.valueFloat("absent", 9), 9.0F);
}

TEST_F(IniFileTest, FindsSectionsAndKeysIgnoringCase)
{
    ASSERT_TRUE(open("[JOBparser]\nPaperTolerance=1\n"));

    EXPECT_EQ(m_ini.valueFloat("papertolerance", 9), 1.0F);
    m_ini.setSection("jobPARSER");
    EXPECT_EQ(m_ini.valueFloat("PAPERTOLERANCE", 9), 1.0F);
}

TEST_F(IniFileTest, TakesValuesOnlyFromTheChosenSection)
{
    ASSERT_TRUE(open("a=1\n[Other]\na=2\n[JobParser]\nb=3\n[Other]\nc=4\n[JobParser]\nd=5\n"));

    EXPECT_EQ(m_ini.valueFloat("a", 9), 9.0F);
    EXPECT_EQ(m_ini.valueFloat("b", 9), 3.0F);
    EXPECT_EQ(m_ini.valueFloat("d", 9), 5.0F);
    m_ini.setSection("Other");
    EXPECT_EQ(m_ini.valueFloat("a", 9), 2.0F);
    EXPECT_EQ(m_ini.valueFloat("c", 9), 4.0F);
    m_ini.setSection("Absent");
    EXPECT_EQ(m_ini.valueFloat("a", 9), 9.0F);
}

TEST_F(IniFileTest, TakesTheLastOfEqualKeys)
{
    ASSERT_TRUE(open("[JobParser]\na=1\nA=2\n[JobParser]\na=3\n"));

    EXPECT_EQ(m_ini.valueFloat("a", 9), 3.0F);
}

TEST_F(IniFileTest, SkipsCommentsAndLinesWithoutAKey)
{
    ASSERT_TRUE(open("; head\n# head\n[JobParser]\n;a=1\n#a=2\nnothing\n= 3\nb=4\r\nc=5"));

    EXPECT_EQ(m_ini.valueFloat("a", 9), 9.0F);
    EXPECT_EQ(m_ini.valueFloat("b", 9), 4.0F);
    EXPECT_EQ(m_ini.valueFloat("c", 9), 5.0F);
}

TEST_F(IniFileTest, SkipsAByteOrderMark)
{
    ASSERT_TRUE(open("\xEF\xBB\xBF[JobParser]\na=1\nlist=\xC3\xA4\n"));

    EXPECT_EQ(m_ini.valueFloat("a", 9), 1.0F);
    EXPECT_EQ(m_ini.valueStringArray("list"), (Items{"\xC3\xA4"}));
}

TEST_F(IniFileTest, ReadsListsSeparatedByCommas)
{
    EXPECT_EQ(list("a,b c , d"), (Items{"a", "b c", "d"}));
    EXPECT_EQ(list("one"), (Items{"one"}));
    EXPECT_EQ(list("a,,b, ,"), (Items{"a", "b"}));
    EXPECT_EQ(list(""), (Items{}));
    EXPECT_EQ(list("\xE4,\xFF"), (Items{"\xE4", "\xFF"}));
    EXPECT_TRUE(m_ini.valueStringArray("absent").empty());
}

TEST_F(IniFileTest, KeepsCommasAndBlanksWithinQuotes)
{
    EXPECT_EQ(list(R"("a, b",c)"), (Items{"a, b", "c"}));
    EXPECT_EQ(list(R"(a , " b " , c)"), (Items{"a", " b ", "c"}));
    EXPECT_EQ(list(R"("","x")"), (Items{"x"}));
    EXPECT_EQ(list(R"(11 x 17", A3)"), (Items{"11 x 17\"", "A3"}));
    EXPECT_EQ(list(R"("a" b, c)"), (Items{"ab", "c"}));
    EXPECT_EQ(list(R"(a,"b, c)"), (Items{"a", "b, c"}));
}

TEST_F(IniFileTest, ForgetsEverythingIfAFileCannotBeRead)
{
    ASSERT_TRUE(open("[JobParser]\na=1\n"));

    EXPECT_FALSE(m_ini.open(m_folder + "/absent.ini"));
    EXPECT_EQ(m_ini.valueFloat("a", 9), 9.0F);
    EXPECT_FALSE(m_ini.open(m_folder));
}

TEST_F(IniFileTest, ReplacesWhatItHeldByTheFileOpenedLast)
{
    ASSERT_TRUE(open("[JobParser]\na=1\n"));
    ASSERT_TRUE(open("[JobParser]\nb=2\n"));

    EXPECT_EQ(m_ini.valueFloat("a", 9), 9.0F);
    EXPECT_EQ(m_ini.valueFloat("b", 9), 2.0F);
}

TEST_F(IniFileTest, OpensFilesWithoutValues)
{
    EXPECT_TRUE(open(""));
    EXPECT_EQ(m_ini.valueFloat("a", 9), 9.0F);
    EXPECT_TRUE(open("\xEF\xBB\xBF"));
    EXPECT_TRUE(open("[JobParser"));
    EXPECT_TRUE(open(std::string("[JobParser]\n\0a=1\n", 17)));
    EXPECT_EQ(m_ini.valueFloat("a", 9), 9.0F);
}

TEST_F(IniFileTest, IgnoresTheLocaleOfTheHost)
{
    ASSERT_TRUE(open("[JobParser]\na=2.5\n"));
    const Torv::Test::CommaLocale locale;

    EXPECT_EQ(m_ini.valueFloat("a", 9), 2.5F);
}

} // namespace
} // namespace Torv::Data
