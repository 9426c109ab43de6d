// Position of the sun for the host's lighting.
#pragma once
#include "eVector3.h"

namespace KYR
{
namespace Host
{

// World position of the sun, 1.496e11 metres from the earth's centre, for a date
// and a time of day in hours UTC. The direction points at the subsolar point:
// latitude = solar declination, longitude = -15 * (hourUtc - 12) - equation of time
// (in degrees), from the usual low-precision series in the fractional year (good to
// a few tenths of a degree). Out-of-range months and days are reported on stderr
// and clamped.
eVector3T<double> SunWorldPosition(int year, int month, int day, double hourUtc);

} // namespace Host
} // namespace KYR
