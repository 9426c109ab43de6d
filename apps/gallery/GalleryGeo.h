// Small geographic helpers for building scene data.
#pragma once
#include "eMathEngine.h"
#include "eVector3.h"
#include <cmath>

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

} // namespace Gallery
