#include "eVolumeRayCastColorTransfer.h"

namespace KYR
{

eVolumeRayCastColorTransfer::eVolumeRayCastColorTransfer(eVolumeRayCastColorTransfer const& other)
    : m_bEnabled(other.m_bEnabled), m_nFirst(other.m_nFirst), m_nLast(other.m_nLast),
      m_dCenter(other.m_dCenter), m_dSpan(other.m_dSpan), m_arColors(other.m_arColors)
{
}

eVolumeRayCastColorTransfer&
eVolumeRayCastColorTransfer::operator=(eVolumeRayCastColorTransfer const& other)
{
    if (this == &other)
        return *this;
    m_bEnabled = other.m_bEnabled;
    m_nFirst = other.m_nFirst;
    m_nLast = other.m_nLast;
    m_dCenter = other.m_dCenter;
    m_dSpan = other.m_dSpan;
    m_arColors = other.m_arColors;
    return *this;
}

} // namespace KYR
