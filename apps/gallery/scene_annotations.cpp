// Scene "annotations": call-outs at European and North African cities of the time-zone table,
// each built of a lead line from the city's dot to a badge that holds a small city picture and
// the name. The white call-outs face the screen; the amber ones lie flat on the globe and
// tilt with it. All keep their size in pixels whatever the camera's distance.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eFile.h"
#include "eMathEngine.h"
#include "eRenderCompose.h"
#include "eRenderFillPart.h"
#include "eRenderLabelPart.h"
#include "eRenderLeadLinePart.h"
#include "eRenderPicturePart.h"
#include "eText.h"
#include "eTexture.h"
#include <cmath>
#include <map>

namespace
{

double const kViewLon = 12.0, kViewLat = 42.0, kViewDistance = 6.6e6, kViewPitch = 25.0;
int const kCityIcon = 7; // the picture parts' texture id; the engine files it as (7 << 8) | 1

typedef KYR::eVector4T<unsigned char> Rgba;

struct Style
{
    KYR::eBillBoardMode mode;
    Rgba badge, outline, text, lead;
};

Style const kFacing = {KYR::eBBM_SCREEN, Rgba(255, 255, 255, 235), Rgba(20, 40, 90, 255),
                       Rgba(20, 40, 90, 255), Rgba(255, 255, 255, 230)};
Style const kLying = {KYR::eBBM_WORLD, Rgba(255, 196, 92, 235), Rgba(110, 55, 0, 255),
                      Rgba(70, 30, 0, 255), Rgba(255, 210, 120, 230)};

// A city of the table and where its call-out stands: towards the right (1) or left (-1),
// above (1) or below (-1) the city.
struct Place
{
    char const* zone;
    char const* name; // as the city writes it, when the table's ASCII differs
    int sx, sy;
    Style const* style;
};

Place const kPlaces[] = {
    {"Europe/Lisbon", "Lisboa", -1, 1, &kFacing},
    {"Europe/Madrid", nullptr, 1, -1, &kFacing},
    {"Europe/London", nullptr, -1, 1, &kFacing},
    {"Europe/Paris", nullptr, -1, -1, &kFacing},
    {"Europe/Zurich", "Z\xC3\xBCrich", 1, -1, &kFacing},
    {"Europe/Berlin", nullptr, 1, 1, &kFacing},
    {"Europe/Rome", "Roma", 1, -1, &kFacing},
    {"Europe/Warsaw", "Warszawa", 1, 1, &kFacing},
    {"Europe/Budapest", nullptr, 1, -1, &kFacing},
    {"Europe/Chisinau", "Chi\xC8\x99in\xC4\x83u", 1, 1, &kFacing},
    {"Europe/Athens", "Ath\xC3\xADna", 1, -1, &kFacing},
    {"Africa/Algiers", nullptr, -1, -1, &kLying},
    {"Africa/Tunis", nullptr, 1, -1, &kLying},
    {"Africa/Tripoli", nullptr, 1, -1, &kLying},
    {"Africa/Casablanca", nullptr, 1, -1, &kLying},
};

// A rounded rectangle with a pointed tail on its edge nearest the city, reaching to `tip`;
// the tail makes the outline concave. Counter-clockwise, x right, y up.
std::vector<KYR::ePoint2D> Badge(double x0, double y0, double x1, double y1, KYR::ePoint2D tip,
                                 bool tailBelow)
{
    double const r = 5.0, pi = KYR::eMathEngine::PI;
    double const t0 = tip.x < (x0 + x1) * 0.5 ? x0 + 7.0 : x1 - 17.0, t1 = t0 + 10.0;
    std::vector<KYR::ePoint2D> ring;
    auto arc = [&](double cx, double cy, double from)
    {
        for (int i = 0; i <= 4; ++i)
        {
            double a = (from + 90.0 * i / 4.0) * pi / 180.0;
            ring.push_back(KYR::ePoint2D(cx + r * std::cos(a), cy + r * std::sin(a)));
        }
    };
    arc(x0 + r, y0 + r, 180.0); // bottom-left, then along the bottom edge
    if (tailBelow)
        ring.insert(ring.end(), {KYR::ePoint2D(t0, y0), tip, KYR::ePoint2D(t1, y0)});
    arc(x1 - r, y0 + r, 270.0);
    arc(x1 - r, y1 - r, 0.0); // top-right, then back along the top edge
    if (!tailBelow)
        ring.insert(ring.end(), {KYR::ePoint2D(t1, y1), tip, KYR::ePoint2D(t0, y1)});
    arc(x0 + r, y1 - r, 90.0);
    return ring;
}

std::vector<KYR::ePoint2D> Circle(double radius, int corners)
{
    std::vector<KYR::ePoint2D> ring;
    for (int i = 0; i < corners; ++i)
    {
        double a = 2.0 * KYR::eMathEngine::PI * i / corners;
        ring.push_back(KYR::ePoint2D(radius * std::cos(a), radius * std::sin(a)));
    }
    return ring;
}

KYR::eRenderFillPart* Fill(std::vector<KYR::ePoint2D> const& ring, Rgba color)
{
    auto* fill = new KYR::eRenderFillPart();
    int count = (int)ring.size();
    fill->SetPolygon(ring.data(), &count, 1);
    fill->SetFillColor(color);
    return fill;
}

KYR::eRenderLinePart* Outline(std::vector<KYR::ePoint2D> ring, Rgba color, float width)
{
    ring.push_back(ring.front()); // a ring of a line part is open: close it by hand
    auto* line = new KYR::eRenderLinePart();
    int count = (int)ring.size();
    line->SetPolyline(ring.data(), &count, 1);
    line->SetLineColor(color);
    line->SetLineWidth(width);
    line->SetLineSmooth(1);
    return line;
}

// One call-out: lead line, the city's dot, the badge with its outline, the picture, the name.
KYR::eRenderCompose* CallOut(KYR::Host::eScene& scene, Gallery::City const& city,
                             std::string const& name, Place const& place)
{
    Style const& style = *place.style;
    auto* label = new KYR::eRenderLabelPart();
    label->SetText(name.c_str());
    label->SetTextHeight(16);
    label->SetTextColor(style.text);
    KYR::eSize2D text;
    label->GetTextSize(text);

    double const lead = 30.0, icon = 18.0, pad = 5.0;
    double const w = pad + icon + pad + text.cx + pad + 2.0, h = std::max(text.cy, icon) + 6.0;
    KYR::ePoint2D tip(place.sx * lead, place.sy * lead * 0.8);
    double x0 = place.sx > 0 ? tip.x - 8.0 : tip.x + 8.0 - w;
    double y0 = place.sy > 0 ? tip.y + 7.0 : tip.y - 7.0 - h;
    double x1 = x0 + w, y1 = y0 + h;
    std::vector<KYR::ePoint2D> badge = Badge(x0, y0, x1, y1, tip, place.sy > 0);

    auto* line = new KYR::eRenderLeadLinePart();
    line->SetPolyline(KYR::ePoint2D(0.0, 0.0), tip);
    line->SetLineColor(style.lead);
    line->SetLineWidth(2.0f);
    line->SetLineSmooth(1);

    auto* picture = new KYR::eRenderPicturePart();
    double iy = y0 + (h - icon) * 0.5;
    picture->SetBound(KYR::eRect2D(x0 + pad, iy + icon, x0 + pad + icon, iy));
    picture->SetTextureID(kCityIcon);
    picture->SetColor(Rgba(255, 255, 255, 255));
    label->SetAnchor(KYR::ePoint2D(x0 + pad + icon + pad, y0 + (h - text.cy) * 0.5));

    auto* compose = new KYR::eRenderCompose();
    compose->AddChild(line);
    compose->AddChild(Fill(Circle(5.0, 16), style.outline));
    compose->AddChild(Fill(Circle(3.0, 12), style.badge));
    compose->AddChild(Fill(badge, style.badge));
    compose->AddChild(Outline(badge, style.outline, 1.5f));
    compose->AddChild(picture);
    compose->AddChild(label);
    compose->SetBillBoardMode(style.mode);
    KYR::ePoint2D map;
    scene.CoordSys().GeoToMap(KYR::ePoint2D(city.lon, city.lat), map);
    compose->SetPosition(KYR::ePoint3D(map.x, map.y, 0.0));
    return compose;
}

bool BuildAnnotations(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    Gallery::AddEarth(scene, keep, kViewLon - 35.0, kViewLat + 30.0);
    scene.Camera().LookAt(kViewLon, kViewLat, kViewDistance, 0.0, kViewPitch);
    if (KYR::eTextContext::FindFontFile("", 0).IsEmpty())
        return false; // reported by the host
    KYR::eTexture* icon = KYR::eTextureOperator::GetSingleton().CreateTexture(
        KYR::eSystem::GetWorkPath() + "Resources/Icons/CityIcon.png", KYR::eTWM_CLAMP_TO_EDGE,
        KYR::eTFM_LINEAR);
    if (!icon)
        return false; // reported by the host
    keep.Keep(icon);
    scene.Engine().SetTexture(((unsigned int)kCityIcon << 8) | 1u, icon);

    std::map<std::string, Gallery::City> cities;
    for (Gallery::City const& c : Gallery::Cities())
        cities[c.zone] = c;
    for (Place const& place : kPlaces)
    {
        auto it = cities.find(place.zone);
        if (it == cities.end())
            continue; // an older table
        std::string name = place.name ? place.name : it->second.name;
        scene.Add(keep.Keep(CallOut(scene, it->second, name, place)));
    }
    return true;
}

Gallery::Register s_annotations({"annotations",
                                 "city call-outs of label, lead line, badge and picture, facing "
                                 "the screen and lying on the globe",
                                 KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE,
                                 Gallery::WithEarth({"Resources/Icons/CityIcon.png"}),
                                 BuildAnnotations});

} // namespace
