// The low-level drawer of the render system: draws vertex and index stores that have been
// uploaded. Attributes go to their fixed generic numbers (eVertexElement::m_eIndex).
#pragma once
#include "eBase.h"
#include "eEnums.h"

namespace KYR
{

class eVertexData;
class eIndexData;

class eRenderSystem
{
public:
    eRenderSystem();
    virtual ~eRenderSystem();
    eRenderSystem(eRenderSystem const&) = delete;
    eRenderSystem& operator=(eRenderSystem const&) = delete;

    // count vertices from first, without indices. The range is clipped to the buffer.
    virtual void DrawVertices(eOperationType type, eVertexData* vertices, int first, int count,
                              bool flag);
    // count indices from index number start. The range is clipped to the index buffer.
    virtual void DrawIndexRange(eOperationType type, eVertexData* vertices, eIndexData* indices,
                                int count, __int64 start, bool flag);
    // All indices of the store (eIndexData::GetIndexSize).
    virtual void DrawIndexed(eOperationType type, eVertexData* vertices, eIndexData* indices,
                             bool flag);

private:
    // Binds the shared vertex array object and points the attributes at the buffer;
    // false when there is nothing to draw from. Returns the enabled attribute numbers.
    bool BeginDraw(eVertexData* vertices, unsigned int& enabledMask, int& previousVAO,
                   int& previousArrayBuffer);
    void EndDraw(unsigned int enabledMask, int previousVAO, int previousArrayBuffer);
    void DrawElementRange(char const* op, eOperationType type, eVertexData* vertices,
                          eIndexData* indices, long long count, long long start);
};

} // namespace KYR
