// An opacity transfer setting of the volume ray caster, as an application keeps it: control
// points of (voxel value, opacity) over a range of entries. A plain value; the effect builds
// its opacity from eigen value and span, or takes a whole table.
#pragma once
#include "eVector2.h"
#include <vector>

namespace KYR
{

class eVolumeRayCastAlphaTransfer
{
public:
    eVolumeRayCastAlphaTransfer() = default;
    eVolumeRayCastAlphaTransfer(eVolumeRayCastAlphaTransfer const& other);
    eVolumeRayCastAlphaTransfer& operator=(eVolumeRayCastAlphaTransfer const& other);

    bool m_bEnabled = false;
    int m_nFirst = 0; // first and last entry the points cover
    int m_nLast = 0;
    std::vector<eVector2T<double>> m_arPoints; // value, opacity
};

} // namespace KYR
