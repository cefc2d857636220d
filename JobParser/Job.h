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
    /// Takes record and chunks from parsed metadata; for an empty job. Throws
    /// Torv::VariantInvalidOperationException for a missing key or a value of the wrong kind,
    /// JobParserException for chunks that make no sense, Torv::NoFactoryException for an unknown class.
    void fillFrom(const Torv::Variant& metadata);

    /// Where the metadata of the job at `path` belongs: the path with ".meta.json" behind it, or the path
    /// itself if it ends so. (A path of nine bytes without the suffix comes back as it is, too.)
    static std::string getMedataFile(const std::string& path);

    JobInfo jobInfo;
    std::vector<std::shared_ptr<IChunk>> chunks;
    mutable bool modified = false; ///< The list changed since the last save or checkChunkSizes.
};

} // namespace JobParser
