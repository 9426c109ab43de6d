// The shared readers under the effects: pictures decoded from the work path and uploaded
// clamped and linear, and raster blocks scaled to 0..1 for the tile draws.
#include "EffectFixture.h"
#include "eFile.h"
#include "eNormalisedRaster.h"
#include "ePicture.h"
#include "eRaster.h"
#include "eTexture.h"
#include <cstdio>
#include <epoxy/gl.h>
#include <memory>
#include <vector>

using namespace KYR;

namespace
{

eString Resource(char const* name)
{
    return eSystem::GetWorkPath() + eString("Resources/Icons/") + eString(name);
}

std::unique_ptr<eTextureInfo> Normalised(eRasterBlock const& block)
{
    return std::unique_ptr<eTextureInfo>(eNormalisedRaster::Create(block));
}

template <typename T> void Fill(eRasterBlock& block, int format, std::vector<T> const& values)
{
    T* data = static_cast<T*>(block.Allocate(format, (int)values.size(), 1));
    ASSERT_NE(data, nullptr);
    for (size_t i = 0; i < values.size(); ++i)
        data[i] = values[i];
}

std::vector<float> Values(eTextureInfo const& info)
{
    float const* p = static_cast<float const*>(info.m_pData);
    return std::vector<float>(p, p + info.m_nWidth * info.m_nHeight);
}

} // namespace

TEST_F(EffectTest, PictureLoadsAtTheAskedDepthAndRefusesWhatItCannotRead)
{
    std::unique_ptr<eImageData> rgba(ePicture::Load(Resource("ScatterPoint.png"), 32));
    std::unique_ptr<eImageData> rgb(ePicture::Load(Resource("ScatterPoint.png"), 24));
    ASSERT_TRUE(rgba && rgb);
    EXPECT_EQ(rgba->m_nBitsPerPixel, 32);
    EXPECT_EQ(rgb->m_nBitsPerPixel, 24);
    EXPECT_EQ(rgba->m_nWidth, rgb->m_nWidth);
    EXPECT_GT(rgba->m_nWidth * rgba->m_nHeight, 0);
    // The colour channels agree whatever the depth asked for.
    for (int i = 0; i < rgb->m_nWidth * rgb->m_nHeight; i += 7)
        for (int c = 0; c < 3; ++c)
            ASSERT_EQ(rgba->m_pData[i * 4 + c], rgb->m_pData[i * 3 + c]) << "pixel " << i;

    EXPECT_EQ(ePicture::Load(Resource("no-such-picture.png"), 32), nullptr);
    // A file that is no picture at all.
    std::string garbage = std::string(::testing::TempDir()) + "kyr-not-a-picture.png";
    FILE* f = std::fopen(garbage.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    std::fputs("\x89PNG but not really a picture", f);
    std::fclose(f);
    EXPECT_EQ(ePicture::Load(eString(garbage.c_str()), 32), nullptr);
    std::remove(garbage.c_str());
}

TEST_F(EffectTest, PictureUploadIsClampedLinearWithTheFormatOfItsDepth)
{
    for (int bits : {32, 24, 8})
    {
        eImageData small;
        ASSERT_TRUE(small.Allocate(3, 2, bits));
        int const bytes = bits / 8;
        for (int i = 0; i < 6 * bytes; ++i)
            small.m_pData[i] = (unsigned char)(i * 37 + 11);
        GLuint name = 0;
        glGenTextures(1, &name);
        glBindTexture(GL_TEXTURE_2D, name);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        ePicture::UploadClampedLinear(&small);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
        GLint wrapS = 0, wrapT = 0, minF = 0, magF = 0, w = 0, h = 0;
        glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &wrapS);
        glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &wrapT);
        glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &minF);
        glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &magF);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &w);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &h);
        EXPECT_EQ(wrapS, GL_CLAMP) << bits;
        EXPECT_EQ(wrapT, GL_CLAMP) << bits;
        EXPECT_EQ(minF, GL_LINEAR) << bits;
        EXPECT_EQ(magF, GL_LINEAR) << bits;
        EXPECT_EQ(w, 3);
        EXPECT_EQ(h, 2);
        // What was uploaded reads back byte for byte in the picture's own layout.
        GLenum const format = bits == 32 ? GL_RGBA : bits == 24 ? GL_RGB : GL_ALPHA;
        std::vector<unsigned char> back(6 * bytes, 0);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glGetTexImage(GL_TEXTURE_2D, 0, format, GL_UNSIGNED_BYTE, back.data());
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
        EXPECT_EQ(back, std::vector<unsigned char>(small.m_pData, small.m_pData + 6 * bytes))
            << bits;
        glBindTexture(GL_TEXTURE_2D, 0);
        glDeleteTextures(1, &name);
    }
    EXPECT_EQ(glGetError(), (GLenum)GL_NO_ERROR);
}

TEST(NormalisedRaster, ScalesEachFormatOverTheBlocksRangeWithoutClamping)
{
    // Five pixels: one round of four and a tail of one, values below and above the range.
    eRasterBlock bytes;
    Fill<unsigned char>(bytes, ePF_UBYTE, {10, 20, 30, 0, 60});
    bytes.m_dMinimum = 10.0;
    bytes.m_dMaximum = 50.0;
    auto info = Normalised(bytes);
    ASSERT_TRUE(info && info->m_pData);
    EXPECT_EQ(info->m_nPixelFormat, ePF_FLOAT);
    EXPECT_EQ(info->m_nSize, 5 * 4);
    EXPECT_EQ(Values(*info), (std::vector<float>{0.0f, 0.25f, 0.5f, -0.25f, 1.25f}));

    eRasterBlock shorts;
    Fill<short>(shorts, ePF_SHORT, {-100, 0, 100, 300, -300});
    shorts.m_dMinimum = -100.0;
    shorts.m_dMaximum = 300.0;
    EXPECT_EQ(Values(*Normalised(shorts)), (std::vector<float>{0.0f, 0.25f, 0.5f, 1.0f, -0.5f}));

    eRasterBlock ushorts;
    Fill<unsigned short>(ushorts, ePF_USHORT, {65535, 0, 3});
    ushorts.m_dMinimum = 0.0;
    ushorts.m_dMaximum = 65535.0;
    EXPECT_EQ(Values(*Normalised(ushorts)),
              (std::vector<float>{1.0f, 0.0f, (float)(3.0 / 65535.0)}));

    eRasterBlock floats;
    Fill<float>(floats, ePF_FLOAT, {1.5f, 2.0f, 2.5f, 3.0f, 3.5f, 4.0f});
    floats.m_dMinimum = 2.0;
    floats.m_dMaximum = 4.0;
    EXPECT_EQ(Values(*Normalised(floats)),
              (std::vector<float>{-0.25f, 0.0f, 0.25f, 0.5f, 0.75f, 1.0f}));
}

TEST(NormalisedRaster, BlockWithoutKnownPixelsGivesItsSizeAndNoPixels)
{
    eRasterBlock empty;
    empty.m_nWidth = 4;
    empty.m_nHeight = 2;
    empty.m_nPixelFormat = ePF_FLOAT; // a size and a format, but no pixels
    auto info = Normalised(empty);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->m_nWidth, 4);
    EXPECT_EQ(info->m_nHeight, 2);
    EXPECT_EQ(info->m_pData, nullptr);
    EXPECT_EQ(info->m_nPixelFormat, 0);

    eRasterBlock odd;
    Fill<unsigned char>(odd, ePF_UBYTE, {1, 2, 3, 4});
    odd.m_nPixelFormat = 99; // pixels, but a format the tile draws cannot read
    odd.m_dMaximum = 4.0;
    auto unknown = Normalised(odd);
    EXPECT_EQ(unknown->m_nWidth, 4);
    EXPECT_EQ(unknown->m_pData, nullptr);
    odd.m_nPixelFormat = ePF_UBYTE; // the block frees its pixels as what they are
}
