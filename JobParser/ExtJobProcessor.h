#pragma once

#include <cstdint>
#include <string>

#include "JobParser/Export.h"
#include "JobParser/model/Pdl.h"

#include "Torv/Async/ProcessPool/ProcessPool.h"

namespace Torv
{
class Variant;
}

namespace Torv::Json
{
class Object;
}

namespace JobParser
{

/// What a job can be converted to. The numbers are sent to worker processes, which may know more.
enum class ConversionFormat : std::int32_t {
    Pdf = 0,
    Png = 1,  ///< One file a page, with "-1" and so on in front of the suffix of `outPath`.
    Jpeg = 2, ///< The same.
    Tiff = 3, ///< All pages in one file.
    Text = 4, ///< UTF-8.
    PostScript = 5,
};

/// What a worker process is to convert, and how. For numbers 0 leaves the choice to it.
struct JOBPARSER_EXPORT ConvertParams {
    std::string jobPath;
    std::string outPath; ///< A file, or where there is none yet; no device and no pipe.
    ConversionFormat conversionFormat = ConversionFormat::Pdf;
    std::uint32_t pageCount = 0; ///< The first so many pages; 0 for all.
    bool forceMono = false;
    std::uint32_t imgBoundingBoxWidth = 0;  ///< Pixels.
    std::uint32_t imgBoundingBoxHeight = 0; ///< Pixels.
    std::uint32_t imgDpi = 0;
};

/// Puts jobs to worker processes: what a job's pages are, and what they look like in another format.
///
/// Requests and replies are JSON objects, a line each; lines that a worker prints before its reply are
/// dropped. Any thread may call any operation at any time.
class JOBPARSER_EXPORT ExtJobProcessor
{
public:
    struct Options : Torv::Async::ProcessPool::Options {
        /// Difference of the colour channels up to which a worker takes a page for gray; sent with every
        /// request to parse.
        std::int32_t grayscaleTolerance = 0;
    };

    /// Starts the worker processes. Whether they start shows at the first request. Throws what
    /// ProcessPool::start throws.
    explicit ExtJobProcessor(const Options& options);
    /// Stops the worker processes, as stop does.
    ~ExtJobProcessor();
    ExtJobProcessor(const ExtJobProcessor&) = delete;
    ExtJobProcessor& operator=(const ExtJobProcessor&) = delete;

    /// What a worker says of the job at `jobPath`, which it reads itself.
    ///
    /// Throws Torv::GenericException if there is no answer, as ProcessPool::request does, and for an answer
    /// that is no JSON. An answer that tells of a failure is an answer.
    Torv::Variant parse(const std::string& jobPath, Pdl pdl);

    /// Has a worker convert a job. Throws as parse does; Torv::GenericException with the worker's answer if
    /// it did not succeed, Torv::VariantInvalidOperationException if the answer does not say.
    void convert(const ConvertParams& params);

    /// Lets the worker processes end, and kills those that have not after 5 seconds. Requests fail
    /// afterwards.
    void stop();

    /// Sends one request and gives the reply. Throws as parse does.
    Torv::Variant run(const Torv::Json::Object& request);

private:
    const Options m_options;
    Torv::Async::ProcessPool::ProcessPool m_pool;
};

} // namespace JobParser
