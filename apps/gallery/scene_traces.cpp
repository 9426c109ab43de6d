// Scenes "traces" and "traces-no-geometry": a few thousand aircraft flying great circles
// over the globe, each drawn as a chain of sprites with a fading tail behind a bright
// head. The first expands the sprites in a geometry shader, the second writes six
// vertices per position. Warm-up frames run inside the build so the heads have moved.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eRenderPointTraceSet.h"
#include <random>

namespace
{

int const kFlights = 3000;
double const kStepSeconds = 60.0; // one reported position a minute
int const kWarmUpFrames = 40;

// Frees traces and buffers while the scene's context still exists.
class GalleryTraceSet : public KYR::eRenderPointTraceSet
{
public:
    ~GalleryTraceSet() override { UnInitialize(nullptr); }
};

// A flight along a great circle at airliner speed, starting at a random time.
void BuildFlight(std::mt19937& rng, KYR::ePointTrace& trace)
{
    std::uniform_real_distribution<double> lon(-180.0, 180.0), lat(-55.0, 65.0);
    std::uniform_real_distribution<double> bearing(0.0, 360.0), speed(200.0, 260.0);
    std::uniform_real_distribution<double> start(0.0, 2400.0), hours(2.0, 6.0);
    double x = lon(rng), y = lat(rng), b = bearing(rng), v = speed(rng), t0 = start(rng);
    int steps = (int)(hours(rng) * 3600.0 / kStepSeconds);
    trace.m_nSpatialRefType = 1;
    trace.m_arPositions.clear();
    for (int i = 0; i <= steps; ++i)
    {
        double px, py;
        Gallery::Destination(x, y, b, v * kStepSeconds * i, px, py);
        trace.m_arPositions.push_back(
            KYR::eVector4T<double>(px, py, 10000.0, t0 + i * kStepSeconds));
    }
}

bool BuildTraces(KYR::Host::eScene& scene, Gallery::SceneKeep& keep, unsigned char geometry)
{
    scene.Camera().LookAt(10.0, 30.0, 1.6e7, 0.0, 0.0);
    Gallery::AddEarth(scene, keep, 10.0, 30.0);

    auto* set = keep.Keep(new GalleryTraceSet());
    set->SetGeometryShader(geometry);
    set->SetPoolSize(kFlights);
    set->SetTraceSize(50);
    set->SetTraceTime(1500.0f);
    set->SetSpeedPerFrame(30.0f);
    set->SetPointSize(5.0f);
    set->SetPointColor(KYR::eVector4T<unsigned char>(255, 190, 60, 255));
    set->SetEnableDepthTest(1);
    KYR::eVector3T<double> anchor(10.0, 30.0, 0.0);
    set->SetSpatialRefType(1);
    set->SetPosition(anchor);
    set->SetStartTime(1800.0f);
    std::mt19937 rng(7);
    KYR::ePointTrace trace;
    for (int i = 0; i < kFlights; ++i)
    {
        BuildFlight(rng, trace);
        set->AddPointTrace(&trace);
    }
    scene.Add(set);
    for (int f = 0; f < kWarmUpFrames; ++f)
        scene.RenderFrame();
    return true;
}

Gallery::Register s_traces({"traces", "aircraft traces with fading tails (geometry shader)",
                            KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
                            [](KYR::Host::eScene& s, Gallery::SceneKeep& k)
                            { return BuildTraces(s, k, 1); }});
Gallery::Register s_tracesNoGeometry({"traces-no-geometry",
                                      "aircraft traces with fading tails (six vertices each)",
                                      KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
                                      [](KYR::Host::eScene& s, Gallery::SceneKeep& k)
                                      { return BuildTraces(s, k, 0); }});

} // namespace
