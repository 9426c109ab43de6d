#pragma once
#include <cmath>

namespace KYR
{

template <typename T> struct eVector3T
{
    T x, y, z;
    eVector3T() : x(T()), y(T()), z(T()) {}
    eVector3T(T x_, T y_, T z_) : x(x_), y(y_), z(z_) {}
    template <typename U>
    explicit eVector3T(eVector3T<U> const& o) : x((T)o.x), y((T)o.y), z((T)o.z)
    {
    }

    bool operator==(eVector3T const& o) const { return x == o.x && y == o.y && z == o.z; }
    bool operator!=(eVector3T const& o) const { return !(*this == o); }
    eVector3T operator+(eVector3T const& o) const { return eVector3T(x + o.x, y + o.y, z + o.z); }
    eVector3T operator-(eVector3T const& o) const { return eVector3T(x - o.x, y - o.y, z - o.z); }
    eVector3T operator-() const { return eVector3T(-x, -y, -z); }
    eVector3T operator*(T s) const { return eVector3T(x * s, y * s, z * s); }
    eVector3T operator/(T s) const { return eVector3T(x / s, y / s, z / s); }
    eVector3T& operator+=(eVector3T const& o)
    {
        x += o.x;
        y += o.y;
        z += o.z;
        return *this;
    }
    eVector3T& operator-=(eVector3T const& o)
    {
        x -= o.x;
        y -= o.y;
        z -= o.z;
        return *this;
    }
    eVector3T& operator*=(T s)
    {
        x *= s;
        y *= s;
        z *= s;
        return *this;
    }
    T& operator[](int i) { return (&x)[i]; }
    T const& operator[](int i) const { return (&x)[i]; }

    T Dot(eVector3T const& o) const { return x * o.x + y * o.y + z * o.z; }
    eVector3T Cross(eVector3T const& o) const
    {
        return eVector3T(y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x);
    }
    T SquaredLength() const { return x * x + y * y + z * z; }
    T Length() const { return (T)std::sqrt((double)SquaredLength()); }
    // Scales to unit length; a zero vector is left alone. Returns the old length.
    T Normalize()
    {
        T len = Length();
        if (len > T(0))
        {
            x /= len;
            y /= len;
            z /= len;
        }
        return len;
    }
    eVector3T Normalized() const
    {
        eVector3T v(*this);
        v.Normalize();
        return v;
    }
};

typedef eVector3T<double> eVector3d;
typedef eVector3T<float> eVector3f;

} // namespace KYR
