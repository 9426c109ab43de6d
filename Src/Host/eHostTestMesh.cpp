#include "eHostTestMesh.h"
#include "eCamera.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderSystem.h"
#include <cmath>

namespace KYR
{
namespace Host
{

eHostTestMesh::eHostTestMesh(double radius, int slices, int stacks)
    : m_pMesh(new eMesh()), m_pMaterial(new eMaterial()), m_vColor(0.2f, 0.5f, 0.9f, 1.0f)
{
    BuildSphere(radius, slices, stacks);
    ePass* pass = m_pMaterial->CreateTechnique()->CreatePass();
    pass->SetProgram("Color");
    pass->SetLightingEnabled(1);
    pass->SetAmbient(eVector4T<float>(0.25f, 0.25f, 0.25f, 1.0f));
    pass->SetDiffuse(eVector4T<float>(0.9f, 0.9f, 0.9f, 1.0f));
}

eHostTestMesh::~eHostTestMesh()
{
    delete m_pMesh;
    delete m_pMaterial;
}

// Vertices: position float 3 at attribute 0, normal float 3 at attribute 1.
void eHostTestMesh::BuildSphere(double radius, int slices, int stacks)
{
    eVertexData* vd = m_pMesh->GetVertexData();
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_ATTRIB1, 0);
    m_pMesh->SetOperationType(eOT_TRIANGLE_LIST);
    double const pi = 3.141592653589793;
    for (int j = 0; j <= stacks; ++j)
    {
        double lat = -pi / 2 + pi * j / stacks;
        for (int i = 0; i <= slices; ++i)
        {
            double lon = -pi + 2 * pi * i / slices;
            float n[3] = {(float)(std::cos(lat) * std::cos(lon)),
                          (float)(std::cos(lat) * std::sin(lon)), (float)std::sin(lat)};
            float v[6] = {(float)(n[0] * radius), (float)(n[1] * radius), (float)(n[2] * radius),
                          n[0], n[1], n[2]};
            vd->AddVertex(v, 1);
        }
    }
    eIndexData* id = m_pMesh->GetIndexData();
    for (int j = 0; j < stacks; ++j)
        for (int i = 0; i < slices; ++i)
        {
            unsigned short a = (unsigned short)(j * (slices + 1) + i);
            unsigned short b = (unsigned short)(a + slices + 1);
            unsigned short quad[6] = {a, (unsigned short)(a + 1), b, b, (unsigned short)(a + 1),
                                      (unsigned short)(b + 1)};
            for (unsigned short k : quad)
                id->AddIndex(k);
        }
}

unsigned char eHostTestMesh::Initialize(eRenderEngine*)
{
    if (!m_bInitialized)
        m_bInitialized = m_pMesh->GetVertexData()->Create() && m_pMesh->GetIndexData()->Create();
    return m_bInitialized;
}

unsigned char eHostTestMesh::UnInitialize(eRenderEngine*)
{
    m_pMesh->GetVertexData()->Delete();
    m_pMesh->GetIndexData()->Delete();
    m_bInitialized = 0;
    return 1;
}

unsigned char eHostTestMesh::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                               eRenderQueue* queue)
{
    if (!m_bVisible)
        return 1;
    queue->GetQueueGroup(3)->AddSolidRenderable(m_pMaterial->GetTechnique(0), this);
    return 1;
}

unsigned char eHostTestMesh::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                    eViewport*)
{
    if (!Initialize(engine))
        return 0;
    ePass* pass = m_pMaterial->GetTechnique(0)->GetPass(0);
    eRenderProgram* rp = engine->GetRenderProgram(pass);
    if (!rp)
        return 0;
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    eVector3T<double> const& c = camera->GetReferenceCenter();
    eMatrix4T<float> world =
        eMatrix4T<float>::Translation((float)-c.x, (float)-c.y, (float)-c.z) *
        camera->GetRelativeWorldMatrix();
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, world.Ptr());
    p->UniformMatrix4(u->m_nViewMatrix, 1, 0, camera->GetRelativeViewMatrix().Ptr());
    p->UniformMatrix4(u->m_nProjectionMatrix, 1, 0, camera->GetRelativeProjectionMatrix().Ptr());
    p->Uniform1f(u->m_nLightingEnabled, pass->IsLightingEnabled() ? 1.0f : 0.0f);
    p->UniformVector4(u->m_nAmbient, &pass->GetAmbient().x);
    p->UniformVector4(u->m_nDiffuse, &pass->GetDiffuse().x);
    p->UniformVector4(u->m_nColor, &m_vColor.x);
    rs->DrawIndexed(m_pMesh->GetOperationType(), m_pMesh->GetVertexData(), m_pMesh->GetIndexData(),
                    false);
    return 1;
}

} // namespace Host
} // namespace KYR
