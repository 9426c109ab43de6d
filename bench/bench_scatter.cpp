// Scatter point set at its full pool of 1,000,000 points: adding points, one pick, and
// the processor time of one Render (which must not depend on the count).
#include "eRenderScatterPointSet.h"
#include "eRenderSystem.h"
#include "eScene.h"
#include <benchmark/benchmark.h>
#include <memory>
#include <random>

namespace
{

using KYR::eRenderScatterPointSet;
using KYR::eScatterPoint;

KYR::Host::eScene& Scene()
{
    static KYR::Host::eScene s_scene(64, 64);
    s_scene.Camera().LookAt(0.0, 0.0, 2.0e7, 0.0, 0.0);
    return s_scene;
}

void Fill(eRenderScatterPointSet& set, int count)
{
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> lon(-180.0, 180.0), lat(-80.0, 80.0);
    for (int i = 0; i < count; ++i)
    {
        eScatterPoint p(1 + i % 64, lon(rng), lat(rng), 0.0, 1.0);
        set.AddScatterPoint(p);
    }
}

void BM_ScatterAddMillion(benchmark::State& state)
{
    if (!Scene().IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    int const count = 1000000;
    for (auto _ : state)
    {
        std::unique_ptr<eRenderScatterPointSet> set(new eRenderScatterPointSet());
        Fill(*set, count);
        benchmark::DoNotOptimize(set.get());
        state.PauseTiming();
        set.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * count);
    state.counters["per_point"] = benchmark::Counter(
        (double)state.iterations() * count,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert, benchmark::Counter::kIs1000);
}

// The picked point is the only one near the ray, so the whole buffer is walked.
void BM_ScatterQueryMillion(benchmark::State& state)
{
    if (!Scene().IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    eRenderScatterPointSet set;
    Fill(set, 999999);
    eScatterPoint target(2, 0.0, 0.0, 0.0, 1.0);
    set.AddScatterPoint(target);
    KYR::eQueryFilter filter;
    filter.m_vOrigin = Scene().Camera().GetCameraPosition();
    filter.m_vDirection = (KYR::eVector3T<double>(6378137.0, 0, 0) - filter.m_vOrigin).Normalized();
    double depth = 0.0;
    for (auto _ : state)
        benchmark::DoNotOptimize(set.Query(&Scene().Engine(), &Scene().Camera(), &filter, depth));
    state.SetItemsProcessed(state.iterations() * 1000000);
}

// Draws go nowhere, so the time is the set's own work for a frame.
class eNullRenderSystem : public KYR::eRenderSystem
{
public:
    void DrawVertices(KYR::eOperationType, KYR::eVertexData*, int, int, bool) override {}
};

void RenderFrame(benchmark::State& state, KYR::eRenderSystem& rs)
{
    if (!Scene().IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    KYR::Host::eScene& scene = Scene();
    eRenderScatterPointSet set;
    Fill(set, (int)state.range(0));
    set.SetScatterPointIsChoice(0, true);
    set.Initialize(&scene.Engine());
    // The first frame builds the visibility picture; the timed frames do not.
    set.Render(&scene.Engine(), &rs, &scene.Camera(), &scene.Viewport());
    for (auto _ : state)
        set.Render(&scene.Engine(), &rs, &scene.Camera(), &scene.Viewport());
}

void BM_ScatterRenderCpu(benchmark::State& state)
{
    eNullRenderSystem rs;
    RenderFrame(state, rs);
}

// With the host's render system: includes the software driver's share of the draw.
void BM_ScatterRenderHost(benchmark::State& state)
{
    RenderFrame(state, Scene().RenderSystem());
}

} // namespace

BENCHMARK(BM_ScatterAddMillion)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ScatterQueryMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ScatterRenderCpu)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ScatterRenderHost)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMillisecond);
