// Iso-line labels: where the labels go and which way they turn, the text of a value, the
// glyphs a label is drawn with, and how the label lies on the screen.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eRenderIsoLineLabelObject.h"
#include "eText.h"
#include <epoxy/gl.h>
#include <cmath>

using namespace KYR;
using KYR::Host::eRecord;

namespace
{

struct LabelProbe : eRenderIsoLineLabelObject
{
    using eRenderIsoLineLabelObject::CalculateAngle;
    using eRenderIsoLineLabelObject::GetLineTopPnt;
    using eRenderIsoLineLabelObject::m_charGlyphs;
};

eArray<ePoint2D> Line(std::vector<ePoint2D> const& points)
{
    eArray<ePoint2D> line;
    for (ePoint2D const& p : points)
        line.Add(p);
    return line;
}

void SetLines(eRenderIsoLineLabelObject& labels, std::vector<eArray<ePoint2D>> const& lines,
              std::vector<double> const& values)
{
    eArray<eArray<ePoint2D>> l;
    for (auto const& line : lines)
        l.Add(line);
    eArray<double> v;
    for (double value : values)
        v.Add(value);
    labels.SetIsoLines(l, v);
}

// The label object's last world matrix, as the host received it.
eMatrix4T<double> LastWorldMatrix(std::vector<eRecord> const& records)
{
    eMatrix4T<double> w;
    for (eRecord const& r : records)
        if (r.kind == eRecord::Uniform && r.uniform == "u_worldMatrix" && r.values.size() == 16)
            for (int i = 0; i < 16; ++i)
                w[i] = r.values[(size_t)i];
    return w;
}

// Window position (x right, y up) of a point of the label's own plane.
eVector3T<double> OnScreen(eCamera& camera, eMatrix4T<double> const& world, double x, double y)
{
    eMatrix4T<double> toClip = eMatrix4T<double>(camera.GetRelativeProjectionMatrix()) *
                               eMatrix4T<double>(camera.GetRelativeViewMatrix()) * world;
    eVector4T<double> c = toClip * eVector4T<double>(x, y, 0.0, 1.0);
    eViewport* vp = camera.GetViewport();
    return eVector3T<double>((c.x / c.w * 0.5 + 0.5) * vp->GetActualWidth(),
                             (c.y / c.w * 0.5 + 0.5) * vp->GetActualHeight(), 0.0);
}

// Rows of the frame holding anything brighter than the dark background.
int InkHeight(std::vector<unsigned char> const& px, int width, int height)
{
    int top = -1, bottom = -1;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (px[((size_t)y * width + x) * 4] > 128)
            {
                if (top < 0)
                    top = y;
                bottom = y;
            }
    return top < 0 ? 0 : bottom - top + 1;
}

} // namespace

TEST(IsoLineLabels, AnglesReadFromLeftToRight)
{
    LabelProbe labels;
    struct Case
    {
        ePoint2D a, b;
        double angle;
    };
    for (Case const& c :
         {Case{{0, 0}, {1, 1}, 45.0}, Case{{0, 0}, {-1, 0}, 0.0}, Case{{0, 0}, {-1, -1}, 45.0},
          Case{{0, 0}, {-1, 1}, -45.0}, Case{{0, 0}, {0, 1}, 90.0}, Case{{0, 0}, {0, -1}, -90.0}})
    {
        SCOPED_TRACE(testing::Message() << "(" << c.b.x << ", " << c.b.y << ")");
        EXPECT_NEAR(labels.CalculateAngle(c.a, c.b), c.angle, 1e-12);
        // A line and its reverse give one angle, except straight up and down.
        if (std::fabs(c.angle) != 90.0)
        {
            EXPECT_NEAR(labels.CalculateAngle(c.b, c.a), c.angle, 1e-12);
        }
    }
}

TEST(IsoLineLabels, OneLabelPerOpenEndAndOneAtTheTopOfARing)
{
    LabelProbe labels;
    // Closed, its top at the seam: the neighbours are taken across it.
    eArray<ePoint2D> seam = Line({{0, 5}, {1, 2}, {0, 0}, {-1, 3}, {0, 5}});
    int prev = -1, next = -1;
    ePoint2D top = labels.GetLineTopPnt(seam, prev, next);
    EXPECT_EQ(top, ePoint2D(0, 5));
    EXPECT_EQ(prev, 3);
    EXPECT_EQ(next, 1);
    // Flat: the first point is the top.
    labels.GetLineTopPnt(Line({{0, 1}, {2, 1}, {4, 1}, {0, 1}}), prev, next);
    EXPECT_EQ(prev, 2);
    EXPECT_EQ(next, 1);

    SetLines(labels,
             {Line({{0, 0}, {1, 1}, {2, 0}}),                  // open, three points
              Line({{0, 0}, {1, 1}}),                          // too short: no label
              Line({{10, 0}, {5, 1}, {0, 2}, {-5, 1}}),        // open, running right to left
              Line({{3, 0}, {4, 2}, {3, 4}, {1, 3}, {3, 0}})}, // closed
             {12.5, 99.0, -0.004, 1500.0});
    ASSERT_EQ(labels.GetLabelCount(), 5);
    char const* texts[] = {"12.50", "12.50", "-0.00", "-0.00", "1500.00"};
    ePoint2D anchors[] = {{0, 0}, {2, 0}, {10, 0}, {-5, 1}, {3, 4}};
    double const toDegrees = 57.29577951308232;
    double angles[] = {0.0, 0.0, -std::atan2(2.0, 10.0) * toDegrees, 0.0,
                       -std::atan2(1.0, 3.0) * toDegrees};
    for (int i = 0; i < 5; ++i)
    {
        SCOPED_TRACE(i);
        EXPECT_STREQ(labels.GetLabel(i).Cstr(), texts[i]);
        EXPECT_EQ(labels.GetLabelPosition(i), anchors[i]);
        EXPECT_NEAR(labels.GetLabelAngle(i), angles[i], 1e-9);
    }

    // A second call adds to the labels; with fewer values than lines the walk stops at the
    // first line without one.
    Host::ClearAssertReports();
    SetLines(labels, {Line({{0, 0}, {1, 0}, {2, 0}}), Line({{0, 1}, {1, 1}, {2, 1}})}, {7.0});
    EXPECT_EQ(labels.GetLabelCount(), 7);
    std::vector<Host::eAssertReport> reports = Host::GetAssertReports();
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].expression, "m_arValues.GetSize() == nLineCount");
    EXPECT_EQ(reports[0].file, "Src/RenderEffect/eRenderIsoLineLabelObject");
    EXPECT_EQ(reports[1].expression, "invalid vector<T> subscript");
}

TEST_F(EffectTest, LabelsAreSetFromTheThirteenGlyphs)
{
    LabelProbe labels;
    SetLines(labels, {Line({{-20, 0}, {0, 1}, {20, 0}})}, {-12.5});
    m_scene->Add(&labels);
    std::vector<tagTextGlyph*> alphabet;
    ASSERT_TRUE(m_scene->Engine().GetStringTextGlyph("0123456789.+-", 24, 24, "", 0, alphabet));
    ASSERT_EQ(alphabet.size(), 13u);
    ASSERT_EQ(labels.m_charGlyphs.size(), 13u);
    for (int i = 0; i < 13; ++i)
        EXPECT_EQ(labels.m_charGlyphs["0123456789.+-"[i]], alphabet[(size_t)i]);

    // Both labels of the line ("-12.50" at each end) bind the glyphs of their characters
    // in order, one four-vertex strip each.
    std::vector<eRecord> records = RecordFrame();
    m_scene->Remove(&labels);
    std::vector<long long> bound;
    for (eRecord const& r : records)
        if (r.kind == eRecord::BindTexture && r.count != 0)
            bound.push_back(r.count);
    std::vector<long long> expected;
    for (int label = 0; label < 2; ++label)
        for (char c : std::string("-12.50"))
            expected.push_back(labels.m_charGlyphs[c]->m_nTextureID);
    EXPECT_EQ(bound, expected);
    int draws = 0;
    for (eRecord const& r : Of(records, eRecord::Draw))
        if (r.op == "DrawIndexRange")
        {
            EXPECT_EQ(r.count, 4);
            EXPECT_EQ(r.first, 4 * (draws++ % 6));
        }
    EXPECT_EQ(draws, 12);
}

TEST_F(EffectTest, LabelOnALineRunningRightToLeftStaysUpright)
{
    for (eSceneMode mode : {eSM_GLOBE, eSM_PLANE})
    {
        SCOPED_TRACE(mode == eSM_GLOBE ? "globe" : "plane map");
        m_scene.reset(new Host::eScene(96, 96, mode, PJ_PLATE_CARREE));
        m_scene->Camera().LookAt(40.0, 30.0, 4.0e6, 0.0, 0.0);
        // Lines falling to the west, rising to the west, and straight west.
        for (ePoint2D step : {ePoint2D(-1.0, -0.5), ePoint2D(-1.0, 0.5), ePoint2D(-1.0, 0.0)})
        {
            eRenderIsoLineLabelObject labels;
            SetLines(
                labels,
                {Line({{40, 30}, {40 + step.x, 30 + step.y}, {40 + 2 * step.x, 30 + 2 * step.y}})},
                {7.0});
            m_scene->Add(&labels);
            eMatrix4T<double> w = LastWorldMatrix(RecordFrame());
            m_scene->Remove(&labels);
            eCamera& camera = m_scene->Camera();
            eVector3T<double> o = OnScreen(camera, w, 0, 0), x = OnScreen(camera, w, 10, 0),
                              y = OnScreen(camera, w, 0, 10);
            // The text's baseline runs to the right and its up points up the screen.
            EXPECT_GT(x.x - o.x, 0.0);
            EXPECT_GT(y.y - o.y, 0.0);
            // And the baseline lies along the line: its slope has the line's sign.
            EXPECT_GE((x.y - o.y) * -step.y, 0.0);
        }
    }
}

TEST_F(EffectTest, LabelKeepsItsPixelSizeAsTheCameraZooms)
{
    m_scene.reset(new Host::eScene(160, 160, eSM_PLANE, PJ_PLATE_CARREE));
    eRenderIsoLineLabelObject labels;
    labels.SetLabelSize(32);
    labels.SetLabelColor(ERGBA(255, 255, 255, 255));
    // A closed ring whose top sits at the look-at point: one label, "8.00".
    SetLines(labels, {Line({{0, 0}, {0.01, -0.01}, {0, -0.02}, {-0.01, -0.01}, {0, 0}})}, {8.0});
    m_scene->Add(&labels);
    std::vector<int> heights;
    for (double distance : {4.0e6, 1.0e6, 2.5e5})
    {
        m_scene->Camera().LookAt(0.0, 0.0, distance, 0.0, 0.0);
        m_scene->RenderFrame();
        heights.push_back(InkHeight(m_scene->ReadPixels(), 160, 160));
    }
    m_scene->Remove(&labels);
    // Digits of a 32-pixel font stand about 23 pixels tall.
    for (int h : heights)
    {
        EXPECT_GT(h, 16);
        EXPECT_LT(h, 32);
    }
    EXPECT_NEAR(heights[0], heights[2], 2);
}

template <> struct CopySubject<eRenderIsoLineLabelObject>
{
    static constexpr bool kSamePixels = true;
    static eRenderIsoLineLabelObject* Make(Host::eScene&)
    {
        auto* labels = new eRenderIsoLineLabelObject();
        labels->SetLabelSize(40);
        SetLines(*labels, {Line({{-10, 0}, {0, 5}, {10, 0}})}, {2500.0});
        return labels;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(IsoLineLabels, CopyIdiom,
                               ::testing::Types<eRenderIsoLineLabelObject>);
