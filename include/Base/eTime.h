// Millisecond time of the Basic library. GetMillisecond is a running count from a
// monotonic clock: good for intervals and seeds, unrelated to the calendar. It wraps
// after about 49 days, so compare two readings by unsigned difference.
#pragma once
#include "eBase.h"
#include <chrono>

namespace KYR
{

class eTime
{
public:
    eTime() : m_nTime(0) {}
    eTime(__int64 ms) : m_nTime(ms) {}
    eTime& operator=(__int64 ms)
    {
        m_nTime = ms;
        return *this;
    }

    // The stored value in milliseconds.
    __int64 GetTime() const { return m_nTime; }

    // A time holding the current running count.
    static eTime Now() { return eTime((__int64)GetMillisecond()); }

    static unsigned int GetMillisecond()
    {
        using namespace std::chrono;
        return (unsigned int)duration_cast<milliseconds>(steady_clock::now().time_since_epoch())
            .count();
    }

private:
    __int64 m_nTime;
};

} // namespace KYR
