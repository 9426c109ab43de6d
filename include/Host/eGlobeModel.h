// Tiles of the globe model: the sets of terrain tiles in view, and how effects have a tile
// draw itself with their textures.
#pragma once
#include "eEnums.h"
#include "eRaster.h"
#include "eRect.h"
#include "eString.h"
#include "eVector3.h"
#include <map>
#include <memory>
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
class eProgram;
namespace Host
{
class eGlobeRelief;
}

// Tile key; the low 5 bits hold the level, then 25 bits of column and 25 bits of row.
struct eTileKey
{
    unsigned long long m_nKey = 0;
    int GetLevel() const { return (int)(m_nKey & 0x1F); }
    int GetColumn() const { return (int)((m_nKey >> 5) & 0x1FFFFFF); }
    int GetRow() const { return (int)((m_nKey >> 30) & 0x1FFFFFF); }
    static eTileKey Make(int level, int column, int row);
};

// One terrain tile over its logical rectangle. On the plane (scene mode 2) it is a grid on
// z = 0. On the globe (scene mode 1) it lies on the relief the "Globe" program draws (see
// eGlobeModel::SetElevationPicture): the globe mesh's flat triangles cut to the tile's
// rectangle, so an overlay drawn through the tile covers land and sea alike.
//
// The draw operations lay rasters over the tile with the pass they are given: `texture`
// goes on unit 0 and lies over `rect` (logical coordinates), the colour table on unit 1,
// and each operation's further textures on the units after them. With `applyPass` set the
// tile applies `pass` through the engine's visitor around its draw, and returns to the
// host's defaults after it. Every draw pulls the tile a little towards the eye with a
// polygon offset, so that it wins the depth test against the globe it lies on. Each
// returns 1 when it drew, 0 without a usable program or mesh. Uniforms and units of each
// draw: Src/Host/Shaders/README.md, "Programs drawn by the terrain tiles".
class eTileSet
{
public:
    eTileSet();
    // `relief` (not owned; null for the bare globe mesh) shapes the tile on the globe.
    eTileSet(eTileKey key, eRect2D const& bounds, eSceneMode mode, eCoordSys* coordSys,
             Host::eGlobeRelief const* relief = nullptr);
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
    // An image laid over the tile, optionally read through a colour table.
    virtual unsigned char RenderImage(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*,
                                      eTexture* texture, eRect2D* rect, ePass* pass,
                                      unsigned char applyPass, eTexture* colorTable, double value,
                                      void* reserved);
    // A base image with the pictures of `textures` (units 2 upward: mask and bump for the
    // surface globe), the raster grid and a mask colour (ERGBA).
    virtual unsigned char RenderSurface(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*,
                                        eTexture* texture, eRect2D* rect, ePass* pass,
                                        unsigned char applyPass, eTexture* colorTable, double value,
                                        eRasterGrid* grid, std::vector<eTexture*>* textures,
                                        unsigned int maskColor);
    // A whole-map picture through a mask (unit 2) with an opacity.
    virtual unsigned char RenderGrowth(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*,
                                       eTexture* texture, eRect2D* rect, ePass* pass,
                                       unsigned char applyPass, eTexture* colorTable, double value,
                                       void* reserved, eTexture* mask, double opacity);
    // Repeating textures (units 2 upward, any number the units allow) chosen by the raster,
    // repeated once per tile of `level`, mixed over the spans of `mixSpans`.
    virtual unsigned char RenderTiling(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*,
                                       eTexture* texture, eRect2D const& tileBounds, eRect2D* rect,
                                       ePass* pass, unsigned char applyPass, eTexture* colorTable,
                                       double scale, double opacity, eRasterGrid* grid,
                                       std::vector<eTexture*>* textures, int level,
                                       std::vector<float>* mixSpans);

    // The terrain mesh, built on first use (needs the GL context). Vertex: position relative
    // to GetCenter (float 3, attribute 0), surface normal (float 3, attribute 1), logical
    // point (float 2, attribute 7).
    eMesh* GetMesh();
    eVector3T<double> const& GetCenter() const { return m_vCenter; }

    // Vertices along each side of a tile's grid on the plane.
    static constexpr int kGridSize = 33;
    // Units before a draw's own further textures: the raster (0) and the colour table (1).
    static constexpr int kFirstExtraUnit = 2;

protected:
    // One texture unit of a draw: the texture (null leaves the unit empty) and the name of
    // the sampler uniform that is set to the unit.
    struct eUnit
    {
        eTexture* texture;
        char const* sampler;
        int element; // index into a sampler array, -1 for a plain sampler
    };
    // Settings of one draw beyond the matrices and the pass's material. The flags say which
    // optional uniforms the draw sends.
    struct eDrawSettings
    {
        eRect2D* rect = nullptr;
        eRect2D tileBounds;
        double scale = 0.0;
        std::vector<eUnit> units; // unit i = units[i]
        bool hasOpacity = false;
        double opacity = 1.0;
        bool hasMask = false;        // the mask on unit 2
        bool hasTextureList = false; // a list of textures from kFirstExtraUnit on
        int extraTextures = 0;
        bool hasGrid = false;
        eRasterGrid* grid = nullptr;
        bool hasMaskColor = false;
        unsigned int maskColor = 0;
        bool hasTiling = false;
        int tilingLevel = 0;
        std::vector<float> const* mixSpans = nullptr;
    };
    static void AddTextureList(eDrawSettings& draw, std::vector<eTexture*> const* textures);
    // Applies the pass when asked, sets the uniforms and units of `draw`, draws the mesh and
    // unbinds. False without a program or a mesh.
    unsigned char DrawMesh(eRenderEngine*, eRenderSystem*, eCamera*, ePass* pass,
                           unsigned char applyPass, eDrawSettings const& draw);
    void SendDrawUniforms(eProgram* program, eDrawSettings const& draw);
    void BuildMesh();
    void BuildGlobeMesh();
    void BuildPlaneMesh();

    eRect2D m_rcBounds;
    eTileKey m_Key;
    eSceneMode m_eSceneMode;
    eCoordSys* m_pCoordSys;
    Host::eGlobeRelief const* m_pRelief;
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

    // The relief the tiles follow on the globe. It must be the relief the "Globe" program
    // draws, so that overlays lie on it and stay visible over land: the same elevation
    // picture and the same height mapping as the globe effect in the scene. The default is
    // the globe effect's own default, the work path's "Resources/Icons/elev_bump_4k.jpg" with
    // base 5000000 and scale 1000; an empty path gives the globe mesh without relief (for a
    // globe drawn without one). The picture is read on the next GetVisibleTileSets; a
    // change drops the tiles made so far.
    void SetElevationPicture(eString const& path);
    // The path in use: the default until one is set.
    eString GetElevationPicture() const;
    void SetHeightMapping(double base, double scale);
    // The relief as the tiles use it, read first if it changed.
    Host::eGlobeRelief const& GetRelief();

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
    std::unique_ptr<Host::eGlobeRelief> m_pRelief;
    eString m_strElevationPicture;
    bool m_bDefaultElevationPicture;
    bool m_bReliefDirty;
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
