// Tile overlays over the globe's relief: a raster laid over a mountain stays in sight when the
// globe with its relief is drawn first, because the tiles lie on that same relief.
#include "EffectFixture.h"
#include "eGlobeRelief.h"
#include "eRenderGlobe.h"
#include "eRenderHillShading.h"

using namespace KYR;

namespace
{

double const kMetresPerDegree = 6378137.0 * 0.017453292519943295;

// A constant raster of 8 x 8 floats over a map rectangle.
eRenderHillShading* RedShading(eRect2D const& mapBounds)
{
    auto* block = new eRasterBlock();
    float* data = static_cast<float*>(block->Allocate(ePF_FLOAT, 8, 8));
    for (int i = 0; i < 64; ++i)
        data[i] = 0.5f;
    block->m_dMinimum = 0.0;
    block->m_dMaximum = 1.0;
    block->m_rcBounds = mapBounds;
    return new eRenderHillShading(block);
}

class TileRelief : public EffectTest
{
protected:
    void TearDown() override
    {
        for (eRenderable* e : {(eRenderable*)m_pGlobe.get(), (eRenderable*)m_pShading.get()})
            if (e)
            {
                m_scene->Remove(e);
                e->UnInitialize(&m_scene->Engine());
            }
        m_pShading.reset();
        m_pGlobe.reset();
        EffectTest::TearDown();
    }
    std::unique_ptr<eRenderGlobe> m_pGlobe;
    std::unique_ptr<eRenderHillShading> m_pShading;
};

} // namespace

TEST_F(TileRelief, AnOverlayOverAMountainIsVisibleOverTheReliefGlobe)
{
    // The highest vertex of the globe's relief, away from the poles.
    Host::eGlobeRelief const& relief = m_scene->GlobeModel().GetRelief();
    int top = -1;
    double lon = 0.0, lat = 0.0;
    for (int i = 16; i < Host::eGlobeRelief::kRows - 16; ++i)
        for (int j = 0; j < Host::eGlobeRelief::kColumns - 1; ++j)
            if (relief.Step(i, j) > top)
            {
                top = relief.Step(i, j);
                lon = Host::eGlobeRelief::Longitude(j);
                lat = Host::eGlobeRelief::Latitude(i);
            }
    ASSERT_GT(relief.Lift((unsigned char)top), 50000.0) << "a mountain well above the sphere";

    // Seen from above at a slant, the peak stands between the eye and the sea-level sphere.
    m_scene->Camera().LookAt(lon, lat, 2.5e6, 30.0, 40.0);
    m_pGlobe.reset(new eRenderGlobe());
    m_pGlobe->SetUseTexture(1);
    m_scene->Add(m_pGlobe.get());
    double const k = kMetresPerDegree;
    m_pShading.reset(
        RedShading(eRect2D((lon - 8.0) * k, (lat + 8.0) * k, (lon + 8.0) * k, (lat - 8.0) * k)));
    m_scene->Add(m_pShading.get());
    eColorTable red; // after Create, which sets the stock ramp
    red.CreateGradient(8, ERGBA(255, 0, 0, 255), ERGBA(255, 0, 0, 255));
    m_pShading->SetColorTable(&red);
    m_scene->RenderFrame();
    for (auto const& at : {std::make_pair(48, 48), std::make_pair(40, 40), std::make_pair(56, 52)})
    {
        std::vector<unsigned char> px = Pixel(at.first, at.second);
        EXPECT_GT(px[0], 200) << at.first << ", " << at.second;
        EXPECT_LT(px[1], 40);
        EXPECT_LT(px[2], 40);
    }

    // The same tiles on the bare globe mesh lie under the mountain, which hides them.
    m_scene->GlobeModel().SetElevationPicture("");
    m_scene->RenderFrame();
    std::vector<unsigned char> hidden = Pixel(48, 48);
    EXPECT_FALSE(hidden[0] > 200 && hidden[1] < 40 && hidden[2] < 40);
}
