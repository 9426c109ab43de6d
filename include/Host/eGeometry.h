// Geometry services of the canvas libraries: glyph layout, face normals, point and
// line tessellators, geographic lines, and data-set descriptors. The writers are
// implemented by the host as the effects that use them arrive.
#pragma once
#include "eEnums.h"
#include "ePoint.h"
#include "eString.h"
#include "eVector3.h"
#include "eVector4.h"
#include <vector>

namespace KYR
{

class eVertexData;
class eIndexData;
class eCoordSys;
struct tagTextGlyph;

// Where a line of text stands against its anchor: one horizontal and one vertical value,
// added. Horizontal: left (4, also 0), centre (8), right (12) of the line at the anchor.
// Vertical: the baseline (0), the top (1), the bottom (2) or the middle (3) of the line's
// cells at the anchor. The label parts of compose objects pass 6 (left, bottom: the text
// runs right and up from its anchor), the iso-line labels 10 (centred on the anchor, on
// top of the line).
class eGeoTextStyle
{
public:
    enum TextAlign
    {
        eTA_BASELINE = 0,
        eTA_TOP = 1,
        eTA_BOTTOM = 2,
        eTA_MIDDLE = 3,
        eTA_VERTICAL_MASK = 3,
        eTA_LEFT = 4,
        eTA_CENTER = 8,
        eTA_RIGHT = 12,
        eTA_HORIZONTAL_MASK = 12,
    };
};

class eGLCanvas
{
public:
    // Unit normal of the face through three points (counter-clockwise front).
    static eVector3T<float> ComputeFaceNormal(eVector3T<float> const& a, eVector3T<float> const& b,
                                              eVector3T<float> const& c);
    // Lays out one line of glyphs (eText.h) as one triangle strip of four vertices per glyph,
    // appended to `vertices` and `indices`, and sets `starts` to the index where each
    // glyph's four indices begin, one entry per glyph (a null glyph gets an empty quad). A
    // store without elements gets the layout float 3 position (attribute 0), float 2
    // texture coordinate (7), 4 normalised bytes of colour (2), vertex type 133, 24 bytes;
    // a store with another layout is reported and left alone. The quads run bottom-left,
    // bottom-right, top-left, top-right with texture coordinates (0, v), (u, v), (0, 0),
    // (u, 0) of the glyph's cell, counter-clockwise in x right, y up. Positions are pixels
    // of the line placed against `anchor` (pixels) by `align` (eGeoTextStyle::TextAlign),
    // converted with coordSys->PixelToWorld(mode, scale, value) (value * scale without a
    // coordinate system), and moved by `offset` (z included). Every vertex has `color`.
    static void Text(eVertexData* vertices, eIndexData* indices, std::vector<int>& starts,
                     eSceneMode mode, eCoordSys* coordSys, ePoint2D const& anchor, double scale,
                     std::vector<tagTextGlyph*>& glyphs, eVector4T<unsigned char> const& color,
                     int align, eVector3T<double> const& offset = eVector3T<double>());
};

// Points of a path as round markers: six vertices a point, two triangles of a square lying on
// the ground, written after what the vertex store holds. No indices: the vertices are a
// triangle list in order, and the index store is kept only to be handed back.
//
// Create gives a store without elements this layout (vertex type kPointVertexType, 28 bytes):
//   offset  0  float x 4  attribute 0 (a_position)  corner of the square, x y z relative to the
//                                                   anchor; w the length of the path so far
//   offset 16  float x 2  attribute 7 (a_texcoord0) the corner as -1 / +1 across and along,
//                                                   for cutting the disc
//   offset 24  byte x 4   attribute 3 (a_attrib3)   the colour, normalised
// and reports (on stderr, returning 0) a store laid out otherwise. The corners run
// (-1, -1), (+1, -1), (+1, +1), (-1, -1), (+1, +1), (-1, +1): counter-clockwise seen from
// above. The length is measured in world units from the first point after Create, point to
// point in a straight line.
class eLengthPointTessellator
{
public:
    static unsigned int const kPointVertexType = 919;
    static int const kVerticesPerPoint = 6;
    static int const kStride = 28;

    eLengthPointTessellator() {}
    virtual ~eLengthPointTessellator() {}
    // Keeps the stores for the points to come and starts the length at 0.
    unsigned char Create(eVertexData* vertices, eIndexData* indices);
    // One point: `point` is logical (degrees on the globe, map metres on the plane) and placed
    // through coordSys->LogicalToWorld (as x, y, 0 without a coordinate system); positions are
    // written relative to `anchor`, a world position. `size` is the square's side in pixels
    // at the view the caller measured `scale` for: the level-0 resolution over the view's, so
    // that the square is size pixels across there and keeps its ground size as the view
    // zooms. On the globe the square lies in the tangent plane at the point.
    void Point(eVertexData* vertices, eIndexData* indices, eSceneMode mode, eCoordSys* coordSys,
               ePoint2D const& point, double size, eVector4T<unsigned char> const& color,
               eVector3T<double> const& anchor, double scale);

protected:
    eVertexData* m_pVertexData = nullptr;
    eIndexData* m_pIndexData = nullptr;
    double m_dLength = 0.0;
    eVector3T<double> m_vLast; // world position of the point before
    bool m_bHasLast = false;
};

// Segments of a path as strokes of a constant width in pixels with round ends: eighteen
// vertices a segment, three squares of two triangles each - the cap at the start, the body,
// the cap at the end - all on the segment's centre line; the program pushes them out on the
// screen. Written after what the vertex store holds, as a triangle list without indices (the
// index store is kept only to be handed back). Round caps overlapping at the joints make
// round joins, since a segment knows nothing of its neighbours.
//
// Create gives a store without elements this layout (vertex type kLineVertexType, 44 bytes):
//   offset  0  float x 4  attribute 0 (a_position)  the segment's end the vertex belongs to, x
//                                                   y z relative to the anchor; w the length of
//                                                   the path at that end
//   offset 16  float x 3  attribute 15 (a_attrib15) the segment's unit direction, world axes
//                                                   (0 for a segment of no length)
//   offset 28  float x 3  attribute 7 (a_texcoord0) stroke coordinates: along (-1 the start
//                                                   cap's outer edge, 0 on the end point, +1
//                                                   the end cap's outer edge), across (-1 right,
//                                                   +1 left of the direction), half the width
//                                                   in pixels
//   offset 40  byte x 4   attribute 3 (a_attrib3)   the colour, normalised
// and reports (on stderr, returning 0) a store laid out otherwise. Along and across are in
// half widths, so the caps are the discs along^2 + across^2 <= 1. The length runs on from
// segment to segment while each starts where the one before ended, and starts again at 0
// at a segment that does not.
class ePlaneTileShortPositionTextureLineTessellator
{
public:
    static unsigned int const kLineVertexType = 4096;
    static int const kVerticesPerSegment = 18;
    static int const kStride = 44;

    ePlaneTileShortPositionTextureLineTessellator() {}
    virtual ~ePlaneTileShortPositionTextureLineTessellator() {}
    // Keeps the stores for the segments to come and starts the length at 0.
    unsigned char Create(eVertexData* vertices, eIndexData* indices);
    // One segment between two logical points, placed as eLengthPointTessellator::Point places
    // a point. The stroke is `width` x `scale` pixels wide at any distance.
    void Line(eVertexData* vertices, eIndexData* indices, eSceneMode mode, eCoordSys* coordSys,
              ePoint2D const& from, ePoint2D const& to, double width,
              eVector4T<unsigned char> const& color, eVector3T<double> const& anchor, double scale);

protected:
    eVertexData* m_pVertexData = nullptr;
    eIndexData* m_pIndexData = nullptr;
    double m_dLength = 0.0;
    ePoint2D m_ptLast; // where the segment before ended
    bool m_bHasLast = false;
};

class eGeoLine
{
public:
    eGeoLine() {}
    virtual ~eGeoLine() {}
    int GetSubCount() const { return (int)m_arParts.size(); }
    int GetSubPntCount(int part) const
    {
        return (part >= 0 && part < GetSubCount()) ? (int)m_arParts[(size_t)part].size() : 0;
    }
    ePoint2D* GetPoints(int part)
    {
        return (part >= 0 && part < GetSubCount() && !m_arParts[(size_t)part].empty())
                   ? m_arParts[(size_t)part].data()
                   : nullptr;
    }
    void AddPart(std::vector<ePoint2D> const& points) { m_arParts.push_back(points); }

private:
    std::vector<std::vector<ePoint2D>> m_arParts;
};

// Data-set descriptors: plain values, copied and assigned.
struct eFieldInfo
{
    eString m_strName;
    int m_nType = 0;
    int m_nSize = 0;
};
struct eFieldDefine
{
    eString m_strName;
    eString m_strAlias;
    int m_nType = 0;
};
struct eJoinItem
{
    eString m_strTable;
    eString m_strCondition;
};
struct eLinkItem
{
    eString m_strTable;
    eString m_strForeignKey;
    eString m_strPrimaryKey;
};
struct eQueryDef
{
    eString m_strFilter;
    std::vector<eString> m_arFields;
    std::vector<eJoinItem> m_arJoins;
    std::vector<eLinkItem> m_arLinks;
};

} // namespace KYR
