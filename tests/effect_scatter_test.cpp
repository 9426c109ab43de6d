// Scatter point set: slot pool, records in the vertex buffer, picking, the category
// visibility picture, and what reaches the screen.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eChoiceObject.h"
#include "eHardwareBuffer.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eRenderScatterPointSet.h"
#include <epoxy/gl.h>
#include <cstring>

using namespace KYR;

namespace
{

class ScatterProbe : public eRenderScatterPointSet
{
public:
    using eRenderScatterPointSet::eRenderScatterPointSet;
    using eRenderScatterPointSet::m_arFreeSlots;
    using eRenderScatterPointSet::m_bInitialized;
    using eRenderScatterPointSet::m_bVisibleDirty;
    using eRenderScatterPointSet::m_nPointCount;
    using eRenderScatterPointSet::m_nVisibleTexture;
    using eRenderScatterPointSet::m_pChoiceVertexData;
    using eRenderScatterPointSet::m_pVertexData;
    using eRenderScatterPointSet::m_pVisiblePixels;
    using eRenderScatterPointSet::ReCreatVisibleTexture;

    struct Rec
    {
        int id;
        float v[4];
    };
    static Rec Read(eVertexData* store, int slot)
    {
        Rec r{};
        unsigned char b[20];
        EXPECT_TRUE(store->GetHardwareBuffer()->ReadData(slot * 20, 20, b));
        std::memcpy(&r.id, b, 4);
        std::memcpy(r.v, b + 4, 16);
        return r;
    }
};

eScatterPoint Pt(int id, double lon, double lat, double h = 0.0, double w = 1.0)
{
    return eScatterPoint(id, lon, lat, h, w);
}

eVector3T<double> World(double lon, double lat, double h)
{
    double const k = 0.017453292519943295;
    return eMathEngine::SphericalToCartesian(lon * k, lat * k, 6378137.0 + h);
}

struct HitLog
{
    int calls = 0;
    std::vector<int> slots;
    std::vector<eScatterPoint> points;
};

bool OnHit(void* user, std::vector<int>& slots, std::vector<eScatterPoint>& points)
{
    HitLog* log = static_cast<HitLog*>(user);
    ++log->calls;
    log->slots = slots;
    log->points = points;
    return true;
}

} // namespace

TEST_F(EffectTest, ScatterSlotsAdmitOneBeyondThePoolAndReuseOldestFreedFirst)
{
    ScatterProbe set;
    set.SetPoolSize(4);
    eScatterPoint p = Pt(1, 0, 0);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(set.AddScatterPoint(p), i); // slot 4 (count == pool) still passes
    EXPECT_EQ(set.AddScatterPoint(p), -1);
    EXPECT_EQ(set.m_nPointCount, 5);

    ScatterProbe reuse;
    for (int i = 0; i < 6; ++i)
        reuse.AddScatterPoint(p);
    reuse.DeleteScatterPoint(2);
    EXPECT_EQ(reuse.AddScatterPoint(p), 2);
    reuse.DeleteScatterPoint(4);
    reuse.DeleteScatterPoint(1);
    EXPECT_EQ(reuse.AddScatterPoint(p), 4);
    EXPECT_EQ(reuse.AddScatterPoint(p), 1);
    EXPECT_EQ(reuse.AddScatterPoint(p), 6);
    EXPECT_EQ(reuse.m_nPointCount, 7);
}

TEST_F(EffectTest, ScatterRecordsAreTwentyBytesNarrowedToFloat)
{
    ScatterProbe set;
    set.SetPoolSize(8);
    eScatterPoint a = Pt(7, 116.123456789, 39.987654321, 1234.5678, 1.0);
    set.AddScatterPoint(a);
    eVertexData* vd = set.m_pVertexData;
    ASSERT_NE(vd, nullptr);
    EXPECT_EQ(vd->GetVertexType(), 3u);
    EXPECT_EQ(vd->GetVertexStride(), 20);
    auto const& el = vd->GetVertexElements();
    ASSERT_EQ(el.size(), 2u);
    EXPECT_EQ(el[0].m_eType, eVET_INT);
    EXPECT_EQ(el[0].m_eIndex, eAI_ATTRIB1);
    EXPECT_EQ(el[1].m_eType, eVET_FLOAT);
    EXPECT_EQ(el[1].m_nCount, 4);
    EXPECT_EQ(el[1].m_eIndex, eAI_POSITION);
    EXPECT_EQ(el[1].m_nOffset, 4);
    EXPECT_EQ(vd->GetHardwareBuffer()->GetSizeInBytes(), 8 * 20);
    EXPECT_EQ(vd->GetHardwareBuffer()->GetUsage(), 35048u);

    auto r = ScatterProbe::Read(vd, 0);
    EXPECT_EQ(r.id, 7);
    EXPECT_EQ(r.v[0], (float)a.x);
    EXPECT_EQ(r.v[1], (float)a.y);
    EXPECT_EQ(r.v[2], (float)a.z);
    EXPECT_EQ(r.v[3], 1.0f);

    set.DeleteScatterPoint(0);
    r = ScatterProbe::Read(vd, 0);
    EXPECT_EQ(r.id, -1);
    EXPECT_EQ(r.v[0], 0.0f);
    EXPECT_EQ(r.v[2], 0.0f);
    EXPECT_EQ(r.v[3], 1.0f);

    // An update of a selected slot rewrites the overlay with the choice type.
    eScatterPoint b = Pt(5, 10, 20);
    int s = set.AddScatterPoint(b);
    set.SetChoiceType(3);
    set.SetScatterPointIsChoice(s, true);
    eScatterPoint moved = Pt(5, 11, 21);
    set.UpDateScatterPoint(s, moved);
    EXPECT_EQ(moved.id, 3);
    EXPECT_EQ(ScatterProbe::Read(vd, s).id, 5);
    r = ScatterProbe::Read(set.m_pChoiceVertexData, s);
    EXPECT_EQ(r.id, 3);
    EXPECT_EQ(r.v[0], 11.0f);
    // Deselecting blanks the overlay record with w 0.
    set.SetScatterPointIsChoice(s, false);
    r = ScatterProbe::Read(set.m_pChoiceVertexData, s);
    EXPECT_EQ(r.id, -1);
    EXPECT_EQ(r.v[3], 0.0f);
    EXPECT_TRUE(set.GetChoicePoint().empty());
}

TEST_F(EffectTest, ScatterPickSelectsTheNearestPointOnTheRay)
{
    eCamera& cam = m_scene->Camera();
    cam.LookAt(0.0, 0.0, 2.0e7, 0.0, 0.0);
    ScatterProbe set;
    HitLog log;
    set.SetHitCallBackFun(OnHit, &log);
    set.SetChoiceType(0);
    eScatterPoint p[] = {Pt(4, 10, 10), Pt(4, 20, 5, 0, 0.0), Pt(4, -10, 0), Pt(4, 0, 0),
                         Pt(6, 0, 0, 1e6)};
    for (auto& q : p)
        set.AddScatterPoint(q);
    set.DeleteScatterPoint(2);
    eVector3T<double> eye = cam.GetCameraPosition();
    double depth = 0.0;
    auto pick = [&](eVector3T<double> origin, eVector3T<double> at, bool keep)
    {
        eQueryFilter f;
        f.m_vOrigin = origin;
        f.m_vDirection = (at - origin).Normalized();
        f.m_bKeep = keep ? 1 : 0;
        return set.Query(&m_scene->Engine(), &cam, &f, depth);
    };

    EXPECT_TRUE(pick(eye, World(10, 10, 0), false));
    ASSERT_EQ(log.calls, 1);
    EXPECT_EQ(log.slots, std::vector<int>{0});
    EXPECT_EQ(log.points[0].id, 0); // the choice type
    EXPECT_FALSE(pick(eye, World(20, 5, 0), false)) << "w 0";
    EXPECT_FALSE(pick(eye, World(-10, 0, 0), false)) << "deleted";
    EXPECT_TRUE(set.GetChoicePoint().empty());
    EXPECT_EQ(log.calls, 1) << "a plain miss reports nothing";
    // From beyond the point, looking away from it.
    eVector3T<double> beyond = World(10, 10, 1e5);
    EXPECT_FALSE(pick(beyond, beyond * 2.0, false));

    // Both slot 3 (ground) and slot 4 (1000 km up) lie on the ray: the higher is nearer.
    EXPECT_TRUE(pick(eye, World(0, 0, 0), false));
    std::vector<eChoiceObject> const choices = set.GetChoicePoint();
    ASSERT_EQ(choices.size(), 1u);
    EXPECT_EQ(choices[0].index, 4);
    EXPECT_EQ(choices[0].point.z, 1e6);
    EXPECT_EQ(choices[0].point.id, 0) << "the choice type stands in the id";
    auto overlay = ScatterProbe::Read(set.m_pChoiceVertexData, 4);
    EXPECT_EQ(overlay.id, 0);

    EXPECT_TRUE(pick(eye, World(0, 0, 0), true));
    EXPECT_EQ(set.GetChoicePoint().size(), 2u) << "a kept pick lists twice";
    EXPECT_EQ(log.slots, (std::vector<int>{4, 4}));
    // A kept miss reports the old selection again.
    int before = log.calls;
    EXPECT_FALSE(pick(eye, World(50, 50, 0), true));
    EXPECT_EQ(log.calls, before + 1);

    EXPECT_FALSE(pick(eye, World(50, 50, 0), false));
    EXPECT_TRUE(set.GetChoicePoint().empty());
    EXPECT_EQ(ScatterProbe::Read(set.m_pChoiceVertexData, 4).id, -1);
    set.SetScatterPointIsChoice(3, true);
    set.SetScatterPointIsChoice(3, true);
    EXPECT_EQ(set.GetChoicePoint().size(), 1u);
    // An icon without size covers nothing, not even the point right on the ray.
    set.SetScatterPointSize(-5.0e4);
    EXPECT_FALSE(pick(eye, World(10, 10, 0), false));
}

TEST_F(EffectTest, ScatterVisibilityPictureIsRebuiltOnlyWhenDirty)
{
    ScatterProbe set(32);
    int const k = 37; // column 5, row 1
    set.SetScatterVisible(k, false);
    set.SetScatterVisible(32 * 32, false); // out of range: ignored
    EXPECT_FALSE(set.GetScatterVisible(k));
    EXPECT_FALSE(set.GetScatterVisible(-1));
    EXPECT_TRUE(set.GetScatterVisible(k + 1));
    set.ReCreatVisibleTexture();
    ASSERT_NE(set.m_pVisiblePixels, nullptr);
    ASSERT_NE(set.m_nVisibleTexture, 0u);
    EXPECT_FALSE(set.m_bVisibleDirty);

    // Read the uploaded picture back from OpenGL.
    std::vector<float> tex(1024 * 1024, -1.0f);
    glBindTexture(GL_TEXTURE_2D, set.m_nVisibleTexture);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RED, GL_FLOAT, tex.data());
    int zeros = 0;
    for (int r = 0; r < 1024; ++r)
        for (int c = 0; c < 1024; ++c)
        {
            bool inCell = c / 32 == 5 && r / 32 == 1;
            float v = tex[(size_t)r * 1024 + c];
            zeros += v == 0.0f;
            if (inCell != (v == 0.0f))
                ADD_FAILURE() << "texel " << c << ", " << r << " = " << v;
        }
    EXPECT_EQ(zeros, 32 * 32);

    set.m_pVisiblePixels[0] = 7.0f;
    set.ReCreatVisibleTexture();
    EXPECT_EQ(set.m_pVisiblePixels[0], 7.0f) << "not dirty: not rebuilt";
    set.SetScatterVisible(k, true);
    set.ReCreatVisibleTexture();
    EXPECT_EQ(set.m_pVisiblePixels[0], 1.0f);
    EXPECT_EQ(set.m_pVisiblePixels[(size_t)40 * 1024 + 165], 1.0f);
}

TEST_F(EffectTest, ScatterUnInitializeKeepsFreeSlotsAndSelection)
{
    ScatterProbe set;
    m_scene->Add(&set);
    EXPECT_TRUE(set.m_bInitialized) << "atlas loaded";
    eScatterPoint p = Pt(2, 0, 0);
    for (int i = 0; i < 3; ++i)
        set.AddScatterPoint(p);
    set.DeleteScatterPoint(1);
    set.SetScatterPointIsChoice(2, true);
    m_scene->RenderFrame();
    EXPECT_FALSE(set.UnInitialize(&m_scene->Engine()));
    EXPECT_TRUE(set.m_bInitialized);
    EXPECT_EQ(set.m_nPointCount, 0);
    EXPECT_EQ(set.m_pVertexData, nullptr);
    EXPECT_EQ(set.m_pVisiblePixels, nullptr);
    EXPECT_EQ(set.m_nVisibleTexture, 0u);
    EXPECT_EQ(set.m_arFreeSlots, std::vector<int>{1});
    EXPECT_EQ(set.GetChoicePoint().size(), 1u);
    // The freed slot is handed out although it lies above the new count.
    EXPECT_EQ(set.AddScatterPoint(p), 1);
    EXPECT_EQ(set.m_nPointCount, 0);
    m_scene->Remove(&set);
}

TEST_F(EffectTest, ScatterCopySharesBuffersAndLeavesThemToItsSource)
{
    ScatterProbe set;
    m_scene->Add(&set);
    eScatterPoint p = Pt(2, 0, 0);
    set.AddScatterPoint(p);
    set.SetScatterPointIsChoice(0, true);
    m_scene->RenderFrame();
    ASSERT_NE(set.m_nVisibleTexture, 0u);
    {
        ScatterProbe copy(set);
        EXPECT_EQ(copy.m_pVertexData, set.m_pVertexData);
        EXPECT_EQ(copy.m_nVisibleTexture, set.m_nVisibleTexture);
        copy.SetScatterVisible(2, false);
        EXPECT_TRUE(set.GetScatterVisible(2)) << "the category flags are its own";
        ScatterProbe assigned(4);
        assigned = set;
        EXPECT_EQ(assigned.m_pChoiceVertexData, set.m_pChoiceVertexData);
    }
    // Both copies are gone; the source's buffers and textures are still there.
    EXPECT_EQ(ScatterProbe::Read(set.m_pVertexData, 0).id, 2);
    EXPECT_EQ(ScatterProbe::Read(set.m_pChoiceVertexData, 0).id, 0);
    EXPECT_TRUE(glIsTexture(set.m_nVisibleTexture));
    m_scene->Remove(&set);

    // What a copy makes itself is its own to free.
    ScatterProbe empty;
    ScatterProbe copy(empty);
    EXPECT_EQ(copy.AddScatterPoint(p), 0);
    EXPECT_EQ(empty.m_pVertexData, nullptr);
}

TEST_F(EffectTest, ScatterFrameSendsTenUniformsAndDrawsBothBuffers)
{
    ScatterProbe a, b;
    eScatterPoint p = Pt(1, 0, 0);
    a.AddScatterPoint(p);
    a.AddScatterPoint(p);
    a.SetScatterPointIsChoice(0, true);
    m_scene->Add(&a);
    m_scene->Add(&b);
    auto all = RecordFrame();
    auto queued = Of(all, eRecord::Queue);
    ASSERT_EQ(queued.size(), 2u);
    EXPECT_EQ(queued[0].op, "AddTransparentRenderable");
    EXPECT_EQ(queued[0].first, 8);
    EXPECT_EQ(queued[0].technique, queued[1].technique) << "one technique for all sets";
    auto u = Of(all, eRecord::Uniform);
    ASSERT_GE(u.size(), 10u);
    std::vector<std::string> names;
    for (size_t i = 0; i < 10; ++i)
        names.push_back(u[i].uniform);
    std::vector<std::string> want = {
        "u_worldMatrix", "u_pointSize", "u_refCenter", "u_reserved",   "u_texture0",
        "u_texture1",    "u_gridSize",  "u_projMode",  "u_viewMatrix", "u_projectionMatrix"};
    EXPECT_EQ(names, want);
    EXPECT_EQ(u[1].values[0], 50000.0);
    EXPECT_EQ(u[2].values[3], 0.0);
    EXPECT_EQ(u[5].values[0], 1.0);
    EXPECT_EQ(u[6].values[0], 32.0);
    EXPECT_EQ(u[7].values[0], 0.0);
    auto draws = Of(all, eRecord::Draw);
    ASSERT_EQ(draws.size(), 2u) << "the empty set draws nothing";
    EXPECT_EQ(draws[0].object, a.m_pVertexData);
    EXPECT_EQ(draws[1].object, a.m_pChoiceVertexData);
    EXPECT_EQ(draws[1].op, "DrawVertices");
    EXPECT_EQ(draws[1].mode, 0);
    EXPECT_EQ(draws[1].count, 2);

    // On the plane the WGS84 Mercator has no projection mode: the uniform is left alone.
    m_scene.reset(new Host::eScene(96, 96, eSM_PLANE, PJ_MERCATOR));
    m_scene->Add(&a);
    u = Of(RecordFrame(), eRecord::Uniform);
    for (auto const& r : u)
        EXPECT_NE(r.uniform, "u_projMode");
}

TEST_F(EffectTest, ScatterHiddenCategoryVanishesAndSelectionIsHighlighted)
{
    m_scene->Camera().LookAt(0.0, 0.0, 5.0e6, 0.0, 0.0);
    ScatterProbe set;
    set.SetScatterPointSize(5.0e5);
    eScatterPoint red = Pt(1, -5, 0), orange = Pt(9, 5, 0);
    int sRed = set.AddScatterPoint(red);
    set.AddScatterPoint(orange);
    m_scene->Add(&set);
    auto at = [&](double lon)
    {
        eVector3T<double> w = m_scene->Camera().Project(World(lon, 0, 0));
        return Pixel((int)w.x, m_scene->Height() - 1 - (int)w.y);
    };
    m_scene->RenderFrame();
    auto r = at(-5), o = at(5);
    EXPECT_GT(r[0], 180);
    EXPECT_LT(r[1], 90);
    EXPECT_GT(o[0], 200);
    EXPECT_GT(o[1], 100);
    EXPECT_LT(o[2], 80);

    set.SetScatterVisible(9, false);
    m_scene->RenderFrame();
    EXPECT_EQ(at(5), (std::vector<unsigned char>{0, 0, 0, 255}));
    EXPECT_EQ(at(-5), r);

    set.SetScatterPointIsChoice(sRed, true);
    m_scene->RenderFrame();
    auto h = at(-5);
    EXPECT_GT(h[0], 230);
    EXPECT_GT(h[1], 230);
    EXPECT_GT(h[2], 230) << "white centre of the highlight icon";
    m_scene->Remove(&set);
}

// Three icons, one category hidden and one point selected: both buffers, both textures and
// the staging picture are in use.
template <> struct CopySubject<eRenderScatterPointSet>
{
    static constexpr bool kSamePixels = true;
    static void Prepare(Host::eScene& scene) { scene.Camera().LookAt(0.0, 0.0, 5.0e6, 0.0, 0.0); }
    static eRenderScatterPointSet* Make(Host::eScene&)
    {
        auto* set = new eRenderScatterPointSet();
        set->SetPoolSize(64);
        set->SetScatterPointSize(5.0e5);
        eScatterPoint points[] = {Pt(1, -5, 0), Pt(9, 5, 0), Pt(3, 0, 5)};
        for (eScatterPoint& p : points)
            set->AddScatterPoint(p);
        set->SetScatterVisible(3, false);
        set->SetScatterPointIsChoice(0, true);
        return set;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Scatter, CopyIdiom, ::testing::Types<eRenderScatterPointSet>);
