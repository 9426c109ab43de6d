// Grid set of up to 1,000,000 points in 300 clusters of people around city centres over
// Europe, added in a shuffled order: one frame's counting of every point into its screen cell
// (processor time per frame, points per second, and the bytes the points are read from as a
// ratio to a plain memcpy measured in the same process), and the processor time of a whole
// frame, cells and digits handed to the driver, with the driver's draws stubbed out or real.
#include "BenchClock.h"
#include "AllocCounter.h"
#include "eCoordSys.h"
#include "eRenderPointGridSet.h"
#include "eScene.h"
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstring>
#include <ctime>
#include <epoxy/gl.h>
#include <memory>
#include <random>
#include <vector>

namespace
{

class BenchGridSet : public KYR::eRenderPointGridSet
{
public:
    using eRenderPointGridSet::ClusterPoints;
    using eRenderPointGridSet::m_arCells;
};

double const kViewLon = 12.0, kViewLat = 48.0;
// Camera distances: the whole of Europe (level 5) and a few countries (level 8).
double const kViews[2] = {6.5e6, 1.0e6};

KYR::Host::eScene& Scene(int view)
{
    static KYR::Host::eScene s_scene(1024, 768);
    s_scene.Camera().LookAt(kViewLon, kViewLat, kViews[view], 0.0, 0.0);
    return s_scene;
}

// People around 300 centres with heavy-tailed sizes, each spread normally over 15 to 75 km,
// in a shuffled order; every point is its own allocation, as an application makes them.
std::unique_ptr<BenchGridSet> MakeSet(int count, int view)
{
    std::mt19937 rng(29);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::normal_distribution<double> spread(0.0, 1.0);
    std::lognormal_distribution<double> weight(0.0, 1.0);
    int const centres = 300;
    std::vector<double> lon(centres), lat(centres), radius(centres), cumulative(centres);
    double sum = 0.0;
    for (int i = 0; i < centres; ++i)
    {
        lon[i] = -10.0 + 50.0 * unit(rng);
        lat[i] = 35.0 + 30.0 * unit(rng);
        radius[i] = 15000.0 + 60000.0 * unit(rng);
        sum += weight(rng);
        cumulative[i] = sum;
    }
    std::vector<KYR::eVector4T<double>> positions((size_t)count);
    for (auto& p : positions)
    {
        int c = (int)(std::lower_bound(cumulative.begin(), cumulative.end(), unit(rng) * sum) -
                      cumulative.begin());
        c = std::min(c, centres - 1);
        double metres = std::fabs(spread(rng)) * radius[c], bearing = unit(rng) * 6.283185307179586;
        double dlat = metres * std::cos(bearing) / 111195.0;
        double dlon =
            metres * std::sin(bearing) / (111195.0 * std::cos(lat[c] * 0.017453292519943295));
        p = KYR::eVector4T<double>(lon[c] + dlon, lat[c] + dlat, 0.0, 0.0);
    }
    std::shuffle(positions.begin(), positions.end(), rng);

    KYR::Host::eScene& scene = Scene(view);
    std::unique_ptr<BenchGridSet> set(new BenchGridSet());
    set->SetSpatialRefType(1);
    KYR::eVector3T<double> anchor(kViewLon, kViewLat, 10000.0);
    set->SetPosition(anchor);
    set->Create(&scene.Camera(), 0.0, &scene.Canvas());
    for (auto& p : positions)
    {
        auto* point = new KYR::eGridPoint();
        point->m_vPosition = p;
        set->Add(point);
    }
    return set;
}

// The cell side the set takes in this view: the grid size at the level's own resolution.
double CellSide(KYR::Host::eScene& scene, float gridSize, int& level)
{
    double resolution = scene.Engine().GetRenderResolution(1);
    level = scene.CoordSys().ResolutionToLevel(resolution);
    return gridSize * scene.CoordSys().LevelToResolution(level);
}

// One frame's counting: every point into its cell, the occupied cells in key order.
void BM_GridSetCluster(benchmark::State& state)
{
    int const count = (int)state.range(0), view = (int)state.range(1);
    std::unique_ptr<BenchGridSet> set = MakeSet(count, view);
    KYR::Host::eScene& scene = Scene(view);
    int level = 0;
    double cell = CellSide(scene, set->GetGridSize(), level);
    MemcpyBytesPerSecond();
    set->ClusterPoints(cell, level); // sizes the table for this view
    long long before = KyrAllocCount();
    double seconds = 0.0;
    for (auto _ : state)
    {
        double t0 = ThreadSeconds();
        set->ClusterPoints(cell, level);
        double s = ThreadSeconds() - t0;
        seconds += s;
        state.SetIterationTime(s);
    }
    double points = (double)state.iterations() * count;
    // What each point costs to read: its pointer and its record.
    double bytes = points * (sizeof(KYR::eGridPoint*) + sizeof(KYR::eGridPoint));
    state.counters["points_per_s"] = points / seconds;
    state.counters["ns_per_point"] = seconds * 1e9 / points;
    state.counters["cells"] = (double)set->m_arCells.size();
    state.counters["level"] = level;
    state.counters["memcpy_ratio"] = bytes / seconds / MemcpyBytesPerSecond();
    state.counters["allocs_per_frame"] =
        (double)(KyrAllocCount() - before) / (double)state.iterations();
}

// Stand in for the driver's draws, so that a frame's time is the set's own.
int s_nDraws = 0;
void EPOXY_CALLSPEC CountDraw(GLenum, GLint, GLsizei)
{
    ++s_nDraws;
}

void Frame(benchmark::State& state, bool driver)
{
    int const count = (int)state.range(0), view = (int)state.range(1);
    KYR::Host::eScene& scene = Scene(view);
    if (!scene.IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    std::unique_ptr<BenchGridSet> set = MakeSet(count, view);
    // Queues once, which makes the technique, and warms the programs and the glyphs.
    scene.Add(set.get());
    scene.RenderFrame();
    scene.Remove(set.get());
    auto const real = epoxy_glDrawArrays;
    if (!driver)
        epoxy_glDrawArrays = CountDraw;
    s_nDraws = 0;
    long long before = KyrAllocCount();
    for (auto _ : state)
    {
        double t0 = ThreadSeconds();
        set->Render(&scene.Engine(), &scene.RenderSystem(), &scene.Camera(), &scene.Viewport());
        if (driver)
            glFinish();
        state.SetIterationTime(ThreadSeconds() - t0);
    }
    epoxy_glDrawArrays = real;
    state.counters["allocs_per_frame"] =
        (double)(KyrAllocCount() - before) / (double)state.iterations();
    state.counters["cells"] = (double)set->m_arCells.size();
    if (!driver)
        state.counters["draws_per_frame"] = (double)s_nDraws / (double)state.iterations();
}

// A whole frame on the processor: counting, then per cell its uniforms and draw, per digit
// its texture, position and draw, handed over to a stub.
void BM_GridSetFrameCpu(benchmark::State& state)
{
    Frame(state, false);
}

// The same with the software driver drawing, for scale.
void BM_GridSetFrameDriver(benchmark::State& state)
{
    Frame(state, true);
}

} // namespace

BENCHMARK(BM_GridSetCluster)
    ->ArgsProduct({{10000, 100000, 1000000}, {0, 1}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(0.5);
BENCHMARK(BM_GridSetFrameCpu)
    ->ArgsProduct({{10000, 1000000}, {0, 1}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GridSetFrameDriver)
    ->Args({1000000, 0})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
