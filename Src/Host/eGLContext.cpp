#include "eGLContext.h"

#include "eRecorder.h"

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wunused-function"
#endif
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb_image_write.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

namespace KYR
{
namespace Host
{

// ---------------------------------------------------------------------------------------------
// Recording of the OpenGL calls that effects make directly.
//
// libepoxy reaches every entry point through a global function pointer (epoxy_glXxx) that
// starts out as a resolver stub and is overwritten with the real function on first use. The
// pointers are shared by every module of the process, so replacing four of them here makes
// the effect library's own glBindTexture / glDrawArrays / glDrawElements / glActiveTexture /
// glBlendFunc calls pass through the trampolines below.
// ---------------------------------------------------------------------------------------------
namespace
{

typedef void(EPOXY_CALLSPEC* PfnBindTexture)(GLenum, GLuint);
typedef void(EPOXY_CALLSPEC* PfnDrawArrays)(GLenum, GLint, GLsizei);
typedef void(EPOXY_CALLSPEC* PfnDrawElements)(GLenum, GLsizei, GLenum, void const*);
typedef void(EPOXY_CALLSPEC* PfnActiveTexture)(GLenum);
typedef void(EPOXY_CALLSPEC* PfnBlendFunc)(GLenum, GLenum);

PfnBindTexture s_pRealBindTexture = nullptr;
PfnDrawArrays s_pRealDrawArrays = nullptr;
PfnDrawElements s_pRealDrawElements = nullptr;
PfnActiveTexture s_pRealActiveTexture = nullptr;
PfnBlendFunc s_pRealBlendFunc = nullptr;
bool s_bHooked = false;

thread_local int t_nMute = 0;

bool Recording()
{
    return t_nMute == 0 && eRecorder::Get().IsOn();
}

void EPOXY_CALLSPEC HookBindTexture(GLenum target, GLuint texture)
{
    if (Recording())
    {
        GLint nActive = GL_TEXTURE0;
        glGetIntegerv(GL_ACTIVE_TEXTURE, &nActive);
        eRecord r;
        r.kind = eRecord::BindTexture;
        r.op = "glBindTexture";
        r.mode = (int)target;
        r.count = (long long)texture;
        r.first = (long long)(nActive - GL_TEXTURE0); // unit number, 0 for GL_TEXTURE0
        eRecorder::Get().Add(r);
    }
    s_pRealBindTexture(target, texture);
}

void EPOXY_CALLSPEC HookDrawArrays(GLenum mode, GLint first, GLsizei count)
{
    if (Recording())
    {
        eRecord r;
        r.kind = eRecord::Draw;
        r.op = "glDrawArrays";
        r.mode = (int)mode;
        r.count = count;
        r.first = first;
        eRecorder::Get().Add(r);
    }
    s_pRealDrawArrays(mode, first, count);
}

void EPOXY_CALLSPEC HookDrawElements(GLenum mode, GLsizei count, GLenum type, void const* indices)
{
    if (Recording())
    {
        eRecord r;
        r.kind = eRecord::Draw;
        r.op = "glDrawElements";
        r.mode = (int)mode;
        r.count = count;
        r.first = (long long)(std::intptr_t)indices; // byte offset into the index buffer
        r.values.push_back((double)type);
        eRecorder::Get().Add(r);
    }
    s_pRealDrawElements(mode, count, type, indices);
}

void EPOXY_CALLSPEC HookActiveTexture(GLenum unit)
{
    if (Recording())
    {
        eRecord r;
        r.kind = eRecord::ActiveTexture;
        r.op = "glActiveTexture";
        r.first = (long long)unit;
        eRecorder::Get().Add(r);
    }
    s_pRealActiveTexture(unit);
}

void EPOXY_CALLSPEC HookBlendFunc(GLenum source, GLenum dest)
{
    if (Recording())
    {
        eRecord r;
        r.kind = eRecord::Blend;
        r.op = "glBlendFunc";
        r.values = {(double)source, (double)dest};
        eRecorder::Get().Add(r);
    }
    s_pRealBlendFunc(source, dest);
}

// Makes libepoxy resolve `slot` by calling through it once with harmless arguments, and
// returns the real function. When the pointer was not rewritten by the call (a libepoxy that
// dispatches differently), asks EGL for the entry point instead.
template <typename Pfn, typename Call> Pfn Resolve(Pfn& slot, char const* name, Call call)
{
    Pfn before = slot;
    call();
    Pfn after = slot;
    if (after != before && after != nullptr)
        return after;
    return reinterpret_cast<Pfn>(eglGetProcAddress(name));
}

bool InstallHooks()
{
    if (s_bHooked)
        return true;

    GLint nTexture = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &nTexture);
    GLint nUnit = GL_TEXTURE0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &nUnit);

    s_pRealBindTexture = Resolve(epoxy_glBindTexture, "glBindTexture",
                                 [&] { epoxy_glBindTexture(GL_TEXTURE_2D, (GLuint)nTexture); });
    s_pRealActiveTexture = Resolve(epoxy_glActiveTexture, "glActiveTexture",
                                   [&] { epoxy_glActiveTexture((GLenum)nUnit); });
    // Zero-count draws resolve the entry points and draw nothing.
    s_pRealDrawArrays =
        Resolve(epoxy_glDrawArrays, "glDrawArrays", [] { epoxy_glDrawArrays(GL_POINTS, 0, 0); });
    s_pRealDrawElements =
        Resolve(epoxy_glDrawElements, "glDrawElements",
                [] { epoxy_glDrawElements(GL_POINTS, 0, GL_UNSIGNED_INT, nullptr); });
    GLint nSource = GL_ONE, nDest = GL_ZERO;
    glGetIntegerv(GL_BLEND_SRC_RGB, &nSource);
    glGetIntegerv(GL_BLEND_DST_RGB, &nDest);
    s_pRealBlendFunc = Resolve(epoxy_glBlendFunc, "glBlendFunc",
                               [&] { epoxy_glBlendFunc((GLenum)nSource, (GLenum)nDest); });
    while (glGetError() != GL_NO_ERROR)
    {
    }

    if (!s_pRealBindTexture || !s_pRealActiveTexture || !s_pRealDrawArrays ||
        !s_pRealDrawElements || !s_pRealBlendFunc)
    {
        std::fprintf(stderr, "host: could not resolve OpenGL entry points for call recording\n");
        return false;
    }
    epoxy_glBindTexture = HookBindTexture;
    epoxy_glActiveTexture = HookActiveTexture;
    epoxy_glDrawArrays = HookDrawArrays;
    epoxy_glDrawElements = HookDrawElements;
    epoxy_glBlendFunc = HookBlendFunc;
    s_bHooked = true;
    return true;
}

bool HasExtension(char const* list, char const* name)
{
    if (!list)
        return false;
    size_t n = std::strlen(name);
    for (char const* p = list; (p = std::strstr(p, name)) != nullptr; p += n)
    {
        bool bStart = (p == list) || p[-1] == ' ';
        bool bEnd = p[n] == '\0' || p[n] == ' ';
        if (bStart && bEnd)
            return true;
    }
    return false;
}

} // namespace

eDirectCallMute::eDirectCallMute()
{
    ++t_nMute;
}
eDirectCallMute::~eDirectCallMute()
{
    --t_nMute;
}

void eRealGL::BindTexture(unsigned int target, unsigned int texture)
{
    if (s_pRealBindTexture)
        s_pRealBindTexture(target, texture);
    else
        glBindTexture(target, texture);
}

void eRealGL::DrawArrays(unsigned int mode, int first, int count)
{
    if (s_pRealDrawArrays)
        s_pRealDrawArrays(mode, first, count);
    else
        glDrawArrays(mode, first, count);
}

void eRealGL::DrawElements(unsigned int mode, int count, unsigned int type, void const* indices)
{
    if (s_pRealDrawElements)
        s_pRealDrawElements(mode, count, type, indices);
    else
        glDrawElements(mode, count, type, indices);
}

void eRealGL::ActiveTexture(unsigned int unit)
{
    if (s_pRealActiveTexture)
        s_pRealActiveTexture(unit);
    else
        glActiveTexture(unit);
}

// ---------------------------------------------------------------------------------------------
// Context
// ---------------------------------------------------------------------------------------------

eGLContext& eGLContext::Get()
{
    // Never destroyed: the driver tears the context down with the process, and a context
    // destroyed from a static destructor can race the driver's own exit handlers.
    static eGLContext* s_pContext = new eGLContext();
    return *s_pContext;
}

void eGLContext::Fail(std::string const& why)
{
    m_strError = why;
    std::fprintf(stderr, "host: OpenGL context: %s\n", why.c_str());
}

bool eGLContext::Ensure(int width, int height)
{
    if (width <= 0 || height <= 0)
    {
        std::fprintf(stderr, "host: OpenGL context: invalid frame buffer size %dx%d\n", width,
                     height);
        return false;
    }
    if (!m_bReady)
    {
        if (m_bTried)
            return false; // already failed and reported once
        m_bTried = true;
        if (!CreateContext())
            return false;
        m_bReady = true;
    }
    else if (eglGetCurrentContext() != (EGLContext)m_pContext)
    {
        eglMakeCurrent((EGLDisplay)m_pDisplay, (EGLSurface)m_pSurface, (EGLSurface)m_pSurface,
                       (EGLContext)m_pContext);
    }
    if (width != m_nWidth || height != m_nHeight || m_nFrameBuffer == 0)
    {
        if (!CreateFrameBuffer(width, height))
            return false;
    }
    Bind();
    return true;
}

bool eGLContext::CreateContext()
{
    char const* clientExt = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    bool bPlatformBase = HasExtension(clientExt, "EGL_EXT_platform_base");
    EGLDisplay dpy = EGL_NO_DISPLAY;
    bool bNeedSurface = false;
    std::string tried;

    // 1. Mesa's surfaceless platform: no window system at all.
    if (bPlatformBase && HasExtension(clientExt, "EGL_MESA_platform_surfaceless"))
    {
        dpy = eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        if (dpy != EGL_NO_DISPLAY && !eglInitialize(dpy, nullptr, nullptr))
            dpy = EGL_NO_DISPLAY;
        tried += " surfaceless";
    }
    // 2. A device display (the vendor drivers' headless road).
    if (dpy == EGL_NO_DISPLAY && bPlatformBase &&
        HasExtension(clientExt, "EGL_EXT_platform_device") &&
        (HasExtension(clientExt, "EGL_EXT_device_enumeration") ||
         HasExtension(clientExt, "EGL_EXT_device_base")))
    {
        EGLDeviceEXT devices[16];
        EGLint nDevices = 0;
        if (eglQueryDevicesEXT(16, devices, &nDevices))
        {
            for (EGLint i = 0; i < nDevices && dpy == EGL_NO_DISPLAY; ++i)
            {
                dpy = eglGetPlatformDisplayEXT(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr);
                if (dpy != EGL_NO_DISPLAY && !eglInitialize(dpy, nullptr, nullptr))
                    dpy = EGL_NO_DISPLAY;
            }
        }
        tried += " device";
    }
    // 3. The default display with a small pbuffer.
    if (dpy == EGL_NO_DISPLAY)
    {
        dpy = eglGetDisplay(EGL_DEFAULT_DISPLAY);
        if (dpy != EGL_NO_DISPLAY && !eglInitialize(dpy, nullptr, nullptr))
            dpy = EGL_NO_DISPLAY;
        bNeedSurface = true;
        tried += " default";
    }
    if (dpy == EGL_NO_DISPLAY)
    {
        char buf[64];
        std::snprintf(buf, sizeof buf, " (EGL error 0x%x)", (unsigned)eglGetError());
        Fail("no EGL display could be initialised (tried:" + tried + ")" + buf);
        return false;
    }
    if (!bNeedSurface &&
        !HasExtension(eglQueryString(dpy, EGL_EXTENSIONS), "EGL_KHR_surfaceless_context"))
        bNeedSurface = true;

    if (!eglBindAPI(EGL_OPENGL_API))
    {
        Fail("the EGL display offers no desktop OpenGL API");
        return false;
    }

    EGLint const configAttribs[] = {EGL_SURFACE_TYPE,
                                    bNeedSurface ? EGL_PBUFFER_BIT : 0,
                                    EGL_RENDERABLE_TYPE,
                                    EGL_OPENGL_BIT,
                                    EGL_RED_SIZE,
                                    8,
                                    EGL_GREEN_SIZE,
                                    8,
                                    EGL_BLUE_SIZE,
                                    8,
                                    EGL_ALPHA_SIZE,
                                    8,
                                    EGL_NONE};
    EGLConfig config = nullptr;
    EGLint nConfigs = 0;
    if (!eglChooseConfig(dpy, configAttribs, &config, 1, &nConfigs) || nConfigs < 1)
    {
        Fail("no EGL configuration with desktop OpenGL and RGBA8");
        return false;
    }

    // A 4.5 compatibility context; older compatibility versions only as a fallback, since
    // the effects use both fixed-function state calls and modern programs.
    static int const versions[][2] = {{4, 5}, {4, 3}, {3, 3}, {0, 0}};
    EGLContext ctx = EGL_NO_CONTEXT;
    for (auto const& v : versions)
    {
        EGLint attribs[16];
        int n = 0;
        if (v[0] > 0)
        {
            attribs[n++] = EGL_CONTEXT_MAJOR_VERSION;
            attribs[n++] = v[0];
            attribs[n++] = EGL_CONTEXT_MINOR_VERSION;
            attribs[n++] = v[1];
            attribs[n++] = EGL_CONTEXT_OPENGL_PROFILE_MASK;
            attribs[n++] = EGL_CONTEXT_OPENGL_COMPATIBILITY_PROFILE_BIT;
        }
        attribs[n++] = EGL_NONE;
        ctx = eglCreateContext(dpy, config, EGL_NO_CONTEXT, attribs);
        if (ctx != EGL_NO_CONTEXT)
        {
            if (v[0] != 4 || v[1] != 5)
                std::fprintf(stderr,
                             "host: OpenGL context: 4.5 compatibility profile unavailable, "
                             "using a %s context\n",
                             v[0] ? (std::to_string(v[0]) + "." + std::to_string(v[1])).c_str()
                                  : "default");
            break;
        }
    }
    if (ctx == EGL_NO_CONTEXT)
    {
        char buf[64];
        std::snprintf(buf, sizeof buf, " (EGL error 0x%x)", (unsigned)eglGetError());
        Fail(std::string("no OpenGL compatibility-profile context could be created") + buf);
        return false;
    }

    EGLSurface surface = EGL_NO_SURFACE;
    if (bNeedSurface)
    {
        EGLint const pbAttribs[] = {EGL_WIDTH, 16, EGL_HEIGHT, 16, EGL_NONE};
        surface = eglCreatePbufferSurface(dpy, config, pbAttribs);
        if (surface == EGL_NO_SURFACE)
        {
            eglDestroyContext(dpy, ctx);
            Fail("no pbuffer surface could be created");
            return false;
        }
    }
    if (!eglMakeCurrent(dpy, surface, surface, ctx))
    {
        char buf[64];
        std::snprintf(buf, sizeof buf, " (EGL error 0x%x)", (unsigned)eglGetError());
        if (surface != EGL_NO_SURFACE)
            eglDestroySurface(dpy, surface);
        eglDestroyContext(dpy, ctx);
        Fail(std::string("the OpenGL context could not be made current") + buf);
        return false;
    }
    m_pDisplay = dpy;
    m_pContext = ctx;
    m_pSurface = surface;
    m_strError.clear();

    InstallHooks();
    return true;
}

bool eGLContext::CreateFrameBuffer(int width, int height)
{
    if (m_nFrameBuffer == 0)
    {
        glGenFramebuffers(1, &m_nFrameBuffer);
        glGenRenderbuffers(1, &m_nColorBuffer);
        glGenRenderbuffers(1, &m_nDepthBuffer);
    }
    glBindRenderbuffer(GL_RENDERBUFFER, m_nColorBuffer);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, width, height);
    glBindRenderbuffer(GL_RENDERBUFFER, m_nDepthBuffer);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, width, height);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);

    glBindFramebuffer(GL_FRAMEBUFFER, m_nFrameBuffer);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER,
                              m_nColorBuffer);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER,
                              m_nDepthBuffer);
    GLenum status = glCheckFramebufferStatus(GL_FRAMEBUFFER);
    if (status != GL_FRAMEBUFFER_COMPLETE)
    {
        char buf[96];
        std::snprintf(buf, sizeof buf, "frame buffer %dx%d incomplete (status 0x%x)", width, height,
                      (unsigned)status);
        Fail(buf);
        return false;
    }
    glDrawBuffer(GL_COLOR_ATTACHMENT0);
    glReadBuffer(GL_COLOR_ATTACHMENT0);
    m_nWidth = width;
    m_nHeight = height;
    return true;
}

void eGLContext::Bind()
{
    if (!m_bReady || m_nFrameBuffer == 0)
        return;
    glBindFramebuffer(GL_FRAMEBUFFER, m_nFrameBuffer);
    glViewport(0, 0, m_nWidth, m_nHeight);
}

std::vector<unsigned char> eGLContext::ReadPixels() const
{
    std::vector<unsigned char> pixels;
    if (!m_bReady || m_nFrameBuffer == 0)
        return pixels;

    GLint nReadFb = 0, nPackBuffer = 0, nAlign = 4;
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &nReadFb);
    glGetIntegerv(GL_PIXEL_PACK_BUFFER_BINDING, &nPackBuffer);
    glGetIntegerv(GL_PACK_ALIGNMENT, &nAlign);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, m_nFrameBuffer);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);

    size_t const row = (size_t)m_nWidth * 4;
    std::vector<unsigned char> raw(row * (size_t)m_nHeight);
    glReadPixels(0, 0, m_nWidth, m_nHeight, GL_RGBA, GL_UNSIGNED_BYTE, raw.data());

    glPixelStorei(GL_PACK_ALIGNMENT, nAlign);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, (GLuint)nPackBuffer);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, (GLuint)nReadFb);

    // OpenGL's row 0 is the bottom; pictures start at the top.
    pixels.resize(raw.size());
    for (int y = 0; y < m_nHeight; ++y)
        std::memcpy(&pixels[(size_t)y * row], &raw[(size_t)(m_nHeight - 1 - y) * row], row);
    return pixels;
}

bool eGLContext::SavePNG(std::string const& path) const
{
    if (!m_bReady || m_nFrameBuffer == 0)
    {
        std::fprintf(stderr, "host: cannot save \"%s\": no OpenGL context\n", path.c_str());
        return false;
    }
    // The picture as a screen shows the frame: colour only. What effects leave in the
    // frame's alpha (blends that thin it where markers pile up) is no transparency of the
    // picture, and a viewer laying the file over a page would show the page through it.
    std::vector<unsigned char> pixels = ReadPixels();
    size_t const count = (size_t)m_nWidth * (size_t)m_nHeight;
    for (size_t i = 0; i < count; ++i)
        for (int c = 0; c < 3; ++c)
            pixels[i * 3 + c] = pixels[i * 4 + c];
    if (!stbi_write_png(path.c_str(), m_nWidth, m_nHeight, 3, pixels.data(), m_nWidth * 3))
    {
        std::fprintf(stderr, "host: cannot write PNG \"%s\"\n", path.c_str());
        return false;
    }
    return true;
}

void ApplyHostDefaults()
{
    eGLContext::ApplyHostDefaults();
}

void eGLContext::ApplyHostDefaults()
{
    if (!Get().IsReady())
        return;
    eDirectCallMute mute; // the host's own state, not an effect's
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ZERO);
    glDisable(GL_POLYGON_OFFSET_FILL);
    glDisable(GL_POLYGON_OFFSET_LINE);
    glDisable(GL_POLYGON_OFFSET_POINT);
    glPolygonOffset(0.0f, 0.0f);
    glLineWidth(1.0f);
    glPointSize(1.0f);
    glDisable(GL_POINT_SPRITE);
    glDisable(GL_PROGRAM_POINT_SIZE);
    glDisable(GL_CULL_FACE);
    glCullFace(GL_BACK);
    glFrontFace(GL_CCW);
    glUseProgram(0);
}

} // namespace Host
} // namespace KYR
