#include "eVolumeRayCastAlphaTransfer.h"

namespace KYR
{

eVolumeRayCastAlphaTransfer::eVolumeRayCastAlphaTransfer(eVolumeRayCastAlphaTransfer const& other)
    : m_bEnabled(other.m_bEnabled), m_nFirst(other.m_nFirst), m_nLast(other.m_nLast),
      m_arPoints(other.m_arPoints)
{
}

eVolumeRayCastAlphaTransfer&
eVolumeRayCastAlphaTransfer::operator=(eVolumeRayCastAlphaTransfer const& other)
{
    if (this == &other)
        return *this;
    m_bEnabled = other.m_bEnabled;
    m_nFirst = other.m_nFirst;
    m_nLast = other.m_nLast;
    m_arPoints = other.m_arPoints;
    return *this;
}

} // namespace KYR
