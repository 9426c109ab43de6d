#include "eColorRange.h"

namespace KYR
{

eColorRange::eColorRange() : m_dMin(0.0), m_dMax(0.0), m_Color(0, 0, 0, 0) {}

eColorRange::eColorRange(double min, double max, eVector4T<unsigned char>& color)
    : m_dMin(min), m_dMax(max), m_Color(color)
{
}

eColorRange::eColorRange(eColorRange const& other)
    : m_dMin(other.m_dMin), m_dMax(other.m_dMax), m_Color(other.m_Color)
{
}

eColorRange& eColorRange::operator=(eColorRange const& other)
{
    m_dMin = other.m_dMin;
    m_dMax = other.m_dMax;
    m_Color = other.m_Color;
    return *this;
}

eColorRange::~eColorRange() {}

} // namespace KYR
