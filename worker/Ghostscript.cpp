#include "worker/Ghostscript.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <ghostscript/gdevdsp.h>
#include <ghostscript/gserrors.h>
#include <ghostscript/iapi.h>
#include <utility>

#include "worker/BodyReader.h"
#include "worker/DocumentMedia.h"
#include "worker/GhostscriptLibrary.h"
#include "worker/PixelScan.h"
#include "worker/WorkerException.h"

#include "Torv/Format.h"

namespace JobParser::Worker
{
namespace
{

// Two dots a point, so that sizes of paper are told to half a point.
constexpr int dotsPerInch = 144;
constexpr double dotsPerPoint = 2;

// The page of a job that asks for none. It is far enough from every paper that no job takes it for its own,
// so that a page of this size tells that its paper is not known.
constexpr int defaultWidth = 604;
constexpr int defaultHeight = 851;

// Red, green and blue, a byte each, from the top of the page.
constexpr unsigned displayFormat = unsigned{DISPLAY_COLORS_RGB} | unsigned{DISPLAY_DEPTH_8};

// What drivers take for granted, since their printers have it. It does nothing.
constexpr const char* printerResources =
    "/RDeviceProcSet << /SetBannerPage {pop} >> /ProcSet defineresource pop";

/// The end of what Ghostscript says, for messages about failures.
constexpr std::size_t mostSaid = 500;

// Where no file can be made.
constexpr const char* noFolder = "/dev/null";

std::string folderOf(const std::string& path)
{
    return path.substr(0, path.rfind('/') + 1);
}

// In names of output files a per cent sign stands for the number of the page.
std::string outputOption(const std::string& path)
{
    std::string option = "-sOutputFile=";
    for (const char character : path)
        option.append(character == '%' ? 2 : 1, character);
    return option;
}

} // namespace

/// What the interpreter reads, and the pages that it shows. It calls this through C, so that nothing here
/// throws.
class Ghostscript::Pages
{
public:
    void begin(BodyReader& reader, int tolerance)
    {
        m_reader = &reader;
        m_tolerance = tolerance;
        m_facts = {};
    }

    const JobFacts& facts() const { return m_facts; }
    const std::string& said() const { return m_said; }
    display_callback* callbacks() { return &m_callbacks; }

    static int GSDLLCALL readInput(void* handle, char* buffer, int size) noexcept
    {
        return static_cast<Pages*>(handle)->read(buffer, size);
    }

    static int GSDLLCALL hear(void* handle, const char* text, int size) noexcept
    {
        static_cast<Pages*>(handle)->listen(text, size);
        return size;
    }

private:
    static int opened(void*, void*) { return 0; }

    static int resized(void*, void*, int width, int height, int, unsigned)
    {
        // A page of this many bytes would not leave room for anything else.
        constexpr std::int64_t mostPixels = std::int64_t{256} << 20;
        return std::int64_t{width} * height <= mostPixels ? 0 : gs_error_limitcheck;
    }

    static int placed(void* handle, void*, int width, int height, int stride, unsigned, unsigned char* image)
    {
        Pages& pages = *static_cast<Pages*>(handle);
        pages.m_width = width;
        pages.m_height = height;
        pages.m_stride = stride;
        pages.m_image = image;
        return 0;
    }

    static int shown(void* handle, void*, int copies, int)
    {
        static_cast<Pages*>(handle)->takePage(copies);
        return 0;
    }

    static int updated(void*, void*, int, int, int, int) { return 0; }

    int read(char* buffer, int size) noexcept
    {
        try {
            if (m_reader == nullptr || m_reader->atEnd())
                return 0;
            const auto bytes = m_reader->take(std::min<std::int64_t>(
                size, std::max<std::int64_t>(1, static_cast<std::int64_t>(m_reader->window().size()) - 1)));
            std::memcpy(buffer, bytes.data(), bytes.size());
            return static_cast<int>(bytes.size());
        } catch (const std::exception&) {
            return gs_error_ioerror;
        }
    }

    void listen(const char* text, int size) noexcept
    {
        if (size <= 0 || m_said.size() >= mostSaid)
            return;
        try {
            m_said.append(text, std::min(static_cast<std::size_t>(size), mostSaid - m_said.size()));
        } catch (const std::exception&) {
            // Only the message gets shorter.
        }
    }

    void takePage(int copies)
    {
        PageClass pageClass = PageClass::Blank;
        for (int y = 0; y < m_height && m_image != nullptr && pageClass != PageClass::Color; ++y) {
            const auto* row = m_image + static_cast<std::ptrdiff_t>(y) * m_stride;
            pageClass =
                std::max(pageClass, classOfRgbRow(row, static_cast<std::size_t>(m_width), m_tolerance));
        }
        const double width = m_width / dotsPerPoint;
        const double height = m_height / dotsPerPoint;
        const bool isDefault = width == defaultWidth && height == defaultHeight;
        m_facts.addPage(pageClass, isDefault ? PageSize() : pageSizeOfPoints(width, height));
        m_facts.setCopies(copies);
    }

    BodyReader* m_reader = nullptr;
    int m_tolerance = 0;
    JobFacts m_facts;
    std::string m_said;
    int m_width = 0;
    int m_height = 0;
    int m_stride = 0;
    const unsigned char* m_image = nullptr;
    display_callback m_callbacks = makeCallbacks();

    static display_callback makeCallbacks()
    {
        display_callback callbacks{};
        callbacks.size = sizeof(struct display_callback_v2_s);
        callbacks.version_major = DISPLAY_VERSION_MAJOR_V2;
        callbacks.version_minor = DISPLAY_VERSION_MINOR_V2;
        callbacks.display_open = opened;
        callbacks.display_preclose = opened;
        callbacks.display_close = opened;
        callbacks.display_presize = resized;
        callbacks.display_size = placed;
        callbacks.display_sync = opened;
        callbacks.display_page = shown;
        callbacks.display_update = updated;
        return callbacks;
    }
};

Ghostscript::Ghostscript() = default;

Ghostscript::~Ghostscript()
{
    if (m_instance != nullptr) {
        GhostscriptLibrary::get().exit(m_instance);
        GhostscriptLibrary::get().deleteInstance(m_instance);
    }
}

void Ghostscript::start()
{
    if (m_instance != nullptr)
        return;
    open({"-sDEVICE=display", Torv::format("-r%d", dotsPerInch),
          Torv::format("-dDisplayFormat=%u", displayFormat),
          Torv::format("-dDEVICEWIDTHPOINTS=%d", defaultWidth),
          Torv::format("-dDEVICEHEIGHTPOINTS=%d", defaultHeight), "-dTextAlphaBits=1",
          "-dGraphicsAlphaBits=1", "-dMaxBitmap=2147483647"},
         noFolder);
    int exitCode = 0;
    const int code = GhostscriptLibrary::get().runString(m_instance, printerResources, 0, &exitCode);
    if (code < 0)
        fail(code);
}

void Ghostscript::open(const std::vector<std::string>& options, const std::string& temporaryFolder)
{
    // Jobs may do what they like in the folder of temporary files, so that it must not be everybody's.
    ::setenv("TMPDIR", temporaryFolder.c_str(), 1);
    m_pages = std::make_unique<Pages>();
    if (GhostscriptLibrary::get().newInstance(&m_instance, m_pages.get()) < 0) {
        m_instance = nullptr;
        throw WorkerException(ErrorCode::Failed, "Ghostscript cannot be started");
    }
    GhostscriptLibrary::get().setStdio(m_instance, Pages::readInput, Pages::hear, Pages::hear);
    GhostscriptLibrary::get().setDisplayCallback(m_instance, m_pages->callbacks());
    // Colours are converted without profiles: black stays black, and equal channels stay equal.
    std::vector<std::string> arguments = {
        "gs",
        "-q",
        "-dSAFER",
        "-dNOPAUSE",
        "-dBATCH",
        "-dUseFastColor=true",
        Torv::format("-sDisplayHandle=16#%llx",
                     static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(m_pages.get())))};
    arguments.insert(arguments.end(), options.begin(), options.end());
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    GhostscriptLibrary::get().setArgEncoding(m_instance, GS_ARG_ENCODING_UTF8);
    const int code = GhostscriptLibrary::get().initWithArgs(m_instance, static_cast<int>(pointers.size()),
                                                            pointers.data());
    if (code < 0 && code != gs_error_Quit)
        fail(code);
}

int Ghostscript::run()
{
    // Read as a file, so that the job finds in it the data that follows its operators.
    int exitCode = 0;
    const int code =
        GhostscriptLibrary::get().runString(m_instance, "(%stdin) (r) file cvx exec", 0, &exitCode);
    return code == gs_error_Quit ? 0 : code;
}

JobFacts Ghostscript::analyze(BodyReader& reader, int tolerance)
{
    start();
    const PageSize media = documentMedia(reader);
    m_pages->begin(reader, tolerance);
    const int code = run();
    if (code < 0 && m_pages->facts().pageCount() == 0)
        fail(code);
    JobFacts facts = m_pages->facts();
    facts.suggestSize(media);
    return facts;
}

int Ghostscript::finish()
{
    void* instance = std::exchange(m_instance, nullptr);
    const int code = GhostscriptLibrary::get().exit(instance);
    GhostscriptLibrary::get().deleteInstance(instance);
    return code;
}

void Ghostscript::convert(BodyReader& reader, const std::vector<std::string>& options,
                          const std::string& outPath)
{
    std::vector<std::string> arguments = options;
    arguments.push_back(outputOption(outPath));
    open(arguments, folderOf(outPath));
    m_pages->begin(reader, 0);
    const int code = run();
    const int exitCode = finish();
    if (code < 0 || exitCode < 0)
        fail(code < 0 ? code : exitCode);
}

void Ghostscript::convertFile(const std::string& inPath, const std::vector<std::string>& options,
                              const std::string& outPath)
{
    std::vector<std::string> arguments = options;
    arguments.push_back(outputOption(outPath));
    arguments.push_back(inPath);
    open(arguments, folderOf(outPath));
    const int code = finish();
    if (code < 0)
        fail(code);
}

void Ghostscript::fail(int code) const
{
    const bool isMemory = code == gs_error_VMerror;
    const std::string& said = m_pages->said();
    const std::size_t end = said.find_first_of("\r\n");
    throw WorkerException(isMemory ? ErrorCode::Limit : ErrorCode::BadDocument,
                          "PostScript failed | code=" + std::to_string(code) +
                              " | error=" + said.substr(0, end));
}

} // namespace JobParser::Worker
