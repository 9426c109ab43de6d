#include "eRenderIsoSurface3D.h"
#include "GLut.h"
#include "eBase.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eMaterial.h"
#include "eMathEngine.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include <epoxy/gl.h>
#include <cmath>

namespace KYR
{

namespace
{

char const* const kSource = "Src/RenderEffect/eRenderIsoSurface3D";
int const kVertexBytes = (int)sizeof(tagNormalTextureVertex3r);
static_assert(sizeof(tagNormalTextureVertex3r) == 32, "a vertex is 32 bytes");
// Every attribute group that glPushAttrib can save.
unsigned int const kAllAttributes = 0xfffff;

void FreeBuffer(unsigned int name)
{
    GLut::DeleteBuffers(1, &name);
}

void FreeVertexArray(unsigned int name)
{
    GLut::DeleteVertexArrays(1, &name);
}

// Ry(longitude) * Rx(-latitude) stands a model with z up, y north and x east at the point,
// for world axes with y through the north pole and z through (0, 0). This engine's world has
// z through the north pole and x through (0, 0): the cyclic swap P (x to y, y to z, z to x)
// carries the one into the other. P only moves elements, so the product stays exact.
eMatrix4T<double> StandingFrame(ePoint2D const& geo)
{
    eMatrix4T<double> frame = eMatrix4T<double>::RotationY(geo.x * eMathEngine::DEG_TO_RAD) *
                              eMatrix4T<double>::RotationX(-geo.y * eMathEngine::DEG_TO_RAD);
    eMatrix4T<double> swap;
    swap.m[0] = swap.m[5] = swap.m[10] = 0.0;
    swap.m[1] = swap.m[6] = swap.m[8] = 1.0;
    return swap * frame;
}

} // namespace

eRenderIsoSurface3D::eRenderIsoSurface3D(tagNormalTextureVertex3r* vertices, int vertexCount,
                                         unsigned int* indices, int indexCount)
    : m_pVertices(vertices), m_pIndices(indices), m_nVertexCount(vertexCount),
      m_nIndexCount(indexCount), m_bUseEBO(indices != nullptr), m_bPicked(false), m_fAlpha(0.5f),
      m_vCenter(0.0, 0.0, 0.0), m_vPosition(0.0, 0.0, 0.0), m_dScale(1.0)
{
    eMaterial* material = new eMaterial();
    ePass* pass = material->CreateTechnique()->CreatePass();
    pass->SetProjectionMode(ePM_PERSPECTIVE);
    pass->SetProgram("ISOSurface3D");
    pass->SetLineWidth(1.0f);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(1);
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetLightingEnabled(0);
    pass->SetAmbient(eVector4T<float>(0.4f, 0.4f, 0.4f, 1.0f));
    pass->SetDiffuse(eVector4T<float>(0.5f, 0.5f, 0.5f, 1.0f));
    pass->SetSpecular(eVector4T<float>(0.0f, 0.0f, 0.0f, 1.0f));
    pass->SetShininess(0.5f);
    SetMaterial(material);
    m_pStrategy.Reset(new eWOITStrategy());
}

// Buffers and strategy go with their last holder.
eRenderIsoSurface3D::~eRenderIsoSurface3D()
{
    m_pStrategy.Reset();
}

eRenderable::Type eRenderIsoSurface3D::GetType()
{
    return eRT_ISO_SURFACE_3D;
}

ePass* eRenderIsoSurface3D::Pass()
{
    eTechnique* technique = m_pMaterial ? m_pMaterial->GetTechnique(0) : nullptr;
    return technique ? technique->GetPass(0) : nullptr;
}

void eRenderIsoSurface3D::SetTranform(eVector3T<double> center, eVector3T<double> position,
                                      double scale)
{
    m_vCenter = center;
    m_vPosition = position;
    m_dScale = scale;
}

void eRenderIsoSurface3D::SetMaterialDiffuse(eVector3T<double> colour)
{
    if (ePass* pass = Pass())
        pass->SetDiffuse(eVector4T<float>((float)colour.x, (float)colour.y, (float)colour.z, 1.0f));
}

void eRenderIsoSurface3D::SetMaterialSpecular(eVector3T<double> colour)
{
    if (ePass* pass = Pass())
        pass->SetSpecular(
            eVector4T<float>((float)colour.x, (float)colour.y, (float)colour.z, 1.0f));
}

void eRenderIsoSurface3D::SetMaterialShinnes(float shininess)
{
    if (ePass* pass = Pass())
        pass->SetShininess(shininess);
}

unsigned char eRenderIsoSurface3D::CreateBuffer()
{
    // Negative counts hold nothing.
    int const vertices = m_nVertexCount > 0 ? m_nVertexCount : 0;
    int const indices = m_nIndexCount > 0 ? m_nIndexCount : 0;
    unsigned int array = 0, buffers[2] = {0, 0};
    GLut::GenVertexArrays(1, &array);
    GLut::GenBuffers(2, buffers);
    m_nVertexArray.Reset(array, FreeVertexArray);
    m_nVertexBuffer.Reset(buffers[0], FreeBuffer);
    m_nIndexBuffer.Reset(buffers[1], FreeBuffer);

    GLut::BindVertexArray(array);
    GLut::BindBuffer(GL_ARRAY_BUFFER, buffers[0]);
    GLut::BufferData(GL_ARRAY_BUFFER, (std::ptrdiff_t)vertices * kVertexBytes,
                     vertices ? m_pVertices : nullptr, GL_STATIC_DRAW);
    if (m_nIndexCount != 0)
    {
        GLut::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers[1]);
        GLut::BufferData(GL_ELEMENT_ARRAY_BUFFER, (std::ptrdiff_t)indices * 4,
                         indices ? m_pIndices : nullptr, GL_STATIC_DRAW);
    }
    GLut::EnableVertexAttribArray(eAI_POSITION);
    GLut::VertexAttribPointer(eAI_POSITION, 3, GL_FLOAT, 0, kVertexBytes, (void const*)0);
    GLut::EnableVertexAttribArray(eAI_ATTRIB1);
    GLut::VertexAttribPointer(eAI_ATTRIB1, 3, GL_FLOAT, 0, kVertexBytes, (void const*)12);
    GLut::EnableVertexAttribArray(eAI_COLOR);
    GLut::VertexAttribPointer(eAI_COLOR, 2, GL_FLOAT, 0, kVertexBytes, (void const*)24);
    GLut::BindVertexArray(0);
    // The array keeps its buffers; draws from client memory must not find one bound.
    GLut::BindBuffer(GL_ARRAY_BUFFER, 0);
    return 1;
}

unsigned char eRenderIsoSurface3D::DestroyBuffer()
{
    m_nVertexArray.Reset();
    m_nVertexBuffer.Reset();
    m_nIndexBuffer.Reset();
    return 1;
}

eMatrix4T<float> eRenderIsoSurface3D::WorldMatrix(eRenderEngine* engine, eCamera* camera)
{
    eCoordSys* coordSys = engine->GetCoordSys();
    eSceneMode const mode = camera->GetSceneMode();
    ePoint2D const geo(m_vPosition.x, m_vPosition.y);
    ePoint2D map, lonLat = geo, logical;
    eVector3T<double> anchor(0.0, 0.0, 0.0);
    if (coordSys)
    {
        coordSys->GeoToMap(geo, map);
        if (mode == eSM_GLOBE)
            coordSys->MapToGeo(map, lonLat);
        coordSys->MapToLogicalPoint(map, logical);
        coordSys->LogicalToWorld(mode, logical, anchor, m_vPosition.z);
    }
    else
        Eassert("coordSys != NULL", kSource, __LINE__);

    // Centre to the origin, then scaled; on the globe stood on the tangent plane.
    eMatrix4T<double> model =
        eMatrix4T<double>::Scale(m_dScale, m_dScale, m_dScale) *
        eMatrix4T<double>::Translation(-m_vCenter.x, -m_vCenter.y, -m_vCenter.z);
    if (mode == eSM_GLOBE)
        model = StandingFrame(lonLat) * model;
    eVector3T<double> const& ref = camera->GetReferenceCenter();
    return eMatrix4T<float>(
        eMatrix4T<double>::Translation(anchor.x - ref.x, anchor.y - ref.y, anchor.z - ref.z) *
        model);
}

unsigned char eRenderIsoSurface3D::StartRender(eRenderEngine* engine, eRenderSystem* rs,
                                               eCamera* camera, eViewport* viewport)
{
    if (!eRenderObject::StartRender(engine, rs, camera, viewport))
        return 0;
    ePass* pass = m_pMaterial->GetBestTechnique()->GetPass(0);
    eRenderProgram* rp = engine->GetRenderProgram(pass);
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();

    eMatrix4T<float> const world = WorldMatrix(engine, camera);
    eMatrix4T<float> const n = (camera->GetRelativeViewMatrix() * world).Inverse().Transpose();
    float const normal[9] = {n[0], n[1], n[2], n[4], n[5], n[6], n[8], n[9], n[10]};

    eVector3T<double> const& sunWorld = engine->GetSunPosition();
    eVector4T<double> sun = camera->GetViewMatrix() * camera->GetWorldMatrix() *
                            eVector4T<double>(sunWorld.x, sunWorld.y, sunWorld.z, 1.0);
    double const length = std::sqrt(sun.x * sun.x + sun.y * sun.y + sun.z * sun.z);
    if (std::fabs(length) > 1e-13)
    {
        sun.x /= length;
        sun.y /= length;
        sun.z /= length;
    }

    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, world.Ptr());
    p->UniformMatrix3(u->m_nNormalMatrix, 1, 0, normal);
    p->Uniform3f(u->m_nCustom[eR_SUN_DIRECTION], (float)sun.x, (float)sun.y, (float)sun.z);
    p->UniformVector4(u->m_nAmbient, &pass->GetAmbient().x);
    p->UniformVector4(u->m_nDiffuse, &pass->GetDiffuse().x);
    p->UniformVector4(u->m_nSpecular, &pass->GetSpecular().x);
    p->Uniform1f(u->m_nShininess, pass->GetShininess());
    GLut::Uniform1f(p->GetUniformLocation("alpha"), m_fAlpha);
    return 1;
}

void eRenderIsoSurface3D::FitStrategy(eViewport* viewport)
{
    int width = 0, height = 0;
    m_pStrategy->GetSize(width, height);
    if (viewport->GetActualWidth() == width && viewport->GetActualHeight() == height)
        return;
    m_pStrategy->SetSize(viewport->GetActualWidth(), viewport->GetActualHeight());
    m_pStrategy->Create();
}

void eRenderIsoSurface3D::DrawTriangles()
{
    // Always the stored order as a list: the index buffer is uploaded, not drawn from.
    GLut::BindVertexArray(m_nVertexArray);
    glDrawArrays(GL_TRIANGLES, 0, m_nVertexCount > 0 ? m_nVertexCount : 0);
    GLut::BindVertexArray(0);
}

unsigned char eRenderIsoSurface3D::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                          eViewport* viewport)
{
    if (!engine || !camera || !viewport)
        return 0;
    FitStrategy(viewport);
    // The surface draws into whatever frame buffer is in force: the strategy's targets when
    // the host has begun them.
    GLint saved = -1;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &saved);
    m_pStrategy->SetCamera(camera);
    if (!StartRender(engine, rs, camera, viewport))
        return 0;

    glPushAttrib(kAllAttributes);
    switch (m_eRenderMode)
    {
    case eRM_POINT:
        glPolygonMode(GL_FRONT_AND_BACK, GL_POINT);
        break;
    case eRM_LINE:
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        break;
    case eRM_FILL:
    case eRM_FILL_AND_LINE:
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        break;
    default: // other modes keep the polygon mode in force
        break;
    }
    glShadeModel(GL_SMOOTH);
    DrawTriangles();
    glPopAttrib();

    if (m_eRenderMode == eRM_FILL_AND_LINE)
    {
        glPushAttrib(kAllAttributes);
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        DrawTriangles();
        glPopAttrib();
    }
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, (unsigned int)saved);
    return 1;
}

} // namespace KYR
