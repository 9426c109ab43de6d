// Frame of the sets that draw many lit objects anchored to one place: the anchor and the
// local frame standing on the ground there, the conversions of positions into that frame,
// the technique, and the world, normal and sun uniforms of a lit program. Derived sets
// build their geometry in the local frame (x east, y north, z up) and draw it in
// RenderVertexBuffer.
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

class eRenderCubeSet : public eRenderable
{
public:
    // Program-specific uniform roles, as indices into eShaderUniform::m_nCustom. A program
    // of a derived set lists these first in its role line and adds its own from eR_OWN on.
    enum eRole
    {
        eR_PROJECTION_MODE = 0, // 0: positions are local to the anchor
        eR_EARTH_PIXELS = 1,    // size float: the whole earth in pixels, or a derived set's own
        eR_SUN_DIRECTION = 2,   // unit vector towards the sun, eye space
        eR_OWN = 3,
    };

    eRenderCubeSet();
    eRenderCubeSet(eRenderCubeSet const&) = default;
    eRenderCubeSet& operator=(eRenderCubeSet const&) = default;
    ~eRenderCubeSet() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Reset(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char Create(eCamera*, double, eCanvas*) override;
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    virtual unsigned char RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*);
    // World and normal matrices, then the pass's lighting with the sun's direction.
    virtual unsigned char UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera*, eRenderProgram*);
    // Per-frame work before drawing; runs whether or not the set is visible.
    virtual unsigned char UpdateCache();

    void SetPosition(eVector3T<double>& position) { m_vPosition = position; }
    eVector3T<double> GetPosition() const { return m_vPosition; }
    void SetSpatialRefType(int type) { m_nSpatialRefType = type; }
    int GetSpatialRefType() const { return m_nSpatialRefType; }

    // Positions of kind 0 are local to the anchor, 1 geographic degrees with height in
    // metres, others map coordinates; w is carried through.
    ePoint2D PositionToGeo(int type, eVector4T<double>& p);
    eVector4T<double> PositionToWorld(int type, eVector4T<double>& p);
    // Small floats around the anchor: the large world numbers cancel in double first.
    eVector4T<float> PositionToLocal(int type, eVector4T<double>& p);

    void CreateTechnique();

protected:
    // The pass state of the set's technique; the program is already named.
    virtual void SetupPass(ePass* pass);
    // How a set reads a position kind; a set that knows no local kind maps 0 elsewhere.
    virtual int SpatialKind(int type) { return type; }

    // Rotation standing at a geographic point: local x east, y north, z up.
    static eMatrix4T<float> StandingFrame(ePoint2D const& geo);
    // The whole earth in pixels at the engine's resolution, narrowed to float.
    static float EarthPixels(eRenderEngine* engine);
    // The three floats every anchored program takes first: projection mode 0, lighting 0
    // (the lit sets send the pass's flag later) and the size float.
    static void SetFrameUniforms(eRenderProgram* program, float size);
    // T(anchor - reference centre) * local, the difference taken in double; sent as the
    // world matrix and returned.
    eMatrix4T<float> SetWorldMatrix(eCamera* camera, eRenderProgram* program);
    // Normal matrix of view * world, the sun's eye-space direction and the pass's lighting.
    void SetLighting(eRenderEngine* engine, eCamera* camera, eRenderProgram* program,
                     eMatrix4T<float> const& world);

    unsigned char m_bInitialized;
    eCamera* m_pCamera;
    eCanvas* m_pCanvas;
    eString m_strProgram;
    eShared<eTechnique> m_pTechnique;
    int m_nSpatialRefType;
    eVector3T<double> m_vPosition;
    eVector4T<double> m_vWorldPosition;
    eMatrix4T<float> m_matLocal;
};

} // namespace KYR
