// One prism of a cube set: a square footprint of half side m_fRadius around a position,
// standing m_fHeight high, coloured from m_cBottomColor at the ground to m_cTopColor at the
// top. A plain record: the set copies it into its pool.
#pragma once
#include "eVector4.h"

namespace KYR
{

class eCubePoint
{
public:
    eCubePoint();
    eCubePoint(eCubePoint const&) = default;
    eCubePoint& operator=(eCubePoint const&) = default;
    ~eCubePoint() = default;

    // Flags exactly; sizes, position and colours within the host's tolerance (Eequal).
    bool operator==(eCubePoint const& other) const;
    bool operator!=(eCubePoint const& other) const { return !(*this == other); }

    unsigned char m_bValid;
    unsigned char m_bAdded; // the geometry has reached the set's buffers
    float m_fRadius;
    float m_fHeight;
    eVector4T<double> m_vPosition;
    eVector4T<unsigned char> m_cTopColor;
    eVector4T<unsigned char> m_cBottomColor;
};

} // namespace KYR
