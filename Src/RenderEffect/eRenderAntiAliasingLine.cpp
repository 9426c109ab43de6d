#include "eRenderAntiAliasingLine.h"
#include "GLut.h"
#include "eCamera.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <cmath>
#include <cstdint>

namespace KYR
{

namespace
{
// Vertex type tag of the 20-byte strip vertex.
unsigned int const kStripVertexType = 129;
int const kStripFloats = 5;
int const kStripStride = kStripFloats * 4;

// The four views of one strip buffer: for index k the program reads the position of vertex
// k (the previous pair), of vertex k + 2 (the vertex itself) with its length and side, and
// of vertex k + 4 (the next pair).
struct tagShiftedAttribute
{
    unsigned int index;
    int components;
    int offset;
};
tagShiftedAttribute const kShiftedAttributes[] = {
    {eAI_POSITION, 3, 0},
    {eAI_ATTRIB1, 3, 2 * kStripStride},
    {eAI_TEXCOORD0, 2, 2 * kStripStride + 12},
    {eAI_COLOR, 3, 4 * kStripStride},
};

// Constants of the strip program: a solid line with a one-pixel soft edge.
int const kSolid = 0;
int const kGeographicPositions = 1;
float const kDashLength = 1.0f;
float const kGapLength = 0.1f;
float const kDashOffset = 0.0f;
float const kOpacity = 1.0f;
float const kFeather = 1.0f;

void PushVertex(tagAntiAliasLineData& out, double x, double y, double z, double length, float side)
{
    out.m_arVertices.push_back((float)x);
    out.m_arVertices.push_back((float)y);
    out.m_arVertices.push_back((float)z);
    out.m_arVertices.push_back((float)length);
    out.m_arVertices.push_back(side);
}
} // namespace

eRenderAntiAliasingLine::eRenderAntiAliasingLine()
{
    eMaterial* material = new eMaterial();
    ePass* pass = material->CreateTechnique()->CreatePass();
    pass->SetProjectionMode(ePM_PERSPECTIVE);
    pass->SetProgram("DashLine3D");
    pass->SetLineWidth(10.0f);
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthWriteEnabled(0);
    pass->SetDepthCheckEnabled(1);
    // A bias of 1 and a slope of 10 towards the eye, so that the strip wins against the
    // ground it lies over; the host's polygon offset pushes positive values away.
    pass->SetDepthBiasConstant(-1.0f);
    pass->SetDepthBiasSlopeScale(-10.0f);
    HoldMaterial(material);
}

eRenderAntiAliasingLine::~eRenderAntiAliasingLine() {}

void eRenderAntiAliasingLine::BuildChunk(std::vector<eVector3T<double>> const& points,
                                         std::vector<double> const& lengths,
                                         tagAntiAliasLineData& out)
{
    size_t n = points.size();
    if (n < 2)
        return;
    out.m_arVertices.reserve((2 * n + 4) * kStripFloats);
    eVector3T<double> const &first = points[0], &second = points[1];
    for (float side : {-1.0f, 1.0f})
        PushVertex(out, 2.0 * first.x - second.x, 2.0 * first.y - second.y, first.z, 0.0, side);
    for (size_t i = 0; i < n; ++i)
        for (float side : {-1.0f, 1.0f})
            PushVertex(out, points[i].x, points[i].y, points[i].z, lengths[i], side);
    eVector3T<double> const &last = points[n - 1], &beforeLast = points[n - 2];
    for (float side : {-1.0f, 1.0f})
        PushVertex(out, 2.0 * last.x - beforeLast.x, 2.0 * last.y - beforeLast.y, last.z,
                   lengths[n - 1], side);
    int stripIndices = out.GetVertexCount() - 4;
    out.m_arIndices.reserve((size_t)stripIndices);
    for (int k = 0; k < stripIndices; ++k)
        out.m_arIndices.push_back((unsigned short)k);
}

unsigned char
eRenderAntiAliasingLine::CreateAntialiasLineData(std::vector<eVector3T<double>> const& points,
                                                 std::vector<tagAntiAliasLineData>& out)
{
    if (points.empty())
        return 0;
    size_t const n = points.size();
    size_t const chunks = (size_t)std::ceil(n / (double)kChunkPoints);
    size_t const remainder = n % kChunkPoints;
    for (size_t c = 0; c < chunks; ++c)
    {
        bool const isLast = c + 1 == chunks;
        size_t count = isLast && remainder >= 1 ? remainder : (size_t)kChunkPoints;
        if (isLast && remainder == 1)
            break; // a lone last point makes no segment
        size_t const start = c * kChunkPoints;
        std::vector<eVector3T<double>> chunk(1, points[start]);
        std::vector<double> lengths(1, 0.0);
        double length = 0.0;
        for (size_t i = start + 1; i < start + count; ++i)
        {
            eVector3T<double> const& p = points[i];
            eVector3T<double> const& before = points[i - 1];
            double d = std::hypot(p.x - before.x, p.y - before.y);
            if (Eequal(d, 0.0))
                continue;
            length += d;
            chunk.push_back(p);
            lengths.push_back(length);
        }
        out.emplace_back();
        out.back().m_dLength = length;
        BuildChunk(chunk, lengths, out.back());
    }
    return 1;
}

eAntiAliasLineMesh* eRenderAntiAliasingLine::MakeMesh(tagAntiAliasLineData const& data)
{
    if (data.m_arVertices.empty())
        return nullptr;
    eAntiAliasLineMesh* mesh = new eAntiAliasLineMesh();
    mesh->SetOperationType(eOT_TRIANGLE_STRIP);
    mesh->SetVertexType(kStripVertexType);
    eVertexData* vertices = mesh->GetVertexData();
    vertices->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    vertices->AddElement(eVET_FLOAT, eVEC_2, eAI_TEXCOORD0, 0);
    mesh->AddVertex(data.m_arVertices.data(), data.GetVertexCount());
    mesh->GetIndexData()->GetIndexBuffer() = data.m_arIndices;
    mesh->m_dLength = data.m_dLength;
    return mesh;
}

unsigned char eRenderAntiAliasingLine::Initialize(eRenderEngine*)
{
    if (m_bInitialized)
        return m_bInitialized;
    if (!m_arLines.empty())
    {
        DestroyMeshes();
        for (std::vector<tagColorVertex3r> const& line : m_arLines)
        {
            std::vector<eVector3T<double>> points;
            points.reserve(line.size());
            for (tagColorVertex3r const& v : line)
                points.push_back(eVector3T<double>(v.x, v.y, v.z));
            std::vector<tagAntiAliasLineData> chunks;
            CreateAntialiasLineData(points, chunks);
            for (tagAntiAliasLineData const& chunk : chunks)
                if (eAntiAliasLineMesh* mesh = MakeMesh(chunk))
                    HoldMesh(mesh);
        }
    }
    m_bInitialized = CreateBuffer();
    return m_bInitialized;
}

unsigned char eRenderAntiAliasingLine::UnInitialize(eRenderEngine*)
{
    DestroyBuffer();
    m_bInitialized = 0;
    if (m_pTexture)
        m_pTexture->DestroyTexture();
    return 1;
}

unsigned char eRenderAntiAliasingLine::CreateBuffer()
{
    for (eMesh* mesh : m_arMeshes)
    {
        if (!mesh)
            continue;
        mesh->GetVertexData()->Create();
        mesh->GetIndexData()->Create();
    }
    return 1;
}

unsigned char eRenderAntiAliasingLine::DestroyBuffer()
{
    for (eMesh* mesh : m_arMeshes)
    {
        if (!mesh)
            continue;
        mesh->GetVertexData()->Delete();
        mesh->GetIndexData()->Delete();
    }
    return 1;
}

unsigned char eRenderAntiAliasingLine::StartRender(eRenderEngine* engine, eRenderSystem* rs,
                                                   eCamera* camera, eViewport* viewport)
{
    // The render object's own start: the plain line's uniforms belong to another program.
    if (!eRenderObject::StartRender(engine, rs, camera, viewport))
        return 0;
    eRenderProgram* rp = engine->GetRenderProgram(GetPass());
    if (!rp)
        return 0;
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    eVector3T<double> const& centre = camera->GetReferenceCenter();
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, camera->GetRelativeWorldMatrix().Ptr());
    p->Uniform3f(u->m_nCustom[eR_REFERENCE_CENTER], (float)centre.x, (float)centre.y,
                 (float)centre.z);
    eMatrix4T<float> view = camera->GetRelativeViewMatrix();
    p->UniformMatrix4(u->m_nViewMatrix, 1, 0, view.Ptr());
    p->UniformMatrix4(u->m_nProjectionMatrix, 1, 0, camera->GetRelativeProjectionMatrix().Ptr());
    p->Uniform1i(u->m_nCustom[eR_DASHED], kSolid);
    p->Uniform1i(u->m_nCustom[eR_GEOGRAPHIC], kGeographicPositions);
    p->Uniform1f(u->m_nCustom[eR_RELATIVE_HEIGHT], m_fRelativeHeight);
    p->Uniform1f(u->m_nCustom[eR_DASH_LENGTH], kDashLength);
    p->Uniform1f(u->m_nCustom[eR_GAP_LENGTH], kGapLength);
    p->Uniform1f(u->m_nCustom[eR_DASH_OFFSET], kDashOffset);
    p->Uniform1f(u->m_nCustom[eR_OPACITY], kOpacity);
    p->Uniform1f(u->m_nCustom[eR_LINE_WIDTH], m_fLineWidth);
    p->Uniform4f(u->m_nColor, m_cColor.x / 255.0f, m_cColor.y / 255.0f, m_cColor.z / 255.0f,
                 m_cColor.w / 255.0f);
    p->Uniform1f(u->m_nCustom[eR_FEATHER], kFeather);
    p->Uniform1f(u->m_nCustom[eR_PROJ_KIND], (float)m_nProjectionKind);
    p->Uniform4f(u->m_nCustom[eR_VIEWPORT], 0.0f, 0.0f, (float)viewport->GetActualWidth(),
                 (float)viewport->GetActualHeight());
    return 1;
}

unsigned char eRenderAntiAliasingLine::Render(eRenderEngine* engine, eRenderSystem* rs,
                                              eCamera* camera, eViewport* viewport)
{
    if (!StartRender(engine, rs, camera, viewport))
        return 0;
    eRenderProgram* rp = engine->GetRenderProgram(GetPass());
    for (eMesh* mesh : m_arMeshes)
    {
        if (!mesh)
            continue;
        eAntiAliasLineMesh* strip = dynamic_cast<eAntiAliasLineMesh*>(mesh);
        if (rp)
            rp->GetProgram()->Uniform1f(rp->GetUniform()->m_nCustom[eR_TOTAL_LENGTH],
                                        strip ? (float)strip->m_dLength : 0.0f);
        RenderFrame(eOT_TRIANGLE_STRIP, mesh->GetVertexData(), mesh->GetIndexData());
    }
    EndRender(engine, rs, camera, viewport);
    return 1;
}

void eRenderAntiAliasingLine::RenderFrame(eOperationType type, eVertexData* vertices,
                                          eIndexData* indices)
{
    if (!vertices || !indices || !vertices->GetHardwareBuffer())
        return;
    eHardwareVertexBuffer* vertexBuffer = vertices->GetHardwareBuffer();
    eHardwareIndexBuffer* indexBuffer = indices->GetHardwareBuffer();
    int const count = indices->GetIndexSize();
    // The next-pair view reads four vertices past the last index: a buffer that is not a
    // strip of this layout would be read beyond its end.
    if (!indexBuffer || count <= 0 || indexBuffer->GetIndexSize() != 2 ||
        vertexBuffer->GetSizeInBytes() < (count + 4) * kStripStride)
        return;
    GLut::BindBuffer(GL_ARRAY_BUFFER, vertexBuffer->GetBufferID());
    for (tagShiftedAttribute const& a : kShiftedAttributes)
    {
        GLut::EnableVertexAttribArray(a.index);
        GLut::VertexAttribPointer(a.index, a.components, GL_FLOAT, GL_FALSE, kStripStride,
                                  reinterpret_cast<void const*>((std::intptr_t)a.offset));
    }
    GLut::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer->GetBufferID());
    glDrawElements((GLenum)type, count, GL_UNSIGNED_SHORT, nullptr);
    for (tagShiftedAttribute const& a : kShiftedAttributes)
        GLut::DisableVertexAttribArray(a.index);
    GLut::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    GLut::BindBuffer(GL_ARRAY_BUFFER, 0);
}

} // namespace KYR
