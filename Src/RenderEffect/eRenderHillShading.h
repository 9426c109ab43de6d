// Hill shading: a raster of heights laid over the host's terrain tiles, coloured through a
// ramp and shaded by its slope. The effect owns no geometry; each tile set in view that
// touches the raster draws itself with the raster and the ramp.
#pragma once
#include "eColorTable.h"
#include "eMutex.h"
#include "eRenderShading.h"
#include <vector>

namespace KYR
{

class eTechnique;
class eTexture;

class eRenderHillShading : public eRenderShading
{
public:
    // Takes ownership of the block.
    explicit eRenderHillShading(eRasterBlock* block = nullptr);
    // Copies share the block, technique, textures, table, the queue of raster updates and the
    // lock that guards it: an update queued through any copy reaches the texture they share
    // once. The last holder of each frees it.
    eRenderHillShading(eRenderHillShading const&) = default;
    eRenderHillShading& operator=(eRenderHillShading const&) = default;
    ~eRenderHillShading() override;

    Type GetType() override;
    unsigned char Create(eCamera*, double, eCanvas*) override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Reset(eRenderEngine*) override { return 1; }
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override { return 1; }
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    // An empty table is made when there is none.
    eColorTable* GetColorTable();
    // Copies the table and rebuilds the one-pixel-wide ramp from it.
    void SetColorTable(eColorTable* table);
    // Queues a replacement raster; the queue owns info. Safe from any thread: the upload
    // happens in the next Render.
    void UpdateTexture(int x, int y, eTextureInfo* info);

protected:
    typedef std::vector<eTextureUpdate*> eTextureUpdates; // each record owns its info

    // Uploads and frees the queued rasters; the caller holds m_Mutex.
    void ApplyTextureUpdates();
    void ClearTextureUpdates();
    // An empty queue whose last holder frees the records left in it.
    static eShared<eTextureUpdates> NewTextureUpdates();

    unsigned char m_bInitialized;
    eShared<eRasterBlock> m_pRasterBlock;
    eShared<eTechnique> m_pTechnique;
    eRect2D m_rcBounds;
    eShared<eTexture> m_pTexture;
    eShared<eTextureUpdates> m_arTextureUpdates;
    eShared<eMutex> m_Mutex;
    eShared<eColorTable> m_pColorTable;
    eShared<eTexture> m_pColorTableTexture;
};

} // namespace KYR
