#pragma once

#include <optional>
#include <string>
#include <vector>

namespace JobParser::Tool
{

/// Finds the files that paths name: the files themselves, and every regular file below a folder.
///
/// In a folder the names come in the order of their bytes, files and folders mixed. Links to folders are not
/// followed there, and what is neither a file nor a folder is passed over. A path that was given is taken as
/// it is, a link to a folder too.
class FileFinder
{
public:
    struct Found {
        std::string path;
        std::string error; ///< Why it cannot be read, if it is a folder; otherwise empty.
    };

    explicit FileFinder(const std::vector<std::string>& paths);

    /// The next file, or a folder that cannot be read. Nothing at the end.
    std::optional<Found> next();

private:
    enum class Kind { File, Folder };
    struct Entry {
        std::string path;
        Kind kind;
    };

    static std::vector<Entry> entriesOf(const std::string& folder);

    std::vector<Entry> m_pending; ///< What comes next stands last.
};

} // namespace JobParser::Tool
