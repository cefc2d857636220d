#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>

#include "JobParser/Export.h"
#include "JobParser/paper/Paper.h"

namespace Torv
{
class Regex;
}

namespace Torv::Data
{
class IniFile;
}

namespace JobParser
{

/// Resolves the names and sizes that jobs give for their paper.
///
/// A name is looked up in a table that begins with the names that drivers use. A size is a text, either in
/// tenths of a millimetre, as in `2100x2970`, or the corners of a box in points, as in
/// `PAPERBOX: 0 0 595.28 841.89`. It is compared with the sizes that were added, then recognised by the ISO
/// and JIS series and the sizes of North America.
///
/// Any thread may call anything at any time. An instance may be built while the library loads: the default
/// names and the regular expressions are made at their first use.
class JOBPARSER_EXPORT PaperSizeManager
{
public:
    /// A sheet in millimetres.
    struct Size {
        float width = 0;
        float height = 0;
        Paper paper = PaperUnknown;
    };

    PaperSizeManager();
    ~PaperSizeManager();
    PaperSizeManager(const PaperSizeManager&) = delete;
    PaperSizeManager& operator=(const PaperSizeManager&) = delete;

    /// Adds the default names. A new instance has them already; this brings them back after clear().
    void addDefaultPapers();

    /// Forgets all names, the default ones too. Sizes stay.
    void clear();

    /// Adds a name, in any case, for a paper. Of a name that is added twice the last paper counts. If the
    /// name is a text that parseSize reads, it also adds the size; of a size that is added twice the first
    /// counts.
    void add(const std::string& name, Paper paper);

    /// Reads a size text. The shorter side becomes the width, and the paper is PaperOther.
    ///
    /// Throws std::invalid_argument if the text is no size, and std::invalid_argument or std::out_of_range if
    /// one of its numbers does not convert.
    Size parseSize(const std::string& text) const;

    /// The paper of a name, in any case. An unknown name is read as a size if `trySize` is set. PaperOther if
    /// nothing fits.
    Paper paperById(const std::string& name, bool trySize) const;

    /// The paper of a size text: that of the smallest added size within the tolerance, otherwise that of the
    /// name by paperName, otherwise PaperOther. Throws as parseSize does.
    Paper paperBySize(const std::string& text) const;

    /// The paper of the smallest added size within the tolerance, width with width and height with height.
    /// PaperUnknown if there is none.
    Paper paperByCustomSize(Size size) const;

    /// Recognises a size in millimetres, either side first, by geometry alone: gives a name in capitals, as
    /// in `A4`, `JISB5` or `LETTER`, or an empty text.
    std::string paperName(float width, float height) const;

    /// Takes the tolerance and the aliases of every present name from the section `JobParser`, and leaves
    /// that section chosen. A name that an alias brings in is not asked for aliases of its own.
    void loadConfig(Torv::Data::IniFile& ini);

private:
    /// Ascending by width, then by height. No NaN gets in: the texts that parseSize reads cannot express one.
    struct SmallerFirst {
        bool operator()(const Size& a, const Size& b) const
        {
            return b.width > a.width || (a.width == b.width && a.height < b.height);
        }
    };

    /// A regular expression, case ignored, that is compiled when it is first asked for.
    class LazyRegex
    {
    public:
        explicit LazyRegex(const char* pattern);
        ~LazyRegex();
        const Torv::Regex& get() const;

    private:
        const char* m_pattern;
        mutable std::once_flag m_once;
        mutable std::unique_ptr<const Torv::Regex> m_regex;
    };

    using Papers = std::unordered_map<std::string, Paper>;

    std::optional<Size> tryParseSize(const std::string& text) const;

    // All of these want m_mutex held.
    void storeDefaultPapers() const;
    Papers& papers() const;
    std::optional<Paper> findName(const std::string& upperName) const;
    const Size* findSize(const Size& wanted) const;
    Paper resolveSize(const Size& size) const;
    void remember(const std::string& text, Paper paper) const;

    float m_tolerance = 2.0F; ///< Millimetres.
    mutable Papers m_papers;  ///< By name in capitals; go through papers().
    std::set<Size, SmallerFirst> m_sizes;
    LazyRegex m_paperBoxRegex;
    LazyRegex m_sizeRegex;
    mutable std::mutex m_mutex; ///< Guards all other members but the regular expressions.
    mutable Papers m_sizeCache; ///< Answers of paperBySize by the exact text.
    mutable bool m_defaultsPending = true;
};

} // namespace JobParser
