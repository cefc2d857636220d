#include "JobParser/Library.h"

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

} // namespace

bool Library::m_inited = false;

void Library::init(const Options&)
{
    if (!m_inited)
        registerChunkClasses();
    m_inited = true;
}

} // namespace JobParser
