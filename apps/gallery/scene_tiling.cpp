// Scene "tiling": a mountainous island of synthetic heights (512 x 512 metres a pixel over
// a region of the Mediterranean) classified into repeating ground textures by height: sea
// below the coast, a sand beach, grassland, rock on the slopes and snow on the peaks, with
// mixed bands between them, lit by the afternoon sun.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eFile.h"
#include "eRenderTiling.h"
#include "eTexture.h"
#include <algorithm>
#include <cmath>

namespace
{

double const kWest = 8.0, kEast = 20.0, kSouth = 35.0, kNorth = 44.0;
int const kSize = 512;
double const kLowest = -1500.0, kHighest = 3200.0; // metres

double Hash(int x, int y, int seed)
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
    double a = Hash(ix, iy, seed), b = Hash(ix + 1, iy, seed);
    double c = Hash(ix, iy + 1, seed), d = Hash(ix + 1, iy + 1, seed);
    return a + (b - a) * fx + (c - a) * fy + (a - b - c + d) * fx * fy;
}

double Fractal(double x, double y, int seed, bool ridged)
{
    double sum = 0.0, amplitude = 0.5;
    for (int o = 0; o < 6; ++o, x *= 2.03, y *= 2.03, amplitude *= 0.5)
    {
        double n = Noise(x, y, seed + o);
        sum += amplitude * (ridged ? std::pow(1.0 - std::fabs(2.0 * n - 1.0), 2.0) : n);
    }
    return sum;
}

// Metres at (u, v) in 0..1 (v = 0 at the north edge): an island that rises from the sea
// floor to a ridge of peaks along its length, with a ragged coast.
double Height(double u, double v)
{
    double du = (u - 0.5) / 0.36, dv = (v - 0.52) / 0.3;
    double island =
        1.0 - std::sqrt(du * du + dv * dv) + 0.35 * (Fractal(u * 6.0, v * 6.0, 3, false) - 0.45);
    double ridge = std::exp(-std::pow((v - 0.5 - 0.08 * std::sin(u * 9.0)) / 0.16, 2.0));
    double peaks = Fractal(u * 7.0, v * 7.0, 11, true);
    double h = -1400.0 + 2600.0 * std::clamp(island, -0.2, 0.6) / 0.6;
    if (island > 0.0)
        h += 3000.0 * ridge * peaks * std::min(1.0, island * 3.0);
    return std::clamp(h, kLowest, kHighest);
}

KYR::eRasterBlock* MakeBlock()
{
    auto* block = new KYR::eRasterBlock();
    float* data = static_cast<float*>(block->Allocate(KYR::ePF_FLOAT, kSize, kSize));
    for (int y = 0; y < kSize && data; ++y)
        for (int x = 0; x < kSize; ++x)
            data[(size_t)y * kSize + x] = (float)Height((x + 0.5) / kSize, (y + 0.5) / kSize);
    block->m_dMinimum = kLowest;
    block->m_dMaximum = kHighest;
    double k = Gallery::kEarthRadius * Gallery::kDegToRad; // plate carree map metres
    block->m_rcBounds = KYR::eRect2D(kWest * k, kNorth * k, kEast * k, kSouth * k);
    return block;
}

KYR::eTexture* GroundTexture(char const* name)
{
    KYR::eString path = KYR::eSystem::GetWorkPath() + "Resources/Tiling/" + name + ".png";
    KYR::eTexture* texture = KYR::eTextureOperator::GetSingleton().CreateTexture(
        path, KYR::eTWM_REPEAT, KYR::eTFM_LINEAR);
    if (texture)
    {
        texture->SetAutoMipMap(1);
        texture->SetTextureMinFilter(KYR::eTFM_LINEAR_MIPMAP_LINEAR);
    }
    return texture;
}

// Normalised height of a height in metres.
float Level(double metres)
{
    return (float)((metres - kLowest) / (kHighest - kLowest));
}

bool BuildTiling(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    Gallery::AddEarth(scene, keep, -10.0, 20.0);
    scene.Camera().LookAt(14.0, 39.2, 1.05e6, 0.0, 30.0);
    KYR::eRasterBlock* block = MakeBlock();
    KYR::eRect2D bounds = block->m_rcBounds;
    auto* tiling = keep.Keep(new KYR::eRenderTiling(block));
    tiling->SetTilingBounds(bounds);
    tiling->SetTilingLevel(9);
    for (char const* name : {"water", "sand", "grass", "rock", "snow"})
        if (KYR::eTexture* texture = GroundTexture(name))
            tiling->AddTilingTexture(texture);
    // Sea below the coast, a narrow beach, grass up to 1100 m, rock from 1500 m, snow above
    // 2500 m, each band mixing into the next.
    tiling->SetTilingMixSpans({Level(kLowest), Level(-20.0), Level(10.0), Level(60.0), Level(160.0),
                               Level(1100.0), Level(1500.0), Level(2300.0), Level(2600.0),
                               Level(kHighest)});
    scene.Add(tiling);
    return true;
}

Gallery::Register
    s_tiling({"tiling",
              "an island's heights classified into sea, sand, grass, rock and "
              "snow textures",
              KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE,
              Gallery::WithEarth({"Resources/Tiling/water.png", "Resources/Tiling/sand.png",
                                  "Resources/Tiling/grass.png", "Resources/Tiling/rock.png",
                                  "Resources/Tiling/snow.png"}),
              BuildTiling});

} // namespace
