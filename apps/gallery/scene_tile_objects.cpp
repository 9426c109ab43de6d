// Scenes "tile-objects" and "gradation": a temperature-like float raster coloured through
// a colour table over a grid of tile rectangles on the globe, and the same field fading
// into a later one, shown side by side at time ratios 0, 0.5 and 1.
#include "eTilePatch.h"
#include "Gallery.h"
#include "GalleryGeo.h"
#include "eFile.h"
#include "eGradationStrategy.h"
#include "eHostTestMesh.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eRenderGrayColorGradationObject.h"
#include "eRenderGrayTerrainObject.h"
#include "eTexture.h"
#include <cmath>
#include <cstdlib>
#include <vector>

namespace
{

using namespace KYR;

int const kCols = 180, kRows = 120; // half-degree cells

// Degrees Celsius: cold to the north, warm cells drifting east with `shift` degrees.
std::vector<float> Temperature(double west, double north, double shift, double cellX = 0.5,
                               double cellY = 0.5)
{
    std::vector<float> t((size_t)kCols * kRows);
    for (int r = 0; r < kRows; ++r)
        for (int c = 0; c < kCols; ++c)
        {
            double lon = west + (c + 0.5) * cellX, lat = north - (r + 0.5) * cellY;
            double v = 34.0 - 0.9 * lat + 4.0 * std::sin(lon * 0.15) * std::cos(lat * 0.2);
            double dx = lon - (west + 30.0 + shift), dy = lat - (north - 25.0);
            v += 14.0 * std::exp(-(dx * dx + dy * dy) / 60.0);
            t[(size_t)r * kCols + c] = (float)v;
        }
    return t;
}

void Prepare(eRenderGrayColorObject* tiles, double west, double north)
{
    eMaterial* material = new eMaterial();
    ePass* pass = material->CreateTechnique()->CreatePass();
    pass->SetProgram("GrayColorTile");
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(0);
    tiles->SetMaterial(material);
    tiles->AddMesh(Host::MakeTilePatch(12));
    tiles->SetColorTable(eSystem::GetWorkPath() + "Resources/Icons/colortable1.png", eTFM_LINEAR);
    tiles->SetTextureBound(eRect2D(west, north, west + kCols * 0.5, north - kRows * 0.5), 1.0);
    tiles->SetStartVisibleValue(-12.0);
    tiles->SetEndVisibleValue(42.0);
    tiles->SetIsResetNormalize(1);
    tiles->SetTextureTrans(90);
    tiles->SetRelativeHeight(20000.0f);
    // A grid of 10-degree tiles with a thin seam between them.
    for (double lon = west; lon < west + kCols * 0.5 - 1e-9; lon += 10.0)
        for (double lat = north; lat > north - kRows * 0.5 + 1e-9; lat -= 10.0)
            tiles->AddTileBound(eRect2D(lon + 0.2, lat - 0.2, lon + 9.8, lat - 9.8));
}

void AddEarth(Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.SetClearColor(0.01f, 0.01f, 0.03f, 1.0f);
    auto* earth = keep.Keep(new Host::eHostTestMesh(6378137.0, 360, 180));
    earth->SetColor(eVector4T<float>(0.25f, 0.3f, 0.35f, 1.0f));
    scene.Add(earth);
}

bool BuildTiles(Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.Camera().LookAt(115.0, 30.0, 15000000.0, 0.0, 0.0);
    AddEarth(scene, keep);
    auto* tiles = keep.Keep(new eRenderGrayColorObject());
    Prepare(tiles, 70.0, 60.0);
    std::vector<float> t = Temperature(70.0, 60.0, 0.0);
    tiles->AddTexture((unsigned char*)t.data(), kCols, kRows, ePF_FLOAT);
    scene.Add(tiles);
    return true;
}

// Three panels, 30 x 40 degrees each, fading at ratios 0, 0.5 and 1.
bool BuildGradation(Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.Camera().LookAt(105.0, 30.0, 12000000.0, 0.0, 0.0);
    AddEarth(scene, keep);
    for (int i = 0; i < 3; ++i)
    {
        double west = 55.0 + i * 32.0, north = 50.0;
        auto* fade = keep.Keep(new eRenderGrayColorGradationObject());
        Prepare(fade, west, north);
        fade->ClearTileBound();
        for (double lon = west; lon < west + 30.0 - 1e-9; lon += 10.0)
            for (double lat = north; lat > north - 40.0 + 1e-9; lat -= 10.0)
                fade->AddTileBound(eRect2D(lon, lat, lon + 10.0, lat - 10.0));
        fade->SetTextureBound(eRect2D(west, north, west + 30.0, north - 40.0), 1.0);
        fade->SetEndVisibleValue(50.0);
        auto* strategy = new eGradationStrategy();
        strategy->SetTimeStride(60);
        strategy->SetCurrentTime(i * 30);
        std::vector<float> before = Temperature(west, north, -18.0, 30.0 / kCols, 40.0 / kRows);
        std::vector<float> after = Temperature(west, north, -5.0, 30.0 / kCols, 40.0 / kRows);
        for (float& v : after)
            v += 8.0f; // a warmer day
        eTextureOperator& op = eTextureOperator::GetSingleton();
        strategy->SetTexture1(op.CreateTexture((unsigned char*)before.data(), kCols, kRows,
                                               ePF_FLOAT, eTWM_CLAMP_TO_EDGE, eTFM_LINEAR),
                              ePF_FLOAT);
        strategy->SetTexture2(op.CreateTexture((unsigned char*)after.data(), kCols, kRows,
                                               ePF_FLOAT, eTWM_CLAMP_TO_EDGE, eTFM_LINEAR));
        fade->SetGradationStrategy(strategy);
        scene.Add(fade);
    }
    return true;
}

// The grey elevation picture cut to 65..115 E, 15..50 N, as an 8-bit raster.
std::vector<unsigned char> Elevation(int& cols, int& rows)
{
    std::vector<unsigned char> out;
    eTexture* picture = eTextureOperator::GetSingleton().CreateTexture(
        eSystem::GetWorkPath() + "Resources/Icons/elev_bump_4k.jpg", eTWM_CLAMP_TO_EDGE,
        eTFM_LINEAR);
    eImageData* image = picture ? picture->GetImageData() : nullptr;
    if (image && image->m_pData && image->m_nBitsPerPixel == 32)
    {
        double perDegree = image->m_nWidth / 360.0;
        int x0 = (int)((180.0 + 65.0) * perDegree), y0 = (int)((90.0 - 50.0) * perDegree);
        cols = (int)(50.0 * perDegree);
        rows = (int)(35.0 * perDegree);
        for (int r = 0; r < rows; ++r)
            for (int c = 0; c < cols; ++c)
                out.push_back(image->m_pData[(size_t)(y0 + r) * image->m_nPitch + (x0 + c) * 4]);
    }
    delete picture;
    return out;
}

bool BuildTerrain(Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.Camera().LookAt(90.0, 30.0, 9000000.0, 0.0, 20.0);
    AddEarth(scene, keep);
    int cols = 0, rows = 0;
    std::vector<unsigned char> height = Elevation(cols, rows);
    if (height.empty())
        return false;
    auto* terrain = keep.Keep(new eRenderGrayTerrainObject());
    eMaterial* material = new eMaterial();
    ePass* pass = material->CreateTechnique()->CreatePass();
    pass->SetProgram("GrayTerrainTile");
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    terrain->SetMaterial(material);
    terrain->AddMesh(Host::MakeTilePatch(48));
    terrain->AddTexture(height.data(), cols, rows, ePF_UBYTE);
    terrain->SetTextureBound(eRect2D(65.0, 50.0, 115.0, 15.0), 1.0);
    for (double lon = 65.0; lon < 115.0 - 1e-9; lon += 10.0)
        for (double lat = 50.0; lat > 15.0 + 1e-9; lat -= 7.0)
            terrain->AddTileBound(eRect2D(lon, lat, lon + 10.0, lat - 7.0));
    terrain->SetRelativeHeight(5000.0f);
    terrain->SetIsBuild3D(true);
    terrain->SetExagFactor(300.0f);
    terrain->SetIsLightning(1);
    std::srand(5); // the same flash in every picture of this scene
    scene.Add(terrain);
    return true;
}

Gallery::Register s_tiles({"tile-objects",
                           "float temperature raster through a colour table over 10-degree tiles",
                           eSM_GLOBE,
                           PJ_PLATE_CARREE,
                           {"Resources/Icons/colortable1.png"},
                           BuildTiles});
Gallery::Register s_gradation({"gradation",
                               "two rasters fading, side by side at time ratios 0, 0.5 and 1",
                               eSM_GLOBE,
                               PJ_PLATE_CARREE,
                               {"Resources/Icons/colortable1.png"},
                               BuildGradation});

Gallery::Register s_terrain({"tile-terrain",
                             "grey relief raster lifted in 3-D, with a lightning flash",
                             eSM_GLOBE,
                             PJ_PLATE_CARREE,
                             {"Resources/Icons/elev_bump_4k.jpg"},
                             BuildTerrain});

} // namespace
