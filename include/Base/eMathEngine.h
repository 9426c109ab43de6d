// Spherical coordinates of the globe.
//
// Convention used everywhere in this code base (angles in radians):
//     x = r cos(lat) cos(lon)
//     y = r cos(lat) sin(lon)
//     z = r sin(lat)
// so (lon 0, lat 0, r) is (r, 0, 0), longitude 90 degrees east is +y and the north
// pole is +z. CartesianToSpherical returns (lon, lat, r) with lon in (-pi, pi] and
// lat in [-pi/2, pi/2]; at the origin and on the axis the longitude is 0.
#pragma once
#include "eVector3.h"
#include <cmath>

namespace KYR
{

class eMathEngine
{
public:
    static constexpr double PI = 3.14159265358979323846;
    static constexpr double EARTH_RADIUS = 6378137.0;                // metres, equatorial
    static constexpr double EARTH_CIRCUMFERENCE = 40075016.68557849; // metres
    static constexpr double DEG_TO_RAD = 0.017453292519943295;
    static constexpr double RAD_TO_DEG = 57.29577951308232;

    static eVector3T<double> SphericalToCartesian(double lon, double lat, double radius)
    {
        double c = std::cos(lat);
        return eVector3T<double>(radius * c * std::cos(lon), radius * c * std::sin(lon),
                                 radius * std::sin(lat));
    }

    static eVector3T<double> CartesianToSpherical(double x, double y, double z)
    {
        double h = std::sqrt(x * x + y * y);
        double r = std::sqrt(h * h + z * z);
        double lon = (h > 0.0) ? std::atan2(y, x) : 0.0;
        if (lon <= -PI) // atan2 gives -pi for y = -0.0; keep the half-open range
            lon = PI;
        double lat = (r > 0.0) ? std::atan2(z, h) : 0.0;
        return eVector3T<double>(lon, lat, r);
    }
};

} // namespace KYR
