// The path tessellators: six vertices a point and eighteen a segment in the layouts the
// header gives, squares of the size asked for around the points, strokes along their
// segments, and the length of the path growing from vertex to vertex.
#include "eCoordSys.h"
#include "eGeometry.h"
#include "eMesh.h"
#include <cstring>
#include <gtest/gtest.h>

using namespace KYR;

namespace
{

struct PointVertex
{
    float position[4];
    float corner[2];
    unsigned char color[4];
};
static_assert(sizeof(PointVertex) == eLengthPointTessellator::kStride, "point vertex");

struct LineVertex
{
    float position[4];
    float direction[3];
    float stroke[3];
    unsigned char color[4];
};
static_assert(sizeof(LineVertex) == ePlaneTileShortPositionTextureLineTessellator::kStride,
              "line vertex");

template <typename V> std::vector<V> Vertices(eVertexData& data)
{
    std::vector<V> out((size_t)data.GetVertexSize());
    std::memcpy(out.data(), data.GetVertexBuffer().data(), out.size() * sizeof(V));
    return out;
}

eVector4T<unsigned char> const kColor(10, 20, 30, 40);
eVector3T<double> const kAnchor(100.0, 100.0, 0.0);
// An L of map metres on the plane: 300 east, then 400 north.
std::vector<ePoint2D> const kPath = {{100.0, 100.0}, {400.0, 100.0}, {400.0, 500.0}};

} // namespace

TEST(Tessellator, PointsAreSixVerticesOfASquareWithTheLengthSoFar)
{
    eCoordSys coordSys(PJ_PLATE_CARREE, eSM_PLANE);
    eVertexData vertices;
    eIndexData indices;
    eLengthPointTessellator tessellator;
    ASSERT_TRUE(tessellator.Create(&vertices, &indices));
    EXPECT_EQ(vertices.GetVertexStride(), 28);
    // 6 pixels at 10 metres a pixel: a square of 60 metres.
    double scale = coordSys.GetRefResolution() / 10.0;
    for (ePoint2D const& p : kPath)
        tessellator.Point(&vertices, &indices, eSM_PLANE, &coordSys, p, 6.0, kColor, kAnchor,
                          scale);
    std::vector<PointVertex> v = Vertices<PointVertex>(vertices);
    ASSERT_EQ(v.size(), 18u);
    EXPECT_EQ(indices.GetIndexSize(), 0);
    float const lengths[3] = {0.0f, 300.0f, 700.0f};
    for (size_t i = 0; i < v.size(); ++i)
    {
        SCOPED_TRACE(testing::Message() << "vertex " << i);
        ePoint2D const& p = kPath[i / 6];
        EXPECT_NEAR(v[i].position[0], p.x - kAnchor.x + 30.0 * v[i].corner[0], 1e-3);
        EXPECT_NEAR(v[i].position[1], p.y - kAnchor.y + 30.0 * v[i].corner[1], 1e-3);
        EXPECT_EQ(v[i].position[2], 0.0f);
        EXPECT_NEAR(v[i].position[3], lengths[i / 6], 1e-3);
        EXPECT_EQ(std::abs(v[i].corner[0]), 1.0f);
        EXPECT_EQ(std::abs(v[i].corner[1]), 1.0f);
        EXPECT_EQ(std::memcmp(v[i].color, &kColor, 4), 0);
    }
    // The two triangles of a point cover its square once: signed areas add up to the square.
    double area = 0.0;
    for (size_t t = 0; t < 6; t += 3)
    {
        float const* a = v[t].corner;
        float const* b = v[t + 1].corner;
        float const* c = v[t + 2].corner;
        area += 0.5 * ((b[0] - a[0]) * (c[1] - a[1]) - (c[0] - a[0]) * (b[1] - a[1]));
    }
    EXPECT_DOUBLE_EQ(area, 4.0);
}

TEST(Tessellator, SegmentsAreEighteenVerticesWhoseLengthGrowsAlongThePath)
{
    eCoordSys coordSys(PJ_PLATE_CARREE, eSM_PLANE);
    eVertexData vertices;
    eIndexData indices;
    ePlaneTileShortPositionTextureLineTessellator tessellator;
    ASSERT_TRUE(tessellator.Create(&vertices, &indices));
    EXPECT_EQ(vertices.GetVertexStride(), 44);
    tessellator.Line(&vertices, &indices, eSM_PLANE, &coordSys, kPath[0], kPath[1], 5.0, kColor,
                     kAnchor, 2.0);
    tessellator.Line(&vertices, &indices, eSM_PLANE, &coordSys, kPath[1], kPath[2], 5.0, kColor,
                     kAnchor, 2.0);
    // A segment that does not start where the last one ended begins a new length.
    tessellator.Line(&vertices, &indices, eSM_PLANE, &coordSys, kPath[0], kPath[2], 5.0, kColor,
                     kAnchor, 2.0);
    std::vector<LineVertex> v = Vertices<LineVertex>(vertices);
    ASSERT_EQ(v.size(), 54u);
    EXPECT_EQ(indices.GetIndexSize(), 0);

    struct Segment
    {
        ePoint2D from, to;
        float direction[2];
        float lengthFrom, lengthTo;
    } const segments[3] = {{kPath[0], kPath[1], {1.0f, 0.0f}, 0.0f, 300.0f},
                           {kPath[1], kPath[2], {0.0f, 1.0f}, 300.0f, 700.0f},
                           {kPath[0], kPath[2], {0.6f, 0.8f}, 0.0f, 500.0f}};
    for (int s = 0; s < 3; ++s)
    {
        Segment const& seg = segments[s];
        int caps[2] = {0, 0}, onFrom = 0;
        for (int k = 0; k < 18; ++k)
        {
            LineVertex const& x = v[(size_t)(18 * s + k)];
            SCOPED_TRACE(testing::Message() << "segment " << s << ", vertex " << k);
            // Every vertex stands on one of the segment's ends with the length there.
            bool atFrom = std::abs(x.position[3] - seg.lengthFrom) < 1e-3f;
            ePoint2D const& end = atFrom ? seg.from : seg.to;
            EXPECT_TRUE(atFrom || std::abs(x.position[3] - seg.lengthTo) < 1e-3f);
            EXPECT_NEAR(x.position[0], end.x - kAnchor.x, 1e-3);
            EXPECT_NEAR(x.position[1], end.y - kAnchor.y, 1e-3);
            EXPECT_NEAR(x.direction[0], seg.direction[0], 1e-6);
            EXPECT_NEAR(x.direction[1], seg.direction[1], 1e-6);
            EXPECT_EQ(std::abs(x.stroke[1]), 1.0f);
            EXPECT_EQ(x.stroke[2], 5.0f); // half of 5 pixels, times 2
            // Outward along only beyond the end it stands on: the start cap reaches back.
            if (x.stroke[0] != 0.0f)
            {
                EXPECT_EQ(x.stroke[0], atFrom ? -1.0f : 1.0f);
                ++caps[atFrom ? 0 : 1];
            }
            onFrom += atFrom;
        }
        // Three squares of six: the cap at each end has three outer vertices; the body and the
        // caps put nine vertices on each end.
        EXPECT_EQ(caps[0], 3);
        EXPECT_EQ(caps[1], 3);
        EXPECT_EQ(onFrom, 9);
    }
}

TEST(Tessellator, StoreOfAnotherLayoutIsRefusedAndLeftAlone)
{
    eVertexData vertices;
    vertices.AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    eIndexData indices;
    eLengthPointTessellator points;
    ePlaneTileShortPositionTextureLineTessellator lines;
    EXPECT_FALSE(points.Create(&vertices, &indices));
    EXPECT_FALSE(lines.Create(&vertices, &indices));
    points.Point(&vertices, &indices, eSM_PLANE, nullptr, kPath[0], 6.0, kColor, kAnchor, 1.0);
    lines.Line(&vertices, &indices, eSM_PLANE, nullptr, kPath[0], kPath[1], 5.0, kColor, kAnchor,
               1.0);
    EXPECT_EQ(vertices.GetVertexSize(), 0);
    EXPECT_EQ(vertices.GetVertexElements().size(), 1u);
}
