// Camera geometry: projection, picking, distances and visible bounds.
#include "eCamera.h"
#include "eCoordSys.h"
#include <gtest/gtest.h>
#include <cmath>
#include <tuple>

using namespace KYR;

namespace
{
double const kR = 6378137.0;
typedef eVector3T<double> Vec3;

Vec3 GeoToWorld(double lon, double lat, double height = 0.0)
{
    eCoordSys cs;
    Vec3 w;
    cs.LogicalToWorld(eSM_GLOBE, ePoint2D(lon, lat), w, height);
    return w;
}

// Places the camera in a mode at a place that reads as degrees on the globe and as
// metres on the plane.
void Aim(eCamera& cam, eSceneMode mode, double heading, double pitch, double distance)
{
    cam.SetSceneMode(mode);
    if (mode == eSM_GLOBE)
        cam.LookAt(116.4, 39.9, distance, heading, pitch);
    else
        cam.LookAtMap(1.2e7, 4.8e6, distance, heading, pitch);
}
} // namespace

class CameraAim : public ::testing::TestWithParam<std::tuple<int, double, double>>
{
};

TEST_P(CameraAim, LookAtPointIsTheViewCentre)
{
    eSceneMode mode = (eSceneMode)std::get<0>(GetParam());
    double heading = std::get<1>(GetParam()), pitch = std::get<2>(GetParam());
    eViewport vp(640, 480);
    eCamera cam(&vp);
    Aim(cam, mode, heading, pitch, 2.5e6);

    Vec3 target = cam.GetLookAtPosition();
    Vec3 win = cam.Project(target);
    EXPECT_NEAR(win.x, 320.0, 1e-6);
    EXPECT_NEAR(win.y, 240.0, 1e-6);
    EXPECT_GT(win.z, 0.0);
    EXPECT_LT(win.z, 1.0);
    EXPECT_NEAR(cam.GetDistance(), 2.5e6, 1e-6);
    EXPECT_NEAR(cam.GetLookAtState().m_dPitch, pitch * 0.017453292519943295, 1e-12);

    Vec3 origin, dir, hit;
    cam.PickingRay(320, 240, origin, dir);
    EXPECT_NEAR(dir.Length(), 1.0, 1e-12);
    ASSERT_TRUE(cam.IntersectGlobe(origin, dir, hit, 0.0));
    EXPECT_LT((hit - target).Length(), 1e-3);

    // An off-centre mouse pixel: its ray's hit projects back onto it (y flipped).
    cam.PickingRay(100, 300, origin, dir);
    ASSERT_TRUE(cam.IntersectGlobe(origin, dir, hit, 0.0));
    win = cam.Project(hit);
    EXPECT_NEAR(win.x, 100.0, 1e-4);
    EXPECT_NEAR(win.y, 480.0 - 300.0, 1e-4);

    // The camera-relative frame sees what the absolute one sees.
    Vec3 rel(cam.GetRelativeViewMatrix().TransformPoint(
        eVector3T<float>(hit - cam.GetReferenceCenter())));
    Vec3 abs = cam.GetViewMatrix().TransformPoint(hit);
    EXPECT_LT((rel - abs).Length(), 1e-6 * abs.Length() + 1.0);
}

INSTANTIATE_TEST_SUITE_P(ModesHeadingsPitches, CameraAim,
                         ::testing::Combine(::testing::Values((int)eSM_GLOBE, (int)eSM_PLANE),
                                            ::testing::Values(0.0, 45.0, 200.0),
                                            ::testing::Values(0.0, 30.0, 70.0)));

TEST(Camera, HeadingTurnsNorthAndEastOnScreen)
{
    eViewport vp(400, 400);
    eCamera cam(&vp);
    cam.LookAt(30.0, 20.0, 1e6, 0.0, 0.0);
    EXPECT_NEAR(cam.GetCameraState().m_dAltitude, 1e6, 1e-6);
    Vec3 north = cam.Project(GeoToWorld(30.0, 20.5));
    Vec3 east = cam.Project(GeoToWorld(30.5, 20.0));
    EXPECT_NEAR(north.x, 200.0, 1e-6);
    EXPECT_GT(north.y, 210.0);
    EXPECT_GT(east.x, 210.0);
    EXPECT_NEAR(east.y, 200.0, 0.5); // the parallel bends slightly off the east line

    // Heading 90: looking east, so east is up and north is to the left.
    cam.LookAt(30.0, 20.0, 1e6, 90.0, 0.0);
    north = cam.Project(GeoToWorld(30.0, 20.5));
    east = cam.Project(GeoToWorld(30.5, 20.0));
    EXPECT_LT(north.x, 190.0);
    EXPECT_GT(east.y, 210.0);

    // Pitch tilts towards the heading: the ground ahead is above the centre and,
    // being farther away, closer to it than the ground behind.
    cam.LookAt(30.0, 20.0, 1e6, 0.0, 60.0);
    Vec3 ahead = cam.Project(GeoToWorld(30.0, 20.5));
    Vec3 behind = cam.Project(GeoToWorld(30.0, 19.5));
    EXPECT_GT(ahead.y, 200.0);
    EXPECT_LT(behind.y, 200.0);
    EXPECT_LT(ahead.y - 200.0, 200.0 - behind.y);
}

TEST(Camera, WholeGlobeFitsTheClipRange)
{
    eViewport vp(800, 600);
    eCamera cam(&vp);
    cam.LookAt(0.0, 0.0, 3e7, 0.0, 0.0);
    for (Vec3 p : {GeoToWorld(0.0, 0.0), GeoToWorld(180.0, 0.0), GeoToWorld(0.0, 90.0),
                   GeoToWorld(0.0, 0.0, 0.1 * kR)})
    {
        double depth = cam.Project(p).z;
        EXPECT_GT(depth, 0.0);
        EXPECT_LT(depth, 1.0);
    }
    // Near the ground with a steep pitch the nearest ground is still in front.
    cam.LookAt(0.0, 0.0, 2000.0, 0.0, 85.0);
    Vec3 below = GeoToWorld(cam.GetCameraState().m_dLongitude, cam.GetCameraState().m_dLatitude);
    EXPECT_LT(cam.GetNearClip(), (cam.GetCameraPosition() - below).Length());
}

TEST(Camera, PixelLengthsMatchProjection)
{
    eViewport vp(800, 600);
    eCamera cam(&vp);
    cam.LookAt(10.0, 50.0, 5e5, 30.0, 40.0);
    Vec3 at = cam.GetLookAtPosition();
    double len = cam.XPixel2WorldLength(at, 20);
    EXPECT_NEAR(len, 20.0 * cam.DistanceToResolution(5e5), 1e-9);
    // Twenty pixels along the screen's right direction.
    eMatrix4T<double> const& v = cam.GetViewMatrix();
    Vec3 right(v.m[0], v.m[4], v.m[8]);
    EXPECT_NEAR(cam.Project(at + right * len).x - cam.Project(at).x, 20.0, 1e-6);

    eMatrix4T<float> const& ortho = cam.GetOrthoWorldMatrix();
    eVector4T<float> c = ortho * eVector4T<float>(800.0f, 600.0f, 0.0f, 1.0f);
    EXPECT_FLOAT_EQ(c.x, 1.0f);
    EXPECT_FLOAT_EQ(c.y, 1.0f);
    c = ortho * eVector4T<float>(0.0f, 0.0f, 0.0f, 1.0f);
    EXPECT_FLOAT_EQ(c.x, -1.0f);
    EXPECT_FLOAT_EQ(c.y, -1.0f);
}

TEST(Camera, IntersectGlobe)
{
    eViewport vp(100, 100);
    eCamera cam(&vp);
    Vec3 origin(2.0 * kR, 0.0, 0.0), away(1.0, 0.0, 0.0), hit(7.0, 7.0, 7.0);
    EXPECT_EQ(cam.IntersectGlobe(origin, away, hit, 0.0), 0);
    Vec3 past(0.0, 1.0, 0.0);
    EXPECT_EQ(cam.IntersectGlobe(origin, past, hit, 0.0), 0);
    Vec3 in(-1.0, 0.0, 0.0);
    ASSERT_TRUE(cam.IntersectGlobe(origin, in, hit, 1000.0));
    EXPECT_NEAR(hit.x, kR + 1000.0, 1e-6);
    Vec3 centre; // from inside, the sphere is met on the way out
    ASSERT_TRUE(cam.IntersectGlobe(centre, in, hit, 0.0));
    EXPECT_NEAR(hit.x, -kR, 1e-6);

    cam.SetSceneMode(eSM_PLANE);
    Vec3 flat(1.0, 0.0, 0.0), up(0.0, 0.0, 1.0), o(0.0, 0.0, 100.0);
    EXPECT_EQ(cam.IntersectGlobe(o, flat, hit, 0.0), 0);
    EXPECT_EQ(cam.IntersectGlobe(o, up, hit, 0.0), 0);
    Vec3 zero;
    EXPECT_EQ(cam.IntersectGlobe(o, zero, hit, 0.0), 0);
}

TEST(Camera, RenderBounds)
{
    eViewport vp(800, 600);
    eCamera cam(&vp);
    // From far away the whole facing cap shows: the horizon lies acos(R / (R + d)) away.
    cam.LookAt(0.0, 0.0, 3e7, 0.0, 0.0);
    double cap = std::acos(kR / (kR + 3e7)) * 57.29577951308232;
    eRect2D rc = cam.GetRenderBounds();
    EXPECT_NEAR(rc.left, -cap, 0.5);
    EXPECT_NEAR(rc.right, cap, 0.5);
    EXPECT_NEAR(rc.top, cap, 0.5);
    EXPECT_NEAR(rc.bottom, -cap, 0.5);

    // Close up the bounds hold the look-at point and a few degrees around it.
    cam.LookAt(100.0, 30.0, 1e6, 0.0, 0.0);
    rc = cam.GetRenderBounds();
    EXPECT_TRUE(rc.PtInRect(ePoint2D(100.0, 30.0)));
    EXPECT_LT(rc.Width(), 10.0);
    EXPECT_GT(rc.Width(), 1.0);

    // Across the date line, or with a pole in view, all longitudes count.
    cam.LookAt(180.0, 0.0, 1e6, 0.0, 0.0);
    rc = cam.GetRenderBounds();
    EXPECT_EQ(rc.left, -180.0);
    EXPECT_EQ(rc.right, 180.0);
    cam.LookAt(0.0, 88.0, 1e6, 0.0, 0.0);
    EXPECT_EQ(cam.GetRenderBounds().top, 90.0);
    EXPECT_EQ(cam.GetRenderBounds().Width(), 360.0);

    // Plane map, straight down: the footprint of the field of view.
    eCoordSys cs(PJ_SPHERE_MERCATOR);
    cam.SetCoordSys(&cs);
    cam.SetSceneMode(eSM_PLANE);
    EXPECT_EQ(cs.GetSceneMode(), eSM_PLANE);
    cam.LookAtMap(1e6, 2e6, 1e5, 0.0, 0.0);
    double halfH = 1e5 * std::tan(15.0 * 0.017453292519943295);
    rc = cam.GetRenderBounds();
    EXPECT_NEAR(rc.top, 2e6 + halfH, 1e-3);
    EXPECT_NEAR(rc.left, 1e6 - halfH * 800.0 / 600.0, 1e-3);
    // The viewport's size is followed without telling the camera.
    vp.SetSize(600, 600);
    EXPECT_NEAR(cam.GetRenderBounds().left, 1e6 - halfH, 1e-3);
}

TEST(Camera, SceneModeSwitchKeepsThePlace)
{
    eViewport vp(100, 100);
    eCamera cam(&vp);
    eCoordSys cs(PJ_SPHERE_MERCATOR);
    cam.SetCoordSys(&cs);
    cam.LookAt(100.0, 30.0, 1e5, 0.0, 0.0);
    cam.SetSceneMode(eSM_PLANE);
    ePoint2D map;
    cs.GeoToMap(ePoint2D(100.0, 30.0), map);
    EXPECT_NEAR(cam.GetLookAtState().m_dLongitude, map.x, 1e-6);
    EXPECT_NEAR(cam.GetLookAtState().m_dLatitude, map.y, 1e-6);
    EXPECT_NEAR(cam.GetLookAtPosition().x, map.x, 1e-6);
    EXPECT_EQ(cam.GetLookAtPosition().z, 0.0);
    cam.SetSceneMode(eSM_GLOBE);
    EXPECT_NEAR(cam.GetLookAtState().m_dLatitude, 30.0, 1e-9);

    // Unusable input leaves the view where it was.
    cam.LookAt(100.0, 95.0, 1e5, 0.0, 0.0);
    cam.LookAt(100.0, 30.0, -5.0, 0.0, 0.0);
    EXPECT_NEAR(cam.GetLookAtState().m_dLatitude, 30.0, 1e-9);
    EXPECT_NEAR(cam.GetDistance(), 1e5, 1e-6);
}
