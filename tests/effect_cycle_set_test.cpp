// Cycle sets: pulses that show only between their birth and death, stores that only grow,
// and the two-float world positions of the world variant.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eHardwareBuffer.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eRenderWorldPointCycleSet.h"
#include <cmath>
#include <cstring>

using namespace KYR;
using KYR::Host::eRecord;

namespace
{

template <typename Set> class Probe : public Set
{
public:
    using Set::m_pLifeData;
    using Set::m_pVertexData;
};

eCyclePoint Pulse(double lon, double lat, double birth, unsigned char red, float size = 40.0f)
{
    eCyclePoint p;
    p.m_Position = eVector4T<double>(lon, lat, 0.0, birth);
    p.m_fSize = size;
    p.m_Color = eVector4T<unsigned char>(red, 40, 20, 255);
    return p;
}

// Anchors the set at (0, 0) under the scene's camera: the quads are converted as they are
// added, so the anchor must stand first.
template <typename Set> void Prepare(Set& set, KYR::Host::eScene& scene, float span)
{
    eVector3T<double> anchor(0.0, 0.0, 0.0);
    set.SetSpatialRefType(1);
    set.SetPosition(anchor);
    set.SetTraceTime(span);
    set.SetSpeedPerFrame(0.0f);
    set.Create(&scene.Camera(), 0.0, &scene.Canvas());
}

std::vector<unsigned char> ReadBack(eVertexData* data, int bytes)
{
    std::vector<unsigned char> out((size_t)bytes);
    eHardwareVertexBuffer* buffer = data ? data->GetHardwareBuffer() : nullptr;
    if (!buffer || !buffer->ReadData(0, bytes, out.data()))
        out.clear();
    return out;
}

int DrawnVertices(std::vector<eRecord> const& records)
{
    int n = 0;
    for (auto const& r : records)
        if (r.kind == eRecord::Draw && r.op == "glDrawArrays")
            n += r.count;
    return n;
}

} // namespace

TEST_F(EffectTest, CyclePulseShowsOnlyBetweenBirthAndDeath)
{
    Probe<eRenderPointCycleSet> local;
    Probe<eRenderWorldPointCycleSet> world;
    for (eRenderPointCycleSet* set : {(eRenderPointCycleSet*)&local, (eRenderPointCycleSet*)&world})
    {
        Prepare(*set, *m_scene, 200.0f);
        eCyclePoint p = Pulse(0.0, 0.0, 100.0, 255);
        set->AddCyclePoint(&p);
        m_scene->Add(set);
        // Before its birth, early in its life, and after its death at 300.
        std::pair<float, bool> const clock[] = {{99.0f, false}, {130.0f, true}, {301.0f, false}};
        for (auto const& [t, shown] : clock)
        {
            set->SetCurTime(t);
            m_scene->RenderFrame();
            std::vector<unsigned char> centre = Pixel(48, 48);
            EXPECT_EQ(centre[0] > 120 && centre[1] < 100, shown)
                << set->GetType() << " at " << t << ": " << (int)centre[0];
        }
        m_scene->Remove(set);
    }
}

TEST_F(EffectTest, CycleStoresGrowAndKeepWrittenQuads)
{
    Probe<eRenderPointCycleSet> set;
    Prepare(set, *m_scene, 200.0f);
    eCyclePoint a = Pulse(0.0, 0.0, 100.0, 200, 300.0f), b = Pulse(5.0, 0.0, 150.0, 100);
    set.AddCyclePoint(&a);
    set.AddCyclePoint(&b);
    m_scene->Add(&set);
    set.SetCurTime(120.0f);
    EXPECT_EQ(DrawnVertices(RecordFrame()), 12);
    int const quads = 12 * 24;
    std::vector<unsigned char> before = ReadBack(set.m_pVertexData, quads);
    ASSERT_EQ(before.size(), (size_t)quads);
    // The size byte wraps: 300 truncates to 44.
    EXPECT_EQ(before[18], 44);
    EXPECT_EQ((signed char)before[16], -1);
    EXPECT_EQ((signed char)before[5 * 24 + 17], 1);

    // A later span leaves the written deaths alone; a point added now waits for a reset.
    set.SetTraceTime(5000.0f);
    eCyclePoint c = Pulse(-5.0, 0.0, 110.0, 50);
    set.AddCyclePoint(&c);
    EXPECT_EQ(DrawnVertices(RecordFrame()), 12);
    set.Reset(nullptr);
    EXPECT_EQ(DrawnVertices(RecordFrame()), 18);

    std::vector<unsigned char> after = ReadBack(set.m_pVertexData, 18 * 24);
    ASSERT_EQ(after.size(), (size_t)18 * 24);
    EXPECT_EQ(std::memcmp(before.data(), after.data(), (size_t)quads), 0);
    std::vector<unsigned char> lives = ReadBack(set.m_pLifeData, 18 * 4);
    ASSERT_EQ(lives.size(), (size_t)18 * 4);
    float death[18];
    std::memcpy(death, lives.data(), sizeof(death));
    EXPECT_EQ(death[0], 300.0f);
    EXPECT_EQ(death[11], 350.0f);
    EXPECT_EQ(death[12], 5110.0f);
}

TEST_F(EffectTest, WorldCyclePositionSplitKeepsCentimetres)
{
    Probe<eRenderWorldPointCycleSet> set;
    Prepare(set, *m_scene, 200.0f);
    eCyclePoint p = Pulse(116.4074, 39.9042, 100.0, 255);
    p.m_Position.z = 1234.5;
    set.AddCyclePoint(&p);
    m_scene->Add(&set);
    m_scene->RenderFrame();
    std::vector<unsigned char> back = ReadBack(set.m_pVertexData, 44);
    ASSERT_EQ(back.size(), 44u);
    float head[3], high[3], low[3];
    std::memcpy(head, back.data(), 12);
    std::memcpy(high, back.data() + 20, 12);
    std::memcpy(low, back.data() + 32, 12);
    eVector4T<double> w = set.PositionToWorld(1, p.m_Position);
    double const expect[3] = {w.x, w.y, w.z};
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_NEAR((double)high[i] + (double)low[i], expect[i], 0.01) << i;
        EXPECT_GT(std::fabs(expect[i] - (double)high[i]), 0.0) << "low part carries nothing";
    }
    EXPECT_FLOAT_EQ(head[0], (float)(116.4074 * eMathEngine::DEG_TO_RAD));
    EXPECT_FLOAT_EQ(head[1], (float)(39.9042 * eMathEngine::DEG_TO_RAD));
    EXPECT_EQ(head[2], 100.0f);
}

template <> struct CopySubject<eRenderCycleSet>
{
    static constexpr bool kSamePixels = true;
    static constexpr bool kDraws = false; // draws nothing of its own
    static eRenderCycleSet* Make(KYR::Host::eScene&) { return new eRenderCycleSet(); }
};

template <typename Set> struct CyclePulses
{
    static constexpr bool kSamePixels = true; // the clock stands still
    static Set* Make(KYR::Host::eScene& scene)
    {
        auto* set = new Set();
        Prepare(*set, scene, 400.0f);
        set->SetCurTime(150.0f);
        for (int k = 0; k < 3; ++k)
        {
            eCyclePoint p = Pulse(-20.0 + 20.0 * k, 10.0 * k, 100.0, 255);
            set->AddCyclePoint(&p);
        }
        return set;
    }
};
template <> struct CopySubject<eRenderPointCycleSet> : CyclePulses<eRenderPointCycleSet>
{
};
template <> struct CopySubject<eRenderWorldPointCycleSet> : CyclePulses<eRenderWorldPointCycleSet>
{
};

using CycleSets =
    ::testing::Types<eRenderCycleSet, eRenderPointCycleSet, eRenderWorldPointCycleSet>;
INSTANTIATE_TYPED_TEST_SUITE_P(CycleSets, CopyIdiom, CycleSets);
