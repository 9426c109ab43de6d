// Scene "globe-mask": the Earth dimmed by a dark cover, with Australia cut out of it through
// a mask picture of the country, so that it stands out in full daylight colour.
#include "Gallery.h"
#include "eFile.h"
#include "eRenderGlobeMask.h"

namespace
{

bool BuildGlobeMask(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    Gallery::AddEarth(scene, keep, 135.0, -15.0);
    scene.Camera().LookAt(134.0, -26.0, 1.3e7, 0.0, 0.0);
    auto* mask = keep.Keep(new KYR::eRenderGlobeMask());
    mask->SetMaskTexture(KYR::eSystem::GetWorkPath() + "Resources/Icons/australia_mask.png",
                         KYR::eRect2D(112.0, -10.6, 154.0, -44.0));
    mask->SetBackgroundColor(KYR::eVector4T<unsigned char>(8, 10, 24, 210));
    scene.Add(mask);
    return true;
}

Gallery::Register
    s_globeMask({"globe-mask", "the globe dimmed by a cover with Australia cut out of it",
                 KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE,
                 Gallery::WithEarth({"Resources/Icons/australia_mask.png"}), BuildGlobeMask});

} // namespace
