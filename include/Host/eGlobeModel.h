// Tiles of the globe model: the sets of terrain tiles in view, and how effects have a tile
// draw itself with their textures.
#pragma once
#include "eEnums.h"
#include "eRaster.h"
#include "eRect.h"
#include "eVector3.h"
#include <map>
#include <vector>

namespace KYR
{

class eCamera;
class eCoordSys;
class eMesh;
class ePass;
class eRenderEngine;
class eRenderSystem;
class eTexture;
class eViewport;

// Tile key; the low 5 bits hold the level, then 25 bits of column and 25 bits of row.
struct eTileKey
{
    unsigned long long m_nKey = 0;
    int GetLevel() const { return (int)(m_nKey & 0x1F); }
    int GetColumn() const { return (int)((m_nKey >> 5) & 0x1FFFFFF); }
    int GetRow() const { return (int)((m_nKey >> 30) & 0x1FFFFFF); }
    static eTileKey Make(int level, int column, int row);
};

// One terrain tile: a grid over its logical rectangle, on the sphere in scene mode 1 and on
// the plane in mode 2. The draw operations lay a raster over the tile: `texture` holds the
// raster and `rect` says where it lies in logical coordinates. With `applyPass` set the tile
// applies `pass` itself through the engine's visitor. Each returns 1 when it drew.
class eTileSet
{
public:
    eTileSet();
    eTileSet(eTileKey key, eRect2D const& bounds, eSceneMode mode, eCoordSys* coordSys);
    virtual ~eTileSet();
    eTileSet(eTileSet const&) = delete;
    eTileSet& operator=(eTileSet const&) = delete;

    eRect2D GetBounds() { return m_rcBounds; }
    eTileKey& GetKey() { return m_Key; }

    // Raster value through the colour ramp, relief-shaded with `scale`.
    virtual unsigned char RenderShading(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*,
                                        eTexture* texture, eRect2D* rect, ePass* pass,
                                        unsigned char applyPass, eTexture* colorTable, double scale,
                                        void* reserved);
    // An image laid over the tile, the colour texture on the second unit.
    virtual unsigned char RenderImage(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*,
                                      eTexture* texture, eRect2D* rect, ePass* pass,
                                      unsigned char applyPass, eTexture* colorTable, double value,
                                      void* reserved);
    // Base image with mask and bump textures; filled by the surface globe's work.
    virtual unsigned char RenderSurface(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*,
                                        eTexture* texture, eRect2D* rect, ePass* pass,
                                        unsigned char applyPass, eTexture* colorTable, double value,
                                        eRasterGrid* grid, std::vector<eTexture*>* textures,
                                        unsigned int maskColor);
    // A whole-map picture with a mask and an opacity; filled by the grow wind's work.
    virtual unsigned char RenderGrowth(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*,
                                       eTexture* texture, eRect2D* rect, ePass* pass,
                                       unsigned char applyPass, eTexture* colorTable, double value,
                                       void* reserved, eTexture* mask, float opacity);
    // Repeating textures chosen by a raster; filled by the tiling's work.
    virtual unsigned char RenderTiling(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*,
                                       eTexture* texture, eRect2D const& tileBounds, eRect2D* rect,
                                       ePass* pass, unsigned char applyPass, eTexture* colorTable,
                                       double scale, double opacity, eRasterGrid* grid,
                                       std::vector<eTexture*>* textures, int level,
                                       std::vector<float>* mixSpans);

    // The terrain mesh, built on first use (needs the GL context).
    eMesh* GetMesh();
    eVector3T<double> const& GetCenter() const { return m_vCenter; }

    // Vertices along each side of the tile's grid.
    static constexpr int kGridSize = 33;

protected:
    // Applies the pass when asked, sets the matrices and the raster rectangle, binds
    // textures[i] on unit i, draws the mesh and unbinds. False without a program.
    unsigned char DrawMesh(eRenderEngine*, eRenderSystem*, eCamera*, ePass* pass,
                           unsigned char applyPass, eTexture* const* textures, int count,
                           eRect2D* rect, double scale);
    void BuildMesh();

    eRect2D m_rcBounds;
    eTileKey m_Key;
    eSceneMode m_eSceneMode;
    eCoordSys* m_pCoordSys;
    eVector3T<double> m_vCenter; // world position the mesh is relative to
    eMesh* m_pMesh;
};

// The tile quadtree of the host. Level 0 is one tile over the coordinate system's index
// square; each level splits every tile in four. The level in view follows the camera's
// resolution, and tiles are kept between frames.
class eGlobeModel
{
public:
    eGlobeModel();
    virtual ~eGlobeModel();
    eGlobeModel(eGlobeModel const&) = delete;
    eGlobeModel& operator=(eGlobeModel const&) = delete;

    // The tile sets in view of the camera; null without a camera or coordinate system.
    // The vector and the tiles stay the model's and are valid until the next call.
    virtual std::vector<eTileSet*>* GetVisibleTileSets(eCamera* camera);

    // Tile level for a resolution in metres per pixel (two levels coarser than the
    // resolution's own, so a tile spans about 1024 pixels), clamped to 1..kMaxTileLevel.
    int TileLevel(eCoordSys* coordSys, double resolution);

    static constexpr int kMaxTileLevel = 20;
    static constexpr int kMaxVisibleTiles = 64;

protected:
    // The tiles of a level meeting the logical rectangle; false when there are more than
    // kMaxVisibleTiles.
    bool CollectTiles(eCoordSys* coordSys, int level, eRect2D const& view);
    eTileSet* GetTile(eCoordSys* coordSys, int level, int column, int row);
    void ClearCache();

    std::vector<eTileSet*> m_arTileSets;
    std::map<unsigned long long, eTileSet*> m_mapTiles;
    eCoordSys* m_pCacheCoordSys;
    int m_nCacheMode;
    int m_nCacheProjection;
};

class eMap
{
public:
    explicit eMap(eGlobeModel* model = nullptr) : m_pGlobeModel(model) {}
    virtual ~eMap() {}
    eGlobeModel* GetGlobeModel() { return m_pGlobeModel; }
    void SetGlobeModel(eGlobeModel* model) { m_pGlobeModel = model; }

private:
    eGlobeModel* m_pGlobeModel;
};

} // namespace KYR
