// Scenes "hillshade" and "hillshade-update": a synthetic terrain raster (ridges and valleys
// over a continent-sized rectangle, 1024 x 1024 floats) coloured and relief-shaded over the
// tiles of the globe with its relief. The second scene draws one frame, then a loader thread
// replaces the raster through UpdateTexture, and the saved frame shows the new one.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eRenderGlobe.h"
#include "eRenderHillShading.h"
#include <algorithm>
#include <cmath>
#include <thread>

namespace
{

double const kWest = 70.0, kEast = 130.0, kSouth = 15.0, kNorth = 55.0;
int const kSize = 1024;

// Smooth value noise on an integer lattice, 0..1.
double Lattice(int x, int y, int seed)
{
    unsigned int h = (unsigned int)x * 374761393u + (unsigned int)y * 668265263u +
                     (unsigned int)seed * 2246822519u;
    h = (h ^ (h >> 13)) * 1274126177u;
    return ((h ^ (h >> 16)) & 0xFFFF) / 65535.0;
}

double Noise(double x, double y, int seed)
{
    int ix = (int)std::floor(x), iy = (int)std::floor(y);
    double fx = x - ix, fy = y - iy;
    fx = fx * fx * (3.0 - 2.0 * fx);
    fy = fy * fy * (3.0 - 2.0 * fy);
    double a = Lattice(ix, iy, seed), b = Lattice(ix + 1, iy, seed);
    double c = Lattice(ix, iy + 1, seed), d = Lattice(ix + 1, iy + 1, seed);
    return (a + (b - a) * fx) + ((c + (d - c) * fx) - (a + (b - a) * fx)) * fy;
}

// Ridged fractal: sharp crests where the noise crosses its middle.
double Ridged(double x, double y, int seed)
{
    double sum = 0.0, amp = 0.5, freq = 1.0;
    for (int o = 0; o < 6; ++o)
    {
        double n = 1.0 - std::fabs(Noise(x * freq, y * freq, seed + o) * 2.0 - 1.0);
        sum += n * n * amp;
        amp *= 0.5;
        freq *= 2.03;
    }
    return sum;
}

// Height in metres at (u, v) in 0..1 (v = 0 at the north edge): mountain belts along a few
// arcs, ridged detail, and a river valley; `seed` gives another landscape.
double Terrain(double u, double v, int seed)
{
    double s = seed * 0.37;
    double belt1 = std::exp(-std::pow((v - 0.3 - 0.1 * std::sin(u * 5.0 + s)) / 0.12, 2.0));
    double belt2 = std::exp(-std::pow((u - 0.7 - 0.15 * std::cos(v * 4.0 + s)) / 0.1, 2.0));
    double mountains = std::max(belt1, 0.8 * belt2);
    double detail = Ridged(u * 12.0, v * 12.0, seed);
    double h =
        200.0 + 600.0 * Noise(u * 4.0, v * 4.0, seed + 11) + 5000.0 * mountains * detail * detail;
    double valley = v - (0.62 + 0.08 * std::sin(u * 9.0 + s));
    h -= 500.0 * std::exp(-valley * valley / 0.0008);
    return std::max(0.0, h);
}

float* MakeHeights(int seed, double& lo, double& hi)
{
    float* data = new float[(size_t)kSize * kSize];
    lo = 1e30;
    hi = -1e30;
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
        {
            double h = Terrain((x + 0.5) / kSize, (y + 0.5) / kSize, seed);
            data[(size_t)y * kSize + x] = (float)h;
            lo = std::min(lo, h);
            hi = std::max(hi, h);
        }
    return data;
}

KYR::eRasterBlock* MakeBlock()
{
    auto* block = new KYR::eRasterBlock();
    block->m_nPixelFormat = KYR::ePF_FLOAT;
    block->m_nWidth = block->m_nHeight = kSize;
    block->m_pData = MakeHeights(0, block->m_dMinimum, block->m_dMaximum);
    double k = Gallery::kEarthRadius * Gallery::kDegToRad; // plate carree map metres
    block->m_rcBounds = KYR::eRect2D(kWest * k, kNorth * k, kEast * k, kSouth * k);
    return block;
}

// The raster lies on the tiles, which follow the globe's relief, so it stays on top of the
// mountains the globe draws.
KYR::eRenderHillShading* AddShading(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.SetClearColor(0.01f, 0.01f, 0.03f, 1.0f);
    scene.Engine().SetSunTime(2026, 3, 20, 5.0); // morning over Asia
    scene.Camera().LookAt(100.0, 33.0, 14000000.0, 0.0, 10.0);
    auto* globe = keep.Keep(new KYR::eRenderGlobe());
    globe->SetUseTexture(1);
    scene.Add(globe);
    auto* shading = keep.Keep(new KYR::eRenderHillShading(MakeBlock()));
    scene.Add(shading);
    return shading;
}

bool BuildHillShade(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    AddShading(scene, keep);
    return true;
}

// The replacement comes already normalised, as a float raster.
bool BuildHillShadeUpdate(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    KYR::eRenderHillShading* shading = AddShading(scene, keep);
    scene.RenderFrame();
    std::thread loader(
        [shading]()
        {
            double lo, hi;
            float* data = MakeHeights(5, lo, hi);
            for (size_t i = 0; i < (size_t)kSize * kSize; ++i)
                data[i] = (float)((data[i] - lo) / (hi - lo));
            auto* info = new KYR::eTextureInfo();
            info->m_nPixelFormat = KYR::ePF_FLOAT;
            info->m_nWidth = info->m_nHeight = kSize;
            info->m_pData = data;
            info->m_nSize = kSize * kSize * 4;
            shading->UpdateTexture(0, 0, info);
        });
    loader.join();
    return true;
}

Gallery::Register
    s_hillshade({"hillshade",
                 "hill-shaded terrain raster over the globe's tiles",
                 KYR::eSM_GLOBE,
                 KYR::PJ_PLATE_CARREE,
                 {"Resources/Icons/WGS84-Globe.jpg", "Resources/Icons/elev_bump_4k.jpg"},
                 BuildHillShade});
Gallery::Register
    s_hillshadeUpdate({"hillshade-update",
                       "hill shading after a loader thread replaced the raster",
                       KYR::eSM_GLOBE,
                       KYR::PJ_PLATE_CARREE,
                       {"Resources/Icons/WGS84-Globe.jpg", "Resources/Icons/elev_bump_4k.jpg"},
                       BuildHillShadeUpdate});

} // namespace
