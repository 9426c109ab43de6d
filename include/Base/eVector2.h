#pragma once

namespace KYR
{

template <typename T> struct eVector2T
{
    T x, y;
    eVector2T() : x(T()), y(T()) {}
    eVector2T(T x_, T y_) : x(x_), y(y_) {}
    bool operator==(eVector2T const& o) const { return x == o.x && y == o.y; }
    bool operator!=(eVector2T const& o) const { return !(*this == o); }
    eVector2T operator+(eVector2T const& o) const { return eVector2T(x + o.x, y + o.y); }
    eVector2T operator-(eVector2T const& o) const { return eVector2T(x - o.x, y - o.y); }
    eVector2T operator*(T s) const { return eVector2T(x * s, y * s); }
    T& operator[](int i) { return (&x)[i]; }
    T const& operator[](int i) const { return (&x)[i]; }
};

typedef eVector2T<double> eVector2d;
typedef eVector2T<float> eVector2f;

} // namespace KYR
