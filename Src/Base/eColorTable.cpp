#include "eColorTable.h"
#include <cmath>

namespace KYR
{

namespace
{

struct Stop
{
    double t;
    unsigned char r, g, b;
};

struct Ramp
{
    Stop const* stops;
    int count;
};

// Stops of each stock gradient, positions from 0 (floor) to 1 (ceiling).
Stop const s_gray[] = {{0.0, 0, 0, 0}, {1.0, 255, 255, 255}};
Stop const s_rainbow[] = {
    {0.0, 0, 0, 255}, {0.25, 0, 255, 255}, {0.5, 0, 255, 0}, {0.75, 255, 255, 0}, {1.0, 255, 0, 0}};
Stop const s_jet[] = {{0.0, 0, 0, 128},     {0.125, 0, 0, 255}, {0.375, 0, 255, 255},
                      {0.625, 255, 255, 0}, {0.875, 255, 0, 0}, {1.0, 128, 0, 0}};
Stop const s_hot[] = {
    {0.0, 0, 0, 0}, {0.375, 255, 0, 0}, {0.75, 255, 255, 0}, {1.0, 255, 255, 255}};
Stop const s_cool[] = {{0.0, 0, 255, 255}, {1.0, 255, 0, 255}};
Stop const s_spring[] = {{0.0, 255, 0, 255}, {1.0, 255, 255, 0}};
Stop const s_summer[] = {{0.0, 0, 128, 102}, {1.0, 255, 255, 102}};
Stop const s_autumn[] = {{0.0, 255, 0, 0}, {1.0, 255, 255, 0}};
Stop const s_winter[] = {{0.0, 0, 0, 255}, {1.0, 0, 255, 128}};
Stop const s_bone[] = {
    {0.0, 0, 0, 0}, {0.375, 81, 81, 113}, {0.75, 166, 199, 199}, {1.0, 255, 255, 255}};
Stop const s_copper[] = {{0.0, 0, 0, 0}, {1.0, 255, 199, 127}};
Stop const s_pink[] = {
    {0.0, 30, 0, 0}, {0.375, 190, 135, 135}, {0.75, 231, 231, 181}, {1.0, 255, 255, 255}};
Stop const s_hue[] = {{0.0, 255, 0, 0},       {1.0 / 6, 255, 255, 0}, {2.0 / 6, 0, 255, 0},
                      {3.0 / 6, 0, 255, 255}, {4.0 / 6, 0, 0, 255},   {5.0 / 6, 255, 0, 255},
                      {1.0, 255, 0, 0}};
Stop const s_viridis[] = {{0.0, 68, 1, 84},      {0.125, 71, 45, 123},  {0.25, 59, 82, 139},
                          {0.375, 44, 114, 142}, {0.5, 33, 145, 140},   {0.625, 40, 174, 128},
                          {0.75, 94, 201, 98},   {0.875, 173, 220, 48}, {1.0, 253, 231, 37}};
Stop const s_plasma[] = {{0.0, 13, 8, 135},
                         {0.25, 126, 3, 168},
                         {0.5, 204, 71, 120},
                         {0.75, 248, 149, 64},
                         {1.0, 240, 249, 33}};
Stop const s_inferno[] = {{0.0, 0, 0, 4},
                          {0.25, 87, 16, 110},
                          {0.5, 188, 55, 84},
                          {0.75, 249, 142, 9},
                          {1.0, 252, 255, 164}};
Stop const s_magma[] = {{0.0, 0, 0, 4},
                        {0.25, 81, 18, 124},
                        {0.5, 183, 55, 121},
                        {0.75, 252, 137, 97},
                        {1.0, 252, 253, 191}};
Stop const s_blueWhiteRed[] = {{0.0, 33, 102, 172},      {1.0 / 6, 103, 169, 207},
                               {2.0 / 6, 209, 229, 240}, {0.5, 247, 247, 247},
                               {4.0 / 6, 253, 219, 199}, {5.0 / 6, 239, 138, 98},
                               {1.0, 178, 24, 43}};
Stop const s_brownWhiteTeal[] = {{0.0, 84, 48, 5},     {0.1, 140, 81, 10},   {0.2, 191, 129, 45},
                                 {0.3, 223, 194, 125}, {0.4, 246, 232, 195}, {0.5, 245, 245, 245},
                                 {0.6, 199, 234, 229}, {0.7, 128, 205, 193}, {0.8, 53, 151, 143},
                                 {0.9, 1, 102, 94},    {1.0, 0, 60, 48}};
Stop const s_spectral[] = {{0.0, 158, 1, 66},    {0.1, 213, 62, 79},   {0.2, 244, 109, 67},
                           {0.3, 253, 174, 97},  {0.4, 254, 224, 139}, {0.5, 255, 255, 191},
                           {0.6, 230, 245, 152}, {0.7, 171, 221, 164}, {0.8, 102, 194, 165},
                           {0.9, 50, 136, 189},  {1.0, 94, 79, 162}};
Stop const s_ocean[] = {{0.0, 8, 29, 88},
                        {0.25, 37, 52, 148},
                        {0.5, 29, 145, 192},
                        {0.75, 127, 205, 187},
                        {1.0, 237, 248, 217}};
Stop const s_precipitation[] = {{0.0, 255, 255, 255}, {0.2, 199, 233, 192}, {0.4, 116, 196, 118},
                                {0.6, 35, 139, 69},   {0.8, 8, 81, 156},    {1.0, 84, 39, 143}};
Stop const s_blues[] = {{0.0, 247, 251, 255}, {0.5, 107, 174, 214}, {1.0, 8, 48, 107}};
Stop const s_reds[] = {{0.0, 255, 245, 240}, {0.5, 251, 106, 74}, {1.0, 103, 0, 13}};
Stop const s_greens[] = {{0.0, 247, 252, 245}, {0.5, 116, 196, 118}, {1.0, 0, 68, 27}};

// Terrain ramp of hill shading: deep green lowlands, green, olive, yellow-brown, brown,
// grey rock, pale grey, white peaks. The stops were tuned so that CIE L* rises at every
// step (about 26, 40, 53, 62, 66, 73, 88, 100): once the hill shade darkens the slopes,
// brightness still reads as height, and no band looks like a valley inside a mountain.
Stop const s_terrain[] = {{0.0, 16, 72, 38},     {0.16, 40, 108, 50},   {0.32, 100, 136, 58},
                          {0.48, 160, 150, 80},  {0.62, 194, 152, 106}, {0.76, 186, 178, 168},
                          {0.90, 222, 220, 216}, {1.0, 255, 255, 255}};

#define KYR_RAMP(a)                                                                                \
    {                                                                                              \
        a, (int)(sizeof(a) / sizeof(a[0]))                                                         \
    }
Ramp const s_ramps[KYR_STOCK_GRADIENT_COUNT] = {KYR_RAMP(s_gray),
                                                KYR_RAMP(s_rainbow),
                                                KYR_RAMP(s_jet),
                                                KYR_RAMP(s_hot),
                                                KYR_RAMP(s_cool),
                                                KYR_RAMP(s_spring),
                                                KYR_RAMP(s_summer),
                                                KYR_RAMP(s_autumn),
                                                KYR_RAMP(s_winter),
                                                KYR_RAMP(s_bone),
                                                KYR_RAMP(s_copper),
                                                KYR_RAMP(s_pink),
                                                KYR_RAMP(s_hue),
                                                KYR_RAMP(s_viridis),
                                                KYR_RAMP(s_plasma),
                                                KYR_RAMP(s_inferno),
                                                KYR_RAMP(s_magma),
                                                KYR_RAMP(s_blueWhiteRed),
                                                KYR_RAMP(s_brownWhiteTeal),
                                                KYR_RAMP(s_spectral),
                                                KYR_RAMP(s_ocean),
                                                KYR_RAMP(s_precipitation),
                                                KYR_RAMP(s_blues),
                                                KYR_RAMP(s_reds),
                                                KYR_RAMP(s_greens),
                                                KYR_RAMP(s_terrain)};
#undef KYR_RAMP

unsigned char Mix(unsigned char a, unsigned char b, double f)
{
    return (unsigned char)std::lround(a + (b - a) * f);
}

unsigned int Sample(Ramp const& ramp, double t)
{
    Stop const* s = ramp.stops;
    int k = 1;
    while (k < ramp.count - 1 && t > s[k].t)
        ++k;
    Stop const& a = s[k - 1];
    Stop const& b = s[k];
    double f = (b.t > a.t) ? (t - a.t) / (b.t - a.t) : 0.0;
    f = f < 0.0 ? 0.0 : (f > 1.0 ? 1.0 : f);
    return ERGBA(Mix(a.r, b.r, f), Mix(a.g, b.g, f), Mix(a.b, b.b, f), 255);
}

// Position of entry i of n along the table, 0 .. 1.
double EntryPosition(int i, int n)
{
    return n > 1 ? (double)i / (double)(n - 1) : 0.0;
}

} // namespace

eColorTable::eColorTable() : m_dFloor(0.0), m_dCeiling(1.0) {}

void eColorTable::CreateGradient(int size, unsigned int fromRGBA, unsigned int toRGBA)
{
    if (size < 1)
    {
        Eassert("size > 0", __FILE__, __LINE__);
        return;
    }
    int a = (int)fromRGBA, b = (int)toRGBA;
    m_arColors.resize((size_t)size);
    for (int i = 0; i < size; ++i)
    {
        double f = EntryPosition(i, size);
        m_arColors[(size_t)i] =
            ERGBA(Mix(EREDVAL(a), EREDVAL(b), f), Mix(EGREENVAL(a), EGREENVAL(b), f),
                  Mix(EBLUEVAL(a), EBLUEVAL(b), f), Mix(EALPHAVAL(a), EALPHAVAL(b), f));
    }
}

void eColorTable::CreateStockGradient(int size, tagKYR_ENUM_STOCK_GRADIENT_SET_STYLE style,
                                      unsigned char reverse)
{
    if (size < 1)
    {
        Eassert("size > 0", __FILE__, __LINE__);
        return;
    }
    if ((int)style < 0 || (int)style >= KYR_STOCK_GRADIENT_COUNT)
    {
        Eassert("known stock gradient style", __FILE__, __LINE__);
        return;
    }
    Ramp const& ramp = s_ramps[(int)style];
    m_arColors.resize((size_t)size);
    for (int i = 0; i < size; ++i)
    {
        double t = EntryPosition(i, size);
        m_arColors[(size_t)i] = Sample(ramp, reverse ? 1.0 - t : t);
    }
}

unsigned int eColorTable::GetRGB(int index) const
{
    if (m_arColors.empty())
        return 0;
    if (index < 0)
        index = 0;
    if (index >= GetSize())
        index = GetSize() - 1;
    return m_arColors[(size_t)index];
}

void eColorTable::SetRGB(int index, unsigned int rgba)
{
    if (index >= 0 && index < GetSize())
        m_arColors[(size_t)index] = rgba;
}

unsigned int eColorTable::GetColor(double value) const
{
    int n = GetSize();
    if (n == 0)
        return 0;
    double span = m_dCeiling - m_dFloor;
    double t;
    if (span != 0.0)
        t = (value - m_dFloor) / span;
    else
        t = value < m_dFloor ? 0.0 : 1.0;
    // Written so that NaN lands on the first entry.
    if (!(t > 0.0))
        return m_arColors.front();
    if (t >= 1.0)
        return m_arColors.back();
    return m_arColors[(size_t)std::floor(t * (n - 1) + 0.5)];
}

} // namespace KYR
