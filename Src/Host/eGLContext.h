// Off-screen OpenGL context of the reference host: one EGL display and one
// compatibility-profile context per process, drawing into a colour + depth/stencil
// frame buffer object of a chosen size. Host internals; effects never see this header.
#pragma once
#include <string>
#include <vector>

namespace KYR
{
namespace Host
{

class eGLContext
{
public:
    static eGLContext& Get();

    // Creates the context on the first call and makes it current; later calls resize
    // the frame buffer when the size differs, and rebind it. False when no context
    // could be made (see GetError()).
    bool Ensure(int width, int height);

    bool IsReady() const { return m_bReady; }
    unsigned int GetFrameBuffer() const { return m_nFrameBuffer; }
    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }

    // Binds the frame buffer and sets the viewport to its size.
    void Bind();

    // RGBA bytes of the frame buffer, width * height * 4; row 0 is the top of the picture.
    std::vector<unsigned char> ReadPixels() const;
    bool SavePNG(std::string const& path) const;

    // Why creation failed; empty when it did not.
    std::string const& GetError() const { return m_strError; }

    // Sets the host's default render state (see the free function of the same name).
    static void ApplyHostDefaults();

    // Projection kind of the frame being drawn (0 globe, 1 plate carree, 2 Mercator, 3
    // Lambert conformal, 4 Albers), set by the scene; BeginPass hands it to every program
    // that declares u_sceneProjKind, for programs whose effects send no projection kind.
    void SetSceneProjKind(int kind) { m_nSceneProjKind = kind; }
    int GetSceneProjKind() const { return m_nSceneProjKind; }

    eGLContext(eGLContext const&) = delete;
    eGLContext& operator=(eGLContext const&) = delete;

private:
    eGLContext() = default;
    bool CreateContext();
    bool CreateFrameBuffer(int width, int height);
    void Fail(std::string const& why);

    bool m_bReady = false;
    bool m_bTried = false;
    void* m_pDisplay = nullptr; // EGLDisplay
    void* m_pContext = nullptr; // EGLContext
    void* m_pSurface = nullptr; // EGLSurface (pbuffer fallback only)
    unsigned int m_nFrameBuffer = 0;
    unsigned int m_nColorBuffer = 0;
    unsigned int m_nDepthBuffer = 0;
    int m_nWidth = 0;
    int m_nHeight = 0;
    int m_nSceneProjKind = 0;
    std::string m_strError;
};

// The state that eRenderQueueVisitor::EndPass returns to: depth test on with LEQUAL and
// writes on, blending off with (ONE, ZERO), no polygon offset, line width and point size 1,
// no point sprites or program point size, no culling (and back faces culled once it is
// enabled, counter-clockwise in front), no program.
void ApplyHostDefaults();

// While one of these lives, the direct OpenGL calls that the host itself makes
// (glBindTexture, glDrawArrays, glDrawElements, glActiveTexture, glBlendFunc) are not recorded, so
// that a host operation that records its own entry is not recorded twice. Nests.
class eDirectCallMute
{
public:
    eDirectCallMute();
    ~eDirectCallMute();
    eDirectCallMute(eDirectCallMute const&) = delete;
    eDirectCallMute& operator=(eDirectCallMute const&) = delete;
};

// The original OpenGL entry points behind the recording wrappers, for host code that
// must never be recorded. Valid once Ensure() has succeeded.
struct eRealGL
{
    static void BindTexture(unsigned int target, unsigned int texture);
    static void DrawArrays(unsigned int mode, int first, int count);
    static void DrawElements(unsigned int mode, int count, unsigned int type, void const* indices);
    static void ActiveTexture(unsigned int unit);
};

} // namespace Host
} // namespace KYR
