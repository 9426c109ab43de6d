#include "eRenderGrayColorObject.h"
#include "eProgram.h"
#include "eTexture.h"

namespace KYR
{

eRenderGrayColorObject::eRenderGrayColorObject()
    : m_dStartVisibleValue(-1.0), m_dEndVisibleValue(9999.0), m_bIsResetNormalize(0)
{
}

eRenderGrayColorObject::~eRenderGrayColorObject()
{
    m_pColorTableTexture.Reset();
}

unsigned char eRenderGrayColorObject::Initialize(eRenderEngine* engine)
{
    eRenderTileObject::Initialize(engine);
    if (m_pColorTableTexture)
        m_pColorTableTexture->CreateTexture();
    return 1;
}

unsigned char eRenderGrayColorObject::UnInitialize(eRenderEngine* engine)
{
    eRenderTileObject::UnInitialize(engine);
    if (m_pColorTableTexture)
        m_pColorTableTexture->DestroyTexture();
    return 1;
}

void eRenderGrayColorObject::SetColorTable(eString path, int filter)
{
    m_pColorTableTexture.Reset(); // freed here unless a copy still holds it
    m_pColorTableTexture.Reset(eTextureOperator::GetSingleton().CreateTexture(
        path, eTWM_CLAMP_TO_EDGE, (eTextureFilterMode)filter));
}

unsigned char eRenderGrayColorObject::StartRender(eRenderEngine* engine, eRenderSystem* rs,
                                                  eCamera* camera, eViewport* viewport)
{
    unsigned char started = eRenderTileObject::StartRender(engine, rs, camera, viewport);
    size_t n = m_arTextures.size();
    eRenderProgram* rp = FetchProgram(engine);
    eProgram* p = rp ? rp->GetProgram() : nullptr;
    eShaderUniform* u = rp ? rp->GetUniform() : nullptr;
    if (p)
    {
        p->Uniform1f(u->m_nCustom[12], (float)m_dStartVisibleValue);
        p->Uniform1f(u->m_nCustom[13], (float)m_dEndVisibleValue);
        p->Uniform1i(u->m_nCustom[14], m_bIsResetNormalize ? 1 : 0);
    }
    // Rasters on 0 .. n-1, the colour table on n, the mask on n + 1.
    if (m_pColorTableTexture)
        UploadAndBind(m_pColorTableTexture, n);
    if (p)
        p->Uniform1f(u->m_nCustom[15], m_pColorTableTexture ? 1.0f : 0.0f);
    if (s_pMaskTexture)
        UploadAndBind(s_pMaskTexture, n + 1);
    return started;
}

} // namespace KYR
