#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "worker/BodyFinder.h"
#include "worker/FitzContext.h"
#include "worker/JobAnalyzer.h"
#include "worker/Request.h"

namespace JobParser::Worker
{

class BodyReader;
class PageSource;

/// Makes another format of a job. What is not PDF or XPS becomes PDF first.
class Converter
{
public:
    /// Files are written below `folder`, whose path ends with a slash. The context outlives the converter.
    Converter(fz_context* context, std::string folder) : m_context(context), m_folder(std::move(folder)) {}

    /// Writes what OutputFolder publishes. Gives the number of its files, 0 for the one without a number.
    /// Throws WorkerException.
    int convert(const ConvertRequest& request, const Encryption& encryption);

private:
    int write(PageSource& pages, const ConvertRequest& request);
    std::string outputPath() const;

    fz_context* m_context;
    std::string m_folder;
};

} // namespace JobParser::Worker
