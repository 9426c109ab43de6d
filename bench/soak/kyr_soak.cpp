// Long run of four pooled effects in one scene: a point trace set whose clock loops over
// its traces, a scatter set with points rewritten and picked, a density ring and a cube set
// whose full pools take new markers and prisms through their rings. Input is steady and every pool
// is fixed, so once the pools are full the process must not grow. Prints the resident memory after
// the warm-up and at the end and the slowest frame; exits 1 when memory grew.
//   kyr-soak [FRAMES (100000)] [WIDTH (64)] [EFFECTS (tsdc: traces, scatter, density, cubes)]
#include "../BenchClock.h"
#include "eCubePoint.h"
#include "eDensityPoint.h"
#include "eRenderListDensitySet.h"
#include "eRenderListCubeSet.h"
#include "eRenderPointTraceSet.h"
#include "eRenderScatterPointSet.h"
#include "eScene.h"
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>
#include <string>
#include <unistd.h>

namespace
{

using namespace KYR;

// Frames before the first reading: one whole loop of the trace clock, so that every window
// the traces go through, the pools and the caches exist once.
int const kWarmUp = 2500;
long const kAllowedGrowth = 4 << 20; // allocator slack, far below a leak over the run

long ResidentBytes()
{
    long pages = 0, resident = 0;
    std::FILE* f = std::fopen("/proc/self/statm", "r");
    if (!f)
        return -1;
    int n = std::fscanf(f, "%ld %ld", &pages, &resident);
    std::fclose(f);
    return n == 2 ? resident * sysconf(_SC_PAGESIZE) : -1;
}

void FillTraces(eRenderPointTraceSet& set, std::mt19937& rng)
{
    set.SetPoolSize(500);
    set.SetTraceSize(50);
    set.SetTraceTime(920.0f);
    set.SetSpeedPerFrame(0.5f);
    eVector3T<double> anchor(0.0, 20.0, 0.0);
    set.SetSpatialRefType(1);
    set.SetPosition(anchor);
    std::uniform_real_distribution<double> lon(-180.0, 180.0), lat(-60.0, 60.0), d(-0.05, 0.05);
    ePointTrace trace;
    for (int i = 0; i < 500; ++i)
    {
        trace.m_arPositions.clear();
        double x = lon(rng), y = lat(rng), dx = d(rng), dy = d(rng);
        for (int k = 0; k < 200; ++k)
            trace.m_arPositions.push_back(eVector4T<double>(x + dx * k, y + dy * k, 1e4, k * 20.0));
        set.AddPointTrace(&trace);
    }
}

eCubePoint Prism(std::mt19937& rng)
{
    std::uniform_real_distribution<double> lon(-10.0, 30.0), lat(0.0, 40.0), h(1e4, 5e5);
    eCubePoint p;
    p.m_vPosition = eVector4T<double>(lon(rng), lat(rng), 0.0, 0.0);
    p.m_fRadius = 5000.0f;
    p.m_fHeight = (float)h(rng);
    p.m_cTopColor = eVector4T<unsigned char>(250, 180, 40, 255);
    p.m_cBottomColor = eVector4T<unsigned char>(110, 80, 20, 255);
    return p;
}

// A marker stamped at the set's clock, so that the ring always shows its newest.
eDensityPoint Marker(std::mt19937& rng, float time)
{
    std::uniform_real_distribution<double> lon(-10.0, 30.0), lat(0.0, 40.0);
    eDensityPoint p;
    p.m_nSpatialRefType = 1;
    p.m_Position = eVector4T<double>(lon(rng), lat(rng), 2e4, time);
    p.m_fSize = 12.0f;
    p.m_Color = eVector4T<unsigned char>(255, 170, 50, 40);
    return p;
}

} // namespace

int main(int argc, char** argv)
{
    long const frames = argc > 1 ? std::atol(argv[1]) : 100000;
    int const size = argc > 2 ? std::atoi(argv[2]) : 64;
    std::string const effects = argc > 3 ? argv[3] : "tsdc";
    if (frames < 1 || size < 8)
    {
        std::fprintf(stderr, "usage: kyr-soak [FRAMES >= 1] [WIDTH >= 8]\n");
        return 2;
    }
    Host::eScene scene(size, size);
    if (!scene.IsReady())
    {
        std::fprintf(stderr, "kyr-soak: no OpenGL context\n");
        return 2;
    }
    scene.Camera().LookAt(10.0, 20.0, 2.0e7, 0.0, 0.0);
    std::mt19937 rng(11);

    eRenderPointTraceSet traces;
    FillTraces(traces, rng);
    eRenderScatterPointSet scatter;
    scatter.SetPoolSize(20000);
    std::uniform_real_distribution<double> lon(-180.0, 180.0), lat(-80.0, 80.0);
    for (int i = 0; i < 20000; ++i)
    {
        eScatterPoint p(1 + i % 64, lon(rng), lat(rng), 0.0, 1.0);
        scatter.AddScatterPoint(p);
    }
    eRenderListCubeSet cubes;
    cubes.SetPoolSize(2000);
    cubes.SetSpatialRefType(1);
    eVector3T<double> anchor(10.0, 20.0, 0.0);
    cubes.SetPosition(anchor);
    cubes.SetEnableGrow(0);
    for (int i = 0; i < 2000; ++i)
    {
        eCubePoint p = Prism(rng);
        cubes.AddCubePoint(&p);
    }
    eRenderListDensitySet density;
    density.SetPoolSize(5000);
    density.SetTraceTime(500.0f);
    density.SetCurTime(0.0f);
    density.SetSpeedPerFrame(1.0f);
    density.SetSpatialRefType(1);
    density.SetPosition(anchor);
    for (int i = 0; i < 5000; ++i)
    {
        eDensityPoint p = Marker(rng, 0.0f);
        density.AddDensityPoint(&p);
    }
    if (effects.find('t') != std::string::npos)
        scene.Add(&traces);
    if (effects.find('d') != std::string::npos)
        scene.Add(&density);
    if (effects.find('s') != std::string::npos)
        scene.Add(&scatter);
    if (effects.find('c') != std::string::npos)
        scene.Add(&cubes);

    long startBytes = 0;
    double slowestWall = 0.0, slowestCpu = 0.0, totalCpu = 0.0;
    long slowestFrame = 0;
    for (long frame = 0; frame < kWarmUp + frames; ++frame)
    {
        if (frame == kWarmUp)
            startBytes = ResidentBytes();
        // Readings along the way tell a one-off step from steady growth.
        if (frame > kWarmUp && (frame - kWarmUp) % (frames / 4 > 0 ? frames / 4 : 1) == 0)
            std::printf("  frame %ld: resident %.1f MiB\n", frame - kWarmUp,
                        ResidentBytes() / 1048576.0);
        auto const t0 = std::chrono::steady_clock::now();
        double const c0 = ThreadSeconds();
        // The trace clock runs through the traces and starts over.
        traces.SetCurTime(1000.0f + (float)(frame % 2500));
        // Ten scatter points move, ten prisms go through the ring, and every hundredth
        // frame picks.
        for (int k = 0; k < 10; ++k)
        {
            eScatterPoint p(1 + k, lon(rng), lat(rng), 0.0, 1.0);
            scatter.UpDateScatterPoint((int)((frame * 10 + k) % 20000), p);
            eCubePoint c = Prism(rng);
            cubes.AddCubePoint(&c);
            eDensityPoint d = Marker(rng, (float)frame);
            density.AddDensityPoint(&d);
        }
        if (frame % 100 == 0)
        {
            eQueryFilter filter;
            filter.m_vOrigin = scene.Camera().GetCameraPosition();
            filter.m_vDirection =
                (eVector3T<double>(6378137.0, 0.0, 0.0) - filter.m_vOrigin).Normalized();
            double depth = 0.0;
            scatter.Query(&scene.Engine(), &scene.Camera(), &filter, depth);
        }
        scene.RenderFrame();
        double const cpu = ThreadSeconds() - c0;
        double const wall =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        if (frame < kWarmUp)
            continue;
        totalCpu += cpu;
        if (wall > slowestWall)
        {
            slowestWall = wall;
            slowestFrame = frame - kWarmUp;
        }
        if (cpu > slowestCpu)
            slowestCpu = cpu;
    }
    long const endBytes = ResidentBytes();
    scene.Remove(&cubes);
    scene.Remove(&density);
    scene.Remove(&scatter);
    scene.Remove(&traces);

    long const growth = endBytes - startBytes;
    std::printf("kyr-soak: %ld frames at %dx%d after %d warm-up frames, effects %s\n", frames, size,
                size, kWarmUp, effects.c_str());
    std::printf("  resident at start %.1f MiB, at end %.1f MiB, growth %+.2f MiB\n",
                startBytes / 1048576.0, endBytes / 1048576.0, growth / 1048576.0);
    std::printf("  slowest frame %.2f ms wall (frame %ld), %.2f ms processor; mean %.3f ms "
                "processor\n",
                slowestWall * 1e3, slowestFrame, slowestCpu * 1e3, totalCpu * 1e3 / frames);
    if (startBytes < 0 || endBytes < 0 || growth > kAllowedGrowth)
    {
        std::printf("kyr-soak: resident memory grew\n");
        return 1;
    }
    return 0;
}
