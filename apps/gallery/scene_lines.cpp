// Scene "lines": the application's own lines and polygons over the globe. Great-circle
// routes from London to cities of the time-zone table as plain lines (coloured per vertex,
// by one colour, and through the radar colour table), a satellite's ground track of five
// orbits as one antialiased line of 90,000 points (three chunks), and filled polygons.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eCustomRenderLine.h"
#include "eCustomRenderPoly.h"
#include "eFile.h"
#include "eRenderAntiAliasingLine.h"
#include <cmath>

namespace
{

using KYR::tagColorVertex3r;

tagColorVertex3r Vertex(double lon, double lat, double height, int r, int g, int b, int a = 255)
{
    tagColorVertex3r v;
    v.x = (float)lon;
    v.y = (float)lat;
    v.z = (float)height;
    v.r = (unsigned char)r;
    v.g = (unsigned char)g;
    v.b = (unsigned char)b;
    v.a = (unsigned char)a;
    return v;
}

// Points of the great circle from a to b, every ~20 km, with t (0..1) along it.
template <typename F> void GreatCircle(Gallery::City const& a, Gallery::City const& b, F emit)
{
    using Gallery::kDegToRad;
    KYR::eVector3T<double> p =
        Gallery::GeoToWorld(a.lon, a.lat, 0.0) * (1.0 / Gallery::kEarthRadius);
    KYR::eVector3T<double> q =
        Gallery::GeoToWorld(b.lon, b.lat, 0.0) * (1.0 / Gallery::kEarthRadius);
    double angle = std::acos(std::max(-1.0, std::min(1.0, p.Dot(q))));
    int steps = std::max(2, (int)(angle * Gallery::kEarthRadius / 20000.0));
    for (int i = 0; i <= steps; ++i)
    {
        double t = (double)i / steps;
        double s = std::sin(angle);
        KYR::eVector3T<double> v =
            s > 1e-12 ? p * (std::sin((1.0 - t) * angle) / s) + q * (std::sin(t * angle) / s) : p;
        double lon = std::atan2(v.y, v.x) * Gallery::kRadToDeg;
        double lat =
            std::asin(std::max(-1.0, std::min(1.0, v.z / v.Length()))) * Gallery::kRadToDeg;
        emit(lon, lat, t);
    }
}

Gallery::City const* Find(std::vector<Gallery::City> const& cities, char const* zone)
{
    for (Gallery::City const& c : cities)
        if (c.zone == zone)
            return &c;
    std::fprintf(stderr, "gallery: %s is not in %s\n", zone, Gallery::ZoneTablePath());
    return nullptr;
}

// The ground track of a circular orbit of the given inclination: longitudes keep growing
// westward past the date line, so the line stays continuous.
void GroundTrack(KYR::eRenderAntiAliasingLine& line, int points, double orbits)
{
    double const inclination = 51.6 * Gallery::kDegToRad;
    double const earthTurnsPerOrbit = 92.0 / 1436.0; // minutes of an orbit over a sidereal day
    for (int i = 0; i < points; ++i)
    {
        double u = 2.0 * KYR::eMathEngine::PI * orbits * i / (points - 1); // argument of latitude
        double lat = std::asin(std::sin(inclination) * std::sin(u));
        double lon =
            std::atan2(std::cos(inclination) * std::sin(u), std::cos(u)) - earthTurnsPerOrbit * u;
        // Unwrap across orbits: atan2 restarts every turn.
        lon += 2.0 * KYR::eMathEngine::PI *
               std::floor((u + KYR::eMathEngine::PI) / (2.0 * KYR::eMathEngine::PI));
        tagColorVertex3r v =
            Vertex(lon * Gallery::kRadToDeg - 40.0, lat * Gallery::kRadToDeg, 0.0, 255, 255, 255);
        line.AddVertex(v);
    }
}

// A polygon given in degrees around (lon, lat), laid in the tangent plane there: the object's
// matrix carries east, north and up to the world, and the corners are metres in that plane,
// `lift` metres above the ground.
KYR::eCustomRenderPoly* TangentPoly(Gallery::SceneKeep& keep, double lon, double lat,
                                    std::vector<std::pair<double, double>> const& corners, int r,
                                    int g, int b, int a, double lift)
{
    auto* poly = keep.Keep(new KYR::eCustomRenderPoly());
    double la = lat * Gallery::kDegToRad, lo = lon * Gallery::kDegToRad;
    KYR::eVector3T<double> east(-std::sin(lo), std::cos(lo), 0.0);
    KYR::eVector3T<double> north(-std::sin(la) * std::cos(lo), -std::sin(la) * std::sin(lo),
                                 std::cos(la));
    KYR::eVector3T<double> up(std::cos(la) * std::cos(lo), std::cos(la) * std::sin(lo),
                              std::sin(la));
    KYR::eVector3T<double> origin = Gallery::GeoToWorld(lon, lat, lift);
    KYR::eMatrix4T<double> m;
    KYR::eVector3T<double> const axes[4] = {east, north, up, origin};
    for (int c = 0; c < 4; ++c)
    {
        m.At(0, c) = axes[c].x;
        m.At(1, c) = axes[c].y;
        m.At(2, c) = axes[c].z;
    }
    poly->SetMatrix(m);
    for (auto const& corner : corners)
    {
        // Degrees from the centre to metres in the plane.
        double x = corner.first * Gallery::kDegToRad * Gallery::kEarthRadius * std::cos(la);
        double y = corner.second * Gallery::kDegToRad * Gallery::kEarthRadius;
        tagColorVertex3r v = Vertex(x, y, 0.0, r, g, b, a);
        poly->AddVertex(v);
    }
    return poly;
}

std::vector<std::pair<double, double>> Star(int spikes, double outer, double inner)
{
    std::vector<std::pair<double, double>> out;
    for (int i = 0; i < 2 * spikes; ++i)
    {
        double a = KYR::eMathEngine::PI * i / spikes + KYR::eMathEngine::PI * 0.5;
        double r = i % 2 ? inner : outer;
        out.push_back({r * std::cos(a), r * std::sin(a)});
    }
    return out;
}

bool BuildLines(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    Gallery::AddEarth(scene, keep, -20.0, 20.0);
    scene.Camera().LookAt(-25.0, 25.0, 1.5e7, 0.0, 0.0);
    std::vector<Gallery::City> cities = Gallery::Cities();
    Gallery::City const* hub = Find(cities, "Europe/London");
    if (!hub)
        return false;

    // Routes coloured per vertex, from warm at London to cool at the far end.
    auto* routes = keep.Keep(new KYR::eCustomRenderLine());
    routes->SetRelativeHeight(20000.0f);
    for (char const* zone : {"America/New_York", "America/Sao_Paulo", "Africa/Lagos",
                             "America/Mexico_City", "Africa/Johannesburg"})
        if (Gallery::City const* to = Find(cities, zone))
        {
            routes->CreateLine();
            GreatCircle(*hub, *to,
                        [&](double lon, double lat, double t)
                        {
                            tagColorVertex3r v = Vertex(lon, lat, 0.0, (int)(255 * (1.0 - t)),
                                                        (int)(160 + 60 * t), (int)(255 * t));
                            routes->AddVertex(v);
                        });
        }
    routes->SetLineWidth(3.0f);
    scene.Add(routes);

    // One colour for every vertex.
    auto* single = keep.Keep(new KYR::eCustomRenderLine());
    single->SetRelativeHeight(20000.0f);
    if (Gallery::City const* to = Find(cities, "Asia/Dubai"))
        GreatCircle(*hub, *to,
                    [&](double lon, double lat, double)
                    {
                        tagColorVertex3r v = Vertex(lon, lat, 0.0, 0, 0, 0);
                        single->AddVertex(v);
                    });
    single->SetColor(KYR::eVector4T<unsigned char>(255, 80, 200, 255));
    single->SetLineWidth(3.0f);
    scene.Add(single);

    // Through the radar colour table: each vertex's red byte runs along the table.
    auto* table = keep.Keep(new KYR::eCustomRenderLine());
    table->SetRelativeHeight(20000.0f);
    Gallery::City const* azores = Find(cities, "Atlantic/Azores");
    Gallery::City const* halifax = Find(cities, "America/Halifax");
    if (azores && halifax)
        GreatCircle(*azores, *halifax,
                    [&](double lon, double lat, double t)
                    {
                        tagColorVertex3r v = Vertex(lon, lat, 0.0, (int)(255 * t), 0, 0);
                        table->AddVertex(v);
                    });
    table->SetColorTable(KYR::eSystem::GetWorkPath() + "Resources/Icons/colortable1.png",
                         KYR::eTFM_LINEAR);
    table->SetLineWidth(5.0f);
    scene.Add(table);

    // The ground track: one long antialiased line, cut into chunks of 30,000 points.
    auto* track = keep.Keep(new KYR::eRenderAntiAliasingLine());
    GroundTrack(*track, 90000, 5.0);
    track->SetLineWidth(2.5f);
    track->SetRelativeHeight(30000.0f);
    track->SetColor(KYR::eVector4T<unsigned char>(120, 240, 255, 230));
    scene.Add(track);

    // Filled polygons: a concave star over the Atlantic, a notched block over Africa.
    scene.Add(TangentPoly(keep, -35.0, 32.0, Star(5, 9.0, 4.0), 255, 210, 40, 210, 15000.0));
    scene.Add(TangentPoly(keep, 18.0, 8.0,
                          {{-8, -6}, {8, -6}, {8, 6}, {2, 6}, {2, 0}, {-2, 0}, {-2, 6}, {-8, 6}},
                          60, 220, 120, 150, 15000.0));
    scene.Add(TangentPoly(keep, -55.0, -12.0, Star(7, 7.0, 5.0), 230, 90, 255, 150, 15000.0));
    return true;
}

Gallery::Register s_lines({"lines",
                           "great-circle routes, an antialiased satellite ground track of "
                           "90,000 points, and filled polygons",
                           KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE,
                           Gallery::WithEarth({"Resources/Icons/colortable1.png"}), BuildLines});

} // namespace
