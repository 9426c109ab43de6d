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

// Emits six vertices per point.
class eLengthPointTessellator
{
public:
    eLengthPointTessellator() {}
    virtual ~eLengthPointTessellator() {}
    unsigned char Create(eVertexData* vertices, eIndexData* indices);
    void Point(eVector3T<float> const& position, float length);

protected:
    eVertexData* m_pVertexData = nullptr;
    eIndexData* m_pIndexData = nullptr;
};

// Emits eighteen vertices per segment.
class ePlaneTileShortPositionTextureLineTessellator
{
public:
    ePlaneTileShortPositionTextureLineTessellator() {}
    virtual ~ePlaneTileShortPositionTextureLineTessellator() {}
    unsigned char Create(eVertexData* vertices, eIndexData* indices);
    void Line(eVector3T<float> const& from, eVector3T<float> const& to, float width);

protected:
    eVertexData* m_pVertexData = nullptr;
    eIndexData* m_pIndexData = nullptr;
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
