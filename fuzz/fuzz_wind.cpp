// The wind picture as the particle winds load it: opened as a file stream with an 8 KiB
// buffer, read whole, closed, then decoded at 32 bits. A decoded picture must hold every
// RGBA pixel it claims, since all of them go to the texture.
#include "eFile.h"
#include "eTexture.h"
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    static std::string const path = "/tmp/kyr_fuzz_wind_" + std::to_string(getpid()) + ".png";
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    KYR::eFileStream stream;
    if (!stream.Open(path.c_str(), 2, 8192))
        std::abort(); // the file was just written
    KYR::eByteArray bytes;
    stream.LoadByteArray(bytes);
    stream.Close();
    if (bytes.GetSize() != (int)size)
        std::abort();
    KYR::eImageData* image = KYR::eFileParserToolkit::LoadImageData(bytes, 32);
    if (!image)
        return 0;
    size_t const pixels = (size_t)image->m_nWidth * (size_t)image->m_nHeight;
    unsigned int sum = 0;
    for (size_t i = 0; i < pixels * 4; i += 4093)
        sum += image->m_pData[i];
    volatile unsigned int sink = sum + image->m_pData[pixels * 4 - 1];
    (void)sink;
    delete image;
    return 0;
}
