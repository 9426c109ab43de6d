// One frame of a mesh object as the host sees it, its life cycle, and the double split.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eFile.h"
#include "eMaterial.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eProgramLibrary.h"
#include "eRenderEffectFactory.h"
#include "eRenderObject.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <cmath>

using namespace KYR;

namespace
{

// Exposes the protected state that the frame changes.
class ProbeObject : public eRenderObject
{
public:
    using eRenderObject::m_bInitialized;
    using eRenderObject::m_nProjectionKind;
    using eRenderObject::m_pTexture;
};

eMesh* TriangleMesh(int triangles)
{
    eMesh* mesh = new eMesh();
    mesh->SetOperationType(eOT_TRIANGLE_LIST);
    eVertexData* vd = mesh->GetVertexData();
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    for (int i = 0; i < triangles * 3; ++i)
    {
        float v[3] = {(float)i, (float)(i % 3), 0.0f};
        vd->AddVertex(v, 1);
        mesh->GetIndexData()->AddIndex((unsigned short)i);
    }
    return mesh;
}

eMaterial* ColorMaterial()
{
    eMaterial* material = new eMaterial();
    ePass* pass = material->CreateTechnique()->CreatePass();
    pass->SetProgram("Color");
    pass->SetLightingEnabled(1);
    pass->SetAmbient(eVector4T<float>(0.1f, 0.2f, 0.3f, 1.0f));
    pass->SetDiffuse(eVector4T<float>(0.4f, 0.5f, 0.6f, 1.0f));
    pass->SetSpecular(eVector4T<float>(0.7f, 0.8f, 0.9f, 1.0f));
    pass->SetShininess(7.0f);
    return material;
}

void ExpectMatrix(std::vector<double> const& got, eMatrix4T<float> const& want, double tol)
{
    ASSERT_EQ(got.size(), 16u);
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(got[(size_t)i], want[i], tol) << "element " << i;
}

// Replaces the projection uniform from the render callback, as a derived effect might.
void ScrambleProjection(void*)
{
    eRenderProgram* rp = Host::eProgramLibrary::Get().Find("Color");
    float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    rp->GetProgram()->UniformMatrix4(rp->GetUniform()->m_nProjectionMatrix, 1, 0, identity);
}

} // namespace

TEST(RenderEffectFactory, AnnouncesTheLibraryAndMakesNothing)
{
    std::unique_ptr<eRenderableFactory> factory(CreateRenderEffectFactory());
    ASSERT_TRUE(factory);
    EXPECT_STREQ(factory->GetName().Cstr(), "KyrSpace RenderEffect");
    EXPECT_EQ(factory->CreateRenderable(0x880), nullptr);
    EXPECT_FALSE(factory->IsSupport(0x880));
}

TEST_F(EffectTest, OneFrameQueuesStartsDrawsEachMeshAndEnds)
{
    ProbeObject obj;
    obj.SetMaterial(ColorMaterial());
    obj.AddMesh(TriangleMesh(1));
    obj.AddMesh(nullptr);
    obj.AddMesh(TriangleMesh(2));
    obj.SetTextureFile(eSystem::GetWorkPath() + "Resources/Icons/wind.png");
    ASSERT_NE(obj.m_pTexture, nullptr);
    eMatrix4T<double> model = eMatrix4T<double>::Translation(10.0, 20.0, 30.0);
    obj.SetMatrix(model);
    obj.connectCallbackRender(nullptr, ScrambleProjection);
    m_scene->Add(&obj);

    // A texture left on unit 5 by someone else must be unbound by the frame.
    GLuint stray = 0;
    glGenTextures(1, &stray);
    glActiveTexture(GL_TEXTURE5);
    glBindTexture(GL_TEXTURE_2D, stray);
    glActiveTexture(GL_TEXTURE0);

    std::vector<eRecord> all = RecordFrame();

    auto queue = Of(all, eRecord::Queue);
    ASSERT_EQ(queue.size(), 1u);
    EXPECT_EQ(queue[0].op, "AddRenderable");
    EXPECT_EQ(queue[0].first, 5);
    EXPECT_EQ(queue[0].technique, obj.GetMaterial()->GetTechnique(0));
    EXPECT_EQ(queue[0].object, &obj);

    // The uniforms StartRender sends, in order, before the first draw.
    std::vector<eRecord> start;
    for (auto const& r : all)
    {
        if (r.kind == eRecord::Draw)
            break;
        if (r.kind == eRecord::Uniform)
            start.push_back(r);
    }
    std::vector<std::string> ops, names;
    for (auto const& r : start)
        ops.push_back(r.op);
    std::vector<std::string> wantOps = {"UniformMatrix4", "UniformMatrix4", "UniformMatrix4",
                                        "Uniform1f",      "UniformVector4", "UniformVector4",
                                        "UniformVector4", "Uniform1f",      "UniformMatrix4"};
    ASSERT_EQ(ops, wantOps);
    EXPECT_EQ(start[0].uniform, "u_worldMatrix");
    EXPECT_EQ(start[1].uniform, "u_viewMatrix");
    EXPECT_EQ(start[2].uniform, "u_projectionMatrix");
    EXPECT_EQ(start[3].uniform, "u_lightingEnabled");
    EXPECT_EQ(start[4].uniform, "u_ambient");
    EXPECT_EQ(start[5].uniform, "u_diffuse");
    eCamera& cam = m_scene->Camera();
    eVector3T<double> c = cam.GetReferenceCenter();
    eMatrix4T<float> w = eMatrix4T<float>::Translation((float)-c.x, (float)-c.y, (float)-c.z) *
                         cam.GetRelativeWorldMatrix() * eMatrix4T<float>(model);
    ExpectMatrix(start[0].values, w, 1e-3);
    ExpectMatrix(start[1].values, cam.GetRelativeViewMatrix(), 0.0);
    ExpectMatrix(start[2].values, cam.GetRelativeProjectionMatrix(), 0.0);
    EXPECT_EQ(start[3].values, std::vector<double>{1.0});
    EXPECT_NEAR(start[4].values[1], 0.2, 1e-6);
    EXPECT_NEAR(start[6].values[2], 0.9, 1e-6);
    EXPECT_EQ(start[7].values, std::vector<double>{7.0});

    auto draws = Of(all, eRecord::Draw);
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0].op, "DrawIndexed");
    EXPECT_EQ(draws[0].count, 3);
    EXPECT_EQ(draws[1].count, 6);

    // EndRender: unit 0 active, nothing bound on units 0-31, camera projection restored.
    GLint active = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    EXPECT_EQ(active, GL_TEXTURE0);
    for (int unit = 0; unit < 32; ++unit)
    {
        glActiveTexture(GL_TEXTURE0 + unit);
        GLint bound = -1;
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
        EXPECT_EQ(bound, 0) << "unit " << unit;
    }
    glActiveTexture(GL_TEXTURE0);
    eRenderProgram* rp = Host::eProgramLibrary::Get().Find("Color");
    float projection[16];
    glGetUniformfv(rp->GetProgram()->GetProgramID(), rp->GetUniform()->m_nProjectionMatrix,
                   projection);
    for (int i = 0; i < 16; ++i)
        EXPECT_FLOAT_EQ(projection[i], cam.GetRelativeProjectionMatrix()[i]);
    glDeleteTextures(1, &stray);
}

TEST_F(EffectTest, WithoutMaterialNothingIsDrawnAndEndRenderDoesNotRun)
{
    ProbeObject obj;
    obj.AddMesh(TriangleMesh(1));
    m_scene->Add(&obj);
    KYR::Host::eRecorder::Get().Start();
    EXPECT_FALSE(obj.Render(&m_scene->Engine(), &m_scene->RenderSystem(), &m_scene->Camera(),
                            &m_scene->Viewport()));
    KYR::Host::eRecorder::Get().Stop();
    auto all = KYR::Host::eRecorder::Get().Records();
    EXPECT_TRUE(Of(all, eRecord::Draw).empty());
    EXPECT_TRUE(Of(all, eRecord::ActiveTexture).empty());

    obj.m_bVisible = 0;
    EXPECT_TRUE(Of(RecordFrame(), eRecord::Queue).empty());
}

TEST_F(EffectTest, EmptyObjectRunsItsUniformsAndDrawsNothing)
{
    ProbeObject obj;
    obj.SetMaterial(ColorMaterial());
    m_scene->Add(&obj);
    auto all = RecordFrame();
    EXPECT_TRUE(Of(all, eRecord::Draw).empty());
    EXPECT_FALSE(Of(all, eRecord::Uniform).empty());
    EXPECT_EQ(Of(all, eRecord::ActiveTexture).size(), 33u);
}

TEST_F(EffectTest, ProjectionKindFollowsSceneModeAndProjectionType)
{
    ProbeObject obj;
    obj.SetMaterial(ColorMaterial());
    auto frame = [&]()
    {
        obj.Render(&m_scene->Engine(), &m_scene->RenderSystem(), &m_scene->Camera(),
                   &m_scene->Viewport());
        return obj.m_nProjectionKind;
    };
    eProjection* projection = m_scene->CoordSys().GetPrjCoordSys().GetProjection();
    m_scene->Camera().SetSceneMode(eSM_PLANE);
    struct
    {
        int type, kind;
    } const table[] = {{PJ_PLATE_CARREE, 1},
                       {PJ_SPHERE_MERCATOR, 2},
                       {PJ_MERCATOR, 2},
                       {PJ_LAMBERT_CONFORMAL, 3},
                       {PJ_ALBERS, 4}};
    for (auto const& t : table)
    {
        m_scene->CoordSys().GetPrjCoordSys().SetProjectionType(t.type);
        ASSERT_EQ(projection->GetProjectionType(), t.type);
        EXPECT_EQ(frame(), t.kind) << "type " << t.type;
    }
    // A type outside the table keeps the last frame's kind.
    m_scene->CoordSys().GetPrjCoordSys().SetProjectionType(43999);
    ASSERT_EQ(projection->GetProjectionType(), 43999);
    EXPECT_EQ(frame(), 4);
    m_scene->Camera().SetSceneMode(eSM_GLOBE);
    EXPECT_EQ(frame(), 0);
}

TEST(DoubleToTwoFloat, SplitsIntoHighAndRemainder)
{
    float high = 1, low = 1;
    eRenderObject::DoubleToTwoFloat(6378137.0, high, low);
    EXPECT_EQ(high, 6378137.0f);
    EXPECT_EQ(low, 0.0f);
    eRenderObject::DoubleToTwoFloat(0.1, high, low);
    EXPECT_NE(low, 0.0f);
    EXPECT_LT(std::fabs((double)high + (double)low - 0.1), std::fabs((double)high - 0.1));

    eVector3T<float> h, l;
    eRenderObject::DoubleToTwoFloat(eVector3T<double>(6378137.25, -0.1, 1e8 + 0.5), h, l);
    EXPECT_DOUBLE_EQ((double)h.x + (double)l.x, 6378137.25);
    EXPECT_NE(l.y, 0.0f);
    EXPECT_DOUBLE_EQ((double)h.z + (double)l.z, 1e8 + 0.5);
}

TEST_F(EffectTest, ResetAndUnInitializeReturnToUninitialised)
{
    ProbeObject obj;
    obj.SetMaterial(ColorMaterial());
    obj.AddMesh(TriangleMesh(1));
    obj.SetTextureFile(eSystem::GetWorkPath() + "Resources/Icons/wind.png");
    m_scene->Add(&obj);
    m_scene->RenderFrame();
    ASSERT_TRUE(obj.m_bInitialized);
    eMesh* mesh = obj.GetMesh(0);
    EXPECT_TRUE(mesh->GetVertexData()->GetVertexBuffer().empty()) << "CPU copy kept";
    EXPECT_NE(obj.m_pTexture->GetTextureID(), 0u);

    EXPECT_TRUE(obj.Reset());
    EXPECT_FALSE(obj.m_bInitialized);
    EXPECT_EQ(mesh->GetVertexData()->GetHardwareBuffer(), nullptr);
    EXPECT_NE(obj.m_pTexture->GetTextureID(), 0u) << "Reset keeps the texture";
    m_scene->RenderFrame();
    EXPECT_TRUE(obj.m_bInitialized);

    EXPECT_TRUE(obj.UnInitialize(&m_scene->Engine()));
    EXPECT_FALSE(obj.m_bInitialized);
    EXPECT_EQ(obj.m_pTexture->GetTextureID(), 0u);
    m_scene->RenderFrame();
    EXPECT_TRUE(obj.m_bInitialized);

    EXPECT_EQ(obj.GetMesh(-1), nullptr);
    EXPECT_EQ(obj.GetMesh(1), nullptr);
    EXPECT_EQ(obj.GetMesh(0), mesh);

    obj.SetTextureFile("/nonexistent/picture.png");
    EXPECT_EQ(obj.m_pTexture, nullptr);
}

TEST_F(EffectTest, CopiesShareWhatTheyCopyAndFreeOnlyWhatTheyAdd)
{
    auto* original = new ProbeObject();
    original->SetMaterial(ColorMaterial());
    original->AddMesh(TriangleMesh(1));
    original->SetTextureFile(eSystem::GetWorkPath() + "Resources/Icons/wind.png");
    m_scene->Add(original);
    m_scene->RenderFrame();

    auto* copy = new ProbeObject(*original);
    EXPECT_EQ(copy->GetMesh(0), original->GetMesh(0));
    EXPECT_EQ(copy->GetMaterial(), original->GetMaterial());
    EXPECT_EQ(copy->m_pTexture, original->m_pTexture);
    copy->AddMesh(TriangleMesh(2)); // the copy's own, freed with it
    copy->SetTextureFile(eSystem::GetWorkPath() + "Resources/Icons/flow.png");
    EXPECT_NE(copy->m_pTexture, original->m_pTexture);
    ProbeObject assigned;
    assigned = *original;
    EXPECT_EQ(assigned.GetMesh(0), original->GetMesh(0));
    delete copy;

    // The original still draws its mesh with its own texture after the copy is gone.
    ASSERT_NE(original->m_pTexture, nullptr);
    EXPECT_NE(original->m_pTexture->GetTextureID(), 0u);
    auto draws = Of(RecordFrame(), eRecord::Draw);
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0].count, 3);
    m_scene->Remove(original);
    delete original; // the assigned copy still holds what they shared, and frees it last
}

namespace
{

// A triangle above the Earth facing the camera over (0, 0), in world coordinates.
eMesh* FacingTriangle()
{
    eMesh* mesh = new eMesh();
    mesh->SetOperationType(eOT_TRIANGLE_LIST);
    eVertexData* vd = mesh->GetVertexData();
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_ATTRIB1, 0);
    double const d = eMathEngine::DEG_TO_RAD;
    for (auto lonLat : {std::make_pair(-20.0, -15.0), {20.0, -15.0}, {0.0, 20.0}})
    {
        eVector3T<double> p = eMathEngine::SphericalToCartesian(lonLat.first * d, lonLat.second * d,
                                                                eMathEngine::EARTH_RADIUS + 1e6);
        float v[6] = {(float)p.x, (float)p.y, (float)p.z, 1.0f, 0.0f, 0.0f};
        vd->AddVertex(v, 1);
    }
    for (unsigned short i : {0, 1, 2})
        mesh->GetIndexData()->AddIndex(i);
    return mesh;
}

// The application's own state for the draw: the program's colour.
void Orange(void*)
{
    eRenderProgram* rp = Host::eProgramLibrary::Get().Find("Color");
    float orange[4] = {1.0f, 0.5f, 0.0f, 1.0f};
    rp->GetProgram()->UniformVector4(rp->GetUniform()->m_nColor, orange);
}

} // namespace

template <> struct CopySubject<eRenderObject>
{
    static constexpr bool kSamePixels = true;
    static eRenderObject* Make(Host::eScene&)
    {
        auto* object = new eRenderObject();
        object->SetMaterial(ColorMaterial());
        object->AddMesh(FacingTriangle());
        object->SetTextureFile(eSystem::GetWorkPath() + "Resources/Icons/wind.png");
        object->connectCallbackRender(nullptr, Orange);
        return object;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(RenderObject, CopyIdiom, ::testing::Types<eRenderObject>);
