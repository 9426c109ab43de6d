#include "MarchingCubes.h"
#include <array>
#include <cmath>

namespace Gallery
{

namespace
{

// Corner c of a cube lies at (c & 1, (c >> 1) & 1, (c >> 2) & 1) cells from its first one.
int const kCorners = 8, kEdges = 12;

// The twelve edges as corner pairs, four along each axis.
struct Edges
{
    int a[kEdges], b[kEdges];
    int id[kCorners][kCorners];
    Edges()
    {
        int n = 0;
        for (int bit = 1; bit <= 4; bit <<= 1)
            for (int c = 0; c < kCorners; ++c)
                if (!(c & bit))
                {
                    a[n] = c;
                    b[n] = c | bit;
                    id[c][c | bit] = id[c | bit][c] = n;
                    ++n;
                }
    }
};

Edges const& TheEdges()
{
    static Edges const s_edges;
    return s_edges;
}

// The triangles of each of the 256 cases of inside corners, as edge triples. Built rather
// than written out: on each face the crossed edges are joined in pairs, ambiguous faces
// (two inside corners diagonally) cutting off each inside corner; that rule depends on the
// face alone, so neighbouring cubes agree and the surface has no cracks. The joins form
// closed loops around the cube, each fanned into triangles.
struct CaseTable
{
    std::vector<std::array<int, 3>> triangles[256];

    CaseTable()
    {
        Edges const& edges = TheEdges();
        for (int inside = 1; inside < 255; ++inside)
        {
            auto in = [inside](int c) { return (inside >> c) & 1; };
            std::vector<int> links[kEdges];
            auto join = [&links](int e, int f)
            {
                links[e].push_back(f);
                links[f].push_back(e);
            };
            for (int bit = 1; bit <= 4; bit <<= 1)
                for (int side = 0; side <= bit; side += bit)
                {
                    // The face's corners in turn around it.
                    int const u = bit == 1 ? 2 : 1, v = bit == 4 ? 2 : 4;
                    int const q[4] = {side, side | u, side | u | v, side | v};
                    int e[4];
                    int crossed = 0;
                    for (int k = 0; k < 4; ++k)
                    {
                        e[k] = edges.id[q[k]][q[(k + 1) % 4]];
                        crossed += in(q[k]) != in(q[(k + 1) % 4]);
                    }
                    if (crossed == 2)
                    {
                        int first = -1;
                        for (int k = 0; k < 4; ++k)
                            if (in(q[k]) != in(q[(k + 1) % 4]))
                            {
                                if (first < 0)
                                    first = e[k];
                                else
                                    join(first, e[k]);
                            }
                    }
                    else if (crossed == 4)
                        for (int k = 0; k < 4; ++k)
                            if (in(q[k]))
                                join(e[(k + 3) % 4], e[k]);
                }
            bool visited[kEdges] = {};
            for (int start = 0; start < kEdges; ++start)
            {
                if (links[start].empty() || visited[start])
                    continue;
                std::vector<int> loop;
                int previous = -1, current = start;
                do
                {
                    loop.push_back(current);
                    visited[current] = true;
                    int const next =
                        links[current][0] != previous ? links[current][0] : links[current][1];
                    previous = current;
                    current = next;
                } while (current != start);
                for (size_t k = 1; k + 1 < loop.size(); ++k)
                    triangles[inside].push_back({loop[0], loop[k], loop[k + 1]});
            }
        }
    }
};

CaseTable const& TheCases()
{
    static CaseTable const s_cases;
    return s_cases;
}

// Down the gradient at sample (i, j, k), per unit length of the grid's units.
void Downhill(ScalarGrid const& g, int i, int j, int k, double out[3])
{
    out[0] = -(g.At(i + 1, j, k) - g.At(i - 1, j, k)) / (2.0 * g.cell[0]);
    out[1] = -(g.At(i, j + 1, k) - g.At(i, j - 1, k)) / (2.0 * g.cell[1]);
    out[2] = -(g.At(i, j, k + 1) - g.At(i, j, k - 1)) / (2.0 * g.cell[2]);
}

} // namespace

std::vector<KYR::tagNormalTextureVertex3r> MarchingCubes(ScalarGrid const& grid, float level)
{
    Edges const& edges = TheEdges();
    CaseTable const& cases = TheCases();
    std::vector<KYR::tagNormalTextureVertex3r> out;
    // Cubes join neighbouring sample centres; those on the border reach the zero outside.
    for (int k = -1; k < grid.nz; ++k)
        for (int j = -1; j < grid.ny; ++j)
            for (int i = -1; i < grid.nx; ++i)
            {
                float value[kCorners];
                int inside = 0;
                for (int c = 0; c < kCorners; ++c)
                {
                    value[c] = grid.At(i + (c & 1), j + ((c >> 1) & 1), k + ((c >> 2) & 1));
                    inside |= (value[c] >= level) << c;
                }
                if (cases.triangles[inside].empty())
                    continue;
                KYR::tagNormalTextureVertex3r cut[kEdges];
                bool made[kEdges] = {};
                auto vertexOn = [&](int e) -> KYR::tagNormalTextureVertex3r const&
                {
                    if (made[e])
                        return cut[e];
                    int const a = edges.a[e], b = edges.b[e];
                    double const t = (level - value[a]) / (double)(value[b] - value[a]);
                    int const ca[3] = {i + (a & 1), j + ((a >> 1) & 1), k + ((a >> 2) & 1)};
                    int const cb[3] = {i + (b & 1), j + ((b >> 1) & 1), k + ((b >> 2) & 1)};
                    double na[3], nb[3], n[3];
                    Downhill(grid, ca[0], ca[1], ca[2], na);
                    Downhill(grid, cb[0], cb[1], cb[2], nb);
                    double length = 0.0;
                    for (int x = 0; x < 3; ++x)
                    {
                        n[x] = na[x] + (nb[x] - na[x]) * t;
                        length += n[x] * n[x];
                    }
                    length = std::sqrt(length);
                    KYR::tagNormalTextureVertex3r& v = cut[e];
                    for (int x = 0; x < 3; ++x)
                    {
                        double const centre = ca[x] + 0.5 + (cb[x] - ca[x]) * t;
                        v.position[x] = (float)(centre * grid.cell[x]);
                        v.normal[x] =
                            length > 0.0 ? (float)(n[x] / length) : (x == 2 ? 1.0f : 0.0f);
                    }
                    v.texcoord[0] = v.texcoord[1] = 0.0f;
                    made[e] = true;
                    return v;
                };
                for (auto const& triangle : cases.triangles[inside])
                    for (int e : triangle)
                        out.push_back(vertexOn(e));
            }
    return out;
}

} // namespace Gallery
