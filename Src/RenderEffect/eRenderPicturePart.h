// A picture in an annotation: a rectangle in pixels around the anchor, textured with one of
// the engine's textures found by its id, and tinted by the part's colour.
#pragma once
#include "eRenderPart.h"

namespace KYR
{

class eTexture;

class eRenderPicturePart : public eRenderPart
{
public:
    eRenderPicturePart();
    eRenderPicturePart(eRenderPicturePart const&) = default;
    eRenderPicturePart& operator=(eRenderPicturePart const&) = default;
    ~eRenderPicturePart() override;

    Type GetType() override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    eRect2D GetBounds() override;

    // Left, top, right, bottom in pixels around the anchor, top the larger y.
    void SetBound(eRect2D const& bound);
    // The engine's texture (id << 8) | 1 is looked up at the next draw; the same id keeps
    // the texture already found.
    void SetTextureID(int id);
    int GetTextureID() const { return m_nTextureID; }
    // Multiplies the picture; the alpha starts at 0, so a picture shows once it is given
    // a colour.
    void SetColor(eVector4T<unsigned char> const& color) { m_cColor = color; }
    eVector4T<unsigned char> GetColor() const { return m_cColor; }

protected:
    void CreateBuffer(eRenderEngine*) override;
    void DestroyBuffer() override;

    eVector4T<unsigned char> m_cColor;
    eRect2D m_rcBound;
    int m_nTextureID;
    eTexture* m_pTexture; // the engine's, not owned
};

} // namespace KYR
