#include "JobParser/Library.h"

#include <filesystem>
#include <mutex>
#include <utility>

#include "JobParser/ExtJobProcessor.h"
#include "JobParser/languages/ChunkPclEsc.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/languages/ChunkPjlCmdBase64String.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/languages/ChunkPsComment.h"
#include "JobParser/model/ChunkFirstPageStart.h"
#include "JobParser/model/ChunkFormFeed.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/ChunkText.h"
#include "JobParser/model/ChunkUel.h"
#include "JobParser/model/Reflection.h"
#include "JobParser/pclxl/JobChunkPclXLAttribute.h"
#include "JobParser/pclxl/JobChunkPclXLAttributeValue.h"
#include "JobParser/pclxl/JobChunkPclXLEmbeddedData.h"
#include "JobParser/pclxl/JobChunkPclXLOperator.h"
#include "JobParser/pclxl/JobChunkPclXLRaw.h"
#include "JobParser/pclxl/JobChunkPclXLRawWithData.h"
#include "JobParser/pclxl/JobChunkPclXLWatermark.h"
#include "JobParser/xps/ChunkXps.h"
#include "pdf/ChunkPdf.h"
#include "pdf/ChunkPdfDocumentInfo.h"

#include "Torv/GenericException.h"
#include "Torv/Json/Json.h"

namespace JobParser
{
namespace
{

void registerChunkClasses()
{
    Reflection::registerChunkClass<ChunkUel>();
    Reflection::registerChunkClass<ChunkFormFeed>();
    Reflection::registerChunkClass<ChunkFirstPageStart>();
    Reflection::registerChunkClass<ChunkRawData>();
    Reflection::registerChunkClass<ChunkPclEsc>();
    Reflection::registerChunkClass<ChunkText>();
    Reflection::registerChunkClass<ChunkXps>();
    Reflection::registerChunkClass<ChunkPjlCmd>();
    Reflection::registerChunkClass<ChunkPjlCmdBase64String>();
    Reflection::registerChunkClass<ChunkPrescribe>();
    Reflection::registerChunkClass<ChunkPsComment>();
    Reflection::registerChunkClass<JobChunkPclXLRaw>();
    Reflection::registerChunkClass<JobChunkPclXLAttributeValue>();
    Reflection::registerChunkClass<JobChunkPclXLAttribute>();
    Reflection::registerChunkClass<JobChunkPclXLOperator>();
    Reflection::registerChunkClass<JobChunkPclXLWatermark>();
    Reflection::registerChunkClass<JobChunkPclXLEmbeddedData>();
    Reflection::registerChunkClass<JobChunkPclXLRawWithData>();
    Reflection::registerChunkClass<ChunkPdfDocumentInfo>();
    Reflection::registerChunkClass<ChunkPdf>();
}

std::string argumentsOf(const Library::Options& options)
{
    if (!options.decryptor)
        return options.arguments;
    return options.arguments + " e " + Torv::Json::_encodeString(options.decryptor->toJson());
}

ExtJobProcessor::Options poolOptionsOf(const Library::Options& options)
{
    ExtJobProcessor::Options pool;
    pool.processCount = options.processCount;
    pool.executable = (std::filesystem::path(options.directory) / options.executable).string();
    pool.arguments = argumentsOf(options);
    pool.poolLimit = options.poolLimit;
    pool.stopCommand = "{\"command\":\"exit\"}\n";
    pool.poolDeadline = options.poolDeadline;
    pool.grayscaleTolerance = options.grayscaleTolerance;
    return pool;
}

std::mutex initMutex;      ///< Held during a whole initialisation.
std::mutex processorMutex; ///< Guards the pointer alone, so that nobody waits for an initialisation.

} // namespace

bool Library::m_inited = false;
std::shared_ptr<ExtJobProcessor> Library::m_extJobProcessor;

void Library::init(const Options& options)
{
    const std::lock_guard initialising(initMutex);
    if (!m_inited)
        registerChunkClasses();
    m_inited = true;
    auto processor = std::make_shared<ExtJobProcessor>(poolOptionsOf(options));
    {
        const std::lock_guard lock(processorMutex);
        m_extJobProcessor.swap(processor);
    }
}

ExtJobProcessor& Library::extJobProcessor()
{
    const std::shared_ptr<ExtJobProcessor> processor = currentExtJobProcessor();
    if (processor == nullptr)
        throw Torv::GenericException("External Parser is not initialized yet. Call Library::init first!");
    return *processor;
}

std::shared_ptr<ExtJobProcessor> Library::currentExtJobProcessor()
{
    const std::lock_guard lock(processorMutex);
    return m_extJobProcessor;
}

} // namespace JobParser
