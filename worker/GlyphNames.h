#pragma once

#include <ft2build.h>
#include FT_FREETYPE_H

namespace JobParser::Worker
{

/// Has FreeType find the glyphs of this face by a sorted table of their names, which goes with the face.
///
/// By itself it compares a name with those of all glyphs, one after the other. MuPDF asks for up to 256 names
/// of each font that a document uses, so that this was a quarter of what a small document takes. The programs
/// are linked so that FT_Get_Name_Index comes here first (`--wrap`).
void sortGlyphNames(FT_Face face);

} // namespace JobParser::Worker
