// One pulse of a cycle set: a marker that lights up at its birth time (w of the position)
// and dies away after the set's span, with its own kind, size and colour. A plain record:
// the set turns it into vertices when it is added and keeps nothing of it.
#pragma once
#include "eVector4.h"

namespace KYR
{

class eCyclePoint
{
public:
    eCyclePoint();
    eCyclePoint(eCyclePoint const&) = default;
    eCyclePoint& operator=(eCyclePoint const&) = default;
    ~eCyclePoint() = default;

    // The two bytes exactly, the size and the position within the host's tolerance (Eequal),
    // the colour byte by byte.
    bool operator==(eCyclePoint const& other) const;
    bool operator!=(eCyclePoint const& other) const { return !(*this == other); }

    unsigned char m_nSpatialRefType;  // coordinate kind of the position
    unsigned char m_nType;            // marker kind, handed to the program
    float m_fSize;                    // marker size in pixels, kept as a byte in the vertices
    eVector4T<double> m_Position;     // x, y, z and the birth time in w
    eVector4T<unsigned char> m_Color; // red, green, blue, alpha
};

} // namespace KYR
