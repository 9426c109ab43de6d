// What the data-set frame gives every trace set: uploads from reused conversions that are
// bit for bit those of a fresh conversion, re-converted when the anchor, the scene mode or
// the projection changes; and heads that read no position outside their own window.
#include "EffectFixture.h"
#include "eHardwareBuffer.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eRenderListLineTraceSet.h"
#include "eRenderPointTraceSet.h"
#include <cmath>
#include <cstring>
#include <epoxy/gl.h>
#include <functional>
#include <random>

using namespace KYR;

namespace
{

class PointProbe : public eRenderPointTraceSet
{
public:
    using eRenderPointTraceSet::m_nCount;
    using eRenderTraceSet::m_pVertexData;
};

// A set that writes its vertices itself, as an application's subclass may: it must be
// asked for every position of every window.
class WritingProbe : public PointProbe
{
public:
    unsigned char UpdateVertexBuffer(ePointTrace* trace, eVertexData* data, int k,
                                     eVector4T<double>& position) override
    {
        ++m_nCalls;
        return eRenderPointTraceSet::UpdateVertexBuffer(trace, data, k, position);
    }
    long long m_nCalls = 0;
};

class LineProbe : public eRenderListLineTraceSet
{
public:
    using eRenderListLineTraceSet::m_Lines;
    using eRenderTraceSet::m_pVertexData;
};

std::vector<eVector4T<double>> Track(int n, double lon0, double lat, double t0)
{
    std::vector<eVector4T<double>> out;
    for (int i = 0; i < n; ++i)
        out.push_back(eVector4T<double>(lon0 + 0.7 * i, lat + 0.3 * i, 800.0 + i, t0 + 60.0 * i));
    return out;
}

// A window as it should stand in the buffer: where it starts, and the positions it shows.
struct Window
{
    int firstVertex;
    int kind;
    std::vector<eVector4T<double>> const* positions;
    int first, count;
};

// Every window's range of the buffer holds the floats PositionToLocal gives now, to the bit.
void ExpectFreshConversions(eRenderTraceSet& set, eVertexData* data, int vpp,
                            std::vector<Window> const& windows, char const* what)
{
    ASSERT_FALSE(windows.empty()) << what;
    for (Window const& w : windows)
    {
        ASSERT_GT(w.count, 0) << what;
        std::vector<float> back((size_t)w.count * vpp * 4);
        ASSERT_TRUE(data->GetHardwareBuffer()->ReadData(w.firstVertex * 16, (int)back.size() * 4,
                                                        back.data()));
        for (int k = 0; k < w.count; ++k)
        {
            eVector4T<double> p = (*w.positions)[(size_t)(w.first + k)];
            eVector4T<float> fresh = set.PositionToLocal(w.kind, p);
            for (int c = 0; c < vpp; ++c)
                ASSERT_EQ(std::memcmp(&back[(size_t)(k * vpp + c) * 4], &fresh, 16), 0)
                    << what << ": position " << w.first + k << " corner " << c;
        }
    }
}

// An effect in the scene for the life of a block.
struct InScene
{
    InScene(KYR::Host::eScene& scene, eRenderable* effect) : m_Scene(scene), m_pEffect(effect)
    {
        scene.Add(effect);
    }
    ~InScene() { m_Scene.Remove(m_pEffect); }
    KYR::Host::eScene& m_Scene;
    eRenderable* m_pEffect;
};

} // namespace

class TraceWindowTest : public EffectTest
{
protected:
    // Frames, then each change of what the local floats depend on. After every frame the
    // uploads must match a fresh conversion; after each change they must differ from before.
    void RunChanges(eRenderTraceSet& set, std::function<std::vector<Window>()> windows,
                    std::function<eVertexData*()> data, int vpp)
    {
        auto firstVertex = [&]()
        {
            std::vector<float> v(4, 0.0f);
            Window w = windows().at(0);
            data()->GetHardwareBuffer()->ReadData(w.firstVertex * 16, 16, v.data());
            return v;
        };
        for (int i = 0; i < 4; ++i)
        {
            m_scene->RenderFrame();
            ExpectFreshConversions(set, data(), vpp, windows(), "frames in a row");
        }
        struct Change
        {
            char const* what;
            std::function<void()> apply;
        };
        Change const changes[] = {
            {"anchor moved",
             [&]()
             {
                 eVector3T<double> anchor(12.0, 41.0, 0.0);
                 set.SetPosition(anchor);
                 set.Create(&m_scene->Camera(), 0.0, &m_scene->Canvas());
             }},
            {"plane map", [&]() { m_scene->Camera().SetSceneMode(eSM_PLANE); }},
            {"projection",
             [&]() { m_scene->CoordSys().GetPrjCoordSys().SetProjectionType(PJ_SPHERE_MERCATOR); }},
            {"globe again", [&]() { m_scene->Camera().SetSceneMode(eSM_GLOBE); }},
        };
        for (Change const& change : changes)
        {
            std::vector<float> before = firstVertex();
            change.apply();
            m_scene->RenderFrame();
            EXPECT_NE(firstVertex(), before) << change.what;
            ExpectFreshConversions(set, data(), vpp, windows(), change.what);
        }
    }

    // Two tracks in a point set, through the frames and changes of RunChanges.
    template <typename Set>
    void RunPointSet(Set& set, unsigned char geometry, std::vector<eVector4T<double>> const& a,
                     std::vector<eVector4T<double>> const& b, eVector3T<double> anchor)
    {
        set.SetGeometryShader(geometry);
        set.SetPoolSize(4);
        set.SetTraceSize(32);
        set.SetTraceTime(600.0f);
        set.SetSpeedPerFrame(45.0f);
        set.SetSpatialRefType(1);
        set.SetPosition(anchor);
        set.SetCurTime(900.0f);
        InScene inSet(*m_scene, &set);
        for (auto const* positions : {&a, &b})
        {
            ePointTrace trace;
            trace.m_arPositions = *positions;
            set.AddPointTrace(&trace);
        }
        int vpp = geometry ? 1 : 6;
        auto windows = [&]()
        {
            std::vector<Window> out;
            for (int i = 0; i < set.m_nCount; ++i)
            {
                ePointTrace* t = set.GetPointTrace(i);
                out.push_back(Window{i * 32 * vpp, t->m_nSpatialRefType, &t->m_arPositions,
                                     t->m_nFirstIndex, t->m_nWindowCount});
            }
            return out;
        };
        RunChanges(
            set, windows, [&]() { return set.m_pVertexData.Get(); }, vpp);
        m_scene->Camera().SetSceneMode(eSM_GLOBE);
        m_scene->CoordSys().GetPrjCoordSys().SetProjectionType(PJ_PLATE_CARREE);
    }
};

TEST_F(TraceWindowTest, ReusedConversionsUploadTheBitsOfAFreshOne)
{
    std::vector<eVector4T<double>> a = Track(80, 10.0, 38.0, 0.0), b = Track(80, 14.0, 45.0, 30.0);
    eVector3T<double> anchor(12.0, 40.0, 0.0);
    {
        SCOPED_TRACE("point traces, geometry shader");
        PointProbe set;
        RunPointSet(set, 1, a, b, anchor);
    }
    {
        SCOPED_TRACE("point traces, six vertices");
        PointProbe set;
        RunPointSet(set, 0, a, b, anchor);
    }
    {
        SCOPED_TRACE("point traces written one by one by a subclass");
        WritingProbe set;
        RunPointSet(set, 1, a, b, anchor);
        EXPECT_GT(set.m_nCalls, 10 * 2 * 10) << "ten frames of two windows";
    }
    {
        SCOPED_TRACE("line traces");
        LineProbe set;
        set.SetPoolSize(4);
        set.SetTraceSize(32);
        set.SetTraceTime(600.0f);
        set.SetSpeedPerFrame(45.0f);
        set.SetSpatialRefType(1);
        set.SetPosition(anchor);
        set.SetCurTime(900.0f);
        InScene inSet(*m_scene, &set);
        for (auto const* positions : {&a, &b})
        {
            eTraceList* list = set.CreateTraceList();
            list->SetPositions(*positions);
            set.AddTraceList(list);
        }
        m_scene->RenderFrame(); // binds the lists
        auto windows = [&]()
        {
            std::vector<Window> out;
            for (eLineTrace* line : set.m_Lines->m_lstActiveLines)
                out.push_back(Window{line->m_nIndex * 32, line->m_pTraceList->GetSpatialRefType(),
                                     &line->m_pTraceList->GetPositions(), line->m_nFirstIndex,
                                     line->m_nWindowCount});
            return out;
        };
        RunChanges(
            set, windows, [&]() { return set.m_pVertexData.Get(); }, 1);
    }
}

TEST_F(TraceWindowTest, HeadStaysInsideItsOwnWindow)
{
    // A finished track of five positions (-10 to -6 degrees, t = 0 to 400): with the clock at
    // 500 its last position is the head and stays there. Its slot is the last of the
    // buffer, and either ends with the window or still holds an older track that ran from
    // 10 degrees eastwards at later times: neither is read as the head's next position.
    m_scene->Camera().LookAt(0.0, 0.0, 4.0e6, 0.0, 0.0);
    struct Case
    {
        unsigned char geometry;
        int traceSize;
    };
    for (Case c : {Case{1, 5}, Case{1, 8}, Case{0, 5}, Case{0, 8}})
    {
        SCOPED_TRACE(testing::Message()
                     << "geometry " << (int)c.geometry << ", slot of " << c.traceSize);
        PointProbe set;
        set.SetGeometryShader(c.geometry);
        set.SetPoolSize(1);
        set.SetTraceSize(c.traceSize);
        set.SetTraceTime(2000.0f);
        set.SetSpeedPerFrame(0.0f);
        set.SetPointSize(10.0f);
        set.SetPointColor(eVector4T<unsigned char>(0, 255, 0, 255));
        eVector3T<double> anchor(0.0, 0.0, 0.0);
        set.SetSpatialRefType(1);
        set.SetPosition(anchor);
        InScene inSet(*m_scene, &set);
        auto track = [](int n, double lon0, double t0)
        {
            ePointTrace t;
            for (int i = 0; i < n; ++i)
                t.m_arPositions.push_back(eVector4T<double>(lon0 + i, 0.0, 1000.0, t0 + 100.0 * i));
            return t;
        };
        if (c.traceSize == 8)
        {
            // Eight positions at t = 100 to 800, all in the slot; then overwritten.
            ePointTrace older = track(8, 10.0, 100.0);
            set.SetCurTime(750.0f);
            set.AddPointTrace(&older);
            ASSERT_EQ(set.GetPointTrace(0)->m_nWindowCount, 8);
        }
        ePointTrace finished = track(5, -10.0, 0.0);
        set.SetCurTime(350.0f);
        set.AddPointTrace(&finished);
        ASSERT_EQ(set.GetPointTrace(0)->m_nWindowCount, 5);
        set.SetCurTime(500.0f);
        m_scene->RenderFrame();

        // What the draw may read: its own range, and the head's next position no further
        // than the first vertex of the window's last position.
        int vpp = c.geometry ? 1 : 6;
        GLint last = -1;
        glGetVertexAttribIiv(eAI_ATTRIB1, GL_CURRENT_VERTEX_ATTRIB, &last);
        EXPECT_EQ(last, 4 * vpp);
        EXPECT_LE(last + vpp, set.m_pVertexData->GetHardwareBuffer()->GetSizeInBytes() / 16);

        auto at = [&](double lon)
        {
            eVector3T<double> w = eMathEngine::SphericalToCartesian(
                lon * eMathEngine::DEG_TO_RAD, 0.0, eMathEngine::EARTH_RADIUS + 1000.0);
            eVector3T<double> s = m_scene->Camera().Project(w);
            return Pixel((int)std::lround(s.x), m_scene->Height() - 1 - (int)std::lround(s.y))[1];
        };
        EXPECT_GT(at(-6.0), 200) << "the head stays on the last position";
        EXPECT_LT(at(-8.0), at(-6.0)) << "the tail behind it is fainter";
        for (double lon : {-3.0, 0.0, 2.5, 5.0})
            EXPECT_LT(at(lon), 10) << "no head pulled out to " << lon;
    }
}

TEST_F(TraceWindowTest, WindowsSoughtFromTheLastOnesMatchAFullSearch)
{
    // Windows are found from where the last ones ended, or kept when the cache shows they
    // still hold. Against the plain search from each window's start, with the clock going
    // forward, back and in jumps, over tracks with repeated stamps and one with a NaN.
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> step(0.0, 40.0), move(-30.0, 120.0);
    PointProbe set;
    set.SetPoolSize(12);
    set.SetTraceSize(64);
    set.SetTraceTime(400.0f);
    eVector3T<double> anchor(0.0, 0.0, 0.0);
    set.SetSpatialRefType(1);
    set.SetPosition(anchor);
    InScene inSet(*m_scene, &set);
    std::vector<std::pair<int, int>> expected;
    for (int i = 0; i < 12; ++i)
    {
        ePointTrace trace;
        double t = i * 10.0;
        for (int k = 0; k < 120; ++k, t += (k % 7 == 0 ? 0.0 : step(rng)))
            trace.m_arPositions.push_back(eVector4T<double>(k * 0.1, i * 0.5, 0.0, t));
        if (i == 11)
            trace.m_arPositions[60].w = std::nan("");
        set.AddPointTrace(&trace); // found at once, with the clock at 0
        expected.emplace_back(0, 0);
        float t0, t1;
        eDataSetFrame::WindowTimes(0.0f, 400.0f, 0.0f, 86400.0f, t0, t1);
        eDataSetFrame::MoveWindow(trace.m_arPositions.data(), (int)trace.m_arPositions.size(), t0,
                                  t1, expected[i].first, expected[i].second);
    }
    float clock = 0.0f;
    for (int frame = 0; frame < 400; ++frame)
    {
        // First around the tracks' starts, then on and back, with a jump now and then.
        if (frame < 40)
            clock = (float)(move(rng) - 10.0);
        else
            clock += (float)move(rng) + (frame % 50 == 49 ? 1500.0f : 0.0f);
        set.SetCurTime(clock);
        set.Update();
        float t0, t1;
        eDataSetFrame::WindowTimes(clock, 400.0f, 0.0f, 86400.0f, t0, t1);
        for (int i = 0; i < 12; ++i)
        {
            ePointTrace* t = set.GetPointTrace(i);
            eDataSetFrame::MoveWindow(t->m_arPositions.data(), (int)t->m_arPositions.size(), t0, t1,
                                      expected[i].first, expected[i].second);
            ASSERT_EQ(std::make_pair(t->m_nFirstIndex, t->m_nWindowCount), expected[i])
                << "trace " << i << ", frame " << frame;
        }
    }
}
