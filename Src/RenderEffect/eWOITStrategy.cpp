#include "eWOITStrategy.h"
#include "GLut.h"
#include "eProgram.h"
#include <epoxy/gl.h>
#include <cstdio>

namespace KYR
{

namespace
{

// The full-screen quad as two triangles in clip space.
float const kQuad[12] = {-1.0f, 1.0f, -1.0f, -1.0f, 1.0f, -1.0f,
                         -1.0f, 1.0f, 1.0f,  -1.0f, 1.0f, 1.0f};

void FreeTexture(unsigned int name)
{
    glDeleteTextures(1, &name);
}

void FreeFrameBuffer(unsigned int name)
{
    GLut::DeleteFrameBuffers(1, &name);
}

void FreeBuffer(unsigned int name)
{
    GLut::DeleteBuffers(1, &name);
}

void FreeVertexArray(unsigned int name)
{
    GLut::DeleteVertexArrays(1, &name);
}

// The frame buffer bound now; -1 stands until OpenGL has answered.
GLint BoundFrameBuffer()
{
    GLint name = -1;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &name);
    return name;
}

} // namespace

eWOITStrategy::eWOITStrategy()
    : m_pCamera(nullptr), m_nWidth(0), m_nHeight(0), m_fDepthScale(0.5f),
      m_vBackground(0.1f, 0.3f, 0.7f), m_bReported(false)
{
}

eWOITStrategy::~eWOITStrategy() {}

void eWOITStrategy::Create()
{
    GLint const saved = BoundFrameBuffer();
    Destroy();

    GLuint textures[2] = {0, 0};
    glGenTextures(2, textures);
    CreateTarget(m_nAccumTexture, textures[0], GL_RGBA16F, GL_RGBA);
    CreateTarget(m_nRevealTexture, textures[1], GL_R8, GL_RED);

    unsigned int frameBuffer = 0;
    GLut::GenFrameBuffers(1, &frameBuffer);
    m_nFrameBuffer.Reset(frameBuffer, FreeFrameBuffer);
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, frameBuffer);
    GLut::FrameBufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE,
                               m_nAccumTexture, 0);
    GLut::FrameBufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT1, GL_TEXTURE_RECTANGLE,
                               m_nRevealTexture, 0);

    CreateQuad();
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, (unsigned int)saved);
}

void eWOITStrategy::CreateTarget(eSharedName& texture, unsigned int name, int internalFormat,
                                 unsigned int format)
{
    texture.Reset(name, FreeTexture);
    glBindTexture(GL_TEXTURE_RECTANGLE, name);
    glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_BORDER);
    glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_BORDER);
    glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_RECTANGLE, 0, internalFormat, m_nWidth, m_nHeight, 0, format, GL_FLOAT,
                 nullptr);
}

void eWOITStrategy::CreateQuad()
{
    unsigned int array = 0, buffer = 0;
    GLut::GenVertexArrays(1, &array);
    m_nQuadArray.Reset(array, FreeVertexArray);
    GLut::BindVertexArray(array);
    GLut::GenBuffers(1, &buffer);
    m_nQuadBuffer.Reset(buffer, FreeBuffer);
    GLut::BindBuffer(GL_ARRAY_BUFFER, buffer);
    GLut::BufferData(GL_ARRAY_BUFFER, sizeof kQuad, kQuad, GL_STATIC_DRAW);
    GLut::VertexAttribPointer(0, 2, GL_FLOAT, 0, 2 * sizeof(float), nullptr);
    GLut::EnableVertexAttribArray(0);
    GLut::BindVertexArray(0);
    // The array keeps the buffer; nothing else should find it bound.
    GLut::BindBuffer(GL_ARRAY_BUFFER, 0);
}

void eWOITStrategy::Destroy()
{
    m_nFrameBuffer.Reset();
    m_nAccumTexture.Reset();
    m_nRevealTexture.Reset();
    m_nQuadBuffer.Reset();
    m_nQuadArray.Reset();
}

void eWOITStrategy::Update() {}

void eWOITStrategy::Reset() {}

int eWOITStrategy::GetFlags()
{
    return 0;
}

void eWOITStrategy::SetCamera(eCamera* camera)
{
    m_pCamera = camera;
}

void eWOITStrategy::SetSize(int width, int height)
{
    m_nWidth = width;
    m_nHeight = height;
}

void eWOITStrategy::GetSize(int& width, int& height)
{
    width = m_nWidth;
    height = m_nHeight;
}

void eWOITStrategy::Begin(eRenderProgram* program)
{
    eProgram* p = program ? program->GetProgram() : nullptr;
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    if (p)
        p->Use();

    GLut::BindFrameBuffer(GL_FRAMEBUFFER, m_nFrameBuffer);
    unsigned int const targets[2] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1};
    GLut::DrawBuffers(2, targets);
    float const noColour[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    float const allThrough[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    GLut::ClearBufferfv(GL_COLOR, 0, noColour);
    GLut::ClearBufferfv(GL_COLOR, 1, allThrough);

    // Colour sums add up; each draw multiplies the transmittance by (1 - its alpha).
    glEnable(GL_BLEND);
    GLut::BlendEquation(GL_FUNC_ADD);
    GLut::BlendFunci(0, GL_ONE, GL_ONE);
    GLut::BlendFunci(1, GL_ZERO, GL_ONE_MINUS_SRC_COLOR);

    if (p)
        p->Uniform1f(p->GetUniformLocation("uDepthScale"), m_fDepthScale);
}

void eWOITStrategy::Composite(eRenderProgram* program)
{
    // Drawn where the caller is: it has already left the targets' frame buffer.
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, (unsigned int)BoundFrameBuffer());
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    GLut::DrawBuffer(GL_BACK);

    eProgram* p = program ? program->GetProgram() : nullptr;
    if (!p)
        return;
    p->Use();
    p->Uniform3f(p->GetUniformLocation("uBackgroundColor"), m_vBackground.x, m_vBackground.y,
                 m_vBackground.z);
    BindTarget(program, "ColorTex0", 0, m_nAccumTexture);
    BindTarget(program, "ColorTex1", 1, m_nRevealTexture);

    GLut::BindVertexArray(m_nQuadArray);
    glDrawArrays(GL_TRIANGLES, 0, 6);
    GLut::BindVertexArray(0);
    GLut::UseProgram(0);
}

void eWOITStrategy::BindTarget(eRenderProgram* program, char const* sampler, int unit,
                               unsigned int texture)
{
    int const location = program->GetProgram()->GetUniformLocation(sampler);
    if (location < 0)
    {
        // The draw goes on without this target.
        if (!m_bReported)
            std::printf("not find the uniform %s!\n", "location");
        m_bReported = true;
        return;
    }
    GLut::Uniform1i(location, unit);
    GLut::ActiveTexture(GL_TEXTURE0 + unit);
    glBindTexture(GL_TEXTURE_RECTANGLE, texture);
    glBindTexture(GL_TEXTURE_2D, 0);
    GLut::ActiveTexture(GL_TEXTURE0);
}

} // namespace KYR
