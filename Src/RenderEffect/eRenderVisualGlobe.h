// The simpler second globe: a fixed relief sphere built once on the processor, 0.9 degrees a
// cell, with its heights and normals baked into one vertex buffer in world coordinates. It is
// drawn from that buffer with raw GL calls through the "VisualGlobe" program and lit by the
// sun, so a frame costs one draw and no per-vertex work on the processor.
#pragma once
#include "eRenderable.h"
#include "eShared.h"
#include "eString.h"

namespace KYR
{

class eTechnique;
class eTexture;
class eVertexData;
class eIndexExData;
class eRenderProgram;
class eImageData;

class eRenderVisualGlobe : public eRenderable
{
public:
    // Program-specific uniform roles of "VisualGlobe", as indices into
    // eShaderUniform::m_nCustom, in the order of the program's role line.
    enum eRole
    {
        eR_SUN_DIRECTION = 0, // unit vector towards the sun, world axes
    };

    // The mesh: 401 columns by 201 rows of vertices, 0.9 degrees apart.
    static constexpr int kColumns = 401;
    static constexpr int kRows = 201;
    static constexpr int kVertexCount = kColumns * kRows;                // 80,601
    static constexpr int kIndexCount = (kColumns - 1) * (kRows - 1) * 6; // 480,000
    static constexpr double kCellDegrees = 0.9;
    // Metres per height step of the bump picture, and the sphere the steps stand on: the
    // Earth's radius plus 255 steps.
    static constexpr double kHeightStep = 1000.0;
    static constexpr double kSphereRadius = 6633137.0;

    eRenderVisualGlobe();
    // Copies share the technique, both textures and both buffers; the last holder frees each.
    eRenderVisualGlobe(eRenderVisualGlobe const&) = default;
    eRenderVisualGlobe& operator=(eRenderVisualGlobe const&) = default;
    ~eRenderVisualGlobe() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Reset(eRenderEngine*) override { return 1; }
    unsigned char Create(eCamera*, double, eCanvas*) override;
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override { return 1; }
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    virtual unsigned char RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*);
    // Sets the world matrix of `program` to the translation by minus the reference centre.
    virtual unsigned char UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera*,
                                        eRenderProgram* program);

    // The stores, for the host and for tests; null before Initialize.
    eVertexData* GetVertexData() const { return m_pVertexData; }
    eIndexExData* GetIndexData() const { return m_pIndexData; }

protected:
    void CreateGlobeBuffers();
    void DestroyGlobeBuffers();
    void ComputeVertexNormals();
    void CreateGlobeTechnique();
    // A texture of the picture at 32 bits, uploaded at once; null when the file cannot be
    // read. It keeps no copy of the pixels.
    eTexture* LoadTexture(eString const& path);
    // The picture every part of the globe is made from.
    static eString HeightBumpPath();

    unsigned char m_bInitialized;
    eShared<eTechnique> m_pTechnique;
    eShared<eTexture> m_pTexture;       // unit 0
    eShared<eTexture> m_pHeightTexture; // unit 2
    eShared<eVertexData> m_pVertexData;
    eShared<eIndexExData> m_pIndexData;

private:
    void WriteVertices(eImageData const* heights);
    void WriteIndices();
};

} // namespace KYR
