// Wind lines with fading tails, animated in screen space. Once the view has rested for a
// while the wind grid becomes a per-pixel field of screen vectors; particles move along it
// and draw their segments into an off-screen texture that fades a little every frame, so
// each particle trails a tail. Any move of the view drops them and clears the texture.
#pragma once
#include "WindParticle.h"
#include "WindRaster.h"
#include "eRenderable.h"
#include "eShared.h"
#include "eVector3.h"
#include "eVector4.h"
#include <map>
#include <vector>

namespace KYR
{

class eMap;
class eProgram;
class eTechnique;
class eVertexData;
struct eShaderUniform;

class eRenderWindFishtailLine : public eRenderable
{
public:
    explicit eRenderWindFishtailLine(eMap* map);
    // Copies share the off-screen target, the textures, the screen quad and the screen
    // field; each keeps its own particles.
    eRenderWindFishtailLine(eRenderWindFishtailLine const&) = default;
    eRenderWindFishtailLine& operator=(eRenderWindFishtailLine const&) = default;
    ~eRenderWindFishtailLine() override;

    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    // Rows of m_nx vectors (u east, v north) under the header below.
    void SetWindDynamic(std::vector<ePoint2D>& winds);
    // The colours follow the wind speed alone: a palette is taken and not used.
    void SetColorPalette(std::vector<eVector4T<unsigned char>>&) {}

    // Particles per pixel of viewport width, applied at the next frame at rest.
    void SetWindFishtailDensity(int density);
    int GetWindFishtailDensity() const { return m_density; }
    // Share of the trail kept from one frame to the next.
    void SetWindFishtailLengthScale(float scale) { m_lengthScale = scale; }
    float GetWindFishtailLengthScale() const { return m_lengthScale; }
    void SetWindFishtailSpeedScale(float scale) { m_speedScale = scale; }
    float GetWindFishtailSpeedScale() const { return m_speedScale; }
    void SetWindFishtailLineWidth(float width) { m_lineWidth = width; }
    float GetWindFishtailLineWidth() const { return m_lineWidth; }

    // Grid header, written by the application before the first render.
    int m_nx;
    int m_ny;
    double m_dx;
    double m_dy;
    double m_left;
    double m_top;
    double m_right;
    double m_bottom;

protected:
    // Custom uniforms of "WindsFishTail", in the order of its role line.
    enum eRole
    {
        eR_DRAW_MODE = 0, // 0 segments, 1 fade, 2 speed picture, 3 trails to the screen
        eR_FADE = 1,      // alpha that the fade multiplies the trails by
    };

    unsigned char InitializeDynamic();
    // Adapts the particle count to a new density: more are added, fewer mean a new set.
    void ReCreatParticles(eRenderEngine*, eViewport*, int width);
    unsigned char RenderDynamic(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*);
    void MoveThings(eRenderEngine*, eCamera*);
    // Builds the screen field for the view and seeds m_particleCount particles.
    bool MakeNewParticles(eRenderEngine*, eViewport*);
    // This frame's segments in clip space, brightness by level; moves every particle on.
    void CreatRenderVertexData(eVertexData& vertices, int width, int height);
    eVertexData* CreatScreenVertexData();

    eSharedName m_frameBuffer;
    eSharedName m_trailTexture;
    eSharedName m_maskTexture;
    std::vector<double> m_alphaLevels;
    eVector3T<double> m_referenceCenter;
    double m_distance;
    bool m_moving;
    bool m_densityChanged;
    int m_stillFrames;
    int m_stillLimit;
    eShared<eVertexData> m_screenQuad;
    int m_particleCount;
    int m_density;
    int m_previousDensity;
    int m_textureWidth;
    int m_textureHeight;
    float m_lengthScale;
    float m_speedScale;
    float m_lineWidth;
    WindRaster m_raster;
    std::map<int, std::vector<WindParticle>> m_particles;
    std::vector<ePoint2D> m_source;
    bool m_initialized;

private:
    // A particle at a pixel where the wind blows, if one turns up within 31 draws.
    WindParticle SeedParticle() const;
    void AddParticle(WindParticle const& particle);
    // Counts still frames and starts the animation once the view has rested long enough;
    // a moved view drops the particles.
    void TrackView(eRenderEngine*, eCamera*, eViewport*);
    void DrawSegments(eRenderSystem*, eProgram*, eShaderUniform*, int width, int height);
    void DrawToScreen(eRenderSystem*, eProgram*, eShaderUniform*);
    void DrawQuad(eRenderSystem*);
    // Speed level 0..22 of a particle; the fastest and nonsense speeds take the top level.
    static int Level(double speed);
    static eTechnique* Technique();
};

} // namespace KYR
