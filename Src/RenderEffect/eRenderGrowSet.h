// Frame of the grow sets: shapes whose geometry is built once, when they are added, and whose
// colours are rewritten point by point afterwards. Geometry and colours live in two vertex
// streams with one vertex numbering, so a colour edit writes a few bytes of the colour stream
// and nothing else. Edits may be queued from any thread; the render thread applies them, at
// most 1025 a frame, so that a burst of edits spreads its upload cost over several frames.
#pragma once
#include "eGrowShape.h"
#include "eMutex.h"
#include "eRenderCubeSet.h"
#include <deque>
#include <vector>

namespace KYR
{

class eVertexData;
class eIndexExData;

class eRenderGrowSet : public eRenderCubeSet
{
public:
    // Queued colour edits applied in one frame at most.
    static int const kMaxUpdatesPerFrame = 1025;

    eRenderGrowSet();
    eRenderGrowSet(eRenderGrowSet const&) = default;
    eRenderGrowSet& operator=(eRenderGrowSet const&) = default;
    ~eRenderGrowSet() override;

    // Creates the buffers; shapes are added straight into them.
    unsigned char Initialize(eRenderEngine*) override;
    // Applies queued colour edits in the order they came, kMaxUpdatesPerFrame at most; the
    // rest wait for the next frame. Runs whether or not the set is drawn.
    unsigned char UpdateCache() override;

    // The geometry stream, sized for the pool by the derived set's vertex layout.
    virtual unsigned char CreateVertexBuffer() = 0;
    // The colour stream: four normalised bytes per geometry vertex.
    virtual unsigned char CreateExtVertexBuffer();
    // 32-bit indices.
    virtual unsigned char CreateIndexBuffer();
    // All three, unless the geometry stream or the indices exist already.
    virtual unsigned char CreateBuffers();
    virtual unsigned char DestroyBuffers();

    // Capacity of the buffers, counted in points of all shapes together. Set before the
    // buffers exist.
    void SetPoolSize(int size) { m_nPoolSize = size; }
    int GetPoolSize() const { return m_nPoolSize; }

    // Conversions with the set's own spatial reference: 1 geographic degrees with height in
    // metres, anything else map coordinates. PositionToWorld gives w = 1.
    using eRenderCubeSet::PositionToGeo;
    using eRenderCubeSet::PositionToLocal;
    using eRenderCubeSet::PositionToWorld;
    ePoint2D PositionToGeo(eVector4T<double>& p);
    eVector4T<double> PositionToWorld(eVector4T<double>& p);
    eVector4T<float> PositionToLocal(eVector4T<double>& p);

protected:
    struct eUpdate
    {
        eGrowShape* m_pShape;
        int m_nIndex;
        eVector4T<unsigned char> m_cColor;
    };

    // Vertices and indices that the buffers hold for the pool.
    virtual long long VertexCapacity() const = 0;
    virtual long long IndexCapacity() const = 0;
    // Recolours one point of a shape of the derived set (the one that queued it).
    virtual unsigned char ApplyUpdate(eGrowShape* shape, int index,
                                      eVector4T<unsigned char>& color) = 0;

    int SpatialKind(int type) override { return type == 1 ? 1 : 2; }
    // Alpha blending over what is drawn, depth tested but not written, pushed back by a
    // polygon offset, unlit.
    void SetupPass(ePass* pass) override;

    // Appends an edit under the lock; safe from any thread.
    void QueueUpdate(eGrowShape* shape, int index, eVector4T<unsigned char> const& color);
    // Drops every queued edit, under the lock.
    void ClearUpdates();
    // Writes the shape that the processor stores hold to the buffers after the shapes before
    // it, records where it went, and fills its colours with the shape's base colour.
    void CommitShape(eGrowShape* shape);
    // Fills `count` colour records of the store and writes them at vertex `first`.
    void UpdateExtVertexData(eVertexData& data, int first, int count,
                             eVector4T<unsigned char> const& color);
    // Binds both streams and the indices for the draws; false without buffers.
    unsigned char BindStreams();
    void UnbindStreams();
    // Whether a shape's indices, and the vertices they may reach, lie inside the buffers.
    bool DrawableShape(eGrowShape const* shape);
    // Gives a stream a dynamic hardware buffer of `vertices` records, all zero, and returns it.
    static eVertexData* AttachBuffer(eVertexData* data, long long vertices);

    int m_nPoolSize;
    int m_nVertexCount; // written so far; never reset
    int m_nIndexCount;
    eShared<eVertexData> m_pVertexData;
    eShared<eVertexData> m_pExtVertexData;
    eShared<eIndexExData> m_pIndexData;
    // The queue and its lock; copies of a set share both.
    eShared<std::deque<eUpdate>> m_listUpdates;
    eShared<eMutex> m_mutex;
};

} // namespace KYR
