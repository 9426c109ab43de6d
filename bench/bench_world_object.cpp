// Station flags and colour lookup: UpdateAppendMesh over 16384 objects of four vertices
// (flags written and uploaded), and eColorMap::GetColor over a 32-range map.
#include "eColorMap.h"
#include "eMesh.h"
#include "eRenderWorldObject.h"
#include "eScene.h"
#include <benchmark/benchmark.h>
#include <memory>

namespace
{

int const kObjects = 16384;

KYR::Host::eScene& Scene()
{
    static KYR::Host::eScene s_scene(64, 64);
    return s_scene;
}

KYR::eMesh* Stations(int objects)
{
    auto* mesh = new KYR::eMesh();
    mesh->SetOperationType(KYR::eOT_TRIANGLE_LIST);
    mesh->GetVertexData()->AddElement(KYR::eVET_FLOAT, KYR::eVEC_3, KYR::eAI_POSITION, 0);
    for (int k = 0; k < objects; ++k)
        for (int c = 0; c < 4; ++c)
        {
            float v[3] = {(float)(c & 1), (float)(c >> 1), (float)k};
            mesh->AddVertex(v, 1);
        }
    return mesh;
}

void BM_WorldObjectUpdateAppendMesh(benchmark::State& state)
{
    if (!Scene().IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    KYR::eRenderWorldObject object;
    object.AddMesh(Stations(kObjects));
    object.CreateAppendMeshs();
    std::vector<KYR::AvoidBound> bounds((size_t)kObjects);
    for (int k = 0; k < kObjects; k += 3)
        bounds[(size_t)k].m_bVisible = 0;
    for (auto _ : state)
        object.UpdateAppendMesh(bounds);
    state.SetItemsProcessed(state.iterations() * kObjects);
    state.SetBytesProcessed(state.iterations() * kObjects * 4 * 2);
}

void BM_ColorMapGetColor(benchmark::State& state)
{
    KYR::eColorMap map;
    for (int i = 0; i < 32; ++i)
    {
        KYR::eVector4T<unsigned char> c((unsigned char)(i * 8), 0, 0, 255);
        map.Add(i * 10.0, (i + 1) * 10.0, c);
    }
    double v = 0.0;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(map.GetColor(v));
        v += 0.37;
        if (v >= 330.0)
            v = 0.0;
    }
    state.SetItemsProcessed(state.iterations());
}

} // namespace

BENCHMARK(BM_WorldObjectUpdateAppendMesh)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ColorMapGetColor);
