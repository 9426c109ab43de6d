// Terrain tiles: the mesh of one tile (on the globe's relief or on the plane), and the draw
// operations through which effects lay rasters over it.
#include "GLut.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eGlobeModel.h"
#include "eGlobeRelief.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueueVisitor.h"
#include "eRenderSystem.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <utility>

namespace KYR
{

namespace
{

// Pulls tiles towards the eye: they lie in the very planes of the globe's triangles, and
// must win the depth test against them.
float const kOffsetFactor = -1.0f;
float const kOffsetUnits = -4.0f;

struct eGeo
{
    double lon, lat;
};

// The grid lines of the globe mesh strictly between lo and hi, with lo and hi at the ends.
std::vector<double> Cuts(double lo, double hi, double first)
{
    std::vector<double> cuts{lo};
    double const step = Host::eGlobeRelief::kSpacing;
    for (int k = (int)std::floor((lo - first) / step) + 1;; ++k)
    {
        double g = first + k * step;
        if (g >= hi)
            break;
        if (g > lo)
            cuts.push_back(g);
    }
    cuts.push_back(hi);
    return cuts;
}

// The part of an axis-aligned rectangle (counter-clockwise corners) on one side of the line
// lon + lat = d: below it (f <= 0) or above it (f >= 0). Crossings are worked out from the
// edge's own line, so neighbouring rectangles find the very same point.
std::vector<eGeo> ClipByDiagonal(eGeo const (&rect)[4], double d, bool above)
{
    std::vector<eGeo> out;
    auto side = [d, above](eGeo const& p)
    {
        double f = p.lon + p.lat - d;
        return above ? f >= 0.0 : f <= 0.0;
    };
    for (int k = 0; k < 4; ++k)
    {
        eGeo const& p = rect[k];
        eGeo const& q = rect[(k + 1) % 4];
        bool inP = side(p), inQ = side(q);
        if (inP)
            out.push_back(p);
        if (inP != inQ)
        {
            eGeo x = p.lon == q.lon ? eGeo{p.lon, d - p.lon} : eGeo{d - p.lat, p.lat};
            bool same = !out.empty() && out.back().lon == x.lon && out.back().lat == x.lat;
            if (!same && !(inQ && q.lon == x.lon && q.lat == x.lat))
                out.push_back(x);
        }
    }
    return out;
}

double Area2(eGeo const& a, eGeo const& b, eGeo const& c)
{
    return (b.lon - a.lon) * (c.lat - a.lat) - (b.lat - a.lat) * (c.lon - a.lon);
}

int MaxTextureUnits()
{
    static int s_nUnits = 0;
    if (!s_nUnits)
    {
        GLint n = 0;
        glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS, &n);
        s_nUnits = n > 0 ? n : 16;
    }
    return s_nUnits;
}

void Uniform1f(eProgram* p, char const* name, double v)
{
    p->Uniform1f(p->GetUniformLocation(name), (float)v);
}

void UniformRect(eProgram* p, char const* name, eRect2D const& r)
{
    float f[4];
    r.ToFloat4(f);
    p->Uniform4f(p->GetUniformLocation(name), f[0], f[1], f[2], f[3]);
}

} // namespace

eTileSet::eTileSet()
    : m_eSceneMode(eSM_GLOBE), m_pCoordSys(nullptr), m_pRelief(nullptr), m_pMesh(nullptr)
{
}

eTileSet::eTileSet(eTileKey key, eRect2D const& bounds, eSceneMode mode, eCoordSys* coordSys,
                   Host::eGlobeRelief const* relief)
    : m_rcBounds(bounds), m_Key(key), m_eSceneMode(mode), m_pCoordSys(coordSys), m_pRelief(relief),
      m_pMesh(nullptr)
{
    if (m_pCoordSys)
        m_pCoordSys->LogicalToWorld(m_eSceneMode, m_rcBounds.CenterPoint(), m_vCenter, 0.0);
}

eTileSet::~eTileSet()
{
    delete m_pMesh;
}

eMesh* eTileSet::GetMesh()
{
    if (!m_pMesh && m_pCoordSys && !m_rcBounds.IsEmpty())
        BuildMesh();
    return m_pMesh;
}

// Vertex: position relative to the tile's centre, the surface normal, the logical point.
void eTileSet::BuildMesh()
{
    m_pMesh = new eMesh();
    m_pMesh->SetOperationType(eOT_TRIANGLE_LIST);
    eVertexData* vd = m_pMesh->GetVertexData();
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_ATTRIB1, 0);
    vd->AddElement(eVET_FLOAT, eVEC_2, eAI_TEXCOORD0, 0);
    if (m_eSceneMode == eSM_GLOBE)
        BuildGlobeMesh();
    else
        BuildPlaneMesh();
    vd->Create();
    m_pMesh->GetIndexData()->Create();
}

void eTileSet::BuildPlaneMesh()
{
    int const n = kGridSize;
    std::vector<float> v;
    v.reserve((size_t)n * n * 8);
    for (int r = 0; r < n; ++r)
        for (int c = 0; c < n; ++c)
        {
            ePoint2D p(m_rcBounds.left + m_rcBounds.Width() * c / (n - 1),
                       m_rcBounds.top - m_rcBounds.Height() * r / (n - 1));
            eVector3T<double> w;
            m_pCoordSys->LogicalToWorld(m_eSceneMode, p, w, 0.0);
            eVector3T<double> d = w - m_vCenter;
            float vertex[8] = {(float)d.x, (float)d.y, (float)d.z, 0.0f,
                               0.0f,       1.0f,       (float)p.x, (float)p.y};
            v.insert(v.end(), vertex, vertex + 8);
        }
    m_pMesh->AddVertex(v.data(), n * n);
    eIndexData* id = m_pMesh->GetIndexData();
    for (int r = 0; r + 1 < n; ++r)
        for (int c = 0; c + 1 < n; ++c)
        {
            unsigned short a = (unsigned short)(r * n + c), b = (unsigned short)(a + 1);
            unsigned short d = (unsigned short)(a + n), e = (unsigned short)(d + 1);
            for (unsigned short i : {a, d, b, b, d, e})
                id->AddIndex(i);
        }
}

// The globe mesh's triangles cut to the tile: the tile's rectangle is split along the
// mesh's grid lines into pieces of single cells, and each piece along the cell's diagonal.
// Every piece lies in the plane of one of the globe's triangles, with its points where the
// globe's program puts the same longitude and latitude.
void eTileSet::BuildGlobeMesh()
{
    static Host::eGlobeRelief const s_Bare;
    Host::eGlobeRelief const& relief = m_pRelief ? *m_pRelief : s_Bare;
    std::vector<double> xs = Cuts(m_rcBounds.left, m_rcBounds.right, -180.0);
    std::vector<double> ys = Cuts(m_rcBounds.bottom, m_rcBounds.top, -90.0);
    std::vector<float> v;
    std::map<std::pair<double, double>, unsigned short> index;
    eIndexData* id = m_pMesh->GetIndexData();
    auto vertex = [&](eGeo const& g, int row, int column, bool upper) -> unsigned short
    {
        auto key = std::make_pair(g.lon, g.lat);
        auto it = index.find(key);
        if (it != index.end())
            return it->second;
        eVector3T<double> w = relief.OnTriangle(row, column, upper, g.lon, g.lat);
        eVector3T<double> up;
        m_pCoordSys->LogicalToWorld(eSM_GLOBE, ePoint2D(g.lon, g.lat), up, 0.0);
        up = up * (1.0 / std::sqrt(up.x * up.x + up.y * up.y + up.z * up.z));
        eVector3T<double> d = w - m_vCenter;
        float f[8] = {(float)d.x,  (float)d.y,  (float)d.z,   (float)up.x,
                      (float)up.y, (float)up.z, (float)g.lon, (float)g.lat};
        v.insert(v.end(), f, f + 8);
        unsigned short n = (unsigned short)index.size();
        index[key] = n;
        return n;
    };
    for (size_t a = 0; a + 1 < xs.size(); ++a)
        for (size_t b = 0; b + 1 < ys.size(); ++b)
        {
            double x0 = xs[a], x1 = xs[a + 1], y0 = ys[b], y1 = ys[b + 1];
            if (!(x1 > x0 && y1 > y0))
                continue;
            int row = 0, column = 0;
            Host::eGlobeRelief::Cell((x0 + x1) * 0.5, (y0 + y1) * 0.5, row, column);
            double d = Host::eGlobeRelief::Longitude(column) + Host::eGlobeRelief::Latitude(row) +
                       Host::eGlobeRelief::kSpacing;
            eGeo const rect[4] = {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}};
            for (bool upper : {false, true})
            {
                std::vector<eGeo> poly = ClipByDiagonal(rect, d, upper);
                for (size_t k = 1; k + 1 < poly.size(); ++k)
                {
                    if (Area2(poly[0], poly[k], poly[k + 1]) <= 0.0)
                        continue;
                    // 16-bit indices: a tile of the whole globe needs about 10600 vertices.
                    if (index.size() + 3 > 65535)
                    {
                        std::fprintf(stderr, "host: tile mesh over 65535 vertices; cut short\n");
                        m_pMesh->AddVertex(v.data(), (int)(v.size() / 8));
                        return;
                    }
                    for (eGeo const& g : {poly[0], poly[k], poly[k + 1]})
                        id->AddIndex(vertex(g, row, column, upper));
                }
            }
        }
    m_pMesh->AddVertex(v.data(), (int)(v.size() / 8));
}

void eTileSet::SendDrawUniforms(eProgram* p, eDrawSettings const& draw)
{
    UniformRect(p, "u_rasterRect", draw.rect ? *draw.rect : eRect2D(0.0, 0.0, 0.0, 0.0));
    UniformRect(p, "u_tileRect", draw.tileBounds);
    Uniform1f(p, "u_shadingScale", draw.scale);
    Uniform1f(p, "u_sceneMode", (double)m_eSceneMode);
    if (draw.hasOpacity)
        Uniform1f(p, "u_opacity", draw.opacity);
    if (draw.hasMask)
        Uniform1f(p, "u_hasMask", draw.units.size() > 2 && draw.units[2].texture ? 1.0 : 0.0);
    if (draw.hasTextureList)
        Uniform1f(p, "u_textureCount", (double)draw.extraTextures);
    if (draw.hasMaskColor)
    {
        unsigned int c = draw.maskColor;
        p->Uniform4f(p->GetUniformLocation("u_maskColor"), EREDVAL((int)c) / 255.0f,
                     EGREENVAL((int)c) / 255.0f, EBLUEVAL((int)c) / 255.0f,
                     EALPHAVAL((int)c) / 255.0f);
    }
    if (draw.hasGrid)
    {
        eRasterGrid const* g = draw.grid;
        Uniform1f(p, "u_gridEnabled", g ? 1.0 : 0.0);
        if (g)
        {
            p->Uniform4f(p->GetUniformLocation("u_grid"), (float)g->m_dOriginX,
                         (float)g->m_dOriginY, (float)g->m_dCellX, (float)g->m_dCellY);
            Uniform1f(p, "u_gridNoData", g->m_dNoData);
        }
    }
    if (draw.hasTiling)
    {
        Uniform1f(p, "u_tilingLevel", (double)draw.tilingLevel);
        Uniform1f(p, "u_tileLevel", (double)m_Key.GetLevel());
        if (m_pCoordSys)
            UniformRect(p, "u_indexRect", m_pCoordSys->GetIndexBounds());
        int spans = draw.mixSpans ? (int)draw.mixSpans->size() : 0;
        Uniform1f(p, "u_mixSpanCount", (double)spans);
        for (int i = 0; i < spans; ++i)
        {
            std::string name = "u_mixSpans[" + std::to_string(i) + "]";
            p->Uniform1f(p->GetUniformLocation(name.c_str()), (*draw.mixSpans)[(size_t)i]);
        }
    }
}

unsigned char eTileSet::DrawMesh(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                 ePass* pass, unsigned char applyPass, eDrawSettings const& draw)
{
    bool ready = engine && rs && camera && pass && !pass->GetProgram().IsEmpty();
    eRenderProgram* rp = ready ? engine->GetRenderProgram(pass) : nullptr;
    eMesh* mesh = rp && rp->GetProgram() ? GetMesh() : nullptr;
    if (!mesh)
        return 0;
    eRenderQueueVisitor* visitor = applyPass ? engine->GetVisitor() : nullptr;
    if (visitor)
        visitor->BeginPass(pass);
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    eMatrix4T<float> world(
        eMatrix4T<double>::Translation(m_vCenter - camera->GetReferenceCenter()));
    world = camera->GetRelativeWorldMatrix() * world;
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, world.Ptr());
    p->UniformMatrix4(u->m_nViewMatrix, 1, 0, camera->GetRelativeViewMatrix().Ptr());
    p->UniformMatrix4(u->m_nProjectionMatrix, 1, 0, camera->GetRelativeProjectionMatrix().Ptr());
    p->Uniform1f(u->m_nLightingEnabled, pass->IsLightingEnabled() ? 1.0f : 0.0f);
    p->UniformVector4(u->m_nAmbient, &pass->GetAmbient().x);
    p->UniformVector4(u->m_nDiffuse, &pass->GetDiffuse().x);
    p->UniformVector4(u->m_nSpecular, &pass->GetSpecular().x);
    p->Uniform1f(u->m_nShininess, pass->GetShininess());
    SendDrawUniforms(p, draw);

    int units = (int)draw.units.size();
    if (units > MaxTextureUnits())
    {
        static bool s_bReported = false;
        if (!s_bReported)
            std::fprintf(stderr,
                         "host: a tile draw asks for %d texture units of %d; the textures from "
                         "unit %d on are left out\n",
                         units, MaxTextureUnits(), MaxTextureUnits());
        s_bReported = true;
        units = MaxTextureUnits();
    }
    for (int i = 0; i < units; ++i)
    {
        eUnit const& unit = draw.units[(size_t)i];
        if (unit.texture)
            unit.texture->CreateTexture();
        GLut::ActiveTexture(GL_TEXTURE0 + i);
        glBindTexture(GL_TEXTURE_2D, unit.texture ? unit.texture->GetTextureID() : 0);
        std::string name = unit.sampler;
        if (unit.element >= 0)
            name += "[" + std::to_string(unit.element) + "]";
        p->Uniform1i(p->GetUniformLocation(name.c_str()), i);
        if (i == 0)
        {
            // Rasters come as luminance (made from a texture info) or as alpha (replaced
            // by an update); the program reads the channel that holds the value.
            GLint alpha = 0, luminance = 0;
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_ALPHA_SIZE, &alpha);
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_LUMINANCE_SIZE, &luminance);
            p->Uniform1f(p->GetUniformLocation("u_valueInAlpha"),
                         alpha > 0 && luminance == 0 ? 1.0f : 0.0f);
        }
    }

    GLboolean offsetOn = glIsEnabled(GL_POLYGON_OFFSET_FILL);
    GLfloat factor = 0.0f, offsetUnits = 0.0f;
    glGetFloatv(GL_POLYGON_OFFSET_FACTOR, &factor);
    glGetFloatv(GL_POLYGON_OFFSET_UNITS, &offsetUnits);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset((offsetOn ? factor : 0.0f) + kOffsetFactor,
                    (offsetOn ? offsetUnits : 0.0f) + kOffsetUnits);
    rs->DrawIndexed(mesh->GetOperationType(), mesh->GetVertexData(), mesh->GetIndexData(), false);
    glPolygonOffset(factor, offsetUnits);
    if (!offsetOn)
        glDisable(GL_POLYGON_OFFSET_FILL);

    for (int i = units - 1; i >= 0; --i)
    {
        GLut::ActiveTexture(GL_TEXTURE0 + i);
        glBindTexture(GL_TEXTURE_2D, 0);
    }
    if (visitor)
        visitor->EndPass();
    return 1;
}

unsigned char eTileSet::RenderShading(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                      eViewport*, eTexture* texture, eRect2D* rect, ePass* pass,
                                      unsigned char applyPass, eTexture* colorTable, double scale,
                                      void*)
{
    eDrawSettings draw;
    draw.rect = rect;
    draw.tileBounds = m_rcBounds;
    draw.scale = scale;
    draw.units = {{texture, "u_texture0", -1}, {colorTable, "u_texture1", -1}};
    return DrawMesh(engine, rs, camera, pass, applyPass, draw);
}

unsigned char eTileSet::RenderImage(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                    eViewport*, eTexture* texture, eRect2D* rect, ePass* pass,
                                    unsigned char applyPass, eTexture* colorTable, double value,
                                    void*)
{
    eDrawSettings draw;
    draw.rect = rect;
    draw.tileBounds = m_rcBounds;
    draw.scale = value;
    draw.units = {{texture, "u_texture0", -1}, {colorTable, "u_texture1", -1}};
    return DrawMesh(engine, rs, camera, pass, applyPass, draw);
}

unsigned char eTileSet::RenderSurface(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                      eViewport*, eTexture* texture, eRect2D* rect, ePass* pass,
                                      unsigned char applyPass, eTexture* colorTable, double value,
                                      eRasterGrid* grid, std::vector<eTexture*>* textures,
                                      unsigned int maskColor)
{
    eDrawSettings draw;
    draw.rect = rect;
    draw.tileBounds = m_rcBounds;
    draw.scale = value;
    draw.units = {{texture, "u_texture0", -1}, {colorTable, "u_texture1", -1}};
    AddTextureList(draw, textures);
    draw.hasGrid = true;
    draw.grid = grid;
    draw.hasMaskColor = true;
    draw.maskColor = maskColor;
    return DrawMesh(engine, rs, camera, pass, applyPass, draw);
}

unsigned char eTileSet::RenderGrowth(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                     eViewport*, eTexture* texture, eRect2D* rect, ePass* pass,
                                     unsigned char applyPass, eTexture* colorTable, double value,
                                     void*, eTexture* mask, double opacity)
{
    eDrawSettings draw;
    draw.rect = rect;
    draw.tileBounds = m_rcBounds;
    draw.scale = value;
    draw.units = {
        {texture, "u_texture0", -1}, {colorTable, "u_texture1", -1}, {mask, "u_texture2", -1}};
    draw.hasMask = true;
    draw.hasOpacity = true;
    draw.opacity = opacity;
    return DrawMesh(engine, rs, camera, pass, applyPass, draw);
}

unsigned char eTileSet::RenderTiling(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                     eViewport*, eTexture* texture, eRect2D const& tileBounds,
                                     eRect2D* rect, ePass* pass, unsigned char applyPass,
                                     eTexture* colorTable, double scale, double opacity,
                                     eRasterGrid* grid, std::vector<eTexture*>* textures, int level,
                                     std::vector<float>* mixSpans)
{
    eDrawSettings draw;
    draw.rect = rect;
    draw.tileBounds = tileBounds;
    draw.scale = scale;
    draw.units = {{texture, "u_texture0", -1}, {colorTable, "u_texture1", -1}};
    AddTextureList(draw, textures);
    draw.hasOpacity = true;
    draw.opacity = opacity;
    draw.hasGrid = true;
    draw.grid = grid;
    draw.hasTiling = true;
    draw.tilingLevel = level;
    draw.mixSpans = mixSpans;
    return DrawMesh(engine, rs, camera, pass, applyPass, draw);
}

void eTileSet::AddTextureList(eDrawSettings& draw, std::vector<eTexture*> const* textures)
{
    draw.hasTextureList = true;
    draw.extraTextures = textures ? (int)textures->size() : 0;
    for (int i = 0; i < draw.extraTextures; ++i)
        draw.units.push_back({(*textures)[(size_t)i], "u_textures", i});
}

} // namespace KYR
