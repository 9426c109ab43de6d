// Weighted, order-independent transparency: translucent draws add their weighted colours into
// one target and multiply their remaining transmittance into another, so the sum and the
// product come out the same in any draw order; a full-screen pass then divides the colour
// sum by its weight and lays it over what shows through.
#pragma once
#include "eBlendingStrategy.h"
#include "eShared.h"
#include "eVector3.h"

namespace KYR
{

class eWOITStrategy : public eBlendingStrategy
{
public:
    eWOITStrategy();
    // Copies share the targets, the quad and their frame buffer; the last holder deletes them.
    eWOITStrategy(eWOITStrategy const&) = default;
    eWOITStrategy& operator=(eWOITStrategy const&) = default;
    // Deletes nothing by itself: Destroy drops the objects, and the last holder of each
    // deletes it.
    ~eWOITStrategy() override;

    // Two rectangle textures of m_nWidth by m_nHeight (RGBA16F colour sums, R8
    // transmittance) on one frame buffer, and the full-screen quad. Repeatable: what an
    // earlier Create made goes first. The frame buffer bound before stays bound.
    void Create() override;
    void Destroy() override;
    void Update() override;
    void Reset() override;
    int GetFlags() override;
    void SetCamera(eCamera* camera) override;
    void SetSize(int width, int height) override;
    void GetSize(int& width, int& height) override;
    // Binds the targets, clears the colour sums to 0 and the transmittance to 1, and sets
    // additive blending on the first and multiplicative on the second; the draws that
    // follow fill them with `program`, which takes "uDepthScale".
    void Begin(eRenderProgram* program) override;
    // Draws the quad with blending and depth test off into the frame buffer in force, the
    // targets on units 0 ("ColorTex0") and 1 ("ColorTex1") and "uBackgroundColor" set. The
    // caller has bound its own frame buffer again before.
    void Composite(eRenderProgram* program) override;

protected:
    eCamera* m_pCamera;
    int m_nWidth;
    int m_nHeight;
    eSharedName m_nQuadArray;
    eSharedName m_nQuadBuffer;
    float m_fDepthScale;
    eSharedName m_nAccumTexture;
    eSharedName m_nRevealTexture;
    eSharedName m_nFrameBuffer;
    eVector3T<float> m_vBackground;

private:
    void CreateTarget(eSharedName& texture, unsigned int name, int internalFormat,
                      unsigned int format);
    void CreateQuad();
    void BindTarget(eRenderProgram* program, char const* sampler, int unit, unsigned int texture);

    // A missing sampler is told once, not in every frame.
    bool m_bReported;
};

} // namespace KYR
