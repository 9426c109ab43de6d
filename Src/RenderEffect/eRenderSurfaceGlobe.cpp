#include "eRenderSurfaceGlobe.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eFile.h"
#include "eMaterial.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderQueueVisitor.h"
#include "eTexture.h"
#include <epoxy/gl.h>

namespace KYR
{

namespace
{

unsigned int const kQueueGroup = 6;
int const kBaseDepth = 24;
int const kGreyDepth = 8;
double const kRampStep = 1.0 / eRenderSurfaceGlobe::kRampSize; // 0.00390625

void SetClampLinear(eTexture* t)
{
    t->SetTextureWrapS(GL_CLAMP_TO_EDGE);
    t->SetTextureWrapT(GL_CLAMP_TO_EDGE);
    t->SetTextureMinFilter(GL_LINEAR);
    t->SetTextureMagFilter(GL_LINEAR);
}

} // namespace

eRenderSurfaceGlobe::eRenderSurfaceGlobe() : m_bInitialized(0), m_nMaskColor(ERGBA(0, 0, 255, 255))
{
}

// Everything held goes with its last holder.
eRenderSurfaceGlobe::~eRenderSurfaceGlobe() {}

eRenderable::Type eRenderSurfaceGlobe::GetType()
{
    return eRT_SURFACE_GLOBE;
}

void eRenderSurfaceGlobe::SetRasterGrid(eRasterGrid* grid)
{
    if (!grid)
        return;
    if (!m_pRasterGrid)
        m_pRasterGrid.Reset(new eRasterGrid());
    *m_pRasterGrid = *grid;
}

void eRenderSurfaceGlobe::SetColorTable(eColorTable* table)
{
    if (!table)
        return;
    if (!m_pColorTable)
        m_pColorTable.Reset(new eColorTable());
    *m_pColorTable = *table;
}

eTexture* eRenderSurfaceGlobe::CreateTexture(eString const& path, int depth)
{
    eFileStream stream;
    if (!stream.Open(path.Cstr(), 2, 8192))
        return nullptr;
    eByteArray bytes;
    unsigned char read = stream.LoadByteArray(bytes);
    stream.Close();
    eImageData* image = read ? eFileParserToolkit::LoadImageData(bytes, depth) : nullptr;
    if (!image)
        return nullptr;
    eTexture* texture = new eTexture();
    texture->SetAutoRelease(1);
    texture->SetAutoMipMap(1);
    texture->SetImageData(image);
    SetClampLinear(texture);
    texture->CreateTexture();
    return texture;
}

eTexture* eRenderSurfaceGlobe::CreateColorTable()
{
    if (!m_pColorTable)
        return nullptr;
    eImageData* image = new eImageData();
    image->Allocate(1, kRampSize, 32);
    double const floor = m_pColorTable->GetFloor(), ceiling = m_pColorTable->GetCeiling();
    for (int i = 0; i < kRampSize && image->m_pData; ++i)
    {
        int rgba = (int)m_pColorTable->GetColor(floor + i * (ceiling - floor) * kRampStep);
        unsigned char* px = image->m_pData + (size_t)i * (size_t)image->m_nPitch;
        px[0] = EREDVAL(rgba);
        px[1] = EGREENVAL(rgba);
        px[2] = EBLUEVAL(rgba);
        px[3] = EALPHAVAL(rgba);
    }
    eTexture* texture = new eTexture();
    texture->SetAutoRelease(1);
    texture->SetImageData(image);
    SetClampLinear(texture);
    return texture;
}

unsigned char eRenderSurfaceGlobe::Initialize(eRenderEngine* engine)
{
    eCamera* camera = engine ? engine->GetCamera() : nullptr;
    if (m_bInitialized || !camera || camera->GetSceneMode() != eSM_GLOBE)
        return m_bInitialized;
    // A missing piece leaves the others in place; the next frame loads all four again.
    m_pBaseTexture.Reset(CreateTexture(m_strBasePath, kBaseDepth));
    m_pMaskTexture.Reset(CreateTexture(m_strMaskPath, kGreyDepth));
    m_pBumpTexture.Reset(CreateTexture(m_strBumpPath, kGreyDepth));
    m_pColorTableTexture.Reset(CreateColorTable());
    if (m_pBaseTexture && m_pMaskTexture && m_pBumpTexture && m_pColorTableTexture)
    {
        m_arTextures.push_back(m_pMaskTexture);
        m_arTextures.push_back(m_pBumpTexture);
        m_bInitialized = 1;
    }
    return m_bInitialized;
}

// The list for the tile draw goes with the pictures it points at, so that a second
// Initialize starts it afresh.
unsigned char eRenderSurfaceGlobe::UnInitialize(eRenderEngine*)
{
    m_pBaseTexture.Reset();
    m_pMaskTexture.Reset();
    m_pBumpTexture.Reset();
    m_arTextures.clear();
    m_bInitialized = 0;
    return 1;
}

eTechnique* eRenderSurfaceGlobe::CreateTechnique()
{
    eTechnique* technique = new eTechnique();
    ePass* pass = technique->CreatePass();
    pass->SetProgram("SurfaceGlobe");
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(1);
    pass->SetDepthFunc(eCF_LESS_EQUAL);
    pass->SetDepthBiasSlopeScale(0.0f);
    pass->SetDepthBiasConstant(0.0f);
    pass->SetLightingEnabled(1);
    pass->SetAmbient(eVector4T<float>(0.5f, 0.5f, 0.5f, 1.0f));
    pass->SetDiffuse(eVector4T<float>(0.6f, 0.6f, 0.6f, 1.0f));
    pass->SetSpecular(eVector4T<float>(0.3f, 0.3f, 0.3f, 1.0f));
    pass->SetShininess(10.0f);
    return technique;
}

unsigned char eRenderSurfaceGlobe::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                     eRenderQueue* queue)
{
    if (!m_pTechnique)
        m_pTechnique.Reset(CreateTechnique());
    if (queue)
        queue->GetQueueGroup(kQueueGroup)->AddSolidTextureRenderable(m_pTechnique, this);
    return 1;
}

unsigned char eRenderSurfaceGlobe::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
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
    // The pictures cover the whole world: its map extent, as logical coordinates.
    eRect2D world = coordSys->GetBounds();
    eRect2D local;
    coordSys->MapToLogicalRect(world, local);
    // The size is read again each round: a tile set may change the list while it draws.
    for (size_t i = 0; i < tileSets->size(); ++i)
    {
        eTileSet* tile = (*tileSets)[i];
        if (tile && tile->GetBounds().IsIntersect(local))
            tile->RenderSurface(engine, rs, camera, viewport, m_pBaseTexture, &local, pass, 1,
                                m_pColorTableTexture, 0.0, m_pRasterGrid, &m_arTextures,
                                m_nMaskColor);
    }
    visitor->EndPass();
    return 1;
}

} // namespace KYR
