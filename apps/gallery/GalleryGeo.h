// Small geographic helpers for building scene data.
#pragma once
#include "eMathEngine.h"
#include "eVector3.h"
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace Gallery
{

double const kEarthRadius = 6378137.0;
double const kDegToRad = 0.017453292519943295;
double const kRadToDeg = 57.29577951308232;

// World position of a geographic point (degrees, metres above the sphere).
inline KYR::eVector3T<double> GeoToWorld(double lon, double lat, double height)
{
    return KYR::eMathEngine::SphericalToCartesian(lon * kDegToRad, lat * kDegToRad,
                                                  kEarthRadius + height);
}

// The point reached from (lon, lat) going `distance` metres along a great circle
// with the given bearing (degrees clockwise from north).
inline void Destination(double lon, double lat, double bearing, double distance, double& outLon,
                        double& outLat)
{
    double d = distance / kEarthRadius, b = bearing * kDegToRad;
    double p1 = lat * kDegToRad, l1 = lon * kDegToRad;
    double p2 = std::asin(std::sin(p1) * std::cos(d) + std::cos(p1) * std::sin(d) * std::cos(b));
    double l2 = l1 + std::atan2(std::sin(b) * std::sin(d) * std::cos(p1),
                                std::cos(d) - std::sin(p1) * std::sin(p2));
    outLon = l2 * kRadToDeg;
    outLat = p2 * kRadToDeg;
}

// A city of the time-zone table that Debian's tzdata installs (zone1970.tab): its
// coordinates and the name of its zone's principal city ("Europe/Paris" gives "Paris",
// "America/Argentina/Buenos_Aires" gives "Buenos Aires").
struct City
{
    std::string name;
    std::string zone;
    double lon = 0.0, lat = 0.0;
};

inline char const* ZoneTablePath()
{
    return "/usr/share/zoneinfo/zone1970.tab";
}

// Reads one ISO 6709 coordinate (+DDMM, +DDMMSS, +DDDMM or +DDDMMSS) of `degreeDigits`
// digits of degrees; advances p. False on a malformed field.
inline bool ReadIso6709(char const*& p, int degreeDigits, double& value)
{
    if (*p != '+' && *p != '-')
        return false;
    double sign = *p == '-' ? -1.0 : 1.0;
    ++p;
    char const* start = p;
    while (*p >= '0' && *p <= '9')
        ++p;
    int n = int(p - start);
    if (n != degreeDigits + 2 && n != degreeDigits + 4)
        return false;
    auto field = [&](int at, int len)
    {
        int v = 0;
        for (int i = 0; i < len; ++i)
            v = v * 10 + (start[at + i] - '0');
        return v;
    };
    value = field(0, degreeDigits) + field(degreeDigits, 2) / 60.0;
    if (n == degreeDigits + 4)
        value += field(degreeDigits + 2, 2) / 3600.0;
    value *= sign;
    return true;
}

// Every city of the table, in its order; empty (with a message on stderr) when the file is
// missing or unreadable. Malformed lines are skipped.
inline std::vector<City> Cities()
{
    std::vector<City> out;
    std::FILE* f = std::fopen(ZoneTablePath(), "r");
    if (!f)
    {
        std::fprintf(stderr, "gallery: cannot read %s; install the Debian package tzdata\n",
                     ZoneTablePath());
        return out;
    }
    char line[512];
    while (std::fgets(line, sizeof line, f))
    {
        if (line[0] == '#')
            continue;
        char const* p = line;
        while (*p && *p != '\t')
            ++p; // country codes
        if (*p++ != '\t')
            continue;
        City c;
        if (!ReadIso6709(p, 2, c.lat) || !ReadIso6709(p, 3, c.lon) || *p++ != '\t')
            continue;
        while (*p && *p != '\t' && *p != '\n' && *p != '\r')
            c.zone += *p++;
        std::string::size_type slash = c.zone.rfind('/');
        c.name = slash == std::string::npos ? c.zone : c.zone.substr(slash + 1);
        for (char& ch : c.name)
            if (ch == '_')
                ch = ' ';
        if (!c.zone.empty())
            out.push_back(c);
    }
    std::fclose(f);
    return out;
}

} // namespace Gallery
