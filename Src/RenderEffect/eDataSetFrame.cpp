#include "eDataSetFrame.h"
#include "ePicture.h"
#include "GLut.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eFile.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderObject.h"
#include "eTexture.h"
#include <atomic>
#include <climits>
#include <cstring>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{
double const kDegToRad = eMathEngine::DEG_TO_RAD;
double const kEarthRadius = eMathEngine::EARTH_RADIUS;
double const kEarthCircumference = eMathEngine::EARTH_CIRCUMFERENCE;
GLuint const kTrackStorageBinding = 0; // storage block of the programs' following positions

// The inverse of the last local frame asked for. A set converts many positions against
// one frame, so the inverse is computed once and reused while the frame stays the same.
struct eInverseCache
{
    eMatrix4T<float> m_Key;
    eMatrix4T<float> m_Inverse;
};

eMatrix4T<float> const& InverseOf(eMatrix4T<float> const& m)
{
    thread_local eInverseCache cache;
    if (std::memcmp(cache.m_Key.Ptr(), m.Ptr(), sizeof(float) * 16) != 0)
    {
        cache.m_Key = m;
        cache.m_Inverse = m.Inverse();
    }
    return cache.m_Inverse;
}

eCoordSys* CoordSysOf(eCanvas* canvas)
{
    return canvas ? canvas->GetCoordSys() : nullptr;
}
} // namespace

int eDataSetFrame::SceneMode(eCamera* camera)
{
    return camera ? (int)camera->GetSceneMode() : (int)eSM_GLOBE;
}

eVector4T<double> eDataSetFrame::PositionToWorld(eCamera* camera, eCanvas* canvas,
                                                 eMatrix4T<float> const& local,
                                                 eVector4T<double> const& anchor, int kind,
                                                 eVector4T<double> const& p)
{
    int mode = SceneMode(camera);
    if (kind == 0)
    {
        eVector4T<float> v = local * eVector4T<float>(p);
        return eVector4T<double>(v.x + anchor.x, v.y + anchor.y, v.z + anchor.z, p.w);
    }
    if (kind == 1 && mode == eSM_GLOBE)
    {
        eVector3T<double> w =
            eMathEngine::SphericalToCartesian(p.x * kDegToRad, p.y * kDegToRad, p.z + kEarthRadius);
        return eVector4T<double>(w, p.w);
    }
    eCoordSys* cs = CoordSysOf(canvas);
    if (!cs)
        return eVector4T<double>(0.0, 0.0, p.z, p.w);
    ePoint2D map(p.x, p.y), logical;
    if (kind == 1)
    {
        cs->GeoToMap(ePoint2D(p.x, p.y), map);
        cs->MapToLogicalPoint(map, logical);
        return eVector4T<double>(logical.x, logical.y, p.z, p.w);
    }
    cs->MapToLogicalPoint(map, logical);
    eVector3T<double> w;
    cs->LogicalToWorld((eSceneMode)mode, logical, w, p.z);
    return eVector4T<double>(w, p.w);
}

eVector4T<float> eDataSetFrame::PositionToLocal(eCamera* camera, eCanvas* canvas,
                                                eMatrix4T<float> const& local,
                                                eVector4T<double> const& anchor, int kind,
                                                eVector4T<double> const& p)
{
    if (kind == 0)
        return eVector4T<float>(p);
    int mode = SceneMode(camera);
    // Geographic positions on the globe are the common case of every frame: converted
    // here directly, with the same arithmetic as PositionToWorld.
    eVector3T<double> w;
    if (kind == 1 && mode == eSM_GLOBE)
        w = eMathEngine::SphericalToCartesian(p.x * kDegToRad, p.y * kDegToRad, p.z + kEarthRadius);
    else
    {
        eVector4T<double> world = PositionToWorld(camera, canvas, local, anchor, kind, p);
        w = eVector3T<double>(world.x, world.y, world.z);
    }
    float x = (float)(w.x - anchor.x), y = (float)(w.y - anchor.y), z = (float)(w.z - anchor.z);
    if (mode != eSM_GLOBE)
        return eVector4T<float>(x, y, z, (float)p.w);
    float const* m = InverseOf(local).Ptr(); // column-major, point with w = 1
    return eVector4T<float>(m[0] * x + m[4] * y + m[8] * z + m[12],
                            m[1] * x + m[5] * y + m[9] * z + m[13],
                            m[2] * x + m[6] * y + m[10] * z + m[14], (float)p.w);
}

void eDataSetFrame::CreateAnchor(eCamera* camera, eCanvas* canvas, int kind,
                                 eVector3T<double> const& position, char const* reportFile,
                                 int reportLine, eVector4T<double>& world, eMatrix4T<float>& local)
{
    world = PositionToWorld(camera, canvas, local, world, kind, eVector4T<double>(position, 0.0));
    if (SceneMode(camera) != eSM_GLOBE)
        return;
    ePoint2D geo(0.0, 0.0);
    if (kind == 0)
    {
        if (reportFile)
            Eassert("false", reportFile, (unsigned int)reportLine);
    }
    else
        geo = PositionToGeo(canvas, kind, position.x, position.y);
    local = LocalFrame(geo);
}

ePoint2D eDataSetFrame::PositionToGeo(eCanvas* canvas, int kind, double x, double y)
{
    if (kind == 0)
        return ePoint2D(0.0, 0.0);
    if (kind == 1)
        return ePoint2D(x, y);
    ePoint2D geo(0.0, 0.0);
    if (eCoordSys* cs = CoordSysOf(canvas))
        cs->MapToGeo(ePoint2D(x, y), geo);
    return geo;
}

eMatrix4T<float> eDataSetFrame::LocalFrame(ePoint2D const& geo)
{
    return eMatrix4T<float>::RotationY((float)(geo.x * kDegToRad)) *
           eMatrix4T<float>::RotationX((float)(-geo.y * kDegToRad));
}

void eDataSetFrame::WindowTimes(float curTime, float traceTime, float startTime, float endTime,
                                float& t0, float& t1)
{
    t0 = curTime - traceTime;
    t1 = curTime;
    if (t0 < startTime)
        t0 = startTime;
    if (t1 > endTime)
        t1 = endTime;
}

unsigned char eDataSetFrame::FindWindow(eVector4T<double> const* positions, int count, int from,
                                        float t0, float t1, int& first, int& last, int hint)
{
    first = -1;
    last = -1;
    int i = from < 0 ? 0 : from;
    while (i < count && !(positions[i].w > t0))
        ++i;
    if (i >= count)
        return 0;
    first = i > 0 ? i - 1 : 0;
    if (hint >= 0)
    {
        // Times that never fall make "above t1" false up to one index and true after it:
        // step from the hint to that index instead of walking the whole window.
        i = hint < first ? first : (hint >= count ? count - 1 : hint);
        if (positions[i].w > t1)
        {
            while (i > first && positions[i - 1].w > t1)
                --i;
            last = i;
        }
        else
        {
            while (++i < count && !(positions[i].w > t1))
            {
            }
            last = i < count ? i : -1;
        }
        return last > 0;
    }
    for (i = first; i < count; ++i)
        if (positions[i].w > t1)
        {
            last = i;
            break;
        }
    return last > 0;
}

unsigned char eDataSetFrame::MoveWindow(eVector4T<double> const* positions, int count, float t0,
                                        float t1, int& firstIndex, int& windowCount,
                                        unsigned char rising)
{
    // The window already reaches the end of the path: it keeps showing its last stretch.
    if (count <= firstIndex + windowCount)
        return 0;
    int s, e;
    int hint = rising ? firstIndex + (windowCount > 0 ? windowCount - 1 : 0) : -1;
    if (!FindWindow(positions, count, firstIndex, t0, t1, s, e, hint) || s < 0)
        return 0;
    firstIndex = s;
    windowCount = e - s + 1;
    return 1;
}

unsigned char eDataSetFrame::CreateSlotBuffer(eVertexData* data, long long vertices)
{
    if (!data)
        return 0;
    if (data->GetHardwareBuffer())
        return 1;
    int stride = data->GetVertexStride();
    long long bytes = vertices * stride;
    eHardwareVertexBuffer* buffer = eHardwareBufferManager::GetSingleton().CreateVertexBuffer();
    buffer->SetVertexStride(stride);
    unsigned char ok = 0;
    if (bytes > 0 && bytes <= INT_MAX)
        ok = buffer->Allocate(GL_DYNAMIC_DRAW, 1, (int)bytes, nullptr);
    data->SetHardwareBuffer(buffer);
    return ok;
}

unsigned char eDataSetFrame::UploadSlot(eVertexData* data, int slot, int slotVertices, int vertices,
                                        eBufferShadow* shadow)
{
    eHardwareVertexBuffer* buffer = data ? data->GetHardwareBuffer() : nullptr;
    if (!buffer)
        return 0;
    int stride = data->GetVertexStride();
    if (shadow)
        return slot >= 0 && vertices >= 0 &&
               shadow->Write(buffer, (size_t)slotVertices * stride * slot,
                             (size_t)stride * vertices, data->GetVertex(0));
    return buffer->WriteData(slotVertices * stride * slot, stride * vertices, data->GetVertex(0));
}

int eDataSetFrame::BufferVertices(eVertexData* data)
{
    eHardwareVertexBuffer* buffer = data ? data->GetHardwareBuffer() : nullptr;
    int stride = data ? data->GetVertexStride() : 0;
    return buffer && stride > 0 ? buffer->GetSizeInBytes() / stride : 0;
}

eTechnique* eDataSetFrame::CreateTechnique(eString const& program, unsigned char depthTest)
{
    eTechnique* technique = new eTechnique();
    ePass* pass = technique->CreatePass();
    pass->SetProgram(program);
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(depthTest);
    pass->SetDepthWriteEnabled(0);
    pass->SetDepthBiasConstant(0.0f);
    pass->SetDepthBiasSlopeScale(0.0f);
    pass->SetLightingEnabled(0);
    pass->SetLineWidth(2.0f);
    return technique;
}

void eDataSetFrame::SetClockUniforms(eRenderEngine* engine, eRenderProgram* program, float curTime,
                                     float startTime, float endTime, float traceTime)
{
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();
    double resolution = engine->GetRenderResolution(1);
    p->Uniform1f(u->m_nCustom[eR_RESERVED], 0.0f);
    p->Uniform1f(u->m_nLightingEnabled, 0.0f);
    p->Uniform1f(u->m_nCustom[eR_EARTH_PIXELS], (float)(kEarthCircumference / resolution));
    p->Uniform1f(u->m_nCustom[eR_CUR_TIME], curTime);
    p->Uniform1f(u->m_nCustom[eR_START_TIME], startTime);
    p->Uniform1f(u->m_nCustom[eR_END_TIME], endTime);
    p->Uniform1f(u->m_nCustom[eR_TRACE_TIME], traceTime);
}

void eDataSetFrame::SetAnchorMatrix(eCamera* camera, eRenderProgram* program,
                                    eVector4T<double> const& anchor, eMatrix4T<float> const& local)
{
    eVector3T<double> c = camera ? camera->GetReferenceCenter() : eVector3T<double>();
    eMatrix4T<float> world =
        eMatrix4T<float>::Translation((float)(anchor.x - c.x), (float)(anchor.y - c.y),
                                      (float)(anchor.z - c.z)) *
        local;
    program->GetProgram()->UniformMatrix4(program->GetUniform()->m_nWorldMatrix, 1, 0, world.Ptr());
}

void eDataSetFrame::SetReferenceCentre(eCamera* camera, eRenderProgram* program)
{
    eVector3T<double> c = camera ? camera->GetReferenceCenter() : eVector3T<double>();
    eVector3T<float> high, low;
    eRenderObject::DoubleToTwoFloat(c, high, low);
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();
    p->Uniform3f(u->m_nCustom[eR_REF_HIGH], high.x, high.y, high.z);
    p->Uniform3f(u->m_nCustom[eR_REF_LOW], low.x, low.y, low.z);
}

unsigned char eDataSetFrame::BindVertexData(eVertexData* data)
{
    eHardwareVertexBuffer* buffer = data ? data->GetHardwareBuffer() : nullptr;
    if (!buffer || !buffer->GetBufferID())
        return 0;
    int stride = data->GetVertexStride();
    GLut::BindBuffer(GL_ARRAY_BUFFER, buffer->GetBufferID());
    for (eVertexElement const& e : data->GetVertexElements())
    {
        GLut::VertexAttribPointer(e.m_eIndex, e.m_nCount, e.m_eType, e.m_bNormalized, stride,
                                  reinterpret_cast<void const*>((size_t)e.m_nOffset));
        GLut::EnableVertexAttribArray(e.m_eIndex);
    }
    return 1;
}

void eDataSetFrame::UnbindVertexData(eVertexData* data)
{
    if (!data)
        return;
    for (eVertexElement const& e : data->GetVertexElements())
        GLut::DisableVertexAttribArray(e.m_eIndex);
    GLut::BindBuffer(GL_ARRAY_BUFFER, 0);
}

void eDataSetFrame::BindTrackStorage(eVertexData* data)
{
    eHardwareVertexBuffer* buffer = data ? data->GetHardwareBuffer() : nullptr;
    if (buffer && buffer->GetBufferID())
        glBindBufferBase(GL_SHADER_STORAGE_BUFFER, kTrackStorageBinding, buffer->GetBufferID());
}

void eDataSetFrame::UnbindTrackStorage()
{
    glBindBufferBase(GL_SHADER_STORAGE_BUFFER, kTrackStorageBinding, 0);
}

eTexture* eDataSetFrame::LoadTexture(eString const& path)
{
    eImageData* image = ePicture::Load(path, 32);
    if (!image)
        return nullptr;
    eTexture* texture = eTextureManager::GetSingleton().CreateTexture();
    texture->SetAutoRelease(0);
    texture->SetTextureWrapS(eTWM_CLAMP_TO_EDGE);
    texture->SetTextureWrapT(eTWM_CLAMP_TO_EDGE);
    texture->SetTextureMinFilter(eTFM_LINEAR);
    texture->SetTextureMagFilter(eTFM_LINEAR);
    texture->SetImageData(image);
    texture->CreateTexture();
    // The pixels are gone after this; the texture must not look at them again.
    texture->SetImageData(nullptr);
    delete image;
    return texture;
}

namespace
{
// Writes gather while each starts within this many bytes of the last one's end, up to this
// many bytes at once: near enough that the bytes between are cheaper than another call,
// and few enough to go up while the processor's caches still hold them.
size_t const kShadowGap = 16 << 10;
size_t const kShadowChunk = 256 << 10;
} // namespace

void eDataSetFrame::eBufferShadow::Reset(size_t bytes)
{
    m_arBytes.assign(bytes, 0);
    m_nDirtyBegin = m_nDirtyEnd = 0;
}

unsigned char eDataSetFrame::eBufferShadow::Write(eHardwareVertexBuffer* buffer, size_t offset,
                                                  size_t bytes, void const* data)
{
    if (!data && bytes > 0)
        return 0;
    unsigned char* out = Place(buffer, offset, bytes);
    if (!out)
        return 0;
    std::memcpy(out, data, bytes);
    Commit(buffer);
    return 1;
}

unsigned char* eDataSetFrame::eBufferShadow::Place(eHardwareVertexBuffer* buffer, size_t offset,
                                                   size_t bytes)
{
    if (!buffer || offset > m_arBytes.size() || bytes > m_arBytes.size() - offset || bytes == 0)
        return nullptr;
    // What waits goes up first unless this range continues it closely enough.
    if (m_nDirtyEnd > m_nDirtyBegin && (offset < m_nDirtyEnd || offset - m_nDirtyEnd > kShadowGap ||
                                        offset + bytes - m_nDirtyBegin > kShadowChunk))
        Flush(buffer);
    if (m_nDirtyEnd == m_nDirtyBegin)
        m_nDirtyBegin = offset;
    m_nDirtyEnd = offset + bytes;
    return &m_arBytes[offset];
}

void eDataSetFrame::eBufferShadow::EndBatch(eHardwareVertexBuffer* buffer)
{
    if (m_nBatches > 0 && --m_nBatches == 0)
        Flush(buffer);
}

void eDataSetFrame::eBufferShadow::Flush(eHardwareVertexBuffer* buffer)
{
    if (buffer && m_nDirtyEnd > m_nDirtyBegin)
        buffer->WriteData((int)m_nDirtyBegin, (int)(m_nDirtyEnd - m_nDirtyBegin),
                          &m_arBytes[m_nDirtyBegin]);
    m_nDirtyBegin = m_nDirtyEnd = 0;
}

void eDataSetFrame::eWindowCache::Reset(int slots, int slotPositions)
{
    if (slots < 0 || slotPositions <= 0)
        slots = slotPositions = 0;
    m_nSlotPositions = slotPositions;
    m_arSlots.assign((size_t)slots,
                     eSlot{0, nullptr, nullptr, 0, 0, 0, 0, {0.0, 0.0, 0.0, 0.0}, 0});
    m_arFloats.assign((size_t)slots * (size_t)slotPositions, eVector4T<float>());
}

void eDataSetFrame::eWindowCache::Forget(int slot)
{
    if (slot >= 0 && slot < (int)m_arSlots.size())
        m_arSlots[(size_t)slot].m_nStamp = 0;
}

unsigned char eDataSetFrame::eWindowCache::Bind(int slot, unsigned long long stamp,
                                                void const* record,
                                                std::vector<eVector4T<double>> const& positions,
                                                int kind)
{
    if (slot < 0 || slot >= (int)m_arSlots.size())
        return 0;
    eSlot& held = m_arSlots[(size_t)slot];
    if (held.m_nStamp == stamp && held.m_pRecord == record && held.m_pSource == positions.data() &&
        held.m_nSize == positions.size() && held.m_nKind == kind)
        return held.m_bRising;
    held.m_nStamp = stamp;
    held.m_pRecord = record;
    held.m_pSource = positions.data();
    held.m_nSize = positions.size();
    held.m_nKind = kind;
    held.m_nFirst = held.m_nCount = 0;
    // A time that is not at least the one before (NaN included) rules the shortcut out.
    held.m_bRising = 1;
    for (size_t k = 1; k < held.m_nSize && held.m_bRising; ++k)
        held.m_bRising = positions[k].w >= positions[k - 1].w;
    return held.m_bRising;
}

unsigned char eDataSetFrame::eWindowCache::Holds(int slot,
                                                 std::vector<eVector4T<double>> const& positions,
                                                 int first, int count, float t0, float t1) const
{
    if (slot < 0 || slot >= (int)m_arSlots.size())
        return 0;
    eSlot const& held = m_arSlots[(size_t)slot];
    if (held.m_nStamp == 0 || !held.m_bRising || held.m_pSource != positions.data() ||
        held.m_nFirst != first || held.m_nCount != count || count < 2 ||
        (size_t)(first + count) >= positions.size())
        return 0;
    // The search from `first` stops at once (the first position is not above t0 unless it
    // is the very first, the next one is), and with rising times the first position above
    // t1 is the last one when the one before it is not.
    bool start = (!(held.m_dTimes[0] > t0) || first == 0) && held.m_dTimes[1] > t0;
    bool end = held.m_dTimes[3] > t1 && !(held.m_dTimes[2] > t1);
    return start && end;
}

void eDataSetFrame::eWindowCache::Write(int slot, int first, int count, int repeat,
                                        eVector4T<float>* out) const
{
    eVector4T<float> const* floats = &m_arFloats[(size_t)slot * m_nSlotPositions];
    // The window lies in at most two runs of the slot: up to its end, then from its start.
    int at = first % m_nSlotPositions;
    int head = count < m_nSlotPositions - at ? count : m_nSlotPositions - at;
    if (repeat == 1)
    {
        std::memcpy(out, floats + at, sizeof(*out) * (size_t)head);
        std::memcpy(out + head, floats, sizeof(*out) * (size_t)(count - head));
        return;
    }
    for (int k = 0; k < count; ++k)
    {
        eVector4T<float> v = floats[k < head ? at + k : k - head];
        for (int c = 0; c < repeat; ++c)
            *out++ = v;
    }
}

void eDataSetFrame::eWindowCache::Prefetch(int slot, int first) const
{
    if (slot < 0 || slot >= (int)m_arSlots.size() || first < 0)
        return;
    __builtin_prefetch(&m_arSlots[(size_t)slot]);
    __builtin_prefetch(At(slot, first));
}

eDataSetFrame::eConversionKey::eConversionKey() : m_nStamp(0)
{
    std::memset(&m_Inputs, 0, sizeof(m_Inputs));
}

unsigned long long eDataSetFrame::eConversionKey::Refresh(eCamera* camera, eCanvas* canvas,
                                                          eVector4T<double> const& anchor,
                                                          eMatrix4T<float> const& local)
{
    // Zeroed first so that padding compares equal too.
    eInputs in;
    std::memset(&in, 0, sizeof(in));
    for (int i = 0; i < 4; ++i)
        in.m_dAnchor[i] = anchor[i];
    std::memcpy(in.m_fLocal, local.Ptr(), sizeof(in.m_fLocal));
    in.m_nSceneMode = SceneMode(camera);
    eCoordSys* cs = CoordSysOf(canvas);
    in.m_pCoordSys = cs;
    if (cs)
    {
        eProjection const* p = cs->GetPrjCoordSys().GetProjection();
        in.m_nCoordSysMode = (int)cs->GetSceneMode();
        in.m_nProjection = p->GetProjectionType();
        in.m_dProjection[0] = p->GetCentralMeridian();
        in.m_dProjection[1] = p->GetOriginLatitude();
        in.m_dProjection[2] = p->GetStandardParallel1();
        in.m_dProjection[3] = p->GetStandardParallel2();
    }
    if (m_nStamp == 0 || std::memcmp(&in, &m_Inputs, sizeof(in)) != 0)
    {
        static std::atomic<unsigned long long> s_nStamps(0);
        std::memcpy(&m_Inputs, &in, sizeof(in));
        m_nStamp = ++s_nStamps;
    }
    return m_nStamp;
}

} // namespace KYR
