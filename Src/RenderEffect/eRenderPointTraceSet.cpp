#include "eRenderPointTraceSet.h"
#include "eDataSetFrame.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include <climits>
#include <cstring>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{
unsigned int const kDynamicDraw = 35048; // GL_DYNAMIC_DRAW
int const kCornerVertices = 6;           // two triangles per position without the geometry shader

// Asks for the start of a trace's window ahead of its turn: the traces lie scattered in
// memory, and the walk of each window otherwise begins with a cache miss.
void Prefetch(ePointTrace const* trace)
{
    if (!trace || trace->m_nFirstIndex >= (int)trace->m_arPositions.size())
        return;
    char const* p = reinterpret_cast<char const*>(&trace->m_arPositions[trace->m_nFirstIndex]);
    for (int line = 0; line < 4; ++line)
        __builtin_prefetch(p + line * 64);
}
} // namespace

eRenderPointTraceSet::eRenderPointTraceSet()
    : m_bGeometryShader(1), m_fPointSize(6.0f), m_PointColor(0, 255, 0, 255), m_nPoolSize(10000),
      m_nTraceSize(50), m_nUpdateIndex(0), m_nHead(0), m_nCount(0)
{
    m_strProgram = "GeometryPointTraceSet";
}

eRenderPointTraceSet::~eRenderPointTraceSet() {}

eRenderable::Type eRenderPointTraceSet::GetType()
{
    return eRT_POINT_TRACE_SET;
}

unsigned char eRenderPointTraceSet::Initialize(eRenderEngine*)
{
    if (m_bInitialized)
        return m_bInitialized;
    CreateBuffers();
    int n = (int)m_arPointTraces.size() < m_nPoolSize ? (int)m_arPointTraces.size() : m_nPoolSize;
    for (int i = 0; i < n; ++i)
        if (ePointTrace* trace = m_arPointTraces[i])
            if (UpdateTrace(i, trace) && m_nCount < i + 1)
                m_nCount = i + 1;
    m_bInitialized = 1;
    return m_bInitialized;
}

unsigned char eRenderPointTraceSet::UnInitialize(eRenderEngine*)
{
    DestroyBuffers();
    RemoveAllPointTrace();
    std::vector<ePointTrace*>().swap(m_arPointTraces);
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderPointTraceSet::Render(eRenderEngine* engine, eRenderSystem* rs,
                                           eCamera* camera, eViewport*)
{
    if (!m_bInitialized)
        Initialize(engine);
    Update();
    if (m_bVisible)
        RenderVertexBuffer(engine, rs, camera);
    return 1;
}

unsigned char eRenderPointTraceSet::RenderVertexBuffer(eRenderEngine* engine, eRenderSystem* rs,
                                                       eCamera* camera)
{
    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    eRenderProgram* program = engine && pass ? engine->GetRenderProgram(pass) : nullptr;
    if (!program)
        return 0;
    eDataSetFrame::SetClockUniforms(engine, program, m_fCurTime, m_fStartTime, m_fEndTime,
                                    m_fTraceTime);
    UpdateProgram(engine, rs, camera, program);
    // The programs also read the following position of the track, one position ahead.
    if (!eDataSetFrame::BindVertexData(m_pVertexData, m_nVerticesPerPoint))
        return 0;
    int h = m_nHead, n = m_nCount;
    // The second number is a slot to stop before: after the ring has wrapped, the slots
    // from n - h up to n are left out of the first call. Kept as the engine has it.
    if (n - h > 0)
        RenderQueue(engine, rs, program, h, n - h);
    if (h > 0)
        RenderQueue(engine, rs, program, 0, h);
    eDataSetFrame::UnbindVertexData(m_pVertexData, m_nVerticesPerPoint);
    return 1;
}

unsigned char eRenderPointTraceSet::RenderQueue(eRenderEngine*, eRenderSystem*,
                                                eRenderProgram* program, int begin, int end)
{
    if (!program)
        return 0;
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();
    p->Uniform4f(u->m_nColor, (float)(m_PointColor.x / 255.0), (float)(m_PointColor.y / 255.0),
                 (float)(m_PointColor.z / 255.0), (float)(m_PointColor.w / 255.0));
    p->Uniform1f(u->m_nCustom[eDataSetFrame::eR_OWN], m_fPointSize);
    GLenum mode = m_bGeometryShader ? GL_POINTS : GL_TRIANGLES;
    int range = m_nTraceSize * m_nVerticesPerPoint;
    for (int slot = begin; slot < end; ++slot)
    {
        ePointTrace* trace = Slot(slot);
        if (!trace || trace->m_arPositions.empty())
            continue;
        // The tail has passed the last position: nothing left to show.
        if (m_fCurTime - m_fTraceTime > trace->m_arPositions.back().w)
            continue;
        glDrawArrays(mode, range * slot, trace->m_nWindowCount * m_nVerticesPerPoint);
    }
    m_fCurTime += m_fSpeedPerFrame;
    return 1;
}

void eRenderPointTraceSet::SetGeometryShader(unsigned char on)
{
    m_bGeometryShader = on;
    m_strProgram = on ? "GeometryPointTraceSet" : "TraceSetPoint";
    m_nVerticesPerPoint = on ? 1 : kCornerVertices;
}

eVertexData* eRenderPointTraceSet::CreateVertexBuffer()
{
    eVertexData* data = new eVertexData();
    data->SetVertexType(1);
    data->AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
    // The scratch store holds one window at a time; sized once so frames do not allocate.
    if (m_nTraceSize > 0)
        data->GetVertexBuffer().reserve((size_t)m_nTraceSize * m_nVerticesPerPoint *
                                        data->GetVertexStride());
    return data;
}

unsigned char eRenderPointTraceSet::CreateBuffers()
{
    if (m_pVertexData)
        return 1;
    m_pVertexData = CreateVertexBuffer();
    if (m_pVertexData->GetHardwareBuffer())
        return 1;
    int stride = m_pVertexData->GetVertexStride();
    long long bytes = (long long)m_nPoolSize * m_nTraceSize * m_nVerticesPerPoint * stride;
    eHardwareVertexBuffer* buffer = eHardwareBufferManager::GetSingleton().CreateVertexBuffer();
    buffer->SetVertexStride(stride);
    if (bytes > 0 && bytes <= INT_MAX)
        buffer->Allocate(kDynamicDraw, 1, (int)bytes, nullptr);
    m_pVertexData->SetHardwareBuffer(buffer);
    return 1;
}

unsigned char eRenderPointTraceSet::DestroyBuffers()
{
    if (m_pVertexData)
    {
        m_pVertexData->Delete();
        delete m_pVertexData;
        m_pVertexData = nullptr;
    }
    return 1;
}

unsigned char eRenderPointTraceSet::UpdateVertexBuffer(ePointTrace* trace, eVertexData* data, int k,
                                                       eVector4T<double>& position)
{
    eVector4T<float> v = PositionToLocal(trace->m_nSpatialRefType, position);
    unsigned char* out = data->GetVertex(k * m_nVerticesPerPoint);
    if (!out)
        return 0;
    for (int i = 0; i < m_nVerticesPerPoint; ++i)
        std::memcpy(out + i * sizeof(v), &v, sizeof(v));
    return 1;
}

void eRenderPointTraceSet::SetPoolSize(int size)
{
    m_nPoolSize = size;
    // Earlier entries are dropped, not freed.
    m_arPointTraces.assign(size > 0 ? (size_t)size : 0, nullptr);
}

unsigned char eRenderPointTraceSet::AddPointTrace(ePointTrace const* trace)
{
    if (m_nCount < m_nPoolSize)
    {
        // A record that cannot be uploaded yet keeps its slot; Initialize uploads it.
        if (!UpdatePointTrace(m_nCount, trace))
            ++m_nCount;
        return 1;
    }
    m_nHead = m_nCount > 0 ? m_nHead % m_nCount : 0;
    if (UpdatePointTrace(m_nHead, trace))
        ++m_nHead;
    return 1;
}

unsigned char eRenderPointTraceSet::UpdatePointTrace(int index, ePointTrace const* trace)
{
    if (!trace)
    {
        Eassert("pPoint != NULL", __FILE__, __LINE__);
        return 0;
    }
    if (index < 0 || index >= m_nPoolSize || index >= (int)m_arPointTraces.size())
        return 0;
    ePointTrace*& slot = m_arPointTraces[index];
    if (!slot)
        slot = new ePointTrace(*trace);
    else if (slot != trace)
        *slot = *trace;
    if (!UpdateTrace(index, slot))
        return 0;
    if (m_nCount < index + 1)
        m_nCount = index + 1;
    return 1;
}

ePointTrace* eRenderPointTraceSet::GetPointTrace(int index)
{
    return index >= 0 && index < m_nCount ? Slot(index) : nullptr;
}

void eRenderPointTraceSet::RemoveAllPointTrace()
{
    for (ePointTrace*& trace : m_arPointTraces)
    {
        delete trace;
        trace = nullptr;
    }
    m_nHead = 0;
    m_nCount = 0;
}

unsigned char eRenderPointTraceSet::Update()
{
    int n = (int)m_arPointTraces.size();
    if (n == 0)
        return 0;
    for (int i = 0; i < n; ++i)
    {
        m_nUpdateIndex %= n;
        Prefetch(m_arPointTraces[(m_nUpdateIndex + 1) % n]);
        if (ePointTrace* trace = m_arPointTraces[m_nUpdateIndex])
            UpdateTrace(m_nUpdateIndex, trace);
        ++m_nUpdateIndex;
    }
    return 1;
}

unsigned char eRenderPointTraceSet::FindPointTraceIndex(ePointTrace* trace, float t0, float t1,
                                                        int& first, int& last)
{
    first = -1;
    last = -1;
    std::vector<eVector4T<double>> const& pos = trace->m_arPositions;
    int n = (int)pos.size(), i = trace->m_nFirstIndex < 0 ? 0 : trace->m_nFirstIndex;
    while (i < n && !(pos[i].w > t0))
        ++i;
    if (i >= n)
        return 0;
    first = i > 0 ? i - 1 : 0;
    for (i = first; i < n; ++i)
        if (pos[i].w > t1)
        {
            last = i;
            break;
        }
    return last > 0;
}

unsigned char eRenderPointTraceSet::UpdateTrace(int index, ePointTrace* trace)
{
    if (!m_pVertexData || !trace)
        return 0;
    // The window already reaches the end of the path: it keeps showing its last stretch.
    if ((int)trace->m_arPositions.size() <= trace->m_nFirstIndex + trace->m_nWindowCount)
        return 0;
    float t0 = m_fCurTime - m_fTraceTime, t1 = m_fCurTime;
    if (t0 < m_fStartTime)
        t0 = m_fStartTime;
    if (t1 > m_fEndTime)
        t1 = m_fEndTime;
    int s, e;
    if (!FindPointTraceIndex(trace, t0, t1, s, e) || s < 0)
        return 0;
    trace->m_nFirstIndex = s;
    // The position after t1 is included so the head can be placed between the last two.
    trace->m_nWindowCount = e - s + 1;
    int count = trace->m_nWindowCount * m_nVerticesPerPoint;
    m_pVertexData->SetVertexSize(count);
    for (int k = s; k <= e; ++k)
        UpdateVertexBuffer(trace, m_pVertexData, k - s, trace->m_arPositions[k]);
    int stride = m_pVertexData->GetVertexStride();
    if (eHardwareVertexBuffer* buffer = m_pVertexData->GetHardwareBuffer())
        buffer->WriteData(m_nTraceSize * m_nVerticesPerPoint * stride * index, stride * count,
                          m_pVertexData->GetVertex(0));
    return 1;
}

ePointTrace* eRenderPointTraceSet::Slot(int index) const
{
    return index >= 0 && index < (int)m_arPointTraces.size() ? m_arPointTraces[index] : nullptr;
}

} // namespace KYR
