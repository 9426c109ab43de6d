// The globe: its mesh from the elevation picture, the sun matrices, one frame of two
// passes with its uniforms, the release order, and the lit pixels.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eCamera.h"
#include "eHardwareBuffer.h"
#include "eMesh.h"
#include "eRenderGlobe.h"
#include "eRenderSystem.h"
#include <epoxy/gl.h>
#include <cmath>
#include <cstdio>
#include <functional>

using namespace KYR;

namespace
{

class ProbeGlobe : public eRenderGlobe
{
public:
    using eRenderGlobe::CompulateSunMatrix;
    using eRenderGlobe::m_arSHCoefficients;
    using eRenderGlobe::m_bInitialized;
    using eRenderGlobe::m_matSunProjection;
    using eRenderGlobe::m_matSunSpace;
    using eRenderGlobe::m_matSunView;
    using eRenderGlobe::m_nDepthTexture;
    using eRenderGlobe::m_nEarthMapTexture;
    using eRenderGlobe::m_nElevationTexture;
    using eRenderGlobe::m_nFrameBuffer;
    using eRenderGlobe::m_nLatitudeCount;
    using eRenderGlobe::m_nWidth;
    using eRenderGlobe::m_pIndexData;
    using eRenderGlobe::m_pTechnique;
    using eRenderGlobe::m_pVertexData;
};

// Notes the frame buffer and colour writes at each draw.
class ProbeRenderSystem : public eRenderSystem
{
public:
    struct State
    {
        int frameBuffer;
        bool colourWrites;
    };
    void DrawIndexed(eOperationType type, eVertexData* v, eIndexData* i, bool flag) override
    {
        GLint fb = 0;
        GLboolean mask[4] = {0, 0, 0, 0};
        glGetIntegerv(GL_FRAMEBUFFER_BINDING, &fb);
        glGetBooleanv(GL_COLOR_WRITEMASK, mask);
        m_arStates.push_back({fb, mask[0] || mask[1] || mask[2] || mask[3]});
        eRenderSystem::DrawIndexed(type, v, i, flag);
    }
    std::vector<State> m_arStates;
};

// A picture file in PPM form with the colour of each pixel from a function.
std::string WritePicture(char const* name, int w, int h,
                         std::function<void(int x, int y, unsigned char* rgb)> const& colour)
{
    std::string path = ::testing::TempDir() + name;
    FILE* f = std::fopen(path.c_str(), "wb");
    std::fprintf(f, "P6\n%d %d\n255\n", w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
        {
            unsigned char rgb[3];
            colour(x, y, rgb);
            std::fwrite(rgb, 1, 3, f);
        }
    std::fclose(f);
    return path;
}

int const kPicW = 24, kPicH = 12;
unsigned char Grey(int x, int y)
{
    return (unsigned char)(20 + 10 * y + x);
}

// Byte k of the grey picture once decoded to four bytes a pixel (alpha 255).
unsigned char DecodedByte(size_t k)
{
    if (k % 4 == 3)
        return 255;
    size_t pixel = k / 4;
    return Grey((int)(pixel % kPicW), (int)(pixel / kPicW));
}

template <typename T> std::vector<T> ReadBuffer(unsigned int target, unsigned int id, size_t n)
{
    std::vector<T> out(n);
    glBindBuffer(target, id);
    glGetBufferSubData(target, 0, (GLsizeiptr)(n * sizeof(T)), out.data());
    glBindBuffer(target, 0);
    return out;
}

std::vector<float> ReadVertices(ProbeGlobe& g, size_t count = 10585)
{
    return ReadBuffer<float>(GL_ARRAY_BUFFER, g.m_pVertexData->GetHardwareBuffer()->GetBufferID(),
                             count * 3);
}

std::string const kMissing = "/nonexistent/picture.jpg";

} // namespace

TEST_F(EffectTest, GlobeMeshReadsHeightsAtAStrideOfThreeWithRowZeroNorth)
{
    ProbeGlobe g;
    g.SetEarthElevationPicture(WritePicture("globe_elev.ppm", kPicW, kPicH,
                                            [](int x, int y, unsigned char* c)
                                            { c[0] = c[1] = c[2] = Grey(x, y); })
                                   .c_str());
    g.SetEarthMapPicture(kMissing.c_str());
    m_scene->Add(&g);
    ASSERT_TRUE(g.m_pVertexData && g.m_pIndexData);
    EXPECT_EQ(g.m_nEarthMapTexture, 0u);
    EXPECT_NE(g.m_nElevationTexture, 0u);
    EXPECT_EQ(g.m_pVertexData->GetVertexSize(), 10585);
    EXPECT_TRUE(g.m_pVertexData->GetVertexBuffer().empty());
    ASSERT_EQ(g.m_pIndexData->GetIndexSize(), 62208);

    auto idx = ReadBuffer<unsigned short>(
        GL_ELEMENT_ARRAY_BUFFER, g.m_pIndexData->GetHardwareBuffer()->GetBufferID(), 62208);
    std::vector<unsigned short> first(idx.begin(), idx.begin() + 6), last(idx.end() - 6, idx.end());
    EXPECT_EQ(first, (std::vector<unsigned short>{0, 145, 1, 1, 145, 146}));
    EXPECT_EQ(last, (std::vector<unsigned short>{10438, 10583, 10439, 10439, 10583, 10584}));

    auto v = ReadVertices(g);
    auto at = [&](int row, int col) { return &v[(size_t)(row * 145 + col) * 3]; };
    EXPECT_EQ(at(0, 0)[0], -180.0f);
    EXPECT_EQ(at(0, 0)[1], -90.0f);
    EXPECT_EQ(at(72, 144)[0], 180.0f); // its own column: no seam closure
    EXPECT_EQ(at(72, 144)[1], 90.0f);
    // 87.5 north reads the picture's top row, 87.5 south a byte deep in it.
    EXPECT_EQ(at(71, 0)[2], (float)Grey(0, 0));
    EXPECT_EQ(at(1, 0)[2], 102.0f);
    int mismatches = 0;
    for (int row = 1; row < 72; ++row)
        for (int col = 0; col < 145; ++col)
        {
            float* p = at(row, col);
            int x = (int)((p[0] + 180.0) / 360.0 * (kPicW - 1) + 1e-9);
            int y = (int)((1.0 - (p[1] + 90.0) / 180.0) * (kPicH - 1) + 1e-9);
            mismatches += p[2] != (float)DecodedByte(((size_t)y * kPicW + x) * 3);
        }
    EXPECT_EQ(mismatches, 0);
}

TEST_F(EffectTest, GlobeLatitudeOfEightyEightKeepsItsHeight)
{
    // With 91 rows the grid steps by 2 degrees and has rows at exactly 88 north and south.
    ProbeGlobe g;
    g.m_nLatitudeCount = 91;
    g.SetEarthElevationPicture(WritePicture("globe_flat.ppm", 8, 8,
                                            [](int, int, unsigned char* c)
                                            { c[0] = c[1] = c[2] = 200; })
                                   .c_str());
    g.SetEarthMapPicture(kMissing.c_str());
    m_scene->Add(&g);
    ASSERT_EQ(g.m_pVertexData->GetVertexSize(), 91 * 145);
    auto v = ReadVertices(g, 91 * 145);
    int kept = 0, flat = 0, at88 = 0;
    for (size_t i = 0; i < 91 * 145; ++i)
    {
        float lat = v[i * 3 + 1], h = v[i * 3 + 2];
        at88 += std::fabs(lat) == 88.0f;
        if (std::fabs(lat) <= 88.0f)
            kept += h != 0.0f; // 200, or 255 where the stride meets an alpha byte
        else
            flat += h == 0.0f;
    }
    EXPECT_EQ(at88, 2 * 145);
    EXPECT_EQ(kept, 89 * 145);
    EXPECT_EQ(flat, 2 * 145);
}

TEST_F(EffectTest, GlobeWithoutPicturesBuildsAFlatMeshAndNoTextures)
{
    ProbeGlobe g;
    g.SetEarthElevationPicture(kMissing.c_str());
    g.SetEarthMapPicture(kMissing.c_str());
    m_scene->Add(&g);
    EXPECT_EQ(g.m_nEarthMapTexture, 0u);
    EXPECT_EQ(g.m_nElevationTexture, 0u);
    ASSERT_TRUE(g.m_pVertexData);
    EXPECT_EQ(g.m_pIndexData->GetIndexSize(), 62208);
    auto v = ReadVertices(g);
    float highest = 0.0f;
    for (size_t i = 0; i < 10585; ++i)
        highest = std::max(highest, v[i * 3 + 2]);
    EXPECT_EQ(highest, 0.0f);
}

TEST(Globe, SunMatricesFollowThePerspectiveOfTheSunOverTheSphere)
{
    ProbeGlobe g;
    eViewport viewport(200, 100);
    g.CompulateSunMatrix(&viewport, eVector3T<double>(3e7, 0.0, 4e7), 1e7);
    double f = std::sqrt(1.0 - 0.04) / 0.2; // 1 / tan(asin(radius / distance))
    float want[16] = {(float)(f / 2.0), 0, 0, 0, 0, (float)f, 0, 0, 0, 0, -5.0f, -1.0f, 0, 0,
                      -2.4e8f,          0};
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(g.m_matSunProjection[i], want[i], 1e-5 * std::fabs(want[i]) + 1e-6) << i;
    // Longitude 0: no turn about y; the latitude's turn about x, then 5e7 back.
    EXPECT_NEAR(g.m_matSunView[5], 0.6f, 1e-6);
    EXPECT_NEAR(g.m_matSunView[6], 0.8f, 1e-6);
    EXPECT_NEAR(g.m_matSunView[9], -0.8f, 1e-6);
    EXPECT_EQ(g.m_matSunView[0], 1.0f);
    EXPECT_EQ(g.m_matSunView[14], -5e7f);
    eMatrix4T<float> space = g.m_matSunProjection * g.m_matSunView;
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(g.m_matSunSpace[i], space[i]);
}

TEST_F(EffectTest, GlobeSunMatricesChangeOnlyWithTheSunOrTheViewport)
{
    ProbeGlobe g;
    g.SetEarthMapPicture(kMissing.c_str());
    m_scene->Engine().SetSunPosition(eVector3T<double>(1.5e11, 0.0, 0.0));
    m_scene->Add(&g);
    m_scene->RenderFrame();
    EXPECT_NEAR(g.m_matSunProjection[0], g.m_matSunProjection[5], 1e-6); // square viewport
    eMatrix4T<float> marker = eMatrix4T<float>::Scale(7.0f, 7.0f, 7.0f);
    g.m_matSunProjection = marker;
    m_scene->RenderFrame();
    EXPECT_EQ(g.m_matSunProjection, marker);
    m_scene->Engine().SetSunPosition(eVector3T<double>(0.0, 1.5e11, 0.0));
    m_scene->RenderFrame();
    EXPECT_NE(g.m_matSunProjection, marker);

    // A new size is taken at once, but the depth texture keeps the size it was made with.
    g.m_matSunProjection = marker;
    m_scene->Viewport().SetSize(64, 48);
    m_scene->RenderFrame();
    EXPECT_EQ(g.m_nWidth, 64);
    EXPECT_NEAR(g.m_matSunProjection[0] * 64.0f / 48.0f, g.m_matSunProjection[5], 1e-5);
    GLint width = 0;
    glBindTexture(GL_TEXTURE_2D, g.m_nDepthTexture);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    glBindTexture(GL_TEXTURE_2D, 0);
    EXPECT_EQ(width, 800);
    m_scene->Viewport().SetSize(96, 96);
}

TEST_F(EffectTest, GlobeFrameDrawsADepthPassAndAMainPass)
{
    ProbeGlobe g;
    g.SetEarthMapPicture(WritePicture("globe_map1.ppm", 8, 4,
                                      [](int, int, unsigned char* c)
                                      { c[0] = 90, c[1] = 160, c[2] = 30; })
                             .c_str());
    g.SetUseTexture(1);
    g.SetDiffuseColor(eVector3T<float>(0.25f, 0.5f, 0.75f));
    g.SetAmbientSHLightCoefficients(eVector3T<float>(1.0f, 2.0f, 3.0f));
    EXPECT_EQ(g.m_arSHCoefficients[8], eVector3T<double>(1.0, 2.0, 3.0));
    eVector3T<double> sun(1e11, -2e11, 3e10);
    m_scene->Engine().SetSunPosition(sun);
    m_scene->Add(&g);
    EXPECT_EQ(g.GetSquaredViewDepth(&m_scene->Camera()), 1.0);
    auto queued = Of(RecordFrame(), eRecord::Queue);
    ASSERT_EQ(queued.size(), 1u);
    EXPECT_EQ(queued[0].op, "AddTransparentRenderable");
    EXPECT_EQ(queued[0].first, 3);

    ProbeRenderSystem rs;
    GLint hostFrameBuffer = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &hostFrameBuffer);
    Host::eRecorder::Get().Start();
    EXPECT_EQ(g.Render(&m_scene->Engine(), &rs, &m_scene->Camera(), &m_scene->Viewport()), 1);
    Host::eRecorder::Get().Stop();
    auto all = Host::eRecorder::Get().Records();

    auto draws = Of(all, eRecord::Draw);
    std::vector<eRecord> indexed;
    for (auto const& d : draws)
        if (d.op == "DrawIndexed")
            indexed.push_back(d);
    ASSERT_EQ(indexed.size(), 2u);
    for (auto const& d : indexed)
    {
        EXPECT_EQ(d.mode, 4);
        EXPECT_EQ(d.count, 62208);
    }
    ASSERT_EQ(rs.m_arStates.size(), 2u);
    EXPECT_EQ(rs.m_arStates[0].frameBuffer, (int)g.m_nFrameBuffer);
    EXPECT_FALSE(rs.m_arStates[0].colourWrites);
    EXPECT_EQ(rs.m_arStates[1].frameBuffer, hostFrameBuffer);
    EXPECT_TRUE(rs.m_arStates[1].colourWrites);
    EXPECT_EQ(Of(all, eRecord::BeginPass).size(), 0u);
    EXPECT_EQ(Of(all, eRecord::EndPass).size(), 1u);

    auto u = Of(all, eRecord::Uniform);
    std::vector<std::string> names;
    for (auto const& r : u)
        names.push_back(r.uniform);
    std::vector<std::string> want = {
        "u_elevation", "u_shadowMap", "u_viewport", "u_sunSpace", "u_heightBase", "u_heightScale",
        "u_earthMap", "u_cameraPosition", "u_sunPosition", "u_brightness", "u_spotSize",
        "u_lightFactor", "u_ambientColor", "u_ambientSHLightColor", "u_lightColor",
        "u_sunDirection", "u_spotColor", "u_shCoefficients", "u_shFirstOrder", "u_heightLift",
        "u_color",
        // depth pass
        "u_textureEnabled", "u_useShadow", "u_worldMatrix", "u_viewMatrix", "u_projectionMatrix",
        "u_pass",
        // main pass
        "u_textureEnabled", "u_useShadow", "u_pass", "u_worldMatrix", "u_viewMatrix",
        "u_projectionMatrix"};
    ASSERT_EQ(names, want);
    EXPECT_EQ(u[0].values, std::vector<double>{1});
    EXPECT_EQ(u[1].values, std::vector<double>{2});
    EXPECT_EQ(u[2].values, (std::vector<double>{96, 96}));
    EXPECT_EQ(u[6].values, std::vector<double>{0});
    EXPECT_EQ(u[9].values[0], -4.0);
    EXPECT_EQ(u[15].values, (std::vector<double>{(float)-sun.x, (float)-sun.y, (float)-sun.z}));
    // The coefficients are doubles read as floats: 1.0, 2.0, 3.0 give their word halves.
    ASSERT_EQ(u[17].values.size(), 27u);
    EXPECT_EQ(std::vector<double>(u[17].values.begin(), u[17].values.begin() + 6),
              (std::vector<double>{0.0, 1.875, 0.0, 2.0, 0.0, 2.125}));
    EXPECT_EQ(u[20].op, "Uniform4f");
    EXPECT_EQ(u[20].values, (std::vector<double>{0.25, 0.5, 0.75, 1.0}));
    // Flags: depth pass 0, 0, pass 0; main pass texture 1, shadow 0, pass 1.
    EXPECT_EQ(u[21].values[0], 0.0);
    EXPECT_EQ(u[26].values[0], 0.0);
    EXPECT_EQ(u[27].values[0], 1.0);
    EXPECT_EQ(u[28].values[0], 0.0);
    EXPECT_EQ(u[29].values[0], 1.0);
    eMatrix4T<float> identity;
    EXPECT_EQ(u[23].values, std::vector<double>(identity.m, identity.m + 16));
    EXPECT_EQ(u[24].values, std::vector<double>(g.m_matSunView.m, g.m_matSunView.m + 16));
    eVector3T<double> ref = m_scene->Camera().GetReferenceCenter();
    EXPECT_EQ(u[30].values[12], (double)(float)-ref.x);

    // Textures: elevation on 1, depth on 2, map on 0; the depth pass binds 2 and empties it.
    std::vector<std::pair<long long, long long>> binds;
    for (auto const& b : Of(all, eRecord::BindTexture))
        binds.push_back({b.first, b.count});
    std::vector<std::pair<long long, long long>> wantBinds = {{1, g.m_nElevationTexture},
                                                              {2, g.m_nDepthTexture},
                                                              {0, g.m_nEarthMapTexture},
                                                              {2, g.m_nDepthTexture},
                                                              {2, 0}};
    EXPECT_EQ(binds, wantBinds);

    g.m_bVisible = 0;
    Host::eRecorder::Get().Start();
    EXPECT_EQ(g.Render(&m_scene->Engine(), &rs, &m_scene->Camera(), &m_scene->Viewport()), 0);
    Host::eRecorder::Get().Stop();
    EXPECT_TRUE(Host::eRecorder::Get().Of(eRecord::Draw).empty());
    EXPECT_TRUE(Host::eRecorder::Get().Of(eRecord::Uniform).empty());
}

TEST_F(EffectTest, GlobeUnInitializeReleasesAllButTheDepthTextureId)
{
    ProbeGlobe g;
    m_scene->Add(&g);
    g.Initialize(&m_scene->Engine()); // a second call does nothing
    unsigned int depth = g.m_nDepthTexture, map = g.m_nEarthMapTexture;
    ASSERT_TRUE(depth && glIsTexture(map));
    EXPECT_EQ(g.UnInitialize(&m_scene->Engine()), 1);
    m_scene->Remove(&g);
    EXPECT_EQ(g.m_pVertexData, nullptr);
    EXPECT_EQ(g.m_pTechnique, nullptr);
    EXPECT_EQ(g.m_nFrameBuffer, 0u);
    EXPECT_EQ(g.m_nEarthMapTexture, 0u);
    EXPECT_EQ(g.m_nDepthTexture, depth); // deleted but not zeroed
    EXPECT_EQ(g.m_bInitialized, 0);
    EXPECT_FALSE(glIsTexture(map));
    EXPECT_FALSE(glIsTexture(depth));
}

TEST_F(EffectTest, GlobeKeptDepthNumberIsNotDeletedAgainOnceReused)
{
    auto* g = new ProbeGlobe();
    m_scene->Add(g);
    unsigned int depth = g->m_nDepthTexture;
    ASSERT_NE(depth, 0u);
    g->UnInitialize(&m_scene->Engine());
    // Someone else's texture now bears the number (the compatibility profile makes one on
    // binding an unused name); neither a second UnInitialize nor the destructor may delete it.
    glBindTexture(GL_TEXTURE_2D, depth);
    glBindTexture(GL_TEXTURE_2D, 0);
    ASSERT_TRUE(glIsTexture(depth));
    g->UnInitialize(&m_scene->Engine());
    delete g;
    EXPECT_TRUE(glIsTexture(depth));
    glDeleteTextures(1, &depth);
}

TEST_F(EffectTest, GlobeSunSideIsBrightAndShowsTheEarthMap)
{
    // West half red, east half blue; the sun stands over 90 W, the camera over (0, 0).
    std::string map = WritePicture("globe_map2.ppm", 16, 8,
                                   [](int x, int, unsigned char* c)
                                   {
                                       bool west = x < 8;
                                       c[0] = west ? 200 : 40;
                                       c[1] = 40;
                                       c[2] = west ? 40 : 200;
                                   });
    ProbeGlobe g;
    g.SetEarthMapPicture(map.c_str());
    g.SetEarthElevationPicture(kMissing.c_str());
    g.SetUseTexture(1);
    m_scene->Engine().SetSunPosition(eVector3T<double>(0.0, -1.5e11, 0.0));
    m_scene->Add(&g);
    m_scene->RenderFrame();
    auto day = Pixel(20, 48), night = Pixel(76, 48);
    EXPECT_GT(day[0], 120);
    EXPECT_GT(day[0], 2 * day[2]);
    EXPECT_LT(night[0] + night[1] + night[2], 30);
    EXPECT_LT(3 * (night[0] + night[1] + night[2]), day[0] + day[1] + day[2]);

    // Without the texture flag the same place is lit white.
    g.SetUseTexture(0);
    m_scene->RenderFrame();
    auto plain = Pixel(20, 48);
    EXPECT_GT(plain[2], 120);
    EXPECT_NEAR(plain[0], plain[2], 3);
}

TEST_F(EffectTest, GlobeReliefStandsWhereItsHeightWasRead)
{
    // Highest steps over the northern half, none over the southern: seen over (0, 0) the
    // northern limb stands out further from the centre than the southern one.
    std::string elev =
        WritePicture("globe_elev_north.ppm", 24, 12,
                     [](int, int y, unsigned char* c) { c[0] = c[1] = c[2] = y < 6 ? 255 : 0; });
    m_scene.reset(new Host::eScene(400, 400));
    ProbeGlobe g;
    g.SetEarthElevationPicture(elev.c_str());
    g.SetEarthMapPicture(kMissing.c_str());
    m_scene->Engine().SetSunPosition(eVector3T<double>(1.5e11, 0.0, 0.0));
    m_scene->Camera().LookAt(0.0, 0.0, 2.0e7, 0.0, 0.0);
    m_scene->Add(&g);
    m_scene->RenderFrame();
    std::vector<unsigned char> px = m_scene->ReadPixels();
    int w = m_scene->Width(), h = m_scene->Height(), top = h, bottom = -1;
    for (int y = 0; y < h; ++y)
    {
        unsigned char const* p = &px[((size_t)y * w + w / 2) * 4];
        if (p[0] + p[1] + p[2] > 60)
        {
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    }
    ASSERT_LT(top, bottom);
    // About four pixels of relief on a disc of radius near 190.
    EXPECT_GE(h / 2 - top, bottom + 1 - h / 2 + 2);
}

// The lit globe with a small two-colour map and the depth pass of the sun.
template <> struct CopySubject<eRenderGlobe>
{
    static constexpr bool kSamePixels = true;
    static void Prepare(Host::eScene& scene)
    {
        scene.Engine().SetSunPosition(eVector3T<double>(1.5e11, 0.0, 0.0));
    }
    static eRenderGlobe* Make(Host::eScene&)
    {
        static std::string const map =
            WritePicture("globe_copy_map.ppm", 8, 4,
                         [](int x, int, unsigned char* c)
                         { c[0] = x < 4 ? 220 : 30, c[1] = 90, c[2] = x < 4 ? 30 : 220; });
        static std::string const flat =
            WritePicture("globe_copy_flat.ppm", 4, 2,
                         [](int, int, unsigned char* c) { c[0] = c[1] = c[2] = 0; });
        auto* globe = new eRenderGlobe();
        globe->SetEarthMapPicture(map.c_str());
        globe->SetEarthElevationPicture(flat.c_str());
        globe->SetUseTexture(1);
        return globe;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Globe, CopyIdiom, ::testing::Types<eRenderGlobe>);
