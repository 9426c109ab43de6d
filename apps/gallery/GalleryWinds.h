// A synthetic global wind field for the wind scenes: trade winds, westerlies and polar
// easterlies with slow waves, and a few cyclones, given analytically so that any grid can
// be sampled from it.
#pragma once
#include "GalleryGeo.h"
#include "ePoint.h"
#include <cmath>
#include <vector>

namespace Gallery
{

struct Vortex
{
    double lon, lat, radiusDeg, maxSpeed; // maxSpeed > 0 turns counter-clockwise
};

Vortex const kVortices[] = {{135.0, 20.0, 4.0, 42.0},    {-65.0, 26.0, 4.0, 36.0},
                            {85.0, -14.0, 3.5, -32.0},   {-30.0, 56.0, 9.0, 18.0},
                            {165.0, -52.0, 10.0, -20.0}, {150.0, 42.0, 8.0, 16.0}};

// Wind (u east, v north) in m/s at a point in degrees.
inline void Wind(double lon, double lat, double& u, double& v)
{
    double phi = lat * Gallery::kDegToRad;
    // Three cells per hemisphere: easterly trades, westerlies, polar easterlies.
    double band = -std::sin(6.0 * std::fabs(phi));
    u = band * (6.0 + 8.0 * std::pow(std::sin(2.0 * phi), 2)) * std::cos(phi * 0.5);
    v = -2.5 * std::sin(6.0 * phi) * std::cos(phi);
    // Slow waves along the westerlies.
    u += 3.0 * std::sin(lon * Gallery::kDegToRad * 4.0) * std::cos(phi);
    v += 4.0 * std::cos(lon * Gallery::kDegToRad * 5.0 + phi * 3.0) *
         std::pow(std::sin(2.0 * phi), 2);
    for (Vortex const& c : kVortices)
    {
        double dlon = std::remainder(lon - c.lon, 360.0); // across the date line too
        double dx = dlon * std::cos(c.lat * Gallery::kDegToRad);
        double dy = lat - c.lat;
        double r = std::sqrt(dx * dx + dy * dy) / c.radiusDeg;
        if (r < 1e-6 || r > 8.0)
            continue;
        double speed = r < 1.0 ? r : std::pow(1.0 / r, 0.7);
        speed *= c.maxSpeed * (r > 4.0 ? (8.0 - r) / 4.0 : 1.0);
        double d = std::sqrt(dx * dx + dy * dy);
        // Tangential, with a little inflow.
        u += speed * (-dy / d) - 0.2 * speed * dx / d;
        v += speed * (dx / d) - 0.2 * speed * dy / d;
    }
}

// The field on a 1-degree grid from (-180, 90): 361 x 181 vectors, north row first, as
// weather grids usually come.
int const kWindColumns = 361;
int const kWindRows = 181;
inline std::vector<KYR::ePoint2D> GlobalWinds()
{
    std::vector<KYR::ePoint2D> winds;
    winds.reserve((size_t)kWindColumns * kWindRows);
    for (int j = 0; j < kWindRows; ++j)
        for (int i = 0; i < kWindColumns; ++i)
        {
            double u, v;
            Wind(-180.0 + i, 90.0 - j, u, v);
            winds.push_back(KYR::ePoint2D(u, v));
        }
    return winds;
}

} // namespace Gallery
