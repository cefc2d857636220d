#pragma once

#include <memory>
#include <mupdf/fitz.h>
#include <utility>

namespace JobParser::Worker
{

class StandardFonts;

/// What MuPDF works in. Colours are converted without profiles: black of any colour space stays black, and
/// equal channels stay equal.
class FitzContext
{
public:
    /// Throws WorkerException if there is no memory for it.
    FitzContext();
    ~FitzContext();
    FitzContext(const FitzContext&) = delete;
    FitzContext& operator=(const FitzContext&) = delete;

    fz_context* get() const { return m_context; }

private:
    fz_context* m_context;
    std::unique_ptr<StandardFonts> m_fonts;
};

namespace Fitz
{

/// Throws WorkerException for the error that MuPDF caught last.
[[noreturn]] void throwCaught(fz_context* context);

/// Does work with MuPDF and throws WorkerException if MuPDF reports an error. MuPDF leaves the work by a
/// jump, so that it must hold nothing that needs a destructor, and must not throw by itself.
template <typename Work> void protect(fz_context* context, Work&& work)
{
    bool isDone = false;
    fz_var(isDone);
    fz_try(context)
    {
        work();
        isDone = true;
    }
    fz_catch(context)
    {
        // An exception must not pass MuPDF's own handling of this block.
    }
    if (!isDone)
        throwCaught(context);
}

} // namespace Fitz

/// Owns an object of MuPDF.
template <typename T, void (*drop)(fz_context*, T*)> class FitzHandle
{
public:
    FitzHandle(fz_context* context, T* object) : m_context(context), m_object(object) {}
    ~FitzHandle() { drop(m_context, m_object); }
    FitzHandle(FitzHandle&& other) noexcept
        : m_context(other.m_context), m_object(std::exchange(other.m_object, nullptr))
    {
    }
    FitzHandle& operator=(FitzHandle&&) = delete;

    T* get() const { return m_object; }

private:
    fz_context* m_context;
    T* m_object;
};

using FitzDocument = FitzHandle<fz_document, fz_drop_document>;
using FitzPage = FitzHandle<fz_page, fz_drop_page>;
using FitzDevice = FitzHandle<fz_device, fz_drop_device>;
using FitzPixmap = FitzHandle<fz_pixmap, fz_drop_pixmap>;

} // namespace JobParser::Worker
