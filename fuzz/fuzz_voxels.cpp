// The raw voxel reader: the first twelve bytes are the width, height and depth the caller
// claims, the rest is the file. Whatever the sizes, the volume afterwards either waits with
// exactly width * height * depth readable bytes or waits with nothing.
#include "eRenderVolumeRayCast.h"
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

namespace
{

class Volume : public KYR::eRenderVolumeRayCast
{
public:
    void Check() const
    {
        if (!m_volumeData)
        {
            if (m_volumeBytes != 0 || m_volumeDirty)
                std::abort();
            return;
        }
        if ((size_t)m_width * m_height * m_depth != m_volumeBytes)
            std::abort();
        if (m_volumeBytes)
        {
            volatile unsigned char sink = m_volumeData[0] ^ m_volumeData[m_volumeBytes - 1];
            (void)sink;
        }
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size < 12)
        return 0;
    unsigned int sizes[3];
    std::memcpy(sizes, data, sizeof(sizes));
    static std::string const path = "/tmp/kyr_fuzz_voxels_" + std::to_string(getpid()) + ".raw";
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        return 0;
    std::fwrite(data + 12, 1, size - 12, file);
    std::fclose(file);
    Volume volume;
    volume.SetVolume3DTex(path.c_str(), sizes[0], sizes[1], sizes[2]);
    volume.Check();
    return 0;
}
