// One particle of the screen-space wind lines: the segment it draws this frame, in pixels
// of the screen field (row 0 at the top), its age in drawn frames and the wind speed where
// it was seeded, which picks its brightness.
#pragma once
#include "ePoint.h"

namespace KYR
{

struct WindParticle
{
    ePoint2D position; // start of the segment
    ePoint2D next;     // end of the segment; equal to position while the particle stands
    double age;        // frames drawn; the particle is replaced once it passes 100
    double speed;      // wind speed at the seeding pixel
};

} // namespace KYR
