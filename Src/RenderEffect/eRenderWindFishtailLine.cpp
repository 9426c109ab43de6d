#include "eRenderWindFishtailLine.h"
#include "GLut.h"
#include "WindSpeedLevel.h"
#include "eCamera.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderSystem.h"
#include <cmath>
#include <cstdlib>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{

int const kTrailWidth = 800; // first size of the trail texture; the first frame fits it
int const kTrailHeight = 600;
int const kAlphaLevelCount = 17;              // 85, 95, ... 245
double const kByteToUnit = 0.003921568627451; // 1 / 255
size_t const kLookAhead = 16;                 // particles between a cell's prefetch and its use
// Degrees of arc per metre of the Earth's surface.
double const kDegreesPerMetre = 0.000008993210566253443;

// Random values in 0..32767, the range the seeding was tuned for.
int Random15()
{
    return std::rand() & 0x7FFF;
}

void FreeTexture(unsigned int name)
{
    glDeleteTextures(1, &name);
}

void FreeFrameBuffer(unsigned int name)
{
    GLut::DeleteFrameBuffers(1, &name);
}

// A texture on the active unit, repeated and linearly filtered; with a size it gets room
// for an RGBA image of that size, without one no image at all.
unsigned int MakeTexture(int width, int height)
{
    unsigned int name = 0;
    glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    if (width > 0 && height > 0)
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    return name;
}

} // namespace

eRenderWindFishtailLine::eRenderWindFishtailLine(eMap*)
    : m_nx(0), m_ny(0), m_dx(1.0), m_dy(1.0), m_left(0.0), m_top(0.0), m_right(0.0), m_bottom(0.0),
      m_distance(0.0), m_moving(true), m_densityChanged(false), m_stillFrames(0), m_stillLimit(24),
      m_particleCount(0), m_density(4), m_previousDensity(4), m_textureWidth(0), m_textureHeight(0),
      m_lengthScale(0.95f), m_speedScale(0.4f), m_lineWidth(2.5f), m_initialized(false)
{
}

eRenderWindFishtailLine::~eRenderWindFishtailLine() = default;

eTechnique* eRenderWindFishtailLine::Technique()
{
    static eShared<eTechnique> s_technique;
    if (!s_technique)
    {
        s_technique.Reset(new eTechnique());
        ePass* pass = s_technique->CreatePass();
        pass->SetProgram("WindsFishTail");
        pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
        pass->SetDepthCheckEnabled(1);
        pass->SetDepthWriteEnabled(0);
    }
    return s_technique;
}

void eRenderWindFishtailLine::SetWindDynamic(std::vector<ePoint2D>& winds)
{
    m_source = winds;
    m_initialized = false;
    UnInitialize(nullptr);
}

void eRenderWindFishtailLine::SetWindFishtailDensity(int density)
{
    m_densityChanged = true;
    if (density != m_density)
    {
        m_previousDensity = m_density;
        m_density = density;
    }
}

// ----- life cycle -----------------------------------------------------------------------

unsigned char eRenderWindFishtailLine::Initialize(eRenderEngine*)
{
    if (m_source.empty())
    {
        m_initialized = false;
        return 0;
    }
    m_initialized = InitializeDynamic() != 0;
    return 1;
}

unsigned char eRenderWindFishtailLine::UnInitialize(eRenderEngine*)
{
    m_particles.clear();
    m_initialized = false;
    return 1;
}

unsigned char eRenderWindFishtailLine::InitializeDynamic()
{
    WindRaster::Grid& grid = m_raster.grid;
    grid.nx = m_nx;
    grid.ny = m_ny;
    grid.dx = m_dx;
    grid.dy = m_dy;
    grid.left = m_left;
    grid.top = m_top;
    grid.right = m_right;
    grid.bottom = m_bottom;
    grid.source = m_source;
    grid.Build();
    grid.source.clear();

    // The host may be drawing into a frame buffer of its own: leave that one bound.
    GLint saved = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &saved);
    unsigned int frameBuffer = 0;
    GLut::GenFrameBuffers(1, &frameBuffer);
    m_frameBuffer.Reset(frameBuffer, FreeFrameBuffer);
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, frameBuffer);
    GLut::ActiveTexture(GL_TEXTURE0);
    m_trailTexture.Reset(MakeTexture(kTrailWidth, kTrailHeight), FreeTexture);
    m_textureWidth = kTrailWidth;
    m_textureHeight = kTrailHeight;
    GLut::FrameBufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_trailTexture,
                               0);
    if (GLut::CheckFrameBufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
        m_bVisible = 0;
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, (unsigned int)saved);

    GLut::ActiveTexture(GL_TEXTURE1);
    m_maskTexture.Reset(MakeTexture(0, 0), FreeTexture);
    GLut::ActiveTexture(GL_TEXTURE0);

    m_alphaLevels.clear();
    for (int i = 0; i < kAlphaLevelCount; ++i)
        m_alphaLevels.push_back(85.0 + 10.0 * i);
    m_screenQuad.Reset(CreatScreenVertexData());
    m_initialized = true;
    return 1;
}

eVertexData* eRenderWindFishtailLine::CreatScreenVertexData()
{
    // Clip-space corner and texture coordinate, as a triangle strip over the screen.
    float const corners[16] = {-1.0f, -1.0f, 0.0f, 0.0f, 1.0f, -1.0f, 1.0f, 0.0f,
                               -1.0f, 1.0f,  0.0f, 1.0f, 1.0f, 1.0f,  1.0f, 1.0f};
    eVertexData* quad = new eVertexData();
    quad->AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
    quad->AddVertex(corners, 4);
    quad->Create();
    return quad;
}

// ----- particles --------------------------------------------------------------------------

int eRenderWindFishtailLine::Level(double speed)
{
    if (speed < 0.0 || speed >= 46.0)
        return 22;
    return WindSpeedLevel(speed);
}

WindParticle eRenderWindFishtailLine::SeedParticle() const
{
    int const width = m_raster.width, height = m_raster.height;
    int x = 0, y = 0;
    for (int tries = 0; tries < 31; ++tries)
    {
        x = (int)std::round((float)Random15() * (width - 1) / 32767.0);
        y = (int)std::round((float)Random15() * (height - 1) / 32767.0);
        if (m_raster.At(x, y).speed != 0.0)
            break;
    }
    WindParticle particle;
    particle.position = particle.next = ePoint2D(x, y);
    particle.age = Random15() * 100 / 32767;
    particle.speed = m_raster.At(x, y).speed;
    return particle;
}

void eRenderWindFishtailLine::AddParticle(WindParticle const& particle)
{
    m_particles[Level(particle.speed)].push_back(particle);
}

bool eRenderWindFishtailLine::MakeNewParticles(eRenderEngine* engine, eViewport* viewport)
{
    int const width = viewport->GetActualWidth() / 2 * 2;
    int const height = viewport->GetActualHeight() / 2 * 2;
    if (width < 1 || height < 1)
        return false;
    m_raster.Build(width, height, engine);
    m_particles.clear();
    for (int i = 0; i < m_particleCount; ++i)
        AddParticle(SeedParticle());
    return true;
}

void eRenderWindFishtailLine::ReCreatParticles(eRenderEngine*, eViewport*, int width)
{
    int const count = width * m_density, old = width * m_previousDensity;
    if (count <= old)
    {
        m_particles.clear();
        for (int i = 0; i < count; ++i)
            AddParticle(SeedParticle());
    }
    else
    {
        for (int i = 0; i < count - old; ++i)
            AddParticle(SeedParticle());
    }
    m_previousDensity = m_density;
}

void eRenderWindFishtailLine::MoveThings(eRenderEngine* engine, eCamera* camera)
{
    double step;
    if (camera->GetSceneMode() == eSM_PLANE)
        step = 256.0 / engine->GetRenderResolution(1);
    else
    {
        eViewport* viewport = camera->GetViewport();
        eVector3T<double> centre((int)(viewport->GetActualWidth() * 0.5),
                                 (int)(viewport->GetActualHeight() * 0.5), 0.0);
        step = camera->XPixel2WorldLength(centre, 1) * kDegreesPerMetre;
    }
    // Keeps the step within a narrow band around 0.05 at every zoom.
    step = step <= 0.2 ? std::log(step + 10) / std::log(10) * 0.05 : 0.05;

    int const width = m_raster.width, height = m_raster.height;
    std::map<int, std::vector<WindParticle>> fresh;
    for (auto& level : m_particles)
    {
        std::vector<WindParticle>& list = level.second;
        size_t kept = 0;
        for (size_t i = 0; i < list.size(); ++i)
        {
            // Particles lie anywhere on a field of tens of megabytes: ask for the cell of
            // one further on while this one waits for its own.
            if (i + kLookAhead < list.size())
            {
                ePoint2D const& ahead = list[i + kLookAhead].position;
                __builtin_prefetch(&m_raster.At((int)ahead.x, (int)ahead.y));
            }
            WindParticle particle = list[i];
            if (particle.age > 100.0)
            {
                WindParticle seed = SeedParticle();
                fresh[Level(seed.speed)].push_back(seed);
                continue;
            }
            WindRaster::Cell const& cell =
                m_raster.At((int)particle.position.x, (int)particle.position.y);
            double const nx = particle.position.x - cell.x * step * m_speedScale;
            double const ny = particle.position.y - cell.y * step * m_speedScale;
            if (nx > 0.0 && nx < width && ny > 0.0 && ny < height &&
                m_raster.At((int)nx, (int)ny).speed != 0.0)
                particle.next = ePoint2D(nx, ny);
            list[kept++] = particle;
        }
        list.resize(kept);
    }
    for (auto& level : fresh)
    {
        std::vector<WindParticle>& list = m_particles[level.first];
        list.insert(list.end(), level.second.begin(), level.second.end());
    }
}

void eRenderWindFishtailLine::CreatRenderVertexData(eVertexData& vertices, int width, int height)
{
    vertices.SetVertexType(1);
    vertices.AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
    size_t total = 0;
    for (auto const& level : m_particles)
        total += level.second.size();
    vertices.GetVertexBuffer().reserve(total * 2 * 4 * sizeof(float));
    size_t const levels = m_alphaLevels.size();
    for (auto& level : m_particles)
    {
        // Faster levels draw brighter.
        size_t const index = (size_t)(int)(levels * (level.first / 23.0));
        float const a = index < levels ? (float)(m_alphaLevels[index] * kByteToUnit) : 0.0f;
        for (WindParticle& particle : level.second)
        {
            if (particle.position != particle.next)
            {
                ePoint2D const& from = particle.position;
                ePoint2D const& to = particle.next;
                float const v[8] = {(float)(2 * from.x / width - 1),
                                    (float)(2 * (height - from.y) / height - 1),
                                    a,
                                    a,
                                    (float)(2 * to.x / width - 1),
                                    (float)(2 * (height - to.y) / height - 1),
                                    a,
                                    a};
                vertices.AddVertex(v, 2);
                particle.position = particle.next;
            }
            particle.age += 1.0;
        }
    }
    vertices.Create();
}

// ----- frame ------------------------------------------------------------------------------

unsigned char eRenderWindFishtailLine::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                         eRenderQueue* queue)
{
    if (queue)
        if (eRenderQueueGroup* group = queue->GetQueueGroup(8))
            group->AddTransparentRenderable(Technique(), this);
    return 1;
}

unsigned char eRenderWindFishtailLine::Render(eRenderEngine* engine, eRenderSystem* rs,
                                              eCamera* camera, eViewport* viewport)
{
    if (!IsVisible() || !engine || !camera)
        return 0;
    if (!viewport)
        viewport = camera->GetViewport();
    return RenderDynamic(engine, rs, camera, viewport);
}

void eRenderWindFishtailLine::TrackView(eRenderEngine* engine, eCamera* camera, eViewport* viewport)
{
    eVector3T<double> const centre = camera->GetReferenceCenter();
    double const distance = camera->GetDistance();
    if (centre == m_referenceCenter && distance == m_distance)
    {
        if (m_moving && ++m_stillFrames > m_stillLimit)
        {
            m_particleCount = m_density * viewport->GetActualWidth();
            MakeNewParticles(engine, viewport);
            m_moving = false;
        }
        return;
    }
    m_moving = true;
    m_referenceCenter = centre;
    m_distance = distance;
    m_stillFrames = 0;
    m_particles.clear();
}

unsigned char eRenderWindFishtailLine::RenderDynamic(eRenderEngine* engine, eRenderSystem* rs,
                                                     eCamera* camera, eViewport* viewport)
{
    if (!IsVisible())
        return 0;
    if (!m_initialized)
        Initialize(engine);
    // Without wind data there is no target to draw into; an incomplete one hid the object.
    if (!m_initialized || !IsVisible())
        return 0;
    int const width = viewport->GetActualWidth(), height = viewport->GetActualHeight();
    eRenderProgram* rp = engine->GetRenderProgram(eString("WindsFishTail"));
    eProgram* p = rp ? rp->GetProgram() : nullptr;
    eShaderUniform* u = rp ? rp->GetUniform() : nullptr;

    TrackView(engine, camera, viewport);
    if (!m_moving && m_densityChanged)
    {
        ReCreatParticles(engine, viewport, width);
        m_densityChanged = false;
    }
    MoveThings(engine, camera);

    GLint saved = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &saved);
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, m_frameBuffer);
    GLut::ActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, m_trailTexture);
    if (width != m_textureWidth || height != m_textureHeight)
    {
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     nullptr);
        m_textureWidth = width;
        m_textureHeight = height;
    }
    if (m_stillFrames == 0)
    {
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        m_stillFrames = 1;
    }
    DrawSegments(rs, p, u, width, height);

    GLut::BindFrameBuffer(GL_FRAMEBUFFER, (unsigned int)saved);
    glViewport(0, 0, width, height);
    DrawToScreen(rs, p, u);
    GLut::ActiveTexture(GL_TEXTURE0);
    return 1;
}

void eRenderWindFishtailLine::DrawQuad(eRenderSystem* rs)
{
    if (rs && m_screenQuad)
        rs->DrawVertices(eOT_TRIANGLE_STRIP, m_screenQuad, 0, 4, false);
}

// Into the trail texture: this frame's segments as they are, then the whole texture
// multiplied by the fade, which is all that ages the trails.
void eRenderWindFishtailLine::DrawSegments(eRenderSystem* rs, eProgram* p, eShaderUniform* u,
                                           int width, int height)
{
    glDisable(GL_BLEND);
    glViewport(0, 0, width, height);
    if (p)
        p->Uniform1f(u->m_nCustom[eR_DRAW_MODE], 0.0f);
    eVertexData segments; // lives for this frame only
    CreatRenderVertexData(segments, width, height);
    glEnable(GL_LINE_SMOOTH);
    glLineWidth(m_lineWidth);
    if (rs)
        rs->DrawVertices(eOT_LINE_LIST, &segments, 0, segments.GetVertexSize(), false);

    glEnable(GL_BLEND);
    glBlendFunc(GL_ZERO, GL_SRC_ALPHA);
    if (p)
    {
        p->Uniform1f(u->m_nCustom[eR_DRAW_MODE], 1.0f);
        p->Uniform1f(u->m_nCustom[eR_FADE], m_lengthScale);
    }
    if (!m_moving)
        DrawQuad(rs);
}

// Onto the screen: the trails, then at rest the coloured wind speed over them.
void eRenderWindFishtailLine::DrawToScreen(eRenderSystem* rs, eProgram* p, eShaderUniform* u)
{
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    if (p)
        p->Uniform1f(u->m_nCustom[eR_DRAW_MODE], 3.0f);
    GLut::ActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, m_trailTexture);
    if (p)
        p->Uniform1i(u->m_nTexture0, 0);
    DrawQuad(rs);

    if (p)
        p->Uniform1f(u->m_nCustom[eR_DRAW_MODE], 2.0f);
    if (m_moving)
        return;
    GLut::ActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D, m_maskTexture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, m_raster.width, m_raster.height, 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, m_raster.mask.Get());
    if (p)
        p->Uniform1i(u->m_nTexture1, 1);
    DrawQuad(rs);
}

} // namespace KYR
