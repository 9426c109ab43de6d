// Growable array of the Basic library. An index outside the array goes through
// Eassert and yields a reference to a spare default element.
#pragma once
#include "eBase.h"
#include <cstddef>
#include <vector>

namespace KYR
{

template <typename T> class eArray
{
public:
    eArray() {}
    int GetSize() const { return (int)m_arItems.size(); }
    unsigned char IsEmpty() const { return m_arItems.empty() ? 1 : 0; }
    void SetSize(int n)
    {
        if (n >= 0)
            m_arItems.resize((size_t)n);
    }
    int Add(T const& v)
    {
        m_arItems.push_back(v);
        return (int)m_arItems.size() - 1;
    }
    void InsertAt(int i, T const& v)
    {
        if (i < 0 || i > GetSize())
        {
            Eassert("index out of range", __FILE__, __LINE__);
            return;
        }
        m_arItems.insert(m_arItems.begin() + i, v);
    }
    void RemoveAt(int i)
    {
        if (!CheckIndex(i))
            return;
        m_arItems.erase(m_arItems.begin() + i);
    }
    void RemoveAll() { m_arItems.clear(); }
    T& GetAt(int i) { return CheckIndex(i) ? m_arItems[(size_t)i] : Spare(); }
    T const& GetAt(int i) const { return CheckIndex(i) ? m_arItems[(size_t)i] : Spare(); }
    void SetAt(int i, T const& v)
    {
        if (CheckIndex(i))
            m_arItems[(size_t)i] = v;
    }
    T& operator[](int i) { return GetAt(i); }
    T const& operator[](int i) const { return GetAt(i); }
    T* GetData() { return m_arItems.empty() ? nullptr : m_arItems.data(); }
    T const* GetData() const { return m_arItems.empty() ? nullptr : m_arItems.data(); }

private:
    bool CheckIndex(int i) const
    {
        if (i >= 0 && i < GetSize())
            return true;
        Eassert("index out of range", __FILE__, __LINE__);
        return false;
    }
    // Reset on every use so a write through a bad index never leaks into a later read.
    T& Spare() const
    {
        m_tSpare = T();
        return m_tSpare;
    }
    std::vector<T> m_arItems;
    mutable T m_tSpare{};
};

} // namespace KYR
