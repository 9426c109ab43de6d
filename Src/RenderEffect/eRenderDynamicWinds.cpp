#include "eRenderDynamicWinds.h"
#include "GLut.h"
#include "WindSpeedLevel.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eFile.h"
#include "eGlobeModel.h"
#include "eMaterial.h"
#include "eMathEngine.h"
#include "eMatrix4.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderQueueVisitor.h"
#include "eRenderSystem.h"
#include "eHardwareBuffer.h"
#include "eTexture.h"
#include <cmath>
#include <cstdlib>
#include <epoxy/gl.h>
#include <map>

namespace KYR
{

eRenderDynamicWinds::WindTexture* eRenderDynamicWinds::s_pWindTexture = nullptr;
eTechnique* eRenderDynamicWinds::s_pDynamicTechnique = nullptr;
eTechnique* eRenderDynamicWinds::s_pStreamLineTechnique = nullptr;
float eRenderDynamicWinds::linePhase = 0.0f;

namespace
{

int const kTableSize = 24;
double const kSteepPitch = 1.0471975511965976; // 60 degrees: a tilted plane view uses the tiles

// A random value in 0..1 from the low 15 bits, the range the animation was tuned for.
double Random()
{
    return (double)(std::rand() & 0x7FFF) / 32767.0;
}

bool IsNull(ePoint2D const& w)
{
    return w.x == 0.0 && w.y == 0.0;
}

void TextureParameters()
{
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
}

void DeleteTexture(unsigned int name)
{
    glDeleteTextures(1, &name);
}

// Holders for the pointers handed in, one for each distinct pointer.
template <typename T> std::vector<eShared<T>> TakeEach(std::vector<T*> const& given)
{
    std::map<T*, eShared<T>> taken;
    std::vector<eShared<T>> held;
    held.reserve(given.size());
    for (T* p : given)
    {
        eShared<T>& holder = taken[p];
        if (p && !holder)
            holder.Reset(p);
        held.push_back(holder);
    }
    return held;
}

eTechnique* MakeTechnique(char const* program)
{
    eTechnique* technique = new eTechnique();
    ePass* pass = technique->CreatePass();
    pass->SetProgram(program);
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(0);
    return technique;
}

} // namespace

eRenderDynamicWinds::eRenderDynamicWinds(eMap* map)
    : m_dynamic(false), m_particleCount(2000), m_maxTrailFrames(50), m_lineWidth(1000.0f),
      m_lineDynamic(false), m_lineDynamicStep(0.01f), m_map(map), m_initialized(false),
      m_colorTableReady(false)
{
}

// Meshes, trail buffers, particles and the colour table go with their last holders.
eRenderDynamicWinds::~eRenderDynamicWinds()
{
    DeleteStreamLines();
    DeleteTrailFrames();
    ClearParticles();
    m_colorTableTexture.Reset();
}

void eRenderDynamicWinds::DeleteTrailFrames()
{
    m_trailFrames.clear();
}

void eRenderDynamicWinds::DeleteStreamLines()
{
    m_lineVertices.clear();
    m_lineIndices.clear();
}

void eRenderDynamicWinds::ClearParticles()
{
    m_particles.clear();
}

void eRenderDynamicWinds::SetWindDynamic(std::vector<ePoint2D>& winds)
{
    m_windField.source = winds;
    m_initialized = false;
    m_renderBounds.SetEmpty();
    UnInitialize(nullptr);
}

void eRenderDynamicWinds::SetWindStreamLine(std::vector<eVertexData*>& vertices,
                                            std::vector<eIndexData*>& indices,
                                            std::vector<double>& speeds,
                                            std::vector<double>& values)
{
    DeleteStreamLines();
    m_lineLevels.resize(speeds.size());
    for (size_t i = 0; i < speeds.size(); ++i)
        m_lineLevels[i] = WindSpeedLevel(speeds[i]) / 22.0;
    m_lineValues = values;
    m_lineVertices = TakeEach(vertices);
    m_lineIndices = TakeEach(indices);
    m_initialized = false;
}

void eRenderDynamicWinds::SetColorPalette(std::vector<eVector4T<unsigned char>>& palette)
{
    m_colorPalette = palette;
    m_colorTableReady = false;
}

// ----- life cycle -----------------------------------------------------------------------

void eRenderDynamicWinds::CreateTechniques()
{
    if (!s_pDynamicTechnique)
        s_pDynamicTechnique = MakeTechnique("DynamicWinds");
    if (!s_pStreamLineTechnique)
        s_pStreamLineTechnique = MakeTechnique("StreamLineWinds");
}

unsigned char eRenderDynamicWinds::LoadWindTexture()
{
    if (s_pWindTexture->loaded)
        return 1;
    eString path = eSystem::GetWorkPath() + "Resources/Icons/wind.png";
    eFileStream stream;
    if (!stream.Open(path.Cstr(), 2, 8192))
        return 0;
    eByteArray bytes;
    stream.LoadByteArray(bytes);
    stream.Close();
    eImageData* image = eFileParserToolkit::LoadImageData(bytes, 32);
    // A picture that does not decode counts as loaded, without a texture.
    s_pWindTexture->loaded = true;
    s_pWindTexture->texture = 0;
    if (!image)
        return 1;
    GLut::ActiveTexture(GL_TEXTURE2);
    glGenTextures(1, &s_pWindTexture->texture);
    glBindTexture(GL_TEXTURE_2D, s_pWindTexture->texture);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, image->m_nWidth, image->m_nHeight, 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, image->m_pData);
    TextureParameters();
    GLut::ActiveTexture(GL_TEXTURE0);
    delete image;
    return 1;
}

unsigned char eRenderDynamicWinds::Initialize(eRenderEngine*)
{
    if (m_dynamic)
    {
        m_initialized = InitializeDynamic() != 0;
        if (!m_initialized)
            return 0;
    }
    if (!s_pWindTexture)
        s_pWindTexture = new WindTexture{false, 0};
    m_initialized = LoadWindTexture() != 0;
    return m_initialized ? 1 : 0;
}

unsigned char eRenderDynamicWinds::UnInitialize(eRenderEngine*)
{
    ClearParticles();
    if (s_pWindTexture)
    {
        if (s_pWindTexture->texture)
            glDeleteTextures(1, &s_pWindTexture->texture);
        s_pWindTexture->texture = 0;
        s_pWindTexture->loaded = false;
    }
    m_initialized = false;
    m_colorTableReady = false;
    m_renderBounds.SetEmpty();
    return 1;
}

unsigned char eRenderDynamicWinds::InitializeDynamic()
{
    return m_windField.Build() ? 1 : 0;
}

void eRenderDynamicWinds::RecreatColorTabel()
{
    if (m_colorTableReady)
        return;
    m_colorTableTexture.Reset(); // deleted here unless a copy still draws with it
    std::vector<eVector4T<unsigned char>> palette = m_colorPalette;
    if (palette.empty())
        palette.push_back(eVector4T<unsigned char>(0, 255, 0, 200));
    unsigned char table[kTableSize * 4];
    for (int i = 0; i < kTableSize; ++i)
    {
        eVector4T<unsigned char> const& c = palette[i % palette.size()];
        table[i * 4 + 0] = c.x;
        table[i * 4 + 1] = c.y;
        table[i * 4 + 2] = c.z;
        table[i * 4 + 3] = c.w;
    }
    GLut::ActiveTexture(GL_TEXTURE1);
    unsigned int name = 0;
    glGenTextures(1, &name);
    m_colorTableTexture.Reset(name, DeleteTexture);
    glBindTexture(GL_TEXTURE_2D, m_colorTableTexture);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, kTableSize, 0, GL_RGBA, GL_UNSIGNED_BYTE, table);
    TextureParameters();
    GLut::ActiveTexture(GL_TEXTURE0);
    m_colorTableReady = true;
}

// ----- frame ------------------------------------------------------------------------------

unsigned char eRenderDynamicWinds::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                     eRenderQueue* queue)
{
    CreateTechniques();
    if (queue)
        if (eRenderQueueGroup* group = queue->GetQueueGroup(8))
            group->AddTransparentRenderable(
                m_dynamic ? s_pDynamicTechnique : s_pStreamLineTechnique, this);
    return 1;
}

unsigned char eRenderDynamicWinds::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                          eViewport* viewport)
{
    if (!IsVisible() || !engine || !camera)
        return 0;
    if (!viewport)
        viewport = camera->GetViewport();
    return m_dynamic ? RenderDynamic(engine, rs, camera, viewport)
                     : RenderStreamLine(engine, rs, camera, viewport);
}

float eRenderDynamicWinds::ProjectionKind(eRenderEngine* engine, eCamera* camera)
{
    if (camera->GetSceneMode() == eSM_GLOBE)
        return 0.0f;
    eCoordSys* cs = engine->GetCoordSys();
    int type = cs ? cs->GetPrjCoordSys().GetProjection()->GetProjectionType() : 0;
    switch (type)
    {
    case PJ_PLATE_CARREE:
        return 1.0f;
    case PJ_SPHERE_MERCATOR:
    case PJ_MERCATOR:
        return 2.0f;
    case PJ_LAMBERT_CONFORMAL:
        return 3.0f;
    default:
        return 0.0f;
    }
}

unsigned char eRenderDynamicWinds::RenderDynamic(eRenderEngine* engine, eRenderSystem* rs,
                                                 eCamera* camera, eViewport* viewport)
{
    if (!m_initialized)
        Initialize(engine);
    RecreatColorTabel();
    bool const fresh = m_renderBounds.IsEmpty();
    m_renderBounds = GetRenderBounds(engine, camera);
    if (fresh)
        CreateParticlePool(engine, camera);
    m_renderBounds.Inflate(5.0);
    UpdateParticlePool(engine, camera);
    MoveThings(engine, camera, viewport);

    glEnable(GL_POLYGON_OFFSET_LINE);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(-1.0f, -100.0f);

    eVector3T<double> const& c = camera->GetReferenceCenter();
    eMatrix4T<float> world = eMatrix4T<float>::Translation((float)-c.x, (float)-c.y, (float)-c.z) *
                             camera->GetRelativeWorldMatrix();
    eRenderProgram* rp = engine->GetRenderProgram(eString("DynamicWinds"));
    eProgram* p = rp ? rp->GetProgram() : nullptr;
    eShaderUniform* u = rp ? rp->GetUniform() : nullptr;
    if (p)
    {
        p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, world.Ptr());
        p->UniformMatrix4(u->m_nViewMatrix, 1, 0, camera->GetRelativeViewMatrix().Ptr());
        p->Uniform1f(u->m_nCustom[0], 0.0f);
        p->Uniform1f(u->m_nCustom[1], 0.0f);
        p->Uniform1i(u->m_nCustom[2], 1);
        p->Uniform1f(u->m_nCustom[3], ProjectionKind(engine, camera));
    }

    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
    GLut::ActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D, m_colorTableTexture);
    GLut::ActiveTexture(GL_TEXTURE0);

    if ((int)m_trailFrames.size() > m_maxTrailFrames)
        m_trailFrames.pop_front(); // freed unless a copy still draws it

    eVertexData* frame = new eVertexData();
    frame->SetVertexType(1);
    frame->AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
    frame->GetVertexBuffer().reserve(m_particles.size() * 2 * 4 * sizeof(float));
    for (Particle* particle : m_particles)
    {
        if (!m_renderBounds.PtInRect(particle->position))
        {
            particle->life = -2.0;
            continue;
        }
        if (particle->previous.x != -1.0)
        {
            ePoint2D from = particle->previous, to = particle->position;
            AdjustPosition(engine, camera, from);
            AdjustPosition(engine, camera, to);
            ePoint2D w = m_windField.Sample(to.x, to.y);
            float level = (float)(WindSpeedLevel(std::sqrt(w.x * w.x + w.y * w.y)) / 22.0);
            if (from != to)
            {
                float v[8] = {(float)from.x, (float)from.y, level, 0.15f,
                              (float)to.x,   (float)to.y,   level, 0.15f};
                frame->AddVertex(v, 2);
            }
        }
        particle->previous = particle->position;
    }
    frame->Create();
    m_trailFrames.push_back(eShared<eVertexData>(frame));

    glEnable(GL_LINE_SMOOTH);
    glLineWidth(1.65f);
    for (eVertexData* trail : m_trailFrames)
    {
        if (p)
            p->Uniform4f(u->m_nCustom[4], 0.24f, 0.24f, 0.24f, 0.15f);
        if (rs)
            rs->DrawVertices(eOT_LINE_LIST, trail, 0, trail->GetVertexSize(), false);
    }
    glLineWidth(1.0f);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_POLYGON_OFFSET_LINE);
    glDisable(GL_POLYGON_OFFSET_FILL);
    return 1;
}

unsigned char eRenderDynamicWinds::RenderStreamLine(eRenderEngine* engine, eRenderSystem*,
                                                    eCamera* camera, eViewport* viewport)
{
    if (!m_initialized)
        Initialize(engine);
    RecreatColorTabel();
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(-1.0f, -100.0f);

    eRenderProgram* rp = engine->GetRenderProgram(eString("StreamLineWinds"));
    eProgram* p = rp ? rp->GetProgram() : nullptr;
    eShaderUniform* u = rp ? rp->GetUniform() : nullptr;
    if (p)
    {
        eVector3T<double> const& c = camera->GetReferenceCenter();
        p->Use();
        p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, camera->GetRelativeWorldMatrix().Ptr());
        p->Uniform3f(u->m_nCustom[0], (float)c.x, (float)c.y, (float)c.z);
        p->UniformMatrix4(u->m_nViewMatrix, 1, 0, camera->GetRelativeViewMatrix().Ptr());
        p->UniformMatrix4(u->m_nProjectionMatrix, 1, 0,
                          camera->GetRelativeProjectionMatrix().Ptr());
        p->Uniform1i(u->m_nTexture0, 0);
        p->Uniform1i(u->m_nTexture1, 1);
        p->Uniform1i(u->m_nCustom[1], 2);
        p->Uniform1f(u->m_nCustom[2], linePhase);
        p->Uniform1f(u->m_nCustom[3], m_lineDynamic ? 1.0f : 0.0f);
        p->Uniform1f(u->m_nCustom[4], ProjectionKind(engine, camera));
        p->Uniform4f(u->m_nCustom[5], 0.0f, 0.0f, (float)viewport->GetActualWidth(),
                     (float)viewport->GetActualHeight());
        p->Uniform1f(u->m_nCustom[6], m_lineWidth);
        p->Uniform1f(u->m_nCustom[7], 1.0f);
    }
    // One phase for the whole class: every visible object moves it on.
    linePhase += m_lineDynamicStep;
    if (linePhase > 10.0f)
        linePhase = 0.0f;

    glEnable(GL_TEXTURE_2D);
    GLut::ActiveTexture(GL_TEXTURE2);
    glBindTexture(GL_TEXTURE_2D, s_pWindTexture ? s_pWindTexture->texture : 0);
    GLut::ActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D, m_colorTableTexture);
    GLut::ActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, engine->GetPlotLineTexture());
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);

    for (size_t i = 0; i < m_lineIndices.size(); ++i)
    {
        if (p)
        {
            p->Uniform1f(u->m_nCustom[8], i < m_lineValues.size() ? (float)m_lineValues[i] : 0.0f);
            p->Uniform1f(u->m_nCustom[9], i < m_lineLevels.size() ? (float)m_lineLevels[i] : 0.0f);
        }
        RenderFrame(eOT_TRIANGLE_STRIP,
                    i < m_lineVertices.size() ? m_lineVertices[i].Get() : nullptr,
                    m_lineIndices[i]);
    }
    glDisable(GL_POLYGON_OFFSET_FILL);
    if (eRenderQueueVisitor* visitor = engine->GetVisitor())
        visitor->EndPass();
    return 1;
}

void eRenderDynamicWinds::RenderFrame(eOperationType type, eVertexData* vertices,
                                      eIndexData* indices)
{
    if (!vertices || !indices || !vertices->GetHardwareBuffer())
        return;
    // The three groups sit 32 bytes apart; a shorter vertex, or indices that were never
    // uploaded, would make the draw read outside the buffers.
    int const stride = vertices->GetVertexStride();
    if (stride < 80 || !indices->GetHardwareBuffer())
        return;
    GLut::BindBuffer(GL_ARRAY_BUFFER, vertices->GetHardwareBuffer()->GetBufferID());
    for (unsigned int a = 0; a < 3; ++a)
    {
        GLut::EnableVertexAttribArray(a);
        GLut::VertexAttribPointer(a, 4, GL_FLOAT, 0, stride, (void const*)(size_t)(a * 32));
    }
    GLut::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, indices->GetHardwareBuffer()->GetBufferID());
    glDrawElements((GLenum)type, indices->GetIndexSize(), GL_UNSIGNED_SHORT, nullptr);
    for (unsigned int a = 0; a < 3; ++a)
        GLut::DisableVertexAttribArray(a);
    GLut::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    GLut::BindBuffer(GL_ARRAY_BUFFER, 0);
}

// ----- particles --------------------------------------------------------------------------

void eRenderDynamicWinds::AdjustPosition(eRenderEngine* engine, eCamera* camera, ePoint2D& point)
{
    if (camera->GetSceneMode() != eSM_PLANE)
    {
        if (point.x < -180.0)
            point.x += 360.0;
        else if (point.x > 180.0)
            point.x -= 360.0;
        if (point.y < -90.0)
            point.y += 180.0;
        else if (point.y > 90.0)
            point.y -= 180.0;
        return;
    }
    if (eCoordSys* cs = engine->GetCoordSys())
    {
        eRect2D b = cs->GetBounds();
        point.x = std::min(std::max(point.x, b.left), b.right);
        point.y = std::min(std::max(point.y, b.bottom), b.top);
        if (cs->GetPrjCoordSys().GetTypeID() != 1)
            cs->GetPrjCoordSys().Inverse(&point, 1);
    }
    point.x = std::min(std::max(point.x, -180.0), 180.0);
    point.y = std::min(std::max(point.y, -90.0), 90.0);
}

void eRenderDynamicWinds::SeedParticle(Particle* particle, eRenderEngine* engine, eCamera* camera)
{
    eRect2D const& b = m_renderBounds;
    double const maxSpeed = m_windField.maxSpeed;
    ePoint2D candidate;
    int tries = 0;
    // The acceptance test only decides whether the counter moves by 2 or 3: the start is
    // always the last of four to six candidates.
    for (;;)
    {
        double r1 = Random(), r2 = Random();
        candidate =
            ePoint2D((1.0 - r1) * b.right + r1 * b.left, (1.0 - r2) * b.top + r2 * b.bottom);
        ePoint2D at = candidate;
        AdjustPosition(engine, camera, at);
        ePoint2D w = m_windField.Sample(at.x, at.y);
        if (maxSpeed == 0.0)
            break;
        int n = tries + 1;
        bool pass = n > 10 || 0.9 * std::sqrt(w.x * w.x + w.y * w.y) / maxSpeed < Random();
        if (pass && !IsNull(w))
        {
            n = tries + 2;
            if (n > 10)
                break;
        }
        tries = n + 1;
        if (tries > 10)
            break;
    }
    particle->previous = ePoint2D(-1.0, -1.0);
    particle->position = candidate;
    particle->life = Random() * 40.0 + 1.0;
}

Particle* eRenderDynamicWinds::MakeParticle(eRenderEngine* engine, eCamera* camera)
{
    Particle* particle = new Particle();
    SeedParticle(particle, engine, camera);
    return particle;
}

void eRenderDynamicWinds::CreateParticlePool(eRenderEngine* engine, eCamera* camera)
{
    m_particles.reserve(m_particleCount > 0 ? (size_t)m_particleCount : 0);
    for (int i = 0; i < m_particleCount; ++i)
        m_particles.push_back(eShared<Particle>(MakeParticle(engine, camera)));
}

void eRenderDynamicWinds::UpdateParticlePool(eRenderEngine* engine, eCamera* camera)
{
    for (Particle* particle : m_particles)
        if (particle->life <= 0.0 || !m_renderBounds.PtInRect(particle->position))
            SeedParticle(particle, engine, camera);
}

void eRenderDynamicWinds::MoveThings(eRenderEngine* engine, eCamera* camera, eViewport* viewport)
{
    double step = 256.0 / engine->GetRenderResolution(1);
    if (camera->GetSceneMode() == eSM_PLANE)
    {
        eCoordSys* cs = engine->GetCoordSys();
        if (!cs || cs->GetPrjCoordSys().GetTypeID() != 1)
            step *= 111319.49079327357;
    }
    else
    {
        // Half a pixel's length in degrees at the middle of the view.
        eVector3T<double> centre((int)(viewport->GetActualWidth() * 0.5),
                                 (int)(viewport->GetActualHeight() * 0.5), 0.0);
        step = camera->XPixel2WorldLength(centre, 1) * 0.000008993210566253443 * 0.5;
    }
    for (Particle* particle : m_particles)
    {
        if (particle->life <= 0.0 || !m_renderBounds.PtInRect(particle->position))
        {
            particle->life = -2.0;
            continue;
        }
        ePoint2D at = particle->position;
        AdjustPosition(engine, camera, at);
        ePoint2D w = m_windField.Sample(at.x, at.y);
        particle->position.x += w.x * step;
        particle->position.y += w.y * step;
        particle->life -= 1.0;
    }
}

// ----- bounds -----------------------------------------------------------------------------

eRect2D eRenderDynamicWinds::GetRenderBounds(eRenderEngine* engine, eCamera* camera)
{
    eRect2D rc;
    if ((int)camera->GetDimensionMode() == 0)
        rc = engine->GetRenderBounds();
    else if (camera->GetSceneMode() != eSM_PLANE)
        return GetGlobeBounds(camera);
    else if (camera->GetLookAtState().m_dPitch >= kSteepPitch)
        rc = GetPlaneBounds(camera);
    else
        rc = camera->GetRenderBounds();
    if (eCoordSys* cs = engine->GetCoordSys())
    {
        cs->MapToLogicalRect(rc, rc);
        eRect2D world = cs->GetBounds();
        rc.IntersectRect(world);
        if (rc.IsEmpty())
            rc = world;
    }
    return rc;
}

eRect2D eRenderDynamicWinds::GetPlaneBounds(eCamera* camera)
{
    eRect2D rc;
    eGlobeModel* model = m_map ? m_map->GetGlobeModel() : nullptr;
    if (!model)
        return rc;
    std::vector<eTileSet*>* tiles = model->GetVisibleTileSets(camera);
    if (!tiles)
        return rc;
    eTileSet* last = nullptr;
    for (size_t i = tiles->size(); i-- > 0;)
    {
        eTileSet* tile = (*tiles)[i];
        if (!tile)
            continue;
        // Only the finest level at the end of the list counts.
        if (last && (tile->GetKey().m_nKey & 0x1F) != (last->GetKey().m_nKey & 0x1F))
            break;
        rc.Union(tile->GetBounds());
        last = tile;
    }
    return rc;
}

eRect2D eRenderDynamicWinds::GetGlobeBounds(eCamera* camera)
{
    eViewport* viewport = camera->GetViewport();
    int const w = viewport->GetActualWidth(), h = viewport->GetActualHeight() - 1;
    int const points[8][2] = {{0, h},     {w, h},     {0, 0},     {w, 0},
                              {0, h / 2}, {w / 2, h}, {w, h / 2}, {w / 2, 0}};
    double lonMin = 0.0, lonMax = 0.0, latMin = 0.0, latMax = 0.0;
    bool allHit = true;
    for (int i = 0; i < 8 && allHit; ++i)
    {
        eVector3T<double> origin, dir, hit;
        camera->PickingRay(points[i][0], points[i][1], origin, dir);
        if (!camera->IntersectGlobe(origin, dir, hit, 0.0))
        {
            allHit = false;
            break;
        }
        eVector3T<double> s = eMathEngine::CartesianToSpherical(hit.x, hit.y, hit.z);
        double lon = s.x * 57.29577951308232, lat = s.y * 57.29577951308232;
        lonMin = i ? std::min(lonMin, lon) : lon;
        lonMax = i ? std::max(lonMax, lon) : lon;
        latMin = i ? std::min(latMin, lat) : lat;
        latMax = i ? std::max(latMax, lat) : lat;
    }
    if (allHit)
        return eRect2D(lonMin, latMax, lonMax, latMin);
    // The globe does not fill the view: take the visible hemisphere around the look-at point.
    eVector3T<double> const& at = camera->GetLookAtPosition();
    eVector3T<double> s = eMathEngine::CartesianToSpherical(at.x, at.y, at.z);
    double lon = s.x * 57.29577951308232, lat = s.y * 57.29577951308232;
    if (lat <= -65.0)
        return eRect2D(-180.0, lat + 90.0, 180.0, -90.0);
    if (lat >= 65.0)
        return eRect2D(-180.0, 90.0, 180.0, lat - 90.0);
    if (lat > 0.0)
        return eRect2D(lon - 90.0, 90.0, lon + 90.0, lat - 90.0);
    return eRect2D(lon - 90.0, lat + 90.0, lon + 90.0, -90.0);
}

} // namespace KYR
