// Scenes "globe" and "globe-untextured": the Earth lit by the sun, with the Earth map
// from the xplanet imagery, and the same globe with the default flags (no texture).
// AddGlobe is the helper for scenes that want the globe as their backdrop.
#include "Gallery.h"
#include "eRenderGlobe.h"

namespace
{

// A textured, sun-lit globe kept alive by `keep` and added to the scene.
KYR::eRenderGlobe* AddGlobe(KYR::Host::eScene& scene, Gallery::SceneKeep& keep, bool textured)
{
    auto* globe = keep.Keep(new KYR::eRenderGlobe());
    globe->SetUseTexture(textured ? 1 : 0);
    scene.Add(globe);
    return globe;
}

bool BuildGlobe(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.SetClearColor(0.0f, 0.0f, 0.02f, 1.0f);
    // Equinox, 04:30 UTC: the sun stands over 112.5 E, the terminator runs down 22.5 E
    // through Europe and Africa.
    scene.Engine().SetSunTime(2026, 3, 20, 4.5);
    scene.Camera().LookAt(30.0, 15.0, 2.2e7, 0.0, 0.0);
    KYR::eRenderGlobe* globe = AddGlobe(scene, keep, true);
    // A faint fill keeps the night side's continents just visible.
    globe->SetDiffuseColor(KYR::eVector3T<float>(0.035f, 0.035f, 0.05f));
    return true;
}

bool BuildGlobeUntextured(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.SetClearColor(0.0f, 0.0f, 0.02f, 1.0f);
    scene.Engine().SetSunTime(2026, 3, 20, 4.5);
    scene.Camera().LookAt(30.0, 15.0, 2.2e7, 0.0, 0.0);
    AddGlobe(scene, keep, false);
    return true;
}

Gallery::Register s_globe({"globe",
                           "the Earth map on the globe, lit by the sun, day and night",
                           KYR::eSM_GLOBE,
                           KYR::PJ_PLATE_CARREE,
                           {"Resources/Icons/WGS84-Globe.jpg", "Resources/Icons/elev_bump_4k.jpg"},
                           BuildGlobe});

Gallery::Register s_globeUntextured({"globe-untextured",
                                     "the globe with its default flags: lit, no texture",
                                     KYR::eSM_GLOBE,
                                     KYR::PJ_PLATE_CARREE,
                                     {"Resources/Icons/elev_bump_4k.jpg"},
                                     BuildGlobeUntextured});

} // namespace
