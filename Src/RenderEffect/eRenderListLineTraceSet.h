// Streams of moving lines. The application hands in eTraceList paths at any rate and from
// any thread; the render thread binds them to pooled eLineTrace slots, each owning a fixed
// range of one dynamic vertex buffer, advances each line's time window, retires expired
// lines for the next paths, and draws all lines in at most two multi-draw calls.
#pragma once
#include "eLineTrace.h"
#include "eMutex.h"
#include "eRenderLineTraceSet.h"
#include "eShared.h"
#include "eTraceList.h"
#include <list>
#include <vector>

namespace KYR
{

class eRenderListLineTraceSet : public eRenderLineTraceSet
{
public:
    eRenderListLineTraceSet();
    // Copies share the lines and the queue of lists handed in, with its lock.
    eRenderListLineTraceSet(eRenderListLineTraceSet const&) = default;
    eRenderListLineTraceSet& operator=(eRenderListLineTraceSet const&) = default;
    // Lines, lists and buffers go with UnInitialize, or with the last copy that holds them.
    ~eRenderListLineTraceSet() override;

    Type GetType() override;
    // Loads the textures once, and makes the buffers when they are missing.
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*) override;
    // Retires expired lines and advances the others, then binds waiting lists to free
    // lines, and to new lines while the pool has room. Render thread only.
    unsigned char UpdateCache() override;

    virtual eVertexData* CreateVertexBuffer();
    virtual unsigned char CreateBuffers();
    virtual unsigned char DestroyBuffers();
    virtual unsigned char UpdateVertexBuffer(eLineTrace* line, eVertexData* data, int k,
                                             eVector4T<double>& position);

    // Before the first frame.
    void SetPoolSize(int size) { m_nPoolSize = size; }
    int GetPoolSize() const { return m_nPoolSize; }
    void SetTraceSize(int size) { m_nTraceSize = size; }
    int GetTraceSize() const { return m_nTraceSize; }

    // A list to fill, recycled when one is free (its positions cleared, its kind kept).
    // Any thread; the list is the caller's until AddTraceList.
    eTraceList* CreateTraceList();
    // Queues a filled list; the set owns it from here. Any thread. Returns 1.
    unsigned char AddTraceList(eTraceList* list);
    // Lists waiting for a line.
    int GetTraceListCount();
    // Retires every line (their lists stay until the lines are rebound) and frees the
    // lists still waiting. Render thread.
    void RemoveAllTraceList();

    // Advances the window of one line and writes it into the line's range of the buffer.
    using eRenderTraceSet::Update;
    unsigned char Update(eLineTrace* line);

protected:
    // Pops the front of the waiting lists, or null.
    eTraceList* GetActiveTraceList();
    // Appends a list to the free lists, unless null.
    void AddFreeTraceList(eTraceList* list);
    // The list has no positions, or the tail has passed its last one.
    unsigned char IsOutTime(eLineTrace* line);
    unsigned char FindLineTraceIndex(eLineTrace* line, float t0, float t1, int& first, int& last);

    // The lines, on the render thread. The pool owns every line and, through it, the list
    // each line holds; the active and free lines are views of the pool.
    struct eLines
    {
        eLines() : m_nPoolIndex(0) {}
        eLines(eLines const&) = delete;
        eLines& operator=(eLines const&) = delete;
        ~eLines();

        int m_nPoolIndex; // lines made so far
        std::list<eLineTrace*> m_lstActiveLines;
        std::list<eLineTrace*> m_lstFreeLines;
        std::vector<eLineTrace*> m_LineTracePool; // index is the line's slot
    };
    // The lists between the application's threads and the render thread, under the lock.
    struct eLists
    {
        eLists() : m_Mutex(1) {}
        eLists(eLists const&) = delete;
        eLists& operator=(eLists const&) = delete;
        ~eLists();
        // Frees the lists of one queue; the caller holds the lock.
        static void Free(std::list<eTraceList*>& lists);

        std::list<eTraceList*> m_lstActiveTraceLists; // handed in, waiting for a line
        std::list<eTraceList*> m_lstFreeTraceLists;   // used, ready for reuse
        eMutex m_Mutex;
    };

    int m_nPoolSize;
    int m_nTraceSize;
    eShared<eLines> m_Lines;
    eShared<eLists> m_Lists;

private:
    // Binds waiting lists to free lines, then to new lines while there is room.
    void BindWaitingLists();
    // Sets the colour and texture of one line kind and draws every line with them.
    void DrawLines(eRenderProgram* program, float width, eVector4T<unsigned char> const& color,
                   eTexture* texture);
    // Slots the vertex buffer holds; lines are made only for these.
    int BufferSlots();

    // Whether this object writes its vertices with this class's UpdateVertexBuffer: a
    // window's floats are then written in bulk, with the bytes it would write one by one.
    unsigned char WritesOwnVertices();

    // The slot whose prepared window Update is writing; -1 outside it.
    int m_nWindowSlot = -1;
    // The ranges of one frame's draws, kept so that frames do not allocate.
    std::vector<int> m_arFirsts;
    std::vector<int> m_arCounts;
};

} // namespace KYR
