// PDFs of many small pages and of few large streams, and the text of a summary.

#include <memory>
#include <string>
#include <zlib.h>

#include "BenchSupport.h"
#include "JobParser/Job.h"
#include "JobParser/Library.h"
#include "JobParser/Parser.h"

#include "Torv/Json/Json.h"

namespace
{

constexpr int pageCount = 8000;

std::string object(int number, const std::string& value)
{
    return std::to_string(number) + " 0 obj\n" + value + "\nendobj\n";
}

std::string reference(int number)
{
    return std::to_string(number) + " 0 R ";
}

std::string end(std::size_t offset)
{
    return "xref\n0 0\ntrailer<</Root 1 0 R/Size 1>>\nstartxref\n" + std::to_string(offset) + "\n%%EOF\n";
}

std::string head(int firstPage, int pages)
{
    std::string kids;
    for (int page = 0; page < pages; ++page)
        kids += reference(firstPage + page);
    return "%PDF-1.7\n" + object(1, "<</Type/Catalog/Pages 2 0 R>>") +
           object(2, "<</Type/Pages/Kids[" + kids + "]>>");
}

std::string page(int number)
{
    return "<</Type/Page/Parent 2 0 R/MediaBox[0 0 595.28 841.89]/Rotate 0/Contents " + reference(number) +
           "/Resources<</ProcSet[/PDF/Text]/Font<</F1 9 0 R/F2 10 0 R>>>>>>";
}

const Bench::ScratchFile& smallPages()
{
    static Bench::ScratchFile file;
    if (file.size() != 0)
        return file;
    std::string pdf = head(100, pageCount);
    const std::string content(1600, 'x');
    for (int number = 0; number < pageCount; ++number) {
        pdf += object(100 + number, page(20000 + number));
        pdf +=
            object(20000 + number, "<</Length 1600/Filter/FlateDecode>>stream\n" + content + "\nendstream");
    }
    file.append(pdf + end(pdf.size()));
    return file;
}

std::string objectStream(int number, int firstPage, int pages)
{
    std::string table;
    std::string objects;
    for (int index = 0; index < pages; ++index) {
        table += std::to_string(firstPage + index) + ' ' + std::to_string(objects.size()) + ' ';
        objects += page(20000 + firstPage + index) + '\n';
    }
    const std::string data = table + objects;
    uLongf size = compressBound(data.size());
    std::string packed(size, '\0');
    compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(data.data()),
             data.size());
    packed.resize(size);
    return object(number, "<</Type/ObjStm/N " + std::to_string(pages) + "/First " +
                              std::to_string(table.size()) + "/Filter/FlateDecode/Length " +
                              std::to_string(size) + ">>stream\n" + packed + "\nendstream");
}

const Bench::ScratchFile& smallPagesInStreams()
{
    constexpr int perStream = 100;

    static Bench::ScratchFile file;
    if (file.size() != 0)
        return file;
    std::string pdf = head(100, pageCount);
    for (int first = 0; first < pageCount; first += perStream)
        pdf += objectStream(50000 + first, 100 + first, perStream);
    file.append(pdf + end(pdf.size()));
    return file;
}

void fillWithPictures(Bench::ScratchFile& file, const std::string& length)
{
    constexpr int pictures = 30;

    const std::string data = Bench::randomBytes(5 * Bench::mebibyte);
    file.append(head(100, 1) + object(100, page(101)));
    for (int number = 0; number < pictures; ++number) {
        file.append(std::to_string(200 + number) + " 0 obj<</Type/XObject/Length " + length + ">>stream\n");
        file.append(data);
        file.append("\nendstream endobj\n");
    }
    file.append(end(file.size()));
}

const Bench::ScratchFile& pictures()
{
    static Bench::ScratchFile file;
    if (file.size() == 0)
        fillWithPictures(file, std::to_string(5 * Bench::mebibyte));
    return file;
}

const Bench::ScratchFile& picturesWithoutLength()
{
    static Bench::ScratchFile file;
    if (file.size() == 0)
        fillWithPictures(file, "99 0 R");
    return file;
}

void pdf(benchmark::State& state, const Bench::ScratchFile& (*input)())
{
    Bench::measureParse(state, input());
}

void pdfSummary(benchmark::State& state, bool isReading)
{
    JobParser::Library::init({});
    const std::shared_ptr<JobParser::Job> job = Bench::parse(smallPages())->job;
    const std::string text = job->toJson();
    const auto work = [&] {
        if (isReading)
            benchmark::DoNotOptimize(JobParser::Job(Torv::Json::parse(text)));
        else
            benchmark::DoNotOptimize(job->toJson());
    };

    Bench::measure(state, text.size(), work, {{"x_memchr", [&] { Bench::seeAllBytes(text); }}});
    state.SetItemsProcessed(pageCount * state.iterations());
}

} // namespace

BENCHMARK_CAPTURE(pdf, smallPages, smallPages)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(pdf, smallPagesInStreams, smallPagesInStreams)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(pdf, pictures, pictures)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(pdf, picturesWithoutLength, picturesWithoutLength)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(pdfSummary, written, false)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(pdfSummary, readBack, true)->UseManualTime()->Unit(benchmark::kMillisecond);
