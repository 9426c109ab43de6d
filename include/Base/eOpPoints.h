// Small operations on point lists.
#pragma once
#include "eBase.h"
#include "ePoint.h"
#include "eRect.h"
#include <algorithm>
#include <cmath>

namespace KYR
{

class eOpPoints
{
public:
    // Smallest rectangle holding the points, top being the largest y. No points give
    // an all-zero rectangle.
    static eRect2D Bounds(ePoint2D const* points, int count)
    {
        if (count <= 0)
            return eRect2D();
        if (!points)
        {
            Eassert("points != NULL", __FILE__, __LINE__);
            return eRect2D();
        }
        eRect2D r(points[0].x, points[0].y, points[0].x, points[0].y);
        for (int i = 1; i < count; ++i)
        {
            r.left = std::min(r.left, points[i].x);
            r.right = std::max(r.right, points[i].x);
            r.bottom = std::min(r.bottom, points[i].y);
            r.top = std::max(r.top, points[i].y);
        }
        return r;
    }

    // Counter-clockwise rotation about the origin by angle radians; in and out may be
    // the same object.
    static void RotateRadian(ePoint2D const& in, double angle, ePoint2D& out)
    {
        double c = std::cos(angle), s = std::sin(angle);
        double x = in.x, y = in.y;
        out.x = x * c - y * s;
        out.y = x * s + y * c;
    }
};

} // namespace KYR
