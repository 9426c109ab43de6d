// One counted point of a grid set: its weight in the total of the cell it falls in, its
// position in the set's spatial reference, and that position in the set's local frame,
// which the set fills in when the point is added.
#pragma once
#include "eVector4.h"

namespace KYR
{

class eGridPoint
{
public:
    eGridPoint();
    eGridPoint(eGridPoint const&) = default;
    eGridPoint& operator=(eGridPoint const&) = default;
    ~eGridPoint() = default;

    // The value exactly, the position within the host's tolerance (Eequal); the local
    // position is derived and not compared.
    bool operator==(eGridPoint const& other) const;
    bool operator!=(eGridPoint const& other) const { return !(*this == other); }

    int m_nValue;
    eVector4T<double> m_vPosition;
    eVector4T<float> m_vLocal;
};

} // namespace KYR
