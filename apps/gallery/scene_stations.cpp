// Scenes "stations" and "stations-near": three hundred city stations of the time-zone table as
// world objects that avoid each other. A station whose box meets the box of one shown before
// it is hidden, leaving only a grey dot; the boxes grow with the camera's distance, so the far
// view keeps few stations and the near one many. One shown station (Paris where it is shown,
// else a neighbour or the one nearest the middle of the view) is picked through its pixel and
// drawn highlighted, with a call-out naming it.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eRenderCompose.h"
#include "eRenderFillPart.h"
#include "eRenderLabelPart.h"
#include "eRenderLeadLinePart.h"
#include "eRenderWorldObjectAvoid.h"
#include "eText.h"
#include <algorithm>
#include <cmath>
#include <vector>

namespace
{

int const kStations = 300;
// Cities to pick, in order of preference; the first one shown at the scene's distance is
// picked through its pixel, else the shown station nearest the middle of the view.
char const* const kPicks[] = {"Europe/Paris", "Europe/Brussels", "Europe/Berlin"};

typedef KYR::eVector4T<unsigned char> Rgba;

// A disc symbol at every station, `radius` symbol units: position (x, y, object number),
// anchor high and low floats, (value, level).
KYR::eMesh* Discs(std::vector<Gallery::City> const& cities, float radius)
{
    int const corners = 12;
    auto* mesh = new KYR::eMesh();
    mesh->SetOperationType(KYR::eOT_TRIANGLE_LIST);
    KYR::eVertexData* vd = mesh->GetVertexData();
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_3, KYR::eAI_POSITION, 0);
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_3, KYR::eAI_TEXCOORD1, 0);
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_3, KYR::eAI_TEXCOORD2, 0);
    vd->AddElement(KYR::eVET_FLOAT, KYR::eVEC_2, KYR::eAI_ATTRIB1, 0);
    for (size_t k = 0; k < cities.size(); ++k)
    {
        KYR::eVector3T<float> high, low;
        KYR::eRenderObject::DoubleToTwoFloat(Gallery::GeoToWorld(cities[k].lon, cities[k].lat, 0.0),
                                             high, low);
        unsigned short base = (unsigned short)vd->GetVertexSize();
        for (int i = 0; i < corners; ++i)
        {
            double a = 2.0 * KYR::eMathEngine::PI * i / corners;
            float v[11] = {radius * (float)std::cos(a),
                           radius * (float)std::sin(a),
                           (float)k,
                           high.x,
                           high.y,
                           high.z,
                           low.x,
                           low.y,
                           low.z,
                           0.0f,
                           0.0f};
            vd->AddVertex(v, 1);
        }
        for (unsigned short i = 1; i + 1 < corners; ++i)
            for (unsigned short j : {(unsigned short)0, i, (unsigned short)(i + 1)})
                mesh->GetIndexData()->AddIndex((unsigned short)(base + j));
    }
    return mesh;
}

KYR::eRenderWorldObject* Symbols(Gallery::SceneKeep& keep, std::vector<Gallery::City> const& cities,
                                 float radius, Rgba color)
{
    auto* object = keep.Keep(new KYR::eRenderWorldObject());
    object->AddMesh(Discs(cities, radius));
    object->SetUniformColor(color);
    // The flag streams are made while the mesh still holds its vertices: adding the object
    // to the scene uploads them and lets the processor copy go.
    object->CreateAppendMeshs();
    // Drawn after the avoidance (queue group 6) has brought the flags up to date this frame.
    object->m_nRenderQueueId = 7;
    return object;
}

// A call-out naming the picked station: lead line, badge and label, facing the screen.
KYR::eRenderCompose* PickedCallOut(KYR::Host::eScene& scene, Gallery::City const& city)
{
    auto* label = new KYR::eRenderLabelPart();
    label->SetText((city.name + " \xE2\x80\x94 picked").c_str());
    label->SetTextHeight(16);
    label->SetTextColor(Rgba(20, 40, 90, 255));
    KYR::eSize2D text;
    label->GetTextSize(text);
    // Up and to the left: over the sea for the cities picked here.
    double const w = text.cx + 12.0, h = text.cy + 6.0, x0 = -26.0 - w, y0 = 30.0;
    label->SetAnchor(KYR::ePoint2D(x0 + 6.0, y0 + 3.0));

    auto* lead = new KYR::eRenderLeadLinePart();
    lead->SetPolyline(KYR::ePoint2D(-6.0, 6.0), KYR::ePoint2D(x0 + w - 4.0, y0));
    lead->SetLineColor(Rgba(255, 240, 120, 255));
    lead->SetLineWidth(2.0f);
    lead->SetLineSmooth(1);

    KYR::ePoint2D const badge[4] = {KYR::ePoint2D(x0, y0), KYR::ePoint2D(x0 + w, y0),
                                    KYR::ePoint2D(x0 + w, y0 + h), KYR::ePoint2D(x0, y0 + h)};
    int const four = 4;
    auto* fill = new KYR::eRenderFillPart();
    fill->SetPolygon(badge, &four, 1);
    fill->SetFillColor(Rgba(255, 240, 120, 235));

    auto* compose = new KYR::eRenderCompose();
    compose->AddChild(lead);
    compose->AddChild(fill);
    compose->AddChild(label);
    KYR::ePoint2D map;
    scene.CoordSys().GeoToMap(KYR::ePoint2D(city.lon, city.lat), map);
    compose->SetPosition(KYR::ePoint3D(map.x, map.y, 0.0));
    return compose;
}

bool BuildStations(KYR::Host::eScene& scene, Gallery::SceneKeep& keep, double lon, double lat,
                   double distance)
{
    Gallery::AddEarth(scene, keep, lon - 30.0, lat + 20.0);
    scene.Camera().LookAt(lon, lat, distance, 0.0, 0.0);
    if (KYR::eTextContext::FindFontFile("", 0).IsEmpty())
        return false; // reported by the host
    std::vector<Gallery::City> cities = Gallery::Cities();
    if (cities.size() < (size_t)kStations)
        return false; // reported by Cities
    cities.resize((size_t)kStations);

    // Every station as a grey dot, hidden or not; then the stations that avoid each other:
    // a dark rim under a bright disc.
    auto* dots = keep.Keep(new KYR::eRenderWorldObject());
    dots->AddMesh(Discs(cities, 2.0f));
    dots->SetUniformColor(Rgba(205, 205, 205, 255));
    scene.Add(dots);
    auto* rims = Symbols(keep, cities, 5.0f, Rgba(40, 20, 10, 255));
    auto* discs = Symbols(keep, cities, 3.8f, Rgba(255, 110, 40, 255));

    auto* avoid = keep.Keep(new KYR::eRenderWorldObjectAvoid());
    std::vector<KYR::eVector3T<double>> points;
    for (Gallery::City const& c : cities)
        points.push_back(KYR::eVector3T<double>(c.lon, c.lat, 0.0));
    avoid->SetRefGeoPoints(points);
    avoid->AddRenderWorldObject(rims);
    avoid->AddRenderWorldObject(discs);
    avoid->SetCanAvoid(true);
    avoid->SetCanSelect(true);
    scene.Add(avoid);
    scene.Add(rims);
    scene.Add(discs);

    // A pick needs a drawn frame; the selection reaches the symbols at the next one.
    scene.RenderFrame();
    std::vector<Gallery::City const*> order;
    for (char const* zone : kPicks)
        for (Gallery::City const& c : cities)
            if (c.zone == zone)
                order.push_back(&c);
    std::vector<Gallery::City const*> rest;
    for (Gallery::City const& c : cities)
        rest.push_back(&c);
    KYR::eVector3T<double> middle = Gallery::GeoToWorld(lon, lat, 0.0);
    std::sort(rest.begin(), rest.end(),
              [&](Gallery::City const* a, Gallery::City const* b)
              {
                  return (Gallery::GeoToWorld(a->lon, a->lat, 0.0) - middle).Length() <
                         (Gallery::GeoToWorld(b->lon, b->lat, 0.0) - middle).Length();
              });
    order.insert(order.end(), rest.begin(), rest.end());
    for (Gallery::City const* c : order)
    {
        KYR::eVector3T<double> win =
            scene.Camera().Project(Gallery::GeoToWorld(c->lon, c->lat, 0.0));
        KYR::ePoint pixel((int)std::floor(win.x), scene.Height() - 1 - (int)std::floor(win.y));
        int picked = avoid->SelectStation(pixel);
        if (picked >= 0 && &cities[(size_t)picked] == c)
        {
            scene.Add(keep.Keep(PickedCallOut(scene, *c)));
            break;
        }
    }
    return true;
}

Gallery::Register s_far({"stations",
                         "three hundred city stations thinned out by their boxes at a far "
                         "distance, one picked",
                         KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
                         [](KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
                         { return BuildStations(scene, keep, 15.0, 30.0, 1.8e7); }});
Gallery::Register s_near({"stations-near",
                          "the same stations nearer: boxes shrink with the distance and more "
                          "stations stay, one picked",
                          KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
                          [](KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
                          { return BuildStations(scene, keep, 12.0, 47.0, 5.0e6); }});

} // namespace
