// A line of text in an annotation. Its glyphs come from the host's text cache and are laid
// out by the canvas as one four-vertex strip per glyph, left and bottom at the anchor (pixels
// around the annotation's anchor); each strip is drawn with its glyph's texture.
#pragma once
#include "eRenderPart.h"
#include "eString.h"
#include <vector>

namespace KYR
{

class eTextContext;
struct tagTextGlyph;

class eRenderLabelPart : public eRenderPart
{
public:
    // The context is not owned; without one the label uses a context of its own.
    explicit eRenderLabelPart(eTextContext* context = nullptr);
    eRenderLabelPart(eRenderLabelPart const&) = default;
    eRenderLabelPart& operator=(eRenderLabelPart const&) = default;
    ~eRenderLabelPart() override;

    Type GetType() override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    // Left and bottom at the anchor, the text's size in pixels.
    eRect2D GetBounds() override;

    // UTF-8.
    void SetText(eString const& text);
    eString const& GetText() const { return m_strText; }
    // The font's pixel size (a width of 0 follows the height).
    void SetTextWidth(int width);
    void SetTextHeight(int height);
    void SetTextColor(eVector4T<unsigned char> const& color);
    // Read when the part is next built, which takes another change that marks it dirty.
    void SetAnchor(ePoint2D const& anchor) { m_ptAnchor = anchor; }
    ePoint2D GetAnchor() const { return m_ptAnchor; }
    // The text's width (sum of advances) and line height in pixels.
    void GetTextSize(eSize2D& size);

protected:
    void CreateBuffer(eRenderEngine*) override;
    void FetchGlyphs();

    std::vector<int> m_arGlyphStarts;
    eString m_strText;
    int m_nTextWidth;
    int m_nTextHeight;
    eVector4T<unsigned char> m_cTextColor;
    ePoint2D m_ptAnchor;
    eTextContext* m_pTextContext;
    std::vector<tagTextGlyph*> m_arGlyphs; // the host's cache owns them
};

} // namespace KYR
