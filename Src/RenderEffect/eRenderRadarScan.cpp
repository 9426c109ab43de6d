#include "eRenderRadarScan.h"
#include "GLut.h"
#include "eCamera.h"
#include "eMaterial.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eTexture.h"
#include <epoxy/gl.h>

namespace KYR
{

eRenderRadarScan::eRenderRadarScan()
    : m_nTextureTrans(100), m_fStartVisibleAz(0.0f), m_fEndVisibleAz(360.0f),
      m_vPosition(0.0f, 0.0f, 0.0f)
{
    eMaterial* material = new eMaterial();
    ePass* pass = material->CreateTechnique()->CreatePass();
    pass->SetProgram("Radarscan");
    pass->SetProjectionMode(ePM_PERSPECTIVE);
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetLineWidth(1.0f);
    pass->SetDepthWriteEnabled(0);
    pass->SetDepthCheckEnabled(1);
    pass->SetLightingEnabled(0);
    SetMaterial(material);
}

// The colour table goes with its last holder.
eRenderRadarScan::~eRenderRadarScan() {}

unsigned char eRenderRadarScan::Initialize(eRenderEngine* engine)
{
    eRenderObject::Initialize(engine);
    if (m_pColorTable)
        m_pColorTable->CreateTexture();
    return 1;
}

unsigned char eRenderRadarScan::UnInitialize(eRenderEngine* engine)
{
    eRenderObject::UnInitialize(engine);
    if (m_pColorTable)
        m_pColorTable->DestroyTexture();
    return 1;
}

unsigned char eRenderRadarScan::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                       eViewport* viewport)
{
    return eRenderObject::Render(engine, rs, camera, viewport);
}

void eRenderRadarScan::SetColorTable(eString file, int filter)
{
    m_pColorTable.Reset(); // freed here unless a copy still holds it
    m_pColorTable.Reset(eTextureOperator::GetSingleton().CreateTexture(file, eTWM_CLAMP_TO_EDGE,
                                                                       (eTextureFilterMode)filter));
}

unsigned char eRenderRadarScan::StartRender(eRenderEngine* engine, eRenderSystem* rs,
                                            eCamera* camera, eViewport* viewport)
{
    eRenderObject::StartRender(engine, rs, camera, viewport);
    eVector3T<float> high, low;
    DoubleToTwoFloat(camera->GetReferenceCenter(), high, low);
    eTechnique* technique = m_pMaterial ? m_pMaterial->GetTechnique(0) : nullptr;
    ePass* pass = technique ? technique->GetPass(0) : nullptr;
    if (eRenderProgram* rp = engine->GetRenderProgram(pass))
    {
        eProgram* p = rp->GetProgram();
        eShaderUniform* u = rp->GetUniform();
        // The shader places vertices against the reference centre itself.
        p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, m_Matrix.Ptr());
        p->Uniform3f(u->m_nCustom[0], high.x, high.y, high.z);
        p->Uniform3f(u->m_nCustom[1], low.x, low.y, low.z);
        p->Uniform1i(u->m_nCustom[2], m_nProjectionKind);
        p->Uniform3f(u->m_nCustom[3], m_vPosition.x, m_vPosition.y, m_vPosition.z);
        p->Uniform1f(u->m_nCustom[4], (float)(m_nTextureTrans * 0.01));
        p->Uniform1f(u->m_nCustom[5], m_fStartVisibleAz);
        p->Uniform1f(u->m_nCustom[6], m_fEndVisibleAz);
    }
    if (m_pColorTable)
    {
        m_pColorTable->CreateTexture();
        GLut::ActiveTexture(33984);
        glBindTexture(GL_TEXTURE_2D, m_pColorTable->GetTextureID());
    }
    return 1;
}

} // namespace KYR
