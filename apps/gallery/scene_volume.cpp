// Scenes "volume" and "volume-cores": a storm cell over Oklahoma ray cast on the globe at
// dusk, seen obliquely from the south-west. Two windows of the same width on the value
// range: "volume" reads the resource tool's voxel file and opens the lower one (eigen value
// 0.3, span 160/256: anvil, cloud and rain shaft, the cores inside left out), "volume-cores"
// builds the same field in memory and opens the upper one (eigen value 0.7, span 160/256:
// rain and hail cores only).
#include "Gallery.h"
#include "GalleryGeo.h"
#include "StormField.h"
#include "eFile.h"
#include "eRenderVolumeRayCast.h"
#include <cstring>

namespace
{

// The storm's domain: 180 km square around (97.5 W, 35.4 N), 16 km of atmosphere drawn
// 40 km tall so that the tower reads as a tower from afar.
double const kCentreLon = -97.5, kCentreLat = 35.4;
double const kHalfLon =
    0.5 * Storm::kDomainKm * 1000.0 /
    (Gallery::kEarthRadius * Gallery::kDegToRad * std::cos(kCentreLat * Gallery::kDegToRad));
double const kHalfLat =
    0.5 * Storm::kDomainKm * 1000.0 / (Gallery::kEarthRadius * Gallery::kDegToRad);
double const kDrawnTop = 40000.0;

KYR::eRenderVolumeRayCast* AddStorm(KYR::Host::eScene& scene, Gallery::SceneKeep& keep,
                                    float eigenValue, float span)
{
    // Dusk: the ground lies in the fill light and the echoes stand out. The volume is lit
    // by the camera's light, which follows the eye.
    double const sunLon = kCentreLon - 95.0, sunLat = 18.0;
    Gallery::AddEarth(scene, keep, sunLon, sunLat);
    scene.Camera().LookAt(kCentreLon + 0.1, kCentreLat + 0.05, 250000.0, 25.0, 72.0, 16000.0);

    auto* storm = keep.Keep(new KYR::eRenderVolumeRayCast());
    KYR::eRect2D bound(kCentreLon - kHalfLon, kCentreLat + kHalfLat, kCentreLon + kHalfLon,
                       kCentreLat - kHalfLat);
    KYR::eVector2T<double> height(0.0, kDrawnTop);
    storm->SetBound(bound);
    storm->SetHeight(height);
    storm->SetEigenValue(eigenValue);
    storm->SetEigenValueSpan(span);
    storm->SetStepSize(0.004f);
    scene.Add(storm);
    return storm;
}

bool BuildVolume(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    KYR::eRenderVolumeRayCast* storm = AddStorm(scene, keep, 0.3f, 160.0f);
    KYR::eString path = KYR::eSystem::GetWorkPath() + "Resources/Weather/storm.raw";
    storm->SetVolume3DTex(path.Cstr(), Storm::kWidth, Storm::kHeight, Storm::kDepth);
    return true;
}

bool BuildVolumeCores(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    KYR::eRenderVolumeRayCast* storm = AddStorm(scene, keep, 0.7f, 160.0f);
    std::vector<unsigned char> field = Storm::Field();
    auto* voxels = new unsigned char[field.size()];
    std::memcpy(voxels, field.data(), field.size());
    storm->SetVolume3DTex(Storm::kWidth, Storm::kHeight, Storm::kDepth, voxels);
    return true;
}

Gallery::Register s_volume({"volume", "a storm cell ray cast from its voxel file: the whole cloud",
                            KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE,
                            Gallery::WithEarth({"Resources/Icons/colortable1.png",
                                                "Resources/Weather/storm.raw"}),
                            BuildVolume});

Gallery::Register
    s_volumeCores({"volume-cores", "the same storm from memory, a transfer window on its cores",
                   KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE,
                   Gallery::WithEarth({"Resources/Icons/colortable1.png"}), BuildVolumeCores});

} // namespace
