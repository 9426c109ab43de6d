#include "eScatterPoint.h"

namespace KYR
{

eScatterPoint::eScatterPoint() : x(0.0), y(0.0), z(0.0), w(0.0) {}

eScatterPoint::eScatterPoint(int category, double lon, double lat, double height, double visible)
    : id(category), x(lon), y(lat), z(height), w(visible)
{
}

} // namespace KYR
