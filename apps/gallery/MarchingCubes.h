// Iso-surfaces of a grid of values by marching cubes, as the plain triangle lists that
// eRenderIsoSurface3D draws. The grid counts as zero outside itself, so surfaces close at
// its borders; normals follow the field's gradient towards lower values.
#pragma once
#include "eRenderIsoSurface3D.h"
#include <vector>

namespace Gallery
{

// Values at the centres of nx * ny * nz cells (x fastest), cell (i, j, k) centred at
// ((i + 0.5) * cell[0], (j + 0.5) * cell[1], (k + 0.5) * cell[2]).
struct ScalarGrid
{
    int nx = 0, ny = 0, nz = 0;
    double cell[3] = {1.0, 1.0, 1.0};
    std::vector<float> values;

    float At(int i, int j, int k) const
    {
        if (i < 0 || j < 0 || k < 0 || i >= nx || j >= ny || k >= nz)
            return 0.0f;
        return values[((size_t)k * ny + j) * nx + i];
    }
};

// The surface where the grid crosses `level`, three vertices a triangle, in the grid's
// units. Values at or above the level lie inside.
std::vector<KYR::tagNormalTextureVertex3r> MarchingCubes(ScalarGrid const& grid, float level);

} // namespace Gallery
