// Line grow set of 10,000 lines of 100 points: the frame that drains the colour queue, 1025
// updates, as the render thread runs it. The updates go round the lines, one point of each in
// turn, as when every line grows at once, so no two of a frame touch neighbouring vertices.
// Reported: the processor time of the drain alone and of the whole frame with the draw calls
// handed over but not executed, the bytes the drain writes per frame, and those bytes per
// second as a ratio to a plain memcpy measured in the same process.
#include "BenchClock.h"
#include "AllocCounter.h"
#include "eRenderLineGrowSet.h"
#include "eScene.h"
#include <benchmark/benchmark.h>
#include <cstring>
#include <ctime>
#include <epoxy/gl.h>
#include <memory>
#include <vector>

namespace
{

int const kLines = 10000;
int const kPoints = 100;
int const kUpdatesPerFrame = 1025;

KYR::Host::eScene& Scene()
{
    static KYR::Host::eScene s_scene(256, 256);
    s_scene.Camera().LookAt(10.0, 20.0, 8.0e6, 0.0, 30.0);
    return s_scene;
}

// The set, made once: 10,000 lines of 100 points over 40 by 40 degrees.
KYR::eRenderLineGrowSet* Set()
{
    static std::unique_ptr<KYR::eRenderLineGrowSet> s_set;
    if (s_set)
        return s_set.get();
    KYR::Host::eScene& scene = Scene();
    s_set.reset(new KYR::eRenderLineGrowSet());
    s_set->SetPoolSize(kLines * kPoints);
    s_set->SetSpatialRefType(1);
    KYR::eVector3T<double> anchor(10.0, 20.0, 0.0);
    s_set->SetPosition(anchor);
    s_set->Create(&scene.Camera(), 0.0, &scene.Canvas());
    s_set->Initialize(&scene.Engine());
    for (int l = 0; l < kLines; ++l)
    {
        KYR::eGrowLine line;
        line.m_fWidth = 2.0f;
        line.m_cColor = KYR::eVector4T<unsigned char>(120, 120, 120, 255);
        double lon = -10.0 + (l % 100) * 0.4, lat = (l / 100) * 0.4;
        for (int p = 0; p < kPoints; ++p)
            line.m_arPositions.push_back(
                KYR::eVector4T<double>(lon + p * 0.004, lat + p * 0.002, 0.0, 0.0));
        s_set->Add(&line);
    }
    // Queues once, which makes the technique, and warms the program and the driver.
    scene.Add(s_set.get());
    scene.RenderFrame();
    scene.Remove(s_set.get());
    return s_set.get();
}

// One frame's updates: the next 1025 points in the order that visits every line in turn.
// Returns the colour bytes they rewrite.
long long QueueFrame(KYR::eRenderLineGrowSet* set, long long& next)
{
    long long bytes = 0;
    KYR::eVector4T<unsigned char> colour(250, 180, 40, 255);
    for (int i = 0; i < kUpdatesPerFrame; ++i, ++next)
    {
        int line = (int)(next % kLines), point = (int)((next / kLines) % kPoints);
        colour.x = (unsigned char)next;
        set->Update(set->Get(line), point, colour);
        bytes += (point == 0 || point == kPoints - 1 ? 2 : 4) * 4;
    }
    return bytes;
}

// Stands in for the driver's glDrawElements, so that a frame's time is the set's own.
void EPOXY_CALLSPEC SkipDraw(GLenum, GLsizei, GLenum, void const*) {}

void Frame(benchmark::State& state, bool draw)
{
    if (!Scene().IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    KYR::Host::eScene& scene = Scene();
    KYR::eRenderLineGrowSet* set = Set();
    MemcpyBytesPerSecond();
    auto const real = epoxy_glDrawElements;
    epoxy_glDrawElements = SkipDraw;
    // Hidden, Render only drains; shown, it also sends the uniforms and the 10,000 draws.
    set->m_bVisible = draw ? 1 : 0;
    long long next = 0, bytes = 0, allocations = 0;
    double seconds = 0.0;
    for (auto _ : state)
    {
        state.PauseTiming();
        bytes += QueueFrame(set, next);
        long long before = KyrAllocCount();
        state.ResumeTiming();
        double t0 = ThreadSeconds();
        set->Render(&scene.Engine(), &scene.RenderSystem(), &scene.Camera(), &scene.Viewport());
        seconds += ThreadSeconds() - t0;
        allocations += KyrAllocCount() - before;
    }
    glFinish();
    epoxy_glDrawElements = real;
    set->m_bVisible = 1;
    double frames = (double)state.iterations();
    state.SetBytesProcessed((int64_t)bytes);
    state.counters["cpu_us_per_frame"] = seconds / frames * 1e6;
    state.counters["bytes_per_frame"] = (double)bytes / frames;
    state.counters["allocs_per_frame"] = (double)allocations / frames;
    state.counters["memcpy_bytes_per_s"] = MemcpyBytesPerSecond();
    if (seconds > 0.0)
        state.counters["memcpy_ratio"] = (double)bytes / seconds / MemcpyBytesPerSecond();
}

// The drain alone: 1025 colour records applied, 2 or 4 vertices each.
void BM_LineGrowDrain(benchmark::State& state)
{
    Frame(state, false);
}

// The drain and the draw of all 10,000 lines, minus the driver's work.
void BM_LineGrowFrameCpu(benchmark::State& state)
{
    Frame(state, true);
}

} // namespace

BENCHMARK(BM_LineGrowDrain)->Unit(benchmark::kMicrosecond)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(BM_LineGrowFrameCpu)
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly();
