#include "eRenderTileObject.h"
#include "GLut.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderSystem.h"

namespace KYR
{

eRenderTileObject::eRenderTileObject()
    : m_fRelativeHeight(100.0f), m_dTextureScale(1.0), m_bIsBuild3D(false), m_fExagFactor(1.0f),
      m_bIsFracture(false)
{
}

eRenderTileObject::~eRenderTileObject() {}

void eRenderTileObject::SetRelativeHeight(float height)
{
    m_fRelativeHeight = height;
    m_dSquaredViewDepth = (double)(1000000.0f - height);
}

void eRenderTileObject::SetTextureBound(eRect2D const& bound, double scale)
{
    m_rcTextureBound = bound;
    m_dTextureScale = scale;
}

unsigned char eRenderTileObject::StartRender(eRenderEngine* engine, eRenderSystem* rs,
                                             eCamera* camera, eViewport* viewport)
{
    return eRenderTextureBlendObject::StartRender(engine, rs, camera, viewport);
}

unsigned char eRenderTileObject::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                        eViewport* viewport)
{
    if (!StartRender(engine, rs, camera, viewport))
        return 0;
    int tileLocation = -1;
    if (eRenderProgram* rp = FetchProgram(engine))
    {
        eProgram* p = rp->GetProgram();
        eShaderUniform* u = rp->GetUniform();
        float rect[4];
        RectToFloats(m_rcTextureBound, rect);
        p->Uniform1i(u->m_nCustom[4], m_nProjectionKind);
        p->Uniform1f(u->m_nCustom[5], m_fRelativeHeight);
        p->UniformVector4Scaled(u->m_nCustom[6], 1.0f, rect);
        p->Uniform1f(u->m_nCustom[7], (float)m_dTextureScale);
        p->Uniform1i(u->m_nCustom[8], m_bIsBuild3D);
        p->Uniform1f(u->m_nCustom[9], m_fExagFactor);
        p->Uniform1i(u->m_nCustom[10], m_bIsFracture);
        tileLocation = u->m_nCustom[11];
    }
    // One patch serves every tile; only its rectangle changes between draws.
    eMesh* mesh = m_arMeshes.empty() ? nullptr : m_arMeshes[0];
    for (eRect2D const& bound : m_arTileBounds)
    {
        float rect[4];
        RectToFloats(bound, rect);
        GLut::Uniform4fv(tileLocation, 1, rect);
        if (mesh)
            rs->DrawIndexed(mesh->GetOperationType(), mesh->GetVertexData(), mesh->GetIndexData(),
                            false);
    }
    EndRender(engine, rs, camera, viewport);
    return 1;
}

} // namespace KYR
