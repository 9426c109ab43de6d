// The canvas library's path tessellators: round point markers laid out on the ground, and
// segments as strokes that the program widens on the screen. Both write plain triangle lists
// and measure the length of the path as they go, so that a program can tell how far along
// the path a vertex lies.
#include "eCoordSys.h"
#include "eGeometry.h"
#include "eMesh.h"
#include <cmath>
#include <cstdio>
#include <cstring>

namespace KYR
{

namespace
{

double const kLevel0Resolution = 40075016.68557849 / 256.0; // metres per pixel

// Gives an empty store the layout `add` makes; false for a store laid out with another
// stride, reported when `report` is set (once per store: by Create, or for a store Create was
// not given).
template <typename Add>
bool PrepareStore(eVertexData* vertices, unsigned int type, int stride, char const* who,
                  bool report, Add add)
{
    if (!vertices)
        return false;
    if (vertices->GetVertexElements().empty())
    {
        add(*vertices);
        vertices->SetVertexType(type);
    }
    if (vertices->GetVertexStride() != stride)
    {
        if (report)
            std::fprintf(stderr,
                         "%s: the vertex store has %d bytes a vertex, the tessellator writes %d\n",
                         who, vertices->GetVertexStride(), stride);
        return false;
    }
    return true;
}

bool PreparePointStore(eVertexData* vertices, bool report)
{
    return PrepareStore(vertices, eLengthPointTessellator::kPointVertexType,
                        eLengthPointTessellator::kStride, "eLengthPointTessellator", report,
                        [](eVertexData& v)
                        {
                            v.AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
                            v.AddElement(eVET_FLOAT, eVEC_2, eAI_TEXCOORD0, 0);
                            v.AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_ATTRIB3, 1);
                        });
}

bool PrepareLineStore(eVertexData* vertices, bool report)
{
    return PrepareStore(vertices, ePlaneTileShortPositionTextureLineTessellator::kLineVertexType,
                        ePlaneTileShortPositionTextureLineTessellator::kStride,
                        "ePlaneTileShortPositionTextureLineTessellator", report,
                        [](eVertexData& v)
                        {
                            v.AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
                            v.AddElement(eVET_FLOAT, eVEC_3, eAI_ATTRIB15, 0);
                            v.AddElement(eVET_FLOAT, eVEC_3, eAI_TEXCOORD0, 0);
                            v.AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_ATTRIB3, 1);
                        });
}

eVector3T<double> WorldOf(eSceneMode mode, eCoordSys* coordSys, ePoint2D const& logical)
{
    eVector3T<double> world(logical.x, logical.y, 0.0);
    if (coordSys)
        coordSys->LogicalToWorld(mode, logical, world, 0.0);
    return world;
}

// East and north on the ground at a world point: the map's axes on the plane, the tangent
// plane of the sphere on the globe (any pair at a pole).
void GroundAxes(eSceneMode mode, eVector3T<double> const& at, eVector3T<double>& east,
                eVector3T<double>& north)
{
    east = eVector3T<double>(1.0, 0.0, 0.0);
    north = eVector3T<double>(0.0, 1.0, 0.0);
    double r = at.Length();
    if (mode != eSM_GLOBE || !(r > 0.0))
        return;
    eVector3T<double> up = at * (1.0 / r);
    eVector3T<double> e(-at.y, at.x, 0.0);
    double el = e.Length();
    if (el > 0.0)
        east = e * (1.0 / el);
    north = up.Cross(east);
}

void Put(unsigned char*& out, void const* data, size_t bytes)
{
    std::memcpy(out, data, bytes);
    out += bytes;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Points
// ---------------------------------------------------------------------------------------------

unsigned char eLengthPointTessellator::Create(eVertexData* vertices, eIndexData* indices)
{
    m_pVertexData = vertices;
    m_pIndexData = indices;
    m_dLength = 0.0;
    m_bHasLast = false;
    return PreparePointStore(vertices, true) ? 1 : 0;
}

void eLengthPointTessellator::Point(eVertexData* vertices, eIndexData*, eSceneMode mode,
                                    eCoordSys* coordSys, ePoint2D const& point, double size,
                                    eVector4T<unsigned char> const& color,
                                    eVector3T<double> const& anchor, double scale)
{
    if (!PreparePointStore(vertices, vertices != m_pVertexData))
        return;
    eVector3T<double> world = WorldOf(mode, coordSys, point);
    if (m_bHasLast)
        m_dLength += (world - m_vLast).Length();
    m_vLast = world;
    m_bHasLast = true;

    // size pixels at the view whose resolution is the level-0 one over `scale`.
    double resolution =
        (coordSys ? coordSys->GetRefResolution() : kLevel0Resolution) / (scale > 0.0 ? scale : 1.0);
    double side = coordSys ? coordSys->PixelToWorld(mode, size, resolution) : size * resolution;
    eVector3T<double> east, north;
    GroundAxes(mode, world, east, north);
    eVector3T<double> centre = world - anchor;

    static float const corners[kVerticesPerPoint][2] = {{-1, -1}, {1, -1}, {1, 1},
                                                        {-1, -1}, {1, 1},  {-1, 1}};
    unsigned char vertex[kVerticesPerPoint][kStride];
    unsigned char const rgba[4] = {color.x, color.y, color.z, color.w};
    for (int k = 0; k < kVerticesPerPoint; ++k)
    {
        eVector3T<double> p =
            centre + east * (0.5 * side * corners[k][0]) + north * (0.5 * side * corners[k][1]);
        float const position[4] = {(float)p.x, (float)p.y, (float)p.z, (float)m_dLength};
        unsigned char* out = vertex[k];
        Put(out, position, sizeof position);
        Put(out, corners[k], sizeof corners[k]);
        Put(out, rgba, sizeof rgba);
    }
    vertices->AddVertex(&vertex[0][0], kVerticesPerPoint);
}

// ---------------------------------------------------------------------------------------------
// Segments
// ---------------------------------------------------------------------------------------------

unsigned char ePlaneTileShortPositionTextureLineTessellator::Create(eVertexData* vertices,
                                                                    eIndexData* indices)
{
    m_pVertexData = vertices;
    m_pIndexData = indices;
    m_dLength = 0.0;
    m_bHasLast = false;
    return PrepareLineStore(vertices, true) ? 1 : 0;
}

void ePlaneTileShortPositionTextureLineTessellator::Line(
    eVertexData* vertices, eIndexData*, eSceneMode mode, eCoordSys* coordSys, ePoint2D const& from,
    ePoint2D const& to, double width, eVector4T<unsigned char> const& color,
    eVector3T<double> const& anchor, double scale)
{
    if (!PrepareLineStore(vertices, vertices != m_pVertexData))
        return;
    eVector3T<double> a = WorldOf(mode, coordSys, from), b = WorldOf(mode, coordSys, to);
    if (!m_bHasLast || !(from == m_ptLast))
        m_dLength = 0.0;
    double lengthA = m_dLength;
    eVector3T<double> d = b - a;
    double length = d.Length();
    m_dLength += length;
    m_ptLast = to;
    m_bHasLast = true;

    eVector3T<double> direction = length > 0.0 ? d * (1.0 / length) : eVector3T<double>();
    float const dir[3] = {(float)direction.x, (float)direction.y, (float)direction.z};
    float const halfWidth = (float)(0.5 * width * scale);
    eVector3T<double> localA = a - anchor, localB = b - anchor;
    float const endA[4] = {(float)localA.x, (float)localA.y, (float)localA.z, (float)lengthA};
    float const endB[4] = {(float)localB.x, (float)localB.y, (float)localB.z, (float)m_dLength};
    unsigned char const rgba[4] = {color.x, color.y, color.z, color.w};

    // The start cap, the body and the end cap, each from its first edge (end, along) to its
    // second.
    struct Edge
    {
        float const* end;
        float along;
    };
    Edge const squares[3][2] = {
        {{endA, -1.0f}, {endA, 0.0f}}, {{endA, 0.0f}, {endB, 0.0f}}, {{endB, 0.0f}, {endB, 1.0f}}};
    // Corners of a square as (edge, across), counter-clockwise on the screen.
    static int const corners[6][2] = {{0, -1}, {1, -1}, {1, 1}, {0, -1}, {1, 1}, {0, 1}};
    unsigned char vertex[kVerticesPerSegment][kStride];
    for (int s = 0; s < 3; ++s)
        for (int c = 0; c < 6; ++c)
        {
            Edge const& e = squares[s][corners[c][0]];
            float const stroke[3] = {e.along, (float)corners[c][1], halfWidth};
            unsigned char* out = vertex[s * 6 + c];
            Put(out, e.end, 4 * sizeof(float));
            Put(out, dir, sizeof dir);
            Put(out, stroke, sizeof stroke);
            Put(out, rgba, sizeof rgba);
        }
    vertices->AddVertex(&vertex[0][0], kVerticesPerSegment);
}

} // namespace KYR
