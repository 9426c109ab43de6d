// Table of packed colours (ERGBA) spread over a value range [floor, ceiling].
#pragma once
#include "eBase.h"
#include <vector>

namespace KYR
{

// Stock gradients, listed from the low end of the range to the high end.
enum tagKYR_ENUM_STOCK_GRADIENT_SET_STYLE
{
    KYR_STOCK_GRADIENT_GRAY = 0,              // black to white
    KYR_STOCK_GRADIENT_RAINBOW = 1,           // blue, cyan, green, yellow, red
    KYR_STOCK_GRADIENT_JET = 2,               // dark blue, blue, cyan, yellow, red, dark red
    KYR_STOCK_GRADIENT_HOT = 3,               // black, red, yellow, white
    KYR_STOCK_GRADIENT_COOL = 4,              // cyan to magenta
    KYR_STOCK_GRADIENT_SPRING = 5,            // magenta to yellow
    KYR_STOCK_GRADIENT_SUMMER = 6,            // green to yellow
    KYR_STOCK_GRADIENT_AUTUMN = 7,            // red to yellow
    KYR_STOCK_GRADIENT_WINTER = 8,            // blue to green
    KYR_STOCK_GRADIENT_BONE = 9,              // black, blue-grey, white
    KYR_STOCK_GRADIENT_COPPER = 10,           // black to copper
    KYR_STOCK_GRADIENT_PINK = 11,             // dark red, pink, white
    KYR_STOCK_GRADIENT_HUE = 12,              // full hue circle, red back to red
    KYR_STOCK_GRADIENT_VIRIDIS = 13,          // perceptually uniform purple-green-yellow
    KYR_STOCK_GRADIENT_PLASMA = 14,           // perceptually uniform blue-magenta-yellow
    KYR_STOCK_GRADIENT_INFERNO = 15,          // perceptually uniform black-red-yellow
    KYR_STOCK_GRADIENT_MAGMA = 16,            // perceptually uniform black-purple-cream
    KYR_STOCK_GRADIENT_BLUE_WHITE_RED = 17,   // diverging: cold to warm
    KYR_STOCK_GRADIENT_BROWN_WHITE_TEAL = 18, // diverging: dry to wet
    KYR_STOCK_GRADIENT_SPECTRAL = 19,         // diverging: red, yellow, blue-violet
    KYR_STOCK_GRADIENT_OCEAN = 20,            // deep navy to shallow pale green (depths)
    KYR_STOCK_GRADIENT_PRECIPITATION = 21,    // white, greens, blues, purple
    KYR_STOCK_GRADIENT_BLUES = 22,            // near white to dark blue
    KYR_STOCK_GRADIENT_REDS = 23,             // near white to dark red
    KYR_STOCK_GRADIENT_GREENS = 24,           // near white to dark green
    KYR_STOCK_GRADIENT_TERRAIN = 25,          // elevation ramp of hill shading, see eColorTable.cpp
    KYR_STOCK_GRADIENT_COUNT = 26
};

class eColorTable
{
public:
    eColorTable();
    eColorTable(eColorTable const&) = default;
    eColorTable& operator=(eColorTable const&) = default;

    // size entries running linearly (per channel, alpha included) from one packed
    // colour to the other. A size below 1 is reported and leaves the table unchanged.
    void CreateGradient(int size, unsigned int fromRGBA, unsigned int toRGBA);
    // size entries sampled from a stock gradient, opaque; reverse != 0 runs it from the
    // high end to the low end. An unknown style or a size below 1 is reported and leaves
    // the table unchanged.
    void CreateStockGradient(int size, tagKYR_ENUM_STOCK_GRADIENT_SET_STYLE style,
                             unsigned char reverse);

    int GetSize() const { return (int)m_arColors.size(); }
    // Entry index (clamped into the table); 0 for an empty table.
    unsigned int GetRGB(int index) const;
    // Replaces one entry; an index outside the table is ignored.
    void SetRGB(int index, unsigned int rgba);
    // The entry nearest to value when [floor, ceiling] is laid linearly over entries
    // 0 .. size - 1; values outside the range take the end entries. 0 for an empty table.
    unsigned int GetColor(double value) const;

    double GetFloor() const { return m_dFloor; }
    void SetFloor(double v) { m_dFloor = v; }
    double GetCeiling() const { return m_dCeiling; }
    void SetCeiling(double v) { m_dCeiling = v; }

private:
    std::vector<unsigned int> m_arColors;
    double m_dFloor;
    double m_dCeiling;
};

} // namespace KYR
