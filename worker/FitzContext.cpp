#include "worker/FitzContext.h"

#include "worker/StandardFonts.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

// Fonts and pictures that pages share are kept up to this many bytes.
constexpr std::size_t storeSize = std::size_t{64} << 20;

void ignoreMessage(void*, const char*) {}

} // namespace

FitzContext::FitzContext()
    : m_context(fz_new_context(nullptr, nullptr, storeSize)),
      m_fonts(std::make_unique<StandardFonts>(m_context))
{
    if (m_context == nullptr)
        throw WorkerException(ErrorCode::Limit, "There is no memory for MuPDF");
    fz_set_error_callback(m_context, ignoreMessage, nullptr);
    fz_set_warning_callback(m_context, ignoreMessage, nullptr);
    fz_disable_icc(m_context);
    Fitz::protect(m_context, [this] {
        fz_register_document_handlers(m_context);
        m_fonts->open();
    });
}

FitzContext::~FitzContext()
{
    m_fonts.reset();
    fz_drop_context(m_context);
}

namespace Fitz
{

void throwCaught(fz_context* context)
{
    const bool isMemory = fz_caught(context) == FZ_ERROR_MEMORY;
    throw WorkerException(isMemory ? ErrorCode::Limit : ErrorCode::BadDocument, fz_caught_message(context));
}

} // namespace Fitz

} // namespace JobParser::Worker
