// The host's tile layer: which tiles are in view, their keys and meshes, how a tile draws a
// raster, and the raster block.
#include "eGlobeModel.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eRecorder.h"
#include "eScene.h"
#include <gtest/gtest.h>
#include <cmath>

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

TEST(HostTiles, MeshLiesOnTheSphereOrThePlane)
{
    eScene scene(64, 64);
    scene.Camera().LookAt(10.0, 40.0, 3.0e6, 0.0, 0.0);
    std::vector<eTileSet*>* tiles = scene.GlobeModel().GetVisibleTileSets(&scene.Camera());
    ASSERT_TRUE(tiles && !tiles->empty());
    eTileSet* tile = (*tiles)[0];
    eMesh* mesh = tile->GetMesh();
    ASSERT_NE(mesh, nullptr);
    int n = eTileSet::kGridSize;
    EXPECT_EQ(mesh->GetIndexData()->GetIndexSize(), (n - 1) * (n - 1) * 6);
    EXPECT_EQ(mesh->GetVertexData()->GetVertexSize(), n * n);
    // Position (relative to the centre), normal, logical point: on the sphere, facing out.
    eVector3T<double> c = tile->GetCenter();
    eRect2D b = tile->GetBounds();
    for (int i = 0; i < n * n; i += 37)
    {
        float const* v = mesh->GetVertex(i);
        eVector3T<double> w(c.x + v[0], c.y + v[1], c.z + v[2]);
        double r = std::sqrt(w.x * w.x + w.y * w.y + w.z * w.z);
        EXPECT_NEAR(r, 6378137.0, 2.0);
        EXPECT_NEAR(v[3] * w.x + v[4] * w.y + v[5] * w.z, r, 2.0);
        EXPECT_TRUE(b.PtInRect(ePoint2D(v[6], v[7])));
        eVector3T<double> expect;
        scene.CoordSys().LogicalToWorld(eSM_GLOBE, ePoint2D(v[6], v[7]), expect, 0.0);
        EXPECT_NEAR(expect.x, w.x, 2.0);
        EXPECT_NEAR(expect.z, w.z, 2.0);
    }

    eScene plane(64, 64, eSM_PLANE);
    plane.Camera().LookAt(10.0, 40.0, 3.0e6, 0.0, 0.0);
    tiles = plane.GlobeModel().GetVisibleTileSets(&plane.Camera());
    ASSERT_TRUE(tiles && !tiles->empty());
    b = (*tiles)[0]->GetBounds();
    EXPECT_GT(b.Width(), 1000.0); // map metres, not degrees
    EXPECT_EQ((*tiles)[0]->GetCenter().z, 0.0);
    mesh = (*tiles)[0]->GetMesh();
    ASSERT_NE(mesh, nullptr);
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
    EXPECT_EQ(draws[0].count, (eTileSet::kGridSize - 1) * (eTileSet::kGridSize - 1) * 6);
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
