#include "eRenderNightLight.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eFile.h"
#include "eGlobeModel.h"
#include "eMaterial.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderQueueVisitor.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <new>
#include <vector>

namespace KYR
{

eRenderNightLight::eRenderNightLight() : m_bInitialized(0)
{
    m_rcImageBound.SetEmpty();
}

// Technique, textures and table go with their last holders.
eRenderNightLight::~eRenderNightLight()
{
    m_pTechnique.Reset();
    m_pTexture.Reset();
    m_pColorTableTexture.Reset();
    m_pColorTable.Reset();
}

eRenderable::Type eRenderNightLight::GetType()
{
    return eRT_NIGHT_LIGHT;
}

void eRenderNightLight::SetColorTable(eColorTable* table)
{
    if (!table)
        return;
    if (!m_pColorTable)
        m_pColorTable.Reset(new eColorTable());
    *m_pColorTable = *table;
}

eTexture* eRenderNightLight::LoadImageTexture(int bitsPerPixel)
{
    eFileStream stream;
    if (!stream.Open(m_strImagePath.Cstr(), 2, 8192))
        return nullptr;
    eByteArray bytes;
    stream.LoadByteArray(bytes);
    stream.Close();
    eImageData* image = eFileParserToolkit::LoadImageData(bytes, bitsPerPixel);
    if (!image)
        return nullptr;
    eTexture* texture = new eTexture();
    texture->SetAutoRelease(1);
    texture->SetAutoMipMap(1);
    texture->SetImageData(image);
    texture->SetTextureWrapS(GL_CLAMP_TO_EDGE);
    texture->SetTextureWrapT(GL_CLAMP_TO_EDGE);
    texture->SetTextureMinFilter(GL_LINEAR_MIPMAP_LINEAR);
    texture->SetTextureMagFilter(GL_LINEAR);
    texture->CreateTexture();
    return texture;
}

unsigned char eRenderNightLight::Initialize(eRenderEngine* engine)
{
    eCamera* camera = engine ? engine->GetCamera() : nullptr;
    if (m_bInitialized || m_strImagePath.IsEmpty() || m_rcImageBound.IsEmpty() || !camera ||
        camera->GetSceneMode() != eSM_GLOBE)
        return m_bInitialized;
    // Grey values to look up when there is a table, colours to use as they are when not.
    m_pTexture.Reset(LoadImageTexture(m_pColorTable ? 8 : 24));
    if (!m_pTexture)
        return 0;
    m_pColorTableTexture.Reset(CreateColorTable());
    m_bInitialized = 1;
    return m_bInitialized;
}

eTexture* eRenderNightLight::CreateColorTable()
{
    if (!m_pColorTable)
        return nullptr;
    int n = m_pColorTable->GetSize();
    eImageData* image = new eImageData();
    image->m_nBitsPerPixel = 32;
    image->m_nWidth = 1;
    image->m_nHeight = n;
    image->m_nPitch = 4;
    image->m_pData = n > 0 ? new unsigned char[(size_t)n * 4] : nullptr;
    for (int i = 0; i < n; ++i)
    {
        int rgba = (int)m_pColorTable->GetRGB(i);
        unsigned char* px = image->m_pData + (size_t)i * 4;
        px[0] = EREDVAL(rgba);
        px[1] = EGREENVAL(rgba);
        px[2] = EBLUEVAL(rgba);
        px[3] = EALPHAVAL(rgba);
    }
    eTexture* texture = new eTexture();
    texture->SetAutoRelease(1);
    texture->SetImageData(image);
    texture->SetTextureWrapS(GL_CLAMP_TO_EDGE);
    texture->SetTextureWrapT(GL_CLAMP_TO_EDGE);
    texture->SetTextureMinFilter(GL_LINEAR);
    texture->SetTextureMagFilter(GL_LINEAR);
    texture->CreateTexture();
    return texture;
}

unsigned char eRenderNightLight::UnInitialize(eRenderEngine*)
{
    m_pTexture.Reset(); // each freed here unless a copy still holds it
    m_pColorTableTexture.Reset();
    m_pTechnique.Reset();
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderNightLight::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                        eViewport* viewport)
{
    if (!m_bVisible)
        return 1;
    if (!m_bInitialized)
        Initialize(engine);
    if (!m_bInitialized || !engine)
        return 1;
    eGlobeModel* model = engine->GetGlobeModel();
    std::vector<eTileSet*>* tileSets = model ? model->GetVisibleTileSets(camera) : nullptr;
    eRenderQueueVisitor* visitor = engine->GetVisitor();
    eCoordSys* coordSys = engine->GetCoordSys();
    if (!tileSets || !visitor || !coordSys)
        return 1;
    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    visitor->BeginPass(pass);
    eRect2D local;
    coordSys->MapToLogicalRect(m_rcImageBound, local);
    // The size is read again each round: a tile set may change the list while it draws.
    for (size_t i = 0; i < tileSets->size(); ++i)
    {
        eTileSet* tile = (*tileSets)[i];
        if (tile && tile->GetBounds().IsIntersect(local))
            tile->RenderImage(engine, rs, camera, viewport, m_pTexture, &local, pass, 1,
                              m_pColorTableTexture, 0.0, nullptr);
    }
    visitor->EndPass();
    return 1;
}

eTechnique* eRenderNightLight::CreateTechnique()
{
    eTechnique* technique = new (std::nothrow) eTechnique();
    ePass* pass = technique ? technique->CreatePass() : nullptr;
    if (!pass)
        return technique;
    pass->SetProgram("NightLight");
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(1);
    pass->SetDepthFunc(eCF_LESS_EQUAL);
    pass->SetDepthBiasSlopeScale(0.0f);
    pass->SetDepthBiasConstant(0.0f);
    pass->SetLightingEnabled(1);
    pass->SetAmbient(eVector4T<float>(0.3f, 0.3f, 0.3f, 1.0f));
    pass->SetDiffuse(eVector4T<float>(0.8f, 0.8f, 0.8f, 1.0f));
    pass->SetSpecular(eVector4T<float>(0.15f, 0.15f, 0.15f, 1.0f));
    pass->SetShininess(0.35f);
    return technique;
}

unsigned char eRenderNightLight::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                   eRenderQueue* queue)
{
    if (!m_pTechnique)
        m_pTechnique.Reset(CreateTechnique());
    if (m_pTechnique && queue)
        queue->GetQueueGroup(6)->AddSolidTextureRenderable(m_pTechnique, this);
    return 1;
}

} // namespace KYR
