// Scene "line-grow": air routes between cities of the time-zone table, drawn as ribbons that
// start grey and take their colour point by point, from the city of departure onward. The
// colours come from a worker thread that steps every route along as a live feed would; the
// routes set out one after another, so the picture catches some complete, some on their way
// and some not yet started. Each route arcs over the ground on its great circle.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eRenderLineGrowSet.h"
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cmath>
#include <future>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace
{

int const kPoints = 100;    // per route
int const kStartEvery = 10; // steps between the departures of two routes
// Metres. The set's pass pushes its depth back by a polygon offset that grows with the slope
// of what it draws, so the ribbons stand this far clear of the ground and the view keeps
// them near its centre.
double const kLift = 200000.0;
double const kArc = 0.06;    // height at mid-route, as a share of the route's length
float const kWidth = 5.0f;   // pixels
int const kHeadStart = 1025; // updates queued before the first frame: one frame's worth
double const kSunLon = 40.0, kSunLat = 10.0;

struct Route
{
    char const* from;
    char const* to;
};

// Hubs and their destinations, in the order they set out.
Route const kRoutes[] = {
    {"Dubai", "Cairo"},      {"Dubai", "Karachi"},  {"Istanbul", "Baghdad"}, {"Dubai", "Nairobi"},
    {"Cairo", "Khartoum"},   {"Dubai", "Tehran"},   {"Istanbul", "Cairo"},   {"Dubai", "Kabul"},
    {"Cairo", "Riyadh"},     {"Dubai", "Istanbul"}, {"Tehran", "Tashkent"},  {"Dubai", "Colombo"},
    {"Istanbul", "Tbilisi"}, {"Dubai", "Khartoum"}, {"Karachi", "Kabul"},    {"Dubai", "Baku"},
    {"Cairo", "Jerusalem"},  {"Riyadh", "Nairobi"}, {"Istanbul", "Amman"},   {"Dubai", "Tashkent"},
    {"Tehran", "Baghdad"},   {"Dubai", "Kolkata"},  {"Istanbul", "Moscow"},  {"Karachi", "Dhaka"},
};

// A colour for the routes of each hub; the point just reached shows white.
KYR::eVector4T<unsigned char> HubColour(std::string const& hub)
{
    if (hub == "Dubai")
        return KYR::eVector4T<unsigned char>(255, 190, 40, 255);
    if (hub == "Istanbul")
        return KYR::eVector4T<unsigned char>(255, 90, 70, 255);
    if (hub == "Cairo")
        return KYR::eVector4T<unsigned char>(60, 220, 255, 255);
    return KYR::eVector4T<unsigned char>(120, 255, 120, 255);
}
KYR::eVector4T<unsigned char> const kHead(255, 255, 255, 255);
KYR::eVector4T<unsigned char> const kGrey(110, 110, 120, 170);

// Points of the great circle from a to b, raised in an arc.
std::vector<KYR::eVector4T<double>> Arc(Gallery::City const& a, Gallery::City const& b)
{
    KYR::eVector3T<double> p = Gallery::GeoToWorld(a.lon, a.lat, 0.0).Normalized();
    KYR::eVector3T<double> q = Gallery::GeoToWorld(b.lon, b.lat, 0.0).Normalized();
    double angle = std::acos(std::max(-1.0, std::min(1.0, p.Dot(q))));
    std::vector<KYR::eVector4T<double>> out;
    for (int i = 0; i < kPoints; ++i)
    {
        double t = i / (double)(kPoints - 1);
        // Spherical interpolation between the two unit vectors.
        double s = std::sin(angle);
        KYR::eVector3T<double> v =
            s > 1e-9 ? p * (std::sin((1.0 - t) * angle) / s) + q * (std::sin(t * angle) / s) : p;
        double lat = std::asin(std::max(-1.0, std::min(1.0, v.z))) * Gallery::kRadToDeg;
        double lon = std::atan2(v.y, v.x) * Gallery::kRadToDeg;
        double height =
            kLift + kArc * angle * Gallery::kEarthRadius * std::sin(t * 3.141592653589793);
        out.push_back(KYR::eVector4T<double>(lon, lat, height, 0.0));
    }
    return out;
}

// The set and the thread that feeds it; the thread stops and is joined before the set goes.
struct GrowthFeed
{
    KYR::eRenderLineGrowSet set;
    std::thread worker;
    std::atomic<bool> stop{false};

    ~GrowthFeed()
    {
        stop = true;
        if (worker.joinable())
            worker.join();
    }

    // Steps every route forward by one point per step, the routes departing kStartEvery
    // steps apart, each with a white head. The returned future is ready once the first kHeadStart
    // updates are queued, so the first frame, which applies that many, always shows the same
    // moment.
    std::future<void> Start(std::vector<KYR::eVector4T<unsigned char>> colours)
    {
        std::vector<KYR::eGrowLine*> lines;
        for (int i = 0; i < set.GetCount(); ++i)
            lines.push_back(set.Get(i));
        std::promise<void> ready;
        std::future<void> started = ready.get_future();
        worker = std::thread(
            [this, lines, colours](std::promise<void> ready)
            {
                int queued = 0;
                bool signalled = false;
                int steps = kPoints + kStartEvery * (int)lines.size();
                for (int step = 0; step < steps && !stop; ++step)
                {
                    for (size_t r = 0; r < lines.size(); ++r)
                    {
                        int point = step - kStartEvery * (int)r;
                        if (point < 0 || point >= kPoints)
                            continue;
                        // The head moves on: the point it leaves takes the route's colour.
                        KYR::eVector4T<unsigned char> head = kHead, colour = colours[r];
                        set.Update(lines[r], point, point + 1 < kPoints ? head : colour);
                        if (point > 0)
                            set.Update(lines[r], point - 1, colour);
                        queued += point > 0 ? 2 : 1;
                    }
                    if (!signalled && queued >= kHeadStart)
                    {
                        signalled = true;
                        ready.set_value();
                    }
                    else if (signalled) // the rest streams in while frames are drawn
                        std::this_thread::sleep_for(std::chrono::milliseconds(2));
                }
                if (!signalled)
                    ready.set_value();
            },
            std::move(ready));
        return started;
    }
};

bool BuildLineGrow(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    std::vector<Gallery::City> cities = Gallery::Cities();
    std::map<std::string, Gallery::City> byName;
    for (Gallery::City const& c : cities)
        byName.emplace(c.name, c);
    scene.Camera().LookAt(50.0, 27.0, 8.5e6, 0.0, 0.0);
    Gallery::AddEarth(scene, keep, kSunLon, kSunLat);

    auto* feed = keep.Keep(new GrowthFeed());
    KYR::eRenderLineGrowSet& set = feed->set;
    KYR::eVector3T<double> anchor(50.0, 27.0, 0.0);
    set.SetSpatialRefType(1);
    set.SetPosition(anchor);
    set.SetPoolSize(kPoints * (int)(sizeof kRoutes / sizeof kRoutes[0]));
    // Positions are converted when a line is added, so the anchor's frame comes first.
    set.Create(&scene.Camera(), 0.0, &scene.Canvas());
    std::vector<KYR::eVector4T<unsigned char>> colours;
    for (Route const& r : kRoutes)
    {
        auto a = byName.find(r.from), b = byName.find(r.to);
        if (a == byName.end() || b == byName.end())
        {
            std::fprintf(stderr, "line-grow: no city \"%s\" or \"%s\" in %s\n", r.from, r.to,
                         Gallery::ZoneTablePath());
            continue;
        }
        KYR::eGrowLine line;
        line.m_fWidth = kWidth;
        line.m_cColor = kGrey;
        line.m_arPositions = Arc(a->second, b->second);
        if (set.Add(&line))
            colours.push_back(HubColour(r.from));
    }
    if (set.GetCount() == 0)
        return false;
    scene.Add(&set);
    feed->Start(colours).wait();
    return true;
}

Gallery::Register s_lineGrow({"line-grow",
                              "air routes between cities taking their colour point by point, "
                              "fed from a worker thread",
                              KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
                              BuildLineGrow});

} // namespace
