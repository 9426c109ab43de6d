// Text: glyph textures read back, measures, the glyph cache, and the quads of eGLCanvas::Text.
#include "eGeometry.h"
#include "eMesh.h"
#include "eRenderEngine.h"
#include "eScene.h"
#include "eText.h"
#include <epoxy/gl.h>
#include <gtest/gtest.h>
#include <cstring>

using namespace KYR;

namespace
{

// Coverage of a glyph's texture, row 0 at the top of the cell.
struct Coverage
{
    int w = 0, h = 0;
    std::vector<unsigned char> px;
    unsigned char At(int x, int y) const { return px[(size_t)y * w + x]; }
    bool RowInked(int y, int x0, int x1) const
    {
        for (int x = x0; x < x1; ++x)
            if (At(x, y) > 127)
                return true;
        return false;
    }
    // First and last row with ink anywhere; -1 when there is none.
    int TopInk() const
    {
        for (int y = 0; y < h; ++y)
            if (RowInked(y, 0, w))
                return y;
        return -1;
    }
    int BottomInk() const
    {
        for (int y = h - 1; y >= 0; --y)
            if (RowInked(y, 0, w))
                return y;
        return -1;
    }
};

Coverage ReadBack(tagTextGlyph const* g)
{
    Coverage c;
    c.w = g->m_nTextureWidth;
    c.h = g->m_nTextureHeight;
    c.px.resize((size_t)c.w * c.h);
    glBindTexture(GL_TEXTURE_2D, g->m_nTextureID);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RED, GL_UNSIGNED_BYTE, c.px.data());
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glBindTexture(GL_TEXTURE_2D, 0);
    return c;
}

std::vector<tagTextGlyph*> Glyphs(char const* text, int size, char const* font = "", int style = 0)
{
    std::vector<tagTextGlyph*> glyphs;
    eTextContext context;
    EXPECT_EQ(context.GetTextGlyphsFromCache(text, size, size, font, style, glyphs), 1) << text;
    return glyphs;
}

class HostText : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_scene.reset(new Host::eScene(64, 64));
        ASSERT_TRUE(m_scene->IsReady()) << "no OpenGL context";
        ASSERT_FALSE(eTextContext::FindFontFile("", 0).IsEmpty()) << "no DejaVu Sans";
    }
    std::unique_ptr<Host::eScene> m_scene;
};

} // namespace

TEST_F(HostText, GlyphTexturesHoldInkWhereTheLettersAre)
{
    std::vector<tagTextGlyph*> g = Glyphs("Hi.\xC3\xA9"
                                          "e",
                                          32); // "Hi.ée"
    ASSERT_EQ(g.size(), 5u);                   // the two bytes of "é" make one glyph
    for (tagTextGlyph* glyph : g)
        ASSERT_NE(glyph->m_nTextureID, 0u);

    // H: two stems from the cap height down to the baseline, joined by a bar in the middle.
    Coverage h = ReadBack(g[0]);
    int baselineRow = h.h - 1 - g[0]->m_nBaseline;
    EXPECT_EQ(h.BottomInk(), baselineRow);
    int capTop = h.TopInk(), mid = (capTop + baselineRow) / 2;
    ASSERT_GT(baselineRow - capTop, 18); // about 23 px of capital at 32 px
    int third = h.w / 3;
    EXPECT_TRUE(h.RowInked(capTop + 2, 0, third));
    EXPECT_TRUE(h.RowInked(capTop + 2, h.w - third, h.w));
    EXPECT_FALSE(h.RowInked(capTop + 2, third + 1, h.w - third - 1));
    bool bar = false;
    for (int y = mid - 3; y <= mid + 3; ++y)
        bar = bar || h.RowInked(y, third + 1, h.w - third - 1);
    EXPECT_TRUE(bar);

    // i: a dot above the stem, with an empty row between them.
    Coverage i = ReadBack(g[1]);
    EXPECT_EQ(i.BottomInk(), baselineRow);
    bool gap = false;
    for (int y = i.TopInk(); y < baselineRow; ++y)
        gap = gap || !i.RowInked(y, 0, i.w);
    EXPECT_TRUE(gap);

    // The full stop sits on the baseline, well below the middle of the letters.
    Coverage dot = ReadBack(g[2]);
    EXPECT_EQ(dot.BottomInk(), baselineRow);
    EXPECT_GT(dot.TopInk(), mid);

    // é: the accent reaches above the plain e.
    Coverage eAcute = ReadBack(g[3]), e = ReadBack(g[4]);
    EXPECT_LT(eAcute.TopInk() + 4, e.TopInk());
    EXPECT_EQ(eAcute.BottomInk(), e.BottomInk());
}

TEST_F(HostText, MeasuresGrowWithTheTextAndTheSize)
{
    double last = 0.0;
    for (char const* text : {"1", "12", "123", "1234"})
    {
        std::vector<tagTextGlyph*> g = Glyphs(text, 16);
        eSize2D size = eTextContext::GetTextGlyphSize(g);
        EXPECT_GT(size.cx, last) << text;
        last = size.cx;
    }
    // Digits share one advance, so columns of numbers line up.
    std::vector<tagTextGlyph*> digits = Glyphs("0123456789", 16);
    for (tagTextGlyph* d : digits)
        EXPECT_EQ(d->m_nAdvanceX, digits[0]->m_nAdvanceX);
    EXPECT_GT(Glyphs("W", 16)[0]->m_nAdvanceX, Glyphs("i", 16)[0]->m_nAdvanceX);

    std::vector<tagTextGlyph*> smallGlyphs = Glyphs("Map", 12);
    eSize2D small = eTextContext::GetTextGlyphSize(smallGlyphs);
    std::vector<tagTextGlyph*> largeGlyphs = Glyphs("Map", 32);
    eSize2D large = eTextContext::GetTextGlyphSize(largeGlyphs);
    EXPECT_GT(large.cx, small.cx * 2.2);
    EXPECT_GT(large.cy, small.cy * 2.2);
    EXPECT_EQ(large.cy, largeGlyphs[0]->m_nHeight); // every cell is a line high
    std::vector<tagTextGlyph*> none;
    EXPECT_EQ(eTextContext::GetTextGlyphSize(none).cx, 0.0);
}

TEST_F(HostText, TheCacheGivesTheSameGlyphsForTheSameKey)
{
    std::vector<tagTextGlyph*> ab = Glyphs("ab", 20), ba = Glyphs("ba", 20);
    EXPECT_EQ(ab[0], ba[1]);
    EXPECT_EQ(ab[1], ba[0]);
    EXPECT_NE(ab[0]->m_nTextureID, ab[1]->m_nTextureID);
    EXPECT_EQ(Glyphs("a", 20, "DejaVu Sans")[0], ab[0]); // the default family by name
    EXPECT_NE(Glyphs("a", 21)[0], ab[0]);
    EXPECT_NE(Glyphs("a", 20, "", 1)[0], ab[0]); // bold
    EXPECT_NE(eTextContext::FindFontFile("", 1), eTextContext::FindFontFile("", 0));

    // The engine's service is the same cache; a family nobody has falls back to the default.
    std::vector<tagTextGlyph*> viaEngine;
    EXPECT_EQ(m_scene->Engine().GetStringTextGlyph("ab", 20, 20, "", 0, viaEngine), 1);
    EXPECT_EQ(viaEngine, ab);
    EXPECT_EQ(Glyphs("a", 20, "No Such Family 17")[0], ab[0]);
    std::vector<tagTextGlyph*> empty{ab[0]};
    eTextContext context;
    EXPECT_EQ(context.GetTextGlyphsFromCache("", 20, 20, "", 0, empty), 1);
    EXPECT_TRUE(empty.empty());
}

TEST_F(HostText, TextWritesFourVerticesPerGlyphAtTheRecordedOffsets)
{
    std::vector<tagTextGlyph*> g = Glyphs("Tab", 20);
    eSize2D size = eTextContext::GetTextGlyphSize(g);
    eVertexData vd;
    eIndexData id;
    // Something already in the stores: the text goes after it.
    std::vector<int> starts;
    eGLCanvas::Text(&vd, &id, starts, eSM_PLANE, nullptr, ePoint2D(), 1.0, g,
                    eVector4T<unsigned char>(), 0);
    ASSERT_EQ(vd.GetVertexSize(), 12);
    EXPECT_EQ(starts, (std::vector<int>{0, 4, 8}));

    eVector4T<unsigned char> color(10, 20, 30, 40);
    double const scale = 2.0; // metres per pixel of PixelToWorld
    eGLCanvas::Text(&vd, &id, starts, eSM_PLANE, &m_scene->CoordSys(), ePoint2D(10.0, 5.0), scale,
                    g, color, eGeoTextStyle::eTA_LEFT | eGeoTextStyle::eTA_BOTTOM,
                    eVector3T<double>(0.0, 0.0, 7.0));
    EXPECT_EQ(vd.GetVertexType(), 133u);
    EXPECT_EQ(vd.GetVertexStride(), 24);
    ASSERT_EQ(starts, (std::vector<int>{12, 16, 20}));
    ASSERT_EQ(vd.GetVertexSize(), 24);
    double pen = 10.0;
    for (size_t i = 0; i < g.size(); ++i)
    {
        double u = (double)g[i]->m_nWidth / g[i]->m_nTextureWidth;
        double v = (double)g[i]->m_nHeight / g[i]->m_nTextureHeight;
        double const expect[4][4] = {{pen, 5.0, 0.0, v},
                                     {pen + g[i]->m_nWidth, 5.0, u, v},
                                     {pen, 5.0 + g[i]->m_nHeight, 0.0, 0.0},
                                     {pen + g[i]->m_nWidth, 5.0 + g[i]->m_nHeight, u, 0.0}};
        for (int k = 0; k < 4; ++k)
        {
            int vertex = id.GetIndexBuffer()[(size_t)starts[i] + k];
            EXPECT_EQ(vertex, 12 + (int)i * 4 + k);
            unsigned char const* raw = vd.GetVertex(vertex);
            float f[5];
            std::memcpy(f, raw, sizeof f);
            EXPECT_FLOAT_EQ(f[0], (float)(expect[k][0] * scale)) << i << "," << k;
            EXPECT_FLOAT_EQ(f[1], (float)(expect[k][1] * scale)) << i << "," << k;
            EXPECT_FLOAT_EQ(f[2], 7.0f);
            EXPECT_FLOAT_EQ(f[3], (float)expect[k][2]);
            EXPECT_FLOAT_EQ(f[4], (float)expect[k][3]);
            EXPECT_EQ(std::vector<unsigned char>(raw + 20, raw + 24),
                      (std::vector<unsigned char>{10, 20, 30, 40}));
        }
        pen += g[i]->m_nAdvanceX;
    }

    // Each alignment puts the line's box against the anchor: (left, bottom) of the box.
    int const baseline = g[0]->m_nBaseline;
    struct Case
    {
        int align;
        double left, bottom;
    } const cases[] = {
        {0, 0.0, -(double)baseline},
        {eGeoTextStyle::eTA_LEFT | eGeoTextStyle::eTA_TOP, 0.0, -size.cy},
        {eGeoTextStyle::eTA_CENTER | eGeoTextStyle::eTA_BOTTOM, -size.cx / 2, 0.0},
        {eGeoTextStyle::eTA_RIGHT | eGeoTextStyle::eTA_MIDDLE, -size.cx, -size.cy / 2},
        {6, 0.0, 0.0},
        {10, -size.cx / 2, 0.0},
    };
    for (Case const& c : cases)
    {
        eVertexData box;
        eIndexData boxIndices;
        eGLCanvas::Text(&box, &boxIndices, starts, eSM_PLANE, nullptr, ePoint2D(100.0, 50.0), 1.0,
                        g, color, c.align);
        float first[2];
        std::memcpy(first, box.GetVertex(0), sizeof first);
        EXPECT_FLOAT_EQ(first[0], (float)(100.0 + c.left)) << "align " << c.align;
        EXPECT_FLOAT_EQ(first[1], (float)(50.0 + c.bottom)) << "align " << c.align;
    }

    // A store laid out for something else is left alone.
    eVertexData other;
    other.AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    eGLCanvas::Text(&other, &id, starts, eSM_PLANE, nullptr, ePoint2D(), 1.0, g, color, 6);
    EXPECT_EQ(other.GetVertexSize(), 0);
    EXPECT_TRUE(starts.empty());
}
