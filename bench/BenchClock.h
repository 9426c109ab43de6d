// Clocks the benchmarks and the soak program share. They time processor time of the calling
// thread, as the machine may be shared and wall time then counts the waits for a core, and
// report throughput as a ratio to a plain memcpy measured the same way in the same run.
#pragma once
#include <cstring>
#include <ctime>
#include <vector>

// Processor time of this thread, in seconds.
inline double ThreadSeconds()
{
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return t.tv_sec + t.tv_nsec * 1e-9;
}

// Bytes per second of a 64 MiB memcpy, the best of eight, measured once in this process.
inline double MemcpyBytesPerSecond()
{
    static double s_dRate = 0.0;
    if (s_dRate > 0.0)
        return s_dRate;
    size_t const bytes = (size_t)64 << 20;
    std::vector<char> src(bytes, 1), dst(bytes, 0);
    double best = 1e30;
    for (int i = 0; i < 8; ++i)
    {
        double t0 = ThreadSeconds();
        std::memcpy(dst.data(), src.data(), bytes);
        // The copy must happen: the compiler is told the destination is read.
        asm volatile("" : : "r"(dst.data()) : "memory");
        double s = ThreadSeconds() - t0;
        best = s < best ? s : best;
    }
    s_dRate = bytes / best;
    return s_dRate;
}
