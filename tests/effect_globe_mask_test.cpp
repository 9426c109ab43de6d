// The globe mask: the blocks that tile the world, and on the screen the background colour with
// the opening the mask picture cuts into it.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eFile.h"
#include "eMathEngine.h"
#include <epoxy/gl.h>
#include "eRenderGlobeMask.h"
#include <cmath>
#include <cstdlib>
#include <string>
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

using namespace KYR;

namespace
{

// A mask picture 8 x 8: its western half white (open), its eastern half black.
std::string HalfOpenPicture()
{
    std::string path = ::testing::TempDir() + "kyr_globe_mask_half.png";
    unsigned char px[8 * 8 * 4];
    for (int i = 0; i < 64; ++i)
    {
        unsigned char v = (i % 8) < 4 ? 255 : 0;
        px[i * 4] = px[i * 4 + 1] = px[i * 4 + 2] = v;
        px[i * 4 + 3] = 255;
    }
    EXPECT_TRUE(stbi_write_png(path.c_str(), 8, 8, 4, px, 32));
    return path;
}

} // namespace

class GlobeMaskTest : public EffectTest
{
protected:
    // The pixel where a point of the ground shows.
    std::vector<unsigned char> At(double lon, double lat)
    {
        eVector3T<double> s = m_scene->Camera().Project(eMathEngine::SphericalToCartesian(
            lon * eMathEngine::DEG_TO_RAD, lat * eMathEngine::DEG_TO_RAD, 6378137.0));
        return Pixel((int)s.x, (int)(m_scene->Height() - s.y));
    }
};

// One patch of 7350 indices is drawn fifty times, each time over the next block: 72 by 18
// degrees, rows from the north down, together the world once over.
TEST_F(GlobeMaskTest, DrawsThePatchOverFiftyBlocksThatTileTheWorld)
{
    eRenderGlobeMask mask;
    m_scene->Add(&mask);
    std::vector<eRecord> all = RecordFrame();
    std::vector<eRecord> draws = Of(all, eRecord::Draw);
    std::vector<eRecord> blocks;
    for (eRecord const& r : Of(all, eRecord::Uniform))
        if (r.uniform == "u_blockRect")
            blocks.push_back(r);
    ASSERT_EQ(draws.size(), 50u);
    ASSERT_EQ(blocks.size(), 50u);
    double area = 0.0;
    for (size_t i = 0; i < 50; ++i)
    {
        EXPECT_EQ(draws[i].mode, GL_TRIANGLES);
        EXPECT_EQ(draws[i].count, 7350);
        std::vector<double> want = {-180.0 + 72.0 * (i % 5), 90.0 - 18.0 * (i / 5), 72.0, 18.0};
        EXPECT_EQ(blocks[i].values, want) << "block " << i;
        area += blocks[i].values[2] * blocks[i].values[3];
    }
    EXPECT_DOUBLE_EQ(area, 360.0 * 180.0);
    mask.UnInitialize(&m_scene->Engine());
}

// Green stands for what lies below (the cleared frame). Inside the mask rectangle the
// picture's white half opens the cover and its black half does not; outside the rectangle,
// and everywhere without a picture, the background covers the globe by its alpha. Space
// beyond the globe stays as it was.
TEST_F(GlobeMaskTest, OpeningShowsWhatIsBelowAndTheRestTheBackground)
{
    m_scene->SetClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    std::string picture = HalfOpenPicture();
    struct Case
    {
        char const* name;
        bool withPicture;
        unsigned char alpha;
        int open[3], closed[3];
    } const cases[] = {
        {"picture, opaque", true, 255, {0, 255, 0}, {255, 0, 0}},
        {"picture, half", true, 128, {0, 255, 0}, {128, 127, 0}},
        {"no picture", false, 255, {255, 0, 0}, {255, 0, 0}},
    };
    for (Case const& c : cases)
    {
        SCOPED_TRACE(c.name);
        eRenderGlobeMask mask;
        if (c.withPicture)
            mask.SetMaskTexture(picture.c_str(), eRect2D(-30.0, 30.0, 30.0, -30.0));
        mask.SetBackgroundColor(eVector4T<unsigned char>(255, 0, 0, c.alpha));
        m_scene->Add(&mask);
        m_scene->RenderFrame();
        m_scene->Remove(&mask);
        auto near = [](std::vector<unsigned char> const& px, int const(&want)[3])
        {
            return std::abs(px[0] - want[0]) <= 2 && std::abs(px[1] - want[1]) <= 2 &&
                   std::abs(px[2] - want[2]) <= 2;
        };
        EXPECT_TRUE(near(At(-15.0, 5.0), c.open)) << "the white half";
        EXPECT_TRUE(near(At(15.0, -5.0), c.closed)) << "the black half";
        EXPECT_TRUE(near(At(55.0, 0.0), c.closed)) << "beyond the mask rectangle";
        EXPECT_TRUE(near(At(-10.0, 60.0), c.closed)) << "another block";
        EXPECT_TRUE(near(Pixel(1, 1), {0, 255, 0})) << "space";
        mask.UnInitialize(&m_scene->Engine());
    }
}

template <> struct CopySubject<eRenderGlobeMask>
{
    static constexpr bool kSamePixels = true;
    static eRenderGlobeMask* Make(KYR::Host::eScene&)
    {
        auto* mask = new eRenderGlobeMask();
        mask->SetMaskTexture(eSystem::GetWorkPath() + "Resources/Icons/australia_mask.png",
                             eRect2D(-40.0, 30.0, 40.0, -30.0));
        mask->SetBackgroundColor(eVector4T<unsigned char>(0, 0, 80, 200));
        return mask;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(GlobeMask, CopyIdiom, ::testing::Types<eRenderGlobeMask>);
