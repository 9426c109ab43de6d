#include "eRenderDensitySet.h"
#include "eDataSetFrame.h"
#include "eMaterial.h"
#include "eProgram.h"
#include "eRenderQueue.h"

namespace KYR
{

namespace
{
char const* const kSource = "Src/RenderEffect/eRenderDensitySet";
unsigned int const kSolidTextureGroup = 6;
int const kCornerVertices = 6; // two triangles a marker without the geometry shader
float const kDepthBias = 100.0f;
} // namespace

eRenderDensitySet::eRenderDensitySet()
    : m_bInitialized(0), m_bGeometryShader(0), m_bCanvasRender(0), m_fTransparent(1.0f),
      m_nCurDensityCount(0), m_pCamera(nullptr), m_pCanvas(nullptr),
      m_strProgram("DensitySetPoint"), m_nVerticesPerPoint(kCornerVertices), m_fSpeedPerFrame(1.0f),
      m_fCurTime(0.0f), m_fStartTime(0.0f), m_fEndTime(86400.0f), m_fTraceTime(1000.0f),
      m_nSpatialRefType(0), m_vPosition(0.0, 0.0, 0.0), m_vWorldPosition(0.0, 0.0, 0.0, 0.0)
{
}

// The technique and the store go with the last copy that holds them.
eRenderDensitySet::~eRenderDensitySet() {}

eRenderable::Type eRenderDensitySet::GetType()
{
    return eRT_SET;
}

unsigned char eRenderDensitySet::Reset(eRenderEngine* engine)
{
    UnInitialize(engine);
    return 1;
}

unsigned char eRenderDensitySet::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
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

unsigned char eRenderDensitySet::Create(eCamera* camera, double, eCanvas* canvas)
{
    m_pCamera = camera;
    m_pCanvas = canvas;
    eDataSetFrame::CreateAnchor(camera, canvas, m_nSpatialRefType, m_vPosition, kSource, __LINE__,
                                m_vWorldPosition, m_LocalMatrix);
    return 1;
}

unsigned char eRenderDensitySet::Query(eRenderEngine*, eCamera*, eQueryFilter*, double&)
{
    return 1;
}

unsigned char eRenderDensitySet::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                   eRenderQueue* queue)
{
    if (!m_pTechnique)
    {
        // Depth checked, never written, so that markers pile up on one another.
        m_pTechnique.Reset(eDataSetFrame::CreateTechnique(m_strProgram, 1));
        ePass* pass = m_pTechnique->GetPass(0);
        pass->SetDepthBiasSlopeScale(kDepthBias);
        pass->SetDepthBiasConstant(kDepthBias);
    }
    if (queue)
        queue->GetQueueGroup(kSolidTextureGroup)->AddSolidTextureRenderable(m_pTechnique, this);
    return 1;
}

unsigned char eRenderDensitySet::RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*)
{
    return 1;
}

unsigned char eRenderDensitySet::UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera* camera,
                                               eRenderProgram* program)
{
    if (!program)
        return 0;
    eDataSetFrame::SetAnchorMatrix(camera, program, m_vWorldPosition, m_LocalMatrix);
    program->GetProgram()->Uniform1f(program->GetUniform()->m_nCustom[eDataSetFrame::eR_OPACITY],
                                     m_fTransparent);
    return 1;
}

unsigned char eRenderDensitySet::UpdateCache()
{
    return 1;
}

void eRenderDensitySet::SetGeometryShader(unsigned char on)
{
    m_bGeometryShader = on;
    m_strProgram = on ? "GeometryDensitySetPoint" : "DensitySetPoint";
    m_nVerticesPerPoint = on ? 1 : kCornerVertices;
}

void eRenderDensitySet::SetStartTime(float t)
{
    m_fStartTime = t;
    m_fCurTime = t;
}

eVector4T<double> eRenderDensitySet::PositionToWorld(int kind, eVector4T<double>& p)
{
    return eDataSetFrame::PositionToWorld(m_pCamera, m_pCanvas, m_LocalMatrix, m_vWorldPosition,
                                          kind, p);
}

eVector4T<float> eRenderDensitySet::PositionToLocal(int kind, eVector4T<double>& p)
{
    return eDataSetFrame::PositionToLocal(m_pCamera, m_pCanvas, m_LocalMatrix, m_vWorldPosition,
                                          kind, p);
}

ePoint2D eRenderDensitySet::PositionToGeo(int kind, eVector4T<double>& p)
{
    if (kind == 0)
    {
        Eassert("false", kSource, __LINE__);
        return ePoint2D(0.0, 0.0);
    }
    return eDataSetFrame::PositionToGeo(m_pCanvas, kind, p.x, p.y);
}

ePass* eRenderDensitySet::Pass() const
{
    return m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
}

} // namespace KYR
