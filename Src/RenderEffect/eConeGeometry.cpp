#include "eConeGeometry.h"
#include <cmath>

namespace KYR
{

eConeGeometry::eConeGeometry(double radius, double height)
    : m_nSlices(30), m_bCap(1), m_dRadius(radius), m_dHeight(height), m_dTexScale(1.0),
      m_Color{255, 255, 255, 255}
{
}

void eConeGeometry::SetColor(unsigned char r, unsigned char g, unsigned char b, unsigned char a)
{
    m_Color[0] = r;
    m_Color[1] = g;
    m_Color[2] = b;
    m_Color[3] = a;
}

eConeGeometry::Vertex eConeGeometry::MakeVertex(float x, float y, float z) const
{
    Vertex v{x, y, z, {m_Color[0], m_Color[1], m_Color[2], m_Color[3]}};
    return v;
}

// Ring of n points whose last point closes onto the first, then the tip at index n,
// then the cap centre at n + 1 when capped.
void eConeGeometry::BuildPositions()
{
    int n = m_nSlices;
    m_arVertices.clear();
    m_arIndices.clear();
    float degrees = 360.0f / (float)(n - 1);
    float step = (float)(degrees * (3.141592653589793 / 180.0));
    float a = 0.0f;
    for (int i = 0; i < n; ++i)
    {
        m_arVertices.push_back(MakeVertex((float)(std::cos(a) * m_dRadius),
                                          (float)(std::sin(a) * m_dRadius), 0.0f));
        a += step;
    }
    m_arVertices.push_back(MakeVertex(0.0f, 0.0f, (float)m_dHeight));
    for (int i = 0; i <= n - 2; ++i)
    {
        m_arIndices.push_back((unsigned short)i);
        m_arIndices.push_back((unsigned short)(i + 1));
        m_arIndices.push_back((unsigned short)n);
    }
    if (!m_bCap)
        return;
    m_arVertices.push_back(MakeVertex(0.0f, 0.0f, 0.0f));
    for (int i = 0; i <= n - 2; ++i)
    {
        m_arIndices.push_back((unsigned short)(n + 1));
        m_arIndices.push_back((unsigned short)(i + 1));
        m_arIndices.push_back((unsigned short)i);
    }
}

// The slant ratio is taken as if it were degrees: the texture hardly varies around
// the cone, so the flow runs along it.
void eConeGeometry::BuildTexCoords()
{
    int n = m_nSlices;
    m_arTexCoords.clear();
    float h = (float)m_dHeight, r = (float)m_dRadius;
    float s = std::sqrt(h * h + r * r);
    double angle = (m_dRadius / s) * 3.141592653589793 / 180.0;
    double half = -angle / 2.0;
    double p = 0.0 * std::cos(half) - (-m_dTexScale) * std::sin(half);
    double q = 0.0 * std::sin(half) + (-m_dTexScale) * std::cos(half);
    float b = 0.0f;
    float db = (float)(angle / (n - 1));
    for (int i = 0; i < n; ++i)
    {
        TexCoord t{(float)(std::cos(b) * p - std::sin(b) * q),
                   (float)(std::sin(b) * p + std::cos(b) * q)};
        m_arTexCoords.push_back(t);
        b += db;
    }
    m_arTexCoords.push_back(TexCoord{0.0f, 0.0f});
}

std::vector<eConeGeometry::MeshVertex> eConeGeometry::Merge() const
{
    std::vector<MeshVertex> out;
    if (m_arVertices.size() != m_arTexCoords.size())
        return out;
    out.reserve(m_arVertices.size());
    for (size_t i = 0; i < m_arVertices.size(); ++i)
    {
        Vertex const& v = m_arVertices[i];
        MeshVertex m{v.x, v.y, v.z, m_arTexCoords[i].u, m_arTexCoords[i].v,
                     {v.color[0], v.color[1], v.color[2], v.color[3]}};
        out.push_back(m);
    }
    return out;
}

} // namespace KYR
