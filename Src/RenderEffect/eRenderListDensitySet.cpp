#include "eRenderListDensitySet.h"
#include "GLut.h"
#include "eDataSetFrame.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include <cstring>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{
char const* const kSource = "Src/RenderEffect/eRenderListDensitySet";
// The vertex record: x, y, z, time (floats); corner x, corner y, size, kind (bytes); colour.
int const kRecordBytes = 24;
int const kCornerOffset = 16;
unsigned int const kListVertexType = 133;
signed char const kCorners[6][2] = {{-1, -1}, {1, -1}, {-1, 1}, {1, -1}, {-1, 1}, {1, 1}};
} // namespace

eRenderListDensitySet::eRenderListDensitySet() : m_nPoolSize(100), m_nHead(0), m_nCount(0) {}

// The pool, the store and the technique go with the last copy that holds them.
eRenderListDensitySet::~eRenderListDensitySet() {}

eRenderable::Type eRenderListDensitySet::GetType()
{
    return eRT_LIST_SET;
}

unsigned char eRenderListDensitySet::Initialize(eRenderEngine*)
{
    if (m_bInitialized)
        return m_bInitialized;
    CreateBuffers();
    int n =
        (int)m_arDensityPoints.size() < m_nPoolSize ? (int)m_arDensityPoints.size() : m_nPoolSize;
    for (int i = 0; i < n; ++i)
    {
        eDensityPoint* point = m_arDensityPoints[(size_t)i];
        if (!point)
            continue;
        point->m_bUploaded = 0;
        if (UpdatePosition(i, point))
        {
            point->m_bUploaded = 1;
            if (m_nCount < i + 1)
                m_nCount = i + 1;
        }
    }
    m_bInitialized = 1;
    return m_bInitialized;
}

unsigned char eRenderListDensitySet::UnInitialize(eRenderEngine*)
{
    DestroyBuffers();
    RemoveAllDensityPoint();
    std::vector<eShared<eDensityPoint>>().swap(m_arDensityPoints);
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderListDensitySet::RenderVertexBuffer(eRenderEngine* engine, eRenderSystem* rs,
                                                        eCamera* camera)
{
    ePass* pass = Pass();
    eRenderProgram* program = engine && pass ? engine->GetRenderProgram(pass) : nullptr;
    if (!program || !m_pVertexData)
        return 0;
    eDataSetFrame::SetClockUniforms(engine, program, m_fCurTime, m_fStartTime, m_fEndTime,
                                    m_fTraceTime);
    UpdateProgram(engine, rs, camera, program);
    // In a canvas target the alpha adds up as well, so that the target can be laid over
    // the scene later with the markers' own coverage.
    bool canvas = m_bCanvasRender && pass->IsTransparent();
    if (canvas)
    {
        GLut::BlendEquationSeparate(GL_FUNC_ADD, GL_FUNC_ADD);
        GLut::BlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE,
                                GL_ONE_MINUS_SRC_ALPHA);
    }
    if (eDataSetFrame::BindVertexData(m_pVertexData))
    {
        int h = m_nHead, n = m_nCount, v = m_nVerticesPerPoint;
        GLenum mode = m_bGeometryShader ? GL_POINTS : GL_TRIANGLES;
        // The oldest records first: from the head to the high-water mark, then the start.
        if (n - h > 0)
            glDrawArrays(mode, v * h, v * (n - h));
        if (h > 0)
            glDrawArrays(mode, 0, v * h);
        eDataSetFrame::UnbindVertexData(m_pVertexData);
    }
    if (canvas)
        glBlendFunc((GLenum)pass->GetSourceBlendFactor(), (GLenum)pass->GetDestBlendFactor());
    return 1;
}

eVertexData* eRenderListDensitySet::CreateVertexBuffer()
{
    eVertexData* data = new eVertexData();
    data->SetVertexType(kListVertexType);
    data->AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
    data->AddElement(eVET_BYTE, eVEC_4, eAI_TEXCOORD0, 0);
    data->AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_COLOR, 1);
    return data;
}

void eRenderListDensitySet::CreateBuffers()
{
    if (m_pVertexData)
        return;
    m_pVertexData.Reset(CreateVertexBuffer());
    // A buffer that cannot be allocated takes no write: the records stay not uploaded.
    eDataSetFrame::CreateSlotBuffer(m_pVertexData, (long long)m_nPoolSize * m_nVerticesPerPoint);
}

void eRenderListDensitySet::DestroyBuffers()
{
    m_pVertexData.Reset();
}

unsigned char eRenderListDensitySet::UpdateVertexBuffer(int, eDensityPoint* point)
{
    eVector4T<float> local = PositionToLocal(point->m_nSpatialRefType, point->m_Position);
    unsigned char record[kRecordBytes];
    std::memcpy(record, &local, sizeof(local));
    record[18] = (unsigned char)(int)point->m_fSize;
    record[19] = point->m_nType;
    std::memcpy(record + 20, &point->m_Color, 4);
    PutCorners(record, kRecordBytes, kCornerOffset);
    return 1;
}

void eRenderListDensitySet::PutCorners(unsigned char* record, int recordBytes, int cornerOffset)
{
    int v = m_nVerticesPerPoint < 6 ? m_nVerticesPerPoint : 6;
    m_pVertexData->SetVertexSize(v);
    for (int k = 0; k < v; ++k)
    {
        record[cornerOffset] = (unsigned char)kCorners[k][0];
        record[cornerOffset + 1] = (unsigned char)kCorners[k][1];
        std::memcpy(m_pVertexData->GetVertex(k), record, (size_t)recordBytes);
    }
}

void eRenderListDensitySet::SetPoolSize(int size)
{
    if (size < 1)
        Eassert("size > 0", kSource, __LINE__);
    // A size below 1 is kept as given; the pool then has no slots, and every slot index
    // is outside it.
    m_nPoolSize = size;
    m_arDensityPoints.assign(size > 0 ? (size_t)size : 0, eShared<eDensityPoint>());
}

unsigned char eRenderListDensitySet::AddDensityPoint(eDensityPoint* point)
{
    eDataSetFrame::AddToRing(m_nPoolSize, m_nCount, m_nHead,
                             [&](int slot) { return UpdateDensityPoint(slot, point); });
    return 1;
}

unsigned char eRenderListDensitySet::UpdateDensityPoint(int i, eDensityPoint* point)
{
    if (!point)
    {
        Eassert("pPoint != NULL", kSource, __LINE__);
        return 0;
    }
    // A pool not sized yet has no slots at all.
    if (i < 0 || i >= m_nPoolSize || i >= (int)m_arDensityPoints.size())
        return 0;
    eShared<eDensityPoint>& slot = m_arDensityPoints[(size_t)i];
    if (!slot)
        slot.Reset(new eDensityPoint(*point));
    else if (slot.Get() != point)
        *slot = *point;
    slot->m_bUploaded = 0;
    if (!UpdatePosition(i, slot))
        return 0;
    slot->m_bUploaded = 1;
    if (m_nCount < i + 1)
        m_nCount = i + 1;
    return 1;
}

eDensityPoint* eRenderListDensitySet::GetDensityPoint(int i)
{
    if (i < 0 || i >= m_nCount || i >= (int)m_arDensityPoints.size())
        return nullptr;
    return m_arDensityPoints[(size_t)i];
}

void eRenderListDensitySet::RemoveAllDensityPoint()
{
    for (eShared<eDensityPoint>& point : m_arDensityPoints)
        point.Reset();
    m_arDensityPoints.clear();
    m_nHead = 0;
    m_nCount = 0;
}

unsigned char eRenderListDensitySet::UpdatePosition(int i, eDensityPoint* point)
{
    if (!m_pVertexData || !point)
        return 0;
    if (!UpdateVertexBuffer(i, point))
        return 0;
    return eDataSetFrame::UploadSlot(m_pVertexData, i, m_nVerticesPerPoint, m_nVerticesPerPoint);
}

} // namespace KYR
