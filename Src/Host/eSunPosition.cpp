// Low-precision solar position from the fractional year: declination and equation of
// time as short Fourier series.
#include "eSunPosition.h"
#include "eMathEngine.h"
#include <algorithm>
#include <cmath>
#include <cstdio>

namespace KYR
{
namespace Host
{

namespace
{
double const kSunDistance = 1.496e11;

bool IsLeapYear(int year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int DaysInMonth(int year, int month)
{
    static int const kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}
} // namespace

eVector3T<double> SunWorldPosition(int year, int month, int day, double hourUtc)
{
    if (month < 1 || month > 12)
    {
        std::fprintf(stderr, "SunWorldPosition: month %d is outside 1..12, clamped\n", month);
        month = std::max(1, std::min(12, month));
    }
    int last = DaysInMonth(year, month);
    if (day < 1 || day > last)
    {
        std::fprintf(stderr, "SunWorldPosition: day %d is outside 1..%d, clamped\n", day, last);
        day = std::max(1, std::min(last, day));
    }
    if (!std::isfinite(hourUtc))
    {
        std::fprintf(stderr, "SunWorldPosition: the hour is not a number, using noon\n");
        hourUtc = 12.0;
    }
    int dayOfYear = day;
    for (int m = 1; m < month; ++m)
        dayOfYear += DaysInMonth(year, m);
    double daysInYear = IsLeapYear(year) ? 366.0 : 365.0;
    double pi = eMathEngine::PI;
    double g = 2.0 * pi / daysInYear * (dayOfYear - 1 + (hourUtc - 12.0) / 24.0);

    // Equation of time in minutes and declination in radians.
    double eqTime = 229.18 * (0.000075 + 0.001868 * std::cos(g) - 0.032077 * std::sin(g) -
                              0.014615 * std::cos(2.0 * g) - 0.040849 * std::sin(2.0 * g));
    double decl = 0.006918 - 0.399912 * std::cos(g) + 0.070257 * std::sin(g) -
                  0.006758 * std::cos(2.0 * g) + 0.000907 * std::sin(2.0 * g) -
                  0.002697 * std::cos(3.0 * g) + 0.00148 * std::sin(3.0 * g);

    double lonDeg = -15.0 * (hourUtc - 12.0 + eqTime / 60.0);
    lonDeg = std::fmod(lonDeg + 180.0, 360.0);
    if (lonDeg < 0.0)
        lonDeg += 360.0;
    lonDeg -= 180.0;
    return eMathEngine::SphericalToCartesian(lonDeg * eMathEngine::DEG_TO_RAD, decl, kSunDistance);
}

} // namespace Host
} // namespace KYR
