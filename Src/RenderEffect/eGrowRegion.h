// One filled region of a region grow set: the points of its boundary ring and its base
// colour. The set fills it once when it is added and recolours it boundary point by boundary
// point; the colours spread inward across its triangles.
#pragma once
#include "eGrowShape.h"

namespace KYR
{

class eGrowRegion : public eGrowShape
{
public:
    eGrowRegion();
    eGrowRegion(eGrowRegion const&) = default;
    eGrowRegion& operator=(eGrowRegion const&) = default;
    ~eGrowRegion() = default;
};

} // namespace KYR
