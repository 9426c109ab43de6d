// Point traces: a fixed ring of trace slots, each owning a fixed range of one dynamic
// vertex buffer. Every frame the window of each trace is written into its range and drawn
// as a chain of point sprites. Copies share the traces; the last holder frees them.
#pragma once
#include "ePointTrace.h"
#include "eRenderTraceSet.h"
#include "eShared.h"
#include <vector>

namespace KYR
{

class eRenderPointTraceSet : public eRenderTraceSet
{
public:
    eRenderPointTraceSet();
    eRenderPointTraceSet(eRenderPointTraceSet const&) = default;
    eRenderPointTraceSet& operator=(eRenderPointTraceSet const&) = default;
    // Traces and buffers go with UnInitialize, or with the last copy that holds them.
    ~eRenderPointTraceSet() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*) override;

    // Draws the slots from `begin` up to, not including, `end`, and advances the clock.
    virtual unsigned char RenderQueue(eRenderEngine*, eRenderSystem*, eRenderProgram*, int begin,
                                      int end);
    virtual void SetGeometryShader(unsigned char on);
    virtual eVertexData* CreateVertexBuffer();
    virtual unsigned char CreateBuffers();
    virtual unsigned char DestroyBuffers();
    virtual unsigned char UpdateVertexBuffer(ePointTrace*, eVertexData*, int k,
                                             eVector4T<double>& position);

    void SetPoolSize(int size);
    int GetPoolSize() const { return m_nPoolSize; }
    void SetTraceSize(int size) { m_nTraceSize = size; }
    int GetTraceSize() const { return m_nTraceSize; }
    void SetPointSize(float size) { m_fPointSize = size; }
    float GetPointSize() const { return m_fPointSize; }
    void SetPointColor(eVector4T<unsigned char> const& color) { m_PointColor = color; }
    eVector4T<unsigned char> GetPointColor() const { return m_PointColor; }
    // The pool. A trace held here whose positions are changed in place is handed back with
    // UpdatePointTrace(i, trace), which converts its positions again.
    std::vector<eShared<ePointTrace>>& GetPointTraces() { return m_arPointTraces; }
    unsigned char IsGeometryShader() const { return m_bGeometryShader; }

    unsigned char AddPointTrace(ePointTrace const* trace);
    unsigned char UpdatePointTrace(int index, ePointTrace const* trace);
    ePointTrace* GetPointTrace(int index);
    void RemoveAllPointTrace();

    // Advances the window of every trace, in rotating order.
    using eRenderTraceSet::Update;
    unsigned char Update();

protected:
    unsigned char FindPointTraceIndex(ePointTrace* trace, float t0, float t1, int& first,
                                      int& last);
    // Finds the window of slot i and writes it into the slot's range of the buffer.
    unsigned char UpdateTrace(int index, ePointTrace* trace);
    // The trace in slot i, or null for an empty slot or one outside the pool vector.
    ePointTrace* Slot(int index) const;

    unsigned char m_bGeometryShader;
    float m_fPointSize;
    eVector4T<unsigned char> m_PointColor;
    int m_nPoolSize;
    int m_nTraceSize;
    int m_nUpdateIndex;
    int m_nHead;
    int m_nCount;
    std::vector<eShared<ePointTrace>> m_arPointTraces;

private:
    // Whether this object writes its vertices with this class's UpdateVertexBuffer: a
    // window's floats are then written in bulk, with the bytes it would write one by one.
    unsigned char WritesOwnVertices();

    // The slot whose prepared window UpdateTrace is writing; -1 outside it.
    int m_nWindowSlot = -1;
};

} // namespace KYR
