// Scene "edge-bundling": some three hundred air routes between cities of the time-zone table,
// from hubs on both sides of the Atlantic, on the plane map. Straight routes would cross in a
// tangle; bundled by force (ForceBundling.h) routes that run the same way share their path,
// and the faint lines of all of them pile up into bright bundles. Along every route a
// highlight crawls from its city of departure to its destination, green strokes with white
// markers at their head; the routes set out at different times, so the picture catches the
// highlights at every stage of their way.
#include "ForceBundling.h"
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eFile.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEdgeBundling.h"
#include "eRenderEngine.h"
#include "eRenderLineBundling.h"
#include "eRenderLineGrowSet.h"
#include "eRenderQueue.h"
#include "eRenderSystem.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <string>

namespace
{

double const kViewLon = -32.0, kViewLat = 13.0; // degrees
double const kViewDistance = 2.9e7;             // metres: about 185 degrees across
// The region the routes stay in, degrees: the Americas, Europe and Africa.
double const kWest = -125.0, kEast = 60.0, kSouth = -46.0, kNorth = 66.0;
int const kRoutesPerHub = 12;
double const kCompatibility = 0.4; // of two routes, for them to pull on each other
double const kShortest = 12.0;     // degrees: shorter routes are left out
double const kUnitsPerDegree = 5;  // the bundling works in about pixels of the view
double const kMarkerSpacing = 1.6; // degrees between the points of a bundled route
// The routes set out in this many groups, one group every fourth frame (a highlight moves on
// by a point every fourth frame); the picture is taken ten steps after the last group left.
int const kStartGroups = 20;
int const kWarmUpFrames = 4 * kStartGroups + 40;
KYR::eVector4T<unsigned char> const kRouteColour(90, 160, 255, 46);
float const kRouteWidth = 1.4f;     // pixels
unsigned char const kMapAlpha = 70; // the map's strength over the dark ground

// Hubs whose routes the scene shows, by the table's city names.
char const* const kHubs[] = {
    "New York",     "Chicago", "Los Angeles",  "Mexico City", "Bogota", "Sao Paulo",
    "Buenos Aires", "London",  "Paris",        "Madrid",      "Berlin", "Istanbul",
    "Cairo",        "Lagos",   "Johannesburg", "Moscow",      "Dubai"};

// The Earth picture as the plane map of plate carree, dimmed, through the host's "TexFlow"
// program: one textured quad over the map's extent.
class PlaneEarth : public KYR::eRenderable
{
public:
    PlaneEarth()
    {
        KYR::ePass* pass = m_Technique.CreatePass();
        pass->SetProgram("TexFlow");
        pass->SetBlendingFunc(KYR::eBF_SRC_ALPHA, KYR::eBF_ONE_MINUS_SRC_ALPHA);
        pass->SetDepthCheckEnabled(0);
        pass->SetDepthWriteEnabled(0);
    }
    ~PlaneEarth() override { Release(); }

    unsigned char Create(KYR::eCamera*, double, KYR::eCanvas* canvas) override
    {
        m_rcMap =
            canvas && canvas->GetCoordSys() ? canvas->GetCoordSys()->GetBounds() : KYR::eRect2D();
        return 1;
    }

    unsigned char Initialize(KYR::eRenderEngine*) override
    {
        if (m_pVertices)
            return 1;
        KYR::eString path = KYR::eSystem::GetWorkPath() + "Resources/Icons/WGS84-Globe.jpg";
        m_pTexture.reset(KYR::eTextureOperator::GetSingleton().CreateTexture(
            path, KYR::eTWM_CLAMP_TO_EDGE, KYR::eTFM_LINEAR));
        if (!m_pTexture || !m_pTexture->CreateTexture())
            return 0; // reported by the host
        m_pVertices.reset(new KYR::eVertexData());
        m_pVertices->AddElement(KYR::eVET_FLOAT, KYR::eVEC_3, KYR::eAI_POSITION, 0);
        m_pVertices->AddElement(KYR::eVET_FLOAT, KYR::eVEC_2, KYR::eAI_TEXCOORD0, 0);
        m_pVertices->AddElement(KYR::eVET_UNSIGNED_BYTE, KYR::eVEC_4, KYR::eAI_COLOR, 1);
        // Row 0 of the picture, the north, is texture row 0.
        struct Corner
        {
            double x, y;
            float u, v;
        } const corners[6] = {
            {m_rcMap.left, m_rcMap.bottom, 0, 1}, {m_rcMap.right, m_rcMap.bottom, 1, 1},
            {m_rcMap.right, m_rcMap.top, 1, 0},   {m_rcMap.left, m_rcMap.bottom, 0, 1},
            {m_rcMap.right, m_rcMap.top, 1, 0},   {m_rcMap.left, m_rcMap.top, 0, 0}};
        for (Corner const& c : corners)
        {
            unsigned char vertex[24];
            float const f[5] = {(float)c.x, (float)c.y, 0.0f, c.u, c.v};
            unsigned char const rgba[4] = {255, 255, 255, kMapAlpha};
            std::memcpy(vertex, f, sizeof f);
            std::memcpy(vertex + sizeof f, rgba, sizeof rgba);
            m_pVertices->AddVertex(vertex, 1);
        }
        m_pVertices->Create();
        return 1;
    }

    unsigned char UnInitialize(KYR::eRenderEngine*) override
    {
        Release();
        return 1;
    }

    unsigned char UpdateRenderQueue(KYR::eRenderEngine*, KYR::eCamera*, KYR::eViewport*,
                                    KYR::eRenderQueue* queue) override
    {
        queue->GetQueueGroup(2)->AddSolidRenderable(&m_Technique, this);
        return 1;
    }

    unsigned char Render(KYR::eRenderEngine* engine, KYR::eRenderSystem* rs, KYR::eCamera* camera,
                         KYR::eViewport*) override
    {
        if (!Initialize(engine))
            return 0;
        KYR::eRenderProgram* rp = engine->GetRenderProgram("TexFlow");
        if (!rp || !rp->GetProgram())
            return 0;
        KYR::eProgram* p = rp->GetProgram();
        KYR::eShaderUniform* u = rp->GetUniform();
        KYR::eMatrix4T<float> world(KYR::eMatrix4T<double>::Translation(
            KYR::eVector3T<double>() - camera->GetReferenceCenter()));
        KYR::eMatrix4T<float> identity;
        p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, world.Ptr());
        p->UniformMatrix4(u->m_nCustom[0], 1, 0, identity.Ptr()); // the texture stays put
        p->Uniform1i(u->m_nTexture0, 0);
        glBindTexture(GL_TEXTURE_2D, m_pTexture->GetTextureID());
        rs->DrawVertices(KYR::eOT_TRIANGLE_LIST, m_pVertices.get(), 0, 6, false);
        glBindTexture(GL_TEXTURE_2D, 0);
        return 1;
    }

private:
    void Release()
    {
        m_pVertices.reset();
        m_pTexture.reset();
    }

    KYR::eTechnique m_Technique;
    KYR::eRect2D m_rcMap;
    std::unique_ptr<KYR::eTexture> m_pTexture;
    std::unique_ptr<KYR::eVertexData> m_pVertices;
};

bool InRegion(Gallery::City const& c)
{
    return c.lon >= kWest && c.lon <= kEast && c.lat >= kSouth && c.lat <= kNorth;
}

// Routes from each hub to other hubs and to cities drawn at random, each pair once.
std::vector<std::pair<Gallery::City, Gallery::City>> Routes(std::vector<Gallery::City> const& all)
{
    std::vector<Gallery::City> cities, hubs;
    for (Gallery::City const& c : all)
        if (InRegion(c) && c.zone.compare(0, 11, "Antarctica/") != 0 &&
            c.zone.compare(0, 8, "Pacific/") != 0)
            cities.push_back(c);
    for (char const* name : kHubs)
        for (Gallery::City const& c : cities)
            if (c.name == name)
            {
                hubs.push_back(c);
                break;
            }
    std::vector<std::pair<Gallery::City, Gallery::City>> routes;
    std::map<std::pair<std::string, std::string>, bool> seen;
    auto add = [&](Gallery::City const& a, Gallery::City const& b)
    {
        if (std::hypot(a.lon - b.lon, a.lat - b.lat) < kShortest)
            return;
        auto key =
            a.zone < b.zone ? std::make_pair(a.zone, b.zone) : std::make_pair(b.zone, a.zone);
        if (seen[key])
            return;
        seen[key] = true;
        routes.push_back({a, b});
    };
    for (size_t i = 0; i < hubs.size(); ++i)
        for (size_t j = i + 1; j < hubs.size(); ++j)
            add(hubs[i], hubs[j]);
    std::mt19937 rng(28);
    if (!cities.empty())
    {
        std::uniform_int_distribution<size_t> pick(0, cities.size() - 1);
        for (Gallery::City const& hub : hubs)
            for (int k = 0; k < kRoutesPerHub; ++k)
                add(hub, cities[pick(rng)]);
    }
    return routes;
}

bool BuildEdgeBundling(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    std::vector<std::pair<Gallery::City, Gallery::City>> routes = Routes(Gallery::Cities());
    if (routes.empty())
        return false; // the table is missing: reported
    scene.SetClearColor(0.01f, 0.015f, 0.035f, 1.0f);
    KYR::ePoint2D look;
    scene.CoordSys().GeoToMap(KYR::ePoint2D(kViewLon, kViewLat), look);
    scene.Camera().LookAtMap(look.x, look.y, kViewDistance, 0.0, 0.0);
    scene.Add(keep.Keep(new PlaneEarth()));

    std::vector<Gallery::Vec2> from, to;
    for (auto const& r : routes)
    {
        from.push_back(Gallery::Vec2(r.first.lon, r.first.lat) * kUnitsPerDegree);
        to.push_back(Gallery::Vec2(r.second.lon, r.second.lat) * kUnitsPerDegree);
    }
    // Routes between hubs far apart rarely run quite parallel: a lower threshold than the
    // usual 0.6 lets them gather into trunks.
    Gallery::BundlingOptions options;
    options.threshold = kCompatibility;
    std::vector<std::vector<Gallery::Vec2>> bundled = Gallery::BundleRoutes(from, to, options);

    // Map points of each bundled route, evenly spaced.
    std::vector<std::vector<KYR::ePoint2D>> paths;
    int total = 0;
    for (std::vector<Gallery::Vec2> const& chain : bundled)
    {
        std::vector<KYR::ePoint2D> path;
        for (Gallery::Vec2 const& p : Gallery::Resample(chain, kMarkerSpacing * kUnitsPerDegree))
        {
            KYR::ePoint2D map;
            scene.CoordSys().GeoToMap(KYR::ePoint2D(p.x / kUnitsPerDegree, p.y / kUnitsPerDegree),
                                      map);
            path.push_back(map);
        }
        total += (int)path.size();
        paths.push_back(path);
    }

    // All routes as faint lines, which add up where they bundle.
    auto* lines = keep.Keep(new KYR::eRenderLineGrowSet());
    KYR::eVector3T<double> origin(0.0, 0.0, 0.0);
    lines->SetSpatialRefType(0); // map coordinates
    lines->SetPosition(origin);
    lines->SetPoolSize(total);
    lines->Create(&scene.Camera(), 0.0, &scene.Canvas());
    for (std::vector<KYR::ePoint2D> const& path : paths)
    {
        KYR::eGrowLine line;
        line.m_fWidth = kRouteWidth;
        line.m_cColor = kRouteColour;
        for (KYR::ePoint2D const& p : path)
            line.m_arPositions.push_back(KYR::eVector4T<double>(p.x, p.y, 0.0, 0.0));
        lines->Add(&line);
    }
    scene.Add(lines);

    // The highlights set out in groups, one every fourth frame.
    for (int f = 0; f < kWarmUpFrames; ++f)
    {
        if (f % 4 == 0 && f / 4 < kStartGroups)
            for (size_t r = (size_t)(f / 4); r < paths.size(); r += kStartGroups)
            {
                auto* edge = keep.Keep(new KYR::eRenderEdgeBundling());
                edge->SetPoints(paths[r]);
                // The strokes go first, so that the markers show on them; the strokes read the
                // path's anchor, which the edge's Create fixes (converting map points again
                // later changes nothing on the plane).
                edge->Create(&scene.Camera(), 0.0, &scene.Canvas());
                scene.Add(keep.Keep(new KYR::eRenderLineBundling(edge)));
                scene.Add(edge);
            }
        scene.RenderFrame();
    }
    return true;
}

Gallery::Register s_edgeBundling({"edge-bundling",
                                  "air routes on the plane map bundled by force, with highlights "
                                  "crawling along them",
                                  KYR::eSM_PLANE,
                                  KYR::PJ_PLATE_CARREE,
                                  {"Resources/Icons/WGS84-Globe.jpg"},
                                  BuildEdgeBundling});

} // namespace
