// Scene "radar": a radar sweep surface standing on the globe, coloured through a
// colour table, with a visible azimuth window narrower than the full circle.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eFile.h"
#include "eMesh.h"
#include "eRenderRadarScan.h"
#include <cmath>

namespace
{

double const kRadarLon = 116.4, kRadarLat = 39.9;

// Synthetic echoes: a few storm cells and a weak ring of clutter, 0..1.
float Echo(double rangeKm, double bearingDeg)
{
    struct Cell
    {
        double range, bearing, size, strength;
    };
    static Cell const cells[] = {{240, 40, 70, 1.0},
                                 {360, 95, 100, 0.8},
                                 {140, 150, 50, 0.9},
                                 {300, 250, 120, 0.7},
                                 {180, 310, 60, 0.95}};
    double x = rangeKm * std::sin(bearingDeg * Gallery::kDegToRad);
    double y = rangeKm * std::cos(bearingDeg * Gallery::kDegToRad);
    double v = 0.06 + 0.05 * std::sin(rangeKm * 0.075) * std::cos(bearingDeg * 0.2);
    for (Cell const& c : cells)
    {
        double cx = c.range * std::sin(c.bearing * Gallery::kDegToRad);
        double cy = c.range * std::cos(c.bearing * Gallery::kDegToRad);
        double d2 = ((x - cx) * (x - cx) + (y - cy) * (y - cy)) / (c.size * c.size);
        v += c.strength * std::exp(-d2 * 2.0);
    }
    return (float)std::min(1.0, std::max(0.0, v));
}

// Polar grid around the radar: a_position (lon, lat, height), a_texcoord0 (echo, 0).
KYR::eMesh* BuildSweepMesh(double maxRangeKm, int rings, int spokes)
{
    auto* mesh = new KYR::eMesh();
    mesh->SetOperationType(KYR::eOT_TRIANGLE_LIST);
    mesh->SetVertexType(5);
    KYR::eVertexData* vd = mesh->GetVertexData();
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_3, KYR::eAI_POSITION, 0);
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_2, KYR::eAI_TEXCOORD0, 0);
    for (int r = 0; r <= rings; ++r)
        for (int s = 0; s <= spokes; ++s)
        {
            double range = maxRangeKm * r / rings, bearing = 360.0 * s / spokes;
            double lon, lat;
            Gallery::Destination(kRadarLon, kRadarLat, bearing, range * 1000.0, lon, lat);
            float v[5] = {(float)lon, (float)lat, 3000.0f, Echo(range, bearing), 0.0f};
            vd->AddVertex(v, 1);
        }
    KYR::eIndexData* id = mesh->GetIndexData();
    for (int r = 0; r < rings; ++r)
        for (int s = 0; s < spokes; ++s)
        {
            unsigned short a = (unsigned short)(r * (spokes + 1) + s);
            unsigned short b = (unsigned short)(a + spokes + 1);
            for (unsigned short i : {a, b, (unsigned short)(a + 1), (unsigned short)(a + 1), b,
                                     (unsigned short)(b + 1)})
                id->AddIndex(i);
        }
    return mesh;
}

bool BuildRadar(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.Camera().LookAt(kRadarLon, kRadarLat, 3200000.0, 10.0, 20.0);
    // Dusk over the site: the map stays readable under the fill light and the echoes stand out.
    Gallery::AddEarth(scene, keep, kRadarLon - 95.0, kRadarLat - 10.0);

    auto* radar = keep.Keep(new KYR::eRenderRadarScan());
    radar->AddMesh(BuildSweepMesh(460.0, 60, 180));
    radar->SetColorTable(KYR::eSystem::GetWorkPath() + "Resources/Icons/colortable1.png",
                         KYR::eTFM_LINEAR);
    radar->setPosition(KYR::eVector3T<float>((float)kRadarLon, (float)kRadarLat, 0.0f));
    radar->SetStartVisibleAz(30.0f);
    radar->SetEndVisibleAz(280.0f);
    radar->SetTextureTrans(85);
    scene.Add(radar);
    return true;
}

Gallery::Register s_radar({"radar", "radar sweep with colour table and azimuth window",
                           KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE,
                           Gallery::WithEarth({"Resources/Icons/colortable1.png"}), BuildRadar});

} // namespace
