#pragma once

namespace KYR
{

struct ePoint
{
    int x, y;
    ePoint() : x(0), y(0) {}
    ePoint(int x_, int y_) : x(x_), y(y_) {}
    bool operator==(ePoint const& o) const { return x == o.x && y == o.y; }
    bool operator!=(ePoint const& o) const { return !(*this == o); }
};

struct ePoint2D
{
    double x, y;
    ePoint2D() : x(0.0), y(0.0) {}
    ePoint2D(double x_, double y_) : x(x_), y(y_) {}
    bool operator==(ePoint2D const& o) const { return x == o.x && y == o.y; }
    bool operator!=(ePoint2D const& o) const { return !(*this == o); }
};

struct ePoint3D
{
    double x, y, z;
    ePoint3D() : x(0.0), y(0.0), z(0.0) {}
    ePoint3D(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}
    bool operator==(ePoint3D const& o) const { return x == o.x && y == o.y && z == o.z; }
    bool operator!=(ePoint3D const& o) const { return !(*this == o); }
};

struct eSize2D
{
    double cx, cy;
    eSize2D() : cx(0.0), cy(0.0) {}
    eSize2D(double w, double h) : cx(w), cy(h) {}
};

} // namespace KYR
