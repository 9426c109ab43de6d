// Wind speed levels, the wind grid, and the particle and stream-line modes of the winds.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "WindField.h"
#include "WindSpeedLevel.h"
#include "eMesh.h"
#include "eRenderDynamicWinds.h"
#include <cmath>
#include <cstdlib>
#include <epoxy/gl.h>

using namespace KYR;

namespace
{

class WindsProbe : public eRenderDynamicWinds
{
public:
    WindsProbe() : eRenderDynamicWinds(nullptr) {}
    using eRenderDynamicWinds::GetGlobeBounds;
    using eRenderDynamicWinds::linePhase;
    using eRenderDynamicWinds::m_colorTableTexture;
    using eRenderDynamicWinds::m_lineIndices;
    using eRenderDynamicWinds::m_lineLevels;
    using eRenderDynamicWinds::m_lineVertices;
    using eRenderDynamicWinds::m_particleCount;
    using eRenderDynamicWinds::m_particles;
    using eRenderDynamicWinds::m_renderBounds;
    using eRenderDynamicWinds::m_trailFrames;
    using eRenderDynamicWinds::MakeParticle;
    using eRenderDynamicWinds::RecreatColorTabel;
};

// A 1-degree global grid, north row first, with the wind given by a function.
template <typename F> void SetGlobalField(eRenderDynamicWinds& w, F wind)
{
    WindField& f = w.m_windField;
    f.nx = 361;
    f.ny = 181;
    f.dy = -1.0;
    f.left = -180.0;
    f.right = 180.0;
    f.top = 90.0;
    f.bottom = -90.0;
    std::vector<ePoint2D> v;
    for (int j = 0; j < f.ny; ++j)
        for (int i = 0; i < f.nx; ++i)
            v.push_back(wind(-180.0 + i, 90.0 - j));
    w.SetWindDynamic(v);
}

double Random15()
{
    return (double)(std::rand() & 0x7FFF) / 32767.0;
}

} // namespace

TEST(WindSpeedLevel, EveryIntervalBoundary)
{
    EXPECT_EQ(WindSpeedLevel(0.0), 0);
    EXPECT_EQ(WindSpeedLevel(1e-9), 1);
    EXPECT_EQ(WindSpeedLevel(1.999), 1);
    EXPECT_EQ(WindSpeedLevel(2.0), 2);
    EXPECT_EQ(WindSpeedLevel(15.999), 8);
    EXPECT_EQ(WindSpeedLevel(16.0), 9);
    EXPECT_EQ(WindSpeedLevel(19.999), 9); // double width
    EXPECT_EQ(WindSpeedLevel(20.0), 10);
    EXPECT_EQ(WindSpeedLevel(35.999), 17);
    EXPECT_EQ(WindSpeedLevel(36.0), 18);
    EXPECT_EQ(WindSpeedLevel(39.999), 18); // double width
    EXPECT_EQ(WindSpeedLevel(40.0), 19);
    EXPECT_EQ(WindSpeedLevel(47.999), 22);
    EXPECT_EQ(WindSpeedLevel(48.0), 0); // the fastest fall back to calm
    EXPECT_EQ(WindSpeedLevel(120.0), 0);
    EXPECT_EQ(WindSpeedLevel(-3.0), 0);
    EXPECT_EQ(WindSpeedLevel(std::nan("")), 0);
}

TEST(WindField, BuildOrdersRowsBySignOfDyAndShiftsTheHeader)
{
    WindField f;
    f.nx = 3;
    f.ny = 2;
    f.left = 0.0;
    f.right = 360.0;
    f.top = 90.0;
    f.bottom = -90.0;
    std::vector<ePoint2D> rows = {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}, {6, 0}};
    f.source = rows;
    ASSERT_TRUE(f.Build());
    EXPECT_TRUE(f.source.empty());
    EXPECT_EQ(f.columns[0][0].x, 1.0); // first row is the bottom row
    EXPECT_EQ(f.columns[2][1].x, 6.0);
    // The header moved to -180..180, the data did not rotate.
    EXPECT_EQ(f.bounds, eRect2D(-180.0, 90.0, 180.0, -90.0));
    EXPECT_EQ(f.left, -180.0);
    EXPECT_DOUBLE_EQ(f.maxSpeed, 6.0);

    f.dy = -0.5; // first row is the top row
    f.source = rows;
    ASSERT_TRUE(f.Build());
    EXPECT_EQ(f.columns[0][0].x, 4.0);
    EXPECT_EQ(f.columns[1][1].x, 2.0);
    EXPECT_EQ(f.bounds.left, -180.0); // already inside: no second shift

    // A weaker field keeps the greatest speed seen before.
    f.source.assign(6, ePoint2D(0.3, 0.4));
    ASSERT_TRUE(f.Build());
    EXPECT_DOUBLE_EQ(f.maxSpeed, 6.0);
    EXPECT_EQ(f.columns[2][0].y, 0.4);
    EXPECT_FALSE(f.Build()); // nothing left to build from
}

TEST(WindField, SamplesBilinearlyWithAStrictBottomRow)
{
    WindField f;
    f.nx = 3;
    f.ny = 3;
    f.right = 2.0;
    f.top = 2.0;
    for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 3; ++i)
            f.source.push_back(ePoint2D(10.0 * i + j, -(double)j));
    ASSERT_TRUE(f.Build());
    ePoint2D node = f.Sample(1.0, 1.0);
    EXPECT_NEAR(node.x, 11.0, 1e-4);
    EXPECT_NEAR(node.y, -1.0, 1e-4);
    ePoint2D mid = f.Sample(0.5, 1.5);
    EXPECT_NEAR(mid.x, 6.5, 1e-4); // mean of 1, 11, 2, 12
    EXPECT_NEAR(mid.y, -1.5, 1e-4);
    ePoint2D corner = f.Sample(2.0, 2.0);
    EXPECT_NEAR(corner.x, 22.0, 1e-4);
    for (ePoint2D p :
         {f.Sample(1.0, 0.0), f.Sample(-0.1, 1.0), f.Sample(2.1, 1.0), f.Sample(1.0, 2.1)})
    {
        EXPECT_EQ(p.x, 0.0);
        EXPECT_EQ(p.y, 0.0);
    }
    WindField empty;
    EXPECT_EQ(empty.Sample(0.0, 0.0), ePoint2D(0.0, 0.0));
}

TEST_F(EffectTest, WindsParticlesStartWithoutPreviousAndLiveUpToFortyOneFrames)
{
    WindsProbe w; // no grid: maxSpeed is 0
    w.m_renderBounds = eRect2D(10.0, 50.0, 30.0, 20.0);
    std::srand(77);
    double r1 = Random15(), r2 = Random15(), r3 = Random15();
    std::srand(77);
    Particle* p = w.MakeParticle(&m_scene->Engine(), &m_scene->Camera());
    // With no wind at all the first candidate is taken.
    EXPECT_DOUBLE_EQ(p->position.x, (1.0 - r1) * 30.0 + r1 * 10.0);
    EXPECT_DOUBLE_EQ(p->position.y, (1.0 - r2) * 50.0 + r2 * 20.0);
    EXPECT_DOUBLE_EQ(p->life, r3 * 40.0 + 1.0);
    EXPECT_EQ(p->previous.x, -1.0);
    delete p;

    SetGlobalField(w, [](double, double) { return ePoint2D(5.0, 5.0); });
    w.m_dynamic = true;
    w.m_particleCount = 500;
    m_scene->Add(&w);
    m_scene->RenderFrame();
    ASSERT_EQ(w.m_particles.size(), 500u);
    for (Particle* q : w.m_particles)
    {
        EXPECT_GE(q->life, 0.0); // one frame already taken off
        EXPECT_LE(q->life, 40.0);
        EXPECT_TRUE(w.m_renderBounds.PtInRect(q->position) || q->life == -2.0);
    }
    // The first frame only remembers where the particles were.
    ASSERT_EQ(w.m_trailFrames.size(), 1u);
    EXPECT_EQ(w.m_trailFrames.back()->GetVertexSize(), 0);
    m_scene->RenderFrame();
    EXPECT_GT(w.m_trailFrames.back()->GetVertexSize(), 500);
    m_scene->Remove(&w);
}

TEST_F(EffectTest, WindsCalmAirDrawsNoSegmentAndTrailsKeepFiftyOne)
{
    WindsProbe w;
    SetGlobalField(w, [](double, double) { return ePoint2D(0.0, 0.0); });
    w.m_dynamic = true;
    m_scene->Add(&w);
    std::vector<eVertexData*> made;
    for (int i = 0; i < 60; ++i)
    {
        m_scene->RenderFrame();
        made.push_back(w.m_trailFrames.back());
        EXPECT_LE(w.m_trailFrames.size(), 51u);
        EXPECT_EQ(w.m_trailFrames.back()->GetVertexSize(), 0);
    }
    // Oldest first: the last 51 buffers made, in order.
    std::vector<eVertexData*> kept(w.m_trailFrames.begin(), w.m_trailFrames.end());
    EXPECT_EQ(kept, std::vector<eVertexData*>(made.end() - 51, made.end()));

    // Each buffer is drawn as lines with the haze colour set before it.
    auto records = RecordFrame();
    auto draws = Of(records, eRecord::Draw);
    ASSERT_EQ(draws.size(), 51u);
    EXPECT_EQ(draws[0].mode, 1);
    int haze = 0, table = 0;
    for (auto const& r : Of(records, eRecord::Uniform))
    {
        if (r.uniform == "u_haze")
        {
            ++haze;
            EXPECT_FLOAT_EQ((float)r.values[0], 0.24f);
            EXPECT_FLOAT_EQ((float)r.values[3], 0.15f);
        }
        if (r.uniform == "u_colorTable")
            table += r.values[0] == 1.0;
    }
    EXPECT_EQ(haze, 51);
    EXPECT_EQ(table, 1);

    // Before the buffers: world, view, the two zero floats, the table unit, the projection
    // kind (globe), and nothing else.
    std::vector<std::string> names;
    std::vector<double> firstValues;
    for (auto const& r : Of(records, eRecord::Uniform))
    {
        if (r.uniform == "u_haze")
            break;
        names.push_back(r.uniform);
        firstValues.push_back(r.values.empty() ? -1.0 : r.values[0]);
    }
    ASSERT_EQ(names, (std::vector<std::string>{"u_worldMatrix", "u_viewMatrix", "u_height",
                                               "u_levelShift", "u_colorTable", "u_projKind"}));
    EXPECT_EQ(firstValues[2], 0.0);
    EXPECT_EQ(firstValues[3], 0.0);
    EXPECT_EQ(firstValues[4], 1.0);
    EXPECT_EQ(firstValues[5], 0.0);
    m_scene->Remove(&w);
}

TEST_F(EffectTest, WindsGlobeBoundsByLatitudeOrByTheEightHits)
{
    WindsProbe w;
    eCamera& cam = m_scene->Camera();
    cam.LookAt(30.0, 40.0, 2.0e7, 0.0, 0.0); // the whole disc is in view
    eRect2D r = w.GetGlobeBounds(&cam);
    EXPECT_NEAR(r.left, -60.0, 1e-6);
    EXPECT_NEAR(r.right, 120.0, 1e-6);
    EXPECT_NEAR(r.top, 90.0, 1e-6);
    EXPECT_NEAR(r.bottom, -50.0, 1e-6);
    cam.LookAt(30.0, -20.0, 2.0e7, 0.0, 0.0);
    r = w.GetGlobeBounds(&cam);
    EXPECT_NEAR(r.top, 70.0, 1e-6);
    EXPECT_NEAR(r.bottom, -90.0, 1e-6);
    cam.LookAt(30.0, 70.0, 2.0e7, 0.0, 0.0);
    r = w.GetGlobeBounds(&cam);
    EXPECT_EQ(r.left, -180.0);
    EXPECT_NEAR(r.bottom, -20.0, 1e-6);
    cam.LookAt(30.0, -80.0, 2.0e7, 0.0, 0.0);
    r = w.GetGlobeBounds(&cam);
    EXPECT_NEAR(r.top, 10.0, 1e-6);
    EXPECT_EQ(r.bottom, -90.0);

    // Close up the globe fills the view: about 2.4 degrees either side (30 degree field).
    cam.LookAt(20.0, 10.0, 1.0e6, 0.0, 0.0);
    r = w.GetGlobeBounds(&cam);
    double half = std::atan(std::tan(15.0 * 3.141592653589793 / 180.0)) * 1.0e6 / 6378137.0 *
                  57.29577951308232;
    EXPECT_NEAR(r.top, 10.0 + half, 0.1);
    EXPECT_NEAR(r.bottom, 10.0 - half, 0.1);
    EXPECT_NEAR(r.CenterPoint().x, 20.0, 0.05);
    EXPECT_GT(r.Width(), 2.0 * half);
    EXPECT_LT(r.Width(), 2.0 * half / std::cos(13.0 * 3.141592653589793 / 180.0) + 0.2);
}

TEST_F(EffectTest, WindsColourTableRepeatsThePaletteOrFallsBackToGreen)
{
    WindsProbe w;
    auto readTable = [&w]()
    {
        std::vector<unsigned char> px(24 * 4, 0);
        glBindTexture(GL_TEXTURE_2D, w.m_colorTableTexture);
        glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, px.data());
        glBindTexture(GL_TEXTURE_2D, 0);
        return px;
    };
    w.RecreatColorTabel();
    ASSERT_NE(w.m_colorTableTexture, 0u);
    auto px = readTable();
    for (int i = 0; i < 24; ++i)
    {
        EXPECT_EQ(px[i * 4 + 0], 0);
        EXPECT_EQ(px[i * 4 + 1], 255);
        EXPECT_EQ(px[i * 4 + 3], 200);
    }
    std::vector<eVector4T<unsigned char>> palette = {
        {10, 0, 0, 255}, {20, 0, 0, 255}, {30, 0, 0, 128}};
    w.SetColorPalette(palette);
    w.RecreatColorTabel();
    px = readTable();
    for (int i = 0; i < 24; ++i)
        EXPECT_EQ(px[i * 4], 10 * (i % 3 + 1)) << "entry " << i;
    EXPECT_EQ(px[23 * 4 + 3], 128);
}

TEST_F(EffectTest, WindsTrailsShowWhereTheFieldBlowsOnly)
{
    WindsProbe w;
    // North-going wind over the western half only; the east is calm.
    SetGlobalField(w, [](double lon, double) { return ePoint2D(0.0, lon < -2.0 ? 15.0 : 0.0); });
    w.m_dynamic = true;
    std::vector<eVector4T<unsigned char>> red = {{255, 0, 0, 255}};
    w.SetColorPalette(red);
    m_scene->Camera().LookAt(0.0, 0.0, 2.0e7, 0.0, 0.0);
    m_scene->Add(&w);
    for (int i = 0; i < 20; ++i)
        m_scene->RenderFrame();
    std::vector<unsigned char> px = m_scene->ReadPixels();
    int west = 0, east = 0;
    for (int y = 0; y < 96; ++y)
        for (int x = 0; x < 96; ++x)
        {
            unsigned char const* p = &px[((size_t)y * 96 + x) * 4];
            bool trail = p[0] > 60 && p[1] < p[0] / 2;
            west += trail && x < 44;
            east += trail && x > 52;
        }
    EXPECT_GT(west, 150);
    EXPECT_EQ(east, 0);
    m_scene->Remove(&w);
}

TEST_F(EffectTest, WindsStreamLinesLevelsPhaseAndSharedCopies)
{
    WindsProbe w;
    std::vector<eVertexData*> vertices = {new eVertexData(), new eVertexData()};
    std::vector<eIndexData*> indices = {new eIndexData(), new eIndexData()};
    std::vector<double> speeds = {5.0, 50.0}, values = {1.0, 2.0};
    w.SetWindStreamLine(vertices, indices, speeds, values);
    ASSERT_EQ(w.m_lineLevels.size(), 2u);
    EXPECT_DOUBLE_EQ(w.m_lineLevels[0], 3.0 / 22.0);
    EXPECT_DOUBLE_EQ(w.m_lineLevels[1], 0.0);
    w.SetWindStreamLineDynamic(true, 4.0f);
    m_scene->Add(&w);
    WindsProbe::linePhase = 0.0f;

    // Meshes without uploaded buffers draw nothing; the phase goes on and wraps past 10.
    std::vector<float> phases;
    for (int i = 0; i < 4; ++i)
    {
        auto records = RecordFrame();
        EXPECT_TRUE(Of(records, eRecord::Draw).empty());
        for (auto const& r : Of(records, eRecord::Uniform))
            if (r.uniform == "phase")
                phases.push_back((float)r.values[0]);
    }
    EXPECT_EQ(phases, (std::vector<float>{0.0f, 4.0f, 8.0f, 0.0f}));

    // Now with one uploaded line of four strip vertices.
    eVertexData* vd = w.m_lineVertices[0];
    for (int k = 0; k < 5; ++k)
        vd->AddElement(eVET_FLOAT, eVEC_4, (eAttributeIndex)(k == 0 ? 0 : 10 + k), 0);
    float zero[20] = {0};
    vd->AddVertex(zero, 1);
    vd->AddVertex(zero, 1);
    vd->AddVertex(zero, 1);
    vd->AddVertex(zero, 1);
    vd->Create();
    for (unsigned short i = 0; i < 4; ++i)
        w.m_lineIndices[0]->AddIndex(i);
    w.m_lineIndices[0]->Create();
    auto draws = Of(RecordFrame(), eRecord::Draw);
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0].op, "glDrawElements");
    EXPECT_EQ(draws[0].mode, 5);
    EXPECT_EQ(draws[0].count, 4);

    // A copy shares the meshes with the original.
    {
        WindsProbe copy(w);
        EXPECT_EQ(copy.m_lineVertices, w.m_lineVertices);
        EXPECT_EQ(copy.m_lineIndices[1], indices[1]);
    }
    m_scene->Remove(&w);
}

namespace
{

// The winds in their stream-line mode, as a type of its own for the copy test.
struct StreamLines : eRenderDynamicWinds
{
    StreamLines() : eRenderDynamicWinds(nullptr) {}
};

// A straight line along a parallel from lon0 to lon1: two strip vertices a point, 80 bytes
// each (position, neighbour and across/along groups at 0, 32 and 64).
eVertexData* Parallel(double lat, double lon0, double lon1, int points)
{
    auto* vd = new eVertexData();
    vd->AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
    vd->AddElement(eVET_FLOAT, eVEC_4, eAI_ATTRIB10, 0);
    vd->AddElement(eVET_FLOAT, eVEC_4, eAI_ATTRIB1, 0);
    vd->AddElement(eVET_FLOAT, eVEC_4, eAI_ATTRIB11, 0);
    vd->AddElement(eVET_FLOAT, eVEC_4, eAI_COLOR, 0);
    double step = (lon1 - lon0) / (points - 1);
    for (int k = 0; k < points; ++k)
    {
        bool ahead = k + 1 < points;
        float lon = (float)(lon0 + k * step), next = (float)(lon0 + (ahead ? k + 1 : k - 1) * step);
        for (int side = 0; side < 2; ++side)
        {
            float v[20] = {lon,
                           (float)lat,
                           20000.0f,
                           (float)k,
                           0,
                           0,
                           0,
                           0,
                           next,
                           (float)lat,
                           side ? 1.0f : -1.0f,
                           ahead ? 1.0f : -1.0f,
                           0,
                           0,
                           0,
                           0,
                           (float)side,
                           (float)k / (points - 1),
                           0,
                           0};
            vd->AddVertex(v, 1);
        }
    }
    vd->Create();
    return vd;
}

} // namespace

// Particles in a westerly wind, already a few frames old so that their trails show.
template <> struct CopySubject<eRenderDynamicWinds>
{
    static constexpr bool kSamePixels = false;
    static eRenderDynamicWinds* Make(Host::eScene& scene)
    {
        auto* winds = new eRenderDynamicWinds(nullptr);
        SetGlobalField(*winds, [](double, double) { return ePoint2D(20.0, 0.0); });
        winds->m_dynamic = true;
        std::vector<eVector4T<unsigned char>> red = {{255, 60, 0, 255}};
        winds->SetColorPalette(red);
        scene.Add(winds);
        for (int i = 0; i < 3; ++i)
            scene.RenderFrame();
        scene.Remove(winds);
        return winds;
    }
};

// Three lines along parallels, all drawn through one index store they share.
template <> struct CopySubject<StreamLines>
{
    static constexpr bool kSamePixels = true;
    static StreamLines* Make(Host::eScene&)
    {
        int const points = 16;
        auto* indices = new eIndexData();
        for (unsigned short i = 0; i < 2 * points; ++i)
            indices->AddIndex(i);
        indices->Create();
        std::vector<eVertexData*> vertices;
        for (double lat : {-20.0, 0.0, 20.0})
            vertices.push_back(Parallel(lat, -30.0, 30.0, points));
        std::vector<eIndexData*> shared(vertices.size(), indices);
        std::vector<double> speeds = {4.0, 12.0, 30.0}, values = {1.0, 1.0, 1.0};
        auto* lines = new StreamLines();
        lines->SetWindStreamLine(vertices, shared, speeds, values);
        lines->SetWindStreamLineWidth(300000.0f);
        std::vector<eVector4T<unsigned char>> palette = {{0, 200, 255, 255}};
        lines->SetColorPalette(palette);
        return lines;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Winds, CopyIdiom, ::testing::Types<eRenderDynamicWinds>);
INSTANTIATE_TYPED_TEST_SUITE_P(StreamLines, CopyIdiom, ::testing::Types<StreamLines>);
