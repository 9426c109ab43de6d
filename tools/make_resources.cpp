// kyr-make-resources: writes the pictures that effects read below the work path.
//
//   kyr-make-resources <work dir>
//
// Everything is generated here or copied from the xplanet Earth pictures (Debian package
// xplanet-images); nothing is downloaded. Written below <work dir>/Resources:
//   Icons/WGS84-Globe.jpg      day side of the Earth (copy of xplanet's earth.jpg)
//   Icons/night.jpg            night lights (copy of xplanet's night.jpg)
//   Icons/elev_bump_4k.jpg     grey elevation picture, 1024 x 512
//   Weather/wgs84heightbump.jpg the same kind, 512 x 256
//   Icons/elev_flat.png        64 x 32 zero elevation, for a globe without relief
//   Icons/wind.png             64 x 64 streak for wind particles
//   Icons/flow.png             64 x 64 chevron bands that show a texture flowing along t
//   Icons/TyphoonPoint.png     128 x 128 typhoon symbol
//   Icons/TyphoonText.png      32 level badges of 64 x 64 in one row, level n in column n
//   Icons/colortable1.png      256 x 1 radar reflectivity ramp
//   Icons/ScatterPoint.png     1024 x 1024 icon atlas of 32 x 32 tiles, 32 pixels each;
//                              tile 0 is the highlight icon given to selected points
//   Weather/storm.raw          256 x 256 x 64 voxels of a storm cell (StormField.h)
//   Weather/wind_uv.png        1024 x 512 wind picture of the whole Earth: u in red, v in
//                              green (SyntheticWinds.h)

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wimplicit-fallthrough"
#endif
#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#include <stb_image.h>
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb_image_write.h>
#define STB_PERLIN_IMPLEMENTATION
#include <stb_perlin.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#include "StormField.h"
#include "SyntheticWinds.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;

double const kPi = 3.14159265358979323846;

char const* const kEarthPicture = "/usr/share/xplanet/images/earth.jpg";
char const* const kNightPicture = "/usr/share/xplanet/images/night.jpg";

struct RGBA
{
    unsigned char r, g, b, a;
};

// An RGBA canvas with coverage-weighted "over" painting.
struct Canvas
{
    int w, h;
    std::vector<unsigned char> px;
    Canvas(int width, int height) : w(width), h(height), px((size_t)width * height * 4, 0) {}

    void Blend(int x, int y, RGBA c, double coverage)
    {
        if (x < 0 || y < 0 || x >= w || y >= h || coverage <= 0.0)
            return;
        double a = std::min(1.0, coverage) * c.a / 255.0;
        unsigned char* p = &px[((size_t)y * w + x) * 4];
        double da = p[3] / 255.0;
        double oa = a + da * (1.0 - a);
        if (oa <= 0.0)
            return;
        unsigned char const src[3] = {c.r, c.g, c.b};
        for (int k = 0; k < 3; ++k)
            p[k] = (unsigned char)std::lround((src[k] * a + p[k] * da * (1.0 - a)) / oa);
        p[3] = (unsigned char)std::lround(oa * 255.0);
    }

    bool WritePNG(fs::path const& path) const
    {
        return stbi_write_png(path.string().c_str(), w, h, 4, px.data(), w * 4) != 0;
    }
};

// Paints a region given by an inside test in pixel space, antialiased with 4 x 4 samples
// per pixel, over the rectangle [x0, x1) x [y0, y1).
template <typename Inside>
void Fill(Canvas& c, int x0, int y0, int x1, int y1, RGBA colour, Inside inside)
{
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x)
        {
            int hits = 0;
            for (int sy = 0; sy < 4; ++sy)
                for (int sx = 0; sx < 4; ++sx)
                    if (inside(x + (sx + 0.5) / 4.0, y + (sy + 0.5) / 4.0))
                        ++hits;
            c.Blend(x, y, colour, hits / 16.0);
        }
}

bool InPolygon(double x, double y, std::vector<double> const& xy)
{
    bool in = false;
    size_t n = xy.size() / 2;
    for (size_t i = 0, j = n - 1; i < n; j = i++)
    {
        double xi = xy[2 * i], yi = xy[2 * i + 1], xj = xy[2 * j], yj = xy[2 * j + 1];
        if (((yi > y) != (yj > y)) && (x < (xj - xi) * (y - yi) / (yj - yi) + xi))
            in = !in;
    }
    return in;
}

std::vector<double> RegularPolygon(int corners, double radius, double innerRadius, double turn)
{
    std::vector<double> xy;
    int n = innerRadius > 0.0 ? corners * 2 : corners;
    for (int i = 0; i < n; ++i)
    {
        double r = (innerRadius > 0.0 && (i % 2)) ? innerRadius : radius;
        double a = turn + 2.0 * kPi * i / n;
        xy.push_back(r * std::cos(a));
        xy.push_back(r * std::sin(a));
    }
    return xy;
}

double Distance(double x, double y, double ax, double ay, double bx, double by)
{
    double dx = bx - ax, dy = by - ay;
    double len2 = dx * dx + dy * dy;
    double t = len2 > 0.0 ? std::clamp(((x - ax) * dx + (y - ay) * dy) / len2, 0.0, 1.0) : 0.0;
    double ex = ax + t * dx - x, ey = ay + t * dy - y;
    return std::sqrt(ex * ex + ey * ey);
}

bool CopyFile(char const* from, fs::path const& to)
{
    std::error_code ec;
    fs::copy_file(from, to, fs::copy_options::overwrite_existing, ec);
    if (ec)
        std::fprintf(stderr, "kyr-make-resources: cannot copy %s to %s: %s\n", from,
                     to.string().c_str(), ec.message().c_str());
    return !ec;
}

// ---------------------------------------------------------------------------------------------
// Elevation: land and sea are told apart by the colours of the day picture; land height is
// fractal noise on the sphere (no seam at the date line), raised where the picture is brown
// or white (deserts, mountains, ice), and the sea floor falls away from the coast.
// ---------------------------------------------------------------------------------------------

std::vector<float> Elevation(unsigned char const* earth, int ew, int eh, int w, int h)
{
    std::vector<float> land((size_t)w * h), height((size_t)w * h);
    int fx = ew / w, fy = eh / h;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
        {
            double r = 0, g = 0, b = 0;
            for (int j = 0; j < fy; ++j)
                for (int i = 0; i < fx; ++i)
                {
                    unsigned char const* p = earth + ((size_t)(y * fy + j) * ew + x * fx + i) * 3;
                    r += p[0];
                    g += p[1];
                    b += p[2];
                }
            double n = fx * fy;
            r /= n;
            g /= n;
            b /= n;
            double bright = (r + g + b) / 3.0;
            double landness = std::clamp((std::max(r, g) - b + 12.0) / 30.0, 0.0, 1.0);
            if (bright > 170.0)
                landness = 1.0; // ice and snow
            land[(size_t)y * w + x] = (float)landness;

            double lon = 2.0 * kPi * (x + 0.5) / w - kPi;
            double lat = kPi / 2 - kPi * (y + 0.5) / h;
            float sx = (float)(std::cos(lat) * std::cos(lon)),
                  sy = (float)(std::cos(lat) * std::sin(lon)), sz = (float)std::sin(lat);
            float ridge =
                stb_perlin_ridge_noise3(sx * 3.0f, sy * 3.0f, sz * 3.0f, 2.0f, 0.5f, 1.0f, 6);
            float fbm =
                stb_perlin_fbm_noise3(sx * 2.0f + 7.1f, sy * 2.0f, sz * 2.0f, 2.0f, 0.5f, 5);
            double rocky = std::clamp((r - g + 10.0) / 50.0, 0.0, 1.0); // brown, red
            double ice = std::clamp((bright - 170.0) / 60.0, 0.0, 1.0);
            double onLand = 50.0 + 70.0 * std::clamp(ridge * 0.6, 0.0, 1.0) +
                            30.0 * (fbm * 0.5 + 0.5) + 60.0 * rocky + 80.0 * ice;
            double sea = 18.0 + 10.0 * fbm;
            height[(size_t)y * w + x] = (float)(sea + (onLand - sea) * landness);
        }
    // Soften the coast lines a little.
    std::vector<float> out(height.size());
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
        {
            double sum = 0;
            int n = 0;
            for (int j = -1; j <= 1; ++j)
                for (int i = -1; i <= 1; ++i)
                {
                    int yy = std::clamp(y + j, 0, h - 1), xx = (x + i + w) % w;
                    sum += height[(size_t)yy * w + xx];
                    ++n;
                }
            out[(size_t)y * w + x] = (float)(sum / n);
        }
    return out;
}

bool WriteGreyJPEG(fs::path const& path, std::vector<float> const& v, int w, int h)
{
    std::vector<unsigned char> grey(v.size());
    for (size_t i = 0; i < v.size(); ++i)
        grey[i] = (unsigned char)std::clamp((int)std::lround(v[i]), 0, 255);
    return stbi_write_jpg(path.string().c_str(), w, h, 1, grey.data(), 92) != 0;
}

std::vector<float> HalveSize(std::vector<float> const& v, int w, int h)
{
    std::vector<float> out((size_t)(w / 2) * (h / 2));
    for (int y = 0; y < h / 2; ++y)
        for (int x = 0; x < w / 2; ++x)
            out[(size_t)y * (w / 2) + x] =
                0.25f *
                (v[(size_t)(2 * y) * w + 2 * x] + v[(size_t)(2 * y) * w + 2 * x + 1] +
                 v[(size_t)(2 * y + 1) * w + 2 * x] + v[(size_t)(2 * y + 1) * w + 2 * x + 1]);
    return out;
}

// ---------------------------------------------------------------------------------------------
// Small pictures
// ---------------------------------------------------------------------------------------------

// A streak along +x: faint tail on the left, bright head on the right, narrowing to the tail.
Canvas Wind()
{
    Canvas c(64, 64);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
        {
            double t = (x + 0.5) / 64.0;
            double halfWidth = 1.0 + 5.0 * t * t;
            double d = std::fabs(y + 0.5 - 32.0) / halfWidth;
            double along =
                std::clamp((t - 0.04) / 0.9, 0.0, 1.0) * std::clamp((0.99 - t) / 0.05, 0.0, 1.0);
            double a = along * std::exp(-d * d * 1.5);
            unsigned char* p = &c.px[((size_t)y * 64 + x) * 4];
            p[0] = p[1] = p[2] = 255;
            p[3] = (unsigned char)std::lround(255.0 * std::clamp(a, 0.0, 1.0));
        }
    return c;
}

// White chevron bands across t, repeating four times, for textures that flow along a mesh.
Canvas Flow()
{
    Canvas c(64, 64);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
        {
            double phase = (y + 0.5 + std::fabs(x + 0.5 - 32.0) * 0.35) / 16.0;
            double f = phase - std::floor(phase);
            double a = std::clamp(1.0 - std::fabs(f - 0.25) / 0.18, 0.0, 1.0);
            unsigned char* p = &c.px[((size_t)y * 64 + x) * 4];
            p[0] = p[1] = p[2] = 255;
            p[3] = (unsigned char)std::lround(255.0 * a);
        }
    return c;
}

// The weather-map typhoon sign for the northern hemisphere: a ring with two tapering arms
// that trail behind its counter-clockwise turn (an "S" through a ring), on a canvas of
// size x size. `margin` widens every stroke, for the light outline drawn beneath.
bool InTyphoonSign(double x, double y, double size, double margin)
{
    double const unit = size / 128.0, cx = size / 2.0, cy = size / 2.0;
    double dx = (x - cx) / unit, dy = (cy - y) / unit; // y up
    double r = std::hypot(dx, dy);
    if (r >= 13.0 - margin && r <= 24.0 + margin)
        return true;
    for (int arm = 0; arm < 2; ++arm)
    {
        // From the ring outward the arm turns clockwise, through 110 degrees.
        double prevX = 0.0, prevY = 0.0;
        for (int i = 0; i <= 48; ++i)
        {
            double t = i / 48.0;
            double a = arm * kPi + kPi - 1.95 * t;
            double radius = 18.5 + 41.0 * t;
            double px = radius * std::cos(a), py = radius * std::sin(a);
            if (i > 0)
            {
                double width = 9.0 * (1.0 - t) + 1.2 * t;
                if (Distance(dx, dy, prevX, prevY, px, py) <= width * 0.5 + margin)
                    return true;
            }
            prevX = px;
            prevY = py;
        }
    }
    return false;
}

Canvas TyphoonPoint()
{
    int const size = 128;
    Canvas c(size, size);
    Fill(c, 0, 0, size, size, RGBA{255, 255, 255, 230},
         [&](double x, double y) { return InTyphoonSign(x, y, size, 3.0); });
    Fill(c, 0, 0, size, size, RGBA{215, 25, 30, 255},
         [&](double x, double y) { return InTyphoonSign(x, y, size, 0.0); });
    return c;
}

// 5 x 7 digits, one row of bits per line, most significant bit on the left.
unsigned char const kDigits[10][7] = {
    {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E}, {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E},
    {0x0E, 0x11, 0x01, 0x02, 0x04, 0x08, 0x1F}, {0x1F, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0E},
    {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02}, {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E},
    {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E}, {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08},
    {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E}, {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C},
};

void Digit(Canvas& c, int d, int left, int top, int cell, RGBA colour)
{
    for (int row = 0; row < 7; ++row)
        for (int col = 0; col < 5; ++col)
            if (kDigits[d][row] & (0x10 >> col))
                for (int y = 0; y < cell; ++y)
                    for (int x = 0; x < cell; ++x)
                        c.Blend(left + col * cell + x, top + row * cell + y, colour, 1.0);
}

// Colours of the tropical cyclone classes by wind level (Beaufort): below a depression,
// tropical depression 6-7, tropical storm 8-9, severe tropical storm 10-11, typhoon
// 12-13, severe typhoon 14-15, super typhoon 16-17, and beyond.
RGBA LevelColour(int level)
{
    if (level < 6)
        return RGBA{120, 135, 150, 255};
    if (level < 8)
        return RGBA{40, 165, 75, 255};
    if (level < 10)
        return RGBA{40, 110, 220, 255};
    if (level < 12)
        return RGBA{240, 200, 30, 255};
    if (level < 14)
        return RGBA{245, 125, 25, 255};
    if (level < 16)
        return RGBA{225, 60, 160, 255};
    if (level < 18)
        return RGBA{205, 20, 30, 255};
    return RGBA{120, 15, 60, 255};
}

// Level pictures: column n shows level n as a number on a round badge in the colour of
// its class, with a dark edge and a white rim so that it reads over sea, land and track.
Canvas TyphoonText()
{
    int const cell = 64, columns = 32;
    Canvas c(cell * columns, cell);
    for (int level = 0; level < columns; ++level)
    {
        double cx = level * cell + cell / 2.0, cy = cell / 2.0;
        auto disc = [&](double radius, RGBA colour)
        {
            Fill(c, level * cell, 0, (level + 1) * cell, cell, colour,
                 [&](double x, double y) { return std::hypot(x - cx, y - cy) <= radius; });
        };
        RGBA fill = LevelColour(level);
        disc(30.0, RGBA{30, 30, 30, 200});
        disc(28.5, RGBA{255, 255, 255, 255});
        disc(25.0, fill);
        // Dark figures on the light yellow, white ones elsewhere.
        bool light = 0.299 * fill.r + 0.587 * fill.g + 0.114 * fill.b > 170.0;
        RGBA figure = light ? RGBA{30, 30, 30, 255} : RGBA{255, 255, 255, 255};
        int digits = level >= 10 ? 2 : 1;
        int const px = digits == 2 ? 3 : 4; // pixels per font dot: two figures fit the disc
        int width = digits * 5 * px + (digits - 1) * px;
        int left = (int)cx - width / 2, top = (int)cy - 7 * px / 2;
        if (digits == 2)
        {
            Digit(c, level / 10, left, top, px, figure);
            left += 6 * px;
        }
        Digit(c, level % 10, left, top, px, figure);
    }
    return c;
}

// A radar reflectivity ramp over 0 to 75 dBZ: cyan and blue for light echoes, greens,
// yellow and orange, reds for heavy rain, magenta and purple for hail, white at the top;
// transparent at the low end.
Canvas ColourTable()
{
    struct Stop
    {
        double dbz, r, g, b;
    };
    static Stop const stops[] = {
        {0, 70, 70, 90},   {5, 4, 233, 231},  {10, 1, 159, 244},  {15, 3, 0, 244},
        {20, 2, 253, 2},   {25, 1, 197, 1},   {30, 0, 142, 0},    {35, 253, 248, 2},
        {40, 229, 188, 0}, {45, 253, 149, 0}, {50, 253, 0, 0},    {55, 212, 0, 0},
        {60, 188, 0, 0},   {65, 248, 0, 253}, {70, 152, 84, 198}, {75, 255, 255, 255}};
    int const last = int(sizeof stops / sizeof stops[0]) - 1;
    Canvas c(256, 1);
    for (int i = 0; i < 256; ++i)
    {
        double dbz = i / 255.0 * 75.0;
        int k = std::min(last - 1, (int)(dbz / 5.0));
        double f = (dbz - stops[k].dbz) / (stops[k + 1].dbz - stops[k].dbz);
        unsigned char* p = &c.px[(size_t)i * 4];
        p[0] = (unsigned char)std::lround(stops[k].r + (stops[k + 1].r - stops[k].r) * f);
        p[1] = (unsigned char)std::lround(stops[k].g + (stops[k + 1].g - stops[k].g) * f);
        p[2] = (unsigned char)std::lround(stops[k].b + (stops[k + 1].b - stops[k].b) * f);
        p[3] = (unsigned char)std::min(255, i * 4);
    }
    return c;
}

// Shapes of the icon atlas, in units of the icon radius around the tile centre.
bool InShape(int shape, double x, double y)
{
    static std::vector<double> const triangle = {0.0, -1.0, 0.93, 0.72, -0.93, 0.72};
    static std::vector<double> const star = RegularPolygon(5, 1.0, 0.45, -kPi / 2);
    static std::vector<double> const hexagon = RegularPolygon(6, 0.95, 0.0, 0.0);
    double r = std::hypot(x, y);
    switch (shape)
    {
    case 0:
        return r <= 0.9;
    case 1:
        return std::max(std::fabs(x), std::fabs(y)) <= 0.75;
    case 2:
        return InPolygon(x, y, triangle);
    case 3:
        return InPolygon(x, y, star);
    case 4:
        return std::fabs(x) + std::fabs(y) <= 0.95;
    case 5:
        return r <= 0.9 && r >= 0.5;
    case 6:
        return (std::fabs(x) <= 0.3 && std::fabs(y) <= 0.9) ||
               (std::fabs(y) <= 0.3 && std::fabs(x) <= 0.9);
    default:
        return InPolygon(x, y, hexagon);
    }
}

Canvas ScatterAtlas()
{
    static RGBA const palette[16] = {
        {230, 40, 40, 255},   {250, 140, 20, 255}, {245, 215, 30, 255},  {150, 220, 40, 255},
        {40, 170, 70, 255},   {20, 160, 150, 255}, {30, 210, 230, 255},  {80, 160, 250, 255},
        {40, 80, 220, 255},   {90, 60, 200, 255},  {160, 60, 210, 255},  {230, 50, 200, 255},
        {250, 140, 180, 255}, {150, 95, 50, 255},  {150, 150, 150, 255}, {245, 245, 245, 255}};
    int const tile = 32, grid = 32;
    double const radius = 13.0;
    Canvas c(tile * grid, tile * grid);
    for (int id = 0; id < grid * grid; ++id)
    {
        int x0 = (id % grid) * tile, y0 = (id / grid) * tile;
        double cx = x0 + tile / 2.0, cy = y0 + tile / 2.0;
        if (id == 0)
        {
            // Highlight: a soft glow, a bright ring and a white centre.
            for (int y = y0; y < y0 + tile; ++y)
                for (int x = x0; x < x0 + tile; ++x)
                {
                    double r = std::hypot(x + 0.5 - cx, y + 0.5 - cy);
                    c.Blend(x, y, RGBA{255, 230, 80, 255},
                            0.6 * std::exp(-std::pow((r - 11.0) / 3.5, 2)));
                }
            Fill(c, x0, y0, x0 + tile, y0 + tile, RGBA{255, 210, 0, 255},
                 [&](double x, double y)
                 {
                     double r = std::hypot(x - cx, y - cy);
                     return r >= 9.0 && r <= 12.5;
                 });
            Fill(c, x0, y0, x0 + tile, y0 + tile, RGBA{255, 255, 255, 255},
                 [&](double x, double y) { return std::hypot(x - cx, y - cy) <= 4.5; });
            continue;
        }
        int shape = (id - 1) % 8;
        RGBA fill = palette[((id - 1) / 8) % 16];
        Fill(c, x0, y0, x0 + tile, y0 + tile, RGBA{25, 25, 25, 255},
             [&](double x, double y)
             { return InShape(shape, (x - cx) / radius, (y - cy) / radius); });
        Fill(c, x0, y0, x0 + tile, y0 + tile, fill,
             [&](double x, double y)
             { return InShape(shape, (x - cx) / (radius * 0.8), (y - cy) / (radius * 0.8)); });
    }
    return c;
}

// The storm cell of StormField.h as raw voxels: one byte each, x fastest, no header.
bool WriteStorm(fs::path const& path)
{
    std::vector<unsigned char> voxels = Storm::Field();
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<char const*>(voxels.data()), (std::streamsize)voxels.size());
    return (bool)out;
}

// ---------------------------------------------------------------------------------------------
// Polar caps of the visual globe's height picture. The first and the last row of a picture
// of the whole Earth each stand for one point, the pole, and the visual globe puts all its
// pole vertices on them; a row that varied would spread those vertices apart and turn their
// triangles inside out. The top and bottom eight rows (one row of JPEG blocks, so that the
// compression keeps them even) take the mean of their cap.
// ---------------------------------------------------------------------------------------------

std::vector<float> PolarCaps(std::vector<float> v, int w, int h)
{
    int const rows = std::min(8, h / 2);
    for (int cap = 0; cap < 2; ++cap)
    {
        int first = cap == 0 ? 0 : h - rows;
        double sum = 0.0;
        for (int y = first; y < first + rows; ++y)
            for (int x = 0; x < w; ++x)
                sum += v[(size_t)y * w + x];
        float mean = (float)(sum / ((double)rows * w));
        for (int y = first; y < first + rows; ++y)
            std::fill(v.begin() + (ptrdiff_t)y * w, v.begin() + (ptrdiff_t)(y + 1) * w, mean);
    }
    return v;
}

// ---------------------------------------------------------------------------------------------
// Water mask of the surface globe: white over the sea, black over land, read from the
// elevation (the sea floor lies below step 40), with an edge a few steps soft.
// ---------------------------------------------------------------------------------------------

bool WriteWaterMask(fs::path const& path, std::vector<float> const& elevation, int w, int h)
{
    std::vector<unsigned char> grey(elevation.size());
    for (size_t i = 0; i < elevation.size(); ++i)
        grey[i] =
            (unsigned char)std::lround(255.0 * std::clamp((40.0 - elevation[i]) / 6.0, 0.0, 1.0));
    return stbi_write_png(path.string().c_str(), w, h, 1, grey.data(), w) != 0;
}

// ---------------------------------------------------------------------------------------------
// A country as a mask picture: the land of Australia (with Tasmania), white on black, over
// the rectangle 112 E to 154 E, 10.6 S to 44 S, read from the elevation with soft coasts.
// ---------------------------------------------------------------------------------------------

bool WriteAustraliaMask(fs::path const& path, std::vector<float> const& elevation, int w, int h)
{
    double const west = 112.0, east = 154.0, north = -10.6, south = -44.0;
    int const outW = 512, outH = (int)std::lround(outW * (north - south) / (east - west));
    std::vector<unsigned char> grey((size_t)outW * outH);
    for (int y = 0; y < outH; ++y)
        for (int x = 0; x < outW; ++x)
        {
            // Bilinear height at the pixel's centre; the elevation's pixel centres lie half a
            // pixel in from its edges.
            double lon = west + (east - west) * (x + 0.5) / outW;
            double lat = north - (north - south) * (y + 0.5) / outH;
            double fx = (lon + 180.0) / 360.0 * w - 0.5, fy = (90.0 - lat) / 180.0 * h - 0.5;
            int x0 = (int)std::floor(fx), y0 = (int)std::floor(fy);
            double tx = fx - x0, ty = fy - y0;
            auto at = [&](int i, int j)
            { return elevation[(size_t)std::clamp(j, 0, h - 1) * w + (size_t)((i + w) % w)]; };
            double height = (1 - ty) * ((1 - tx) * at(x0, y0) + tx * at(x0 + 1, y0)) +
                            ty * ((1 - tx) * at(x0, y0 + 1) + tx * at(x0 + 1, y0 + 1));
            grey[(size_t)y * outW + x] =
                (unsigned char)std::lround(255.0 * std::clamp((height - 37.0) / 6.0, 0.0, 1.0));
        }
    return stbi_write_png(path.string().c_str(), outW, outH, 1, grey.data(), outW) != 0;
}

// ---------------------------------------------------------------------------------------------
// Repeating ground textures for tiling (256 x 256): fractal noise that wraps at the picture's
// edges, so that copies laid side by side join without a seam.
// ---------------------------------------------------------------------------------------------

int const kGroundSize = 256;

// Fractal noise of `octaves` octaves from `period` cells across the picture, -1..1 roughly;
// every octave wraps at the picture's edge. (x, y) in pixels.
double GroundNoise(double x, double y, int period, int octaves, float seed, bool ridged = false)
{
    double sum = 0.0, amplitude = 0.5;
    for (int o = 0; o < octaves && period <= 256; ++o, period *= 2, amplitude *= 0.5)
    {
        float fx = (float)(x * period / kGroundSize), fy = (float)(y * period / kGroundSize);
        double n = stb_perlin_noise3_wrap_nonpow2(fx, fy, seed + o * 1.7f, period, period, 0,
                                                  (unsigned char)(o * 31 + (int)seed));
        if (ridged)
            n = 1.0 - 2.0 * std::fabs(n);
        sum += n * amplitude;
    }
    return sum;
}

RGBA Shade(RGBA c, double f)
{
    auto ch = [f](unsigned char v)
    { return (unsigned char)std::clamp((int)std::lround(v * f), 0, 255); };
    return {ch(c.r), ch(c.g), ch(c.b), 255};
}

RGBA MixColour(RGBA a, RGBA b, double t)
{
    t = std::clamp(t, 0.0, 1.0);
    auto ch = [t](unsigned char p, unsigned char q)
    { return (unsigned char)std::lround(p + (q - p) * t); };
    return {ch(a.r, b.r), ch(a.g, b.g), ch(a.b, b.b), 255};
}

// One ground texture by name: "water", "sand", "grass", "rock" or "snow".
Canvas GroundTexture(std::string const& kind)
{
    Canvas c(kGroundSize, kGroundSize);
    for (int y = 0; y < kGroundSize; ++y)
        for (int x = 0; x < kGroundSize; ++x)
        {
            RGBA p{0, 0, 0, 255};
            if (kind == "water")
            {
                // Long swells with short ripples on them.
                double swell = GroundNoise(x, y * 3.0, 2, 3, 1.0f);
                double ripple = GroundNoise(x, y, 16, 2, 2.0f, true);
                p = Shade(MixColour({18, 62, 120, 255}, {40, 105, 160, 255}, 0.5 + swell),
                          0.9 + 0.15 * ripple);
            }
            else if (kind == "sand")
            {
                // Wind ripples across a fine grain, a whole number of them across the picture.
                double ripple = std::sin((x + 6.0 * GroundNoise(x, y, 4, 2, 3.0f)) * 2.0 * kPi *
                                         14.0 / kGroundSize);
                double grain = GroundNoise(x, y, 64, 2, 4.0f);
                p = Shade({222, 198, 142, 255}, 0.94 + 0.05 * ripple + 0.12 * grain);
            }
            else if (kind == "grass")
            {
                double patches = GroundNoise(x, y, 4, 3, 5.0f);
                double blades = GroundNoise(x, y, 64, 2, 6.0f);
                p = Shade(MixColour({58, 112, 38, 255}, {104, 140, 52, 255}, 0.5 + patches),
                          0.85 + 0.3 * (blades * 0.5 + 0.5));
            }
            else if (kind == "rock")
            {
                // Cracks are the crests of ridged noise, turned dark.
                double body = GroundNoise(x, y, 4, 5, 7.0f);
                double crest = GroundNoise(x, y, 8, 1, 8.0f, true) * 2.0; // -1..1, 1 on crests
                double fine = GroundNoise(x, y, 32, 2, 10.0f);
                RGBA stone = MixColour({112, 104, 96, 255}, {158, 148, 134, 255}, 0.5 + body);
                double crack = std::clamp((crest - 0.9) / 0.06, 0.0, 1.0);
                p = Shade(stone, (0.95 + 0.3 * fine) * (1.0 - 0.5 * crack));
            }
            else // snow
            {
                double drifts = GroundNoise(x, y, 4, 4, 9.0f);
                p = MixColour({206, 218, 236, 255}, {250, 251, 255, 255}, 0.6 + drifts);
            }
            unsigned char* o = &c.px[((size_t)y * kGroundSize + x) * 4];
            o[0] = p.r;
            o[1] = p.g;
            o[2] = p.b;
            o[3] = 255;
        }
    return c;
}

// The synthetic wind field of the wind scenes as a picture (layout in SyntheticWinds.h).
bool WriteWindPicture(fs::path const& path)
{
    std::vector<unsigned char> px = Winds::Picture();
    return stbi_write_png(path.string().c_str(), Winds::kPictureWidth, Winds::kPictureHeight, 4,
                          px.data(), Winds::kPictureWidth * 4) != 0;
}

bool Report(bool ok, fs::path const& path)
{
    if (!ok)
        std::fprintf(stderr, "kyr-make-resources: cannot write %s\n", path.string().c_str());
    return ok;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fprintf(stderr, "usage: kyr-make-resources <work dir>\n");
        return 2;
    }
    for (char const* source : {kEarthPicture, kNightPicture})
        if (!fs::is_regular_file(source))
        {
            std::fprintf(stderr,
                         "kyr-make-resources: %s is missing; install the Debian package "
                         "xplanet-images\n",
                         source);
            return 1;
        }

    fs::path resources = fs::path(argv[1]) / "Resources";
    fs::path icons = resources / "Icons", weather = resources / "Weather";
    std::error_code ec;
    fs::create_directories(icons, ec);
    if (!ec)
        fs::create_directories(weather, ec);
    if (ec)
    {
        std::fprintf(stderr, "kyr-make-resources: cannot create %s: %s\n",
                     resources.string().c_str(), ec.message().c_str());
        return 1;
    }

    bool ok = CopyFile(kEarthPicture, icons / "WGS84-Globe.jpg");
    ok = CopyFile(kNightPicture, icons / "night.jpg") && ok;

    int ew = 0, eh = 0, ec3 = 0;
    unsigned char* earth = stbi_load(kEarthPicture, &ew, &eh, &ec3, 3);
    if (!earth || ew < 1024 || eh < 512)
    {
        std::fprintf(stderr,
                     "kyr-make-resources: %s does not decode as a 1024 x 512 or larger picture\n",
                     kEarthPicture);
        if (earth)
            stbi_image_free(earth);
        return 1;
    }
    std::vector<float> elevation = Elevation(earth, ew, eh, 1024, 512);
    stbi_image_free(earth);
    ok = Report(WriteGreyJPEG(icons / "elev_bump_4k.jpg", elevation, 1024, 512),
                icons / "elev_bump_4k.jpg") &&
         ok;
    ok = Report(WriteGreyJPEG(weather / "wgs84heightbump.jpg",
                              PolarCaps(HalveSize(elevation, 1024, 512), 512, 256), 512, 256),
                weather / "wgs84heightbump.jpg") &&
         ok;

    ok = Report(Wind().WritePNG(icons / "wind.png"), icons / "wind.png") && ok;
    Canvas flat(64, 32); // every byte zero: the height is read from whichever channel
    ok = Report(flat.WritePNG(icons / "elev_flat.png"), icons / "elev_flat.png") && ok;
    ok = Report(Flow().WritePNG(icons / "flow.png"), icons / "flow.png") && ok;
    ok = Report(TyphoonPoint().WritePNG(icons / "TyphoonPoint.png"), icons / "TyphoonPoint.png") &&
         ok;
    ok = Report(TyphoonText().WritePNG(icons / "TyphoonText.png"), icons / "TyphoonText.png") && ok;
    ok = Report(ColourTable().WritePNG(icons / "colortable1.png"), icons / "colortable1.png") && ok;
    ok = Report(ScatterAtlas().WritePNG(icons / "ScatterPoint.png"), icons / "ScatterPoint.png") &&
         ok;
    ok = Report(WriteStorm(weather / "storm.raw"), weather / "storm.raw") && ok;
    ok = Report(WriteWaterMask(icons / "water_mask.png", elevation, 1024, 512),
                icons / "water_mask.png") &&
         ok;
    ok = Report(WriteAustraliaMask(icons / "australia_mask.png", elevation, 1024, 512),
                icons / "australia_mask.png") &&
         ok;
    fs::path tiling = resources / "Tiling";
    fs::create_directories(tiling, ec);
    for (char const* kind : {"water", "sand", "grass", "rock", "snow"})
    {
        fs::path file = tiling / (std::string(kind) + ".png");
        ok = Report(!ec && GroundTexture(kind).WritePNG(file), file) && ok;
    }
    fs::path wind = fs::path(argv[1]) / Winds::kPicturePath;
    ok = Report(WriteWindPicture(wind), wind) && ok;
    return ok ? 0 : 1;
}
