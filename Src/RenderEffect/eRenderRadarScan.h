// Radar sweep: an application-supplied surface coloured from a colour-table texture
// between two azimuths around the radar position.
#pragma once
#include "eRenderObject.h"

namespace KYR
{

class eRenderRadarScan : public eRenderObject
{
public:
    eRenderRadarScan();
    // Copies share the colour table as well as what the base shares.
    eRenderRadarScan(eRenderRadarScan const&) = default;
    eRenderRadarScan& operator=(eRenderRadarScan const&) = default;
    ~eRenderRadarScan() override;

    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    void SetColorTable(eString file, int filter);
    void SetTextureTrans(int percent) { m_nTextureTrans = percent; }
    void setPosition(eVector3T<float> position) { m_vPosition = position; }
    void SetStartVisibleAz(float az) { m_fStartVisibleAz = az; }
    void SetEndVisibleAz(float az) { m_fEndVisibleAz = az; }

protected:
    unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    eShared<eTexture> m_pColorTable;
    int m_nTextureTrans;
    float m_fStartVisibleAz;
    float m_fEndVisibleAz;
    eVector3T<float> m_vPosition;
};

} // namespace KYR
