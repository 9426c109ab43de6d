#include "eRenderGlobeHalo.h"
#include "eCamera.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eOpPoints.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderSystem.h"
#include <cmath>
#include <new>

namespace KYR
{

namespace
{

double const kEarthRadius = 6378137.0;
// 6378137 squared wrapped to 32 bits, subtracted from r * r as it stands. Only the direction
// of the horizon vector matters, so its length is harmless.
double const kWrappedRadiusSquared = -1298636943.0;

// Scales v to the given length; a vector shorter than 1e-13 stays as it is.
void Normalise(ePoint2D& v, double length)
{
    double n = std::sqrt(v.x * v.x + v.y * v.y);
    if (n < 1e-13)
        return;
    v.x *= length / n;
    v.y *= length / n;
}

// The quad: corners (-1, -1), (-1, 1), (1, 1), (1, -1) on attribute 7, positions all zero.
void BuildQuad(eVertexData* vd, eIndexData* id)
{
    vd->SetVertexType(129);
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    vd->AddElement(eVET_FLOAT, eVEC_2, eAI_TEXCOORD0, 0);
    float const v[4][5] = {{0.0f, 0.0f, 0.0f, -1.0f, -1.0f},
                           {0.0f, 0.0f, 0.0f, -1.0f, 1.0f},
                           {0.0f, 0.0f, 0.0f, 1.0f, 1.0f},
                           {0.0f, 0.0f, 0.0f, 1.0f, -1.0f}};
    vd->AddVertex(&v[0][0], 4);
    for (unsigned short i : {0, 1, 2, 0, 2, 3})
        id->AddIndex(i);
}

// Screen point of the horizon above the Earth's centre, in the plane of the eye's up and
// viewing axes: the eye-to-centre direction turned by the angle the Earth's radius subtends.
eVector3T<double> ProjectHorizon(eCamera* camera)
{
    eMatrix4T<double> const& view = camera->GetViewMatrix();
    eVector4T<double> c = view * eVector4T<double>(0.0, 0.0, 0.0, 1.0);
    double r = std::sqrt(c.x * c.x + c.y * c.y + c.z * c.z);
    ePoint2D pq;
    eOpPoints::RotateRadian(ePoint2D(c.z, c.y), -std::asin(kEarthRadius / r), pq);
    Normalise(pq, r * r - kWrappedRadiusSquared);
    eVector4T<double> h = view.Inverse() * eVector4T<double>(0.0, pq.y, pq.x, 1.0);
    return camera->Project(eVector3T<double>(h.x, h.y, h.z));
}

} // namespace

eRenderGlobeHalo::eRenderGlobeHalo() : m_bInitialized(0), m_nColor(0), m_dAlpha(1.0)
{
    // The colour is the application's to set; zero keeps an unset halo invisible.
}

eRenderGlobeHalo::~eRenderGlobeHalo()
{
    Release();
}

eRenderable::Type eRenderGlobeHalo::GetType()
{
    return eRT_GLOBE_HALO;
}

unsigned char eRenderGlobeHalo::Initialize(eRenderEngine* engine)
{
    eCamera* camera = engine ? engine->GetCamera() : nullptr;
    if (m_bInitialized || !camera || camera->GetSceneMode() != eSM_GLOBE)
        return m_bInitialized;
    m_pVertexData.Reset(new eVertexData());
    m_pIndexData.Reset(new eIndexData());
    BuildQuad(m_pVertexData, m_pIndexData);
    m_pVertexData->Create();
    m_pIndexData->Create();
    m_bInitialized = 1;
    return m_bInitialized;
}

// Each store goes with its last holder, and with it its hardware buffer.
void eRenderGlobeHalo::Release()
{
    m_pVertexData.Reset();
    m_pIndexData.Reset();
    m_pTechnique.Reset();
    m_bInitialized = 0;
}

unsigned char eRenderGlobeHalo::UnInitialize(eRenderEngine*)
{
    Release();
    return 1;
}

unsigned char eRenderGlobeHalo::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                       eViewport*)
{
    if (!m_bVisible)
        return 0;
    if (!m_bInitialized)
        Initialize(engine);
    if (!camera)
        return 0;
    double d = camera->GetDistance();
    // At and above the upper distance the last value stays.
    if (d < kFadeStart)
        m_dAlpha = 1.0 - (kFadeStart - d) / kFadeSpan;
    if (!m_bInitialized || !(m_dAlpha > 0.0))
        return 0;

    eVector3T<double> a = ProjectHorizon(camera);
    eVector3T<double> c = camera->Project(eVector3T<double>(0.0, 0.0, 0.0));
    eMatrix4T<float> draw =
        eMatrix4T<float>::Translation((float)c.x, (float)c.y, 0.0f) * camera->GetOrthoWorldMatrix();

    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    eRenderProgram* rp = pass && engine ? engine->GetRenderProgram(pass) : nullptr;
    if (!rp || !rp->GetProgram() || !rs)
        return 0;
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, draw.Ptr());
    p->Uniform1f(u->m_nCustom[0], (float)std::fabs(c.y - a.y));
    p->Uniform1f(u->m_nCustom[1], (float)m_dAlpha);
    int color = (int)m_nColor;
    p->Uniform4f(u->m_nColor, (float)(EREDVAL(color) / 255.0), (float)(EGREENVAL(color) / 255.0),
                 (float)(EBLUEVAL(color) / 255.0), (float)(EALPHAVAL(color) / 255.0));
    rs->DrawIndexed(eOT_TRIANGLE_LIST, m_pVertexData, m_pIndexData, false);
    return 1;
}

eTechnique* eRenderGlobeHalo::CreateTechnique()
{
    eTechnique* technique = new (std::nothrow) eTechnique();
    ePass* pass = technique ? technique->CreatePass() : nullptr;
    if (!pass)
        return technique;
    pass->SetProgram("GlobeHalo");
    pass->SetProjectionMode(ePM_ORTHOGRAPHIC);
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(0);
    pass->SetDepthWriteEnabled(0);
    pass->SetDepthBiasSlopeScale(0.0f);
    pass->SetDepthBiasConstant(0.0f);
    pass->SetLightingEnabled(0);
    pass->SetAmbient(eVector4T<float>(0.5f, 0.5f, 0.5f, 1.0f));
    pass->SetDiffuse(eVector4T<float>(0.6f, 0.6f, 0.6f, 1.0f));
    pass->SetSpecular(eVector4T<float>(0.3f, 0.3f, 0.3f, 1.0f));
    pass->SetShininess(10.0f);
    return technique;
}

unsigned char eRenderGlobeHalo::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                  eRenderQueue* queue)
{
    if (!m_pTechnique)
        m_pTechnique.Reset(CreateTechnique());
    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    if (pass && queue)
        queue->AddOverlayRenderable(pass, this);
    return 1;
}

} // namespace KYR
