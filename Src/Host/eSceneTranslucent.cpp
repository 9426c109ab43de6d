// Order-independent transparency in the scene's frame. The entries of effects added with a
// blending strategy are taken out of their queue groups. Once the groups are drawn, the first
// such entry's strategy is sized to the frame and begun with that entry's program, every
// translucent entry draws into its targets, testing the frame's depth but writing none so
// that none hides another, and the strategy composes the targets over a copy of the frame
// as it stood. The result does not depend on the order the effects were added or queued in.
#include "eGLContext.h"
#include "eMaterial.h"
#include "eProgram.h"
#include "eRenderQueueVisitor.h"
#include "eScene.h"
#include <epoxy/gl.h>
#include <algorithm>

namespace KYR
{
namespace Host
{

namespace
{

char const* const kComposeProgram = "WOITComposite";
unsigned int const kBackdropUnit = 2;
unsigned int const kCompositeUnits = 3; // the two targets and the backdrop

// Puts the frame as it stands into a rectangle texture on the backdrop unit, where the
// composing program finds what shows through the translucent solids. One texture serves the
// process, as the context does.
void BindBackdrop(int width, int height)
{
    static GLuint s_nTexture = 0;
    static int s_nWidth = 0, s_nHeight = 0;
    eDirectCallMute mute;
    eRealGL::ActiveTexture(GL_TEXTURE0 + kBackdropUnit);
    if (!s_nTexture)
        glGenTextures(1, &s_nTexture);
    eRealGL::BindTexture(GL_TEXTURE_RECTANGLE, s_nTexture);
    if (width != s_nWidth || height != s_nHeight)
    {
        glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glTexImage2D(GL_TEXTURE_RECTANGLE, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     nullptr);
        s_nWidth = width;
        s_nHeight = height;
    }
    glCopyTexSubImage2D(GL_TEXTURE_RECTANGLE, 0, 0, 0, 0, 0, width, height);
    eRealGL::ActiveTexture(GL_TEXTURE0);
}

// Leaves no rectangle texture bound on the units the composition used.
void UnbindComposite()
{
    eDirectCallMute mute;
    for (unsigned int unit = 0; unit < kCompositeUnits; ++unit)
    {
        eRealGL::ActiveTexture(GL_TEXTURE0 + unit);
        eRealGL::BindTexture(GL_TEXTURE_RECTANGLE, 0);
    }
    eRealGL::ActiveTexture(GL_TEXTURE0);
}

// The render buffer holding the depth of frame buffer `frame` (bound now), or 0.
GLuint DepthOf(GLint frame)
{
    if (frame <= 0)
        return 0;
    GLint type = GL_NONE, name = 0;
    glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT,
                                          GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE, &type);
    if (type != GL_RENDERBUFFER)
        return 0;
    glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT,
                                          GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &name);
    return (GLuint)name;
}

} // namespace

void eScene::Add(eRenderable* effect, eBlendingStrategy* strategy)
{
    if (!effect)
        return;
    Add(effect);
    if (strategy)
        m_arStrategies.push_back({effect, strategy});
}

void eScene::ForgetStrategy(eRenderable* effect)
{
    m_arStrategies.erase(
        std::remove_if(m_arStrategies.begin(), m_arStrategies.end(),
                       [effect](std::pair<eRenderable*, eBlendingStrategy*> const& s)
                       { return s.first == effect; }),
        m_arStrategies.end());
}

eBlendingStrategy* eScene::StrategyOf(eRenderable* effect) const
{
    for (auto const& s : m_arStrategies)
        if (s.first == effect)
            return s.second;
    return nullptr;
}

void eScene::TakeTranslucentEntries()
{
    m_arTranslucent.clear();
    if (m_arStrategies.empty())
        return;
    for (auto& g : m_Queue.GetGroups())
        for (std::vector<eRenderQueueEntry>* list :
             {&g.second->GetSolids(), &g.second->GetTransparents()})
        {
            auto taken = std::stable_partition(list->begin(), list->end(),
                                               [this](eRenderQueueEntry const& e)
                                               { return !StrategyOf(e.m_pRenderable); });
            m_arTranslucent.insert(m_arTranslucent.end(), taken, list->end());
            list->erase(taken, list->end());
        }
}

void eScene::DrawTranslucentSolids()
{
    if (m_arTranslucent.empty())
        return;
    eRenderQueueEntry const& first = m_arTranslucent.front();
    eBlendingStrategy* strategy = StrategyOf(first.m_pRenderable);
    eRenderProgram* fill = m_Engine.GetRenderProgram(first.m_pPass);
    eRenderProgram* compose = m_Engine.GetRenderProgram(eString(kComposeProgram));
    if (!strategy || !fill || !compose)
    {
        // A program is missing (and reported): the entries draw as any other.
        for (auto const& e : m_arTranslucent)
            DrawEntry(e);
        return;
    }

    // The targets are bound before any of the effects draws, so they take the frame's size
    // here; the effects keep them at it too.
    int width = 0, height = 0;
    strategy->GetSize(width, height);
    if (width != m_Viewport.GetActualWidth() || height != m_Viewport.GetActualHeight())
    {
        strategy->SetSize(m_Viewport.GetActualWidth(), m_Viewport.GetActualHeight());
        strategy->Create();
    }
    strategy->SetCamera(&m_Camera);
    GLint frame = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &frame);
    GLuint const depth = DepthOf(frame);

    // Fill: the pass's state, then the strategy's targets and blending over it.
    eRenderQueueVisitor* visitor = m_Engine.GetVisitor();
    visitor->BeginPass(first.m_pPass);
    strategy->Begin(fill);
    GLint targets = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &targets);
    bool const sharesDepth = targets != frame && targets > 0 && depth;
    if (sharesDepth)
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth);
    glDepthMask(GL_FALSE);
    ApplyCameraMatrices();
    for (auto const& e : m_arTranslucent)
    {
        e.m_pRenderable->PreRender();
        e.m_pRenderable->Render(&m_Engine, &m_RenderSystem, &m_Camera, &m_Viewport);
        e.m_pRenderable->PostRender();
    }
    if (sharesDepth)
    {
        glBindFramebuffer(GL_FRAMEBUFFER, (GLuint)targets);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, 0);
    }

    // Compose over the frame as it stood.
    glBindFramebuffer(GL_FRAMEBUFFER, (GLuint)frame);
    BindBackdrop(m_nWidth, m_nHeight);
    strategy->Composite(compose);
    UnbindComposite();
    visitor->EndPass();
}

} // namespace Host
} // namespace KYR
