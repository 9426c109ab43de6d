// One particle of the processor-side wind animation.
#pragma once
#include "ePoint.h"

namespace KYR
{

struct Particle
{
    ePoint2D previous; // position at the last draw; x == -1.0 before the first draw
    ePoint2D position; // in the coordinates of the render bounds
    double life;       // frames left; -2.0 once the particle has left the bounds
};

} // namespace KYR
