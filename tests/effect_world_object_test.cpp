// Station symbols: the scale that follows the camera, the frame's uniforms and colour
// table, the append meshes of flags, and objects hidden through them.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eFile.h"
#include "eHardwareBuffer.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eRenderWorldObject.h"
#include "eTexture.h"
#include <cmath>

using namespace KYR;

namespace
{

class ProbeWorldObject : public eRenderWorldObject
{
public:
    using eRenderWorldObject::m_arAppendMeshes;
    using eRenderWorldObject::m_arObjectIds;
    using eRenderWorldObject::m_PointMatrix;
};

double const kDegToRad = 0.017453292519943295;

// One mesh of square symbols (half size `half` units), one object per position. Layout:
// position (x, y, object number), anchor high, anchor low, (value, level).
eMesh* Squares(std::vector<std::pair<double, double>> const& places, float half, int firstNumber)
{
    eMesh* mesh = new eMesh();
    mesh->SetOperationType(eOT_TRIANGLE_LIST);
    eVertexData* vd = mesh->GetVertexData();
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_TEXCOORD1, 0);
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_TEXCOORD2, 0);
    vd->AddElement(eVET_FLOAT, eVEC_2, eAI_ATTRIB1, 0);
    for (size_t k = 0; k < places.size(); ++k)
    {
        eVector3T<double> w = eMathEngine::SphericalToCartesian(
            places[k].first * kDegToRad, places[k].second * kDegToRad, 6378137.0);
        eVector3T<float> high, low;
        eRenderObject::DoubleToTwoFloat(w, high, low);
        float const corners[4][2] = {{-half, -half}, {half, -half}, {half, half}, {-half, half}};
        for (auto const& c : corners)
        {
            float v[11] = {c[0],   c[1],   (float)(firstNumber + (int)k),
                           high.x, high.y, high.z,
                           low.x,  low.y,  low.z,
                           0.75f,  0.0f};
            vd->AddVertex(v, 1);
        }
        unsigned short b = (unsigned short)(4 * k);
        for (unsigned short i : {0, 1, 2, 0, 2, 3})
            mesh->GetIndexData()->AddIndex((unsigned short)(b + i));
    }
    return mesh;
}

AvoidBound Bound(unsigned char visible, unsigned char selected)
{
    AvoidBound b;
    b.m_bVisible = visible;
    b.m_bSelected = selected;
    return b;
}

// Flag pairs of an append mesh, from its processor store and from its uploaded buffer.
std::vector<int> Flags(eMesh* append, bool uploaded)
{
    std::vector<unsigned char> bytes = append->GetVertexData()->GetVertexBuffer();
    if (uploaded)
    {
        eHardwareVertexBuffer* hb = append->GetVertexData()->GetHardwareBuffer();
        EXPECT_NE(hb, nullptr);
        if (!hb)
            return {};
        bytes.assign((size_t)hb->GetSizeInBytes(), 0xEE);
        hb->ReadData(0, (int)bytes.size(), bytes.data());
    }
    return std::vector<int>(bytes.begin(), bytes.end());
}

std::vector<Host::eRecord> Named(std::vector<Host::eRecord> const& uniforms,
                                 std::string const& name)
{
    std::vector<Host::eRecord> out;
    for (auto const& r : uniforms)
        if (r.uniform == name)
            out.push_back(r);
    return out;
}

} // namespace

TEST_F(EffectTest, WorldObjectScaleFollowsTheCameraByScaleType)
{
    ProbeWorldObject object;
    object.SetSize(2.0);
    m_scene->Add(&object);
    struct Case
    {
        int type;
        double distance, factor, sent;
    };
    Case const cases[] = {{2, 320000.0, 200.0, 160000.0}, {2, 80000.0, 100.0, 80000.0},
                          {0, 800.0, 1.0, 800.0},         {0, 4.0e6, 5000.0, 4.0e6},
                          {1, 4.0e6, 200.0, 4.0e6},       {7, 4.0e6, 1.0, 4.0e6}};
    for (Case const& c : cases)
    {
        object.SetScaleType((ScaleType)c.type);
        m_scene->Camera().LookAt(30.0, 10.0, c.distance, 0.0, 0.0);
        auto uniforms = Of(RecordFrame(), eRecord::Uniform);
        auto point = Named(uniforms, "u_pointMatrix");
        auto distance = Named(uniforms, "u_cameraDistance");
        ASSERT_EQ(point.size(), 1u);
        ASSERT_EQ(distance.size(), 1u);
        double s = 2.0 * c.factor;
        EXPECT_NEAR(point[0].values[0], s, 1e-6 * s) << "type " << c.type;
        EXPECT_NEAR(point[0].values[5], s, 1e-6 * s) << "type " << c.type;
        EXPECT_EQ(point[0].values[10], 1.0);
        EXPECT_NEAR(distance[0].values[0], c.sent, 1e-6 * c.sent) << "type " << c.type;
    }
    // The symbol matrix applies the scale first, then the object's own turn.
    object.SetScaleType(eST_FIXED);
    object.m_PointMatrix = eMatrix4T<float>::RotationZ(0.5f);
    auto point = Named(Of(RecordFrame(), eRecord::Uniform), "u_pointMatrix");
    ASSERT_EQ(point.size(), 1u);
    eMatrix4T<float> want =
        eMatrix4T<float>::RotationZ(0.5f) * eMatrix4T<float>::Scale(400.0f, 400.0f, 1.0f);
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(point[0].values[(size_t)i], want[i], 1e-3) << "element " << i;
    EXPECT_NEAR(point[0].values[1], 400.0 * std::sin(0.5), 1e-3); // x turns towards y
}

TEST_F(EffectTest, WorldObjectSendsThirteenUniformsAndTheTableOnlyWhenUsable)
{
    eRenderWorldObject object;
    object.SetShowType((ShowType)3);
    object.SetShowLevel(4);
    object.SetUniformColor(eVector4T<unsigned char>(51, 102, 0, 255));
    object.SetStartValue(0.25f);
    object.SetRelativeHeight(120.0f);
    object.SetMatrix(eMatrix4T<double>::Translation(5.0, 6.0, 7.0));
    std::string table = (eSystem::GetWorkPath() + "Resources/Icons/colortable1.png").Cstr();
    object.SetColorTable(table);
    m_scene->Camera().LookAt(116.0, 40.0, 3e5, 0.0, 0.0);
    m_scene->Add(&object);

    auto all = RecordFrame();
    auto uniforms = Of(all, eRecord::Uniform);
    ASSERT_GE(uniforms.size(), 8u + 13u);
    std::vector<std::string> names;
    for (size_t i = 8; i < 21; ++i)
        names.push_back(uniforms[i].uniform);
    std::vector<std::string> want = {
        "u_showType",       "u_showLevel",   "u_colorType",     "u_uniformColor", "u_startValue",
        "u_cameraDistance", "u_pointMatrix", "u_worldMatrix",   "u_refHigh",      "u_refLow",
        "" /* reserved */,  "u_projKind",    "u_relativeHeight"};
    EXPECT_EQ(names, want);
    EXPECT_EQ(uniforms[8].op, "Uniform1i");
    EXPECT_EQ(uniforms[8].values[0], 3.0);
    EXPECT_EQ(uniforms[9].values[0], 4.0);
    EXPECT_EQ(uniforms[10].values[0], 0.0);
    EXPECT_FLOAT_EQ((float)uniforms[11].values[0], 0.2f);
    EXPECT_FLOAT_EQ((float)uniforms[11].values[1], 0.4f);
    EXPECT_EQ(uniforms[12].values[0], 0.25);
    EXPECT_EQ(uniforms[15].values[12], 5.0); // the object's matrix alone
    eVector3T<double> c = m_scene->Camera().GetReferenceCenter();
    EXPECT_NEAR(uniforms[16].values[1] + uniforms[17].values[1], c.y, 1e-3);
    EXPECT_EQ(uniforms[18].op, "Uniform1f");
    EXPECT_EQ(uniforms[18].values[0], 0.0);
    EXPECT_EQ(uniforms[19].op, "Uniform1i");
    EXPECT_EQ(uniforms[20].values[0], 120.0);
    // Colour type 0: the table stays off unit 3.
    EXPECT_TRUE(Named(uniforms, "u_colorTable").empty());
    for (auto const& b : Of(all, eRecord::BindTexture))
        EXPECT_EQ(b.count, 0) << "unit " << b.first;

    object.SetColorType(eCT_COLOR_TABLE);
    all = RecordFrame();
    auto sampler = Named(Of(all, eRecord::Uniform), "u_colorTable");
    ASSERT_EQ(sampler.size(), 1u);
    EXPECT_EQ(sampler[0].op, "Uniform1i");
    EXPECT_EQ(sampler[0].values[0], 3.0);
    bool bound = false;
    for (auto const& b : Of(all, eRecord::BindTexture))
        if (b.count != 0)
        {
            bound = true;
            EXPECT_EQ(b.first, 3);
        }
    EXPECT_TRUE(bound);

    // An unreadable table leaves colour type 2 with nothing bound and no sampler.
    object.SetColorTable("Resources/none.png");
    all = RecordFrame();
    EXPECT_TRUE(Named(Of(all, eRecord::Uniform), "u_colorTable").empty());
    for (auto const& b : Of(all, eRecord::BindTexture))
        EXPECT_EQ(b.count, 0);
}

TEST_F(EffectTest, AppendMeshesCarryTheFlagsOfEachObject)
{
    ProbeWorldObject object;
    object.AddMesh(Squares({{0, 0}, {1, 0}, {2, 0}}, 5.0f, 0));
    object.AddMesh(Squares({{3, 0}, {4, 0}}, 5.0f, 0));
    object.CreateAppendMeshs();
    ASSERT_EQ(object.m_arAppendMeshes.size(), 2u);
    eMesh* first = object.m_arAppendMeshes[0];
    eMesh* second = object.m_arAppendMeshes[1];
    EXPECT_EQ(first->GetVertexSize(), 12);
    EXPECT_EQ(second->GetVertexSize(), 8);
    EXPECT_EQ(first->GetVertexData()->GetVertexType(), 0x1000u);
    EXPECT_EQ(first->GetOperationType(), eOT_TRIANGLE_LIST);
    auto const& e = first->GetVertexData()->GetVertexElements();
    ASSERT_EQ(e.size(), 1u);
    EXPECT_EQ(e[0].m_eType, eVET_UNSIGNED_BYTE);
    EXPECT_EQ(e[0].m_nCount, 2);
    EXPECT_EQ(e[0].m_eIndex, eAI_ATTRIB12);
    EXPECT_EQ(e[0].m_bNormalized, 0);
    EXPECT_EQ(object.m_arObjectIds[0], (std::vector<int>{0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2}));
    EXPECT_EQ(Flags(first, true), std::vector<int>(24, 0));
    object.CreateAppendMeshs(); // lists of equal length: nothing more
    EXPECT_EQ(object.m_arAppendMeshes.size(), 2u);

    // Hidden, plain (writes nothing), selected; then hidden+selected and hidden again.
    object.UpdateAppendMesh({Bound(0, 0), Bound(1, 0), Bound(1, 1), Bound(0, 1), Bound(0, 0)});
    std::vector<int> wantFirst = {0, 1, 0, 1, 0, 1, 0, 1, 0, 0, 0, 0,
                                  0, 0, 0, 0, 1, 0, 1, 0, 1, 0, 1, 0};
    std::vector<int> wantSecond = {0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 1, 0, 1};
    EXPECT_EQ(Flags(first, false), wantFirst);
    EXPECT_EQ(Flags(first, true), wantFirst);
    EXPECT_EQ(Flags(second, true), wantSecond);

    // A shorter list leaves the rest at 0 0; an empty one clears all and uploads again.
    object.UpdateAppendMesh({Bound(0, 0)});
    std::vector<int> one(24, 0);
    for (int i = 0; i < 4; ++i)
        one[(size_t)(2 * i + 1)] = 1;
    EXPECT_EQ(Flags(first, true), one);
    EXPECT_EQ(Flags(second, true), std::vector<int>(16, 0));
    object.UpdateAppendMesh({});
    EXPECT_EQ(Flags(first, true), std::vector<int>(24, 0));
}

TEST_F(EffectTest, AppendMeshNumbersCountFromZeroAndMeshesReadLateAreEmpty)
{
    ProbeWorldObject object;
    // Objects numbered 5 and 6: the first bound only finds the count, the second hides 5.
    object.AddMesh(Squares({{0, 0}, {1, 0}}, 5.0f, 5));
    object.UpdateAppendMesh({Bound(0, 0), Bound(0, 0)});
    std::vector<int> want = {0, 1, 0, 1, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(Flags(object.m_arAppendMeshes[0], true), want);

    // A mesh whose vertices went up before its append mesh was made reads as empty.
    ProbeWorldObject late;
    late.AddMesh(Squares({{0, 0}}, 5.0f, 0));
    m_scene->Add(&late); // Initialize drops the processor copy
    m_scene->RenderFrame();
    ASSERT_EQ(late.m_arAppendMeshes.size(), 1u);
    EXPECT_EQ(late.m_arAppendMeshes[0]->GetVertexSize(), 0);
    EXPECT_TRUE(late.m_arObjectIds[0].empty());
}

TEST_F(EffectTest, HiddenStationDisappearsWhileItsNeighboursStay)
{
    eRenderWorldObject object;
    object.AddMesh(Squares({{8.0, 20.0}, {10.0, 20.0}, {12.0, 20.0}}, 20.0f, 0));
    object.SetUniformColor(eVector4T<unsigned char>(0, 255, 0, 255));
    object.CreateAppendMeshs();
    m_scene->Camera().LookAt(10.0, 20.0, 2.0e6, 0.0, 0.0);
    m_scene->Add(&object);
    auto green = [&](int x, int y)
    {
        auto p = Pixel(x, y);
        return p[1] > 200 && p[0] < 60 && p[2] < 60;
    };
    int c = m_scene->Width() / 2;
    // About 18.7 pixels between stations at this distance.
    int west = c - 19, east = c + 19;
    auto frame = Of(RecordFrame(), eRecord::Draw);
    ASSERT_EQ(frame.size(), 1u);
    EXPECT_EQ(frame[0].op, "glDrawElements");
    EXPECT_EQ(frame[0].count, 18);
    EXPECT_TRUE(green(west, c));
    EXPECT_TRUE(green(c, c));
    EXPECT_TRUE(green(east, c));
    EXPECT_FALSE(green(c, c - 12)) << "between the rows";

    object.UpdateAppendMesh({AvoidBound(), Bound(0, 0), AvoidBound()});
    m_scene->RenderFrame();
    EXPECT_TRUE(green(west, c));
    EXPECT_FALSE(green(c, c));
    EXPECT_TRUE(green(east, c));

    // Selected: marked brighter and larger, but still there.
    object.UpdateAppendMesh({AvoidBound(), Bound(1, 1), AvoidBound()});
    m_scene->RenderFrame();
    auto p = Pixel(c, c);
    EXPECT_GT(p[0], 100);
    EXPECT_GT(p[1], 200);
}

// Three stations with the middle one hidden through the append mesh, coloured from the table.
template <> struct CopySubject<eRenderWorldObject>
{
    static constexpr bool kSamePixels = true;
    static void Prepare(Host::eScene& scene) { scene.Camera().LookAt(10.0, 20.0, 2.0e6, 0.0, 0.0); }
    static eRenderWorldObject* Make(Host::eScene&)
    {
        auto* object = new eRenderWorldObject();
        object->AddMesh(Squares({{8.0, 20.0}, {10.0, 20.0}, {12.0, 20.0}}, 20.0f, 0));
        object->SetColorTable((eSystem::GetWorkPath() + "Resources/Icons/colortable1.png").Cstr());
        object->SetColorType(eCT_COLOR_TABLE);
        object->UpdateAppendMesh({AvoidBound(), Bound(0, 0), AvoidBound()});
        return object;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(WorldObject, CopyIdiom, ::testing::Types<eRenderWorldObject>);
