// Base of the trace sets: the clock with its sliding time window, the anchor given by the
// application and its local frame, and the conversions of timed positions into it.
// Copies share the technique, the vertex store and what follows its slots (the window
// cache and the buffer's shadow); the last holder frees them.
#pragma once
#include "eDataSetFrame.h"
#include "eMatrix4.h"
#include "ePoint.h"
#include "eRenderable.h"
#include "eShared.h"
#include "eString.h"
#include "eVector3.h"
#include "eVector4.h"

namespace KYR
{

class eCamera;
class eCanvas;
class eRenderProgram;
class eTechnique;
class eTexture;
class eVertexData;

class eRenderTraceSet : public eRenderable
{
public:
    eRenderTraceSet();
    eRenderTraceSet(eRenderTraceSet const&) = default;
    eRenderTraceSet& operator=(eRenderTraceSet const&) = default;
    ~eRenderTraceSet() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Reset(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char Create(eCamera*, double, eCanvas*) override;
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    virtual unsigned char RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*);
    virtual unsigned char UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera*, eRenderProgram*);

    void SetSpeedPerFrame(float speed) { m_fSpeedPerFrame = speed; }
    float GetSpeedPerFrame() const { return m_fSpeedPerFrame; }
    void SetCurTime(float t) { m_fCurTime = t; }
    float GetCurTime() const { return m_fCurTime; }
    // Also rewinds the clock to the start.
    void SetStartTime(float t);
    float GetStartTime() const { return m_fStartTime; }
    void SetEndTime(float t) { m_fEndTime = t; }
    float GetEndTime() const { return m_fEndTime; }
    void SetTraceTime(float t) { m_fTraceTime = t; }
    float GetTraceTime() const { return m_fTraceTime; }
    float GetTransparent() const { return m_fTransparent; }
    void SetTransparent(float opacity) { m_fTransparent = opacity; }
    void SetEnableDepthTest(unsigned char enable) { m_bEnableDepthTest = enable; }
    unsigned char IsEnableDepthTest() const { return m_bEnableDepthTest; }
    int GetSpatialRefType() const { return m_nSpatialRefType; }
    void SetSpatialRefType(int kind) { m_nSpatialRefType = kind; }
    void SetPosition(eVector3T<double>& position) { m_vPosition = position; }
    eVector3T<double> GetPosition() const { return m_vPosition; }
    int GetCurTraceCount() const { return m_nCurTraceCount; }

    eVector4T<double> PositionToWorld(int kind, eVector4T<double>& p);
    eVector4T<float> PositionToLocal(int kind, eVector4T<double>& p);
    ePoint2D PositionToGeo(int kind, eVector4T<double>& p);

protected:
    eTexture* CreateTexture(eString const& path);

    unsigned char m_bInitialized;
    eCamera* m_pCamera;
    eCanvas* m_pCanvas;
    eString m_strProgram;
    unsigned char m_bEnableDepthTest;
    float m_fTransparent;
    int m_nCurTraceCount;
    eShared<eTechnique> m_pTechnique;
    eShared<eVertexData> m_pVertexData;
    int m_nVerticesPerPoint;
    unsigned char m_bUnused; // copied, read by nothing
    float m_fSpeedPerFrame;
    float m_fCurTime;
    float m_fStartTime;
    float m_fEndTime;
    float m_fTraceTime;
    int m_nSpatialRefType;
    eVector3T<double> m_vPosition;
    eVector4T<double> m_vWorldPosition;
    eMatrix4T<float> m_LocalMatrix;

    // Local floats of positions are reused while this key stands (see eDataSetFrame).
    // Refreshed once for a pass over the slots, or before each window outside one, so a
    // changed anchor, scene mode or coordinate system converts again.
    unsigned long long ConversionStamp()
    {
        if (m_nBatchStamp)
            return m_nBatchStamp;
        return m_ConversionKey.Refresh(m_pCamera, m_pCanvas, m_vWorldPosition, m_LocalMatrix);
    }
    // Around a pass over every slot: one stamp for all, and the slots' writes gathered.
    void BeginSlotPass();
    void EndSlotPass();
    // Makes the window cache, and the shadow where it pays, for the store's buffer of
    // `slots` slots of `slotPositions` positions.
    void CreateSlotCaches(int slots, int slotPositions);
    // Puts a window of `positions` positions from `first` into slot `slot` (slotVertices
    // long) of the buffer: from the window cache when `cached`, otherwise from the store,
    // which then holds its vertices.
    void PutWindow(int slot, int slotVertices, int first, int positions, bool cached);
    // The converter of the stamp: PositionToLocal with this set's frame.
    eVector4T<float> ConvertLocal(int kind, eVector4T<double> const& p)
    {
        return eDataSetFrame::PositionToLocal(m_pCamera, m_pCanvas, m_LocalMatrix, m_vWorldPosition,
                                              kind, p);
    }
    eDataSetFrame::eConversionKey m_ConversionKey;
    // The floats of the windows last written into the store's slots; made and dropped
    // with the store, and shared with it by copies.
    eShared<eDataSetFrame::eWindowCache> m_pWindowCache;
    // The processor-side copy of the store's buffer through which the slots go up.
    eShared<eDataSetFrame::eBufferShadow> m_pBufferShadow;
    // The stamp of the pass over the slots under way; 0 outside one.
    unsigned long long m_nBatchStamp = 0;
};

} // namespace KYR
