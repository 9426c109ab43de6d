#include "eRenderListLineTraceSet.h"
#include "GLut.h"
#include "eDataSetFrame.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eTexture.h"
#include <cstring>
#include <epoxy/gl.h>
#include <iterator>

namespace KYR
{

namespace
{
char const* const kSource = "Src/RenderEffect/eRenderListLineTraceSet";
}

eRenderListLineTraceSet::eLines::~eLines()
{
    for (eLineTrace* line : m_LineTracePool)
    {
        if (line)
            delete line->m_pTraceList;
        delete line;
    }
}

eRenderListLineTraceSet::eLists::~eLists()
{
    Free(m_lstActiveTraceLists);
    Free(m_lstFreeTraceLists);
}

void eRenderListLineTraceSet::eLists::Free(std::list<eTraceList*>& lists)
{
    for (eTraceList* list : lists)
        delete list;
    lists.clear();
}

eRenderListLineTraceSet::eRenderListLineTraceSet()
    : m_nPoolSize(10000), m_nTraceSize(200), m_Lines(new eLines()), m_Lists(new eLists())
{
}

eRenderListLineTraceSet::~eRenderListLineTraceSet() {}

eRenderable::Type eRenderListLineTraceSet::GetType()
{
    return eRT_LIST_LINE_TRACE_SET;
}

unsigned char eRenderListLineTraceSet::Initialize(eRenderEngine* engine)
{
    eRenderLineTraceSet::Initialize(engine);
    CreateBuffers();
    return 1;
}

unsigned char eRenderListLineTraceSet::UnInitialize(eRenderEngine* engine)
{
    eRenderLineTraceSet::UnInitialize(engine);
    DestroyBuffers();
    // The lines and the lists they hold go with the last copy that shares them.
    m_Lines.Reset(new eLines());
    {
        eMutexGuard guard(m_Lists->m_Mutex);
        eLists::Free(m_Lists->m_lstActiveTraceLists);
    }
    {
        eMutexGuard guard(m_Lists->m_Mutex);
        eLists::Free(m_Lists->m_lstFreeTraceLists);
    }
    return 1;
}

unsigned char eRenderListLineTraceSet::UpdateCache()
{
    eLines& lines = *m_Lines;
    std::list<eLineTrace*>& active = lines.m_lstActiveLines;
    BeginSlotPass();
    for (auto it = active.begin(); it != active.end();)
    {
        eLineTrace* line = *it;
        auto next = std::next(it);
        if (!line)
            Eassert("pLine", kSource, __LINE__);
        else if (IsOutTime(line))
            lines.m_lstFreeLines.splice(lines.m_lstFreeLines.end(), active, it);
        else
            Update(line);
        it = next;
    }
    EndSlotPass();
    BindWaitingLists();
    return 1;
}

void eRenderListLineTraceSet::BindWaitingLists()
{
    eLines& lines = *m_Lines;
    eLists& lists = *m_Lists;
    {
        // Expired lines first: their slots are taken before new ones. List nodes move
        // between the queues rather than being made, so binding allocates nothing.
        eMutexGuard guard(lists.m_Mutex);
        std::list<eTraceList*>& waiting = lists.m_lstActiveTraceLists;
        for (auto it = lines.m_lstFreeLines.begin(); it != lines.m_lstFreeLines.end();)
        {
            eLineTrace* line = *it;
            if (!line)
            {
                Eassert("pActiveLine != NULL", kSource, __LINE__);
                ++it;
                continue;
            }
            eTraceList* fresh = waiting.empty() ? nullptr : waiting.front();
            if (!fresh)
            {
                if (!waiting.empty())
                    waiting.pop_front();
                break;
            }
            if (line->m_pTraceList)
            {
                waiting.front() = line->m_pTraceList;
                lists.m_lstFreeTraceLists.splice(lists.m_lstFreeTraceLists.end(), waiting,
                                                 waiting.begin());
            }
            else
                waiting.pop_front();
            // The window indices stay those of the old list.
            line->m_pTraceList = fresh;
            if (m_pWindowCache)
                m_pWindowCache->Forget(line->m_nIndex);
            auto next = std::next(it);
            lines.m_lstActiveLines.splice(lines.m_lstActiveLines.end(), lines.m_lstFreeLines, it);
            it = next;
        }
    }
    {
        // The last slot of the pool is never used.
        eMutexGuard guard(lists.m_Mutex);
        int slots = BufferSlots() < m_nPoolSize ? BufferSlots() : m_nPoolSize;
        while (lines.m_nPoolIndex < slots - 1)
        {
            eTraceList* list = GetActiveTraceList();
            if (!list)
                break;
            eLineTrace* line = new eLineTrace(lines.m_nPoolIndex, list);
            lines.m_lstActiveLines.push_back(line);
            if ((int)lines.m_LineTracePool.size() != lines.m_nPoolIndex)
                Eassert("m_LineTracePool.size() == m_nPoolIndex", kSource, __LINE__);
            lines.m_LineTracePool.push_back(line);
            ++lines.m_nPoolIndex;
        }
    }
}

unsigned char eRenderListLineTraceSet::Update(eLineTrace* line)
{
    if (!m_pVertexData || !line || !line->m_pTraceList)
        return 0;
    std::vector<eVector4T<double>>& pos = line->m_pTraceList->GetPositions();
    int kind = line->m_pTraceList->GetSpatialRefType(), slot = line->m_nIndex;
    eDataSetFrame::eWindowCache* cache = m_pWindowCache;
    unsigned char rising =
        cache ? cache->Bind(slot, ConversionStamp(), line->m_pTraceList, pos, kind) : 0;
    float t0, t1;
    eDataSetFrame::WindowTimes(m_fCurTime, m_fTraceTime, m_fStartTime, m_fEndTime, t0, t1);
    // Most frames a window stays where it was; the cache tells so without the positions.
    bool same =
        rising && cache->Holds(slot, pos, line->m_nFirstIndex, line->m_nWindowCount, t0, t1);
    if (!same && !eDataSetFrame::MoveWindow(pos.data(), (int)pos.size(), t0, t1,
                                            line->m_nFirstIndex, line->m_nWindowCount, rising))
        return 0;
    int s = line->m_nFirstIndex, n = line->m_nWindowCount, e = s + n - 1;
    int count = n * m_nVerticesPerPoint;
    m_pVertexData->SetVertexSize(count);
    bool cached = same || (cache && cache->Prepare(slot, pos, s, n,
                                                   [&](eVector4T<double> const& p)
                                                   { return ConvertLocal(kind, p); }));
    bool bulk = cached && WritesOwnVertices();
    if (!bulk)
    {
        m_nWindowSlot = cached ? slot : -1;
        for (int k = s; k <= e; ++k)
            UpdateVertexBuffer(line, m_pVertexData, k - s, pos[k]);
        m_nWindowSlot = -1;
    }
    PutWindow(slot, m_nTraceSize * m_nVerticesPerPoint, s, n, bulk);
    return 1;
}

unsigned char eRenderListLineTraceSet::UpdateVertexBuffer(eLineTrace* line, eVertexData* data,
                                                          int k, eVector4T<double>& position)
{
    // Inside Update the window's floats are ready; anything else is converted here.
    eTraceList* list = line->m_pTraceList;
    eVector4T<float> const* local = nullptr;
    if (m_nWindowSlot >= 0 && list && line->m_nFirstIndex + k < (int)list->GetPositions().size() &&
        &position == &list->GetPositions()[line->m_nFirstIndex + k])
        local = m_pWindowCache->At(m_nWindowSlot, line->m_nFirstIndex + k);
    eVector4T<float> v =
        local ? *local : PositionToLocal(list ? list->GetSpatialRefType() : 1, position);
    unsigned char* out = data->GetVertex(k * m_nVerticesPerPoint);
    if (!out)
        return 0;
    for (int i = 0; i < m_nVerticesPerPoint; ++i)
        std::memcpy(out + i * sizeof(v), &v, sizeof(v));
    return 1;
}

unsigned char eRenderListLineTraceSet::WritesOwnVertices()
{
#if defined(__GNUC__) && !defined(__clang__)
    // This object's UpdateVertexBuffer against this class's own: a bound member pointer
    // gives the function a virtual call would reach.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpmf-conversions"
    using Write = unsigned char (*)(eRenderListLineTraceSet*, eLineTrace*, eVertexData*, int,
                                    eVector4T<double>&);
    return (Write)(this->*(&eRenderListLineTraceSet::UpdateVertexBuffer)) ==
           (Write)(&eRenderListLineTraceSet::UpdateVertexBuffer);
#pragma GCC diagnostic pop
#else
    return 0;
#endif
}

unsigned char eRenderListLineTraceSet::RenderVertexBuffer(eRenderEngine* engine, eRenderSystem* rs,
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

    m_arFirsts.clear();
    m_arCounts.clear();
    int range = m_nTraceSize * m_nVerticesPerPoint;
    int vertices = eDataSetFrame::BufferVertices(m_pVertexData);
    for (eLineTrace* line : m_Lines->m_lstActiveLines)
    {
        if (!line)
        {
            Eassert("pLine != NULL", kSource, __LINE__);
            continue;
        }
        std::vector<eVector4T<double>>* pos =
            line->m_pTraceList ? &line->m_pTraceList->GetPositions() : nullptr;
        if (!pos || pos->empty() || m_fCurTime - m_fTraceTime > pos->back().w)
            continue;
        int first = range * line->m_nIndex, count = m_nVerticesPerPoint * line->m_nWindowCount;
        // A window longer than its slot spills into the next; never beyond the buffer.
        if (count > vertices - first)
            count = vertices - first > 0 ? vertices - first : 0;
        // A line without a window yet draws nothing; left out, since some drivers drop a
        // whole multi-draw that holds an empty range.
        if (count <= 0)
            continue;
        m_arFirsts.push_back(first);
        m_arCounts.push_back(count);
    }
    if (!m_arFirsts.empty() && !m_arCounts.empty())
    {
        // The back line first, so that the fore line lies on top.
        if (m_bEnableBackLine)
            DrawLines(program, m_fBackLineWidth, m_BackColor, m_pBackTexture);
        if (m_bEnableForeLine)
        {
            if (m_bLineSmooth)
                glEnable(GL_LINE_SMOOTH);
            DrawLines(program, m_fForeLineWidth, m_ForeColor, m_pForeTexture);
            if (m_bLineSmooth)
                glDisable(GL_LINE_SMOOTH);
        }
        glLineWidth(pass->GetLineWidth());
    }
    eDataSetFrame::UnbindVertexData(m_pVertexData);
    return 1;
}

void eRenderListLineTraceSet::DrawLines(eRenderProgram* program, float width,
                                        eVector4T<unsigned char> const& color, eTexture* texture)
{
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();
    glLineWidth(width);
    p->Uniform4f(u->m_nColor, (float)(color.x / 255.0), (float)(color.y / 255.0),
                 (float)(color.z / 255.0), (float)(color.w / 255.0));
    if (texture)
    {
        p->Uniform1f(u->m_nTextureEnabled, 1.0f);
        GLut::ActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, texture->GetTextureID());
    }
    else
        p->Uniform1f(u->m_nTextureEnabled, 0.0f);
    GLut::MultiDrawArrays(GL_LINE_STRIP, m_arFirsts.data(), m_arCounts.data(),
                          (int)m_arFirsts.size());
    if (texture)
        glBindTexture(GL_TEXTURE_2D, 0);
}

eVertexData* eRenderListLineTraceSet::CreateVertexBuffer()
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

unsigned char eRenderListLineTraceSet::CreateBuffers()
{
    if (m_pVertexData)
        return 1;
    m_pVertexData.Reset(CreateVertexBuffer());
    eDataSetFrame::CreateSlotBuffer(m_pVertexData,
                                    (long long)m_nPoolSize * m_nTraceSize * m_nVerticesPerPoint);
    CreateSlotCaches(m_nPoolSize, m_nTraceSize);
    return 1;
}

unsigned char eRenderListLineTraceSet::DestroyBuffers()
{
    // The store and its buffer go when the last copy that shares them lets go.
    m_pVertexData.Reset();
    m_pWindowCache.Reset();
    m_pBufferShadow.Reset();
    return 1;
}

eTraceList* eRenderListLineTraceSet::CreateTraceList()
{
    eTraceList* list = nullptr;
    {
        // Always under the lock: a list shorter or longer than two entries is still one
        // std::list that the render thread changes.
        eMutexGuard guard(m_Lists->m_Mutex);
        std::list<eTraceList*>& free = m_Lists->m_lstFreeTraceLists;
        if (!free.empty())
        {
            list = free.front();
            free.pop_front();
            if (!list)
                Eassert("pTraceList != NULL", kSource, __LINE__);
        }
    }
    if (!list)
        return new eTraceList();
    list->GetPositions().clear();
    return list;
}

unsigned char eRenderListLineTraceSet::AddTraceList(eTraceList* list)
{
    eMutexGuard guard(m_Lists->m_Mutex);
    m_Lists->m_lstActiveTraceLists.push_back(list);
    return 1;
}

int eRenderListLineTraceSet::GetTraceListCount()
{
    eMutexGuard guard(m_Lists->m_Mutex);
    return (int)m_Lists->m_lstActiveTraceLists.size();
}

void eRenderListLineTraceSet::RemoveAllTraceList()
{
    eLines& lines = *m_Lines;
    lines.m_lstFreeLines.splice(lines.m_lstFreeLines.end(), lines.m_lstActiveLines);
    eMutexGuard guard(m_Lists->m_Mutex);
    eLists::Free(m_Lists->m_lstActiveTraceLists);
}

eTraceList* eRenderListLineTraceSet::GetActiveTraceList()
{
    eMutexGuard guard(m_Lists->m_Mutex);
    std::list<eTraceList*>& waiting = m_Lists->m_lstActiveTraceLists;
    if (waiting.empty())
        return nullptr;
    eTraceList* list = waiting.front();
    waiting.pop_front();
    return list;
}

void eRenderListLineTraceSet::AddFreeTraceList(eTraceList* list)
{
    if (!list)
        return;
    eMutexGuard guard(m_Lists->m_Mutex);
    m_Lists->m_lstFreeTraceLists.push_back(list);
}

unsigned char eRenderListLineTraceSet::IsOutTime(eLineTrace* line)
{
    if (!line || !line->m_pTraceList || line->m_pTraceList->GetPositions().empty())
        return 1;
    return m_fCurTime - m_fTraceTime > (float)line->m_pTraceList->GetPositions().back().w;
}

unsigned char eRenderListLineTraceSet::FindLineTraceIndex(eLineTrace* line, float t0, float t1,
                                                          int& first, int& last)
{
    first = -1;
    last = -1;
    if (!line || !line->m_pTraceList)
        return 0;
    std::vector<eVector4T<double>> const& pos = line->m_pTraceList->GetPositions();
    return eDataSetFrame::FindWindow(pos.data(), (int)pos.size(), line->m_nFirstIndex, t0, t1,
                                     first, last);
}

int eRenderListLineTraceSet::BufferSlots()
{
    int range = m_nTraceSize * m_nVerticesPerPoint;
    return range > 0 ? eDataSetFrame::BufferVertices(m_pVertexData) / range : 0;
}

} // namespace KYR
