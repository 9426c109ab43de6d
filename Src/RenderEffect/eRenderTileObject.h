// Raster tiles: the first mesh, one generic patch, drawn once for each tile rectangle that
// the application hands in, placed there by a uniform.
#pragma once
#include "eRenderTextureBlendObject.h"

namespace KYR
{

class eRenderTileObject : public eRenderTextureBlendObject
{
public:
    eRenderTileObject();
    eRenderTileObject(eRenderTileObject const&) = default;
    eRenderTileObject& operator=(eRenderTileObject const&) = default;
    ~eRenderTileObject() override;

    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    // Also sets the sort depth: the higher the layer, the nearer it sorts.
    void SetRelativeHeight(float height);
    void AddTileBound(eRect2D const& bound) { m_arTileBounds.push_back(bound); }
    void ClearTileBound() { m_arTileBounds.clear(); }
    void SetTextureBound(eRect2D const& bound, double scale);
    void SetIsBuild3D(bool on) { m_bIsBuild3D = on; }
    void SetExagFactor(float factor) { m_fExagFactor = factor; }
    void SetIsFracture(bool on) { m_bIsFracture = on; }

protected:
    unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    float m_fRelativeHeight;
    std::vector<eRect2D> m_arTileBounds;
    eRect2D m_rcTextureBound;
    double m_dTextureScale;
    bool m_bIsBuild3D;
    float m_fExagFactor;
    bool m_bIsFracture;
};

} // namespace KYR
