// The render queue: groups of (technique, effect) entries drawn in rising group number.
#pragma once
#include "eRenderQueueVisitor.h"
#include <map>
#include <vector>

namespace KYR
{

class eTechnique;
class ePass;
class eRenderable;
class eRenderEngine;
class eCamera;
class eViewport;

// One queued entry: the technique's first pass (or the overlay pass) is applied
// before the effect's Render.
struct eRenderQueueEntry
{
    eTechnique* m_pTechnique = nullptr;
    ePass* m_pPass = nullptr;
    eRenderable* m_pRenderable = nullptr;
    double m_dDepth = 0.0;
};

class eRenderQueueGroup
{
public:
    explicit eRenderQueueGroup(unsigned int id = 0) : m_nID(id) {}
    virtual ~eRenderQueueGroup() {}
    void AddSolidRenderable(eTechnique*, eRenderable*);
    void AddSolidTextureRenderable(eTechnique*, eRenderable*);
    void AddTransparentRenderable(eTechnique*, eRenderable*);

    // Host side.
    unsigned int GetID() const { return m_nID; }
    std::vector<eRenderQueueEntry>& GetSolids() { return m_arSolids; }
    std::vector<eRenderQueueEntry>& GetTransparents() { return m_arTransparents; }
    void Clear();

private:
    void Record(char const* op, eTechnique*, eRenderable*);
    unsigned int m_nID;
    std::vector<eRenderQueueEntry> m_arSolids;
    std::vector<eRenderQueueEntry> m_arTransparents;
};

class eRenderQueue
{
public:
    eRenderQueue() {}
    virtual ~eRenderQueue();
    eRenderQueue(eRenderQueue const&) = delete;
    eRenderQueue& operator=(eRenderQueue const&) = delete;

    eRenderQueueGroup* GetQueueGroup(unsigned int);
    void AddRenderable(eTechnique*, eRenderable*, unsigned int queueId);
    void AddOverlayRenderable(ePass*, eRenderable*);
    unsigned char ProcessVisibleObject(eRenderEngine*, eCamera*, eViewport*, eRenderable*);

    // Host side.
    std::map<unsigned int, eRenderQueueGroup*>& GetGroups() { return m_groups; }
    std::vector<eRenderQueueEntry>& GetOverlays() { return m_arOverlays; }
    void Clear();

private:
    std::map<unsigned int, eRenderQueueGroup*> m_groups;
    std::vector<eRenderQueueEntry> m_arOverlays;
};

} // namespace KYR
