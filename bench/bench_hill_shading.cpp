// Hill shading's Create: the normalisation of a 2048 x 2048 raster into floats (plus the
// 256-entry ramp), for a byte and a float raster. Bytes processed count what is read and
// written; compare with BM_MemcpyBandwidth of the same run.
#include "eRenderHillShading.h"
#include <benchmark/benchmark.h>
#include <cstring>

namespace
{

int const kSide = 2048;

template <typename T> void CreateRaster(benchmark::State& state, int format)
{
    auto* block = new KYR::eRasterBlock();
    T* data = static_cast<T*>(block->Allocate(format, kSide, kSide));
    for (size_t i = 0; i < (size_t)kSide * kSide; ++i)
        data[i] = (T)(i % 251);
    block->m_dMinimum = 0.0;
    block->m_dMaximum = 250.0;
    KYR::eRenderHillShading shading(block);
    for (auto _ : state)
    {
        shading.Create(nullptr, 0.0, nullptr);
        benchmark::ClobberMemory();
    }
    size_t bytes = (size_t)kSide * kSide * (sizeof(T) + sizeof(float));
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)bytes);
}

void BM_HillShadingCreateByte(benchmark::State& state)
{
    CreateRaster<unsigned char>(state, 8);
}
void BM_HillShadingCreateFloat(benchmark::State& state)
{
    CreateRaster<float>(state, 3200);
}

} // namespace

BENCHMARK(BM_HillShadingCreateByte)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HillShadingCreateFloat)->Unit(benchmark::kMillisecond);
