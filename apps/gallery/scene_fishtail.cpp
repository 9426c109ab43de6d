// Scene "fishtail": the synthetic global wind field as screen-space wind lines with fading
// tails over the north-western Pacific, a typhoon in the middle, under the coloured wind
// speed. The view rests for the wait the lines need, then the tails grow for a while.
#include "Gallery.h"
#include "GalleryWinds.h"
#include "eRenderWindFishtailLine.h"

namespace
{

bool BuildFishtail(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.Camera().LookAt(138.0, 24.0, 6.5e6, 0.0, 0.0);
    Gallery::AddEarth(scene, keep, 138.0, 10.0);
    auto* lines = keep.Keep(new KYR::eRenderWindFishtailLine(nullptr));
    lines->m_nx = Gallery::kWindColumns;
    lines->m_ny = Gallery::kWindRows;
    lines->m_dx = 1.0;
    lines->m_dy = -1.0; // north row first
    lines->m_left = -180.0;
    lines->m_right = 180.0;
    lines->m_top = 90.0;
    lines->m_bottom = -90.0;
    std::vector<KYR::ePoint2D> winds = Gallery::GlobalWinds();
    lines->SetWindDynamic(winds);
    scene.Add(lines);
    // 25 frames until the view counts as resting, then enough for the oldest particles to
    // have been replaced and the tails to reach their length; the gallery draws one more.
    for (int i = 0; i < 140; ++i)
        scene.RenderFrame();
    return true;
}

Gallery::Register
    s_fishtail({"fishtail", "wind lines with fading tails over the coloured wind speed",
                KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}), BuildFishtail});

} // namespace
