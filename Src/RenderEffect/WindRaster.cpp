#include "WindRaster.h"
#include "WindField.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eRenderEngine.h"
#include <algorithm>
#include <cmath>

namespace KYR
{

namespace
{

// One turn as the colour and distortion formulas take it, a little short of 2 pi.
double const kTurn = 6.2831852;
// Offset in degrees for the numerical derivative of the projection: small enough to stay
// linear at any zoom, large enough to stand above the rounding of a planet-sized world.
double const kOffset = 0.0000012;
// The square of the level 0 tile on the plane: map points outside it are off the world.
double const kHalfWorld = 20037508.342789244;

// What projecting a geographic point to the screen needs, fetched once per build.
struct View
{
    eCamera* camera;
    eCoordSys* coordSys;
    eSceneMode mode;
    int viewHeight;

    // Pixel of a geographic point, y counted from the top row as the picking ray counts
    // it, so that a point projects back onto the very pixel it was picked at. False when
    // it does not convert or lands left of or above the screen.
    bool Screen(double lon, double lat, ePoint2D& screen) const
    {
        ePoint2D map;
        if (!coordSys->GeoToMap(ePoint2D(lon, lat), map))
            return false;
        ePoint2D logical;
        coordSys->MapToLogicalPoint(map, logical);
        eVector3T<double> world;
        coordSys->LogicalToWorld(mode, logical, world, 0.0);
        eVector3T<double> window = camera->Project(world);
        screen = ePoint2D(window.x, viewHeight - window.y);
        return !(screen.x < 0.0 || screen.y < 0.0);
    }

    // Pixels per degree east (scaled to pixels per unit of distance by the cosine of the
    // latitude) and per degree north at a point seen at pixel (px, py). The offsets point
    // toward the equator and the prime meridian, so the neighbours never cross the date
    // line or a pole. All four stay zero when a neighbour is off the screen.
    void Distortion(double lon, double lat, int px, int py, double& dux, double& duy, double& dvx,
                    double& dvy) const
    {
        dux = duy = dvx = dvy = 0.0;
        double const hx = lon >= 0.0 ? -kOffset : kOffset;
        double const hy = lat >= 0.0 ? -kOffset : kOffset;
        ePoint2D east, north;
        if (!Screen(lon + hx, lat, east) || !Screen(lon, lat + hy, north))
            return;
        double const c = std::cos(lat / 360.0 * kTurn);
        dux = (east.x - px) / hx / c;
        duy = (east.y - py) / hx / c;
        dvx = (north.x - px) / hy;
        dvy = (north.y - py) / hy;
    }
};

WindRaster::Cell const kZeroCell = {0.0, 0.0, 0.0};

} // namespace

// ----- geographic grid --------------------------------------------------------------------

WindRaster::Grid::Grid()
    : bounds(-180.0, 90.0, 180.0, -90.0), columnCount(0), nx(0), ny(0), dx(1.0), dy(1.0), left(0.0),
      top(0.0), right(0.0), bottom(0.0)
{
}

bool WindRaster::Grid::Build()
{
    if (source.empty())
        return false;
    // The wind field of the particle winds orders the rows and moves a 0..360 header; this
    // grid takes its columns and adds the speed and the wrap column.
    WindField field;
    field.nx = nx;
    field.ny = ny;
    field.dx = dx;
    field.dy = dy;
    field.left = left;
    field.top = top;
    field.right = right;
    field.bottom = bottom;
    field.source.swap(source);
    source.clear();
    if (!field.Build())
        return false;
    left = field.left;
    right = field.right;
    bounds = field.bounds;
    int const cols = nx > 0 ? nx : 0, rows = ny > 0 ? ny : 0;
    bool const wrap = cols > 1 && std::floor(nx * dx) >= 360.0;
    columnCount = cols + (wrap ? 1 : 0);
    // The copy of the first column stands one column spacing east of the last.
    if (wrap)
        bounds.right += (bounds.right - bounds.left) / (cols - 1);
    size_t const count = (size_t)columnCount * rows;
    cells.Reset(new Cell[count ? count : 1]());
    for (int i = 0; i < columnCount; ++i)
        for (int j = 0; j < rows; ++j)
        {
            ePoint2D const& w = field.columns[i % cols][j];
            cells[(size_t)i * rows + j] = Cell{w.x, w.y, std::sqrt(w.x * w.x + w.y * w.y)};
        }
    return true;
}

WindRaster::Cell WindRaster::Grid::Sample(double lon, double lat) const
{
    if (!cells || columnCount < 1 || ny < 1 || !bounds.PtInRect(ePoint2D(lon, lat)) ||
        !(bounds.right > bounds.left) || !(bounds.top > bounds.bottom))
        return kZeroCell;
    double const fx =
        (columnCount - 1 - 0.000001) * (lon - bounds.left) / (bounds.right - bounds.left);
    double const fy = (ny - 1 - 0.000001) * (lat - bounds.bottom) / (bounds.top - bounds.bottom);
    // Strict on fy, so the bottom row itself gives no wind.
    if (!(fx >= 0.0 && std::ceil(fx) < columnCount && fy > 0.0 && std::ceil(fy) < ny))
        return kZeroCell;
    int const x0 = (int)std::floor(fx), y0 = (int)std::floor(fy);
    int const x1 = std::min(x0 + 1, columnCount - 1), y1 = std::min(y0 + 1, ny - 1);
    double const wx = 1.0 - (fx - x0), wy = 1.0 - (fy - y0);
    Cell const& a = cells[(size_t)x0 * ny + y0];
    Cell const& b = cells[(size_t)x1 * ny + y0];
    Cell const& c = cells[(size_t)x0 * ny + y1];
    Cell const& d = cells[(size_t)x1 * ny + y1];
    auto mix = [&](double Cell::*f)
    { return wy * (wx * a.*f + (1.0 - wx) * b.*f) + (1.0 - wy) * (wx * c.*f + (1.0 - wx) * d.*f); };
    return Cell{mix(&Cell::x), mix(&Cell::y), mix(&Cell::speed)};
}

// ----- screen field -----------------------------------------------------------------------

WindRaster::WindRaster() : width(0), height(0), engine(nullptr) {}

WindRaster::Cell const& WindRaster::Zero()
{
    return kZeroCell;
}

eVector4T<unsigned char> WindRaster::Sinebow(double t, unsigned char alpha)
{
    double const a = t * kTurn * 5 / 6 * 0.75;
    double const s = std::sin(a), c = std::cos(a);
    return eVector4T<unsigned char>((unsigned char)std::floor(255 * std::max(-c, 0.0)),
                                    (unsigned char)std::floor(255 * std::max(s, 0.0)),
                                    (unsigned char)std::floor(255 * std::max({-s, c, 0.0})), alpha);
}

eVector4T<unsigned char> WindRaster::ExtendedSinebow(double t, unsigned char alpha)
{
    eVector4T<unsigned char> base = Sinebow(1.0, 0);
    auto toward = [t](unsigned char channel)
    { return (unsigned char)std::floor(channel + (255 - channel) * t); };
    return eVector4T<unsigned char>(toward(base.x), toward(base.y), toward(base.z), alpha);
}

void WindRaster::Build(int newWidth, int newHeight, eRenderEngine* newEngine)
{
    engine = newEngine;
    newWidth = std::max(newWidth, 0);
    newHeight = std::max(newHeight, 0);
    size_t const count = (size_t)newWidth * newHeight;
    if (newWidth != width || newHeight != height || !columns || !mask)
    {
        width = newWidth;
        height = newHeight;
        columns.Reset(new Cell[count ? count : 1]());
        mask.Reset(new unsigned char[count ? count * 4 : 4]());
    }
    for (size_t i = 0; i < count; ++i)
    {
        unsigned char* p = &mask[i * 4];
        p[0] = 255;
        p[1] = 0;
        p[2] = 0;
        p[3] = 1;
    }
    eCamera* camera = engine ? engine->GetCamera() : nullptr;
    eCoordSys* coordSys = engine ? engine->GetCoordSys() : nullptr;
    if (!camera || !coordSys)
    {
        std::fill(&columns[0], &columns[0] + count, kZeroCell);
        return;
    }
    View const view{camera, coordSys, camera->GetSceneMode(),
                    camera->GetViewport()->GetActualHeight()};
    bool const plane = view.mode == eSM_PLANE;
    eRect2D const world(-kHalfWorld, kHalfWorld, kHalfWorld, -kHalfWorld);
    double const k = height / 6000.0;
    for (int x = 0; x + 1 < width; x += 2)
        for (int y = 0; y + 1 < height; y += 2)
        {
            Cell cell = kZeroCell;
            ePoint2D map, geo;
            // A transparent mask pixel marks a block left out.
            bool const hit = mask[((size_t)y * width + x) * 4 + 3] != 0 &&
                             engine->PixelToMap(ePoint(x, y), map) &&
                             (!plane || world.PtInRect(map)) && coordSys->MapToGeo(map, geo);
            if (hit)
            {
                Cell const wind = grid.Sample(geo.x, geo.y);
                double dux, duy, dvx, dvy;
                view.Distortion(geo.x, geo.y, x, y, dux, duy, dvx, dvy);
                cell = Cell{dux * k * wind.x + dvx * k * wind.y,
                            duy * k * wind.x + dvy * k * wind.y, wind.speed};
                double const s = std::min(wind.speed, 100.0) / 100;
                eVector4T<unsigned char> const colour =
                    s < 0.45 ? Sinebow(s / 0.45, 102) : ExtendedSinebow((s - 0.45) / 0.55, 102);
                for (int row : {height - y - 1, height - y - 2})
                    for (int col : {x, x + 1})
                    {
                        unsigned char* p = &mask[((size_t)row * width + col) * 4];
                        p[0] = colour.x;
                        p[1] = colour.y;
                        p[2] = colour.z;
                        p[3] = colour.w;
                    }
            }
            for (int col : {x, x + 1})
                for (int row : {y, y + 1})
                    columns[(size_t)col * height + row] = cell;
        }
}

} // namespace KYR
