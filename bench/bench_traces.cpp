// Frame cost of a point trace set and of a list line trace set: 10,000 traces in
// geographic coordinates on the globe, 200 positions each, windows of about 48 positions.
// Reports nanoseconds per position written, the bytes written per second as a ratio to a
// plain memcpy measured in the same process, and the heap allocations per frame.
#include "BenchClock.h"
#include "AllocCounter.h"
#include "eRenderListLineTraceSet.h"
#include "eRenderPointTraceSet.h"
#include "eScene.h"
#include <benchmark/benchmark.h>
#include <ctime>
#include <cstring>
#include <random>
#include <vector>

namespace
{

int const kTraces = 10000;
int const kPositions = 200;
double const kStep = 20.0;       // seconds between positions
float const kTraceTime = 920.0f; // about 48 positions in a window

// Counts the allocations made inside the set's own frame path.
class CountingTraceSet : public KYR::eRenderPointTraceSet
{
public:
    unsigned char Render(KYR::eRenderEngine* e, KYR::eRenderSystem* rs, KYR::eCamera* c,
                         KYR::eViewport* v) override
    {
        long long before = KyrAllocCount();
        unsigned char r = eRenderPointTraceSet::Render(e, rs, c, v);
        m_nAllocations += KyrAllocCount() - before;
        return r;
    }
    // The draw calls: what the OpenGL driver allocates there is counted apart.
    unsigned char RenderQueue(KYR::eRenderEngine* e, KYR::eRenderSystem* rs, KYR::eRenderProgram* p,
                              int begin, int end) override
    {
        long long before = KyrAllocCount();
        unsigned char r = eRenderPointTraceSet::RenderQueue(e, rs, p, begin, end);
        m_nDrawAllocations += KyrAllocCount() - before;
        return r;
    }
    long long WindowPositions() const
    {
        long long n = 0;
        for (KYR::ePointTrace* t : m_arPointTraces)
            n += t ? t->m_nWindowCount : 0;
        return n;
    }
    int VerticesPerPoint() const { return m_nVerticesPerPoint; }
    long long m_nAllocations = 0;
    long long m_nDrawAllocations = 0;
};

// Kept for the life of the process: the context outlives every benchmark.
struct Fixture
{
    KYR::Host::eScene* scene = nullptr;
    CountingTraceSet* set = nullptr;
};

Fixture& Get(unsigned char geometry)
{
    static Fixture fixtures[2];
    Fixture& f = fixtures[geometry ? 1 : 0];
    if (f.set)
        return f;
    f.scene = new KYR::Host::eScene(512, 512);
    f.scene->Camera().LookAt(0.0, 20.0, 2.0e7, 0.0, 0.0);
    f.set = new CountingTraceSet();
    CountingTraceSet& set = *f.set;
    set.SetGeometryShader(geometry);
    set.SetPoolSize(kTraces);
    set.SetTraceSize(50);
    set.SetTraceTime(kTraceTime);
    set.SetSpeedPerFrame(0.5f);
    KYR::eVector3T<double> anchor(0.0, 20.0, 0.0);
    set.SetSpatialRefType(1);
    set.SetPosition(anchor);
    set.SetCurTime(1200.0f);
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> lon(-180.0, 180.0), lat(-60.0, 60.0), d(-0.05, 0.05);
    KYR::ePointTrace trace;
    for (int i = 0; i < kTraces; ++i)
    {
        trace.m_arPositions.clear();
        double x = lon(rng), y = lat(rng), dx = d(rng), dy = d(rng);
        for (int k = 0; k < kPositions; ++k)
            trace.m_arPositions.push_back(
                KYR::eVector4T<double>(x + dx * k, y + dy * k, 10000.0, k * kStep));
        set.AddPointTrace(&trace);
    }
    f.scene->Add(f.set);
    // Makes the technique and the program, and lets the driver build its draw state
    // (the software rasteriser compiles its geometry stage over the first frames).
    for (int i = 0; i < 10; ++i)
        f.scene->RenderFrame();
    return f;
}

// The same for a list line trace set; its lines are what the pool slots hold.
class CountingLineSet : public KYR::eRenderListLineTraceSet
{
public:
    unsigned char Render(KYR::eRenderEngine* e, KYR::eRenderSystem* rs, KYR::eCamera* c,
                         KYR::eViewport* v) override
    {
        long long before = KyrAllocCount();
        unsigned char r = eRenderListLineTraceSet::Render(e, rs, c, v);
        m_nAllocations += KyrAllocCount() - before;
        return r;
    }
    long long WindowPositions() const
    {
        long long n = 0;
        for (KYR::eLineTrace* line : m_Lines->m_lstActiveLines)
            n += line->m_nWindowCount;
        return n;
    }
    int VerticesPerPoint() const { return m_nVerticesPerPoint; }
    long long m_nAllocations = 0;
};

struct LineFixture
{
    KYR::Host::eScene* scene = nullptr;
    CountingLineSet* set = nullptr;
};

// The tracks of the point traces, handed in as lists; the pool holds all of them.
LineFixture& GetLines()
{
    static LineFixture f;
    if (f.set)
        return f;
    f.scene = new KYR::Host::eScene(512, 512);
    f.scene->Camera().LookAt(0.0, 20.0, 2.0e7, 0.0, 0.0);
    f.set = new CountingLineSet();
    CountingLineSet& set = *f.set;
    set.SetPoolSize(kTraces + 1); // the last slot is never used
    set.SetTraceSize(50);         // the slots of the point traces
    set.SetTraceTime(kTraceTime);
    set.SetSpeedPerFrame(0.5f);
    set.SetEnableBackLine(1);
    KYR::eVector3T<double> anchor(0.0, 20.0, 0.0);
    set.SetSpatialRefType(1);
    set.SetPosition(anchor);
    set.SetCurTime(1200.0f);
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> lon(-180.0, 180.0), lat(-60.0, 60.0), d(-0.05, 0.05);
    for (int i = 0; i < kTraces; ++i)
    {
        KYR::eTraceList* list = set.CreateTraceList();
        double x = lon(rng), y = lat(rng), dx = d(rng), dy = d(rng);
        for (int k = 0; k < kPositions; ++k)
            list->GetPositions().push_back(
                KYR::eVector4T<double>(x + dx * k, y + dy * k, 10000.0, k * kStep));
        set.AddTraceList(list);
    }
    f.scene->Add(f.set);
    for (int i = 0; i < 10; ++i)
        f.scene->RenderFrame();
    return f;
}

template <typename Set>
void Report(benchmark::State& state, Set& set, long long allocations, double seconds)
{
    long long positions = set.WindowPositions();
    double frames = (double)state.iterations();
    double bytes = (double)positions * set.VerticesPerPoint() * 16.0;
    state.counters["positions"] = (double)positions;
    state.counters["ns_per_position"] =
        benchmark::Counter((double)positions * frames * 1e-9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["write_bytes_per_s"] =
        benchmark::Counter(bytes * frames, benchmark::Counter::kIsRate);
    state.counters["allocs_per_frame"] = (double)allocations / frames;
    state.counters["memcpy_bytes_per_s"] = MemcpyBytesPerSecond();
    if (seconds > 0.0)
        state.counters["memcpy_ratio"] = bytes * frames / seconds / MemcpyBytesPerSecond();
    state.SetBytesProcessed((int64_t)(bytes * frames));
}

// The set's frame work on the processor: every window found, converted and uploaded.
void BM_PointTraceUpdate(benchmark::State& state)
{
    Fixture& f = Get((unsigned char)state.range(0));
    CountingTraceSet& set = *f.set;
    long long before = KyrAllocCount();
    double t0 = ThreadSeconds();
    for (auto _ : state)
    {
        set.Update();
        set.SetCurTime(set.GetCurTime() + 0.5f);
    }
    double seconds = ThreadSeconds() - t0;
    long long allocations = KyrAllocCount() - before;
    Report(state, set, allocations, seconds);
}

// One whole frame of the host: queue, Update, the draws and the rasteriser's work.
void BM_PointTraceFrame(benchmark::State& state)
{
    Fixture& f = Get((unsigned char)state.range(0));
    CountingTraceSet& set = *f.set;
    set.m_nAllocations = 0;
    set.m_nDrawAllocations = 0;
    double t0 = ThreadSeconds();
    for (auto _ : state)
        f.scene->RenderFrame();
    Report(state, set, set.m_nAllocations - set.m_nDrawAllocations, ThreadSeconds() - t0);
    state.counters["draw_allocs_per_frame"] =
        (double)set.m_nDrawAllocations / (double)state.iterations();
}

// The line set's frame work on the processor: every line advanced, written and uploaded.
void BM_LineTraceUpdate(benchmark::State& state)
{
    CountingLineSet& set = *GetLines().set;
    long long before = KyrAllocCount();
    double t0 = ThreadSeconds();
    for (auto _ : state)
    {
        set.UpdateCache();
        set.SetCurTime(set.GetCurTime() + 0.5f);
    }
    double seconds = ThreadSeconds() - t0;
    Report(state, set, KyrAllocCount() - before, seconds);
}

// One whole frame of the host with the line set: both line kinds, two multi-draws.
void BM_LineTraceFrame(benchmark::State& state)
{
    LineFixture& f = GetLines();
    f.set->m_nAllocations = 0;
    double t0 = ThreadSeconds();
    for (auto _ : state)
        f.scene->RenderFrame();
    Report(state, *f.set, f.set->m_nAllocations, ThreadSeconds() - t0);
}

} // namespace

BENCHMARK(BM_PointTraceUpdate)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PointTraceFrame)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LineTraceUpdate)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LineTraceFrame)->Unit(benchmark::kMillisecond);
