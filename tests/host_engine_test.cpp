// Frame-wide services of the engine: resolution, pixel conversions, shared textures
// and the sun.
#include "eGeometry.h"
#include "eScene.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <gtest/gtest.h>
#include <cmath>

using namespace KYR;

TEST(HostEngine, PixelConversionsFollowTheCamera)
{
    Host::eScene scene(200, 100, eSM_GLOBE, PJ_SPHERE_MERCATOR);
    ASSERT_TRUE(scene.IsReady());
    scene.Camera().LookAt(30.0, 20.0, 2.0e6, 15.0, 20.0);
    eRenderEngine& engine = scene.Engine();
    EXPECT_DOUBLE_EQ(engine.GetRenderResolution(1),
                     scene.Camera().DistanceToResolution(scene.Camera().GetDistance()));

    ePoint2D logical, map;
    ASSERT_TRUE(engine.PixelToLogical(ePoint(100, 50), logical, 0.0));
    EXPECT_NEAR(logical.x, 30.0, 0.05);
    EXPECT_NEAR(logical.y, 20.0, 0.05);
    ASSERT_TRUE(engine.PixelToMap(ePoint(100, 50), map));
    ePoint2D expected(30.0, 20.0);
    scene.CoordSys().GeoToMap(expected, expected);
    EXPECT_NEAR(map.x, expected.x, 6000.0);
    EXPECT_NEAR(map.y, expected.y, 6000.0);

    // Looking at the horizon's sky from far away misses the globe.
    scene.Camera().LookAt(30.0, 20.0, 3.0e7, 0.0, 0.0);
    EXPECT_FALSE(engine.PixelToMap(ePoint(0, 0), map));
}

TEST(HostEngine, SharedTexturesAndSun)
{
    Host::eScene scene(32, 32);
    ASSERT_TRUE(scene.IsReady());
    eRenderEngine& engine = scene.Engine();
    unsigned int circle = engine.GetCircleTexture();
    ASSERT_NE(circle, 0u);
    EXPECT_EQ(engine.GetCircleTexture(), circle) << "made once";
    std::vector<unsigned char> px(64 * 64 * 4);
    glBindTexture(GL_TEXTURE_2D, circle);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, px.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    EXPECT_EQ(px[3], 0) << "corner transparent";
    EXPECT_EQ(px[(32 * 64 + 32) * 4 + 3], 255) << "centre opaque";
    EXPECT_NE(engine.GetPlotLineTexture(), 0u);
    ASSERT_NE(engine.GetDefaultTexture(), nullptr);
    EXPECT_NE(engine.GetDefaultTexture()->GetTextureID(), 0u);

    // At the June solstice, 12:00 UTC, the sun stands over the tropic near Greenwich.
    engine.SetSunTime(2026, 6, 21, 12.0);
    eVector3T<double> sun = engine.GetSunPosition();
    double lat = std::asin(sun.z / sun.Length()) * 57.29577951308232;
    double lon = std::atan2(sun.y, sun.x) * 57.29577951308232;
    EXPECT_NEAR(lat, 23.44, 0.1);
    EXPECT_NEAR(lon, 0.0, 1.0);
}

TEST(HostEngine, FaceNormalFollowsTheWinding)
{
    eVector3T<float> a(0, 0, 0), b(2, 0, 0), c(0, 3, 0);
    eVector3T<float> up = eGLCanvas::ComputeFaceNormal(a, b, c);
    eVector3T<float> down = eGLCanvas::ComputeFaceNormal(a, c, b);
    EXPECT_FLOAT_EQ(up.z, 1.0f);
    EXPECT_FLOAT_EQ(down.z, -1.0f);
    EXPECT_FLOAT_EQ(up.x * up.x + up.y * up.y, 0.0f);
    eVector3T<float> none = eGLCanvas::ComputeFaceNormal(a, a, c);
    EXPECT_EQ(none.x + none.y + none.z, 0.0f) << "a degenerate face has no direction";
}
