// Memory bandwidth yardstick: a plain memcpy of a 64 MiB block, far beyond the caches.
// Other benchmarks report their throughput as a ratio to this one.
#include <benchmark/benchmark.h>
#include <cstring>
#include <vector>

namespace
{

void BM_MemcpyBandwidth(benchmark::State& state)
{
    size_t const bytes = (size_t)64 << 20;
    // Filled so that every page is really mapped before the timing starts.
    std::vector<char> src(bytes, 1);
    std::vector<char> dst(bytes, 0);
    for (auto _ : state)
    {
        std::memcpy(dst.data(), src.data(), bytes);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)bytes);
}

} // namespace

BENCHMARK(BM_MemcpyBandwidth)->Unit(benchmark::kMillisecond);
