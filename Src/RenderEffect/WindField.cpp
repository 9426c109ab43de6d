#include "WindField.h"
#include <cmath>

namespace KYR
{

WindField::WindField()
    : bounds(-180.0, 90.0, 180.0, -90.0), maxSpeed(0.0), nx(0), ny(0), dx(1.0), dy(1.0), left(0.0),
      top(0.0), right(0.0), bottom(0.0), m_nBuiltColumns(0), m_nBuiltRows(0)
{
}

WindField::~WindField()
{
    Clear();
}

void WindField::Clear()
{
    columns.Reset();
    m_nBuiltColumns = 0;
    m_nBuiltRows = 0;
}

bool WindField::Build()
{
    if (source.empty())
        return false;
    Clear();
    // A 0..360 header is moved to -180..180; the data keeps its order.
    if (right > 180.0)
    {
        left -= 180.0;
        right -= 180.0;
    }
    bounds = eRect2D(left, top, right, bottom);
    int const cols = nx > 0 ? nx : 0, rows = ny > 0 ? ny : 0;
    // The last holder frees each column, then the array of them.
    columns.Reset(new ePoint2D*[cols > 0 ? cols : 1](),
                  [cols](ePoint2D** grid)
                  {
                      for (int i = 0; i < cols; ++i)
                          delete[] grid[i];
                      delete[] grid;
                  });
    m_nBuiltColumns = cols;
    m_nBuiltRows = rows;
    size_t const count = source.size();
    for (int i = 0; i < cols; ++i)
    {
        columns[i] = new ePoint2D[rows > 0 ? rows : 1];
        for (int j = 0; j < rows; ++j)
        {
            size_t k = dy > 0.0 ? (size_t)nx * j + i : (size_t)nx * (ny - j - 1) + i;
            ePoint2D w = k < count ? source[k] : ePoint2D(0.0, 0.0);
            columns[i][j] = w;
            double speed = std::sqrt(w.x * w.x + w.y * w.y);
            if (speed > maxSpeed)
                maxSpeed = speed;
        }
    }
    source.clear();
    return true;
}

ePoint2D WindField::Sample(double x, double y) const
{
    if (!columns || nx <= 0 || ny <= 0 || m_nBuiltColumns < nx || m_nBuiltRows < ny)
        return ePoint2D(0.0, 0.0);
    double fx = (nx - 1 - 0.000001) * (x - bounds.left) / (bounds.right - bounds.left);
    double fy = (ny - 1 - 0.000001) * (y - bounds.bottom) / (bounds.top - bounds.bottom);
    // Strict on fy, so the bottom row itself gives no wind. ceil(f) < n is written as
    // f <= n - 1, which is the same test without the rounding call.
    if (!(fx >= 0.0 && fx <= nx - 1 && fy > 0.0 && fy <= ny - 1))
        return ePoint2D(0.0, 0.0);
    int const x0 = (int)fx, y0 = (int)fy; // floor, both are positive here
    int const x1 = x0 + (fx > x0 ? 1 : 0), y1 = y0 + (fy > y0 ? 1 : 0);
    double wx = 1.0 - (fx - x0), wy = 1.0 - (fy - y0);
    ePoint2D const& a = columns[x0][y0];
    ePoint2D const& b = columns[x1][y0];
    ePoint2D const& c = columns[x0][y1];
    ePoint2D const& d = columns[x1][y1];
    double u = wy * (wx * a.x + (1.0 - wx) * b.x) + (1.0 - wy) * (wx * c.x + (1.0 - wx) * d.x);
    double v = wy * (wx * a.y + (1.0 - wx) * b.y) + (1.0 - wy) * (wx * c.y + (1.0 - wx) * d.y);
    return ePoint2D(u, v);
}

} // namespace KYR
