// 4x4 matrix in OpenGL element order (column-major: element col * 4 + row).
// A * B applies B first: (A * B) v = A (B v). Translation sits in elements 12, 13, 14.
#pragma once
#include "eVector3.h"
#include "eVector4.h"
#include <cmath>

namespace KYR
{

template <typename T> struct eMatrix4T
{
    T m[16];

    eMatrix4T() { SetIdentity(); }
    explicit eMatrix4T(T const* p)
    {
        for (int i = 0; i < 16; ++i)
            m[i] = p[i];
    }
    template <typename U> explicit eMatrix4T(eMatrix4T<U> const& o)
    {
        for (int i = 0; i < 16; ++i)
            m[i] = (T)o.m[i];
    }

    void SetIdentity()
    {
        for (int i = 0; i < 16; ++i)
            m[i] = (i % 5 == 0) ? T(1) : T(0);
    }
    T& operator[](int i) { return m[i]; }
    T const& operator[](int i) const { return m[i]; }
    T& At(int row, int col) { return m[col * 4 + row]; }
    T const& At(int row, int col) const { return m[col * 4 + row]; }
    T* Ptr() { return m; }
    T const* Ptr() const { return m; }

    bool operator==(eMatrix4T const& o) const
    {
        for (int i = 0; i < 16; ++i)
            if (m[i] != o.m[i])
                return false;
        return true;
    }
    bool operator!=(eMatrix4T const& o) const { return !(*this == o); }

    eMatrix4T operator*(eMatrix4T const& b) const
    {
        eMatrix4T r;
        for (int c = 0; c < 4; ++c)
            for (int rr = 0; rr < 4; ++rr)
            {
                T s = T(0);
                for (int k = 0; k < 4; ++k)
                    s += At(rr, k) * b.At(k, c);
                r.At(rr, c) = s;
            }
        return r;
    }
    eMatrix4T& operator*=(eMatrix4T const& b) { return *this = *this * b; }

    eVector4T<T> operator*(eVector4T<T> const& v) const
    {
        eVector4T<T> r;
        for (int rr = 0; rr < 4; ++rr)
            r[rr] = At(rr, 0) * v.x + At(rr, 1) * v.y + At(rr, 2) * v.z + At(rr, 3) * v.w;
        return r;
    }
    // Point transform (w = 1) without the perspective divide.
    eVector3T<T> TransformPoint(eVector3T<T> const& v) const
    {
        eVector4T<T> r = *this * eVector4T<T>(v.x, v.y, v.z, T(1));
        return eVector3T<T>(r.x, r.y, r.z);
    }
    // Direction transform (w = 0).
    eVector3T<T> TransformVector(eVector3T<T> const& v) const
    {
        eVector4T<T> r = *this * eVector4T<T>(v.x, v.y, v.z, T(0));
        return eVector3T<T>(r.x, r.y, r.z);
    }

    eMatrix4T Transpose() const
    {
        eMatrix4T r;
        for (int c = 0; c < 4; ++c)
            for (int rr = 0; rr < 4; ++rr)
                r.At(rr, c) = At(c, rr);
        return r;
    }

    // General inverse by cofactors; a singular matrix gives the identity.
    eMatrix4T Inverse() const
    {
        T const* a = m;
        T inv[16];
        inv[0] = a[5] * a[10] * a[15] - a[5] * a[11] * a[14] - a[9] * a[6] * a[15] +
                 a[9] * a[7] * a[14] + a[13] * a[6] * a[11] - a[13] * a[7] * a[10];
        inv[4] = -a[4] * a[10] * a[15] + a[4] * a[11] * a[14] + a[8] * a[6] * a[15] -
                 a[8] * a[7] * a[14] - a[12] * a[6] * a[11] + a[12] * a[7] * a[10];
        inv[8] = a[4] * a[9] * a[15] - a[4] * a[11] * a[13] - a[8] * a[5] * a[15] +
                 a[8] * a[7] * a[13] + a[12] * a[5] * a[11] - a[12] * a[7] * a[9];
        inv[12] = -a[4] * a[9] * a[14] + a[4] * a[10] * a[13] + a[8] * a[5] * a[14] -
                  a[8] * a[6] * a[13] - a[12] * a[5] * a[10] + a[12] * a[6] * a[9];
        inv[1] = -a[1] * a[10] * a[15] + a[1] * a[11] * a[14] + a[9] * a[2] * a[15] -
                 a[9] * a[3] * a[14] - a[13] * a[2] * a[11] + a[13] * a[3] * a[10];
        inv[5] = a[0] * a[10] * a[15] - a[0] * a[11] * a[14] - a[8] * a[2] * a[15] +
                 a[8] * a[3] * a[14] + a[12] * a[2] * a[11] - a[12] * a[3] * a[10];
        inv[9] = -a[0] * a[9] * a[15] + a[0] * a[11] * a[13] + a[8] * a[1] * a[15] -
                 a[8] * a[3] * a[13] - a[12] * a[1] * a[11] + a[12] * a[3] * a[9];
        inv[13] = a[0] * a[9] * a[14] - a[0] * a[10] * a[13] - a[8] * a[1] * a[14] +
                  a[8] * a[2] * a[13] + a[12] * a[1] * a[10] - a[12] * a[2] * a[9];
        inv[2] = a[1] * a[6] * a[15] - a[1] * a[7] * a[14] - a[5] * a[2] * a[15] +
                 a[5] * a[3] * a[14] + a[13] * a[2] * a[7] - a[13] * a[3] * a[6];
        inv[6] = -a[0] * a[6] * a[15] + a[0] * a[7] * a[14] + a[4] * a[2] * a[15] -
                 a[4] * a[3] * a[14] - a[12] * a[2] * a[7] + a[12] * a[3] * a[6];
        inv[10] = a[0] * a[5] * a[15] - a[0] * a[7] * a[13] - a[4] * a[1] * a[15] +
                  a[4] * a[3] * a[13] + a[12] * a[1] * a[7] - a[12] * a[3] * a[5];
        inv[14] = -a[0] * a[5] * a[14] + a[0] * a[6] * a[13] + a[4] * a[1] * a[14] -
                  a[4] * a[2] * a[13] - a[12] * a[1] * a[6] + a[12] * a[2] * a[5];
        inv[3] = -a[1] * a[6] * a[11] + a[1] * a[7] * a[10] + a[5] * a[2] * a[11] -
                 a[5] * a[3] * a[10] - a[9] * a[2] * a[7] + a[9] * a[3] * a[6];
        inv[7] = a[0] * a[6] * a[11] - a[0] * a[7] * a[10] - a[4] * a[2] * a[11] +
                 a[4] * a[3] * a[10] + a[8] * a[2] * a[7] - a[8] * a[3] * a[6];
        inv[11] = -a[0] * a[5] * a[11] + a[0] * a[7] * a[9] + a[4] * a[1] * a[11] -
                  a[4] * a[3] * a[9] - a[8] * a[1] * a[7] + a[8] * a[3] * a[5];
        inv[15] = a[0] * a[5] * a[10] - a[0] * a[6] * a[9] - a[4] * a[1] * a[10] +
                  a[4] * a[2] * a[9] + a[8] * a[1] * a[6] - a[8] * a[2] * a[5];
        T det = a[0] * inv[0] + a[1] * inv[4] + a[2] * inv[8] + a[3] * inv[12];
        if (det == T(0))
            return eMatrix4T();
        eMatrix4T r;
        for (int i = 0; i < 16; ++i)
            r.m[i] = inv[i] / det;
        return r;
    }

    static eMatrix4T Translation(T x, T y, T z)
    {
        eMatrix4T r;
        r.m[12] = x;
        r.m[13] = y;
        r.m[14] = z;
        return r;
    }
    static eMatrix4T Translation(eVector3T<T> const& v) { return Translation(v.x, v.y, v.z); }
    static eMatrix4T Scale(T x, T y, T z)
    {
        eMatrix4T r;
        r.m[0] = x;
        r.m[5] = y;
        r.m[10] = z;
        return r;
    }
    // Right-handed rotations by an angle in radians.
    static eMatrix4T RotationX(T a)
    {
        eMatrix4T r;
        T c = (T)std::cos((double)a), s = (T)std::sin((double)a);
        r.m[5] = c;
        r.m[6] = s;
        r.m[9] = -s;
        r.m[10] = c;
        return r;
    }
    static eMatrix4T RotationY(T a)
    {
        eMatrix4T r;
        T c = (T)std::cos((double)a), s = (T)std::sin((double)a);
        r.m[0] = c;
        r.m[2] = -s;
        r.m[8] = s;
        r.m[10] = c;
        return r;
    }
    static eMatrix4T RotationZ(T a)
    {
        eMatrix4T r;
        T c = (T)std::cos((double)a), s = (T)std::sin((double)a);
        r.m[0] = c;
        r.m[1] = s;
        r.m[4] = -s;
        r.m[5] = c;
        return r;
    }
};

typedef eMatrix4T<double> eMatrix4d;
typedef eMatrix4T<float> eMatrix4f;

} // namespace KYR
