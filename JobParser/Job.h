#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "JobParser/Export.h"
#include "JobParser/IChunk.h"
#include "JobParser/JobInfo.h"

#include "Torv/Json/IJsonable.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

/// A job as an ordered list of chunks, with its record.
///
/// Chunks that refer to the job file stay bound to it: save and checkChunkSizes need a JobFile open on the
/// same data. One thread owns a job at a time; it may be handed on.
class JOBPARSER_EXPORT Job : public Torv::Json::IJsonable
{
public:
    Job();
    /// Makes a job from parsed metadata; see fillFrom.
    explicit Job(const Torv::Variant& metadata);
    /// Reads the metadata of the job at `path`, which stands at getMedataFile(path). Throws
    /// Torv::GenericException, with the cause in its message, if that fails in any way.
    explicit Job(const std::string& path);
    explicit Job(const char* path) : Job(std::string(path)) {}
    ~Job() override;

    // Each list operation sets `modified`. Indices are not tested: the caller keeps them within the list.
    void appendChunk(std::shared_ptr<IChunk> chunk);
    void appendChunks(const std::vector<std::shared_ptr<IChunk>>& newChunks);
    void insertChunkAt(int index, std::shared_ptr<IChunk> chunk);
    void replaceChunk(int index, std::shared_ptr<IChunk> chunk);
    void removeChunkAt(int index);
    void removeAllChunks();

    /// Writes all chunks in order; `modified` is false afterwards. What a chunk or the stream throws leaves
    /// `modified` as it was.
    void save(JobFile& file, Torv::IO::IStream& stream) const;
    /// How many bytes save writes.
    std::int64_t size() const;
    /// Logs the number of chunks and a line for each, at level 0.
    void dump(Torv::Log::ILog& log) const;
    /// Tests that each chunk writes as many bytes as it says; `modified` is false afterwards. Throws
    /// Torv::GenericException with the chunk's JSON if one does not. Reads the whole job once.
    void checkChunkSizes(JobFile& file) const;

    /// The metadata text: the record with fonts, and all chunks. Throws Torv::GenericException for a chunk
    /// whose class is not registered (see Library::init).
    std::string toJson() const override;
    /// Writes the same text to a stream, piece by piece, so that it never stands in memory as a whole. What
    /// toJson or the stream throws leaves the text unfinished.
    void writeMetadata(Torv::IO::IStream& stream) const;
    /// Takes record and chunks from parsed metadata; for an empty job. Throws
    /// Torv::VariantInvalidOperationException for a missing key or a value of the wrong kind,
    /// JobParserException for chunks that make no sense, Torv::NoFactoryException for an unknown class.
    void fillFrom(const Torv::Variant& metadata);

    /// Where the metadata of the job at `path` belongs: the path with ".meta.json" behind it, or the path
    /// itself if it ends so. (A path of nine bytes without the suffix comes back as it is, too.)
    static std::string getMedataFile(const std::string& path);

    // Rewriting, for a job that is parsed and not saved yet. The operations look at the chunk list alone,
    // never at the file. What they insert stands directly before the first `ENTER`; where there is none, they
    // insert nothing. Commands, names and values are compared in any case. Each sets `modified` if it changes
    // the list. Texts go in as they are: line ends and, unless it is said otherwise, quotation marks are the
    // caller's. Pointers to text are not null.

    /// Puts a UEL, `JOB NAME="name"` and `ENTER LANGUAGE=` in front of the job, and a UEL, `EOJ NAME="name"`
    /// and a UEL behind it; the record then has PJL and this language. Does nothing to a job that has PJL.
    void wrapIntoPjlJob(Pdl pdl, const std::string& name);

    /// Gives the first `JOB` command a parameter, in place of its old value if it has one; see
    /// ChunkPjlCmd::setParam. The list stays as it is, and so does `modified`.
    void setPjlJobParam(const std::string& name, const std::string& value);

    /// Inserts the command `cmd name=value`, or `cmd name="value"` if `quoted`, and removes those of the same
    /// name before `ENTER`; with `sameValueOnly` only those that have the same value, too, as it stands there
    /// with its quotation marks. Both texts end at a NUL. Without an `ENTER` the old ones go all the same.
    void insertPjlCmd(const char* cmd, const char* name, const std::string& value, bool sameValueOnly,
                      bool quoted);
    /// The same with a decimal number.
    void insertPjlCmd(const char* cmd, const char* name, int value, bool sameValueOnly, bool quoted);

    /// Inserts the four commands by which HP drivers ask for one finishing step, as in `"STAPLING"` and
    /// `"LEFT_1PT"`, quotation marks included, and removes the first group of that type before `ENTER`.
    ///
    /// Made for jobs with one group. Each further boundary behind a removed group, of whatever type, removes
    /// what stands at the positions of that group by then, as far as the list reaches.
    void insertHpPjlProcessingAction(const char* type, const char* option);

    /// Inserts text byte for byte, as one ChunkText. False if there is no `ENTER`.
    bool insertPjlCode(const std::string& code);

    /// Removes every `SET name=value`, wherever it stands. False if there was none.
    bool removePjlSetCmd(const char* name, const char* value);
    /// Removes the first `SET`, or all of them, whose parameter begins with `prefix`, wherever it stands. The
    /// prefix is compared exactly; an empty one fits every `SET`.
    void removePjlSetCmd(const char* prefix, bool all);

    /// Removes every PJL command and every UEL, but no inserted text. The record still says that the job has
    /// PJL.
    void removePjl();
    /// Removes every PRESCRIBE block.
    void removePrescribe();

    /// Makes `NAME="name"` the whole parameter of every `JOB` command; `EOJ` commands keep theirs.
    void setJobName(const std::string& name);

    JobInfo jobInfo;
    std::vector<std::shared_ptr<IChunk>> chunks;
    mutable bool modified = false; ///< The list changed since the last save or checkChunkSizes.
};

} // namespace JobParser
