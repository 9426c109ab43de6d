// A convective storm cell as a field of radar-reflectivity-like values, for the volume scenes
// and the resource tool. A mature cell in an eastward-sheared flow: a towering updraft column
// with an overshooting top, an anvil fanning out downstream, precipitation cores embedded in
// the column with a rain shaft to the ground, and a flanking line of younger towers to the
// south-west. Deterministic: integer hashing drives the noise, no random state.
//
// The domain is 180 km square (x east, y north) and 16 km high (z up); values run from 0
// (clear air) to 0.94, so bytes stay at 240 or below: anvil 0.13-0.25, cloud 0.3-0.4, rain
// 0.5-0.6, cores up to 0.92.
#pragma once
#include <algorithm>
#include <cmath>
#include <vector>

namespace Storm
{

int const kWidth = 256, kHeight = 256, kDepth = 64;
double const kDomainKm = 180.0, kTopKm = 16.0;

namespace Detail
{

inline unsigned int Hash(int x, int y, int z, unsigned int seed)
{
    unsigned int h = seed ^ ((unsigned int)x * 0x8da6b343u) ^ ((unsigned int)y * 0xd8163841u) ^
                     ((unsigned int)z * 0xcb1ab31fu);
    h ^= h >> 16;
    h *= 0x7feb352du;
    h ^= h >> 15;
    h *= 0x846ca68bu;
    h ^= h >> 16;
    return h;
}

inline double Fade(double t)
{
    return t * t * (3.0 - 2.0 * t);
}

// Smooth value noise in 0..1 with unit lattice spacing.
inline double ValueNoise(double x, double y, double z, unsigned int seed)
{
    double fx = std::floor(x), fy = std::floor(y), fz = std::floor(z);
    int ix = (int)fx, iy = (int)fy, iz = (int)fz;
    double u = Fade(x - fx), v = Fade(y - fy), w = Fade(z - fz);
    double c[2][2][2];
    for (int k = 0; k < 2; ++k)
        for (int j = 0; j < 2; ++j)
            for (int i = 0; i < 2; ++i)
                c[k][j][i] = Hash(ix + i, iy + j, iz + k, seed) * (1.0 / 4294967295.0);
    auto lerp = [](double a, double b, double t) { return a + (b - a) * t; };
    double y0 = lerp(lerp(c[0][0][0], c[0][0][1], u), lerp(c[0][1][0], c[0][1][1], u), v);
    double y1 = lerp(lerp(c[1][0][0], c[1][0][1], u), lerp(c[1][1][0], c[1][1][1], u), v);
    return lerp(y0, y1, w);
}

// Fractal sum of octaves, -1..1 around 0.
inline double Fbm(double x, double y, double z, int octaves, unsigned int seed)
{
    double sum = 0.0, amplitude = 1.0, norm = 0.0;
    for (int o = 0; o < octaves; ++o)
    {
        sum += amplitude * ValueNoise(x, y, z, seed + 101u * (unsigned int)o);
        norm += amplitude;
        amplitude *= 0.5;
        x *= 2.03;
        y *= 2.03;
        z *= 2.03;
    }
    return 2.0 * sum / norm - 1.0;
}

inline double Smooth(double edge0, double edge1, double x)
{
    double t = std::clamp((x - edge0) / (edge1 - edge0), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

// Axis of the main updraft, leaning downshear with height (km).
inline double AxisX(double z)
{
    return 72.0 + 0.9 * z;
}
inline double AxisY(double z)
{
    return 82.0 + 0.35 * z;
}

double const kCloudBase = 1.4, kTropopause = 12.4;

// A soft ellipsoid: 1 inside, falling to 0 over `soft` of its normalised radius.
inline double Ellipsoid(double x, double y, double z, double cx, double cy, double cz, double rx,
                        double ry, double rz, double soft)
{
    double dx = (x - cx) / rx, dy = (y - cy) / ry, dz = (z - cz) / rz;
    return Smooth(1.0, 1.0 - soft, std::sqrt(dx * dx + dy * dy + dz * dz));
}

} // namespace Detail

// Reflectivity-like value (0..0.94) at a point in km: x east and y north across the domain,
// z above the ground.
inline double ValueKm(double x, double y, double z)
{
    using namespace Detail;
    // Nothing lies outside the storm's box; most of the domain is clear air.
    if (x < 14.0 || x > 176.0 || y < 20.0 || y > 160.0 || z > 15.5)
        return 0.0;
    double const turb = Fbm(x / 4.0, y / 4.0, z / 2.0, 4, 7u);     // billows
    double const lumps = Fbm(x / 11.0, y / 11.0, z / 4.0, 2, 31u); // outline of the towers
    double value = 0.0;

    // Main tower from the cloud base to the tropopause.
    double const ax = AxisX(z), ay = AxisY(z);
    double const dAxis = std::hypot(x - ax, y - ay);
    double const radius = 8.0 + 2.8 * Smooth(kCloudBase, 6.0, z) - 0.8 * Smooth(9.0, 12.5, z) +
                          2.6 * lumps + 2.4 * turb;
    double const base = kCloudBase + 0.25 * turb;
    double const tower = Smooth(radius + 1.3, radius - 1.3, dAxis) *
                         Smooth(base - 0.2, base + 0.5, z) *
                         Smooth(kTropopause + 0.6, kTropopause - 0.4, z);
    value =
        std::max(value, tower * (0.3 + 0.09 * Smooth(radius, 0.4 * radius, dAxis) + 0.03 * turb));

    // Overshooting top: a dome punching above the anvil.
    double const dome = Ellipsoid(x, y, z + 0.6 * lumps + 0.3 * turb, AxisX(12.4), AxisY(12.4),
                                  12.0, 8.0, 8.0, 2.5, 0.5);
    value = std::max(value, dome * (0.3 + 0.03 * turb));

    // Anvil: spreads downstream (east-north-east), short upstream, thin at its edges.
    double const sx = std::cos(0.35), sy = std::sin(0.35);
    double const rx = x - AxisX(11.0), ry = y - AxisY(11.0);
    double const along = rx * sx + ry * sy, across = -rx * sy + ry * sx;
    double const halfWidth = 24.0 + 0.34 * std::max(along, 0.0);
    double const qa = along >= 0.0 ? along / 96.0 : -along / 24.0;
    double const qc = across / halfWidth;
    double const q = std::sqrt(qa * qa + qc * qc) + 0.16 * lumps;
    if (q < 1.1)
    {
        // Mammatus pouches hang from its underside away from the tower.
        double const pouches = 0.7 * std::max(0.0, Fbm(x / 3.0, y / 3.0, 1.7, 2, 53u)) *
                               Smooth(0.25, 0.5, q) * Smooth(0.95, 0.7, q);
        double const bottom = 9.3 + 1.7 * q - pouches;
        double const top = 12.8 - 1.0 * q * q + 0.3 * turb;
        double const sheet = Smooth(1.0, 0.82, q) * Smooth(bottom - 0.3, bottom + 0.5, z) *
                             Smooth(top + 0.3, top - 0.5, z);
        value = std::max(value, sheet * (0.25 - 0.12 * std::min(q, 1.0) + 0.04 * turb));
    }

    // Flanking line: younger towers of falling, uneven height to the south-west.
    struct Tower
    {
        double dx, dy, top, radius;
    };
    static Tower const flank[] = {
        {-16.0, -12.0, 8.2, 5.0}, {-26.0, -25.0, 6.0, 4.4}, {-37.0, -33.0, 4.6, 3.6}};
    for (Tower const& t : flank)
    {
        double const d = std::hypot(x - 72.0 - t.dx, y - 82.0 - t.dy);
        if (d > 2.0 * t.radius)
            continue;
        double const r = t.radius * (1.0 + 0.25 * lumps + 0.35 * turb);
        double const top = t.top + 0.8 * lumps;
        // A column under a flattened, billowing dome.
        double const capZ = std::max(z - (top - 0.5 * r), 0.0) / 0.5;
        double const reach = std::sqrt(std::max(r * r - capZ * capZ, 0.0));
        double const shape =
            Smooth(reach + 1.0, reach - 1.0, d) * Smooth(base - 0.2, base + 0.5, z);
        value = std::max(value, shape * (0.31 + 0.03 * turb));
    }

    // Precipitation: a heavy column in the updraft's downshear flank, falling to the ground.
    double const px = AxisX(std::min(z, 8.0)) + 2.0, py = AxisY(std::min(z, 8.0)) - 1.0;
    double const dRain = std::hypot(x - px, y - py);
    double const streaks = Fbm(x / 2.0, y / 2.0, z / 9.0, 3, 71u);
    double const rainRadius = 6.5 + 1.5 * lumps;
    double const rain = Smooth(rainRadius + 1.5, rainRadius - 2.0, dRain) * Smooth(9.0, 6.5, z);
    value = std::max(value, rain * (0.55 + 0.06 * streaks));

    // Embedded cores: hail aloft, heavy rain beneath.
    struct Core
    {
        double dx, dy, z, rh, rv, peak;
    };
    static Core const cores[] = {{1.5, -1.0, 5.5, 4.4, 3.3, 0.92},
                                 {3.0, 0.5, 8.6, 3.3, 2.5, 0.85},
                                 {-2.5, 1.5, 3.0, 3.2, 2.6, 0.8}};
    for (Core const& c : cores)
    {
        double const dx = (x - AxisX(c.z) - c.dx) / c.rh, dy = (y - AxisY(c.z) - c.dy) / c.rh;
        double const dz = (z - c.z) / c.rv;
        double const r2 = dx * dx + dy * dy + dz * dz;
        if (r2 < 9.0)
            value = std::max(value, c.peak * std::exp(-0.6 * r2) * (0.94 + 0.06 * turb));
    }
    return std::clamp(value, 0.0, 0.94);
}

// The value at voxel (i, j, k) of a w x h x d grid over the domain (voxel centres).
inline double Value(int i, int j, int k, int w, int h, int d)
{
    return ValueKm((i + 0.5) / w * kDomainKm, (j + 0.5) / h * kDomainKm, (k + 0.5) / d * kTopKm);
}

// The whole field as bytes, x fastest, then y (south to north), then z (upwards).
inline std::vector<unsigned char> Field(int w = kWidth, int h = kHeight, int d = kDepth)
{
    std::vector<unsigned char> bytes((size_t)w * h * d);
    size_t n = 0;
    for (int k = 0; k < d; ++k)
        for (int j = 0; j < h; ++j)
            for (int i = 0; i < w; ++i)
                bytes[n++] = (unsigned char)std::lround(255.0 * Value(i, j, k, w, h, d));
    return bytes;
}

} // namespace Storm
