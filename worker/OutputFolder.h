#pragma once

#include <string>

#include "worker/Descriptor.h"

namespace JobParser::Worker
{

/// A folder beside an output file, where it is written until it is whole; it goes with the object. So nothing
/// half-written ever stands at the path.
class OutputFolder
{
public:
    /// Throws WorkerException if nothing can be written beside `outPath`, or if what stands there is no
    /// regular file, such as a device.
    explicit OutputFolder(const std::string& outPath);
    ~OutputFolder();
    OutputFolder(const OutputFolder&) = delete;
    OutputFolder& operator=(const OutputFolder&) = delete;

    /// With a slash at its end.
    const std::string& path() const { return m_path; }

    /// Moves the file `output` to `outPath`, or the files `output-1` to `output-COUNT` to `outPath` with the
    /// number in front of its suffix if `count` is not 0. All or none: throws WorkerException if one cannot
    /// be moved.
    void publish(const std::string& outPath, int count) const;

    /// The name of what is published.
    static constexpr const char* outputName = "output";

private:
    std::string m_path;
    Descriptor m_lock; ///< Tells others that the folder is in use.
};

/// Removes folders beside `outPath` that workers left behind which were killed.
void removeRemains(const std::string& outPath);

/// The path with `-NUMBER` in front of its suffix.
std::string numberedPath(const std::string& path, int number);

} // namespace JobParser::Worker
