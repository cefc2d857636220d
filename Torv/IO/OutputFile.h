#pragma once

#include <optional>
#include <string>

#include "Torv/IO/FileStream.h"

namespace Torv::IO
{

/// A file that appears at its path only when it is whole; until then the old one stays and can be read.
///
/// It is written without a name, so that nothing stays of a process that is killed, then gets another name in
/// the same folder and is renamed. Where the file system has no files without a name it has that name from
/// the start. What stands at the path and is no regular file, such as a device or a pipe, is written
/// straight. A link stays, and the file that it names is replaced. A replaced file passes on its permissions.
class OutputFile
{
public:
    /// What happens to a regular file that standard output writes to already. A program writes it straight,
    /// behind what stands there. In a library the descriptor may belong to anything.
    enum class StandardOutput { IsReplaced, IsWrittenStraight };

    /// Whether an OutputFile for this path would be written straight.
    static bool isStraight(const std::string& path, StandardOutput standardOutput);

    /// Throws GenericException, with the path and the system's reason, if nothing can be written there.
    explicit OutputFile(const std::string& path, StandardOutput standardOutput = StandardOutput::IsReplaced);
    /// Removes what was written, unless it was committed or went straight to a device or a pipe.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// For writing until commit.
    IStream& stream() { return *m_stream; }

    /// Hands over to the system what was written so far. Throws GenericException if a byte got lost.
    void flush() { m_stream->flush(); }

    /// Puts the file in its place, to be called once. Throws GenericException if a byte got lost.
    void commit();

private:
    [[noreturn]] void fail(int error) const;
    void openTemporary(unsigned mode, bool replaces);
    bool openUnnamed(unsigned mode);
    void openNamed(unsigned mode);
    void nameUnnamed();
    void closeDescriptor();

    std::string m_path;      ///< With links followed.
    std::string m_temporary; ///< Empty as long as nothing has that name.
    bool m_isUnnamed = false;
    int m_descriptor = -1;
    std::optional<FileStream> m_stream;
};

} // namespace Torv::IO
