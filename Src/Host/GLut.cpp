#include "GLut.h"

#include "eGLContext.h"
#include "eProgramLibrary.h"
#include "eRecorder.h"

#include <epoxy/gl.h>
#include <initializer_list>

namespace KYR
{

namespace
{

// Notes a uniform set on the current program when the recorder is on.
void RecordUniform(char const* op, int location, float const* values, int count)
{
    Host::eRecorder& rec = Host::eRecorder::Get();
    if (!rec.IsOn())
        return;
    GLint nProgram = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &nProgram);
    Host::eRecord r;
    r.kind = Host::eRecord::Uniform;
    r.op = op;
    r.location = location;
    r.uniform = Host::UniformNameAt((unsigned int)nProgram, location);
    for (int i = 0; i < count; ++i)
        r.values.push_back((double)values[i]);
    rec.Add(r);
}

// Notes a change of the blend state when the recorder is on.
void RecordBlend(char const* op, std::initializer_list<unsigned int> arguments)
{
    Host::eRecorder& rec = Host::eRecorder::Get();
    if (!rec.IsOn())
        return;
    Host::eRecord r;
    r.kind = Host::eRecord::Blend;
    r.op = op;
    for (unsigned int a : arguments)
        r.values.push_back((double)a);
    rec.Add(r);
}

} // namespace

void GLut::ActiveTexture(unsigned int texture)
{
    Host::eRecorder& rec = Host::eRecorder::Get();
    if (rec.IsOn())
    {
        Host::eRecord r;
        r.kind = Host::eRecord::ActiveTexture;
        r.op = "ActiveTexture";
        r.first = (long long)texture;
        rec.Add(r);
    }
    // The real entry point: the direct-call wrapper would note the same call again.
    Host::eRealGL::ActiveTexture(texture);
}

void GLut::BindBuffer(unsigned int target, unsigned int buffer)
{
    glBindBuffer(target, buffer);
}

void GLut::GenBuffers(int n, unsigned int* buffers)
{
    glGenBuffers(n, buffers);
}

void GLut::DeleteBuffers(int n, unsigned int const* buffers)
{
    glDeleteBuffers(n, buffers);
}

void GLut::BufferData(unsigned int target, std::ptrdiff_t size, void const* data,
                      unsigned int usage)
{
    glBufferData(target, (GLsizeiptr)size, data, usage);
}

void GLut::VertexAttribPointer(unsigned int index, int size, unsigned int type,
                               unsigned char normalized, int stride, void const* pointer)
{
    // Integer data reaches the program converted to float, as with glVertexAttribPointer.
    glVertexAttribPointer(index, size, type, normalized ? GL_TRUE : GL_FALSE, stride, pointer);
}

void GLut::EnableVertexAttribArray(unsigned int index)
{
    glEnableVertexAttribArray(index);
}

void GLut::DisableVertexAttribArray(unsigned int index)
{
    glDisableVertexAttribArray(index);
}

void GLut::GenVertexArrays(int n, unsigned int* arrays)
{
    glGenVertexArrays(n, arrays);
}

void GLut::BindVertexArray(unsigned int array)
{
    glBindVertexArray(array);
}

void GLut::DeleteVertexArrays(int n, unsigned int const* arrays)
{
    glDeleteVertexArrays(n, arrays);
}

void GLut::GenFrameBuffers(int n, unsigned int* framebuffers)
{
    glGenFramebuffers(n, framebuffers);
}

void GLut::BindFrameBuffer(unsigned int target, unsigned int framebuffer)
{
    glBindFramebuffer(target, framebuffer);
}

void GLut::DeleteFrameBuffers(int n, unsigned int const* framebuffers)
{
    glDeleteFramebuffers(n, framebuffers);
}

void GLut::FrameBufferTexture2D(unsigned int target, unsigned int attachment,
                                unsigned int textarget, unsigned int texture, int level)
{
    glFramebufferTexture2D(target, attachment, textarget, texture, level);
}

void GLut::FrameBufferRenderBuffer(unsigned int target, unsigned int attachment,
                                   unsigned int renderbuffertarget, unsigned int renderbuffer)
{
    glFramebufferRenderbuffer(target, attachment, renderbuffertarget, renderbuffer);
}

unsigned int GLut::CheckFrameBufferStatus(unsigned int target)
{
    return glCheckFramebufferStatus(target);
}

void GLut::GenRenderBuffers(int n, unsigned int* renderbuffers)
{
    glGenRenderbuffers(n, renderbuffers);
}

void GLut::BindRenderBuffer(unsigned int target, unsigned int renderbuffer)
{
    glBindRenderbuffer(target, renderbuffer);
}

void GLut::RenderBufferStorage(unsigned int target, unsigned int internalformat, int width,
                               int height)
{
    glRenderbufferStorage(target, internalformat, width, height);
}

void GLut::DeleteRenderBuffers(int n, unsigned int const* renderbuffers)
{
    glDeleteRenderbuffers(n, renderbuffers);
}

void GLut::DrawBuffer(unsigned int buf)
{
    // The host draws into a frame buffer object, not a window: its back buffer is that
    // object's first colour attachment.
    GLint nFrameBuffer = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &nFrameBuffer);
    if (nFrameBuffer != 0 && (buf == GL_BACK || buf == GL_BACK_LEFT))
        buf = GL_COLOR_ATTACHMENT0;
    glDrawBuffer(buf);
}

void GLut::DrawBuffers(int n, unsigned int const* bufs)
{
    glDrawBuffers(n, bufs);
}

void GLut::ClearBufferfv(unsigned int buffer, int drawbuffer, float const* value)
{
    glClearBufferfv(buffer, drawbuffer, value);
}

void GLut::BlendEquation(unsigned int mode)
{
    glBlendEquation(mode);
}

void GLut::BlendEquationSeparate(unsigned int modeRGB, unsigned int modeAlpha)
{
    RecordBlend("BlendEquationSeparate", {modeRGB, modeAlpha});
    glBlendEquationSeparate(modeRGB, modeAlpha);
}

void GLut::BlendFuncSeparate(unsigned int sfactorRGB, unsigned int dfactorRGB,
                             unsigned int sfactorAlpha, unsigned int dfactorAlpha)
{
    RecordBlend("BlendFuncSeparate", {sfactorRGB, dfactorRGB, sfactorAlpha, dfactorAlpha});
    glBlendFuncSeparate(sfactorRGB, dfactorRGB, sfactorAlpha, dfactorAlpha);
}

void GLut::BlendFunci(unsigned int buf, unsigned int src, unsigned int dst)
{
    glBlendFunci(buf, src, dst);
}

void GLut::MultiDrawArrays(unsigned int mode, int const* first, int const* count, int drawcount)
{
    Host::eRecorder& rec = Host::eRecorder::Get();
    if (rec.IsOn() && drawcount > 0 && first && count)
    {
        // One record for the whole call: count holds the number of ranges, values the
        // (first, count) pairs.
        Host::eRecord r;
        r.kind = Host::eRecord::Draw;
        r.op = "MultiDrawArrays";
        r.mode = (int)mode;
        r.count = drawcount;
        r.first = first[0];
        for (int i = 0; i < drawcount; ++i)
        {
            r.values.push_back((double)first[i]);
            r.values.push_back((double)count[i]);
        }
        rec.Add(r);
    }
    glMultiDrawArrays(mode, first, count, drawcount);
}

void GLut::TexImage3D(unsigned int target, int level, int internalformat, int width, int height,
                      int depth, int border, unsigned int format, unsigned int type,
                      void const* pixels)
{
    glTexImage3D(target, level, internalformat, width, height, depth, border, format, type, pixels);
}

void GLut::UseProgram(unsigned int program)
{
    glUseProgram(program);
}

void GLut::Uniform1f(int location, float v0)
{
    RecordUniform("Uniform1f", location, &v0, 1);
    glUniform1f(location, v0);
}

void GLut::Uniform1i(int location, int v0)
{
    float f = (float)v0;
    RecordUniform("Uniform1i", location, &f, 1);
    glUniform1i(location, v0);
}

void GLut::Uniform4f(int location, float v0, float v1, float v2, float v3)
{
    float v[4] = {v0, v1, v2, v3};
    RecordUniform("Uniform4f", location, v, 4);
    glUniform4f(location, v0, v1, v2, v3);
}

void GLut::Uniform4fv(int location, int count, float const* value)
{
    if (value && count > 0)
        RecordUniform("Uniform4fv", location, value, 4 * count);
    glUniform4fv(location, count, value);
}

} // namespace KYR
