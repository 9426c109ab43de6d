// Colour ranges and maps (first match, half-open, white when none) and the gradation
// strategy's pending-texture shuffle and time ratio.
#include "eColorMap.h"
#include "eGradationStrategy.h"
#include "eTexture.h"
#include <gtest/gtest.h>
#include <cmath>
#include <limits>

using namespace KYR;

namespace
{

typedef eVector4T<unsigned char> Rgba;
Rgba const kWhite(255, 255, 255, 255);

} // namespace

TEST(ColorMap, FirstMatchingHalfOpenRangeWinsAndOtherwiseWhite)
{
    eColorMap map;
    EXPECT_EQ(map.GetColor(0.0), kWhite) << "empty map";
    Rgba red(255, 0, 0, 255), blue(0, 0, 255, 128), green(0, 255, 0, 255);
    map.Add(0.0, 10.0, red);
    map.Add(5.0, 20.0, blue);
    map.Add(30.0, 30.0, green); // min equal to max never matches
    ASSERT_EQ(map.GetSize(), 3);
    EXPECT_EQ(map.GetColor(0.0), red);
    EXPECT_EQ(map.GetColor(7.0), red) << "the range added first wins";
    EXPECT_EQ(map.GetColor(10.0), blue) << "an upper bound belongs to the next range";
    EXPECT_EQ(map.GetColor(19.999), blue);
    EXPECT_EQ(map.GetColor(20.0), kWhite) << "the largest upper bound matches nothing";
    EXPECT_EQ(map.GetColor(30.0), kWhite);
    EXPECT_EQ(map.GetColor(-0.5), kWhite);
    EXPECT_EQ(map.GetColor(std::numeric_limits<double>::quiet_NaN()), kWhite);

    map.Remove(-1);
    map.Remove(map.GetSize());
    EXPECT_EQ(map.GetSize(), 3);
    map.Remove(0);
    ASSERT_EQ(map.GetSize(), 2);
    EXPECT_EQ(map.GetColor(7.0), blue);
    EXPECT_EQ(map.Get(1).m_Color, green) << "order kept";

    eColorMap copy(map);
    map.RemoveAll();
    EXPECT_EQ(map.GetSize(), 0);
    EXPECT_EQ(copy.GetColor(7.0), blue);
    copy = copy;
    EXPECT_EQ(copy.GetSize(), 2);
}

TEST(ColorMap, AddingItsOwnElementWhileGrowingCopiesTheValue)
{
    eColorMap map;
    Rgba c(1, 2, 3, 4);
    map.Add(-1.0, 1.0, c);
    // Each Add of element 0 may move the storage; the copy must still be whole.
    for (int i = 0; i < 40; ++i)
        map.Add(map.Get(0));
    ASSERT_EQ(map.GetSize(), 41);
    for (int i = 0; i < 41; ++i)
    {
        EXPECT_EQ(map.Get(i).m_dMin, -1.0);
        EXPECT_EQ(map.Get(i).m_dMax, 1.0);
        EXPECT_EQ(map.Get(i).m_Color, c);
    }
    eColorRange plain;
    EXPECT_EQ(plain.m_dMin, 0.0);
    EXPECT_EQ(plain.m_Color, Rgba(0, 0, 0, 0));
}

TEST(GradationStrategy, RatioIsUnclampedAndUnguarded)
{
    eGradationStrategy g;
    EXPECT_EQ(g.GetTimeRatio(), 1.0f) << "the fade has ended at first";
    EXPECT_EQ(g.m_nPixelFormat, 8);
    g.SetCurrentTime(90);
    EXPECT_FLOAT_EQ(g.GetTimeRatio(), 1.5f);
    g.SetCurrentTime(15);
    EXPECT_FLOAT_EQ(g.GetTimeRatio(), 0.25f);
    g.SetTimeStride(0);
    EXPECT_TRUE(std::isinf(g.GetTimeRatio()));
    g.SetCurrentTime(0);
    EXPECT_TRUE(std::isnan(g.GetTimeRatio()));
}

TEST(GradationStrategy, PendingTexturesSlideToTheOtherSlot)
{
    eTexture a, b, c, inUse1, inUse2;
    eGradationStrategy g;
    g.m_pTexture1 = &inUse1;
    g.m_pTexture2 = &inUse2;

    // Nothing waiting: the texture just waits in its slot.
    g.SetTexture1(&a, 17);
    EXPECT_EQ(g.m_pPendingTexture1, &a);
    EXPECT_EQ(g.m_pPendingTexture2, nullptr);
    EXPECT_EQ(g.m_pTexture1, &inUse1);
    EXPECT_EQ(g.m_nPixelFormat, 17);

    // A second one before the first was taken: a slides into slot 2, slot 1's is dropped.
    g.SetTexture1(&b, 8);
    EXPECT_EQ(g.m_pPendingTexture1, &b);
    EXPECT_EQ(g.m_pPendingTexture2, &a);
    EXPECT_EQ(g.m_pTexture1, nullptr);
    EXPECT_EQ(g.m_pTexture2, &inUse2);

    // The same through slot 2: the waiting a moves back over to slot 1.
    g.SetTexture2(&c);
    EXPECT_EQ(g.m_pPendingTexture2, &c);
    EXPECT_EQ(g.m_pPendingTexture1, &a);
    EXPECT_EQ(g.m_pTexture2, nullptr);

    // Taken in between, the two setters keep their slots apart.
    eGradationStrategy h;
    h.SetTexture1(&a, 8);
    h.m_pTexture1 = h.m_pPendingTexture1;
    h.m_pPendingTexture1 = nullptr;
    h.SetTexture2(&b);
    EXPECT_EQ(h.m_pPendingTexture1, nullptr);
    EXPECT_EQ(h.m_pPendingTexture2, &b);
    EXPECT_EQ(h.m_pTexture1, &a);

    eGradationStrategy copy(g);
    EXPECT_EQ(copy.m_pPendingTexture2, &c);
    EXPECT_EQ(copy.m_nCurrentTime, 60);
}
