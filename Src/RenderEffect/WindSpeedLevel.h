// Wind speed classes 0..22 used to colour winds through a 24-entry colour table.
#pragma once

namespace KYR
{

// Speed in metres per second to a class: 0 for calm air, 1 above 0 up to 2, then one class
// per 2 m/s, except the double-width classes 9 (16..20) and 18 (36..40). Lower bounds are
// included. Negative speeds and speeds of 48 or more fall back to class 0.
int WindSpeedLevel(double speed);

} // namespace KYR
