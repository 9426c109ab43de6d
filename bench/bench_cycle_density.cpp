// Frame cost of a point cycle set from 1,000 to 1,000,000 pulses, and of a density ring of
// 100,000 markers taking new ones each frame. A cycle set writes its quads once and the
// program tells the living pulses from the clock, so its own work per frame (uniforms, one
// bound buffer pair, one draw) does not grow with the pulses; the draw itself costs the
// driver (on the software rasteriser, in this thread) per vertex. Both are reported: the
// set's own work with the driver's draw call stepped over, and the whole Render. The ring
// reports the bytes written per second into its slots as a ratio to a plain memcpy
// measured in the same process.
#include "BenchClock.h"
#include "AllocCounter.h"
#include "eRenderListDensitySet.h"
#include "eRenderPointCycleSet.h"
#include "eMesh.h"
#include "eScene.h"
#include <benchmark/benchmark.h>
#include <cstring>
#include <ctime>
#include <epoxy/gl.h>
#include <map>
#include <random>
#include <vector>

namespace
{

// Times its own Render inside the host's frame; with m_bSkipDraw the driver's draw call
// returns at once, leaving the set's own work.
class TimedCycleSet : public KYR::eRenderPointCycleSet
{
public:
    unsigned char Render(KYR::eRenderEngine* e, KYR::eRenderSystem* rs, KYR::eCamera* c,
                         KYR::eViewport* v) override
    {
        auto real = epoxy_glDrawArrays;
        if (m_bSkipDraw)
            epoxy_glDrawArrays = [](GLenum, GLint, GLsizei) {};
        long long allocations = KyrAllocCount();
        double t0 = ThreadSeconds();
        unsigned char r = eRenderPointCycleSet::Render(e, rs, c, v);
        m_dSeconds += ThreadSeconds() - t0;
        m_nAllocations += KyrAllocCount() - allocations;
        epoxy_glDrawArrays = real;
        return r;
    }
    bool m_bSkipDraw = false;
    double m_dSeconds = 0.0;
    long long m_nAllocations = 0;
};

struct CycleFixture
{
    KYR::Host::eScene* scene = nullptr;
    TimedCycleSet* set = nullptr;
};

// Kept for the life of the process: the context outlives every benchmark.
CycleFixture& GetCycles(int pulses)
{
    static std::map<int, CycleFixture> s_fixtures;
    CycleFixture& f = s_fixtures[pulses];
    if (f.set)
        return f;
    f.scene = new KYR::Host::eScene(256, 256);
    f.scene->Camera().LookAt(0.0, 20.0, 2.0e7, 0.0, 0.0);
    f.set = new TimedCycleSet();
    KYR::eVector3T<double> anchor(0.0, 20.0, 0.0);
    f.set->SetSpatialRefType(1);
    f.set->SetPosition(anchor);
    f.set->SetTraceTime(600.0f);
    f.set->SetStartTime(1000.0f);
    f.set->SetSpeedPerFrame(1.0f);
    f.scene->Add(f.set);
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> lon(-180.0, 180.0), lat(-70.0, 70.0), t(0.0, 5000.0);
    KYR::eCyclePoint p;
    p.m_fSize = 4.0f;
    p.m_Color = KYR::eVector4T<unsigned char>(255, 120, 40, 255);
    for (int i = 0; i < pulses; ++i)
    {
        p.m_Position = KYR::eVector4T<double>(lon(rng), lat(rng), 0.0, t(rng));
        f.set->AddCyclePoint(&p);
    }
    f.set->Reset(nullptr);
    for (int i = 0; i < 3; ++i)
        f.scene->RenderFrame();
    return f;
}

// arg 0: pulses; arg 1: 1 to step over the driver's draw call.
void BM_CycleSetFrame(benchmark::State& state)
{
    CycleFixture& f = GetCycles((int)state.range(0));
    f.set->m_bSkipDraw = state.range(1) != 0;
    f.set->m_dSeconds = 0.0;
    f.set->m_nAllocations = 0;
    for (auto _ : state)
        f.scene->RenderFrame();
    double frames = (double)state.iterations();
    state.counters["render_us"] = f.set->m_dSeconds / frames * 1e6;
    state.counters["allocs_per_frame"] = (double)f.set->m_nAllocations / frames;
    state.counters["write_bytes_per_frame"] = 0.0; // Render has no path that writes a buffer
}

// A full ring of 100,000 markers; each frame 1,000 new ones overwrite the oldest slots.
class TimedDensitySet : public KYR::eRenderListDensitySet
{
public:
    int VerticesPerPoint() const { return m_nVerticesPerPoint; }
    int Stride() const { return m_pVertexData ? m_pVertexData->GetVertexStride() : 0; }
};

int const kRing = 100000;
int const kNewPerFrame = 1000;

struct DensityFixture
{
    KYR::Host::eScene* scene = nullptr;
    TimedDensitySet* set = nullptr;
    std::vector<KYR::eDensityPoint> fresh;
};

DensityFixture& GetDensity(unsigned char geometry)
{
    static DensityFixture s_fixtures[2];
    DensityFixture& f = s_fixtures[geometry ? 1 : 0];
    if (f.set)
        return f;
    f.scene = new KYR::Host::eScene(256, 256);
    f.scene->Camera().LookAt(0.0, 20.0, 2.0e7, 0.0, 0.0);
    f.set = new TimedDensitySet();
    f.set->SetGeometryShader(geometry);
    f.set->SetPoolSize(kRing);
    f.set->SetTraceTime(5000.0f);
    KYR::eVector3T<double> anchor(0.0, 20.0, 0.0);
    f.set->SetSpatialRefType(1);
    f.set->SetPosition(anchor);
    f.scene->Add(f.set);
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> lon(-180.0, 180.0), lat(-70.0, 70.0), t(0.0, 5000.0);
    KYR::eDensityPoint p;
    p.m_fSize = 6.0f;
    p.m_Color = KYR::eVector4T<unsigned char>(255, 150, 40, 60);
    for (int i = 0; i < kRing + 4 * kNewPerFrame; ++i)
    {
        p.m_Position = KYR::eVector4T<double>(lon(rng), lat(rng), 0.0, t(rng));
        if (i < kRing)
            f.set->AddDensityPoint(&p);
        else
            f.fresh.push_back(p);
    }
    for (int i = 0; i < 3; ++i)
        f.scene->RenderFrame();
    return f;
}

// The markers a frame takes, converted and written into their slots.
void BM_DensityRingAdd(benchmark::State& state)
{
    DensityFixture& f = GetDensity((unsigned char)state.range(0));
    size_t next = 0;
    long long before = KyrAllocCount();
    double t0 = ThreadSeconds();
    for (auto _ : state)
    {
        for (int i = 0; i < kNewPerFrame; ++i)
        {
            f.set->AddDensityPoint(&f.fresh[next]);
            next = next + 1 < f.fresh.size() ? next + 1 : 0;
        }
        glFinish();
    }
    double seconds = ThreadSeconds() - t0, frames = (double)state.iterations();
    double bytes = (double)kNewPerFrame * f.set->VerticesPerPoint() * f.set->Stride() * frames;
    state.counters["ns_per_marker"] = seconds / (frames * kNewPerFrame) * 1e9;
    state.counters["write_bytes_per_s"] = bytes / seconds;
    state.counters["memcpy_ratio"] = bytes / seconds / MemcpyBytesPerSecond();
    state.counters["allocs_per_frame"] = (double)(KyrAllocCount() - before) / frames;
}

// One whole frame of the host with the full ring drawn (no markers added).
void BM_DensityRingFrame(benchmark::State& state)
{
    DensityFixture& f = GetDensity((unsigned char)state.range(0));
    double t0 = ThreadSeconds();
    for (auto _ : state)
        f.scene->RenderFrame();
    state.counters["frame_ms"] = (ThreadSeconds() - t0) / (double)state.iterations() * 1e3;
}

} // namespace

BENCHMARK(BM_CycleSetFrame)
    ->ArgsProduct({{1000, 10000, 100000, 1000000}, {1, 0}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DensityRingAdd)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DensityRingFrame)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
