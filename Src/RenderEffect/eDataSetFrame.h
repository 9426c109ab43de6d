// Shared pieces of the moving-point data sets: the anchor and its local frame, the
// conversions of timed positions, the technique, the clock uniforms and the binding of a
// set's vertex buffer. The set classes keep their own fields and call these with them,
// so that every family member converts and draws alike.
#pragma once
#include "eMatrix4.h"
#include "ePoint.h"
#include "eString.h"
#include "eVector3.h"
#include "eVector4.h"

namespace KYR
{

class eCamera;
class eCanvas;
class eRenderEngine;
class eRenderProgram;
class eTechnique;
class eTexture;
class eVertexData;

class eDataSetFrame
{
public:
    // Program-specific uniform roles shared by the programs of the data sets, as indices
    // into eShaderUniform::m_nCustom. A program lists them first in its role line and
    // adds its own from eR_OWN on.
    enum eRole
    {
        eR_RESERVED = 0,     // reserved float, always 0
        eR_EARTH_PIXELS = 1, // size of the whole earth in pixels
        eR_CUR_TIME = 2,
        eR_START_TIME = 3,
        eR_END_TIME = 4,
        eR_TRACE_TIME = 5, // length of the tail
        eR_OPACITY = 6,
        eR_OWN = 7,
    };

    // Scene mode of the camera; the globe when there is none.
    static int SceneMode(eCamera* camera);

    // World position of p read as coordinate kind `kind` (0 local to the anchor, 1
    // geographic degrees with height in metres, others map coordinates). w is p.w.
    static eVector4T<double> PositionToWorld(eCamera* camera, eCanvas* canvas,
                                             eMatrix4T<float> const& local,
                                             eVector4T<double> const& anchor, int kind,
                                             eVector4T<double> const& p);
    // p as floats in the anchor's local frame; the large numbers cancel in double first.
    static eVector4T<float> PositionToLocal(eCamera* camera, eCanvas* canvas,
                                            eMatrix4T<float> const& local,
                                            eVector4T<double> const& anchor, int kind,
                                            eVector4T<double> const& p);
    // Geographic position of a non-local kind (kind 1 as it stands, others through
    // MapToGeo). Kind 0 has none and gives (0, 0); the caller reports it if it must.
    static ePoint2D PositionToGeo(eCanvas* canvas, int kind, double x, double y);

    // The local frame at a geographic point: Ry(longitude) * Rx(-latitude).
    static eMatrix4T<float> LocalFrame(ePoint2D const& geo);

    // One pass with the program, alpha blending, the depth check as given, no depth
    // write, no bias, no lighting and line width 2.
    static eTechnique* CreateTechnique(eString const& program, unsigned char depthTest);

    // The seven clock floats in their fixed order: reserved, lighting flag, earth size
    // in pixels, current, start and end time, tail length.
    static void SetClockUniforms(eRenderEngine* engine, eRenderProgram* program, float curTime,
                                 float startTime, float endTime, float traceTime);
    // World matrix T(anchor - reference centre) * local, the difference taken in double.
    static void SetAnchorMatrix(eCamera* camera, eRenderProgram* program,
                                eVector4T<double> const& anchor, eMatrix4T<float> const& local);

    // Binds the hardware buffer of the store and points each element at it. With
    // nextOffset above 0, the position element is also bound, that many vertices ahead,
    // to a_attrib1, so a shader can see the following position of a track.
    static unsigned char BindVertexData(eVertexData* data, int nextOffset);
    static void UnbindVertexData(eVertexData* data, int nextOffset);

    // Loads an image file into a clamped, linearly filtered texture; null on failure.
    static eTexture* LoadTexture(eString const& path);
};

} // namespace KYR
