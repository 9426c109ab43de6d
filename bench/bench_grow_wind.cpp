// Grow wind: one whole frame of the effect (fade and particle points into the 4096 x 2048
// trail picture, the particle step, the overlay on the globe's tiles) at 1024 x 768, alone
// over a cleared frame, with the generated wind picture and 65,536, 262,144 and 1,048,576
// particles. Items are particles advanced (a second of them is the rate); bytes are those
// the frame must move at the least, the trail picture read and written once and the state
// read and written once, for the ratio to BM_MemcpyBandwidth. Frames are timed by the wall
// clock: the software rasteriser works on threads of its own.
#include "eFile.h"
#include "eRenderGrowWind.h"
#include "eScene.h"
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>

namespace
{

KYR::Host::eScene& Scene()
{
    static KYR::Host::eScene scene(1024, 768);
    return scene;
}

void BM_GrowWindFrame(benchmark::State& state)
{
    KYR::Host::eScene& scene = Scene();
    KYR::eString path = KYR::eSystem::GetWorkPath() + "Resources/Weather/wind_uv.png";
    std::FILE* f = std::fopen(path.Cstr(), "rb");
    if (!scene.IsReady() || !f)
    {
        state.SkipWithError("no OpenGL context or no Resources/Weather/wind_uv.png");
        return;
    }
    std::fclose(f);
    KYR::eRenderGrowWind wind;
    wind.SetParticleCount((int)state.range(0));
    KYR::tagWindData data;
    data.path = path;
    data.uMin = data.vMin = -50.0f;
    data.uMax = data.vMax = 50.0f;
    wind.SetWindData(&data);
    KYR::eColorTable table;
    table.CreateStockGradient(256, KYR::KYR_STOCK_GRADIENT_RAINBOW, 0);
    wind.SetColorTable(&table);
    // The gallery's view: the whole western Pacific, about 600 pixels of globe.
    scene.Camera().LookAt(150.0, 22.0, 2.3e7, 0.0, 0.0);
    scene.Add(&wind);
    scene.RenderFrame(); // uploads and compiles
    for (auto _ : state)
        scene.RenderFrame(); // ends with glFinish
    scene.Remove(&wind);
    wind.UnInitialize(nullptr);
    int64_t const particles = wind.GetParticleCount();
    int64_t const trail =
        (int64_t)KYR::eRenderGrowWind::kScreenWidth * KYR::eRenderGrowWind::kScreenHeight * 4;
    state.SetItemsProcessed((int64_t)state.iterations() * particles);
    state.SetBytesProcessed((int64_t)state.iterations() * (2 * trail + 2 * 4 * particles));
    state.counters["fps"] =
        benchmark::Counter((double)state.iterations(), benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK(BM_GrowWindFrame)
    ->Arg(65536)
    ->Arg(262144)
    ->Arg(1048576)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
