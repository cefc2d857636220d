#include "worker/GlyphNames.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace JobParser::Worker
{
namespace
{

struct Glyph {
    std::string name;
    FT_UInt index;
};

using Table = std::vector<Glyph>;

// FreeType calls this when the face goes; that it stands there tells that the face has a table.
void dropTable(void* object)
{
    delete static_cast<Table*>(static_cast<FT_Face>(object)->generic.data);
}

FT_UInt find(const Table& table, std::string_view name)
{
    const auto found = std::ranges::lower_bound(table, name, {}, &Glyph::name);
    return found != table.end() && found->name == name ? found->index : 0;
}

} // namespace

void sortGlyphNames(FT_Face face)
{
    // What is longer has no table, since FreeType would tell it shortened.
    constexpr std::size_t longestName = 127;
    if (!FT_HAS_GLYPH_NAMES(face) || face->generic.data != nullptr || face->generic.finalizer != nullptr)
        return;
    auto table = std::make_unique<Table>();
    for (FT_Long i = 0; i < face->num_glyphs; ++i) {
        const auto index = static_cast<FT_UInt>(i);
        std::array<char, longestName + 2> name{};
        if (FT_Get_Glyph_Name(face, index, name.data(), name.size()) != 0 || name[longestName] != '\0')
            return;
        table->push_back({name.data(), index});
    }
    // Of glyphs of the same name the first one counts.
    std::ranges::stable_sort(*table, {}, &Glyph::name);
    face->generic.data = table.release();
    face->generic.finalizer = dropTable;
}

} // namespace JobParser::Worker

// The linker gives these names; it also looks for the second one on behalf of the libraries that are loaded.
extern "C" FT_UInt indexByFreeType(FT_Face face, const FT_String* name) __asm__("__real_FT_Get_Name_Index");
extern "C" [[gnu::visibility("default")]] FT_UInt
indexByTable(FT_Face face, const FT_String* name) __asm__("__wrap_FT_Get_Name_Index");

FT_UInt indexByTable(FT_Face face, const FT_String* name)
{
    using namespace JobParser::Worker;
    if (face == nullptr || name == nullptr || face->generic.finalizer != dropTable)
        return indexByFreeType(face, name);
    return find(*static_cast<const Table*>(face->generic.data), name);
}
