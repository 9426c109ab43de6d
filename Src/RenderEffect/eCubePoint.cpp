#include "eCubePoint.h"
#include "eBase.h"

namespace KYR
{

eCubePoint::eCubePoint()
    : m_bValid(1), m_bAdded(0), m_fRadius(100.0f), m_fHeight(10000.0f),
      m_vPosition(0.0, 0.0, 0.0, 0.0), m_cTopColor(0, 0, 0, 0), m_cBottomColor(0, 0, 0, 0)
{
}

bool eCubePoint::operator==(eCubePoint const& other) const
{
    if (m_bValid != other.m_bValid || m_bAdded != other.m_bAdded)
        return false;
    if (!Eequal(m_fRadius, other.m_fRadius) || !Eequal(m_fHeight, other.m_fHeight))
        return false;
    for (int i = 0; i < 4; ++i)
        if (!Eequal(m_vPosition[i], other.m_vPosition[i]) ||
            !Eequal((double)m_cTopColor[i], (double)other.m_cTopColor[i]) ||
            !Eequal((double)m_cBottomColor[i], (double)other.m_cBottomColor[i]))
            return false;
    return true;
}

} // namespace KYR
