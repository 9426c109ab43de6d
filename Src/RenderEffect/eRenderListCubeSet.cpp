#include "eRenderListCubeSet.h"
#include "GLut.h"
#include "eDataSetFrame.h"
#include "eGeometry.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eTriangulator.h"
#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{

char const* const kSource = "Src/RenderEffect/eRenderListCubeSet";
unsigned int const kVertexType = 135;
int const kCapVertices = 5;
int const kCapIndices = 6; // two triangles of the square
int const kIndexBytes = 4;
// Prisms gathered into one write while the whole pool goes up at once: about 110 KB, which
// stays in the processor's cache between being built and being written.
int const kUploadBatch = 128;

// One vertex as the four elements lay it out.
struct eCubeVertex
{
    float position[3];
    float normal[3];
    float texcoord[2];
    unsigned char color[4];
};
static_assert(sizeof(eCubeVertex) == 36, "the vertex record is 36 bytes");

void SetVertex(eCubeVertex& v, eVector3T<float> const& p, eVector3T<float> const& n, float t,
               eVector4T<unsigned char> const& c)
{
    v.position[0] = p.x;
    v.position[1] = p.y;
    v.position[2] = p.z;
    v.normal[0] = n.x;
    v.normal[1] = n.y;
    v.normal[2] = n.z;
    v.texcoord[0] = 0.0f;
    v.texcoord[1] = t;
    std::memcpy(v.color, &c.x, 4);
}

// The triangulator's two triangles for a square footprint in the set's corner order, taken
// from it once.
std::vector<unsigned short> const& SquareCap()
{
    static std::vector<unsigned short> const s_arCap = []
    {
        ePoint2D const unit[5] = {ePoint2D(-1.0, -1.0), ePoint2D(-1.0, 1.0), ePoint2D(1.0, 1.0),
                                  ePoint2D(1.0, -1.0), ePoint2D(-1.0, -1.0)};
        std::vector<unsigned short> cap;
        eTriangulator::Triangulate(unit, 5, cap);
        return cap;
    }();
    return s_arCap;
}

// Whether the triangulator would answer this ring with SquareCap. Its ear clipping decides
// by the signs of corner turns and of the area against a tolerance of 1e-12 times the
// squared size. On an axis-aligned rectangle, closed, in the corner order south-west,
// north-west, north-east, south-east, each turn is one exact zero product minus or plus
// dx * dy, so every decision is the same as for the unit square as long as dx and dy are
// positive and the turns and the area clear the tolerance; the margin here (1e-9) keeps
// rounding of the area's sum far from changing any of them. Anything else is triangulated.
bool IsPlainSquare(ePoint2D const (&ring)[5], double area)
{
    if (ring[1].x != ring[0].x || ring[3].x != ring[2].x || ring[3].y != ring[0].y ||
        ring[2].y != ring[1].y || ring[4] != ring[0])
        return false;
    double dx = ring[2].x - ring[0].x, dy = ring[1].y - ring[0].y;
    double size = 1e-9 * (dx * dx + dy * dy);
    return dx > 0.0 && dy > 0.0 && dx * dy > size && -area > size;
}

} // namespace

eRenderListCubeSet::eRenderListCubeSet()
    : m_nPoolSize(100), m_nCursor(0), m_nCount(0), m_bEnableGrow(1), m_fCurGrowRatio(0.0f),
      m_fGrowRatioPerFrame(0.02f), m_nVerticesPerCube(21), m_nIndicesPerCube(30)
{
    m_strProgram = "CubeSet";
}

// Points and buffers go with the last copy that holds them.
eRenderListCubeSet::~eRenderListCubeSet() {}

eRenderable::Type eRenderListCubeSet::GetType()
{
    return eRT_LIST_SET;
}

// ---------------------------------------------------------------------------------------------
// Life
// ---------------------------------------------------------------------------------------------

unsigned char eRenderListCubeSet::Initialize(eRenderEngine*)
{
    if (m_bInitialized)
        return m_bInitialized;
    CreateBuffers();
    if (!m_arPoints.empty())
        UploadPending();
    m_bInitialized = 1;
    return m_bInitialized;
}

unsigned char eRenderListCubeSet::UnInitialize(eRenderEngine*)
{
    DestroyBuffers();
    RemoveAllCubePoint();
    std::vector<eShared<eCubePoint>>().swap(m_arPoints);
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderListCubeSet::CreateBuffers()
{
    eHardwareBufferManager& manager = eHardwareBufferManager::GetSingleton();
    if (!m_pVertexData)
    {
        eVertexData* data = new eVertexData();
        data->SetVertexType(kVertexType);
        data->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
        data->AddElement(eVET_FLOAT, eVEC_3, eAI_ATTRIB1, 0);
        data->AddElement(eVET_FLOAT, eVEC_2, eAI_TEXCOORD0, 0);
        data->AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_COLOR, 1);
        // The processor store is the scratch block of one prism.
        data->SetVertexSize(m_nVerticesPerCube);
        int stride = data->GetVertexStride();
        long long bytes =
            (long long)m_nVerticesPerCube * (m_nPoolSize > 0 ? m_nPoolSize : 0) * stride;
        eHardwareVertexBuffer* buffer = manager.CreateVertexBuffer();
        // A pool too large for one buffer is refused by Allocate with a message.
        buffer->Allocate(GL_DYNAMIC_DRAW, 1, bytes <= INT_MAX ? (int)bytes : -1, nullptr);
        buffer->SetVertexStride(stride);
        data->SetHardwareBuffer(buffer);
        m_pVertexData.Reset(data);
    }
    if (!m_pIndexData)
    {
        eIndexExData* data = new eIndexExData();
        data->GetIndexExBuffer().reserve((size_t)m_nIndicesPerCube);
        long long count = (long long)m_nIndicesPerCube * (m_nPoolSize > 0 ? m_nPoolSize : 0);
        eHardwareIndexBuffer* buffer = manager.CreateIndexBuffer();
        buffer->Allocate(GL_DYNAMIC_DRAW, kIndexBytes,
                         count * kIndexBytes <= INT_MAX ? (int)count : -1, nullptr);
        data->SetHardwareBuffer(buffer);
        m_pIndexData.Reset(data);
    }
    return 1;
}

unsigned char eRenderListCubeSet::DestroyBuffers()
{
    m_pVertexData.Reset();
    m_pIndexData.Reset();
    return 1;
}

// Both buffers exist and hold the whole pool (an allocation that failed counts as missing).
unsigned char eRenderListCubeSet::HasBuffers()
{
    if (!m_pVertexData || !m_pIndexData)
        return 0;
    eHardwareVertexBuffer* vertices = m_pVertexData->GetHardwareBuffer();
    eHardwareIndexBuffer* indices = m_pIndexData->GetHardwareBuffer();
    if (!vertices || !indices || !vertices->GetBufferID() || !indices->GetBufferID())
        return 0;
    long long pool = m_nPoolSize > 0 ? m_nPoolSize : 0;
    return vertices->GetSizeInBytes() >=
               pool * m_nVerticesPerCube * m_pVertexData->GetVertexStride() &&
           indices->GetSizeInBytes() >= pool * m_nIndicesPerCube * kIndexBytes;
}

// ---------------------------------------------------------------------------------------------
// The pool
// ---------------------------------------------------------------------------------------------

void eRenderListCubeSet::SetPoolSize(int size)
{
    if (size <= 0)
        Eassert("size > 0", kSource, __LINE__);
    m_nPoolSize = size;
    m_arPoints.assign(size > 0 ? (size_t)size : 0, eShared<eCubePoint>());
}

unsigned char eRenderListCubeSet::AddCubePoint(eCubePoint* point)
{
    if (m_nCount >= m_nPoolSize)
    {
        // The ring is full: overwrite the slot at the cursor. (No slot is in use when the
        // pool was never sized; there is nothing to overwrite then.)
        if (m_nCount > 0)
        {
            m_nCursor %= m_nCount;
            if (UpdateCubePoint(m_nCursor, point))
                ++m_nCursor;
        }
        return 1;
    }
    int slot = m_nCount;
    // Without buffers the copy waits in its slot for Initialize, and the slot counts.
    if (!UpdateCubePoint(slot, point) && slot < (int)m_arPoints.size() && m_arPoints[slot])
        ++m_nCount;
    return 1;
}

unsigned char eRenderListCubeSet::UpdateCubePoint(int slot, eCubePoint* point)
{
    if (!point)
    {
        Eassert("pPoint != NULL", kSource, __LINE__);
        return 0;
    }
    // A pool that was never sized has no slots at all.
    if (slot < 0 || slot >= m_nPoolSize || slot >= (int)m_arPoints.size())
        return 0;
    StorePoint(slot, point);
    eCubePoint* stored = m_arPoints[slot];
    stored->m_bAdded = 0;
    if (!UpdatePosition(slot, stored))
        return 0;
    stored->m_bAdded = 1;
    if (m_nCount < slot + 1)
        m_nCount = slot + 1;
    return 1;
}

void eRenderListCubeSet::StorePoint(int slot, eCubePoint* point)
{
    eShared<eCubePoint>& held = m_arPoints[slot];
    if (!held)
        held.Reset(new eCubePoint(*point));
    else if (held.Get() != point)
        *held = *point;
}

eCubePoint* eRenderListCubeSet::GetCubePoint(int slot)
{
    if (slot < 0 || slot >= m_nCount || slot >= (int)m_arPoints.size())
        return nullptr;
    return m_arPoints[slot];
}

void eRenderListCubeSet::RemoveAllCubePoint()
{
    for (eShared<eCubePoint>& point : m_arPoints)
        point.Reset();
    m_nCursor = 0;
}

// ---------------------------------------------------------------------------------------------
// Geometry and uploads
// ---------------------------------------------------------------------------------------------

unsigned char eRenderListCubeSet::UpdatePosition(int slot, eCubePoint* point)
{
    if (!HasBuffers())
        return 0;
    UpdateVertexBuffer(slot, point);
    int block = m_nVerticesPerCube * m_pVertexData->GetVertexStride();
    int indexBlock = m_nIndicesPerCube * kIndexBytes;
    // Inside the allocations: HasBuffers found room for the whole pool.
    m_pVertexData->GetHardwareBuffer()->WriteData(slot * block, block,
                                                  m_pVertexData->GetVertexBuffer().data());
    m_pIndexData->GetHardwareBuffer()->WriteData(slot * indexBlock, indexBlock,
                                                 m_pIndexData->GetIndexExBuffer().data());
    return 1;
}

unsigned char eRenderListCubeSet::UpdateVertexBuffer(int slot, eCubePoint* point)
{
    if (!point || !m_pVertexData || !m_pIndexData)
        return 0;
    eVector4T<float> local = PositionToLocal(m_nSpatialRefType, point->m_vPosition);
    float r = point->m_fRadius;
    // South-west, north-west, north-east, south-east and back: clockwise seen from above.
    ePoint2D const ring[5] = {
        ePoint2D(local.x - r, local.y - r), ePoint2D(local.x - r, local.y + r),
        ePoint2D(local.x + r, local.y + r), ePoint2D(local.x + r, local.y - r),
        ePoint2D(local.x - r, local.y - r)};
    BuildPrism(slot, ring, local.z, local.z + point->m_fHeight, point->m_cTopColor,
               point->m_cBottomColor);
    return 1;
}

void eRenderListCubeSet::BuildPrism(int slot, ePoint2D const (&ring)[5], float bottom, float top,
                                    eVector4T<unsigned char> const& topColor,
                                    eVector4T<unsigned char> const& bottomColor)
{
    // The triangulator winds its triangles counter-clockwise whatever the ring does; the
    // sides follow the ring, so their normals and triangles swap for a clockwise one.
    double area = eTriangulator::Area(ring, 5);
    bool reversed = area < 0.0;
    std::vector<unsigned short> const* cap = &m_arCapIndices;
    if (IsPlainSquare(ring, area))
        cap = &SquareCap();
    else
        eTriangulator::Triangulate(ring, 5, m_arCapIndices);

    eVector3T<float> upper[5], lower[5];
    for (int i = 0; i < 5; ++i)
    {
        upper[i] = eVector3T<float>((float)ring[i].x, (float)ring[i].y, top);
        lower[i] = eVector3T<float>((float)ring[i].x, (float)ring[i].y, bottom);
    }
    eCubeVertex vertices[21];
    eVector3T<float> const up(0.0f, 0.0f, 1.0f);
    for (int i = 0; i < kCapVertices; ++i)
        SetVertex(vertices[i], upper[i], up, 1.0f, topColor);
    for (int i = 0; i < 4; ++i)
    {
        eVector3T<float> normal =
            reversed ? eGLCanvas::ComputeFaceNormal(upper[i], upper[i + 1], lower[i])
                     : eGLCanvas::ComputeFaceNormal(upper[i], lower[i], upper[i + 1]);
        eCubeVertex* quad = vertices + kCapVertices + 4 * i;
        SetVertex(quad[0], upper[i], normal, 1.0f, topColor);
        SetVertex(quad[1], lower[i], normal, 0.0f, bottomColor);
        SetVertex(quad[2], upper[i + 1], normal, 1.0f, topColor);
        SetVertex(quad[3], lower[i + 1], normal, 0.0f, bottomColor);
    }
    std::vector<unsigned char>& store = m_pVertexData->GetVertexBuffer();
    if (store.size() != sizeof(vertices))
        m_pVertexData->SetVertexSize(m_nVerticesPerCube);
    std::memcpy(store.data(), vertices, sizeof(vertices));

    unsigned int first = (unsigned int)slot * (unsigned int)m_nVerticesPerCube;
    std::vector<unsigned int>& indices = m_pIndexData->GetIndexExBuffer();
    indices.clear();
    // A square gives two triangles. A ring without area (radius 0) gives none: its block
    // is filled with the slot's first vertex instead, triangles that draw nothing, so that
    // every block stays 30 indices long.
    for (int i = 0; i < kCapIndices; ++i)
        indices.push_back(first + (i < (int)cap->size() ? (*cap)[(size_t)i] : 0u));
    static unsigned int const kForward[6] = {0, 1, 3, 2, 0, 3};
    static unsigned int const kReversed[6] = {0, 2, 1, 2, 3, 1};
    unsigned int const* side = reversed ? kReversed : kForward;
    for (int k = 0; k < 4; ++k)
    {
        unsigned int b = first + (unsigned int)(kCapVertices + 4 * k);
        for (int j = 0; j < 6; ++j)
            indices.push_back(b + side[j]);
    }
}

void eRenderListCubeSet::UploadPending()
{
    int size = (int)m_arPoints.size();
    bool buffers = HasBuffers() != 0;
    int block = buffers ? m_nVerticesPerCube * m_pVertexData->GetVertexStride() : 0;
    int indexBlock = m_nIndicesPerCube * kIndexBytes;
    // Consecutive slots go up in one write per buffer: the bytes and their places are those
    // of one UpdatePosition per slot.
    std::vector<unsigned char> vertices, indices;
    int runStart = -1, runLength = 0;
    auto flush = [&]()
    {
        if (runLength > 0)
        {
            m_pVertexData->GetHardwareBuffer()->WriteData(runStart * block, runLength * block,
                                                          vertices.data());
            m_pIndexData->GetHardwareBuffer()->WriteData(runStart * indexBlock,
                                                         runLength * indexBlock, indices.data());
        }
        runStart = -1;
        runLength = 0;
    };
    if (buffers)
    {
        int batch = std::min(kUploadBatch, std::max(1, std::min(size, m_nPoolSize)));
        vertices.resize((size_t)batch * block);
        indices.resize((size_t)batch * indexBlock);
    }
    for (int slot = 0; slot < size; ++slot)
    {
        eCubePoint* point = m_arPoints[slot];
        if (!point || slot >= m_nPoolSize)
        {
            flush();
            continue;
        }
        point->m_bAdded = 0;
        if (!buffers)
            continue;
        if (runLength == kUploadBatch)
            flush();
        if (runLength == 0)
            runStart = slot;
        UpdateVertexBuffer(slot, point);
        std::memcpy(vertices.data() + (size_t)runLength * block,
                    m_pVertexData->GetVertexBuffer().data(), (size_t)block);
        std::memcpy(indices.data() + (size_t)runLength * indexBlock,
                    m_pIndexData->GetIndexExBuffer().data(), (size_t)indexBlock);
        ++runLength;
        point->m_bAdded = 1;
        if (m_nCount < slot + 1)
            m_nCount = slot + 1;
        ++m_nCursor;
    }
    if (buffers)
        flush();
}

// ---------------------------------------------------------------------------------------------
// Frame
// ---------------------------------------------------------------------------------------------

float eRenderListCubeSet::AdvanceGrowth()
{
    if (!m_bEnableGrow || !(m_fCurGrowRatio < 1.0f))
        return 1.0f;
    m_fCurGrowRatio += m_fGrowRatioPerFrame;
    if (m_fCurGrowRatio > 1.0f)
        m_fCurGrowRatio = 1.0f;
    return m_fCurGrowRatio;
}

unsigned char eRenderListCubeSet::RenderVertexBuffer(eRenderEngine* engine, eRenderSystem* rs,
                                                     eCamera* camera)
{
    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    eRenderProgram* program = engine && pass ? engine->GetRenderProgram(pass) : nullptr;
    if (!program)
        return 0;
    SetFrameUniforms(program, EarthPixels(engine));
    float ratio = AdvanceGrowth();
    program->GetProgram()->Uniform1f(program->GetUniform()->m_nCustom[eR_GROW_RATIO], ratio);
    UpdateProgram(engine, rs, camera, program);
    if (!HasBuffers())
        return 0;

    eDataSetFrame::BindVertexData(m_pVertexData);
    eHardwareIndexBuffer* indexBuffer = m_pIndexData->GetHardwareBuffer();
    GLut::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer->GetBufferID());
    // Two draws, issued as the engine has always issued them: the first takes its count
    // from the cursor and its byte offset from the slots past it, unscaled by the index
    // size; the second draws the slots before the cursor. So only prisms counted by the
    // cursor are drawn, and prisms added one by one after Initialize wait for the ring.
    // Neither call reads past the index buffer while the count stays within the pool.
    long long indexBytes = indexBuffer->GetSizeInBytes();
    long long count = m_nCount, cursor = m_nCursor, per = m_nIndicesPerCube;
    if (count > cursor && per * (count - cursor) + per * cursor * kIndexBytes <= indexBytes)
        glDrawElements(GL_TRIANGLES, (GLsizei)(per * cursor), GL_UNSIGNED_INT,
                       reinterpret_cast<void const*>((std::intptr_t)(per * (count - cursor))));
    if (cursor > 0 && per * cursor * kIndexBytes <= indexBytes)
        glDrawElements(GL_TRIANGLES, (GLsizei)(per * cursor), GL_UNSIGNED_INT, nullptr);
    GLut::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    eDataSetFrame::UnbindVertexData(m_pVertexData);
    return 1;
}

} // namespace KYR
