// List line trace sets: lists handed in from another thread, the slots the multi-draws
// cover, fore and back lines on screen, and the rules of the line pool.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eFile.h"
#include "eMathEngine.h"
#include "eRenderListLineTraceSet.h"
#include <atomic>
#include <cmath>
#include <map>
#include <thread>

using namespace KYR;
using KYR::Host::eRecord;

namespace
{

using Ranges = std::vector<std::pair<int, int>>;

class LineProbe : public eRenderListLineTraceSet
{
public:
    using eRenderListLineTraceSet::m_Lines;
    using eRenderTraceSet::m_pVertexData;
};

// Positions eastwards along a parallel: lon0 + i * step degrees at times t0 + i * dt.
void Fill(eTraceList& list, int n, double lon0, double step, double t0, double dt, double lat = 0.0)
{
    list.GetPositions().clear();
    for (int i = 0; i < n; ++i)
        list.GetPositions().push_back(eVector4T<double>(lon0 + i * step, lat, 1000.0, t0 + i * dt));
}

eTraceList* Make(eRenderListLineTraceSet& set, int n, double lon0, double t0, double dt = 100.0)
{
    eTraceList* list = set.CreateTraceList();
    Fill(*list, n, lon0, 1.0, t0, dt);
    return list;
}

// The (first, count) ranges of every multi-draw of a frame, in call order.
std::vector<Ranges> MultiDraws(std::vector<eRecord> const& records)
{
    std::vector<Ranges> out;
    for (auto const& r : records)
        if (r.kind == eRecord::Draw && r.op == "MultiDrawArrays")
        {
            EXPECT_EQ(r.mode, 3) << "line strips";
            out.emplace_back();
            for (size_t i = 0; i + 1 < r.values.size(); i += 2)
                out.back().emplace_back((int)r.values[i], (int)r.values[i + 1]);
        }
    return out;
}

class LineTraceSetTest : public EffectTest
{
protected:
    void Prepare(LineProbe& set, int pool, int traceSize)
    {
        set.SetPoolSize(pool);
        set.SetTraceSize(traceSize);
        set.SetTraceTime(200.0f);
        set.SetSpeedPerFrame(0.0f);
        eVector3T<double> anchor(0.0, 0.0, 0.0);
        set.SetSpatialRefType(1);
        set.SetPosition(anchor);
    }
    // Pixel of the last frame where a geographic point (at 1000 m) lands.
    std::vector<unsigned char> At(double lon, double lat)
    {
        eVector3T<double> w = eMathEngine::SphericalToCartesian(lon * eMathEngine::DEG_TO_RAD,
                                                                lat * eMathEngine::DEG_TO_RAD,
                                                                eMathEngine::EARTH_RADIUS + 1000.0);
        eVector3T<double> s = m_scene->Camera().Project(w);
        return Pixel((int)std::lround(s.x), m_scene->Height() - 1 - (int)std::lround(s.y));
    }
};

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

TEST_F(LineTraceSetTest, ListsFromAnotherThreadAreDrawnOnceAndRetired)
{
    // List i runs from t = i * kSpacing for 1.5 s; the clock moves 1 s a frame, so about
    // twenty lists start each frame and each is visible in at least one frame.
    int const kLists = 10000, kTraceSize = 4;
    double const kSpacing = 0.05;
    LineProbe set;
    Prepare(set, 64, kTraceSize);
    set.SetTraceTime(0.25f);
    set.SetCurTime(-0.5f);
    InScene inSet(*m_scene, &set);

    std::atomic<int> handed(0);
    std::thread producer(
        [&]()
        {
            for (int i = 0; i < kLists; ++i)
            {
                eTraceList* list = set.CreateTraceList();
                Fill(*list, 2, -5.0 + (i % 100) * 0.1, 0.5, i * kSpacing, 1.5);
                set.AddTraceList(list);
                handed.store(i + 1, std::memory_order_release);
            }
        });

    std::map<int, int> slotOf; // list -> the one slot it was drawn from
    std::vector<int> frames(kLists, 0);
    float clock = -0.5f;
    double const end = kLists * kSpacing + 3.0;
    for (int frame = 0; frame < 4 * kLists && clock < end; ++frame)
    {
        // The clock never passes a list that has not reached a line: the oldest waiting
        // one is at least `handed - waiting` (handed read first).
        int sent = handed.load(std::memory_order_acquire);
        int oldest = sent - set.GetTraceListCount();
        float next = clock + 1.0f;
        if (oldest < kLists && next > oldest * kSpacing)
            next = std::max(clock, (float)(oldest * kSpacing));
        clock = next;
        set.SetCurTime(clock);
        std::map<int, int> thisFrame;
        for (auto const& draw : MultiDraws(RecordFrame()))
            for (auto const& range : draw)
            {
                ASSERT_EQ(range.first % kTraceSize, 0);
                ASSERT_LT(range.first / kTraceSize, 63) << "the last slot stays unused";
                eLineTrace* line = set.m_Lines->m_LineTracePool[range.first / kTraceSize];
                int id = (int)std::lround(line->m_pTraceList->GetPositions()[0].w / kSpacing);
                ASSERT_TRUE(thisFrame.emplace(id, range.first).second) << "list " << id << " twice";
                auto bound = slotOf.emplace(id, range.first);
                ASSERT_EQ(bound.first->second, range.first) << "list " << id << " moved slots";
                ++frames[id];
            }
    }
    producer.join();
    for (int i = 0; i < kLists; ++i)
        ASSERT_GT(frames[i], 0) << "list " << i << " never drawn";
    EXPECT_EQ(set.GetTraceListCount(), 0);
    // Every list has expired: nothing is drawn, and the lines are all free.
    EXPECT_TRUE(MultiDraws(RecordFrame()).empty());
    EXPECT_TRUE(set.m_Lines->m_lstActiveLines.empty());
    EXPECT_LE(set.m_Lines->m_nPoolIndex, 63);
}

TEST_F(LineTraceSetTest, MultiDrawCoversExactlyTheLiveSlots)
{
    // Lists of 100 s steps at 0, 1, 2 degrees. At t = 250 with a 200 s tail a list from
    // t = 0 shows positions 0..3 (t = 300 is the first after the clock).
    int const ts = 16;
    {
        SCOPED_TRACE("pool not yet full");
        LineProbe set;
        Prepare(set, 8, ts);
        set.SetEnableBackLine(1);
        set.SetCurTime(250.0f);
        InScene inSet(*m_scene, &set);
        set.AddTraceList(Make(set, 6, 0.0, 0.0));
        set.AddTraceList(Make(set, 6, 1.0, 100.0)); // from t = 100: positions 0..2
        set.AddTraceList(Make(set, 6, 2.0, 200.0)); // from t = 200: positions 0..1
        RecordFrame();                              // binds
        auto draws = MultiDraws(RecordFrame());     // advances and draws
        Ranges live = {{0, 4}, {ts, 3}, {2 * ts, 2}};
        ASSERT_EQ(draws.size(), 2u) << "back and fore";
        EXPECT_EQ(draws[0], live);
        EXPECT_EQ(draws[1], live);
    }
    {
        SCOPED_TRACE("slots recycled after expiry");
        LineProbe set;
        Prepare(set, 4, ts); // slots 0..2 are used, slot 3 never
        set.SetCurTime(250.0f);
        InScene inSet(*m_scene, &set);
        set.AddTraceList(Make(set, 4, 0.0, 0.0));     // ends at t = 300
        set.AddTraceList(Make(set, 5, 1.0, 0.0));     // ends at t = 400
        set.AddTraceList(Make(set, 20, 2.0, 0.0));    // long
        set.AddTraceList(Make(set, 20, 3.0, 400.0));  // waits for a slot
        set.AddTraceList(Make(set, 20, -1.0, 400.0)); // waits for a slot
        RecordFrame();
        EXPECT_EQ(set.GetTraceListCount(), 2);
        Ranges three = {{0, 4}, {ts, 4}, {2 * ts, 4}};
        EXPECT_EQ(MultiDraws(RecordFrame()), std::vector<Ranges>{three});
        // At t = 650 the first two have expired; the waiting lists take slots 0 and 1 in
        // that order, and are drawn once advanced.
        set.SetCurTime(650.0f);
        RecordFrame();
        EXPECT_EQ(set.GetTraceListCount(), 0);
        set.SetCurTime(650.0f);
        auto draws = MultiDraws(RecordFrame());
        // The long list shows positions 4..7, the new ones (from t = 400) 0..3, in the
        // order the lines became active.
        Ranges live = {{2 * ts, 4}, {0, 4}, {ts, 4}};
        EXPECT_EQ(draws, std::vector<Ranges>{live});
    }
}

TEST_F(LineTraceSetTest, ForeLineLiesOnTheBackLineUpToTheHead)
{
    m_scene->Camera().LookAt(0.0, 0.0, 2.0e6, 0.0, 0.0);
    LineProbe set;
    Prepare(set, 4, 64);
    set.SetTraceTime(300.0f);
    set.SetEnableBackLine(1);
    set.SetBackColor(eVector4T<unsigned char>(0, 0, 255, 255));
    set.SetBackLineWidth(9.0f);
    set.SetForeColor(eVector4T<unsigned char>(255, 0, 0, 255));
    set.SetForeLineWidth(3.0f);
    set.SetForePath(eSystem::GetWorkPath() + "Resources/Icons/wind.png");
    set.SetCurTime(1950.0f);
    InScene inSet(*m_scene, &set);
    // Eastwards along the equator, one degree per 100 s: the head halfway between t = 1900
    // (-1 degree) and t = 2000 (0 degrees), the tail back to t = 1650.
    set.AddTraceList(Make(set, 41, -20.0, 0.0));
    RecordFrame();
    auto records = RecordFrame();

    // Uniforms of the two kinds, back first: colour, then the texture flag.
    std::vector<std::vector<double>> colors, flags;
    for (auto const& r : Of(records, eRecord::Uniform))
        if (r.uniform == "u_color")
            colors.push_back(r.values);
        else if (r.uniform == "u_textureEnabled")
            flags.push_back(r.values);
    ASSERT_EQ(colors.size(), 2u);
    EXPECT_EQ(colors[0], (std::vector<double>{0.0, 0.0, 1.0, 1.0}));
    EXPECT_EQ(colors[1], (std::vector<double>{1.0, 0.0, 0.0, 1.0}));
    EXPECT_EQ(flags, (std::vector<std::vector<double>>{{0.0}, {1.0}}));
    EXPECT_FALSE(Of(records, eRecord::BindTexture).empty()) << "the fore texture is bound";
    m_scene->Remove(&set);

    // Untextured, the colours reach the screen as they are.
    LineProbe plain;
    Prepare(plain, 4, 64);
    plain.SetTraceTime(300.0f);
    plain.SetEnableBackLine(1);
    plain.SetBackColor(eVector4T<unsigned char>(0, 0, 255, 255));
    plain.SetBackLineWidth(9.0f);
    plain.SetForeColor(eVector4T<unsigned char>(255, 0, 0, 255));
    plain.SetForeLineWidth(3.0f);
    plain.SetCurTime(1950.0f);
    InScene inPlain(*m_scene, &plain);
    plain.AddTraceList(Make(plain, 41, -20.0, 0.0));
    RecordFrame();
    RecordFrame();
    std::vector<unsigned char> head = At(-1.2, 0.0), tail = At(-2.5, 0.0);
    EXPECT_GT(head[0], 120) << "fore line near the head";
    EXPECT_GT(head[0], tail[0] + 20) << "fading along the tail";
    EXPECT_GT(At(-1.2, 0.3)[2], 100) << "back line beside the fore line";
    EXPECT_LT(At(-1.2, 0.3)[0], 40);
    for (double lon : {0.5, 2.0, -4.2})
    {
        std::vector<unsigned char> px = At(lon, 0.0);
        EXPECT_LT(px[0] + px[2], 30) << "nothing at " << lon;
    }
}

TEST_F(LineTraceSetTest, PoolRulesAndWhatStopsDrawing)
{
    {
        SCOPED_TRACE("a pool of one makes no line");
        LineProbe set;
        Prepare(set, 1, 8);
        InScene inSet(*m_scene, &set);
        set.AddTraceList(Make(set, 6, 0.0, 0.0));
        RecordFrame();
        EXPECT_EQ(set.GetTraceListCount(), 1);
        EXPECT_TRUE(set.m_Lines->m_LineTracePool.empty());
    }
    {
        SCOPED_TRACE("an empty list takes a slot for one frame");
        LineProbe set;
        Prepare(set, 4, 8);
        InScene inSet(*m_scene, &set);
        set.AddTraceList(set.CreateTraceList());
        RecordFrame();
        EXPECT_EQ(set.m_Lines->m_lstActiveLines.size(), 1u);
        RecordFrame();
        EXPECT_TRUE(set.m_Lines->m_lstActiveLines.empty());
        EXPECT_EQ(set.m_Lines->m_lstFreeLines.size(), 1u);
    }
    {
        SCOPED_TRACE("an expired list is recycled once another takes its line");
        LineProbe set;
        Prepare(set, 2, 8); // one usable slot
        set.SetCurTime(250.0f);
        InScene inSet(*m_scene, &set);
        eTraceList* first = Make(set, 6, 0.0, 0.0);
        first->SetSpatialRefType(0);
        set.AddTraceList(first);
        set.AddTraceList(Make(set, 6, 0.0, 1000.0));
        RecordFrame();
        EXPECT_EQ(set.GetTraceListCount(), 1) << "waits for the slot";
        set.SetCurTime(900.0f);
        RecordFrame();
        EXPECT_EQ(set.GetTraceListCount(), 0);
        eTraceList* reused = set.CreateTraceList();
        EXPECT_EQ(reused, first);
        EXPECT_TRUE(reused->GetPositions().empty());
        EXPECT_EQ(reused->GetSpatialRefType(), 0) << "the kind stays";
        set.AddTraceList(reused);
    }
    for (int which = 0; which < 2; ++which)
    {
        SCOPED_TRACE(which == 0 ? "opacity 0" : "both line kinds off");
        LineProbe set;
        Prepare(set, 4, 8);
        set.SetSpeedPerFrame(10.0f);
        set.SetCurTime(250.0f);
        if (which == 0)
            set.SetTransparent(0.0f);
        else
            set.SetEnableForeLine(0);
        InScene inSet(*m_scene, &set);
        set.AddTraceList(Make(set, 10, 0.0, 0.0));
        RecordFrame();
        auto records = RecordFrame();
        EXPECT_TRUE(MultiDraws(records).empty());
        EXPECT_EQ(set.GetCurTime(), 270.0f) << "the clock runs on";
        EXPECT_GT(set.m_Lines->m_LineTracePool[0]->m_nWindowCount, 0) << "lines still advance";
    }
}

template <> struct CopySubject<eRenderLineTraceSet>
{
    static constexpr bool kSamePixels = true;
    static constexpr bool kDraws = false; // the base holds no lines; the list set draws
    static eRenderLineTraceSet* Make(KYR::Host::eScene&)
    {
        auto* set = new eRenderLineTraceSet();
        set->SetSpatialRefType(1);
        set->SetForePath(eSystem::GetWorkPath() + "Resources/Icons/wind.png");
        set->SetBackPath(eSystem::GetWorkPath() + "Resources/Icons/wind.png");
        return set;
    }
};

template <> struct CopySubject<eRenderListLineTraceSet>
{
    static constexpr bool kSamePixels = true; // the clock stands still
    static eRenderListLineTraceSet* Make(KYR::Host::eScene& scene)
    {
        auto* set = new eRenderListLineTraceSet();
        set->SetPoolSize(8);
        set->SetTraceSize(32);
        set->SetTraceTime(2000.0f);
        set->SetSpeedPerFrame(0.0f);
        set->SetCurTime(2500.0f);
        set->SetEnableBackLine(1);
        set->SetForePath(eSystem::GetWorkPath() + "Resources/Icons/wind.png");
        eVector3T<double> anchor(0.0, 0.0, 0.0);
        set->SetSpatialRefType(1);
        set->SetPosition(anchor);
        for (int k = 0; k < 3; ++k)
        {
            eTraceList* list = set->CreateTraceList();
            Fill(*list, 30, -30.0, 2.0, 0.0, 100.0, -20.0 + 20.0 * k);
            set->AddTraceList(list);
        }
        // Lists bound in one frame are drawn from the next.
        scene.Add(set);
        scene.RenderFrame();
        scene.Remove(set);
        return set;
    }
};

using LineTraceSets = ::testing::Types<eRenderLineTraceSet, eRenderListLineTraceSet>;
INSTANTIATE_TYPED_TEST_SUITE_P(LineTraces, CopyIdiom, LineTraceSets);
