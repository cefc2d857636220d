#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "JobParser/Export.h"
#include "JobParser/model/Finishing.h"
#include "JobParser/model/OriginalBrand.h"
#include "JobParser/model/Pdl.h"
#include "JobParser/paper/Paper.h"

#include "Torv/Json/Object.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

/// What is known of a job: its language, pages, paper and finishing.
///
/// Each group of fields has a bit in `m_flags` that says whether it is known; the defaults do not count as
/// known. Parsers report through the setters, which keep the rules between sources; the driver merges the
/// records of several sources with combineWith.
///
/// A plain value without a lock.
class JOBPARSER_EXPORT JobInfo
{
public:
    enum Flag : std::uint32_t {
        FlagPageCount = 2,
        FlagCopies = 4,
        FlagPaper = 8,
        FlagDuplex = 16,
        FlagPdl = 64,
        FlagForceMono = 128,
        FlagStapling = 256,
        FlagPunching = 512,
        FlagEcoMode = 1024,
        FlagOrientation = 2048,
        FlagPagesPerSheet = 4096,
        FlagOriginalBrand = 8192,
        AllFlags = 65535,
    };

    /// The version of the JSON form.
    enum Version : std::int32_t { CurrentVersion = 1 };

    JobInfo() = default;

    /// Reads what json wrote. A key that is absent or null stays unknown; values are stored as they are,
    /// without the rules of the setters. A value that is no object gives the defaults. Throws
    /// Torv::VariantInvalidOperationException for a value of the wrong kind.
    explicit JobInfo(const Torv::Variant& variant);

    /// Makes the groups of the mask unknown, with their default values. The mask AllFlags also clears
    /// `fonts`, `pjl` and `kfeedShortEdge`, which no other mask touches.
    void reset(int mask);

    /// The groups of the mask that are known.
    int flags(int mask) const { return static_cast<int>(m_flags) & mask; }

    void setPdl(Pdl value);
    void setPaper(Paper value);
    void setDuplex(Duplex value);
    void setOrientation(Orientation value);
    void setEcoMode(bool value);
    void setPagesPerSheet(int value);
    void setOriginalBrand(Zem::Printer::OriginalBrand value);

    /// Clamps to 1 to 10000.
    void setCopies(int value);
    /// The same, but keeps a greater value that is already known.
    void setCopiesMax(int value);

    /// With forceMono all pages count as mono.
    void setPageCount(int mono, int gray, int color);
    void incMonoCount();
    void incGrayCount();
    void incColorCount();
    /// True folds the pages counted so far into the mono count, for good.
    void setForceMono(bool value);

    /// Without `force` a known position stays: only 0 and 100, which say nothing definite, are replaced.
    void setStapling(Staple value, bool force);
    void setPunching(Punch value, bool force);

    /// Landscape if the page is wider than it is high; nothing if one of the two is 0.
    void setOrientation(int width, int height);

    void setPjl(bool value) { pjl = value; }
    void addFonts(const std::set<std::string>& names);

    /// Takes over what `other` knows of the groups in the mask. The greater number of copies stands, a duplex
    /// of 0 displaces none, a forceMono of true wins; `pjl`, `kfeedShortEdge` and `fonts` add up whatever the
    /// mask.
    void combineWith(const JobInfo& other, int mask);

    /// The record without fonts; an unknown group is null.
    Torv::Json::Object json() const;
    /// The text of json.
    std::string toJson() const;
    /// The same with "fonts", if there are any.
    std::string toJsonFull() const;
    /// One line for the log.
    std::string toString() const;

    bool kfeedShortEdge = false; ///< Feed on the short edge; has no bit.
    std::uint32_t m_flags = 0;   ///< Which groups are known.
    Pdl pdl = Pdl::Unknown;
    std::int32_t copies = 1;
    Duplex duplex = Duplex::OneSided;
    std::int32_t monoCount = 0;  ///< Pages in black and white.
    std::int32_t grayCount = 0;  ///< Pages in shades of gray.
    std::int32_t colorCount = 0; ///< Pages in colour.
    Paper paper = PaperOther;
    bool pjl = false; ///< The job has PJL; has no bit.
    bool forceMono = false;
    bool ecoMode = false;
    Staple stapling = Staple::None;
    Punch punching = Punch::None;
    Orientation orientation = Orientation::Portrait;
    std::int32_t pagesPerSheet = 1;
    Zem::Printer::OriginalBrand originalBrand = Zem::Printer::OriginalBrand::None;
    std::set<std::string> fonts; ///< Names of fonts; has no bit.

private:
    void foldIntoMono();
};

} // namespace JobParser
