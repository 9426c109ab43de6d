// Builds a cone in memory: a ring of slices around the base, the tip on +z, and
// texture coordinates spread over a small angle so the texture flows tip-wards.
#pragma once
#include <vector>

namespace KYR
{

class eConeGeometry
{
public:
    struct Vertex
    {
        float x, y, z;
        unsigned char color[4];
    };
    struct TexCoord
    {
        float u, v;
    };
    // Merged vertex of the mesh: position, texture coordinate, colour (24 bytes).
    struct MeshVertex
    {
        float x, y, z, u, v;
        unsigned char color[4];
    };

    eConeGeometry(double radius, double height);

    void SetColor(unsigned char r, unsigned char g, unsigned char b, unsigned char a);
    void SetSlices(int slices) { m_nSlices = slices; }
    void SetCap(unsigned char cap) { m_bCap = cap; }
    void SetTexScale(double scale) { m_dTexScale = scale; }
    double GetHeight() const { return m_dHeight; }
    double GetRadius() const { return m_dRadius; }

    void BuildPositions();
    void BuildTexCoords();
    // Vertices with their texture coordinates; empty when the counts differ.
    std::vector<MeshVertex> Merge() const;

    std::vector<Vertex> const& GetVertices() const { return m_arVertices; }
    std::vector<unsigned short> const& GetIndices() const { return m_arIndices; }
    std::vector<TexCoord> const& GetTexCoords() const { return m_arTexCoords; }

    int m_nSlices;
    unsigned char m_bCap;
    double m_dRadius;
    double m_dHeight;
    double m_dTexScale;
    unsigned char m_Color[4];
    std::vector<Vertex> m_arVertices;
    std::vector<unsigned short> m_arIndices;
    std::vector<TexCoord> m_arTexCoords;

private:
    Vertex MakeVertex(float x, float y, float z) const;
};

} // namespace KYR
