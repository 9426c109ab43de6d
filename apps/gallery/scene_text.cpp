// Scene "text": labels of several sizes, styles and colours over the globe, set from the
// host's glyphs by eGLCanvas::Text and drawn upright on the screen by the "ScreenText"
// program. Cities come from the time-zone table, with the accents their names carry.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eGeometry.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderQueue.h"
#include "eRenderQueueVisitor.h"
#include "eRenderSystem.h"
#include "eText.h"
#include <epoxy/gl.h>
#include <map>
#include <memory>

namespace
{

double const kViewLon = -30.0, kViewLat = 18.0, kViewDistance = 1.5e7;

struct Label
{
    std::string text;
    double lon = 0.0, lat = 0.0; // or window pixels from the bottom-left when screen is set
    bool screen = false;
    int size = 14;
    int style = 0; // 1 bold, 2 italic
    KYR::eVector4T<unsigned char> color;
    int align = KYR::eGeoTextStyle::eTA_LEFT | KYR::eGeoTextStyle::eTA_MIDDLE;
    double dx = 0.0; // pixels from the anchor
};

// Labels laid out once, then drawn each frame at their anchors; a label on the far side of
// the globe is left out.
class LabelLayer : public KYR::eRenderable
{
public:
    LabelLayer()
    {
        KYR::ePass* pass = m_Technique.CreatePass();
        pass->SetProgram("ScreenText");
        pass->SetBlendingFunc(KYR::eBF_SRC_ALPHA, KYR::eBF_ONE_MINUS_SRC_ALPHA);
        pass->SetDepthCheckEnabled(0);
        pass->SetDepthWriteEnabled(0);
    }

    void Add(Label const& label) { m_arLabels.push_back({label, {}, nullptr, nullptr, {}}); }

    unsigned char Initialize(KYR::eRenderEngine* engine) override
    {
        for (Entry& e : m_arLabels)
        {
            if (e.vertices)
                continue;
            std::vector<KYR::tagTextGlyph*> glyphs;
            engine->GetStringTextGlyph(e.label.text.c_str(), e.label.size, e.label.size, "",
                                       e.label.style, glyphs);
            e.glyphs = glyphs;
            e.vertices.reset(new KYR::eVertexData());
            e.indices.reset(new KYR::eIndexData());
            KYR::eGLCanvas::Text(e.vertices.get(), e.indices.get(), e.starts, KYR::eSM_PLANE,
                                 nullptr, KYR::ePoint2D(e.label.dx, 0.0), 1.0, e.glyphs,
                                 e.label.color, e.label.align);
            e.vertices->Create();
            e.indices->Create();
        }
        return 1;
    }

    unsigned char UpdateRenderQueue(KYR::eRenderEngine*, KYR::eCamera*, KYR::eViewport*,
                                    KYR::eRenderQueue* queue) override
    {
        queue->GetQueueGroup(8)->AddTransparentRenderable(&m_Technique, this);
        return 1;
    }

    unsigned char Render(KYR::eRenderEngine* engine, KYR::eRenderSystem* rs, KYR::eCamera* camera,
                         KYR::eViewport* viewport) override
    {
        Initialize(engine);
        KYR::eRenderProgram* rp = engine->GetRenderProgram("ScreenText");
        if (!rp || !rp->GetProgram())
            return 0;
        KYR::eProgram* p = rp->GetProgram();
        KYR::eShaderUniform* u = rp->GetUniform();
        p->Uniform2f(u->m_nCustom[0], (float)viewport->GetActualWidth(),
                     (float)viewport->GetActualHeight());
        KYR::eVector3T<double> const& eye = camera->GetCameraPosition();
        for (Entry& e : m_arLabels)
        {
            KYR::eVector3T<double> at = Gallery::GeoToWorld(e.label.lon, e.label.lat, 0.0);
            if (!e.label.screen && (eye - at).Dot(at) <= 0.0)
                continue; // beyond the horizon
            KYR::eMatrix4T<float> world(
                KYR::eMatrix4T<double>::Translation(at - camera->GetReferenceCenter()));
            p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, world.Ptr());
            p->Uniform3f(u->m_nCustom[1], (float)e.label.lon, (float)e.label.lat,
                         e.label.screen ? 1.0f : 0.0f);
            p->Uniform1i(u->m_nTexture0, 0);
            for (float shadow : {1.0f, 0.0f})
            {
                p->Uniform3f(u->m_nCustom[2], 1.0f, -1.0f, shadow);
                for (size_t i = 0; i < e.glyphs.size(); ++i)
                {
                    glBindTexture(GL_TEXTURE_2D, e.glyphs[i]->m_nTextureID);
                    rs->DrawIndexRange(KYR::eOT_TRIANGLE_STRIP, e.vertices.get(), e.indices.get(),
                                       4, e.starts[i], false);
                }
            }
        }
        glBindTexture(GL_TEXTURE_2D, 0);
        return 1;
    }

private:
    struct Entry
    {
        Label label;
        std::vector<KYR::tagTextGlyph*> glyphs;
        std::unique_ptr<KYR::eVertexData> vertices;
        std::unique_ptr<KYR::eIndexData> indices;
        std::vector<int> starts;
    };
    std::vector<Entry> m_arLabels;
    KYR::eTechnique m_Technique;
};

KYR::eVector4T<unsigned char> Rgba(int r, int g, int b, int a = 255)
{
    return KYR::eVector4T<unsigned char>((unsigned char)r, (unsigned char)g, (unsigned char)b,
                                         (unsigned char)a);
}

// The table spells its names in ASCII; these are the names as the cities write them.
std::string Spelled(std::string const& name)
{
    static std::map<std::string, std::string> const spelled = {
        {"Sao Paulo", "S\xC3\xA3o Paulo"},   {"Bogota", "Bogot\xC3\xA1"},
        {"Zurich", "Z\xC3\xBCrich"},         {"Asuncion", "Asunci\xC3\xB3n"},
        {"Cordoba", "C\xC3\xB3rdoba"},       {"Belem", "Bel\xC3\xA9m"},
        {"Maceio", "Macei\xC3\xB3"},         {"Cuiaba", "Cuiab\xC3\xA1"},
        {"Merida", "M\xC3\xA9rida"},         {"Sao Tome", "S\xC3\xA3o Tom\xC3\xA9"},
        {"El Aaiun", "El Aai\xC3\xBAn"},     {"Santarem", "Santar\xC3\xA9m"},
        {"Araguaina", "Aragua\xC3\xADna"},   {"Ciudad Juarez", "Ciudad Ju\xC3\xA1rez"},
        {"Port-au-Prince", "Port-au-Prince"}};
    auto it = spelled.find(name);
    return it == spelled.end() ? name : it->second;
}

// Pixel box of a label as laid out at its anchor, for leaving out labels that would overlap.
struct Box
{
    double x0, y0, x1, y1;
    bool Meets(Box const& o) const { return x0 < o.x1 && o.x0 < x1 && y0 < o.y1 && o.y0 < y1; }
};

bool BuildText(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    Gallery::AddEarth(scene, keep, kViewLon + 25.0, kViewLat + 10.0);
    scene.Camera().LookAt(kViewLon, kViewLat, kViewDistance, 0.0, 0.0);
    if (KYR::eTextContext::FindFontFile("", 0).IsEmpty())
        return false; // reported by the host
    auto* layer = keep.Keep(new LabelLayer());
    using TA = KYR::eGeoTextStyle;
    int const w = scene.Width(), h = scene.Height();

    std::vector<Label> placed;
    std::vector<Box> boxes;
    KYR::eRenderEngine& engine = scene.Engine();
    // Places a label unless it would cover one placed before; a city gets a dot when its
    // name goes in.
    auto place = [&](Label label, bool dot)
    {
        KYR::eVector3T<double> at = Gallery::GeoToWorld(label.lon, label.lat, 0.0);
        KYR::eVector3T<double> win(label.lon, label.lat, 0.0);
        if (!label.screen)
        {
            if ((scene.Camera().GetCameraPosition() - at).Dot(at) <= 0.0)
                return;
            win = scene.Camera().Project(at);
        }
        std::vector<KYR::tagTextGlyph*> glyphs;
        engine.GetStringTextGlyph(label.text.c_str(), label.size, label.size, "", label.style,
                                  glyphs);
        KYR::eSize2D size = KYR::eTextContext::GetTextGlyphSize(glyphs);
        double x0 = win.x + label.dx, y0 = win.y - size.cy * 0.5;
        if ((label.align & TA::eTA_HORIZONTAL_MASK) == TA::eTA_CENTER)
            x0 -= size.cx * 0.5;
        if ((label.align & TA::eTA_VERTICAL_MASK) == TA::eTA_BOTTOM)
            y0 = win.y;
        Box box{x0 - 2.0, y0 - 1.0, x0 + size.cx + 2.0, y0 + size.cy + 1.0};
        if (dot)
            box.x0 = win.x - label.size * 0.4;
        if (box.x0 < 0.0 || box.x1 > w || box.y0 < 0.0 || box.y1 > h)
            return;
        for (Box const& b : boxes)
            if (b.Meets(box))
                return;
        boxes.push_back(box);
        layer->Add(label);
        if (dot)
        {
            Label marker = label;
            marker.text = "\xE2\x97\x8F"; // a black circle
            marker.size = label.size - 4;
            marker.dx = 0.0;
            marker.align = TA::eTA_CENTER | TA::eTA_MIDDLE;
            layer->Add(marker);
        }
    };

    // Title and subtitle, fixed to the window's top-left corner.
    Label title;
    title.text = "Labels over the globe \xE2\x80\x94 DejaVu Sans";
    title.screen = true;
    title.lon = 24.0;
    title.lat = h - 44.0;
    title.size = 32;
    title.style = 1;
    title.color = Rgba(255, 255, 255);
    title.align = TA::eTA_LEFT | TA::eTA_BOTTOM;
    place(title, false);
    Label subtitle = title;
    subtitle.text = "12 to 32 pixels, UTF-8 names from the time-zone table and beyond: "
                    "Z\xC3\xBCrich, S\xC3\xA3o Paulo, Reykjav\xC3\xADk";
    subtitle.lat = h - 68.0;
    subtitle.size = 15;
    subtitle.style = 0;
    subtitle.color = Rgba(190, 200, 215);
    place(subtitle, false);

    // Regions: large, spaced capitals; the ocean in italics.
    struct Region
    {
        char const* text;
        double lon, lat;
        int size, style;
        KYR::eVector4T<unsigned char> color;
    } const regions[] = {
        {"A T L A N T I C   O C E A N", -38.0, 28.0, 24, 2, Rgba(150, 205, 255, 230)},
        {"AFRICA", 18.0, 8.0, 28, 1, Rgba(255, 240, 200, 235)},
        {"SOUTH AMERICA", -60.0, -10.0, 26, 1, Rgba(255, 240, 200, 235)},
        {"EUROPE", 12.0, 50.0, 26, 1, Rgba(255, 240, 200, 235)},
        {"NORTH AMERICA", -95.0, 42.0, 26, 1, Rgba(255, 240, 200, 235)},
    };
    for (Region const& r : regions)
    {
        Label label;
        label.text = r.text;
        label.lon = r.lon;
        label.lat = r.lat;
        label.size = r.size;
        label.style = r.style;
        label.color = r.color;
        label.align = TA::eTA_CENTER | TA::eTA_MIDDLE;
        place(label, false);
    }

    // Names with accents the table leaves out, in orange.
    struct Named
    {
        char const* text;
        double lon, lat;
    } const named[] = {{"Reykjav\xC3\xADk", -21.94, 64.15},
                       {"Montr\xC3\xA9"
                        "al",
                        -73.57, 45.50},
                       {"Qu\xC3\xA9"
                        "bec",
                        -71.21, 46.81},
                       {"M\xC3\xA1laga", -4.42, 36.72},
                       {"Krak\xC3\xB3w", 19.94, 50.06},
                       {"G\xC3\xB6teborg", 11.97, 57.71},
                       {"S\xC3\xA3o Lu\xC3\xADs", -44.30, -2.53}};
    for (Named const& n : named)
    {
        Label label;
        label.text = n.text;
        label.lon = n.lon;
        label.lat = n.lat;
        label.size = 18;
        label.style = 1;
        label.color = Rgba(255, 170, 60);
        label.dx = 8.0;
        place(label, true);
    }

    // The cities of the table: those with accents in their own spelling a little larger.
    for (Gallery::City const& c : Gallery::Cities())
    {
        // Zones of a state or county ("America/Indiana/Knox") name no city of their own.
        size_t slash = c.zone.find('/');
        if (c.zone.find('/', slash + 1) != std::string::npos &&
            c.zone.compare(slash + 1, 10, "Argentina/") != 0)
            continue;
        std::string text = Spelled(c.name);
        Label label;
        label.text = text;
        label.lon = c.lon;
        label.lat = c.lat;
        bool accented = text != c.name;
        label.size = accented ? 16 : 13;
        label.color = accented ? Rgba(255, 170, 60) : Rgba(255, 236, 120);
        label.dx = 7.0;
        place(label, true);
    }
    scene.Add(layer);
    return true;
}

Gallery::Register s_text({"text",
                          "labels in several sizes and colours over the globe, with accented "
                          "city names",
                          KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}), BuildText});

} // namespace
