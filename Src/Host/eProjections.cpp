// Map projections: geographic degrees <-> map metres.
// Spherical formulas of the conics follow the usual forms of Lambert's conformal
// and Albers' equal-area cones; the ellipsoidal Mercator inverts by fixed-point
// iteration on the latitude.
#include "eCoordSys.h"
#include <algorithm>
#include <cmath>
#include <cstdio>

namespace KYR
{

namespace
{
double const kRadius = 6378137.0;
double const kDegToRad = 0.017453292519943295;
double const kRadToDeg = 57.29577951308232;
double const kPi = 3.14159265358979323846;
// Latitude where the spherical Mercator's y equals half the equator.
double const kMercatorMaxLat = 85.0511287798066;
// WGS84 first eccentricity.
double const kWgs84E = 0.0818191908426215;

double Clamp(double v, double lo, double hi)
{
    return std::max(lo, std::min(hi, v));
}

// Longitude difference folded into [-180, 180].
double WrapDegrees(double d)
{
    d = std::fmod(d + 180.0, 360.0);
    if (d < 0.0)
        d += 360.0;
    return d - 180.0;
}

double MercatorY(double latRad)
{
    return kRadius * std::log(std::tan(kPi * 0.25 + latRad * 0.5));
}

double EllipsoidMercatorY(double latRad)
{
    double es = kWgs84E * std::sin(latRad);
    return kRadius * std::log(std::tan(kPi * 0.25 + latRad * 0.5) *
                              std::pow((1.0 - es) / (1.0 + es), kWgs84E * 0.5));
}

double EllipsoidMercatorLat(double y)
{
    double t = std::exp(-y / kRadius);
    double lat = kPi * 0.5 - 2.0 * std::atan(t);
    for (int i = 0; i < 30; ++i)
    {
        double es = kWgs84E * std::sin(lat);
        double next =
            kPi * 0.5 - 2.0 * std::atan(t * std::pow((1.0 - es) / (1.0 + es), kWgs84E * 0.5));
        bool done = std::fabs(next - lat) < 1e-14;
        lat = next;
        if (done)
            break;
    }
    return lat;
}

double HalfTan(double latRad)
{
    return std::tan(kPi * 0.25 + latRad * 0.5);
}
} // namespace

eProjection::eProjection() : eProjection(PJ_PLATE_CARREE) {}

eProjection::eProjection(int type)
    : m_nType(PJ_PLATE_CARREE), m_dCentralMeridian(0.0), m_dOriginLatitude(0.0),
      m_dStandardParallel1(25.0), m_dStandardParallel2(47.0), m_dConeN(0.0), m_dConeF(0.0),
      m_dConeRho0(0.0), m_bBoundsValid(false)
{
    if (IsSupportedType(type))
        m_nType = type;
    else
        std::fprintf(stderr, "eProjection: unknown projection type %d, using plate carree\n", type);
    ResetParameters();
}

eProjection::~eProjection() {}

unsigned char eProjection::IsSupportedType(int type)
{
    return type == PJ_PLATE_CARREE || type == PJ_MERCATOR || type == PJ_SPHERE_MERCATOR ||
           type == PJ_LAMBERT_CONFORMAL || type == PJ_ALBERS;
}

unsigned char eProjection::SetProjectionType(int type)
{
    if (type <= 0)
    {
        std::fprintf(stderr, "eProjection: invalid projection type %d, keeping %d\n", type,
                     m_nType);
        return 0;
    }
    if (!IsSupportedType(type))
    {
        // Other codes of the projection library are kept, so that effects see the
        // type; this host cannot convert with them.
        std::fprintf(stderr,
                     "eProjection: projection type %d is not supported here; conversions fail\n",
                     type);
        m_nType = type;
        m_bBoundsValid = false;
        return 0;
    }
    m_nType = type;
    ResetParameters();
    return 1;
}

void eProjection::ResetParameters()
{
    bool conic = m_nType == PJ_LAMBERT_CONFORMAL || m_nType == PJ_ALBERS;
    m_dCentralMeridian = conic ? 105.0 : 0.0;
    m_dOriginLatitude = 0.0;
    m_dStandardParallel1 = 25.0;
    m_dStandardParallel2 = 47.0;
    UpdateConstants();
}

void eProjection::SetCentralMeridian(double lon)
{
    if (!std::isfinite(lon))
    {
        std::fprintf(stderr, "eProjection: central meridian is not a number\n");
        return;
    }
    m_dCentralMeridian = lon;
    UpdateConstants();
}

void eProjection::SetOriginLatitude(double lat)
{
    if (!(lat >= -90.0 && lat <= 90.0))
    {
        std::fprintf(stderr, "eProjection: origin latitude %g is outside [-90, 90]\n", lat);
        return;
    }
    m_dOriginLatitude = lat;
    UpdateConstants();
}

unsigned char eProjection::SetStandardParallels(double lat1, double lat2)
{
    bool valid =
        lat1 > -90.0 && lat1 < 90.0 && lat2 > -90.0 && lat2 < 90.0 && std::fabs(lat1 + lat2) > 1e-9;
    if (!valid)
    {
        std::fprintf(stderr, "eProjection: standard parallels %g and %g give no cone\n", lat1,
                     lat2);
        return 0;
    }
    m_dStandardParallel1 = lat1;
    m_dStandardParallel2 = lat2;
    UpdateConstants();
    return 1;
}

void eProjection::UpdateConstants()
{
    m_bBoundsValid = false;
    double p1 = m_dStandardParallel1 * kDegToRad;
    double p2 = m_dStandardParallel2 * kDegToRad;
    double p0 = m_dOriginLatitude * kDegToRad;
    if (m_nType == PJ_LAMBERT_CONFORMAL)
    {
        double n = std::fabs(p1 - p2) < 1e-12 ? std::sin(p1)
                                              : std::log(std::cos(p1) / std::cos(p2)) /
                                                    std::log(HalfTan(p2) / HalfTan(p1));
        m_dConeN = n;
        m_dConeF = std::cos(p1) * std::pow(HalfTan(p1), n) / n;
        m_dConeRho0 = kRadius * m_dConeF / std::pow(HalfTan(p0), n);
    }
    else if (m_nType == PJ_ALBERS)
    {
        double n = (std::sin(p1) + std::sin(p2)) * 0.5;
        m_dConeN = n;
        m_dConeF = std::cos(p1) * std::cos(p1) + 2.0 * n * std::sin(p1);
        m_dConeRho0 = kRadius * std::sqrt(m_dConeF - 2.0 * n * std::sin(p0)) / n;
    }
}

unsigned char eProjection::Forward(ePoint2D& point) const
{
    double lon = point.x, lat = point.y;
    if (!IsSupportedType(m_nType) || !std::isfinite(lon) || !(lat >= -90.0 && lat <= 90.0))
        return 0;
    double dLon = (lon - m_dCentralMeridian) * kDegToRad;
    switch (m_nType)
    {
    case PJ_PLATE_CARREE:
        point = ePoint2D(kRadius * dLon, kRadius * lat * kDegToRad);
        return 1;
    case PJ_SPHERE_MERCATOR:
        lat = Clamp(lat, -kMercatorMaxLat, kMercatorMaxLat);
        point = ePoint2D(kRadius * dLon, MercatorY(lat * kDegToRad));
        return 1;
    case PJ_MERCATOR:
        lat = Clamp(lat, -kMercatorMaxLat, kMercatorMaxLat);
        point = ePoint2D(kRadius * dLon, EllipsoidMercatorY(lat * kDegToRad));
        return 1;
    default:
        break;
    }
    // The conics: the cone cannot reach the pole on the far side of its apex.
    double n = m_dConeN;
    double phi = lat * kDegToRad;
    double theta = n * WrapDegrees(lon - m_dCentralMeridian) * kDegToRad;
    double rho = 0.0;
    if (m_nType == PJ_LAMBERT_CONFORMAL)
    {
        double t = HalfTan(phi);
        if ((n > 0.0 && lat <= -90.0 + 1e-9) || (n < 0.0 && lat >= 90.0 - 1e-9))
            return 0;
        rho = (n > 0.0 && lat >= 90.0) || (n < 0.0 && lat <= -90.0)
                  ? 0.0
                  : kRadius * m_dConeF / std::pow(t, n);
    }
    else
    {
        double q = m_dConeF - 2.0 * n * std::sin(phi);
        rho = kRadius * std::sqrt(std::max(0.0, q)) / n;
    }
    point = ePoint2D(rho * std::sin(theta), m_dConeRho0 - rho * std::cos(theta));
    return 1;
}

unsigned char eProjection::Inverse(ePoint2D& point) const
{
    double x = point.x, y = point.y;
    if (!IsSupportedType(m_nType) || !std::isfinite(x) || !std::isfinite(y))
        return 0;
    switch (m_nType)
    {
    case PJ_PLATE_CARREE:
    {
        double lat = y / kRadius * kRadToDeg;
        if (lat < -90.0 - 1e-9 || lat > 90.0 + 1e-9)
            return 0;
        point = ePoint2D(x / kRadius * kRadToDeg + m_dCentralMeridian, Clamp(lat, -90.0, 90.0));
        return 1;
    }
    case PJ_SPHERE_MERCATOR:
    {
        double lat = (kPi * 0.5 - 2.0 * std::atan(std::exp(-y / kRadius))) * kRadToDeg;
        point = ePoint2D(x / kRadius * kRadToDeg + m_dCentralMeridian,
                         Clamp(lat, -kMercatorMaxLat, kMercatorMaxLat));
        return 1;
    }
    case PJ_MERCATOR:
    {
        double lat = EllipsoidMercatorLat(y) * kRadToDeg;
        point = ePoint2D(x / kRadius * kRadToDeg + m_dCentralMeridian,
                         Clamp(lat, -kMercatorMaxLat, kMercatorMaxLat));
        return 1;
    }
    default:
        break;
    }
    double n = m_dConeN;
    double s = n < 0.0 ? -1.0 : 1.0;
    double dy = m_dConeRho0 - y;
    double rho = s * std::sqrt(x * x + dy * dy);
    double theta = std::atan2(s * x, s * dy);
    double phi = 0.0;
    if (m_nType == PJ_LAMBERT_CONFORMAL)
    {
        if (rho == 0.0)
            phi = s * kPi * 0.5;
        else
            phi = 2.0 * std::atan(std::pow(kRadius * m_dConeF / rho, 1.0 / n)) - kPi * 0.5;
    }
    else
    {
        double r = rho * n / kRadius;
        double sinPhi = (m_dConeF - r * r) / (2.0 * n);
        if (sinPhi < -1.0 - 1e-9 || sinPhi > 1.0 + 1e-9)
            return 0;
        phi = std::asin(Clamp(sinPhi, -1.0, 1.0));
    }
    double lon = WrapDegrees(theta / n * kRadToDeg + m_dCentralMeridian);
    point = ePoint2D(lon, phi * kRadToDeg);
    return 1;
}

eRect2D eProjection::GetMapBounds() const
{
    if (m_bBoundsValid)
        return m_rcMapBounds;
    double half = kRadius * kPi;
    eRect2D r;
    switch (m_nType)
    {
    case PJ_PLATE_CARREE:
        r = eRect2D(-half, half * 0.5, half, -half * 0.5);
        break;
    case PJ_SPHERE_MERCATOR:
    case PJ_MERCATOR:
    {
        ePoint2D top(0.0, 90.0);
        Forward(top);
        r = eRect2D(-half, top.y, half, -top.y);
        break;
    }
    default:
    {
        // The conics: sample the meridians and parallels, leaving out the pole
        // opposite the apex (it lies at infinity for Lambert).
        bool first = true;
        for (int i = 0; i <= 72; ++i)
            for (int j = 0; j <= 36; ++j)
            {
                double lat = Clamp(-90.0 + j * 5.0, -89.0, 89.0);
                ePoint2D p(m_dCentralMeridian - 180.0 + i * 5.0, lat);
                if (!Forward(p))
                    continue;
                if (first)
                    r = eRect2D(p.x, p.y, p.x, p.y);
                first = false;
                r.left = std::min(r.left, p.x);
                r.right = std::max(r.right, p.x);
                r.top = std::max(r.top, p.y);
                r.bottom = std::min(r.bottom, p.y);
            }
        break;
    }
    }
    m_rcMapBounds = r;
    m_bBoundsValid = true;
    return r;
}

} // namespace KYR
