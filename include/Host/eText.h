// Text services: glyphs rasterised into textures.
#pragma once
#include "ePoint.h"
#include "eString.h"
#include "eVector3.h"
#include <vector>

namespace KYR
{

// One glyph; the first member is its GL texture name.
struct tagTextGlyph
{
    unsigned int m_nTextureID = 0;
    int m_nTextureWidth = 0;
    int m_nTextureHeight = 0;
    int m_nWidth = 0;
    int m_nHeight = 0;
    int m_nAdvanceX = 0;
    int m_nAdvanceY = 0;
};

class eTextContext
{
public:
    eTextContext() {}
    virtual ~eTextContext() {}
    static eSize2D GetTextGlyphSize(std::vector<tagTextGlyph*>& glyphs);
    unsigned char GetTextGlyphsFromCache(eString const& text, int width, int height,
                                         eString const& font, int style,
                                         std::vector<tagTextGlyph*>& glyphs);
};

} // namespace KYR
