// Cube sets: the ring of slots and its uploads, the prism's vertices and indices as the
// buffers hold them, the growth, the frame standing on the ground, and the lit pixels.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eGeometry.h"
#include "eHardwareBuffer.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eRenderListCubeSet.h"
#include "eTriangulator.h"
#include <cmath>
#include <cstring>

using namespace KYR;
using KYR::Host::eRecord;

namespace
{

struct Vertex
{
    float p[3], n[3], t[2];
    unsigned char c[4];
};
static_assert(sizeof(Vertex) == 36, "vertex record");

class Probe : public eRenderListCubeSet
{
public:
    using eRenderCubeSet::m_matLocal;
    using eRenderListCubeSet::BuildPrism;
    using eRenderListCubeSet::CreateBuffers;
    using eRenderListCubeSet::m_nCount;
    using eRenderListCubeSet::m_nCursor;
    using eRenderListCubeSet::m_pIndexData;
    using eRenderListCubeSet::m_pVertexData;

    std::vector<Vertex> Vertices(int slot)
    {
        std::vector<Vertex> v(21);
        EXPECT_TRUE(m_pVertexData->GetHardwareBuffer()->ReadData(slot * 756, 756, v.data()));
        return v;
    }
    std::vector<unsigned int> Indices(int slot)
    {
        std::vector<unsigned int> i(30);
        EXPECT_TRUE(m_pIndexData->GetHardwareBuffer()->ReadData(slot * 120, 120, i.data()));
        return i;
    }
};

// Builds its footprint counter-clockwise, the winding the set's own ring never has.
class CounterClockwiseProbe : public Probe
{
public:
    unsigned char UpdateVertexBuffer(int slot, eCubePoint* point) override
    {
        eVector4T<float> c = PositionToLocal(m_nSpatialRefType, point->m_vPosition);
        float r = point->m_fRadius;
        ePoint2D const ring[5] = {ePoint2D(c.x - r, c.y - r), ePoint2D(c.x + r, c.y - r),
                                  ePoint2D(c.x + r, c.y + r), ePoint2D(c.x - r, c.y + r),
                                  ePoint2D(c.x - r, c.y - r)};
        BuildPrism(slot, ring, c.z, c.z + point->m_fHeight, point->m_cTopColor,
                   point->m_cBottomColor);
        return 1;
    }
};

eCubePoint Prism(double x, double y, double z, float r, float h)
{
    eCubePoint p;
    p.m_vPosition = eVector4T<double>(x, y, z, 0.0);
    p.m_fRadius = r;
    p.m_fHeight = h;
    p.m_cTopColor = eVector4T<unsigned char>(200, 120, 40, 255);
    p.m_cBottomColor = eVector4T<unsigned char>(20, 40, 60, 255);
    return p;
}

eVector3T<double> World(double lon, double lat, double h)
{
    return eMathEngine::SphericalToCartesian(lon * eMathEngine::DEG_TO_RAD,
                                             lat * eMathEngine::DEG_TO_RAD,
                                             eMathEngine::EARTH_RADIUS + h);
}

std::vector<eRecord> Named(std::vector<eRecord> const& all, std::string const& name)
{
    std::vector<eRecord> out;
    for (auto const& r : all)
        if (r.kind == eRecord::Uniform && r.uniform == name)
            out.push_back(r);
    return out;
}

std::vector<eRecord> ElementDraws(std::vector<eRecord> const& all)
{
    std::vector<eRecord> out;
    for (auto const& r : all)
        if (r.kind == eRecord::Draw && r.op == "glDrawElements")
            out.push_back(r);
    return out;
}

eVector3T<float> V3(float const* f)
{
    return eVector3T<float>(f[0], f[1], f[2]);
}

// One prism's block as read back: every face wound and lit outward from the centre.
void ExpectOutwardPrism(std::vector<Vertex> const& v, std::vector<unsigned int> const& idx,
                        int slot, eVector3T<float> centre, float r, float top)
{
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_FLOAT_EQ(v[i].p[2], top);
        EXPECT_EQ(V3(v[i].n), eVector3T<float>(0, 0, 1));
        EXPECT_EQ(v[i].t[1], 1.0f);
    }
    for (int k = 0; k < 4; ++k)
    {
        Vertex const* q = &v[5 + 4 * k];
        eVector3T<float> n = V3(q[0].n), mid = (V3(q[0].p) + V3(q[3].p)) * 0.5f;
        eVector3T<float> out = mid - centre;
        out.z = 0.0f;
        EXPECT_NEAR(n.Dot(out) / r, 1.0f, 1e-5f) << "side " << k << " faces outward";
        EXPECT_EQ(q[0].t[1], 1.0f);
        EXPECT_EQ(q[1].t[1], 0.0f);
        EXPECT_EQ(q[0].c[0], 200);
        EXPECT_EQ(q[1].c[0], 20);
    }
    unsigned int first = (unsigned int)slot * 21u;
    for (int t = 0; t < 10; ++t)
    {
        unsigned int a = idx[3 * t] - first, b = idx[3 * t + 1] - first, c = idx[3 * t + 2] - first;
        ASSERT_TRUE(a < 21 && b < 21 && c < 21) << "triangle " << t;
        eVector3T<float> pa = V3(v[a].p), face = (V3(v[b].p) - pa).Cross(V3(v[c].p) - pa);
        EXPECT_GT(face.Dot(V3(v[a].n)), 0.0f) << "triangle " << t << " is seen from outside";
    }
}

class CubeSetTest : public EffectTest
{
protected:
    void TearDown() override
    {
        for (eRenderable* set : m_arSets)
            m_scene->Remove(set);
        EffectTest::TearDown();
    }
    void Add(eRenderable& set)
    {
        m_arSets.push_back(&set);
        m_scene->Add(&set);
    }
    std::vector<eRenderable*> m_arSets;
};

} // namespace

TEST_F(CubeSetTest, RingPutsNewPrismsAtTheCursorAndRewritesOnlyTheirBlocks)
{
    Probe set;
    set.SetPoolSize(3);
    for (int i = 0; i < 3; ++i)
    {
        eCubePoint p = Prism(i * 1000.0, 0.0, 0.0, 100.0f, 1000.0f * (i + 1));
        EXPECT_TRUE(set.AddCubePoint(&p)); // no buffers yet: waits in its slot
    }
    EXPECT_EQ(set.m_nCount, 3);
    Add(set);
    EXPECT_EQ(set.m_nCursor, 3);
    EXPECT_FLOAT_EQ(set.Vertices(2)[0].p[2], 3000.0f); // Initialize uploaded the waiting ones
    EXPECT_EQ(set.Indices(2)[29] / 21, 2u);
    // A marker over slot 2's blocks shows whether anything writes there again.
    std::vector<unsigned char> marker(756, 0xA5);
    set.m_pVertexData->GetHardwareBuffer()->WriteData(2 * 756, 756, marker.data());
    set.m_pIndexData->GetHardwareBuffer()->WriteData(2 * 120, 120, marker.data());

    for (float h : {4000.0f, 5000.0f})
    {
        eCubePoint p = Prism(0.0, 5000.0, 0.0, 100.0f, h);
        EXPECT_TRUE(set.AddCubePoint(&p));
    }
    EXPECT_EQ(set.m_nCursor, 2);
    EXPECT_EQ(set.m_nCount, 3);
    EXPECT_FLOAT_EQ(set.Vertices(0)[0].p[2], 4000.0f);
    EXPECT_FLOAT_EQ(set.Vertices(1)[0].p[2], 5000.0f);
    EXPECT_EQ(set.Indices(1)[0] / 21, 1u);
    std::vector<unsigned char> vertices(756), indices(120);
    set.m_pVertexData->GetHardwareBuffer()->ReadData(2 * 756, 756, vertices.data());
    set.m_pIndexData->GetHardwareBuffer()->ReadData(2 * 120, 120, indices.data());
    EXPECT_EQ(vertices, marker);
    EXPECT_TRUE(std::equal(indices.begin(), indices.end(), marker.begin()));
    ASSERT_NE(set.GetCubePoint(0), nullptr);
    EXPECT_EQ(set.GetCubePoint(0)->m_fHeight, 4000.0f);
    EXPECT_EQ(set.GetCubePoint(0)->m_bAdded, 1);
}

TEST_F(CubeSetTest, DrawsCountOnlyWhatTheCursorHasPassed)
{
    Probe set;
    set.SetPoolSize(3);
    Add(set); // initialised empty: the cursor stays at 0
    for (int i = 0; i < 2; ++i)
    {
        eCubePoint p = Prism(i * 1000.0, 0.0, 0.0, 100.0f, 1000.0f);
        set.AddCubePoint(&p);
    }
    // Prisms added one by one after Initialize are not drawn until the ring wraps.
    auto draws = ElementDraws(RecordFrame());
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0].count, 0);
    EXPECT_EQ(draws[0].first, 60);

    for (int i = 0; i < 2; ++i)
    {
        eCubePoint p = Prism(i * 1000.0, 0.0, 0.0, 100.0f, 1000.0f);
        set.AddCubePoint(&p); // the third fills the pool, the fourth overwrites slot 0
    }
    draws = ElementDraws(RecordFrame());
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0].count, 30); // 30 x cursor, at 30 x (count - cursor) bytes
    EXPECT_EQ(draws[0].first, 60);
    EXPECT_EQ(draws[1].count, 30);
    EXPECT_EQ(draws[1].first, 0);
    EXPECT_EQ(draws[1].mode, 4); // GL_TRIANGLES

    // Two slots past the cursor: the first offset, 30 bytes, splits an index. It is issued
    // as it stands and the frame goes on.
    eCubePoint p = Prism(0.0, 0.0, 0.0, 100.0f, 1000.0f);
    set.AddCubePoint(&p);
    draws = ElementDraws(RecordFrame());
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0].count, 60);
    EXPECT_EQ(draws[0].first, 30);
}

TEST_F(CubeSetTest, PrismIsWoundAndLitOutwardForBothRingWindings)
{
    Probe clockwise;
    CounterClockwiseProbe counterClockwise;
    for (Probe* set : {&clockwise, static_cast<Probe*>(&counterClockwise)})
    {
        set->SetPoolSize(2);
        Add(*set);
        eCubePoint first = Prism(0.0, 0.0, 0.0, 50.0f, 10.0f);
        eCubePoint second = Prism(1000.0, -2000.0, 50.0, 100.0f, 700.0f);
        set->AddCubePoint(&first);
        set->AddCubePoint(&second);
        std::vector<Vertex> v = set->Vertices(1);
        EXPECT_FLOAT_EQ(v[6].p[2], 50.0f); // a ground vertex
        ExpectOutwardPrism(v, set->Indices(1), 1, eVector3T<float>(1000.0f, -2000.0f, 50.0f),
                           100.0f, 750.0f);
    }
}

// The cap of a square footprint skips the triangulator; whatever the square, the indices
// must be those the triangulator gives (a ring without area: the slot's first vertex).
TEST_F(CubeSetTest, CapIndicesAreTheTriangulatorsForAnySquare)
{
    Probe set;
    set.SetPoolSize(1);
    set.CreateBuffers();
    eVector4T<unsigned char> c(1, 2, 3, 4);
    for (double centre : {0.0, -3.5, 1.0e4, 6.0e6, -1.0e7})
        for (float r : {1.0e-6f, 1.0e-3f, 0.5f, 100.0f, 3.0e5f, 0.0f, -10.0f})
        {
            float x = (float)centre, y = (float)(centre * 0.5);
            ePoint2D const ring[5] = {ePoint2D(x - r, y - r), ePoint2D(x - r, y + r),
                                      ePoint2D(x + r, y + r), ePoint2D(x + r, y - r),
                                      ePoint2D(x - r, y - r)};
            std::vector<unsigned short> expected;
            eTriangulator::Triangulate(ring, 5, expected);
            expected.resize(6, 0);
            set.BuildPrism(0, ring, 0.0f, 1.0f, c, c);
            std::vector<unsigned int> const& got = set.m_pIndexData->GetIndexExBuffer();
            ASSERT_EQ(got.size(), 30u);
            for (int i = 0; i < 6; ++i)
                EXPECT_EQ(got[i], expected[i]) << "centre " << centre << ", radius " << r;
        }
}

TEST_F(CubeSetTest, GrowthRisesPerDrawnFrameStopsAtOneAndWaitsWhileHidden)
{
    Probe set;
    set.SetPoolSize(1);
    eCubePoint p = Prism(0.0, 0.0, 0.0, 100.0f, 1000.0f);
    set.AddCubePoint(&p);
    Add(set);
    set.SetCurGrowRatio(0.9f);
    float previous = 0.9f;
    for (int frame = 0; frame < 8; ++frame)
    {
        auto sent = Named(RecordFrame(), "u_growRatio");
        ASSERT_EQ(sent.size(), 1u);
        float ratio = (float)sent[0].values[0];
        EXPECT_NEAR(ratio, std::min(1.0f, previous + 0.02f), 1e-6f);
        previous = ratio;
    }
    EXPECT_EQ(previous, 1.0f);
    EXPECT_EQ(set.GetCurGrowRatio(), 1.0f);

    set.SetCurGrowRatio(0.5f);
    set.m_bVisible = 0;
    RecordFrame();
    set.Render(&m_scene->Engine(), &m_scene->RenderSystem(), &m_scene->Camera(),
               &m_scene->Viewport());
    EXPECT_EQ(set.GetCurGrowRatio(), 0.5f);
    set.m_bVisible = 1;
    set.SetEnableGrow(0);
    EXPECT_EQ(Named(RecordFrame(), "u_growRatio")[0].values[0], 1.0);
    EXPECT_EQ(set.GetCurGrowRatio(), 0.5f);
}

TEST_F(CubeSetTest, FrameStandsOnTheGroundAndTheSunReachesEyeSpace)
{
    Probe set;
    set.SetPoolSize(1);
    eVector3T<double> anchor(30.0, 45.0, 0.0);
    set.SetSpatialRefType(1);
    set.SetPosition(anchor);
    eCubePoint p = Prism(30.0, 45.0, 0.0, 1000.0f, 1000.0f);
    set.AddCubePoint(&p);
    m_scene->Camera().LookAt(30.0, 45.0, 2.0e6, 20.0, 40.0);
    m_scene->Engine().SetSunPosition(World(-10.0, 20.0, 1.496e11));
    Add(set);

    eVector4T<double> above(30.0, 45.0, 1000.0, 0.0), north(30.0, 45.01, 0.0, 0.0),
        east(30.01, 45.0, 0.0, 0.0);
    eVector4T<float> up = set.PositionToLocal(1, above);
    EXPECT_NEAR(up.x, 0.0f, 0.01f);
    EXPECT_NEAR(up.y, 0.0f, 0.01f);
    EXPECT_NEAR(up.z, 1000.0f, 0.01f);
    eVector4T<float> n = set.PositionToLocal(1, north), e = set.PositionToLocal(1, east);
    EXPECT_GT(n.y, 1000.0f);
    EXPECT_NEAR(n.x, 0.0f, 1.0f);
    EXPECT_GT(e.x, 700.0f);
    EXPECT_NEAR(e.y, 0.0f, 1.0f);

    auto all = RecordFrame();
    auto sun = Named(all, "u_sunDirection");
    auto normal = Named(all, "u_normalMatrix");
    ASSERT_EQ(sun.size(), 1u);
    ASSERT_EQ(normal.size(), 1u);
    eMatrix4T<double> view = m_scene->Camera().GetViewMatrix();
    eVector3T<double> expected =
        view.TransformPoint(m_scene->Engine().GetSunPosition()).Normalized();
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(sun[0].values[i], expected[i], 1e-6);
    // The local up turned by the normal matrix is the ground's up at the anchor, in eye space.
    eVector3T<double> worldUp = World(30.0, 45.0, 0.0).Normalized();
    eVector3T<double> eyeUp = view.TransformVector(worldUp);
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(normal[0].values[6 + i], eyeUp[i], 1e-5);
}

TEST_F(CubeSetTest, SunnySideIsBrighterAndTheHeightFollowsTheGrowth)
{
    Probe set;
    set.SetPoolSize(1);
    eVector3T<double> anchor(0.0, 0.0, 0.0);
    set.SetSpatialRefType(1);
    set.SetPosition(anchor);
    eCubePoint p = Prism(0.0, 0.0, 0.0, 400000.0f, 1200000.0f);
    p.m_cTopColor = p.m_cBottomColor = eVector4T<unsigned char>(200, 200, 200, 255);
    set.AddCubePoint(&p);
    set.SetEnableGrow(0);
    // Seen from the south-west, so the west and the south faces both show; the sun is low
    // in the west.
    m_scene->Camera().LookAt(0.0, 0.0, 9.0e6, 45.0, 60.0, 500000.0);
    m_scene->Engine().SetSunPosition(World(-80.0, 5.0, 1.496e11));
    Add(set);
    m_scene->RenderFrame();
    double const deg = 400000.0 / 111319.49; // the half side in degrees at the equator
    auto brightness = [&](eVector3T<double> world)
    {
        eVector3T<double> w = m_scene->Camera().Project(world);
        auto px = Pixel((int)w.x, m_scene->Height() - 1 - (int)w.y);
        return px[0] + px[1] + px[2];
    };
    int west = brightness(World(-deg, 0.0, 500000.0));
    int south = brightness(World(0.0, -deg, 500000.0));
    EXPECT_GT(west, south + 60) << "west " << west << ", south " << south;

    // Half grown, the top ring stands at half the height: the highest lit row moves down
    // to where the half-height corner projects.
    auto topRow = [&]()
    {
        std::vector<unsigned char> px = m_scene->ReadPixels();
        for (int y = 0; y < m_scene->Height(); ++y)
            for (int x = 0; x < m_scene->Width(); ++x)
                if (px[((size_t)y * m_scene->Width() + x) * 4] > 20)
                    return y;
        return -1;
    };
    auto expectedRow = [&](double h)
    {
        double best = 1e9;
        for (double sx : {-deg, deg})
            for (double sy : {-deg, deg})
                best = std::min(best, m_scene->Height() - 1 -
                                          m_scene->Camera().Project(World(sx, sy, h)).y);
        return best;
    };
    EXPECT_NEAR(topRow(), expectedRow(1200000.0), 2.0);
    set.SetEnableGrow(1);
    set.SetCurGrowRatio(0.48f);
    m_scene->RenderFrame();
    EXPECT_NEAR(topRow(), expectedRow(600000.0), 2.0);
}

TEST_F(CubeSetTest, PoolEdgesKeepTheirCountsAndReportBadInput)
{
    KYR::Host::ClearAssertReports();
    Probe set;
    set.SetPoolSize(0);
    EXPECT_EQ(set.AddCubePoint(nullptr), 1);
    set.SetPoolSize(2);
    eCubePoint p = Prism(0.0, 0.0, 0.0, 100.0f, 100.0f);
    EXPECT_EQ(set.UpdateCubePoint(2, &p), 0);
    set.AddCubePoint(&p);
    set.AddCubePoint(&p);
    Add(set);
    set.RemoveAllCubePoint();
    EXPECT_EQ(set.m_nCount, 2);
    EXPECT_EQ(set.m_nCursor, 0);
    EXPECT_EQ(set.GetCubePoint(1), nullptr);
    set.AddCubePoint(&p); // still the ring: slot 0 again
    EXPECT_NE(set.GetCubePoint(0), nullptr);
    EXPECT_EQ(set.GetCubePoint(1), nullptr);

    auto reports = [] // the set's own; a local anchor on the globe has no geographic position
    {
        std::vector<KYR::Host::eAssertReport> out;
        for (auto const& r : KYR::Host::GetAssertReports())
            if (r.file == "Src/RenderEffect/eRenderListCubeSet")
                out.push_back(r);
        return out;
    };
    ASSERT_EQ(reports().size(), 1u); // the size; the ring of no slots never reaches the point
    EXPECT_EQ(reports()[0].expression, "size > 0");
    set.UpdateCubePoint(0, nullptr);
    ASSERT_EQ(reports().size(), 2u);
    EXPECT_EQ(reports()[1].expression, "pPoint != NULL");
}

template <> struct CopySubject<eRenderListCubeSet>
{
    static constexpr bool kSamePixels = true; // growth off: every frame is the same
    static eRenderListCubeSet* Make(KYR::Host::eScene&)
    {
        auto* set = new eRenderListCubeSet();
        set->SetPoolSize(4);
        set->SetSpatialRefType(1);
        eVector3T<double> anchor(0.0, 0.0, 0.0);
        set->SetPosition(anchor);
        set->SetEnableGrow(0);
        for (int i = 0; i < 3; ++i)
        {
            eCubePoint p = Prism(i * 12.0 - 12.0, i * 5.0, 0.0, 300000.0f, 1500000.0f);
            set->AddCubePoint(&p);
        }
        return set;
    }
};

template <> struct CopySubject<eRenderCubeSet>
{
    static constexpr bool kSamePixels = true;
    static constexpr bool kDraws = false; // the bare base holds no prisms
    static eRenderCubeSet* Make(KYR::Host::eScene&)
    {
        auto* set = new eRenderCubeSet();
        set->SetSpatialRefType(1);
        return set;
    }
};

using CubeSetTypes = ::testing::Types<eRenderListCubeSet, eRenderCubeSet>;
INSTANTIATE_TYPED_TEST_SUITE_P(CubeSets, CopyIdiom, CubeSetTypes);
