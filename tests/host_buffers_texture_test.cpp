// Files, image decoding, the work path, and textures.
#include "eFile.h"
#include "eGLContext.h"
#include "eTexture.h"
#include "host_buffers_sample_jpeg.h"

#include <epoxy/gl.h>
#include <gtest/gtest.h>

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wunused-function"
#endif
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

using namespace KYR;

namespace
{

std::string TempPath(char const* name)
{
    return ::testing::TempDir() + "kyr_buffers_" + name;
}

std::unique_ptr<eImageData> Load(std::string const& path, int bits)
{
    eFileStream f;
    eByteArray bytes;
    if (!f.Open(path.c_str(), eSD_READ, 0x2000) || !f.LoadByteArray(bytes))
        return nullptr;
    return std::unique_ptr<eImageData>(eFileParserToolkit::LoadImageData(bytes, bits));
}

// 3 x 2 RGBA: the top row grey 10, 20, 30 at alpha 40, 50, 60; the bottom row red, green, blue.
std::string WritePNG()
{
    unsigned char const px[] = {10,  10, 10, 40,  20, 20,  20, 50,  30, 30, 30,  60,
                                255, 0,  0,  255, 0,  255, 0,  255, 0,  0,  255, 255};
    std::string path = TempPath("test.png");
    EXPECT_TRUE(stbi_write_png(path.c_str(), 3, 2, 4, px, 12));
    return path;
}

TEST(HostBuffersImage, PNGDecodesAtEachDepthTopRowFirst)
{
    std::string path = WritePNG();
    auto rgba = Load(path, 32);
    ASSERT_TRUE(rgba);
    EXPECT_EQ(rgba->m_nWidth, 3);
    EXPECT_EQ(rgba->m_nHeight, 2);
    EXPECT_EQ(rgba->m_nPitch, 12);
    EXPECT_EQ(rgba->m_pData[5], 20);
    EXPECT_EQ(rgba->m_pData[7], 50);
    EXPECT_EQ(rgba->m_pData[12], 255); // bottom row starts with red

    auto rgb = Load(path, 24);
    ASSERT_TRUE(rgb);
    EXPECT_EQ(rgb->m_nBitsPerPixel, 24);
    EXPECT_EQ(rgb->m_nPitch, 9);
    EXPECT_EQ(rgb->m_pData[3], 20);
    EXPECT_EQ(rgb->m_pData[13], 255); // green of the bottom middle pixel

    auto grey = Load(path, 8);
    ASSERT_TRUE(grey);
    EXPECT_EQ(grey->m_nPitch, 3);
    EXPECT_EQ(grey->m_pData[2], 30);
    EXPECT_GT(grey->m_pData[3], 40); // red becomes a middling grey, not a channel copy
    EXPECT_LT(grey->m_pData[3], 120);
}

TEST(HostBuffersImage, JPEGDecodesFlatBlocks)
{
    unsigned char const colours[4][3] = {
        {200, 30, 30}, {30, 200, 30}, {30, 30, 200}, {220, 220, 40}};
    std::string path = TempPath("test.jpg");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<char const*>(kFlatBlocksJPEG), sizeof kFlatBlocksJPEG);

    for (int bits : {24, 32})
    {
        auto img = Load(path, bits);
        ASSERT_TRUE(img);
        int bpp = bits / 8;
        for (int block = 0; block < 4; ++block)
        {
            int x = (block % 2) * 8 + 4, y = (block / 2) * 8 + 4;
            for (int c = 0; c < 3; ++c)
                EXPECT_NEAR(img->m_pData[y * img->m_nPitch + x * bpp + c], colours[block][c], 8)
                    << "block " << block << " channel " << c << " at " << bits;
        }
        if (bits == 32)
        {
            EXPECT_EQ(img->m_pData[3], 255);
        }
    }
    auto grey = Load(path, 8);
    ASSERT_TRUE(grey);
    EXPECT_LT(grey->m_pData[4 * 16 + 12], grey->m_pData[12 * 16 + 12]); // green darker than yellow
}

TEST(HostBuffersImage, BadInputGivesNullWithoutCrashing)
{
    eFileStream f;
    EXPECT_FALSE(f.Open(TempPath("does_not_exist.png").c_str(), eSD_READ, 0x2000));
    eByteArray bytes;
    EXPECT_FALSE(f.LoadByteArray(bytes));

    bytes.SetSize(300);
    for (int i = 0; i < 300; ++i)
        bytes.GetData()[i] = (unsigned char)(i * 37);
    EXPECT_EQ(eFileParserToolkit::LoadImageData(bytes, 32), nullptr);
    EXPECT_EQ(eFileParserToolkit::LoadImageData(eByteArray(), 32), nullptr);

    // A real PNG cut in half, and a good one at a depth the decoder does not give.
    std::string path = WritePNG();
    eFileStream g;
    ASSERT_TRUE(g.Open(path.c_str(), (eStreamDirection)2, 0x2000));
    ASSERT_TRUE(g.LoadByteArray(bytes));
    EXPECT_EQ(eFileParserToolkit::LoadImageData(bytes, 16), nullptr);
    bytes.SetSize(bytes.GetSize() / 2);
    EXPECT_EQ(eFileParserToolkit::LoadImageData(bytes, 32), nullptr);

    std::string corrupt = TempPath("corrupt.jpg");
    std::ofstream(corrupt) << "not a picture at all";
    EXPECT_EQ(
        eTextureOperator::GetSingleton().CreateTexture(corrupt.c_str(), eTWM_REPEAT, eTFM_LINEAR),
        nullptr);
    EXPECT_EQ(eTextureOperator::GetSingleton().CreateTexture(TempPath("missing.png").c_str(),
                                                             eTWM_REPEAT, eTFM_LINEAR),
              nullptr);
}

TEST(HostBuffersImage, WorkPathPrefersTheApplicationThenTheEnvironmentAndEndsInSlash)
{
    char const* old = std::getenv("KYR_WORK_PATH");
    std::string saved = old ? old : "";
    setenv("KYR_WORK_PATH", "/data/work", 1);
    eSystem::SetWorkPath("/elsewhere");
    EXPECT_EQ(eSystem::GetWorkPath(), "/elsewhere/");
    eSystem::SetWorkPath("");
    EXPECT_EQ(eSystem::GetWorkPath(), "/data/work/");
    unsetenv("KYR_WORK_PATH");
    eString fallback = eSystem::GetWorkPath();
    EXPECT_EQ(fallback.GetAt(fallback.GetLength() - 1), '/');
    if (old)
        setenv("KYR_WORK_PATH", saved.c_str(), 1);
}

class HostBuffersTexture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(Host::eGLContext::Get().Ensure(16, 16)) << Host::eGLContext::Get().GetError();
    }
    // Level 0 of the texture: size, and its first channel as floats.
    static std::vector<float> Red(eTexture& t, int& w, int& h)
    {
        glBindTexture(GL_TEXTURE_2D, t.GetTextureID());
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &w);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &h);
        std::vector<float> v((size_t)w * h);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glGetTexImage(GL_TEXTURE_2D, 0, GL_RED, GL_FLOAT, v.data());
        glBindTexture(GL_TEXTURE_2D, 0);
        return v;
    }
};

TEST_F(HostBuffersTexture, EachRasterFormatUploadsOnceWithItsValues)
{
    unsigned char const u8[6] = {0, 51, 102, 153, 204, 255};
    short const s16[6] = {-32767, 0, 32767, 16384, -16384, 100};
    unsigned short const u16[6] = {0, 65535, 32768, 1000, 60000, 7};
    float const f32[6] = {-2.5f, 0.0f, 1.0f, 1000.0f, 0.125f, 3.0f};
    struct Case
    {
        int format;
        void const* data;
        float expect[6];
    } const cases[] = {
        {8, u8, {0.f, 0.2f, 0.4f, 0.6f, 0.8f, 1.f}},
        {16, s16, {-1.f, 0.f, 1.f, 16384 / 32767.f, -16384 / 32767.f, 100 / 32767.f}},
        {17, u16, {0.f, 1.f, 32768 / 65535.f, 1000 / 65535.f, 60000 / 65535.f, 7 / 65535.f}},
        {3200, f32, {-2.5f, 0.f, 1.f, 1000.f, 0.125f, 3.f}},
    };
    for (Case const& c : cases)
    {
        std::unique_ptr<eTexture> t(eTextureOperator::GetSingleton().CreateTexture(
            (unsigned char*)c.data, 3, 2, c.format, eTWM_CLAMP_TO_EDGE, eTFM_NEAREST));
        ASSERT_TRUE(t) << c.format;
        EXPECT_EQ(t->GetTextureID(), 0u); // nothing uploads before CreateTexture
        ASSERT_TRUE(t->CreateTexture()) << c.format;
        unsigned int id = t->GetTextureID();
        EXPECT_NE(id, 0u);
        EXPECT_TRUE(t->CreateTexture());
        EXPECT_EQ(t->GetTextureID(), id) << "second CreateTexture re-created " << c.format;
        int w = 0, h = 0;
        std::vector<float> v = Red(*t, w, h);
        EXPECT_EQ(w, 3);
        EXPECT_EQ(h, 2);
        for (int i = 0; i < 6; ++i)
            EXPECT_NEAR(v[i], c.expect[i], 2e-3) << "format " << c.format << " pixel " << i;
    }
    EXPECT_EQ(eTextureOperator::GetSingleton().CreateTexture((unsigned char*)u8, 3, 2, 32,
                                                             eTWM_REPEAT, eTFM_LINEAR),
              nullptr);
}

TEST_F(HostBuffersTexture, ImagesReleaseOrStayAndComeBackAfterDestroy)
{
    // Auto release: the picture is gone after the upload; padded rows arrive packed.
    eTexture released;
    released.SetAutoRelease(1);
    eImageData* img = new eImageData();
    ASSERT_TRUE(img->Allocate(2, 2, 32));
    img->m_nWidth = 1; // one pixel per row inside an 8-byte pitch
    img->m_pData[0] = 11;
    img->m_pData[8] = 22;
    released.SetImageData(img);
    ASSERT_TRUE(released.CreateTexture());
    EXPECT_EQ(released.GetImageData(), nullptr);
    int w = 0, h = 0;
    std::vector<float> v = Red(released, w, h);
    EXPECT_EQ(w, 1);
    ASSERT_EQ(h, 2);
    EXPECT_NEAR(v[0] * 255.0f, 11.0f, 0.01f);
    EXPECT_NEAR(v[1] * 255.0f, 22.0f, 0.01f);

    // Without auto release the picture stays the caller's; a new picture re-uploads.
    eImageData mine;
    mine.Allocate(4, 4, 24);
    eTexture kept;
    kept.SetImageData(&mine);
    ASSERT_TRUE(kept.CreateTexture());
    EXPECT_EQ(kept.GetImageData(), &mine);
    eImageData bigger;
    bigger.Allocate(8, 2, 8);
    unsigned int id = kept.GetTextureID();
    kept.SetImageData(&bigger);
    ASSERT_TRUE(kept.CreateTexture());
    EXPECT_EQ(kept.GetTextureID(), id);
    EXPECT_EQ(kept.GetWidth(), 8);
    kept.SetImageData(nullptr);

    // Textures from files keep their picture, so they survive DestroyTexture.
    std::unique_ptr<eTexture> file(eTextureOperator::GetSingleton().CreateTexture(
        WritePNG().c_str(), eTWM_REPEAT, eTFM_LINEAR_MIPMAP_LINEAR));
    ASSERT_TRUE(file);
    ASSERT_TRUE(file->CreateTexture());
    EXPECT_TRUE(file->DestroyTexture());
    EXPECT_EQ(file->GetTextureID(), 0u);
    ASSERT_TRUE(file->CreateTexture());
    EXPECT_NE(file->GetTextureID(), 0u);
    EXPECT_EQ(file->GetHeight(), 2);
    GLint levels = 0;
    glBindTexture(GL_TEXTURE_2D, file->GetTextureID());
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 1, GL_TEXTURE_WIDTH, &levels);
    glBindTexture(GL_TEXTURE_2D, 0);
    EXPECT_EQ(levels, 1); // the mipmap chain exists for the mipmap filter

    eTexture empty;
    EXPECT_FALSE(empty.CreateTexture());
    EXPECT_EQ(glGetError(), (GLenum)GL_NO_ERROR);
}

} // namespace
