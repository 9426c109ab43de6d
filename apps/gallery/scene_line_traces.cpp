// Scene "line-traces": flights between the cities of the time-zone table, each along its
// great circle, drawn as a thin bright fore line on a wide translucent back line that fade
// along the tail. A second thread streams the flights into the set while the frames run,
// as an application would hand in tracks arriving from a feed.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eRenderListLineTraceSet.h"
#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <random>
#include <thread>

namespace
{

double const kViewLon = 20.0, kViewLat = 38.0;
int const kFlights = 360;
double const kSpeed = 250.0;       // metres a second, an airliner at cruise
double const kStepSeconds = 120.0; // one reported position every two minutes
double const kDepartures = 12.0 * 3600.0;
float const kStartClock = 7.0f * 3600.0f;
int const kWarmUpFrames = 40;

// Unit vector of a geographic point and back.
KYR::eVector3T<double> Unit(double lon, double lat)
{
    return Gallery::GeoToWorld(lon, lat, -Gallery::kEarthRadius + 1.0);
}

void Geo(KYR::eVector3T<double> const& v, double& lon, double& lat)
{
    lon = std::atan2(v.y, v.x) * Gallery::kRadToDeg;
    lat = std::atan2(v.z, std::sqrt(v.x * v.x + v.y * v.y)) * Gallery::kRadToDeg;
}

// Angle between two unit vectors, in radians.
double Angle(KYR::eVector3T<double> const& a, KYR::eVector3T<double> const& b)
{
    double d = a.x * b.x + a.y * b.y + a.z * b.z;
    return std::acos(d < -1.0 ? -1.0 : (d > 1.0 ? 1.0 : d));
}

struct Flight
{
    Gallery::City const* from;
    Gallery::City const* to;
    double departure;
};

// Pairs of cities near enough to the view to be seen, between 1,500 and 9,000 km apart.
std::vector<Flight> PlanFlights(std::vector<Gallery::City> const& cities)
{
    std::vector<Gallery::City const*> seen;
    KYR::eVector3T<double> centre = Unit(kViewLon, kViewLat);
    for (Gallery::City const& c : cities)
        if (Angle(Unit(c.lon, c.lat), centre) < 70.0 * Gallery::kDegToRad)
            seen.push_back(&c);
    std::vector<Flight> flights;
    if (seen.size() < 2)
        return flights;
    std::mt19937 rng(11);
    std::uniform_int_distribution<size_t> pick(0, seen.size() - 1);
    std::uniform_real_distribution<double> departure(0.0, kDepartures);
    while ((int)flights.size() < kFlights)
    {
        Gallery::City const *a = seen[pick(rng)], *b = seen[pick(rng)];
        double km = Angle(Unit(a->lon, a->lat), Unit(b->lon, b->lat)) * Gallery::kEarthRadius / 1e3;
        if (km > 1500.0 && km < 9000.0)
            flights.push_back(Flight{a, b, departure(rng)});
    }
    std::sort(flights.begin(), flights.end(),
              [](Flight const& x, Flight const& y) { return x.departure < y.departure; });
    return flights;
}

// The track of a flight: positions along the great circle at cruise speed and height.
void FillTrack(Flight const& f, KYR::eTraceList& list)
{
    KYR::eVector3T<double> a = Unit(f.from->lon, f.from->lat), b = Unit(f.to->lon, f.to->lat);
    double angle = Angle(a, b), seconds = angle * Gallery::kEarthRadius / kSpeed;
    int steps = (int)std::ceil(seconds / kStepSeconds);
    list.SetSpatialRefType(1);
    std::vector<KYR::eVector4T<double>>& positions = list.GetPositions();
    for (int i = 0; i <= steps; ++i)
    {
        double u = (double)i / steps, s = std::sin(angle);
        double wa = std::sin((1.0 - u) * angle) / s, wb = std::sin(u * angle) / s;
        double lon, lat;
        Geo(KYR::eVector3T<double>(wa * a.x + wb * b.x, wa * a.y + wb * b.y, wa * a.z + wb * b.z),
            lon, lat);
        // Climb and descent over the first and last tenth of the way.
        double height = 11000.0 * std::min(1.0, std::min(u, 1.0 - u) * 10.0);
        positions.push_back(KYR::eVector4T<double>(lon, lat, height, f.departure + u * seconds));
    }
}

// The set and the thread that feeds it: the feed is joined, and the set leaves the scene,
// before the set goes.
struct Feed
{
    KYR::Host::eScene* scene = nullptr;
    std::unique_ptr<KYR::eRenderListLineTraceSet> set;
    std::thread producer;
    ~Feed()
    {
        if (producer.joinable())
            producer.join();
        if (scene && set)
            scene->Remove(set.get());
    }
};

bool BuildLineTraces(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    std::vector<Gallery::City> cities = Gallery::Cities();
    if (cities.empty())
        return false;
    scene.Camera().LookAt(kViewLon, kViewLat, 1.7e7, 0.0, 0.0);
    Gallery::AddEarth(scene, keep, kViewLon, kViewLat + 10.0);

    auto* feed = keep.Keep(new Feed());
    feed->scene = &scene;
    feed->set.reset(new KYR::eRenderListLineTraceSet());
    KYR::eRenderListLineTraceSet& set = *feed->set;
    set.SetPoolSize(1024);
    set.SetTraceSize(128);
    set.SetTraceTime(2.0f * 3600.0f);
    set.SetSpeedPerFrame(60.0f);
    set.SetEnableBackLine(1);
    set.SetBackColor(KYR::eVector4T<unsigned char>(255, 120, 30, 150));
    set.SetBackLineWidth(6.0f);
    set.SetForeColor(KYR::eVector4T<unsigned char>(255, 250, 215, 255));
    set.SetForeLineWidth(2.0f);
    set.SetLineSmooth(1);
    set.SetEnableDepthTest(1);
    KYR::eVector3T<double> anchor(kViewLon, kViewLat, 0.0);
    set.SetSpatialRefType(1);
    set.SetPosition(anchor);
    set.SetCurTime(kStartClock);
    scene.Add(&set);

    // The feed hands the flights in by departure, a few at a time, while frames are drawn.
    std::vector<Flight> flights = PlanFlights(cities);
    feed->producer = std::thread(
        [&set, flights]()
        {
            for (size_t i = 0; i < flights.size(); ++i)
            {
                KYR::eTraceList* list = set.CreateTraceList();
                FillTrack(flights[i], *list);
                set.AddTraceList(list);
                if (i % 25 == 24)
                    std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
        });
    for (int f = 0; f < kWarmUpFrames; ++f)
        scene.RenderFrame();
    feed->producer.join();
    // Lists bound in a frame are first advanced in the next: two more bring in the last.
    scene.RenderFrame();
    scene.RenderFrame();
    return true;
}

Gallery::Register s_lineTraces({"line-traces",
                                "flights between cities along great circles, fore and back lines "
                                "streamed from a second thread",
                                KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
                                BuildLineTraces});

} // namespace
