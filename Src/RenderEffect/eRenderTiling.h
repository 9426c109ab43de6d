// Terrain classified by a raster of values: at each place of the terrain tiles one of a list
// of repeating textures shows, chosen by the raster's value there, and values between two
// spans mix the two neighbouring textures. The raster becomes a normalised float texture, and
// each tile set in view draws itself with it and the textures through the "TilingTile"
// program; the effect owns no geometry.
#pragma once
#include "eRect.h"
#include "eRenderShading.h"
#include "eShared.h"
#include <vector>

namespace KYR
{

class eTechnique;
class eTexture;

class eRenderTiling : public eRenderShading
{
public:
    // Kinds of tiling; the object only stores the value.
    enum TilingType
    {
        eTT_DEFAULT = 0,
    };

    // Takes ownership of the block.
    explicit eRenderTiling(eRasterBlock* block = nullptr);
    // Copies share the block, the raster texture, the technique and the tiling textures; the
    // last holder frees each.
    eRenderTiling(eRenderTiling const&) = default;
    eRenderTiling& operator=(eRenderTiling const&) = default;
    ~eRenderTiling() override;

    Type GetType() override;
    // Makes the normalised raster texture from the block; false without a block.
    unsigned char Create(eCamera*, double, eCanvas*) override;
    unsigned char Initialize(eRenderEngine*) override;
    // Removes every tiling texture and drops the raster texture.
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Reset(eRenderEngine*) override { return 1; }
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override { return 1; }
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    // Whether the object deletes the tiling textures it lets go of (set by default). A
    // texture handed over while it is set is freed by the last holder to let go of it.
    void SetAutoReleaseTexture(unsigned char release);
    unsigned char GetAutoReleaseTexture() const { return m_bAutoReleaseTexture; }
    void SetTilingType(TilingType type) { m_eTilingType = type; }
    TilingType GetTilingType() const { return m_eTilingType; }
    // Opacity of the drawn tiles (with transparency enabled).
    void SetAlphaOpacity(double opacity) { m_dAlphaOpacity = opacity; }
    double GetAlphaOpacity() { return m_dAlphaOpacity; }
    // Blending for the tiles; read on every frame.
    void SetEnableTransparent(unsigned char enable) { m_bEnableTransparent = enable; }
    unsigned char IsEnableTransparent() const { return m_bEnableTransparent; }
    // The tile level at which a tiling texture repeats once per tile.
    void SetTilingLevel(int level) { m_nTilingLevel = level; }
    int GetTilingLevel() const { return m_nTilingLevel; }
    // Map rectangle the raster covers; left empty, nothing is drawn.
    void SetTilingBounds(eRect2D const& bounds) { m_rcTilingBounds = bounds; }
    eRect2D GetTilingBounds() const { return m_rcTilingBounds; }
    // Two values (normalised 0..1, rising) per tiling texture: the span over which it shows
    // alone. Between one texture's span and the next the two mix linearly; below the first
    // span the first texture shows, above the last the last. Without two values for every
    // texture, the textures share 0..1 in equal parts with hard edges.
    void SetTilingMixSpans(std::vector<float> const& spans) { m_arTilingMixSpans = spans; }
    std::vector<float> const& GetTilingMixSpans() const { return m_arTilingMixSpans; }

    // The list as a whole. Textures no longer in it go back to the caller.
    void SetTilingTextures(std::vector<eTexture*>& textures);
    std::vector<eTexture*> const& GetTilingTextures() const { return m_arTilingTextures; }
    // Appends; null entries are kept and skipped when drawing.
    void AddTilingTexture(eTexture const* texture);
    // Null outside the list.
    eTexture* GetTilingTexture(int index) const;
    int GetTilingTextureCount() const { return (int)m_arTilingTextures.size(); }
    // Removes one entry (an index outside the list does nothing), releasing its texture when
    // auto release is set.
    void RemoveTilingTextureAt(int index);
    void RemoveAllTilingTextures();

protected:
    unsigned char m_bInitialized;
    unsigned char m_bAutoReleaseTexture;
    eShared<eRasterBlock> m_pRasterBlock;
    eShared<eTexture> m_pTexture;
    TilingType m_eTilingType;
    double m_dAlphaOpacity;
    unsigned char m_bEnableTransparent;
    eShared<eTechnique> m_pTechnique;
    std::vector<eTexture*> m_arTilingTextures;
    int m_nTilingLevel;
    eRect2D m_rcTilingBounds;
    std::vector<float> m_arTilingMixSpans;

private:
    // One tiling texture as the copies of an object share it: the last holder deletes it
    // if it is to be released by then.
    struct eTilingHold
    {
        eTexture* m_pTexture = nullptr;
        bool m_bRelease = false;
        ~eTilingHold();
    };
    eShared<eTilingHold> HoldFor(eTexture* texture);
    void LetGo(std::vector<eShared<eTilingHold>>& holds, bool release);
    void CreateTechnique(eCamera* camera);

    // Parallel to m_arTilingTextures.
    std::vector<eShared<eTilingHold>> m_arTilingHolds;
};

} // namespace KYR
