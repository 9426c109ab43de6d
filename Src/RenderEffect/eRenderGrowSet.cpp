#include "eRenderGrowSet.h"
#include "GLut.h"
#include "eDataSetFrame.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eMesh.h"
#include <climits>
#include <cstring>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{
unsigned int const kColorVertexType = 4;
int const kIndexBytes = 4;
float const kDepthBias = 100.0f;

// A buffer size in bytes that Allocate takes, or -1 (refused with a message) when the pool
// asks for more than one buffer can hold.
int BufferBytes(long long bytes)
{
    return bytes >= 0 && bytes <= INT_MAX ? (int)bytes : -1;
}
} // namespace

eRenderGrowSet::eRenderGrowSet()
    : m_nPoolSize(10000), m_nVertexCount(0), m_nIndexCount(0),
      m_listUpdates(new std::deque<eUpdate>()), m_mutex(new eMutex(1))
{
}

// Buffers, queue and lock go with the last copy that holds them.
eRenderGrowSet::~eRenderGrowSet() {}

unsigned char eRenderGrowSet::Initialize(eRenderEngine*)
{
    CreateBuffers();
    m_bInitialized = 1;
    return m_bInitialized;
}

// ---------------------------------------------------------------------------------------------
// Buffers
// ---------------------------------------------------------------------------------------------

eVertexData* eRenderGrowSet::AttachBuffer(eVertexData* data, long long vertices)
{
    eHardwareVertexBuffer* buffer = eHardwareBufferManager::GetSingleton().CreateVertexBuffer();
    int stride = data->GetVertexStride();
    buffer->Allocate(GL_DYNAMIC_DRAW, 1, BufferBytes(vertices < 0 ? -1 : vertices * stride),
                     nullptr);
    buffer->SetVertexStride(stride);
    data->SetHardwareBuffer(buffer);
    return data;
}

unsigned char eRenderGrowSet::CreateExtVertexBuffer()
{
    eVertexData* data = new eVertexData();
    data->SetVertexType(kColorVertexType);
    data->AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_COLOR, 1);
    m_pExtVertexData.Reset(AttachBuffer(data, VertexCapacity()));
    return 1;
}

unsigned char eRenderGrowSet::CreateIndexBuffer()
{
    eIndexExData* data = new eIndexExData();
    eHardwareIndexBuffer* buffer = eHardwareBufferManager::GetSingleton().CreateIndexBuffer();
    long long count = IndexCapacity();
    bool fits = count >= 0 && BufferBytes(count * kIndexBytes) >= 0;
    buffer->Allocate(GL_DYNAMIC_DRAW, kIndexBytes, fits ? (int)count : -1, nullptr);
    data->SetHardwareBuffer(buffer);
    m_pIndexData.Reset(data);
    return 1;
}

unsigned char eRenderGrowSet::CreateBuffers()
{
    if (m_pVertexData || m_pIndexData)
        return 1;
    CreateVertexBuffer();
    CreateExtVertexBuffer();
    CreateIndexBuffer();
    return 1;
}

unsigned char eRenderGrowSet::DestroyBuffers()
{
    m_pVertexData.Reset();
    m_pExtVertexData.Reset();
    m_pIndexData.Reset();
    return 1;
}

// ---------------------------------------------------------------------------------------------
// Shapes and colours
// ---------------------------------------------------------------------------------------------

void eRenderGrowSet::CommitShape(eGrowShape* shape)
{
    std::vector<unsigned char> const& vertices = m_pVertexData->GetVertexBuffer();
    std::vector<unsigned int> const& indices = m_pIndexData->GetIndexExBuffer();
    int stride = m_pVertexData->GetVertexStride();
    int v = stride > 0 ? (int)(vertices.size() / (size_t)stride) : 0;
    int i = (int)indices.size();
    // A shape past the end of the pool is not written: the buffer refuses the range. Its
    // place is counted all the same, as the shapes after it expect.
    if (eHardwareVertexBuffer* buffer = m_pVertexData->GetHardwareBuffer())
        buffer->WriteData((int)((long long)m_nVertexCount * stride), v * stride, vertices.data());
    if (eHardwareIndexBuffer* buffer = m_pIndexData->GetHardwareBuffer())
        buffer->WriteData((int)((long long)m_nIndexCount * kIndexBytes), i * kIndexBytes,
                          indices.data());
    shape->m_nFirstVertex = m_nVertexCount;
    shape->m_nVertexCount = v;
    shape->m_nFirstIndex = m_nIndexCount;
    shape->m_nIndexCount = i;
    m_nVertexCount += v;
    m_nIndexCount += i;
    if (m_pExtVertexData)
    {
        m_pExtVertexData->SetVertexSize(0);
        UpdateExtVertexData(*m_pExtVertexData, shape->m_nFirstVertex, shape->m_nVertexCount,
                            shape->m_cColor);
    }
}

void eRenderGrowSet::UpdateExtVertexData(eVertexData& data, int first, int count,
                                         eVector4T<unsigned char> const& color)
{
    data.SetVertexSize(count > 0 ? count : 0);
    std::vector<unsigned char>& store = data.GetVertexBuffer();
    unsigned char const bytes[4] = {color.x, color.y, color.z, color.w};
    for (size_t at = 0; at + 4 <= store.size(); at += 4)
        std::memcpy(store.data() + at, bytes, 4);
    int stride = data.GetVertexStride();
    int records = stride > 0 ? (int)(store.size() / (size_t)stride) : 0;
    if (eHardwareVertexBuffer* buffer = data.GetHardwareBuffer())
        buffer->WriteData((int)((long long)first * stride), records * stride, store.data());
}

// ---------------------------------------------------------------------------------------------
// The queue
// ---------------------------------------------------------------------------------------------

void eRenderGrowSet::QueueUpdate(eGrowShape* shape, int index,
                                 eVector4T<unsigned char> const& color)
{
    eMutexGuard lock(*m_mutex);
    m_listUpdates->push_back(eUpdate{shape, index, color});
}

void eRenderGrowSet::ClearUpdates()
{
    eMutexGuard lock(*m_mutex);
    std::deque<eUpdate>().swap(*m_listUpdates);
}

// The lock is held through the uploads: the queue's records point at shapes that RemoveAll
// deletes, and it empties the queue under the same lock first.
unsigned char eRenderGrowSet::UpdateCache()
{
    eMutexGuard lock(*m_mutex);
    std::deque<eUpdate>& queue = *m_listUpdates;
    for (int applied = 0; applied < kMaxUpdatesPerFrame && !queue.empty(); ++applied)
    {
        eUpdate update = queue.front();
        queue.pop_front();
        ApplyUpdate(update.m_pShape, update.m_nIndex, update.m_cColor);
    }
    return 1;
}

// ---------------------------------------------------------------------------------------------
// Positions and drawing
// ---------------------------------------------------------------------------------------------

ePoint2D eRenderGrowSet::PositionToGeo(eVector4T<double>& p)
{
    return eRenderCubeSet::PositionToGeo(m_nSpatialRefType, p);
}

eVector4T<double> eRenderGrowSet::PositionToWorld(eVector4T<double>& p)
{
    eVector4T<double> world = eRenderCubeSet::PositionToWorld(m_nSpatialRefType, p);
    world.w = 1.0;
    return world;
}

eVector4T<float> eRenderGrowSet::PositionToLocal(eVector4T<double>& p)
{
    return eRenderCubeSet::PositionToLocal(m_nSpatialRefType, p);
}

void eRenderGrowSet::SetupPass(ePass* pass)
{
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(0);
    pass->SetDepthBiasConstant(kDepthBias);
    pass->SetDepthBiasSlopeScale(kDepthBias);
    pass->SetLightingEnabled(0);
}

unsigned char eRenderGrowSet::BindStreams()
{
    eHardwareIndexBuffer* indices = m_pIndexData ? m_pIndexData->GetHardwareBuffer() : nullptr;
    if (!indices || !indices->GetBufferID() || !eDataSetFrame::BindVertexData(m_pVertexData))
        return 0;
    if (!eDataSetFrame::BindVertexData(m_pExtVertexData))
    {
        eDataSetFrame::UnbindVertexData(m_pVertexData);
        return 0;
    }
    GLut::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, indices->GetBufferID());
    return 1;
}

void eRenderGrowSet::UnbindStreams()
{
    GLut::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    eDataSetFrame::UnbindVertexData(m_pExtVertexData);
    eDataSetFrame::UnbindVertexData(m_pVertexData);
}

// A shape that overran the pool found its writes refused; its draw would read past the
// buffers, so it is left out.
bool eRenderGrowSet::DrawableShape(eGrowShape const* shape)
{
    if (!shape || shape->m_nIndexCount < 0 || shape->m_nFirstIndex < 0 || shape->m_nFirstVertex < 0)
        return false;
    long long indexBytes = m_pIndexData->GetHardwareBuffer()->GetSizeInBytes();
    long long vertexBytes = m_pVertexData->GetHardwareBuffer()->GetSizeInBytes();
    long long colorBytes = m_pExtVertexData->GetHardwareBuffer()->GetSizeInBytes();
    long long lastVertex = (long long)shape->m_nFirstVertex + shape->m_nVertexCount;
    return ((long long)shape->m_nFirstIndex + shape->m_nIndexCount) * kIndexBytes <= indexBytes &&
           lastVertex * m_pVertexData->GetVertexStride() <= vertexBytes &&
           lastVertex * m_pExtVertexData->GetVertexStride() <= colorBytes;
}

} // namespace KYR
