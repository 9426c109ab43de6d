// The globe: building its mesh from the 4k elevation picture (decode, 10,585 vertices,
// 62,208 indices, upload), and one frame of its two passes on the software rasteriser.
// Both are timed by the wall clock: the rasteriser works on threads of its own.
#include "eMesh.h"
#include "eRenderGlobe.h"
#include "eScene.h"
#include <benchmark/benchmark.h>

namespace
{

class BenchGlobe : public KYR::eRenderGlobe
{
public:
    void BuildMesh()
    {
        InitializeSpherical();
        m_pVertexData.Reset();
        m_pIndexData.Reset();
    }
};

KYR::Host::eScene& Scene()
{
    static KYR::Host::eScene scene(512, 512);
    return scene;
}

void BM_GlobeMeshBuild(benchmark::State& state)
{
    if (!Scene().IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    BenchGlobe globe;
    for (auto _ : state)
        globe.BuildMesh();
    // Bytes of mesh produced: vertices of three floats and 16-bit indices.
    state.SetBytesProcessed((int64_t)state.iterations() * (10585 * 12 + 62208 * 2));
}

void BM_GlobeFrame(benchmark::State& state)
{
    KYR::Host::eScene& scene = Scene();
    if (!scene.IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    KYR::eRenderGlobe globe;
    globe.SetUseTexture(1);
    scene.Camera().LookAt(30.0, 15.0, 2.2e7, 0.0, 0.0);
    scene.Add(&globe);
    for (auto _ : state)
        scene.RenderFrame(); // ends with glFinish
    scene.Remove(&globe);
    state.SetItemsProcessed(state.iterations());
}

} // namespace

BENCHMARK(BM_GlobeMeshBuild)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_GlobeFrame)->Unit(benchmark::kMillisecond)->UseRealTime();
