// Terrain raster tiles, with an optional lightning flash that lands at a random place near
// where the camera looks, on every frame.
#pragma once
#include "eRenderTileObject.h"

namespace KYR
{

class eRenderGrayTerrainObject : public eRenderTileObject
{
public:
    // Seeds the random generator from the millisecond clock.
    eRenderGrayTerrainObject();
    eRenderGrayTerrainObject(eRenderGrayTerrainObject const&) = default;
    eRenderGrayTerrainObject& operator=(eRenderGrayTerrainObject const&) = default;

    void SetIsLightning(unsigned char on) { m_bIsLightning = on; }

protected:
    unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    unsigned char m_bIsLightning;
};

} // namespace KYR
