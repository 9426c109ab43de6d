// A regular grid of wind vectors (u, v) over a geographic rectangle, built from rows as
// delivered and sampled bilinearly. Used by the particle winds, the typhoon and the
// fishtail lines.
#pragma once
#include "ePoint.h"
#include "eRect.h"
#include "eShared.h"
#include <vector>

namespace KYR
{

struct WindField
{
    WindField();
    // Lets go of the grid. Copies share the columns; the last holder frees them.
    ~WindField();
    WindField(WindField const&) = default;
    WindField& operator=(WindField const&) = default;

    // Frees the old grid and builds columns from `source`; false when source is empty.
    bool Build();
    // Bilinear wind at (x, y) in the coordinates of `bounds`; (0, 0) outside the grid and on
    // its bottom row.
    ePoint2D Sample(double x, double y) const;
    // Lets go of the columns (freed unless a copy still holds them); nx, ny and maxSpeed stay.
    void Clear();

    eRect2D bounds;
    double maxSpeed;
    eShared<ePoint2D*[]> columns; // columns[i][j]: column i, row j, row 0 at the bottom
    int nx;
    int ny;
    double dx;
    double dy; // its sign tells the row order of source: > 0 bottom row first
    double left;
    double top;
    double right;
    double bottom;
    std::vector<ePoint2D> source; // rows of nx vectors, emptied by Build

private:
    int m_nBuiltColumns; // size of the grid as allocated, so Clear and Sample stay inside it
    int m_nBuiltRows;
};

} // namespace KYR
