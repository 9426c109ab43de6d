// Heights for contour scenes and the contour lines through them. The heights come from the
// elevation picture the globe uses (Resources/Icons/elev_bump_4k.jpg, one grey byte per
// pixel over the whole Earth, plate carree, row 0 at 90 N); the lines come from marching
// squares over a grid of them, joined into polylines.
#pragma once
#include "eFile.h"
#include "ePoint.h"
#include "eTexture.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Gallery
{

// The picture is a made-up relief: sea floor at grey 18 to 28, land from about 50 up. The
// contour scenes read grey 40 as sea level and each grey step above it as 40 metres, so the
// highest ground (grey 255) stands at 8,600 m. (The globe draws the same picture lifted far
// higher, 560 m a step, as a visible exaggeration.)
double const kSeaLevelGrey = 40.0;
double const kMetresPerGrey = 40.0;

// The picture's grey values, whole Earth; empty (with a message) when it cannot be read.
struct ElevationPicture
{
    int width = 0, height = 0;
    std::vector<float> grey;

    bool Load(std::string const& path)
    {
        KYR::eFileStream stream;
        KYR::eByteArray bytes;
        if (!stream.Open(path.c_str(), KYR::eSD_READ, 8192) || !stream.LoadByteArray(bytes) ||
            !bytes.GetSize())
        {
            std::fprintf(stderr, "gallery: cannot read the elevation picture %s\n", path.c_str());
            return false;
        }
        std::unique_ptr<KYR::eImageData> image(KYR::eFileParserToolkit::LoadImageData(bytes, 32));
        if (!image || !image->m_pData)
        {
            std::fprintf(stderr, "gallery: %s does not decode as a picture\n", path.c_str());
            return false;
        }
        width = image->m_nWidth;
        height = image->m_nHeight;
        grey.resize((size_t)width * height);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                grey[(size_t)y * width + x] = image->m_pData[(size_t)y * image->m_nPitch + x * 4];
        return true;
    }

    // Height in metres at (lon, lat): a cubic B-spline through the pixel centres. It smooths
    // away the picture's compression noise and, unlike straight interpolation, keeps slopes
    // continuous from pixel to pixel, so shading and contours show no pixel facets.
    double Metres(double lon, double lat) const
    {
        double fx = (lon + 180.0) / 360.0 * width - 0.5;
        double fy = (90.0 - lat) / 180.0 * height - 0.5;
        int x0 = (int)std::floor(fx), y0 = (int)std::floor(fy);
        double wx[4], wy[4];
        Weights(fx - x0, wx);
        Weights(fy - y0, wy);
        double g = 0.0;
        for (int j = 0; j < 4; ++j)
            for (int i = 0; i < 4; ++i)
                g += wx[i] * wy[j] * Grey(x0 - 1 + i, y0 - 1 + j);
        return std::max(0.0, (g - kSeaLevelGrey) * kMetresPerGrey);
    }

private:
    double Grey(int x, int y) const
    {
        x = ((x % width) + width) % width;
        y = std::min(height - 1, std::max(0, y));
        return grey[(size_t)y * width + x];
    }
    // Uniform cubic B-spline weights of the four samples around a fraction t.
    static void Weights(double t, double w[4])
    {
        double t2 = t * t, t3 = t2 * t;
        w[0] = (1.0 - 3.0 * t + 3.0 * t2 - t3) / 6.0;
        w[1] = (4.0 - 6.0 * t2 + 3.0 * t3) / 6.0;
        w[2] = (1.0 + 3.0 * t + 3.0 * t2 - 3.0 * t3) / 6.0;
        w[3] = t3 / 6.0;
    }
};

// Heights sampled on a regular grid of geographic points, row 0 at the north edge.
struct HeightGrid
{
    double west = 0.0, north = 0.0, cellLon = 1.0, cellLat = 1.0;
    int columns = 0, rows = 0;
    std::vector<double> metres;

    double At(int c, int r) const { return metres[(size_t)r * columns + c]; }
    KYR::ePoint2D Geo(double c, double r) const
    {
        return KYR::ePoint2D(west + c * cellLon, north - r * cellLat);
    }
};

inline HeightGrid SampleGrid(ElevationPicture const& picture, double west, double south,
                             double east, double north, int columns, int rows)
{
    HeightGrid grid;
    grid.west = west;
    grid.north = north;
    grid.columns = columns;
    grid.rows = rows;
    grid.cellLon = (east - west) / (columns - 1);
    grid.cellLat = (north - south) / (rows - 1);
    grid.metres.resize((size_t)columns * rows);
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < columns; ++c)
        {
            KYR::ePoint2D g = grid.Geo(c, r);
            grid.metres[(size_t)r * columns + c] = picture.Metres(g.x, g.y);
        }
    return grid;
}

// One contour: its points in degrees, closed when the first point is repeated at the end.
struct Contour
{
    double level = 0.0;
    std::vector<KYR::ePoint2D> points;
    bool Closed() const { return points.size() > 2 && points.front() == points.back(); }
    // Length in degrees, for choosing which lines carry labels.
    double Length() const
    {
        double sum = 0.0;
        for (size_t i = 1; i < points.size(); ++i)
            sum += std::hypot(points[i].x - points[i - 1].x, points[i].y - points[i - 1].y);
        return sum;
    }
};

// Marching squares at one level. Crossings lie on cell edges, interpolated linearly; each
// cell gives at most two segments (a saddle is split by the mean of its corners), and the
// segments are joined through their shared edges into polylines, which run from the grid's
// border to its border or close on themselves.
inline std::vector<Contour> TraceLevel(HeightGrid const& grid, double level)
{
    int const cols = grid.columns, rows = grid.rows;
    // Edge keys: horizontal edge (c, r)-(c+1, r) is 2 * (r * cols + c), vertical edge
    // (c, r)-(c, r+1) is 2 * (r * cols + c) + 1.
    auto hKey = [&](int c, int r) { return 2LL * ((long long)r * cols + c); };
    auto vKey = [&](int c, int r) { return 2LL * ((long long)r * cols + c) + 1; };
    auto above = [&](int c, int r) { return grid.At(c, r) >= level; };
    auto crossing = [&](long long key)
    {
        long long cell = key / 2;
        int c = (int)(cell % cols), r = (int)(cell / cols);
        int c2 = key % 2 ? c : c + 1, r2 = key % 2 ? r + 1 : r;
        double a = grid.At(c, r), b = grid.At(c2, r2);
        double t = std::fabs(b - a) > 1e-12 ? (level - a) / (b - a) : 0.5;
        t = std::min(1.0, std::max(0.0, t));
        return grid.Geo(c + (c2 - c) * t, r + (r2 - r) * t);
    };

    std::multimap<long long, long long> links; // edge to edge, both ways
    for (int r = 0; r + 1 < rows; ++r)
        for (int c = 0; c + 1 < cols; ++c)
        {
            // Corners clockwise from the north-west: bit 3 nw, 2 ne, 1 se, 0 sw.
            int mask = (above(c, r) ? 8 : 0) | (above(c + 1, r) ? 4 : 0) |
                       (above(c + 1, r + 1) ? 2 : 0) | (above(c, r + 1) ? 1 : 0);
            if (mask == 0 || mask == 15)
                continue;
            long long n = hKey(c, r), s = hKey(c, r + 1), w = vKey(c, r), e = vKey(c + 1, r);
            auto link = [&](long long a, long long b)
            {
                links.insert({a, b});
                links.insert({b, a});
            };
            double mean = 0.25 * (grid.At(c, r) + grid.At(c + 1, r) + grid.At(c + 1, r + 1) +
                                  grid.At(c, r + 1));
            switch (mask)
            {
            case 1:
            case 14:
                link(w, s);
                break;
            case 2:
            case 13:
                link(s, e);
                break;
            case 3:
            case 12:
                link(w, e);
                break;
            case 4:
            case 11:
                link(n, e);
                break;
            case 6:
            case 9:
                link(n, s);
                break;
            case 7:
            case 8:
                link(w, n);
                break;
            case 5: // nw and se below, ne and sw above
                if (mean >= level)
                {
                    link(w, n);
                    link(s, e);
                }
                else
                {
                    link(n, e);
                    link(w, s);
                }
                break;
            case 10: // nw and se above
                if (mean >= level)
                {
                    link(n, e);
                    link(w, s);
                }
                else
                {
                    link(w, n);
                    link(s, e);
                }
                break;
            default:
                break;
            }
        }

    std::vector<Contour> out;
    auto take = [&](long long from)
    {
        auto it = links.find(from);
        if (it == links.end())
            return (long long)-1;
        long long to = it->second;
        links.erase(it);
        for (auto back = links.lower_bound(to); back != links.end() && back->first == to; ++back)
            if (back->second == from)
            {
                links.erase(back);
                break;
            }
        return to;
    };
    auto walk = [&](long long start)
    {
        Contour line;
        line.level = level;
        line.points.push_back(crossing(start));
        for (long long at = start, next; (next = take(at)) >= 0; at = next)
            line.points.push_back(crossing(next));
        out.push_back(line);
    };
    // Open lines start at an edge with one link (on the border); what is left are rings.
    std::map<long long, int> degree;
    for (auto const& l : links)
        ++degree[l.first];
    for (auto const& d : degree)
        if (d.second == 1 && links.count(d.first) == 1)
            walk(d.first);
    while (!links.empty())
        walk(links.begin()->first);
    return out;
}

} // namespace Gallery
