// Station avoidance: stations that thin out as the camera moves away, the flags the world
// objects receive, and the pick of the station under a pixel on the globe and the plane.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eHardwareBuffer.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eRenderWorldObjectAvoid.h"

using namespace KYR;

namespace
{

class ProbeWorldObject : public eRenderWorldObject
{
public:
    using eRenderWorldObject::m_arAppendMeshes;
};

double const kDegToRad = eMathEngine::DEG_TO_RAD;

eVector3T<double> World(Host::eScene& scene, double lon, double lat)
{
    if (scene.Camera().GetSceneMode() == eSM_GLOBE)
        return eMathEngine::SphericalToCartesian(lon * kDegToRad, lat * kDegToRad,
                                                 eMathEngine::EARTH_RADIUS);
    ePoint2D map;
    scene.CoordSys().GeoToMap(ePoint2D(lon, lat), map);
    return eVector3T<double>(map.x, map.y, 0.0);
}

// One square symbol (4 units half side, before the object's size) per station, object numbers in
// station order.
eMesh* Squares(Host::eScene& scene, std::vector<eVector3T<double>> const& stations)
{
    eMesh* mesh = new eMesh();
    mesh->SetOperationType(eOT_TRIANGLE_LIST);
    eVertexData* vd = mesh->GetVertexData();
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_TEXCOORD1, 0);
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_TEXCOORD2, 0);
    vd->AddElement(eVET_FLOAT, eVEC_2, eAI_ATTRIB1, 0);
    for (size_t k = 0; k < stations.size(); ++k)
    {
        eVector3T<float> high, low;
        eRenderObject::DoubleToTwoFloat(World(scene, stations[k].x, stations[k].y), high, low);
        float const corners[4][2] = {{-4, -4}, {4, -4}, {4, 4}, {-4, 4}};
        for (auto const& c : corners)
        {
            float v[11] = {c[0], c[1], (float)k, high.x, high.y, high.z, low.x, low.y, low.z, 1, 0};
            vd->AddVertex(v, 1);
        }
        for (unsigned short i : {0, 1, 2, 0, 2, 3})
            mesh->GetIndexData()->AddIndex((unsigned short)(4 * k + i));
    }
    return mesh;
}

// The flag pair each station's first vertex has on the graphics card.
std::vector<std::pair<int, int>> Flags(ProbeWorldObject& object, size_t stations)
{
    std::vector<std::pair<int, int>> out;
    eHardwareVertexBuffer* hb =
        object.m_arAppendMeshes.empty()
            ? nullptr
            : object.m_arAppendMeshes[0]->GetVertexData()->GetHardwareBuffer();
    if (!hb || hb->GetSizeInBytes() < (int)(stations * 8))
        return out;
    std::vector<unsigned char> bytes((size_t)hb->GetSizeInBytes());
    hb->ReadData(0, (int)bytes.size(), bytes.data());
    for (size_t k = 0; k < stations; ++k)
        out.push_back({bytes[8 * k], bytes[8 * k + 1]});
    return out;
}

typedef std::vector<std::pair<int, int>> FlagList;
std::pair<int, int> const kPlain(0, 0), kHidden(0, 1), kSelected(1, 0);

// Stations drawn by one world object whose flags come from an avoidance over them.
struct Stations
{
    ProbeWorldObject object;
    eRenderWorldObjectAvoid avoid;
    std::vector<eVector3T<double>> places;

    Stations(Host::eScene& scene, std::vector<eVector3T<double>> const& at) : places(at)
    {
        object.AddMesh(Squares(scene, places));
        object.SetSize(10.0); // 18 pixels a side on a 96 pixel view
        object.CreateAppendMeshs();
        object.m_nRenderQueueId = 7; // after the avoidance's update in group 6
        avoid.SetRefGeoPoints(places);
        avoid.AddRenderWorldObject(&object);
        avoid.SetCanAvoid(true);
        avoid.SetCanSelect(true);
        scene.Add(&avoid);
        scene.Add(&object);
    }
    FlagList Flags() { return ::Flags(object, places.size()); }
    // The mouse pixel (y from the top row) of a station.
    ePoint Pixel(Host::eScene& scene, size_t k)
    {
        eVector3T<double> w = scene.Camera().Project(World(scene, places[k].x, places[k].y));
        return ePoint((int)std::floor(w.x), scene.Height() - 1 - (int)std::floor(w.y));
    }
};

} // namespace

TEST_F(EffectTest, AvoidanceKeepsOneOfTwoCloseStationsFarAndBothNear)
{
    // Half a degree apart: inside one box at 2e7 m (6.25 degrees a side each way), apart at
    // 2e5 m (0.06 degrees).
    Stations s(*m_scene, {{10.0, 20.0, 0.0}, {10.5, 20.0, 0.0}, {-60.0, -10.0, 0.0}});
    m_scene->Camera().LookAt(10.0, 20.0, 2.0e7, 0.0, 0.0);
    m_scene->RenderFrame();
    EXPECT_EQ(s.Flags(), (FlagList{kPlain, kHidden, kPlain}));

    m_scene->Camera().LookAt(10.25, 20.0, 2.0e5, 0.0, 0.0);
    m_scene->RenderFrame();
    EXPECT_EQ(s.Flags(), (FlagList{kPlain, kPlain, kPlain}));
    // Both drawn: two separate squares of the uniform red across the middle row.
    std::vector<unsigned char> px = m_scene->ReadPixels();
    int runs = 0;
    bool inside = false;
    for (int x = 0; x < m_scene->Width(); ++x)
    {
        bool red = px[((size_t)48 * m_scene->Width() + x) * 4] > 200;
        runs += red && !inside;
        inside = red;
    }
    EXPECT_EQ(runs, 2);

    // With avoiding and picking both off the boxes stay as they are.
    s.avoid.SetCanAvoid(false);
    s.avoid.SetCanSelect(false);
    m_scene->Camera().LookAt(10.0, 20.0, 2.0e7, 0.0, 0.0);
    EXPECT_EQ(s.avoid.Render(&m_scene->Engine(), &m_scene->RenderSystem(), &m_scene->Camera(),
                             &m_scene->Viewport()),
              0);
    EXPECT_EQ(s.Flags(), (FlagList{kPlain, kPlain, kPlain}));
}

TEST_F(EffectTest, PickReturnsTheStationUnderItsPixelAndNoneElsewhere)
{
    for (eSceneMode mode : {eSM_GLOBE, eSM_PLANE})
    {
        SCOPED_TRACE(testing::Message() << "scene mode " << mode);
        m_scene.reset(new Host::eScene(96, 96, mode));
        // North and south of the middle: a pick read upside down finds the other one.
        Stations s(*m_scene, {{10.0, 21.5, 0.0}, {10.0, 20.0, 0.0}});
        m_scene->Camera().LookAt(10.0, 20.75, 2.0e6, 0.0, 0.0);
        EXPECT_EQ(s.avoid.SelectStation(ePoint(48, 48)), -1) << "no frame drawn yet";
        m_scene->RenderFrame();
        EXPECT_EQ(s.Flags(), (FlagList{kPlain, kPlain}));

        EXPECT_EQ(s.avoid.SelectStation(s.Pixel(*m_scene, 1)), 1);
        m_scene->RenderFrame();
        EXPECT_EQ(s.Flags(), (FlagList{kPlain, kSelected}));
        EXPECT_EQ(s.avoid.SelectStation(s.Pixel(*m_scene, 0)), 0);
        // Empty sea west of both; on the globe also the sky beside it.
        EXPECT_EQ(s.avoid.SelectStation(ePoint(10, 48)), -1);
        if (mode == eSM_GLOBE)
        {
            m_scene->Camera().LookAt(10.0, 20.75, 2.0e7, 0.0, 0.0);
            EXPECT_EQ(s.avoid.SelectStation(ePoint(1, 1)), -1);
        }
    }
}

TEST_F(EffectTest, PickedStationStaysShownWhenTheBoxesGrow)
{
    Stations s(*m_scene, {{10.0, 20.0, 0.0}, {10.5, 20.0, 0.0}});
    m_scene->Camera().LookAt(10.25, 20.0, 2.0e5, 0.0, 0.0);
    m_scene->RenderFrame();
    ASSERT_EQ(s.avoid.SelectStation(s.Pixel(*m_scene, 1)), 1);
    // Far away the boxes meet: the picked station goes first and hides the other.
    m_scene->Camera().LookAt(10.25, 20.0, 2.0e7, 0.0, 0.0);
    m_scene->RenderFrame();
    EXPECT_EQ(s.Flags(), (FlagList{kHidden, kSelected}));
    // A hidden station cannot be picked: its pixel finds the one shown over it.
    EXPECT_EQ(s.avoid.SelectStation(s.Pixel(*m_scene, 0)), 1);
}

TEST_F(EffectTest, AvoidanceOverManyStationsShowsEachOneNoEarlierShownOneMeets)
{
    // Stations in clusters and alone, and pairs on one grid point.
    std::vector<eVector3T<double>> places;
    unsigned int seed = 7u;
    auto next = [&seed]()
    {
        seed = seed * 1664525u + 1013904223u;
        return (seed >> 8) / double(1u << 24);
    };
    for (int k = 0; k < 1500; ++k)
        places.push_back({-30.0 + 60.0 * next(), -20.0 + 40.0 * next(), 0.0});
    for (int k = 0; k < 100; ++k)
        places.push_back(places[(size_t)(next() * 1500)]);
    Stations s(*m_scene, places);
    double const distance = 8.0e6;
    m_scene->Camera().LookAt(0.0, 0.0, distance, 0.0, 0.0);
    m_scene->RenderFrame();
    FlagList flags = s.Flags();
    ASSERT_EQ(flags.size(), places.size());

    // Each box reaches d / 800 / 40 grid units from its station (250 here).
    int const reach = (int)(distance / 800.0 * 0.025);
    auto meet = [&](size_t a, size_t b)
    {
        ePoint pa = eRenderWorldObjectAvoid::GeoToGrid(places[a].x, places[a].y);
        ePoint pb = eRenderWorldObjectAvoid::GeoToGrid(places[b].x, places[b].y);
        return std::abs(pa.x - pb.x) < 2 * reach && std::abs(pa.y - pb.y) < 2 * reach;
    };
    size_t shown = 0;
    for (size_t i = 0; i < places.size(); ++i)
    {
        bool met = false;
        for (size_t j = 0; j < i && !met; ++j)
            met = flags[j] == kPlain && meet(i, j);
        EXPECT_EQ(flags[i], met ? kHidden : kPlain) << "station " << i;
        shown += flags[i] == kPlain;
    }
    EXPECT_GT(shown, 10u);
    EXPECT_LT(shown, 200u);
}

template <> struct CopySubject<eRenderWorldObjectAvoid>
{
    static constexpr bool kSamePixels = true;
    static constexpr bool kDraws = false; // it only hides stations that world objects draw
    static eRenderWorldObjectAvoid* Make(Host::eScene&)
    {
        auto* avoid = new eRenderWorldObjectAvoid();
        std::vector<eVector3T<double>> places = {{10.0, 20.0, 0.0}, {11.0, 21.0, 0.0}};
        avoid->SetRefGeoPoints(places);
        avoid->SetCanAvoid(true);
        return avoid;
    }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Avoid, CopyIdiom, ::testing::Types<eRenderWorldObjectAvoid>);
