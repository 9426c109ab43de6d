#include "eRenderLineTraceSet.h"
#include "eTexture.h"

namespace KYR
{

eRenderLineTraceSet::eRenderLineTraceSet()
    : m_ForeColor(255, 255, 255, 255), m_BackColor(0, 0, 255, 64), m_fForeLineWidth(2.0f),
      m_fBackLineWidth(8.0f), m_bEnableForeLine(1), m_bEnableBackLine(0), m_bLineSmooth(0)
{
    m_strProgram = "LineTraceSetPoint";
}

// The textures go with the last copy that holds them.
eRenderLineTraceSet::~eRenderLineTraceSet() {}

eRenderable::Type eRenderLineTraceSet::GetType()
{
    return eRT_LINE_TRACE_SET;
}

unsigned char eRenderLineTraceSet::Initialize(eRenderEngine*)
{
    if (m_bInitialized)
        return m_bInitialized;
    // A failed load leaves the line without a texture; no path, no attempt.
    m_pForeTexture.Reset(m_strForePath.IsEmpty() ? nullptr : CreateTexture(m_strForePath));
    m_pBackTexture.Reset(m_strBackPath.IsEmpty() ? nullptr : CreateTexture(m_strBackPath));
    m_bInitialized = 1;
    return m_bInitialized;
}

unsigned char eRenderLineTraceSet::UnInitialize(eRenderEngine*)
{
    m_pForeTexture.Reset();
    m_pBackTexture.Reset();
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderLineTraceSet::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                          eViewport*)
{
    if (!m_bInitialized)
        Initialize(engine);
    UpdateCache();
    if (m_bVisible && m_fTransparent > 0.0f)
        RenderVertexBuffer(engine, rs, camera);
    m_fCurTime += m_fSpeedPerFrame;
    return 1;
}

unsigned char eRenderLineTraceSet::UpdateCache()
{
    return 1;
}

} // namespace KYR
