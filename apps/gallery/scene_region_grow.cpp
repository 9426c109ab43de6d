// Scene "region-grow": regions of concave shape around cities of the time-zone table, filled
// grey and taking their colour as their boundary points are recoloured one after another,
// going round from a first point. Each region is caught at another stage: one complete, the
// others part of the way round, one not yet started; the colours spread inward across the
// triangles. The ring around Tehran has a hole: its boundary runs round the outside, crosses
// to the inside along a seam and runs round the inside the other way.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eRenderRegionGrowSet.h"
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace
{

double const kPi = 3.141592653589793;
// Metres. The set's pass pushes its depth back by a polygon offset that grows with the slope
// of each triangle, so the regions stand this far clear of the ground, each flat on the
// plane touching the sphere at its city (see below).
double const kLift = 350000.0;
double const kSunLon = 45.0, kSunLat = 10.0;
KYR::eVector4T<unsigned char> const kGrey(120, 120, 130, 160);

typedef std::vector<KYR::ePoint2D> Ring; // east, north offsets in degrees of latitude

// A closed curve of n points at radius r(angle), counter-clockwise from the north.
Ring Curve(int n, std::function<double(double)> const& radius, bool clockwise = false)
{
    Ring ring;
    for (int i = 0; i < n; ++i)
    {
        double a = kPi / 2.0 + (clockwise ? -1.0 : 1.0) * 2.0 * kPi * i / n;
        double r = radius(a);
        ring.push_back(KYR::ePoint2D(r * std::cos(a), r * std::sin(a)));
    }
    return ring;
}

Ring Star()
{
    return Curve(120,
                 [](double a)
                 {
                     // Five points: the radius runs linearly between tips and notches.
                     double t =
                         std::fmod(a - kPi / 2.0 + 20.0 * kPi, 2.0 * kPi / 5.0) / (2.0 * kPi / 5.0);
                     return 2.5 + 4.5 * std::fabs(1.0 - 2.0 * t);
                 });
}

Ring Blob()
{
    return Curve(100, [](double a)
                 { return 5.0 * (1.0 + 0.4 * std::sin(3.0 * a) + 0.15 * std::cos(5.0 * a)); });
}

// A "C" opening to the east: a sector of a thick ring, round the west.
Ring Hook()
{
    Ring ring;
    int const n = 50;
    for (int i = 0; i <= n; ++i)
    {
        double a = kPi * (0.25 + 1.5 * i / n);
        ring.push_back(KYR::ePoint2D(5.5 * std::cos(a), 5.5 * std::sin(a)));
    }
    for (int i = n; i >= 0; --i)
    {
        double a = kPi * (0.25 + 1.5 * i / n);
        ring.push_back(KYR::ePoint2D(3.0 * std::cos(a), 3.0 * std::sin(a)));
    }
    return ring;
}

// A disc with a hole as one ring: outside counter-clockwise, a seam inward, the inside
// clockwise, and the seam back out to the first point.
Ring Annulus()
{
    Ring outer = Curve(70, [](double) { return 6.0; });
    Ring inner = Curve(
        40, [](double) { return 3.0; }, true);
    Ring ring = outer;
    ring.push_back(outer.front());
    ring.insert(ring.end(), inner.begin(), inner.end());
    ring.push_back(inner.front());
    return ring;
}

struct Region
{
    char const* city;
    Ring (*shape)();
    double progress; // share of the boundary recoloured
    KYR::eVector4T<unsigned char> colour;
};

bool BuildRegionGrow(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    std::map<std::string, Gallery::City> byName;
    for (Gallery::City const& c : Gallery::Cities())
        byName.emplace(c.name, c);
    scene.Camera().LookAt(48.0, 25.0, 9.0e6, 0.0, 0.0);
    Gallery::AddEarth(scene, keep, kSunLon, kSunLat);

    Region const regions[] = {
        {"Cairo", Star, 1.0, KYR::eVector4T<unsigned char>(255, 170, 40, 230)},
        {"Tehran", Annulus, 0.6, KYR::eVector4T<unsigned char>(80, 220, 255, 230)},
        {"Riyadh", Blob, 0.35, KYR::eVector4T<unsigned char>(120, 255, 110, 230)},
        {"Khartoum", Hook, 0.75, KYR::eVector4T<unsigned char>(255, 90, 150, 230)},
        {"Kabul", Blob, 0.0, KYR::eVector4T<unsigned char>(200, 120, 255, 230)},
    };
    auto* set = keep.Keep(new KYR::eRenderRegionGrowSet());
    KYR::eVector3T<double> anchor(48.0, 25.0, 0.0);
    set->SetSpatialRefType(1);
    set->SetPosition(anchor);
    // Positions are converted when a region is added, so the anchor's frame comes first.
    set->Create(&scene.Camera(), 0.0, &scene.Canvas());
    for (Region const& r : regions)
    {
        auto city = byName.find(r.city);
        if (city == byName.end())
        {
            std::fprintf(stderr, "region-grow: no city \"%s\" in %s\n", r.city,
                         Gallery::ZoneTablePath());
            continue;
        }
        KYR::eGrowRegion region;
        region.m_cColor = kGrey;
        double lat = city->second.lat, lon = city->second.lon;
        KYR::eVector3T<double> centre = Gallery::GeoToWorld(lon, lat, 0.0).Normalized();
        for (KYR::ePoint2D const& p : r.shape())
        {
            double plon = lon + p.x / std::cos(lat * Gallery::kDegToRad), plat = lat + p.y;
            // On the plane touching the sphere at the city, kLift above it: a flat region
            // keeps its triangles out of the ground, however thin they are.
            double cosine = Gallery::GeoToWorld(plon, plat, 0.0).Normalized().Dot(centre);
            double height = (Gallery::kEarthRadius + kLift) / cosine - Gallery::kEarthRadius;
            region.m_arPositions.push_back(KYR::eVector4T<double>(plon, plat, height, 0.0));
        }
        if (!set->Add(&region))
            continue;
        KYR::eGrowRegion* added = set->Get(set->GetCount() - 1);
        int reached = (int)(r.progress * added->m_arPositions.size() + 0.5);
        for (int i = 0; i < reached; ++i)
        {
            KYR::eVector4T<unsigned char> colour = r.colour;
            set->Update(added, i, colour);
        }
    }
    if (set->GetCount() == 0)
        return false;
    scene.Add(set);
    return true;
}

Gallery::Register s_regionGrow({"region-grow",
                                "concave regions, one with a hole, taking their colour as "
                                "their boundary points are recoloured",
                                KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
                                BuildRegionGrow});

} // namespace
