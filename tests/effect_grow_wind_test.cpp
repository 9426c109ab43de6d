// Grow wind: the particle count and its state textures, the host's frame buffer around a
// frame, the advection read back from the state, the trails in the whole-map picture, and
// a wind picture that is missing.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eFile.h"
#include "eMesh.h"
#include "eRenderGrowWind.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>

using namespace KYR;

namespace
{

struct Probe : eRenderGrowWind
{
    using eRenderGrowWind::m_particleIndices;
    using eRenderGrowWind::m_particleResolution;
    using eRenderGrowWind::m_particleTexture;
    using eRenderGrowWind::m_screenTexture;
    using eRenderGrowWind::m_windTexture;
};

struct Place
{
    double x, y; // fractions of the map: x from the west edge, y from the north edge
};

// A wind picture in PPM form: red is u, green v, over the bounds the test gives.
std::string WritePicture(char const* name, int w, int h,
                         std::function<void(int x, int y, unsigned char* rgb)> const& colour)
{
    std::string path = ::testing::TempDir() + name;
    FILE* f = std::fopen(path.c_str(), "wb");
    std::fprintf(f, "P6\n%d %d\n255\n", w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
        {
            unsigned char rgb[3] = {0, 0, 0};
            colour(x, y, rgb);
            std::fwrite(rgb, 1, 3, f);
        }
    std::fclose(f);
    return path;
}

// The bytes of a texture's level 0, RGBA.
std::vector<unsigned char> ReadTexture(eTexture* texture, int& w, int& h)
{
    glBindTexture(GL_TEXTURE_2D, texture->GetTextureID());
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &w);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &h);
    std::vector<unsigned char> px((size_t)w * h * 4);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, px.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    return px;
}

// The particles' places: 16 bits of x in red and green, of y in blue and alpha.
std::vector<Place> ReadState(Probe& wind)
{
    int w = 0, h = 0;
    std::vector<unsigned char> px = ReadTexture(wind.m_particleTexture, w, h);
    std::vector<Place> places;
    for (size_t i = 0; i + 3 < px.size(); i += 4)
        places.push_back(
            {(px[i] * 256 + px[i + 1]) / 65535.0, (px[i + 2] * 256 + px[i + 3]) / 65535.0});
    return places;
}

void WriteState(Probe& wind, std::vector<Place> const& places)
{
    std::vector<unsigned char> px;
    for (Place const& p : places)
    {
        int x = (int)std::lround(p.x * 65535.0), y = (int)std::lround(p.y * 65535.0);
        px.insert(px.end(), {(unsigned char)(x >> 8), (unsigned char)(x & 255),
                             (unsigned char)(y >> 8), (unsigned char)(y & 255)});
    }
    int side = wind.m_particleResolution;
    ASSERT_EQ(places.size(), (size_t)side * side);
    glBindTexture(GL_TEXTURE_2D, wind.m_particleTexture->GetTextureID());
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, side, side, GL_RGBA, GL_UNSIGNED_BYTE, px.data());
    glBindTexture(GL_TEXTURE_2D, 0);
}

class GrowWindScene : public EffectTest
{
protected:
    // A wind picture of 64 x 32 that blows u = 40 m/s east where `blows` says, calm elsewhere
    // (bounds u 0..40, v 0..0).
    Probe* AddWind(int count, std::function<bool(int x, int y)> const& blows, char const* file)
    {
        std::string path =
            WritePicture(file, 64, 32,
                         [&](int x, int y, unsigned char* rgb) { rgb[0] = blows(x, y) ? 255 : 0; });
        m_pWind.reset(new Probe());
        m_pWind->SetParticleCount(count);
        tagWindData data;
        data.path = eString(path.c_str());
        data.uMin = 0.0f;
        data.uMax = 40.0f;
        m_pWind->SetWindData(&data);
        eColorTable white;
        white.CreateGradient(2, ERGBA(255, 255, 255, 255), ERGBA(255, 255, 255, 255));
        m_pWind->SetColorTable(&white);
        m_scene->Add(m_pWind.get());
        return m_pWind.get();
    }
    // Brightness (red) summed over a rectangle of the trail picture, in pixels.
    long Light(int x0, int y0, int x1, int y1)
    {
        int w = 0, h = 0;
        std::vector<unsigned char> px = ReadTexture(m_pWind->m_screenTexture, w, h);
        EXPECT_EQ(w, eRenderGrowWind::kScreenWidth);
        EXPECT_EQ(h, eRenderGrowWind::kScreenHeight);
        long sum = 0;
        for (int y = y0; y < y1; ++y)
            for (int x = x0; x < x1; ++x)
                sum += px[((size_t)y * w + x) * 4];
        return sum;
    }
    void TearDown() override
    {
        EffectTest::TearDown();
        m_pWind.reset();
    }
    std::unique_ptr<Probe> m_pWind;
};

bool Everywhere(int, int)
{
    return true;
}

} // namespace

TEST_F(GrowWindScene, CountRoundsUpToASquareThatTheStateTexturesAndTheDrawShare)
{
    struct Case
    {
        int requested, count, side;
    } const cases[] = {{1000, 1024, 32}, {1, 1, 1}, {65537, 66049, 257}, {0, 0, 0}};
    for (Case const& c : cases)
    {
        SCOPED_TRACE(c.requested);
        Probe* wind = AddWind(c.requested, Everywhere, "count.ppm");
        EXPECT_EQ(wind->GetParticleCount(), c.count);
        EXPECT_EQ(wind->m_particleResolution, c.side);
        EXPECT_EQ(wind->m_particleIndices->GetVertexSize(), c.count);
        auto all = RecordFrame();
        bool drew = false;
        for (auto const& d : Of(all, eRecord::Draw))
            if (d.op == "glDrawArrays" && d.mode == GL_POINTS)
            {
                EXPECT_EQ(d.count, c.count);
                drew = true;
            }
        EXPECT_TRUE(drew);
        if (c.side == 0)
        {
            EXPECT_EQ(wind->m_particleTexture, nullptr);
        }
        else
        {
            int w = 0, h = 0;
            ReadTexture(wind->m_particleTexture, w, h);
            EXPECT_EQ(w, c.side);
            EXPECT_EQ(h, c.side);
        }
        m_scene->Remove(wind);
        wind->UnInitialize(nullptr);
    }
    // The default count is the quarter million of a 512 square.
    EXPECT_EQ(eRenderGrowWind().GetParticleCount(), 262144);
}

// The host may draw into a frame buffer of its own and change it between frames: whatever is
// bound when a frame starts is bound again when it ends, with the viewport and the units.
TEST_F(GrowWindScene, HostsFrameBufferIsInForceAfterEveryFrame)
{
    Probe* wind = AddWind(1024, Everywhere, "binding.ppm");
    m_scene->RenderFrame();
    GLuint mine = 0, colour = 0;
    glGenFramebuffers(1, &mine);
    glGenRenderbuffers(1, &colour);
    glBindRenderbuffer(GL_RENDERBUFFER, colour);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, 96, 96);
    GLint host = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &host);
    for (GLuint target : {(GLuint)host, mine})
    {
        SCOPED_TRACE(target);
        glBindFramebuffer(GL_FRAMEBUFFER, target);
        if (target == mine)
            glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER,
                                      colour);
        glViewport(0, 0, 96, 96);
        EXPECT_EQ(wind->Render(&m_scene->Engine(), &m_scene->RenderSystem(), &m_scene->Camera(),
                               &m_scene->Viewport()),
                  1);
        GLint bound = -1, active = 0, buffer = -1, viewport[4] = {0, 0, 0, 0};
        glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
        EXPECT_EQ(bound, (GLint)target);
        glGetIntegerv(GL_VIEWPORT, viewport);
        EXPECT_EQ(viewport[2], 96);
        EXPECT_EQ(viewport[3], 96);
        glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
        EXPECT_EQ(active, GL_TEXTURE0);
        glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &buffer);
        EXPECT_EQ(buffer, 0);
        EXPECT_EQ(glGetError(), (GLenum)GL_NO_ERROR);
    }
    glBindFramebuffer(GL_FRAMEBUFFER, (GLuint)host);
    glDeleteRenderbuffers(1, &colour);
    glDeleteFramebuffers(1, &mine);
}

// Everywhere u = 40 m/s east: after a few steps the particles still on their rows have moved
// east by the same length of arc whatever their latitude; the few that dropped out started
// again elsewhere, and nothing left [0, 1].
TEST_F(GrowWindScene, ParticlesAdvanceDownwindAndStayOnTheMap)
{
    Probe* wind = AddWind(1024, Everywhere, "east.ppm");
    std::vector<Place> start = ReadState(*wind);
    for (int i = 0; i < 5; ++i)
        m_scene->RenderFrame();
    std::vector<Place> now = ReadState(*wind);
    ASSERT_EQ(now.size(), start.size());
    std::vector<double> arcs; // dx * cos(latitude) of the particles that kept their row
    int same = 0;
    for (size_t i = 0; i < now.size(); ++i)
    {
        EXPECT_TRUE(now[i].x >= 0.0 && now[i].x <= 1.0 && now[i].y >= 0.0 && now[i].y <= 1.0) << i;
        if (now[i].x == start[i].x && now[i].y == start[i].y)
            ++same;
        double cosine = std::cos((0.5 - now[i].y) * M_PI);
        if (now[i].y == start[i].y && cosine > 0.2) // near the poles steps are held
            arcs.push_back(std::remainder(now[i].x - start[i].x, 1.0) * cosine);
    }
    EXPECT_EQ(same, 0);
    ASSERT_GT(arcs.size(), 600u);
    std::sort(arcs.begin(), arcs.end());
    double median = arcs[arcs.size() / 2];
    EXPECT_GT(median, 0.0);
    for (double arc : arcs)
        EXPECT_NEAR(arc, median, 0.03 * median);
}

// A band of eastward wind north of the equator (rows 8 to 11 of the picture's 32, 22.5 to 45
// degrees north), a column of particles across its middle: after some steps their trails run
// east of the column and nothing lies west of it. In a calm the particles stay points, and
// nothing lies east of the column either.
TEST_F(GrowWindScene, TrailsRunDownstreamAndACalmLeavesOnlyPoints)
{
    int const column = eRenderGrowWind::kScreenWidth / 4;
    int const middle = eRenderGrowWind::kScreenHeight * 5 / 16; // 33.75 degrees north
    for (bool calm : {false, true})
    {
        SCOPED_TRACE(calm ? "calm" : "band");
        Probe* wind = AddWind(
            1024, [&](int, int y) { return !calm && y >= 8 && y < 12; }, "band.ppm");
        // The column spans 32 rows of the trail picture around the middle of the band.
        std::vector<Place> places(1024);
        for (size_t i = 0; i < places.size(); ++i)
            places[i] = {(column + 0.5) / eRenderGrowWind::kScreenWidth,
                         (middle - 16 + (int)(i % 32) + 0.5) / eRenderGrowWind::kScreenHeight};
        WriteState(*wind, places);
        for (int i = 0; i < 12; ++i)
            m_scene->RenderFrame();
        long const at = Light(column, middle - 16, column + 1, middle + 16);
        long const downstream = Light(column + 1, middle - 16, column + 60, middle + 16);
        long const upstream = Light(column - 60, middle - 16, column, middle + 16);
        // Particles that drop out start again anywhere: one may land in a window, as a
        // point in a calm or a short trail in the band.
        long const stray = calm ? 3 * 255 : 12 * 255;
        EXPECT_GT(at, 32 * 128);
        EXPECT_LE(upstream, stray);
        if (calm)
            EXPECT_LE(downstream, stray);
        else
            EXPECT_GT(downstream, 5 * at);
        m_scene->Remove(wind);
        wind->UnInitialize(nullptr);
    }
}

// Without its wind picture the effect keeps the sizes it was given, leaves the particles
// where they are, draws nothing into the trails nor the frame, and raises no GL error.
TEST_F(GrowWindScene, MissingWindPictureDrawsNothing)
{
    m_scene->RenderFrame();
    std::vector<unsigned char> empty = m_scene->ReadPixels();
    m_pWind.reset(new Probe());
    m_pWind->SetParticleCount(4096);
    tagWindData data;
    data.path = eString((::testing::TempDir() + "no-such-wind.png").c_str());
    data.width = 7;
    data.height = 9;
    data.uMax = data.vMax = 30.0f;
    m_pWind->SetWindData(&data);
    while (glGetError() != GL_NO_ERROR)
    {
    }
    m_scene->Add(m_pWind.get());
    std::vector<Place> start = ReadState(*m_pWind);
    for (int i = 0; i < 3; ++i)
        m_scene->RenderFrame();
    EXPECT_EQ(glGetError(), (GLenum)GL_NO_ERROR);
    EXPECT_EQ(m_pWind->m_windTexture, nullptr);
    EXPECT_EQ(m_pWind->GetWindData()->width, 7);
    EXPECT_EQ(m_pWind->GetWindData()->height, 9);
    std::vector<Place> now = ReadState(*m_pWind);
    ASSERT_EQ(now.size(), start.size());
    for (size_t i = 0; i < now.size(); ++i)
        ASSERT_TRUE(now[i].x == start[i].x && now[i].y == start[i].y) << i;
    EXPECT_EQ(Light(0, 0, eRenderGrowWind::kScreenWidth, eRenderGrowWind::kScreenHeight), 0);
    EXPECT_EQ(m_scene->ReadPixels(), empty);
}

// The generated wind picture under a view close enough for the trails of the first frame to
// show; particles move, so frames differ.
template <> struct CopySubject<eRenderGrowWind>
{
    static constexpr bool kSamePixels = false;
    static void Prepare(Host::eScene& scene)
    {
        scene.Camera().LookAt(150.0, 22.0, 6.0e6, 0.0, 0.0);
    }
    static eRenderGrowWind* Make(Host::eScene&)
    {
        auto* wind = new eRenderGrowWind();
        tagWindData data;
        data.path = eSystem::GetWorkPath() + "Resources/Weather/wind_uv.png";
        data.uMin = data.vMin = -50.0f;
        data.uMax = data.vMax = 50.0f;
        wind->SetWindData(&data);
        return wind;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(GrowWind, CopyIdiom, ::testing::Types<eRenderGrowWind>);
