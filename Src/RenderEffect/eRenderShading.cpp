#include "eRenderShading.h"

namespace KYR
{

eRenderShading::eRenderShading() : m_dAlphaOpacity(1.0), m_dShadingScale(1.0), m_bEnableGrid(0) {}

eRenderShading::~eRenderShading()
{
    m_pRasterGrid.Reset();
}

eRenderable::Type eRenderShading::GetType()
{
    return eRT_SHADING;
}

void eRenderShading::SetRasterGrid(eRasterGrid* grid)
{
    if (!grid)
        return;
    if (!m_pRasterGrid)
        m_pRasterGrid.Reset(new eRasterGrid());
    *m_pRasterGrid = *grid;
}

} // namespace KYR
