// The volume ray caster: one frame of the storm cell (256 x 256 x 64 voxels from the resource
// tool) at 1024 x 768, alone over a cleared frame, at the default step of 0.01 and at the
// gallery's 0.004; and the upload of its 4 MiB of voxels into the 3-D texture (bytes
// processed: compare with BM_MemcpyBandwidth of the same run). Frames are timed by the wall
// clock: the software rasteriser works on threads of its own.
#include "eFile.h"
#include "eRenderVolumeRayCast.h"
#include "eScene.h"
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <epoxy/gl.h>
#include <vector>

namespace
{

unsigned int const kWidth = 256, kHeight = 256, kDepth = 64;
size_t const kBytes = (size_t)kWidth * kHeight * kDepth;

KYR::Host::eScene& Scene()
{
    static KYR::Host::eScene scene(1024, 768);
    return scene;
}

// The storm's voxels from the work path; empty when the resource is missing.
std::vector<unsigned char> const& StormVoxels()
{
    static std::vector<unsigned char> voxels = []
    {
        std::vector<unsigned char> bytes(kBytes);
        KYR::eString path = KYR::eSystem::GetWorkPath() + "Resources/Weather/storm.raw";
        std::FILE* f = std::fopen(path.Cstr(), "rb");
        size_t read = f ? std::fread(bytes.data(), 1, bytes.size(), f) : 0;
        if (f)
            std::fclose(f);
        if (read != bytes.size())
            bytes.clear();
        return bytes;
    }();
    return voxels;
}

class BenchVolume : public KYR::eRenderVolumeRayCast
{
public:
    void Upload() { RecreateVolumeTex(); }
};

void BM_VolumeFrame(benchmark::State& state)
{
    KYR::Host::eScene& scene = Scene();
    if (!scene.IsReady() || StormVoxels().empty())
    {
        state.SkipWithError("no OpenGL context or no Resources/Weather/storm.raw");
        return;
    }
    // The gallery's storm: 1.98 x 1.62 degrees over Oklahoma, drawn 40 km tall, obliquely.
    KYR::eRenderVolumeRayCast volume;
    KYR::eRect2D bound(-98.49, 36.21, -96.51, 34.59);
    KYR::eVector2T<double> height(0.0, 40000.0);
    volume.SetBound(bound);
    volume.SetHeight(height);
    volume.SetEigenValue(0.3f);
    volume.SetEigenValueSpan(160.0f);
    volume.SetStepSize((float)state.range(0) / 1000.0f);
    auto* voxels = new unsigned char[kBytes];
    std::memcpy(voxels, StormVoxels().data(), kBytes);
    volume.SetVolume3DTex(kWidth, kHeight, kDepth, voxels);
    scene.Camera().LookAt(-97.4, 35.45, 250000.0, 25.0, 72.0, 16000.0);
    scene.Add(&volume);
    scene.RenderFrame(); // uploads, and sizes the entry target
    for (auto _ : state)
        scene.RenderFrame(); // ends with glFinish
    scene.Remove(&volume);
    state.SetItemsProcessed(state.iterations());
}

void BM_VolumeUpload(benchmark::State& state)
{
    KYR::Host::eScene& scene = Scene();
    if (!scene.IsReady())
    {
        state.SkipWithError("no OpenGL context");
        return;
    }
    std::vector<unsigned char> source(kBytes);
    for (size_t i = 0; i < kBytes; ++i)
        source[i] = (unsigned char)(i * 7 % 251);
    BenchVolume volume;
    for (auto _ : state)
    {
        state.PauseTiming();
        auto* voxels = new unsigned char[kBytes];
        std::memcpy(voxels, source.data(), kBytes);
        volume.SetVolume3DTex(kWidth, kHeight, kDepth, voxels);
        state.ResumeTiming();
        volume.Upload(); // TexImage3D, then the processor copy is freed
        glFinish();
    }
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)kBytes);
}

} // namespace

BENCHMARK(BM_VolumeFrame)->Arg(10)->Arg(4)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_VolumeUpload)->Unit(benchmark::kMillisecond)->UseRealTime();
