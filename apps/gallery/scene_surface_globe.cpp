// Scene "surface-globe": the globe's tiles dressed with the Earth picture, the sea tinted deep
// blue through the water mask and shining in the sun, the land tinted by height through a
// colour ramp over the bump map, whose slopes shade the mountains.
#include "Gallery.h"
#include "eFile.h"
#include "eRenderSurfaceGlobe.h"

namespace
{

// Height steps 0..255 of the bump map: nothing below the coast (step 40), then a light
// green-to-brown-to-white tint that lets the picture show through.
KYR::eColorTable HeightRamp()
{
    KYR::eColorTable table;
    table.CreateGradient(256, KYR::ERGBA(0, 0, 0, 0), KYR::ERGBA(0, 0, 0, 0));
    struct Stop
    {
        int step;
        unsigned char r, g, b, a;
    };
    Stop const stops[] = {{40, 60, 140, 50, 90},
                          {90, 150, 150, 70, 110},
                          {150, 140, 100, 60, 130},
                          {210, 200, 190, 180, 150},
                          {255, 255, 255, 255, 170}};
    for (int i = 40; i < 256; ++i)
    {
        int k = 0;
        while (k + 1 < 5 && stops[k + 1].step < i)
            ++k;
        Stop const& a = stops[k];
        Stop const& b = stops[k + 1 < 5 ? k + 1 : k];
        double t = b.step > a.step ? (double)(i - a.step) / (b.step - a.step) : 0.0;
        auto lerp = [t](unsigned char p, unsigned char q)
        { return (unsigned char)(p + (q - p) * t + 0.5); };
        table.SetRGB(i, KYR::ERGBA(lerp(a.r, b.r), lerp(a.g, b.g), lerp(a.b, b.b), lerp(a.a, b.a)));
    }
    table.SetFloor(0.0);
    table.SetCeiling(255.0);
    return table;
}

bool BuildSurfaceGlobe(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.SetClearColor(0.0f, 0.0f, 0.02f, 1.0f);
    // Equinox, 15:00 UTC: the sun stands over 45 W; evening falls over Arabia and East Africa.
    scene.Engine().SetSunTime(2026, 3, 20, 15.0);
    scene.Camera().LookAt(20.0, 10.0, 1.9e7, 0.0, 0.0);
    KYR::eString icons = KYR::eSystem::GetWorkPath() + "Resources/Icons/";
    auto* surface = keep.Keep(new KYR::eRenderSurfaceGlobe());
    surface->SetBasePath(icons + "WGS84-Globe.jpg");
    surface->SetMaskPath(icons + "water_mask.png");
    surface->SetBumpPath(icons + "elev_bump_4k.jpg");
    surface->SetMaskColor(KYR::ERGBA(10, 40, 120, 110));
    KYR::eColorTable ramp = HeightRamp();
    surface->SetColorTable(&ramp);
    scene.Add(surface);
    return true;
}

Gallery::Register s_surfaceGlobe({"surface-globe",
                                  "the tiles dressed with the Earth, a water mask, a bump map "
                                  "and a height ramp",
                                  KYR::eSM_GLOBE,
                                  KYR::PJ_PLATE_CARREE,
                                  {"Resources/Icons/WGS84-Globe.jpg",
                                   "Resources/Icons/water_mask.png",
                                   "Resources/Icons/elev_bump_4k.jpg"},
                                  BuildSurfaceGlobe});

} // namespace
