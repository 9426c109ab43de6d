// Raster tiles whose values are shown inside a visible range and coloured through a
// colour look-up texture.
#pragma once
#include "eRenderTileObject.h"

namespace KYR
{

class eRenderGrayColorObject : public eRenderTileObject
{
public:
    eRenderGrayColorObject();
    // Copies share the colour table as well as what the base shares.
    eRenderGrayColorObject(eRenderGrayColorObject const&) = default;
    eRenderGrayColorObject& operator=(eRenderGrayColorObject const&) = default;
    ~eRenderGrayColorObject() override;

    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;

    // The filter decides whether the look-up is smooth or stepped.
    void SetColorTable(eString path, int filter);
    void SetStartVisibleValue(double value) { m_dStartVisibleValue = value; }
    void SetEndVisibleValue(double value) { m_dEndVisibleValue = value; }
    void SetIsResetNormalize(unsigned char on) { m_bIsResetNormalize = on; }

protected:
    unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    eShared<eTexture> m_pColorTableTexture;
    double m_dStartVisibleValue;
    double m_dEndVisibleValue;
    unsigned char m_bIsResetNormalize;
};

} // namespace KYR
