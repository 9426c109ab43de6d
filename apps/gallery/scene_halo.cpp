// Scenes "halo", "halo-fading" and "night-light": the glow around the Earth's limb seen from
// space, the same glow half faded for a camera between the fade distances, and the Earth's
// city lights (xplanet's night image) over the dark side of the sun-lit globe.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eRenderGlobe.h"
#include "eRenderGlobeHalo.h"
#include "eRenderNightLight.h"

namespace
{

unsigned int const kHaloColor = KYR::ERGBA(120, 180, 255, 230);

KYR::eRenderGlobe* AddEarth(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.SetClearColor(0.0f, 0.0f, 0.02f, 1.0f);
    auto* globe = keep.Keep(new KYR::eRenderGlobe());
    globe->SetUseTexture(1);
    globe->SetDiffuseColor(KYR::eVector3T<float>(0.035f, 0.035f, 0.05f));
    scene.Add(globe);
    return globe;
}

void AddHalo(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    auto* halo = keep.Keep(new KYR::eRenderGlobeHalo());
    halo->SetColor(kHaloColor);
    scene.Add(halo);
}

bool BuildHalo(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    // Morning over the Indian Ocean; the whole disc in view.
    scene.Engine().SetSunTime(2026, 3, 20, 6.0);
    scene.Camera().LookAt(60.0, 10.0, 2.6e7, 0.0, 0.0);
    AddEarth(scene, keep);
    AddHalo(scene, keep);
    return true;
}

// 4.6e6 metres from the look-at point: alpha 1 - (5775000 - 4600000) / 2887500, about 0.59.
// Over the Pacific with a wide lens, so that the curved limb and its weaker glow stand in view.
bool BuildHaloFading(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.Engine().SetSunTime(2026, 3, 20, 23.0);
    scene.Camera().SetFieldOfView(84.0);
    scene.Camera().LookAt(-150.0, 10.0, 4.6e6, 0.0, 0.0);
    AddEarth(scene, keep);
    AddHalo(scene, keep);
    return true;
}

// Equinox, 04:30 UTC: the sun stands over 112.5 E and the terminator runs down 22.5 E, so
// Europe and Africa west of it are in the night and India is in the day.
bool BuildNightLight(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.Engine().SetSunTime(2026, 3, 20, 4.5);
    scene.Camera().LookAt(15.0, 35.0, 1.6e7, 0.0, 0.0);
    AddEarth(scene, keep);
    auto* lights = keep.Keep(new KYR::eRenderNightLight());
    lights->SetImagePath(KYR::eSystem::GetWorkPath() + "Resources/Icons/night.jpg");
    double k = Gallery::kEarthRadius * Gallery::kDegToRad; // plate carree map metres
    lights->SetImageBound(KYR::eRect2D(-180.0 * k, 90.0 * k, 180.0 * k, -90.0 * k));
    scene.Add(lights);
    AddHalo(scene, keep);
    return true;
}

Gallery::Register s_halo({"halo",
                          "the globe from space with the glow around its limb",
                          KYR::eSM_GLOBE,
                          KYR::PJ_PLATE_CARREE,
                          {"Resources/Icons/WGS84-Globe.jpg", "Resources/Icons/elev_bump_4k.jpg"},
                          BuildHalo});

Gallery::Register
    s_haloFading({"halo-fading",
                  "a camera between the fade distances: the glow half faded",
                  KYR::eSM_GLOBE,
                  KYR::PJ_PLATE_CARREE,
                  {"Resources/Icons/WGS84-Globe.jpg", "Resources/Icons/elev_bump_4k.jpg"},
                  BuildHaloFading});

Gallery::Register s_nightLight({"night-light",
                                "city lights from the night image over the globe's dark side",
                                KYR::eSM_GLOBE,
                                KYR::PJ_PLATE_CARREE,
                                {"Resources/Icons/WGS84-Globe.jpg",
                                 "Resources/Icons/elev_bump_4k.jpg", "Resources/Icons/night.jpg"},
                                BuildNightLight});

} // namespace
