#include "worker/PageSource.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

#include "JobParser/JobFile.h"
#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/FileText.h"
#include "tests/support/OtherPath.h"
#include "tests/worker/InChild.h"
#include "tests/worker/PdfBytes.h"
#include "worker/FitzContext.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

class PageSourceTest : public testing::Test
{
protected:
    /// Opens a job of these bodies, one after the other.
    void open(const std::vector<std::pair<Pdl, std::string>>& parts)
    {
        std::string bytes;
        for (const auto& [pdl, text] : parts) {
            bodies.push_back(
                {pdl, {{static_cast<std::int64_t>(bytes.size()), static_cast<std::int64_t>(text.size())}}});
            bytes += text;
        }
        file.open(directory.file("job", bytes));
        pages = std::make_unique<PageSource>(context.get(), file, directory.path(""));
    }

    /// The numbers of the pages in their documents.
    std::vector<int> indexes(std::uint32_t limit)
    {
        std::vector<int> numbers;
        const int count =
            pages->forEach(limit, [&](fz_document*, fz_page*, int index) { numbers.push_back(index); });
        EXPECT_EQ(count, static_cast<int>(numbers.size()));
        return numbers;
    }

    Torv::Test::TemporaryDirectory directory;
    FitzContext context;
    JobFile file;
    std::vector<Body> bodies;
    std::unique_ptr<PageSource> pages;
};

TEST_F(PageSourceTest, HasThePagesOfAllBodiesInOrder)
{
    open({{Pdl::Pdf, pdfOf({"", ""})}, {Pdl::Pdf, pdfOf({"", "", ""})}});
    for (const Body& body : bodies)
        pages->add(body);

    EXPECT_EQ(indexes(0), (std::vector<int>{0, 1, 0, 1, 2}));
    EXPECT_EQ(indexes(3), (std::vector<int>{0, 1, 0}));
    EXPECT_EQ(indexes(99), (std::vector<int>{0, 1, 0, 1, 2}));
}

TEST_F(PageSourceTest, HasNoPagesWithoutABody)
{
    open({});

    EXPECT_EQ(indexes(0), std::vector<int>());
}

TEST_F(PageSourceTest, PassesOnWhatTheCallerThrows)
{
    open({{Pdl::Pdf, pdfOf({"", ""})}});
    pages->add(bodies[0]);

    EXPECT_THROW(pages->forEach(0, [](fz_document*, fz_page*, int) { throw std::out_of_range("enough"); }),
                 std::out_of_range);
}

TEST_F(PageSourceTest, MakesPdfOfPostScriptInItsFolder)
{
    open({{Pdl::PostScript, "%!PS\nshowpage showpage\n"}});

    const std::string count = inChild([&] {
        pages->add(bodies[0]);
        return std::to_string(indexes(0).size());
    });

    EXPECT_EQ(count, "2");
    EXPECT_TRUE(fileText(directory.path("part-1.pdf")).starts_with("%PDF-"));
}

TEST_F(PageSourceTest, RejectsWhatIsNoDocument)
{
    open({{Pdl::Pdf, "neither"}});

    EXPECT_THROW(pages->add(bodies[0]), WorkerException);
}

TEST_F(PageSourceTest, FindsTheRendererOfPclInAnyFolderOfThePath)
{
    open({{Pdl::Pcl5, "text"}, {Pdl::PclXl, "other"}});
    const std::string document = directory.file("rendered.pdf", pdfOf({""}));
    const std::string script = directory.file(
        "gpcl6", "#!/bin/sh\nfor a; do case $a in -sOutputFile=*) o=${a#*=};; esac; done\ncp '" + document +
                     "' \"$o\"\n");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    const OtherPath path(directory.path("none") + "::" + directory.path("") + ":/usr/bin:/bin");

    pages->add(bodies[0]);
    pages->add(bodies[1]);

    EXPECT_EQ(indexes(0), (std::vector<int>{0, 0}));
    EXPECT_EQ(fileText(directory.path("part-1.pcl")), "text");
    EXPECT_EQ(fileText(directory.path("part-3.pcl")), "other");
}

TEST_F(PageSourceTest, SaysWhatIsMissingForPcl)
{
    open({{Pdl::Pcl5, "text"}});
    const OtherPath path("");
    try {
        pages->add(bodies[0]);
        ADD_FAILURE();
    } catch (const WorkerException& error) {
        EXPECT_EQ(error.code(), static_cast<int>(ErrorCode::Missing));
        EXPECT_STREQ(error.what(), "PCL is converted by the program gpcl6, which is not installed");
    }
}

} // namespace
} // namespace JobParser::Worker
