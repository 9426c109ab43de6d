#include "eRenderable.h"
#include "eScene.h"

namespace KYR
{

eRenderable::eRenderable() : m_bVisible(1), m_nRenderQueueId(5), m_nID(0) {}
// An effect that dies while a scene still holds it leaves the scene.
eRenderable::~eRenderable()
{
    Host::eScene::Forget(this);
}

eRenderable::Type eRenderable::GetType() { return eRT_HOST_DEFAULT; }
unsigned char eRenderable::Initialize(eRenderEngine*) { return 1; }
unsigned char eRenderable::UnInitialize(eRenderEngine*) { return 1; }
unsigned char eRenderable::Reset(eRenderEngine*) { return 1; }
unsigned char eRenderable::Process(eHostParam*) { return 1; }
unsigned char eRenderable::Update(eRenderEngine*) { return 1; }
unsigned char eRenderable::Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) { return 1; }
unsigned char eRenderable::Refresh(eRenderEngine*, eCamera*) { return 1; }
unsigned char eRenderable::Create(eCamera*, double, eCanvas*) { return 1; }
unsigned char eRenderable::Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) { return 0; }
double eRenderable::GetSquaredViewDepth(eCamera*) { return 0.0; }
unsigned char eRenderable::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*)
{
    return 1;
}
void eRenderable::SetModelBoundingBox(eBoundingBoxT<double>& box) { m_ModelBoundingBox = box; }
eBoundingBoxT<double>& eRenderable::GetModelBoundingBox() { return m_ModelBoundingBox; }
void eRenderable::SetWorldBoundingBox(eBoundingBoxT<double>& box) { m_WorldBoundingBox = box; }
eBoundingBoxT<double>& eRenderable::GetWorldBoundingBox() { return m_WorldBoundingBox; }
unsigned char eRenderable::AutoTrack() { return 0; }
int eRenderable::GetID() { return m_nID; }
void eRenderable::SetID(int id) { m_nID = id; }
unsigned char eRenderable::PreRender() { return 1; }
unsigned char eRenderable::PostRender() { return 1; }

} // namespace KYR
