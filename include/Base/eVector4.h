#pragma once
#include "eVector3.h"

namespace KYR
{

template <typename T> struct eVector4T
{
    T x, y, z, w;
    eVector4T() : x(T()), y(T()), z(T()), w(T()) {}
    eVector4T(T x_, T y_, T z_, T w_) : x(x_), y(y_), z(z_), w(w_) {}
    eVector4T(eVector3T<T> const& v, T w_) : x(v.x), y(v.y), z(v.z), w(w_) {}
    template <typename U>
    explicit eVector4T(eVector4T<U> const& o) : x((T)o.x), y((T)o.y), z((T)o.z), w((T)o.w)
    {
    }

    bool operator==(eVector4T const& o) const
    {
        return x == o.x && y == o.y && z == o.z && w == o.w;
    }
    bool operator!=(eVector4T const& o) const { return !(*this == o); }
    eVector4T operator+(eVector4T const& o) const
    {
        return eVector4T(x + o.x, y + o.y, z + o.z, w + o.w);
    }
    eVector4T operator-(eVector4T const& o) const
    {
        return eVector4T(x - o.x, y - o.y, z - o.z, w - o.w);
    }
    eVector4T operator*(T s) const { return eVector4T(x * s, y * s, z * s, w * s); }
    T& operator[](int i) { return (&x)[i]; }
    T const& operator[](int i) const { return (&x)[i]; }
    eVector3T<T> XYZ() const { return eVector3T<T>(x, y, z); }
    T* Ptr() { return &x; }
    T const* Ptr() const { return &x; }
};

typedef eVector4T<double> eVector4d;
typedef eVector4T<float> eVector4f;
typedef eVector4T<unsigned char> eColor4ub;

} // namespace KYR
