#include "WindSpeedLevel.h"

namespace KYR
{

int WindSpeedLevel(double speed)
{
    if (!(speed > 0.0) || speed >= 48.0)
        return 0;
    if (speed < 16.0)
        return (int)(speed / 2.0) + 1; // 1..8
    if (speed < 20.0)
        return 9;
    if (speed < 36.0)
        return (int)((speed - 20.0) / 2.0) + 10; // 10..17
    if (speed < 40.0)
        return 18;
    return (int)((speed - 40.0) / 2.0) + 19; // 19..22
}

} // namespace KYR
