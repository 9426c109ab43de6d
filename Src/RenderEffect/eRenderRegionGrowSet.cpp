#include "eRenderRegionGrowSet.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eTriangulator.h"
#include <cstdint>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{
unsigned int const kVertexType = 1;
int const kIndicesPerPoint = 6;

// Roles of the "Color" program.
enum eColorRole
{
    eR_USE_VERTEX_COLOR = 0,
};
} // namespace

eRenderRegionGrowSet::eRenderRegionGrowSet()
{
    m_strProgram = "Color";
}

// Regions go with the last copy that holds them.
eRenderRegionGrowSet::~eRenderRegionGrowSet() {}

eRenderable::Type eRenderRegionGrowSet::GetType()
{
    return eRT_NONE;
}

unsigned char eRenderRegionGrowSet::UnInitialize(eRenderEngine*)
{
    DestroyBuffers();
    RemoveAll();
    m_bInitialized = 0;
    return 1;
}

// ---------------------------------------------------------------------------------------------
// Regions
// ---------------------------------------------------------------------------------------------

unsigned char eRenderRegionGrowSet::Add(eGrowRegion const* region)
{
    if (!region)
        return 0;
    eShared<eGrowRegion> copy(new eGrowRegion(*region));
    if (!AddRegion(copy))
        return 0;
    m_arRegions.push_back(copy);
    return 1;
}

eGrowRegion* eRenderRegionGrowSet::Get(int index)
{
    if (index < 0 || index >= (int)m_arRegions.size())
        return nullptr;
    return m_arRegions[(size_t)index];
}

void eRenderRegionGrowSet::RemoveAll()
{
    ClearUpdates();
    std::vector<eShared<eGrowRegion>>().swap(m_arRegions);
}

unsigned char eRenderRegionGrowSet::Update(eGrowRegion* region, int index,
                                           eVector4T<unsigned char>& color)
{
    QueueUpdate(region, index, color);
    return 1;
}

unsigned char eRenderRegionGrowSet::ApplyUpdate(eGrowShape* shape, int index,
                                                eVector4T<unsigned char>& color)
{
    // Only Update queues here, and it takes regions.
    return UpdateRegion(static_cast<eGrowRegion*>(shape), index, color);
}

unsigned char eRenderRegionGrowSet::AddRegion(eGrowRegion* region)
{
    if (!region)
        return 0;
    CreateBuffers();
    if (!m_pVertexData || !m_pIndexData)
        return 0;
    std::vector<eVector3T<float>> local;
    std::vector<ePoint2D> points;
    local.reserve(region->m_arPositions.size());
    points.reserve(region->m_arPositions.size());
    for (eVector4T<double>& p : region->m_arPositions)
    {
        eVector4T<float> l = PositionToLocal(p);
        local.push_back(eVector3T<float>(l.x, l.y, l.z));
        points.push_back(ePoint2D(p.x, p.y));
    }
    m_pVertexData->SetVertexSize(0);
    m_pIndexData->GetIndexExBuffer().clear();
    VertexPolygon(*m_pVertexData, *m_pIndexData, m_nVertexCount, local, points);
    CommitShape(region);
    return 1;
}

// A closing repeat has no vertex of its own, yet its index passes the range test: its colour
// lands on the vertex after the region's last, the next region's first.
unsigned char eRenderRegionGrowSet::UpdateRegion(eGrowRegion* region, int index,
                                                 eVector4T<unsigned char>& color)
{
    if (!region || index < 0 || index >= (int)region->m_arPositions.size() || !m_pExtVertexData)
        return 0;
    m_pExtVertexData->SetVertexSize(0);
    UpdateExtVertexData(*m_pExtVertexData, region->m_nFirstVertex + index, 1, color);
    return 1;
}

// ---------------------------------------------------------------------------------------------
// Geometry
// ---------------------------------------------------------------------------------------------

unsigned char eRenderRegionGrowSet::CreateVertexBuffer()
{
    eVertexData* data = new eVertexData();
    data->SetVertexType(kVertexType);
    data->AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
    m_pVertexData.Reset(AttachBuffer(data, VertexCapacity()));
    return 1;
}

long long eRenderRegionGrowSet::VertexCapacity() const
{
    return m_nPoolSize;
}

long long eRenderRegionGrowSet::IndexCapacity() const
{
    return (long long)m_nPoolSize * kIndicesPerPoint;
}

void eRenderRegionGrowSet::VertexPolygon(eVertexData& vertexData, eIndexExData& indexData,
                                         int start, std::vector<eVector3T<float>>& local,
                                         std::vector<ePoint2D>& points)
{
    int n = (int)points.size();
    if (n > 3 && points[0] == points[(size_t)n - 1])
        --n;
    std::vector<unsigned int> triangles;
    eTriangulator::Tesselate(points.data(), n, triangles);
    for (int k = 0; k < n && k < (int)local.size(); ++k)
    {
        float const v[4] = {local[k].x, local[k].y, local[k].z, 1.0f};
        vertexData.AddVertex(v, 1);
    }
    std::vector<unsigned int>& indices = indexData.GetIndexExBuffer();
    for (unsigned int i : triangles)
        indices.push_back(i + (unsigned int)start);
}

// ---------------------------------------------------------------------------------------------
// Frame
// ---------------------------------------------------------------------------------------------

// Besides the unlit switch, the host's colour program is told to take its colour from the
// stream, as it is: white times the stream.
unsigned char eRenderRegionGrowSet::UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera* camera,
                                                  eRenderProgram* program)
{
    if (!program)
        return 0;
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();
    SetWorldMatrix(camera ? camera : m_pCamera, program);
    p->Uniform1f(u->m_nLightingEnabled, 0.0f);
    p->Uniform1f(u->m_nCustom[eR_USE_VERTEX_COLOR], 1.0f);
    p->Uniform4f(u->m_nColor, 1.0f, 1.0f, 1.0f, 1.0f);
    return 1;
}

unsigned char eRenderRegionGrowSet::RenderVertexBuffer(eRenderEngine* engine, eRenderSystem* rs,
                                                       eCamera* camera)
{
    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    eRenderProgram* program = engine && pass ? engine->GetRenderProgram(pass) : nullptr;
    if (!program)
        return 0;
    UpdateProgram(engine, rs, camera, program);
    if (!BindStreams())
        return 0;
    for (eShared<eGrowRegion> const& held : m_arRegions)
    {
        eGrowRegion* region = held;
        if (!region || !DrawableShape(region))
            continue;
        glDrawElements(GL_TRIANGLES, region->m_nIndexCount, GL_UNSIGNED_INT,
                       reinterpret_cast<void const*>((std::intptr_t)region->m_nFirstIndex * 4));
    }
    UnbindStreams();
    // The colour program is shared: leave its switch as other users expect it.
    program->GetProgram()->Uniform1f(program->GetUniform()->m_nCustom[eR_USE_VERTEX_COLOR], 0.0f);
    return 1;
}

} // namespace KYR
