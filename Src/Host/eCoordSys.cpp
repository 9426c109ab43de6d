// Coordinate systems: projected systems over point arrays, and the conversions
// between geographic, map, logical and world coordinates.
#include "eCoordSys.h"
#include "eMathEngine.h"
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
double const kCircumference = 40075016.68557849;
double const kLevel0Resolution = kCircumference / 256.0;
int const kMaxLevel = 24;

// Samples per rectangle edge when a rectangle goes through a projection.
int const kRectEdgeSamples = 16;

void GrowRect(eRect2D& r, bool& first, ePoint2D const& p)
{
    if (first)
    {
        r = eRect2D(p.x, p.y, p.x, p.y);
        first = false;
        return;
    }
    r.left = std::min(r.left, p.x);
    r.right = std::max(r.right, p.x);
    r.top = std::max(r.top, p.y);
    r.bottom = std::min(r.bottom, p.y);
}

// Converts the border of a rectangle point by point and returns the bounds of what
// converted; an input that converts nowhere gives an empty rectangle.
template <typename Convert> eRect2D ConvertRect(eRect2D const& in, Convert convert)
{
    eRect2D out;
    bool first = true;
    for (int i = 0; i <= kRectEdgeSamples; ++i)
    {
        double f = (double)i / kRectEdgeSamples;
        double x = in.left + (in.right - in.left) * f;
        double y = in.bottom + (in.top - in.bottom) * f;
        ePoint2D border[4] = {ePoint2D(x, in.bottom), ePoint2D(x, in.top), ePoint2D(in.left, y),
                              ePoint2D(in.right, y)};
        for (ePoint2D& p : border)
            if (convert(p))
                GrowRect(out, first, p);
    }
    return out;
}
} // namespace

// ---------------------------------------------------------------- ePrjCoordSys

ePrjCoordSys::ePrjCoordSys() : m_Projection(PJ_PLATE_CARREE) {}

ePrjCoordSys::ePrjCoordSys(int type) : m_Projection(type) {}

ePrjCoordSys::~ePrjCoordSys() {}

unsigned char ePrjCoordSys::Forward(ePoint2D* points, int count)
{
    if (!points || count < 0)
    {
        std::fprintf(stderr, "ePrjCoordSys::Forward: no points given\n");
        return 0;
    }
    int failed = 0;
    for (int i = 0; i < count; ++i)
        if (!m_Projection.Forward(points[i]))
            ++failed;
    if (failed)
        std::fprintf(stderr,
                     "ePrjCoordSys::Forward: %d of %d points lie outside projection %d's domain\n",
                     failed, count, m_Projection.GetProjectionType());
    return failed ? 0 : 1;
}

unsigned char ePrjCoordSys::Inverse(ePoint2D* points, int count)
{
    if (!points || count < 0)
    {
        std::fprintf(stderr, "ePrjCoordSys::Inverse: no points given\n");
        return 0;
    }
    int failed = 0;
    for (int i = 0; i < count; ++i)
        if (!m_Projection.Inverse(points[i]))
            ++failed;
    if (failed)
        std::fprintf(stderr,
                     "ePrjCoordSys::Inverse: %d of %d points lie outside projection %d's domain\n",
                     failed, count, m_Projection.GetProjectionType());
    return failed ? 0 : 1;
}

void ePrjCoordSys::SetProjectionType(int type)
{
    m_Projection.SetProjectionType(type);
}

// ------------------------------------------------------------------- eCoordSys

eCoordSys::eCoordSys() : m_PrjCoordSys(PJ_PLATE_CARREE), m_eSceneMode(eSM_GLOBE) {}

eCoordSys::eCoordSys(int projectionType, eSceneMode mode)
    : m_PrjCoordSys(projectionType), m_eSceneMode(eSM_GLOBE)
{
    SetSceneMode(mode);
}

eCoordSys::~eCoordSys() {}

void eCoordSys::SetSceneMode(eSceneMode mode)
{
    if (mode != eSM_GLOBE && mode != eSM_PLANE)
    {
        std::fprintf(stderr, "eCoordSys: unknown scene mode %d\n", (int)mode);
        return;
    }
    m_eSceneMode = mode;
}

unsigned char eCoordSys::GeoToMap(ePoint2D const& geo, ePoint2D& map)
{
    ePoint2D p = geo;
    if (!m_PrjCoordSys.GetProjection()->Forward(p))
        return 0;
    map = p;
    return 1;
}

unsigned char eCoordSys::MapToGeo(ePoint2D const& map, ePoint2D& geo)
{
    ePoint2D p = map;
    if (!m_PrjCoordSys.GetProjection()->Inverse(p))
        return 0;
    geo = p;
    return 1;
}

void eCoordSys::LogicalToWorld(eSceneMode mode, ePoint2D const& logical, eVector3T<double>& world,
                               double height)
{
    if (mode == eSM_PLANE)
    {
        world = eVector3T<double>(logical.x, logical.y, height);
        return;
    }
    world = eMathEngine::SphericalToCartesian(logical.x * kDegToRad, logical.y * kDegToRad,
                                              kRadius + height);
}

void eCoordSys::WorldToLogical(eSceneMode mode, eVector3T<double> const& world, ePoint2D& logical)
{
    if (mode == eSM_PLANE)
    {
        logical = ePoint2D(world.x, world.y);
        return;
    }
    eVector3T<double> s = eMathEngine::CartesianToSpherical(world.x, world.y, world.z);
    logical = ePoint2D(s.x * kRadToDeg, s.y * kRadToDeg);
}

double eCoordSys::PixelToWorld(eSceneMode, double pixels, double resolution)
{
    return pixels * resolution;
}

double eCoordSys::GetRefResolution()
{
    return kLevel0Resolution;
}

eRect2D eCoordSys::GetBounds()
{
    return m_PrjCoordSys.GetProjection()->GetMapBounds();
}

eRect2D eCoordSys::GetLogicalBounds()
{
    if (m_eSceneMode == eSM_GLOBE)
        return eRect2D(-180.0, 90.0, 180.0, -90.0);
    return GetBounds();
}

eRect2D eCoordSys::GetIndexBounds()
{
    if (m_eSceneMode == eSM_GLOBE)
        return eRect2D(-180.0, 180.0, 180.0, -180.0);
    double half = kCircumference * 0.5;
    return eRect2D(-half, half, half, -half);
}

int eCoordSys::ResolutionToLevel(double resolution)
{
    if (!(resolution > 0.0))
    {
        // Zero or negative: infinitely fine; NaN: nothing better than the top.
        return resolution == resolution ? kMaxLevel : 0;
    }
    double level = std::round(std::log2(kLevel0Resolution / resolution));
    return (int)std::max(0.0, std::min((double)kMaxLevel, level));
}

double eCoordSys::LevelToResolution(int level)
{
    return std::ldexp(kLevel0Resolution, -level);
}

void eCoordSys::LogicalToMapPoint(ePoint2D& logical, ePoint2D& map)
{
    if (m_eSceneMode == eSM_PLANE)
    {
        map = logical;
        return;
    }
    GeoToMap(ePoint2D(logical), map);
}

void eCoordSys::LogicalToMapRect(eRect2D& logical, eRect2D& map)
{
    if (m_eSceneMode == eSM_PLANE)
    {
        map = logical;
        return;
    }
    eProjection const* prj = m_PrjCoordSys.GetProjection();
    map = ConvertRect(logical, [prj](ePoint2D& p) { return prj->Forward(p) != 0; });
}

double eCoordSys::MapLengthToLogical(double length)
{
    if (m_eSceneMode == eSM_PLANE)
        return length;
    return length / (kRadius * kDegToRad);
}

void eCoordSys::MapToLogicalPoint(ePoint2D& map, ePoint2D& logical)
{
    if (m_eSceneMode == eSM_PLANE)
    {
        logical = map;
        return;
    }
    MapToGeo(ePoint2D(map), logical);
}

void eCoordSys::MapToLogicalRect(eRect2D& map, eRect2D& logical)
{
    if (m_eSceneMode == eSM_PLANE)
    {
        logical = map;
        return;
    }
    // The extent's own corners may lie outside what the inverse can reach (the corners of a
    // conic's fan), and the Mercators' edges stand for everything beyond 85.05 degrees, so
    // a rectangle over the whole extent is taken as the whole globe.
    eRect2D extent = GetBounds();
    double tolerance = 1e-9 * std::max(extent.Width(), std::fabs(extent.Height()));
    if (map.left <= extent.left + tolerance && map.right >= extent.right - tolerance &&
        map.top >= extent.top - tolerance && map.bottom <= extent.bottom + tolerance)
    {
        logical = GetLogicalBounds();
        return;
    }
    eProjection const* prj = m_PrjCoordSys.GetProjection();
    logical = ConvertRect(map, [prj](ePoint2D& p) { return prj->Inverse(p) != 0; });
}

} // namespace KYR
