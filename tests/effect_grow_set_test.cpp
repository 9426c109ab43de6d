// Grow sets: the queue of colours filled from another thread and drained 1025 a frame, the
// ribbon vertices as the buffers hold them, ribbons that keep their width in pixels, regions
// whose triangles fill them exactly, and a boundary colour that shows inside its region.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eGrowShape.h"
#include "eHardwareBuffer.h"
#include "eMesh.h"
#include "eRenderLineGrowSet.h"
#include "eRenderRegionGrowSet.h"
#include "eTriangulator.h"
#include <atomic>
#include <cmath>
#include <cstring>
#include <thread>

using namespace KYR;
using KYR::Host::eRecord;

namespace
{

struct Vertex
{
    float p[4];
    signed char turn[4];
    float lengths[2];
    signed char signs[4];
};
static_assert(sizeof(Vertex) == 32, "ribbon vertex");

typedef eVector4T<unsigned char> Color;

template <typename Data> std::vector<unsigned char> ReadBack(Data* data, int first, int bytes)
{
    std::vector<unsigned char> out((size_t)bytes);
    EXPECT_TRUE(data->GetHardwareBuffer()->ReadData(first, bytes, out.data()));
    return out;
}

class LineProbe : public eRenderLineGrowSet
{
public:
    using eRenderGrowSet::m_pExtVertexData;
    using eRenderGrowSet::m_pIndexData;
    using eRenderGrowSet::m_pVertexData;

    std::vector<Vertex> Vertices(eGrowShape const* line) // where the set put the shape
    {
        std::vector<Vertex> v((size_t)line->m_nVertexCount);
        auto bytes = ReadBack(m_pVertexData.Get(), line->m_nFirstVertex * 32, (int)v.size() * 32);
        std::memcpy(v.data(), bytes.data(), bytes.size());
        return v;
    }
    std::vector<Color> Colors(int first, int count)
    {
        std::vector<Color> c((size_t)count);
        auto bytes = ReadBack(m_pExtVertexData.Get(), first * 4, count * 4);
        std::memcpy(c.data(), bytes.data(), bytes.size());
        return c;
    }
};

class RegionProbe : public eRenderRegionGrowSet
{
public:
    using eRenderGrowSet::m_pExtVertexData;
    using eRenderGrowSet::m_pIndexData;
    using eRenderGrowSet::m_pVertexData;

    std::vector<unsigned int> Indices(eGrowShape const* region)
    {
        std::vector<unsigned int> i((size_t)region->m_nIndexCount);
        auto bytes = ReadBack(m_pIndexData.Get(), region->m_nFirstIndex * 4, (int)i.size() * 4);
        std::memcpy(i.data(), bytes.data(), bytes.size());
        return i;
    }
    eVector4T<float> Position(int vertex)
    {
        eVector4T<float> p;
        auto bytes = ReadBack(m_pVertexData.Get(), vertex * 16, 16);
        std::memcpy(&p, bytes.data(), 16);
        return p;
    }
    Color ColorOf(int vertex)
    {
        auto bytes = ReadBack(m_pExtVertexData.Get(), vertex * 4, 4);
        return Color(bytes[0], bytes[1], bytes[2], bytes[3]);
    }
};

eGrowLine Line(std::vector<ePoint2D> const& points, float width, Color color)
{
    eGrowLine line;
    line.m_fWidth = width;
    line.m_cColor = color;
    for (ePoint2D const& p : points)
        line.m_arPositions.push_back(eVector4T<double>(p.x, p.y, 0.0, 0.0));
    return line;
}

template <typename Set> void Attach(Set& set, Host::eScene& scene, eVector3T<double> anchor)
{
    set.SetSpatialRefType(1);
    set.SetPosition(anchor);
    set.Create(&scene.Camera(), 0.0, &scene.Canvas());
}

eGrowRegion Region(std::vector<ePoint2D> const& points, Color color)
{
    eGrowRegion region;
    region.m_cColor = color;
    for (ePoint2D const& p : points)
        region.m_arPositions.push_back(eVector4T<double>(p.x, p.y, 0.0, 0.0));
    return region;
}

// An update's colour names its place in the stream of updates; alpha 255 tells it from the
// base colour, which is transparent.
Color Code(int i)
{
    return Color((unsigned char)(i & 255), (unsigned char)((i >> 8) & 255),
                 (unsigned char)(i >> 16), 255);
}

class GrowSetTest : public EffectTest
{
protected:
    void TearDown() override
    {
        for (eRenderable* set : m_arSets)
            m_scene->Remove(set);
        EffectTest::TearDown();
    }
    void Draw(eRenderable& set)
    {
        m_arSets.push_back(&set);
        m_scene->Add(&set);
    }
    // The set's frame outside the scene, hidden: the host may call Render on a hidden set,
    // which then applies its queue and draws nothing.
    void Frame(eRenderable& set)
    {
        set.m_bVisible = 0;
        set.Render(&m_scene->Engine(), &m_scene->RenderSystem(), &m_scene->Camera(),
                   &m_scene->Viewport());
    }
    // Rows lit (any channel above 60) in one column of the last frame.
    int LitRows(int x)
    {
        std::vector<unsigned char> px = m_scene->ReadPixels();
        int lit = 0;
        for (int y = 0; y < m_scene->Height(); ++y)
        {
            unsigned char const* p = &px[((size_t)y * m_scene->Width() + x) * 4];
            lit += std::max({p[0], p[1], p[2]}) > 60;
        }
        return lit;
    }
    std::vector<eRenderable*> m_arSets;
};

// Plane map: the local frame is the map's metres around the anchor, with no turn.
class PlaneGrowSetTest : public GrowSetTest
{
protected:
    void SetUp() override
    {
        m_scene.reset(new Host::eScene(96, 96, eSM_PLANE, PJ_PLATE_CARREE));
        ASSERT_TRUE(m_scene->IsReady()) << "no OpenGL context";
    }
};

} // namespace

TEST_F(PlaneGrowSetTest, RightAngleTurnGivesCornerSignsAnglesAndLengths)
{
    LineProbe set;
    set.SetPoolSize(16);
    eVector3T<double> anchor(0.0, 0.0, 0.0);
    set.SetPosition(anchor);
    set.Create(&m_scene->Camera(), 0.0, &m_scene->Canvas());
    eGrowLine straight = Line({{-500.0, -500.0}, {-500.0, 0.0}}, 2.0f, Color(1, 2, 3, 4));
    eGrowLine turn = Line({{0.0, 0.0}, {1000.0, 0.0}, {1000.0, 1000.0}}, 2.0f, Color(9, 9, 9, 9));
    ASSERT_TRUE(set.Add(&straight));
    ASSERT_TRUE(set.Add(&turn));
    eGrowLine* line = set.Get(1);
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->m_nFirstVertex, 4);
    EXPECT_EQ(line->m_nVertexCount, 8);
    EXPECT_EQ(line->m_nFirstIndex, 6);
    EXPECT_EQ(line->m_nIndexCount, 12);

    std::vector<Vertex> v = set.Vertices(line);
    // Point, turn bytes, lengths, along, angles: a left turn of 90 degrees is 126 x pi / 2,
    // 197.9, which truncates to 197 and wraps to -59 in the byte.
    struct Entry
    {
        float x, y;
        int turn[4];
        float from, to;
        int along, angleFrom, angleTo;
    } const expected[4] = {
        {0.0f, 0.0f, {126, 0, 126, 0}, 0.0f, 1000.0f, -1, 0, 0},
        {1000.0f, 0.0f, {126, 0, 0, 126}, 0.0f, 1000.0f, 1, 0, -59},
        {1000.0f, 0.0f, {126, 0, 0, 126}, 1000.0f, 2000.0f, -1, -59, 0},
        {1000.0f, 1000.0f, {0, 126, 0, 126}, 1000.0f, 2000.0f, 1, -59, 0},
    };
    for (int e = 0; e < 4; ++e)
        for (int side = 0; side < 2; ++side)
        {
            Vertex const& got = v[(size_t)(2 * e + side)];
            SCOPED_TRACE(testing::Message() << "entry " << e << ", side " << side);
            EXPECT_NEAR(got.p[0], expected[e].x, 1e-3f);
            EXPECT_NEAR(got.p[1], expected[e].y, 1e-3f);
            EXPECT_NEAR(got.p[3], 2000.0f, 1e-2f);
            for (int i = 0; i < 4; ++i)
                EXPECT_EQ(got.turn[i], expected[e].turn[i]);
            EXPECT_NEAR(got.lengths[0], expected[e].from, 1e-2f);
            EXPECT_NEAR(got.lengths[1], expected[e].to, 1e-2f);
            EXPECT_EQ(got.signs[0], expected[e].along);
            EXPECT_EQ(got.signs[1], side ? 1 : -1);
            EXPECT_EQ(got.signs[2], expected[e].angleFrom);
            EXPECT_EQ(got.signs[3], expected[e].angleTo);
        }
    std::vector<unsigned char> raw = ReadBack(set.m_pIndexData.Get(), 24, 48);
    std::vector<unsigned int> indices(12);
    std::memcpy(indices.data(), raw.data(), 48);
    EXPECT_EQ(indices, (std::vector<unsigned int>{4, 5, 6, 5, 6, 7, 8, 9, 10, 9, 10, 11}));
    EXPECT_EQ(set.Colors(0, 12)[11], Color(9, 9, 9, 9)); // the base colour fills the stream
    EXPECT_EQ(set.Colors(0, 12)[3], Color(1, 2, 3, 4));

    // A point's colour covers the segment ends that meet there: 2 vertices at the ends, 4
    // between; an index past the line changes nothing.
    Color red(255, 0, 0, 255);
    for (int index : {1, 2, 3, -1})
        set.Update(line, index, red);
    Frame(set);
    std::vector<Color> colours = set.Colors(4, 8);
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(colours[(size_t)i], i < 2 ? Color(9, 9, 9, 9) : red) << "vertex " << i;
}

TEST_F(GrowSetTest, RibbonKeepsItsWidthInPixelsAsTheCameraZooms)
{
    eRenderLineGrowSet set;
    Attach(set, *m_scene, eVector3T<double>(0.0, 0.0, 0.0));
    for (float width : {9.0f, 2.0f})
    {
        float lat = width > 5.0f ? 0.0f : -0.4f;
        std::vector<ePoint2D> points;
        for (int i = 0; i <= 40; ++i)
            points.push_back(ePoint2D(-20.0 + i, lat));
        eGrowLine line = Line(points, width, Color(255, 255, 255, 255));
        set.Add(&line);
    }
    Draw(set);
    for (double distance : {2.0e5, 1.0e6})
    {
        m_scene->Camera().LookAt(0.0, 0.0, distance, 0.0, 0.0);
        m_scene->RenderFrame();
        SCOPED_TRACE(testing::Message() << "distance " << distance);
        // The wide line passes the centre, the thin one 0.4 degrees south of it.
        EXPECT_NEAR(LitRows(m_scene->Width() / 2), 9 + 2, 1);
    }
}

TEST_F(GrowSetTest, FrameSendsTheConstantsThenEachLinesColourWidthAndEdge)
{
    LineProbe set;
    Attach(set, *m_scene, eVector3T<double>(0.0, 0.0, 0.0));
    eGrowLine thin = Line({{0.0, 0.0}, {1.0, 1.0}, {2.0, 1.0}}, 2.0f, Color(255, 0, 51, 255));
    eGrowLine wide = Line({{0.0, 2.0}, {3.0, 2.0}}, 5.0f, Color(0, 0, 0, 255));
    set.Add(&thin);
    set.Add(&wide);
    set.SetTransparent(0.5f);
    Draw(set);
    std::vector<eRecord> all = RecordFrame();
    // The world's size in metres over the resolution, as degrees of arc on the globe.
    double pixel = 40030198.0419408 / m_scene->Engine().GetRenderResolution(1) /
                   (6378137.0 * 0.017453292519943295);
    std::vector<std::string> names;
    std::vector<double> values;
    for (eRecord const& r : Of(all, eRecord::Uniform))
        if (r.op == "Uniform1f")
        {
            names.push_back(r.uniform);
            values.push_back(r.values[0]);
        }
    std::vector<std::string> const order = {
        "u_positionKind", "u_streamWeight", "u_feather",     "u_dashLength", "u_gapLength",
        "u_dashOffset",   "u_miterLimit",   "u_opacity",     "u_width",      "u_lineOpacity",
        "u_edge",         "u_width",        "u_lineOpacity", "u_edge"};
    ASSERT_EQ(names.size(), order.size());
    std::vector<double> const expected = {0,   1,         1, 0,           0,         0, 5,
                                          0.5, 2 * pixel, 1, 0.6 * pixel, 5 * pixel, 1, pixel};
    for (size_t i = 0; i < order.size(); ++i)
    {
        if (order[i] != "u_positionKind") // a constant the program does not read
        {
            EXPECT_EQ(names[i], order[i]) << i;
        }
        EXPECT_NEAR(values[i], expected[i], 1e-6 * std::max(1.0, expected[i])) << order[i];
    }
    std::vector<eRecord> colours;
    for (eRecord const& r : Of(all, eRecord::Uniform))
        if (r.uniform == "u_color")
            colours.push_back(r);
    ASSERT_EQ(colours.size(), 2u);
    EXPECT_NEAR(colours[0].values[2], 0.2, 1e-6);
    std::vector<eRecord> draws = Of(all, eRecord::Draw);
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0].count, 12);
    EXPECT_EQ(draws[1].count, 6);
    EXPECT_EQ(draws[1].first, 48); // bytes: after the first line's 12 indices

    // Fully transparent: nothing is drawn, but queued colours still go in.
    set.SetTransparent(0.0f);
    Color red(255, 0, 0, 255);
    set.Update(set.Get(1), 0, red);
    EXPECT_TRUE(Of(RecordFrame(), eRecord::Draw).empty());
    EXPECT_EQ(set.Colors(set.Get(1)->m_nFirstVertex, 1)[0], red);
}

TEST_F(GrowSetTest, RemoveAllDropsQueuedColoursAndNewLinesGoAfterTheOldOnes)
{
    LineProbe set;
    Attach(set, *m_scene, eVector3T<double>(0.0, 0.0, 0.0));
    eGrowLine line = Line({{0.0, 0.0}, {1.0, 0.0}}, 2.0f, Color(1, 1, 1, 1));
    set.Add(&line);
    Color red(255, 0, 0, 255);
    set.Update(set.Get(0), 0, red);
    set.RemoveAll();
    EXPECT_EQ(set.GetCount(), 0);
    EXPECT_EQ(set.Get(0), nullptr);
    Frame(set); // the record for the deleted line is gone with it
    EXPECT_EQ(set.Colors(0, 1)[0], Color(1, 1, 1, 1));
    set.Add(&line);
    EXPECT_EQ(set.Get(0)->m_nFirstVertex, 4);
    EXPECT_EQ(set.Get(0)->m_nFirstIndex, 6);
    eGrowLine single = Line({{0.0, 0.0}}, 2.0f, Color(1, 1, 1, 1));
    EXPECT_FALSE(set.Add(&single));
    EXPECT_EQ(set.GetCount(), 1);
}

// A producer on another thread queues 100,000 colours through a copy of the set, which shares
// the queue, while frames run, most of them hidden. Update i colours point i of all the
// lines' points in order, with a colour naming i: after each frame the coloured points must be
// exactly the first ones, each with its own colour, and never more than 1025 new ones.
TEST_F(GrowSetTest, ThreadedUpdatesAllArriveInOrderAtMost1025AFrameHiddenOrNot)
{
    int const lines = 100, points = 1000, total = lines * points;
    LineProbe set;
    set.SetPoolSize(total);
    Attach(set, *m_scene, eVector3T<double>(0.0, 0.0, 0.0));
    for (int l = 0; l < lines; ++l)
    {
        eGrowLine line;
        for (int p = 0; p < points; ++p)
            line.m_arPositions.push_back(eVector4T<double>(p * 0.01, l * 0.1, 0.0, 0.0));
        ASSERT_TRUE(set.Add(&line));
    }
    Draw(set);
    std::vector<eGrowLine*> targets;
    for (int l = 0; l < lines; ++l)
        targets.push_back(set.Get(l));

    std::atomic<bool> done{false};
    eRenderLineGrowSet producerSide(set);
    std::thread producer(
        [&]()
        {
            for (int i = 0; i < total; ++i)
            {
                Color c = Code(i);
                producerSide.Update(targets[(size_t)(i / points)], i % points, c);
            }
            done = true;
        });

    // Whether every vertex of point i (of all the lines' points in order) shows `c`.
    // Vertices of point i of all the lines' points in order: they follow one another.
    auto firstVertex = [&](int i)
    {
        int p = i % points;
        return (i / points) * (points - 1) * 4 + (p == 0 ? 0 : 4 * p - 2);
    };
    // Points are written once each and never undone, so below `from` all stay as the last
    // frame found them: the new prefix runs on from there, and nothing just past it is
    // coloured. Only that stretch of the stream is read.
    auto applied = [&](int from)
    {
        int end = std::min(total, from + 3 * 1025), base = firstVertex(from);
        std::vector<Color> stream = set.Colors(base, firstVertex(end - 1) + 4 - base);
        auto shows = [&](int i, Color c)
        {
            int p = i % points, first = firstVertex(i) - base;
            for (int v = first; v < first + (p == 0 || p == points - 1 ? 2 : 4); ++v)
                if (stream[(size_t)v] != c)
                    return false;
            return true;
        };
        int count = from;
        while (count < end && shows(count, Code(count)))
            ++count;
        for (int i = count; i < end; ++i)
            if (!shows(i, Color()))
            {
                ADD_FAILURE() << "point " << i << " is coloured while " << count << " are";
                break;
            }
        return count;
    };
    int before = 0, frames = 0;
    bool producerDone = false;
    while (before < total && frames < 1000)
    {
        producerDone = done;
        set.m_bVisible = frames % 25 == 0;
        if (set.m_bVisible)
            m_scene->RenderFrame();
        else
            Frame(set); // the scene skips hidden sets; the host may still call Render
        ++frames;
        int now = applied(before);
        ASSERT_GE(now, before);
        EXPECT_LE(now - before, 1025);
        if (producerDone) // everything is queued: each frame takes the full 1025
        {
            EXPECT_EQ(now - before, std::min(1025, total - before));
        }
        before = now;
    }
    producer.join();
    EXPECT_EQ(before, total);
}

TEST_F(PlaneGrowSetTest, ConcaveRegionTrianglesCoverItsAreaExactly)
{
    RegionProbe set;
    set.SetPoolSize(64);
    eVector3T<double> anchor(0.0, 0.0, 0.0);
    set.SetPosition(anchor);
    set.Create(&m_scene->Camera(), 0.0, &m_scene->Canvas());
    // An "E", a square ring given closed, and a square with a square hole as one ring that
    // runs round the hole the other way along a seam.
    std::vector<ePoint2D> e = {{0, 0},     {300, 0},   {300, 100}, {100, 100},
                               {100, 200}, {250, 200}, {250, 300}, {100, 300},
                               {100, 400}, {300, 400}, {300, 500}, {0, 500}};
    std::vector<ePoint2D> closed = {{0, 0}, {100, 0}, {100, 100}, {0, 100}, {0, 0}};
    std::vector<ePoint2D> holed = {{0, 0},     {400, 0},   {400, 400}, {0, 400},   {0, 0},
                                   {100, 100}, {100, 300}, {300, 300}, {300, 100}, {100, 100}};
    struct Case
    {
        std::vector<ePoint2D> const* ring;
        int vertices;
        double area;
    } const cases[] = {{&e, 12, 300.0 * 500 - 2 * 200.0 * 100 - 50.0 * 100},
                       {&closed, 4, 100.0 * 100},
                       {&holed, 10, 400.0 * 400 - 200.0 * 200}};
    for (Case const& c : cases)
    {
        eGrowRegion region = Region(*c.ring, Color(9, 9, 9, 9));
        ASSERT_TRUE(set.Add(&region));
        eGrowRegion* added = set.Get(set.GetCount() - 1);
        SCOPED_TRACE(testing::Message() << added->m_arPositions.size() << " points");
        EXPECT_EQ(added->m_nVertexCount, c.vertices);
        std::vector<unsigned int> idx = set.Indices(added);
        ASSERT_EQ(idx.size() % 3, 0u);
        double sum = 0.0, unsigned_ = 0.0;
        for (size_t t = 0; t < idx.size(); t += 3)
        {
            eVector4T<float> a = set.Position((int)idx[t]), b = set.Position((int)idx[t + 1]),
                             d = set.Position((int)idx[t + 2]);
            for (unsigned int k = 0; k < 3; ++k)
                EXPECT_LT(idx[t + k] - (unsigned int)added->m_nFirstVertex,
                          (unsigned int)c.vertices);
            double area = 0.5 * ((b.x - a.x) * (d.y - a.y) - (d.x - a.x) * (b.y - a.y));
            sum += area;
            unsigned_ += std::fabs(area);
            EXPECT_EQ(a.w, 1.0f);
        }
        EXPECT_NEAR(unsigned_, c.area, 1e-6 * c.area) << "covered once, no gap";
        EXPECT_NEAR(std::fabs(sum), c.area, 1e-6 * c.area) << "no triangle folds over another";
    }
    // The closed square's repeat has no vertex; its index still passes and colours the
    // vertex after the square's last, the holed square's first.
    Color red(255, 0, 0, 255);
    set.Update(set.Get(1), 4, red);
    Frame(set);
    EXPECT_EQ(set.ColorOf(set.Get(2)->m_nFirstVertex), red);
    EXPECT_EQ(set.ColorOf(set.Get(1)->m_nFirstVertex + 3), Color(9, 9, 9, 9));
}

TEST_F(PlaneGrowSetTest, UpdatedBoundaryColourShowsInsideTheRegionNearItsPoint)
{
    eRenderRegionGrowSet set;
    eVector3T<double> anchor(0.0, 0.0, 0.0);
    set.SetPosition(anchor);
    m_scene->Camera().LookAtMap(0.0, 0.0, 4.0e6, 0.0, 0.0);
    set.Create(&m_scene->Camera(), 0.0, &m_scene->Canvas());
    // A "U" in map metres, open to the north, 1000 km across.
    std::vector<ePoint2D> u = {{-5e5, -5e5}, {5e5, -5e5},  {5e5, 5e5},  {2e5, 5e5},
                               {2e5, -2e5},  {-2e5, -2e5}, {-2e5, 5e5}, {-5e5, 5e5}};
    eGrowRegion region = Region(u, Color(128, 128, 128, 255));
    set.Add(&region);
    Draw(set);
    Color red(255, 0, 0, 255);
    set.Update(set.Get(0), 2, red); // the north-east corner
    m_scene->RenderFrame();
    auto at = [&](double x, double y)
    {
        eVector3T<double> w = m_scene->Camera().Project(eVector3T<double>(x, y, 0.0));
        return Pixel((int)w.x, m_scene->Height() - 1 - (int)w.y);
    };
    std::vector<unsigned char> nearCorner = at(4.4e5, 4.4e5), farCorner = at(-4.4e5, 4.4e5);
    std::vector<unsigned char> gap = at(0.0, 3e5);
    EXPECT_GT(nearCorner[0], nearCorner[1] + 60) << "red near the recoloured point";
    EXPECT_NEAR(farCorner[0], farCorner[1], 4) << "grey at the other arm";
    EXPECT_GT(farCorner[0], 100);
    EXPECT_LT(gap[0] + gap[1] + gap[2], 30) << "the notch is not filled";
}

template <> struct CopySubject<eRenderLineGrowSet>
{
    static constexpr bool kSamePixels = true;
    static eRenderLineGrowSet* Make(KYR::Host::eScene& scene)
    {
        auto* set = new eRenderLineGrowSet();
        Attach(*set, scene, eVector3T<double>(0.0, 0.0, 0.0));
        eGrowLine line =
            Line({{-40.0, -10.0}, {0.0, 20.0}, {40.0, -10.0}}, 6.0f, Color(200, 200, 200, 255));
        set->Add(&line);
        Color red(255, 0, 0, 255);
        set->Update(set->Get(0), 1, red);
        return set;
    }
};

template <> struct CopySubject<eRenderRegionGrowSet>
{
    static constexpr bool kSamePixels = true;
    static eRenderRegionGrowSet* Make(KYR::Host::eScene& scene)
    {
        auto* set = new eRenderRegionGrowSet();
        Attach(*set, scene, eVector3T<double>(0.0, 0.0, 0.0));
        eGrowRegion region =
            Region({{-40, -30}, {40, -30}, {0, 0}, {40, 30}, {-40, 30}}, Color(200, 200, 200, 255));
        set->Add(&region);
        Color blue(0, 0, 255, 255);
        set->Update(set->Get(0), 0, blue);
        return set;
    }
};

using GrowSetTypes = ::testing::Types<eRenderLineGrowSet, eRenderRegionGrowSet>;
INSTANTIATE_TYPED_TEST_SUITE_P(GrowSets, CopyIdiom, GrowSetTypes);
