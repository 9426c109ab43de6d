// A host raster block as the tile draws read it: one float a pixel, the block's values scaled
// to 0..1 over its minimum and maximum. Shared by the effects that lay a raster of values over
// the terrain tiles.
#pragma once
#include "eRaster.h"

namespace KYR
{

class eNormalisedRaster
{
public:
    // A new texture info (flag byte set, format 3200) holding (value - minimum) / (maximum -
    // minimum) for each pixel, computed in double and stored as float, without a clamp. A
    // block of a format other than 8, 16, 17 or 3200, or without pixels, gives an info with
    // its size but no format and no pixels.
    static eTextureInfo* Create(eRasterBlock const& block);
};

} // namespace KYR
