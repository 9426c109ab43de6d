// Scenes "density", "density-no-geometry" and "density-canvas": a hundred thousand soft,
// faint markers scattered along the busy air corridors between cities of the time-zone
// table, piling up into bright bands where the corridors run together. The first expands
// each marker in a geometry shader, the second writes six vertices a marker, the third
// draws them (with the geometry shader) into a canvas target of its own, alpha adding up
// there, and lays the target over the scene.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eRenderListDensitySet.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <epoxy/gl.h>
#include <random>
#include <vector>

namespace
{

int const kMarkers = 100000;
float const kSpan = 10000.0f; // time stamps spread over this many seconds
float const kTail = 20000.0f; // every marker shows, the oldest at half strength
// The set's pass pushes its markers back in depth; at sea level they would fight with the
// globe's surface and lose in patches, so they fly a little above it.
double const kHeight = 20000.0;

// Draws the set into a frame buffer of its own, cleared transparent, with the canvas
// blending that lets alpha add up, and lays the result over the scene (its colours are
// weighted by their alpha already).
class CanvasDensitySet : public KYR::eRenderListDensitySet
{
public:
    ~CanvasDensitySet() override
    {
        if (m_nFrameBuffer)
            glDeleteFramebuffers(1, &m_nFrameBuffer);
        if (m_nTexture)
            glDeleteTextures(1, &m_nTexture);
        if (m_nCompose)
            glDeleteProgram(m_nCompose);
        if (m_nVertexArray)
            glDeleteVertexArrays(1, &m_nVertexArray);
    }

    unsigned char RenderVertexBuffer(KYR::eRenderEngine* engine, KYR::eRenderSystem* rs,
                                     KYR::eCamera* camera) override
    {
        GLint viewport[4], savedBuffer = 0, program = 0;
        glGetIntegerv(GL_VIEWPORT, viewport);
        glGetIntegerv(GL_FRAMEBUFFER_BINDING, &savedBuffer);
        if (!Target(viewport[2], viewport[3]))
            return KYR::eRenderListDensitySet::RenderVertexBuffer(engine, rs, camera);
        glBindFramebuffer(GL_FRAMEBUFFER, m_nFrameBuffer);
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        GLboolean depth = glIsEnabled(GL_DEPTH_TEST);
        glDisable(GL_DEPTH_TEST); // the target has no depth of its own
        unsigned char drawn = KYR::eRenderListDensitySet::RenderVertexBuffer(engine, rs, camera);
        glBindFramebuffer(GL_FRAMEBUFFER, (GLuint)savedBuffer);

        glGetIntegerv(GL_CURRENT_PROGRAM, &program);
        Compose();
        glUseProgram((GLuint)program);
        if (depth)
            glEnable(GL_DEPTH_TEST);
        return drawn;
    }

private:
    // Lays the target over the bound frame buffer: one triangle covering the view, its
    // corners made from the vertex number, the target's colours added over what is there.
    void Compose()
    {
        if (!m_nCompose)
            m_nCompose = ComposeProgram();
        if (!m_nCompose)
            return;
        if (!m_nVertexArray)
            glGenVertexArrays(1, &m_nVertexArray);
        GLint vertexArray = 0;
        glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &vertexArray);
        glUseProgram(m_nCompose);
        glBindVertexArray(m_nVertexArray);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, m_nTexture);
        glUniform1i(glGetUniformLocation(m_nCompose, "u_canvas"), 0);
        glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
        glDrawArrays(GL_TRIANGLES, 0, 3);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glBindTexture(GL_TEXTURE_2D, 0);
        glBindVertexArray((GLuint)vertexArray);
    }

    static GLuint ComposeProgram()
    {
        char const* vertex =
            "#version 330\n"
            "out vec2 v_uv;\n"
            "void main() {\n"
            "  vec2 p = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0);\n"
            "  v_uv = 0.5 * p + 0.5;\n"
            "  gl_Position = vec4(p, 0.0, 1.0);\n"
            "}\n";
        char const* fragment = "#version 330\n"
                               "uniform sampler2D u_canvas;\n"
                               "in vec2 v_uv;\n"
                               "out vec4 o_color;\n"
                               "void main() { o_color = texture(u_canvas, v_uv); }\n";
        GLuint program = glCreateProgram();
        char const* sources[2] = {vertex, fragment};
        GLenum const kinds[2] = {GL_VERTEX_SHADER, GL_FRAGMENT_SHADER};
        for (int i = 0; i < 2; ++i)
        {
            GLuint shader = glCreateShader(kinds[i]);
            glShaderSource(shader, 1, &sources[i], nullptr);
            glCompileShader(shader);
            glAttachShader(program, shader);
            glDeleteShader(shader);
        }
        glLinkProgram(program);
        GLint linked = 0;
        glGetProgramiv(program, GL_LINK_STATUS, &linked);
        if (!linked)
        {
            std::fprintf(stderr, "gallery: the canvas composition program did not link\n");
            glDeleteProgram(program);
            return 0;
        }
        return program;
    }

    // The target at the viewport's size; false if it cannot be made.
    bool Target(int width, int height)
    {
        if (m_nFrameBuffer && width == m_nWidth && height == m_nHeight)
            return true;
        if (!m_nTexture)
            glGenTextures(1, &m_nTexture);
        glBindTexture(GL_TEXTURE_2D, m_nTexture);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     nullptr);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glBindTexture(GL_TEXTURE_2D, 0);
        GLint saved = 0;
        glGetIntegerv(GL_FRAMEBUFFER_BINDING, &saved);
        if (!m_nFrameBuffer)
            glGenFramebuffers(1, &m_nFrameBuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, m_nFrameBuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_nTexture, 0);
        bool ok = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
        glBindFramebuffer(GL_FRAMEBUFFER, (GLuint)saved);
        if (!ok)
            std::fprintf(stderr, "gallery: the canvas target could not be made\n");
        m_nWidth = width;
        m_nHeight = height;
        return ok;
    }

    GLuint m_nFrameBuffer = 0, m_nTexture = 0, m_nCompose = 0, m_nVertexArray = 0;
    int m_nWidth = 0, m_nHeight = 0;
};

// Markers along great circles between pairs of cities, scattered sideways, denser towards
// the middle of each corridor's width.
void AddCorridors(KYR::eRenderListDensitySet& set)
{
    std::vector<Gallery::City> all = Gallery::Cities(), cities;
    for (Gallery::City const& c : all)
        if (c.lon > -100.0 && c.lon < 45.0 && c.lat > 20.0 && c.lat < 62.0)
            cities.push_back(c);
    if (cities.size() < 2)
        return;
    std::mt19937 rng(5);
    std::uniform_int_distribution<size_t> pick(0, cities.size() - 1);
    std::uniform_real_distribution<double> along(0.0, 1.0), time(0.0, (double)kSpan);
    std::normal_distribution<double> side(0.0, 45000.0);
    int const corridors = 28;
    std::vector<std::pair<size_t, size_t>> routes;
    for (int r = 0; r < corridors; ++r)
        routes.push_back({pick(rng), pick(rng)});
    for (int i = 0; i < kMarkers; ++i)
    {
        Gallery::City const& a = cities[routes[(size_t)i % routes.size()].first];
        Gallery::City const& b = cities[routes[(size_t)i % routes.size()].second];
        // Along the great circle from a to b by bearing and distance.
        double p1 = a.lat * Gallery::kDegToRad, p2 = b.lat * Gallery::kDegToRad;
        double dl = (b.lon - a.lon) * Gallery::kDegToRad;
        double bearing =
            std::atan2(std::sin(dl) * std::cos(p2),
                       std::cos(p1) * std::sin(p2) - std::sin(p1) * std::cos(p2) * std::cos(dl)) *
            Gallery::kRadToDeg;
        double d = std::acos(std::min(1.0, std::sin(p1) * std::sin(p2) +
                                               std::cos(p1) * std::cos(p2) * std::cos(dl))) *
                   Gallery::kEarthRadius;
        double lon, lat, sideLon, sideLat;
        Gallery::Destination(a.lon, a.lat, bearing, d * along(rng), lon, lat);
        Gallery::Destination(lon, lat, bearing + 90.0, side(rng), sideLon, sideLat);
        KYR::eDensityPoint p;
        p.m_nSpatialRefType = 1;
        p.m_Position = KYR::eVector4T<double>(sideLon, sideLat, kHeight, time(rng));
        p.m_fSize = 18.0f;
        p.m_Color = KYR::eVector4T<unsigned char>(255, 170, 50, 30);
        set.AddDensityPoint(&p);
    }
}

bool BuildDensity(KYR::Host::eScene& scene, Gallery::SceneKeep& keep, unsigned char geometry,
                  bool canvas)
{
    scene.Camera().LookAt(-30.0, 45.0, 1.0e7, 0.0, 0.0);
    Gallery::AddEarth(scene, keep, -30.0, 45.0);
    KYR::eRenderListDensitySet* set =
        canvas ? keep.Keep(new CanvasDensitySet()) : keep.Keep(new KYR::eRenderListDensitySet());
    set->SetGeometryShader(geometry);
    set->SetCanvasRender(canvas ? 1 : 0);
    set->SetPoolSize(kMarkers);
    set->SetTraceTime(kTail);
    set->SetCurTime(kSpan);
    set->SetSpeedPerFrame(0.0f);
    KYR::eVector3T<double> anchor(-30.0, 45.0, 0.0);
    set->SetSpatialRefType(1);
    set->SetPosition(anchor);
    // Markers wait in the pool; the scene's initialisation uploads them, slot by slot.
    AddCorridors(*set);
    scene.Add(set);
    return true;
}

Gallery::Register s_density({"density",
                             "soft markers piling up along air corridors (geometry shader)",
                             KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
                             [](KYR::Host::eScene& s, Gallery::SceneKeep& k)
                             { return BuildDensity(s, k, 1, false); }});
Gallery::Register s_densityNoGeometry(
    {"density-no-geometry", "soft markers piling up along air corridors (six vertices each)",
     KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
     [](KYR::Host::eScene& s, Gallery::SceneKeep& k) { return BuildDensity(s, k, 0, false); }});
Gallery::Register s_densityCanvas(
    {"density-canvas", "soft markers drawn into a canvas target and laid over the globe",
     KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
     [](KYR::Host::eScene& s, Gallery::SceneKeep& k) { return BuildDensity(s, k, 1, true); }});

} // namespace
