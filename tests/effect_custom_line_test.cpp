// Custom lines, antialiased lines and polygons: what each frame draws, the chunking of long
// lines, the strips' width on the screen, and the area a polygon fills.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eCustomRenderLine.h"
#include "eCustomRenderPoly.h"
#include "eFile.h"
#include "eProgram.h"
#include "eProgramLibrary.h"
#include "eRenderAntiAliasingLine.h"
#include "eRenderIsoLineGradationObject.h"
#include <epoxy/gl.h>
#include <cmath>

using namespace KYR;
using KYR::Host::eRecord;

namespace
{

tagColorVertex3r At(double lon, double lat, unsigned char r = 255, unsigned char g = 255,
                    unsigned char b = 255)
{
    tagColorVertex3r v;
    v.x = (float)lon;
    v.y = (float)lat;
    v.r = r;
    v.g = g;
    v.b = b;
    return v;
}

// A zigzag of n points along the equator, a hundredth of a degree apart.
void AddZigzag(eCustomRenderLine& line, int n)
{
    line.CreateLine();
    for (int i = 0; i < n; ++i)
    {
        tagColorVertex3r v = At(-10.0 + i * 0.01, (i % 2) * 0.01);
        line.AddVertex(v);
    }
}

std::vector<eRecord> Draws(std::vector<eRecord> const& records, char const* op)
{
    std::vector<eRecord> out;
    for (eRecord const& r : records)
        if (r.kind == eRecord::Draw && r.op == op)
            out.push_back(r);
    return out;
}

// Rows lit (brightness over half) in one column of the frame.
int LitRun(std::vector<unsigned char> const& px, int width, int height, int column)
{
    int lit = 0;
    for (int y = 0; y < height; ++y)
    {
        unsigned char const* p = &px[((size_t)y * width + column) * 4];
        if (p[0] + p[1] + p[2] > 3 * 127)
            ++lit;
    }
    return lit;
}

// Whether the uniform behind each role slot is the one the role names.
void ExpectRoles(char const* program, std::vector<std::pair<int, char const*>> const& roles)
{
    eRenderProgram* rp = Host::eProgramLibrary::Get().Find(program);
    ASSERT_TRUE(rp && rp->GetProgram()) << program;
    for (auto const& role : roles)
    {
        int location = rp->GetUniform()->m_nCustom[role.first];
        EXPECT_NE(location, -1) << program << ": " << role.second;
        EXPECT_EQ(location, rp->GetProgram()->GetUniformLocation(role.second))
            << program << ": " << role.second;
    }
}

class PlaneLineTest : public EffectTest
{
protected:
    void SetUp() override
    {
        m_scene.reset(new Host::eScene(96, 96, eSM_PLANE, PJ_PLATE_CARREE));
        ASSERT_TRUE(m_scene->IsReady()) << "no OpenGL context";
        m_scene->Camera().LookAt(0.0, 0.0, 1.0e6, 0.0, 0.0);
    }
};

} // namespace

TEST_F(EffectTest, RoleSlotsNameTheirUniforms)
{
    using L = eCustomRenderLine;
    ExpectRoles("CustomRenderLine", {{L::eR_PROJ_KIND, "u_projKind"},
                                     {L::eR_RELATIVE_HEIGHT, "u_relativeHeight"},
                                     {L::eR_USE_TEXTURE, "u_useTexture"}});
    using A = eRenderAntiAliasingLine;
    ExpectRoles("DashLine3D", {{A::eR_REFERENCE_CENTER, "u_refCenter"},
                               {A::eR_DASHED, "u_dashed"},
                               {A::eR_GEOGRAPHIC, "u_geographic"},
                               {A::eR_RELATIVE_HEIGHT, "u_relativeHeight"},
                               {A::eR_DASH_LENGTH, "u_dashLength"},
                               {A::eR_GAP_LENGTH, "u_gapLength"},
                               {A::eR_DASH_OFFSET, "u_dashOffset"},
                               {A::eR_OPACITY, "u_opacity"},
                               {A::eR_LINE_WIDTH, "u_lineWidth"},
                               {A::eR_FEATHER, "u_feather"},
                               {A::eR_PROJ_KIND, "u_projKind"},
                               {A::eR_VIEWPORT, "u_viewport"},
                               {A::eR_TOTAL_LENGTH, "u_totalLength"}});
    ExpectRoles("Color", {{eCustomRenderPoly::eR_USE_VERTEX_COLOR, "u_useVertexColor"}});
}

TEST_F(EffectTest, PlainLinesDrawEveryVertexOfEveryListAndSurviveReset)
{
    eCustomRenderLine line;
    AddZigzag(line, 70000); // beyond 16-bit indices
    AddZigzag(line, 3);
    m_scene->Add(&line);
    for (int pass = 0; pass < 2; ++pass)
    {
        SCOPED_TRACE(pass ? "after Reset" : "first frame");
        std::vector<eRecord> draws = Draws(RecordFrame(), "DrawIndexed");
        ASSERT_EQ(draws.size(), 2u);
        EXPECT_EQ(draws[0].count, 70000);
        EXPECT_EQ(draws[1].count, 3);
        EXPECT_EQ(draws[0].mode, (int)eOT_LINE_STRIP);
        line.Reset();
    }
    // Emptied, the line takes new vertices as a new list.
    line.ClearVertex();
    for (int i = 0; i < 5; ++i)
    {
        tagColorVertex3r v = At(i, 0.0);
        line.AddVertex(v);
    }
    line.Reset();
    std::vector<eRecord> draws = Draws(RecordFrame(), "DrawIndexed");
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0].count, 5);
    m_scene->Remove(&line);
}

TEST(AntiAliasLineData, ChunksSkipRepeatsAndRestartTheirLength)
{
    std::vector<tagAntiAliasLineData> out;
    EXPECT_FALSE(eRenderAntiAliasingLine::CreateAntialiasLineData({}, out));
    EXPECT_TRUE(out.empty());

    // Three points, the middle one repeated: the repeat is skipped.
    std::vector<eVector3T<double>> points = {{0, 0, 5}, {3, 4, 5}, {3, 4, 5}, {3, 8, 5}};
    ASSERT_TRUE(eRenderAntiAliasingLine::CreateAntialiasLineData(points, out));
    ASSERT_EQ(out.size(), 1u);
    tagAntiAliasLineData const& d = out[0];
    ASSERT_EQ(d.GetVertexCount(), 2 * 3 + 4);
    EXPECT_EQ(d.m_arIndices.size(), 6u);
    EXPECT_DOUBLE_EQ(d.m_dLength, 9.0);
    float const* v = d.m_arVertices.data();
    // The phantom before the first point mirrors the second one; the sides alternate.
    EXPECT_FLOAT_EQ(v[0], -3.0f);
    EXPECT_FLOAT_EQ(v[1], -4.0f);
    EXPECT_FLOAT_EQ(v[2], 5.0f);
    EXPECT_FLOAT_EQ(v[4], -1.0f);
    EXPECT_FLOAT_EQ(v[9], 1.0f);
    // Real points carry their running length; the phantom after the last mirrors the one
    // before it, at the last length.
    EXPECT_FLOAT_EQ(v[2 * 5 + 3], 0.0f);
    EXPECT_FLOAT_EQ(v[4 * 5 + 3], 5.0f);
    EXPECT_FLOAT_EQ(v[6 * 5 + 3], 9.0f);
    EXPECT_FLOAT_EQ(v[8 * 5 + 1], 12.0f);
    EXPECT_FLOAT_EQ(v[8 * 5 + 3], 9.0f);

    struct Case
    {
        int points;
        std::vector<int> chunkPoints;
    };
    for (Case const& c : {Case{30000, {30000}}, Case{30001, {30000}}, Case{30002, {30000, 2}},
                          Case{60001, {30000, 30000}}})
    {
        SCOPED_TRACE(c.points);
        std::vector<eVector3T<double>> line;
        for (int i = 0; i < c.points; ++i)
            line.push_back({i * 0.001, 0.0, 0.0});
        out.clear();
        ASSERT_TRUE(eRenderAntiAliasingLine::CreateAntialiasLineData(line, out));
        ASSERT_EQ(out.size(), c.chunkPoints.size());
        for (size_t k = 0; k < out.size(); ++k)
        {
            EXPECT_EQ(out[k].GetVertexCount(), 2 * c.chunkPoints[k] + 4);
            // Each chunk starts where the one before stopped, at length 0.
            EXPECT_FLOAT_EQ(out[k].m_arVertices[2 * 5], (float)(k * 30000 * 0.001));
            EXPECT_FLOAT_EQ(out[k].m_arVertices[2 * 5 + 3], 0.0f);
        }
    }
}

TEST_F(EffectTest, AntialiasedLineLongerThanAChunkDrawsEveryPoint)
{
    eRenderAntiAliasingLine line;
    AddZigzag(line, 30002);
    m_scene->Add(&line);
    std::vector<eRecord> draws = Draws(RecordFrame(), "glDrawElements");
    m_scene->Remove(&line);
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0].count, 2 * 30000);
    EXPECT_EQ(draws[1].count, 2 * 2);
    for (eRecord const& r : draws)
        EXPECT_EQ(r.mode, (int)GL_TRIANGLE_STRIP);
}

TEST_F(PlaneLineTest, AntialiasedLineKeepsItsPixelWidthAsTheCameraZooms)
{
    eRenderAntiAliasingLine line;
    line.CreateLine();
    for (double lon : {-20.0, 0.0, 20.0})
    {
        tagColorVertex3r v = At(lon, 0.0);
        line.AddVertex(v);
    }
    line.SetColor(eVector4T<unsigned char>(255, 255, 255, 255));
    line.SetLineWidth(6.0f);
    m_scene->Add(&line);
    std::vector<int> widths;
    for (double distance : {2.0e6, 5.0e5, 1.25e5})
    {
        m_scene->Camera().LookAt(0.0, 0.0, distance, 0.0, 0.0);
        m_scene->RenderFrame();
        widths.push_back(LitRun(m_scene->ReadPixels(), 96, 96, 48));
    }
    m_scene->Remove(&line);
    for (int w : widths)
        EXPECT_NEAR(w, 6, 1);
    EXPECT_EQ(widths[0], widths[2]);
}

TEST_F(PlaneLineTest, LineColourComesFromItsColourAndStaysAfterUnInitialize)
{
    eCustomRenderLine line;
    line.CreateLine();
    for (double lon : {-20.0, 20.0})
    {
        tagColorVertex3r v = At(lon, 0.0, 0, 0, 255); // blue vertices
        line.AddVertex(v);
    }
    line.SetLineWidth(5.0f);
    m_scene->Add(&line);
    m_scene->RenderFrame();
    EXPECT_GT(Pixel(48, 48)[2], 200) << "vertex colour";
    line.SetColor(eVector4T<unsigned char>(0, 255, 0, 255));
    for (int pass = 0; pass < 2; ++pass)
    {
        SCOPED_TRACE(pass ? "after UnInitialize" : "first");
        m_scene->RenderFrame();
        std::vector<unsigned char> p = Pixel(48, 48);
        EXPECT_GT(p[1], 200);
        EXPECT_LT(p[2], 50);
        line.UnInitialize(&m_scene->Engine());
    }
    m_scene->Remove(&line);
}

TEST_F(PlaneLineTest, PolygonTrianglesCoverItsAreaExactly)
{
    // A concave outline (a comb of three teeth) lying on the map, 100 km across; the camera
    // looks straight down on it.
    std::vector<ePoint2D> outline = {{-50, -40}, {50, -40},  {50, 40},  {30, 40},
                                     {30, -10},  {10, -10},  {10, 40},  {-10, 40},
                                     {-10, -10}, {-30, -10}, {-30, 40}, {-50, 40}};
    eCustomRenderPoly poly;
    for (ePoint2D const& p : outline)
    {
        tagColorVertex3r v;
        v.x = (float)(p.x * 1000.0);
        v.y = (float)(p.y * 1000.0);
        v.g = 0;
        v.b = 0;
        poly.AddVertex(v);
    }
    m_scene->Camera().LookAtMap(0.0, 0.0, 3.0e5, 0.0, 0.0);
    m_scene->Add(&poly);
    m_scene->RenderFrame();
    m_scene->Remove(&poly);
    EXPECT_EQ(poly.GetFailedPolyCount(), 0);

    // The outline in window pixels (y down from the top, as the frame is read).
    std::vector<ePoint2D> window;
    for (ePoint2D const& p : outline)
    {
        eVector3T<double> w = m_scene->Camera().Project({p.x * 1000.0, p.y * 1000.0, 0.0});
        window.push_back({w.x, 96.0 - w.y});
    }
    auto inside = [&](double x, double y)
    {
        bool in = false;
        for (size_t i = 0, j = window.size() - 1; i < window.size(); j = i++)
            if ((window[i].y > y) != (window[j].y > y) &&
                x < window[j].x + (y - window[j].y) * (window[i].x - window[j].x) /
                                      (window[i].y - window[j].y))
                in = !in;
        return in;
    };
    // Pixels whose whole square lies on one side of the outline must be filled or empty.
    std::vector<unsigned char> px = m_scene->ReadPixels();
    int checked = 0, wrong = 0;
    for (int y = 0; y < 96; ++y)
        for (int x = 0; x < 96; ++x)
        {
            bool centre = inside(x + 0.5, y + 0.5);
            bool clear = true;
            for (double dy : {0.0, 1.0})
                for (double dx : {0.0, 1.0})
                    clear = clear && inside(x + dx, y + dy) == centre;
            if (!clear)
                continue;
            ++checked;
            bool red = px[((size_t)y * 96 + x) * 4] > 200;
            if (red != centre)
                ++wrong;
        }
    EXPECT_GT(checked, 96 * 96 / 2);
    EXPECT_EQ(wrong, 0);
}

TEST_F(EffectTest, IsoLinesAddedAfterInitializeAreDrawnAtTheirHeight)
{
    eRenderIsoLineGradationObject lines;
    m_scene->Add(&lines); // initialised with nothing to draw
    std::vector<eVector3T<double>> points;
    for (int i = 0; i < 30002; ++i)
        points.push_back({-10.0 + i * 0.0005, 0.0, 0.0});
    lines.AddLine(points);
    std::vector<eRecord> records = RecordFrame();
    m_scene->Remove(&lines);
    std::vector<eRecord> draws = Draws(records, "glDrawElements");
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0].count + draws[1].count, 2 * 30002);
    bool sawHeight = false;
    for (eRecord const& r : records)
        if (r.kind == eRecord::Uniform && r.uniform == "u_relativeHeight")
        {
            sawHeight = true;
            EXPECT_EQ(r.values.at(0), 1000.0);
        }
    EXPECT_TRUE(sawHeight);
}

// ----- copies -------------------------------------------------------------------------------

namespace
{
template <typename T> T* MakeRoute()
{
    T* line = new T();
    line->CreateLine();
    for (double lon = -40.0; lon <= 40.0; lon += 5.0)
    {
        tagColorVertex3r v = At(lon, 20.0 * std::sin(lon * 0.05), 255, 200, 0);
        line->AddVertex(v);
    }
    line->SetLineWidth(4.0f);
    return line;
}
} // namespace

template <> struct CopySubject<eCustomRenderLine>
{
    static constexpr bool kSamePixels = true;
    static eCustomRenderLine* Make(Host::eScene&)
    {
        eCustomRenderLine* line = MakeRoute<eCustomRenderLine>();
        line->SetColor(eVector4T<unsigned char>(0, 255, 120, 255));
        return line;
    }
};

template <> struct CopySubject<eRenderAntiAliasingLine>
{
    static constexpr bool kSamePixels = true;
    static eRenderAntiAliasingLine* Make(Host::eScene&)
    {
        return MakeRoute<eRenderAntiAliasingLine>();
    }
};

template <> struct CopySubject<eRenderIsoLineGradationObject>
{
    static constexpr bool kSamePixels = true;
    static eRenderIsoLineGradationObject* Make(Host::eScene&)
    {
        auto* lines = new eRenderIsoLineGradationObject();
        std::vector<eVector3T<double>> ring;
        for (int i = 0; i <= 72; ++i)
            ring.push_back(
                {30.0 * std::cos(i * 0.0872664626), 30.0 * std::sin(i * 0.0872664626), 0.0});
        lines->AddLine(ring);
        lines->SetLineWidth(3.0f);
        return lines;
    }
};

template <> struct CopySubject<eCustomRenderPoly>
{
    static constexpr bool kSamePixels = true;
    static eCustomRenderPoly* Make(Host::eScene&)
    {
        auto* poly = new eCustomRenderPoly();
        // A square in the plane x = radius, facing the camera over (0, 0).
        for (auto const& c : {std::make_pair(-2.0e6, -2.0e6), std::make_pair(2.0e6, -2.0e6),
                              std::make_pair(2.0e6, 2.0e6), std::make_pair(-2.0e6, 2.0e6)})
        {
            tagColorVertex3r v;
            v.x = (float)c.first;
            v.y = (float)c.second;
            v.r = 0;
            poly->AddVertex(v);
        }
        eMatrix4T<double> m; // model x, y to world y, z, at the sphere's surface
        m.At(0, 0) = 0.0, m.At(1, 0) = 1.0;
        m.At(1, 1) = 0.0, m.At(2, 1) = 1.0;
        m.At(0, 2) = 1.0, m.At(2, 2) = 0.0;
        m.At(0, 3) = 6378137.0 + 50000.0;
        poly->SetMatrix(m);
        return poly;
    }
};

using CustomLineTypes = ::testing::Types<eCustomRenderLine, eRenderAntiAliasingLine,
                                         eRenderIsoLineGradationObject, eCustomRenderPoly>;
INSTANTIATE_TYPED_TEST_SUITE_P(CustomLines, CopyIdiom, CustomLineTypes);
