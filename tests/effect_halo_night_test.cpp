// The globe halo (fade, horizon radius, the ring on screen) and the night light (set-up,
// decoding, tile walk, night side only); both exist only on the round globe.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eColorTable.h"
#include "eGlobeModel.h"
#include "eHostTestMesh.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eRenderGlobeHalo.h"
#include "eRenderNightLight.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <cmath>
#include <cstdio>
#include <string>

using namespace KYR;
using KYR::Host::eRecord;

namespace
{

double const kR = 6378137.0;
double const kPi = 3.141592653589793;

template <typename Base> class Probe : public Base
{
public:
    using Base::m_bInitialized;
    using Base::m_pTechnique;
    int m_nInitializeCalls = 0;
    unsigned char Initialize(eRenderEngine* engine) override
    {
        ++m_nInitializeCalls;
        return Base::Initialize(engine);
    }
};

struct HaloProbe : Probe<eRenderGlobeHalo>
{
    using eRenderGlobeHalo::m_dAlpha;
    using eRenderGlobeHalo::m_pIndexData;
    using eRenderGlobeHalo::m_pVertexData;
    HaloProbe() { SetColor(ERGBA(255, 255, 255, 255)); }
};

struct NightProbe : Probe<eRenderNightLight>
{
    using eRenderNightLight::m_pColorTableTexture;
    using eRenderNightLight::m_pTexture;
};

// A tile set that keeps the arguments of the image draws it receives.
struct CountingTile : eTileSet
{
    explicit CountingTile(eRect2D const& b) : eTileSet(eTileKey(), b, eSM_GLOBE, nullptr) {}
    unsigned char RenderImage(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*, eTexture* t,
                              eRect2D* rect, ePass* pass, unsigned char apply, eTexture* table,
                              double value, void* reserved) override
    {
        ++m_nCalls;
        m_pArgs = {t, table, pass, reserved};
        m_rcRect = *rect;
        m_bApply = apply;
        m_dValue = value;
        return 1;
    }
    int m_nCalls = 0;
    std::vector<void*> m_pArgs;
    eRect2D m_rcRect;
    unsigned char m_bApply = 0;
    double m_dValue = -1.0;
};

struct FixedModel : eGlobeModel
{
    std::vector<eTileSet*>* GetVisibleTileSets(eCamera*) override { return &m_arFixed; }
    std::vector<eTileSet*> m_arFixed;
};

// A binary PPM of one colour, which the host's decoder reads.
std::string WritePPM(char const* name, int w, int h, unsigned char r, unsigned char g,
                     unsigned char b)
{
    std::string path = ::testing::TempDir() + name;
    if (FILE* f = std::fopen(path.c_str(), "wb"))
    {
        std::fprintf(f, "P6\n%d %d\n255\n", w, h);
        unsigned char px[3] = {r, g, b};
        for (int i = 0; i < w * h; ++i)
            std::fwrite(px, 1, 3, f);
        std::fclose(f);
    }
    return path;
}

// Plate carree map metres of a rectangle in degrees.
eRect2D DegreesToMap(double l, double t, double r, double b)
{
    double k = kR * kPi / 180.0;
    return eRect2D(l * k, t * k, r * k, b * k);
}

std::vector<double> UniformValues(std::vector<eRecord> const& records, char const* name)
{
    std::vector<double> out;
    for (auto const& r : records)
        if (r.kind == eRecord::Uniform && r.uniform == name && !r.values.empty())
            out.push_back(r.values[0]);
    return out;
}

size_t Draws(std::vector<eRecord> const& records)
{
    size_t n = 0;
    for (auto const& r : records)
        n += r.kind == eRecord::Draw;
    return n;
}

int LevelParameter(eTexture* t, int level, GLenum what)
{
    GLint v = 0;
    glBindTexture(GL_TEXTURE_2D, t->GetTextureID());
    glGetTexLevelParameteriv(GL_TEXTURE_2D, level, what, &v);
    glBindTexture(GL_TEXTURE_2D, 0);
    return v;
}

double AlphaAt(double d)
{
    return 1.0 - (5775000.0 - d) / 2887500.0;
}

} // namespace

TEST_F(EffectTest, HaloFadeKeepsItsLastValueAtAndAboveTheUpperDistance)
{
    HaloProbe halo;
    m_scene->Add(&halo);
    size_t draws = 0;
    auto alphaAfterFrame = [&](double distance)
    {
        // Looking down at (0, 0) the distance comes out exact.
        m_scene->Camera().LookAt(0.0, 0.0, distance, 0.0, 0.0);
        std::vector<eRecord> records = RecordFrame();
        draws = Draws(records);
        std::vector<double> alpha = UniformValues(records, "u_alpha");
        return alpha.empty() ? -99.0 : alpha.back();
    };
    EXPECT_NEAR(alphaAfterFrame(2.0e7), 1.0, 1e-7); // the starting value
    EXPECT_NEAR(alphaAfterFrame(4.0e6), AlphaAt(4.0e6), 1e-6);
    EXPECT_EQ(draws, 1u);
    // Exactly at the upper distance, and after a jump far out, the last value stays.
    EXPECT_NEAR(alphaAfterFrame(5775000.0), AlphaAt(4.0e6), 1e-6);
    EXPECT_NEAR(alphaAfterFrame(3.0e7), AlphaAt(4.0e6), 1e-6);
    EXPECT_NEAR(halo.m_dAlpha, AlphaAt(4.0e6), 1e-12);
    // Below the lower distance nothing is drawn, also after a jump far out, until a height
    // that gives a positive value.
    EXPECT_EQ(alphaAfterFrame(2.5e6), -99.0);
    EXPECT_EQ(draws, 0u);
    EXPECT_LT(halo.m_dAlpha, 0.0);
    EXPECT_EQ(alphaAfterFrame(3.0e7), -99.0);
    EXPECT_EQ(draws, 0u);
    EXPECT_NEAR(alphaAfterFrame(5.0e6), AlphaAt(5.0e6), 1e-6);
    EXPECT_EQ(draws, 1u);
}

TEST_F(EffectTest, HaloRadiusIsTheHorizonDistanceInPixels)
{
    HaloProbe halo;
    m_scene->Add(&halo);
    eCamera& camera = m_scene->Camera();
    double const h = m_scene->Height();
    // Looking straight down, the centre is on the axis and the disc a circle subtending
    // asin(R / (R + d)).
    double const views[3][4] = {
        {0.0, 0.0, 2.0e7, 0.0}, {120.0, -35.0, 4.0e7, 30.0}, {-75.0, 60.0, 8.0e6, 200.0}};
    for (auto const& v : views)
    {
        camera.LookAt(v[0], v[1], v[2], v[3], 0.0);
        std::vector<double> radius = UniformValues(RecordFrame(), "u_radius");
        ASSERT_EQ(radius.size(), 1u);
        double focal = (h / 2.0) / std::tan(camera.GetFieldOfView() * kPi / 360.0);
        double want = focal * std::tan(std::asin(kR / (kR + v[2])));
        EXPECT_NEAR(radius[0], want, 1e-3 * want) << "distance " << v[2];
    }
    // Tilted, the centre leaves the axis. The window point at the radius straight above the
    // projected centre must then lie on a ray that grazes the sphere.
    for (double pitch : {35.0, 60.0})
    {
        camera.LookAt(40.0, 10.0, 1.2e7, 15.0, pitch);
        std::vector<double> radius = UniformValues(RecordFrame(), "u_radius");
        ASSERT_EQ(radius.size(), 1u);
        eVector3T<double> c = camera.Project(eVector3T<double>(0.0, 0.0, 0.0));
        eMatrix4T<double> inv = (camera.GetProjectionMatrix() * camera.GetViewMatrix()).Inverse();
        eVector4T<double> far =
            inv * eVector4T<double>(2.0 * c.x / m_scene->Width() - 1.0,
                                    2.0 * (c.y + radius[0]) / h - 1.0, 1.0, 1.0);
        eVector3T<double> e = camera.GetCameraPosition();
        eVector3T<double> d = eVector3T<double>(far.x, far.y, far.z) / far.w - e;
        eVector3T<double> cross(e.y * d.z - e.z * d.y, e.z * d.x - e.x * d.z,
                                e.x * d.y - e.y * d.x);
        EXPECT_NEAR(cross.Length() / d.Length(), kR, 2.0e3) << "pitch " << pitch;
    }
}

TEST_F(EffectTest, HaloGlowRingSitsJustOutsideTheSilhouette)
{
    Host::eHostTestMesh earth(kR, 96, 48);
    earth.SetColor(eVector4T<float>(1.0f, 0.0f, 0.0f, 1.0f));
    m_scene->Add(&earth);
    HaloProbe halo;
    m_scene->Add(&halo);
    m_scene->Camera().LookAt(0.0, 0.0, 4.0e7, 0.0, 0.0);
    std::vector<double> radius = UniformValues(RecordFrame(), "u_radius");
    ASSERT_EQ(radius.size(), 1u);
    double r = radius[0];
    ASSERT_GT(r, 15.0);
    ASSERT_LT(r, 35.0);
    // Pixels of column 48 at a distance above the centre (pixel centres, rows from the top).
    auto above = [&](double d) { return Pixel(48, (int)std::lround(47.5 - d)); };
    std::vector<unsigned char> inside = above(r - 3.0), rim = above(r + 1.5);
    // Inside the silhouette the globe shows: the glow has faded out there.
    EXPECT_GT(inside[0], 100);
    EXPECT_LT(inside[1], 10);
    // Just outside, the white glow on the black sky; further out and in the corner, black.
    EXPECT_GT(rim[1], 40);
    EXPECT_NEAR(rim[0], rim[2], 2);
    EXPECT_LT(above(r + 10.0)[1], 3);
    EXPECT_LT(Pixel(2, 2)[1], 3);
}

TEST_F(EffectTest, OutsideTheGlobeModeNothingIsBuiltAndEachFrameRetries)
{
    m_scene->Camera().SetSceneMode(eSM_PLANE);
    HaloProbe halo;
    NightProbe lights;
    lights.SetImagePath(WritePPM("kyr_night_mode.ppm", 8, 4, 255, 255, 255).c_str());
    lights.SetImageBound(DegreesToMap(-180.0, 90.0, 180.0, -90.0));
    m_scene->Add(&halo);
    m_scene->Add(&lights);
    std::vector<eRecord> records;
    for (int i = 0; i < 3; ++i)
        records = RecordFrame();
    EXPECT_EQ(Draws(records), 0u);
    EXPECT_EQ(halo.m_nInitializeCalls, 4); // the scene's call and one a frame
    EXPECT_EQ(lights.m_nInitializeCalls, 4);
    EXPECT_TRUE(!halo.m_bInitialized && !halo.m_pVertexData);
    EXPECT_TRUE(!lights.m_bInitialized && !lights.m_pTexture);

    // Back on the globe the next frame builds both; the halo goes to the overlays, the
    // night light to group 6.
    m_scene->Camera().SetSceneMode(eSM_GLOBE);
    m_scene->Camera().LookAt(0.0, 0.0, 2.0e7, 0.0, 0.0);
    records = RecordFrame();
    EXPECT_TRUE(halo.m_bInitialized && lights.m_bInitialized);
    EXPECT_GE(Draws(records), 2u);
    std::vector<eRecord> queued = Of(records, eRecord::Queue);
    ASSERT_EQ(queued.size(), 2u);
    EXPECT_EQ(queued[0].op, "AddOverlayRenderable");
    EXPECT_EQ(queued[1].op, "AddSolidTextureRenderable");
    EXPECT_EQ(queued[1].first, 6);
    // The quad: tag 129, four corners on attribute 7, two triangles.
    eVertexData* vd = halo.m_pVertexData;
    EXPECT_EQ(vd->GetVertexType(), 129u);
    EXPECT_EQ(vd->GetVertexElements()[1].m_eIndex, eAI_TEXCOORD0);
    float const* v = reinterpret_cast<float const*>(vd->GetVertex(0));
    EXPECT_EQ(std::vector<float>(v, v + 20),
              std::vector<float>({0, 0, 0, -1, -1, 0, 0, 0, -1, 1, 0, 0, 0, 1, 1, 0, 0, 0, 1, -1}));
    EXPECT_EQ(halo.m_pIndexData->GetIndexBuffer(), std::vector<unsigned short>({0, 1, 2, 0, 2, 3}));
}

TEST_F(EffectTest, NightLightSetUpAndDecoding)
{
    // Without a rectangle, a path, or a readable file nothing is made.
    std::string path = WritePPM("kyr_night_decode.ppm", 8, 4, 200, 40, 90);
    eRect2D bound = DegreesToMap(-180.0, 90.0, 180.0, -90.0);
    NightProbe noRect, noPath, missing;
    noRect.SetImagePath(path.c_str());
    noPath.SetImageBound(bound);
    missing.SetImagePath((path + ".absent").c_str());
    missing.SetImageBound(bound);
    for (NightProbe* p : {&noRect, &noPath, &missing})
    {
        EXPECT_EQ(p->Initialize(&m_scene->Engine()), 0);
        EXPECT_TRUE(!p->m_pTexture && !p->m_pColorTableTexture);
    }
    // Without a table: 24-bit colour, mipmapped.
    NightProbe colour;
    colour.SetImagePath(path.c_str());
    colour.SetImageBound(bound);
    ASSERT_EQ(colour.Initialize(&m_scene->Engine()), 1);
    EXPECT_EQ(colour.m_pColorTableTexture, nullptr);
    EXPECT_EQ(LevelParameter(colour.m_pTexture, 0, GL_TEXTURE_GREEN_SIZE), 8);
    EXPECT_EQ(LevelParameter(colour.m_pTexture, 0, GL_TEXTURE_LUMINANCE_SIZE), 0);
    EXPECT_EQ(LevelParameter(colour.m_pTexture, 1, GL_TEXTURE_WIDTH), 4);
    // With a table (copied when set): 8-bit grey, and the table one pixel wide, in order.
    eColorTable table;
    table.CreateGradient(16, ERGBA(0, 0, 0, 255), ERGBA(0, 255, 0, 255));
    NightProbe grey;
    grey.SetImagePath(path.c_str());
    grey.SetImageBound(bound);
    grey.SetColorTable(&table);
    table.CreateGradient(4, 0, 0);
    ASSERT_EQ(grey.Initialize(&m_scene->Engine()), 1);
    EXPECT_EQ(LevelParameter(grey.m_pTexture, 0, GL_TEXTURE_LUMINANCE_SIZE), 8);
    EXPECT_EQ(LevelParameter(grey.m_pTexture, 0, GL_TEXTURE_GREEN_SIZE), 0);
    eTexture* ramp = grey.m_pColorTableTexture;
    ASSERT_NE(ramp, nullptr);
    ASSERT_EQ(LevelParameter(ramp, 0, GL_TEXTURE_WIDTH), 1);
    ASSERT_EQ(LevelParameter(ramp, 0, GL_TEXTURE_HEIGHT), 16);
    std::vector<unsigned char> texels(16 * 4);
    glBindTexture(GL_TEXTURE_2D, ramp->GetTextureID());
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(texels[(size_t)i * 4 + 1], EGREENVAL((int)grey.GetColorTable()->GetRGB(i)));
    EXPECT_EQ(texels[1], 0);
    EXPECT_EQ(texels[15 * 4 + 1], 255);
}

TEST_F(EffectTest, NightLightDrawsOnlyTheTileSetsItsImageMeets)
{
    FixedModel model;
    CountingTile west(eRect2D(-90.0, 45.0, -45.0, 0.0)), touching(eRect2D(0.0, 10.0, 30.0, -20.0)),
        east(eRect2D(90.0, 45.0, 135.0, 0.0));
    model.m_arFixed = {&west, nullptr, &touching, &east};
    m_scene->Engine().SetGlobeModel(&model);
    NightProbe lights;
    lights.SetImagePath(WritePPM("kyr_night_tiles.ppm", 8, 4, 255, 255, 255).c_str());
    lights.SetImageBound(DegreesToMap(-60.0, 30.0, 0.0, -30.0));
    m_scene->Add(&lights);
    std::vector<eRecord> records = RecordFrame();
    m_scene->Engine().SetGlobeModel(&m_scene->GlobeModel());

    EXPECT_EQ(west.m_nCalls, 1);
    EXPECT_EQ(touching.m_nCalls, 1); // a shared edge counts
    EXPECT_EQ(east.m_nCalls, 0);
    EXPECT_EQ(west.m_pArgs, std::vector<void*>({lights.m_pTexture, nullptr,
                                                lights.m_pTechnique->GetPass(0), nullptr}));
    EXPECT_EQ(west.m_bApply, 1);
    EXPECT_EQ(west.m_dValue, 0.0);
    // The rectangle arrives in logical coordinates: degrees on the globe.
    eRect2D const& rc = west.m_rcRect;
    EXPECT_NEAR(rc.left, -60.0, 1e-9);
    EXPECT_NEAR(rc.top, 30.0, 1e-9);
    EXPECT_NEAR(rc.right, 0.0, 1e-9);
    EXPECT_NEAR(rc.bottom, -30.0, 1e-9);
    // Inside the host's pass pair around the entry, the walk has its own.
    std::vector<eRecord::Kind> passes;
    for (auto const& r : records)
        if (r.kind == eRecord::BeginPass || r.kind == eRecord::EndPass)
            passes.push_back(r.kind);
    EXPECT_EQ(passes, std::vector<eRecord::Kind>({eRecord::BeginPass, eRecord::BeginPass,
                                                  eRecord::EndPass, eRecord::EndPass}));
}

TEST_F(EffectTest, NightLightShowsOnTheNightSideOnly)
{
    // Sun over 90 E, camera over 0 E: the west half of the disc is in the night.
    m_scene->Engine().SetSunPosition(eVector3T<double>(0.0, 1.496e11, 0.0));
    eRect2D bound = DegreesToMap(-180.0, 90.0, 180.0, -90.0);
    NightProbe colour;
    colour.SetImagePath(WritePPM("kyr_night_pixels.ppm", 16, 8, 255, 200, 100).c_str());
    colour.SetImageBound(bound);
    m_scene->Add(&colour);
    m_scene->RenderFrame();
    std::vector<unsigned char> night = Pixel(24, 48), day = Pixel(72, 48);
    EXPECT_GT(night[0], 240);
    EXPECT_NEAR(night[1], 220, 12); // 200 lifted by ambient and diffuse
    EXPECT_NEAR(night[2], 110, 12);
    EXPECT_LT(day[0] + day[1] + day[2], 6);

    // With a table the grey value picks the colour: white reads the table's last, green.
    m_scene->Remove(&colour);
    eColorTable table;
    table.CreateGradient(8, ERGBA(0, 0, 0, 255), ERGBA(0, 255, 0, 255));
    NightProbe grey;
    grey.SetImagePath(WritePPM("kyr_night_grey.ppm", 16, 8, 255, 255, 255).c_str());
    grey.SetImageBound(bound);
    grey.SetColorTable(&table);
    m_scene->Add(&grey);
    m_scene->RenderFrame();
    night = Pixel(24, 48);
    EXPECT_LT(night[0], 10);
    EXPECT_GT(night[1], 240);
    EXPECT_LT(Pixel(72, 48)[1], 3);
}

// The white glow around the Earth seen from 40,000 km.
template <> struct CopySubject<eRenderGlobeHalo>
{
    static constexpr bool kSamePixels = true;
    static void Prepare(Host::eScene& scene) { scene.Camera().LookAt(0.0, 0.0, 4.0e7, 0.0, 0.0); }
    static eRenderGlobeHalo* Make(Host::eScene&)
    {
        auto* halo = new eRenderGlobeHalo();
        halo->SetColor(ERGBA(255, 255, 255, 255));
        return halo;
    }
};

// Lights over the whole night side, coloured through a table the copies share.
template <> struct CopySubject<eRenderNightLight>
{
    static constexpr bool kSamePixels = true;
    static void Prepare(Host::eScene& scene)
    {
        scene.Engine().SetSunPosition(eVector3T<double>(0.0, 1.496e11, 0.0));
    }
    static eRenderNightLight* Make(Host::eScene&)
    {
        static std::string const path = WritePPM("kyr_night_copy.ppm", 16, 8, 255, 255, 255);
        eColorTable table;
        table.CreateGradient(8, ERGBA(0, 0, 0, 255), ERGBA(255, 160, 0, 255));
        auto* lights = new eRenderNightLight();
        lights->SetImagePath(path.c_str());
        lights->SetImageBound(DegreesToMap(-180.0, 90.0, 180.0, -90.0));
        lights->SetColorTable(&table);
        return lights;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Halo, CopyIdiom, ::testing::Types<eRenderGlobeHalo>);
INSTANTIATE_TYPED_TEST_SUITE_P(NightLight, CopyIdiom, ::testing::Types<eRenderNightLight>);
