// A path of map points with a short highlight crawling along it, from the first point to the
// last and round again: traffic running along one bundled route. The path is drawn by helpers
// that read it from here: the point helper this object owns (markers at the points), and line
// helpers an application adds (the segments). Each builds its geometry once, when created,
// and animates only by where its draw starts, so a frame writes no buffer. Plane map only.
#pragma once
#include "ePoint.h"
#include "eRenderable.h"
#include "eShared.h"
#include "eString.h"
#include "eVector3.h"
#include <vector>

namespace KYR
{

class eIndexData;
class eRenderPointBundling;
class eTechnique;
class eVertexData;

class eRenderEdgeBundling : public eRenderable
{
public:
    // Uniform roles of the helpers' programs, "TraceLineLength" and "TracePointLength", as
    // indices into eShaderUniform::m_nCustom.
    enum eTraceRole
    {
        eR_PROJECTION_MODE = 0, // 0: positions are local to the anchor
        eR_EARTH_PIXELS = 1,    // the whole earth in pixels
        eR_TRACE_SCALE = 2,     // points in the path over four
        eR_TRACE_HEAD = 3,      // where the window stands, as a share of the path
    };
    // Uniform roles of "DashLine2D", the program of this object's own stores.
    enum eDashRole
    {
        eR_DASH_POSITION_KIND = 0, // int 0: positions are local to the anchor
        eR_DASH_OPACITY = 1,
        eR_DASH_WIDTH = 2, // width times the pixel unit
        eR_DASH_STREAM_WEIGHT = 3,
        eR_DASH_FEATHER = 4,
        eR_DASH_LENGTH = 5,
        eR_DASH_GAP = 6,
        eR_DASH_OFFSET = 7,
        eR_DASH_MITER_LIMIT = 8,
        eR_DASH_EDGE = 9, // edge width times the pixel unit
    };

    // Items of the path (points or segments) that one frame draws.
    static int const kWindowItems = 5;
    // The queue group of the helpers: the usual one of data sets and overlays.
    static unsigned int const kQueueGroup = 6;

    eRenderEdgeBundling();
    // A copy has its own path and its own point helper, which shares the original helper's
    // geometry and draws for the copy.
    eRenderEdgeBundling(eRenderEdgeBundling const& other);
    eRenderEdgeBundling& operator=(eRenderEdgeBundling const& other);
    ~eRenderEdgeBundling() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Reset(eRenderEngine*) override;
    // Draws this object's own stores, which nothing fills; the queue never holds the object.
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    // Converts the points from map to logical coordinates in place (again at each call), takes
    // the first as the anchor, and creates the point helper. The path needs a point.
    unsigned char Create(eCamera*, double, eCanvas*) override;
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override;
    // Queues the point helper, not this object.
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    // The path in map coordinates, before Create.
    void SetPoints(std::vector<ePoint2D>& points) { m_arPoints = points; }
    std::vector<ePoint2D>& GetPoints() { return m_arPoints; }
    eVector3T<double> GetPosition() const { return m_vPosition; }

protected:
    friend class eRenderLineBundling;
    friend class eRenderPointBundling;

    // One pass of the program, blended, with no depth check, depth write or bias, unlit. The
    // effect draws on the plane map only: in any other scene mode the pass stays bare (no
    // program, so nothing draws) and the mode is reported.
    static eTechnique* CreateTechnique(eString const& program, eCamera* camera);
    // The helpers' colour stream: `perPoint` records for each of n points, the colour 170, 90,
    // 93 with the point's place along the path, i / n, in the fourth channel.
    static eVertexData* CreateTraceColours(int n, int perPoint);
    // Uploads a helper's stream with `pad` zero vertices after its own, so that a window that
    // reaches past the last item reads vertices that draw nothing.
    static void UploadPadded(eVertexData* data, int pad);
    // A helper's frame: the anchor's matrix and, when the pass names the program `name`, its
    // constants; both streams; one step of the window every fourth frame, its place and scale;
    // and the draw of five items of `perItem` vertices. Nothing is drawn without a program or
    // a point.
    static unsigned char DrawWindow(eRenderEngine* engine, eCamera* camera, eTechnique* technique,
                                    char const* name, eVector3T<double> const& anchor,
                                    eVertexData* geometry, eVertexData* colours, int n, int perItem,
                                    int& traceIndex);

    unsigned char m_bInitialized;
    eShared<eTechnique> m_pTechnique;
    eShared<eVertexData> m_pVertexData;
    eShared<eIndexData> m_pIndexData;
    eVector3T<double> m_vPosition;
    std::vector<ePoint2D> m_arPoints;
    eShared<eRenderPointBundling> m_pPointBundling;
};

} // namespace KYR
