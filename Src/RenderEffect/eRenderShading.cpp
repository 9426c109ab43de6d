#include "eRenderShading.h"

namespace KYR
{

eRenderShading::eRenderShading()
    : m_dAlphaOpacity(1.0), m_dShadingScale(1.0), m_bEnableGrid(0), m_pRasterGrid(nullptr)
{
}

eRenderShading::~eRenderShading()
{
    delete m_pRasterGrid;
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
        m_pRasterGrid = new eRasterGrid();
    *m_pRasterGrid = *grid;
}

} // namespace KYR
