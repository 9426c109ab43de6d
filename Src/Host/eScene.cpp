#include "eScene.h"
#include "eGLContext.h"
#include "eMaterial.h"
#include "eRenderQueueVisitor.h"
#include <epoxy/gl.h>
#include <algorithm>
#include <mutex>

namespace KYR
{
namespace Host
{

namespace
{

// The scenes alive, so that an effect destroyed while in one can leave it. Never destroyed:
// effects with static storage may die after every other static.
std::mutex& ScenesMutex()
{
    static std::mutex* s_mutex = new std::mutex();
    return *s_mutex;
}

std::vector<eScene*>& Scenes()
{
    static std::vector<eScene*>* s_scenes = new std::vector<eScene*>();
    return *s_scenes;
}

} // namespace

eScene::eScene(int width, int height, eSceneMode mode, int projectionType)
    : m_nWidth(width), m_nHeight(height), m_Canvas(&m_CoordSys), m_Camera(&m_Viewport)
{
    m_Viewport.SetSize(width, height);
    m_CoordSys.GetPrjCoordSys().SetProjectionType(projectionType);
    m_Camera.SetCoordSys(&m_CoordSys);
    m_Camera.SetSceneMode(mode);
    m_Engine.SetCamera(&m_Camera);
    m_Engine.SetCoordSys(&m_CoordSys);
    m_Engine.SetGlobeModel(&m_GlobeModel);
    m_Engine.GetTextureBuffer()->SetSize(width, height);
    m_bReady = eGLContext::Get().Ensure(width, height);
    std::lock_guard<std::mutex> lock(ScenesMutex());
    Scenes().push_back(this);
}

eScene::~eScene()
{
    std::vector<eRenderable*> left;
    {
        std::lock_guard<std::mutex> lock(ScenesMutex());
        std::vector<eScene*>& scenes = Scenes();
        scenes.erase(std::remove(scenes.begin(), scenes.end(), this), scenes.end());
        left.swap(m_arEffects);
    }
    if (!m_bReady)
        return;
    for (eRenderable* effect : left)
        effect->UnInitialize(&m_Engine);
    m_Engine.ReleaseResources();
}

void eScene::Add(eRenderable* effect)
{
    if (!effect)
        return;
    ForgetStrategy(effect); // an effect added plainly is drawn as any other
    {
        std::lock_guard<std::mutex> lock(ScenesMutex());
        m_arEffects.push_back(effect);
    }
    effect->Create(&m_Camera, 0.0, &m_Canvas);
    if (m_bReady)
        effect->Initialize(&m_Engine);
}

void eScene::Remove(eRenderable* effect)
{
    ForgetStrategy(effect);
    std::lock_guard<std::mutex> lock(ScenesMutex());
    m_arEffects.erase(std::remove(m_arEffects.begin(), m_arEffects.end(), effect),
                      m_arEffects.end());
}

void eScene::Forget(eRenderable* effect)
{
    std::lock_guard<std::mutex> lock(ScenesMutex());
    for (eScene* scene : Scenes())
        scene->m_arEffects.erase(
            std::remove(scene->m_arEffects.begin(), scene->m_arEffects.end(), effect),
            scene->m_arEffects.end());
}

void eScene::Pick(int px, int py, bool keep)
{
    if (!m_bReady)
        return;
    eGLContext::Get().Ensure(m_nWidth, m_nHeight); // effects read their buffers back
    eQueryFilter filter;
    m_Camera.PickingRay(px, py, filter.m_vOrigin, filter.m_vDirection);
    filter.m_bKeep = keep ? 1 : 0;
    for (eRenderable* effect : m_arEffects)
    {
        double depth = 0.0;
        effect->Query(&m_Engine, &m_Camera, &filter, depth);
    }
}

void eScene::SetClearColor(float r, float g, float b, float a)
{
    m_Clear[0] = r;
    m_Clear[1] = g;
    m_Clear[2] = b;
    m_Clear[3] = a;
}

// The engine hands every program it makes current the camera's view and projection
// (u_viewMatrix, u_projectionMatrix), the sun (u_sunPosition), and the frame's size in pixels,
// the resolution at the look-at point and the scene mode (u_viewportSize,
// u_renderResolution, u_sceneMode); effects that send their own overwrite them. Set straight
// through OpenGL, so the call recorder sees only what the effects send.
void eScene::ApplyCameraMatrices()
{
    GLint program = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    if (!program)
        return;
    GLint view = glGetUniformLocation((GLuint)program, "u_viewMatrix");
    GLint projection = glGetUniformLocation((GLuint)program, "u_projectionMatrix");
    if (view >= 0)
        glUniformMatrix4fv(view, 1, GL_FALSE, m_Camera.GetRelativeViewMatrix().Ptr());
    if (projection >= 0)
        glUniformMatrix4fv(projection, 1, GL_FALSE, m_Camera.GetRelativeProjectionMatrix().Ptr());
    // The engine's sun, a world position, for programs that light by it.
    GLint sun = glGetUniformLocation((GLuint)program, "u_sunPosition");
    if (sun >= 0)
    {
        eVector3T<double> const& s = m_Engine.GetSunPosition();
        glUniform3f(sun, (float)s.x, (float)s.y, (float)s.z);
    }
    // For programs that measure in pixels on the screen.
    GLint viewport = glGetUniformLocation((GLuint)program, "u_viewportSize");
    if (viewport >= 0)
        glUniform2f(viewport, (float)m_nWidth, (float)m_nHeight);
    GLint resolution = glGetUniformLocation((GLuint)program, "u_renderResolution");
    if (resolution >= 0)
        glUniform1f(resolution, (float)m_Engine.GetRenderResolution(1));
    GLint mode = glGetUniformLocation((GLuint)program, "u_sceneMode");
    if (mode >= 0)
        glUniform1f(mode, (float)m_Camera.GetSceneMode());
}

void eScene::DrawEntry(eRenderQueueEntry const& entry)
{
    eRenderQueueVisitor* visitor = m_Engine.GetVisitor();
    visitor->BeginPass(entry.m_pPass);
    ApplyCameraMatrices();
    entry.m_pRenderable->PreRender();
    entry.m_pRenderable->Render(&m_Engine, &m_RenderSystem, &m_Camera, &m_Viewport);
    entry.m_pRenderable->PostRender();
    visitor->EndPass();
}

void eScene::DrawGroup(eRenderQueueGroup& group)
{
    for (auto const& e : group.GetSolids())
        DrawEntry(e);
    // Transparent entries go far to near.
    std::vector<eRenderQueueEntry> sorted = group.GetTransparents();
    for (auto& e : sorted)
        e.m_dDepth = e.m_pRenderable->GetSquaredViewDepth(&m_Camera);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](eRenderQueueEntry const& a, eRenderQueueEntry const& b)
                     { return a.m_dDepth > b.m_dDepth; });
    for (auto const& e : sorted)
        DrawEntry(e);
}

// The projection kind the host's programs number projections by: 0 on the globe, then by
// the coordinate system's projection on the plane map.
int eScene::ProjectionKind()
{
    if (m_Camera.GetSceneMode() != eSM_PLANE)
        return 0;
    switch (m_CoordSys.GetPrjCoordSys().GetTypeID())
    {
    case PJ_MERCATOR:
    case PJ_SPHERE_MERCATOR:
        return 2;
    case PJ_LAMBERT_CONFORMAL:
        return 3;
    case PJ_ALBERS:
        return 4;
    default:
        return 1;
    }
}

void eScene::RenderFrame()
{
    if (!m_bReady)
        return;
    eGLContext& context = eGLContext::Get();
    context.Ensure(m_nWidth, m_nHeight);
    context.Bind();
    context.SetSceneProjKind(ProjectionKind());
    context.ApplyHostDefaults();
    glClearColor(m_Clear[0], m_Clear[1], m_Clear[2], m_Clear[3]);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);

    m_Queue.Clear();
    for (eRenderable* effect : m_arEffects)
        if (effect->IsVisible())
            effect->UpdateRenderQueue(&m_Engine, &m_Camera, &m_Viewport, &m_Queue);
    // Translucent solids wait until everything else is drawn: they are drawn together into
    // their blending strategy's targets and composed over the finished frame, the overlays
    // coming last over them.
    TakeTranslucentEntries();
    for (auto& g : m_Queue.GetGroups()) // std::map: rising group number
        DrawGroup(*g.second);
    DrawTranslucentSolids();
    for (auto const& e : m_Queue.GetOverlays())
        DrawEntry(e);
    glFinish();
    m_Engine.AdvanceFrame();
}

std::vector<unsigned char> eScene::ReadPixels() const
{
    return eGLContext::Get().ReadPixels();
}

bool eScene::SavePNG(std::string const& path) const
{
    return eGLContext::Get().SavePNG(path);
}

} // namespace Host
} // namespace KYR
