#include "ePointTrace.h"

namespace KYR
{

ePointTrace::ePointTrace() : m_nSpatialRefType(1), m_nFirstIndex(0), m_nWindowCount(0) {}

} // namespace KYR
