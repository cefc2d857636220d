#pragma once

#include <array>
#include <functional>

#include "JobParser/JobInfo.h"

namespace JobParser
{

/// Every group known, none with its default value.
inline JobInfo fullRecord()
{
    JobInfo info;
    info.setPdl(Pdl::PclXl);
    info.setPaper(PaperA4);
    info.setPageCount(1, 2, 3);
    info.setDuplex(Duplex::ShortEdge);
    info.setCopies(4);
    info.forceMono = true;
    info.m_flags |= JobInfo::FlagForceMono;
    info.setStapling(Staple::Two, true);
    info.setPunching(Punch::FourHoles, true);
    info.setOrientation(Orientation::ReverseLandscape);
    info.setEcoMode(true);
    info.setPagesPerSheet(6);
    info.setOriginalBrand(Zem::Printer::OriginalBrand::Oki);
    info.setPjl(true);
    info.kfeedShortEdge = true;
    info.addFonts({"Courier", "Arial"});
    return info;
}

/// What fullRecord and a record of nothing are written as; the end of fullJson is left open.
inline constexpr const char* fullJson =
    R"({"version":1,"pjl":true,"pdl":5,"paper":5,"monoCount":1,"grayCount":2,"colorCount":3,"duplex":2,)"
    R"("copies":4,"forceMono":true,"stapling":3,"punching":3,"orientation":3,"ecoMode":true,"ecoMode":true,)"
    R"("pagesPerSheet":6,"originalBrand":9,"kfeedShortEdge":true)";

inline constexpr const char* defaultJson =
    R"({"version":1,"pjl":false,"pdl":null,"paper":null,"monoCount":null,"grayCount":null,"colorCount":null,)"
    R"("duplex":null,"copies":null,"forceMono":null,"stapling":null,"punching":null,"orientation":null,)"
    R"("ecoMode":null,"ecoMode":null,"pagesPerSheet":null,"originalBrand":null})";

/// A group of the record, its bit, and how it is written behind its setter.
struct Group {
    const char* name;
    int bit;
    std::function<void(JobInfo&)> set;
    const char* json;
};

/// What each group's setter leaves in the record, the other groups being unknown.
inline const std::array<Group, 12> groups{{
    {"counts", 2, [](JobInfo& info) { info.setPageCount(1, 2, 3); },
     R"("monoCount":1,"grayCount":2,"colorCount":3,)"},
    {"copies", 4, [](JobInfo& info) { info.setCopies(2); }, R"("copies":2,)"},
    {"paper", 8, [](JobInfo& info) { info.setPaper(PaperStatement); }, R"("paper":21,)"},
    {"duplex", 16, [](JobInfo& info) { info.setDuplex(Duplex::LongEdge); }, R"("duplex":1,)"},
    {"pdl", 64, [](JobInfo& info) { info.setPdl(Pdl::Urf); }, R"("pdl":9,)"},
    {"forceMono", 128, [](JobInfo& info) { info.setForceMono(true); }, R"("forceMono":true,)"},
    {"stapling", 256, [](JobInfo& info) { info.setStapling(Staple::LeftTop, false); }, R"("stapling":1,)"},
    {"punching", 512, [](JobInfo& info) { info.setPunching(Punch::TwoHoles, false); }, R"("punching":1,)"},
    {"ecoMode", 1024, [](JobInfo& info) { info.setEcoMode(true); }, R"("ecoMode":true,"ecoMode":true,)"},
    {"orientation", 2048, [](JobInfo& info) { info.setOrientation(Orientation::Landscape); },
     R"("orientation":1,)"},
    {"pagesPerSheet", 4096, [](JobInfo& info) { info.setPagesPerSheet(4); }, R"("pagesPerSheet":4,)"},
    {"originalBrand", 8192, [](JobInfo& info) { info.setOriginalBrand(Zem::Printer::OriginalBrand::Hp); },
     R"("originalBrand":2})"},
}};

/// Pages in mono, gray and colour.
using Counts = std::array<int, 3>;

inline Counts counts(const JobInfo& info)
{
    return {info.monoCount, info.grayCount, info.colorCount};
}

} // namespace JobParser
