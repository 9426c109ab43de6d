// Base of the density sets: many soft markers that pile up where the data is dense, each
// with its own time stamp, drawn as screen-facing quads or, with the geometry shader, one
// vertex each. It holds the clock, the opacity, the anchor given by the application with
// its local frame, and a mode for drawing into a canvas target whose alpha must add up.
// Copies share the technique and the vertex store; the last holder frees them.
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
class ePass;
class eRenderProgram;
class eTechnique;
class eVertexData;

class eRenderDensitySet : public eRenderable
{
public:
    eRenderDensitySet();
    eRenderDensitySet(eRenderDensitySet const&) = default;
    eRenderDensitySet& operator=(eRenderDensitySet const&) = default;
    ~eRenderDensitySet() override;

    Type GetType() override;
    unsigned char Reset(eRenderEngine*) override;
    // Initialises if needed, brings the cache up to date, draws when visible and not fully
    // transparent, and advances the clock.
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char Create(eCamera*, double, eCanvas*) override;
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    virtual unsigned char RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*);
    // The world matrix T(anchor - reference centre) * local frame, and the opacity.
    virtual unsigned char UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera*, eRenderProgram*);
    virtual unsigned char UpdateCache();
    // One vertex a marker, expanded by a geometry shader, or six without; names the program
    // to match. Before the first frame: the technique keeps the program it was made with.
    virtual void SetGeometryShader(unsigned char on);

    unsigned char IsGeometryShader() const { return m_bGeometryShader; }
    // Blends alpha separately, so that it adds up in a target that is drawn over the scene
    // later.
    void SetCanvasRender(unsigned char on) { m_bCanvasRender = on; }
    unsigned char IsCanvasRender() const { return m_bCanvasRender; }
    void SetTransparent(float opacity) { m_fTransparent = opacity; }
    float GetTransparent() const { return m_fTransparent; }
    void SetSpeedPerFrame(float speed) { m_fSpeedPerFrame = speed; }
    float GetSpeedPerFrame() const { return m_fSpeedPerFrame; }
    void SetCurTime(float t) { m_fCurTime = t; }
    float GetCurTime() const { return m_fCurTime; }
    // Also sets the clock to the start.
    void SetStartTime(float t);
    float GetStartTime() const { return m_fStartTime; }
    void SetEndTime(float t) { m_fEndTime = t; }
    float GetEndTime() const { return m_fEndTime; }
    // How long a marker shows after its time stamp, fading.
    void SetTraceTime(float t) { m_fTraceTime = t; }
    float GetTraceTime() const { return m_fTraceTime; }
    void SetSpatialRefType(int kind) { m_nSpatialRefType = kind; }
    int GetSpatialRefType() const { return m_nSpatialRefType; }
    void SetPosition(eVector3T<double>& position) { m_vPosition = position; }
    eVector3T<double> GetPosition() const { return m_vPosition; }
    int GetCurDensityCount() const { return m_nCurDensityCount; }

    eVector4T<double> PositionToWorld(int kind, eVector4T<double>& p);
    eVector4T<float> PositionToLocal(int kind, eVector4T<double>& p);
    ePoint2D PositionToGeo(int kind, eVector4T<double>& p);

protected:
    // Pass 0 of the technique, null before the first queueing.
    ePass* Pass() const;

    unsigned char m_bInitialized;
    unsigned char m_bGeometryShader;
    unsigned char m_bCanvasRender;
    float m_fTransparent;
    int m_nCurDensityCount; // only a grouped set fills it
    eCamera* m_pCamera;
    eCanvas* m_pCanvas;
    eString m_strProgram;
    eShared<eTechnique> m_pTechnique;
    eShared<eVertexData> m_pVertexData;
    int m_nVerticesPerPoint;
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
