#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unistd.h>

#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/model/BaseParser.h"
#include "JobParser/paper/PaperSizeManager.h"
#include "tests/support/JobBytes.h"

/// A file with the given bytes among the temporary files, which goes when the object does.
class TemporaryFile
{
public:
    explicit TemporaryFile(std::string_view bytes)
        : m_path((std::filesystem::temp_directory_path() / "job-XXXXXX").string())
    {
        const int descriptor = mkstemp(m_path.data());
        std::FILE* stream = descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
        if (stream == nullptr)
            throw std::runtime_error("Cannot create " + m_path);
        const std::size_t written = std::fwrite(bytes.data(), 1, bytes.size(), stream);
        if (std::fclose(stream) != 0 || written != bytes.size()) {
            std::remove(m_path.c_str());
            throw std::runtime_error("Cannot write " + m_path);
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { std::remove(m_path.c_str()); }

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

/// A job on disk, opened at its first byte, with all that the parsers share.
class OpenJob
{
    TemporaryFile m_file;

public:
    explicit OpenJob(std::string_view bytes) : m_file(bytes), parent(job, file, papers)
    {
        file.open(m_file.path());
    }
    explicit OpenJob(const JobBytes& bytes) : OpenJob(std::string_view(bytes.str())) {}

    JobParser::Job job;
    JobParser::JobFile file;
    JobParser::PaperSizeManager papers;
    JobParser::BaseParser parent;
};
