// Base of the trace sets: the clock with its sliding time window, the anchor given by the
// application and its local frame, and the conversions of timed positions into it.
#pragma once
#include "eMatrix4.h"
#include "ePoint.h"
#include "eRenderable.h"
#include "eString.h"
#include "eVector3.h"
#include "eVector4.h"
#include <memory>

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
    eTechnique* m_pTechnique;
    eVertexData* m_pVertexData;
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

private:
    // Copies share the technique as they share its pointer; the last one frees it.
    std::shared_ptr<eTechnique> m_spTechniqueOwner;
};

} // namespace KYR
