#include "eRenderPointTraceSet.h"
#include "eDataSetFrame.h"
#include "eHardwareBuffer.h"
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
char const* const kSource = "Src/RenderEffect/eRenderPointTraceSet";
int const kCornerVertices = 6; // two triangles per position without the geometry shader

// Asks for what a trace's window reads ahead of its turn: the traces lie scattered in
// memory, and each window otherwise begins with cache misses. The window's two ends in
// the positions, from which the window search starts.
void Prefetch(ePointTrace const* trace)
{
    if (!trace)
        return;
    int n = (int)trace->m_arPositions.size(), s = trace->m_nFirstIndex;
    int e = s + (trace->m_nWindowCount > 0 ? trace->m_nWindowCount - 1 : 0);
    if (s < 0 || e + 1 >= n)
        return;
    __builtin_prefetch(&trace->m_arPositions[s]);
    __builtin_prefetch(&trace->m_arPositions[e]);
    __builtin_prefetch(&trace->m_arPositions[e + 1]);
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
    std::vector<eShared<ePointTrace>>().swap(m_arPointTraces);
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
    if (!eDataSetFrame::BindVertexData(m_pVertexData))
        return 0;
    // The programs read the following position of a track from the same buffer.
    eDataSetFrame::BindTrackStorage(m_pVertexData);
    int h = m_nHead, n = m_nCount;
    // The second number is a slot to stop before: after the ring has wrapped, the slots
    // from n - h up to n are left out of the first call. Kept as the engine has it.
    if (n - h > 0)
        RenderQueue(engine, rs, program, h, n - h);
    if (h > 0)
        RenderQueue(engine, rs, program, 0, h);
    eDataSetFrame::UnbindTrackStorage();
    eDataSetFrame::UnbindVertexData(m_pVertexData);
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
    int vertices = eDataSetFrame::BufferVertices(m_pVertexData);
    for (int slot = begin; slot < end; ++slot)
    {
        ePointTrace* trace = Slot(slot);
        if (!trace || trace->m_arPositions.empty())
            continue;
        // The tail has passed the last position: nothing left to show.
        if (m_fCurTime - m_fTraceTime > trace->m_arPositions.back().w)
            continue;
        int first = range * slot, count = trace->m_nWindowCount * m_nVerticesPerPoint;
        // A window longer than its slot spills into the next; never beyond the buffer.
        if (count > vertices - first)
            count = vertices - first > 0 ? vertices - first : 0;
        // Each vertex reads the position after its own, but never past the first vertex of
        // the window's last position: the head of a trace stays inside its own window.
        glVertexAttribI1i(eAI_ATTRIB1, first + count - m_nVerticesPerPoint);
        glDrawArrays(mode, first, count);
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
    m_pVertexData.Reset(CreateVertexBuffer());
    eDataSetFrame::CreateSlotBuffer(m_pVertexData,
                                    (long long)m_nPoolSize * m_nTraceSize * m_nVerticesPerPoint);
    CreateSlotCaches(m_nPoolSize, m_nTraceSize);
    return 1;
}

unsigned char eRenderPointTraceSet::DestroyBuffers()
{
    // The store and its buffer go when the last copy that shares them lets go.
    m_pVertexData.Reset();
    m_pWindowCache.Reset();
    m_pBufferShadow.Reset();
    return 1;
}

unsigned char eRenderPointTraceSet::UpdateVertexBuffer(ePointTrace* trace, eVertexData* data, int k,
                                                       eVector4T<double>& position)
{
    // Inside UpdateTrace the window's floats are ready; anything else is converted here.
    eVector4T<float> const* local = nullptr;
    if (m_nWindowSlot >= 0 && trace->m_nFirstIndex + k < (int)trace->m_arPositions.size() &&
        &position == &trace->m_arPositions[trace->m_nFirstIndex + k])
        local = m_pWindowCache->At(m_nWindowSlot, trace->m_nFirstIndex + k);
    eVector4T<float> v = local ? *local : PositionToLocal(trace->m_nSpatialRefType, position);
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
    // Earlier entries are dropped; copies that share them keep them.
    m_arPointTraces.assign(size > 0 ? (size_t)size : 0, eShared<ePointTrace>());
}

unsigned char eRenderPointTraceSet::AddPointTrace(ePointTrace const* trace)
{
    eDataSetFrame::AddToRing(m_nPoolSize, m_nCount, m_nHead,
                             [&](int slot) { return UpdatePointTrace(slot, trace); });
    return 1;
}

unsigned char eRenderPointTraceSet::UpdatePointTrace(int index, ePointTrace const* trace)
{
    if (!trace)
    {
        Eassert("pPoint != NULL", kSource, __LINE__);
        return 0;
    }
    if (index < 0 || index >= m_nPoolSize || index >= (int)m_arPointTraces.size())
        return 0;
    eShared<ePointTrace>& slot = m_arPointTraces[index];
    if (!slot)
        slot.Reset(new ePointTrace(*trace));
    else if (slot != trace)
        *slot = *trace;
    // New or changed positions: converted again when next shown.
    if (m_pWindowCache)
        m_pWindowCache->Forget(index);
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
    for (eShared<ePointTrace>& trace : m_arPointTraces)
        trace.Reset();
    m_nHead = 0;
    m_nCount = 0;
}

unsigned char eRenderPointTraceSet::Update()
{
    int n = (int)m_arPointTraces.size();
    if (n == 0)
        return 0;
    BeginSlotPass();
    for (int i = 0; i < n; ++i)
    {
        m_nUpdateIndex %= n;
        // The record two ahead, then what the record one ahead points to.
        char const* ahead =
            reinterpret_cast<char const*>(m_arPointTraces[(m_nUpdateIndex + 2) % n].Get());
        if (ahead)
        {
            __builtin_prefetch(ahead);
            __builtin_prefetch(ahead + sizeof(ePointTrace) - 1);
        }
        int next = (m_nUpdateIndex + 1) % n;
        Prefetch(m_arPointTraces[next]);
        if (m_pWindowCache && m_arPointTraces[next])
            m_pWindowCache->Prefetch(next, m_arPointTraces[next]->m_nFirstIndex);
        if (ePointTrace* trace = m_arPointTraces[m_nUpdateIndex])
            UpdateTrace(m_nUpdateIndex, trace);
        ++m_nUpdateIndex;
    }
    EndSlotPass();
    return 1;
}

unsigned char eRenderPointTraceSet::FindPointTraceIndex(ePointTrace* trace, float t0, float t1,
                                                        int& first, int& last)
{
    std::vector<eVector4T<double>> const& pos = trace->m_arPositions;
    return eDataSetFrame::FindWindow(pos.data(), (int)pos.size(), trace->m_nFirstIndex, t0, t1,
                                     first, last);
}

unsigned char eRenderPointTraceSet::UpdateTrace(int index, ePointTrace* trace)
{
    if (!m_pVertexData || !trace)
        return 0;
    std::vector<eVector4T<double>>& pos = trace->m_arPositions;
    int kind = trace->m_nSpatialRefType;
    eDataSetFrame::eWindowCache* cache = m_pWindowCache;
    unsigned char rising = cache ? cache->Bind(index, ConversionStamp(), trace, pos, kind) : 0;
    float t0, t1;
    eDataSetFrame::WindowTimes(m_fCurTime, m_fTraceTime, m_fStartTime, m_fEndTime, t0, t1);
    // Most frames a window stays where it was; the cache tells so without the positions.
    bool same =
        rising && cache->Holds(index, pos, trace->m_nFirstIndex, trace->m_nWindowCount, t0, t1);
    if (!same && !eDataSetFrame::MoveWindow(pos.data(), (int)pos.size(), t0, t1,
                                            trace->m_nFirstIndex, trace->m_nWindowCount, rising))
        return 0;
    int s = trace->m_nFirstIndex, n = trace->m_nWindowCount, e = s + n - 1;
    int count = n * m_nVerticesPerPoint;
    m_pVertexData->SetVertexSize(count);
    bool cached = same || (cache && cache->Prepare(index, pos, s, n,
                                                   [&](eVector4T<double> const& p)
                                                   { return ConvertLocal(kind, p); }));
    bool bulk = cached && WritesOwnVertices();
    if (!bulk)
    {
        m_nWindowSlot = cached ? index : -1;
        for (int k = s; k <= e; ++k)
            UpdateVertexBuffer(trace, m_pVertexData, k - s, pos[k]);
        m_nWindowSlot = -1;
    }
    PutWindow(index, m_nTraceSize * m_nVerticesPerPoint, s, n, bulk);
    return 1;
}

unsigned char eRenderPointTraceSet::WritesOwnVertices()
{
#if defined(__GNUC__) && !defined(__clang__)
    // This object's UpdateVertexBuffer against this class's own: a bound member pointer
    // gives the function a virtual call would reach.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpmf-conversions"
    using Write = unsigned char (*)(eRenderPointTraceSet*, ePointTrace*, eVertexData*, int,
                                    eVector4T<double>&);
    return (Write)(this->*(&eRenderPointTraceSet::UpdateVertexBuffer)) ==
           (Write)(&eRenderPointTraceSet::UpdateVertexBuffer);
#pragma GCC diagnostic pop
#else
    return 0;
#endif
}

ePointTrace* eRenderPointTraceSet::Slot(int index) const
{
    return index >= 0 && index < (int)m_arPointTraces.size() ? m_arPointTraces[index].Get()
                                                             : nullptr;
}

} // namespace KYR
