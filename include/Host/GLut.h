// Static wrappers of the OpenGL entry points beyond OpenGL 1.1. Each does what the OpenGL call
// of the same name does. The parameters use plain C types (GLenum and GLuint are unsigned int,
// GLsizei and GLint int, GLsizeiptr ptrdiff_t, GLboolean unsigned char), so that this header can
// be included next to any OpenGL header.
#pragma once
#include <cstddef>

namespace KYR
{

class GLut
{
public:
    static void ActiveTexture(unsigned int texture);

    static void BindBuffer(unsigned int target, unsigned int buffer);
    static void GenBuffers(int n, unsigned int* buffers);
    static void DeleteBuffers(int n, unsigned int const* buffers);
    static void BufferData(unsigned int target, std::ptrdiff_t size, void const* data,
                           unsigned int usage);

    static void VertexAttribPointer(unsigned int index, int size, unsigned int type,
                                    unsigned char normalized, int stride, void const* pointer);
    static void EnableVertexAttribArray(unsigned int index);
    static void DisableVertexAttribArray(unsigned int index);

    static void GenVertexArrays(int n, unsigned int* arrays);
    static void BindVertexArray(unsigned int array);
    static void DeleteVertexArrays(int n, unsigned int const* arrays);

    static void GenFrameBuffers(int n, unsigned int* framebuffers);
    static void BindFrameBuffer(unsigned int target, unsigned int framebuffer);
    static void DeleteFrameBuffers(int n, unsigned int const* framebuffers);
    static void FrameBufferTexture2D(unsigned int target, unsigned int attachment,
                                     unsigned int textarget, unsigned int texture, int level);
    static void FrameBufferRenderBuffer(unsigned int target, unsigned int attachment,
                                        unsigned int renderbuffertarget, unsigned int renderbuffer);
    static unsigned int CheckFrameBufferStatus(unsigned int target);

    static void GenRenderBuffers(int n, unsigned int* renderbuffers);
    static void BindRenderBuffer(unsigned int target, unsigned int renderbuffer);
    static void RenderBufferStorage(unsigned int target, unsigned int internalformat, int width,
                                    int height);
    static void DeleteRenderBuffers(int n, unsigned int const* renderbuffers);

    static void DrawBuffer(unsigned int buf);
    static void DrawBuffers(int n, unsigned int const* bufs);
    static void ClearBufferfv(unsigned int buffer, int drawbuffer, float const* value);

    static void BlendEquation(unsigned int mode);
    static void BlendEquationSeparate(unsigned int modeRGB, unsigned int modeAlpha);
    static void BlendFuncSeparate(unsigned int sfactorRGB, unsigned int dfactorRGB,
                                  unsigned int sfactorAlpha, unsigned int dfactorAlpha);
    static void BlendFunci(unsigned int buf, unsigned int src, unsigned int dst);

    static void MultiDrawArrays(unsigned int mode, int const* first, int const* count,
                                int drawcount);
    static void TexImage3D(unsigned int target, int level, int internalformat, int width,
                           int height, int depth, int border, unsigned int format,
                           unsigned int type, void const* pixels);

    // Uniforms of the current program.
    static void UseProgram(unsigned int program);
    static void Uniform1f(int location, float v0);
    static void Uniform1i(int location, int v0);
    static void Uniform4f(int location, float v0, float v1, float v2, float v3);
    static void Uniform4fv(int location, int count, float const* value);
};

} // namespace KYR
