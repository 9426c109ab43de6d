// Grey-colour tile object: the processor time of one Render for a growing number of tile
// rectangles (one patch, one four-float uniform per tile), and the same frame drawn by the
// host's software driver.
#include "eTilePatch.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderGrayColorObject.h"
#include "eRenderSystem.h"
#include "eScene.h"
#include <benchmark/benchmark.h>
#include <vector>

namespace
{

using namespace KYR;

Host::eScene& Scene()
{
    static Host::eScene s_scene(64, 64);
    s_scene.Camera().LookAt(100.0, 30.0, 2.0e7, 0.0, 0.0);
    return s_scene;
}

class eNullRenderSystem : public eRenderSystem
{
public:
    void DrawIndexed(eOperationType, eVertexData*, eIndexData*, bool) override {}
};

// Tiles of 90 / sqrt(count) degrees over 60..150 E, 0..90 N.
void RenderTiles(benchmark::State& state, eRenderSystem& rs)
{
    Host::eScene& scene = Scene();
    if (!scene.IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    eRenderGrayColorObject tiles;
    eMaterial* material = new eMaterial();
    ePass* pass = material->CreateTechnique()->CreatePass();
    pass->SetProgram("GrayColorTile");
    tiles.SetMaterial(material);
    tiles.AddMesh(Host::MakeTilePatch(8));
    std::vector<float> raster(256 * 256, 12.5f);
    tiles.AddTexture((unsigned char*)raster.data(), 256, 256, ePF_FLOAT);
    tiles.SetTextureBound(eRect2D(60.0, 90.0, 150.0, 0.0), 1.0);
    int side = 1;
    while (side * side < state.range(0))
        ++side;
    double step = 90.0 / side;
    for (int i = 0; i < side * side; ++i)
    {
        double l = 60.0 + (i % side) * step, t = 90.0 - (i / side) * step;
        tiles.AddTileBound(eRect2D(l, t, l + step, t - step));
    }
    eRenderProgram* rp = scene.Engine().GetRenderProgram(pass);
    if (!rp)
    {
        state.SkipWithError("no GrayColorTile program");
        return;
    }
    rp->GetProgram()->Use();
    tiles.Render(&scene.Engine(), &rs, &scene.Camera(), &scene.Viewport()); // uploads
    for (auto _ : state)
        tiles.Render(&scene.Engine(), &rs, &scene.Camera(), &scene.Viewport());
    state.SetItemsProcessed(state.iterations() * side * side);
}

void BM_TileRenderCpu(benchmark::State& state)
{
    eNullRenderSystem rs;
    RenderTiles(state, rs);
}

// With the host's render system: includes the software driver's share of the draws.
void BM_TileRenderHost(benchmark::State& state)
{
    RenderTiles(state, Scene().RenderSystem());
}

} // namespace

BENCHMARK(BM_TileRenderCpu)->Arg(16)->Arg(256)->Arg(4096)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TileRenderHost)->Arg(16)->Arg(256)->Unit(benchmark::kMicrosecond);
