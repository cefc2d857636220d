#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unistd.h>

/// A file among the temporary files that may have holes, so that it can be larger than what is written. It
/// goes when the object does.
class SparseFile
{
public:
    explicit SparseFile(std::string_view bytes = {})
        : m_path((std::filesystem::temp_directory_path() / "job-XXXXXX").string()),
          m_descriptor(mkstemp(m_path.data()))
    {
        if (m_descriptor < 0)
            throw std::runtime_error("No temporary file");
        writeAt(0, bytes);
    }
    ~SparseFile()
    {
        close(m_descriptor);
        unlink(m_path.c_str());
    }
    SparseFile(const SparseFile&) = delete;
    SparseFile& operator=(const SparseFile&) = delete;

    const std::string& path() const { return m_path; }

    /// What is added reads as zeros and takes no room on the disk.
    void resize(std::int64_t size)
    {
        if (ftruncate(m_descriptor, size) != 0)
            throw std::runtime_error("The temporary file cannot be resized");
    }

    void writeAt(std::int64_t offset, std::string_view bytes)
    {
        while (!bytes.empty()) {
            const ssize_t written = pwrite(m_descriptor, bytes.data(), bytes.size(), offset);
            if (written <= 0)
                throw std::runtime_error("The temporary file cannot be written");
            offset += written;
            bytes.remove_prefix(static_cast<std::size_t>(written));
        }
    }

private:
    std::string m_path;
    int m_descriptor;
};
