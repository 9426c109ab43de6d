// Scenes "typhoon-early", "typhoon" and "typhoon-landfall": one western-Pacific typhoon
// played at three times. It forms east of the Philippine Sea, runs west-north-west while it
// strengthens to a super typhoon, recurves north past Okinawa, weakens over cooler water,
// makes landfall on Kyushu and decays over Japan. Forty six-hourly points.
#include "Gallery.h"
#include "eRenderTyphoonAnimation.h"
#include <vector>

namespace
{

struct TrackPoint
{
    double lat, lon;
    int level; // Beaufort wind level
};

// Six-hourly positions and levels: tropical depression 6-7, tropical storm 8-9, severe
// tropical storm 10-11, typhoon 12-13, severe typhoon 14-15, super typhoon 16 and above.
TrackPoint const kTrack[40] = {
    {9.8, 146.0, 6},   {10.2, 145.0, 6},  {10.6, 144.0, 6},  {11.0, 143.0, 7},  {11.5, 142.0, 7},
    {12.0, 141.0, 8},  {12.5, 140.0, 8},  {13.0, 139.0, 9},  {13.5, 138.0, 9},  {14.0, 137.0, 10},
    {14.6, 136.0, 10}, {15.2, 135.0, 11}, {15.8, 134.0, 11}, {16.4, 133.1, 12}, {17.0, 132.2, 12},
    {17.7, 131.4, 13}, {18.4, 130.6, 13}, {19.2, 129.9, 15}, {20.0, 129.3, 15}, {20.9, 128.8, 17},
    {21.8, 128.4, 17}, {22.7, 128.1, 17}, {23.6, 127.9, 16}, {24.5, 127.8, 16}, {25.4, 127.8, 15},
    {26.3, 127.9, 15}, {27.2, 128.2, 14}, {28.1, 128.6, 14}, {29.0, 129.1, 13}, {29.9, 129.7, 13},
    {30.8, 130.3, 12}, {31.6, 130.9, 12}, {32.5, 131.6, 10}, {33.4, 132.5, 10}, {34.3, 133.6, 8},
    {35.2, 134.9, 8},  {36.1, 136.4, 7},  {37.0, 138.1, 7},  {38.0, 140.0, 6},  {39.0, 142.2, 6},
};

double const kHoursPerPoint = 6.0;

std::vector<KYR::eVector4T<double>> Track()
{
    std::vector<KYR::eVector4T<double>> track;
    for (int i = 0; i < 40; ++i)
        track.push_back(KYR::eVector4T<double>(i * kHoursPerPoint, kTrack[i].level, kTrack[i].lon,
                                               kTrack[i].lat));
    return track;
}

bool BuildAt(KYR::Host::eScene& scene, Gallery::SceneKeep& keep, double hours)
{
    scene.Camera().LookAt(134.0, 25.0, 7.4e6, 0.0, 0.0);
    // A sun high in the north keeps its glint above the picture and lights the sea evenly.
    Gallery::AddEarth(scene, keep, 150.0, 85.0);
    auto* typhoon = keep.Keep(new KYR::eRenderTyphoonAnimation());
    typhoon->UpDateTyphoonPath(Track());
    typhoon->SetCurrentTime(hours);
    scene.Add(typhoon);
    return true;
}

std::vector<std::string> const kResources =
    Gallery::WithEarth({"Resources/Icons/TyphoonPoint.png", "Resources/Icons/TyphoonText.png"});

// Early: a tropical storm a day and a half old. Peak: a super typhoon east of Taiwan.
// Landfall: a typhoon coming ashore on southern Kyushu.
Gallery::Register s_early({"typhoon-early", "typhoon track at 40 h: a young tropical storm",
                           KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, kResources,
                           [](KYR::Host::eScene& s, Gallery::SceneKeep& k)
                           { return BuildAt(s, k, 40.0); }});
Gallery::Register s_peak({"typhoon", "typhoon track at 117 h: super typhoon at its peak",
                          KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, kResources,
                          [](KYR::Host::eScene& s, Gallery::SceneKeep& k)
                          { return BuildAt(s, k, 117.0); }});
Gallery::Register s_landfall({"typhoon-landfall", "typhoon track at 188 h: landfall on Kyushu",
                              KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, kResources,
                              [](KYR::Host::eScene& s, Gallery::SceneKeep& k)
                              { return BuildAt(s, k, 188.0); }});

} // namespace
