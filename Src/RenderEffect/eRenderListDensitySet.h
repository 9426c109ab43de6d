// Density markers in a fixed ring: the pool holds up to m_nPoolSize records, each owning one
// fixed range of the vertex buffer (six vertices, or one with the geometry shader). Once the
// ring is full a new marker overwrites the oldest, and only that slot's range is written;
// the draw takes the ring from the oldest record on. Nothing is rewritten per frame: the
// program compares each vertex's time stamp with the clock. Copies share the pool and the
// buffer; the last holder frees them.
#pragma once
#include "eDensityPoint.h"
#include "eRenderDensitySet.h"
#include "eShared.h"
#include <vector>

namespace KYR
{

class eRenderListDensitySet : public eRenderDensitySet
{
public:
    eRenderListDensitySet();
    eRenderListDensitySet(eRenderListDensitySet const&) = default;
    eRenderListDensitySet& operator=(eRenderListDensitySet const&) = default;
    ~eRenderListDensitySet() override;

    Type GetType() override;
    // Makes the buffer and uploads every record already in the pool.
    unsigned char Initialize(eRenderEngine*) override;
    // Frees the buffer and every record: a reset set starts empty and must be sized again.
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*) override;

    // The store of one marker's vertices, with this class's layout.
    virtual eVertexData* CreateVertexBuffer();
    // The store and its buffer of m_nPoolSize slots, zero-filled; nothing if it exists.
    virtual void CreateBuffers();
    virtual void DestroyBuffers();
    // Writes the marker's vertices at the start of the store.
    virtual unsigned char UpdateVertexBuffer(int slot, eDensityPoint* point);

    // Sizes the pool and empties every slot (the records go with their last holder).
    void SetPoolSize(int size);
    int GetPoolSize() const { return m_nPoolSize; }
    // Takes the next slot while the ring fills, then overwrites the oldest. Returns 1.
    unsigned char AddDensityPoint(eDensityPoint* point);
    // Copies the marker into slot i and writes its range. 0 outside the pool or while
    // there is no buffer (the record waits for Initialize then).
    unsigned char UpdateDensityPoint(int i, eDensityPoint* point);
    // The record of slot i; null beyond the slots taken.
    eDensityPoint* GetDensityPoint(int i);
    // The number of pool entries (the pool size), whether filled or not.
    int GetDensityPointCount() const { return (int)m_arDensityPoints.size(); }
    void RemoveAllDensityPoint();

protected:
    // Writes the record's vertices into its slot's range of the buffer.
    unsigned char UpdatePosition(int i, eDensityPoint* point);
    // Writes the six corners (one with the geometry shader) of a record at the start of
    // the store, the corner's two bytes at `cornerOffset`.
    void PutCorners(unsigned char* record, int recordBytes, int cornerOffset);

    int m_nPoolSize;
    int m_nHead;
    int m_nCount;
    std::vector<eShared<eDensityPoint>> m_arDensityPoints;
};

} // namespace KYR
