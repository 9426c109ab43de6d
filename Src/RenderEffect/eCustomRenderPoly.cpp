#include "eCustomRenderPoly.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eTriangulator.h"

namespace KYR
{

namespace
{
unsigned int const kPolyVertexType = 1;
} // namespace

eCustomRenderPoly::eCustomRenderPoly() : m_bPolyInitialized(0), m_bNewPoly(1), m_nFailedPolys(0)
{
    // 32-bit indices, so that any number of outlines fits the one mesh.
    eMesh* mesh = new eMesh(true);
    mesh->SetOperationType(eOT_TRIANGLE_LIST);
    mesh->SetVertexType(kPolyVertexType);
    mesh->GetVertexData()->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    mesh->GetVertexData()->AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_COLOR, 1);
    AddMesh(mesh);

    eMaterial* material = new eMaterial();
    ePass* pass = material->CreateTechnique()->CreatePass();
    pass->SetProjectionMode(ePM_PERSPECTIVE);
    pass->SetProgram("Color");
    pass->SetLineWidth(3.0f);
    pass->SetDepthCheckEnabled(1);
    pass->SetDiffuse(eVector4T<float>(1.0f, 0.0f, 0.0f, 1.0f));
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    m_pMaterial.Reset(material);
}

eCustomRenderPoly::eCustomRenderPoly(eCustomRenderPoly const& other) : eRenderObject(other)
{
    ShareFrom(other);
}

eCustomRenderPoly& eCustomRenderPoly::operator=(eCustomRenderPoly const& other)
{
    if (this == &other)
        return *this;
    eRenderObject::operator=(other);
    ShareFrom(other);
    return *this;
}

eCustomRenderPoly::~eCustomRenderPoly() {}

void eCustomRenderPoly::ShareFrom(eCustomRenderPoly const& other)
{
    m_bPolyInitialized = other.m_bPolyInitialized;
    m_arPolys = other.m_arPolys;
    m_bNewPoly = other.m_bNewPoly;
    m_nFailedPolys = other.m_nFailedPolys;
}

void eCustomRenderPoly::AddMesh(eMesh* mesh)
{
    m_arMeshes.push_back(eShared<eMesh>(mesh));
}

eRenderable::Type eCustomRenderPoly::GetType()
{
    return eRT_POLY;
}

void eCustomRenderPoly::AddVertex(tagColorVertex3r& vertex)
{
    if (m_bNewPoly || m_arPolys.empty())
    {
        m_arPolys.emplace_back();
        m_bNewPoly = 0;
    }
    m_arPolys.back().push_back(vertex);
    m_bPolyInitialized = 0;
}

void eCustomRenderPoly::ClearVertex()
{
    m_arPolys.clear();
    m_bNewPoly = 1;
    m_bPolyInitialized = 0;
}

void eCustomRenderPoly::FillMesh()
{
    m_nFailedPolys = 0;
    eMesh* mesh = m_arMeshes.empty() ? nullptr : m_arMeshes[0];
    if (!mesh)
        return;
    eVertexData* vertices = mesh->GetVertexData();
    eIndexExData* indices = dynamic_cast<eIndexExData*>(mesh->GetIndexData());
    vertices->GetVertexBuffer().clear();
    if (!indices)
        return;
    indices->GetIndexExBuffer().clear();
    std::vector<ePoint2D> corners;
    std::vector<unsigned short> triangles;
    for (std::vector<tagColorVertex3r> const& poly : m_arPolys)
    {
        corners.clear();
        for (tagColorVertex3r const& v : poly)
            corners.push_back(ePoint2D(v.x, v.y));
        if (!eTriangulator::Process(corners.data(), (int)corners.size(), triangles))
            ++m_nFailedPolys;
        if (triangles.empty())
            continue;
        unsigned int first = (unsigned int)vertices->GetVertexSize();
        vertices->AddVertex(reinterpret_cast<unsigned char const*>(poly.data()), (int)poly.size());
        for (unsigned short i : triangles)
            indices->AddIndexEx(first + i);
    }
}

unsigned char eCustomRenderPoly::Initialize(eRenderEngine* engine)
{
    if (m_bInitialized && m_bPolyInitialized)
        return m_bInitialized;
    if (m_bInitialized)
        DestroyBuffer();
    m_bInitialized = 0;
    FillMesh();
    m_bPolyInitialized = 1;
    return eRenderObject::Initialize(engine);
}

unsigned char eCustomRenderPoly::UnInitialize(eRenderEngine* engine)
{
    m_bPolyInitialized = 0;
    return eRenderObject::UnInitialize(engine);
}

unsigned char eCustomRenderPoly::Reset()
{
    m_bPolyInitialized = 0;
    return eRenderObject::Reset();
}

unsigned char eCustomRenderPoly::StartRender(eRenderEngine* engine, eRenderSystem* rs,
                                             eCamera* camera, eViewport* viewport)
{
    // Outlines added since the last upload are cut and uploaded before the draw.
    if (!m_bPolyInitialized)
        Initialize(engine);
    if (!eRenderObject::StartRender(engine, rs, camera, viewport))
        return 0;
    eTechnique* technique = m_pMaterial->GetBestTechnique();
    eRenderProgram* rp = engine->GetRenderProgram(technique ? technique->GetPass(0) : nullptr);
    if (!rp)
        return 0;
    // The vertex colours as they are: white times each vertex's colour.
    rp->GetProgram()->Uniform4f(rp->GetUniform()->m_nColor, 1.0f, 1.0f, 1.0f, 1.0f);
    rp->GetProgram()->Uniform1f(rp->GetUniform()->m_nCustom[eR_USE_VERTEX_COLOR], 1.0f);
    return 1;
}

// The colour program is shared with other objects: its vertex-colour switch goes back off.
unsigned char eCustomRenderPoly::EndRender(eRenderEngine* engine, eRenderSystem* rs,
                                           eCamera* camera, eViewport* viewport)
{
    eTechnique* technique = m_pMaterial ? m_pMaterial->GetBestTechnique() : nullptr;
    eRenderProgram* rp = engine->GetRenderProgram(technique ? technique->GetPass(0) : nullptr);
    if (rp)
        rp->GetProgram()->Uniform1f(rp->GetUniform()->m_nCustom[eR_USE_VERTEX_COLOR], 0.0f);
    return eRenderObject::EndRender(engine, rs, camera, viewport);
}

} // namespace KYR
