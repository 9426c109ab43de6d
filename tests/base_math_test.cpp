// Matrices, bounding boxes, spherical coordinates and point operations.
#include "Base.h"
#include <gtest/gtest.h>

using namespace KYR;

namespace
{

eMatrix4d Sample(double seed)
{
    eMatrix4d m;
    for (int i = 0; i < 16; ++i)
        m.m[i] = std::sin(seed * (i + 1)) * 3.0 + (i % 5 == 0 ? 4.0 : 0.0);
    return m;
}

void ExpectNear(eVector3d const& a, eVector3d const& b, double tol)
{
    EXPECT_NEAR(a.x, b.x, tol);
    EXPECT_NEAR(a.y, b.y, tol);
    EXPECT_NEAR(a.z, b.z, tol);
}

} // namespace

TEST(Matrix, RotationElementsFollowOpenGLLayout)
{
    double a = 0.3, c = std::cos(a), s = std::sin(a);
    eMatrix4d y = eMatrix4d::RotationY(a);
    EXPECT_DOUBLE_EQ(y[0], c);
    EXPECT_DOUBLE_EQ(y[10], c);
    EXPECT_DOUBLE_EQ(y[2], -s);
    EXPECT_DOUBLE_EQ(y[8], s);
    EXPECT_DOUBLE_EQ(y[5], 1.0);
    eMatrix4d x = eMatrix4d::RotationX(a);
    EXPECT_DOUBLE_EQ(x[5], c);
    EXPECT_DOUBLE_EQ(x[10], c);
    EXPECT_DOUBLE_EQ(x[6], s);
    EXPECT_DOUBLE_EQ(x[9], -s);
    EXPECT_DOUBLE_EQ(x[0], 1.0);

    // Right-handed quarter turns: X takes +y to +z, Y takes +z to +x, Z takes +x to +y.
    double q = eMathEngine::PI / 2;
    ExpectNear(eMatrix4d::RotationX(q).TransformPoint(eVector3d(0, 1, 0)), eVector3d(0, 0, 1),
               1e-15);
    ExpectNear(eMatrix4d::RotationY(q).TransformPoint(eVector3d(0, 0, 1)), eVector3d(1, 0, 0),
               1e-15);
    ExpectNear(eMatrix4d::RotationZ(q).TransformPoint(eVector3d(1, 0, 0)), eVector3d(0, 1, 0),
               1e-15);
}

TEST(Matrix, ProductAppliesRightOperandFirst)
{
    eMatrix4d a = Sample(0.7), b = Sample(1.9);
    eVector4d v(1.5, -2.0, 0.25, 1.0);
    eVector4d lhs = (a * b) * v;
    eVector4d rhs = a * (b * v);
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(lhs[i], rhs[i], 1e-10);

    // Translate after rotating: the rotation acts on the point, then the offset is added.
    eMatrix4d t = eMatrix4d::Translation(10, 20, 30) * eMatrix4d::RotationZ(eMathEngine::PI / 2);
    ExpectNear(t.TransformPoint(eVector3d(1, 0, 0)), eVector3d(10, 21, 30), 1e-12);
}

TEST(Matrix, InverseAndTranslation)
{
    eMatrix4d m = Sample(2.3) * eMatrix4d::Translation(5, -6, 7);
    eMatrix4d p = m.Inverse() * m;
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(p[i], (i % 5 == 0) ? 1.0 : 0.0, 1e-9) << "element " << i;

    eMatrix4d t = eMatrix4d::Translation(3, 4, 5);
    EXPECT_EQ(t[12], 3.0);
    EXPECT_EQ(t[13], 4.0);
    EXPECT_EQ(t[14], 5.0);
    ExpectNear(t.Inverse().TransformPoint(eVector3d(3, 4, 5)), eVector3d(0, 0, 0), 1e-12);
    // Directions ignore the translation.
    ExpectNear(t.TransformVector(eVector3d(1, 2, 3)), eVector3d(1, 2, 3), 0.0);

    eMatrix4d singular = eMatrix4d::Scale(1, 0, 1);
    EXPECT_EQ(singular.Inverse(), eMatrix4d());
}

TEST(BoundingBox, MergeContainsAndTransform)
{
    eBoundingBoxd box;
    EXPECT_TRUE(box.IsEmpty());
    EXPECT_FALSE(box.Contains(eVector3d(0, 0, 0)));
    box.Merge(eVector3d(1, 2, 3));
    EXPECT_FALSE(box.IsEmpty());
    EXPECT_TRUE(box.Contains(eVector3d(1, 2, 3)));
    box.Merge(eVector3d(-1, 6, 4));
    box.Merge(eBoundingBoxd()); // an empty box adds nothing
    ExpectNear(box.GetCenter(), eVector3d(0, 4, 3.5), 0.0);
    ExpectNear(box.GetSize(), eVector3d(2, 4, 1), 0.0);
    EXPECT_TRUE(box.Contains(eVector3d(-1, 6, 3.5)));
    EXPECT_FALSE(box.Contains(eVector3d(0, 6.01, 3.5)));

    eBoundingBoxd other(eVector3d(5, 5, 5), eVector3d(0.5, 1, 3.9));
    EXPECT_TRUE(box.Intersects(other));
    box.Merge(other);
    EXPECT_TRUE(box.Contains(other));
    ExpectNear(box.m_vMax, eVector3d(5, 6, 5), 0.0);

    eBoundingBoxd moved = box.Transformed(eMatrix4d::Translation(10, 0, 0));
    ExpectNear(moved.m_vMin, box.m_vMin + eVector3d(10, 0, 0), 1e-12);
    EXPECT_FALSE(moved.Intersects(eBoundingBoxd(eVector3d(0, 0, 0), eVector3d(1, 1, 1))));
    EXPECT_TRUE(eBoundingBoxd().Transformed(eMatrix4d()).IsEmpty());
}

TEST(MathEngine, SphericalConventionAndRoundTrip)
{
    double r = eMathEngine::EARTH_RADIUS, q = eMathEngine::PI / 2;
    ExpectNear(eMathEngine::SphericalToCartesian(0, 0, r), eVector3d(r, 0, 0), 1e-6);
    ExpectNear(eMathEngine::SphericalToCartesian(q, 0, r), eVector3d(0, r, 0), 1e-6);
    ExpectNear(eMathEngine::SphericalToCartesian(1.0, q, r), eVector3d(0, 0, r), 1e-6);

    for (double lon = -3.0; lon <= 3.1; lon += 0.5)
        for (double lat = -1.5; lat <= 1.5; lat += 0.25)
        {
            eVector3d p = eMathEngine::SphericalToCartesian(lon, lat, r + 100.0);
            ExpectNear(eMathEngine::CartesianToSpherical(p.x, p.y, p.z),
                       eVector3d(lon, lat, r + 100.0), 1e-8);
        }

    // The date line belongs to +pi, also for a negative zero y.
    EXPECT_DOUBLE_EQ(eMathEngine::CartesianToSpherical(-1, -0.0, 0).x, eMathEngine::PI);
    ExpectNear(eMathEngine::CartesianToSpherical(0, 0, -5), eVector3d(0, -q, 5), 1e-15);
    ExpectNear(eMathEngine::CartesianToSpherical(0, 0, 0), eVector3d(0, 0, 0), 0.0);
}

TEST(OpPoints, BoundsAndRotation)
{
    ePoint2D pts[] = {{1, 5}, {-2, 3}, {4, -1}};
    eRect2D b = eOpPoints::Bounds(pts, 3);
    EXPECT_EQ(b, eRect2D(-2, 5, 4, -1));
    EXPECT_EQ(eOpPoints::Bounds(pts, 0), eRect2D());

    ePoint2D p(2, 1);
    eOpPoints::RotateRadian(p, eMathEngine::PI / 2, p); // in place
    EXPECT_NEAR(p.x, -1.0, 1e-15);
    EXPECT_NEAR(p.y, 2.0, 1e-15);
    ePoint2D out;
    eOpPoints::RotateRadian(ePoint2D(1, 0), -eMathEngine::PI / 6, out);
    EXPECT_NEAR(out.x, std::sqrt(3.0) / 2, 1e-15);
    EXPECT_NEAR(out.y, -0.5, 1e-15);
}
