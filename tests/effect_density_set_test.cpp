// Density sets: the fixed ring with one buffer range per record, the two ways of drawing
// a marker, and the separate alpha blending of the canvas mode.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eHardwareBuffer.h"
#include "eMesh.h"
#include "eRenderWorldListDensitySet.h"
#include <cstring>
#include <epoxy/gl.h>

using namespace KYR;
using KYR::Host::eRecord;

namespace
{

template <typename Set> class Probe : public Set
{
public:
    using Set::m_nCount;
    using Set::m_nHead;
    using Set::m_pVertexData;
};

eDensityPoint Marker(double lon, double lat, double t, unsigned char red, float size = 24.0f)
{
    eDensityPoint p;
    p.m_Position = eVector4T<double>(lon, lat, 0.0, t);
    p.m_fSize = size;
    p.m_Color = eVector4T<unsigned char>(red, 60, 30, 255);
    return p;
}

template <typename Set> void Prepare(Set& set, int pool, unsigned char geometry = 0)
{
    eVector3T<double> anchor(0.0, 0.0, 0.0);
    set.SetSpatialRefType(1);
    set.SetPosition(anchor);
    set.SetGeometryShader(geometry);
    set.SetPoolSize(pool);
    set.SetTraceTime(1000.0f);
    set.SetSpeedPerFrame(0.0f);
    set.SetCurTime(500.0f);
}

std::vector<unsigned char> ReadBack(eVertexData* data)
{
    eHardwareVertexBuffer* buffer = data ? data->GetHardwareBuffer() : nullptr;
    std::vector<unsigned char> out(buffer ? (size_t)buffer->GetSizeInBytes() : 0);
    if (!buffer || !buffer->ReadData(0, (int)out.size(), out.data()))
        out.clear();
    return out;
}

} // namespace

TEST_F(EffectTest, DensityRingWrapsIntoSlotZeroAndRewritesOnlyIt)
{
    Probe<eRenderListDensitySet> set;
    Prepare(set, 2);
    eDensityPoint a = Marker(-10.0, 0.0, 100.0, 200), b = Marker(10.0, 0.0, 200.0, 100);
    set.AddDensityPoint(&a); // before the first frame: Initialize uploads them
    set.AddDensityPoint(&b);
    EXPECT_FALSE(set.GetDensityPoint(0)->m_bUploaded);
    m_scene->Add(&set);
    EXPECT_TRUE(set.GetDensityPoint(0)->m_bUploaded);
    int const slotBytes = 6 * 24;
    std::vector<unsigned char> before = ReadBack(set.m_pVertexData);
    ASSERT_EQ(before.size(), (size_t)2 * slotBytes);

    eDensityPoint c = Marker(0.0, 5.0, 300.0, 50, 300.0f);
    set.AddDensityPoint(&c);
    EXPECT_EQ(set.m_nHead, 1);
    EXPECT_EQ(set.m_nCount, 2);
    std::vector<unsigned char> after = ReadBack(set.m_pVertexData);
    ASSERT_EQ(after.size(), before.size());
    EXPECT_EQ(std::memcmp(before.data() + slotBytes, after.data() + slotBytes, slotBytes), 0);
    // Slot 0 now holds the third marker: its time, its size wrapped to a byte, its colour.
    for (int v = 0; v < 6; ++v)
    {
        unsigned char const* r = after.data() + v * 24;
        float t;
        std::memcpy(&t, r + 12, 4);
        EXPECT_EQ(t, 300.0f);
        EXPECT_EQ(r[18], 44);
        EXPECT_EQ(r[20], 50);
    }
    EXPECT_EQ((signed char)after[5 * 24 + 16], 1);

    // The oldest first: slot 1, then slot 0.
    std::vector<eRecord> draws = Of(RecordFrame(), eRecord::Draw);
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0].first, 6);
    EXPECT_EQ(draws[0].count, 6);
    EXPECT_EQ(draws[1].first, 0);
    EXPECT_EQ(draws[1].count, 6);
    EXPECT_EQ(draws[0].mode, GL_TRIANGLES);

    // A reset loses the markers: the pool must be sized again. Until then adding finds no
    // slot to fill.
    set.Reset(nullptr);
    EXPECT_EQ(set.GetDensityPointCount(), 0);
    set.AddDensityPoint(&a);
    set.AddDensityPoint(&b);
    EXPECT_EQ(set.GetDensityPoint(0), nullptr);
}

TEST_F(EffectTest, DensityMarkersLookAlikeWithAndWithoutGeometryStage)
{
    auto draw = [&](eRenderListDensitySet& set, unsigned char geometry)
    {
        Prepare(set, 16, geometry);
        for (int k = 0; k < 5; ++k)
        {
            eDensityPoint p = Marker(-20.0 + 10.0 * k, 5.0 * (k % 2), 100.0 * k, 255, 20.0f);
            set.AddDensityPoint(&p);
        }
        m_scene->Add(&set);
        m_scene->RenderFrame();
        m_scene->Remove(&set);
        return m_scene->ReadPixels();
    };
    m_scene->RenderFrame();
    std::vector<unsigned char> empty = m_scene->ReadPixels();
    eRenderListDensitySet quads, points;
    eRenderWorldListDensitySet worldQuads, worldPoints;
    std::vector<unsigned char> reference = draw(quads, 0);
    EXPECT_FALSE(CopyIdiomDetail::SamePixels(reference, empty));
    EXPECT_EQ(points.IsGeometryShader(), 0);
    std::pair<eRenderListDensitySet*, unsigned char> const others[] = {
        {&points, 1}, {&worldQuads, 0}, {&worldPoints, 1}};
    for (auto const& [set, geometry] : others)
    {
        std::vector<unsigned char> px = draw(*set, geometry);
        size_t differ = 0;
        for (size_t i = 0; i < px.size(); ++i)
            differ += std::abs(int(px[i]) - int(reference[i])) > 8;
        EXPECT_LT(differ, px.size() / 200) << set->GetType() << " geometry " << (int)geometry;
    }
    // Before the markers' time stamps nothing shows, in either way of drawing.
    for (eRenderListDensitySet* set :
         {(eRenderListDensitySet*)&quads, (eRenderListDensitySet*)&worldPoints})
    {
        set->SetCurTime(-1.0f);
        m_scene->Add(set);
        m_scene->RenderFrame();
        m_scene->Remove(set);
        EXPECT_TRUE(CopyIdiomDetail::SamePixels(m_scene->ReadPixels(), empty)) << set->GetType();
    }
}

TEST_F(EffectTest, DensityCanvasModeBlendsAlphaSeparatelyAndRestores)
{
    eRenderListDensitySet set;
    Prepare(set, 4);
    eDensityPoint p = Marker(0.0, 0.0, 100.0, 255);
    set.AddDensityPoint(&p);
    m_scene->Add(&set);
    auto blends = [](std::vector<eRecord> const& all)
    {
        std::vector<std::string> out;
        for (auto const& r : all)
            if (r.kind == eRecord::Blend || (r.kind == eRecord::Draw && r.op == "glDrawArrays"))
            {
                std::string s = r.op;
                for (double v : r.values)
                    s += " " + std::to_string((int)v);
                out.push_back(s);
            }
        return out;
    };
    EXPECT_EQ(blends(RecordFrame()), std::vector<std::string>{"glDrawArrays"});
    set.SetCanvasRender(1);
    std::vector<std::string> const expect = {
        "BlendEquationSeparate " + std::to_string(GL_FUNC_ADD) + " " + std::to_string(GL_FUNC_ADD),
        "BlendFuncSeparate 770 771 1 771", "glDrawArrays", "glBlendFunc 770 771"};
    EXPECT_EQ(blends(RecordFrame()), expect);

    // Fully transparent: nothing is drawn, but the clock goes on.
    set.SetTransparent(0.0f);
    set.SetSpeedPerFrame(5.0f);
    float before = set.GetCurTime();
    EXPECT_TRUE(blends(RecordFrame()).empty());
    EXPECT_EQ(set.GetCurTime(), before + 5.0f);
    m_scene->Remove(&set);
}

template <> struct CopySubject<eRenderDensitySet>
{
    static constexpr bool kSamePixels = true;
    static constexpr bool kDraws = false; // draws nothing of its own
    static eRenderDensitySet* Make(KYR::Host::eScene&)
    {
        auto* set = new eRenderDensitySet();
        set->SetSpatialRefType(1);
        return set;
    }
};

template <typename Set> struct DensityMarkers
{
    static constexpr bool kSamePixels = true; // the clock stands still
    static Set* Make(KYR::Host::eScene&)
    {
        auto* set = new Set();
        Prepare(*set, 8, 1);
        for (int k = 0; k < 4; ++k)
        {
            eDensityPoint p = Marker(-20.0 + 12.0 * k, 8.0 * k, 100.0, 255);
            set->AddDensityPoint(&p);
        }
        return set;
    }
};
template <> struct CopySubject<eRenderListDensitySet> : DensityMarkers<eRenderListDensitySet>
{
};
template <>
struct CopySubject<eRenderWorldListDensitySet> : DensityMarkers<eRenderWorldListDensitySet>
{
};

using DensitySets =
    ::testing::Types<eRenderDensitySet, eRenderListDensitySet, eRenderWorldListDensitySet>;
INSTANTIATE_TYPED_TEST_SUITE_P(DensitySets, CopyIdiom, DensitySets);
