// Scene "cone": two cones posed between points on the globe, their texture flowing
// from base to tip.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eFile.h"
#include "eRenderCone.h"

namespace
{

KYR::eRenderCone* MakeCone(Gallery::SceneKeep& keep, double apexLon, double apexLat, double baseLon,
                           double baseLat, double baseHeight)
{
    auto* cone = keep.Keep(new KYR::eRenderCone(180000.0, 1000000.0));
    cone->SetTextureFile(KYR::eSystem::GetWorkPath() + "Resources/Icons/flow.png");
    cone->setPosture(Gallery::GeoToWorld(apexLon, apexLat, 0.0),
                     Gallery::GeoToWorld(baseLon, baseLat, baseHeight));
    return cone;
}

bool BuildCone(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.Camera().LookAt(112.0, 33.0, 5200000.0, -25.0, 50.0, 300000.0);
    Gallery::AddEarth(scene, keep, 100.0, 20.0);
    // Beams from two satellites down to Beijing and Shanghai.
    scene.Add(MakeCone(keep, 116.4, 39.9, 108.0, 36.0, 900000.0));
    auto* second = MakeCone(keep, 121.5, 31.2, 126.0, 27.0, 700000.0);
    second->setTexFlowSpeed(8.0);
    scene.Add(second);
    return true;
}

Gallery::Register s_cone({"cone", "two cones between points on the globe with flowing texture",
                          KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE,
                          Gallery::WithEarth({"Resources/Icons/flow.png"}), BuildCone});

} // namespace
