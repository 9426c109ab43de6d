#include "eNormalisedRaster.h"
#include <cstddef>
#include <new>

namespace KYR
{

namespace
{

// Four pixels a round and a scalar tail; the same result as a plain loop.
template <typename T>
void Normalise(T const* src, float* dst, size_t count, double minimum, double maximum)
{
    double const span = maximum - minimum;
    size_t i = 0;
    for (; i + 4 <= count; i += 4)
    {
        dst[i] = (float)(((double)src[i] - minimum) / span);
        dst[i + 1] = (float)(((double)src[i + 1] - minimum) / span);
        dst[i + 2] = (float)(((double)src[i + 2] - minimum) / span);
        dst[i + 3] = (float)(((double)src[i + 3] - minimum) / span);
    }
    for (; i < count; ++i)
        dst[i] = (float)(((double)src[i] - minimum) / span);
}

} // namespace

eTextureInfo* eNormalisedRaster::Create(eRasterBlock const& block)
{
    eTextureInfo* info = new eTextureInfo();
    info->m_bOwnData = 1;
    info->m_nWidth = block.m_nWidth;
    info->m_nHeight = block.m_nHeight;
    int const format = block.m_nPixelFormat;
    bool const known =
        format == ePF_UBYTE || format == ePF_SHORT || format == ePF_USHORT || format == ePF_FLOAT;
    if (!known || !block.m_pData || block.m_nWidth <= 0 || block.m_nHeight <= 0)
        return info;
    size_t const count = (size_t)block.m_nWidth * (size_t)block.m_nHeight;
    float* out = new (std::nothrow) float[count];
    if (!out)
        return info;
    double const lo = block.m_dMinimum, hi = block.m_dMaximum;
    if (format == ePF_UBYTE)
        Normalise(static_cast<unsigned char const*>(block.m_pData), out, count, lo, hi);
    else if (format == ePF_SHORT)
        Normalise(static_cast<short const*>(block.m_pData), out, count, lo, hi);
    else if (format == ePF_USHORT)
        Normalise(static_cast<unsigned short const*>(block.m_pData), out, count, lo, hi);
    else
        Normalise(static_cast<float const*>(block.m_pData), out, count, lo, hi);
    info->m_nPixelFormat = ePF_FLOAT;
    info->m_pData = out;
    info->m_nSize = (int)(count * 4);
    return info;
}

} // namespace KYR
