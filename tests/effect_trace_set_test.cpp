// Point trace sets: the sliding window, the ring of slots, the uploads into each slot's
// range, the anchored conversions and what reaches the screen.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eFile.h"
#include "eHardwareBuffer.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eRenderPointTraceSet.h"
#include "eTexture.h"
#include <cmath>
#include <cstring>

using namespace KYR;
using KYR::Host::eRecord;

namespace
{

class Probe : public eRenderPointTraceSet
{
public:
    using eRenderPointTraceSet::m_nCount;
    using eRenderPointTraceSet::m_nHead;
    using eRenderPointTraceSet::UpdateTrace;
    using eRenderTraceSet::CreateTexture;
    using eRenderTraceSet::m_LocalMatrix;
    using eRenderTraceSet::m_pVertexData;
    using eRenderTraceSet::m_vWorldPosition;
    // Traces and buffers are the set's to free only through UnInitialize.
    ~Probe() override { UnInitialize(nullptr); }
};

// Positions along the equator: lon0 + i * step degrees at times t0 + i * dt.
ePointTrace Track(int n, double lon0, double step, double t0, double dt, double lat = 0.0)
{
    ePointTrace trace;
    for (int i = 0; i < n; ++i)
        trace.m_arPositions.push_back(eVector4T<double>(lon0 + i * step, lat, 1000.0, t0 + i * dt));
    return trace;
}

std::vector<eRecord> Draws(std::vector<eRecord> const& records)
{
    std::vector<eRecord> out;
    for (auto const& r : records)
        if (r.kind == eRecord::Draw && r.op == "glDrawArrays")
            out.push_back(r);
    return out;
}

class TraceSetTest : public EffectTest
{
protected:
    // A set with a small pool, added to the scene (Create and Initialize).
    void Prepare(Probe& set, int pool, int traceSize, unsigned char geometry = 1)
    {
        set.SetGeometryShader(geometry);
        set.SetPoolSize(pool);
        set.SetTraceSize(traceSize);
        set.SetTraceTime(200.0f);
        eVector3T<double> anchor(0.0, 0.0, 0.0);
        set.SetSpatialRefType(1);
        set.SetPosition(anchor);
    }
    void TearDown() override
    {
        for (Probe* set : m_arSets)
            m_scene->Remove(set);
        EffectTest::TearDown();
    }
    void Add(Probe& set)
    {
        m_arSets.push_back(&set);
        m_scene->Add(&set);
    }
    std::vector<Probe*> m_arSets;
};

} // namespace

TEST_F(TraceSetTest, WindowFollowsTheClockAndStopsAtTheEnd)
{
    Probe set;
    Prepare(set, 4, 16);
    Add(set);
    ePointTrace single = Track(1, 0.0, 0.0, 0.0, 0.0);
    set.SetCurTime(450.0f);
    set.AddPointTrace(&single); // slot 0: never finds a position after t1
    ePointTrace six = Track(6, 0.0, 1.0, 0.0, 100.0);
    set.AddPointTrace(&six); // slot 1
    EXPECT_EQ(set.GetPointTrace(0)->m_nWindowCount, 0);
    EXPECT_FALSE(set.UpdateTrace(0, set.GetPointTrace(0)));

    // t0 = 250, t1 = 450: one position before t0 and the first one after t1 (t = 500).
    ePointTrace* t = set.GetPointTrace(1);
    EXPECT_EQ(t->m_nFirstIndex, 2);
    EXPECT_EQ(t->m_nWindowCount, 4);
    EXPECT_GT(t->m_arPositions[t->m_nFirstIndex + t->m_nWindowCount - 1].w, 450.0);

    // Past the last stamp the window stays and is still drawn...
    set.SetCurTime(650.0f);
    auto draws = Draws(RecordFrame());
    EXPECT_EQ(t->m_nFirstIndex, 2);
    EXPECT_EQ(t->m_nWindowCount, 4);
    // The single position (slot 0) is never drawn.
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0].first, 16);
    EXPECT_EQ(draws[0].count, 4);
    // ...until the tail has passed it.
    set.SetCurTime(701.0f);
    EXPECT_TRUE(Draws(RecordFrame()).empty());
}

TEST_F(TraceSetTest, StartTimeRewindsTheClockButNotTheWindow)
{
    Probe set;
    Prepare(set, 2, 16);
    Add(set);
    ePointTrace track = Track(11, 0.0, 1.0, 0.0, 100.0);
    set.SetCurTime(450.0f);
    set.AddPointTrace(&track);
    ePointTrace* t = set.GetPointTrace(0);
    ASSERT_EQ(t->m_nFirstIndex, 2);
    set.SetStartTime(0.0f);
    EXPECT_EQ(set.GetCurTime(), 0.0f);
    EXPECT_EQ(t->m_nFirstIndex, 2);
    // The search starts at the window: one step back, never straight to the beginning.
    ASSERT_TRUE(set.UpdateTrace(0, t));
    EXPECT_EQ(t->m_nFirstIndex, 1);
    // t1 exactly on a stamp: the window ends at the next one.
    set.SetCurTime(500.0f);
    ASSERT_TRUE(set.UpdateTrace(0, t));
    EXPECT_EQ(t->m_arPositions[t->m_nFirstIndex + t->m_nWindowCount - 1].w, 600.0);
}

TEST_F(TraceSetTest, RingOverwritesOldestAndDrawsUpToTheHead)
{
    Probe set;
    Prepare(set, 2, 8);
    Add(set);
    set.SetCurTime(150.0f);
    set.SetSpeedPerFrame(1.0f);
    // No trace: no draw call, and the clock stands still.
    EXPECT_TRUE(Draws(RecordFrame()).empty());
    EXPECT_EQ(set.GetCurTime(), 150.0f);

    ePointTrace a = Track(6, 0.0, 1.0, 0.0, 100.0), b = Track(6, 5.0, 1.0, 0.0, 100.0);
    ePointTrace c = Track(6, 10.0, 1.0, 0.0, 100.0);
    set.AddPointTrace(&a);
    set.AddPointTrace(&b);
    EXPECT_EQ(set.m_nHead, 0);
    set.AddPointTrace(&c);
    EXPECT_EQ(set.m_nHead, 1);
    EXPECT_EQ(set.m_nCount, 2);
    EXPECT_EQ(set.GetPointTrace(0)->m_arPositions[0].x, 10.0);
    EXPECT_EQ(set.GetPointTrace(1)->m_arPositions[0].x, 5.0);
    EXPECT_EQ(set.GetPointTrace(2), nullptr);

    // h = 1, n = 2: the first call covers slots 1 up to 1, the second slot 0. Slot 1 is
    // left out and the clock runs twice.
    auto draws = Draws(RecordFrame());
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0].first, 0);
    EXPECT_EQ(draws[0].mode, 0);
    EXPECT_EQ(set.GetCurTime(), 152.0f);
}

TEST_F(TraceSetTest, WrappedRingOfThreeSkipsTheSlotBeforeTheEnd)
{
    Probe set;
    Prepare(set, 3, 8, 0);
    Add(set);
    set.SetCurTime(150.0f);
    for (int i = 0; i < 4; ++i)
    {
        ePointTrace t = Track(6, i * 5.0, 1.0, 0.0, 100.0);
        set.AddPointTrace(&t);
    }
    auto draws = Draws(RecordFrame());
    // Slots 1, then 0; slot 2 (from n - h = 2 up to n) is not drawn. Six vertices a
    // position, as triangles.
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0].first, 8 * 6 * 1);
    EXPECT_EQ(draws[1].first, 0);
    EXPECT_EQ(draws[0].mode, 4);
    EXPECT_EQ(draws[0].count, set.GetPointTrace(1)->m_nWindowCount * 6);
}

TEST_F(TraceSetTest, RecordAddedBeforeBuffersIsUploadedByInitialize)
{
    Probe set;
    Prepare(set, 4, 8);
    set.SetCurTime(150.0f);
    ePointTrace track = Track(6, 0.0, 1.0, 0.0, 100.0);
    EXPECT_TRUE(set.AddPointTrace(&track));
    EXPECT_EQ(set.m_nCount, 1);
    ASSERT_NE(set.GetPointTrace(0), nullptr);
    EXPECT_EQ(set.GetPointTrace(0)->m_nWindowCount, 0);
    EXPECT_EQ(set.m_pVertexData, nullptr);

    Add(set); // Create and Initialize
    ePointTrace* t = set.GetPointTrace(0);
    ASSERT_EQ(t->m_nWindowCount, 3); // t = 0, 100, 200
    float back[4 * 3];
    ASSERT_TRUE(set.m_pVertexData->GetHardwareBuffer()->ReadData(0, sizeof(back), back));
    eVector4T<float> expect = set.PositionToLocal(1, t->m_arPositions[1]);
    EXPECT_FLOAT_EQ(back[4], expect.x);
    EXPECT_FLOAT_EQ(back[5], expect.y);
    EXPECT_FLOAT_EQ(back[7], 100.0f);
}

TEST_F(TraceSetTest, UploadCoversExactlyTheSlotRange)
{
    Probe set;
    int const traceSize = 8, vpp = 6, stride = 16;
    Prepare(set, 3, traceSize, 0);
    Add(set);
    set.SetCurTime(250.0f);
    ePointTrace a = Track(6, 0.0, 1.0, 0.0, 100.0), b = Track(10, 3.0, 0.5, 0.0, 100.0);
    set.AddPointTrace(&a);
    set.AddPointTrace(&b);
    eHardwareVertexBuffer* buffer = set.m_pVertexData->GetHardwareBuffer();
    ASSERT_EQ(buffer->GetSizeInBytes(), 3 * traceSize * vpp * stride);

    ePointTrace* t = set.GetPointTrace(1);
    int count = t->m_nWindowCount * vpp, offset = traceSize * vpp * stride * 1;
    std::vector<float> back((size_t)(traceSize * vpp * 4 * 2));
    ASSERT_TRUE(buffer->ReadData(offset, (int)back.size() * 4, back.data()));
    for (int k = 0; k < t->m_nWindowCount; ++k)
    {
        eVector4T<float> v = set.PositionToLocal(1, t->m_arPositions[t->m_nFirstIndex + k]);
        for (int c = 0; c < vpp; ++c)
        {
            float const* f = &back[(size_t)(k * vpp + c) * 4];
            EXPECT_EQ(std::memcmp(f, &v, 16), 0) << "position " << k << " corner " << c;
        }
    }
    // Beyond the window: the zero fill, in this slot and in the empty slot 2.
    for (size_t i = (size_t)count * 4; i < back.size(); ++i)
        ASSERT_EQ(back[i], 0.0f) << i;
}

TEST_F(TraceSetTest, LocalPositionsRebuildTheWorldWithinACentimetre)
{
    struct Case
    {
        eSceneMode mode;
        double lon, lat;
    };
    for (Case c : {Case{eSM_GLOBE, 116.4, 39.9}, Case{eSM_PLANE, 116.4, 39.9}})
    {
        Host::eScene scene(16, 16, c.mode, PJ_SPHERE_MERCATOR);
        Probe set;
        eVector3T<double> anchor(c.lon, c.lat, 0.0);
        set.SetSpatialRefType(1);
        set.SetPosition(anchor);
        set.Create(&scene.Camera(), 0.0, &scene.Canvas());
        eVector4T<double> p(c.lon + 0.0123, c.lat - 0.0071, 321.5, 42.0);
        eVector4T<float> local = set.PositionToLocal(1, p);
        EXPECT_LT(std::fabs(local.x) + std::fabs(local.y) + std::fabs(local.z), 3000.0f);
        EXPECT_EQ(local.w, 42.0f);
        eMatrix4T<double> frame(set.m_LocalMatrix);
        eVector4T<double> rel = frame * eVector4T<double>(local.x, local.y, local.z, 0.0);
        eVector4T<double> world = set.PositionToWorld(1, p);
        EXPECT_NEAR(set.m_vWorldPosition.x + rel.x, world.x, 0.01) << c.mode;
        EXPECT_NEAR(set.m_vWorldPosition.y + rel.y, world.y, 0.01) << c.mode;
        EXPECT_NEAR(set.m_vWorldPosition.z + rel.z, world.z, 0.01) << c.mode;
        if (c.mode == eSM_GLOBE)
        {
            eVector3T<double> w = eMathEngine::SphericalToCartesian(
                p.x * 0.017453292519943295, p.y * 0.017453292519943295, 6378137.0 + p.z);
            EXPECT_DOUBLE_EQ(world.x, w.x);
        }
        else
            EXPECT_EQ(world.z, 321.5);
    }
}

TEST_F(TraceSetTest, LocalKindHasNoGeographicPosition)
{
    Probe set;
    Host::ClearAssertReports();
    eVector4T<double> p(5.0, 6.0, 7.0, 8.0);
    ePoint2D geo = set.PositionToGeo(0, p);
    EXPECT_EQ(geo.x, 0.0);
    EXPECT_EQ(geo.y, 0.0);
    auto reports = Host::GetAssertReports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].expression, "false");
    EXPECT_EQ(set.PositionToGeo(1, p).x, 5.0);
    EXPECT_EQ(set.PositionToLocal(0, p).z, 7.0f);
}

TEST_F(TraceSetTest, HeadAndTailAppearAlongTheTrack)
{
    for (unsigned char geometry : {1, 0})
    {
        Probe set;
        Prepare(set, 4, 64, geometry);
        set.SetPointSize(8.0f);
        set.SetTraceTime(300.0f);
        set.SetPointColor(eVector4T<unsigned char>(0, 255, 0, 255));
        Add(set);
        // Eastwards along the equator, one degree per 100 s, about ten pixels a degree.
        m_scene->Camera().LookAt(0.0, 0.0, 2.0e6, 0.0, 0.0);
        ePointTrace track = Track(41, -20.0, 1.0, 0.0, 100.0);
        set.SetCurTime(1950.0f);
        set.AddPointTrace(&track);
        RecordFrame();
        auto at = [&](double lon)
        {
            eVector3T<double> w = eMathEngine::SphericalToCartesian(lon * 0.017453292519943295, 0.0,
                                                                    6378137.0 + 1000.0);
            eVector3T<double> s = m_scene->Camera().Project(w);
            return Pixel((int)std::lround(s.x), m_scene->Height() - 1 - (int)std::lround(s.y))[1];
        };
        // The head halfway between t = 1900 and 2000; the tail back to t = 1650.
        EXPECT_GT(at(-0.5), 200) << "head, geometry " << (int)geometry;
        EXPECT_GT(at(-2.0), 40) << "tail";
        EXPECT_LT(at(-2.0), at(-0.5) - 40) << "the tail fades";
        EXPECT_LT(at(0.0), 10) << "not yet reached";
        EXPECT_LT(at(2.0), 10) << "ahead of the head";
        EXPECT_LT(at(-4.5), 10) << "behind the tail";
        m_scene->Remove(&set);
        m_arSets.clear();
    }
}

TEST_F(TraceSetTest, InvisibleSetDrawsNothingAndKeepsItsClock)
{
    Probe set;
    Prepare(set, 2, 16);
    Add(set);
    ePointTrace track = Track(11, -5.0, 1.0, 0.0, 100.0);
    set.SetCurTime(500.0f);
    set.AddPointTrace(&track);
    RecordFrame(); // makes the technique
    EXPECT_EQ(set.GetCurTime(), 501.0f);
    set.m_bVisible = 0;
    Host::eRecorder::Get().Start();
    set.Render(&m_scene->Engine(), &m_scene->RenderSystem(), &m_scene->Camera(),
               &m_scene->Viewport());
    Host::eRecorder::Get().Stop();
    EXPECT_TRUE(Draws(Host::eRecorder::Get().Records()).empty());
    EXPECT_EQ(set.GetCurTime(), 501.0f);
    RecordFrame();
    for (int y = 0; y < m_scene->Height(); y += 4)
        for (int x = 0; x < m_scene->Width(); x += 4)
            ASSERT_LT(Pixel(x, y)[1], 10) << x << "," << y;
}

TEST_F(TraceSetTest, TextureLoadsFromAFileOrGivesNull)
{
    Probe set;
    eTexture* texture = set.CreateTexture(eSystem::GetWorkPath() + "Resources/Icons/wind.png");
    ASSERT_NE(texture, nullptr);
    EXPECT_NE(texture->GetTextureID(), 0u);
    EXPECT_GT(texture->GetWidth(), 0);
    EXPECT_EQ(texture->GetImageData(), nullptr); // the decoded pixels are freed
    delete texture;
    EXPECT_EQ(set.CreateTexture(eSystem::GetWorkPath() + "Resources/Icons/none.png"), nullptr);
}

TEST_F(TraceSetTest, CopiesShareTheTechniqueAndTheLastOneFreesIt)
{
    Probe set;
    Prepare(set, 2, 16);
    Add(set);
    ePointTrace track = Track(11, -5.0, 1.0, 0.0, 100.0);
    set.SetCurTime(500.0f);
    set.AddPointTrace(&track);
    RecordFrame(); // makes the technique
    {
        // A plain copy (not a probe) leaves the traces and buffers to the original.
        eRenderPointTraceSet copy(set);
    }
    // The original still queues and draws with its technique.
    auto records = RecordFrame();
    EXPECT_EQ(Of(records, eRecord::Queue).size(), 1u);
    EXPECT_FALSE(Draws(records).empty());
}

template <> struct CopySubject<eRenderTraceSet>
{
    static constexpr bool kSamePixels = true; // draws nothing of its own
    static constexpr bool kDraws = false; // draws nothing of its own
    static eRenderTraceSet* Make(KYR::Host::eScene&)
    {
        auto* set = new eRenderTraceSet();
        set->SetSpatialRefType(1);
        return set;
    }
};

template <> struct CopySubject<eRenderPointTraceSet>
{
    static constexpr bool kSamePixels = true; // the clock stands still
    static eRenderPointTraceSet* Make(KYR::Host::eScene&)
    {
        auto* set = new eRenderPointTraceSet();
        set->SetPoolSize(4);
        set->SetTraceSize(32);
        set->SetTraceTime(1500.0f);
        set->SetSpeedPerFrame(0.0f);
        set->SetPointSize(8.0f);
        eVector3T<double> anchor(0.0, 0.0, 0.0);
        set->SetSpatialRefType(1);
        set->SetPosition(anchor);
        set->SetCurTime(2000.0f);
        for (int k = 0; k < 3; ++k)
        {
            ePointTrace trace = Track(30, -30.0, 2.0, 0.0, 100.0, -20.0 + 20.0 * k);
            set->AddPointTrace(&trace); // uploaded by Initialize
        }
        return set;
    }
};

using TraceSets = ::testing::Types<eRenderTraceSet, eRenderPointTraceSet>;
INSTANTIATE_TYPED_TEST_SUITE_P(TraceSets, CopyIdiom, TraceSets);
