// Text services: glyphs rasterised with FreeType into single-channel textures, kept in one
// cache for the whole process, and measured for layout (eGLCanvas::Text lays them out).
#pragma once
#include "ePoint.h"
#include "eString.h"
#include "eVector3.h"
#include <vector>

namespace KYR
{

// One glyph: a cell of the line's full height, `m_nWidth` by `m_nHeight` pixels, with the
// ink drawn where the font puts it (left bearing, baseline `m_nBaseline` pixels above the
// cell's bottom), so that cells laid side by side at their advances set a line of text.
// The texture holds the cell in its top-left corner, row 0 at the top of the cell: texture
// coordinates (m_nWidth / m_nTextureWidth, m_nHeight / m_nTextureHeight) reach its
// bottom-right corner. It is single-channel coverage (GL_R8) read as a white glyph whose
// alpha is the coverage: a sample gives (1, 1, 1, coverage), so colour * sample and
// colour.a * sample.a both draw it. Clamped to its edge, linear filters, no mipmaps. The
// first member is the GL texture name; it is 0 while no GL context exists, and made on
// the first request once one does.
struct tagTextGlyph
{
    unsigned int m_nTextureID = 0;
    int m_nTextureWidth = 0;
    int m_nTextureHeight = 0;
    int m_nWidth = 0;
    int m_nHeight = 0;
    int m_nAdvanceX = 0;
    int m_nAdvanceY = 0;
    int m_nBaseline = 0;
};

class eTextContext
{
public:
    eTextContext() {}
    virtual ~eTextContext() {}
    // Width: the sum of the advances; height: the tallest cell (the line height). Pixels.
    static eSize2D GetTextGlyphSize(std::vector<tagTextGlyph*>& glyphs);
    // Replaces `glyphs` with one glyph per character of `text` (UTF-8; a malformed byte
    // gives U+FFFD). `width` and `height` are the font's pixel size (FreeType's; a width of 0
    // follows the height, a height of 0 the width, both 0 give 16). `font` is a family name
    // for fontconfig, empty for DejaVu Sans; `style` adds bold (1) and italic (2). Glyphs are
    // cached by character, size, font and style: the same key gives the same glyph object,
    // which stays valid, owned by the host, for the rest of the process. Returns 0, with
    // no glyphs, when no font can be found (reported once on stderr).
    unsigned char GetTextGlyphsFromCache(eString const& text, int width, int height,
                                         eString const& font, int style,
                                         std::vector<tagTextGlyph*>& glyphs);
    // The font file used for a family and style: fontconfig's match when it is that
    // family, else the standard path of DejaVu Sans; empty when there is none.
    static eString FindFontFile(eString const& font, int style);
};

} // namespace KYR
