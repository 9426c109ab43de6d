#include "eGrowLine.h"

namespace KYR
{

eGrowLine::eGrowLine() : m_fWidth(1.0f) {}

} // namespace KYR
