#pragma once

#include <cstdint>
#include <string>
#include <tuple>
#include <unordered_map>

#include "JobParser/Export.h"
#include "JobParser/paper/Paper.h"

namespace JobParser
{

/// The fixed knowledge about each paper: its text and its nominal size. Any thread may use it at any time.
class JOBPARSER_EXPORT PaperUtils
{
public:
    PaperUtils() = delete;

    /// Builds the tables now instead of at the first question. Later calls do nothing.
    static void init();

    /// The paper's text, as in `A4`; a number that is no paper, or PaperUnknown, gives the number and a
    /// question mark.
    static std::string formatPaper(Paper paper);

    /// Width and height in whole millimetres, (0, 0) for PaperOther and for a number that is no paper.
    static std::tuple<std::uint32_t, std::uint32_t> getPaperSizes(Paper paper);

private:
    struct Tables {
        std::unordered_map<Paper, std::string> m_paper2text;
        std::unordered_map<Paper, std::tuple<std::uint32_t, std::uint32_t>> m_paperSizes;
    };

    static const Tables& tables();
};

} // namespace JobParser
