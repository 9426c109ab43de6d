#include "eRenderTraceSet.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eDataSetFrame.h"
#include "eMaterial.h"
#include "eProgram.h"
#include "eHardwareBuffer.h"
#include "eMesh.h"
#include "eRenderQueue.h"

namespace KYR
{

namespace
{
char const* const kSource = "Src/RenderEffect/eRenderTraceSet";
}

eRenderTraceSet::eRenderTraceSet()
    : m_bInitialized(0), m_pCamera(nullptr), m_pCanvas(nullptr), m_bEnableDepthTest(0),
      m_fTransparent(1.0f), m_nCurTraceCount(0), m_nVerticesPerPoint(1), m_bUnused(0),
      m_fSpeedPerFrame(1.0f), m_fCurTime(0.0f), m_fStartTime(0.0f), m_fEndTime(86400.0f),
      m_fTraceTime(1000.0f), m_nSpatialRefType(0), m_vPosition(0.0, 0.0, 0.0),
      m_vWorldPosition(0.0, 0.0, 0.0, 0.0)
{
}

// The technique and the store go with the last copy that holds them.
eRenderTraceSet::~eRenderTraceSet() {}

eRenderable::Type eRenderTraceSet::GetType()
{
    return eRT_TRACE_SET;
}

unsigned char eRenderTraceSet::Initialize(eRenderEngine*)
{
    if (!m_bInitialized)
        m_bInitialized = 1;
    return m_bInitialized;
}

unsigned char eRenderTraceSet::UnInitialize(eRenderEngine*)
{
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderTraceSet::Reset(eRenderEngine* engine)
{
    UnInitialize(engine);
    return 1;
}

unsigned char eRenderTraceSet::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                      eViewport*)
{
    if (!m_bInitialized)
        Initialize(engine);
    if (m_bVisible)
        RenderVertexBuffer(engine, rs, camera);
    m_fCurTime += m_fSpeedPerFrame;
    return 1;
}

unsigned char eRenderTraceSet::Create(eCamera* camera, double, eCanvas* canvas)
{
    m_pCamera = camera;
    m_pCanvas = canvas;
    eDataSetFrame::CreateAnchor(camera, canvas, m_nSpatialRefType, m_vPosition, kSource, __LINE__,
                                m_vWorldPosition, m_LocalMatrix);
    return 1;
}

unsigned char eRenderTraceSet::Query(eRenderEngine*, eCamera*, eQueryFilter*, double&)
{
    return 1;
}

unsigned char eRenderTraceSet::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                 eRenderQueue* queue)
{
    if (!m_pTechnique)
        m_pTechnique.Reset(eDataSetFrame::CreateTechnique(m_strProgram, m_bEnableDepthTest));
    if (queue)
        queue->GetQueueGroup(6)->AddSolidTextureRenderable(m_pTechnique, this);
    return 1;
}

unsigned char eRenderTraceSet::RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*)
{
    return 1;
}

unsigned char eRenderTraceSet::UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera* camera,
                                             eRenderProgram* program)
{
    if (!program)
        return 0;
    eDataSetFrame::SetAnchorMatrix(camera, program, m_vWorldPosition, m_LocalMatrix);
    eProgram* p = program->GetProgram();
    p->Uniform1f(program->GetUniform()->m_nCustom[eDataSetFrame::eR_OPACITY], m_fTransparent);
    return 1;
}

void eRenderTraceSet::SetStartTime(float t)
{
    m_fStartTime = t;
    m_fCurTime = t;
}

eVector4T<double> eRenderTraceSet::PositionToWorld(int kind, eVector4T<double>& p)
{
    return eDataSetFrame::PositionToWorld(m_pCamera, m_pCanvas, m_LocalMatrix, m_vWorldPosition,
                                          kind, p);
}

eVector4T<float> eRenderTraceSet::PositionToLocal(int kind, eVector4T<double>& p)
{
    return eDataSetFrame::PositionToLocal(m_pCamera, m_pCanvas, m_LocalMatrix, m_vWorldPosition,
                                          kind, p);
}

ePoint2D eRenderTraceSet::PositionToGeo(int kind, eVector4T<double>& p)
{
    if (kind == 0)
    {
        Eassert("false", kSource, __LINE__);
        return ePoint2D(0.0, 0.0);
    }
    return eDataSetFrame::PositionToGeo(m_pCanvas, kind, p.x, p.y);
}

void eRenderTraceSet::BeginSlotPass()
{
    m_nBatchStamp = 0;
    m_nBatchStamp = ConversionStamp();
    if (m_pBufferShadow)
        m_pBufferShadow->BeginBatch();
}

void eRenderTraceSet::EndSlotPass()
{
    m_nBatchStamp = 0;
    if (m_pBufferShadow)
        m_pBufferShadow->EndBatch(m_pVertexData ? m_pVertexData->GetHardwareBuffer() : nullptr);
}

void eRenderTraceSet::CreateSlotCaches(int slots, int slotPositions)
{
    m_pWindowCache.Reset(new eDataSetFrame::eWindowCache());
    m_pWindowCache->Reset(slots, slotPositions);
    m_pBufferShadow.Reset();
    eHardwareVertexBuffer* buffer = m_pVertexData ? m_pVertexData->GetHardwareBuffer() : nullptr;
    size_t slotBytes =
        (size_t)slotPositions * m_nVerticesPerPoint * m_pVertexData->GetVertexStride();
    // Only with the buffer in place: the shadow mirrors what it holds.
    if (buffer && eDataSetFrame::eBufferShadow::Pays(slotBytes))
    {
        m_pBufferShadow.Reset(new eDataSetFrame::eBufferShadow());
        m_pBufferShadow->Reset((size_t)buffer->GetSizeInBytes());
    }
}

void eRenderTraceSet::PutWindow(int slot, int slotVertices, int first, int positions, bool cached)
{
    int vertices = positions * m_nVerticesPerPoint, stride = m_pVertexData->GetVertexStride();
    eHardwareVertexBuffer* buffer = m_pVertexData->GetHardwareBuffer();
    if (cached && m_pBufferShadow && stride == (int)sizeof(eVector4T<float>))
    {
        // Straight from the cache into the shadow: the store is not needed on the way.
        size_t offset = (size_t)slot * slotVertices * stride;
        if (unsigned char* out = m_pBufferShadow->Place(buffer, offset, (size_t)vertices * stride))
        {
            m_pWindowCache->Write(slot, first, positions, m_nVerticesPerPoint,
                                  reinterpret_cast<eVector4T<float>*>(out));
            m_pBufferShadow->Commit(buffer);
        }
        return;
    }
    if (cached)
        m_pWindowCache->Write(slot, first, positions, m_nVerticesPerPoint,
                              reinterpret_cast<eVector4T<float>*>(m_pVertexData->GetVertex(0)));
    eDataSetFrame::UploadSlot(m_pVertexData, slot, slotVertices, vertices, m_pBufferShadow);
}

eTexture* eRenderTraceSet::CreateTexture(eString const& path)
{
    return eDataSetFrame::LoadTexture(path);
}

} // namespace KYR
