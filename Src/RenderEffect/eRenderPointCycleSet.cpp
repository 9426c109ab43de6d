#include "eRenderPointCycleSet.h"
#include "eDataSetFrame.h"
#include "eMesh.h"
#include <cstring>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{
// The vertex record: x, y, z, birth (floats), corner x, corner y, size, kind (bytes), colour.
int const kRecordBytes = 24;
int const kCornerOffset = 16;
unsigned int const kPointVertexType = 1;
unsigned int const kLifeVertexType = 2;
// Two triangles per marker; the program tells the corners apart by these bytes.
signed char const kCorners[6][2] = {{-1, -1}, {1, -1}, {-1, 1}, {1, -1}, {-1, 1}, {1, 1}};
} // namespace

eRenderPointCycleSet::eRenderPointCycleSet()
{
    m_strProgram = "PointCycleSet";
}

// The stores and the technique go with the last copy that holds them.
eRenderPointCycleSet::~eRenderPointCycleSet() {}

eRenderable::Type eRenderPointCycleSet::GetType()
{
    return eRT_POINT_CYCLE_SET;
}

unsigned char eRenderPointCycleSet::Initialize(eRenderEngine*)
{
    if (!m_bInitialized)
    {
        CreateBuffers();
        m_bInitialized = 1;
    }
    return m_bInitialized;
}

unsigned char eRenderPointCycleSet::UnInitialize(eRenderEngine*)
{
    DestroyBuffers();
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderPointCycleSet::Render(eRenderEngine* engine, eRenderSystem* rs,
                                           eCamera* camera, eViewport*)
{
    if (!m_bInitialized)
        Initialize(engine);
    UpdateCache();
    if (m_bVisible)
        RenderVertexBuffer(engine, rs, camera);
    m_fCurTime += m_fSpeedPerFrame;
    return 1;
}

unsigned char eRenderPointCycleSet::RenderVertexBuffer(eRenderEngine* engine, eRenderSystem* rs,
                                                       eCamera* camera)
{
    if (!m_pVertexData || !m_pLifeData)
        return 0;
    eRenderProgram* program = PassProgram(engine);
    if (!program)
        return 0;
    eDataSetFrame::SetClockUniforms(engine, program, m_fCurTime, m_fStartTime, m_fEndTime,
                                    m_fTraceTime);
    UpdateProgram(engine, rs, camera, program);
    if (!eDataSetFrame::BindVertexData(m_pVertexData))
        return 0;
    if (!eDataSetFrame::BindVertexData(m_pLifeData))
    {
        eDataSetFrame::UnbindVertexData(m_pVertexData);
        return 0;
    }
    // The bytes no element declares are read from the same buffer as a storage block.
    eDataSetFrame::BindTrackStorage(m_pVertexData);
    // Markers added since the upload are in the stores but not yet in the buffers.
    int vertices = m_pVertexData->GetVertexSize();
    int uploaded = eDataSetFrame::BufferVertices(m_pVertexData);
    int lives = eDataSetFrame::BufferVertices(m_pLifeData);
    if (vertices > uploaded)
        vertices = uploaded;
    if (vertices > lives)
        vertices = lives;
    glDrawArrays(GL_TRIANGLES, 0, vertices);
    eDataSetFrame::UnbindTrackStorage();
    eDataSetFrame::UnbindVertexData(m_pLifeData);
    eDataSetFrame::UnbindVertexData(m_pVertexData);
    return 1;
}

unsigned char eRenderPointCycleSet::UpdateCache()
{
    return 1;
}

unsigned char eRenderPointCycleSet::AddCyclePoint(eCyclePoint* point)
{
    if (!point)
        return 1;
    if (!m_pVertexData || !m_pLifeData)
        CreateVertexBuffer();
    eVector4T<float> local = PositionToLocal(point->m_nSpatialRefType, point->m_Position);
    // The span as it stands now: a later SetTraceTime leaves this marker's death alone.
    float death = (float)point->m_Position.w + m_fTraceTime;
    unsigned char record[kRecordBytes];
    std::memcpy(record, &local, sizeof(local));
    record[18] = (unsigned char)(int)point->m_fSize;
    record[19] = point->m_nType;
    std::memcpy(record + 20, &point->m_Color, 4);
    AddCorners(record, kCornerOffset, death);
    return 1;
}

void eRenderPointCycleSet::CreateVertexBuffer()
{
    if (!m_pVertexData)
    {
        eVertexData* data = new eVertexData();
        data->SetVertexType(kPointVertexType);
        // Only the position and birth are declared; the program reads the corner, size,
        // kind and colour bytes after them straight from the buffer.
        data->AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
        data->SetVertexStride(kRecordBytes);
        m_pVertexData.Reset(data);
    }
    CreateLifeData();
}

void eRenderPointCycleSet::CreateLifeData()
{
    if (m_pLifeData)
        return;
    eVertexData* life = new eVertexData();
    life->SetVertexType(kLifeVertexType);
    life->AddElement(eVET_FLOAT, eVEC_1, eAI_ATTRIB1, 0);
    m_pLifeData.Reset(life);
}

void eRenderPointCycleSet::CreateBuffers()
{
    if (m_pVertexData)
        m_pVertexData->Create();
    if (m_pLifeData)
        m_pLifeData->Create();
}

void eRenderPointCycleSet::DestroyBuffers()
{
    if (m_pVertexData)
        m_pVertexData->Delete();
    if (m_pLifeData)
        m_pLifeData->Delete();
}

void eRenderPointCycleSet::AddCorners(unsigned char* record, int cornerOffset, float death)
{
    for (auto const& corner : kCorners)
    {
        record[cornerOffset] = (unsigned char)corner[0];
        record[cornerOffset + 1] = (unsigned char)corner[1];
        m_pVertexData->AddVertex(record, 1);
        m_pLifeData->AddVertex(reinterpret_cast<unsigned char const*>(&death), 1);
    }
}

} // namespace KYR
