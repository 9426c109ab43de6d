#include "eRenderHillShading.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eMaterial.h"
#include "eNormalisedRaster.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eTexture.h"
#include <epoxy/gl.h>

namespace KYR
{

namespace
{

int const kAlpha16F = 0x881C; // GL_ALPHA16F_ARB

void SetClampLinear(eTexture* t)
{
    t->SetTextureWrapS(GL_CLAMP_TO_EDGE);
    t->SetTextureWrapT(GL_CLAMP_TO_EDGE);
    t->SetTextureMinFilter(GL_LINEAR);
    t->SetTextureMagFilter(GL_LINEAR);
}

// Upload formats of a queued raster: internal format and type; false for other formats.
bool UpdateFormat(int format, GLint& internal, GLenum& type)
{
    switch (format)
    {
    case ePF_UBYTE:
        internal = GL_ALPHA;
        type = GL_UNSIGNED_BYTE;
        return true;
    case ePF_SHORT:
    case ePF_USHORT:
        internal = GL_ALPHA;
        type = GL_UNSIGNED_SHORT;
        return true;
    case ePF_FLOAT:
        internal = kAlpha16F;
        type = GL_FLOAT;
        return true;
    default:
        return false;
    }
}

// Frees the queued records with their rasters and empties the queue.
void DeleteRecords(std::vector<eTextureUpdate*>& updates)
{
    for (eTextureUpdate* update : updates)
    {
        delete update->m_pInfo;
        delete update;
    }
    updates.clear();
}

} // namespace

eRenderHillShading::eRenderHillShading(eRasterBlock* block)
    : m_bInitialized(0), m_pRasterBlock(block), m_arTextureUpdates(NewTextureUpdates()),
      m_Mutex(new eMutex(1))
{
    m_rcBounds.SetEmpty();
    m_dShadingScale = 10000000.0;
}

eShared<eRenderHillShading::eTextureUpdates> eRenderHillShading::NewTextureUpdates()
{
    return eShared<eTextureUpdates>(new eTextureUpdates(),
                                    [](eTextureUpdates* updates)
                                    {
                                        DeleteRecords(*updates);
                                        delete updates;
                                    });
}

// Textures left by a missing UnInitialize, the queue and the owned colour table go too, each
// with its last holder, so that nothing the effect made outlives it and its copies. Letting
// go of the queue takes no lock: while another copy may still queue into it, this is not its
// last holder.
eRenderHillShading::~eRenderHillShading()
{
    m_pTechnique.Reset();
    m_pRasterBlock.Reset();
    m_arTextureUpdates.Reset();
    m_pTexture.Reset();
    m_pColorTableTexture.Reset();
    m_pColorTable.Reset();
}

eRenderable::Type eRenderHillShading::GetType()
{
    return eRT_HILL_SHADING;
}

unsigned char eRenderHillShading::Create(eCamera*, double, eCanvas*)
{
    if (!m_pRasterBlock)
        return 0;
    eColorTable table;
    table.SetCeiling(m_pRasterBlock->m_dMaximum);
    table.SetFloor(m_pRasterBlock->m_dMinimum);
    table.CreateStockGradient(256, (tagKYR_ENUM_STOCK_GRADIENT_SET_STYLE)25, 0);
    SetColorTable(&table);
    m_rcBounds = m_pRasterBlock->m_rcBounds;

    eTextureInfo* info = eNormalisedRaster::Create(*m_pRasterBlock);
    m_pTexture.Reset(); // a second Create replaces the raster texture (a copy may keep it)
    m_pTexture.Reset(new eTexture());
    m_pTexture->SetAutoRelease(1);
    m_pTexture->SetTextureInfo(info);
    m_pTexture->SetAutoMipMap(1);
    SetClampLinear(m_pTexture);
    return 1;
}

eColorTable* eRenderHillShading::GetColorTable()
{
    if (!m_pColorTable)
        m_pColorTable.Reset(new eColorTable());
    return m_pColorTable;
}

void eRenderHillShading::SetColorTable(eColorTable* table)
{
    if (!table)
        return;
    if (!m_pColorTable)
        m_pColorTable.Reset(new eColorTable());
    *m_pColorTable = *table;

    int n = m_pColorTable->GetSize();
    eImageData* image = new eImageData();
    image->m_nBitsPerPixel = 32;
    image->m_nWidth = 1;
    image->m_nHeight = n;
    image->m_nPitch = (32 * 1) / 8;
    image->m_pData = n > 0 ? new unsigned char[(size_t)image->m_nPitch * (size_t)n]() : nullptr;
    double c = m_pColorTable->GetCeiling(), f = m_pColorTable->GetFloor();
    for (int i = 0; i < n; ++i)
    {
        // The last pixel is one step below the ceiling.
        unsigned int rgba = m_pColorTable->GetColor(m_pColorTable->GetFloor() + i * ((c - f) / n));
        unsigned char* px = image->m_pData + (size_t)i * (size_t)image->m_nPitch;
        px[0] = EREDVAL((int)rgba);
        px[1] = EGREENVAL((int)rgba);
        px[2] = EBLUEVAL((int)rgba);
        px[3] = EALPHAVAL((int)rgba);
    }
    if (!m_pColorTableTexture)
    {
        m_pColorTableTexture.Reset(new eTexture());
        m_pColorTableTexture->SetAutoRelease(1);
    }
    else if (eImageData* old = m_pColorTableTexture->GetImageData())
    {
        delete[] old->m_pData;
        old->m_pData = nullptr;
        delete old;
    }
    m_pColorTableTexture->SetImageData(image);
    SetClampLinear(m_pColorTableTexture);
}

unsigned char eRenderHillShading::Initialize(eRenderEngine*)
{
    if (!m_bInitialized)
    {
        if (m_pColorTableTexture)
            m_pColorTableTexture->CreateTexture();
        if (m_pTexture)
            m_pTexture->CreateTexture();
        m_bInitialized = 1;
    }
    return m_bInitialized;
}

// The queue goes with the texture: this object lets go of both and starts an empty queue,
// while copies that still hold the texture keep the updates meant for it. Alone, the queue
// is emptied and freed here.
unsigned char eRenderHillShading::UnInitialize(eRenderEngine*)
{
    {
        eMutexGuard guard(m_Mutex);
        m_arTextureUpdates = NewTextureUpdates();
    }
    m_pTexture.Reset();
    m_pColorTableTexture.Reset();
    m_bInitialized = 0;
    return 1;
}

void eRenderHillShading::UpdateTexture(int x, int y, eTextureInfo* info)
{
    eTextureUpdate* update = new eTextureUpdate();
    update->m_nX = x;
    update->m_nY = y;
    update->m_pInfo = info;
    eMutexGuard guard(m_Mutex);
    m_arTextureUpdates->push_back(update);
}

void eRenderHillShading::ClearTextureUpdates()
{
    DeleteRecords(*m_arTextureUpdates);
}

void eRenderHillShading::ApplyTextureUpdates()
{
    for (eTextureUpdate* update : *m_arTextureUpdates)
    {
        eTextureInfo* info = update->m_pInfo;
        GLint internal = 0;
        GLenum type = 0;
        if (info && info->m_pData && m_pTexture &&
            UpdateFormat(info->m_nPixelFormat, internal, type))
        {
            glBindTexture(GL_TEXTURE_2D, m_pTexture->GetTextureID());
            GLint alignment = 4;
            glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
            glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
            glTexImage2D(GL_TEXTURE_2D, 0, internal, info->m_nWidth, info->m_nHeight, 0, GL_ALPHA,
                         type, info->m_pData);
            glPixelStorei(GL_UNPACK_ALIGNMENT, alignment);
        }
    }
    ClearTextureUpdates();
}

unsigned char eRenderHillShading::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                         eViewport* viewport)
{
    if (!m_pTexture)
        return 0;
    if (!m_bInitialized)
        Initialize(engine);
    {
        eMutexGuard guard(m_Mutex);
        ApplyTextureUpdates();
    }
    eGlobeModel* model = engine ? engine->GetGlobeModel() : nullptr;
    std::vector<eTileSet*>* tileSets = model ? model->GetVisibleTileSets(camera) : nullptr;
    eCoordSys* coordSys = engine ? engine->GetCoordSys() : nullptr;
    if (!tileSets || !coordSys)
        return 1;
    eRect2D local;
    coordSys->MapToLogicalRect(m_rcBounds, local);
    for (size_t i = 0; i < tileSets->size(); ++i)
    {
        eTileSet* tile = (*tileSets)[i];
        if (!tile || !tile->GetBounds().IsIntersect(local) || !m_pColorTableTexture)
            continue;
        ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
        tile->RenderShading(engine, rs, camera, viewport, m_pTexture, &local, pass, 1,
                            m_pColorTableTexture, m_dShadingScale, nullptr);
    }
    return 1;
}

unsigned char eRenderHillShading::UpdateRenderQueue(eRenderEngine*, eCamera* camera, eViewport*,
                                                    eRenderQueue* queue)
{
    if (!m_pTechnique)
    {
        m_pTechnique.Reset(new eTechnique());
        ePass* pass = m_pTechnique->CreatePass();
        if (camera && camera->GetDimensionMode() == 1)
        {
            pass->SetProgram("ShadingTile");
            pass->SetLightModel((eLightModel)4);
            pass->SetAutoMipMap(1);
            pass->SetDepthCheckEnabled(1);
            pass->SetDepthWriteEnabled(1);
            pass->SetDepthFunc(eCF_LESS_EQUAL);
            pass->SetDepthBiasSlopeScale(0.0f);
            pass->SetDepthBiasConstant(0.0f);
            pass->SetLightingEnabled(0);
            pass->SetAmbient(eVector4T<float>(0.05f, 0.05f, 0.05f, 1.0f));
            pass->SetDiffuse(eVector4T<float>(0.9f, 0.9f, 0.9f, 1.0f));
            pass->SetSpecular(eVector4T<float>(0.05f, 0.05f, 0.05f, 1.0f));
            pass->SetShininess(12.0f);
        }
        else
            Eassert("false", "Src/RenderEffect/eRenderHillShading", 300);
    }
    if (m_pTechnique && queue)
        queue->GetQueueGroup(6)->AddSolidTextureRenderable(m_pTechnique, this);
    return 1;
}

} // namespace KYR
