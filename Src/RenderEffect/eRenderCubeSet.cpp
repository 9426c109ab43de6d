#include "eRenderCubeSet.h"
#include "eCamera.h"
#include "eDataSetFrame.h"
#include "eMaterial.h"
#include "eMathEngine.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include <cmath>

namespace KYR
{

namespace
{
char const* const kSource = "Src/RenderEffect/eRenderCubeSet";
unsigned int const kSolidTextureGroup = 6;
} // namespace

eRenderCubeSet::eRenderCubeSet()
    : m_bInitialized(0), m_pCamera(nullptr), m_pCanvas(nullptr), m_strProgram("DensitySetPoint"),
      m_nSpatialRefType(0), m_vPosition(0.0, 0.0, 0.0), m_vWorldPosition(0.0, 0.0, 0.0, 0.0)
{
}

// The technique goes with the last copy that holds it.
eRenderCubeSet::~eRenderCubeSet() {}

eRenderable::Type eRenderCubeSet::GetType()
{
    return eRT_SET;
}

unsigned char eRenderCubeSet::Initialize(eRenderEngine*)
{
    m_bInitialized = 1;
    return m_bInitialized;
}

unsigned char eRenderCubeSet::UnInitialize(eRenderEngine*)
{
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderCubeSet::Reset(eRenderEngine* engine)
{
    UnInitialize(engine);
    return 1;
}

unsigned char eRenderCubeSet::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                     eViewport*)
{
    if (!m_bInitialized)
        Initialize(engine);
    UpdateCache();
    if (!m_bVisible)
        return 1;
    RenderVertexBuffer(engine, rs, camera);
    return 1;
}

unsigned char eRenderCubeSet::Create(eCamera* camera, double, eCanvas* canvas)
{
    m_pCamera = camera;
    m_pCanvas = canvas;
    eVector4T<double> anchor(m_vPosition, 0.0);
    m_vWorldPosition = PositionToWorld(m_nSpatialRefType, anchor);
    if (eDataSetFrame::SceneMode(camera) == eSM_GLOBE)
        m_matLocal = StandingFrame(PositionToGeo(m_nSpatialRefType, anchor));
    return 1;
}

unsigned char eRenderCubeSet::Query(eRenderEngine*, eCamera*, eQueryFilter*, double&)
{
    return 1;
}

unsigned char eRenderCubeSet::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                eRenderQueue* queue)
{
    if (!m_pTechnique)
        CreateTechnique();
    if (m_pTechnique && queue)
        queue->GetQueueGroup(kSolidTextureGroup)->AddSolidTextureRenderable(m_pTechnique, this);
    return 1;
}

unsigned char eRenderCubeSet::RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*)
{
    return 1;
}

unsigned char eRenderCubeSet::UpdateProgram(eRenderEngine* engine, eRenderSystem*, eCamera* camera,
                                            eRenderProgram* program)
{
    if (!program)
        return 0;
    if (!camera)
        camera = m_pCamera;
    eMatrix4T<float> world = SetWorldMatrix(camera, program);
    SetLighting(engine, camera, program, world);
    return 1;
}

unsigned char eRenderCubeSet::UpdateCache()
{
    return 1;
}

ePoint2D eRenderCubeSet::PositionToGeo(int type, eVector4T<double>& p)
{
    int kind = SpatialKind(type);
    if (kind == 0)
    {
        Eassert("false", kSource, __LINE__);
        return ePoint2D(0.0, 0.0);
    }
    return eDataSetFrame::PositionToGeo(m_pCanvas, kind, p.x, p.y);
}

eVector4T<double> eRenderCubeSet::PositionToWorld(int type, eVector4T<double>& p)
{
    return eDataSetFrame::PositionToWorld(m_pCamera, m_pCanvas, m_matLocal, m_vWorldPosition,
                                          SpatialKind(type), p);
}

eVector4T<float> eRenderCubeSet::PositionToLocal(int type, eVector4T<double>& p)
{
    return eDataSetFrame::PositionToLocal(m_pCamera, m_pCanvas, m_matLocal, m_vWorldPosition,
                                          SpatialKind(type), p);
}

void eRenderCubeSet::CreateTechnique()
{
    eTechnique* technique = new eTechnique();
    ePass* pass = technique->CreatePass();
    pass->SetProgram(m_strProgram);
    SetupPass(pass);
    m_pTechnique.Reset(technique);
}

void eRenderCubeSet::SetupPass(ePass* pass)
{
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(1);
    pass->SetDepthBiasConstant(0.0f);
    pass->SetDepthBiasSlopeScale(0.0f);
    pass->SetLightingEnabled(1);
    pass->SetAmbient(eVector4T<float>(0.0f, 0.0f, 0.0f, 1.0f));
    pass->SetDiffuse(eVector4T<float>(0.0f, 0.0f, 0.0f, 1.0f));
    pass->SetSpecular(eVector4T<float>(0.0f, 0.0f, 0.0f, 1.0f));
    pass->SetEmmissive(eVector4T<float>(0.0f, 0.0f, 0.0f, 0.0f));
    pass->SetShininess(1.0f);
}

// Ry(longitude) * Rx(-latitude) turns a frame standing at (0, 0) to the point for world axes
// with y through the north pole and z through (0, 0). This engine's world has z through the
// north pole and x through (0, 0): the cyclic swap P (x to y, y to z, z to x) carries the
// one into the other, so P * Ry * Rx has x east, y north and z up at the point. P only moves
// elements, so the product is exact.
eMatrix4T<float> eRenderCubeSet::StandingFrame(ePoint2D const& geo)
{
    eMatrix4T<float> frame = eMatrix4T<float>::RotationX((float)(-geo.y * eMathEngine::DEG_TO_RAD));
    frame = eMatrix4T<float>::RotationY((float)(geo.x * eMathEngine::DEG_TO_RAD)) * frame;
    eMatrix4T<float> swap;
    swap.m[0] = swap.m[5] = swap.m[10] = 0.0f;
    swap.m[1] = swap.m[6] = swap.m[8] = 1.0f;
    return swap * frame;
}

float eRenderCubeSet::EarthPixels(eRenderEngine* engine)
{
    double resolution = engine ? engine->GetRenderResolution(1) : 0.0;
    return (float)(eMathEngine::EARTH_CIRCUMFERENCE / resolution);
}

void eRenderCubeSet::SetFrameUniforms(eRenderProgram* program, float size)
{
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();
    p->Uniform1f(u->m_nCustom[eR_PROJECTION_MODE], 0.0f);
    p->Uniform1f(u->m_nLightingEnabled, 0.0f);
    p->Uniform1f(u->m_nCustom[eR_EARTH_PIXELS], size);
}

eMatrix4T<float> eRenderCubeSet::SetWorldMatrix(eCamera* camera, eRenderProgram* program)
{
    eVector3T<double> c = camera ? camera->GetReferenceCenter() : eVector3T<double>();
    eMatrix4T<float> world = eMatrix4T<float>::Translation((float)(m_vWorldPosition.x - c.x),
                                                           (float)(m_vWorldPosition.y - c.y),
                                                           (float)(m_vWorldPosition.z - c.z)) *
                             m_matLocal;
    program->GetProgram()->UniformMatrix4(program->GetUniform()->m_nWorldMatrix, 1, 0, world.Ptr());
    return world;
}

void eRenderCubeSet::SetLighting(eRenderEngine* engine, eCamera* camera, eRenderProgram* program,
                                 eMatrix4T<float> const& world)
{
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();

    // Normals go to eye space by the inverse transpose of the upper 3 x 3 of view * world.
    eMatrix4T<float> view = camera ? camera->GetRelativeViewMatrix() : eMatrix4T<float>();
    eMatrix4T<float> normal4 = (view * world).Inverse().Transpose();
    float normal[9];
    for (int col = 0; col < 3; ++col)
        for (int row = 0; row < 3; ++row)
            normal[col * 3 + row] = normal4.At(row, col);
    p->UniformMatrix3(u->m_nNormalMatrix, 1, 0, normal);

    // The sun is so far away that its eye-space position is its direction from any point
    // of the scene.
    eVector3T<double> sun = engine ? engine->GetSunPosition() : eVector3T<double>();
    eMatrix4T<double> toEye =
        camera ? camera->GetViewMatrix() * camera->GetWorldMatrix() : eMatrix4T<double>();
    eVector4T<double> eye = toEye * eVector4T<double>(sun, 1.0);
    eVector3T<double> dir(eye.x / eye.w, eye.y / eye.w, eye.z / eye.w);
    double length = dir.Length();
    if (std::fabs(length) > 1e-13)
        dir = dir / length;

    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    if (!pass)
        return;
    p->Uniform1f(u->m_nLightingEnabled, pass->IsLightingEnabled() ? 1.0f : 0.0f);
    p->Uniform3f(u->m_nCustom[eR_SUN_DIRECTION], (float)dir.x, (float)dir.y, (float)dir.z);
    p->UniformVector4(u->m_nAmbient, pass->GetAmbient().Ptr());
    p->UniformVector4(u->m_nDiffuse, pass->GetDiffuse().Ptr());
    p->UniformVector4(u->m_nSpecular, pass->GetSpecular().Ptr());
    p->Uniform1f(u->m_nShininess, pass->GetShininess());
}

} // namespace KYR
