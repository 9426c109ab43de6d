// The globe's terrain tiles dressed with three whole-Earth pictures (a base image, a mask and
// a bump map) and a colour ramp, through the "SurfaceGlobe" program. The effect owns no
// geometry: each tile set in view draws itself with the pictures. Round globe (scene mode 1)
// only.
#pragma once
#include "eColorTable.h"
#include "eGlobeModel.h"
#include "eRenderable.h"
#include "eShared.h"
#include "eString.h"
#include <vector>

namespace KYR
{

class eTechnique;
class eTexture;

class eRenderSurfaceGlobe : public eRenderable
{
public:
    eRenderSurfaceGlobe();
    // Copies share the technique, the pictures, the grid, the table and the ramp; the last
    // holder frees each.
    eRenderSurfaceGlobe(eRenderSurfaceGlobe const&) = default;
    eRenderSurfaceGlobe& operator=(eRenderSurfaceGlobe const&) = default;
    ~eRenderSurfaceGlobe() override;

    Type GetType() override;
    // Loads the pictures and the ramp; succeeds only in scene mode 1 with all four made.
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    // Paths of the pictures, read at the next Initialize: the base image (colour), the mask
    // and the bump map (grey). Each covers the whole Earth.
    void SetBasePath(eString const& path) { m_strBasePath = path; }
    eString GetBasePath() const { return m_strBasePath; }
    void SetMaskPath(eString const& path) { m_strMaskPath = path; }
    void SetBumpPath(eString const& path) { m_strBumpPath = path; }
    // Packed colour (ERGBA) shown where the mask is set.
    void SetMaskColor(unsigned int color) { m_nMaskColor = color; }
    unsigned int GetMaskColor() const { return m_nMaskColor; }
    // Keeps a copy of the grid; null is ignored.
    void SetRasterGrid(eRasterGrid* grid);
    eRasterGrid* GetRasterGrid() { return m_pRasterGrid; }
    // Keeps a copy of the table; the ramp is made from it at the next Initialize. Nothing is
    // drawn until a table is set.
    void SetColorTable(eColorTable* table);
    eColorTable* GetColorTable() { return m_pColorTable; }

    // Rows of the ramp, whatever the table's size.
    static constexpr int kRampSize = 256;

protected:
    // The one-pass technique of the "SurfaceGlobe" program.
    eTechnique* CreateTechnique();
    // The picture at `depth` bits a pixel as a texture, uploaded at once; null when the file
    // cannot be read or decoded.
    eTexture* CreateTexture(eString const& path, int depth);
    // The table as a ramp one pixel wide and kRampSize rows, floor to ceiling; null without
    // a table.
    eTexture* CreateColorTable();

    unsigned char m_bInitialized;
    eShared<eTechnique> m_pTechnique;
    eString m_strBasePath;
    eShared<eTexture> m_pBaseTexture;
    eString m_strMaskPath;
    eShared<eTexture> m_pMaskTexture;
    eString m_strBumpPath;
    eShared<eTexture> m_pBumpTexture;
    // The mask and the bump map, in that order, for the tile draw; held by the members above.
    std::vector<eTexture*> m_arTextures;
    unsigned int m_nMaskColor;
    eShared<eRasterGrid> m_pRasterGrid;
    eShared<eColorTable> m_pColorTable;
    eShared<eTexture> m_pColorTableTexture;
};

} // namespace KYR
