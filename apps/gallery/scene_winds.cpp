// Scenes "winds" and "streamlines": a synthetic global wind field (trade winds,
// westerlies, polar easterlies and a few cyclones) shown as particles with trails over
// the globe, and as stream lines traced through the same field with a travelling streak.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "GalleryWinds.h"
#include "eHardwareBuffer.h"
#include "eHostTestMesh.h"
#include "eMesh.h"
#include "eRenderDynamicWinds.h"
#include <cmath>

namespace
{

using Gallery::Wind;

// 361 x 181 vectors, north row first, as weather grids usually come.
void FillField(KYR::WindField& field, std::vector<KYR::ePoint2D>& winds)
{
    field.nx = 361;
    field.ny = 181;
    field.dx = 1.0;
    field.dy = -1.0;
    field.left = -180.0;
    field.right = 180.0;
    field.top = 90.0;
    field.bottom = -90.0;
    winds.clear();
    for (int j = 0; j < field.ny; ++j)
        for (int i = 0; i < field.nx; ++i)
        {
            double u, v;
            Wind(-180.0 + i, 90.0 - j, u, v);
            winds.push_back(KYR::ePoint2D(u, v));
        }
}

std::vector<KYR::eVector4T<unsigned char>> Palette()
{
    // Calm blue through green and yellow to red, one colour per speed level.
    static unsigned char const stops[][3] = {{60, 110, 255}, {40, 200, 255}, {60, 230, 120},
                                             {240, 240, 60}, {255, 140, 30}, {255, 40, 60}};
    std::vector<KYR::eVector4T<unsigned char>> palette;
    for (int i = 0; i < 23; ++i)
    {
        double t = i / 22.0 * 5.0;
        int k = std::min(4, (int)t);
        double f = t - k;
        unsigned char c[3];
        for (int n = 0; n < 3; ++n)
            c[n] = (unsigned char)std::lround(stops[k][n] * (1.0 - f) + stops[k + 1][n] * f);
        palette.push_back(KYR::eVector4T<unsigned char>(c[0], c[1], c[2], 230));
    }
    return palette;
}

KYR::Host::eHostTestMesh* AddEarth(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.SetClearColor(0.01f, 0.01f, 0.03f, 1.0f);
    auto* earth = keep.Keep(new KYR::Host::eHostTestMesh(6378137.0, 360, 180));
    earth->SetColor(KYR::eVector4T<float>(0.10f, 0.16f, 0.24f, 1.0f));
    scene.Add(earth);
    return earth;
}

bool BuildWinds(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.Camera().LookAt(150.0, 22.0, 2.3e7, 0.0, 0.0);
    AddEarth(scene, keep);
    auto* winds = keep.Keep(new KYR::eRenderDynamicWinds(nullptr));
    winds->m_dynamic = true;
    std::vector<KYR::ePoint2D> field;
    FillField(winds->m_windField, field);
    winds->SetWindDynamic(field);
    auto palette = Palette();
    winds->SetColorPalette(palette);
    scene.Add(winds);
    // The trails need a run-up: the gallery then draws the 100th frame.
    for (int i = 0; i < 99; ++i)
        scene.RenderFrame();
    return true;
}

// One stream line traced from a seed: two strip vertices per point, 80 bytes each
// (position, neighbour and across/along groups at 0, 32 and 64).
bool TraceLine(double lon, double lat, KYR::eVertexData*& vd, KYR::eIndexData*& id, double& speed)
{
    std::vector<KYR::ePoint2D> pts(1, KYR::ePoint2D(lon, lat));
    double sum = 0.0;
    for (int k = 0; k < 70; ++k)
    {
        double u, v;
        Wind(lon, lat, u, v);
        double s = std::sqrt(u * u + v * v);
        if (s < 0.5)
            break;
        sum += s;
        lon += u / s * 0.5 / std::cos(lat * Gallery::kDegToRad);
        lat += v / s * 0.5;
        pts.push_back(KYR::ePoint2D(lon, lat));
    }
    if (pts.size() < 8)
        return false;
    speed = sum / (pts.size() - 1);
    vd = new KYR::eVertexData();
    vd->SetVertexType(4096);
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_4, KYR::eAI_POSITION, 0);
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_4, KYR::eAI_ATTRIB10, 0);
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_4, KYR::eAI_ATTRIB1, 0);
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_4, KYR::eAI_ATTRIB11, 0);
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_4, KYR::eAI_COLOR, 0);
    id = new KYR::eIndexData();
    double along = 0.0;
    size_t n = pts.size();
    for (size_t k = 0; k < n; ++k)
    {
        bool ahead = k + 1 < n;
        KYR::ePoint2D const& q = ahead ? pts[k + 1] : pts[k - 1];
        if (k > 0)
            along += std::hypot((pts[k].x - pts[k - 1].x) * std::cos(pts[k].y * Gallery::kDegToRad),
                                pts[k].y - pts[k - 1].y) /
                     6.0;
        for (int side = 0; side < 2; ++side)
        {
            float vtx[20] = {(float)pts[k].x,
                             (float)pts[k].y,
                             20000.0f,
                             (float)along,
                             0,
                             0,
                             0,
                             0,
                             (float)q.x,
                             (float)q.y,
                             side ? 1.0f : -1.0f,
                             ahead ? 1.0f : -1.0f,
                             0,
                             0,
                             0,
                             0,
                             (float)side,
                             (float)k / (float)(n - 1),
                             0,
                             0};
            vd->AddVertex(vtx, 1);
            id->AddIndex((unsigned short)(k * 2 + side));
        }
    }
    vd->Create();
    id->Create();
    return true;
}

bool BuildStreamLines(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.Camera().LookAt(140.0, 28.0, 9.0e6, 0.0, 0.0);
    AddEarth(scene, keep);
    std::vector<KYR::eVertexData*> vertices;
    std::vector<KYR::eIndexData*> indices;
    std::vector<double> speeds, values;
    for (double lat = 2.0; lat <= 52.0; lat += 5.0)
        for (double lon = 105.0; lon <= 175.0; lon += 7.0)
        {
            KYR::eVertexData* vd = nullptr;
            KYR::eIndexData* id = nullptr;
            double speed = 0.0;
            if (!TraceLine(lon, lat, vd, id, speed))
                continue;
            vertices.push_back(vd);
            indices.push_back(id);
            speeds.push_back(speed);
            values.push_back(1.0);
        }
    auto* lines = keep.Keep(new KYR::eRenderDynamicWinds(nullptr));
    lines->SetWindStreamLine(vertices, indices, speeds, values);
    lines->SetWindStreamLineWidth(45000.0f);
    lines->SetWindStreamLineDynamic(true, 0.02f);
    auto palette = Palette();
    lines->SetColorPalette(palette);
    scene.Add(lines);
    return !vertices.empty();
}

Gallery::Register s_winds({"winds",
                           "wind particles with trails over the globe",
                           KYR::eSM_GLOBE,
                           KYR::PJ_PLATE_CARREE,
                           {"Resources/Icons/wind.png"},
                           BuildWinds});
Gallery::Register s_streamlines({"streamlines",
                                 "stream lines with a travelling streak",
                                 KYR::eSM_GLOBE,
                                 KYR::PJ_PLATE_CARREE,
                                 {"Resources/Icons/wind.png"},
                                 BuildStreamLines});

} // namespace
