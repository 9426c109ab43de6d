#include "eRenderQueue.h"
#include "eMaterial.h"
#include "eRecorder.h"
#include "eRenderable.h"

namespace KYR
{

namespace
{
void RecordQueue(char const* op, unsigned int group, eTechnique* technique, eRenderable* object)
{
    Host::eRecorder& rec = Host::eRecorder::Get();
    if (!rec.IsOn())
        return;
    Host::eRecord r;
    r.kind = Host::eRecord::Queue;
    r.op = op;
    r.first = group;
    r.object = object;
    r.technique = technique;
    rec.Add(r);
}

ePass* FirstPass(eTechnique* technique)
{
    return technique ? technique->GetPass(0) : nullptr;
}
} // namespace

void eRenderQueueGroup::AddSolidRenderable(eTechnique* technique, eRenderable* object)
{
    RecordQueue("AddSolidRenderable", m_nID, technique, object);
    m_arSolids.push_back({technique, FirstPass(technique), object, 0.0});
}

void eRenderQueueGroup::AddSolidTextureRenderable(eTechnique* technique, eRenderable* object)
{
    RecordQueue("AddSolidTextureRenderable", m_nID, technique, object);
    m_arSolids.push_back({technique, FirstPass(technique), object, 0.0});
}

void eRenderQueueGroup::AddTransparentRenderable(eTechnique* technique, eRenderable* object)
{
    RecordQueue("AddTransparentRenderable", m_nID, technique, object);
    m_arTransparents.push_back({technique, FirstPass(technique), object, 0.0});
}

void eRenderQueueGroup::Clear()
{
    m_arSolids.clear();
    m_arTransparents.clear();
}

eRenderQueue::~eRenderQueue()
{
    for (auto& g : m_groups)
        delete g.second;
}

eRenderQueueGroup* eRenderQueue::GetQueueGroup(unsigned int id)
{
    auto it = m_groups.find(id);
    if (it != m_groups.end())
        return it->second;
    eRenderQueueGroup* group = new eRenderQueueGroup(id);
    m_groups[id] = group;
    return group;
}

void eRenderQueue::AddRenderable(eTechnique* technique, eRenderable* object, unsigned int queueId)
{
    RecordQueue("AddRenderable", queueId, technique, object);
    GetQueueGroup(queueId)->GetSolids().push_back({technique, FirstPass(technique), object, 0.0});
}

void eRenderQueue::AddOverlayRenderable(ePass* pass, eRenderable* object)
{
    RecordQueue("AddOverlayRenderable", 0, nullptr, object);
    m_arOverlays.push_back({nullptr, pass, object, 0.0});
}

unsigned char eRenderQueue::ProcessVisibleObject(eRenderEngine* engine, eCamera* camera,
                                                 eViewport* viewport, eRenderable* object)
{
    if (!object || !object->IsVisible())
        return 0;
    return object->UpdateRenderQueue(engine, camera, viewport, this);
}

void eRenderQueue::Clear()
{
    for (auto& g : m_groups)
        g.second->Clear();
    m_arOverlays.clear();
}

} // namespace KYR
