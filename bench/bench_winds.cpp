// CPU time of one particle-wind frame (pool update, advection and the trail buffer) on a
// 360 x 181 grid, by pool size, without and with the draws. Reported per particle; compare
// with BM_MemcpyBandwidth.
#include "eRenderDynamicWinds.h"
#include "eScene.h"
#include <benchmark/benchmark.h>
#include <cmath>
#include <memory>

namespace
{

class WindsBench : public KYR::eRenderDynamicWinds
{
public:
    explicit WindsBench(int particles) : eRenderDynamicWinds(nullptr)
    {
        m_particleCount = particles;
        m_maxTrailFrames = 50;
    }
    // Without a render system the frame does everything but the draws, which on this
    // machine would time the software rasteriser rather than the effect.
    unsigned char Frame(KYR::Host::eScene& s, bool draw)
    {
        return RenderDynamic(&s.Engine(), draw ? &s.RenderSystem() : nullptr, &s.Camera(),
                             &s.Viewport());
    }
};

std::vector<KYR::ePoint2D> Field(KYR::WindField& f)
{
    f.nx = 360;
    f.ny = 181;
    f.dy = -1.0;
    f.left = 0.0;
    f.right = 359.0;
    f.top = 90.0;
    f.bottom = -90.0;
    std::vector<KYR::ePoint2D> v;
    for (int j = 0; j < f.ny; ++j)
        for (int i = 0; i < f.nx; ++i)
        {
            double lat = (90.0 - j) * 0.017453292519943295, lon = i * 0.017453292519943295;
            v.push_back(
                KYR::ePoint2D(-8.0 * std::sin(6.0 * std::fabs(lat)) + 3.0 * std::sin(4.0 * lon),
                              4.0 * std::cos(5.0 * lon + 3.0 * lat)));
        }
    return v;
}

void BM_WindsRenderDynamic(benchmark::State& state)
{
    KYR::Host::eScene scene(256, 256);
    if (!scene.IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    scene.Camera().LookAt(120.0, 20.0, 2.0e7, 0.0, 0.0);
    bool const draw = state.range(1) != 0;
    WindsBench winds((int)state.range(0));
    winds.m_dynamic = true;
    std::vector<KYR::ePoint2D> field = Field(winds.m_windField);
    winds.SetWindDynamic(field);
    winds.Initialize(&scene.Engine());
    // Fill the trail list first, so every timed frame also drops the oldest buffer.
    for (int i = 0; i < 55; ++i)
        winds.Frame(scene, draw);
    for (auto _ : state)
        benchmark::DoNotOptimize(winds.Frame(scene, draw));
    state.counters["ns_per_particle"] =
        benchmark::Counter((double)state.range(0) * state.iterations(),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

} // namespace

BENCHMARK(BM_WindsRenderDynamic)
    ->ArgNames({"particles", "draw"})
    ->ArgsProduct({{2000, 20000, 100000}, {0, 1}})
    ->Unit(benchmark::kMillisecond);
