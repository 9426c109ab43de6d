#include "eRenderLineGrowSet.h"
#include "eCoordSys.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eVector2.h"
#include <cmath>
#include <cstdint>
#include <cstring>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{

unsigned int const kVertexType = 32913;
int const kVerticesPerSegment = 4;
int const kIndicesPerSegment = 6;
float const kByteScale = 126.0f; // unit directions and angles in radians, as bytes
// Pixel units of the whole world: degrees for a geographic system, metres otherwise.
double const kWorldDegrees = 360.0;
double const kWorldMetres = 40030198.0419408;
int const kGeographicSystem = 1;
// Lines narrower than this get a softer edge.
float const kThinLine = 3.0f;
double const kThinEdge = 0.6;

// One vertex as the four elements lay it out.
struct eRibbonVertex
{
    float position[4];    // local x, y, z; the line's total length
    signed char turn[4];  // unit in x, y and out x, y, times 126
    float lengths[2];     // along the line at the segment's start and end
    signed char signs[4]; // along, side, angle at the segment's start and at its end
};
static_assert(sizeof(eRibbonVertex) == 32, "the ribbon vertex is 32 bytes");

// Truncates to an integer and keeps its low 8 bits, so that an angle beyond the byte's range
// wraps.
signed char ToByte(float value)
{
    if (!(std::fabs(value) < 32768.0f))
        return 0;
    int low = (int)value & 0xFF;
    return (signed char)(low >= 128 ? low - 256 : low);
}

// A segment of no length (a repeated point) has no direction: it stays zero.
eVector2T<float> Normalised(eVector2T<float> v)
{
    float length = std::sqrt(v.x * v.x + v.y * v.y);
    return length > 0.0f ? eVector2T<float>(v.x / length, v.y / length) : eVector2T<float>();
}

} // namespace

eRenderLineGrowSet::eRenderLineGrowSet() : m_fTransparent(1.0f)
{
    m_strProgram = "LineGrowSet";
}

// Lines go with the last copy that holds them.
eRenderLineGrowSet::~eRenderLineGrowSet() {}

eRenderable::Type eRenderLineGrowSet::GetType()
{
    return eRT_LINE_GROW_SET;
}

unsigned char eRenderLineGrowSet::UnInitialize(eRenderEngine*)
{
    DestroyBuffers();
    RemoveAll();
    m_bInitialized = 0;
    return 1;
}

// ---------------------------------------------------------------------------------------------
// Lines
// ---------------------------------------------------------------------------------------------

unsigned char eRenderLineGrowSet::Add(eGrowLine const* line)
{
    if (!line)
        return 0;
    eShared<eGrowLine> copy(new eGrowLine(*line));
    if (!AddLine(copy))
        return 0;
    m_arLines.push_back(copy);
    return 1;
}

eGrowLine* eRenderLineGrowSet::Get(int index)
{
    if (index < 0 || index >= (int)m_arLines.size())
        return nullptr;
    return m_arLines[(size_t)index];
}

void eRenderLineGrowSet::RemoveAll()
{
    ClearUpdates();
    std::vector<eShared<eGrowLine>>().swap(m_arLines);
}

unsigned char eRenderLineGrowSet::Update(eGrowLine* line, int index,
                                         eVector4T<unsigned char>& color)
{
    QueueUpdate(line, index, color);
    return 1;
}

unsigned char eRenderLineGrowSet::ApplyUpdate(eGrowShape* shape, int index,
                                              eVector4T<unsigned char>& color)
{
    // Only Update queues here, and it takes lines.
    return UpdateLine(static_cast<eGrowLine*>(shape), index, color);
}

unsigned char eRenderLineGrowSet::AddLine(eGrowLine* line)
{
    // A polyline needs a segment: with fewer points there are no directions to give.
    if (!line || line->m_arPositions.size() < 2)
        return 0;
    CreateBuffers();
    if (!m_pVertexData || !m_pIndexData)
        return 0;
    std::vector<eVector3T<float>> points;
    points.reserve(line->m_arPositions.size());
    for (eVector4T<double>& p : line->m_arPositions)
    {
        eVector4T<float> local = PositionToLocal(p);
        points.push_back(eVector3T<float>(local.x, local.y, local.z));
    }
    m_pVertexData->SetVertexSize(0);
    m_pIndexData->GetIndexExBuffer().clear();
    VertexPolyline(*m_pVertexData, *m_pIndexData, m_nVertexCount, points);
    CommitShape(line);
    return 1;
}

unsigned char eRenderLineGrowSet::UpdateLine(eGrowLine* line, int index,
                                             eVector4T<unsigned char>& color)
{
    if (!line || index < 0 || index >= (int)line->m_arPositions.size() || !m_pExtVertexData)
        return 0;
    m_pExtVertexData->SetVertexSize(0);
    // A point owns the two vertices that end the segment before it and the two that start
    // the segment after it; the ends have one of those pairs.
    int last = (int)line->m_arPositions.size() - 1;
    int first = index == 0 ? 0 : kVerticesPerSegment * index - 2;
    int count = index == 0 || index == last ? 2 : 4;
    UpdateExtVertexData(*m_pExtVertexData, line->m_nFirstVertex + first, count, color);
    return 1;
}

// ---------------------------------------------------------------------------------------------
// Geometry
// ---------------------------------------------------------------------------------------------

unsigned char eRenderLineGrowSet::CreateVertexBuffer()
{
    eVertexData* data = new eVertexData();
    data->SetVertexType(kVertexType);
    data->AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
    data->AddElement(eVET_BYTE, eVEC_4, eAI_ATTRIB4, 0);
    data->AddElement(eVET_FLOAT, eVEC_2, eAI_ATTRIB15, 0);
    data->AddElement(eVET_BYTE, eVEC_4, eAI_TEXCOORD0, 0);
    m_pVertexData.Reset(AttachBuffer(data, VertexCapacity()));
    return 1;
}

// A polyline of N points has N - 1 segments of four vertices and six indices each.
long long eRenderLineGrowSet::VertexCapacity() const
{
    return ((long long)m_nPoolSize - 1) * kVerticesPerSegment;
}

long long eRenderLineGrowSet::IndexCapacity() const
{
    return ((long long)m_nPoolSize - 1) * kIndicesPerSegment;
}

void eRenderLineGrowSet::VertexPolyline(eVertexData& vertexData, eIndexExData& indexData, int start,
                                        std::vector<eVector3T<float>>& points)
{
    int n = (int)points.size();
    if (n < 2)
        return;
    int segments = n - 1;
    std::vector<eVector2T<float>> d((size_t)segments), in((size_t)n), out((size_t)n);
    std::vector<float> length((size_t)segments), angle((size_t)n);
    float total = 0.0f;
    for (int s = 0; s < segments; ++s)
    {
        d[s] = eVector2T<float>(points[s + 1].x - points[s].x, points[s + 1].y - points[s].y);
        total += std::sqrt(d[s].x * d[s].x + d[s].y * d[s].y);
        length[s] = total;
    }
    // The ends turn nowhere: their way in is their way out.
    for (int k = 0; k < n; ++k)
    {
        in[k] = d[k == 0 ? 0 : k - 1];
        out[k] = d[k < segments ? k : segments - 1];
        eVector2T<float> a = in[k], b = out[k];
        angle[k] = std::atan2(a.x * b.y - a.y * b.x, a.x * b.x + a.y * b.y) * kByteScale;
        in[k] = Normalised(in[k]) * kByteScale;
        out[k] = Normalised(out[k]) * kByteScale;
    }

    auto addEntry = [&](int k, float from, float to, float along, float angleFrom, float angleTo)
    {
        eRibbonVertex v;
        v.position[0] = points[k].x;
        v.position[1] = points[k].y;
        v.position[2] = points[k].z;
        v.position[3] = total;
        v.turn[0] = ToByte(in[k].x);
        v.turn[1] = ToByte(in[k].y);
        v.turn[2] = ToByte(out[k].x);
        v.turn[3] = ToByte(out[k].y);
        v.lengths[0] = from;
        v.lengths[1] = to;
        v.signs[0] = ToByte(along);
        v.signs[2] = ToByte(angleFrom);
        v.signs[3] = ToByte(angleTo);
        for (float side : {-1.0f, 1.0f})
        {
            v.signs[1] = ToByte(side);
            vertexData.AddVertex(reinterpret_cast<unsigned char const*>(&v), 1);
        }
    };
    // Lengths at the start and the end of segment s.
    auto from = [&](int s) { return s == 0 ? 0.0f : length[s - 1]; };
    addEntry(0, 0.0f, length[0], -1.0f, 0.0f, 0.0f);
    for (int k = 1; k < n - 1; ++k)
    {
        addEntry(k, from(k - 1), length[k - 1], 1.0f, angle[k - 1], angle[k]);
        addEntry(k, from(k), length[k], -1.0f, angle[k], angle[k + 1]);
    }
    addEntry(n - 1, from(segments - 1), length[segments - 1], 1.0f, angle[n - 2], angle[n - 1]);

    std::vector<unsigned int>& indices = indexData.GetIndexExBuffer();
    for (int s = 0; s < segments; ++s)
    {
        unsigned int v = (unsigned int)(start + kVerticesPerSegment * s);
        for (unsigned int i : {v, v + 1, v + 2, v + 1, v + 2, v + 3})
            indices.push_back(i);
    }
}

// ---------------------------------------------------------------------------------------------
// Frame
// ---------------------------------------------------------------------------------------------

double eRenderLineGrowSet::PixelSize(eRenderEngine* engine)
{
    if (!engine)
        return 0.0;
    eCoordSys* coordSys = engine->GetCoordSys();
    double world = coordSys && coordSys->GetPrjCoordSys().GetTypeID() == kGeographicSystem
                       ? kWorldDegrees
                       : kWorldMetres;
    double size = world / engine->GetRenderResolution(1);
    return coordSys ? coordSys->MapLengthToLogical(size) : size;
}

unsigned char eRenderLineGrowSet::UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera* camera,
                                                eRenderProgram* program)
{
    if (!program)
        return 0;
    SetWorldMatrix(camera ? camera : m_pCamera, program);
    program->GetProgram()->Uniform1f(program->GetUniform()->m_nCustom[eR_OPACITY], m_fTransparent);
    return 1;
}

unsigned char eRenderLineGrowSet::RenderVertexBuffer(eRenderEngine* engine, eRenderSystem* rs,
                                                     eCamera* camera)
{
    if (!(m_fTransparent > 0.0f))
        return 1;
    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    eRenderProgram* program = engine && pass ? engine->GetRenderProgram(pass) : nullptr;
    if (!program)
        return 0;
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();
    double pixel = PixelSize(engine);
    // The program's constants, in their fixed order.
    float const constants[7] = {0.0f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 5.0f};
    for (int role = eR_POSITION_KIND; role <= eR_MITER_LIMIT; ++role)
        p->Uniform1f(u->m_nCustom[role], constants[role]);
    UpdateProgram(engine, rs, camera, program);
    if (!BindStreams())
        return 0;
    for (eShared<eGrowLine> const& held : m_arLines)
    {
        eGrowLine* line = held;
        if (!line || !DrawableShape(line))
            continue;
        eVector4T<unsigned char> const& c = line->m_cColor;
        p->Uniform4f(u->m_nColor, (float)(c.x / 255.0), (float)(c.y / 255.0), (float)(c.z / 255.0),
                     (float)(c.w / 255.0));
        p->Uniform1f(u->m_nCustom[eR_WIDTH], (float)(line->m_fWidth * pixel));
        p->Uniform1f(u->m_nCustom[eR_LINE_OPACITY], 1.0f);
        p->Uniform1f(u->m_nCustom[eR_EDGE],
                     (float)(line->m_fWidth < kThinLine ? pixel * kThinEdge : pixel));
        glDrawElements(GL_TRIANGLES, line->m_nIndexCount, GL_UNSIGNED_INT,
                       reinterpret_cast<void const*>((std::intptr_t)line->m_nFirstIndex * 4));
    }
    UnbindStreams();
    return 1;
}

} // namespace KYR
