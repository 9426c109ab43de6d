#include "eScene.h"
#include "eGLContext.h"
#include "eMaterial.h"
#include "eRenderQueueVisitor.h"
#include <epoxy/gl.h>
#include <algorithm>

namespace KYR
{
namespace Host
{

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
}

eScene::~eScene()
{
    if (m_bReady)
        m_Engine.ReleaseResources();
}

void eScene::Add(eRenderable* effect)
{
    if (!effect)
        return;
    m_arEffects.push_back(effect);
    effect->Create(&m_Camera, 0.0, &m_Canvas);
    if (m_bReady)
        effect->Initialize(&m_Engine);
}

void eScene::Remove(eRenderable* effect)
{
    m_arEffects.erase(std::remove(m_arEffects.begin(), m_arEffects.end(), effect),
                      m_arEffects.end());
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

void eScene::RenderFrame()
{
    if (!m_bReady)
        return;
    eGLContext& context = eGLContext::Get();
    context.Ensure(m_nWidth, m_nHeight);
    context.Bind();
    context.ApplyHostDefaults();
    glClearColor(m_Clear[0], m_Clear[1], m_Clear[2], m_Clear[3]);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);

    m_Queue.Clear();
    for (eRenderable* effect : m_arEffects)
        if (effect->IsVisible())
            effect->UpdateRenderQueue(&m_Engine, &m_Camera, &m_Viewport, &m_Queue);
    for (auto& g : m_Queue.GetGroups()) // std::map: rising group number
        DrawGroup(*g.second);
    for (auto const& e : m_Queue.GetOverlays())
        DrawEntry(e);
    glFinish();
    m_Engine.AdvanceFrame();
}

std::vector<unsigned char> eScene::ReadPixels() const { return eGLContext::Get().ReadPixels(); }

bool eScene::SavePNG(std::string const& path) const { return eGLContext::Get().SavePNG(path); }

} // namespace Host
} // namespace KYR
