// Tiles of the globe model: the sets of terrain tiles in view.
#pragma once
#include "eRect.h"
#include <vector>

namespace KYR
{

class eCamera;

// Tile key; the low 5 bits hold the level.
struct eTileKey
{
    unsigned long long m_nKey = 0;
    int GetLevel() const { return (int)(m_nKey & 0x1F); }
};

class eTileSet
{
public:
    eTileSet() {}
    virtual ~eTileSet() {}
    eRect2D GetBounds() { return m_rcBounds; }
    eTileKey& GetKey() { return m_Key; }

protected:
    eRect2D m_rcBounds;
    eTileKey m_Key;
};

class eGlobeModel
{
public:
    eGlobeModel() {}
    virtual ~eGlobeModel() {}
    // The tile sets in view of the camera; the tile layer fills them.
    virtual std::vector<eTileSet*> GetVisibleTileSets(eCamera*) { return m_arTileSets; }

protected:
    std::vector<eTileSet*> m_arTileSets;
};

class eMap
{
public:
    explicit eMap(eGlobeModel* model = nullptr) : m_pGlobeModel(model) {}
    eGlobeModel* GetGlobeModel() { return m_pGlobeModel; }

private:
    eGlobeModel* m_pGlobeModel;
};

class eRasterGrid
{
public:
    eRasterGrid() {}
    virtual ~eRasterGrid() {}
};

} // namespace KYR
