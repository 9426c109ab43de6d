#include "eRenderCycleSet.h"
#include "eDataSetFrame.h"
#include "eMaterial.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"

namespace KYR
{

namespace
{
unsigned int const kSolidTextureGroup = 6;
float const kLineWidth = 1.0f;
} // namespace

eRenderCycleSet::eRenderCycleSet()
    : m_bInitialized(0), m_pCamera(nullptr), m_pCanvas(nullptr), m_bEnableDepthTest(0),
      m_pUnusedData(nullptr), m_nVerticesPerPoint(1), m_bUnused(0), m_fSpeedPerFrame(1.0f),
      m_fCurTime(0.0f), m_fStartTime(0.0f), m_fEndTime(86400.0f), m_fTraceTime(1000.0f),
      m_nSpatialRefType(0), m_vPosition(0.0, 0.0, 0.0), m_vWorldPosition(0.0, 0.0, 0.0, 0.0)
{
}

// The technique goes with the last copy that holds it.
eRenderCycleSet::~eRenderCycleSet() {}

eRenderable::Type eRenderCycleSet::GetType()
{
    return eRT_CYCLE_SET;
}

unsigned char eRenderCycleSet::Initialize(eRenderEngine*)
{
    if (!m_bInitialized)
        m_bInitialized = 1;
    return m_bInitialized;
}

unsigned char eRenderCycleSet::UnInitialize(eRenderEngine*)
{
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderCycleSet::Reset(eRenderEngine* engine)
{
    UnInitialize(engine);
    return 1;
}

unsigned char eRenderCycleSet::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                      eViewport*)
{
    if (!m_bInitialized)
        Initialize(engine);
    if (m_bVisible)
        RenderVertexBuffer(engine, rs, camera);
    m_fCurTime += m_fSpeedPerFrame;
    return 1;
}

unsigned char eRenderCycleSet::Create(eCamera* camera, double, eCanvas* canvas)
{
    m_pCamera = camera;
    m_pCanvas = canvas;
    // A local anchor stands at (0, 0) on the globe; this family does not report it.
    eDataSetFrame::CreateAnchor(camera, canvas, m_nSpatialRefType, m_vPosition, nullptr, 0,
                                m_vWorldPosition, m_LocalMatrix);
    return 1;
}

unsigned char eRenderCycleSet::Query(eRenderEngine*, eCamera*, eQueryFilter*, double&)
{
    return 1;
}

unsigned char eRenderCycleSet::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                 eRenderQueue* queue)
{
    if (!m_pTechnique)
    {
        m_pTechnique.Reset(eDataSetFrame::CreateTechnique(m_strProgram, m_bEnableDepthTest));
        m_pTechnique->GetPass(0)->SetLineWidth(kLineWidth);
    }
    if (queue)
        queue->GetQueueGroup(kSolidTextureGroup)->AddSolidTextureRenderable(m_pTechnique, this);
    return 1;
}

unsigned char eRenderCycleSet::RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*)
{
    return 1;
}

unsigned char eRenderCycleSet::UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera* camera,
                                             eRenderProgram* program)
{
    if (!program)
        return 0;
    eDataSetFrame::SetAnchorMatrix(camera, program, m_vWorldPosition, m_LocalMatrix);
    return 1;
}

void eRenderCycleSet::SetStartTime(float t)
{
    m_fStartTime = t;
    m_fCurTime = t;
}

eVector4T<double> eRenderCycleSet::PositionToWorld(int kind, eVector4T<double>& p)
{
    return eDataSetFrame::PositionToWorld(m_pCamera, m_pCanvas, m_LocalMatrix, m_vWorldPosition,
                                          kind, p);
}

eVector4T<float> eRenderCycleSet::PositionToLocal(int kind, eVector4T<double>& p)
{
    return eDataSetFrame::PositionToLocal(m_pCamera, m_pCanvas, m_LocalMatrix, m_vWorldPosition,
                                          kind, p);
}

ePoint2D eRenderCycleSet::PositionToGeo(int kind, eVector4T<double>& p)
{
    return eDataSetFrame::PositionToGeo(m_pCanvas, kind, p.x, p.y);
}

eTexture* eRenderCycleSet::CreateTexture(eString const& path)
{
    return eDataSetFrame::LoadTexture(path);
}

eRenderProgram* eRenderCycleSet::PassProgram(eRenderEngine* engine)
{
    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    return engine && pass ? engine->GetRenderProgram(pass) : nullptr;
}

} // namespace KYR
