#include "eGridPoint.h"
#include "eBase.h"

namespace KYR
{

eGridPoint::eGridPoint()
    : m_nValue(1), m_vPosition(0.0, 0.0, 0.0, 0.0), m_vLocal(0.0f, 0.0f, 0.0f, 0.0f)
{
}

bool eGridPoint::operator==(eGridPoint const& other) const
{
    if (m_nValue != other.m_nValue)
        return false;
    for (int i = 0; i < 4; ++i)
        if (!Eequal(m_vPosition[i], other.m_vPosition[i]))
            return false;
    return true;
}

} // namespace KYR
