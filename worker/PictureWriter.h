#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace JobParser::Worker
{

/// Pixels of one byte (gray) or three bytes (red, green, blue), row by row without gaps. Refers to them.
struct Picture {
    const std::uint8_t* pixels = nullptr;
    int width = 0;
    int height = 0;
    int components = 3;
    int dpi = 0;
};

/// Writes a picture as JPEG. Throws WorkerException if that fails.
void writeJpeg(const Picture& picture, const std::string& path);

/// Writes a TIFF of several pages. Nothing is whole before close.
class TiffWriter
{
public:
    /// Throws WorkerException if the file cannot be written.
    explicit TiffWriter(const std::string& path);
    ~TiffWriter();
    TiffWriter(const TiffWriter&) = delete;
    TiffWriter& operator=(const TiffWriter&) = delete;

    /// Both throw WorkerException if that fails.
    void add(const Picture& page);
    void close();

private:
    void* m_file = nullptr;
};

} // namespace JobParser::Worker
