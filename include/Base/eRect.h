// Rectangles. eRect2D keeps top as the larger y (map convention): top >= bottom
// for a non-empty rectangle. Programs receive it as left, top, width, height.
#pragma once
#include "ePoint.h"
#include <algorithm>

namespace KYR
{

struct eRect
{
    int left, top, right, bottom; // screen convention: top < bottom
    eRect() : left(0), top(0), right(0), bottom(0) {}
    eRect(int l, int t, int r, int b) : left(l), top(t), right(r), bottom(b) {}
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    void Inflate(int dx, int dy)
    {
        left -= dx;
        right += dx;
        top -= dy;
        bottom += dy;
    }
    void Offset(int dx, int dy)
    {
        left += dx;
        right += dx;
        top += dy;
        bottom += dy;
    }
    // Half-open: the left and top edges are inside, right and bottom are not.
    bool PtInRect(ePoint const& p) const
    {
        return p.x >= left && p.x < right && p.y >= top && p.y < bottom;
    }
};

struct eRect2D
{
    double left, top, right, bottom;
    eRect2D() : left(0.0), top(0.0), right(0.0), bottom(0.0) {}
    eRect2D(double l, double t, double r, double b) : left(l), top(t), right(r), bottom(b) {}

    double Width() const { return right - left; }
    double Height() const { return top - bottom; }
    ePoint2D CenterPoint() const { return ePoint2D((left + right) * 0.5, (top + bottom) * 0.5); }
    bool IsEmpty() const { return !(right > left) || !(top > bottom); }
    void SetEmpty() { left = top = right = bottom = 0.0; }
    void Inflate(double d)
    {
        left -= d;
        right += d;
        top += d;
        bottom -= d;
    }
    void Offset(double dx, double dy)
    {
        left += dx;
        right += dx;
        top += dy;
        bottom += dy;
    }
    // Grows this rectangle to hold o; an empty side takes the other whole.
    void Union(eRect2D const& o)
    {
        if (o.IsEmpty())
            return;
        if (IsEmpty())
        {
            *this = o;
            return;
        }
        left = std::min(left, o.left);
        right = std::max(right, o.right);
        top = std::max(top, o.top);
        bottom = std::min(bottom, o.bottom);
    }
    // Shrinks this rectangle to the common part; empty (all zero) when they do not meet.
    void IntersectRect(eRect2D const& o)
    {
        eRect2D r(std::max(left, o.left), std::min(top, o.top), std::min(right, o.right),
                  std::max(bottom, o.bottom));
        if (r.IsEmpty())
            r.SetEmpty();
        *this = r;
    }
    // True when the two share area or touch along an edge.
    bool IsIntersect(eRect2D const& o) const
    {
        return left <= o.right && o.left <= right && bottom <= o.top && o.bottom <= top;
    }
    bool PtInRect(ePoint2D const& p) const
    {
        return p.x >= left && p.x <= right && p.y >= bottom && p.y <= top;
    }
    bool operator==(eRect2D const& o) const
    {
        return left == o.left && top == o.top && right == o.right && bottom == o.bottom;
    }
    bool operator!=(eRect2D const& o) const { return !(*this == o); }
    // The four floats a program receives: left, top, width, height.
    void ToFloat4(float out[4]) const
    {
        out[0] = (float)left;
        out[1] = (float)top;
        out[2] = (float)Width();
        out[3] = (float)Height();
    }
};

} // namespace KYR
