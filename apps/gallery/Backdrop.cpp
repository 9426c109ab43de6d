#include "Gallery.h"
#include "GalleryGeo.h"
#include "eFile.h"
#include "eRenderGlobe.h"

namespace Gallery
{

void AddEarth(KYR::Host::eScene& scene, SceneKeep& keep, double sunLon, double sunLat)
{
    scene.SetClearColor(0.0f, 0.0f, 0.02f, 1.0f);
    scene.Engine().SetSunPosition(GeoToWorld(sunLon, sunLat, 1.496e11));
    auto* globe = keep.Keep(new KYR::eRenderGlobe());
    KYR::eString flat = KYR::eSystem::GetWorkPath() + "Resources/Icons/elev_flat.png";
    globe->SetEarthElevationPicture(flat);
    scene.GlobeModel().SetElevationPicture(flat); // tile overlays lie on the same globe
    globe->SetUseTexture(1);
    // A faint fill so that what lies away from the sun stays readable.
    globe->SetDiffuseColor(KYR::eVector3T<float>(0.12f, 0.12f, 0.14f));
    scene.Add(globe);
}

} // namespace Gallery
