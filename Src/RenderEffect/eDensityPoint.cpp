#include "eDensityPoint.h"
#include "eBase.h"

namespace KYR
{

eDensityPoint::eDensityPoint()
    : m_nSpatialRefType(1), m_nType(0), m_bUploaded(0), m_fSize(16.0f),
      m_Position(0.0, 0.0, 0.0, 0.0), m_Color(0, 0, 0, 0)
{
}

bool eDensityPoint::operator==(eDensityPoint const& other) const
{
    if (m_nSpatialRefType != other.m_nSpatialRefType || m_nType != other.m_nType ||
        m_bUploaded != other.m_bUploaded)
        return false;
    if (!Eequal(m_fSize, other.m_fSize))
        return false;
    for (int i = 0; i < 4; ++i)
        if (!Eequal(m_Position[i], other.m_Position[i]) || m_Color[i] != other.m_Color[i])
            return false;
    return true;
}

} // namespace KYR
