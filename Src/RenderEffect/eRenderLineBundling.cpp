#include "eRenderLineBundling.h"
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
char const* const kProgram = "TraceLineLength";
double const kLineWidth = 5.0; // pixels
double const kWidthScale = 1.0;
eVector4T<unsigned char> const kLineColour(0, 255, 0, 255);
} // namespace

eRenderLineBundling::eRenderLineBundling(eRenderEdgeBundling* parent)
    : m_bInitialized(0), m_nTraceIndex(0), m_pParent(parent)
{
}

// The stores go with their last holders.
eRenderLineBundling::~eRenderLineBundling() {}

eRenderable::Type eRenderLineBundling::GetType()
{
    return eRT_NONE;
}

unsigned char eRenderLineBundling::Initialize(eRenderEngine*)
{
    if (m_bInitialized)
        return 1;
    int const pad = eRenderEdgeBundling::kWindowItems * kVerticesPerSegment;
    eRenderEdgeBundling::UploadPadded(m_pExtVertexData, pad);
    eRenderEdgeBundling::UploadPadded(m_pVertexData, pad);
    if (m_pIndexData)
        m_pIndexData->Create();
    m_bInitialized = 1;
    return 1;
}

unsigned char eRenderLineBundling::UnInitialize(eRenderEngine*)
{
    m_pExtVertexData.Reset();
    m_pVertexData.Reset();
    m_pIndexData.Reset();
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderLineBundling::Reset(eRenderEngine* engine)
{
    UnInitialize(engine);
    return 1;
}

unsigned char eRenderLineBundling::Create(eCamera* camera, double, eCanvas* canvas)
{
    eCoordSys* coordSys = canvas ? canvas->GetCoordSys() : nullptr;
    eSceneMode mode = (eSceneMode)eDataSetFrame::SceneMode(camera);

    // New stores replace the ones uploaded before, and the next frame uploads them.
    m_pVertexData.Reset(new eVertexData());
    m_pIndexData.Reset(new eIndexData());
    m_bInitialized = 0;
    ePlaneTileShortPositionTextureLineTessellator tessellator;
    tessellator.Create(m_pVertexData, m_pIndexData);
    std::vector<ePoint2D> const* points = m_pParent ? &m_pParent->m_arPoints : nullptr;
    int n = points ? (int)points->size() : 0;
    for (int i = 0; i + 1 < n; ++i)
        tessellator.Line(m_pVertexData, m_pIndexData, mode, coordSys, (*points)[(size_t)i],
                         (*points)[(size_t)i + 1], kLineWidth, kLineColour, m_pParent->m_vPosition,
                         kWidthScale);
    // A stroke's records sit at the number of its first point; the last point's are unused.
    m_pExtVertexData.Reset(eRenderEdgeBundling::CreateTraceColours(n, kVerticesPerSegment));
    return 1;
}

unsigned char eRenderLineBundling::Query(eRenderEngine*, eCamera*, eQueryFilter*, double&)
{
    return 1;
}

unsigned char eRenderLineBundling::UpdateRenderQueue(eRenderEngine*, eCamera* camera, eViewport*,
                                                     eRenderQueue* queue)
{
    if (!m_pTechnique)
        m_pTechnique.Reset(eRenderEdgeBundling::CreateTechnique(kProgram, camera));
    if (queue)
        queue->GetQueueGroup(eRenderEdgeBundling::kQueueGroup)
            ->AddSolidTextureRenderable(m_pTechnique, this);
    return 1;
}

unsigned char eRenderLineBundling::Render(eRenderEngine* engine, eRenderSystem*, eCamera* camera,
                                          eViewport*)
{
    if (!m_bInitialized)
        Initialize(engine);
    if (!m_pParent)
        return 0;
    return eRenderEdgeBundling::DrawWindow(
        engine, camera, m_pTechnique, kProgram, m_pParent->m_vPosition, m_pVertexData,
        m_pExtVertexData, (int)m_pParent->m_arPoints.size(), kVerticesPerSegment, m_nTraceIndex);
}

} // namespace KYR
