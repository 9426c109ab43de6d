// Rectangles, packed colours and colour tables.
#include "Base.h"
#include "eAssertLog.h"
#include <gtest/gtest.h>

using namespace KYR;

TEST(Rect2D, TopIsTheLargerY)
{
    eRect2D r(10, 50, 30, 20); // left, top, right, bottom
    EXPECT_EQ(r.Width(), 20.0);
    EXPECT_EQ(r.Height(), 30.0);
    EXPECT_FALSE(r.IsEmpty());
    EXPECT_TRUE(eRect2D(10, 20, 30, 50).IsEmpty()); // top below bottom
    EXPECT_TRUE(eRect2D(10, 50, 10, 20).IsEmpty());
    EXPECT_EQ(r.CenterPoint(), ePoint2D(20, 35));

    EXPECT_TRUE(r.PtInRect(ePoint2D(10, 20)));
    EXPECT_TRUE(r.PtInRect(ePoint2D(25, 49)));
    EXPECT_FALSE(r.PtInRect(ePoint2D(25, 51)));
    EXPECT_FALSE(r.PtInRect(ePoint2D(25, 19)));

    float f[4];
    r.ToFloat4(f);
    EXPECT_EQ(f[0], 10.0f);
    EXPECT_EQ(f[1], 50.0f);
    EXPECT_EQ(f[2], 20.0f);
    EXPECT_EQ(f[3], 30.0f);

    r.Inflate(5);
    EXPECT_EQ(r, eRect2D(5, 55, 35, 15));
}

TEST(Rect2D, IntersectAndUnion)
{
    eRect2D a(0, 10, 10, 0), b(5, 20, 15, 5), far(20, 40, 30, 30);
    EXPECT_TRUE(a.IsIntersect(b));
    EXPECT_TRUE(b.IsIntersect(a));
    EXPECT_FALSE(a.IsIntersect(far));
    EXPECT_FALSE(far.IsIntersect(a));
    EXPECT_FALSE(a.IsIntersect(eRect2D(0, 30, 10, 11))); // entirely above

    eRect2D i = a;
    i.IntersectRect(b);
    EXPECT_EQ(i, eRect2D(5, 10, 10, 5));
    i = a;
    i.IntersectRect(far);
    EXPECT_TRUE(i.IsEmpty());

    eRect2D u = a;
    u.Union(b);
    EXPECT_EQ(u, eRect2D(0, 20, 15, 0));
    u.Union(eRect2D()); // empty changes nothing
    EXPECT_EQ(u, eRect2D(0, 20, 15, 0));
    eRect2D e;
    e.Union(far);
    EXPECT_EQ(e, far);
    EXPECT_TRUE(e != u);
}

TEST(Rect, ScreenRectangle)
{
    eRect r(0, 0, 10, 5);
    EXPECT_TRUE(r.PtInRect(ePoint(0, 0)));
    EXPECT_FALSE(r.PtInRect(ePoint(10, 2)));
    r.Inflate(2, 1);
    r.Offset(1, 1);
    EXPECT_EQ(r.left, -1);
    EXPECT_EQ(r.top, 0);
    EXPECT_EQ(r.right, 13);
    EXPECT_EQ(r.bottom, 7);
}

TEST(Color, PackAndUnpack)
{
    unsigned int c = ERGBA(12, 34, 200, 250);
    EXPECT_EQ(c, 0xFAC8220Cu); // red in the low byte
    EXPECT_EQ(EREDVAL(c), 12);
    EXPECT_EQ(EGREENVAL(c), 34);
    EXPECT_EQ(EBLUEVAL(c), 200);
    EXPECT_EQ(EALPHAVAL(c), 250);
    EXPECT_EQ(EALPHAVAL(ERGBA(0, 0, 0, 255)), 255);
}

TEST(ColorTable, GradientLookup)
{
    eColorTable t;
    EXPECT_EQ(t.GetFloor(), 0.0);
    EXPECT_EQ(t.GetCeiling(), 1.0);
    EXPECT_EQ(t.GetColor(0.5), 0u); // empty

    t.CreateGradient(5, ERGBA(0, 0, 0, 0), ERGBA(200, 100, 40, 255));
    ASSERT_EQ(t.GetSize(), 5);
    EXPECT_EQ(t.GetRGB(2), ERGBA(100, 50, 20, 128));
    EXPECT_EQ(t.GetRGB(-3), t.GetRGB(0));
    EXPECT_EQ(t.GetRGB(99), ERGBA(200, 100, 40, 255));

    t.SetFloor(10);
    t.SetCeiling(20);
    EXPECT_EQ(t.GetColor(10), t.GetRGB(0));
    EXPECT_EQ(t.GetColor(20), t.GetRGB(4));
    EXPECT_EQ(t.GetColor(15), t.GetRGB(2));
    EXPECT_EQ(t.GetColor(12.4), t.GetRGB(1)); // nearest entry
    EXPECT_EQ(t.GetColor(11.0), t.GetRGB(0));
    EXPECT_EQ(t.GetColor(-1e9), t.GetRGB(0));
    EXPECT_EQ(t.GetColor(1e9), t.GetRGB(4));
    EXPECT_EQ(t.GetColor(std::nan("")), t.GetRGB(0));

    // A copy is independent of the original.
    eColorTable copy(t);
    copy.SetRGB(0, 7u);
    copy.SetFloor(0);
    EXPECT_NE(t.GetRGB(0), 7u);
    EXPECT_EQ(t.GetFloor(), 10.0);
    eColorTable assigned;
    assigned = copy;
    EXPECT_EQ(assigned.GetRGB(0), 7u);
    EXPECT_EQ(assigned.GetCeiling(), 20.0);
}

TEST(ColorTable, StockGradients)
{
    eColorTable t;
    for (int s = 0; s < KYR_STOCK_GRADIENT_COUNT; ++s)
    {
        t.CreateStockGradient(16, (tagKYR_ENUM_STOCK_GRADIENT_SET_STYLE)s, 0);
        ASSERT_EQ(t.GetSize(), 16) << "style " << s;
        EXPECT_EQ(EALPHAVAL(t.GetRGB(7)), 255) << "style " << s;
    }

    t.CreateStockGradient(256, KYR_STOCK_GRADIENT_TERRAIN, 0);
    unsigned int low = t.GetRGB(0);
    EXPECT_GT(EGREENVAL(low), EREDVAL(low)); // green lowlands
    EXPECT_GT(EGREENVAL(low), EBLUEVAL(low));
    EXPECT_EQ(t.GetRGB(255), ERGBA(255, 255, 255, 255)); // white peaks
    // Lightness never drops on the way up.
    auto lightness = [](unsigned int c)
    {
        auto lin = [](int v)
        {
            double x = v / 255.0;
            return x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
        };
        double y =
            0.2126 * lin(EREDVAL(c)) + 0.7152 * lin(EGREENVAL(c)) + 0.0722 * lin(EBLUEVAL(c));
        return 116.0 * std::cbrt(y) - 16.0;
    };
    for (int i = 1; i < 256; ++i)
        EXPECT_GE(lightness(t.GetRGB(i)) + 0.3, lightness(t.GetRGB(i - 1))) << "entry " << i;

    eColorTable rev;
    rev.CreateStockGradient(256, KYR_STOCK_GRADIENT_TERRAIN, 1);
    EXPECT_EQ(rev.GetRGB(0), t.GetRGB(255));
    EXPECT_EQ(rev.GetRGB(255), t.GetRGB(0));

    Host::ClearAssertReports();
    rev.CreateStockGradient(8, (tagKYR_ENUM_STOCK_GRADIENT_SET_STYLE)99, 0);
    rev.CreateGradient(0, 0u, 0u);
    EXPECT_EQ(rev.GetSize(), 256); // bad requests leave the table as it was
    EXPECT_EQ(Host::GetAssertReports().size(), 2u);
}
