// A colour transfer setting of the volume ray caster, as an application keeps it: a window
// of voxel values (centre and span) and the RGBA entries it maps to. A plain value; the
// effect itself takes its table through eRenderVolumeRayCast::SetVolumeColorRGBA.
#pragma once
#include "eVector4.h"
#include <vector>

namespace KYR
{

class eVolumeRayCastColorTransfer
{
public:
    eVolumeRayCastColorTransfer() = default;
    eVolumeRayCastColorTransfer(eVolumeRayCastColorTransfer const& other);
    eVolumeRayCastColorTransfer& operator=(eVolumeRayCastColorTransfer const& other);

    bool m_bEnabled = false;
    int m_nFirst = 0; // first and last entry the colours cover
    int m_nLast = 0;
    double m_dCenter = 0.0;
    double m_dSpan = 0.0;
    std::vector<eVector4T<double>> m_arColors;
};

} // namespace KYR
