// Raster records of the host: a block of one-channel values over a map rectangle, the grid
// that describes a raster's cells, and a queued replacement of a texture's pixels.
#pragma once
#include "eRect.h"
#include "eTexture.h"

namespace KYR
{

// One channel of values, row after row (row 0 at the top of the rectangle), in pixel format
// 8 (unsigned byte), 16 (signed 16-bit), 17 (unsigned 16-bit) or 3200 (32-bit float).
// With m_bOwnData set (the default) the destructor frees m_pData, which must come from
// Allocate or from new[] of a plain type.
class eRasterBlock
{
public:
    eRasterBlock();
    virtual ~eRasterBlock();
    eRasterBlock(eRasterBlock const&) = delete;
    eRasterBlock& operator=(eRasterBlock const&) = delete;

    // Replaces the pixels with a zeroed raster of the given format and size; null on an
    // unknown format or a bad size (the block is then empty).
    void* Allocate(int pixelFormat, int width, int height);
    void Free();

    int m_nPixelFormat;
    int m_nWidth;
    int m_nHeight;
    eRect2D m_rcBounds; // map rectangle
    double m_dMinimum;
    double m_dMaximum;
    void* m_pData;
    unsigned char m_bOwnData;
};

// Cell layout of a raster: origin, cell size and the value marking no data.
class eRasterGrid
{
public:
    eRasterGrid() : m_dOriginX(0.0), m_dOriginY(0.0), m_dCellX(0.0), m_dCellY(0.0), m_dNoData(0.0)
    {
    }
    virtual ~eRasterGrid() {}

    double m_dOriginX;
    double m_dOriginY;
    double m_dCellX;
    double m_dCellY;
    double m_dNoData;
};

// A raster waiting to replace a texture's pixels. x and y are kept for the caller.
struct eTextureUpdate
{
    int m_nX = 0;
    int m_nY = 0;
    eTextureInfo* m_pInfo = nullptr;
};

} // namespace KYR
