// The wind field turned into screen space: for every pixel of the view the on-screen
// direction and length a particle moves there, and a coloured picture of the wind speed.
// Built once whenever the view comes to rest, since each 2 by 2 block costs a pick and two
// projections; the particles then only read cells.
#pragma once
#include "eRect.h"
#include "eShared.h"
#include "eVector4.h"
#include <vector>

namespace KYR
{

class eRenderEngine;

struct WindRaster
{
    // A screen vector (x, y in pixels, y down the screen) with the wind speed; in the
    // geographic grid the same three values are u (east), v (north) and the speed.
    struct Cell
    {
        double x;
        double y;
        double speed;
    };

    // The geographic wind grid: rows as delivered, row order by the sign of dy, bilinear
    // sampling. A grid that spans the whole circle of longitude gets one more column, a
    // copy of the first, so that points between the last column and the date line blend
    // into the first instead of falling outside.
    struct Grid
    {
        Grid();
        // Builds the cells from source and empties it; false when source is empty.
        bool Build();
        // (u, v, speed) at a geographic point; all zero outside the grid and on its bottom
        // row.
        Cell Sample(double lon, double lat) const;

        eRect2D bounds;  // area of the cells, the wrap column included
        int columnCount; // nx, or nx + 1 with the wrap column
        int nx;
        int ny;
        double dx;
        double dy; // its sign tells the row order of source: > 0 bottom row first
        double left;
        double top;
        double right;
        double bottom;
        eShared<Cell[]> cells; // column i, row j (row 0 at the bottom) at i * ny + j
        std::vector<ePoint2D> source;
    };

    WindRaster();

    // Fills the field for a view of width x height pixels (both even) from the engine's
    // camera and coordinate system. Keeps the buffers when the size stands.
    void Build(int width, int height, eRenderEngine* engine);
    // Cell at pixel (x, y), y counted from the top row; a zero cell outside the field.
    Cell const& At(int x, int y) const
    {
        if (!columns || x < 0 || y < 0 || x >= width || y >= height)
            return Zero();
        return columns[(size_t)x * height + y];
    }
    static Cell const& Zero();

    // Colours of the speed picture: blue through green and red to purple for t in 0..1, and
    // that purple turned toward white by t.
    static eVector4T<unsigned char> Sinebow(double t, unsigned char alpha);
    static eVector4T<unsigned char> ExtendedSinebow(double t, unsigned char alpha);

    int width;
    int height;
    eShared<Cell[]> columns;       // column x, row y (row 0 at the top) at x * height + y
    eShared<unsigned char[]> mask; // RGBA, width * height, row 0 at the bottom
    eRenderEngine* engine;         // not owned
    Grid grid;
};

} // namespace KYR
