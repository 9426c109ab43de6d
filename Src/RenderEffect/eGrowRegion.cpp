#include "eGrowRegion.h"

namespace KYR
{

eGrowRegion::eGrowRegion() {}

} // namespace KYR
