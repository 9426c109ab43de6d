// Small helpers shared by the host's buffer and texture code.
#pragma once
#include <epoxy/egl.h>

namespace KYR
{
namespace Host
{

// Whether an OpenGL context is current on this thread. GL objects are only deleted when
// one is; without a context they are gone with it anyway.
inline bool HasCurrentGLContext()
{
    return eglGetCurrentContext() != EGL_NO_CONTEXT;
}

} // namespace Host
} // namespace KYR
