#include "eRenderCompose.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eMaterial.h"
#include "eMathEngine.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderPart.h"
#include "eRenderLabelPart.h"
#include "eRenderQueue.h"
#include <cmath>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{
char const* const kSource = "Src/RenderEffect/eRenderCompose";
unsigned int const kSolidTextureGroup = 6;
double const kDegToRad = eMathEngine::DEG_TO_RAD;

// The translation from the camera's reference centre to a world point, each difference
// taken in double before it is narrowed.
eVector3T<float> Relative(eVector3T<double> const& world, eVector3T<double> const& centre)
{
    return eVector3T<float>((float)(world.x - centre.x), (float)(world.y - centre.y),
                            (float)(world.z - centre.z));
}
} // namespace

eRenderCompose::eChild::~eChild()
{
    if (!m_bHandedBack)
        delete m_pPart;
}

eRenderCompose::eRenderCompose()
    : m_eBillBoardMode(eBBM_SCREEN), m_ptPosition(0.0, 0.0, 0.0), m_vWorldPosition(0.0, 0.0, 0.0),
      m_bPositionDirty(1)
{
    eTechnique* technique = new eTechnique();
    ePass* pass = technique->CreatePass();
    pass->SetProgram(eRenderPart::ProgramName());
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(0);
    pass->SetDepthWriteEnabled(0);
    pass->SetLightingEnabled(0);
    m_pTechnique.Reset(technique);
}

// Parts and the technique go with the last copy that holds them.
eRenderCompose::~eRenderCompose() {}

eRenderable::Type eRenderCompose::GetType()
{
    return eRT_COMPOSE;
}

unsigned char eRenderCompose::UnInitialize(eRenderEngine* engine)
{
    RemoveAllChild(engine);
    return 1;
}

void eRenderCompose::SetPosition(ePoint3D const& position)
{
    m_ptPosition = position;
    m_bPositionDirty = 1;
}

void eRenderCompose::SetBillBoardMode(eBillBoardMode mode)
{
    m_eBillBoardMode = mode;
    m_bPositionDirty = 1;
}

int eRenderCompose::FindChild(eRenderPart* part) const
{
    for (size_t i = 0; i < m_arChildren.size(); ++i)
        if (m_arChildren[i] && m_arChildren[i]->m_pPart == part)
            return (int)i;
    return -1;
}

void eRenderCompose::AddChild(eRenderPart* part)
{
    eChild* child = new eChild();
    child->m_pPart = part;
    m_arChildren.push_back(eShared<eChild>(child));
    if (part)
        part->SetParent(this);
}

void eRenderCompose::RemoveChild(eRenderPart* part)
{
    int i = FindChild(part);
    if (i < 0)
        return;
    m_arChildren[(size_t)i]->m_bHandedBack = true;
    m_arChildren.erase(m_arChildren.begin() + i);
    if (part)
        part->SetParent(nullptr);
}

void eRenderCompose::ReleaseChild(eRenderEngine* engine, eRenderPart* part)
{
    int i = FindChild(part);
    if (i < 0)
        return;
    if (part)
    {
        part->SetParent(nullptr);
        part->UnInitialize(engine);
    }
    m_arChildren.erase(m_arChildren.begin() + i);
}

void eRenderCompose::RemoveAllChild(eRenderEngine* engine)
{
    for (eShared<eChild>& child : m_arChildren)
        if (child && child->m_pPart)
            child->m_pPart->UnInitialize(engine);
    m_arChildren.clear();
}

eRenderPart* eRenderCompose::GetChild(int index)
{
    if (index < 0 || index >= (int)m_arChildren.size() || !m_arChildren[(size_t)index])
        return nullptr;
    return m_arChildren[(size_t)index]->m_pPart;
}

eRect2D eRenderCompose::GetBounds() const
{
    eRect2D bounds;
    for (eShared<eChild> const& child : m_arChildren)
        if (child && child->m_pPart)
            bounds.Union(child->m_pPart->GetBounds());
    return bounds;
}

eVector3T<double>& eRenderCompose::ComputeWorldPosition(eRenderEngine* engine)
{
    if (!m_bPositionDirty)
        return m_vWorldPosition;
    eCoordSys* coordSys = engine ? engine->GetCoordSys() : nullptr;
    eCamera* camera = engine ? engine->GetCamera() : nullptr;
    if (!coordSys || !camera)
        return m_vWorldPosition;
    ePoint2D map(m_ptPosition.x, m_ptPosition.y), logical;
    coordSys->MapToLogicalPoint(map, logical);
    coordSys->LogicalToWorld(camera->GetSceneMode(), logical, m_vWorldPosition, m_ptPosition.z);
    m_bPositionDirty = 0;
    return m_vWorldPosition;
}

void eRenderCompose::CreateModelViewMatrix(eRenderEngine* engine, double angle,
                                           eMatrix4T<float>& model, eMatrix4T<float>& view)
{
    eCamera* camera = engine ? engine->GetCamera() : nullptr;
    eCoordSys* coordSys = engine ? engine->GetCoordSys() : nullptr;
    if (!camera || !coordSys)
        return;
    eVector3T<double> const world = ComputeWorldPosition(engine);
    eVector3T<float> const relative = Relative(world, camera->GetReferenceCenter());
    // The parts hold one world unit a pixel; a pixel at the anchor's distance spans the
    // render resolution (metres per pixel), so this scale keeps them their size in pixels
    // whatever the camera's distance.
    double const k = engine->GetRenderResolution(1);
    eSceneMode const sceneMode = camera->GetSceneMode();

    if (m_eBillBoardMode == eBBM_SCREEN)
    {
        // Only the anchor's place in view space: no rotation, so x runs right and y up on
        // the screen.
        model = eMatrix4T<float>::Scale((float)k, (float)k, 1.0f);
        eMatrix4T<float> placed =
            camera->GetRelativeViewMatrix() * eMatrix4T<float>::Translation(relative);
        view.SetIdentity();
        view[12] = placed[12];
        view[13] = placed[13];
        view[14] = placed[14];
        return;
    }
    if (m_eBillBoardMode == eBBM_WORLD && sceneMode == eSM_GLOBE)
    {
        // Lying on the globe: x east, y north and z up at the anchor, turned about the up.
        ePoint2D geo;
        coordSys->MapToGeo(ePoint2D(m_ptPosition.x, m_ptPosition.y), geo);
        double const lon = geo.x * kDegToRad, lat = geo.y * kDegToRad;
        eMatrix4T<double> frame;
        eVector3T<double> const east(-std::sin(lon), std::cos(lon), 0.0);
        eVector3T<double> const north(-std::sin(lat) * std::cos(lon),
                                      -std::sin(lat) * std::sin(lon), std::cos(lat));
        eVector3T<double> const up(std::cos(lat) * std::cos(lon), std::cos(lat) * std::sin(lon),
                                   std::sin(lat));
        eVector3T<double> const axes[3] = {east, north, up};
        for (int c = 0; c < 3; ++c)
        {
            frame.At(0, c) = axes[c].x;
            frame.At(1, c) = axes[c].y;
            frame.At(2, c) = axes[c].z;
        }
        eMatrix4T<double> m = eMatrix4T<double>::Translation(relative.x, relative.y, relative.z) *
                              frame * eMatrix4T<double>::RotationZ(angle * kDegToRad) *
                              eMatrix4T<double>::Scale(k, k, 1.0);
        model = eMatrix4T<float>(m);
        view = camera->GetRelativeViewMatrix();
        return;
    }
    if (m_eBillBoardMode == eBBM_WORLD)
    {
        // Lying in the map's plane, turned about its up.
        double const a = angle * kDegToRad;
        model.SetIdentity();
        model[0] = (float)(std::cos(a) * k);
        model[1] = (float)(std::sin(a) * k);
        model[4] = (float)(-std::sin(a) * k);
        model[5] = (float)(std::cos(a) * k);
        model[12] = relative.x;
        model[13] = relative.y;
        model[14] = relative.z;
        view = camera->GetRelativeViewMatrix();
        return;
    }
    Eassert("false", kSource, __LINE__);
}

unsigned char eRenderCompose::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                     eViewport* viewport)
{
    if (!m_bVisible)
        return 0;
    CreateModelViewMatrix(engine, 0.0, m_matModel, m_matView);
    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    eRenderProgram* rp = pass && engine ? engine->GetRenderProgram(pass) : nullptr;
    if (rp && rp->GetProgram())
    {
        eShaderUniform* u = rp->GetUniform();
        rp->GetProgram()->UniformMatrix4(u->m_nWorldMatrix, 1, 0, m_matModel.Ptr());
        rp->GetProgram()->UniformMatrix4(u->m_nViewMatrix, 1, 0, m_matView.Ptr());
    }
    for (eShared<eChild>& child : m_arChildren)
        if (child && child->m_pPart)
            child->m_pPart->Render(engine, rs, camera, viewport);
    if (pass)
        glLineWidth(pass->GetLineWidth());
    return 1;
}

unsigned char eRenderCompose::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                eRenderQueue* queue)
{
    if (m_pTechnique && queue)
        queue->GetQueueGroup(kSolidTextureGroup)->AddSolidTextureRenderable(m_pTechnique, this);
    return 1;
}

} // namespace KYR
