// Edge bundling: the window that steps along the path every fourth frame and starts again
// after the last point, as the host records it and as the pixels show it, nothing drawn on
// the globe, and the copy test of the three classes.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eRenderEdgeBundling.h"
#include "eRenderLineBundling.h"
#include "eRenderPointBundling.h"
#include "eProgram.h"
#include <algorithm>
#include <map>

using namespace KYR;
using KYR::Host::eRecord;

namespace
{

// 10 km a pixel at the centre of the 96 x 96 view (30 degrees of view over 96 rows).
double const kDistance = 10000.0 * 96.0 / (2.0 * 0.2679491924311227);
double const kSpacing = 100000.0; // metres between the points of a path: 10 pixels

// n points along x, centred on the view, at map height y.
std::vector<ePoint2D> Path(int n, double y)
{
    std::vector<ePoint2D> points;
    for (int i = 0; i < n; ++i)
        points.push_back(ePoint2D((i - 0.5 * (n - 1)) * kSpacing, y));
    return points;
}

// What a helper's pass did in one frame.
struct Pass
{
    std::map<std::string, double> uniforms;
    std::vector<eRecord> draws;
};

// The passes of one frame by program name.
std::map<std::string, Pass> Passes(std::vector<eRecord> const& records)
{
    std::map<std::string, Pass> out;
    std::string current;
    for (eRecord const& r : records)
    {
        if (r.kind == eRecord::BeginPass)
            current = r.op;
        else if (r.kind == eRecord::Uniform && !r.values.empty())
            out[current].uniforms[r.uniform] = r.values[0];
        else if (r.kind == eRecord::Draw)
            out[current].draws.push_back(r);
    }
    return out;
}

class EdgeBundlingTest : public EffectTest
{
protected:
    void SetUp() override
    {
        m_scene.reset(new Host::eScene(96, 96, eSM_PLANE, PJ_PLATE_CARREE));
        ASSERT_TRUE(m_scene->IsReady()) << "no OpenGL context";
        m_scene->Camera().LookAtMap(0.0, 0.0, kDistance, 0.0, 0.0);
    }

    // Window column and row (from the top) of a map point.
    std::pair<int, int> Screen(ePoint2D const& p)
    {
        eVector3T<double> w = m_scene->Camera().Project(eVector3T<double>(p.x, p.y, 0.0));
        return {(int)w.x, m_scene->Height() - 1 - (int)w.y};
    }

    // Brightest of the channels at each column of one row.
    std::vector<int> Row(int y)
    {
        std::vector<unsigned char> px = m_scene->ReadPixels();
        std::vector<int> out;
        for (int x = 0; x < m_scene->Width(); ++x)
        {
            unsigned char const* p = &px[((size_t)y * m_scene->Width() + x) * 4];
            out.push_back(std::max({p[0], p[1], p[2]}));
        }
        return out;
    }
};

} // namespace

TEST_F(EdgeBundlingTest, WindowStepsEveryFourthFrameAndStartsAgainAfterTheLastPoint)
{
    eRenderEdgeBundling edge;
    std::vector<ePoint2D> path = Path(3, 0.0);
    edge.SetPoints(path);
    m_scene->Add(&edge);
    eRenderLineBundling line(&edge);
    m_scene->Add(&line);

    // Per frame from frame 0: the item the draw starts at, and the index the window's place
    // is sent for (in points). The index moves on frames 0, 4, 8, ... after the draw's start
    // is taken; at 3, the number of points, the next frame draws from the start again.
    struct Frame
    {
        int item, index;
    } const expected[] = {{0, 1}, {1, 1}, {1, 1}, {1, 1}, {1, 2}, {2, 2}, {2, 2}, {2, 2},
                          {2, 3}, {0, 0}, {0, 0}, {0, 0}, {0, 1}, {1, 1}, {1, 1}, {1, 1},
                          {1, 2}, {2, 2}, {2, 2}, {2, 2}, {2, 3}, {0, 0}};
    struct Helper
    {
        char const* program;
        int vertices; // per item
    } const helpers[] = {{"TracePointLength", 6}, {"TraceLineLength", 18}};
    for (size_t f = 0; f < sizeof expected / sizeof expected[0]; ++f)
    {
        std::map<std::string, Pass> passes = Passes(RecordFrame());
        for (Helper const& h : helpers)
        {
            SCOPED_TRACE(testing::Message() << h.program << ", frame " << f);
            Pass const& pass = passes[h.program];
            ASSERT_EQ(pass.draws.size(), 1u);
            EXPECT_EQ(pass.draws[0].op, "glDrawArrays");
            EXPECT_EQ(pass.draws[0].mode, 4); // triangles
            EXPECT_EQ(pass.draws[0].first, expected[f].item * h.vertices);
            EXPECT_EQ(pass.draws[0].count, 5 * h.vertices); // five items, also near the end
            EXPECT_NEAR(pass.uniforms.at("u_traceHead"), expected[f].index / 3.0, 1e-6);
            EXPECT_NEAR(pass.uniforms.at("u_traceScale"), 0.75, 1e-6); // points over four
        }
    }
}

// The head of the window, its fifth point, is the brightest marker; the point before the
// window is not drawn. Followed over two rounds of the path.
TEST_F(EdgeBundlingTest, MarkersLightUpTheWindowWithItsHeadBrightest)
{
    int const n = 8;
    eRenderEdgeBundling edge;
    std::vector<ePoint2D> path = Path(n, 0.0);
    edge.SetPoints(path);
    m_scene->Add(&edge);
    int const row = Screen(path[0]).second;
    for (int f = 0; f < 2 * 4 * n + 2; ++f)
    {
        Pass pass = Passes(RecordFrame())["TracePointLength"];
        ASSERT_EQ(pass.draws.size(), 1u);
        int item = (int)pass.draws[0].first / 6;
        SCOPED_TRACE(testing::Message() << "frame " << f << ", window from point " << item);
        std::vector<int> lit = Row(row);
        int brightest = *std::max_element(lit.begin(), lit.end());
        int head = Screen(path[(size_t)std::min(item + 4, n - 1)]).first;
        EXPECT_GE(std::max({lit[(size_t)head - 1], lit[(size_t)head], lit[(size_t)head + 1]}),
                  brightest - 2);
        // A head that has passed the last point leaves the dimmer part of the window.
        EXPECT_GT(brightest, item + 4 < n ? 120 : 20);
        if (item > 0)
        {
            EXPECT_LT(lit[(size_t)Screen(path[(size_t)item - 1]).first], 8);
        }
    }
}

// The strokes cover the window's five segments and their round ends, 5 pixels thick, and
// nothing of the path beyond.
TEST_F(EdgeBundlingTest, StrokesCoverTheWindowsSegmentsFivePixelsThick)
{
    int const n = 8;
    eRenderEdgeBundling edge;
    std::vector<ePoint2D> path = Path(n, 0.0);
    edge.SetPoints(path);
    m_scene->Add(&edge);
    edge.m_bVisible = 0; // only the line helper draws
    eRenderLineBundling line(&edge);
    m_scene->Add(&line);
    int const row = Screen(path[0]).second;
    for (int f = 0; f < 4 * n + 2; ++f)
    {
        Pass pass = Passes(RecordFrame())["TraceLineLength"];
        ASSERT_EQ(pass.draws.size(), 1u);
        int item = (int)pass.draws[0].first / 18;
        SCOPED_TRACE(testing::Message() << "frame " << f << ", window from segment " << item);
        std::vector<int> lit = Row(row);
        std::vector<int> columns;
        for (int x = 0; x < (int)lit.size(); ++x)
            if (lit[(size_t)x] > 10)
                columns.push_back(x);
        if (item == n - 1) // the window has left the last segment: only padding is drawn
        {
            EXPECT_TRUE(columns.empty());
            continue;
        }
        ASSERT_FALSE(columns.empty());
        // Round ends reach half the width, 2.5 pixels, past the end points.
        EXPECT_NEAR(columns.front(), Screen(path[(size_t)item]).first - 2.5, 2.0);
        EXPECT_NEAR(columns.back(), Screen(path[(size_t)std::min(item + 5, n - 1)]).first + 2.5,
                    2.0);
        if (item + 5 >= n)
            continue;
        // Thickness across the head's segment.
        int x = (Screen(path[(size_t)item + 4]).first + Screen(path[(size_t)item + 5]).first) / 2;
        std::vector<unsigned char> px = m_scene->ReadPixels();
        int rows = 0;
        for (int y = 0; y < m_scene->Height(); ++y)
            rows += std::max({px[((size_t)y * 96 + x) * 4], px[((size_t)y * 96 + x) * 4 + 1]}) > 60;
        EXPECT_NEAR(rows, 5, 1);
    }
}

// The default scene of the fixture: the globe.
class GlobeEdgeBundlingTest : public EffectTest
{
};

// The effect works on the plane map only: on the globe each of the three techniques is
// reported once, and nothing reaches the screen.
TEST_F(GlobeEdgeBundlingTest, NothingIsDrawnAndTheSceneModeIsReported)
{
    m_scene->RenderFrame();
    std::vector<unsigned char> empty = m_scene->ReadPixels();
    eRenderEdgeBundling edge;
    std::vector<ePoint2D> path = {{-2.0e6, 0.0}, {0.0, 1.0e6}, {2.0e6, 0.0}};
    edge.SetPoints(path);
    m_scene->Add(&edge);
    eRenderLineBundling line(&edge);
    m_scene->Add(&line);

    Host::ClearAssertReports();
    for (int f = 0; f < 5; ++f)
    {
        EXPECT_TRUE(Of(RecordFrame(), eRecord::Draw).empty()) << "frame " << f;
        EXPECT_EQ(m_scene->ReadPixels(), empty) << "frame " << f;
    }
    std::vector<Host::eAssertReport> reports = Host::GetAssertReports();
    ASSERT_EQ(reports.size(), 3u);
    for (Host::eAssertReport const& r : reports)
    {
        EXPECT_EQ(r.expression, "false");
        EXPECT_EQ(r.file, "Src/RenderEffect/eRenderEdgeBundling");
    }
}

// A path of one point has no segment: the strokes' draw reads only the padding after the end,
// and the screen stays empty. The edge object's own stores, which nothing fills, draw nothing
// either when it is rendered by hand.
TEST_F(EdgeBundlingTest, OnePointPathAndTheEdgesOwnStoresDrawNothing)
{
    m_scene->RenderFrame();
    std::vector<unsigned char> empty = m_scene->ReadPixels();
    eRenderEdgeBundling edge;
    std::vector<ePoint2D> path = {{0.0, 0.0}};
    edge.SetPoints(path);
    m_scene->Add(&edge);
    edge.m_bVisible = 0; // leaves the markers out
    eRenderLineBundling line(&edge);
    m_scene->Add(&line);
    for (int f = 0; f < 6; ++f)
    {
        Pass pass = Passes(RecordFrame())["TraceLineLength"];
        ASSERT_EQ(pass.draws.size(), 1u);
        EXPECT_EQ(pass.draws[0].first, 0);
        EXPECT_EQ(pass.draws[0].count, 90);
        EXPECT_EQ(m_scene->ReadPixels(), empty) << "frame " << f;
    }

    edge.m_bVisible = 1;
    m_scene->RenderFrame(); // builds the edge's technique
    Host::eRecorder::Get().Start();
    EXPECT_TRUE(edge.Render(&m_scene->Engine(), &m_scene->RenderSystem(), &m_scene->Camera(),
                            &m_scene->Viewport()));
    Host::eRecorder::Get().Stop();
    std::vector<eRecord> draws = Host::eRecorder::Get().Of(eRecord::Draw);
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0].op, "DrawIndexed");
    EXPECT_EQ(draws[0].count, 0);
}

// Each role of the classes' enums is the uniform of that name in the programs they use.
TEST_F(EdgeBundlingTest, ProgramsLinkWithTheirRolesWhereTheEnumsSayTheyAre)
{
    typedef eRenderEdgeBundling E;
    struct Role
    {
        char const* program;
        int slot;
        char const* uniform;
    } const roles[] = {
        {"TracePointLength", E::eR_TRACE_SCALE, "u_traceScale"},
        {"TracePointLength", E::eR_TRACE_HEAD, "u_traceHead"},
        {"TraceLineLength", E::eR_TRACE_SCALE, "u_traceScale"},
        {"TraceLineLength", E::eR_TRACE_HEAD, "u_traceHead"},
        {"DashLine2D", E::eR_DASH_OPACITY, "u_opacity"},
        {"DashLine2D", E::eR_DASH_WIDTH, "u_width"},
        {"DashLine2D", E::eR_DASH_STREAM_WEIGHT, "u_streamWeight"},
        {"DashLine2D", E::eR_DASH_FEATHER, "u_feather"},
        {"DashLine2D", E::eR_DASH_LENGTH, "u_dashLength"},
        {"DashLine2D", E::eR_DASH_GAP, "u_gapLength"},
        {"DashLine2D", E::eR_DASH_OFFSET, "u_dashOffset"},
        {"DashLine2D", E::eR_DASH_MITER_LIMIT, "u_miterLimit"},
        {"DashLine2D", E::eR_DASH_EDGE, "u_edge"},
    };
    for (Role const& r : roles)
    {
        SCOPED_TRACE(testing::Message() << r.program << " " << r.uniform);
        eRenderProgram* program = m_scene->Engine().GetRenderProgram(eString(r.program));
        ASSERT_NE(program, nullptr);
        int location = program->GetProgram()->GetUniformLocation(eString(r.uniform));
        EXPECT_GE(location, 0);
        EXPECT_EQ(program->GetUniform()->m_nCustom[r.slot], location);
    }
}

// ---------------------------------------------------------------------------------------------
// Copies
// ---------------------------------------------------------------------------------------------

namespace
{

void PreparePlane(Host::eScene& scene)
{
    scene.Camera().SetSceneMode(eSM_PLANE);
    scene.Camera().LookAtMap(0.0, 0.0, kDistance, 0.0, 0.0);
}

// The parent the helpers of a copy test read their path from; it outlives them.
eRenderEdgeBundling& Parent(Host::eScene* scene = nullptr)
{
    static std::unique_ptr<eRenderEdgeBundling> s_parent;
    if (scene)
    {
        s_parent.reset(new eRenderEdgeBundling());
        std::vector<ePoint2D> path = Path(8, 0.0);
        s_parent->SetPoints(path);
        s_parent->Create(&scene->Camera(), 0.0, &scene->Canvas());
    }
    return *s_parent;
}

} // namespace

template <> struct CopySubject<eRenderEdgeBundling>
{
    static constexpr bool kSamePixels = false; // the window moves
    static void Prepare(Host::eScene& scene) { PreparePlane(scene); }
    static eRenderEdgeBundling* Make(Host::eScene&)
    {
        auto* edge = new eRenderEdgeBundling();
        std::vector<ePoint2D> path = Path(5, 0.0);
        edge->SetPoints(path);
        return edge;
    }
};

template <> struct CopySubject<eRenderLineBundling>
{
    static constexpr bool kSamePixels = false;
    static void Prepare(Host::eScene& scene)
    {
        PreparePlane(scene);
        Parent(&scene);
    }
    static eRenderLineBundling* Make(Host::eScene&) { return new eRenderLineBundling(&Parent()); }
};

template <> struct CopySubject<eRenderPointBundling>
{
    static constexpr bool kSamePixels = false;
    static void Prepare(Host::eScene& scene)
    {
        PreparePlane(scene);
        Parent(&scene);
    }
    static eRenderPointBundling* Make(Host::eScene&) { return new eRenderPointBundling(&Parent()); }
};

using BundlingTypes =
    ::testing::Types<eRenderEdgeBundling, eRenderLineBundling, eRenderPointBundling>;
INSTANTIATE_TYPED_TEST_SUITE_P(EdgeBundling, CopyIdiom, BundlingTypes);
