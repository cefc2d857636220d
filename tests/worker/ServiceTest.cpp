#include "worker/Service.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/FileText.h"
#include "tests/support/JobBytes.h"
#include "tests/support/OtherPath.h"
#include "tests/worker/PdfBytes.h"

#include "Torv/Json/Json.h"
#include "Torv/Json/Object.h"
#include "Torv/Variant.h"

namespace JobParser::Worker
{
namespace
{

class ServiceTest : public testing::Test
{
protected:
    Torv::Variant parse(const std::string& bytes, Pdl pdl)
    {
        const std::string path = directory.file("job", bytes);
        Torv::Json::Object request;
        request.add("command", "parse");
        request.add("pdl", pdl);
        request.add("jobPath", path);
        request.add("grayscaleTolerance", 0);
        return ask(request);
    }

    Torv::Variant convert(const std::string& bytes, const std::string& out, int format, int pageCount = 0,
                          bool forceMono = false, std::int64_t box = 0, int dpi = 0)
    {
        const std::string path = directory.file("job", bytes);
        Torv::Json::Object params;
        params.add("jobPath", path);
        params.add("outPath", directory.path(out));
        params.add("conversionFormat", format);
        params.add("pageCount", pageCount);
        params.add("forceMono", forceMono);
        params.add("imgBoundingBoxWidth", box);
        params.add("imgBoundingBoxHeight", box);
        params.add("imgDpi", dpi);
        Torv::Json::Object request;
        request.add("command", "convert");
        request.add("params", params);
        return ask(request);
    }

    Torv::Variant ask(const Torv::Json::Object& request)
    {
        const auto reply = service.answer(request.str());
        EXPECT_TRUE(reply.has_value());
        EXPECT_EQ(reply->find('\n'), std::string::npos);
        return Torv::Json::parse(*reply);
    }

    std::string read(const std::string& name) const { return fileText(directory.path(name)); }

    bool exists(const std::string& name) const { return std::filesystem::exists(directory.path(name)); }

    Torv::Test::TemporaryDirectory directory;
    Service service{ServiceOptions()};
};

const std::string postScript =
    "%!PS\n<</PageSize [595 842]>> setpagedevice\n"
    "0 0 9 9 rectfill showpage 1 0 0 setrgbcolor 0 0 9 9 rectfill showpage showpage\n"
    "0.5 setgray 0 0 9 9 rectfill 3 /#copies exch def showpage\n";

TEST_F(ServiceTest, LooksAtPostScript)
{
    const Torv::Variant reply = parse(postScript, Pdl::PostScript);

    EXPECT_EQ(reply["errorCode"].toInt(), 0);
    EXPECT_EQ(reply["blankCount"].toInt(), 1);
    EXPECT_EQ(reply["monoCount"].toInt(), 1);
    EXPECT_EQ(reply["grayCount"].toInt(), 1);
    EXPECT_EQ(reply["colorCount"].toInt(), 1);
    EXPECT_EQ(reply["copies"].toInt(), 3);
    EXPECT_EQ(reply["pageWidth"].toInt(), 2099);
    EXPECT_EQ(reply["pageHeight"].toInt(), 2970);
}

TEST_F(ServiceTest, DoesNotKnowTheSizeOfPostScriptThatChoosesNone)
{
    EXPECT_EQ(parse("%!PS\n0 0 9 9 rectfill showpage\n", Pdl::PostScript)["pageWidth"].toInt(), 0);
}

TEST_F(ServiceTest, StartsEachPostScriptJobAnew)
{
    parse("%!PS\n/showpage {} def systemdict /rectfill undef\n", Pdl::PostScript);

    EXPECT_EQ(parse(postScript, Pdl::PostScript)["colorCount"].toInt(), 1);
}

TEST_F(ServiceTest, KeepsPostScriptFromFiles)
{
    const std::string victim = directory.file("victim", "secret");
    const std::string reads = "%!PS\n(" + victim + ") (r) file 9 string readstring pop pop showpage\n";
    const std::string writes = "%!PS\n(" + directory.path("new") + ") (w) file closefile showpage\n";

    EXPECT_NE(parse(reads, Pdl::PostScript)["errorCode"].toInt(), 0);
    EXPECT_NE(parse(writes, Pdl::PostScript)["errorCode"].toInt(), 0);
    EXPECT_FALSE(exists("new"));
}

TEST_F(ServiceTest, AnswersForPostScriptThatFailsBeforeItsFirstPage)
{
    const Torv::Variant reply = parse("%!PS\nnobody showpage\n", Pdl::PostScript);

    EXPECT_EQ(reply["errorCode"].toInt(), 4);
    EXPECT_NE(reply["errorMessage"].toString(), "");
}

TEST_F(ServiceTest, CountsPagesOfPostScriptThatFailsLater)
{
    EXPECT_EQ(parse("%!PS\n0 0 9 9 rectfill showpage nobody\n", Pdl::PostScript)["monoCount"].toInt(), 1);
}

TEST_F(ServiceTest, ReadsDataInsideOfPostScript)
{
    const std::string job =
        "%!PS\n1 1 8 [1 0 0 1 0 0] currentfile /ASCIIHexDecode filter false 3 colorimage\n"
        "FF0000>\nshowpage\n";

    EXPECT_EQ(parse(job, Pdl::PostScript)["colorCount"].toInt(), 1);
}

TEST_F(ServiceTest, LooksAtAllBodiesOfAJob)
{
    const JobBytes job = JobBytes()
                             .uel()
                             .pjl("SET COPIES=2")
                             .pjl("ENTER LANGUAGE=PDF")
                             .raw(pdfOf({"0 0 9 9 re f"}))
                             .uel()
                             .pjl("ENTER LANGUAGE=PCL")
                             .raw("text\f")
                             .uel()
                             .pjl("ENTER LANGUAGE=POSTSCRIPT")
                             .raw(postScript)
                             .uel();

    const Torv::Variant reply = parse(job.str(), Pdl::Pdf);

    EXPECT_EQ(reply["monoCount"].toInt(), 3);
    EXPECT_EQ(reply["colorCount"].toInt(), 1);
    EXPECT_EQ(reply["copies"].toInt(), 3);
}

TEST_F(ServiceTest, AnswersForFilesThatItCannotRead)
{
    Torv::Json::Object request;
    request.add("command", "parse");
    request.add("pdl", 6);
    request.add("jobPath", directory.path("none"));

    EXPECT_EQ(ask(request)["errorCode"].toInt(), 2);
    EXPECT_EQ(parse("", Pdl::Pdf)["errorCode"].toInt(), 3);
    EXPECT_EQ(parse("UNIRAST", Pdl::Urf)["errorCode"].toInt(), 3);
    EXPECT_EQ(parse("%PDF-1.7 and no more", Pdl::Pdf)["errorCode"].toInt(), 4);
}

TEST_F(ServiceTest, AnswersForWhatIsNoRequest)
{
    EXPECT_EQ(Torv::Json::parse(*service.answer("nonsense"))["errorCode"].toInt(), 1);
    EXPECT_FALSE(service.answer(R"({"command":"exit"})").has_value());
}

TEST_F(ServiceTest, SaysThatAConversionFailedThatIsNoRequest)
{
    for (const char* request :
         {R"({"command":"convert"})", R"({"command":"convert","params":[]})",
          R"({"command":"convert","params":{"jobPath":"j","outPath":"o","conversionFormat":77}})"}) {
        SCOPED_TRACE(request);

        const Torv::Variant reply = Torv::Json::parse(*service.answer(request));

        EXPECT_FALSE(reply["success"].toBool());
        EXPECT_EQ(reply["errorCode"].toInt(), 1);
        EXPECT_NE(reply["errorMessage"].toString(), "");
    }
    EXPECT_FALSE(Torv::Json::parse(*service.answer(R"({"command":1})")).contains("success"));
}

TEST_F(ServiceTest, EndsHostileJobsAndGoesOn)
{
    ServiceOptions options;
    options.limits.processor = std::chrono::seconds(1);
    Service limited(options);
    const std::string endless = directory.file("endless", "%!PS\n{} loop\n");
    const std::string good = directory.file("good", postScript);
    const auto request = [](const std::string& path) {
        return R"({"command":"parse","pdl":2,"jobPath":")" + path + "\"}";
    };

    EXPECT_EQ(Torv::Json::parse(*limited.answer(request(endless)))["errorCode"].toInt(), 5);
    EXPECT_EQ(Torv::Json::parse(*limited.answer(request(good)))["colorCount"].toInt(), 1);
}

TEST_F(ServiceTest, ConvertsToPdf)
{
    EXPECT_TRUE(
        convert(pdfOf({"0 0 9 9 re f", "1 0 0 rg 0 0 9 9 re f"}), "out.pdf", 0, 1)["success"].toBool());

    EXPECT_TRUE(read("out.pdf").starts_with("%PDF-"));
    EXPECT_EQ(parse(read("out.pdf"), Pdl::Pdf)["monoCount"].toInt(), 1);
    EXPECT_EQ(parse(read("out.pdf"), Pdl::Pdf)["colorCount"].toInt(), 0);
}

TEST_F(ServiceTest, ConvertsToShadesOfGray)
{
    EXPECT_TRUE(convert(pdfOf({"1 0 0 rg 0 0 9 9 re f"}), "out.pdf", 0, 0, true)["success"].toBool());

    EXPECT_EQ(parse(read("out.pdf"), Pdl::Pdf)["grayCount"].toInt(), 1);
}

TEST_F(ServiceTest, ConvertsEachPageToAPicture)
{
    EXPECT_TRUE(convert(postScript, "out.png", 1, 2)["success"].toBool());
    EXPECT_TRUE(convert(postScript, "out.jpg", 2, 1)["success"].toBool());

    EXPECT_TRUE(read("out-1.png").starts_with("\x89PNG"));
    EXPECT_TRUE(read("out-2.png").starts_with("\x89PNG"));
    EXPECT_FALSE(exists("out-3.png"));
    EXPECT_FALSE(exists("out.png"));
    EXPECT_TRUE(read("out-1.jpg").starts_with("\xFF\xD8"));
    EXPECT_FALSE(exists("out-2.jpg"));
}

/// Width and height of a PNG, as its header has them.
std::pair<int, int> sizeOfPng(const std::string& bytes)
{
    const auto number = [&](std::size_t at) {
        int value = 0;
        for (std::size_t i = 0; i < 4; ++i)
            value = value * 256 + static_cast<std::uint8_t>(bytes.at(at + i));
        return value;
    };
    return {number(16), number(20)};
}

TEST_F(ServiceTest, FitsPicturesIntoTheirBox)
{
    const std::string document = pdfOf({"0 0 9 9 re f"});

    convert(document, "usual.png", 1);
    convert(document, "dpi.png", 1, 0, false, 0, 72);
    convert(document, "box.png", 1, 0, false, 900);
    convert(document, "both.png", 1, 0, false, 900, 72);
    convert(document, "small.png", 1, 0, false, 30, 72);
    convert(document, "huge.png", 1, 0, false, 4294967295, 72);

    EXPECT_EQ(sizeOfPng(read("usual-1.png")), std::make_pair(417, 625));
    EXPECT_EQ(sizeOfPng(read("dpi-1.png")), std::make_pair(200, 300));
    EXPECT_EQ(sizeOfPng(read("box-1.png")), std::make_pair(600, 900));
    EXPECT_EQ(sizeOfPng(read("both-1.png")), std::make_pair(200, 300));
    EXPECT_EQ(sizeOfPng(read("small-1.png")), std::make_pair(20, 30));
    EXPECT_EQ(sizeOfPng(read("huge-1.png")), std::make_pair(200, 300));
}

TEST_F(ServiceTest, ConvertsAllPagesToOneTiff)
{
    EXPECT_TRUE(convert(postScript, "out.tif", 3)["success"].toBool());

    EXPECT_TRUE(read("out.tif").starts_with("II*"));
}

TEST_F(ServiceTest, ConvertsToTextWithAFormFeedBetweenPages)
{
    const std::string font = "/Font << /F << /Type /Font /Subtype /Type1 /BaseFont /Helvetica >> >>";
    const std::string document =
        pdfOf({"BT /F 12 Tf 9 9 Td (one) Tj ET", "BT /F 12 Tf 9 9 Td (two) Tj ET"}, font);

    EXPECT_TRUE(convert(document, "out.txt", 4)["success"].toBool());

    EXPECT_EQ(read("out.txt"), "one\n\n\ftwo\n\n");
}

TEST_F(ServiceTest, ConvertsToPostScript)
{
    EXPECT_TRUE(convert(pdfOf({"1 0 0 rg 0 0 9 9 re f"}), "out.ps", 5)["success"].toBool());

    EXPECT_TRUE(read("out.ps").starts_with("%!PS"));
    EXPECT_EQ(parse(read("out.ps"), Pdl::PostScript)["colorCount"].toInt(), 1);
}

TEST_F(ServiceTest, LeavesNothingOfAConversionThatFails)
{
    const Torv::Variant reply = convert("%PDF-1.7 and no more", "out.pdf", 0);

    EXPECT_FALSE(reply["success"].toBool());
    EXPECT_NE(reply["errorMessage"].toString(), "");
    EXPECT_FALSE(exists("out.pdf"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.path("")), {}), 1);
}

TEST_F(ServiceTest, ConvertsNoDocumentWithoutPages)
{
    for (int format = 0; format <= 5; ++format) {
        const Torv::Variant reply = convert(pdfOf({}), "out", format);

        EXPECT_FALSE(reply["success"].toBool()) << format;
        EXPECT_EQ(reply["errorCode"].toInt(), 4) << format;
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.path("")), {}), 1);
}

TEST_F(ServiceTest, MakesNoPictureThatIsTooLarge)
{
    const Torv::Variant reply = convert(pdfOf({"0 0 9 9 re f"}), "out.png", 1, 0, false, 4294967295);

    EXPECT_FALSE(reply["success"].toBool());
    EXPECT_EQ(reply["errorCode"].toInt(), 5);
}

TEST_F(ServiceTest, SaysWhatIsMissingToConvertPcl)
{
    const OtherPath path(directory.path("none"));

    const Torv::Variant reply = convert("\x1B"
                                        "Etext\f",
                                        "out.pdf", 0);

    EXPECT_FALSE(reply["success"].toBool());
    EXPECT_NE(reply["errorMessage"].toString().find("gpcl6"), std::string::npos);
}

TEST_F(ServiceTest, HasPclConvertedByTheProgramOnThePath)
{
    const std::string document = directory.file("rendered.pdf", pdfOf({"1 0 0 rg 0 0 9 9 re f"}));
    const std::string script = directory.file(
        "gpcl6", "#!/bin/sh\nfor a; do case $a in -sOutputFile=*) o=${a#*=};; esac; last=$a; done\n"
                 "grep -q text \"$last\" && cp '" +
                     document + "' \"$o\"\n");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    const OtherPath path(directory.path("") + ":/usr/bin:/bin");

    EXPECT_TRUE(convert("\x1B"
                        "Etext\f",
                        "out.pdf", 0)["success"]
                    .toBool());
    EXPECT_FALSE(convert("\x1B"
                         "Eother\f",
                         "other.pdf", 0)["success"]
                     .toBool());

    EXPECT_EQ(parse(read("out.pdf"), Pdl::Pdf)["colorCount"].toInt(), 1);
    EXPECT_FALSE(exists("other.pdf"));
}

} // namespace
} // namespace JobParser::Worker
