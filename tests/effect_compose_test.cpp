// Annotations: the pixel size kept at any camera distance in both billboard modes, concave
// fills, the glyph strips of labels with accented names, the parts' drawing order and
// state, picture textures, and the ownership of parts.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eMesh.h"
#include "eRenderCompose.h"
#include "eRenderFillPart.h"
#include "eRenderLabelPart.h"
#include "eRenderLeadLinePart.h"
#include "eRenderPicturePart.h"
#include "eText.h"
#include "eTexture.h"
#include <epoxy/gl.h>

using namespace KYR;

namespace
{

typedef eVector4T<unsigned char> Rgba;

class ProbeFill : public eRenderFillPart
{
public:
    int Vertices() { return m_pVertexData ? m_pVertexData->GetVertexSize() : -1; }
};

class ProbeLabel : public eRenderLabelPart
{
public:
    using eRenderLabelPart::m_arGlyphStarts;
};

eRenderFillPart* Fill(std::vector<ePoint2D> const& ring, Rgba color)
{
    auto* fill = new eRenderFillPart();
    int count = (int)ring.size();
    fill->SetPolygon(ring.data(), &count, 1);
    fill->SetFillColor(color);
    return fill;
}

eRenderCompose* ComposeAt(Host::eScene& scene, double lon, double lat, eBillBoardMode mode)
{
    auto* compose = new eRenderCompose();
    ePoint2D map;
    scene.CoordSys().GeoToMap(ePoint2D(lon, lat), map);
    compose->SetPosition(ePoint3D(map.x, map.y, 0.0));
    compose->SetBillBoardMode(mode);
    return compose;
}

// Pixels of one colour in the last frame: their count and bounding box (y from the top).
struct Coloured
{
    int count = 0, x0 = 1 << 30, y0 = 1 << 30, x1 = -1, y1 = -1;
};

// With `tolerance` 255 every pixel brighter than a quarter counts.
Coloured Find(Host::eScene& scene, Rgba color, int tolerance = 2)
{
    std::vector<unsigned char> px = scene.ReadPixels();
    Coloured c;
    for (int y = 0; y < scene.Height(); ++y)
        for (int x = 0; x < scene.Width(); ++x)
        {
            unsigned char const* p = &px[((size_t)y * scene.Width() + x) * 4];
            bool match = tolerance == 255 ? p[0] + p[1] + p[2] > 3 * 64
                                          : std::abs(p[0] - color.x) <= tolerance &&
                                                std::abs(p[1] - color.y) <= tolerance &&
                                                std::abs(p[2] - color.z) <= tolerance;
            if (!match)
                continue;
            ++c.count;
            c.x0 = std::min(c.x0, x);
            c.y0 = std::min(c.y0, y);
            c.x1 = std::max(c.x1, x);
            c.y1 = std::max(c.y1, y);
        }
    return c;
}

std::vector<Host::eRecord> PartDraws(std::vector<Host::eRecord> const& all)
{
    std::vector<Host::eRecord> out;
    bool inCompose = false;
    for (auto const& r : all)
    {
        if (r.kind == Host::eRecord::BeginPass)
            inCompose = r.op == "TexcoordA8UniformColor";
        if (inCompose && (r.kind == Host::eRecord::Draw || r.kind == Host::eRecord::BindTexture))
            out.push_back(r);
    }
    return out;
}

} // namespace

TEST_F(EffectTest, ComposeKeepsItsPixelSizeAtAnyDistanceInBothModes)
{
    struct Case
    {
        eSceneMode scene;
        eBillBoardMode mode;
    } const cases[] = {{eSM_GLOBE, eBBM_SCREEN},
                       {eSM_GLOBE, eBBM_WORLD},
                       {eSM_PLANE, eBBM_SCREEN},
                       {eSM_PLANE, eBBM_WORLD}};
    Rgba const magenta(255, 0, 255, 255);
    for (Case const& c : cases)
    {
        m_scene.reset(new Host::eScene(96, 96, c.scene));
        std::unique_ptr<eRenderCompose> compose(ComposeAt(*m_scene, 30.0, 20.0, c.mode));
        // 40 pixels east, 20 north of the anchor: a lying drawing that turned would swap them.
        compose->AddChild(Fill({{0.0, 0.0}, {40.0, 0.0}, {40.0, 20.0}, {0.0, 20.0}}, magenta));
        m_scene->Add(compose.get());
        for (double distance : {2.0e7, 1.5e6})
        {
            SCOPED_TRACE(testing::Message() << "scene mode " << c.scene << ", billboard " << c.mode
                                            << ", distance " << distance);
            m_scene->Camera().LookAt(30.0, 20.0, distance, 0.0, 0.0);
            m_scene->RenderFrame();
            Coloured box = Find(*m_scene, magenta);
            EXPECT_EQ(box.count, 40 * 20);
            EXPECT_EQ(box.x1 - box.x0 + 1, 40);
            EXPECT_EQ(box.y1 - box.y0 + 1, 20);
            // The anchor at the middle of the view: the drawing runs right and up from it.
            EXPECT_EQ(box.x0, 48);
            EXPECT_EQ(box.y1, 47);
        }
        m_scene->Remove(compose.get());
    }
}

TEST_F(EffectTest, FillPartCoversAConcaveOutlineExactly)
{
    Rgba const green(0, 255, 0, 255);
    m_scene->Camera().LookAt(0.0, 0.0, 3.0e6, 0.0, 0.0);
    std::unique_ptr<eRenderCompose> compose(ComposeAt(*m_scene, 0.0, 0.0, eBBM_SCREEN));
    auto* fill = new ProbeFill();
    // A two-point ring that fills nothing, then a U open at the top.
    std::vector<ePoint2D> points = {{-30.0, -30.0}, {-25.0, -25.0}, {-20.0, -15.0}, {20.0, -15.0},
                                    {20.0, 15.0},   {8.0, 15.0},    {8.0, -3.0},    {-8.0, -3.0},
                                    {-8.0, 15.0},   {-20.0, 15.0}};
    int const counts[2] = {2, 8};
    fill->SetPolygon(points.data(), counts, 2);
    fill->SetFillColor(green);
    compose->AddChild(fill);
    m_scene->Add(compose.get());
    m_scene->RenderFrame();

    EXPECT_EQ(fill->Vertices(), 8); // the short ring adds none
    Coloured box = Find(*m_scene, green);
    EXPECT_EQ(box.count, 40 * 30 - 16 * 18);
    EXPECT_EQ(box.x0, 48 - 20);
    EXPECT_EQ(box.x1, 48 + 19);
    EXPECT_EQ(box.y0, 48 - 15);
    EXPECT_EQ(box.y1, 48 + 14);
    EXPECT_EQ(Pixel(48, 40)[1], 0) << "the notch stays empty";
    EXPECT_EQ(Pixel(48, 58)[1], 255) << "the bottom of the U";
    m_scene->Remove(compose.get());
}

TEST_F(EffectTest, LabelDrawsOneStripPerCharacterOfAccentedNames)
{
    ASSERT_FALSE(eTextContext::FindFontFile("", 0).IsEmpty()) << "no DejaVu Sans";
    char const* const text = "Z\xC3\xBCrich S\xC3\xA3o Paulo \xC5\x81\xC3\xB3"
                             "d\xC5\xBA";
    int const codePoints = 21; // "Zürich São Paulo Łódź"
    m_scene.reset(new Host::eScene(256, 96));
    m_scene->Camera().LookAt(0.0, 0.0, 3.0e6, 0.0, 0.0);
    std::unique_ptr<eRenderCompose> compose(ComposeAt(*m_scene, 0.0, 0.0, eBBM_SCREEN));
    auto* label = new ProbeLabel();
    label->SetText(text);
    label->SetTextHeight(11);
    label->SetTextColor(Rgba(255, 255, 255, 255));
    label->SetAnchor(ePoint2D(-120.0, -5.0));
    compose->AddChild(label);
    m_scene->Add(compose.get());

    auto draws = PartDraws(RecordFrame());
    std::vector<tagTextGlyph*> glyphs, replacement, notdef;
    eTextContext context;
    ASSERT_TRUE(context.GetTextGlyphsFromCache(text, 0, 11, "", 0, glyphs));
    context.GetTextGlyphsFromCache("\xEF\xBF\xBD", 0, 11, "", 0, replacement);
    context.GetTextGlyphsFromCache("\xEE\x80\x80", 0, 11, "", 0, notdef); // no glyph in the font
    ASSERT_EQ(glyphs.size(), (size_t)codePoints);
    ASSERT_EQ(label->m_arGlyphStarts.size(), (size_t)codePoints);
    ASSERT_EQ(draws.size(), 2u * codePoints);
    for (int i = 0; i < codePoints; ++i)
    {
        auto const& bind = draws[2 * (size_t)i];
        auto const& draw = draws[2 * (size_t)i + 1];
        EXPECT_EQ(bind.kind, Host::eRecord::BindTexture);
        EXPECT_EQ(bind.count, (long long)glyphs[(size_t)i]->m_nTextureID) << "glyph " << i;
        EXPECT_NE(bind.count, (long long)replacement[0]->m_nTextureID) << "glyph " << i;
        EXPECT_EQ(draw.op, "DrawIndexRange");
        EXPECT_EQ(draw.mode, eOT_TRIANGLE_STRIP);
        EXPECT_EQ(draw.count, 4);
        EXPECT_EQ(draw.first, label->m_arGlyphStarts[(size_t)i]);
        EXPECT_EQ(draw.first, 4 * i);
    }
    // The accented letters have ink of their own, not the font's box for a missing glyph.
    auto coverage = [](tagTextGlyph const* g)
    {
        std::vector<unsigned char> px((size_t)g->m_nTextureWidth * g->m_nTextureHeight);
        glBindTexture(GL_TEXTURE_2D, g->m_nTextureID);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glGetTexImage(GL_TEXTURE_2D, 0, GL_RED, GL_UNSIGNED_BYTE, px.data());
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
        glBindTexture(GL_TEXTURE_2D, 0);
        return px;
    };
    for (int i : {1, 8, 17, 18, 20})
    {
        std::vector<unsigned char> px = coverage(glyphs[(size_t)i]);
        EXPECT_NE(px, coverage(notdef[0])) << "glyph " << i;
        EXPECT_GT(*std::max_element(px.begin(), px.end()), 200) << "glyph " << i;
    }
    // White text on the black sky of an empty scene, within the label's bounds.
    eSize2D size;
    label->GetTextSize(size);
    Coloured ink = Find(*m_scene, Rgba(255, 255, 255, 255), 255);
    EXPECT_GT(ink.count, 150);
    EXPECT_GE(ink.x0, 128 - 120);
    EXPECT_LE(ink.x1, 128 - 120 + (int)size.cx);
    EXPECT_GE(ink.y0, 48 + 5 - (int)size.cy - 1);
    EXPECT_LE(ink.y1, 48 + 5);
    m_scene->Remove(compose.get());
}

TEST_F(EffectTest, ComposeDrawsPartsInOrderWithStateReadAtDrawTime)
{
    m_scene->Camera().LookAt(0.0, 0.0, 3.0e6, 0.0, 0.0);
    std::unique_ptr<eRenderCompose> compose(ComposeAt(*m_scene, 0.0, 0.0, eBBM_SCREEN));
    auto* line = new eRenderLinePart();
    ePoint2D const zigzag[4] = {{0.0, 0.0}, {10.0, 10.0}, {20.0, 0.0}, {30.0, 10.0}};
    int const four = 4;
    line->SetPolyline(zigzag, &four, 1);
    auto* lead = new eRenderLeadLinePart();
    lead->SetPolyline(ePoint2D(-5.0, -5.0), ePoint2D(-30.0, -20.0));
    auto* label = new eRenderLabelPart();
    label->SetText("ab");
    label->SetAnchor(ePoint2D(5.0, -30.0));
    compose->AddChild(line);
    compose->AddChild(Fill({{0.0, 0.0}, {4.0, 0.0}, {0.0, 4.0}}, Rgba(0, 0, 255, 255)));
    compose->AddChild(label);
    compose->AddChild(lead);
    m_scene->Add(compose.get());

    auto all = RecordFrame();
    std::vector<std::string> order;
    std::vector<double> red;
    for (auto const& r : all)
    {
        if (r.kind == Host::eRecord::Draw)
            order.push_back(r.op + " " + std::to_string(r.mode));
        if (r.kind == Host::eRecord::Uniform && r.uniform == "u_color")
            red.push_back(r.values[0]);
    }
    std::vector<std::string> want = {"DrawIndexed 1", "DrawIndexed 4", "DrawIndexRange 5",
                                     "DrawIndexRange 5", "DrawIndexed 1"};
    EXPECT_EQ(order, want);
    EXPECT_EQ(red, (std::vector<double>{1.0, 0.0, 0.0, 1.0}));

    // A line's colour is read at draw time: no rebuild needed.
    line->SetLineColor(Rgba(51, 0, 0, 255));
    all = RecordFrame();
    for (auto const& r : all)
        if (r.kind == Host::eRecord::Uniform && r.uniform == "u_color")
        {
            EXPECT_FLOAT_EQ((float)r.values[0], 0.2f);
            break;
        }

    // The bounds: the zigzag, the fill and the label's text box; not the lead line.
    eSize2D text;
    label->GetTextSize(text);
    eRect2D bounds = compose->GetBounds();
    EXPECT_EQ(bounds.left, 0.0);
    EXPECT_EQ(bounds.right, std::max(30.0, 5.0 + text.cx));
    EXPECT_EQ(bounds.top, 10.0);
    EXPECT_EQ(bounds.bottom, -30.0);

    // Hidden, it draws nothing; billboard mode 1 is not one it knows.
    compose->m_bVisible = 0;
    EXPECT_EQ(compose->Render(&m_scene->Engine(), &m_scene->RenderSystem(), &m_scene->Camera(),
                              &m_scene->Viewport()),
              0);
    compose->m_bVisible = 1;
    compose->SetBillBoardMode((eBillBoardMode)1);
    auto asserts = Of(RecordFrame(), eRecord::Assert);
    ASSERT_EQ(asserts.size(), 1u);
    EXPECT_EQ(asserts[0].op, "false");
    EXPECT_EQ(asserts[0].uniform, "Src/RenderEffect/eRenderCompose");
    m_scene->Remove(compose.get());
}

TEST_F(EffectTest, PicturePartFindsItsTextureByIdOnce)
{
    eImageData* image = new eImageData();
    image->Allocate(2, 2, 32);
    eTexture* picture = eTextureManager::GetSingleton().CreateTexture();
    picture->SetAutoRelease(1);
    picture->SetImageData(image);
    m_scene->Engine().SetTexture((5u << 8) | 1u, picture);

    m_scene->Camera().LookAt(0.0, 0.0, 3.0e6, 0.0, 0.0);
    std::unique_ptr<eRenderCompose> compose(ComposeAt(*m_scene, 0.0, 0.0, eBBM_SCREEN));
    auto* part = new eRenderPicturePart();
    part->SetBound(eRect2D(0.0, 8.0, 8.0, 0.0));
    part->SetTextureID(5);
    compose->AddChild(part);
    m_scene->Add(compose.get());

    auto bound = [&]()
    {
        std::vector<long long> names;
        for (auto const& r : PartDraws(RecordFrame()))
            if (r.kind == Host::eRecord::BindTexture)
                names.push_back(r.count);
        return names;
    };
    std::vector<long long> first = bound();
    long long const name = picture->GetTextureID(); // uploaded when the part asked for it
    EXPECT_NE(name, 0);
    EXPECT_EQ(first, std::vector<long long>{name});
    // The same id keeps the texture found, even once the engine's entry has gone.
    m_scene->Engine().SetTexture((5u << 8) | 1u, nullptr);
    part->SetTextureID(5);
    EXPECT_EQ(bound(), std::vector<long long>{name});
    // A new id without an entry falls back on the default texture.
    part->SetTextureID(6);
    std::vector<long long> fallback = bound();
    EXPECT_EQ(fallback,
              std::vector<long long>{m_scene->Engine().GetDefaultTexture()->GetTextureID()});
    m_scene->Remove(compose.get());
    picture->DestroyTexture();
    delete picture;
}

TEST_F(EffectTest, ComposeOwnsItsPartsUntilItHandsThemBack)
{
    eRenderCompose compose;
    auto* kept = new eRenderLinePart();
    auto* released = new eRenderFillPart();
    auto* owned = new eRenderPicturePart();
    compose.AddChild(kept);
    compose.AddChild(released);
    compose.AddChild(owned);
    EXPECT_EQ(kept->GetParent(), &compose);
    EXPECT_EQ(compose.GetChild(3), nullptr);
    EXPECT_EQ(compose.GetChild(-1), nullptr);

    compose.RemoveChild(kept); // handed back: ours to free
    EXPECT_EQ(kept->GetParent(), nullptr);
    EXPECT_EQ(compose.GetChildrenCount(), 2);
    EXPECT_EQ(compose.GetChild(0), released);
    {
        eRenderCompose copy(compose); // shares the two parts
        compose.ReleaseChild(&m_scene->Engine(), released);
        EXPECT_EQ(compose.GetChild(0), owned);
        EXPECT_EQ(copy.GetChild(0), released) << "the copy still holds it";
    }
    delete kept;
    compose.RemoveAllChild(&m_scene->Engine());
    EXPECT_EQ(compose.GetChildrenCount(), 0);
}

template <> struct CopySubject<eRenderCompose>
{
    static constexpr bool kSamePixels = true;
    static void Prepare(Host::eScene& scene) { scene.Camera().LookAt(0.0, 0.0, 3.0e6, 0.0, 0.0); }
    static eRenderCompose* Make(Host::eScene& scene)
    {
        eRenderCompose* compose = ComposeAt(scene, 0.0, 0.0, eBBM_SCREEN);
        compose->AddChild(Fill({{-10.0, -10.0}, {10.0, -10.0}, {0.0, 12.0}}, Rgba(0, 200, 0, 255)));
        auto* label = new eRenderLabelPart();
        label->SetText("A");
        label->SetTextColor(Rgba(255, 255, 255, 255));
        compose->AddChild(label);
        auto* lead = new eRenderLeadLinePart();
        lead->SetPolyline(ePoint2D(0.0, 0.0), ePoint2D(-20.0, 20.0));
        compose->AddChild(lead);
        return compose;
    }
};

// Parts draw only inside a compose object, so alone they leave the scene empty. Each is drawn
// once in a compose object that then hands it back, so that it holds stores for its copies
// to share.
void Content(eRenderPart*) {}
void Content(eRenderLinePart* line)
{
    ePoint2D const points[3] = {{0.0, 0.0}, {10.0, 10.0}, {20.0, 0.0}};
    int const three = 3;
    line->SetPolyline(points, &three, 1);
}
void Content(eRenderLeadLinePart* lead)
{
    lead->SetPolyline(ePoint2D(0.0, 0.0), ePoint2D(10.0, 10.0));
}
void Content(eRenderFillPart* fill)
{
    ePoint2D const points[3] = {{0.0, 0.0}, {10.0, 0.0}, {0.0, 10.0}};
    int const three = 3;
    fill->SetPolygon(points, &three, 1);
}
void Content(eRenderPicturePart* picture)
{
    picture->SetBound(eRect2D(0.0, 8.0, 8.0, 0.0));
}
void Content(eRenderLabelPart* label)
{
    label->SetText("Ab");
}

template <typename T> struct PartSubject
{
    static constexpr bool kSamePixels = true;
    static constexpr bool kDraws = false;
    static T* Make(Host::eScene& scene)
    {
        T* part = new T();
        Content(part);
        eRenderCompose holder;
        holder.AddChild(part);
        scene.Add(&holder);
        scene.RenderFrame();
        scene.Remove(&holder);
        holder.RemoveChild(part);
        return part;
    }
};
template <> struct CopySubject<eRenderPart> : PartSubject<eRenderPart>
{
};
template <> struct CopySubject<eRenderLinePart> : PartSubject<eRenderLinePart>
{
};
template <> struct CopySubject<eRenderLeadLinePart> : PartSubject<eRenderLeadLinePart>
{
};
template <> struct CopySubject<eRenderFillPart> : PartSubject<eRenderFillPart>
{
};
template <> struct CopySubject<eRenderPicturePart> : PartSubject<eRenderPicturePart>
{
};
template <> struct CopySubject<eRenderLabelPart> : PartSubject<eRenderLabelPart>
{
};

typedef ::testing::Types<eRenderCompose, eRenderPart, eRenderLinePart, eRenderLeadLinePart,
                         eRenderFillPart, eRenderPicturePart, eRenderLabelPart>
    ComposeClasses;
INSTANTIATE_TYPED_TEST_SUITE_P(Compose, CopyIdiom, ComposeClasses);
