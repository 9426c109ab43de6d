// Pulses drawn as screen-facing quads. Each marker is written once, as six vertices of two
// triangles, into a store that only grows; its death time goes into a second store beside
// it. Nothing is rewritten per frame: the program compares each vertex's birth and death
// with the clock. Stores reach the graphics card when the set initialises, so markers
// added later show after the next Reset. Copies share the stores; the last holder frees
// them.
#pragma once
#include "eCyclePoint.h"
#include "eRenderCycleSet.h"
#include "eShared.h"

namespace KYR
{

class eVertexData;

class eRenderPointCycleSet : public eRenderCycleSet
{
public:
    eRenderPointCycleSet();
    eRenderPointCycleSet(eRenderPointCycleSet const&) = default;
    eRenderPointCycleSet& operator=(eRenderPointCycleSet const&) = default;
    ~eRenderPointCycleSet() override;

    Type GetType() override;
    // Uploads both stores as they stand.
    unsigned char Initialize(eRenderEngine*) override;
    // Releases the uploaded buffers; the stores keep every marker.
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*) override;

    // Per-frame work before drawing; nothing here.
    virtual unsigned char UpdateCache();
    // Appends the marker's six corners to the stores. Returns 1.
    virtual unsigned char AddCyclePoint(eCyclePoint* point);

protected:
    // Creates either store if it is missing, with the layout of this class's vertices.
    void CreateVertexBuffer();
    // The store of death times, one float a vertex, the same for every layout.
    void CreateLifeData();
    void CreateBuffers();
    void DestroyBuffers();
    // Appends the record (one vertex of the store) once for each corner, with the corner's
    // two bytes at `cornerOffset`, and the death time beside each.
    void AddCorners(unsigned char* record, int cornerOffset, float death);

    eShared<eVertexData> m_pVertexData; // the quads
    eShared<eVertexData> m_pLifeData;   // the death time of each vertex
};

} // namespace KYR
