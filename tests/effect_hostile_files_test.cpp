// Files that once broke a reader (kept under fuzz/regressions, one folder per reader) give
// each reader's failure result and nothing worse; the seed pictures still decode.
#include "EffectFixture.h"
#include "eFile.h"
#include "eRenderDynamicWinds.h"
#include "eRenderVolumeRayCast.h"
#include "eTexture.h"
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <vector>

using namespace KYR;

namespace
{

std::string const kFuzz = KYR_FUZZ_DIR;

std::vector<std::string> FilesIn(std::string const& dir)
{
    std::vector<std::string> files;
    if (DIR* d = opendir(dir.c_str()))
    {
        while (dirent* e = readdir(d))
            if (e->d_name[0] != '.')
                files.push_back(dir + "/" + e->d_name);
        closedir(d);
    }
    return files;
}

std::vector<unsigned char> Bytes(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), {});
}

// The picture fuzzer's input: the first byte picks the depth, the rest is the file.
eImageData* Decode(std::vector<unsigned char> const& input)
{
    static int const kBits[3] = {8, 24, 32};
    eByteArray bytes;
    bytes.SetSize((int)input.size() - 1);
    std::copy(input.begin() + 1, input.end(), bytes.GetData());
    return eFileParserToolkit::LoadImageData(bytes, kBits[input[0] % 3]);
}

class WindsProbe : public eRenderDynamicWinds
{
public:
    WindsProbe() : eRenderDynamicWinds(nullptr) {}
    static unsigned int Texture() { return s_pWindTexture ? s_pWindTexture->texture : 99u; }
};

class VolumeProbe : public eRenderVolumeRayCast
{
public:
    using eRenderVolumeRayCast::m_volumeBytes;
    using eRenderVolumeRayCast::m_volumeData;
    using eRenderVolumeRayCast::m_volumeDirty;
};

} // namespace

TEST(HostileFiles, PicturesThatBrokeTheDecoderAreRefusedAndTheSeedsDecode)
{
    std::vector<std::string> const bad = FilesIn(kFuzz + "regressions/picture");
    ASSERT_FALSE(bad.empty());
    for (std::string const& f : bad)
    {
        eImageData* image = Decode(Bytes(f));
        EXPECT_EQ(image, nullptr) << f;
        delete image;
    }
    // A well-formed header of 12000 x 12000 pixels (550 MiB decoded), then an empty data
    // chunk, is refused before it is decoded.
    std::vector<unsigned char> const huge = {
        0,   0x89, 'P', 'N', 'G',  13,   10,  26,  10,   0,    0,    0,    13,  'I', 'H',
        'D', 'R',  0,   0,   0x2E, 0xE0, 0,   0,   0x2E, 0xE0, 8,    6,    0,   0,   0,
        0,   0,    0,   0,   0,    0,    0,   0,   'I',  'D',  'A',  'T',  0,   0,   0,
        0,   0,    0,   0,   0,    'I',  'E', 'N', 'D',  0xAE, 0x42, 0x60, 0x82};
    EXPECT_EQ(Decode(huge), nullptr);

    std::vector<std::string> const good = FilesIn(kFuzz + "seeds/picture");
    ASSERT_GE(good.size(), 4u);
    for (std::string const& f : good)
    {
        eImageData* image = Decode(Bytes(f));
        ASSERT_NE(image, nullptr) << f;
        EXPECT_GT(image->m_nWidth * image->m_nHeight, 1) << f;
        delete image;
    }
}

TEST_F(EffectTest, HostileWindPicturesCountAsLoadedWithoutATexture)
{
    std::vector<std::string> const bad = FilesIn(kFuzz + "regressions/wind");
    ASSERT_FALSE(bad.empty());
    eString const saved = eSystem::GetWorkPath();
    std::string const root = ::testing::TempDir() + "kyr_hostile_wind/";
    mkdir(root.c_str(), 0755);
    mkdir((root + "Resources").c_str(), 0755);
    mkdir((root + "Resources/Icons").c_str(), 0755);
    eSystem::SetWorkPath(eString(root.c_str()));
    for (std::string const& f : bad)
    {
        std::vector<unsigned char> const bytes = Bytes(f);
        std::ofstream(root + "Resources/Icons/wind.png", std::ios::binary)
            .write((char const*)bytes.data(), (std::streamsize)bytes.size());
        WindsProbe winds;
        EXPECT_EQ(winds.Initialize(&m_scene->Engine()), 1) << f;
        EXPECT_EQ(WindsProbe::Texture(), 0u) << f;
        winds.UnInitialize(&m_scene->Engine());
    }
    eSystem::SetWorkPath(saved);
}

TEST(HostileFiles, VoxelFilesThatBrokeTheReaderLeaveNothingWaiting)
{
    std::vector<std::string> const bad = FilesIn(kFuzz + "regressions/voxels");
    ASSERT_FALSE(bad.empty());
    std::string const path = ::testing::TempDir() + "kyr_hostile_voxels.raw";
    for (std::string const& f : bad)
    {
        std::vector<unsigned char> const input = Bytes(f);
        ASSERT_GE(input.size(), 12u);
        unsigned int sizes[3];
        std::memcpy(sizes, input.data(), sizeof(sizes));
        std::ofstream(path, std::ios::binary)
            .write((char const*)input.data() + 12, (std::streamsize)input.size() - 12);
        VolumeProbe volume;
        volume.SetVolume3DTex(path.c_str(), sizes[0], sizes[1], sizes[2]);
        EXPECT_FALSE(volume.m_volumeData) << f;
        EXPECT_EQ(volume.m_volumeBytes, 0u) << f;
        EXPECT_FALSE(volume.m_volumeDirty) << f;
    }
    std::remove(path.c_str());
}
