// One colour for the half-open value interval [m_dMin, m_dMax).
#pragma once
#include "eVector4.h"

namespace KYR
{

class eColorRange
{
public:
    eColorRange();
    eColorRange(double min, double max, eVector4T<unsigned char>& color);
    eColorRange(eColorRange const& other);
    eColorRange& operator=(eColorRange const& other);
    ~eColorRange();

    // Whether min <= value < max; NaN and an empty range never match.
    bool Contains(double value) const { return m_dMin <= value && value < m_dMax; }

    double m_dMin;
    double m_dMax;
    eVector4T<unsigned char> m_Color;
};

} // namespace KYR
