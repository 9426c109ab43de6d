#include "eGlobeModel.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eFile.h"
#include "eGlobeRelief.h"
#include <algorithm>
#include <cmath>
#include <new>

namespace KYR
{

// ---------------------------------------------------------------------------------------------
// eRasterBlock
// ---------------------------------------------------------------------------------------------

eRasterBlock::eRasterBlock()
    : m_nPixelFormat(0), m_nWidth(0), m_nHeight(0), m_dMinimum(0.0), m_dMaximum(0.0),
      m_pData(nullptr), m_bOwnData(1)
{
}

eRasterBlock::~eRasterBlock()
{
    if (m_bOwnData)
        Free();
}

void* eRasterBlock::Allocate(int pixelFormat, int width, int height)
{
    Free();
    int bytes = eTextureInfo::BytesPerPixel(pixelFormat);
    if (bytes <= 0 || width <= 0 || height <= 0)
        return nullptr;
    m_pData = new (std::nothrow) unsigned char[(size_t)width * (size_t)height * (size_t)bytes]();
    if (!m_pData)
        return nullptr;
    m_nPixelFormat = pixelFormat;
    m_nWidth = width;
    m_nHeight = height;
    m_bOwnData = 1;
    return m_pData;
}

// Plain arrays carry no size cookie, so releasing the raw block matches new[] of any of them.
void eRasterBlock::Free()
{
    if (m_pData)
        ::operator delete[](m_pData);
    m_pData = nullptr;
}

// ---------------------------------------------------------------------------------------------
// eTileKey, eGlobeModel
// ---------------------------------------------------------------------------------------------

eTileKey eTileKey::Make(int level, int column, int row)
{
    eTileKey key;
    key.m_nKey = (unsigned long long)(level & 0x1F) |
                 ((unsigned long long)(column & 0x1FFFFFF) << 5) |
                 ((unsigned long long)(row & 0x1FFFFFF) << 30);
    return key;
}

eGlobeModel::eGlobeModel()
    : m_pCacheCoordSys(nullptr), m_nCacheMode(0), m_nCacheProjection(0),
      m_pRelief(new Host::eGlobeRelief()), m_bDefaultElevationPicture(true), m_bReliefDirty(true)
{
}

eGlobeModel::~eGlobeModel()
{
    ClearCache();
}

void eGlobeModel::ClearCache()
{
    for (auto& t : m_mapTiles)
        delete t.second;
    m_mapTiles.clear();
    m_arTileSets.clear();
}

void eGlobeModel::SetElevationPicture(eString const& path)
{
    m_strElevationPicture = path;
    m_bDefaultElevationPicture = false;
    m_bReliefDirty = true;
}

eString eGlobeModel::GetElevationPicture() const
{
    // The globe effect's default, read from the work path as it stands now.
    if (m_bDefaultElevationPicture)
        return eSystem::GetWorkPath() + "Resources/Icons/elev_bump_4k.jpg";
    return m_strElevationPicture;
}

void eGlobeModel::SetHeightMapping(double base, double scale)
{
    m_pRelief->SetHeightMapping(base, scale);
    m_bReliefDirty = true;
}

Host::eGlobeRelief const& eGlobeModel::GetRelief()
{
    if (m_bReliefDirty)
    {
        eString path = GetElevationPicture();
        if (path.IsEmpty())
            m_pRelief->SetFlat();
        else
            m_pRelief->Load(path);
        m_bReliefDirty = false;
        ClearCache(); // tiles made on the old relief
    }
    return *m_pRelief;
}

int eGlobeModel::TileLevel(eCoordSys* coordSys, double resolution)
{
    int level = coordSys->ResolutionToLevel(resolution) - 2;
    return std::max(1, std::min(kMaxTileLevel, level));
}

eTileSet* eGlobeModel::GetTile(eCoordSys* coordSys, int level, int column, int row)
{
    eTileKey key = eTileKey::Make(level, column, row);
    auto it = m_mapTiles.find(key.m_nKey);
    if (it != m_mapTiles.end())
        return it->second;
    eRect2D index = coordSys->GetIndexBounds();
    double size = index.Width() / (double)(1 << level);
    eRect2D bounds(index.left + column * size, index.top - row * size,
                   index.left + (column + 1) * size, index.top - (row + 1) * size);
    bounds.IntersectRect(coordSys->GetLogicalBounds());
    eTileSet* tile = bounds.IsEmpty() ? nullptr
                                      : new eTileSet(key, bounds, coordSys->GetSceneMode(),
                                                     coordSys, m_pRelief.get());
    m_mapTiles[key.m_nKey] = tile;
    return tile;
}

bool eGlobeModel::CollectTiles(eCoordSys* coordSys, int level, eRect2D const& view)
{
    m_arTileSets.clear();
    eRect2D index = coordSys->GetIndexBounds();
    int n = 1 << level;
    double size = index.Width() / n;
    int c0 = std::max(0, (int)std::floor((view.left - index.left) / size));
    int c1 = std::min(n - 1, (int)std::floor((view.right - index.left) / size));
    int r0 = std::max(0, (int)std::floor((index.top - view.top) / size));
    int r1 = std::min(n - 1, (int)std::floor((index.top - view.bottom) / size));
    if ((long long)(c1 - c0 + 1) * (r1 - r0 + 1) > kMaxVisibleTiles)
        return false;
    for (int r = r0; r <= r1; ++r)
        for (int c = c0; c <= c1; ++c)
            if (eTileSet* tile = GetTile(coordSys, level, c, r))
                m_arTileSets.push_back(tile);
    return true;
}

std::vector<eTileSet*>* eGlobeModel::GetVisibleTileSets(eCamera* camera)
{
    eCoordSys* coordSys = camera ? camera->GetCoordSys() : nullptr;
    if (!coordSys)
        return nullptr;
    int mode = (int)coordSys->GetSceneMode();
    if (mode == eSM_GLOBE)
        GetRelief();
    int projection = coordSys->GetPrjCoordSys().GetTypeID();
    if (coordSys != m_pCacheCoordSys || mode != m_nCacheMode || projection != m_nCacheProjection)
    {
        ClearCache();
        m_pCacheCoordSys = coordSys;
        m_nCacheMode = mode;
        m_nCacheProjection = projection;
    }
    eRect2D view = camera->GetRenderBounds();
    view.IntersectRect(coordSys->GetLogicalBounds());
    m_arTileSets.clear();
    if (view.IsEmpty())
        return &m_arTileSets;
    double resolution = camera->DistanceToResolution(camera->GetDistance());
    int level = TileLevel(coordSys, resolution);
    while (!CollectTiles(coordSys, level, view) && level > 0)
        --level;
    // Keep the cache bounded: drop tiles out of view once it grows large.
    if (m_mapTiles.size() > 1024)
    {
        for (auto it = m_mapTiles.begin(); it != m_mapTiles.end();)
        {
            bool used = std::find(m_arTileSets.begin(), m_arTileSets.end(), it->second) !=
                        m_arTileSets.end();
            if (used)
                ++it;
            else
            {
                delete it->second;
                it = m_mapTiles.erase(it);
            }
        }
    }
    return &m_arTileSets;
}

} // namespace KYR
