// Scene "grow-wind": the synthetic global wind field of the "winds" scene, read from the wind
// picture the resource tool writes, as a quarter of a million particles that live on the
// graphics card; their trails, coloured by speed, flow over the Earth from the same view.
#include "Gallery.h"
#include "SyntheticWinds.h"
#include "eFile.h"
#include "eRenderGrowWind.h"
#include <cmath>

namespace
{

// Calm blue through cyan, green and yellow to red at the picture's full speed.
KYR::eColorTable SpeedTable()
{
    static unsigned char const stops[][3] = {{70, 120, 255}, {40, 210, 255}, {70, 235, 120},
                                             {245, 240, 70}, {255, 140, 30}, {255, 40, 70}};
    KYR::eColorTable table;
    table.CreateGradient(256, KYR::ERGBA(0, 0, 0, 255), KYR::ERGBA(0, 0, 0, 255));
    for (int i = 0; i < 256; ++i)
    {
        // Most winds are far below the strongest: the ramp spends its colours on them.
        double t = std::sqrt(i / 255.0) * 5.0;
        int k = std::min(4, (int)t);
        double f = t - k;
        int c[3];
        for (int n = 0; n < 3; ++n)
            c[n] = (int)std::lround(stops[k][n] * (1.0 - f) + stops[k + 1][n] * f);
        table.SetRGB(i, KYR::ERGBA(c[0], c[1], c[2], 255));
    }
    table.SetFloor(0.0);
    table.SetCeiling(1.0);
    return table;
}

bool BuildGrowWind(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.Camera().LookAt(150.0, 22.0, 2.3e7, 0.0, 0.0);
    Gallery::AddEarth(scene, keep, 150.0, 10.0);
    auto* wind = keep.Keep(new KYR::eRenderGrowWind());
    KYR::tagWindData data;
    data.path = KYR::eSystem::GetWorkPath() + Winds::kPicturePath;
    data.uMin = data.vMin = (float)Winds::kMinimum;
    data.uMax = data.vMax = (float)Winds::kMaximum;
    wind->SetWindData(&data);
    KYR::eColorTable table = SpeedTable();
    wind->SetColorTable(&table);
    scene.Add(wind);
    // The trails need a run-up: particles re-seed over the sphere and their tails grow. Past
    // 200 frames the oldest part of a tail is nearly transparent on the globe, so more frames
    // would change little; the gallery then draws one more. A thumbnail (the CI page) shows
    // the flow after 60: each frame fades the whole 4096 x 2048 trail picture, which costs a
    // software rasteriser most of a second whatever the output size.
    int const runUp = scene.Width() >= 640 ? 199 : 59;
    for (int i = 0; i < runUp; ++i)
        scene.RenderFrame();
    return wind->GetWindData()->width > 0;
}

Gallery::Register s_growWind({"grow-wind",
                              "262,144 wind particles advanced on the graphics card, their "
                              "fading trails in a whole-Earth picture laid over the globe",
                              KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE,
                              Gallery::WithEarth({Winds::kPicturePath}), BuildGrowWind});

} // namespace
