// An ordered list of colour ranges that turns a value into a colour. Ranges are kept as
// added: they may overlap, leave gaps or be empty, and the first match wins.
#pragma once
#include "eColorRange.h"
#include <vector>

namespace KYR
{

class eColorMap
{
public:
    eColorMap();
    eColorMap(eColorMap const& other);
    eColorMap& operator=(eColorMap const& other);
    virtual ~eColorMap();

    int GetSize();
    void Add(double min, double max, eVector4T<unsigned char>& color);
    // Safe with an element of this map as the argument, also when the list grows.
    void Add(eColorRange const& range);
    // Not range-checked by contract; an index outside the list yields a scratch range.
    eColorRange& Get(int index);
    // Removes one range, keeping the order; an index outside the list is ignored.
    void Remove(int index);
    void RemoveAll();
    // Colour of the first range holding the value; opaque white when none does.
    eVector4T<unsigned char> GetColor(double value);

protected:
    std::vector<eColorRange> m_arRanges;
};

} // namespace KYR
