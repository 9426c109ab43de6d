// Grid sets: which cell a point falls in (edges, negative coordinates), one quad and one
// number per cell in key order, totals and their colours, cells that follow the level only,
// and the digits standing on the cell's centre in the picture.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eCoordSys.h"
#include "eRenderPointGridSet.h"
#include <algorithm>
#include <cmath>
#include <set>
#include <string>

using namespace KYR;
using KYR::Host::eRecord;

namespace
{

typedef eVector4T<unsigned char> Rgba;

// Levels of a fixed resolution: by default one unit per pixel, so a grid size of 32 gives
// cells of 32.
class UnitLevels : public eCoordSys
{
public:
    int ResolutionToLevel(double) override { return 3; }
    double LevelToResolution(int) override { return m_dResolution; }
    double m_dResolution = 1.0;
};

// What one frame sent: per cell its colour and centre, then per digit its glyph's first
// vertex and position, and the label pass's colour.
struct Frame
{
    std::vector<std::vector<double>> cellColours, cellCentres, digitPositions;
    std::vector<long long> digitFirsts;
    std::vector<double> textColour;
    float cellSize = 0.0f;
    int quadDraws = 0;
};

Frame Read(std::vector<eRecord> const& records)
{
    Frame f;
    bool labels = false;
    for (eRecord const& r : records)
    {
        if (r.kind == eRecord::BeginPass)
            labels = r.op == "PointLabel";
        else if (r.kind == eRecord::Uniform && r.uniform == "u_size" && !labels)
            f.cellSize = (float)r.values[0];
        else if (r.kind == eRecord::Uniform && r.uniform == "u_color")
            (labels ? f.textColour : (f.cellColours.emplace_back(), f.cellColours.back())) =
                r.values;
        else if (r.kind == eRecord::Uniform && r.uniform == "u_position")
            (labels ? f.digitPositions : f.cellCentres).push_back(r.values);
        else if (r.kind == eRecord::Draw && r.op == "glDrawArrays")
        {
            if (labels && r.mode == 5 && r.count == 4) // GL_TRIANGLE_STRIP
                f.digitFirsts.push_back(r.first);
            else if (!labels && r.mode == 4 && r.first == 0 && r.count == 6) // GL_TRIANGLES
                ++f.quadDraws;
            else
                ADD_FAILURE() << "unexpected draw " << r.mode << " " << r.first << " " << r.count;
        }
    }
    return f;
}

eGridPoint* Point(double x, double y, int value = 1)
{
    eGridPoint* p = new eGridPoint();
    p->m_vPosition = eVector4T<double>(x, y, 0.0, 0.0);
    p->m_nValue = value;
    return p;
}

class GridSetTest : public EffectTest
{
protected:
    void TearDown() override
    {
        m_scene->Remove(&m_set);
        m_scene->Engine().SetCoordSys(&m_scene->CoordSys());
        EffectTest::TearDown();
    }
    // Local coordinates (kind 0) on the plane and cells of exactly 32 units.
    void UseUnitCells()
    {
        m_scene->Camera().SetSceneMode(eSM_PLANE);
        m_scene->Engine().SetCoordSys(&m_levels);
        m_scene->Add(&m_set);
    }
    UnitLevels m_levels;
    eRenderPointGridSet m_set;
};

} // namespace

TEST_F(GridSetTest, PointsFallInCellsByFloorAndEachCellDrawsOnceInKeyOrder)
{
    UseUnitCells();
    m_set.Add(Point(64.0, -96.0)); // on the left and top edges of column 2, row 3
    m_set.Add(Point(-0.5, 0.5));   // rounds down to column -1, row -1
    m_set.Add(Point(-32.0, 32.0)); // the same cell, on its edges
    m_set.Add(Point(0.0, 0.0));
    m_set.Add(Point(31.9, -31.9)); // the same cell as the origin
    eGridPoint* twice = Point(63.9, -95.9);
    m_set.Add(twice); // counted twice, deleted once
    m_set.Add(twice);
    m_set.Add(nullptr);
    Frame f = Read(RecordFrame());
    EXPECT_EQ(f.cellSize, 32.0f);
    // Rows in the key's high word before columns; a negative row wraps to the end.
    std::vector<std::vector<double>> const centres = {
        {16.0, -16.0, 0.0}, {48.0, -80.0, 0.0}, {80.0, -112.0, 0.0}, {-16.0, 16.0, 0.0}};
    EXPECT_EQ(f.cellCentres, centres);
    EXPECT_EQ(f.quadDraws, 4);
    // Totals 2, 2, 1, 2: one digit each, strips at 4 x digit.
    EXPECT_EQ(f.digitFirsts, (std::vector<long long>{8, 8, 4, 8}));

    m_set.RemoveAll();
    f = Read(RecordFrame());
    EXPECT_EQ(f.quadDraws, 0);
    EXPECT_TRUE(f.digitFirsts.empty());

    // Ten thousand points in one cell: one quad and one number, its digits left to right.
    for (int i = 0; i < 10000; ++i)
        m_set.Add(Point(-40.0 + (i % 100) * 0.07, 20.0 + (i / 100) * 0.07));
    f = Read(RecordFrame());
    EXPECT_EQ(f.quadDraws, 1);
    EXPECT_EQ(f.digitFirsts, (std::vector<long long>{4, 0, 0, 0, 0}));
    ASSERT_EQ(f.digitPositions.size(), 5u);
    for (size_t i = 1; i < 5; ++i)
    {
        EXPECT_GT(f.digitPositions[i][0], f.digitPositions[i - 1][0]);
        EXPECT_EQ(f.digitPositions[i][1], f.digitPositions[0][1]);
    }
}

// Points on and one step either side of the edges of cells whose side is no power of two,
// far enough out that multiplying by the inverse side would put some in the next cell:
// every one must land in column floor(x / side). Every other column only, and the three
// kinds of point in rows of their own, so that a point in a wrong cell shows as a new cell.
// The hundreds of cells come row by row, columns as unsigned words (negative ones last).
TEST_F(GridSetTest, EdgesOfAnyCellSideFloorAsTheQuotientDoes)
{
    m_levels.m_dResolution = 0.7;
    UseUnitCells();
    double const side = 32.0 * 0.7;
    std::set<std::pair<long, unsigned>> expected; // (row, column): the order cells are drawn in
    std::vector<std::pair<long, unsigned>> drawn;
    for (int base : {-131000, 131000})
        for (int k = base - 100; k <= base + 100; k += 2)
        {
            float const x = (float)(k * side);
            float const around[3] = {std::nextafter(x, -1e9f), x, std::nextafter(x, 1e9f)};
            for (int row = 0; row < 3; ++row)
            {
                m_set.Add(Point(around[row], -(row + 0.5) * side));
                expected.insert({row, (unsigned)std::floor(around[row] / side)});
            }
        }
    Frame f = Read(RecordFrame());
    for (auto const& c : f.cellCentres)
        drawn.push_back(
            {std::lround(-c[1] / side - 0.5), (unsigned)std::lround(c[0] / side - 0.5)});
    EXPECT_EQ(drawn, (std::vector<std::pair<long, unsigned>>(expected.begin(), expected.end())));
}

TEST_F(GridSetTest, FirstRangeHoldingTheTotalGivesTheColourAndNoMapGivesWhite)
{
    UseUnitCells();
    int const totals[] = {1, 2, 3, 10, -4};
    for (int i = 0; i < 5; ++i)
        m_set.Add(Point(32.0 * i + 1.0, -1.0, totals[i])); // row 0, columns 0 to 4
    std::vector<double> const white = {1.0, 1.0, 1.0, 1.0};
    Frame f = Read(RecordFrame());
    ASSERT_EQ(f.cellColours.size(), 5u);
    for (auto const& c : f.cellColours)
        EXPECT_EQ(c, white);

    Rgba red(255, 0, 0, 255), blue(0, 0, 255, 128), green(0, 255, 0, 255);
    eColorMap map;
    map.Add(0.0, 3.0, red);
    map.Add(2.0, 10.0, blue);
    map.Add(-10.0, 0.0, green);
    m_set.SetColorMap(&map);
    map.RemoveAll(); // the set keeps its own copy
    m_set.SetTextColor(Rgba(51, 102, 0, 255));
    f = Read(RecordFrame());
    std::vector<double> const r = {1.0, 0.0, 0.0, 1.0}, b = {0.0, 0.0, 1.0, (float)(128 / 255.0)},
                              g = {0.0, 1.0, 0.0, 1.0};
    // 2 lies in both ranges: the first wins; 3 is the red range's upper bound; 10 is in none.
    EXPECT_EQ(f.cellColours, (std::vector<std::vector<double>>{r, r, b, white, g}));
    EXPECT_EQ(f.textColour,
              (std::vector<double>{(float)(51 / 255.0), (float)(102 / 255.0), 0.0, 1.0}));
    // 1, 2, 3 and 1 0; the minus sign ends -4 before its digit.
    EXPECT_EQ(f.digitFirsts, (std::vector<long long>{4, 8, 12, 4, 0}));

    m_set.SetColorMap(&map); // an empty map removes the set's own
    EXPECT_EQ(m_set.GetColorMap(), nullptr);
    f = Read(RecordFrame());
    for (auto const& c : f.cellColours)
        EXPECT_EQ(c, white);
}

TEST_F(GridSetTest, CellsChangeWithTheLevelAndNotWithinIt)
{
    m_set.SetSpatialRefType(1);
    m_scene->Add(&m_set);
    for (int i = 0; i < 200; ++i)
        m_set.Add(Point(std::sin(i * 0.37) * 8.0, std::cos(i * 0.91) * 6.0));
    eCoordSys& cs = m_scene->CoordSys();
    auto levelAt = [&](double distance)
    {
        m_scene->Camera().LookAt(0.0, 0.0, distance, 0.0, 0.0);
        return cs.ResolutionToLevel(m_scene->Engine().GetRenderResolution(1));
    };
    ASSERT_EQ(levelAt(4.0e6), levelAt(4.6e6));
    ASSERT_EQ(levelAt(4.0e6) + 1, levelAt(2.0e6));

    levelAt(4.0e6);
    Frame near = Read(RecordFrame());
    levelAt(4.6e6);
    Frame sameLevel = Read(RecordFrame());
    EXPECT_EQ(sameLevel.cellSize, near.cellSize);
    EXPECT_EQ(sameLevel.cellCentres, near.cellCentres);
    EXPECT_GT(near.cellCentres.size(), 3u);

    levelAt(2.0e6);
    Frame deeper = Read(RecordFrame());
    EXPECT_FLOAT_EQ(deeper.cellSize * 2.0f, near.cellSize);
    EXPECT_GT(deeper.cellCentres.size(), near.cellCentres.size());
}

TEST_F(GridSetTest, DigitsStandOnTheCellCentreAndTheQuadCoversTheCell)
{
    m_scene->Camera().LookAt(0.0, 0.0, 2.0e6, 0.0, 0.0);
    m_set.SetSpatialRefType(1);
    m_set.SetTextColor(Rgba(255, 255, 255, 255));
    m_scene->Add(&m_set);
    for (int i = 0; i < 8; ++i)
        m_set.Add(Point(0.3 + i * 0.01, 0.2));
    Rgba clear(0, 0, 0, 0); // the quad draws nothing: only the digit shows
    eColorMap invisible;
    invisible.Add(0.0, 100.0, clear);
    m_set.SetColorMap(&invisible);
    Frame f = Read(RecordFrame());
    ASSERT_EQ(f.cellCentres.size(), 1u);
    eVector4T<double> centre(f.cellCentres[0][0], f.cellCentres[0][1], 0.0, 0.0);
    eVector4T<double> world = m_set.PositionToWorld(0, centre);
    eVector3T<double> at = m_scene->Camera().Project(eVector3T<double>(world.x, world.y, world.z));
    double cx = at.x, cy = m_scene->Height() - at.y; // from the top row
    double sx = 0.0, sy = 0.0, n = 0.0;
    for (int y = 0; y < m_scene->Height(); ++y)
        for (int x = 0; x < m_scene->Width(); ++x)
            if (Pixel(x, y)[0] > 128)
            {
                sx += x + 0.5;
                sy += y + 0.5;
                n += 1.0;
            }
    ASSERT_GT(n, 10.0) << "the digit 8 shows";
    EXPECT_NEAR(sx / n, cx, 2.5);
    EXPECT_NEAR(sy / n, cy, 3.5);

    // An opaque cell covers its side in pixels around the centre, and no more.
    Rgba red(255, 0, 0, 255);
    eColorMap opaque;
    opaque.Add(0.0, 100.0, red);
    m_set.SetColorMap(&opaque);
    m_scene->RenderFrame();
    double half = f.cellSize / m_scene->Engine().GetRenderResolution(1) / 2.0;
    for (double d : {half - 2.0, -(half - 2.0)})
    {
        EXPECT_GT(Pixel((int)(cx + d), (int)cy)[0], 200) << d;
        EXPECT_GT(Pixel((int)cx, (int)(cy + d))[0], 200) << d;
    }
    for (double d : {half + 2.0, -(half + 2.0)})
    {
        EXPECT_LT(Pixel((int)(cx + d), (int)cy)[0], 50) << d;
        EXPECT_LT(Pixel((int)cx, (int)(cy + d))[0], 50) << d;
    }
}

template <> struct CopySubject<eRenderPointGridSet>
{
    static constexpr bool kSamePixels = true;
    static eRenderPointGridSet* Make(KYR::Host::eScene& scene)
    {
        auto* set = new eRenderPointGridSet();
        set->SetSpatialRefType(1);
        set->Create(&scene.Camera(), 0.0, &scene.Canvas());
        for (int i = 0; i < 60; ++i)
            set->Add(Point(std::sin(i * 1.3) * 30.0, std::cos(i * 0.7) * 25.0, i % 4));
        return set;
    }
};

template <> struct CopySubject<eRenderGridSet>
{
    static constexpr bool kSamePixels = true;
    static constexpr bool kDraws = false; // the frame holds no points
    static eRenderGridSet* Make(KYR::Host::eScene&)
    {
        auto* set = new eRenderGridSet();
        set->SetSpatialRefType(1);
        return set;
    }
};

using GridSetTypes = ::testing::Types<eRenderPointGridSet, eRenderGridSet>;
INSTANTIATE_TYPED_TEST_SUITE_P(GridSets, CopyIdiom, GridSetTypes);
