#include "eRenderObject.h"
#include "GLut.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderSystem.h"
#include "eTexture.h"
#include <epoxy/gl.h>

namespace KYR
{

namespace
{
unsigned int const kTexture0 = 33984; // GL_TEXTURE0
unsigned int const kTextureUnits = 32;

template <typename V> void DropVector(V& v)
{
    V().swap(v);
}

void DropCpuCopies(eMesh* mesh)
{
    DropVector(mesh->GetVertexData()->GetVertexBuffer());
    eIndexData* indices = mesh->GetIndexData();
    DropVector(indices->GetIndexBuffer());
    if (eIndexExData* wide = dynamic_cast<eIndexExData*>(indices))
        DropVector(wide->GetIndexExBuffer());
}
} // namespace

eRenderObject::eRenderObject()
    : m_bInitialized(0), m_nProjectionKind(0), m_eRenderMode(eRM_FILL), m_dSquaredViewDepth(0.0)
{
    init_callbacks();
    m_nRenderQueueId = 5;
}

// Material, texture, then the meshes, each freed when this was its last holder. The last
// holder of a mesh also releases its buffers: deleting a mesh deletes its hardware buffers,
// which is what DestroyBuffer would do, without touching the buffers a copy still draws.
eRenderObject::~eRenderObject()
{
    m_pMaterial.Reset();
    m_pTexture.Reset();
    m_arMeshes.clear();
}

void eRenderObject::init_callbacks()
{
    m_pCallbackUser = nullptr;
    m_pfnCallbackRender = nullptr;
}

eRenderable::Type eRenderObject::GetType()
{
    return eRT_RENDER_OBJECT;
}

unsigned char eRenderObject::Initialize(eRenderEngine*)
{
    if (m_bInitialized)
        return m_bInitialized;
    m_bInitialized = CreateBuffer();
    if (m_pTexture)
        m_pTexture->CreateTexture();
    return m_bInitialized;
}

unsigned char eRenderObject::UnInitialize(eRenderEngine*)
{
    DestroyBuffer();
    if (m_pTexture)
        m_pTexture->DestroyTexture();
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderObject::Reset()
{
    DestroyBuffer();
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderObject::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                               eRenderQueue* queue)
{
    if (!m_bVisible)
        return 1;
    // No material means no technique: the entry is queued and draws nothing.
    queue->AddRenderable(m_pMaterial ? m_pMaterial->GetTechnique(0) : nullptr, this,
                         m_nRenderQueueId);
    return 1;
}

unsigned char eRenderObject::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                    eViewport* viewport)
{
    unsigned char started = StartRender(engine, rs, camera, viewport);
    if (!started)
        return 0;
    for (eMesh* mesh : m_arMeshes)
        if (mesh)
            rs->DrawIndexed(mesh->GetOperationType(), mesh->GetVertexData(), mesh->GetIndexData(),
                            false);
    EndRender(engine, rs, camera, viewport);
    return started;
}

double eRenderObject::GetSquaredViewDepth(eCamera*)
{
    return m_dSquaredViewDepth;
}

void eRenderObject::AddMesh(eMesh* mesh)
{
    for (eShared<eMesh> const& held : m_arMeshes)
        if (mesh && held.Get() == mesh)
        {
            m_arMeshes.push_back(held);
            return;
        }
    m_arMeshes.push_back(eShared<eMesh>(mesh));
}

void eRenderObject::SetMaterial(eMaterial* material)
{
    if (material != m_pMaterial.Get())
        m_pMaterial.Reset(material);
}

eMesh* eRenderObject::GetMesh(int index)
{
    return (unsigned int)index < (unsigned int)m_arMeshes.size() ? m_arMeshes[(size_t)index].Get()
                                                                 : nullptr;
}

void eRenderObject::SetMatrix(eMatrix4T<double> const& matrix)
{
    m_Matrix = eMatrix4T<float>(matrix);
}

void eRenderObject::SetTextureFile(eString file)
{
    m_pTexture.Reset(); // freed here unless a copy still holds it
    m_pTexture.Reset(
        eTextureOperator::GetSingleton().CreateTexture(file, eTWM_REPEAT, eTFM_LINEAR));
}

void eRenderObject::connectCallbackRender(void* user, void (*fn)(void*))
{
    m_pCallbackUser = user;
    m_pfnCallbackRender = fn;
}

void eRenderObject::RenderCallBack()
{
    if (m_pfnCallbackRender)
        m_pfnCallbackRender(m_pCallbackUser);
}

void eRenderObject::DoubleToTwoFloat(double value, float& high, float& low)
{
    high = (float)value;
    low = (float)(value - (double)high);
}

void eRenderObject::DoubleToTwoFloat(eVector3T<double> const& value, eVector3T<float>& high,
                                     eVector3T<float>& low)
{
    DoubleToTwoFloat(value.x, high.x, low.x);
    DoubleToTwoFloat(value.y, high.y, low.y);
    DoubleToTwoFloat(value.z, high.z, low.z);
}

unsigned char eRenderObject::CreateBuffer()
{
    for (eMesh* mesh : m_arMeshes)
    {
        if (!mesh)
            continue;
        mesh->GetVertexData()->Create();
        mesh->GetIndexData()->Create();
        DropCpuCopies(mesh);
    }
    return 1;
}

unsigned char eRenderObject::DestroyBuffer()
{
    for (eMesh* mesh : m_arMeshes)
    {
        if (!mesh)
            continue;
        mesh->GetVertexData()->Delete();
        mesh->GetIndexData()->Delete();
        DropCpuCopies(mesh);
    }
    return 1;
}

void eRenderObject::ComputeProjectionKind(eRenderEngine* engine, eCamera* camera)
{
    if (camera->GetSceneMode() == eSM_GLOBE)
    {
        m_nProjectionKind = 0;
        return;
    }
    eCoordSys* coordSys = engine->GetCoordSys();
    eProjection* projection = coordSys ? coordSys->GetPrjCoordSys().GetProjection() : nullptr;
    if (!projection)
        return;
    switch (projection->GetProjectionType())
    {
    case PJ_PLATE_CARREE:
        m_nProjectionKind = 1;
        break;
    case PJ_SPHERE_MERCATOR:
    case PJ_MERCATOR:
        m_nProjectionKind = 2;
        break;
    case PJ_LAMBERT_CONFORMAL:
        m_nProjectionKind = 3;
        break;
    case PJ_ALBERS:
        m_nProjectionKind = 4;
        break;
    default: // unknown projections keep the last frame's kind
        break;
    }
}

unsigned char eRenderObject::StartRender(eRenderEngine* engine, eRenderSystem*, eCamera* camera,
                                         eViewport*)
{
    if (!m_bInitialized)
        Initialize(engine);
    if (!m_bInitialized || !m_pMaterial)
        return 0;
    if (m_pTexture)
    {
        m_pTexture->CreateTexture();
        GLut::ActiveTexture(kTexture0);
        glBindTexture(GL_TEXTURE_2D, m_pTexture->GetTextureID());
    }
    eVector3T<double> const& centre = camera->GetReferenceCenter();
    eMatrix4T<float> const& world = camera->GetRelativeWorldMatrix();
    eMatrix4T<float> const& view = camera->GetRelativeViewMatrix();
    eMatrix4T<float> const& projection = camera->GetRelativeProjectionMatrix();
    eMatrix4T<float> w =
        eMatrix4T<float>::Translation((float)-centre.x, (float)-centre.y, (float)-centre.z) *
        world * m_Matrix;

    eTechnique* technique = m_pMaterial->GetBestTechnique();
    ePass* pass = technique ? technique->GetPass(0) : nullptr;
    eRenderProgram* rp = engine->GetRenderProgram(pass);
    if (!pass || !rp)
        return 0;
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, w.Ptr());
    p->UniformMatrix4(u->m_nViewMatrix, 1, 0, view.Ptr());
    p->UniformMatrix4(u->m_nProjectionMatrix, 1, 0, projection.Ptr());
    p->Uniform1f(u->m_nLightingEnabled, pass->IsLightingEnabled() ? 1.0f : 0.0f);
    p->UniformVector4(u->m_nAmbient, &pass->GetAmbient().x);
    p->UniformVector4(u->m_nDiffuse, &pass->GetDiffuse().x);
    p->UniformVector4(u->m_nSpecular, &pass->GetSpecular().x);
    p->Uniform1f(u->m_nShininess, pass->GetShininess());
    ComputeProjectionKind(engine, camera);
    RenderCallBack();
    return 1;
}

unsigned char eRenderObject::EndRender(eRenderEngine* engine, eRenderSystem*, eCamera* camera,
                                       eViewport*)
{
    for (unsigned int unit = 0; unit < kTextureUnits; ++unit)
    {
        GLut::ActiveTexture(kTexture0 + unit);
        glBindTexture(GL_TEXTURE_2D, 0);
    }
    GLut::ActiveTexture(kTexture0);
    glBindTexture(GL_TEXTURE_2D, 0);
    eTechnique* technique = m_pMaterial ? m_pMaterial->GetBestTechnique() : nullptr;
    ePass* pass = technique ? technique->GetPass(0) : nullptr;
    if (eRenderProgram* rp = engine->GetRenderProgram(pass))
        rp->GetProgram()->UniformMatrix4(rp->GetUniform()->m_nProjectionMatrix, 1, 0,
                                         camera->GetRelativeProjectionMatrix().Ptr());
    return 1;
}

} // namespace KYR
