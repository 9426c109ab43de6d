// Scene "scatter": 100,000 icons over the globe in 500 clusters of eight categories; one
// category (tile 37) is switched off, and a few points, picked by rays through the
// screen, are drawn with the highlight icon.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eRenderScatterPointSet.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

namespace
{

int const kCategories[] = {1, 10, 19, 28, 37, 46, 55, 64}; // one shape and colour each
int const kHidden = 37;

// Selects up to `count` points by picking through pixels spread over the view, keeping
// the selection from pick to pick.
void PickSome(KYR::Host::eScene& scene, KYR::eRenderScatterPointSet& set, int count)
{
    int const w = scene.Viewport().GetActualWidth(), h = scene.Viewport().GetActualHeight();
    // A 16 x 12 grid of pixels visited in a scattered order (77 is prime to 192).
    for (int n = 0, k = 0; n < 192 && (int)set.GetChoicePoint().size() < count; ++n)
    {
        k = (k + 77) % 192;
        int px = w * (k % 16 * 2 + 1) / 32, py = h * (k / 16 * 2 + 1) / 24;
        KYR::eQueryFilter filter;
        scene.Camera().PickingRay(px, py, filter.m_vOrigin, filter.m_vDirection);
        filter.m_bKeep = 1;
        double depth = 0.0;
        set.Query(&scene.Engine(), &scene.Camera(), &filter, depth);
    }
}

// Reports a selection made by a click (kyr-viewer): the set hands over the selected slots and
// their points.
bool PrintHits(void*, std::vector<int>& slots, std::vector<KYR::eScatterPoint>& points)
{
    for (size_t i = 0; i < slots.size() && i < points.size(); ++i)
        std::printf("scatter: picked point %d at longitude %.3f, latitude %.3f\n", slots[i],
                    points[i].x, points[i].y);
    std::fflush(stdout);
    return true;
}

bool BuildScatter(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.Camera().LookAt(112.0, 30.0, 7.0e6, 10.0, 15.0);
    Gallery::AddEarth(scene, keep, 112.0, 30.0);

    auto* set = keep.Keep(new KYR::eRenderScatterPointSet());
    set->SetScatterPointSize(100000.0);
    std::mt19937 rng(8);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::normal_distribution<double> spread(0.0, 1.0);
    // Clusters spread evenly over the sphere, each of one category.
    int const clusters = 500, perCluster = 200;
    for (int c = 0; c < clusters; ++c)
    {
        double lon = -180.0 + 360.0 * unit(rng);
        double lat = std::asin(2.0 * unit(rng) - 1.0) * Gallery::kRadToDeg;
        double size = 0.5 + 2.0 * unit(rng);
        int category = kCategories[c % 8];
        for (int i = 0; i < perCluster; ++i)
        {
            double dlat = size * spread(rng);
            double dlon = size * spread(rng) / std::max(0.2, std::cos(lat * Gallery::kDegToRad));
            KYR::eScatterPoint p(category, lon + dlon, std::max(-89.0, std::min(89.0, lat + dlat)),
                                 0.0, 1.0);
            set->AddScatterPoint(p);
        }
    }
    set->SetScatterVisible(kHidden, false);
    scene.Add(set);
    PickSome(scene, *set, 8);
    set->SetHitCallBackFun(PrintHits, nullptr); // after the scene's own picks: clicks only
    return true;
}

Gallery::Register s_scatter(
    {"scatter", "100,000 icons in clusters, one category hidden, picked points highlighted",
     KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({"Resources/Icons/ScatterPoint.png"}),
     BuildScatter});

} // namespace
