// The host's tile layer: which tiles are in view, their keys and meshes, how a tile draws a
// raster, and the raster block.
#include "eGlobeModel.h"
#include "eGlobeRelief.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eRecorder.h"
#include "eScene.h"
#include "eProgram.h"
#include "eProgramLibrary.h"
#include "eRenderQueue.h"
#include "eRenderable.h"
#include <epoxy/gl.h>
#include <gtest/gtest.h>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <unistd.h>

using namespace KYR;
using namespace KYR::Host;

namespace
{

double Area(std::vector<eTileSet*> const& tiles, eRect2D const& clip)
{
    double a = 0.0;
    for (eTileSet* t : tiles)
    {
        eRect2D r = t->GetBounds();
        r.IntersectRect(clip);
        a += r.Width() * r.Height();
    }
    return a;
}

// A texture of one colour, 2 x 2 RGBA.
std::unique_ptr<eTexture> Solid(unsigned char r, unsigned char g, unsigned char b,
                                unsigned char a = 255)
{
    eImageData* image = new eImageData();
    image->Allocate(2, 2, 32);
    for (int i = 0; i < 4; ++i)
    {
        unsigned char* px = image->m_pData + i * 4;
        px[0] = r, px[1] = g, px[2] = b, px[3] = a;
    }
    std::unique_ptr<eTexture> t(eTextureManager::GetSingleton().CreateTexture());
    t->SetAutoRelease(1);
    t->SetImageData(image);
    return t;
}

// Runs a drawing function inside a frame of the scene (queue group 6).
class FrameDraw : public eRenderable
{
public:
    using Draw = std::function<void(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*)>;
    explicit FrameDraw(Draw draw) : m_Draw(std::move(draw)) { m_Technique.CreatePass(); }
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue* q) override
    {
        q->GetQueueGroup(6)->AddSolidTextureRenderable(&m_Technique, this);
        return 1;
    }
    unsigned char Render(eRenderEngine* e, eRenderSystem* rs, eCamera* c, eViewport* v) override
    {
        m_Draw(e, rs, c, v);
        return 1;
    }

private:
    Draw m_Draw;
    eTechnique m_Technique;
};

std::vector<unsigned char> Centre(eScene& scene)
{
    std::vector<unsigned char> px = scene.ReadPixels();
    size_t i = ((size_t)(scene.Height() / 2) * scene.Width() + scene.Width() / 2) * 4;
    return {px[i], px[i + 1], px[i + 2], px[i + 3]};
}

} // namespace

TEST(HostTiles, VisibleTilesCoverTheViewAtTheCamerasLevel)
{
    eScene scene(96, 96);
    eGlobeModel& model = scene.GlobeModel();
    EXPECT_EQ(model.GetVisibleTileSets(nullptr), nullptr);

    scene.Camera().LookAt(30.0, 20.0, 2.0e7, 0.0, 0.0);
    std::vector<eTileSet*>* tiles = model.GetVisibleTileSets(&scene.Camera());
    ASSERT_NE(tiles, nullptr);
    ASSERT_FALSE(tiles->empty());
    eRect2D view = scene.Camera().GetRenderBounds();
    view.IntersectRect(scene.CoordSys().GetLogicalBounds());
    int level = (*tiles)[0]->GetKey().GetLevel();
    double size = 360.0 / (1 << level);
    for (eTileSet* t : *tiles)
    {
        eRect2D b = t->GetBounds();
        EXPECT_EQ(t->GetKey().GetLevel(), level);
        EXPECT_EQ(t->GetKey().m_nKey & 0x1F, (unsigned long long)level);
        EXPECT_TRUE(b.IsIntersect(view));
        EXPECT_GE(b.bottom, -90.0);
        EXPECT_LE(b.top, 90.0);
        EXPECT_NEAR(b.Width(), size, 1e-9);
        EXPECT_NEAR(b.left, -180.0 + size * t->GetKey().GetColumn(), 1e-9);
    }
    // Together they cover the view without overlap.
    EXPECT_NEAR(Area(*tiles, view), view.Width() * view.Height(), 1e-6);
    // Kept between frames.
    std::vector<eTileSet*> first = *tiles;
    EXPECT_EQ(*model.GetVisibleTileSets(&scene.Camera()), first);

    // Closer: a finer level, still a bounded number of tiles.
    scene.Camera().LookAt(30.0, 20.0, 2.0e5, 0.0, 60.0);
    tiles = model.GetVisibleTileSets(&scene.Camera());
    ASSERT_FALSE(tiles->empty());
    int closer = (*tiles)[0]->GetKey().GetLevel();
    EXPECT_GT(closer, level + 3);
    EXPECT_LE(tiles->size(), (size_t)eGlobeModel::kMaxVisibleTiles);
    eMap map(&model);
    EXPECT_EQ(map.GetGlobeModel(), &model);
}

TEST(HostTiles, GlobeTilesAreTheGlobesReliefCutToTheirRectangle)
{
    eScene scene(64, 64);
    eGlobeModel& model = scene.GlobeModel();
    Host::eGlobeRelief const& relief = model.GetRelief();
    int highest = 0;
    for (int i = 0; i < Host::eGlobeRelief::kRows; ++i)
        for (int j = 0; j < Host::eGlobeRelief::kColumns; ++j)
            highest = std::max(highest, (int)relief.Step(i, j));
    ASSERT_GT(highest, 100) << "the default elevation picture has mountains";

    // Whole level-1 tiles, and small ones across grid lines and cell diagonals.
    eRect2D const cases[] = {eRect2D(-180.0, 90.0, 0.0, -90.0), eRect2D(0.0, 90.0, 180.0, -90.0),
                             eRect2D(1.3, 46.1, 3.7, 43.9), eRect2D(86.2, 29.4, 88.9, 26.6),
                             eRect2D(10.01, 20.02, 10.03, 20.0)};
    for (eRect2D const& b : cases)
    {
        eTileSet tile(eTileKey::Make(1, 0, 0), b, eSM_GLOBE, &scene.CoordSys(), &relief);
        eMesh* mesh = tile.GetMesh();
        ASSERT_NE(mesh, nullptr);
        eVector3T<double> c = tile.GetCenter();
        auto world = [&](int i)
        {
            float const* v = mesh->GetVertex(i);
            return eVector3T<double>(c.x + v[0], c.y + v[1], c.z + v[2]);
        };
        int n = mesh->GetVertexData()->GetVertexSize();
        for (int i = 0; i < n; ++i)
        {
            float const* v = mesh->GetVertex(i);
            EXPECT_TRUE(v[6] >= b.left - 1e-4 && v[6] <= b.right + 1e-4 &&
                        v[7] >= b.bottom - 1e-4 && v[7] <= b.top + 1e-4);
            eVector3T<double> w = world(i), on = relief.Surface(v[6], v[7]);
            EXPECT_NEAR((w - on).Length(), 0.0, 3.0) << v[6] << ", " << v[7];
            EXPECT_NEAR(v[3] * w.x + v[4] * w.y + v[5] * w.z, w.Length(), 100.0); // up, out
        }
        // Counter-clockwise triangles that fill the rectangle, each flat on the globe's
        // surface: its middle is where the relief puts the middle's longitude and latitude.
        std::vector<unsigned short> const& idx = mesh->GetIndexData()->GetIndexBuffer();
        ASSERT_EQ(idx.size(), (size_t)mesh->GetIndexData()->GetIndexSize()) << "kept on the CPU";
        double area = 0.0;
        for (size_t t = 0; t + 2 < idx.size(); t += 3)
        {
            float const* p[3] = {mesh->GetVertex(idx[t]), mesh->GetVertex(idx[t + 1]),
                                 mesh->GetVertex(idx[t + 2])};
            double a = ((p[1][6] - p[0][6]) * (p[2][7] - p[0][7]) -
                        (p[1][7] - p[0][7]) * (p[2][6] - p[0][6])) *
                       0.5;
            EXPECT_GT(a, 0.0);
            area += a;
            eVector3T<double> mid = (world(idx[t]) + world(idx[t + 1]) + world(idx[t + 2])) / 3.0;
            eVector3T<double> on = relief.Surface((p[0][6] + p[1][6] + p[2][6]) / 3.0,
                                                  (p[0][7] + p[1][7] + p[2][7]) / 3.0);
            EXPECT_NEAR((mid - on).Length(), 0.0, 3.0);
        }
        EXPECT_NEAR(area, b.Width() * b.Height(), 2e-5 * b.Width() * b.Height()); // float lon, lat
    }
}

TEST(HostTiles, PlaneTilesAreAGridOnTheMap)
{
    eScene plane(64, 64, eSM_PLANE);
    plane.Camera().LookAt(10.0, 40.0, 3.0e6, 0.0, 0.0);
    std::vector<eTileSet*>* tiles = plane.GlobeModel().GetVisibleTileSets(&plane.Camera());
    ASSERT_TRUE(tiles && !tiles->empty());
    eRect2D b = (*tiles)[0]->GetBounds();
    EXPECT_GT(b.Width(), 1000.0); // map metres, not degrees
    EXPECT_EQ((*tiles)[0]->GetCenter().z, 0.0);
    eMesh* mesh = (*tiles)[0]->GetMesh();
    ASSERT_NE(mesh, nullptr);
    int n = eTileSet::kGridSize;
    EXPECT_EQ(mesh->GetIndexData()->GetIndexSize(), (n - 1) * (n - 1) * 6);
    float const* v = mesh->GetVertex(n * n - 1);
    EXPECT_EQ(v[2], 0.0f);
    EXPECT_EQ(v[5], 1.0f);
    EXPECT_NEAR(v[6], b.right, 1.0);
    EXPECT_NEAR(v[7], b.bottom, 1.0);
}

TEST(HostTiles, RenderShadingDrawsTheMeshWithBothTexturesAndTheRectangle)
{
    eScene scene(64, 64);
    scene.Camera().LookAt(10.0, 40.0, 3.0e6, 0.0, 0.0);
    std::vector<eTileSet*>* tiles = scene.GlobeModel().GetVisibleTileSets(&scene.Camera());
    ASSERT_TRUE(tiles && !tiles->empty());
    eTileSet* tile = (*tiles)[0];
    float raster[4] = {0.0f, 0.5f, 0.5f, 1.0f};
    eTexture* t = eTextureOperator::GetSingleton().CreateTexture(
        reinterpret_cast<unsigned char*>(raster), 2, 2, 3200, eTWM_CLAMP_TO_EDGE, eTFM_LINEAR);
    unsigned char ramp[8] = {255, 0, 0, 255, 0, 0, 255, 255};
    eTexture* c = eTextureOperator::GetSingleton().CreateTexture(ramp, 8, 1, 8, eTWM_CLAMP_TO_EDGE,
                                                                 eTFM_LINEAR);
    ASSERT_TRUE(t && c);
    eTechnique technique;
    ePass* pass = technique.CreatePass();
    pass->SetProgram("ShadingTile");
    eRect2D rect(0.0, 50.0, 20.0, 30.0);

    eRecorder::Get().Start();
    EXPECT_EQ(tile->RenderShading(&scene.Engine(), &scene.RenderSystem(), &scene.Camera(),
                                  &scene.Viewport(), t, &rect, pass, 1, c, 10000000.0, nullptr),
              1);
    eRecorder::Get().Stop();
    std::vector<eRecord> draws = eRecorder::Get().Of(eRecord::Draw);
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0].count, tile->GetMesh()->GetIndexData()->GetIndexSize());
    int boundUnits = 0;
    for (eRecord const& r : eRecorder::Get().Of(eRecord::BindTexture))
        if (r.count == (long long)t->GetTextureID() && r.first == 0)
            boundUnits |= 1;
        else if (r.count == (long long)c->GetTextureID() && r.first == 1)
            boundUnits |= 2;
    EXPECT_EQ(boundUnits, 3);
    bool sawRect = false, sawScale = false;
    for (eRecord const& r : eRecorder::Get().Of(eRecord::Uniform))
    {
        if (r.uniform == "u_rasterRect")
            sawRect = r.values == std::vector<double>{0.0, 50.0, 20.0, 20.0};
        if (r.uniform == "u_shadingScale")
            sawScale = r.values == std::vector<double>{10000000.0};
    }
    EXPECT_TRUE(sawRect);
    EXPECT_TRUE(sawScale);
    std::vector<eRecord> passes = eRecorder::Get().Of(eRecord::BeginPass);
    ASSERT_EQ(passes.size(), 1u);
    EXPECT_EQ(passes[0].op, "ShadingTile");

    // A pass without a program draws nothing.
    eTechnique blank;
    eRecorder::Get().Start();
    EXPECT_EQ(tile->RenderShading(&scene.Engine(), &scene.RenderSystem(), &scene.Camera(),
                                  &scene.Viewport(), t, &rect, blank.CreatePass(), 1, c, 1.0,
                                  nullptr),
              0);
    eRecorder::Get().Stop();
    EXPECT_TRUE(eRecorder::Get().Of(eRecord::Draw).empty());
    delete t;
    delete c;
}

// A picture of the whole Earth, its rectangle taken from the world's bounds through the
// rectangle conversion, reaches the corners of the world in both scene modes.
TEST(HostTiles, AWholeEarthRectangleCoversTheWorld)
{
    struct Case
    {
        eSceneMode mode;
        int projection;
        std::vector<std::pair<double, double>> views;
    } const cases[] = {
        {eSM_GLOBE, PJ_PLATE_CARREE, {{0.0, 0.0}, {-170.0, 80.0}, {170.0, -80.0}, {120.0, 30.0}}},
        {eSM_GLOBE, PJ_SPHERE_MERCATOR, {{-170.0, 88.0}, {170.0, -88.0}}},
        {eSM_PLANE, PJ_PLATE_CARREE, {{-170.0, 80.0}, {170.0, -80.0}}},
        {eSM_PLANE, PJ_SPHERE_MERCATOR, {{-170.0, 80.0}, {170.0, -80.0}}},
    };
    float raster[4] = {0.5f, 0.5f, 0.5f, 0.5f};
    for (Case const& c : cases)
    {
        eScene scene(48, 48, c.mode, c.projection);
        ASSERT_TRUE(scene.IsReady());
        std::unique_ptr<eTexture> picture(eTextureOperator::GetSingleton().CreateTexture(
            reinterpret_cast<unsigned char*>(raster), 2, 2, 3200, eTWM_CLAMP_TO_EDGE, eTFM_LINEAR));
        std::unique_ptr<eTexture> red = Solid(255, 0, 0);
        eTechnique technique;
        ePass* pass = technique.CreatePass();
        pass->SetProgram("ShadingTile");
        FrameDraw draw(
            [&](eRenderEngine* e, eRenderSystem* rs, eCamera* camera, eViewport* v)
            {
                eCoordSys* cs = e->GetCoordSys();
                eRect2D rc = cs->GetBounds();
                cs->MapToLogicalRect(rc, rc);
                for (eTileSet* tile : *e->GetGlobeModel()->GetVisibleTileSets(camera))
                    if (tile->GetBounds().IsIntersect(rc))
                        tile->RenderShading(e, rs, camera, v, picture.get(), &rc, pass, 1,
                                            red.get(), 1.0, nullptr);
            });
        scene.Add(&draw);
        for (auto const& view : c.views)
        {
            scene.Camera().LookAt(view.first, view.second, 2.0e6, 0.0, 0.0);
            scene.RenderFrame();
            std::vector<unsigned char> px = Centre(scene);
            EXPECT_GT(px[0], 150) << "mode " << c.mode << ", projection " << c.projection
                                  << ", looking at " << view.first << ", " << view.second;
            EXPECT_LT(px[1], 30);
        }
        scene.Remove(&draw);
    }
}

// The draws with textures beyond the first two, seen by a program that shows, by the draw's
// double argument, one of its samplers or uniforms as the colour of the frame's centre.
TEST(HostTiles, SurfaceGrowthAndTilingDrawsBindTheirTexturesAndSendTheirUniforms)
{
    std::string dir = (std::filesystem::temp_directory_path() /
                       ("kyr_tile_probe_" + std::to_string((long)getpid())))
                          .string();
    std::filesystem::create_directories(dir);
    std::ofstream(dir + "/TileProbe.vert") << R"(#version 400 compatibility
in vec3 a_position;
in vec2 a_texcoord0;
uniform mat4 u_worldMatrix, u_viewMatrix, u_projectionMatrix;
uniform vec4 u_rasterRect;
out vec2 v_uv;
void main()
{
    v_uv = vec2((a_texcoord0.x - u_rasterRect.x) / u_rasterRect.z,
                (u_rasterRect.y - a_texcoord0.y) / u_rasterRect.w);
    gl_Position = u_projectionMatrix * u_viewMatrix * u_worldMatrix * vec4(a_position, 1.0);
})";
    std::ofstream(dir + "/TileProbe.frag") << R"(#version 400 compatibility
in vec2 v_uv;
uniform sampler2D u_texture0, u_texture1, u_texture2;
uniform sampler2D u_textures[8];
uniform float u_shadingScale, u_opacity, u_textureCount, u_tilingLevel, u_tileLevel;
uniform float u_mixSpanCount, u_hasMask, u_gridEnabled, u_gridNoData;
uniform float u_mixSpans[4];
uniform vec4 u_maskColor, u_grid;
out vec4 fragColor;
void main()
{
    int show = int(u_shadingScale + 0.5);
    vec2 uv = clamp(v_uv, 0.0, 1.0);
    if (show < 8)
        fragColor = texture(u_textures[show], uv);
    else if (show == 8)
        fragColor = texture(u_texture0, uv);
    else if (show == 9)
        fragColor = texture(u_texture1, uv);
    else if (show == 10)
        fragColor = texture(u_texture2, uv);
    else if (show == 11)
        fragColor = vec4(u_opacity, u_textureCount / 8.0, u_tilingLevel / 16.0, u_mixSpans[2]);
    else if (show == 12)
        fragColor = u_maskColor;
    else if (show == 13)
        fragColor = vec4(u_gridEnabled, u_gridNoData / 100.0, u_grid.z / 10.0, u_hasMask);
    else
        fragColor = vec4(u_mixSpanCount / 4.0, u_tileLevel / 16.0, 0.0, 1.0);
})";
    Host::eProgramLibrary& library = Host::eProgramLibrary::Get();
    std::string shaders = library.GetShaderPath();
    eScene scene(32, 32);
    ASSERT_TRUE(scene.IsReady());
    library.SetShaderPath(dir);
    eRenderProgram* probe = library.Find("TileProbe");
    library.SetShaderPath(shaders);
    std::filesystem::remove_all(dir);
    ASSERT_NE(probe, nullptr);

    scene.Camera().LookAt(10.0, 40.0, 3.0e6, 0.0, 0.0);
    eTechnique technique;
    ePass* pass = technique.CreatePass();
    pass->SetProgram("TileProbe");
    eRect2D rect(0.0, 50.0, 20.0, 30.0);
    std::vector<std::unique_ptr<eTexture>> owned;
    std::vector<eTexture*> tiling;
    for (int k = 0; k < 6; ++k)
    {
        owned.push_back(Solid((unsigned char)(40 * k), (unsigned char)(250 - 40 * k), 77));
        tiling.push_back(owned.back().get());
    }
    std::unique_ptr<eTexture> base = Solid(200, 100, 0), ramp = Solid(0, 90, 180);
    std::unique_ptr<eTexture> mask = Solid(33, 66, 99), bump = Solid(120, 130, 140);
    std::vector<eTexture*> surface{mask.get(), bump.get()};
    std::vector<float> spans{0.1f, 0.2f, 0.6f, 0.9f};
    eRasterGrid grid;
    grid.m_dCellX = 5.0;
    grid.m_dNoData = 50.0;

    // Draws one operation on the tile under the centre and returns the centre's colour.
    enum Op
    {
        Tiling,
        Surface,
        Growth
    };
    auto show = [&](Op op, double what, std::vector<eTexture*>* list, eTexture* m)
    {
        FrameDraw draw(
            [&](eRenderEngine* e, eRenderSystem* rs, eCamera* c, eViewport* v)
            {
                for (eTileSet* t : *e->GetGlobeModel()->GetVisibleTileSets(c))
                {
                    if (!t->GetBounds().PtInRect(ePoint2D(10.0, 40.0)))
                        continue;
                    unsigned char drew =
                        op == Tiling
                            ? t->RenderTiling(e, rs, c, v, base.get(), t->GetBounds(), &rect, pass,
                                              1, ramp.get(), what, 0.5, &grid, list, 11, &spans)
                        : op == Surface
                            ? t->RenderSurface(e, rs, c, v, base.get(), &rect, pass, 1, ramp.get(),
                                               what, &grid, list, ERGBA(10, 200, 30, 255))
                            : t->RenderGrowth(e, rs, c, v, base.get(), &rect, pass, 1, nullptr,
                                              what, nullptr, m, 0.25);
                    EXPECT_EQ(drew, 1);
                }
                // Every unit is empty again, the first one active.
                GLint active = 0, bound = 0;
                glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
                EXPECT_EQ(active, GL_TEXTURE0);
                for (int unit = 0; unit < 8; ++unit)
                {
                    glActiveTexture(GL_TEXTURE0 + unit);
                    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
                    EXPECT_EQ(bound, 0) << "unit " << unit;
                }
                glActiveTexture(GL_TEXTURE0);
            });
        scene.Add(&draw);
        scene.RenderFrame();
        scene.Remove(&draw);
        return Centre(scene);
    };
    GLint units = 0;
    glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS, &units);
    std::vector<eTexture*> many((size_t)units + 3, tiling[3]); // more than the units hold
    int level =
        scene.GlobeModel().TileLevel(&scene.CoordSys(), scene.Engine().GetRenderResolution(1));
    std::vector<int> const levelColour{255, (int)std::lround(level / 16.0 * 255.0), 0, 255};
    struct Case
    {
        Op op;
        double what;
        std::vector<eTexture*>* list;
        eTexture* mask;
        std::vector<int> expect; // -1: a channel this draw does not set
    } const cases[] = {
        // Tiling: each texture of the list on its unit; the raster and ramp; opacity, count,
        // level, a span; the grid; the span count and the tile's level. With more textures
        // than units the draw still goes, with what fits.
        {Tiling, 0, &tiling, nullptr, {0, 250, 77, 255}},
        {Tiling, 5, &tiling, nullptr, {200, 50, 77, 255}},
        {Tiling, 8, &tiling, nullptr, {200, 100, 0, 255}},
        {Tiling, 9, &tiling, nullptr, {0, 90, 180, 255}},
        {Tiling, 11, &tiling, nullptr, {128, 191, 176, 153}},
        {Tiling, 13, &tiling, nullptr, {255, 128, 128, 0}},
        {Tiling, 14, &tiling, nullptr, levelColour},
        {Tiling, 3, &many, nullptr, {120, 130, 77, 255}},
        // Surface: the mask and the bump after the base and the colour table; the mask colour.
        {Surface, 0, &surface, nullptr, {33, 66, 99, 255}},
        {Surface, 1, &surface, nullptr, {120, 130, 140, 255}},
        {Surface, 12, &surface, nullptr, {10, 200, 30, 255}},
        // Growth: the mask on unit 2, the opacity, and whether there is a mask.
        {Growth, 10, nullptr, mask.get(), {33, 66, 99, 255}},
        {Growth, 11, nullptr, mask.get(), {64, -1, -1, -1}},
        {Growth, 13, nullptr, mask.get(), {-1, -1, -1, 255}},
        {Growth, 13, nullptr, nullptr, {-1, -1, -1, 0}},
    };
    for (Case const& c : cases)
    {
        std::vector<unsigned char> px = show(c.op, c.what, c.list, c.mask);
        for (size_t i = 0; i < 4; ++i)
        {
            if (c.expect[i] >= 0)
            {
                EXPECT_NEAR(px[i], c.expect[i], 2) << "op " << c.op << ", showing " << c.what;
            }
        }
    }
}

TEST(HostTiles, RasterBlockAllocatesKnownFormatsOnly)
{
    eRasterBlock block;
    EXPECT_EQ(block.Allocate(5, 4, 4), nullptr);
    EXPECT_EQ(block.Allocate(3200, 0, 4), nullptr);
    short* s = static_cast<short*>(block.Allocate(16, 3, 2));
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(block.m_nPixelFormat, 16);
    EXPECT_EQ(block.m_nWidth, 3);
    EXPECT_EQ(block.m_nHeight, 2);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(s[i], 0);
    s[5] = -7; // the whole block is writable
}
