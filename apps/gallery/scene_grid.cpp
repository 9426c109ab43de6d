// Scenes "grid" and "grid-near": 200,000 people scattered around the cities of the time-zone
// table, counted into a screen grid with the total of each cell written on it and coloured
// through a colour map. The same points seen from two heights over Europe: from far away a
// cell takes in whole regions, from close up the cities stand apart in cells of their own.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eColorMap.h"
#include "eRenderPointGridSet.h"
#include <cmath>
#include <random>
#include <vector>

namespace
{

int const kPoints = 200000;
float const kCellPixels = 48.0f; // room for four digits in a cell
// The cells lie in the plane touching the ground at the anchor; lifted a little, the digits
// clear the ground's depth there too (their pass tests depth, pushed back by its bias).
double const kLift = 10000.0;

struct Place
{
    double lon, lat;
};

// Cities draw people by a heavy-tailed weight; each person lives at a normally spread
// distance from the city centre, in a spread of the city's own.
std::vector<Place> const& People()
{
    static std::vector<Place> const s_people = []
    {
        std::vector<Place> out;
        std::vector<Gallery::City> cities = Gallery::Cities();
        if (cities.empty())
            return out;
        std::mt19937 rng(29);
        std::lognormal_distribution<double> weight(0.0, 1.0);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        std::normal_distribution<double> spread(0.0, 1.0);
        std::vector<double> weights;
        double sum = 0.0;
        for (size_t i = 0; i < cities.size(); ++i)
        {
            weights.push_back(weight(rng));
            sum += weights.back();
        }
        out.reserve(kPoints);
        for (size_t i = 0; i < cities.size() && (int)out.size() < kPoints; ++i)
        {
            int count = (int)std::lround(kPoints * weights[i] / sum);
            if (i + 1 == cities.size())
                count = kPoints - (int)out.size();
            double radius = 15000.0 + 60000.0 * unit(rng); // metres
            for (int k = 0; k < count && (int)out.size() < kPoints; ++k)
            {
                Place p;
                Gallery::Destination(cities[i].lon, cities[i].lat, 360.0 * unit(rng),
                                     std::fabs(spread(rng)) * radius, p.lon, p.lat);
                out.push_back(p);
            }
        }
        return out;
    }();
    return s_people;
}

KYR::eColorMap Heat()
{
    struct Band
    {
        double from, to;
        unsigned char r, g, b;
    };
    Band const bands[] = {{1.0, 50.0, 255, 250, 205},
                          {50.0, 200.0, 255, 225, 120},
                          {200.0, 800.0, 255, 180, 90},
                          {800.0, 2500.0, 250, 130, 90},
                          {2500.0, 1e9, 235, 95, 110}};
    KYR::eColorMap map;
    for (Band const& b : bands)
    {
        KYR::eVector4T<unsigned char> colour(b.r, b.g, b.b, 215);
        map.Add(b.from, b.to, colour);
    }
    return map;
}

bool BuildGrid(KYR::Host::eScene& scene, Gallery::SceneKeep& keep, double lon, double lat,
               double distance)
{
    std::vector<Place> const& people = People();
    if (people.empty())
        return false;
    scene.Camera().LookAt(lon, lat, distance, 0.0, 0.0);
    Gallery::AddEarth(scene, keep, lon, lat);
    auto* set = keep.Keep(new KYR::eRenderPointGridSet());
    set->SetSpatialRefType(1);
    KYR::eVector3T<double> anchor(lon, lat, kLift);
    set->SetPosition(anchor);
    set->SetGridSize(kCellPixels);
    KYR::eColorMap heat = Heat();
    set->SetColorMap(&heat);
    // The anchor's frame must stand before points are added.
    set->Create(&scene.Camera(), 0.0, &scene.Canvas());
    for (Place const& p : people)
    {
        auto* point = new KYR::eGridPoint();
        point->m_vPosition = KYR::eVector4T<double>(p.lon, p.lat, 0.0, 0.0);
        set->Add(point);
    }
    scene.Add(set);
    return true;
}

Gallery::Register s_grid({"grid",
                          "200,000 people around the time-zone cities counted into a screen "
                          "grid over Europe, with the totals written in the cells",
                          KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
                          [](KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
                          { return BuildGrid(scene, keep, 12.0, 48.0, 6.5e6); }});

Gallery::Register s_gridNear({"grid-near",
                              "the same people from closer: the cells regroup and cities "
                              "stand apart",
                              KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
                              [](KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
                              { return BuildGrid(scene, keep, 9.0, 48.5, 2.6e6); }});

} // namespace
