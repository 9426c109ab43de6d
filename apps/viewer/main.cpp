// kyr-viewer: the gallery's scenes live in a window. The reference host draws each frame off
// screen exactly as for the gallery, and the window shows what it read back, so what moves
// here is what the gallery's pictures and animations show.
//
// Left drag turns the view about the point looked at (heading and tilt), right drag (or
// shift + left drag) moves that point, the wheel zooms. A left click picks through the
// effects (the scatter scene prints the point it hit). N / P or the arrow keys go to the
// next or previous scene, R puts the view back, Q or Escape quits. The title shows the time
// a frame takes.
#include "Gallery.h"
#include "eFile.h"
#include "eGLContext.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>
#include <epoxy/gl.h>

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wunused-function"
#endif
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb_image_write.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{

double const kEarthRadius = 6378137.0;
double const kDegToRad = 0.017453292519943295;

struct Options
{
    std::string scene;
    int width = 1024;
    int height = 768;
    int frames = 0; // 0: until the window closes
    std::string snapshot;
    std::vector<std::pair<int, int>> clicks;
    std::string workPath;
    bool list = false;
};

void Usage()
{
    std::printf("usage: kyr-viewer [--list] [--scene NAME] [--size WxH] [--work-path DIR]\n"
                "                  [--frames N [--snapshot FILE.png] [--click X,Y]...]\n"
                "  --frames N     draw N frames, then exit\n"
                "  --snapshot F   then save what the window shows to F\n"
                "  --click X,Y    after the first frame, click at window pixel (X, Y); repeatable\n"
                "Left drag: turn; right or shift + left drag: move; wheel: zoom; click: pick;\n"
                "N / P, arrows: next or previous scene; R: reset the view; Q, Escape: quit.\n");
}

bool ParseArgs(int argc, char** argv, Options& o)
{
    for (int i = 1; i < argc; ++i)
    {
        std::string a = argv[i];
        bool hasValue = i + 1 < argc;
        char extra = 0;
        if (a == "--list")
            o.list = true;
        else if (a == "--help" || a == "-h")
        {
            Usage();
            std::exit(0);
        }
        else if (a == "--scene" && hasValue)
            o.scene = argv[++i];
        else if (a == "--work-path" && hasValue)
            o.workPath = argv[++i];
        else if (a == "--snapshot" && hasValue)
            o.snapshot = argv[++i];
        else if (a == "--size" && hasValue)
        {
            if (std::sscanf(argv[++i], "%dx%d%c", &o.width, &o.height, &extra) != 2 ||
                o.width < 16 || o.height < 16 || o.width > 8192 || o.height > 8192)
            {
                std::fprintf(stderr, "kyr-viewer: bad size \"%s\" (expected WxH)\n", argv[i]);
                return false;
            }
        }
        else if (a == "--frames" && hasValue)
        {
            if (std::sscanf(argv[++i], "%d%c", &o.frames, &extra) != 1 || o.frames < 1)
            {
                std::fprintf(stderr, "kyr-viewer: bad frame count \"%s\"\n", argv[i]);
                return false;
            }
        }
        else if (a == "--click" && hasValue)
        {
            int x = 0, y = 0;
            if (std::sscanf(argv[++i], "%d,%d%c", &x, &y, &extra) != 2)
            {
                std::fprintf(stderr, "kyr-viewer: bad click \"%s\" (expected X,Y)\n", argv[i]);
                return false;
            }
            o.clicks.push_back({x, y});
        }
        else
        {
            std::fprintf(stderr, "kyr-viewer: unknown or incomplete option \"%s\"\n", a.c_str());
            Usage();
            return false;
        }
    }
    if (!o.snapshot.empty() && !o.frames)
    {
        std::fprintf(stderr, "kyr-viewer: --snapshot needs --frames\n");
        return false;
    }
    return true;
}

std::string s_strGlfwError;

void OnGlfwError(int, char const* description)
{
    s_strGlfwError = description ? description : "unknown error";
}

class Viewer
{
public:
    Viewer(GLFWwindow* window, Options const& o) : m_pWindow(window), m_Options(o) {}

    bool Load(int index)
    {
        auto const& scenes = Gallery::Registry();
        int n = (int)scenes.size();
        m_nScene = ((index % n) + n) % n;
        Gallery::SceneDef const& def = scenes[m_nScene];
        Unload();
        m_pScene.reset(
            new KYR::Host::eScene(m_Options.width, m_Options.height, def.mode, def.projectionType));
        m_pKeep.reset(new Gallery::SceneKeep());
        if (!m_pScene->IsReady())
        {
            std::fprintf(stderr, "kyr-viewer: no OpenGL context for the scene\n");
            return false;
        }
        if (!def.build(*m_pScene, *m_pKeep))
        {
            std::fprintf(stderr, "kyr-viewer: scene \"%s\" could not be built\n", def.name.c_str());
            return false;
        }
        m_LookAt = m_pScene->Camera().GetLookAtState();
        glfwGetCursorPos(m_pWindow, &m_dLastX, &m_dLastY);
        std::printf("kyr-viewer: %s - %s\n", def.name.c_str(), def.description.c_str());
        m_dFrameMs = 0.0;
        m_nTimedFrames = 0;
        return true;
    }

    // Draws the scene off screen and shows it in the window; true while the window is open.
    void Frame()
    {
        auto t0 = std::chrono::steady_clock::now();
        m_pScene->RenderFrame();
        std::vector<unsigned char> pixels = m_pScene->ReadPixels();
        m_dFrameMs +=
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0)
                .count();
        ++m_nTimedFrames;

        glfwMakeContextCurrent(m_pWindow);
        int fbw = 0, fbh = 0;
        glfwGetFramebufferSize(m_pWindow, &fbw, &fbh);
        glViewport(0, 0, fbw, fbh);
        glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        // Row 0 of the read-back is the top: draw downwards from the top-left corner.
        glWindowPos2i(0, fbh);
        glPixelZoom((float)fbw / m_Options.width, -(float)fbh / m_Options.height);
        glDrawPixels(m_Options.width, m_Options.height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        m_nWindowW = fbw;
        m_nWindowH = fbh;
    }

    // Saves what the window's back buffer holds, as the next swap would show it.
    bool Snapshot(std::string const& path)
    {
        std::vector<unsigned char> rgba((size_t)m_nWindowW * m_nWindowH * 4);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadBuffer(GL_BACK);
        glReadPixels(0, 0, m_nWindowW, m_nWindowH, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
        stbi_flip_vertically_on_write(1);
        return stbi_write_png(path.c_str(), m_nWindowW, m_nWindowH, 4, rgba.data(),
                              m_nWindowW * 4) != 0;
    }

    // Frame time over the last half second, in the title.
    void UpdateTitle()
    {
        double now = glfwGetTime();
        if (now - m_dTitleTime < 0.5 && m_nTimedFrames < 100)
            return;
        auto const& def = Gallery::Registry()[m_nScene];
        char title[256];
        double ms = m_nTimedFrames ? m_dFrameMs / m_nTimedFrames : 0.0;
        std::snprintf(title, sizeof title, "kyr-viewer - %s (%d/%zu) - %.1f ms a frame",
                      def.name.c_str(), m_nScene + 1, Gallery::Registry().size(), ms);
        glfwSetWindowTitle(m_pWindow, title);
        m_dTitleTime = now;
        m_dFrameMs = 0.0;
        m_nTimedFrames = 0;
    }

    // A click at window pixel (x, y): picks through every effect of the scene.
    void Click(double x, double y)
    {
        int winW = 0, winH = 0;
        glfwGetWindowSize(m_pWindow, &winW, &winH);
        int px = (int)(x * m_Options.width / std::max(1, winW));
        int py = (int)(y * m_Options.height / std::max(1, winH));
        std::printf("kyr-viewer: pick at (%d, %d)\n", px, py);
        m_pScene->Pick(px, py, false);
    }

    void Key(int key, int mods)
    {
        if (key == GLFW_KEY_N || key == GLFW_KEY_RIGHT || key == GLFW_KEY_SPACE)
            Load(m_nScene + 1);
        else if (key == GLFW_KEY_P || key == GLFW_KEY_LEFT)
            Load(m_nScene - 1);
        else if (key == GLFW_KEY_R)
            Load(m_nScene);
        else if (key == GLFW_KEY_Q || key == GLFW_KEY_ESCAPE)
            glfwSetWindowShouldClose(m_pWindow, GLFW_TRUE);
        (void)mods;
    }

    // Where the events put the cursor: a slow frame leaves events queued, and the pointer's
    // position now would not be where a queued press happened.
    void Button(int button, int action, int mods)
    {
        double x = m_dLastX, y = m_dLastY;
        if (action == GLFW_PRESS)
        {
            m_nDrag = button == GLFW_MOUSE_BUTTON_LEFT && !(mods & GLFW_MOD_SHIFT) ? eDRAG_TURN
                                                                                   : eDRAG_MOVE;
            m_dPressX = x;
            m_dPressY = y;
            return;
        }
        bool wasClick =
            button == GLFW_MOUSE_BUTTON_LEFT && std::hypot(x - m_dPressX, y - m_dPressY) < 4.0;
        m_nDrag = eDRAG_NONE;
        if (wasClick)
            Click(x, y);
    }

    void Cursor(double x, double y)
    {
        double dx = x - m_dLastX, dy = y - m_dLastY;
        m_dLastX = x;
        m_dLastY = y;
        if (m_nDrag == eDRAG_TURN)
        {
            m_LookAt.m_dHeading += dx * 0.3 * kDegToRad;
            m_LookAt.m_dPitch =
                std::min(89.0 * kDegToRad, std::max(0.0, m_LookAt.m_dPitch + dy * 0.3 * kDegToRad));
        }
        else if (m_nDrag == eDRAG_MOVE)
            Move(dx, dy);
        else
            return;
        ApplyLookAt();
    }

    void Wheel(double dy)
    {
        m_LookAt.m_dRange = std::min(5.0e7, std::max(50.0, m_LookAt.m_dRange * std::pow(0.85, dy)));
        ApplyLookAt();
    }

    void Unload()
    {
        if (!m_pScene)
            return;
        // The effects free their OpenGL objects in the host's context, not the window's.
        KYR::Host::eGLContext::Get().Ensure(m_Options.width, m_Options.height);
        m_pKeep.reset();
        m_pScene.reset();
    }

private:
    enum eDrag
    {
        eDRAG_NONE,
        eDRAG_TURN,
        eDRAG_MOVE
    };

    // Moves the point looked at with the ground under the cursor: a drag of (dx, dy) pixels
    // is turned by the heading into metres east and north at the point.
    void Move(double dx, double dy)
    {
        KYR::eCamera& camera = m_pScene->Camera();
        double metresPerPixel = 2.0 * m_LookAt.m_dRange *
                                std::tan(camera.GetFieldOfView() * 0.5 * kDegToRad) /
                                m_Options.height;
        double right = -dx * metresPerPixel, up = dy * metresPerPixel;
        double h = m_LookAt.m_dHeading;
        double east = right * std::cos(h) + up * std::sin(h);
        double north = -right * std::sin(h) + up * std::cos(h);
        if (camera.GetSceneMode() == KYR::eSM_GLOBE)
        {
            double lat = m_LookAt.m_dLatitude;
            m_LookAt.m_dLatitude =
                std::min(89.0, std::max(-89.0, lat + north / kEarthRadius / kDegToRad));
            double lon =
                m_LookAt.m_dLongitude +
                east / (kEarthRadius * std::max(0.05, std::cos(lat * kDegToRad))) / kDegToRad;
            m_LookAt.m_dLongitude = std::remainder(lon, 360.0);
        }
        else
        {
            m_LookAt.m_dLongitude += east;
            m_LookAt.m_dLatitude += north;
        }
    }

    void ApplyLookAt()
    {
        KYR::eCamera& camera = m_pScene->Camera();
        KYR::eLookAtState const& s = m_LookAt;
        double heading = s.m_dHeading / kDegToRad, pitch = s.m_dPitch / kDegToRad;
        if (camera.GetSceneMode() == KYR::eSM_GLOBE)
            camera.LookAt(s.m_dLongitude, s.m_dLatitude, s.m_dRange, heading, pitch, s.m_dHeight);
        else
            camera.LookAtMap(s.m_dLongitude, s.m_dLatitude, s.m_dRange, heading, pitch,
                             s.m_dHeight);
    }

    GLFWwindow* m_pWindow;
    Options const& m_Options;
    int m_nScene = 0;
    std::unique_ptr<KYR::Host::eScene> m_pScene;
    std::unique_ptr<Gallery::SceneKeep> m_pKeep;
    KYR::eLookAtState m_LookAt;
    int m_nDrag = eDRAG_NONE;
    double m_dPressX = 0.0, m_dPressY = 0.0, m_dLastX = 0.0, m_dLastY = 0.0;
    int m_nWindowW = 0, m_nWindowH = 0;
    double m_dFrameMs = 0.0;
    int m_nTimedFrames = 0;
    double m_dTitleTime = -1.0;
};

Viewer* Get(GLFWwindow* window)
{
    return static_cast<Viewer*>(glfwGetWindowUserPointer(window));
}

int Find(std::string const& name)
{
    auto const& scenes = Gallery::Registry();
    for (size_t i = 0; i < scenes.size(); ++i)
        if (scenes[i].name == name)
            return (int)i;
    return -1;
}

} // namespace

int main(int argc, char** argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // picks show as they happen, also in a pipe
    Options o;
    if (!ParseArgs(argc, argv, o))
        return 2;
    if (o.list)
    {
        for (auto const& s : Gallery::Registry())
            std::printf("%-20s %s\n", s.name.c_str(), s.description.c_str());
        return 0;
    }
    int first = o.scene.empty() ? 0 : Find(o.scene);
    if (first < 0 || Gallery::Registry().empty())
    {
        std::fprintf(stderr, "kyr-viewer: unknown scene \"%s\" (see --list)\n", o.scene.c_str());
        return 2;
    }
    if (!o.workPath.empty())
        KYR::eSystem::SetWorkPath(o.workPath.c_str());

    glfwSetErrorCallback(OnGlfwError);
    if (!glfwInit())
    {
        std::fprintf(stderr,
                     "kyr-viewer: no display to open a window on (%s); run it in a desktop "
                     "session, or under xvfb-run\n",
                     s_strGlfwError.c_str());
        return 1;
    }
    // The window's context comes from EGL like the host's own, so that the two can be made
    // current in turn on this thread.
    glfwWindowHint(GLFW_CONTEXT_CREATION_API, GLFW_EGL_CONTEXT_API);
    glfwWindowHint(GLFW_RESIZABLE, GLFW_FALSE);
    GLFWwindow* window = glfwCreateWindow(o.width, o.height, "kyr-viewer", nullptr, nullptr);
    if (!window)
    {
        std::fprintf(stderr, "kyr-viewer: cannot open a window: %s\n", s_strGlfwError.c_str());
        glfwTerminate();
        return 1;
    }
    glfwMakeContextCurrent(window);
    glfwSwapInterval(1);

    int rc = 0;
    {
        Viewer viewer(window, o);
        glfwSetWindowUserPointer(window, &viewer);
        glfwSetKeyCallback(window,
                           [](GLFWwindow* w, int key, int, int action, int mods)
                           {
                               if (action == GLFW_PRESS)
                                   Get(w)->Key(key, mods);
                           });
        glfwSetMouseButtonCallback(window, [](GLFWwindow* w, int button, int action, int mods)
                                   { Get(w)->Button(button, action, mods); });
        glfwSetCursorPosCallback(window,
                                 [](GLFWwindow* w, double x, double y) { Get(w)->Cursor(x, y); });
        glfwSetScrollCallback(window, [](GLFWwindow* w, double, double dy) { Get(w)->Wheel(dy); });

        if (!viewer.Load(first))
            rc = 1;
        for (int frame = 0; rc == 0 && !glfwWindowShouldClose(window); ++frame)
        {
            viewer.Frame();
            if (o.frames && frame + 1 == o.frames)
            {
                if (!o.snapshot.empty() && !viewer.Snapshot(o.snapshot))
                {
                    std::fprintf(stderr, "kyr-viewer: cannot write \"%s\"\n", o.snapshot.c_str());
                    rc = 1;
                }
                break;
            }
            glfwSwapBuffers(window);
            viewer.UpdateTitle();
            glfwPollEvents();
            if (frame == 0)
                for (auto const& c : o.clicks)
                    viewer.Click(c.first, c.second);
        }
        viewer.Unload();
    }
    glfwDestroyWindow(window);
    glfwTerminate();
    return rc;
}
