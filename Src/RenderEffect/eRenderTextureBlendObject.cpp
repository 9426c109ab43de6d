#include "eRenderTextureBlendObject.h"
#include "GLut.h"
#include "eGradationStrategy.h"
#include "eMaterial.h"
#include "eMutex.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eTexture.h"
#include <epoxy/gl.h>

namespace KYR
{

eShared<eTexture> eRenderTextureBlendObject::s_pMaskTexture;
int eRenderTextureBlendObject::s_refCount = 0;

eRenderTextureBlendObject::eRenderTextureBlendObject()
    : m_nPixelFormat(ePF_UBYTE), m_nTextureTrans(100), m_bIsMask(0)
{
    ++s_refCount;
}

eRenderTextureBlendObject::eRenderTextureBlendObject(eRenderTextureBlendObject const& other)
    : eRenderObject(other), m_nPixelFormat(other.m_nPixelFormat), m_arTextures(other.m_arTextures),
      m_nTextureTrans(other.m_nTextureTrans), m_bIsMask(other.m_bIsMask),
      m_rcMaskTextureBound(other.m_rcMaskTextureBound)
{
    ++s_refCount;
}

// The textures of the list go with their last holders.
eRenderTextureBlendObject::~eRenderTextureBlendObject()
{
    m_arTextures.clear();
    if (--s_refCount < 1)
    {
        // The last object of the family takes the shared mask with it.
        s_pMaskTexture.Reset();
        s_refCount = 0;
    }
}

unsigned char eRenderTextureBlendObject::Initialize(eRenderEngine*)
{
    if (!m_bInitialized)
    {
        m_bInitialized = CreateBuffer();
        if (m_pTexture)
            m_pTexture->CreateTexture();
    }
    for (eTexture* texture : m_arTextures)
        if (texture)
            texture->CreateTexture();
    if (s_pMaskTexture)
        s_pMaskTexture->CreateTexture();
    return 1;
}

unsigned char eRenderTextureBlendObject::UnInitialize(eRenderEngine*)
{
    DestroyBuffer();
    if (m_pTexture)
        m_pTexture->DestroyTexture();
    m_bInitialized = 0;
    for (eTexture* texture : m_arTextures)
        if (texture)
            texture->DestroyTexture();
    if (s_pMaskTexture)
        s_pMaskTexture->DestroyTexture();
    return 1;
}

void eRenderTextureBlendObject::AddTexture(unsigned char* data, int width, int height, int format)
{
    m_nPixelFormat = format;
    m_arTextures.push_back(eShared<eTexture>(eTextureOperator::GetSingleton().CreateTexture(
        data, width, height, format, eTWM_CLAMP_TO_EDGE, eTFM_LINEAR)));
}

void eRenderTextureBlendObject::SetMaskTexture(eString path)
{
    s_pMaskTexture.Reset();
    s_pMaskTexture.Reset(
        eTextureOperator::GetSingleton().CreateTexture(path, eTWM_CLAMP_TO_EDGE, eTFM_LINEAR));
}

eRenderProgram* eRenderTextureBlendObject::FetchProgram(eRenderEngine* engine)
{
    eTechnique* technique = m_pMaterial ? m_pMaterial->GetBestTechnique() : nullptr;
    ePass* pass = technique ? technique->GetPass(0) : nullptr;
    return pass ? engine->GetRenderProgram(pass) : nullptr;
}

void eRenderTextureBlendObject::BindOnUnit(eTexture* texture, size_t unit)
{
    GLut::ActiveTexture(GL_TEXTURE0 + (unsigned int)unit);
    if (texture)
        texture->CreateTexture();
    glBindTexture(GL_TEXTURE_2D, texture ? texture->GetTextureID() : 0);
}

void eRenderTextureBlendObject::UploadAndBind(eTexture* texture, size_t unit)
{
    texture->CreateTexture();
    GLut::ActiveTexture(GL_TEXTURE0 + (unsigned int)unit);
    glBindTexture(GL_TEXTURE_2D, texture->GetTextureID());
}

unsigned char eRenderTextureBlendObject::StartRender(eRenderEngine* engine, eRenderSystem* rs,
                                                     eCamera* camera, eViewport* viewport)
{
    // The family's uniforms and rasters go out even when the base could not start.
    unsigned char started = eRenderObject::StartRender(engine, rs, camera, viewport);
    if (eRenderProgram* rp = FetchProgram(engine))
    {
        eProgram* p = rp->GetProgram();
        eShaderUniform* u = rp->GetUniform();
        p->Uniform1i(u->m_nCustom[0], m_nPixelFormat);
        p->Uniform1f(u->m_nCustom[1], (float)(m_nTextureTrans * 0.01));
        p->Uniform1i(u->m_nCustom[2], m_bIsMask);
        float rect[4];
        RectToFloats(m_rcMaskTextureBound, rect);
        p->UniformVector4Scaled(u->m_nCustom[3], 1.0f, rect);
    }
    for (size_t i = 0; i < m_arTextures.size(); ++i)
        BindOnUnit(m_arTextures[i], i);
    return started;
}

void eRenderTextureBlendObject::RetireTexture(eTexture* texture)
{
    if (!texture->GetAutoRelease())
    {
        if (eImageData* image = texture->GetImageData())
        {
            delete[] image->m_pData;
            image->m_pData = nullptr;
            delete image;
        }
        texture->SetImageData(nullptr);
    }
    delete texture;
}

// The texture a pending one replaces is retired by letting go of its holder: it is freed
// once no copy's list shows it any more (at once when this object is alone). The same
// texture handed in again keeps its holder and stays alive.
void eRenderTextureBlendObject::TakePending(eTexture*& pending, eTexture*& current)
{
    if (!pending)
        return;
    current = pending;
    pending = nullptr;
    current->CreateTexture();
}

void eRenderTextureBlendObject::HoldCurrent(eTexture* current, eShared<eTexture>& slot,
                                            eShared<eTexture> const& other)
{
    if (slot.Get() == current)
        return;
    if (!current)
        slot.Reset(); // dropped from the strategy by its producer
    else if (other.Get() == current)
        slot = other; // one texture in both slots has one holder
    else
        slot.Reset(current, RetireTexture);
}

void eRenderTextureBlendObject::TakeGradationTextures(eGradationStrategy* strategy, eMutex& mutex,
                                                      eGradationTextures& taken)
{
    mutex.Lock();
    TakePending(strategy->m_pPendingTexture1, strategy->m_pTexture1);
    TakePending(strategy->m_pPendingTexture2, strategy->m_pTexture2);
    HoldCurrent(strategy->m_pTexture1, taken.m_Slot[0], taken.m_Slot[1]);
    HoldCurrent(strategy->m_pTexture2, taken.m_Slot[1], taken.m_Slot[0]);
    // Read while locked: a producer may drop a current texture from the strategy.
    eShared<eTexture> first = taken.m_Slot[0];
    eShared<eTexture> second = taken.m_Slot[1];
    int format = strategy->m_nPixelFormat;
    mutex.UnLock();
    m_arTextures.clear();
    if (first)
    {
        m_nPixelFormat = format;
        m_arTextures.push_back(first);
    }
    if (second)
        m_arTextures.push_back(second);
}

} // namespace KYR
