#include "JobParser/model/Pdl.h"

#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <vector>

namespace JobParser
{
namespace
{

struct Language {
    int number;
    const char* displayName;
    const char* enterLang;
    const char* mime;
};

constexpr std::array<Language, 10> languages{{
    {0, "", "", ""},
    {1, "PCL 5", "PCL", "application/vnd.hp-PCL"},
    {2, "PostScript", "POSTSCRIPT", "application/postscript"},
    {3, "ESC/P", "ESCP", ""},
    {4, "Prescribe", "PRESCRIBE", ""},
    {5, "PCL 6", "PCLXL", "application/vnd.hp-PCLXL"},
    {6, "PDF", "PDF", "application/pdf"},
    {7, "JPEG", "JPEG", "image/jpeg"},
    {8, "XPS", "XPS", "application/vnd.xpsdocument"},
    {9, "URF", "URF", "image/urf"},
}};

TEST(Pdl, HasItsNumbers)
{
    EXPECT_EQ(static_cast<int>(Pdl::Detect), -1);
    EXPECT_EQ(static_cast<int>(Pdl::Unknown), 0);
    EXPECT_EQ(static_cast<int>(Pdl::Pcl5), 1);
    EXPECT_EQ(static_cast<int>(Pdl::PostScript), 2);
    EXPECT_EQ(static_cast<int>(Pdl::EscP), 3);
    EXPECT_EQ(static_cast<int>(Pdl::Prescribe), 4);
    EXPECT_EQ(static_cast<int>(Pdl::PclXl), 5);
    EXPECT_EQ(static_cast<int>(Pdl::Pdf), 6);
    EXPECT_EQ(static_cast<int>(Pdl::Jpeg), 7);
    EXPECT_EQ(static_cast<int>(Pdl::Xps), 8);
    EXPECT_EQ(static_cast<int>(Pdl::Urf), 9);
}

TEST(Pdl, HasANameAndAPjlWordForEachLanguage)
{
    for (const Language& row : languages) {
        EXPECT_EQ(PdlUtils::displayName(static_cast<Pdl>(row.number)), row.displayName);
        EXPECT_EQ(PdlUtils::toPjlEnterLang(static_cast<Pdl>(row.number)), row.enterLang);
    }
}

TEST(Pdl, IsFoundByItsPjlWordAndItsMimeType)
{
    for (const Language& row : languages) {
        EXPECT_EQ(static_cast<int>(PdlUtils::fromPjlEnterLang(row.enterLang)), row.number);
        if (row.mime[0] != '\0') {
            EXPECT_EQ(static_cast<int>(PdlUtils::fromMime(row.mime)), row.number);
        }
    }
}

TEST(Pdl, HasEmptyTextsForNumbersThatAreNoLanguage)
{
    for (const int number :
         {-1, 10, 11, 1000000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_EQ(PdlUtils::displayName(static_cast<Pdl>(number)), "");
        EXPECT_EQ(PdlUtils::toPjlEnterLang(static_cast<Pdl>(number)), "");
    }
}

TEST(Pdl, IsFoundInAnyCase)
{
    EXPECT_EQ(PdlUtils::fromPjlEnterLang("PostScript"), Pdl::PostScript);
    EXPECT_EQ(PdlUtils::fromPjlEnterLang("pclxl"), Pdl::PclXl);
    EXPECT_EQ(PdlUtils::fromMime("APPLICATION/PDF"), Pdl::Pdf);
    EXPECT_EQ(PdlUtils::fromMime("application/vnd.HP-pclxl"), Pdl::PclXl);
}

TEST(Pdl, IsUnknownForOtherWords)
{
    EXPECT_EQ(PdlUtils::fromPjlEnterLang(""), Pdl::Unknown);
    EXPECT_EQ(PdlUtils::fromPjlEnterLang("PCL5"), Pdl::Unknown);
    EXPECT_EQ(PdlUtils::fromPjlEnterLang(" PCL"), Pdl::Unknown);
    EXPECT_EQ(PdlUtils::fromMime(""), Pdl::Unknown);
    EXPECT_EQ(PdlUtils::fromMime("text/plain"), Pdl::Unknown);
}

TEST(Pdl, KnowsTheExtensionOfPdfAlone)
{
    EXPECT_EQ(PdlUtils::fromExtension("pdf"), Pdl::Pdf);
    EXPECT_EQ(PdlUtils::fromExtension("PDF"), Pdl::Pdf);
    EXPECT_EQ(PdlUtils::fromExtension("ps"), Pdl::Unknown);
    EXPECT_EQ(PdlUtils::fromExtension(".pdf"), Pdl::Unknown);
    EXPECT_EQ(PdlUtils::fromExtension(""), Pdl::Unknown);
}

TEST(Pdl, TellsTheExtensionsOfPrintJobs)
{
    for (const char* extension : {"prn", "pcl", "ps", "eps", "pdf", "txt", "PS", "Pdf"})
        EXPECT_TRUE(PdlUtils::isPdlExtension(extension)) << extension;
    for (const char* extension : {"", ".ps", "xps", "jpg", "pd", "pdfx"})
        EXPECT_FALSE(PdlUtils::isPdlExtension(extension)) << extension;
}

TEST(PdlThreads, MayAllBeTheFirstToAsk)
{
    std::array<Pdl, 8> found{};
    std::vector<std::thread> threads;

    for (Pdl& pdl : found) {
        threads.emplace_back([&pdl] {
            if (PdlUtils::fromExtension("pdf") == Pdl::Pdf && PdlUtils::isPdlExtension("ps") &&
                PdlUtils::displayName(Pdl::Urf) == "URF" && PdlUtils::fromMime("image/jpeg") == Pdl::Jpeg)
                pdl = PdlUtils::fromPjlEnterLang("PCLXL");
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    for (const Pdl pdl : found)
        EXPECT_EQ(pdl, Pdl::PclXl);
}

} // namespace
} // namespace JobParser
