// Tiling: the value spans choosing and mixing the textures on the screen, when nothing is
// drawn, and who frees the tiling textures.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eMathEngine.h"
#include "eRenderTiling.h"
#include "eTexture.h"
#include <cmath>
#include <memory>

using namespace KYR;

namespace
{

double const kMetresPerDegree = 6378137.0 * eMathEngine::DEG_TO_RAD;

// A raster of three values side by side over 30 W .. 30 E, 20 N .. 20 S (map metres), each
// three pixels wide so that it holds still around its middle under linear filtering.
eRasterBlock* ThreeValues(float a, float b, float c)
{
    auto* block = new eRasterBlock();
    float* data = static_cast<float*>(block->Allocate(ePF_FLOAT, 9, 1));
    for (int i = 0; i < 9; ++i)
        data[i] = i < 3 ? a : i < 6 ? b : c;
    block->m_dMinimum = 0.0;
    block->m_dMaximum = 1.0;
    block->m_rcBounds = eRect2D(-30.0 * kMetresPerDegree, 20.0 * kMetresPerDegree,
                                30.0 * kMetresPerDegree, -20.0 * kMetresPerDegree);
    return block;
}

// A texture of one colour, freed with its image by whoever deletes it.
eTexture* Solid(unsigned char r, unsigned char g, unsigned char b)
{
    auto* image = new eImageData();
    image->Allocate(4, 4, 24);
    for (int i = 0; i < 16; ++i)
    {
        image->m_pData[i * 3] = r;
        image->m_pData[i * 3 + 1] = g;
        image->m_pData[i * 3 + 2] = b;
    }
    auto* texture = new eTexture();
    texture->SetAutoRelease(1);
    texture->SetImageData(image);
    return texture;
}

// Red alone over 0 .. 0.3, blue alone over 0.7 .. 1, mixed between.
eRenderTiling* RedBlueTiling(eRasterBlock* block)
{
    auto* tiling = new eRenderTiling(block);
    tiling->SetTilingBounds(block->m_rcBounds);
    tiling->AddTilingTexture(Solid(255, 0, 0));
    tiling->AddTilingTexture(Solid(0, 0, 255));
    tiling->SetTilingMixSpans({0.0f, 0.3f, 0.7f, 1.0f});
    return tiling;
}

} // namespace

class TilingTest : public EffectTest
{
protected:
    void SetUp() override
    {
        EffectTest::SetUp();
        m_scene->Engine().SetSunPosition(eMathEngine::SphericalToCartesian(0.0, 0.0, 1.5e11));
    }
    std::vector<unsigned char> At(double lon, double lat)
    {
        eVector3T<double> s = m_scene->Camera().Project(eMathEngine::SphericalToCartesian(
            lon * eMathEngine::DEG_TO_RAD, lat * eMathEngine::DEG_TO_RAD, 6378137.0));
        return Pixel((int)s.x, (int)(m_scene->Height() - s.y));
    }
    // Draws `tiling` alone (it is uninitialised and deleted after) and returns the draws.
    std::vector<eRecord> DrawAlone(eRenderTiling* tiling)
    {
        std::unique_ptr<eRenderTiling> owner(tiling);
        m_scene->Add(tiling);
        std::vector<eRecord> draws = Of(RecordFrame(), eRecord::Draw);
        m_scene->Remove(tiling);
        tiling->UnInitialize(&m_scene->Engine());
        return draws;
    }
};

// A value inside a span shows that span's texture; 0.5, halfway between the spans, mixes the
// two neighbours half and half.
TEST_F(TilingTest, ValuesInsideSpansShowTheirTextureAndBetweenSpansMixThem)
{
    m_scene->SetClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    std::vector<eRecord> draws = DrawAlone(RedBlueTiling(ThreeValues(0.1f, 0.5f, 0.9f)));
    ASSERT_FALSE(draws.empty());
    // The three values hold around 20 W, 0 and 20 E.
    std::vector<unsigned char> red = At(-20.0, 0.0), mixed = At(0.0, 0.0), blue = At(20.0, 0.0);
    EXPECT_GT(red[0], 150);
    EXPECT_LT(red[2], 10);
    EXPECT_GT(blue[2], 150);
    EXPECT_LT(blue[0], 10);
    EXPECT_GT(mixed[0], 60);
    EXPECT_NEAR(mixed[0], mixed[2], 3) << "half red, half blue";
    for (auto const& px : {red, mixed, blue})
        EXPECT_LT(px[1], 10) << "the raster covers the place";
    EXPECT_GT(At(0.0, 40.0)[1], 250) << "beyond the raster's rectangle";
}

// Nothing reaches the tiles without tiling textures or with empty bounds; in a flat 2-D view
// the technique is left blank, reported once.
TEST_F(TilingTest, DrawsNothingWithoutTexturesOrBounds)
{
    EXPECT_FALSE(DrawAlone(RedBlueTiling(ThreeValues(0.1f, 0.5f, 0.9f))).empty());
    eRenderTiling* bare = new eRenderTiling(ThreeValues(0.1f, 0.5f, 0.9f));
    bare->SetTilingBounds(eRect2D(-1e6, 1e6, 1e6, -1e6));
    EXPECT_TRUE(DrawAlone(bare).empty()) << "no textures";
    eRenderTiling* unbounded = RedBlueTiling(ThreeValues(0.1f, 0.5f, 0.9f));
    unbounded->SetTilingBounds(eRect2D());
    EXPECT_TRUE(DrawAlone(unbounded).empty()) << "empty bounds";

    m_scene.reset(new Host::eScene(96, 96, eSM_PLANE));
    m_scene->Camera().SetDimensionMode(eDM_2D);
    m_scene->Camera().LookAt(0.0, 0.0, 2.0e7, 0.0, 0.0);
    eRenderTiling flat(ThreeValues(0.1f, 0.5f, 0.9f));
    m_scene->Add(&flat);
    Host::eRecorder::Get().Start();
    m_scene->RenderFrame();
    m_scene->RenderFrame();
    Host::eRecorder::Get().Stop();
    std::vector<eRecord> asserts = Host::eRecorder::Get().Of(eRecord::Assert);
    ASSERT_EQ(asserts.size(), 1u);
    EXPECT_EQ(asserts[0].op, "false");
    EXPECT_EQ(asserts[0].uniform, "Src/RenderEffect/eRenderTiling");
    m_scene->Remove(&flat);
}

// With auto release clear the textures stay the caller's (these live on the stack, so a
// delete would be caught); with it set, the object frees each texture once, also one listed
// twice, when the last entry goes. Removing at the end of the list does nothing.
TEST_F(TilingTest, AutoReleaseDecidesWhoFreesTheTextures)
{
    eTexture a, b;
    eRenderTiling borrowed;
    borrowed.SetAutoReleaseTexture(0);
    borrowed.AddTilingTexture(&a);
    borrowed.AddTilingTexture(&b);
    borrowed.RemoveTilingTextureAt(2);
    ASSERT_EQ(borrowed.GetTilingTextureCount(), 2);
    borrowed.RemoveTilingTextureAt(0);
    EXPECT_EQ(borrowed.GetTilingTexture(0), &b);
    EXPECT_EQ(borrowed.GetTilingTexture(1), nullptr);
    borrowed.UnInitialize(&m_scene->Engine());
    EXPECT_EQ(borrowed.GetTilingTextureCount(), 0);

    eRenderTiling owner;
    eTexture* twice = Solid(1, 2, 3);
    owner.AddTilingTexture(twice);
    owner.AddTilingTexture(twice);
    owner.RemoveTilingTextureAt(0);
    ASSERT_EQ(owner.GetTilingTexture(0), twice);
    EXPECT_EQ(owner.GetTilingTexture(0)->GetWidth(), 4) << "still alive";
    owner.RemoveAllTilingTextures();
    EXPECT_EQ(owner.GetTilingTextureCount(), 0);
}

template <> struct CopySubject<eRenderTiling>
{
    static constexpr bool kSamePixels = true;
    static eRenderTiling* Make(KYR::Host::eScene& scene)
    {
        scene.Engine().SetSunPosition(eMathEngine::SphericalToCartesian(0.0, 0.0, 1.5e11));
        return RedBlueTiling(ThreeValues(0.1f, 0.5f, 0.9f));
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Tiling, CopyIdiom, ::testing::Types<eRenderTiling>);
