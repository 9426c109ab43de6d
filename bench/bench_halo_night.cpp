// The halo's per-frame work (fade, horizon, draw matrix, uniforms) and the night light's walk
// over the tile sets in view, which must test bounds before it draws. Draws go nowhere, so
// the times are the effects' own work.
#include "eGlobeModel.h"
#include "eRenderGlobeHalo.h"
#include "eRenderNightLight.h"
#include "eRenderSystem.h"
#include "eScene.h"
#include <benchmark/benchmark.h>
#include <cstdio>
#include <string>

namespace
{

KYR::Host::eScene& Scene()
{
    static KYR::Host::eScene s_scene(256, 256);
    s_scene.Camera().LookAt(20.0, 10.0, 2.0e7, 0.0, 30.0);
    return s_scene;
}

class eSilentRenderSystem : public KYR::eRenderSystem
{
public:
    void DrawIndexed(KYR::eOperationType, KYR::eVertexData*, KYR::eIndexData*, bool) override {}
};

// A tile set whose image draw only counts.
class eCountingTile : public KYR::eTileSet
{
public:
    explicit eCountingTile(KYR::eRect2D const& b)
        : KYR::eTileSet(KYR::eTileKey(), b, KYR::eSM_GLOBE, nullptr)
    {
    }
    unsigned char RenderImage(KYR::eRenderEngine*, KYR::eRenderSystem*, KYR::eCamera*,
                              KYR::eViewport*, KYR::eTexture*, KYR::eRect2D*, KYR::ePass*,
                              unsigned char, KYR::eTexture*, double, void*) override
    {
        ++m_nCalls;
        return 1;
    }
    long long m_nCalls = 0;
};

class eFixedModel : public KYR::eGlobeModel
{
public:
    std::vector<KYR::eTileSet*>* GetVisibleTileSets(KYR::eCamera*) override { return &m_arTiles; }
    std::vector<KYR::eTileSet*> m_arTiles;
};

void BM_GlobeHaloRender(benchmark::State& state)
{
    KYR::Host::eScene& scene = Scene();
    if (!scene.IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    eSilentRenderSystem rs;
    KYR::eRenderGlobeHalo halo;
    halo.SetColor(KYR::ERGBA(120, 180, 255, 230));
    halo.Initialize(&scene.Engine());
    halo.UpdateRenderQueue(&scene.Engine(), &scene.Camera(), &scene.Viewport(), &scene.Queue());
    for (auto _ : state)
        benchmark::DoNotOptimize(
            halo.Render(&scene.Engine(), &rs, &scene.Camera(), &scene.Viewport()));
    scene.Queue().Clear();
}

// A 64 x 64 grid of tile sets over the world and an image over one 16th of it.
void BM_NightLightTileWalk(benchmark::State& state)
{
    KYR::Host::eScene& scene = Scene();
    if (!scene.IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    std::string path = "/tmp/kyr_bench_night.ppm";
    if (FILE* f = std::fopen(path.c_str(), "wb"))
    {
        std::fprintf(f, "P6\n4 2\n255\n");
        unsigned char px[24] = {};
        std::fwrite(px, 1, sizeof(px), f);
        std::fclose(f);
    }
    int const n = 64;
    std::vector<eCountingTile*> tiles;
    eFixedModel model;
    for (int r = 0; r < n; ++r)
        for (int c = 0; c < n; ++c)
        {
            double w = 360.0 / n, h = 180.0 / n;
            tiles.push_back(new eCountingTile(KYR::eRect2D(
                -180.0 + c * w, 90.0 - r * h, -180.0 + (c + 1) * w, 90.0 - (r + 1) * h)));
            model.m_arTiles.push_back(tiles.back());
        }
    scene.Engine().SetGlobeModel(&model);
    KYR::eRenderNightLight lights;
    lights.SetImagePath(path.c_str());
    double k = 6378137.0 * 0.017453292519943295;
    lights.SetImageBound(KYR::eRect2D(0.5 * k, 44.5 * k, 89.5 * k, 0.5 * k));
    lights.Initialize(&scene.Engine());
    lights.UpdateRenderQueue(&scene.Engine(), &scene.Camera(), &scene.Viewport(), &scene.Queue());
    eSilentRenderSystem rs;
    for (auto _ : state)
        lights.Render(&scene.Engine(), &rs, &scene.Camera(), &scene.Viewport());
    long long drawn = 0;
    for (eCountingTile* t : tiles)
        drawn += t->m_nCalls;
    state.counters["tiles_drawn"] = (double)drawn / (double)state.iterations();
    state.SetItemsProcessed(state.iterations() * n * n);
    scene.Engine().SetGlobeModel(&scene.GlobeModel());
    scene.Queue().Clear();
    for (eCountingTile* t : tiles)
        delete t;
    std::remove(path.c_str());
}

} // namespace

BENCHMARK(BM_GlobeHaloRender)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_NightLightTileWalk)->Unit(benchmark::kMicrosecond);
