// Scene "pulses": earthquake-like pulses at the cities of the time-zone table, each
// lighting up at its own time, spreading as a ring and dying away. The clock runs a number
// of frames inside the build, so the picture shows pulses at every age, from fresh bright
// cores to thin fading rings. Larger pulses are redder.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eRenderWorldPointCycleSet.h"
#include <random>

namespace
{

float const kSpan = 900.0f; // seconds from birth to death
double const kEnd = 4000.0; // births spread over this many seconds
int const kPulsesPerCity = 4;
int const kWarmUpFrames = 30;

bool BuildPulses(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    std::vector<Gallery::City> cities = Gallery::Cities();
    if (cities.empty())
        return false;
    scene.Camera().LookAt(120.0, 15.0, 1.5e7, 0.0, 0.0);
    Gallery::AddEarth(scene, keep, 120.0, 15.0);

    auto* set = keep.Keep(new KYR::eRenderWorldPointCycleSet());
    KYR::eVector3T<double> anchor(120.0, 15.0, 0.0);
    set->SetSpatialRefType(1);
    set->SetPosition(anchor);
    set->SetTraceTime(kSpan);
    set->SetStartTime(2800.0f);
    set->SetSpeedPerFrame(10.0f);
    // The quads are written as the pulses are added, against the anchor the scene gives.
    scene.Add(set);

    std::mt19937 rng(11);
    std::uniform_real_distribution<double> birth(0.0, kEnd), unit(0.0, 1.0);
    for (Gallery::City const& city : cities)
        for (int k = 0; k < kPulsesPerCity; ++k)
        {
            double magnitude = unit(rng);
            magnitude *= magnitude; // many small, few large
            KYR::eCyclePoint p;
            p.m_nSpatialRefType = 1;
            p.m_Position = KYR::eVector4T<double>(city.lon, city.lat, 0.0, birth(rng));
            p.m_fSize = (float)(14.0 + 50.0 * magnitude);
            p.m_Color = KYR::eVector4T<unsigned char>(255, (unsigned char)(230 - 190 * magnitude),
                                                      (unsigned char)(90 - 70 * magnitude), 255);
            set->AddCyclePoint(&p);
        }
    // Uploaded by the next frame's initialisation.
    set->Reset(nullptr);
    for (int f = 0; f < kWarmUpFrames; ++f)
        scene.RenderFrame();
    return true;
}

Gallery::Register s_pulses({"pulses", "pulses lighting up and dying away at city positions",
                            KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
                            BuildPulses});

} // namespace
