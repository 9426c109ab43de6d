// One marker of a density set: a soft spot with its own time stamp (w of the position),
// kind, size and colour. The set keeps a copy of it in a ring slot and notes in
// m_bUploaded whether the slot's range of the vertex buffer holds it.
#pragma once
#include "eVector4.h"

namespace KYR
{

class eDensityPoint
{
public:
    eDensityPoint();
    eDensityPoint(eDensityPoint const&) = default;
    eDensityPoint& operator=(eDensityPoint const&) = default;
    ~eDensityPoint() = default;

    // The three bytes exactly, the size and the position within the host's tolerance
    // (Eequal), the colour byte by byte.
    bool operator==(eDensityPoint const& other) const;
    bool operator!=(eDensityPoint const& other) const { return !(*this == other); }

    unsigned char m_nSpatialRefType;  // coordinate kind of the position
    unsigned char m_nType;            // marker kind, handed to the program
    unsigned char m_bUploaded;        // the vertex buffer holds the record
    float m_fSize;                    // marker size in pixels, kept as a byte in the vertices
    eVector4T<double> m_Position;     // x, y, z and the time stamp in w
    eVector4T<unsigned char> m_Color; // red, green, blue, alpha
};

} // namespace KYR
