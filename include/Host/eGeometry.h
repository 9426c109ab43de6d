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

class eGLCanvas
{
public:
    // Unit normal of the face through three points (counter-clockwise front).
    static eVector3T<float> ComputeFaceNormal(eVector3T<float> const& a, eVector3T<float> const& b,
                                              eVector3T<float> const& c);
    // Lays glyphs out as one strip of four vertices each (float 3, float 2, byte 4)
    // and records in starts where each glyph's indices begin.
    static void Text(eVertexData* vertices, eIndexData* indices, std::vector<int>& starts,
                     eSceneMode mode, eCoordSys* coordSys, ePoint2D const& anchor, double scale,
                     std::vector<tagTextGlyph*>& glyphs, eVector4T<unsigned char> const& color,
                     int align, eVector3T<double> const& offset);
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
