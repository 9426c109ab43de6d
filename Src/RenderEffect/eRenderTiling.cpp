#include "eRenderTiling.h"
#include "eBase.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eMaterial.h"
#include "eNormalisedRaster.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <algorithm>

namespace KYR
{

namespace
{

char const* const kSource = "Src/RenderEffect/eRenderTiling";
unsigned int const kQueueGroup = 6;
int const kDefaultTilingLevel = 11;

} // namespace

eRenderTiling::eTilingHold::~eTilingHold()
{
    if (m_bRelease)
        delete m_pTexture;
}

eRenderTiling::eRenderTiling(eRasterBlock* block)
    : m_bInitialized(0), m_bAutoReleaseTexture(1), m_pRasterBlock(block),
      m_eTilingType(eTT_DEFAULT), m_dAlphaOpacity(1.0), m_bEnableTransparent(0),
      m_nTilingLevel(kDefaultTilingLevel)
{
    m_rcTilingBounds.SetEmpty();
}

// Block, raster texture, technique and the released tiling textures go with their last holder.
eRenderTiling::~eRenderTiling() {}

eRenderable::Type eRenderTiling::GetType()
{
    return eRT_TILING;
}

unsigned char eRenderTiling::Create(eCamera*, double, eCanvas*)
{
    if (!m_pRasterBlock)
        return 0;
    eTexture* texture = new eTexture();
    texture->SetAutoRelease(1);
    texture->SetTextureInfo(eNormalisedRaster::Create(*m_pRasterBlock));
    texture->SetAutoMipMap(1);
    texture->SetTextureWrapS(GL_CLAMP_TO_EDGE);
    texture->SetTextureWrapT(GL_CLAMP_TO_EDGE);
    texture->SetTextureMinFilter(GL_LINEAR);
    texture->SetTextureMagFilter(GL_LINEAR);
    m_pTexture.Reset(texture);
    return 1;
}

unsigned char eRenderTiling::Initialize(eRenderEngine*)
{
    if (!m_bInitialized)
    {
        if (m_pTexture)
            m_pTexture->CreateTexture();
        m_bInitialized = 1;
    }
    return m_bInitialized;
}

unsigned char eRenderTiling::UnInitialize(eRenderEngine*)
{
    RemoveAllTilingTextures();
    m_pTexture.Reset();
    m_bInitialized = 0;
    return 1;
}

void eRenderTiling::SetAutoReleaseTexture(unsigned char release)
{
    m_bAutoReleaseTexture = release;
    for (eShared<eTilingHold>& hold : m_arTilingHolds)
        hold->m_bRelease = release != 0;
}

// A texture listed twice has one hold, so that it is released once.
eShared<eRenderTiling::eTilingHold> eRenderTiling::HoldFor(eTexture* texture)
{
    for (eShared<eTilingHold> const& hold : m_arTilingHolds)
        if (texture && hold->m_pTexture == texture)
            return hold;
    eShared<eTilingHold> hold(new eTilingHold());
    hold->m_pTexture = texture;
    hold->m_bRelease = m_bAutoReleaseTexture != 0;
    return hold;
}

void eRenderTiling::LetGo(std::vector<eShared<eTilingHold>>& holds, bool release)
{
    for (eShared<eTilingHold>& hold : holds)
        hold->m_bRelease = release;
    holds.clear();
}

void eRenderTiling::SetTilingTextures(std::vector<eTexture*>& textures)
{
    std::vector<eShared<eTilingHold>> holds;
    for (eTexture* texture : textures)
        holds.push_back(HoldFor(texture));
    // What the new list no longer has goes back to the caller.
    std::vector<eShared<eTilingHold>> dropped;
    for (eShared<eTilingHold> const& hold : m_arTilingHolds)
        if (std::find(textures.begin(), textures.end(), hold->m_pTexture) == textures.end())
            dropped.push_back(hold);
    LetGo(dropped, false);
    m_arTilingHolds.swap(holds);
    m_arTilingTextures = textures;
}

void eRenderTiling::AddTilingTexture(eTexture const* texture)
{
    eTexture* entry = const_cast<eTexture*>(texture);
    m_arTilingHolds.push_back(HoldFor(entry));
    m_arTilingTextures.push_back(entry);
}

eTexture* eRenderTiling::GetTilingTexture(int index) const
{
    return index >= 0 && index < (int)m_arTilingTextures.size() ? m_arTilingTextures[(size_t)index]
                                                                : nullptr;
}

void eRenderTiling::RemoveTilingTextureAt(int index)
{
    if (index < 0 || index >= (int)m_arTilingTextures.size())
        return;
    // Another entry of the same texture keeps it alive through the shared hold.
    std::vector<eShared<eTilingHold>> one{m_arTilingHolds[(size_t)index]};
    m_arTilingHolds.erase(m_arTilingHolds.begin() + index);
    m_arTilingTextures.erase(m_arTilingTextures.begin() + index);
    LetGo(one, m_bAutoReleaseTexture != 0);
}

void eRenderTiling::RemoveAllTilingTextures()
{
    LetGo(m_arTilingHolds, m_bAutoReleaseTexture != 0);
    m_arTilingTextures.clear();
}

unsigned char eRenderTiling::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                    eViewport* viewport)
{
    if (!m_pTexture || m_arTilingTextures.empty())
        return 0;
    for (eTexture* texture : m_arTilingTextures)
        if (texture)
            texture->CreateTexture();
    if (!m_bInitialized)
        Initialize(engine);
    eGlobeModel* model = engine ? engine->GetGlobeModel() : nullptr;
    std::vector<eTileSet*>* tileSets = model ? model->GetVisibleTileSets(camera) : nullptr;
    eCoordSys* coordSys = engine ? engine->GetCoordSys() : nullptr;
    if (!tileSets || !coordSys)
        return 1;
    eRect2D local;
    coordSys->MapToLogicalRect(m_rcTilingBounds, local);
    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    // An empty rectangle meets no tile, not even one whose corner it touches.
    if (local.IsEmpty())
        return 1;
    // The size is read again each round: a tile set may change the list while it draws.
    for (size_t i = 0; i < tileSets->size(); ++i)
    {
        eTileSet* tile = (*tileSets)[i];
        if (tile && tile->GetBounds().IsIntersect(local))
            tile->RenderTiling(engine, rs, camera, viewport, m_pTexture, tile->GetBounds(), &local,
                               pass, 1, nullptr, m_dShadingScale, m_dAlphaOpacity, m_pRasterGrid,
                               &m_arTilingTextures, m_nTilingLevel, &m_arTilingMixSpans);
    }
    return 1;
}

// The pass is set up only for the 3-D view; in any other mode it stays blank, and the report
// comes once, when the technique is made.
void eRenderTiling::CreateTechnique(eCamera* camera)
{
    eTechnique* technique = new eTechnique();
    ePass* pass = technique->CreatePass();
    m_pTechnique.Reset(technique);
    if (!camera || camera->GetDimensionMode() != eDM_3D)
    {
        Eassert("false", kSource, __LINE__);
        return;
    }
    pass->SetProgram("TilingTile");
    pass->SetLightModel(eLM_PHONG);
    pass->SetAutoMipMap(1);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(1);
    pass->SetDepthFunc(eCF_LESS_EQUAL);
    pass->SetDepthBiasSlopeScale(0.0f);
    pass->SetDepthBiasConstant(0.0f);
    pass->SetLightingEnabled(1);
    pass->SetAmbient(eVector4T<float>(0.05f, 0.05f, 0.05f, 1.0f));
    pass->SetDiffuse(eVector4T<float>(0.9f, 0.9f, 0.9f, 1.0f));
    pass->SetSpecular(eVector4T<float>(0.05f, 0.05f, 0.05f, 1.0f));
    pass->SetShininess(12.0f);
}

unsigned char eRenderTiling::UpdateRenderQueue(eRenderEngine*, eCamera* camera, eViewport*,
                                               eRenderQueue* queue)
{
    if (!m_pTechnique)
        CreateTechnique(camera);
    if (!m_pTechnique)
        return 1;
    if (ePass* pass = m_pTechnique->GetPass(0))
    {
        if (m_bEnableTransparent)
            pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
        else
            pass->SetBlendingFunc(eBF_ONE, eBF_ZERO);
    }
    if (queue)
        queue->GetQueueGroup(kQueueGroup)->AddSolidTextureRenderable(m_pTechnique, this);
    return 1;
}

} // namespace KYR
