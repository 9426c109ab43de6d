// The Earth's lights at night: an image laid over the globe's tile sets in view through the
// "NightLight" program, which shows it on the night side only. With a colour table the image
// is read as grey values and coloured through the table; without one its colours are used.
// Exists only on the round globe (scene mode 1).
#pragma once
#include "eColorTable.h"
#include "eRect.h"
#include "eRenderable.h"
#include "eShared.h"
#include "eString.h"

namespace KYR
{

class eTechnique;
class eTexture;

class eRenderNightLight : public eRenderable
{
public:
    eRenderNightLight();
    // Member-wise: a copy shares textures, table and technique with its source; the last
    // holder frees them.
    eRenderNightLight(eRenderNightLight const&) = default;
    eRenderNightLight& operator=(eRenderNightLight const&) = default;
    ~eRenderNightLight() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    void SetImagePath(eString const& path) { m_strImagePath = path; }
    // Map rectangle the image covers.
    void SetImageBound(eRect2D const& bound) { m_rcImageBound = bound; }
    eRect2D GetImageBound() const { return m_rcImageBound; }
    // Keeps a copy; takes effect at the next Initialize.
    void SetColorTable(eColorTable* table);
    eColorTable* GetColorTable() { return m_pColorTable; }

protected:
    // The one-pass technique of the "NightLight" program; null when it cannot be made.
    eTechnique* CreateTechnique();
    // The table as a texture one pixel wide and one row per colour; null without a table.
    eTexture* CreateColorTable();
    // The image texture from the file, grey (8 bits) or colour (24 bits); null on failure.
    eTexture* LoadImageTexture(int bitsPerPixel);

    unsigned char m_bInitialized;
    eShared<eTechnique> m_pTechnique;
    eShared<eTexture> m_pTexture;
    eRect2D m_rcImageBound;
    eString m_strImagePath;
    eShared<eColorTable> m_pColorTable;
    eShared<eTexture> m_pColorTableTexture;
};

} // namespace KYR
