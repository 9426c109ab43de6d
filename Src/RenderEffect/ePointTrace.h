// One trace of a point trace set: timed positions of one moving point, and the stretch
// of them that the set's time window currently shows.
#pragma once
#include "eVector4.h"
#include <vector>

namespace KYR
{

class ePointTrace
{
public:
    ePointTrace();

    int m_nSpatialRefType;                        // coordinate kind of the positions
    std::vector<eVector4T<double>> m_arPositions; // x, y, z and the time in w, rising time
    int m_nFirstIndex;                            // first position of the window
    int m_nWindowCount;                           // positions in the window
};

} // namespace KYR
