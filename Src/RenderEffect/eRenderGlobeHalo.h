// The glow around the Earth's silhouette: one screen-aligned quad, centred on the projected
// centre of the Earth and sized each frame so that it hugs the horizon. It fades out as the
// camera comes down, and exists only on the round globe (scene mode 1).
#pragma once
#include "eRenderable.h"
#include "eShared.h"

namespace KYR
{

class eTechnique;
class eVertexData;
class eIndexData;

class eRenderGlobeHalo : public eRenderable
{
public:
    eRenderGlobeHalo();
    // Member-wise: a copy shares the stores and the technique with its source; the last
    // holder frees them.
    eRenderGlobeHalo(eRenderGlobeHalo const&) = default;
    eRenderGlobeHalo& operator=(eRenderGlobeHalo const&) = default;
    ~eRenderGlobeHalo() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    // Packed colour (ERGBA); set it before the first frame.
    void SetColor(unsigned int color) { m_nColor = color; }
    unsigned int GetColor() const { return m_nColor; }

    // Camera distances of the fade: full at the upper one, gone at the lower one.
    static constexpr double kFadeStart = 5775000.0;
    static constexpr double kFadeSpan = 2887500.0;

protected:
    // The one-pass technique of the "GlobeHalo" program; null when it cannot be made.
    eTechnique* CreateTechnique();
    void Release();

    unsigned char m_bInitialized;
    eShared<eTechnique> m_pTechnique;
    eShared<eVertexData> m_pVertexData;
    eShared<eIndexData> m_pIndexData;
    unsigned int m_nColor;
    double m_dAlpha;
};

} // namespace KYR
