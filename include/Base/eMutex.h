// Lock of the Basic library. Copied by value, a copy gets a fresh, unlocked lock of the same
// kind rather than sharing or cloning state; objects whose copies share what the lock guards
// hold it as an eShared<eMutex> instead, so that the copies share the lock too.
#pragma once
#include <mutex>

namespace KYR
{

class eMutex
{
public:
    // recursive != 0: the owning thread may lock again (and must unlock as often).
    explicit eMutex(unsigned char recursive = 0) : m_bRecursive(recursive ? 1 : 0) {}
    eMutex(eMutex const& o) : m_bRecursive(o.m_bRecursive) {}
    // Assignment keeps this object's own lock untouched, whatever its state.
    eMutex& operator=(eMutex const&) { return *this; }

    void Lock()
    {
        if (m_bRecursive)
            m_Recursive.lock();
        else
            m_Plain.lock();
    }
    void UnLock()
    {
        if (m_bRecursive)
            m_Recursive.unlock();
        else
            m_Plain.unlock();
    }
    // Takes the lock if it is free; true when taken.
    bool TryLock() { return m_bRecursive ? m_Recursive.try_lock() : m_Plain.try_lock(); }
    unsigned char IsRecursive() const { return m_bRecursive; }

private:
    unsigned char m_bRecursive;
    std::mutex m_Plain;
    std::recursive_mutex m_Recursive;
};

// Holds an eMutex for the lifetime of a scope.
class eMutexGuard
{
public:
    explicit eMutexGuard(eMutex& m) : m_pMutex(&m) { m_pMutex->Lock(); }
    // For a shared lock (eShared<eMutex> reads as the pointer); must not be null.
    explicit eMutexGuard(eMutex* m) : m_pMutex(m) { m_pMutex->Lock(); }
    ~eMutexGuard() { m_pMutex->UnLock(); }
    eMutexGuard(eMutexGuard const&) = delete;
    eMutexGuard& operator=(eMutexGuard const&) = delete;

private:
    eMutex* m_pMutex;
};

} // namespace KYR
