#include "eRenderPointBundling.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eDataSetFrame.h"
#include "eGeometry.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eRenderEdgeBundling.h"
#include "eRenderQueue.h"

namespace KYR
{

namespace
{
char const* const kProgram = "TracePointLength";
double const kPointSize = 6.0; // pixels across at the view of Create
eVector4T<unsigned char> const kPointColour(255, 250, 250, 250);
} // namespace

eRenderPointBundling::eRenderPointBundling(eRenderEdgeBundling* parent)
    : m_bInitialized(0), m_nTraceIndex(0), m_pParent(parent)
{
}

// The stores go with their last holders.
eRenderPointBundling::~eRenderPointBundling() {}

eRenderable::Type eRenderPointBundling::GetType()
{
    return eRT_NONE;
}

unsigned char eRenderPointBundling::Initialize(eRenderEngine*)
{
    if (m_bInitialized)
        return 1;
    int const pad = eRenderEdgeBundling::kWindowItems * kVerticesPerPoint;
    eRenderEdgeBundling::UploadPadded(m_pExtVertexData, pad);
    eRenderEdgeBundling::UploadPadded(m_pVertexData, pad);
    if (m_pIndexData)
        m_pIndexData->Create();
    m_bInitialized = 1;
    return 1;
}

unsigned char eRenderPointBundling::UnInitialize(eRenderEngine*)
{
    m_pExtVertexData.Reset();
    m_pVertexData.Reset();
    m_pIndexData.Reset();
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderPointBundling::Reset(eRenderEngine* engine)
{
    UnInitialize(engine);
    return 1;
}

unsigned char eRenderPointBundling::Create(eCamera* camera, double, eCanvas* canvas)
{
    eCoordSys* coordSys = canvas ? canvas->GetCoordSys() : nullptr;
    eSceneMode mode = (eSceneMode)eDataSetFrame::SceneMode(camera);
    // The level-0 resolution over the view's: the marker's pixels at this view.
    double scale = 1.0;
    if (coordSys && camera)
        scale = coordSys->GetRefResolution() / camera->DistanceToResolution(camera->GetDistance());

    // New stores replace the ones uploaded before, and the next frame uploads them.
    m_pVertexData.Reset(new eVertexData());
    m_pIndexData.Reset(new eIndexData());
    m_bInitialized = 0;
    eLengthPointTessellator tessellator;
    tessellator.Create(m_pVertexData, m_pIndexData);
    std::vector<ePoint2D> const* points = m_pParent ? &m_pParent->m_arPoints : nullptr;
    int n = points ? (int)points->size() : 0;
    for (int i = 0; i < n; ++i)
        tessellator.Point(m_pVertexData, m_pIndexData, mode, coordSys, (*points)[(size_t)i],
                          kPointSize, kPointColour, m_pParent->m_vPosition, scale);
    m_pExtVertexData.Reset(eRenderEdgeBundling::CreateTraceColours(n, kVerticesPerPoint));
    return 1;
}

unsigned char eRenderPointBundling::Query(eRenderEngine*, eCamera*, eQueryFilter*, double&)
{
    return 1;
}

unsigned char eRenderPointBundling::UpdateRenderQueue(eRenderEngine*, eCamera* camera, eViewport*,
                                                      eRenderQueue* queue)
{
    if (!m_pTechnique)
        m_pTechnique.Reset(eRenderEdgeBundling::CreateTechnique(kProgram, camera));
    if (queue)
        queue->GetQueueGroup(eRenderEdgeBundling::kQueueGroup)
            ->AddSolidTextureRenderable(m_pTechnique, this);
    return 1;
}

unsigned char eRenderPointBundling::Render(eRenderEngine* engine, eRenderSystem*, eCamera* camera,
                                           eViewport*)
{
    if (!m_bInitialized)
        Initialize(engine);
    if (!m_pParent)
        return 0;
    return eRenderEdgeBundling::DrawWindow(
        engine, camera, m_pTechnique, kProgram, m_pParent->m_vPosition, m_pVertexData,
        m_pExtVertexData, (int)m_pParent->m_arPoints.size(), kVerticesPerPoint, m_nTraceIndex);
}

} // namespace KYR
