// Scene "visual-globe": the relief sphere built from the height bump picture, coloured by
// height and lit by the morning sun over Asia; the ocean shines where the sun reflects.
#include "Gallery.h"
#include "eRenderVisualGlobe.h"

namespace
{

bool BuildVisualGlobe(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.SetClearColor(0.0f, 0.0f, 0.02f, 1.0f);
    // Equinox, 04:30 UTC: the sun stands over 112.5 E.
    scene.Engine().SetSunTime(2026, 3, 20, 4.5);
    scene.Camera().LookAt(80.0, 25.0, 2.0e7, 0.0, 0.0);
    scene.Add(keep.Keep(new KYR::eRenderVisualGlobe()));
    return true;
}

Gallery::Register s_visualGlobe({"visual-globe",
                                 "the relief sphere of the height bump picture, lit by the sun",
                                 KYR::eSM_GLOBE,
                                 KYR::PJ_PLATE_CARREE,
                                 {"Resources/Weather/wgs84heightbump.jpg"},
                                 BuildVisualGlobe});

} // namespace
