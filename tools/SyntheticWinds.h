// A synthetic global wind field: trade winds, westerlies and polar easterlies with slow
// waves, and a few cyclones, given analytically so that any grid can be sampled from it. The
// wind scenes read it directly, and the resource tool writes it as a wind picture, so that
// effects fed either way show the same winds.
//
// The wind picture covers the whole Earth in plate carree: column 0 starts at 180 W, row 0 at
// 90 N, samples at pixel centres. Red holds the eastward component u and green the northward
// v, each byte b standing for kMinimum + (kMaximum - kMinimum) * b / 255 metres per second;
// blue is 0 and alpha 255.
#pragma once
#include <algorithm>
#include <cmath>
#include <vector>

namespace Winds
{

double const kDegToRad = 0.017453292519943295;

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
    double phi = lat * kDegToRad;
    // Three cells per hemisphere: easterly trades, westerlies, polar easterlies.
    double band = -std::sin(6.0 * std::fabs(phi));
    u = band * (6.0 + 8.0 * std::pow(std::sin(2.0 * phi), 2)) * std::cos(phi * 0.5);
    v = -2.5 * std::sin(6.0 * phi) * std::cos(phi);
    // Slow waves along the westerlies.
    u += 3.0 * std::sin(lon * kDegToRad * 4.0) * std::cos(phi);
    v += 4.0 * std::cos(lon * kDegToRad * 5.0 + phi * 3.0) * std::pow(std::sin(2.0 * phi), 2);
    for (Vortex const& c : kVortices)
    {
        double dlon = std::remainder(lon - c.lon, 360.0); // across the date line too
        double dx = dlon * std::cos(c.lat * kDegToRad);
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

// The wind picture below the work path, its size and the range its bytes span (both
// components alike; the strongest cyclone stays inside it).
char const* const kPicturePath = "Resources/Weather/wind_uv.png";
int const kPictureWidth = 1024;
int const kPictureHeight = 512;
double const kMinimum = -50.0;
double const kMaximum = 50.0;

inline unsigned char ToByte(double value)
{
    double b = std::round((value - kMinimum) / (kMaximum - kMinimum) * 255.0);
    return (unsigned char)std::clamp(b, 0.0, 255.0);
}

// The wind picture as RGBA bytes, row 0 first.
inline std::vector<unsigned char> Picture(int width = kPictureWidth, int height = kPictureHeight)
{
    std::vector<unsigned char> px((size_t)width * height * 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            double u, v;
            Wind(-180.0 + (x + 0.5) * 360.0 / width, 90.0 - (y + 0.5) * 180.0 / height, u, v);
            unsigned char* p = &px[((size_t)y * width + x) * 4];
            p[0] = ToByte(u);
            p[1] = ToByte(v);
            p[2] = 0;
            p[3] = 255;
        }
    return px;
}

} // namespace Winds
