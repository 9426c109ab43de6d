// Station avoidance over 10,000 stations spread over the earth: one update of the boxes
// (reset, grow, avoid) and one pick, alone and with the flags handed to a world object and
// uploaded, at a near distance (few boxes meet) and a far one (most stations hidden).
// Reported as stations per second.
#include "eMesh.h"
#include "eRenderWorldObjectAvoid.h"
#include "eScene.h"
#include <benchmark/benchmark.h>
#include <memory>

namespace
{

int const kStations = 10000;

KYR::Host::eScene& Scene()
{
    static KYR::Host::eScene s_scene(256, 256);
    return s_scene;
}

// Stations at fixed pseudo-random places, the same in every run.
std::vector<KYR::eVector3T<double>> Places()
{
    std::vector<KYR::eVector3T<double>> places;
    unsigned int seed = 12345u;
    auto next = [&seed]()
    {
        seed = seed * 1664525u + 1013904223u;
        return (seed >> 8) / double(1u << 24);
    };
    for (int k = 0; k < kStations; ++k)
    {
        double lon = -180.0 + 360.0 * next();
        double lat = -80.0 + 160.0 * next();
        places.push_back(KYR::eVector3T<double>(lon, lat, 0.0));
    }
    return places;
}

// One four-vertex symbol per station; only the object numbers matter here.
KYR::eMesh* Symbols()
{
    auto* mesh = new KYR::eMesh();
    mesh->SetOperationType(KYR::eOT_TRIANGLE_LIST);
    mesh->GetVertexData()->AddElement(KYR::eVET_FLOAT, KYR::eVEC_3, KYR::eAI_POSITION, 0);
    for (int k = 0; k < kStations; ++k)
        for (int c = 0; c < 4; ++c)
        {
            float v[3] = {(float)(c & 1), (float)(c >> 1), (float)k};
            mesh->AddVertex(v, 1);
        }
    return mesh;
}

class BenchAvoid : public KYR::eRenderWorldObjectAvoid
{
public:
    // The update of Render without handing the flags on.
    void UpdateBoxes(KYR::eRenderEngine* engine, KYR::eCamera* camera, KYR::eViewport* viewport)
    {
        m_dDistance = camera->GetDistance();
        ResetAvoidBound();
        UpdateAvoidBoundSize();
        ComputerAvoid(engine, camera, viewport);
    }
};

// state.range(0): the camera distance in kilometres; state.range(1): 1 to hand the flags to
// a world object (uploaded) as Render does.
void BM_AvoidUpdateAndPick(benchmark::State& state)
{
    KYR::Host::eScene& scene = Scene();
    if (!scene.IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    double const distance = state.range(0) * 1000.0;
    bool const handOn = state.range(1) != 0;
    KYR::eRenderWorldObject object;
    object.AddMesh(Symbols());
    object.CreateAppendMeshs();
    BenchAvoid avoid;
    std::vector<KYR::eVector3T<double>> places = Places();
    avoid.SetRefGeoPoints(places);
    avoid.AddRenderWorldObject(&object);
    avoid.SetCanAvoid(true);
    avoid.SetCanSelect(true);

    KYR::eCamera& camera = scene.Camera();
    KYR::eRenderEngine& engine = scene.Engine();
    // Two distances a metre apart, so that every Render finds the distance changed.
    double const distances[2] = {distance, distance + 1.0};
    camera.LookAt(10.0, 45.0, distances[0], 0.0, 0.0);
    avoid.Render(&engine, &scene.RenderSystem(), &camera, &scene.Viewport());
    KYR::ePoint const middle(128, 128);
    int turn = 0, picked = 0;
    for (auto _ : state)
    {
        camera.LookAt(10.0, 45.0, distances[turn ^= 1], 0.0, 0.0);
        if (handOn)
            avoid.Render(&engine, &scene.RenderSystem(), &camera, &scene.Viewport());
        else
            avoid.UpdateBoxes(&engine, &camera, &scene.Viewport());
        picked += avoid.SelectStation(middle) >= 0;
        benchmark::ClobberMemory();
    }
    benchmark::DoNotOptimize(picked);
    state.SetItemsProcessed(state.iterations() * kStations);
    // The two bound lists a station has, read and written once each.
    state.SetBytesProcessed(state.iterations() * kStations * 2 * (int64_t)sizeof(KYR::AvoidBound));
}

} // namespace

BENCHMARK(BM_AvoidUpdateAndPick)
    ->ArgNames({"km", "upload"})
    ->Args({500, 0})
    ->Args({8000, 0})
    ->Args({500, 1})
    ->Args({8000, 1})
    ->Unit(benchmark::kMicrosecond);
