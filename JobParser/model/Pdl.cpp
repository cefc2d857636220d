#include "JobParser/model/Pdl.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Torv/Text.h"

namespace JobParser::PdlUtils
{
namespace
{

struct Language {
    std::string displayName;
    std::string enterLang;
    std::string_view mime;
};

// Indexed by the number of the language. Built at the first question, not when the library is loaded.
const std::array<Language, 10>& languages()
{
    static const std::array<Language, 10> table{{
        {"", "", ""},
        {"PCL 5", "PCL", "application/vnd.hp-PCL"},
        {"PostScript", "POSTSCRIPT", "application/postscript"},
        {"ESC/P", "ESCP", ""},
        {"Prescribe", "PRESCRIBE", ""},
        {"PCL 6", "PCLXL", "application/vnd.hp-PCLXL"},
        {"PDF", "PDF", "application/pdf"},
        {"JPEG", "JPEG", "image/jpeg"},
        {"XPS", "XPS", "application/vnd.xpsdocument"},
        {"URF", "URF", "image/urf"},
    }};
    return table;
}

constexpr std::array<std::string_view, 6> pdlExtensions{"prn", "pcl", "ps", "eps", "pdf", "txt"};

const Language& language(Pdl pdl)
{
    const auto index = static_cast<std::size_t>(static_cast<std::uint32_t>(pdl));
    return index < languages().size() ? languages()[index] : languages()[0];
}

template <typename Column> Pdl findFrom(std::size_t first, const std::string& text, Column column)
{
    for (std::size_t index = first; index < languages().size(); ++index) {
        if (Torv::iequals(languages()[index].*column, text))
            return static_cast<Pdl>(index);
    }
    return Pdl::Unknown;
}

} // namespace

Pdl fromPjlEnterLang(const std::string& word)
{
    return findFrom(1, word, &Language::enterLang);
}

Pdl fromMime(const std::string& mime)
{
    return findFrom(0, mime, &Language::mime);
}

const std::string& toPjlEnterLang(Pdl pdl)
{
    return language(pdl).enterLang;
}

const std::string& displayName(Pdl pdl)
{
    return language(pdl).displayName;
}

Pdl fromExtension(const std::string& extension)
{
    return Torv::iequals(extension, "pdf") ? Pdl::Pdf : Pdl::Unknown;
}

bool isPdlExtension(const std::string& extension)
{
    return std::ranges::find(pdlExtensions, Torv::toLower(extension)) != pdlExtensions.end();
}

} // namespace JobParser::PdlUtils
