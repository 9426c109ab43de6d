// Applies a pass's render state around the drawing of a queued entry.
#pragma once

namespace KYR
{

class ePass;

class eRenderQueueVisitor
{
public:
    eRenderQueueVisitor() {}
    virtual ~eRenderQueueVisitor() {}

    // Makes the pass's program current and applies its blending, depth, polygon offset,
    // line width, point size and point sprite settings.
    virtual void BeginPass(ePass* pass);
    // Returns to the host's default state.
    virtual void EndPass();
};

} // namespace KYR
