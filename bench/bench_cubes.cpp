// Cube set of up to 100,000 prisms at geographic positions on the globe: the upload of the
// whole pool (every prism converted, built and written, as Initialize does it), single ring
// edits, and the processor time of one frame with nothing changed, which must not depend on
// the number of prisms. Throughput is reported as bytes written per second and as a ratio
// to a plain memcpy measured in the same process; the frame reports its heap allocations.
#include "BenchClock.h"
#include "AllocCounter.h"
#include "eRenderListCubeSet.h"
#include "eScene.h"
#include <benchmark/benchmark.h>
#include <cstring>
#include <ctime>
#include <epoxy/gl.h>
#include <memory>
#include <random>
#include <vector>

namespace
{

int const kBytesPerPrism = 21 * 36 + 30 * 4;

class BenchCubeSet : public KYR::eRenderListCubeSet
{
public:
    using eRenderListCubeSet::CreateBuffers;
    using eRenderListCubeSet::m_nCursor;
    using eRenderListCubeSet::UploadPending;
};

KYR::Host::eScene& Scene()
{
    static KYR::Host::eScene s_scene(256, 256);
    s_scene.Camera().LookAt(10.0, 20.0, 8.0e6, 0.0, 30.0);
    return s_scene;
}

KYR::eCubePoint RandomPrism(std::mt19937& rng)
{
    std::uniform_real_distribution<double> lon(-10.0, 30.0), lat(0.0, 40.0), h(1e4, 5e5);
    KYR::eCubePoint p;
    p.m_vPosition = KYR::eVector4T<double>(lon(rng), lat(rng), 0.0, 0.0);
    p.m_fRadius = 5000.0f;
    p.m_fHeight = (float)h(rng);
    p.m_cTopColor = KYR::eVector4T<unsigned char>(250, 180, 40, 255);
    p.m_cBottomColor = KYR::eVector4T<unsigned char>(110, 80, 20, 255);
    return p;
}

// A full pool, created and initialised against the scene's camera.
std::unique_ptr<BenchCubeSet> MakeSet(int count)
{
    std::unique_ptr<BenchCubeSet> set(new BenchCubeSet());
    set->SetPoolSize(count);
    set->SetSpatialRefType(1);
    KYR::eVector3T<double> anchor(10.0, 20.0, 0.0);
    set->SetPosition(anchor);
    set->SetEnableGrow(0);
    std::mt19937 rng(5);
    for (int i = 0; i < count; ++i)
    {
        KYR::eCubePoint p = RandomPrism(rng);
        set->AddCubePoint(&p);
    }
    KYR::Host::eScene& scene = Scene();
    set->Create(&scene.Camera(), 0.0, &scene.Canvas());
    set->Initialize(&scene.Engine());
    return set;
}

void ReportBytes(benchmark::State& state, double bytes, double seconds)
{
    state.SetBytesProcessed((int64_t)bytes);
    state.counters["memcpy_bytes_per_s"] = MemcpyBytesPerSecond();
    if (seconds > 0.0)
        state.counters["memcpy_ratio"] = bytes / seconds / MemcpyBytesPerSecond();
}

// The whole pool rebuilt and written: conversion, triangulation, normals, and one write per
// buffer for every 2,048 consecutive slots.
void BM_CubeSetUploadPool(benchmark::State& state)
{
    if (!Scene().IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    int const count = (int)state.range(0);
    std::unique_ptr<BenchCubeSet> set = MakeSet(count);
    MemcpyBytesPerSecond();
    double seconds = 0.0;
    for (auto _ : state)
    {
        double t0 = ThreadSeconds();
        set->UploadPending();
        seconds += ThreadSeconds() - t0;
        set->m_nCursor = 0;
    }
    ReportBytes(state, (double)state.iterations() * count * kBytesPerPrism, seconds);
    state.counters["ns_per_prism"] =
        benchmark::Counter((double)state.iterations() * count * 1e-9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// One prism at a time through the ring: two small writes per edit.
void BM_CubeSetRingEdit(benchmark::State& state)
{
    if (!Scene().IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    std::unique_ptr<BenchCubeSet> set = MakeSet(100000);
    std::mt19937 rng(9);
    std::vector<KYR::eCubePoint> prisms;
    for (int i = 0; i < 4096; ++i)
        prisms.push_back(RandomPrism(rng));
    MemcpyBytesPerSecond();
    size_t next = 0;
    long long before = KyrAllocCount();
    double t0 = ThreadSeconds();
    for (auto _ : state)
    {
        set->AddCubePoint(&prisms[next]);
        next = (next + 1) % prisms.size();
    }
    double seconds = ThreadSeconds() - t0;
    ReportBytes(state, (double)state.iterations() * kBytesPerPrism, seconds);
    state.counters["allocs_per_edit"] =
        (double)(KyrAllocCount() - before) / (double)state.iterations();
}

// Stands in for the driver's glDrawElements, so that a frame's time is the set's own.
int s_nDraws = 0;
void EPOXY_CALLSPEC CountDraw(GLenum, GLsizei, GLenum, void const*)
{
    ++s_nDraws;
}

void Frame(benchmark::State& state, bool driver)
{
    if (!Scene().IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    KYR::Host::eScene& scene = Scene();
    std::unique_ptr<BenchCubeSet> set = MakeSet((int)state.range(0));
    // Queues once, which makes the technique, and warms the program and the driver.
    scene.Add(set.get());
    scene.RenderFrame();
    scene.Remove(set.get());
    auto const real = epoxy_glDrawElements;
    if (!driver)
        epoxy_glDrawElements = CountDraw;
    long long before = KyrAllocCount();
    for (auto _ : state)
    {
        set->Render(&scene.Engine(), &scene.RenderSystem(), &scene.Camera(), &scene.Viewport());
        if (driver)
            glFinish();
    }
    long long allocations = KyrAllocCount() - before;
    epoxy_glDrawElements = real;
    state.counters["allocs_per_frame"] = (double)allocations / (double)state.iterations();
    state.counters["prisms"] = (double)state.range(0);
}

// The set's frame on the processor: uniforms, binds and the two draw calls handed over.
void BM_CubeSetFrameCpu(benchmark::State& state)
{
    Frame(state, false);
}

// The same with the software driver drawing every prism, for scale.
void BM_CubeSetFrameDriver(benchmark::State& state)
{
    Frame(state, true);
}

} // namespace

BENCHMARK(BM_CubeSetUploadPool)->Arg(100000)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_CubeSetRingEdit)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CubeSetFrameCpu)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CubeSetFrameDriver)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);
