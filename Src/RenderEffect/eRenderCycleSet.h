// Base of the cycle sets: markers that light up at their own time and die away after a
// fixed span, like pulses on a map. It holds the clock, the anchor given by the
// application with its local frame, and the conversions of timed positions into it; the
// derived sets write their vertices once and let the program tell from the clock which
// markers are alive. Copies share the technique; the last holder frees it.
#pragma once
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

class eRenderCycleSet : public eRenderable
{
public:
    eRenderCycleSet();
    eRenderCycleSet(eRenderCycleSet const&) = default;
    eRenderCycleSet& operator=(eRenderCycleSet const&) = default;
    ~eRenderCycleSet() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Reset(eRenderEngine*) override;
    // Initialises if needed, draws if visible; the clock runs either way.
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char Create(eCamera*, double, eCanvas*) override;
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    virtual unsigned char RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*);
    // The world matrix: T(anchor - reference centre) * local frame.
    virtual unsigned char UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera*, eRenderProgram*);

    void SetSpeedPerFrame(float speed) { m_fSpeedPerFrame = speed; }
    float GetSpeedPerFrame() const { return m_fSpeedPerFrame; }
    void SetCurTime(float t) { m_fCurTime = t; }
    float GetCurTime() const { return m_fCurTime; }
    // Also sets the clock to the start.
    void SetStartTime(float t);
    float GetStartTime() const { return m_fStartTime; }
    void SetEndTime(float t) { m_fEndTime = t; }
    float GetEndTime() const { return m_fEndTime; }
    // The span from a marker's birth to its death; read when a marker is added.
    void SetTraceTime(float t) { m_fTraceTime = t; }
    float GetTraceTime() const { return m_fTraceTime; }
    void SetEnableDepthTest(unsigned char enable) { m_bEnableDepthTest = enable; }
    unsigned char IsEnableDepthTest() const { return m_bEnableDepthTest; }
    void SetSpatialRefType(int kind) { m_nSpatialRefType = kind; }
    int GetSpatialRefType() const { return m_nSpatialRefType; }
    void SetPosition(eVector3T<double>& position) { m_vPosition = position; }
    eVector3T<double> GetPosition() const { return m_vPosition; }

    eVector4T<double> PositionToWorld(int kind, eVector4T<double>& p);
    eVector4T<float> PositionToLocal(int kind, eVector4T<double>& p);
    // Kind 0 has no geographic position here and gives (0, 0) without a report.
    ePoint2D PositionToGeo(int kind, eVector4T<double>& p);

protected:
    eTexture* CreateTexture(eString const& path);
    // Pass 0 of the technique and its program; null before the first queueing or when the
    // host has no such program.
    eRenderProgram* PassProgram(eRenderEngine* engine);

    unsigned char m_bInitialized;
    eCamera* m_pCamera;
    eCanvas* m_pCanvas;
    eString m_strProgram;
    unsigned char m_bEnableDepthTest;
    eShared<eTechnique> m_pTechnique;
    void* m_pUnusedData; // stays null
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
};

} // namespace KYR
