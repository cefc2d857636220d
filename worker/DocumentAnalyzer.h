#pragma once

#include "JobParser/model/Pdl.h"
#include "worker/FitzContext.h"
#include "worker/JobFacts.h"

namespace JobParser::Worker
{

class BodyReader;

/// Learns what the pages of PDF and XPS documents are, by MuPDF.
class DocumentAnalyzer
{
public:
    /// The context outlives the analyzer. For the tolerance see classOfRgb.
    DocumentAnalyzer(fz_context* context, int tolerance) : m_context(context), m_tolerance(tolerance) {}

    /// Throws WorkerException if the document has no page that can be read.
    JobFacts analyze(BodyReader& reader, Pdl pdl);

private:
    PageClass classOfPage(fz_page* page, fz_rect box);
    PageClass classOfPixels(fz_page* page, fz_rect box);
    void runPage(fz_page* page, fz_device* device, fz_matrix matrix, fz_cookie& cookie);

    fz_context* m_context;
    int m_tolerance;
};

/// Opens the document in a body, whose reader outlives it. Throws WorkerException if it is malformed or wants
/// a password.
FitzDocument openDocument(fz_context* context, BodyReader& reader, Pdl pdl);

/// How many pages a document has, and one of them. Throw WorkerException.
int countPages(fz_context* context, const FitzDocument& document);
FitzPage loadPage(fz_context* context, const FitzDocument& document, int index);

} // namespace JobParser::Worker
