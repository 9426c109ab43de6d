#include "eText.h"
#include <algorithm>

namespace KYR
{

eSize2D eTextContext::GetTextGlyphSize(std::vector<tagTextGlyph*>& glyphs)
{
    eSize2D size;
    for (tagTextGlyph* g : glyphs)
    {
        if (!g)
            continue;
        size.cx += g->m_nAdvanceX;
        size.cy = std::max(size.cy, (double)g->m_nHeight);
    }
    return size;
}

// Glyph rasterisation arrives with the text effects; until then no glyphs are made.
unsigned char eTextContext::GetTextGlyphsFromCache(eString const&, int, int, eString const&, int,
                                                   std::vector<tagTextGlyph*>& glyphs)
{
    glyphs.clear();
    return 0;
}

} // namespace KYR
