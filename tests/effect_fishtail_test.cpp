// Wind fishtail lines: the wait for a resting view, the screen field, the fading trails,
// seeding and density, the wrapping grid, and the copy idiom.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eRenderWindFishtailLine.h"
#include <algorithm>
#include <cmath>
#include <epoxy/gl.h>
#include <functional>
#include <set>

using namespace KYR;

namespace
{

class FishtailProbe : public eRenderWindFishtailLine
{
public:
    FishtailProbe() : eRenderWindFishtailLine(nullptr) {}
    using eRenderWindFishtailLine::m_particles;
    using eRenderWindFishtailLine::m_raster;
    using eRenderWindFishtailLine::MakeNewParticles;

    size_t Count() const
    {
        size_t n = 0;
        for (auto const& level : m_particles)
            n += level.second.size();
        return n;
    }
    // The trail texture as the GPU holds it, RGBA rows from the bottom.
    std::vector<unsigned char> Trails() const
    {
        std::vector<unsigned char> px((size_t)m_textureWidth * m_textureHeight * 4);
        glBindTexture(GL_TEXTURE_2D, m_trailTexture);
        glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, px.data());
        glBindTexture(GL_TEXTURE_2D, 0);
        return px;
    }
};

// A 1-degree global grid, north row first, with the wind given by a function of lon, lat.
void SetField(eRenderWindFishtailLine& f, std::function<ePoint2D(double, double)> wind)
{
    f.m_nx = 361;
    f.m_ny = 181;
    f.m_dy = -1.0;
    f.m_left = -180.0;
    f.m_right = 180.0;
    f.m_top = 90.0;
    f.m_bottom = -90.0;
    std::vector<ePoint2D> v;
    for (int j = 0; j < f.m_ny; ++j)
        for (int i = 0; i < f.m_nx; ++i)
            v.push_back(wind(-180.0 + i, 90.0 - j));
    f.SetWindDynamic(v);
}

size_t Lit(std::vector<unsigned char> const& px)
{
    return (size_t)std::count_if(px.begin(), px.end(), [](unsigned char c) { return c != 0; });
}

} // namespace

TEST_F(EffectTest, FishtailStartsAfterTwentyFourStillFramesAndAMoveDropsEverything)
{
    m_scene->RenderFrame();
    std::vector<unsigned char> background = m_scene->ReadPixels();
    FishtailProbe f;
    SetField(f, [](double, double) { return ePoint2D(12.0, 0.0); });
    m_scene->Add(&f);
    auto drawModes = [this]()
    {
        std::vector<int> modes;
        for (auto const& r : Of(RecordFrame(), eRecord::Draw))
            modes.push_back(r.mode);
        return modes;
    };
    // The frame that finds the camera moved and 23 still ones: only the cleared texture.
    for (int i = 0; i < 23; ++i)
        m_scene->RenderFrame();
    EXPECT_EQ(drawModes(), (std::vector<int>{1, 5})); // segments, trails to the screen
    EXPECT_EQ(f.Count(), 0u);
    EXPECT_EQ(m_scene->ReadPixels(), background);

    // The 24th still frame seeds four particles per pixel of width, then fades the trails
    // and lays the wind speed over them.
    auto records = RecordFrame();
    EXPECT_EQ(f.Count(), 4u * 96u);
    std::vector<double> modes, fades, samplers;
    for (auto const& r : Of(records, eRecord::Uniform))
    {
        if (r.uniform == "u_drawMode")
            modes.push_back(r.values[0]);
        if (r.uniform == "u_fade")
            fades.push_back(r.values[0]);
        if (r.uniform == "u_texture0" || r.uniform == "u_texture1")
            samplers.push_back(r.values[0]);
    }
    EXPECT_EQ(modes, (std::vector<double>{0.0, 1.0, 3.0, 2.0}));
    EXPECT_EQ(fades, (std::vector<double>{(double)0.95f}));
    EXPECT_EQ(samplers, (std::vector<double>{0.0, 1.0}));
    EXPECT_EQ(drawModes(), (std::vector<int>{1, 5, 5, 5}));
    for (int i = 0; i < 8; ++i)
        m_scene->RenderFrame();
    EXPECT_GT(Lit(f.Trails()), 200u);
    EXPECT_NE(m_scene->ReadPixels(), background);

    // A new look-at point, then a new distance alone: each drops the particles and clears
    // the texture at once.
    m_scene->Camera().LookAt(1.0, 0.0, 2.0e7, 0.0, 0.0);
    m_scene->RenderFrame();
    EXPECT_EQ(f.Count(), 0u);
    EXPECT_EQ(Lit(f.Trails()), 0u);
    EXPECT_EQ(m_scene->ReadPixels(), background);
    for (int i = 0; i < 30; ++i)
        m_scene->RenderFrame();
    ASSERT_GT(Lit(f.Trails()), 0u);
    m_scene->Camera().LookAt(1.0, 0.0, 1.9e7, 0.0, 0.0);
    m_scene->RenderFrame();
    EXPECT_EQ(f.Count(), 0u);
    EXPECT_EQ(Lit(f.Trails()), 0u);
    m_scene->Remove(&f);
}

TEST_F(EffectTest, FishtailScreenVectorsPointAlongTheWindOnThePlaneMap)
{
    m_scene.reset(new Host::eScene(96, 96, eSM_PLANE, PJ_PLATE_CARREE));
    eCamera& camera = m_scene->Camera();
    camera.LookAt(10.0, 20.0, 3.0e6, 0.0, 0.0);
    // At the look-at point one degree spans this many pixels; east is shortened by the
    // cosine of the latitude on the ground, so the field lengthens it back.
    double const pixelsPerDegree =
        111319.49079327357 / camera.DistanceToResolution(camera.GetDistance());
    double const k = 96 / 6000.0, cosLat = std::cos(20.0 * 0.017453292519943295);
    struct Case
    {
        ePoint2D wind, centre; // wind in m/s; expected screen vector at the centre pixel
    };
    Case const cases[] = {{{10.0, 0.0}, {k * 10.0 * pixelsPerDegree / cosLat, 0.0}},
                          {{0.0, 10.0}, {0.0, -k * 10.0 * pixelsPerDegree}}}; // north is up
    for (Case const& c : cases)
    {
        SCOPED_TRACE(testing::Message() << "wind " << c.wind.x << ", " << c.wind.y);
        FishtailProbe f;
        SetField(f, [&c](double, double) { return c.wind; });
        ASSERT_TRUE(f.Initialize(&m_scene->Engine()));
        ASSERT_TRUE(f.MakeNewParticles(&m_scene->Engine(), &m_scene->Viewport()));
        WindRaster const& r = f.m_raster;
        WindRaster::Cell const& mid = r.At(48, 48);
        EXPECT_NEAR(mid.x, c.centre.x, 1e-4 * std::fabs(c.centre.x + c.centre.y));
        EXPECT_NEAR(mid.y, c.centre.y, 1e-4 * std::fabs(c.centre.x + c.centre.y));
        EXPECT_DOUBLE_EQ(mid.speed, 10.0);
        // Everywhere on the screen the vector keeps the wind's direction. On the first
        // column and row of blocks a neighbour may fall off the screen: no vector there.
        EXPECT_EQ(r.At(0, 48).x, 0.0);
        for (int x = 2; x < 96; ++x)
            for (int y = 2; y < 96; ++y)
            {
                WindRaster::Cell const& cell = r.At(x, y);
                double along = c.wind.x ? cell.x : -cell.y, across = c.wind.x ? cell.y : cell.x;
                ASSERT_GT(along, 0.5 * std::fabs(c.centre.x + c.centre.y)) << x << ", " << y;
                ASSERT_LT(std::fabs(across), 1e-3 * along) << x << ", " << y;
            }
    }
}

TEST_F(EffectTest, FishtailTrailsFadeByTheLengthScaleEachFrame)
{
    FishtailProbe f;
    SetField(f, [](double, double) { return ePoint2D(20.0, 0.0); });
    m_scene->Add(&f);
    for (int i = 0; i < 40; ++i)
        m_scene->RenderFrame();
    // Without particles nothing new is drawn, so the frames only fade what is there.
    f.m_particles.clear();
    std::vector<unsigned char> before = f.Trails();
    for (float scale : {0.95f, 0.5f})
    {
        SCOPED_TRACE(testing::Message() << "length scale " << scale);
        f.SetWindFishtailLengthScale(scale);
        m_scene->RenderFrame();
        std::vector<unsigned char> after = f.Trails();
        size_t checked = 0;
        for (size_t i = 0; i < before.size(); ++i)
            if (before[i] >= 40)
            {
                ++checked;
                ASSERT_NEAR(after[i], before[i] * scale, 1.0) << "byte " << i;
            }
        EXPECT_GT(checked, 200u);
        before = after;
    }
    m_scene->Remove(&f);
}

TEST_F(EffectTest, FishtailSeedsWhereTheWindBlowsAndFollowsTheDensity)
{
    FishtailProbe f;
    // A gale over the western half of the disc only; the east is calm.
    SetField(f, [](double lon, double) { return ePoint2D(0.0, lon < 0.0 ? 50.0 : 0.0); });
    m_scene->Add(&f);
    for (int i = 0; i < 30; ++i)
        m_scene->RenderFrame();
    ASSERT_EQ(f.Count(), 384u);
    // 31 draws practically always find the windy half. Winds beyond the table of speed
    // levels take its top level, so they draw brightest: 245 / 255, faded once. Only the
    // seam between the halves blends to slower levels.
    for (auto const& level : f.m_particles)
        for (WindParticle const& p : level.second)
            ASSERT_NE(p.speed, 0.0);
    EXPECT_GT(f.m_particles[22].size(), 384u * 9 / 10);
    std::vector<unsigned char> trails = f.Trails();
    unsigned char brightest = 0;
    for (size_t i = 0; i < trails.size(); i += 4)
        brightest = std::max(brightest, trails[i]);
    EXPECT_NEAR(brightest, 245 * 0.95, 1.0);

    // More particles per pixel are added to the set, fewer replace it.
    f.SetWindFishtailDensity(6);
    m_scene->RenderFrame();
    EXPECT_EQ(f.Count(), 6u * 96u);
    f.SetWindFishtailDensity(2);
    m_scene->RenderFrame();
    EXPECT_EQ(f.Count(), 2u * 96u);
    // A view one pixel wide has no room for a field.
    eViewport narrow(1, 96);
    EXPECT_FALSE(f.MakeNewParticles(&m_scene->Engine(), &narrow));
    m_scene->Remove(&f);
}

TEST(FishtailGrid, AWholeCircleWrapsIntoTheFirstColumn)
{
    // Four columns 90 degrees apart; a 0..270 header moves to -180..90.
    for (double dx : {90.0, 80.0})
    {
        SCOPED_TRACE(testing::Message() << "dx " << dx);
        WindRaster::Grid g;
        g.nx = 4;
        g.ny = 2;
        g.dx = dx;
        g.right = 270.0;
        g.top = 10.0;
        g.bottom = -10.0;
        g.source = {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}};
        ASSERT_TRUE(g.Build());
        EXPECT_TRUE(g.source.empty());
        EXPECT_NEAR(g.Sample(-135.0, 5.0).x, 1.5, 1e-4);
        WindRaster::Cell seam = g.Sample(135.0, 5.0);
        bool const wraps = dx * 4 >= 360.0;
        EXPECT_NEAR(seam.x, wraps ? 2.5 : 0.0, 1e-4); // halfway from the last to the first
        EXPECT_NEAR(seam.speed, wraps ? 2.5 : 0.0, 1e-4);
    }
}

template <> struct CopySubject<eRenderWindFishtailLine>
{
    static constexpr bool kSamePixels = false;
    static eRenderWindFishtailLine* Make(Host::eScene& scene)
    {
        auto* f = new eRenderWindFishtailLine(nullptr);
        SetField(*f, [](double lon, double lat)
                 { return ePoint2D(10.0 * std::cos(lat * 0.05), 5.0 * std::sin(lon * 0.1)); });
        // Past the wait, so the copies have particles, trails and a field to share.
        scene.Add(f);
        for (int i = 0; i < 30; ++i)
            scene.RenderFrame();
        scene.Remove(f);
        return f;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fishtail, CopyIdiom, ::testing::Types<eRenderWindFishtailLine>);
