// Winds over the globe or the plane map, in one of two modes: processor-side particles
// advected through a wind grid and drawn with trails of the last frames, or finished
// stream-line meshes drawn with a travelling texture.
#pragma once
#include "Particle.h"
#include "WindField.h"
#include "eEnums.h"
#include "eRect.h"
#include "eRenderable.h"
#include "eShared.h"
#include "eVector4.h"
#include <list>
#include <vector>

namespace KYR
{

class eMap;
class eVertexData;
class eIndexData;
class eTechnique;

class eRenderDynamicWinds : public eRenderable
{
public:
    explicit eRenderDynamicWinds(eMap* map);
    // Copies share particles, trail buffers, stream-line meshes, the colour table and the
    // wind field's columns; the last holder of each frees it.
    eRenderDynamicWinds(eRenderDynamicWinds const&) = default;
    eRenderDynamicWinds& operator=(eRenderDynamicWinds const&) = default;
    ~eRenderDynamicWinds() override;

    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    void SetWindDynamic(std::vector<ePoint2D>& winds);
    // Takes over the meshes (one store given for several lines is taken once); speeds give
    // each line's colour level.
    void SetWindStreamLine(std::vector<eVertexData*>& vertices, std::vector<eIndexData*>& indices,
                           std::vector<double>& speeds, std::vector<double>& values);
    void SetWindStreamLineWidth(float width) { m_lineWidth = width; }
    void SetWindStreamLineDynamic(bool dynamic, float step)
    {
        m_lineDynamic = dynamic;
        m_lineDynamicStep = step;
    }
    void SetColorPalette(std::vector<eVector4T<unsigned char>>& palette);

    // Written by the application before the first render.
    bool m_dynamic;
    WindField m_windField;

protected:
    struct WindTexture
    {
        bool loaded;
        unsigned int texture;
    };

    unsigned char InitializeDynamic();
    void RecreatColorTabel();
    unsigned char RenderDynamic(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*);
    unsigned char RenderStreamLine(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*);
    void RenderFrame(eOperationType type, eVertexData* vertices, eIndexData* indices);
    void ClearParticles();
    void UpdateParticlePool(eRenderEngine*, eCamera*);
    void MoveThings(eRenderEngine*, eCamera*, eViewport*);
    eRect2D GetRenderBounds(eRenderEngine*, eCamera*);
    eRect2D GetPlaneBounds(eCamera*);
    eRect2D GetGlobeBounds(eCamera*);
    void CreateParticlePool(eRenderEngine*, eCamera*);
    Particle* MakeParticle(eRenderEngine*, eCamera*);
    // Longitude and latitude of a position, for sampling the wind.
    void AdjustPosition(eRenderEngine*, eCamera*, ePoint2D& point);

    int m_particleCount;
    int m_maxTrailFrames;
    eRect2D m_renderBounds;
    std::vector<eShared<Particle>> m_particles;
    std::list<eShared<eVertexData>> m_trailFrames;
    std::vector<eShared<eVertexData>> m_lineVertices;
    std::vector<eShared<eIndexData>> m_lineIndices;
    std::vector<eVector4T<unsigned char>> m_colorPalette;
    eSharedName m_colorTableTexture;
    float m_lineWidth;
    bool m_lineDynamic;
    float m_lineDynamicStep;
    std::vector<double> m_lineLevels;
    std::vector<double> m_lineValues;
    eMap* m_map;
    bool m_initialized;
    bool m_colorTableReady;

    // Shared by all objects of the class.
    static WindTexture* s_pWindTexture;
    static eTechnique* s_pDynamicTechnique;
    static eTechnique* s_pStreamLineTechnique;
    static float linePhase;

private:
    // Draws the start of a particle and gives it a fresh life.
    void SeedParticle(Particle* particle, eRenderEngine*, eCamera*);
    // Projection kind for the programs: 0 globe, 1..3 by projection type, else 0.
    static float ProjectionKind(eRenderEngine*, eCamera*);
    static unsigned char LoadWindTexture();
    static void CreateTechniques();
    void DeleteTrailFrames();
    void DeleteStreamLines();
};

} // namespace KYR
