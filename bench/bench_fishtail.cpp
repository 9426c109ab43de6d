// The two costs of the wind fishtail lines at two screen sizes: building the per-pixel
// screen field when the view comes to rest (reported per pixel), and one frame's particle
// step, moving every particle and writing its segment (reported per particle); compare
// with BM_MemcpyBandwidth of the same run. The global 1-degree grid is seen from above the
// north-western Pacific, so the globe fills the view.
#include "eRenderWindFishtailLine.h"
#include "eMesh.h"
#include "eScene.h"
#include <benchmark/benchmark.h>
#include <cmath>

namespace
{

class FishtailBench : public KYR::eRenderWindFishtailLine
{
public:
    explicit FishtailBench(KYR::Host::eScene& scene)
        : eRenderWindFishtailLine(nullptr), m_scene(scene)
    {
        m_nx = 361;
        m_ny = 181;
        m_dy = -1.0;
        m_left = -180.0;
        m_right = 180.0;
        m_top = 90.0;
        m_bottom = -90.0;
        std::vector<KYR::ePoint2D> winds;
        for (int j = 0; j < m_ny; ++j)
            for (int i = 0; i < m_nx; ++i)
            {
                double lat = (90.0 - j) * 0.017453292519943295, lon = i * 0.017453292519943295;
                winds.push_back(
                    KYR::ePoint2D(-8.0 * std::sin(6.0 * std::fabs(lat)) + 3.0 * std::sin(4.0 * lon),
                                  4.0 * std::cos(5.0 * lon + 3.0 * lat)));
            }
        SetWindDynamic(winds);
        Initialize(&scene.Engine());
    }
    void BuildField() { m_raster.Build(m_scene.Width(), m_scene.Height(), &m_scene.Engine()); }
    int Seed()
    {
        m_particleCount = m_density * m_scene.Width();
        MakeNewParticles(&m_scene.Engine(), &m_scene.Viewport());
        return m_particleCount;
    }
    // What a frame does for the particles before drawing: move them, then build and
    // upload the segments.
    void Step()
    {
        MoveThings(&m_scene.Engine(), &m_scene.Camera());
        KYR::eVertexData segments;
        CreatRenderVertexData(segments, m_scene.Width(), m_scene.Height());
    }

private:
    KYR::Host::eScene& m_scene;
};

bool MakeScene(benchmark::State& state, std::unique_ptr<KYR::Host::eScene>& scene)
{
    scene.reset(new KYR::Host::eScene((int)state.range(0), (int)state.range(1)));
    if (!scene->IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return false;
    }
    scene->Camera().LookAt(138.0, 24.0, 6.5e6, 0.0, 0.0);
    return true;
}

void BM_FishtailFieldBuild(benchmark::State& state)
{
    std::unique_ptr<KYR::Host::eScene> scene;
    if (!MakeScene(state, scene))
        return;
    FishtailBench fishtail(*scene);
    fishtail.BuildField(); // the buffers exist from here on, as at every later rest
    for (auto _ : state)
        fishtail.BuildField();
    double const pixels = (double)state.range(0) * state.range(1);
    state.counters["pixels_per_s"] =
        benchmark::Counter(pixels * state.iterations(), benchmark::Counter::kIsRate);
    // What the build writes, for the ratio to memcpy: a cell of three doubles and a mask
    // pixel per pixel.
    state.SetBytesProcessed((int64_t)(pixels * (3 * sizeof(double) + 4)) * state.iterations());
}

void BM_FishtailParticleStep(benchmark::State& state)
{
    std::unique_ptr<KYR::Host::eScene> scene;
    if (!MakeScene(state, scene))
        return;
    FishtailBench fishtail(*scene);
    int const particles = fishtail.Seed();
    // Past the first lifetime, so every timed frame also replaces the particles that age out.
    for (int i = 0; i < 120; ++i)
        fishtail.Step();
    for (auto _ : state)
        fishtail.Step();
    state.counters["particles"] = particles;
    state.counters["particles_per_s"] =
        benchmark::Counter((double)particles * state.iterations(), benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK(BM_FishtailFieldBuild)
    ->ArgNames({"width", "height"})
    ->Args({1024, 768})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FishtailParticleStep)
    ->ArgNames({"width", "height"})
    ->Args({1024, 768})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMicrosecond);
