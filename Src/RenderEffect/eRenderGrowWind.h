// A wind field drawn by hundreds of thousands of particles that live on the graphics card:
// their positions sit in a pair of state textures advanced by a full-screen pass, they are
// drawn as points into a picture of the whole map that fades a little every frame, so each
// leaves a trail, and that picture is laid over the globe tile by tile.
#pragma once
#include "eColorTable.h"
#include "eRenderable.h"
#include "eShared.h"
#include "eString.h"

namespace KYR
{

class eImageData;
class ePass;
class eRenderProgram;
class eTechnique;
class eTexture;
class eVertexData;

// The wind picture: where it is, its size (overwritten with the picture's own on load) and
// the range its channels span for each component.
struct tagWindData
{
    eString path;
    int width = 0;
    int height = 0;
    float uMin = 0.0f;
    float uMax = 0.0f;
    float vMin = 0.0f;
    float vMax = 0.0f;
};

class eRenderGrowWind : public eRenderable
{
public:
    // Custom uniform roles of "WindScreen", "WindUpdate" and "WindDraw", which share one role
    // line: each program declares the roles it uses, the others stay at -1.
    enum eRole
    {
        eR_WIND = 0,            // sampler of the wind picture (unit 0)
        eR_PARTICLES = 1,       // sampler of the particle state (unit 1)
        eR_COLOR_TABLE = 2,     // sampler of the colour table (unit 2)
        eR_SCREEN = 3,          // sampler of the trail picture (unit 2)
        eR_OPACITY = 4,         // share of the trail picture kept by the fade
        eR_PARTICLE_RES = 5,    // side of the state textures
        eR_WIND_RES = 6,        // size of the wind picture
        eR_WIND_MIN = 7,        // (uMin, vMin)
        eR_WIND_MAX = 8,        // (uMax, vMax)
        eR_RAND_SEED = 9,       // new every step
        eR_SPEED_FACTOR = 10,   // scales the step of a particle
        eR_DROP_RATE = 11,      // share of particles re-seeded every step
        eR_DROP_RATE_BUMP = 12, // extra share at full speed
        eR_COUNT = 13,
    };

    static constexpr int kScreenWidth = 4096;
    static constexpr int kScreenHeight = 2048;

    eRenderGrowWind();
    // Copies share the techniques, textures, buffers and frame buffer; the last holder of
    // each frees it.
    eRenderGrowWind(eRenderGrowWind const&) = default;
    eRenderGrowWind& operator=(eRenderGrowWind const&) = default;
    ~eRenderGrowWind() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    // Frees the mask; everything else stays until a later Initialize replaces it.
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;
    unsigned char Reset(eRenderEngine*) override;
    unsigned char Create(eCamera*, double, eCanvas*) override { return 1; }
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override { return 1; }

    eString const& GetMaskPath() const { return m_maskPath; }
    void SetMaskPath(eString const& path) { m_maskPath = path; }
    eColorTable* GetColorTable() { return m_colorTable; }
    // Copies the table into one of the object's own.
    void SetColorTable(eColorTable* table);
    // Read by Initialize, which rounds it up to a square.
    int GetParticleCount() const { return m_particleCount; }
    void SetParticleCount(int count) { m_particleCount = count; }
    tagWindData* GetWindData() { return &m_windData; }
    void SetWindData(tagWindData* data);

protected:
    void CreateTechnique();
    // The picture at `path` decoded at `bits` per pixel; null when the file does not open or
    // decode. The caller owns it.
    eImageData* LoadImageData(eString const& path, int bits);
    void CreateWindData();
    void CreateColorTable();
    void CreateParticleCount();
    void CreateVertexData();
    void CreateMaskTexture();
    void CreateFrameBuffer();
    void CreateBufferTexture();
    // Draws into `texture` through the effect's frame buffer; null returns to the saved one.
    void BindFrameBuffer(eTexture* texture);
    void BindTexture(eTexture* texture, int unit);
    void Draw(eRenderEngine*, eRenderSystem*, eViewport*);
    void DrawScreen(eRenderEngine*, eRenderSystem*, eViewport*);
    void DrawTexture(eRenderEngine*, eRenderSystem*, eViewport*, eTexture* texture, float opacity);
    void DrawParticles(eRenderEngine*, eRenderSystem*, eViewport*);
    void UpdateParticles(eRenderEngine*, eRenderSystem*, eViewport*);
    void DrawGlobe(eRenderEngine*, eRenderSystem*, eViewport*, eTexture* texture);
    void DestroyFrameBuffer();

    bool m_initialized;
    eShared<eTechnique> m_globeTechnique;
    eShared<eTechnique> m_screenTechnique;
    eShared<eTechnique> m_drawTechnique;
    eShared<eTechnique> m_updateTechnique;
    eSharedName m_frameBuffer;
    int m_savedFrameBuffer;
    eShared<eVertexData> m_quadVertices;
    eShared<eVertexData> m_particleIndices;
    eShared<eTexture> m_screenTexture;
    eShared<eTexture> m_backTexture;
    tagWindData m_windData;
    eShared<eTexture> m_windTexture;
    int m_particleCount;
    int m_particleResolution;
    eShared<eTexture> m_particleTexture;
    eShared<eTexture> m_particleBackTexture;
    eString m_maskPath;
    eShared<eTexture> m_maskTexture;
    eShared<eColorTable> m_colorTable;
    eShared<eTexture> m_colorTexture;
    double m_opacity;

private:
    // Makes the pass current and returns its program with the role table; null without one.
    eRenderProgram* ApplyPass(eRenderEngine* engine, eTechnique* technique);
    // Points the attributes of `vertices` at its buffer; returns the attributes enabled.
    unsigned int BindVertices(eVertexData* vertices);
    static void UnbindVertices(unsigned int enabled);
};

} // namespace KYR
