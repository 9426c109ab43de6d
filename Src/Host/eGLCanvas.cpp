// The canvas library's geometry writers: face normals, and the layout of glyphs into quads;
// the tessellators join as the effects that use them arrive.
#include "eCoordSys.h"
#include "eGeometry.h"
#include "eMesh.h"
#include "eText.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace KYR
{

namespace
{
int const kTextVertexType = 133;
int const kTextStride = 24; // float 3 + float 2 + 4 bytes

// Gives an empty store the text layout; false (reported) for a store laid out otherwise.
bool PrepareTextStore(eVertexData* vertices)
{
    if (vertices->GetVertexElements().empty())
    {
        vertices->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
        vertices->AddElement(eVET_FLOAT, eVEC_2, eAI_TEXCOORD0, 0);
        vertices->AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_COLOR, 1);
        vertices->SetVertexType(kTextVertexType);
    }
    if (vertices->GetVertexStride() != kTextStride)
    {
        std::fprintf(stderr,
                     "eGLCanvas::Text: the vertex store has %d bytes a vertex, text needs %d "
                     "(float 3, float 2, byte 4)\n",
                     vertices->GetVertexStride(), kTextStride);
        return false;
    }
    return true;
}
} // namespace

eVector3T<float> eGLCanvas::ComputeFaceNormal(eVector3T<float> const& a, eVector3T<float> const& b,
                                              eVector3T<float> const& c)
{
    // (b - a) x (c - a): out of the face when a, b, c turn counter-clockwise seen from outside.
    float ux = b.x - a.x, uy = b.y - a.y, uz = b.z - a.z;
    float vx = c.x - a.x, vy = c.y - a.y, vz = c.z - a.z;
    float nx = uy * vz - uz * vy, ny = uz * vx - ux * vz, nz = ux * vy - uy * vx;
    float len = std::sqrt(nx * nx + ny * ny + nz * nz);
    if (len <= 0.0f)
        return eVector3T<float>(0.0f, 0.0f, 0.0f);
    return eVector3T<float>(nx / len, ny / len, nz / len);
}

void eGLCanvas::Text(eVertexData* vertices, eIndexData* indices, std::vector<int>& starts,
                     eSceneMode mode, eCoordSys* coordSys, ePoint2D const& anchor, double scale,
                     std::vector<tagTextGlyph*>& glyphs, eVector4T<unsigned char> const& color,
                     int align, eVector3T<double> const& offset)
{
    starts.clear();
    if (!vertices || !indices || !PrepareTextStore(vertices))
        return;

    // The line's box in pixels, with the pen starting at its left end on the baseline.
    eSize2D size = eTextContext::GetTextGlyphSize(glyphs);
    int baseline = 0;
    for (tagTextGlyph const* g : glyphs)
        if (g)
            baseline = std::max(baseline, g->m_nBaseline);
    double x = 0.0;
    int horizontal = align & eGeoTextStyle::eTA_HORIZONTAL_MASK;
    if (horizontal == eGeoTextStyle::eTA_CENTER)
        x = -size.cx * 0.5;
    else if (horizontal == eGeoTextStyle::eTA_RIGHT)
        x = -size.cx;
    double bottom = -baseline; // cell bottoms, relative to the anchor
    switch (align & eGeoTextStyle::eTA_VERTICAL_MASK)
    {
    case eGeoTextStyle::eTA_TOP:
        bottom = -size.cy;
        break;
    case eGeoTextStyle::eTA_BOTTOM:
        bottom = 0.0;
        break;
    case eGeoTextStyle::eTA_MIDDLE:
        bottom = -size.cy * 0.5;
        break;
    default:
        break;
    }
    double y = 0.0;

    auto toOutput = [&](double px, double py, float* out)
    {
        double wx = anchor.x + px, wy = anchor.y + py;
        if (coordSys)
        {
            wx = coordSys->PixelToWorld(mode, scale, wx);
            wy = coordSys->PixelToWorld(mode, scale, wy);
        }
        else
        {
            wx *= scale;
            wy *= scale;
        }
        out[0] = (float)(wx + offset.x);
        out[1] = (float)(wy + offset.y);
        out[2] = (float)offset.z;
    };

    int first = vertices->GetVertexSize();
    for (tagTextGlyph const* g : glyphs)
    {
        if (first + 4 > 65536)
        {
            std::fprintf(stderr, "eGLCanvas::Text: over 65536 vertices; the line is cut short\n");
            break;
        }
        double w = g ? g->m_nWidth : 0.0, h = g ? g->m_nHeight : 0.0;
        double u = g && g->m_nTextureWidth > 0 ? w / g->m_nTextureWidth : 0.0;
        double v = g && g->m_nTextureHeight > 0 ? h / g->m_nTextureHeight : 0.0;
        double const corner[4][4] = {
            {0.0, 0.0, 0.0, v}, {w, 0.0, u, v}, {0.0, h, 0.0, 0.0}, {w, h, u, 0.0}};
        unsigned char vertex[4][kTextStride];
        for (int k = 0; k < 4; ++k)
        {
            float f[5];
            toOutput(x + corner[k][0], y + bottom + corner[k][1], f);
            f[3] = (float)corner[k][2];
            f[4] = (float)corner[k][3];
            std::memcpy(vertex[k], f, sizeof f);
            unsigned char rgba[4] = {color.x, color.y, color.z, color.w};
            std::memcpy(vertex[k] + sizeof f, rgba, sizeof rgba);
        }
        vertices->AddVertex(&vertex[0][0], 4);
        starts.push_back(indices->GetIndexSize());
        for (int k = 0; k < 4; ++k)
            indices->AddIndex((unsigned short)(first + k));
        first += 4;
        if (g)
        {
            x += g->m_nAdvanceX;
            y += g->m_nAdvanceY;
        }
    }
}

} // namespace KYR
