// Many filled regions of fixed shape, revealed boundary point by boundary point. Each region
// is tessellated once, when it is added, into triangles over its own boundary points, so a
// point's colour is one 4-byte record of the colour stream and the triangles spread it
// inward. Update may be called from any thread; the render thread applies the colours.
#pragma once
#include "eGrowRegion.h"
#include "ePoint.h"
#include "eRenderGrowSet.h"
#include <vector>

namespace KYR
{

class eRenderRegionGrowSet : public eRenderGrowSet
{
public:
    eRenderRegionGrowSet();
    eRenderRegionGrowSet(eRenderRegionGrowSet const&) = default;
    eRenderRegionGrowSet& operator=(eRenderRegionGrowSet const&) = default;
    ~eRenderRegionGrowSet() override;

    Type GetType() override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*) override;
    // The world matrix, then the program's colour source: the colour stream, unlit.
    unsigned char UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera*, eRenderProgram*) override;

    unsigned char CreateVertexBuffer() override;
    // Tessellates the region into the buffers after the regions before it.
    virtual unsigned char AddRegion(eGrowRegion* region);
    // Rewrites the colour of one boundary point. False for an index outside the region.
    virtual unsigned char UpdateRegion(eGrowRegion* region, int index,
                                       eVector4T<unsigned char>& color);

    // Keeps a copy of the region, with its geometry in the buffers (a GL context must be
    // current); false, keeping nothing, when it cannot be built.
    unsigned char Add(eGrowRegion const* region);
    eGrowRegion* Get(int index);
    int GetCount() const { return (int)m_arRegions.size(); }
    // Deletes the regions and the queued colours for them; new regions go after the old ones.
    void RemoveAll();
    // Queues a colour for a boundary point of a region of this set; any thread may call it.
    unsigned char Update(eGrowRegion* region, int index, eVector4T<unsigned char>& color);

protected:
    // One vertex per boundary point (a closing repeat of the first point has none) and the
    // triangles of the ring, tessellated on the points as given.
    void VertexPolygon(eVertexData& vertexData, eIndexExData& indexData, int start,
                       std::vector<eVector3T<float>>& local, std::vector<ePoint2D>& points);

    long long VertexCapacity() const override;
    long long IndexCapacity() const override;
    unsigned char ApplyUpdate(eGrowShape* shape, int index,
                              eVector4T<unsigned char>& color) override;

    std::vector<eShared<eGrowRegion>> m_arRegions;
};

} // namespace KYR
