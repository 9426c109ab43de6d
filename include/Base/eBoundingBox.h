// Axis-aligned bounding box. A default box is empty: its minimum lies above its
// maximum, so the first merged point becomes both corners.
#pragma once
#include "eMatrix4.h"
#include "eVector3.h"
#include <algorithm>
#include <limits>

namespace KYR
{

template <class T> struct eBoundingBoxT
{
    eVector3T<T> m_vMin;
    eVector3T<T> m_vMax;

    eBoundingBoxT() { SetEmpty(); }
    // The box spanned by two opposite corners, in any order.
    eBoundingBoxT(eVector3T<T> const& a, eVector3T<T> const& b)
        : m_vMin(std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)),
          m_vMax(std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z))
    {
    }

    void SetEmpty()
    {
        T hi = std::numeric_limits<T>::max();
        T lo = std::numeric_limits<T>::lowest();
        m_vMin = eVector3T<T>(hi, hi, hi);
        m_vMax = eVector3T<T>(lo, lo, lo);
    }
    bool IsEmpty() const
    {
        return m_vMin.x > m_vMax.x || m_vMin.y > m_vMax.y || m_vMin.z > m_vMax.z;
    }

    void Merge(eVector3T<T> const& p)
    {
        m_vMin.x = std::min(m_vMin.x, p.x);
        m_vMin.y = std::min(m_vMin.y, p.y);
        m_vMin.z = std::min(m_vMin.z, p.z);
        m_vMax.x = std::max(m_vMax.x, p.x);
        m_vMax.y = std::max(m_vMax.y, p.y);
        m_vMax.z = std::max(m_vMax.z, p.z);
    }
    void Merge(eBoundingBoxT const& b)
    {
        if (b.IsEmpty())
            return;
        Merge(b.m_vMin);
        Merge(b.m_vMax);
    }

    // Centre and extent; both zero for an empty box.
    eVector3T<T> GetCenter() const
    {
        if (IsEmpty())
            return eVector3T<T>();
        return eVector3T<T>((m_vMin.x + m_vMax.x) / T(2), (m_vMin.y + m_vMax.y) / T(2),
                            (m_vMin.z + m_vMax.z) / T(2));
    }
    eVector3T<T> GetSize() const
    {
        if (IsEmpty())
            return eVector3T<T>();
        return m_vMax - m_vMin;
    }

    // Closed box: points on a face are inside. An empty box contains nothing.
    bool Contains(eVector3T<T> const& p) const
    {
        return p.x >= m_vMin.x && p.x <= m_vMax.x && p.y >= m_vMin.y && p.y <= m_vMax.y &&
               p.z >= m_vMin.z && p.z <= m_vMax.z;
    }
    bool Contains(eBoundingBoxT const& b) const
    {
        return !b.IsEmpty() && Contains(b.m_vMin) && Contains(b.m_vMax);
    }
    // True when the two closed boxes share at least one point.
    bool Intersects(eBoundingBoxT const& b) const
    {
        if (IsEmpty() || b.IsEmpty())
            return false;
        return m_vMin.x <= b.m_vMax.x && b.m_vMin.x <= m_vMax.x && m_vMin.y <= b.m_vMax.y &&
               b.m_vMin.y <= m_vMax.y && m_vMin.z <= b.m_vMax.z && b.m_vMin.z <= m_vMax.z;
    }

    // The box around the eight transformed corners (model box to world box).
    eBoundingBoxT Transformed(eMatrix4T<T> const& m) const
    {
        eBoundingBoxT r;
        if (IsEmpty())
            return r;
        for (int i = 0; i < 8; ++i)
        {
            eVector3T<T> c((i & 1) ? m_vMax.x : m_vMin.x, (i & 2) ? m_vMax.y : m_vMin.y,
                           (i & 4) ? m_vMax.z : m_vMin.z);
            r.Merge(m.TransformPoint(c));
        }
        return r;
    }

    bool operator==(eBoundingBoxT const& o) const
    {
        return m_vMin == o.m_vMin && m_vMax == o.m_vMax;
    }
    bool operator!=(eBoundingBoxT const& o) const { return !(*this == o); }
};

typedef eBoundingBoxT<double> eBoundingBoxd;
typedef eBoundingBoxT<float> eBoundingBoxf;

} // namespace KYR
