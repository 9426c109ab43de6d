// A ring pool of coloured prisms standing on the ground around the set's anchor, lit by the
// sun and growing from the ground over the first drawn frames. Each prism owns a fixed
// block of 21 vertices and 30 indices in two dynamic buffers, so an edit rewrites that block
// alone; once the pool is full, new prisms overwrite the oldest slot at the ring's cursor.
#pragma once
#include "eCubePoint.h"
#include "eRenderCubeSet.h"
#include <vector>

namespace KYR
{

class eVertexData;
class eIndexExData;

class eRenderListCubeSet : public eRenderCubeSet
{
public:
    // Uniform roles of the program after the frame's own.
    enum eListRole
    {
        eR_GROW_RATIO = eR_OWN, // height scale of every prism, 0 to 1
    };

    eRenderListCubeSet();
    eRenderListCubeSet(eRenderListCubeSet const&) = default;
    eRenderListCubeSet& operator=(eRenderListCubeSet const&) = default;
    ~eRenderListCubeSet() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*) override;

    virtual unsigned char CreateBuffers();
    virtual unsigned char DestroyBuffers();
    // Fills the vertex store (21 vertices) and the index vector (30 indices) for a slot.
    virtual unsigned char UpdateVertexBuffer(int slot, eCubePoint* point);

    // Must come before the first point: it sizes the pool of slots.
    void SetPoolSize(int size);
    int GetPoolSize() const { return m_nPoolSize; }
    // Adds in the next slot, or once the pool is full overwrites the slot at the cursor.
    unsigned char AddCubePoint(eCubePoint* point);
    unsigned char UpdateCubePoint(int slot, eCubePoint* point);
    // Null outside the slots in use and for an emptied slot.
    eCubePoint* GetCubePoint(int slot);
    void RemoveAllCubePoint();

    void SetEnableGrow(unsigned char enable) { m_bEnableGrow = enable; }
    unsigned char IsEnableGrow() const { return m_bEnableGrow; }
    void SetGrowRatioPerFrame(float step) { m_fGrowRatioPerFrame = step; }
    float GetGrowRatioPerFrame() const { return m_fGrowRatioPerFrame; }
    void SetCurGrowRatio(float ratio) { m_fCurGrowRatio = ratio; }
    float GetCurGrowRatio() const { return m_fCurGrowRatio; }

protected:
    // Regenerates a slot and writes its two blocks; false without buffers.
    unsigned char UpdatePosition(int slot, eCubePoint* point);
    // The prism on a closed ground ring of five points (the last repeats the first), from
    // `bottom` up to `top` in the local frame: cap, four side quads, normals and indices,
    // wound outward whichever way the ring turns.
    void BuildPrism(int slot, ePoint2D const (&ring)[5], float bottom, float top,
                    eVector4T<unsigned char> const& topColor,
                    eVector4T<unsigned char> const& bottomColor);
    // Stores a copy of the point in the slot (assigning into one already there).
    void StorePoint(int slot, eCubePoint* point);
    // Uploads the pending points of the whole pool, consecutive slots in one write each.
    void UploadPending();
    unsigned char HasBuffers();
    // Advances the growth by one drawn frame and returns the ratio to draw with.
    float AdvanceGrowth();

    int m_nPoolSize;
    int m_nCursor;
    int m_nCount;
    std::vector<eShared<eCubePoint>> m_arPoints;
    unsigned char m_bEnableGrow;
    float m_fCurGrowRatio;
    float m_fGrowRatioPerFrame;
    eShared<eVertexData> m_pVertexData;
    eShared<eIndexExData> m_pIndexData;
    int m_nVerticesPerCube;
    int m_nIndicesPerCube;

private:
    // Scratch of the triangulation, kept so that edits allocate nothing once warm.
    std::vector<unsigned short> m_arCapIndices;
};

} // namespace KYR
