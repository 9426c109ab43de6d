// The picture decoder every resource goes through: the first byte picks 8, 24 or 32 bits per
// pixel, the rest is the file. A decoded picture must hold every pixel it claims.
#include "eFile.h"
#include "eTexture.h"
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size < 1 || size > (1u << 24))
        return 0;
    static int const kBits[3] = {8, 24, 32};
    int const bits = kBits[data[0] % 3];
    KYR::eByteArray bytes;
    bytes.SetSize((int)(size - 1));
    for (size_t i = 1; i < size; ++i)
        bytes.GetData()[i - 1] = data[i];
    KYR::eImageData* image = KYR::eFileParserToolkit::LoadImageData(bytes, bits);
    if (!image)
        return 0;
    if (image->m_nWidth <= 0 || image->m_nHeight <= 0 || image->m_nBitsPerPixel != bits ||
        image->m_nPitch != image->m_nWidth * (bits / 8))
        std::abort();
    // Touches the first and the last byte the size promises.
    size_t const last = (size_t)image->m_nPitch * (size_t)image->m_nHeight - 1;
    volatile unsigned char sink = image->m_pData[0] ^ image->m_pData[last];
    (void)sink;
    delete image;
    return 0;
}
