// Scene "cubes": a prism on each city of the time-zone table, standing as high as the sun
// stands over the city at the scene's hour and coloured from that elevation through a colour
// map: night blue, twilight purple and orange, daylight yellow. Lit by the same sun and
// caught mid-growth, seen obliquely across the day-night line so that the sunny and the
// shaded sides show. Cities are gathered in sets of neighbours, each set standing in the
// local frame of its own anchor.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eColorMap.h"
#include "eRenderListCubeSet.h"
#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace
{

double const kSunLon = -75.0, kSunLat = 15.0; // afternoon in the west, dusk to the east
double const kCellDegrees = 12.0;             // neighbourhood of one set
float const kRadius = 28000.0f;               // half side of a prism, metres
double const kMetresPerDegree = 7000.0;       // height per degree above -30 degrees
double const kBaseHeight = 25000.0;           // what a prism keeps in the deep night
float const kGrowth = 0.6f;                   // how far the prisms have grown

// Sun elevation in degrees over a city: 90 at the subsolar point, -90 at its antipode.
double SunElevation(KYR::eVector3T<double> const& sun, double lon, double lat)
{
    KYR::eVector3T<double> up = Gallery::GeoToWorld(lon, lat, 0.0).Normalized();
    return std::asin(std::max(-1.0, std::min(1.0, up.Dot(sun)))) * Gallery::kRadToDeg;
}

KYR::eColorMap ElevationColours()
{
    KYR::eColorMap map;
    struct Band
    {
        double from, to;
        unsigned char r, g, b;
    };
    Band const bands[] = {{-91.0, -18.0, 40, 70, 200}, {-18.0, -6.0, 120, 70, 190},
                          {-6.0, 0.0, 235, 110, 60},   {0.0, 20.0, 250, 175, 40},
                          {20.0, 45.0, 250, 225, 70},  {45.0, 91.0, 255, 250, 190}};
    for (Band const& b : bands)
    {
        KYR::eVector4T<unsigned char> colour(b.r, b.g, b.b, 255);
        map.Add(b.from, b.to, colour);
    }
    return map;
}

bool BuildCubes(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    std::vector<Gallery::City> cities = Gallery::Cities();
    if (cities.empty())
        return false;
    scene.Camera().LookAt(24.0, 41.0, 4.5e6, 30.0, 55.0);
    Gallery::AddEarth(scene, keep, kSunLon, kSunLat);
    KYR::eVector3T<double> sun = scene.Engine().GetSunPosition().Normalized();
    KYR::eColorMap colours = ElevationColours();

    // Neighbours share a set, so that no prism stands far from its set's anchor.
    std::map<std::pair<int, int>, std::vector<Gallery::City const*>> cells;
    for (Gallery::City const& c : cities)
        cells[{(int)std::floor(c.lon / kCellDegrees), (int)std::floor(c.lat / kCellDegrees)}]
            .push_back(&c);
    for (auto const& cell : cells)
    {
        std::vector<Gallery::City const*> const& members = cell.second;
        double lon = 0.0, lat = 0.0;
        for (Gallery::City const* c : members)
        {
            lon += c->lon;
            lat += c->lat;
        }
        KYR::eVector3T<double> anchor(lon / members.size(), lat / members.size(), 0.0);
        auto* set = keep.Keep(new KYR::eRenderListCubeSet());
        set->SetPoolSize((int)members.size());
        set->SetSpatialRefType(1);
        set->SetPosition(anchor);
        set->SetCurGrowRatio(kGrowth - set->GetGrowRatioPerFrame());
        for (Gallery::City const* c : members)
        {
            double elevation = SunElevation(sun, c->lon, c->lat);
            KYR::eCubePoint prism;
            prism.m_vPosition = KYR::eVector4T<double>(c->lon, c->lat, 0.0, 0.0);
            prism.m_fRadius = kRadius;
            prism.m_fHeight =
                (float)(kBaseHeight + std::max(0.0, elevation + 30.0) * kMetresPerDegree);
            prism.m_cTopColor = colours.GetColor(elevation);
            KYR::eVector4T<unsigned char> const& top = prism.m_cTopColor;
            // Darker towards the ground, so the prisms read as standing on it.
            prism.m_cBottomColor = KYR::eVector4T<unsigned char>(
                (unsigned char)(top.x * 0.45), (unsigned char)(top.y * 0.45),
                (unsigned char)(top.z * 0.45), 255);
            set->AddCubePoint(&prism);
        }
        scene.Add(set);
    }
    return true;
}

Gallery::Register s_cubes({"cubes",
                           "prisms on the cities of the time-zone table, lit by the sun and "
                           "growing, as high as the sun stands over each",
                           KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
                           BuildCubes});

} // namespace
