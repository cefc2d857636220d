#include "tools/Conversion.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <unistd.h>

#include "JobParser/JobFile.h"
#include "JobParser/Library.h"

#include "Torv/GenericException.h"
#include "Torv/IO/OutputFile.h"
#include "Torv/SystemError.h"

namespace JobParser::Tool
{
namespace
{

using Torv::IO::OutputFile;

constexpr auto writtenStraight = OutputFile::StandardOutput::IsWrittenStraight;

/// A folder for temporary files, which goes with the object.
class TemporaryFolder
{
public:
    TemporaryFolder() : m_path((std::filesystem::temp_directory_path() / "jobparser-XXXXXX").string())
    {
        if (::mkdtemp(m_path.data()) == nullptr)
            throw Torv::GenericException("Cannot make a folder for temporary files | path=" + m_path +
                                         " | error=" + Torv::systemError(errno));
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::string path(const char* name) const { return m_path + '/' + name; }

private:
    std::string m_path;
};

} // namespace

void convert(ConvertParams params)
{
    const std::string out = params.outPath;
    if (!OutputFile::isStraight(out, writtenStraight)) {
        Library::extJobProcessor().convert(params);
        return;
    }
    OutputFile output(out, writtenStraight);
    const TemporaryFolder folder;
    params.outPath = folder.path("output");
    Library::extJobProcessor().convert(params);
    if (!std::filesystem::exists(params.outPath))
        throw Torv::GenericException("Several files cannot be written there | path=" + out);
    JobFile converted;
    converted.open(params.outPath);
    converted.copyToFile(output.stream(), 0, converted.m_realDataSize);
    output.commit();
}

} // namespace JobParser::Tool
