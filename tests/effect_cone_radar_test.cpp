// The cone's mesh and posture, its class-wide texture flow, and the radar sweep.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eFile.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eRenderCone.h"
#include "eRenderRadarScan.h"
#include <cmath>

using namespace KYR;

namespace
{

eVector3T<double> Apply(eMatrix4T<float> const& m, eVector3T<double> const& p)
{
    eVector4T<double> r = eMatrix4T<double>(m) * eVector4T<double>(p.x, p.y, p.z, 1.0);
    return eVector3T<double>(r.x, r.y, r.z);
}

void ExpectNear(eVector3T<double> const& a, eVector3T<double> const& b, double tol)
{
    EXPECT_NEAR(a.x, b.x, tol);
    EXPECT_NEAR(a.y, b.y, tol);
    EXPECT_NEAR(a.z, b.z, tol);
}

} // namespace

TEST(Cone, MeshIsAnOpenRingOfEightySlicesAroundTheTip)
{
    eRenderCone cone(2.0, 5.0);
    eMesh* mesh = cone.GetMesh(0);
    ASSERT_NE(mesh, nullptr);
    eVertexData* vd = mesh->GetVertexData();
    EXPECT_EQ(vd->GetVertexType(), 133u);
    EXPECT_EQ(vd->GetVertexStride(), 24);
    ASSERT_EQ(vd->GetVertexSize(), 81);
    EXPECT_EQ(mesh->GetIndexData()->GetIndexSize(), 3 * 80 - 3);
    EXPECT_EQ(mesh->GetOperationType(), eOT_TRIANGLE_LIST);

    float* first = mesh->GetVertex(0);
    float* last = mesh->GetVertex(79);
    float* tip = mesh->GetVertex(80);
    EXPECT_NEAR(first[0], last[0], 1e-4);
    EXPECT_NEAR(first[1], last[1], 1e-4);
    EXPECT_FLOAT_EQ(first[0], 2.0f);
    EXPECT_EQ(tip[0], 0.0f);
    EXPECT_EQ(tip[2], 5.0f);
    EXPECT_EQ(tip[3], 0.0f); // tip texture coordinate (0, 0)
    EXPECT_EQ(tip[4], 0.0f);
    unsigned char const* colour = reinterpret_cast<unsigned char const*>(first + 5);
    EXPECT_EQ(colour[0], 255);
    EXPECT_EQ(colour[3], 100);
    // Around the ring the texture coordinate turns through the slant ratio taken as
    // degrees, so it hardly varies: the texture flows along the cone.
    double angle = 2.0 / std::sqrt(29.0) * 3.141592653589793 / 180.0;
    EXPECT_NEAR(std::hypot(first[3] - last[3], first[4] - last[4]), angle, 1e-5);
    EXPECT_NEAR(first[4], -1.0, 1e-4);

    auto const& idx = cone.GetConeGeometry()->GetIndices();
    EXPECT_EQ(idx[0], 0);
    EXPECT_EQ(idx[1], 1);
    EXPECT_EQ(idx[2], 80);
}

TEST(Cone, CappedGeometryMergesToNothing)
{
    eConeGeometry g(1.0, 1.0);
    g.BuildPositions();
    g.BuildTexCoords();
    EXPECT_EQ(g.GetVertices().size(), 32u);
    EXPECT_EQ(g.GetIndices().size(), 6u * 30 - 6);
    EXPECT_TRUE(g.Merge().empty());
}

TEST(Cone, PostureMapsTipToApexAndBaseCentreToBase)
{
    eRenderCone cone(100.0, 400.0);
    eVector3T<double> apex(1000.0, 2000.0, 3000.0), base(-500.0, 400.0, 100.0);
    cone.setPosture(apex, base);
    ExpectNear(Apply(cone.GetMatrix(), eVector3T<double>(0, 0, 400.0)), apex, 1e-2);
    ExpectNear(Apply(cone.GetMatrix(), eVector3T<double>(0, 0, 0)), base, 1e-3);

    // At the scale of the Earth, within float precision.
    eVector3T<double> far(6378137.0, 10.0, 20.0), near(6378137.0 + 5e5, 3e5, -2e5);
    cone.setPosture(far, near);
    ExpectNear(Apply(cone.GetMatrix(), eVector3T<double>(0, 0, 400.0)), far, 2.0);
    ExpectNear(Apply(cone.GetMatrix(), eVector3T<double>(0, 0, 0)), near, 1.0);

    // Straight down takes the half-turn branch and still lands exactly.
    cone.setPosture(eVector3T<double>(0, 0, -400.0), eVector3T<double>(0, 0, 0));
    ExpectNear(Apply(cone.GetMatrix(), eVector3T<double>(0, 0, 400.0)),
               eVector3T<double>(0, 0, -400.0), 1e-3);
    ExpectNear(Apply(cone.GetMatrix(), eVector3T<double>(100.0, 0, 0)).Normalized() * 100.0,
               Apply(cone.GetMatrix(), eVector3T<double>(100.0, 0, 0)), 1e-3);
}

TEST(Cone, ShortestArcIsARotationInBothBranches)
{
    eVector3T<double> z(0, 0, 1);
    for (eVector3T<double> v : {eVector3T<double>(1, 2, 3), eVector3T<double>(0, 0, -1),
                                eVector3T<double>(0.9, 0.1, 0.0), eVector3T<double>(0, 0, -5)})
    {
        eMatrix4T<double> q = eRenderCone::ShortestArc(z, v);
        eVector3T<double> image = q.TransformVector(z);
        ExpectNear(image, v.Normalized(), 1e-9);
        // Columns stay orthonormal.
        eMatrix4T<double> product = q.Transpose() * q;
        for (int i = 0; i < 16; ++i)
            EXPECT_NEAR(product[i], eMatrix4T<double>()[i], 1e-9);
    }
    eMatrix4T<double> half = eRenderCone::ShortestArc(z, eVector3T<double>(0, 0, -1));
    // (0, u.z, -u.y) / sqrt(1 - u.x^2) with u = +z: the half turn about y.
    EXPECT_NEAR(half.At(0, 0), -1.0, 1e-12);
    EXPECT_NEAR(half.At(1, 1), 1.0, 1e-12);
}

TEST_F(EffectTest, ConeFlowIsSharedByAllConesAndSentAsTextureMatrix)
{
    eRenderCone a(1e5, 1e6), b(1e5, 1e6);
    a.setTexFlowSpeed(5.0);
    EXPECT_DOUBLE_EQ(a.getTexFlowSpeed(), 5.0);
    EXPECT_EQ(a.GetType(), 0x8C0);
    m_scene->Add(&a);
    double before = eRenderCone::GetTexFlowOffset();
    auto all = RecordFrame();
    EXPECT_NEAR(eRenderCone::GetTexFlowOffset() - before, 0.005, 1e-12);
    auto uniforms = Of(all, eRecord::Uniform);
    bool sent = false;
    for (auto const& r : uniforms)
        if (r.uniform == "u_textureMatrix")
        {
            sent = true;
            EXPECT_FLOAT_EQ((float)r.values[13], (float)before);
            EXPECT_EQ(r.values[14], 1.0);
        }
    EXPECT_TRUE(sent);
    m_scene->Add(&b);
    before = eRenderCone::GetTexFlowOffset();
    m_scene->RenderFrame();
    EXPECT_NEAR(eRenderCone::GetTexFlowOffset() - before, 0.010, 1e-12);
}

TEST_F(EffectTest, RadarSendsItsOwnUniformsAfterResettingTheWorldMatrix)
{
    eRenderRadarScan radar;
    eMatrix4T<double> m = eMatrix4T<double>::Translation(1.0, 2.0, 3.0);
    radar.SetMatrix(m);
    radar.setPosition(eVector3T<float>(116.0f, 40.0f, 0.0f));
    radar.SetTextureTrans(40);
    radar.SetStartVisibleAz(30.0f);
    radar.SetEndVisibleAz(10.0f); // stored as given
    m_scene->Camera().LookAt(116.0, 40.0, 3e5, 0.0, 0.0);
    m_scene->Add(&radar);
    auto uniforms = Of(RecordFrame(), eRecord::Uniform);
    // Skip the eight frame uniforms of the base.
    ASSERT_GE(uniforms.size(), 16u);
    std::vector<std::string> names;
    for (size_t i = 8; i < 16; ++i)
        names.push_back(uniforms[i].uniform);
    std::vector<std::string> want = {"u_worldMatrix", "u_refHigh", "u_refLow",  "u_projKind",
                                     "u_radarPos",    "u_opacity", "u_startAz", "u_endAz"};
    EXPECT_EQ(names, want);
    EXPECT_EQ(uniforms[8].values[12], 1.0);
    EXPECT_EQ(uniforms[8].values[15], 1.0);
    eVector3T<double> c = m_scene->Camera().GetReferenceCenter();
    EXPECT_NEAR(uniforms[9].values[0] + uniforms[10].values[0], c.x, 1e-6 * std::fabs(c.x) + 1e-3);
    EXPECT_EQ(uniforms[11].op, "Uniform1i");
    EXPECT_EQ(uniforms[11].values[0], 0.0);
    EXPECT_FLOAT_EQ((float)uniforms[13].values[0], 0.4f);
    EXPECT_EQ(uniforms[14].values[0], 30.0);
    EXPECT_EQ(uniforms[15].values[0], 10.0);
}

namespace
{

// A flat disc of radius 100 km around (lon, lat), value 0.9 everywhere.
eMesh* Disc(double lon, double lat)
{
    eMesh* mesh = new eMesh();
    mesh->SetOperationType(eOT_TRIANGLE_LIST);
    eVertexData* vd = mesh->GetVertexData();
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    vd->AddElement(eVET_FLOAT, eVEC_2, eAI_TEXCOORD0, 0);
    int const spokes = 72;
    double const degLat = 100000.0 / 111319.5;
    float centre[5] = {(float)lon, (float)lat, 0.0f, 0.9f, 0.0f};
    vd->AddVertex(centre, 1);
    for (int s = 0; s <= spokes; ++s)
    {
        double a = 2 * 3.141592653589793 * s / spokes;
        float v[5] = {(float)(lon + degLat * std::sin(a) / std::cos(lat * 0.017453292519943295)),
                      (float)(lat + degLat * std::cos(a)), 0.0f, 0.9f, 0.0f};
        vd->AddVertex(v, 1);
    }
    for (int s = 0; s < spokes; ++s)
        for (unsigned short i : {0, s + 1, s + 2})
            mesh->GetIndexData()->AddIndex(i);
    return mesh;
}

} // namespace

TEST_F(EffectTest, RadarSweepShowsOnlyInsideItsAzimuthWindow)
{
    eRenderRadarScan radar;
    radar.AddMesh(Disc(10.0, 20.0));
    radar.SetColorTable(eSystem::GetWorkPath() + "Resources/Icons/colortable1.png", eTFM_NEAREST);
    radar.setPosition(eVector3T<float>(10.0f, 20.0f, 0.0f));
    radar.SetStartVisibleAz(0.0f);
    radar.SetEndVisibleAz(90.0f); // the north-east quarter
    m_scene->Camera().LookAt(10.0, 20.0, 6e5, 0.0, 0.0);
    m_scene->Add(&radar);
    m_scene->RenderFrame();
    auto isLit = [&](int x, int y)
    {
        auto p = Pixel(x, y);
        return p[0] + p[1] + p[2] > 30;
    };
    int c = m_scene->Width() / 2, d = m_scene->Width() / 8;
    EXPECT_TRUE(isLit(c + d, c - d)) << "north-east";
    EXPECT_FALSE(isLit(c - d, c - d)) << "north-west";
    EXPECT_FALSE(isLit(c - d, c + d)) << "south-west";
    EXPECT_FALSE(isLit(c + d, c + d)) << "south-east";
    EXPECT_FALSE(isLit(2, 2)) << "outside the disc";
}

template <> struct CopySubject<eRenderRadarScan>
{
    static constexpr bool kSamePixels = true;
    static void Prepare(KYR::Host::eScene& scene)
    {
        scene.Camera().LookAt(10.0, 20.0, 6e5, 0.0, 0.0);
    }
    static eRenderRadarScan* Make(KYR::Host::eScene&)
    {
        auto* radar = new eRenderRadarScan();
        radar->AddMesh(Disc(10.0, 20.0));
        radar->SetColorTable(eSystem::GetWorkPath() + "Resources/Icons/colortable1.png",
                             eTFM_NEAREST);
        radar->setPosition(eVector3T<float>(10.0f, 20.0f, 0.0f));
        radar->SetStartVisibleAz(0.0f);
        radar->SetEndVisibleAz(90.0f);
        return radar;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Radar, CopyIdiom, ::testing::Types<eRenderRadarScan>);

// A wide cone lying across the view; its texture flows, so frames differ.
template <> struct CopySubject<eRenderCone>
{
    static constexpr bool kSamePixels = false;
    static eRenderCone* Make(KYR::Host::eScene&)
    {
        auto* cone = new eRenderCone(2.0e6, 4.0e6);
        cone->SetTextureFile(eSystem::GetWorkPath() + "Resources/Icons/flow.png");
        double const d = eMathEngine::DEG_TO_RAD, r = eMathEngine::EARTH_RADIUS + 2.0e6;
        cone->setPosture(eMathEngine::SphericalToCartesian(20.0 * d, 0.0, r),
                         eMathEngine::SphericalToCartesian(-20.0 * d, 0.0, r));
        return cone;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Cone, CopyIdiom, ::testing::Types<eRenderCone>);
