// Off-screen context: read-back orientation, resizing, PNG output, and the recording of the
// OpenGL calls that code outside the host makes directly.
#include "GLut.h"
#include "eFile.h"
#include "eGLContext.h"
#include "eRecorder.h"

#include <epoxy/gl.h>
#include <gtest/gtest.h>

#include "eTexture.h"
#include <cstdio>
#include <memory>
#include <string>

using namespace KYR;
using namespace KYR::Host;

namespace
{

class GLCoreContext : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(eGLContext::Get().Ensure(32, 16)) << eGLContext::Get().GetError();
        eGLContext::ApplyHostDefaults();
    }
    void TearDown() override
    {
        eRecorder::Get().Stop();
        glDisable(GL_SCISSOR_TEST);
    }
};

TEST_F(GLCoreContext, ReadPixelsPutsTheTopRowFirst)
{
    glClearColor(1.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    // Green over the lower quarter (OpenGL rows 0..3 are the bottom of the picture).
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, 32, 4);
    glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);

    std::vector<unsigned char> px = eGLContext::Get().ReadPixels();
    ASSERT_EQ(px.size(), 32u * 16u * 4u);
    auto at = [&](int x, int y) { return &px[((size_t)y * 32 + (size_t)x) * 4]; };
    EXPECT_EQ(at(5, 0)[0], 255);
    EXPECT_EQ(at(5, 0)[1], 0);
    EXPECT_EQ(at(5, 11)[0], 255); // just above the green band
    EXPECT_EQ(at(5, 12)[1], 255); // first green row from the top
    EXPECT_EQ(at(31, 15)[0], 0);
    EXPECT_EQ(at(31, 15)[1], 255);
    EXPECT_EQ(at(31, 15)[3], 255);
}

TEST_F(GLCoreContext, EnsureResizesAndBindsTheFrameBuffer)
{
    eGLContext& c = eGLContext::Get();
    ASSERT_TRUE(c.Ensure(20, 10));
    EXPECT_EQ(c.Width(), 20);
    EXPECT_EQ(c.Height(), 10);
    GLint fb = 0, vp[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &fb);
    glGetIntegerv(GL_VIEWPORT, vp);
    EXPECT_EQ((unsigned)fb, c.GetFrameBuffer());
    EXPECT_EQ(vp[2], 20);
    EXPECT_EQ(vp[3], 10);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), (GLenum)GL_FRAMEBUFFER_COMPLETE);
    EXPECT_EQ(c.ReadPixels().size(), 20u * 10u * 4u);
    EXPECT_FALSE(c.Ensure(0, 10)); // refused, size kept
    EXPECT_EQ(c.Width(), 20);
}

TEST_F(GLCoreContext, SavePNGWritesAFileAndReportsABadPath)
{
    std::string path = ::testing::TempDir() + "glcore_context.png";
    std::remove(path.c_str());
    ASSERT_TRUE(eGLContext::Get().SavePNG(path));
    FILE* f = std::fopen(path.c_str(), "rb");
    ASSERT_NE(f, nullptr);
    unsigned char sig[4] = {0, 0, 0, 0};
    EXPECT_EQ(std::fread(sig, 1, 4, f), 4u);
    std::fclose(f);
    EXPECT_EQ(sig[1], 'P');
    EXPECT_EQ(sig[2], 'N');
    std::remove(path.c_str());

    // A frame whose alpha was left thin saves as the colour a screen shows, opaque.
    glBindFramebuffer(GL_FRAMEBUFFER, eGLContext::Get().GetFrameBuffer());
    glClearColor(0.8f, 0.4f, 0.2f, 0.1f);
    glClear(GL_COLOR_BUFFER_BIT);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    ASSERT_TRUE(eGLContext::Get().SavePNG(path));
    eFileStream stream;
    eByteArray bytes;
    ASSERT_TRUE(stream.Open(path.c_str(), 2, 8192) && stream.LoadByteArray(bytes));
    stream.Close();
    std::unique_ptr<eImageData> image(eFileParserToolkit::LoadImageData(bytes, 32));
    ASSERT_TRUE(image);
    EXPECT_NEAR(image->m_pData[0], 204, 1);
    EXPECT_NEAR(image->m_pData[1], 102, 1);
    EXPECT_NEAR(image->m_pData[2], 51, 1);
    EXPECT_EQ(image->m_pData[3], 255);
    std::remove(path.c_str());

    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(eGLContext::Get().SavePNG("/nonexistent-dir/x/out.png"));
    EXPECT_NE(::testing::internal::GetCapturedStderr().find("/nonexistent-dir/x/out.png"),
              std::string::npos);
}

TEST_F(GLCoreContext, DirectCallsAreRecordedAcrossTheLibraryBoundary)
{
    GLuint tex = 0;
    glGenTextures(1, &tex);
    unsigned short indices[3] = {0, 1, 2};
    eRecorder::Get().Start();
    glActiveTexture(GL_TEXTURE2);
    glBindTexture(GL_TEXTURE_2D, tex);
    glDrawArrays(GL_TRIANGLES, 6, 3);
    glDrawElements(GL_LINES, 2, GL_UNSIGNED_SHORT, indices);
    GLut::ActiveTexture(GL_TEXTURE0);
    {
        eDirectCallMute mute;
        glBindTexture(GL_TEXTURE_2D, 0);
        glDrawArrays(GL_POINTS, 0, 1);
    }
    eRecorder::Get().Stop();
    glBindTexture(GL_TEXTURE_2D, 0); // recorder off: not noted
    glDeleteTextures(1, &tex);

    std::vector<eRecord> binds = eRecorder::Get().Of(eRecord::BindTexture);
    ASSERT_EQ(binds.size(), 1u);
    EXPECT_EQ(binds[0].mode, GL_TEXTURE_2D);
    EXPECT_EQ(binds[0].count, (long long)tex);
    EXPECT_EQ(binds[0].first, 2); // active unit at the time of the bind

    std::vector<eRecord> draws = eRecorder::Get().Of(eRecord::Draw);
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0].op, "glDrawArrays");
    EXPECT_EQ(draws[0].mode, GL_TRIANGLES);
    EXPECT_EQ(draws[0].first, 6);
    EXPECT_EQ(draws[0].count, 3);
    EXPECT_EQ(draws[1].op, "glDrawElements");
    EXPECT_EQ(draws[1].mode, GL_LINES);
    EXPECT_EQ(draws[1].count, 2);

    // The wrapper and the direct call each appear once.
    std::vector<eRecord> units = eRecorder::Get().Of(eRecord::ActiveTexture);
    ASSERT_EQ(units.size(), 2u);
    EXPECT_EQ(units[0].op, "glActiveTexture");
    EXPECT_EQ(units[0].first, GL_TEXTURE2);
    EXPECT_EQ(units[1].op, "ActiveTexture");
    EXPECT_EQ(units[1].first, GL_TEXTURE0);

    // The wrapped entry points still reach OpenGL.
    GLint active = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    EXPECT_EQ(active, GL_TEXTURE0);
    EXPECT_EQ(glGetError(), (GLenum)GL_NO_ERROR);
}

} // namespace
