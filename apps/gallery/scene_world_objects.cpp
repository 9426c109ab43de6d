// Scene "world-objects": station symbols at East Asian cities over the globe. Orange
// triangles in one uniform colour, squares coloured from a colour table by a value, and a
// small grey dot under every station. Some stations are hidden through the append flags,
// leaving only their dot; one triangle is marked as selected.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eFile.h"
#include "eMesh.h"
#include "eRenderWorldObject.h"
#include <vector>

namespace
{

struct Station
{
    double lon, lat;
    float value; // 0..1 into the colour table (opaque from 0.25)
    bool hidden; // switched off through UpdateAppendMesh
    bool selected;
};

// Triangle stations, then square stations.
std::vector<Station> const kTriangles = {
    {116.4, 39.9, 0.0f, false, true},  {121.5, 31.2, 0.0f, false, false},
    {113.3, 23.1, 0.0f, true, false},  {104.1, 30.7, 0.0f, false, false},
    {114.3, 30.6, 0.0f, true, false},  {108.9, 34.3, 0.0f, false, false},
    {126.6, 45.8, 0.0f, false, false}, {126.98, 37.57, 0.0f, false, false},
    {139.7, 35.7, 0.0f, true, false},  {121.6, 25.0, 0.0f, false, false}};
std::vector<Station> const kSquares = {
    {87.6, 43.8, 0.30f, false, false},  {91.1, 29.65, 0.40f, false, false},
    {102.7, 25.0, 0.45f, false, false}, {106.9, 47.9, 0.35f, true, false},
    {105.8, 21.0, 0.80f, false, false}, {120.98, 14.6, 0.95f, false, false},
    {123.4, 41.8, 0.50f, false, false}, {120.4, 36.1, 0.55f, true, false},
    {135.5, 34.7, 0.65f, false, false}, {114.2, 22.3, 0.75f, false, false}};

typedef std::vector<std::pair<float, float>> Outline;

// A symbol mesh: position (x, y, object number), anchor high and low floats, (value, level).
KYR::eMesh* SymbolMesh(std::vector<Station> const& stations, Outline const& shape)
{
    auto* mesh = new KYR::eMesh();
    mesh->SetOperationType(KYR::eOT_TRIANGLE_LIST);
    KYR::eVertexData* vd = mesh->GetVertexData();
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_3, KYR::eAI_POSITION, 0);
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_3, KYR::eAI_TEXCOORD1, 0);
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_3, KYR::eAI_TEXCOORD2, 0);
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_2, KYR::eAI_ATTRIB1, 0);
    for (size_t k = 0; k < stations.size(); ++k)
    {
        KYR::eVector3T<float> high, low;
        KYR::eRenderObject::DoubleToTwoFloat(
            Gallery::GeoToWorld(stations[k].lon, stations[k].lat, 0.0), high, low);
        unsigned short base = (unsigned short)vd->GetVertexSize();
        for (auto const& p : shape)
        {
            float v[11] = {p.first, p.second, (float)k,          high.x, high.y, high.z, low.x,
                           low.y,   low.z,    stations[k].value, 0.0f};
            vd->AddVertex(v, 1);
        }
        // A fan over the outline.
        for (unsigned short i = 1; i + 1 < (unsigned short)shape.size(); ++i)
            for (unsigned short j : {(unsigned short)0, i, (unsigned short)(i + 1)})
                mesh->GetIndexData()->AddIndex((unsigned short)(base + j));
    }
    return mesh;
}

// Bounds in object order: hidden stations switched off, one marked.
std::vector<KYR::AvoidBound> Bounds(std::vector<Station> const& stations)
{
    std::vector<KYR::AvoidBound> bounds(stations.size());
    for (size_t k = 0; k < stations.size(); ++k)
    {
        bounds[k].m_bVisible = stations[k].hidden ? 0 : 1;
        bounds[k].m_bSelected = stations[k].selected ? 1 : 0;
    }
    return bounds;
}

KYR::eRenderWorldObject* Symbols(Gallery::SceneKeep& keep, std::vector<Station> const& stations,
                                 Outline const& shape)
{
    auto* object = keep.Keep(new KYR::eRenderWorldObject());
    object->AddMesh(SymbolMesh(stations, shape));
    // Flags go in while the mesh still holds its vertices, before the scene uploads it.
    object->UpdateAppendMesh(Bounds(stations));
    return object;
}

bool BuildWorldObjects(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.Camera().LookAt(114.0, 30.0, 7500000.0, 0.0, 25.0);
    Gallery::AddEarth(scene, keep, 114.0, 30.0);

    Outline dot = {{-2.5f, -2.5f}, {2.5f, -2.5f}, {2.5f, 2.5f}, {-2.5f, 2.5f}};
    Outline triangle = {{0.0f, 9.0f}, {-8.0f, -5.0f}, {8.0f, -5.0f}};
    Outline square = {{-6.0f, -6.0f}, {6.0f, -6.0f}, {6.0f, 6.0f}, {-6.0f, 6.0f}};

    // Grey dots under every station, drawn first so that symbols cover them.
    std::vector<Station> all = kTriangles;
    all.insert(all.end(), kSquares.begin(), kSquares.end());
    auto* dots = keep.Keep(new KYR::eRenderWorldObject());
    dots->AddMesh(SymbolMesh(all, dot));
    dots->SetUniformColor(KYR::eVector4T<unsigned char>(190, 190, 190, 255));
    scene.Add(dots);

    auto* triangles = Symbols(keep, kTriangles, triangle);
    triangles->SetUniformColor(KYR::eVector4T<unsigned char>(255, 120, 20, 255));
    scene.Add(triangles);

    auto* squares = Symbols(keep, kSquares, square);
    squares->SetColorType(KYR::eCT_COLOR_TABLE);
    squares->SetColorTable(KYR::eSystem::GetWorkPath().Cstr() +
                           std::string("Resources/Icons/colortable1.png"));
    scene.Add(squares);
    return true;
}

Gallery::Register
    s_worldObjects({"world-objects", "station symbols over the globe, some hidden by their flags",
                    KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE,
                    Gallery::WithEarth({"Resources/Icons/colortable1.png"}), BuildWorldObjects});

} // namespace
