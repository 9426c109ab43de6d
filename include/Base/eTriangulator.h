// Triangulation of simple 2-D polygons.
//
// Every operation accepts either orientation and ignores a closing point that repeats
// the first one. Output triangles are index triples into the given points, always
// counter-clockwise (positive area), and the output vector is replaced, not appended to.
#pragma once
#include "ePoint.h"
#include <vector>

namespace KYR
{

class eTriangulator
{
public:
    // Ear clipping. Gives n - 2 triangles for a simple polygon of n distinct corners
    // (fewer when corners are collinear, since those are dropped rather than turned
    // into flat triangles). Returns false, with no output, for fewer than three corners,
    // zero area or more than 65536 points. A polygon that is not simple returns false
    // too; its output then still covers it as well as ear clipping could manage.
    static bool Process(ePoint2D const* points, int count, std::vector<unsigned short>& indices);
    // Same as Process.
    static bool Triangulate(ePoint2D const* points, int count,
                            std::vector<unsigned short>& indices);
    // Sweep-line tessellation of any simple polygon into plain triangles. Returns false
    // with no output for fewer than three points or nothing to fill. Where edges cross,
    // no new points can be returned; the crossing is snapped to the nearest input point
    // and the result is false.
    static bool Tesselate(ePoint2D const* points, int count, std::vector<unsigned int>& indices);
    // Signed shoelace area: positive for counter-clockwise order.
    static double Area(ePoint2D const* points, int count);
};

} // namespace KYR
