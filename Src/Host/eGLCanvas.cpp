// The canvas library's geometry writers: face normals here; glyph layout and the
// tessellators join as the effects that use them arrive.
#include "eGeometry.h"
#include <cmath>

namespace KYR
{

eVector3T<float> eGLCanvas::ComputeFaceNormal(eVector3T<float> const& a, eVector3T<float> const& b,
                                              eVector3T<float> const& c)
{
    // (b - a) x (c - a): out of the face when a, b, c turn counter-clockwise seen from outside.
    float ux = b.x - a.x, uy = b.y - a.y, uz = b.z - a.z;
    float vx = c.x - a.x, vy = c.y - a.y, vz = c.z - a.z;
    float nx = uy * vz - uz * vy, ny = uz * vx - ux * vz, nz = ux * vy - uy * vx;
    float len = std::sqrt(nx * nx + ny * ny + nz * nz);
    if (len <= 0.0f)
        return eVector3T<float>(0.0f, 0.0f, 0.0f);
    return eVector3T<float>(nx / len, ny / len, nz / len);
}

} // namespace KYR
