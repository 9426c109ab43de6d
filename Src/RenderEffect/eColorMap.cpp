#include "eColorMap.h"

namespace KYR
{

eColorMap::eColorMap() {}

eColorMap::eColorMap(eColorMap const& other) : m_arRanges(other.m_arRanges) {}

eColorMap& eColorMap::operator=(eColorMap const& other)
{
    if (this != &other)
        m_arRanges = other.m_arRanges;
    return *this;
}

eColorMap::~eColorMap() {}

int eColorMap::GetSize()
{
    return (int)m_arRanges.size();
}

void eColorMap::Add(double min, double max, eVector4T<unsigned char>& color)
{
    m_arRanges.push_back(eColorRange(min, max, color));
}

void eColorMap::Add(eColorRange const& range)
{
    // Copy before the vector may reallocate and move the argument away.
    eColorRange copy(range);
    m_arRanges.push_back(copy);
}

eColorRange& eColorMap::Get(int index)
{
    if ((unsigned int)index < (unsigned int)m_arRanges.size())
        return m_arRanges[(size_t)index];
    static eColorRange s_Scratch;
    s_Scratch = eColorRange();
    return s_Scratch;
}

void eColorMap::Remove(int index)
{
    if (index < 0 || index >= (int)m_arRanges.size())
        return;
    m_arRanges.erase(m_arRanges.begin() + index);
}

void eColorMap::RemoveAll()
{
    m_arRanges.clear();
}

eVector4T<unsigned char> eColorMap::GetColor(double value)
{
    for (eColorRange const& range : m_arRanges)
        if (range.Contains(value))
            return range.m_Color;
    return eVector4T<unsigned char>(255, 255, 255, 255);
}

} // namespace KYR
