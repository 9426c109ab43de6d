// Projections, coordinate systems, levels and the sun's position.
#include "eCoordSys.h"
#include "eSunPosition.h"
#include <gtest/gtest.h>
#include <cmath>

using namespace KYR;

namespace
{
double const kR = 6378137.0;
double const kD2R = 0.017453292519943295;

double LonDiff(double a, double b)
{
    return std::remainder(a - b, 360.0);
}

// Map distance between two geographic points through a projection.
double MapDistance(eProjection const& prj, ePoint2D a, ePoint2D b)
{
    EXPECT_TRUE(prj.Forward(a));
    EXPECT_TRUE(prj.Forward(b));
    return std::hypot(a.x - b.x, a.y - b.y);
}
} // namespace

class ProjectionRoundTrip : public ::testing::TestWithParam<int>
{
};

TEST_P(ProjectionRoundTrip, GeographicToMapAndBack)
{
    ePrjCoordSys prj(GetParam());
    ASSERT_EQ(prj.GetTypeID(), GetParam());
    for (double lat = -85.0; lat <= 85.0; lat += 5.0)
        for (double lon = -179.0; lon <= 179.0; lon += 7.0)
        {
            ePoint2D p(lon, lat);
            ASSERT_TRUE(prj.Forward(&p, 1)) << lon << " " << lat;
            ASSERT_TRUE(prj.Inverse(&p, 1)) << lon << " " << lat;
            EXPECT_NEAR(LonDiff(p.x, lon), 0.0, 1e-6) << lon << " " << lat;
            EXPECT_NEAR(p.y, lat, 1e-6) << lon << " " << lat;
        }
}

INSTANTIATE_TEST_SUITE_P(AllTypes, ProjectionRoundTrip,
                         ::testing::Values(PJ_PLATE_CARREE, PJ_MERCATOR, PJ_SPHERE_MERCATOR,
                                           PJ_LAMBERT_CONFORMAL, PJ_ALBERS));

TEST(Projection, KnownValues)
{
    double half = kR * 3.14159265358979323846;
    ePoint2D p(180.0, 90.0);
    eProjection(PJ_PLATE_CARREE).Forward(p);
    EXPECT_NEAR(p.x, half, 1e-6);
    EXPECT_NEAR(p.y, half * 0.5, 1e-6);

    // Web Mercator's square world, and the clamp beyond 85.0511 degrees.
    eProjection web(PJ_SPHERE_MERCATOR);
    p = ePoint2D(-180.0, 89.0);
    web.Forward(p);
    EXPECT_NEAR(p.x, -half, 1e-6);
    EXPECT_NEAR(p.y, half, 1e-3);

    // WGS84 Mercator: 45 degrees north lies lower than on the sphere.
    p = ePoint2D(0.0, 45.0);
    eProjection(PJ_MERCATOR).Forward(p);
    EXPECT_NEAR(p.y, 5591295.9185, 0.01);

    // The conics put their origin (105 E, equator) at the map origin.
    for (int type : {PJ_LAMBERT_CONFORMAL, PJ_ALBERS})
    {
        eProjection cone(type);
        EXPECT_DOUBLE_EQ(cone.GetCentralMeridian(), 105.0);
        p = ePoint2D(105.0, 0.0);
        ASSERT_TRUE(cone.Forward(p));
        EXPECT_NEAR(p.x, 0.0, 1e-6);
        EXPECT_NEAR(p.y, 0.0, 1e-6);
        p = ePoint2D(110.0, 30.0);
        cone.Forward(p);
        EXPECT_GT(p.x, 0.0);
        EXPECT_GT(p.y, 0.0);
    }
}

TEST(Projection, ConicsAreTrueToScaleOnTheirStandardParallels)
{
    for (int type : {PJ_LAMBERT_CONFORMAL, PJ_ALBERS})
        for (double lat : {25.0, 47.0})
        {
            eProjection cone(type);
            double arc = kR * std::cos(lat * kD2R) * 0.01 * kD2R;
            double map = MapDistance(cone, ePoint2D(105.0, lat), ePoint2D(105.01, lat));
            EXPECT_NEAR(map / arc, 1.0, 1e-6) << type << " at " << lat;
        }
    // Off the standard parallels the scale differs.
    eProjection lambert(PJ_LAMBERT_CONFORMAL);
    double arc = kR * 0.01 * kD2R;
    EXPECT_GT(
        std::fabs(MapDistance(lambert, ePoint2D(105.0, 0.0), ePoint2D(105.01, 0.0)) / arc - 1.0),
        0.01);
}

TEST(Projection, BadInputIsRefused)
{
    // A code this host cannot convert with is kept, and every conversion fails.
    ePrjCoordSys other(PJ_SPHERE_MERCATOR);
    other.SetProjectionType(12345);
    EXPECT_EQ(other.GetTypeID(), 12345);
    ePoint2D kept(10.0, 20.0);
    EXPECT_EQ(other.Forward(&kept, 1), 0);
    EXPECT_EQ(kept, ePoint2D(10.0, 20.0));
    other.SetProjectionType(-1);
    EXPECT_EQ(other.GetTypeID(), 12345);

    ePrjCoordSys prj(PJ_SPHERE_MERCATOR);
    EXPECT_EQ(prj.Forward(nullptr, 3), 0);

    ePoint2D pts[2] = {ePoint2D(10.0, 20.0), ePoint2D(10.0, 95.0)};
    EXPECT_EQ(prj.Forward(pts, 2), 0);
    EXPECT_NE(pts[0].y, 20.0); // the good point converted
    EXPECT_EQ(pts[1].y, 95.0); // the bad one stayed

    // Lambert cannot reach the pole opposite its apex.
    ePoint2D south(0.0, -90.0);
    EXPECT_EQ(eProjection(PJ_LAMBERT_CONFORMAL).Forward(south), 0);
    EXPECT_EQ(eProjection(PJ_ALBERS).SetStandardParallels(30.0, -30.0), 0);
}

TEST(CoordSys, LogicalWorldRoundTripInBothModes)
{
    eCoordSys cs(PJ_SPHERE_MERCATOR);
    eVector3T<double> w;
    cs.LogicalToWorld(eSM_GLOBE, ePoint2D(90.0, 0.0), w, 1000.0);
    EXPECT_NEAR(w.x, 0.0, 1e-6);
    EXPECT_NEAR(w.y, kR + 1000.0, 1e-6);
    cs.LogicalToWorld(eSM_GLOBE, ePoint2D(0.0, 90.0), w, 0.0);
    EXPECT_NEAR(w.z, kR, 1e-6);

    for (double lat = -89.0; lat <= 89.0; lat += 11.0)
        for (double lon = -179.0; lon <= 179.0; lon += 13.0)
        {
            ePoint2D back;
            cs.LogicalToWorld(eSM_GLOBE, ePoint2D(lon, lat), w, 5000.0);
            EXPECT_NEAR(w.Length(), kR + 5000.0, 1e-6);
            cs.WorldToLogical(eSM_GLOBE, w, back);
            EXPECT_NEAR(back.x, lon, 1e-9);
            EXPECT_NEAR(back.y, lat, 1e-9);

            cs.LogicalToWorld(eSM_PLANE, ePoint2D(lon * 1e5, lat * 1e5), w, 250.0);
            EXPECT_EQ(w.z, 250.0);
            cs.WorldToLogical(eSM_PLANE, w, back);
            EXPECT_EQ(back, ePoint2D(lon * 1e5, lat * 1e5));
        }
}

TEST(CoordSys, LogicalAndMapFollowTheSceneMode)
{
    eCoordSys cs(PJ_SPHERE_MERCATOR, eSM_GLOBE);
    ePoint2D p(10.0, 10.0), map;
    cs.LogicalToMapPoint(p, map);
    EXPECT_NEAR(map.x, kR * 10.0 * kD2R, 1e-6);
    cs.MapToLogicalPoint(map, map); // in place
    EXPECT_NEAR(map.x, 10.0, 1e-9);
    EXPECT_NEAR(map.y, 10.0, 1e-9);

    eRect2D rc(-10.0, 10.0, 10.0, -10.0);
    cs.LogicalToMapRect(rc, rc);
    ePoint2D corner(10.0, 10.0);
    cs.GeoToMap(corner, corner);
    EXPECT_NEAR(rc.right, corner.x, 1e-6);
    EXPECT_NEAR(rc.top, corner.y, 1e-6);
    EXPECT_NEAR(rc.bottom, -corner.y, 1e-6);
    cs.MapToLogicalRect(rc, rc);
    EXPECT_NEAR(rc.left, -10.0, 1e-9);
    EXPECT_NEAR(rc.top, 10.0, 1e-9);
    EXPECT_NEAR(cs.MapLengthToLogical(kR * kD2R), 1.0, 1e-12);

    cs.SetSceneMode(eSM_PLANE);
    p = ePoint2D(123.0, 456.0);
    cs.LogicalToMapPoint(p, map);
    EXPECT_EQ(map, p);
    EXPECT_EQ(cs.MapLengthToLogical(500.0), 500.0);
    EXPECT_NEAR(cs.GetBounds().top, 20037508.342789244, 1e-3);
    EXPECT_NEAR(cs.GetIndexBounds().right, 20037508.342789244, 1e-6);
}

// The world's bounds are map metres in both modes, and the rectangle conversion turns them
// into the whole logical world, also where a projection stops short of the poles.
TEST_P(ProjectionRoundTrip, WholeWorldBoundsBecomeTheWholeLogicalWorld)
{
    eCoordSys cs(GetParam(), eSM_GLOBE);
    eRect2D map = cs.GetBounds();
    EXPECT_EQ(map, cs.GetPrjCoordSys().GetProjection()->GetMapBounds());
    eRect2D logical;
    cs.MapToLogicalRect(map, logical);
    EXPECT_EQ(logical, eRect2D(-180.0, 90.0, 180.0, -90.0));
    EXPECT_EQ(logical, cs.GetLogicalBounds());
    cs.MapToLogicalRect(map, map); // in place
    EXPECT_EQ(map, logical);
    // A part of the world still goes through the projection: the way back covers the part
    // (a conic's bounding rectangle holds more) and stays far from the whole world.
    eRect2D part(-20.0, 40.0, 10.0, 30.0), back;
    cs.LogicalToMapRect(part, back);
    cs.MapToLogicalRect(back, back);
    EXPECT_GE(back.top, part.top - 1e-6);
    EXPECT_LE(back.bottom, part.bottom + 1e-6);
    EXPECT_LT(back.Width(), 60.0);
    EXPECT_LT(back.Height(), 40.0);

    cs.SetSceneMode(eSM_PLANE);
    map = cs.GetBounds();
    cs.MapToLogicalRect(map, logical);
    EXPECT_EQ(logical, map);
    EXPECT_EQ(cs.GetLogicalBounds(), map);
}

TEST(CoordSys, LevelsAndResolutions)
{
    eCoordSys cs;
    EXPECT_DOUBLE_EQ(cs.LevelToResolution(0), 40075016.68557849 / 256.0);
    EXPECT_DOUBLE_EQ(cs.GetRefResolution(), cs.LevelToResolution(0));
    for (int n = 0; n <= 24; ++n)
    {
        EXPECT_EQ(cs.ResolutionToLevel(cs.LevelToResolution(n)), n);
        if (n > 0)
        {
            EXPECT_DOUBLE_EQ(cs.LevelToResolution(n) * 2.0, cs.LevelToResolution(n - 1));
        }
    }
    // Nearest level, and the clamp at both ends.
    EXPECT_EQ(cs.ResolutionToLevel(cs.LevelToResolution(5) * 1.3), 5);
    EXPECT_EQ(cs.ResolutionToLevel(cs.LevelToResolution(5) * 1.6), 4);
    EXPECT_EQ(cs.ResolutionToLevel(1e9), 0);
    EXPECT_EQ(cs.ResolutionToLevel(1e-9), 24);
    EXPECT_DOUBLE_EQ(cs.PixelToWorld(eSM_GLOBE, 10.0, 2.5), 25.0);
}

TEST(SunPosition, FollowsDateAndTime)
{
    auto geo = [](eVector3T<double> const& v, double& lon, double& lat)
    {
        lon = std::atan2(v.y, v.x) / kD2R;
        lat = std::asin(v.z / v.Length()) / kD2R;
    };
    double lon = 0.0, lat = 0.0;
    eVector3T<double> sun = Host::SunWorldPosition(2024, 3, 20, 12.0);
    EXPECT_NEAR(sun.Length(), 1.496e11, 1e3);
    geo(sun, lon, lat);
    EXPECT_NEAR(lat, 0.0, 1.0);
    EXPECT_NEAR(lon, 0.0, 3.0);

    geo(Host::SunWorldPosition(2024, 6, 21, 18.0), lon, lat);
    EXPECT_NEAR(lat, 23.44, 0.5);
    EXPECT_NEAR(lon, -90.0, 3.0);
    geo(Host::SunWorldPosition(2023, 12, 21, 0.0), lon, lat);
    EXPECT_NEAR(lat, -23.44, 0.5);
    EXPECT_NEAR(std::fabs(lon), 180.0, 3.0);
}
