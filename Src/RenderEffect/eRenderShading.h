// Settings shared by the effects that have the host's terrain tiles draw a raster.
#pragma once
#include "eGlobeModel.h"
#include "eRenderable.h"
#include "eShared.h"

namespace KYR
{

class eRenderShading : public eRenderable
{
public:
    eRenderShading();
    // Copies share the raster grid; the last holder frees it.
    eRenderShading(eRenderShading const&) = default;
    eRenderShading& operator=(eRenderShading const&) = default;
    ~eRenderShading() override;

    Type GetType() override;

    void SetAlphaOpacity(double opacity) { m_dAlphaOpacity = opacity; }
    double GetAlphaOpacity() { return m_dAlphaOpacity; }
    void SetEnableGrid(unsigned char enable) { m_bEnableGrid = enable; }
    unsigned char IsEnableGrid() { return m_bEnableGrid; }
    eRasterGrid* GetRasterGrid() { return m_pRasterGrid; }
    // Keeps a copy of the grid; null is ignored.
    void SetRasterGrid(eRasterGrid* grid);

protected:
    double m_dAlphaOpacity;
    double m_dShadingScale;
    unsigned char m_bEnableGrid;
    eShared<eRasterGrid> m_pRasterGrid;
};

} // namespace KYR
