// A background colour over the whole Earth with an opening cut through a mask picture, for
// setting one region off against the rest. One small patch of 36 x 36 vertices is drawn
// fifty times, placed by a uniform over a fixed list of rectangles that tile the world, so
// the curved cover needs no mesh of the whole sphere.
#pragma once
#include "eRect.h"
#include "eRenderObject.h"
#include "eShared.h"
#include "eString.h"
#include "eVector4.h"
#include <vector>

namespace KYR
{

class eMaterial;
class eMesh;
class eTexture;

class eRenderGlobeMask : public eRenderObject
{
public:
    // Program-specific uniform roles of "GlobeMask", as indices into
    // eShaderUniform::m_nCustom, in the order of the program's role line.
    enum eRole
    {
        eR_PROJECTION_KIND = 0, // int: 0 globe, then the plane projections
        eR_MASK_RECT = 1,       // where the mask picture lies: left, top, width, height
        eR_BACKGROUND = 2,      // the background colour, 0..1
        eR_BLOCK_RECT = 3,      // the rectangle the patch covers in this draw
    };

    // Vertices along each side of the patch.
    static constexpr int kPatchSide = 36;

    eRenderGlobeMask();
    // Copies share the patch, the material and the mask picture; the last holder frees each.
    eRenderGlobeMask(eRenderGlobeMask const&) = default;
    eRenderGlobeMask& operator=(eRenderGlobeMask const&) = default;
    ~eRenderGlobeMask() override = default;

    // As the render object's, then uploads the mask picture (at every call).
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    // Replaces the mask picture; `bound` is where it lies, in geographic degrees. White (red
    // times alpha) in the picture opens the cover. A file that cannot be read leaves no
    // picture, and the background covers everything.
    void SetMaskTexture(eString path, eRect2D bound);
    void SetBackgroundColor(eVector4T<unsigned char> color);

    std::vector<eRect2D> const& GetBlocks() const { return m_arBlocks; }
    eRect2D GetMaskBound() const { return m_rcMaskBound; }

protected:
    eShared<eTexture> m_pMaskTexture;
    eRect2D m_rcMaskBound;
    std::vector<eRect2D> m_arBlocks;
    eRect2D m_rcWorld;
    eVector4T<unsigned char> m_BackgroundColor;

private:
    void BuildBlocks();
    static eMesh* BuildPatch();
    static eMaterial* BuildMaterial();
};

} // namespace KYR
