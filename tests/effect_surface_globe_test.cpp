// The surface globe: when it draws at all, and that its whole-Earth pictures lie over the
// whole globe as the tiles draw them.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eMathEngine.h"
#include "eRenderSurfaceGlobe.h"
#include <cmath>
#include <string>
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

using namespace KYR;

namespace
{

int const kWidth = 64, kHeight = 32;

// Pictures of the whole Earth, 64 x 32: the base image in four bands of longitude (red,
// green, blue, yellow from the west), a mask set south of 45 S, and a flat bump map.
struct Pictures
{
    std::string base, mask, bump;
    Pictures()
    {
        std::string dir = ::testing::TempDir() + "kyr_surface_globe_";
        base = dir + "base.png";
        mask = dir + "mask.png";
        bump = dir + "bump.png";
        unsigned char const bands[4][3] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 0}};
        std::vector<unsigned char> rgb(kWidth * kHeight * 3), m(kWidth * kHeight),
            b(kWidth * kHeight, 0);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
            {
                for (int k = 0; k < 3; ++k)
                    rgb[(y * kWidth + x) * 3 + k] = bands[x * 4 / kWidth][k];
                m[y * kWidth + x] = y >= kHeight * 3 / 4 ? 255 : 0;
            }
        EXPECT_TRUE(stbi_write_png(base.c_str(), kWidth, kHeight, 3, rgb.data(), kWidth * 3));
        EXPECT_TRUE(stbi_write_png(mask.c_str(), kWidth, kHeight, 1, m.data(), kWidth));
        EXPECT_TRUE(stbi_write_png(bump.c_str(), kWidth, kHeight, 1, b.data(), kWidth));
    }
};

// A globe of the pictures above, the mask colour magenta; with a table, a ramp that leaves
// the base image as it is (transparent).
eRenderSurfaceGlobe* MakeGlobe(Pictures const& p, bool withTable)
{
    auto* globe = new eRenderSurfaceGlobe();
    globe->SetBasePath(p.base.c_str());
    globe->SetMaskPath(p.mask.c_str());
    globe->SetBumpPath(p.bump.c_str());
    globe->SetMaskColor(ERGBA(255, 0, 255, 255));
    if (withTable)
    {
        eColorTable table;
        table.CreateGradient(4, ERGBA(0, 0, 0, 0), ERGBA(0, 0, 0, 0));
        globe->SetColorTable(&table);
    }
    return globe;
}

eVector3T<double> World(double lon, double lat, double height = 0.0)
{
    return eMathEngine::SphericalToCartesian(lon * eMathEngine::DEG_TO_RAD,
                                             lat * eMathEngine::DEG_TO_RAD, 6378137.0 + height);
}

} // namespace

using SurfaceGlobeTest = EffectTest;

// Tiles draw only on the round globe and only once the ramp exists; otherwise the frame
// stays as it was cleared.
TEST_F(SurfaceGlobeTest, DrawsOnlyOnTheGlobeWithATable)
{
    Pictures pictures;
    struct Case
    {
        char const* name;
        eSceneMode mode;
        bool withTable;
        bool draws;
    } const cases[] = {
        {"globe with a table", eSM_GLOBE, true, true},
        {"globe without a table", eSM_GLOBE, false, false},
        {"plane map", eSM_PLANE, true, false},
    };
    for (Case const& c : cases)
    {
        SCOPED_TRACE(c.name);
        m_scene.reset(new Host::eScene(96, 96, c.mode));
        m_scene->Camera().LookAt(0.0, 0.0, 2.0e7, 0.0, 0.0);
        m_scene->RenderFrame();
        std::vector<unsigned char> empty = m_scene->ReadPixels();
        std::unique_ptr<eRenderSurfaceGlobe> globe(MakeGlobe(pictures, c.withTable));
        m_scene->Add(globe.get());
        std::vector<eRecord> draws = Of(RecordFrame(), eRecord::Draw);
        EXPECT_EQ(!draws.empty(), c.draws);
        EXPECT_EQ(m_scene->ReadPixels() != empty, c.draws);
        m_scene->Remove(globe.get());
    }
}

// Seen from two opposite sides, each band of the base image lies at its own longitudes, the
// mask colour covers what the mask marks, and nothing of the globe is left out.
TEST_F(SurfaceGlobeTest, WholeEarthPicturesCoverTheWholeGlobe)
{
    Pictures pictures;
    std::unique_ptr<eRenderSurfaceGlobe> globe(MakeGlobe(pictures, true));
    m_scene->Add(globe.get());
    struct Place
    {
        double lon, lat;
        bool red, green, blue;
    };
    struct View
    {
        double lon;
        Place places[3];
    } const views[] = {
        {0.0,
         {{-45.0, 30.0, false, true, false},
          {45.0, -30.0, false, false, true},
          {-20.0, -62.0, true, false, true}}},
        {180.0,
         {{135.0, 30.0, true, true, false},
          {-135.0, -30.0, true, false, false},
          {160.0, -62.0, true, false, true}}},
    };
    for (View const& v : views)
    {
        m_scene->Camera().LookAt(v.lon, 0.0, 2.0e7, 0.0, 0.0);
        m_scene->Engine().SetSunPosition(World(v.lon, 0.0, 1.5e11));
        m_scene->RenderFrame();
        int covered = 0, inside = 0;
        for (int y = 0; y < 96; y += 4)
            for (int x = 0; x < 96; x += 4)
            {
                double dx = x - 47.5, dy = y - 47.5;
                if (dx * dx + dy * dy > 30.0 * 30.0) // well inside the disc of the globe
                    continue;
                ++inside;
                std::vector<unsigned char> px = Pixel(x, y);
                covered += px[0] + px[1] + px[2] > 100;
            }
        EXPECT_EQ(covered, inside) << "view from " << v.lon;
        for (Place const& p : v.places)
        {
            eVector3T<double> s = m_scene->Camera().Project(World(p.lon, p.lat));
            std::vector<unsigned char> px = Pixel((int)s.x, (int)(m_scene->Height() - s.y));
            bool const want[3] = {p.red, p.green, p.blue};
            for (int k = 0; k < 3; ++k)
                EXPECT_TRUE(want[k] ? px[k] > 110 : px[k] < 40)
                    << "at " << p.lon << ", " << p.lat << " channel " << k << " is " << (int)px[k];
        }
    }
}

template <> struct CopySubject<eRenderSurfaceGlobe>
{
    static constexpr bool kSamePixels = true;
    static eRenderSurfaceGlobe* Make(KYR::Host::eScene&)
    {
        static Pictures const pictures;
        return MakeGlobe(pictures, true);
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(SurfaceGlobe, CopyIdiom, ::testing::Types<eRenderSurfaceGlobe>);
