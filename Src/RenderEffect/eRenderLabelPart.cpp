#include "eRenderLabelPart.h"
#include "eGeometry.h"
#include "eMesh.h"
#include "eRenderEngine.h"
#include "eRenderSystem.h"
#include "eText.h"
#include <algorithm>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{
// Left of the line at the anchor, the bottom of its cells at the anchor: the text runs
// right and up from it.
int const kLeftBottom = eGeoTextStyle::eTA_LEFT | eGeoTextStyle::eTA_BOTTOM;

eTextContext& OwnContext()
{
    static eTextContext s_Context;
    return s_Context;
}
} // namespace

eRenderLabelPart::eRenderLabelPart(eTextContext* context)
    : m_nTextWidth(0), m_nTextHeight(16), m_cTextColor(0, 0, 0, 255), m_pTextContext(context)
{
}

eRenderLabelPart::~eRenderLabelPart() {}

eRenderable::Type eRenderLabelPart::GetType()
{
    return eRT_LABEL_PART;
}

void eRenderLabelPart::SetText(eString const& text)
{
    m_strText = text;
    m_bDirty = 1;
}

void eRenderLabelPart::SetTextWidth(int width)
{
    m_nTextWidth = width;
    m_bDirty = 1;
}

void eRenderLabelPart::SetTextHeight(int height)
{
    m_nTextHeight = height;
    m_bDirty = 1;
}

void eRenderLabelPart::SetTextColor(eVector4T<unsigned char> const& color)
{
    m_cTextColor = color;
    m_bDirty = 1;
}

void eRenderLabelPart::FetchGlyphs()
{
    m_arGlyphs.clear();
    if (m_strText.IsEmpty())
        return;
    eTextContext& context = m_pTextContext ? *m_pTextContext : OwnContext();
    context.GetTextGlyphsFromCache(m_strText, m_nTextWidth, m_nTextHeight, eString(""), 0,
                                   m_arGlyphs);
}

void eRenderLabelPart::GetTextSize(eSize2D& size)
{
    if (m_bDirty)
        FetchGlyphs();
    size = eTextContext::GetTextGlyphSize(m_arGlyphs);
}

eRect2D eRenderLabelPart::GetBounds()
{
    eSize2D size;
    GetTextSize(size);
    return eRect2D(m_ptAnchor.x, m_ptAnchor.y + size.cy, m_ptAnchor.x + size.cx, m_ptAnchor.y);
}

void eRenderLabelPart::CreateBuffer(eRenderEngine* engine)
{
    NewStores();
    // Asked anew at every build: the list may hold the glyphs of an earlier text, and the
    // cache gives a glyph its texture once a GL context is current.
    FetchGlyphs();
    eGLCanvas::Text(m_pVertexData, m_pIndexData, m_arGlyphStarts, eSM_PLANE,
                    engine ? engine->GetCoordSys() : nullptr,
                    ePoint2D(m_ptAnchor.x, m_ptAnchor.y + 1.0), 1.0, m_arGlyphs, m_cTextColor,
                    kLeftBottom);
    UploadStores();
}

unsigned char eRenderLabelPart::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera*,
                                       eViewport*)
{
    if (!BeginDraw(engine, m_cTextColor))
        return 0;
    size_t n = std::min(m_arGlyphs.size(), m_arGlyphStarts.size());
    for (size_t i = 0; i < n; ++i)
    {
        glBindTexture(GL_TEXTURE_2D, m_arGlyphs[i] ? m_arGlyphs[i]->m_nTextureID : 0);
        rs->DrawIndexRange(eOT_TRIANGLE_STRIP, m_pVertexData, m_pIndexData, 4, m_arGlyphStarts[i],
                           false);
    }
    return 1;
}

} // namespace KYR
