// The synthetic global wind field of the wind scenes (SyntheticWinds.h, shared with the
// resource tool) on the grid the processor-side wind effects take.
#pragma once
#include "GalleryGeo.h"
#include "SyntheticWinds.h"
#include "ePoint.h"
#include <cmath>
#include <vector>

namespace Gallery
{

// Wind (u east, v north) in m/s at a point in degrees; the resource tool writes the same
// field as the wind picture.
using Winds::Wind;

// The field on a 1-degree grid from (-180, 90): 361 x 181 vectors, north row first, as
// weather grids usually come.
int const kWindColumns = 361;
int const kWindRows = 181;
inline std::vector<KYR::ePoint2D> GlobalWinds()
{
    std::vector<KYR::ePoint2D> winds;
    winds.reserve((size_t)kWindColumns * kWindRows);
    for (int j = 0; j < kWindRows; ++j)
        for (int i = 0; i < kWindColumns; ++i)
        {
            double u, v;
            Wind(-180.0 + i, 90.0 - j, u, v);
            winds.push_back(KYR::ePoint2D(u, v));
        }
    return winds;
}

} // namespace Gallery
