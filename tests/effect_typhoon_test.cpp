// Typhoon animation: the symbol's place against time, the level pictures, the turning
// symbol, the line up to the current time in both scene modes, and missing pictures.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "WindSpeedLevel.h"
#include "eFile.h"
#include "eHardwareBuffer.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eRenderTyphoonAnimation.h"
#include <cmath>
#include <vector>

using namespace KYR;

namespace
{

using Track = std::vector<eVector4T<double>>;

class TyphoonProbe : public eRenderTyphoonAnimation
{
public:
    using eRenderTyphoonAnimation::GetSymbolMessage;
    using eRenderTyphoonAnimation::m_symbolVertices;
    using eRenderTyphoonAnimation::m_textVertices;

    // The vertices a store holds on the graphics card, four floats each.
    static std::vector<eVector4T<float>> ReadBack(eVertexData* store)
    {
        int const n = store->GetVertexSize();
        std::vector<eVector4T<float>> out((size_t)n);
        if (n > 0)
        {
            EXPECT_TRUE(store->GetHardwareBuffer()->ReadData(0, n * 16, out.data()));
        }
        return out;
    }
};

// (time, wind, longitude, latitude)
eVector4T<double> P(double t, double wind, double lon, double lat)
{
    return eVector4T<double>(t, wind, lon, lat);
}

std::vector<double> UniformValues(std::vector<Host::eRecord> const& records, char const* name)
{
    std::vector<double> out;
    for (auto const& r : records)
        if (r.kind == Host::eRecord::Uniform && r.uniform == name && !r.values.empty())
            out.push_back(r.values[0]);
    return out;
}

std::vector<Host::eRecord> PointDraws(std::vector<Host::eRecord> const& records)
{
    std::vector<Host::eRecord> out;
    for (auto const& r : records)
        if (r.kind == Host::eRecord::Draw && r.mode == eOT_POINT_LIST)
            out.push_back(r);
    return out;
}

bool Lit(std::vector<unsigned char> const& px)
{
    return px[0] + px[1] + px[2] > 60;
}

} // namespace

TEST(TyphoonTrack, SymbolIsInterpolatedBetweenPointsAndHeldOutside)
{
    TyphoonProbe typhoon;
    typhoon.UpDateTyphoonPath({P(0, 8, 140, 10), P(6, 9, 139, 11), P(12, 9, 138, 12),
                               P(18, 12, 137, 13), P(24, 12, 136, 14)});
    struct Case
    {
        double t;
        eVector4T<double> expected;
    } const cases[] = {
        {3.0, P(3, 8, 139.5, 10.5)},   // halfway: place and time move, the level holds
        {15.0, P(15, 9, 137.5, 12.5)}, // after the middle point
        {6.0, P(6, 9, 139, 11)},       // on a point: its own level
        {12.0, P(12, 9, 138, 12)},     // the middle point itself
        {0.0, P(0, 8, 140, 10)},       // first and last times give those points exactly
        {24.0, P(24, 12, 136, 14)},    //
        {-0.5, P(-1, 0, 0, 0)},        // before the track
        {24.5, P(-1, 0, 0, 0)},        // after it
    };
    for (Case const& c : cases)
    {
        eVector4T<double> m = typhoon.GetSymbolMessage(c.t);
        EXPECT_DOUBLE_EQ(m.x, c.expected.x) << "t " << c.t;
        EXPECT_DOUBLE_EQ(m.y, c.expected.y) << "t " << c.t;
        EXPECT_DOUBLE_EQ(m.z, c.expected.z) << "t " << c.t;
        EXPECT_DOUBLE_EQ(m.w, c.expected.w) << "t " << c.t;
    }

    TyphoonProbe one;
    one.UpDateTyphoonPath({P(5, 10, 130, 20)});
    EXPECT_EQ(one.GetSymbolMessage(-100.0), P(5, 10, 130, 20));
    EXPECT_EQ(one.GetSymbolMessage(100.0), P(5, 10, 130, 20));

    TyphoonProbe twin;
    twin.UpDateTyphoonPath({P(0, 6, 140, 10), P(3, 6, 140, 10), P(6, 7, 139, 11), P(6, 8, 138, 12),
                            P(12, 9, 137, 13)});
    EXPECT_EQ(twin.GetSymbolMessage(6.0), P(6, 7, 139, 11)) << "two points at one time";
    // A time that compares with nothing finds no neighbours and falls back to the first point.
    EXPECT_EQ(twin.GetSymbolMessage(std::nan("")), P(0, 6, 140, 10));
}

TEST_F(EffectTest, TyphoonSpeedsAreTurnedIntoLevels)
{
    TyphoonProbe typhoon;
    typhoon.SetIsConvertWind(0);
    typhoon.UpDateTyphoonPath({P(0, 30, 140, 10), P(6, 45, 139, 11), P(12, 50, 138, 12)});
    m_scene->Add(&typhoon); // builds the buffers, which finds the speeds
    EXPECT_EQ(typhoon.GetIsConvertWind(), 1);
    std::vector<eVector4T<float>> text = TyphoonProbe::ReadBack(typhoon.m_textVertices);
    ASSERT_EQ(text.size(), 3u);
    EXPECT_EQ(text[0].w, 15.0f);
    EXPECT_EQ(text[1].w, 21.0f);
    EXPECT_EQ(text[2].w, 0.0f);
    // Halfway the speed of the earlier point holds and becomes its level; 48 m/s and more
    // give level 0, a symbol of size 0.
    EXPECT_EQ(typhoon.GetSymbolMessage(3.0).y, WindSpeedLevel(30.0));
    EXPECT_EQ(typhoon.GetSymbolMessage(9.0).y, WindSpeedLevel(45.0));
    typhoon.UpDateTyphoonPath({P(0, 50, 140, 10), P(6, 52, 139, 11)});
    EXPECT_EQ(typhoon.GetSymbolMessage(3.0).y, 0.0);
    m_scene->Remove(&typhoon);
}

TEST_F(EffectTest, TyphoonPlacesTheSymbolAndLevelPicturesInTrackOrder)
{
    m_scene->Camera().LookAt(139.0, 11.0, 4.0e6, 0.0, 0.0);
    TyphoonProbe typhoon;
    typhoon.UpDateTyphoonPath({P(0, 6, 142, 9), P(6, 6, 141, 10), P(12, 7, 140, 11),
                               P(18, 7, 139, 12), P(24, 7, 138, 13), P(30, 9, 137, 14),
                               P(36, 8, 136, 15), P(42, 8, 135, 16)});
    typhoon.SetCurrentTime(15.0);
    m_scene->Add(&typhoon);
    std::vector<eRecord> frame = RecordFrame();

    // The symbol vertex is rewritten in place: interpolated place and time, then 96.
    std::vector<eVector4T<float>> symbol = TyphoonProbe::ReadBack(typhoon.m_symbolVertices);
    ASSERT_EQ(symbol.size(), 1u);
    EXPECT_FLOAT_EQ(symbol[0].x, 139.5f);
    EXPECT_FLOAT_EQ(symbol[0].y, 11.5f);
    EXPECT_FLOAT_EQ(symbol[0].z, 15.0f);
    EXPECT_FLOAT_EQ(symbol[0].w, 96.0f);

    // One picture where each new level begins, in the order of the track.
    std::vector<eVector4T<float>> text = TyphoonProbe::ReadBack(typhoon.m_textVertices);
    ASSERT_EQ(text.size(), 4u);
    float const expected[4][4] = {
        {142, 9, 0, 6}, {140, 11, 12, 7}, {137, 14, 30, 9}, {136, 15, 36, 8}};
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(text[i],
                  eVector4T<float>(expected[i][0], expected[i][1], expected[i][2], expected[i][3]))
            << "picture " << i;

    // Symbol first (one point, sized by its level), then the pictures.
    std::vector<eRecord> draws = PointDraws(frame);
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0].count, 1);
    EXPECT_EQ(draws[1].count, 4);
    std::vector<double> sizes = UniformValues(frame, "u_pointSize");
    ASSERT_EQ(sizes.size(), 2u);
    EXPECT_DOUBLE_EQ(sizes[0], 7 * 50000.0);
    EXPECT_DOUBLE_EQ(sizes[1], 5000.0);

    // Outside the track the symbol shrinks to nothing.
    typhoon.SetCurrentTime(60.0);
    EXPECT_EQ(UniformValues(RecordFrame(), "u_pointSize").front(), 0.0);
    m_scene->Remove(&typhoon);
}

TEST_F(EffectTest, TyphoonSymbolTurnsByItsStepEveryFrame)
{
    TyphoonProbe typhoon;
    typhoon.UpDateTyphoonPath({P(0, 10, 0, 0), P(6, 10, 1, 0)});
    m_scene->Add(&typhoon);
    double const step = typhoon.GetRotateAngleDelta();
    std::vector<double> angles;
    for (int frame = 0; frame < 3; ++frame)
    {
        std::vector<double> sent = UniformValues(RecordFrame(), "u_rotateAngle");
        ASSERT_EQ(sent.size(), 1u);
        angles.push_back(sent[0]);
    }
    for (int i = 0; i < 3; ++i)
        EXPECT_FLOAT_EQ((float)angles[i], (float)(step * (i + 1)));
    EXPECT_DOUBLE_EQ(typhoon.GetRotateAngle(), 3 * step);

    typhoon.SetRotateAngleDelta(-0.25);
    EXPECT_FLOAT_EQ((float)UniformValues(RecordFrame(), "u_rotateAngle")[0],
                    (float)(3 * step - 0.25));
    m_scene->Remove(&typhoon);
}

namespace
{

// A track along the equator from 20 W to 20 E, ten degrees every ten hours, at one level.
Track EquatorTrack()
{
    return {P(0, 6, -20, 0), P(10, 6, -10, 0), P(20, 6, 0, 0), P(30, 6, 10, 0), P(40, 6, 20, 0)};
}

} // namespace

// The line reaches the current time and no further, on the globe and on the plane map,
// where the host's projection kind places the same vertices.
TEST(TyphoonLine, EndsAtTheCurrentTimeInBothSceneModes)
{
    for (eSceneMode mode : {eSM_GLOBE, eSM_PLANE})
    {
        SCOPED_TRACE(mode == eSM_GLOBE ? "globe" : "plane");
        Host::eScene scene(128, 128, mode);
        ASSERT_TRUE(scene.IsReady());
        scene.Camera().LookAt(0.0, 0.0, 8.0e6, 0.0, 0.0);
        eRenderTyphoonAnimation typhoon;
        typhoon.UpDateTyphoonPath(EquatorTrack());
        typhoon.SetSymbolSizeScale(0.0); // keep the symbol off the line
        typhoon.SetTextSize(0.0);
        typhoon.SetCurrentTime(25.0);
        scene.Add(&typhoon);
        scene.RenderFrame();
        std::vector<unsigned char> px = scene.ReadPixels();
        auto at = [&](double lon)
        {
            double const r = 6378137.0, k = 0.017453292519943295;
            eVector3T<double> world = mode == eSM_GLOBE
                                          ? eMathEngine::SphericalToCartesian(lon * k, 0.0, r)
                                          : eVector3T<double>(r * lon * k, 0.0, 0.0);
            eVector3T<double> w = scene.Camera().Project(world);
            int x = (int)std::lround(w.x), y = scene.Height() - 1 - (int)std::lround(w.y);
            // The brightest of the pixel and its vertical neighbours: the line is 2 px wide.
            std::vector<unsigned char> best(4, 0);
            for (int dy = -1; dy <= 1; ++dy)
            {
                size_t i = ((size_t)(y + dy) * scene.Width() + x) * 4;
                if (px[i] + px[i + 1] + px[i + 2] > best[0] + best[1] + best[2])
                    best.assign(px.begin() + i, px.begin() + i + 4);
            }
            return best;
        };
        EXPECT_TRUE(Lit(at(-15.0))) << "the past track";
        EXPECT_TRUE(Lit(at(3.0))) << "inside the current segment";
        EXPECT_FALSE(Lit(at(8.0))) << "just beyond the current time";
        EXPECT_FALSE(Lit(at(15.0))) << "the future track";
        scene.Remove(&typhoon);
    }
}

TEST_F(EffectTest, TyphoonWithoutPicturesStillDrawsTrackAndSymbol)
{
    m_scene->Camera().LookAt(0.0, 0.0, 8.0e6, 0.0, 0.0);
    eRenderTyphoonAnimation typhoon;
    // Textures loaded earlier would stand in for unreadable files: drop them first.
    typhoon.UnInitialize(&m_scene->Engine());
    eString const symbolPath = typhoon.GetSymbolPicturePath(),
                  textPath = typhoon.GetTextPicturePath();
    typhoon.SetSymbolSizeScale(300000.0); // a ring wide enough to find
    typhoon.SetSymbolPicturePath(eSystem::GetWorkPath() + "Resources/Icons/NoSuchSymbol.png");
    typhoon.SetTextPicturePath(eSystem::GetWorkPath() + "Resources/Icons/NoSuchText.png");
    typhoon.UpDateTyphoonPath(EquatorTrack());
    typhoon.SetCurrentTime(40.0);
    m_scene->Add(&typhoon);
    std::vector<eRecord> frame = RecordFrame();

    // The pictures are drawn with no texture bound.
    for (auto const& r : Of(frame, eRecord::BindTexture))
        EXPECT_EQ(r.count, 0);
    EXPECT_EQ(PointDraws(frame).size(), 2u);
    // The line's west half and the symbol's stand-in ring at the end of the track.
    eVector3T<double> west =
        m_scene->Camera().Project(eMathEngine::SphericalToCartesian(-0.2, 0.0, 6378137.0));
    bool line = false;
    for (int dy = -1; dy <= 1; ++dy)
        line = line || Lit(Pixel((int)west.x, m_scene->Height() - 1 - (int)west.y + dy));
    EXPECT_TRUE(line);
    eVector3T<double> end =
        m_scene->Camera().Project(eMathEngine::SphericalToCartesian(0.349, 0.0, 6378137.0));
    int ringRed = 0;
    for (int dx = -12; dx <= 12; ++dx)
    {
        std::vector<unsigned char> p = Pixel((int)end.x + dx, m_scene->Height() - 1 - (int)end.y);
        ringRed += p[0] > 120 && p[1] < 80;
    }
    EXPECT_GT(ringRed, 0);

    m_scene->Remove(&typhoon);
    typhoon.SetSymbolPicturePath(symbolPath); // loaded again by the next object's first frame
    typhoon.SetTextPicturePath(textPath);
}

template <> struct CopySubject<eRenderTyphoonAnimation>
{
    static constexpr bool kSamePixels = false; // the symbol turns every frame
    static eRenderTyphoonAnimation* Make(KYR::Host::eScene&)
    {
        auto* typhoon = new eRenderTyphoonAnimation();
        typhoon->UpDateTyphoonPath({P(0, 8, -30, 0), P(6, 12, 0, 0), P(12, 16, 30, 0)});
        typhoon->SetCurrentTime(8.0);
        return typhoon;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Typhoon, CopyIdiom, ::testing::Types<eRenderTyphoonAnimation>);
