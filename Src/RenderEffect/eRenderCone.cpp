#include "eRenderCone.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include <cmath>

namespace KYR
{

double eRenderCone::s_dTexFlowOffset = 0.0;

namespace
{
unsigned int const kConeVertexType = 133;

struct Quaternion
{
    double x, y, z, w;
};

eMatrix4T<double> QuaternionMatrix(Quaternion const& q)
{
    eMatrix4T<double> m;
    double xx = q.x * q.x, yy = q.y * q.y, zz = q.z * q.z;
    double xy = q.x * q.y, xz = q.x * q.z, yz = q.y * q.z;
    double wx = q.w * q.x, wy = q.w * q.y, wz = q.w * q.z;
    m.At(0, 0) = 1 - 2 * (yy + zz);
    m.At(0, 1) = 2 * (xy - wz);
    m.At(0, 2) = 2 * (xz + wy);
    m.At(1, 0) = 2 * (xy + wz);
    m.At(1, 1) = 1 - 2 * (xx + zz);
    m.At(1, 2) = 2 * (yz - wx);
    m.At(2, 0) = 2 * (xz - wy);
    m.At(2, 1) = 2 * (yz + wx);
    m.At(2, 2) = 1 - 2 * (xx + yy);
    return m;
}

bool NearUnit(double squared) { return squared >= 0.9999999 && squared <= 1.0000001; }

// A half turn about an axis perpendicular to u.
Quaternion HalfTurn(eVector3T<double> const& u)
{
    if (std::fabs(u.x) < 0.6)
    {
        double s = std::sqrt(1.0 - u.x * u.x);
        return {0.0, u.z / s, -u.y / s, 0.0};
    }
    if (std::fabs(u.y) < 0.6)
    {
        double s = std::sqrt(1.0 - u.y * u.y);
        return {-u.z / s, 0.0, u.x / s, 0.0};
    }
    double s = std::sqrt(1.0 - u.z * u.z);
    return {u.y / s, -u.x / s, 0.0, 0.0};
}
} // namespace

eMatrix4T<double> eRenderCone::ShortestArc(eVector3T<double> u, eVector3T<double> v)
{
    // Both are brought to unit length unless already near it; the second reuses the
    // first's length when the two are alike.
    double su = u.SquaredLength(), sv = v.SquaredLength();
    double lu = std::sqrt(su);
    double lv = std::fabs(su - sv) >= 1e-07 ? std::sqrt(sv) : lu;
    if (!NearUnit(su) && std::fabs(lu) >= 1e-13)
        u = u / lu;
    if (!NearUnit(sv) && std::fabs(lv) >= 1e-13)
        v = v / lv;
    double c = u.Dot(v) + 1.0;
    Quaternion q;
    if (c >= 1e-07)
    {
        double w = std::sqrt(c * 0.5);
        eVector3T<double> axis = u.Cross(v) / (2.0 * w);
        q = {axis.x, axis.y, axis.z, w};
    }
    else
        q = HalfTurn(u);
    return QuaternionMatrix(q);
}

eRenderCone::eRenderCone(double radius, double height)
{
    eMesh* mesh = new eMesh();
    mesh->SetOperationType(eOT_TRIANGLE_LIST);
    mesh->SetVertexType(kConeVertexType);
    eVertexData* vd = mesh->GetVertexData();
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    vd->AddElement(eVET_FLOAT, eVEC_2, eAI_TEXCOORD0, 0);
    vd->AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_COLOR, 1);
    AddMesh(mesh);
    BuildMaterial();
    m_pConeGeometry.Reset(new eConeGeometry(radius, height));
    m_pConeGeometry->SetColor(255, 0, 0, 100);
    m_pConeGeometry->SetSlices(80);
    m_pConeGeometry->SetCap(0);
    BuildMesh();
    m_dTexFlowSpeed = 0.005;
}

// The geometry goes with its last holder.
eRenderCone::~eRenderCone() {}

void eRenderCone::BuildMaterial()
{
    eMaterial* material = new eMaterial();
    ePass* pass = material->CreateTechnique()->CreatePass();
    pass->SetProjectionMode(ePM_PERSPECTIVE);
    pass->SetProgram("TexFlow");
    pass->SetLineWidth(1.0f);
    pass->SetDepthCheckEnabled(1);
    pass->SetDiffuse(eVector4T<float>(255.0f, 0.0f, 0.0f, 0.0f));
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetLightingEnabled(0);
    SetMaterial(material);
}

void eRenderCone::BuildMesh()
{
    m_pConeGeometry->BuildPositions();
    m_pConeGeometry->BuildTexCoords();
    std::vector<eConeGeometry::MeshVertex> vertices = m_pConeGeometry->Merge();
    eMesh* mesh = m_arMeshes[0];
    if (!vertices.empty())
        mesh->AddVertex(reinterpret_cast<float const*>(vertices.data()), (int)vertices.size());
    eIndexData* indices = mesh->GetIndexData();
    for (unsigned short i : m_pConeGeometry->GetIndices())
        indices->AddIndex(i);
}

eRenderable::Type eRenderCone::GetType() { return eRT_CONE; }

unsigned char eRenderCone::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                  eViewport* viewport)
{
    return eRenderObject::Render(engine, rs, camera, viewport);
}

void eRenderCone::setPosture(eVector3T<double> apex, eVector3T<double> base)
{
    eVector3T<double> d = apex - base;
    double length = d.Length();
    if (length >= 1e-13)
        d = d / length;
    eMatrix4T<double> m;
    m = eMatrix4T<double>::Scale(1.0, 1.0, length / m_pConeGeometry->GetHeight()) * m;
    m = ShortestArc(eVector3T<double>(0.0, 0.0, 1.0), d) * m;
    m = eMatrix4T<double>::Translation(base.x, base.y, base.z) * m;
    m_Matrix = eMatrix4T<float>(m);
}

unsigned char eRenderCone::StartRender(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                       eViewport* viewport)
{
    eRenderObject::StartRender(engine, rs, camera, viewport);
    eMatrix4T<float> texture = eMatrix4T<float>::Translation(0.0f, (float)s_dTexFlowOffset, 1.0f);
    s_dTexFlowOffset += m_dTexFlowSpeed;
    eTechnique* technique = m_pMaterial ? m_pMaterial->GetTechnique(0) : nullptr;
    ePass* pass = technique ? technique->GetPass(0) : nullptr;
    if (eRenderProgram* rp = engine->GetRenderProgram(pass))
        rp->GetProgram()->UniformMatrix4(rp->GetUniform()->m_nCustom[0], 1, 0, texture.Ptr());
    return 1;
}

} // namespace KYR
